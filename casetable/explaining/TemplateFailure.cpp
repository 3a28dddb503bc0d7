#include "casetable/explaining/TemplateFailure.h"

#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

namespace casetable {

namespace {

// Those with the least hashes are a fair sample, and the same one in whatever order files come.
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

void UnfittedFiles::count(const std::string& path)
{
    ++files_;
    const std::size_t hash = std::hash<std::string>()(path);
    if (sample_.size() < mostTried || hash <= sample_.rbegin()->first)
        keep(hash, path);
}

void UnfittedFiles::merge(UnfittedFiles&& other)
{
    files_ += other.files_;
    while (!other.sample_.empty()) {
        auto entry = other.sample_.extract(other.sample_.begin());
        keep(entry.value().first, std::move(entry.value().second));
    }
}

void UnfittedFiles::write(ByteWriter& writer) const
{
    writer.number(files_);
    writer.number(sample_.size());
    for (const auto& entry : sample_)
        writer.text(entry.second);
}

void UnfittedFiles::read(ByteReader& reader)
{
    files_ = reader.number();
    for (std::size_t left = reader.count(1); left > 0; --left) {
        std::string path(reader.text());
        const std::size_t hash = std::hash<std::string>()(path);
        keep(hash, std::move(path));
    }
}

std::string UnfittedFiles::summary() const
{
    if (files_ == 0)
        return "";
    TemplateFailures failures(*templates_);
    std::optional<TemplateFailure> furthest;
    std::string example;
    for (const auto& [hash, path] : sample_) {
        std::optional<TemplateFailure> failure = furthestIfKnown(failures, path);
        if (!failure)
            continue;
        const std::size_t elements = failure->beginning.elements;
        if (!furthest || elements > furthest->beginning.elements ||
            (elements == furthest->beginning.elements && path < example)) {
            furthest = std::move(failure);
            example = path;
        }
    }
    return (templates_->templates().size() == 1 ? "the template does not fit "
                                                : "no template fits ") +
           std::to_string(files_) + (files_ == 1 ? " file" : " files") +
           (furthest ? ", as " + example + ": " + failureReason(*furthest, example) : "");
}

void UnfittedFiles::keep(std::size_t hash, std::string path)
{
    sample_.emplace(hash, std::move(path));
    if (sample_.size() > mostTried)
        sample_.erase(std::prev(sample_.end()));
}

std::string elementText(const Template& pathTemplate, const TemplateElement& element)
{
    return pathTemplate.text().substr(element.position, element.length);
}

} // namespace casetable
