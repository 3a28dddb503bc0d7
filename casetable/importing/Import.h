#ifndef CASETABLE_IMPORTING_IMPORT_H
#define CASETABLE_IMPORTING_IMPORT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "casetable/importing/CaseTable.h"
#include "casetable/importing/Cases.h"
#include "casetable/importing/FileRows.h"
#include "casetable/importing/Partial.h"
#include "casetable/importing/Reading.h"
#include "crawler/AuxFileIdentifierValidator.h"
#include "host/FileInfoInterface.h"

namespace casetable {

/// A finished import, whose files were imported in shards: its cases, in byte order of their least
/// paths, and the files that were kept. Used by one thread at a time.
class Import {
public:
    /// Takes what the import of all files below `root` came to, with the given identifiers and kept
    /// files. Has the module's importer check the root and make the table. Identifiers are looked
    /// at only when there are cases.
    ///
    /// Throws Failure with ExitCode::ImportFailed and the reason when the importer refuses the
    /// root, a path could not be matched, or an identifier selects nothing, in this order.
    Import(Partial all, const boost::shared_ptr<FileInfoInterface const>& root,
           const Reading& reading, const std::vector<AuxFileIdentifier>& identifiers,
           const KeptFiles& keptFiles);
    ~Import();
    Import(const Import&) = delete;
    Import& operator=(const Import&) = delete;

    /// The cases, as the importer extracted them.
    const CaseTable& table() const { return table_; }

    /// The number of all files.
    std::size_t fileCount() const { return fileCount_; }

    /// The number of files that are in a case.
    std::size_t matchedCount() const { return matchedCount_; }

    /// Whether the watched file is there and in a case.
    bool isWatchedMatched() const { return isWatchedMatched_; }

    /// The least path of each case in byte order, by the case's index. They refer to this import.
    const std::vector<std::string_view>& firstFiles() const { return firstFiles_; }

    /// The files that are in a case; none unless they were kept. They refer to this import.
    FileRows matchedFiles() const { return rowsOf(matched_); }

    /// The files that are in no case; none unless they were kept. They refer to this import.
    FileRows unmatchedFiles() const { return rowsOf(unmatched_); }

private:
    // Where a file stands among those of its shard.
    struct Place {
        std::uint32_t part;
        std::uint32_t index;
    };
    class Files;
    class AuxFiles;

    FileRows rowsOf(const std::vector<Place>& places) const;

    CaseTable table_;
    Cases cases_;
    std::vector<std::string_view> firstFiles_;
    const std::size_t fileCount_;
    const std::size_t matchedCount_;
    const bool isWatchedMatched_;
    boost::shared_ptr<const Files> files_;
    std::vector<std::string> tagOf_; // Each identifier.
    std::vector<Place> matched_;
    std::vector<Place> unmatched_;
};

} // namespace casetable

#endif
