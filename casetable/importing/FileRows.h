#ifndef CASETABLE_IMPORTING_FILEROWS_H
#define CASETABLE_IMPORTING_FILEROWS_H

#include <cstddef>
#include <functional>
#include <string_view>

namespace casetable {

/// A file of an import.
struct FileRow {
    std::string_view path;     ///< Relative to the root.
    std::size_t caseIndex = 0; ///< Of its case; open if it is in none.
    std::string_view tag = {}; ///< Under which it was collected; empty if under none.
};

/// Files in byte order of path. What they were made from must outlive them and what they give.
struct FileRows {
    std::size_t count = 0;
    std::function<FileRow(std::size_t)> file; ///< Gives the one at an index below `count`.
};

} // namespace casetable

#endif
