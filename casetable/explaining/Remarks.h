#ifndef CASETABLE_EXPLAINING_REMARKS_H
#define CASETABLE_EXPLAINING_REMARKS_H

#include <string>
#include <vector>

#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"

namespace casetable {

/// What the rules for values make of the paths though it is probably not meant, a line for each
/// marker concerned: text that is cut at a "." in front of the next marker, and numbers that end
/// at a "," or "." with digits behind it. `patterns` is the list last applied to the importer.
std::vector<std::string> remarks(const MetadataFileCrawler& importer,
                                 const std::vector<MetadataPattern>& patterns);

} // namespace casetable

#endif
