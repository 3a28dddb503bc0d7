#ifndef CASETABLE_SYSTEM_DESCRIPTOR_H
#define CASETABLE_SYSTEM_DESCRIPTOR_H

#include <utility>

#include <unistd.h>

namespace casetable {

/// Owns the number of an open file, and closes it.
class Descriptor {
public:
    /// Owns nothing.
    Descriptor() = default;

    /// Takes over what a system call answered: a negative number means that nothing was opened.
    explicit Descriptor(int number) : number_(number) {}

    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
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

    /// For system calls; negative where nothing is open.
    int number() const { return number_; }

    /// Hands the number to the caller, who closes it.
    int release() { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

} // namespace casetable

#endif
