#ifndef CASETABLE_LISTING_SOURCE_H
#define CASETABLE_LISTING_SOURCE_H

#include <optional>
#include <string>

#include "casetable/listing/Selection.h"

namespace casetable {

/// Where the files of an import come from: a folder, or a list that somebody else made.
struct Source {
    std::string root;                ///< The folder as the user named it; empty for a list.
    std::optional<std::string> list; ///< The file of the list; "-" is standard input.
    bool nullSeparated = false;      ///< Whether the paths of the list end with NUL.
    Selection selection;             ///< Which of the files take part.
    bool follow = false;             ///< Follow links to folders.
    bool keepGoing = false;          ///< Leave unreadable folders out, with a warning each.
};

} // namespace casetable

#endif
