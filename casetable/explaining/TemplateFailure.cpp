#include "casetable/explaining/TemplateFailure.h"

#include <memory>
#include <utility>

#include "casetable/explaining/Unmatched.h"

namespace casetable {

namespace {

// Each path is tried with many beginnings of each template, so of many paths a sample will do.
const std::size_t mostTried = 1000;

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
        if (furthest.pathTemplate == nullptr || beginning.end > furthest.beginning.end)
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

Report unmatchedReport(const MetadataFileCrawler& importer, const TemplateList& templates)
{
    Report report;
    report.rowsName = "unmatched";
    report.columns = {{"path", Column::Kind::Text},
                      {"template", Column::Kind::Text},
                      {"reason", Column::Kind::Text}};
    std::vector<std::string> paths = unmatchedPaths(importer);
    report.rowCount = paths.size();
    const auto failures = std::make_shared<TemplateFailures>(templates);
    report.row = [paths = std::move(paths), failures](std::size_t index) {
        const std::string& path = paths[index];
        const TemplateFailure failure = failures->furthest(path);
        Row row;
        row.cells = {path, failure.pathTemplate->text(), failureReason(failure, path)};
        return row;
    };
    return report;
}

std::string failureSummary(const MetadataFileCrawler& importer, const TemplateList& templates)
{
    const std::vector<std::string> paths = unmatchedPaths(importer);
    if (paths.empty())
        return "";
    TemplateFailures failures(templates);
    TemplateFailure furthest = failures.furthest(paths.front());
    std::string example = paths.front();
    const std::size_t step = paths.size() / mostTried + 1;
    for (std::size_t index = step; index < paths.size(); index += step) {
        TemplateFailure failure = failures.furthest(paths[index]);
        if (failure.beginning.elements > furthest.beginning.elements) {
            furthest = std::move(failure);
            example = paths[index];
        }
    }
    return (templates.templates().size() == 1 ? "the template does not fit "
                                              : "no template fits ") +
           std::to_string(paths.size()) + (paths.size() == 1 ? " file, " : " files, as ") +
           example + ": " + failureReason(furthest, example);
}

std::string elementText(const Template& pathTemplate, const TemplateElement& element)
{
    return pathTemplate.text().substr(element.position, element.length);
}

} // namespace casetable
