#include "casetable/system/Bytes.h"

namespace casetable {

namespace {

const unsigned bitsOfByte = 8;

} // namespace

void ByteWriter::heading(std::string_view name, std::uint32_t version)
{
    text(name);
    number32(version);
}

void ByteWriter::text(std::string_view value)
{
    number(value.size());
    bytes_ += value;
}

void ByteWriter::digits(std::uint64_t value, std::size_t count)
{
    for (std::size_t k = 0; k < count; ++k)
        byte(static_cast<unsigned char>(value >> (k * bitsOfByte)));
}

void ByteReader::heading(std::string_view name, std::uint32_t version)
{
    if (text() != name)
        throw BrokenBytes("a message is not a " + std::string(name));
    const std::uint32_t found = number32();
    if (found != version)
        throw BrokenBytes("a " + std::string(name) + " is of version " + std::to_string(found) +
                          " in place of " + std::to_string(version));
}

unsigned char ByteReader::byte()
{
    return static_cast<unsigned char>(take(1).front());
}

bool ByteReader::flag()
{
    const unsigned char value = byte();
    if (value > 1)
        throw BrokenBytes("a message is damaged");
    return value == 1;
}

std::string_view ByteReader::text()
{
    return take(count(1));
}

std::size_t ByteReader::count(std::size_t bytesEach)
{
    const std::uint64_t count = number();
    if (count > rest_.size() / bytesEach)
        throw BrokenBytes("a message is cut off");
    return static_cast<std::size_t>(count);
}

void ByteReader::end() const
{
    if (!rest_.empty())
        throw BrokenBytes("a message is longer than what it holds");
}

std::string_view ByteReader::take(std::size_t size)
{
    if (size > rest_.size())
        throw BrokenBytes("a message is cut off");
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
}

std::uint64_t ByteReader::digits(std::size_t count)
{
    const std::string_view bytes = take(count);
    std::uint64_t value = 0;
    for (std::size_t k = count; k > 0; --k)
        value = value << bitsOfByte | static_cast<unsigned char>(bytes[k - 1]);
    return value;
}

} // namespace casetable
