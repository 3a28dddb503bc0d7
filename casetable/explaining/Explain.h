#ifndef CASETABLE_EXPLAINING_EXPLAIN_H
#define CASETABLE_EXPLAINING_EXPLAIN_H

#include <string>
#include <vector>

#include "crawler/MetadataPattern.h"

namespace casetable {

/// How one path is read, for people.
struct Explanation {
    bool isMatched;
    /// Lines: the path made printable; for each marker a line with "^" under the marker and "~"
    /// under its value, where they were found, and what was read; and whether the path is matched,
    /// or at which marker matching stopped and by which rule.
    std::string text;
};

/// Explains how an import reads `path`, relative to its root, by `patterns`, which must not be
/// empty. With `inColour` the marks are bold. Nothing need exist under that path.
Explanation explain(const std::string& path, const std::vector<MetadataPattern>& patterns,
                    bool inColour);

} // namespace casetable

#endif
