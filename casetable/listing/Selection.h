#ifndef CASETABLE_LISTING_SELECTION_H
#define CASETABLE_LISTING_SELECTION_H

#include <cstddef>
#include <limits>
#include <string_view>
#include <vector>

#include "casetable/listing/Glob.h"

namespace casetable {

/// Which entries below a root take part. What is in a folder that is left out is not looked at.
struct Selection {
    enum class Verdict {
        Taken,
        LeftOut,
        Hidden ///< Left out because its name begins with ".", and for no other reason.
    };

    /// Entries that match any of these are left out.
    std::vector<Glob> excluded;

    /// Whether entries whose name begins with "." are taken too.
    bool hidden = true;

    /// The depth of the deepest files taken. Files directly in the root have depth 1.
    std::size_t maxDepth = std::numeric_limits<std::size_t>::max();

    /// Whether judge() needs the path of an entry. Otherwise its name will do.
    bool needsPaths() const;

    /// Whether judge() takes every entry.
    bool takesAll() const;

    /// Judges one entry, whose folder must be taken. `path` is relative to the root, or the name
    /// alone where needsPaths() is false; `depth` is counted from 1, that of entries of the root.
    Verdict judge(std::string_view path, std::size_t depth, bool isFolder) const;
};

} // namespace casetable

#endif
