#ifndef CASETABLE_LISTING_FILEPATH_H
#define CASETABLE_LISTING_FILEPATH_H

#include <cstddef>
#include <string_view>

namespace casetable {

/// The reason why a path can name no file below a root.
enum class PathFault {
    None,
    Empty,          ///< It has no bytes.
    Absolute,       ///< It begins with "/".
    EmptyComponent, ///< Nothing stands between two "/".
    NamesFolder,    ///< It ends in "/", or its last component is ".".
    ClimbsOut       ///< ".." is one of its components.
};

/// None if `path`, relative to a root, can name a file below it, otherwise one of its faults. Only
/// the text is looked at, and nothing need exist: "./a" can name the file "a" in the folder ".".
///
/// The first `shared` bytes are known to begin a path without a fault too. That saves time; the
/// answer is the same.
PathFault pathFault(std::string_view path, std::size_t shared = 0);

/// The number of bytes with which both begin.
std::size_t commonLength(std::string_view left, std::string_view right);

} // namespace casetable

#endif
