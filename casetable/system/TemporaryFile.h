#ifndef CASETABLE_SYSTEM_TEMPORARYFILE_H
#define CASETABLE_SYSTEM_TEMPORARYFILE_H

#include <string>

#include "casetable/system/Descriptor.h"

namespace casetable {

/// A new, empty file that is to take the place of another one, the target, by rename().
///
/// It stands in the target's folder, as ".casetable-", 32 bits of a hash of the target's name, "-"
/// and six letters or digits. It is locked by flock() until `opened` and all duplicates of it are
/// closed, as the system does at the latest when the process ends.
struct TemporaryFile {
    std::string path;
    Descriptor opened; ///< For reading and writing.
};

/// Makes one for the file at `target`, of a mode that lets only the user read and write. Where the
/// file system has no locks, it stays without. Nothing is open, and errno says why, where the
/// system refuses. Throws Interrupted when a signal came in. The caller renames or removes the
/// file.
TemporaryFile makeTemporaryFile(const std::string& target);

/// Removes the temporary files for `target` that nobody holds, as runs leave them that were killed,
/// and that the user may open for writing; reads all names in the folder for it. Where the system
/// refuses anything, as on a file system without locks, they stay. May go on in several processes
/// at once, and while others make theirs.
void removeAbandonedFiles(const std::string& target);

} // namespace casetable

#endif
