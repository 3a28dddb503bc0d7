#ifndef CASETABLE_EXPLAINING_EXPLAINTEMPLATE_H
#define CASETABLE_EXPLAINING_EXPLAINTEMPLATE_H

#include <string>

#include "casetable/explaining/Explain.h"
#include "casetable/templates/TemplateList.h"

namespace casetable {

/// Explains how an import reads `path`, relative to its root, by templates, of which there must be
/// one at least: a line for each column that was read, with "~" where its value stands in the path
/// above; and the template that fits. If none does, it is the one that came furthest, as
/// TemplateFailures::furthest() says, with "^" under its element that failed. With `inColour` the
/// marks are bold. Only the text of the path is looked at, and nothing need exist. Throws
/// MatchError.
Explanation explain(const std::string& path, const TemplateList& templates, bool inColour);

} // namespace casetable

#endif
