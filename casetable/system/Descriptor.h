#ifndef CASETABLE_SYSTEM_DESCRIPTOR_H
#define CASETABLE_SYSTEM_DESCRIPTOR_H

#include <utility>

#include <unistd.h>

namespace casetable {

/// Owns an open file by its descriptor, the system's number for it, and closes it in the end.
class Descriptor {
public:
    /// Owns nothing.
    Descriptor() = default;

    /// Owns what a system call has opened; a negative number says that it has opened nothing.
    explicit Descriptor(int number) : number_(number) {}

    /// Leaves `other` with nothing.
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    /// Leaves `other` with what this one owned before.
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor()
    {
        if (isOpen())
            ::close(number_);
    }

    bool isOpen() const { return number_ >= 0; }

    /// The number, for system calls; negative where nothing is open.
    int number() const { return number_; }

    /// Hands the number to the caller, who closes it.
    int release() { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

} // namespace casetable

#endif
