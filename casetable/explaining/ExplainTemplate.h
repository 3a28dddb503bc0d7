#ifndef CASETABLE_EXPLAINING_EXPLAINTEMPLATE_H
#define CASETABLE_EXPLAINING_EXPLAINTEMPLATE_H

#include <string>

#include "casetable/explaining/Explain.h"
#include "casetable/templates/TemplateList.h"

namespace casetable {

/// Explains how an import reads `path`, relative to its root, by templates: a line for each column
/// that was read, with "~" under its value; and the template that fits, or of the one that came
/// furthest the element that failed, marked in the template. With `inColour` the marks are bold.
/// Throws MatchError.
Explanation explain(const std::string& path, const TemplateList& templates, bool inColour);

} // namespace casetable

#endif
