#ifndef CASETABLE_OPTIONS_TEMPLATES_H
#define CASETABLE_OPTIONS_TEMPLATES_H

#include <string>
#include <vector>

#include "casetable/templates/TemplateList.h"

namespace casetable {

/// The templates that values of --template stand for: each is a template, but "@FILE" is a file
/// with a template a line, in which empty lines and those that begin with "#" are left out, and in
/// "@@" the first "@" only takes that meaning from the second.
///
/// Throws Failure with ExitCode::WrongUsage where a file cannot be read or holds no template, and
/// where a template cannot be read, with a caret under the place.
TemplateList parseTemplates(const std::vector<std::string>& values);

/// The value of --template that stands for a template.
std::string templateValue(const std::string& text);

} // namespace casetable

#endif
