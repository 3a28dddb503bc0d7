#include "casetable/system/ReadFile.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "casetable/system/Descriptor.h"

namespace casetable {

std::string readFile(const std::string& path, std::size_t mostBytes)
{
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen())
        throw std::system_error(errno, std::generic_category());
    std::string content;
    std::array<char, std::size_t{64} * 1024> buffer;
    for (;;) {
        const ssize_t size = ::read(file.number(), buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            throw std::system_error(errno, std::generic_category());
        if (size == 0)
            return content;
        content.append(buffer.data(), static_cast<std::size_t>(size));
        if (content.size() > mostBytes)
            throw std::system_error(std::make_error_code(std::errc::file_too_large));
    }
}

} // namespace casetable
