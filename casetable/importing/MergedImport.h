#ifndef CASETABLE_IMPORTING_MERGEDIMPORT_H
#define CASETABLE_IMPORTING_MERGEDIMPORT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "casetable/importing/CaseTable.h"
#include "casetable/importing/Partial.h"
#include "casetable/importing/Reading.h"
#include "crawler/AuxFileIdentifierValidator.h"
#include "host/FileInfoInterface.h"

namespace casetable {

/// A finished import, whose files were imported in shards: its cases, in byte order of their least
/// paths, and the files that were kept. Used by one thread at a time.
class MergedImport {
public:
    /// A file that was kept.
    struct File {
        std::string_view path;
        std::size_t caseIndex; ///< Open if it is not matched.
        std::string_view tag;  ///< Under which it was collected; empty if under none.
    };

    /// Takes what the import of all files below `root` came to, with the given identifiers and kept
    /// files. Has the module's importer check the root and make the table. Identifiers are looked
    /// at only when there are cases.
    ///
    /// Throws Failure with ExitCode::ImportFailed and the reason when the importer refuses the
    /// root, a path could not be matched, or an identifier selects nothing, in this order.
    MergedImport(Partial all, const boost::shared_ptr<FileInfoInterface const>& root,
                 const Reading& reading, const std::vector<AuxFileIdentifier>& identifiers,
                 const KeptFiles& keptFiles);
    ~MergedImport();

    /// The cases, as the importer extracted them.
    const CaseTable& table() const { return table_; }

    /// The number of all files.
    std::size_t fileCount() const { return fileCount_; }

    /// The number of files that are in a case.
    std::size_t matchedCount() const { return matchedCount_; }

    /// Whether the watched file is there and in a case.
    bool isWatchedMatched() const { return isWatchedMatched_; }

    /// The number of files that KeptFiles asks for: the matched or the unmatched ones.
    std::size_t keptCount() const { return rows_.size(); }

    /// One of them, by its rank in byte order of path, below keptCount().
    File keptFile(std::size_t rank) const;

private:
    // Where a file stands among those of its shard.
    struct Place {
        std::uint32_t part;
        std::uint32_t index;
    };
    class Files;
    class AuxFiles;

    CaseTable table_;
    const std::size_t fileCount_;
    const std::size_t matchedCount_;
    const bool isWatchedMatched_;
    boost::shared_ptr<const Files> files_;
    std::vector<std::string> tagOf_; // Each identifier.
    std::vector<Place> rows_;
};

} // namespace casetable

#endif
