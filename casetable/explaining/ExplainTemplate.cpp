#include "casetable/explaining/ExplainTemplate.h"

#include <cstddef>
#include <set>
#include <vector>

#include "casetable/explaining/MarkedPath.h"
#include "casetable/explaining/TemplateFailure.h"
#include "casetable/system/Printable.h"
#include "casetable/templates/Matcher.h"

namespace casetable {

namespace {

// The element that reads the column at `index`; each column has one.
const TemplateElement* findColumn(const std::vector<TemplateElement>& elements, std::size_t index)
{
    for (const TemplateElement& element : elements) {
        if (element.kind == TemplateElement::Kind::Column && element.column == index)
            return &element;
        if (const TemplateElement* inside = findColumn(element.elements, index))
            return inside;
    }
    return nullptr;
}

// The path, and a line for each of the template's columns that was read.
std::string columnLines(const std::string& path, const Template& pathTemplate,
                        const std::vector<Span>& columns, bool isMatched, bool inColour)
{
    std::set<std::size_t> places;
    for (const Span& span : columns) {
        if (!span.isLeftOut)
            places.insert({span.begin, span.begin + span.length});
    }
    const MarkedPath marked(path, places, inColour);
    std::string lines = marked.text() + "\n";
    for (std::size_t index = 0; index < columns.size(); ++index) {
        const Span& span = columns[index];
        const std::string element =
            printable(elementText(pathTemplate, *findColumn(pathTemplate.elements(), index)));
        if (!span.isLeftOut)
            lines += marked.marks(span.begin, span.begin, span.begin + span.length) + element +
                     ": " + quoted(std::string_view(path).substr(span.begin, span.length)) + "\n";
        else if (isMatched)
            lines += element + ": its part is left out\n";
    }
    return lines;
}

// The template, with "^" under the element that failed, if one did.
std::string markedTemplate(const TemplateFailure& failure, bool inColour)
{
    const std::string& text = failure.pathTemplate->text();
    const std::vector<TemplateElement>& elements = failure.pathTemplate->elements();
    if (failure.beginning.elements == elements.size())
        return "  " + printable(text) + "\n";
    const TemplateElement& failed = elements[failure.beginning.elements];
    const std::size_t end = failed.position + failed.length;
    const MarkedPath marked(text, {failed.position, end}, inColour);
    std::string marks = marked.marks(failed.position, end, end);
    marks.erase(marks.find_last_not_of(' ') + 1);
    return "  " + marked.text() + "\n  " + marks + "\n";
}

} // namespace

Explanation explain(const std::string& path, const TemplateList& templates, bool inColour)
{
    for (const Template& each : templates.templates()) {
        const std::vector<Span> columns = Matcher(each).columnSpans(path);
        if (!columns.empty())
            return {true, columnLines(path, each, columns, true, inColour) + "matched by " +
                              printable(each.text()) + "\n"};
    }
    const TemplateFailure failure = TemplateFailures(templates).furthest(path);
    return {false,
            columnLines(path, *failure.pathTemplate, failure.beginning.columns, false, inColour) +
                "not matched: " + printable(failureReason(failure, path)) + "\n" +
                markedTemplate(failure, inColour)};
}

} // namespace casetable
