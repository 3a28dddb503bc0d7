#ifndef CASETABLE_IMPORTING_SHARDIMPORT_H
#define CASETABLE_IMPORTING_SHARDIMPORT_H

#include <functional>
#include <string>
#include <vector>

#include "casetable/importing/Partial.h"
#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/MetadataInfoProviderInterface.h"

namespace casetable {

class Reading;
class Shard;

/// What is told of each file of a shard, while its importer can be asked; nothing unless it is set.
/// What it throws comes out of importShard().
struct FileVisitor {
    /// A file in a case, and who answers what was read from it.
    std::function<void(const std::string& path, const MetadataInfoProviderInterface& values)>
        matched;
    /// A file in no case.
    std::function<void(const std::string& path)> unmatched;
    /// Whether `unmatched` is to be called only where the shard has no case at all.
    bool unmatchedOnlyWithoutCases = false;
};

/// Imports the files of a shard with an importer of its own, on the calling thread. That a path
/// cannot be matched becomes the partial's failure; throws std::bad_alloc. Any number of threads
/// may do this at once, with the same arguments too.
Partial importShard(const Shard& shard, const Reading& reading,
                    const std::vector<AuxFileIdentifier>& identifiers, const KeptFiles& keptFiles,
                    const FileVisitor& visitor = {});

} // namespace casetable

#endif
