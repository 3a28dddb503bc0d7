#ifndef CASETABLE_EXPLAINING_TEMPLATEREMARKS_H
#define CASETABLE_EXPLAINING_TEMPLATEREMARKS_H

#include <string>
#include <vector>

#include "casetable/templates/TemplateList.h"
#include "crawler/MetadataFileCrawler.h"

namespace casetable {

/// Remarks on what the user of a finished import has probably not meant with the templates, one
/// line each: a template that reads no file; an optional part that no file has; an optional part
/// that is left out in files in which a wildcard or a column beside it holds the text that the part
/// begins with. Reads every matched path again; where the engine gives up then, nothing is said of
/// the template's parts.
std::vector<std::string> remarks(const MetadataFileCrawler& importer,
                                 const TemplateList& templates);

} // namespace casetable

#endif
