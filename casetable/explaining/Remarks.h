#ifndef CASETABLE_EXPLAINING_REMARKS_H
#define CASETABLE_EXPLAINING_REMARKS_H

#include <string>
#include <vector>

#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// Remarks on values that probably end earlier than was meant, a line for each marker that has
/// such: texts that end at a "." though the next marker is farther on, and numbers that end at a
/// "," or "." with digits behind it. Reads all matched files of the importer; `patterns` is the
/// list last applied to it.
std::vector<std::string> remarks(const MetadataFileCrawler& importer,
                                 const std::vector<MetadataPattern>& patterns);

} // namespace casetable

#endif
