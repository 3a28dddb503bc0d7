#ifndef CASETABLE_OPTIONS_COLUMNNAMES_H
#define CASETABLE_OPTIONS_COLUMNNAMES_H

#include <cstddef>
#include <string>
#include <vector>

#include "casetable/importing/Sorting.h"

namespace casetable {

struct Options;

/// The columns of --missing: the indices of patterns that `values` name. Each value is the name of
/// a column, or else several, divided by commas. A column is named as the header of the table of
/// cases shows it.
///
/// Throws Failure with ExitCode::WrongUsage when a column is not there or is named twice, or when
/// there are values but they name fewer than two columns.
std::vector<std::size_t> parseMissing(const std::vector<std::string>& values,
                                      const Options& options);

/// The keys of --sort that `values` name. Each value is the name of a column; or else "-" and a
/// name, for descending order; or else several of both, divided by commas. The columns are those of
/// the table that `options` ask for, otherwise complete, and are named as its header shows them.
///
/// Throws Failure with ExitCode::WrongUsage when a column is not there.
std::vector<SortKey> parseSort(const std::vector<std::string>& values, const Options& options);

/// The values, one for each column or key, of which parseMissing() and parseSort() make those of
/// `options`.
std::vector<std::string> missingValues(const Options& options);
std::vector<std::string> sortValues(const Options& options);

} // namespace casetable

#endif
