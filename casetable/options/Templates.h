#ifndef CASETABLE_OPTIONS_TEMPLATES_H
#define CASETABLE_OPTIONS_TEMPLATES_H

#include <optional>
#include <string>
#include <vector>

#include "casetable/templates/TemplateList.h"

namespace casetable {

/// The templates for which the values of --template stand, in their order. A value is a template,
/// except "@FILE": that is a file with a template in each line but empty ones and those that begin
/// with "#". A value that begins with "@@" is the template that begins with the second "@".
///
/// Throws Failure with ExitCode::WrongUsage if a file cannot be read or holds no template, or if a
/// template is not valid; its excerpt then shows the template with a caret under the place.
TemplateList parseTemplates(const std::vector<std::string>& values);

/// The file that a value of --template names; none where the value is a template.
std::optional<std::string> templateFile(const std::string& value);

/// The value of --template that stands for the template `text`.
std::string templateValue(const std::string& text);

} // namespace casetable

#endif
