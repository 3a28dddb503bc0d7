#ifndef CASETABLE_IMPORTING_MISSING_H
#define CASETABLE_IMPORTING_MISSING_H

#include <cstddef>
#include <vector>

#include "casetable/importing/Report.h"

namespace casetable {

struct CaseTable;

/// How many combinations findMissing() lists at most.
const std::size_t mostMissing = 100'000;

/// The combinations of values of some columns that no case has.
struct Missing {
    /// A row for each, sorted by the columns in their order, each as CellRanks tells.
    Report report;

    /// How many combinations there are, missing or not.
    std::size_t combinations = 0;

    /// How many cases take no part, as they have no value in one of the columns.
    std::size_t casesLeftOut = 0;
};

/// Finds the combinations that are missing. `columns` are different indices of `table.patterns`. Of
/// numbers that are equal, which are one value, the first in the order of the cases is shown. A
/// case without a value in one of the columns takes no part with any. The names of the columns are
/// those in the header of caseReport() without tags.
///
/// Throws Failure with ExitCode::ImportFailed, and names the columns with the most values, when
/// more than mostMissing are missing.
Missing findMissing(const CaseTable& table, const std::vector<std::size_t>& columns);

} // namespace casetable

#endif
