#ifndef CASETABLE_LISTING_FILEPATH_H
#define CASETABLE_LISTING_FILEPATH_H

#include <string_view>

namespace casetable {

/// Why a path can name no file below a root.
enum class PathFault {
    None,
    Empty,
    Absolute,       ///< It begins with "/".
    EmptyComponent, ///< Nothing stands between two "/".
    NamesFolder,    ///< It ends in "/", or its last component is ".".
    ClimbsOut       ///< ".." is one of its components.
};

/// None where `path`, relative to a root, can name a file below it; otherwise one of its faults.
/// Only the text is looked at: "./a" is the file "a" in the folder ".", and nothing need exist.
PathFault pathFault(std::string_view path);

} // namespace casetable

#endif
