#ifndef CASETABLE_EXPLAINING_REMARKS_H
#define CASETABLE_EXPLAINING_REMARKS_H

#include <string>
#include <vector>

#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// Remarks on values that were probably meant otherwise, each with the number of files and one of
/// them: texts that end at a "." though the next marker is farther on; numbers that end at a ",",
/// "." or "p" with digits behind it; and numbers that all begin with a "-" which may be a
/// separator. Reads all matched files of the importer; `patterns` is the list last applied to it.
std::vector<std::string> remarks(const MetadataFileCrawler& importer,
                                 const std::vector<MetadataPattern>& patterns);

} // namespace casetable

#endif
