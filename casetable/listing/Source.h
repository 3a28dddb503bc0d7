#ifndef CASETABLE_LISTING_SOURCE_H
#define CASETABLE_LISTING_SOURCE_H

#include <optional>
#include <string>

#include "casetable/listing/Selection.h"

namespace casetable {

/// Where the files come from: a folder, or a list that somebody else made.
struct Source {
    std::string root;                ///< The folder; empty if there is a list, or no import.
    std::optional<std::string> list; ///< The file of the list; "-" is standard input.
    bool nullSeparated = false;      ///< Whether the list is divided by NULs, not by line ends.
    bool noDuplicates = false;       ///< Whether the list is trusted to have no path twice.
    Selection selection;             ///< Which of the files take part.
    bool follow = false;             ///< Whether links to folders below the root are followed.
    bool keepGoing = false;          ///< Whether folders that cannot be read are left out.
};

} // namespace casetable

#endif
