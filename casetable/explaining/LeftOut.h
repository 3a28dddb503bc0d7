#ifndef CASETABLE_EXPLAINING_LEFTOUT_H
#define CASETABLE_EXPLAINING_LEFTOUT_H

#include <string>

#include "casetable/listing/Selection.h"

namespace casetable {

/// The reason why an import does not look at a file at `path`, relative to its root: the path can
/// name no file below a root, or `selection` leaves out the file or a folder above it. Half a
/// sentence, in which the bytes of the path stand as they are; empty where an import looks at it.
/// Only the text of the path is looked at, and nothing need exist.
std::string whyLeftOut(const Selection& selection, const std::string& path);

} // namespace casetable

#endif
