#ifndef CASETABLE_SYSTEM_READFILE_H
#define CASETABLE_SYSTEM_READFILE_H

#include <cstddef>
#include <string>

namespace casetable {

/// The content of the file at `path`. Throws std::system_error when the system refuses, and with
/// std::errc::file_too_large when there are more than `mostBytes`.
std::string readFile(const std::string& path, std::size_t mostBytes);

} // namespace casetable

#endif
