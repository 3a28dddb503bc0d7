#ifndef CASETABLE_EXPLAINING_EXPLAIN_H
#define CASETABLE_EXPLAINING_EXPLAIN_H

#include <string>
#include <vector>

#include "crawler/MetadataPattern.h"

namespace casetable {

/// How one path is read, in words for people.
struct Explanation {
    bool isMatched;
    /// Printable lines, each ended by a line feed: the path; a line for each marker, with what was
    /// read, "^" where the marker stands in the path above and "~" where its value does; and that
    /// the path is matched, or at which marker matching stopped and by which rule.
    std::string text;
};

/// Explains how an import reads `path`, relative to its root, by `patterns`, of which there must be
/// one at least. With `inColour` the marks are bold. Only the text of the path is looked at, and
/// nothing need exist.
Explanation explain(const std::string& path, const std::vector<MetadataPattern>& patterns,
                    bool inColour);

} // namespace casetable

#endif
