#ifndef CASETABLE_IMPORTING_CASETABLE_H
#define CASETABLE_IMPORTING_CASETABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "crawler/MetadataPattern.h"
#include "host/AuxFileCollectionInterface.h"

namespace casetable {

/// The cases of an import as a value, which does not refer to the importer.
struct CaseTable {
    /// The columns: their names, which need not be unique, and whether they hold numbers.
    std::vector<MetadataPattern> patterns;

    /// The cells row by row, as MetadataFileCrawler::extract() made them. The row at an index holds
    /// the values of the case with that index.
    std::vector<std::string> cells;

    /// The number of rows.
    std::size_t caseCount = 0;

    /// The tags of the user's identifiers, in their order, each once.
    std::vector<std::string> tags;

    /// The auxiliary files of the cases by tag; empty when there are no identifiers or no cases.
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles;

    /// The paths of the auxiliary files of one case under one tag. `caseIndex` is below caseCount,
    /// and `tagIndex` below tags.size().
    std::vector<std::string> auxFilesOf(std::size_t caseIndex, std::size_t tagIndex) const;

    /// Appends the row of the case to `cells`. `caseIndex` is below caseCount.
    void appendCells(std::size_t caseIndex, std::vector<std::string>& cells) const;
};

} // namespace casetable

#endif
