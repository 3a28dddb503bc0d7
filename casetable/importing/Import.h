#ifndef CASETABLE_IMPORTING_IMPORT_H
#define CASETABLE_IMPORTING_IMPORT_H

#include <memory>
#include <string>
#include <vector>

#include "casetable/importing/CaseTable.h"
#include "casetable/importing/Reading.h"
#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"

namespace casetable {

/// A finished import: the importer, to be asked about files, and the cases that it extracted. Used
/// by one thread at a time.
class Import {
public:
    /// Imports the result of a finished walk. The crawler is destroyed as soon as the importer has
    /// its own copy of the result, to save memory: there may be many files. Identifiers are looked
    /// at only when there are cases.
    ///
    /// Throws Failure with ExitCode::ImportFailed and the reason when the importer refuses the
    /// root, an identifier selects nothing, markers overlap in a path, or it cannot be told whether
    /// a template fits a path.
    Import(std::unique_ptr<FolderCrawler> crawler, const Reading& reading,
           const std::vector<AuxFileIdentifier>& identifiers);

    /// The importer, with all files of the walk and their matches.
    const MetadataFileCrawler& importer() const { return importer_; }

    /// The cases, as the importer extracted them.
    const CaseTable& table() const { return table_; }

    /// Whether the file at `path`, relative to the root, belongs to a case.
    bool isMatched(const std::string& path) const;

private:
    MetadataFileCrawler importer_;
    CaseTable table_;
};

} // namespace casetable

#endif
