#ifndef CASETABLE_IMPORTING_MISSING_H
#define CASETABLE_IMPORTING_MISSING_H

#include <cstddef>
#include <vector>

#include "casetable/importing/Report.h"

namespace casetable {

struct CaseTable;

/// How many combinations missingReport() lists at most.
const std::size_t mostMissing = 100'000;

/// A report with a row for each combination of values of these columns that no case has, sorted by
/// the columns in their order, each as CellRanks tells. `columns` are different indices of
/// `table.patterns`. Of numbers that are equal, which are one value, the first in the order of the
/// cases is shown. A case without a value in one of the columns takes no part with any. The names
/// of the columns are those in the header of caseReport() without tags.
///
/// Throws Failure with ExitCode::ImportFailed, and names the columns with the most values, when
/// more than mostMissing are missing.
Report missingReport(const CaseTable& table, const std::vector<std::size_t>& columns);

} // namespace casetable

#endif
