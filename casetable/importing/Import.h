#ifndef CASETABLE_IMPORTING_IMPORT_H
#define CASETABLE_IMPORTING_IMPORT_H

#include <memory>
#include <vector>

#include <boost/shared_ptr.hpp>

#include <vtkSmartPointer.h>
#include <vtkTable.h>

#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"
#include "host/AuxFileCollectionInterface.h"

namespace casetable {

/// A finished import: the importer for questions about files, and what it extracted.
class Import {
public:
    /// Runs the importer on a finished walk, and destroys the crawler when the importer has its own
    /// copy of the result; there may be many files. Identifiers are looked at only when there are
    /// cases.
    ///
    /// Throws Failure with ExitCode::ImportFailed when the importer refuses the folder, an
    /// identifier selects nothing or the markers overlap in a path.
    Import(std::unique_ptr<FolderCrawler> crawler, const std::vector<MetadataPattern>& patterns,
           const std::vector<AuxFileIdentifier>& identifiers);

    const MetadataFileCrawler& importer() const { return importer_; }

    /// One row a case; see MetadataFileCrawler::extract().
    vtkTable& table() const { return *table_; }

    /// The auxiliary files chosen; empty when none were asked for or there are no cases.
    const boost::shared_ptr<AuxFileCollectionInterface>& auxFiles() const { return auxFiles_; }

private:
    MetadataFileCrawler importer_;
    vtkSmartPointer<vtkTable> table_;
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles_;
};

} // namespace casetable

#endif
