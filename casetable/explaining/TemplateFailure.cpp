#include "casetable/explaining/TemplateFailure.h"

#include <memory>
#include <optional>
#include <utility>

namespace casetable {

namespace {

// Each path is tried with many beginnings of each template, so of many paths a sample will do.
const std::size_t mostTried = 1000;

// A lone wildcard reaches far, so what counts first is how much of the template fits.
bool isFurther(const Beginning& left, const Beginning& right)
{
    return left.elements != right.elements ? left.elements > right.elements : left.end > right.end;
}

// None where the engine gives up: only why the templates do not fit is open then.
std::optional<TemplateFailure> furthestIfKnown(TemplateFailures& failures, const std::string& path)
{
    try {
        return failures.furthest(path);
    } catch (const MatchError&) {
        return std::nullopt;
    }
}

} // namespace

TemplateFailures::TemplateFailures(const TemplateList& templates) : templates_(templates)
{
    for (const Template& each : templates.templates())
        matchers_.emplace_back(each);
}

TemplateFailure TemplateFailures::furthest(const std::string& path)
{
    TemplateFailure furthest = {nullptr, {}};
    for (std::size_t index = 0; index < matchers_.size(); ++index) {
        Beginning beginning = matchers_[index].longestBeginning(path);
        if (furthest.pathTemplate == nullptr || isFurther(beginning, furthest.beginning))
            furthest = {&templates_.templates()[index], std::move(beginning)};
    }
    return furthest;
}

std::string failureReason(const TemplateFailure& failure, const std::string& path)
{
    const std::vector<TemplateElement>& elements = failure.pathTemplate->elements();
    const std::string fitting = path.substr(0, failure.beginning.end);
    if (failure.beginning.elements == elements.size())
        return "the path goes on behind '" + fitting + "', where the template ends";
    const std::string failed =
        "'" + elementText(*failure.pathTemplate, elements[failure.beginning.elements]) + "'";
    return fitting.empty() ? failed + " does not fit the beginning of the path"
                           : failed + " does not fit behind '" + fitting + "'";
}

UnmatchedRows unmatchedRows(const TemplateList& templates)
{
    UnmatchedRows rows;
    rows.columns = {{"path", Column::Kind::Text},
                    {"template", Column::Kind::Text},
                    {"reason", Column::Kind::Text}};
    const auto failures = std::make_shared<TemplateFailures>(templates);
    rows.row = [failures](const std::string& path) {
        const TemplateFailure failure = failures->furthest(path);
        Row row;
        row.cells = {path, failure.pathTemplate->text(), failureReason(failure, path)};
        return row;
    };
    return rows;
}

std::string failureSummary(const MetadataFileCrawler& importer, const TemplateList& templates)
{
    const std::vector<std::string> paths = unmatchedPaths(importer);
    if (paths.empty())
        return "";
    TemplateFailures failures(templates);
    std::optional<TemplateFailure> furthest;
    std::string example;
    const std::size_t step = paths.size() / mostTried + 1;
    for (std::size_t index = 0; index < paths.size(); index += step) {
        std::optional<TemplateFailure> failure = furthestIfKnown(failures, paths[index]);
        if (failure && (!furthest || failure->beginning.elements > furthest->beginning.elements)) {
            furthest = std::move(failure);
            example = paths[index];
        }
    }
    return (templates.templates().size() == 1 ? "the template does not fit "
                                              : "no template fits ") +
           std::to_string(paths.size()) + (paths.size() == 1 ? " file" : " files") +
           (furthest ? ", as " + example + ": " + failureReason(*furthest, example) : "");
}

std::string elementText(const Template& pathTemplate, const TemplateElement& element)
{
    return pathTemplate.text().substr(element.position, element.length);
}

} // namespace casetable
