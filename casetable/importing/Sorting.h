#ifndef CASETABLE_IMPORTING_SORTING_H
#define CASETABLE_IMPORTING_SORTING_H

#include <cstddef>
#include <vector>

#include "casetable/importing/Report.h"

namespace casetable {

/// A column that rows are sorted by.
struct SortKey {
    std::size_t column; ///< Its index among the report's columns.
    bool isDescending = false;
};

/// The report with its rows sorted by the first key, those that are equal there by the second, and
/// so on, each as CellRanks tells; in either direction, rows without a value come last. Rows that
/// are equal in all keys stay in their order. The cells stay what they are: numbers of cases too.
///
/// Asks for each row once if there are keys, and keeps a number for each row. May throw what
/// Report::row throws.
Report sorted(Report report, const std::vector<SortKey>& keys);

} // namespace casetable

#endif
