#ifndef CASETABLE_EXPLAINING_NUMBERREMARKS_H
#define CASETABLE_EXPLAINING_NUMBERREMARKS_H

#include <string>
#include <vector>

#include "crawler/MetadataFileCrawler.h"

namespace casetable {

struct CaseTable;

/// Remarks on the number columns of a finished import, of which `table` holds the cases, one line
/// each: how many cells of a column are no number although the paths have a value there; and how
/// many cases differ from another one only in the way in which equal numbers are written.
std::vector<std::string> numberRemarks(const MetadataFileCrawler& importer, const CaseTable& table);

} // namespace casetable

#endif
