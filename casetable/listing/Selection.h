#ifndef CASETABLE_LISTING_SELECTION_H
#define CASETABLE_LISTING_SELECTION_H

#include <cstddef>
#include <limits>
#include <string_view>
#include <vector>

#include "casetable/listing/Glob.h"

namespace casetable {

/// Which entries below a root take part. Of a folder that is left out nothing is looked at.
struct Selection {
    enum class Verdict {
        Taken,
        LeftOut,
        Hidden ///< Left out because its name begins with ".", and for no other reason.
    };

    /// Entries that match any of these are left out.
    std::vector<Glob> excluded;

    /// Take entries whose name begins with "." too.
    bool hidden = true;

    /// The depth of the deepest files taken, from 1, which is that of the files in the root.
    std::size_t maxDepth = std::numeric_limits<std::size_t>::max();

    /// Whether judge() needs paths.
    bool needsPaths() const;

    /// Judges an entry that stands in a folder that is taken. `path` is relative to the root; where
    /// needsPaths() is false, the name alone will do.
    Verdict judge(std::string_view path, std::size_t depth, bool isFolder) const;
};

} // namespace casetable

#endif
