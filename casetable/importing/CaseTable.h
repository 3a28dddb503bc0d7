#ifndef CASETABLE_IMPORTING_CASETABLE_H
#define CASETABLE_IMPORTING_CASETABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "crawler/MetadataPattern.h"
#include "host/AuxFileCollectionInterface.h"

namespace casetable {

/// The cases of an import as a value, which needs neither the importer nor the files any more.
struct CaseTable {
    /// The columns: their names, which may be equal, and whether they hold numbers.
    std::vector<MetadataPattern> patterns;

    /// The cells row by row, one row a case in the order of their indices, as
    /// MetadataFileCrawler::extract() made them.
    std::vector<std::string> cells;

    std::size_t caseCount = 0;

    /// The tags asked for, in the order of the user's identifiers, each once.
    std::vector<std::string> tags;

    /// The auxiliary files chosen; empty when none were asked for or there are no cases.
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles;

    /// The files under the tag of an index below tags.size(), of a case below caseCount.
    std::vector<std::string> auxFilesOf(std::size_t caseIndex, std::size_t tagIndex) const;

    /// Appends the cells of the case to `cells`.
    void appendCells(std::size_t caseIndex, std::vector<std::string>& cells) const;
};

} // namespace casetable

#endif
