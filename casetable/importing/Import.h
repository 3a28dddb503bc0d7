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

/// A finished import: the importer for questions about files, and the cases that it extracted.
class Import {
public:
    /// Runs the importer on a finished walk, and destroys the crawler when the importer has its own
    /// copy of the result; there may be many files. Identifiers are looked at only when there are
    /// cases.
    ///
    /// Throws Failure with ExitCode::ImportFailed when the importer refuses the folder, an
    /// identifier selects nothing, the markers overlap in a path, or it cannot be told whether a
    /// template fits a path.
    Import(std::unique_ptr<FolderCrawler> crawler, const Reading& reading,
           const std::vector<AuxFileIdentifier>& identifiers);

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
