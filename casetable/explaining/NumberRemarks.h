#ifndef CASETABLE_EXPLAINING_NUMBERREMARKS_H
#define CASETABLE_EXPLAINING_NUMBERREMARKS_H

#include <string>
#include <string_view>
#include <vector>

#include "crawler/MetadataInfoProviderInterface.h"

namespace casetable {

struct CaseTable;

/// Remarks on the number columns of a finished import, of which `table` holds the cases, one line
/// each: how many cells of a column are no number although the paths have a value there; and how
/// many cases differ from another one only in the way in which equal numbers are written.
///
/// `firstFiles` are the least paths by bytes of the cases, by index, and `values` answers what was
/// read from these.
std::vector<std::string> numberRemarks(const CaseTable& table,
                                       const std::vector<std::string_view>& firstFiles,
                                       const MetadataInfoProviderInterface& values);

} // namespace casetable

#endif
