#ifndef CASETABLE_SUGGESTING_ROOTABOVE_H
#define CASETABLE_SUGGESTING_ROOTABOVE_H

#include <optional>
#include <string>

#include "casetable/options/Options.h"

namespace casetable {

/// A run with the folder above as root, which sees the files of another run under `name`, and what
/// stands beside it too, as far as that can be read.
struct RootAbove {
    Options options;
    std::string name; ///< Of the other run's root.
};

/// The run above that of `options`. None for a list and for "/", and where it would leave the root
/// out, as one that is hidden, or cannot read the folder above.
std::optional<RootAbove> rootAbove(const Options& options);

} // namespace casetable

#endif
