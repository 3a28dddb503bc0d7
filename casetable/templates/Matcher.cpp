#include "casetable/templates/Matcher.h"

#include <algorithm>
#include <map>
#include <utility>

#include "casetable/templates/Expression.h"
#include "casetable/templates/Translation.h"

namespace casetable {

namespace {

using Elements = std::vector<TemplateElement>;
using Kind = TemplateElement::Kind;

std::size_t countOf(const Elements& elements)
{
    std::size_t count = elements.size();
    for (const TemplateElement& element : elements)
        count += countOf(element.elements);
    return count;
}

// The text in which every path ends that the elements fit.
std::string endingOf(const Elements& elements)
{
    std::string ending;
    for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
        if (element->kind != Kind::Text)
            break;
        ending.insert(0, element->text);
    }
    return ending;
}

bool endsWith(std::string_view path, std::string_view ending)
{
    return path.size() >= ending.size() && path.substr(path.size() - ending.size()) == ending;
}

const Span leftOut = {0, 0, true};

void takeSpans(const Expression& expression, const std::size_t* bounds, std::vector<Span>& spans)
{
    std::fill(spans.begin(), spans.end(), leftOut);
    for (const std::size_t index : expression.groups()) {
        bounds += 2;
        // A wildcard that looks for several parts has the bytes in front of the first.
        if (index != Translation::internal && *bounds != ExpressionMatcher::unset &&
            spans[index].isLeftOut)
            spans[index] = {bounds[0], bounds[1] - bounds[0], false};
    }
}

// Gives those left out their places. `next` is the index of the first of `elements`, and afterwards
// that behind the last; what is in front of them ends at `at`.
void placeLeftOut(const Elements& elements, bool isTaken, std::size_t at, std::size_t& next,
                  std::vector<Span>& spans)
{
    for (const TemplateElement& element : elements) {
        Span& span = spans[next++];
        // A wildcard that is not needed, because another takes its bytes, has none.
        if (span.isLeftOut)
            span = {at, 0, !isTaken || element.kind == Kind::Part};
        placeLeftOut(element.elements, !span.isLeftOut, span.begin, next, spans);
        at = span.begin + span.length;
    }
}

void collectColumns(const Elements& elements, std::size_t& next, const std::vector<Span>& spans,
                    std::vector<Span>& columns)
{
    for (const TemplateElement& element : elements) {
        const Span& span = spans[next++];
        if (element.kind == Kind::Column)
            columns[element.column] = span;
        collectColumns(element.elements, next, spans, columns);
    }
}

} // namespace

struct Matcher::Impl {
    explicit Impl(const Template& own)
        : pathTemplate(own), ending(endingOf(own.elements())),
          columns(own.columns().size(), leftOut), beginnings(own.elements().size())
    {
    }

    const std::size_t* match(const Expression& expression, std::string_view path)
    {
        try {
            return matcher.match(expression, path);
        } catch (const std::runtime_error& error) {
            throw MatchError(std::string(path), error.what());
        }
    }

    // Compiled when it is asked for first.
    const Expression& beginning(std::size_t count)
    {
        std::unique_ptr<const Expression>& expression = beginnings[count - 1];
        if (!expression)
            expression = std::make_unique<const Expression>(
                translateBeginning(pathTemplate.elements(), count));
        return *expression;
    }

    const Template pathTemplate;
    const std::string ending;
    std::vector<Span> columns;
    ExpressionMatcher matcher;
    std::vector<std::unique_ptr<const Expression>> beginnings;
};

Matcher::Matcher(const Template& pathTemplate) : impl_(new Impl(pathTemplate)) {}

Matcher::Matcher(Matcher&& other) noexcept = default;

Matcher::~Matcher() = default;

bool Matcher::match(std::string_view path)
{
    // Files of other kinds are most of those that do not fit. It could take the engine very many
    // choices to see that, and then it gives up.
    if (!endsWith(path, impl_->ending))
        return false;
    const Expression& expression = *impl_->pathTemplate.columnExpression();
    const std::size_t* const bounds = impl_->match(expression, path);
    if (bounds != nullptr)
        takeSpans(expression, bounds, impl_->columns);
    return bounds != nullptr;
}

const std::vector<Span>& Matcher::columns() const
{
    return impl_->columns;
}

std::vector<Span> Matcher::elementSpans(std::string_view path)
{
    if (!endsWith(path, impl_->ending))
        return {};
    const Expression& expression = *impl_->pathTemplate.elementExpression();
    const std::size_t* const bounds = impl_->match(expression, path);
    if (bounds == nullptr)
        return {};
    const Elements& elements = impl_->pathTemplate.elements();
    std::vector<Span> spans(countOf(elements));
    takeSpans(expression, bounds, spans);
    std::size_t next = 0;
    placeLeftOut(elements, true, 0, next, spans);
    return spans;
}

std::vector<Span> Matcher::columnSpans(std::string_view path)
{
    const std::vector<Span> spans = elementSpans(path);
    if (spans.empty())
        return {};
    std::vector<Span> columns(impl_->columns.size());
    std::size_t next = 0;
    collectColumns(impl_->pathTemplate.elements(), next, spans, columns);
    return columns;
}

Beginning Matcher::longestBeginning(std::string_view path)
{
    // What fits a beginning fits it also without its last element.
    std::size_t fits = 0;
    std::size_t fails = impl_->beginnings.size() + 1;
    while (fails - fits > 1) {
        const std::size_t middle = fits + (fails - fits) / 2;
        (impl_->match(impl_->beginning(middle), path) != nullptr ? fits : fails) = middle;
    }
    Beginning longest;
    longest.columns.assign(impl_->columns.size(), leftOut);
    if (fits == 0)
        return longest;
    const Expression& expression = impl_->beginning(fits);
    const std::size_t* const bounds = impl_->match(expression, path);
    longest.elements = fits;
    longest.end = bounds[1];
    takeSpans(expression, bounds, longest.columns);
    return longest;
}

} // namespace casetable
