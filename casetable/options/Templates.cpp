#include "casetable/options/Templates.h"

#include <cstddef>
#include <sstream>
#include <system_error>

#include "casetable/explaining/MarkedPath.h"
#include "casetable/options/CommandLine.h"
#include "casetable/options/OptionTable.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/ReadFile.h"

namespace casetable {

namespace {

// What is larger is hardly a file of templates, and would take memory for nothing.
const std::size_t mostBytes = std::size_t{16} * 1024 * 1024;

std::string optionName()
{
    return optionOf(OptionId::Template).name;
}

std::string contentOf(const std::string& file)
{
    try {
        return readFile(file, mostBytes);
    } catch (const std::system_error& failure) {
        failUsage(optionName() + " '@" + file + "': " + failure.code().message());
    }
}

std::vector<std::string> linesOf(const std::string& file)
{
    std::vector<std::string> lines;
    std::istringstream content(contentOf(file));
    for (std::string line; std::getline(content, line);) {
        if (!line.empty() && line.front() != '#')
            lines.push_back(line);
    }
    if (lines.empty())
        failUsage(optionName() + " '@" + file + "': there is no template in it");
    return lines;
}

// The template with a caret under the place that is wrong.
std::string excerpt(const TemplateError& error)
{
    const MarkedPath marked(error.text, {error.position}, false);
    return "  " + marked.text() + "\n  " +
           std::string(marked.marks(error.position, error.position, error.position).size() - 2,
                       ' ') +
           "^\n";
}

} // namespace

TemplateList parseTemplates(const std::vector<std::string>& values)
{
    std::vector<std::string> texts;
    for (const std::string& value : values) {
        if (value.compare(0, 2, "@@") == 0) {
            texts.push_back(value.substr(1));
        } else if (const std::optional<std::string> file = templateFile(value)) {
            const std::vector<std::string> lines = linesOf(*file);
            texts.insert(texts.end(), lines.begin(), lines.end());
        } else {
            texts.push_back(value);
        }
    }
    try {
        return TemplateList(texts);
    } catch (const TemplateError& error) {
        throw Failure(ExitCode::WrongUsage, optionName() + ": " + error.what(), excerpt(error));
    }
}

std::optional<std::string> templateFile(const std::string& value)
{
    if (value.compare(0, 1, "@") != 0 || value.compare(0, 2, "@@") == 0)
        return std::nullopt;
    return value.substr(1);
}

std::string templateValue(const std::string& text)
{
    return text.compare(0, 1, "@") == 0 ? "@" + text : text;
}

} // namespace casetable
