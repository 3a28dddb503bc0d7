#ifndef CASETABLE_EXPLAINING_LEFTOUT_H
#define CASETABLE_EXPLAINING_LEFTOUT_H

#include <string>

#include "casetable/listing/Selection.h"

namespace casetable {

/// Why an import does not even look at a file at `path`, relative to its root: the path can name no
/// file below a root, or `selection` leaves the file or a folder above it out. Half a sentence with
/// the bytes of the path as they stand; empty where an import looks at it. Nothing need exist under
/// that path.
std::string whyLeftOut(const Selection& selection, const std::string& path);

} // namespace casetable

#endif
