#ifndef CASETABLE_SYSTEM_BYTES_H
#define CASETABLE_SYSTEM_BYTES_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace casetable {

/// Thrown where bytes are not what their reader takes them for: they are cut off, damaged or of
/// another version.
class BrokenBytes : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Turns values into bytes, which any machine reads in the same way: numbers have their lowest byte
/// first, and texts their length in front.
class ByteWriter {
public:
    /// What follows is a `name`, written in this version of its form.
    void heading(std::string_view name, std::uint32_t version);

    void byte(unsigned char value) { bytes_ += static_cast<char>(value); }
    void flag(bool value) { byte(value ? 1 : 0); }
    void number32(std::uint32_t value) { digits(value, sizeof value); }
    void number(std::uint64_t value) { digits(value, sizeof value); }
    void text(std::string_view value);

    /// Hands over what was written so far.
    std::string take() { return std::move(bytes_); }

private:
    void digits(std::uint64_t value, std::size_t count);

    std::string bytes_;
};

/// Reads what a ByteWriter wrote, in the same order. All operations throw BrokenBytes where the
/// bytes cannot be that. Nothing is believed of a length before so many bytes are there.
class ByteReader {
public:
    /// The bytes must outlive the reader and the texts that it gives.
    explicit ByteReader(std::string_view bytes) : rest_(bytes) {}

    /// Takes a heading, which must be just this one.
    void heading(std::string_view name, std::uint32_t version);

    unsigned char byte();
    bool flag();
    std::uint32_t number32() { return static_cast<std::uint32_t>(digits(sizeof(std::uint32_t))); }
    std::uint64_t number() { return digits(sizeof(std::uint64_t)); }
    std::string_view text();

    /// A number of things that follow, of which each takes `bytesEach` at least.
    std::size_t count(std::size_t bytesEach);

    /// All must have been read.
    void end() const;

private:
    std::string_view take(std::size_t size);
    std::uint64_t digits(std::size_t count);

    std::string_view rest_;
};

} // namespace casetable

#endif
