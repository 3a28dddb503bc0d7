#ifndef CASETABLE_EXPLAINING_TEMPLATEREMARKS_H
#define CASETABLE_EXPLAINING_TEMPLATEREMARKS_H

#include <string>
#include <vector>

#include "casetable/templates/TemplateList.h"
#include "crawler/MetadataFileCrawler.h"

namespace casetable {

/// What in the templates of a finished import its user has probably not meant, one line for each: a
/// template that reads no file; an optional part that no file takes; files in which a wildcard or a
/// column beside a part that is left out holds the text with which the part begins. Reads every
/// matched path again, and says nothing of parts that one may take on which the engine gives up
/// then.
std::vector<std::string> remarks(const MetadataFileCrawler& importer,
                                 const TemplateList& templates);

} // namespace casetable

#endif
