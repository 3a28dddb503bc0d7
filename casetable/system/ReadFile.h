#ifndef CASETABLE_SYSTEM_READFILE_H
#define CASETABLE_SYSTEM_READFILE_H

#include <cstddef>
#include <string>

namespace casetable {

/// The content of the file at `path`. Throws std::system_error with the system's error where it
/// cannot be read, and with std::errc::file_too_large where it has more than `mostBytes` bytes.
std::string readFile(const std::string& path, std::size_t mostBytes);

} // namespace casetable

#endif
