#ifndef CASETABLE_IMPORTING_CASETABLE_H
#define CASETABLE_IMPORTING_CASETABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/MetadataPattern.h"
#include "host/AuxFileCollectionInterface.h"

namespace casetable {

/// The cases of an import as a value, which does not refer to the importer.
struct CaseTable {
    /// The columns: their names, which need not be unique, and whether they hold numbers.
    std::vector<MetadataPattern> patterns;

    /// The cells row by row: the texts of the values. The row at an index holds those of the case
    /// with that index. Where there is no value, or a number does not convert, the cell is empty.
    std::vector<std::string> cells;

    /// The number of files of each case, by its index.
    std::vector<std::size_t> fileCounts;

    /// The tags of the user's identifiers, in their order, each once.
    std::vector<std::string> tags;

    /// The auxiliary files of the cases by tag; empty when there are no identifiers or no cases.
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles;

    /// The number of cases.
    std::size_t caseCount() const { return fileCounts.size(); }

    /// The paths of the auxiliary files of one case under one tag. `caseIndex` is below
    /// caseCount(), and `tagIndex` below tags.size().
    std::vector<std::string> auxFilesOf(std::size_t caseIndex, std::size_t tagIndex) const;

    /// The cell of the case in the column of the pattern at the index `column`.
    const std::string& cell(std::size_t caseIndex, std::size_t column) const
    {
        return cells[caseIndex * patterns.size() + column];
    }

    /// Appends the row of the case to `cells`. `caseIndex` is below caseCount().
    void appendCells(std::size_t caseIndex, std::vector<std::string>& cells) const;
};

/// The tags of the identifiers, in their order, each once.
std::vector<std::string> tagsOf(const std::vector<AuxFileIdentifier>& identifiers);

} // namespace casetable

#endif
