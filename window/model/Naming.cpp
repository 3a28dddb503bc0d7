#include "window/model/Naming.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "casetable/templates/Matcher.h"
#include "casetable/templates/Template.h"
#include "casetable/templates/TemplateList.h"

namespace casetable {

namespace {

using Texts = std::vector<std::string>;
using Views = std::vector<std::string_view>;

Views componentsOf(std::string_view path)
{
    Views components;
    for (;;) {
        const std::size_t end = path.find('/');
        components.push_back(path.substr(0, end));
        if (end == std::string_view::npos)
            return components;
        path.remove_prefix(end + 1);
    }
}

// From the last point of a name on; empty for none, and for a point in front.
std::string_view endingOf(std::string_view path)
{
    const std::size_t name = path.rfind('/') + 1;
    const std::size_t point = path.rfind('.');
    return point == std::string_view::npos || point <= name ? "" : path.substr(point);
}

std::size_t depthOf(std::string_view path)
{
    return static_cast<std::size_t>(std::count(path.begin(), path.end(), '/'));
}

// Text that stands for itself in a template; what cannot be typed is any byte.
std::string literal(std::string_view bytes)
{
    std::string text;
    for (; !bytes.empty(); bytes.remove_prefix(1)) {
        const bool isPlain = bytes.front() >= 0x20 && bytes.front() < 0x7f;
        text += isPlain ? escaped(bytes.substr(0, 1)) : std::string(1, bytes.front());
    }
    return text;
}

// Part of a path, as bytes from its begin.
struct Range {
    std::size_t begin;
    std::size_t end;
};

// A column where it stands in the path.
struct PlacedColumn {
    Range range;
    std::string element; // As it stands in a template.
};

bool standsIn(std::string_view text, const Views& all)
{
    return std::all_of(all.begin(), all.end(), [text](std::string_view each) {
        return each.find(text) != std::string_view::npos;
    });
}

// The longest end of `text`, or its longest begin, that stands in all of `all`, to which "*" leads.
std::string_view commonNext(std::string_view text, const Views& all, bool isEnd)
{
    for (std::size_t size = text.size(); size > 0; --size) {
        const std::string_view part =
            isEnd ? text.substr(text.size() - size) : text.substr(0, size);
        if (standsIn(part, all))
            return part;
    }
    return "";
}

enum class Side { Before, Between, Behind };

// How loosely what stands around the bytes is taken, from what is wanted to what always fits.
enum class Looseness { Wild, Exact };

// Template text for what stands next to the bytes in a component that differs, or "*" alone.
std::string around(std::string_view text, Side side, const Views& components, Looseness looseness)
{
    if (text.empty())
        return "";
    if (looseness == Looseness::Exact)
        return literal(text);
    const std::string_view next = side == Side::Between && !standsIn(text, components)
                                      ? std::string_view()
                                      : commonNext(text, components, side == Side::Before);
    if (next.size() == text.size() &&
        (side == Side::Between ||
         std::all_of(components.begin(), components.end(), [&](std::string_view each) {
             return side == Side::Before ? each.substr(0, text.size()) == text
                                         : each.size() >= text.size() &&
                                               each.substr(each.size() - text.size()) == text;
         })))
        return literal(text);
    return side == Side::Before ? "*" + literal(next) : literal(next) + "*";
}

class Naming {
public:
    Naming(const NamedBytes& named, const Neighbours& neighbours)
        : named_(named), neighbours_(neighbours)
    {
    }

    // A template for the path with the given columns.
    std::string build(std::vector<PlacedColumn> columns, Looseness looseness) const
    {
        std::sort(columns.begin(), columns.end(),
                  [](const PlacedColumn& left, const PlacedColumn& right) {
                      return left.range.begin < right.range.begin;
                  });
        std::string text;
        std::size_t begin = 0;
        std::size_t next = 0;
        const Views components = componentsOf(named_.path);
        for (std::size_t k = 0; k < components.size(); ++k) {
            const Range component = {begin, begin + components[k].size()};
            std::vector<PlacedColumn> inside;
            for (; next < columns.size() && columns[next].range.begin < component.end; ++next)
                inside.push_back(columns[next]);
            text += (k > 0 ? "/" : "") + buildComponent(component, k, inside, looseness);
            begin = component.end + 1;
        }
        return text;
    }

    // The component in which the bytes at `offset` are, in all neighbours.
    Views sampledComponents(std::size_t index) const
    {
        Views all;
        for (const std::string& path : neighbours_.sample)
            all.push_back(componentsOf(path)[index]);
        return all;
    }

    std::string bytes(const Range& range) const
    {
        return named_.path.substr(range.begin, range.end - range.begin);
    }

private:
    std::string buildComponent(const Range& component, std::size_t index,
                               const std::vector<PlacedColumn>& columns, Looseness looseness) const
    {
        const std::string text = bytes(component);
        const bool agrees = index < neighbours_.agree.size() && neighbours_.agree[index];
        if (columns.empty()) {
            const bool isLast = component.end == named_.path.size();
            return agrees ? literal(text)
                          : "*" + (isLast ? literal(endingOf(named_.path)) : std::string());
        }
        const Views all = sampledComponents(index);
        const Looseness here = agrees ? Looseness::Exact : looseness;
        std::string result;
        std::size_t begin = component.begin;
        for (const PlacedColumn& column : columns) {
            result += around(bytes({begin, column.range.begin}),
                             begin == component.begin ? Side::Before : Side::Between, all, here) +
                      column.element;
            begin = column.range.end;
        }
        return result + around(bytes({begin, component.end}), Side::Behind, all, here);
    }

    const NamedBytes& named_;
    const Neighbours& neighbours_;
};

// What the columns of a template read from the path, by their names.
std::vector<std::pair<std::string, Range>> readings(const Template& pathTemplate,
                                                    const std::string& path)
{
    std::vector<std::pair<std::string, Range>> result;
    const std::vector<Span> spans = Matcher(pathTemplate).columnSpans(path);
    for (std::size_t i = 0; i < spans.size(); ++i) {
        if (!spans[i].isLeftOut)
            result.push_back({pathTemplate.columns()[i].name,
                              {spans[i].begin, spans[i].begin + spans[i].length}});
    }
    return result;
}

// Whether the template reads what it should from the path: the bytes, and for the names of `old`
// what these read.
bool readsRight(const std::string& text, const NamedBytes& named,
                const std::vector<std::pair<std::string, Range>>& old)
{
    try {
        const auto now = readings(Template(text), named.path);
        const auto has = [&now](const std::string& name, const Range& range) {
            return std::any_of(now.begin(), now.end(), [&](const auto& each) {
                return each.first == name && each.second.begin == range.begin &&
                       each.second.end == range.end;
            });
        };
        return has(named.name, {named.begin, named.end}) &&
               std::all_of(old.begin(), old.end(),
                           [&](const auto& each) { return has(each.first, each.second); });
    } catch (const std::exception&) {
        return false;
    }
}

std::size_t countFitting(const std::string& text, const Texts& paths)
{
    const Template pathTemplate(text);
    Matcher matcher(pathTemplate);
    return static_cast<std::size_t>(
        std::count_if(paths.begin(), paths.end(),
                      [&matcher](const std::string& path) { return matcher.match(path); }));
}

// What the column reads from each of the paths that the template fits.
Texts valuesOf(const std::string& text, const std::string& name, const Texts& paths)
{
    const Template pathTemplate(text);
    Texts values;
    for (const std::string& path : paths) {
        for (const auto& [column, range] : readings(pathTemplate, path)) {
            if (column == name)
                values.push_back(path.substr(range.begin, range.end - range.begin));
        }
    }
    return values;
}

bool allFit(const std::string& type, const Texts& values)
{
    const Template pathTemplate("{v" + type + "}");
    Matcher matcher(pathTemplate);
    return std::all_of(values.begin(), values.end(),
                       [&matcher](const std::string& value) { return matcher.match(value); });
}

bool hasLeadingZero(const std::string& value)
{
    return value.size() > 1 && value[0] == '0' && value[1] >= '0' && value[1] <= '9';
}

// What the template may become: made anew around all columns, or, first, with only that element
// replaced in which the bytes are.
class Candidates {
public:
    Candidates(const NamedBytes& named, const Neighbours& neighbours)
        : named_(named), naming_(named, neighbours)
    {
    }

    // The column's element is `element`.
    Texts of(const Template* old, const std::string& element) const
    {
        Texts texts;
        for (const Looseness looseness : {Looseness::Wild, Looseness::Exact}) {
            if (old != nullptr) {
                const std::optional<std::string> split = splitElement(*old, element, looseness);
                if (split)
                    texts.push_back(*split);
            }
        }
        for (const Looseness looseness : {Looseness::Wild, Looseness::Exact})
            texts.push_back(naming_.build(placedColumns(old, element), looseness));
        return texts;
    }

private:
    // Those elements of the top level that have some of the bytes are replaced, if they are text
    // and wildcards of one component.
    std::optional<std::string> splitElement(const Template& old, const std::string& element,
                                            Looseness looseness) const
    {
        using Kind = TemplateElement::Kind;
        std::optional<Range> inTemplate;
        std::optional<Range> inPath;
        const std::vector<Span> spans = Matcher(old).elementSpans(named_.path);
        std::size_t next = 0;
        for (const TemplateElement& each : old.elements()) {
            const Span span = spans[next];
            next += countWithParts(each);
            if (span.begin + span.length <= named_.begin || span.begin >= named_.end ||
                span.length == 0)
                continue;
            if (each.kind != Kind::Text && each.kind != Kind::Byte && each.kind != Kind::Bytes)
                return std::nullopt;
            if (!inTemplate) {
                inTemplate = Range{each.position, 0};
                inPath = Range{span.begin, 0};
            }
            inTemplate->end = each.position + each.length;
            inPath->end = span.begin + span.length;
        }
        if (!inTemplate)
            return std::nullopt;
        const std::size_t index = depthOf(std::string_view(named_.path).substr(0, named_.begin));
        const Views all = naming_.sampledComponents(index);
        return old.text().substr(0, inTemplate->begin) +
               beside({inPath->begin, named_.begin}, Side::Before, all, looseness) + element +
               beside({named_.end, inPath->end}, Side::Behind, all, looseness) +
               old.text().substr(inTemplate->end);
    }

    // A text may reach into other components, which it keeps.
    std::string beside(const Range& range, Side side, const Views& all, Looseness looseness) const
    {
        const std::string text = naming_.bytes(range);
        if (side == Side::Before) {
            const std::size_t begin = text.rfind('/') + 1;
            return literal(text.substr(0, begin)) +
                   around(text.substr(begin), side, all, looseness);
        }
        const std::size_t end = std::min(text.find('/'), text.size());
        return around(text.substr(0, end), side, all, looseness) + literal(text.substr(end));
    }

    static std::size_t countWithParts(const TemplateElement& element)
    {
        std::size_t count = 1;
        for (const TemplateElement& each : element.elements)
            count += countWithParts(each);
        return count;
    }

    static void addColumnElements(const Template& old, const std::vector<TemplateElement>& elements,
                                  Texts& texts)
    {
        for (const TemplateElement& each : elements) {
            if (each.kind == TemplateElement::Kind::Column)
                texts[each.column] = old.text().substr(each.position, each.length);
            addColumnElements(old, each.elements, texts);
        }
    }

    std::vector<PlacedColumn> placedColumns(const Template* old, const std::string& element) const
    {
        std::vector<PlacedColumn> columns = {{{named_.begin, named_.end}, element}};
        if (old == nullptr)
            return columns;
        Texts texts(old->columns().size());
        addColumnElements(*old, old->elements(), texts);
        const std::vector<Span> spans = Matcher(*old).columnSpans(named_.path);
        for (std::size_t i = 0; i < spans.size(); ++i) {
            if (!spans[i].isLeftOut)
                columns.push_back({{spans[i].begin, spans[i].begin + spans[i].length}, texts[i]});
        }
        return columns;
    }

    const NamedBytes& named_;
    const Naming naming_;
};

// The places of a column in a template: where its name stands first, and where it stands again.
void addPlaces(const std::vector<TemplateElement>& elements, std::size_t column,
               std::vector<std::size_t>& places)
{
    using Kind = TemplateElement::Kind;
    for (const TemplateElement& each : elements) {
        if ((each.kind == Kind::Column || each.kind == Kind::Again) && each.column == column)
            places.push_back(each.position);
        addPlaces(each.elements, column, places);
    }
}

std::string renamed(const Template& old, const std::string& from, const std::string& to)
{
    const auto& columns = old.columns();
    const auto column = std::find_if(columns.begin(), columns.end(),
                                     [&from](const auto& each) { return each.name == from; });
    std::vector<std::size_t> places;
    addPlaces(old.elements(), static_cast<std::size_t>(column - columns.begin()), places);
    std::string text = old.text();
    for (auto place = places.rbegin(); place != places.rend(); ++place)
        text.replace(*place + 1, from.size(), to);
    return text;
}

// Returns the column of which these are the bytes, if there is one. `old` are what the columns
// read, without those that are left out.
std::optional<std::string> check(const NamedBytes& named,
                                 const std::vector<std::pair<std::string, Range>>& old,
                                 const std::vector<TemplateColumn>& columns)
{
    if (named.begin >= named.end)
        throw NamingError("nothing is selected; select the value in the path first");
    const std::string value = named.path.substr(named.begin, named.end - named.begin);
    if (value.find('/') != std::string::npos)
        throw NamingError("a value stands between two \"/\"; select part of one name");
    std::optional<std::string> own;
    for (const auto& [name, range] : old) {
        if (range.begin == named.begin && range.end == named.end)
            own = name;
        else if (range.begin < named.end && named.begin < range.end)
            throw NamingError("this belongs to the column \"" + name + "\" already");
    }
    for (const TemplateColumn& column : columns) {
        if (column.name == named.name && column.name != own)
            throw NamingError("the template has a column \"" + column.name + "\" already");
    }
    try {
        // A type or an expression behind the name would be read as one.
        if (Template("{" + named.name + "}").columns().front().name != named.name)
            throw NamingError("a column's name is a letter or _, then letters, digits and _");
    } catch (const TemplateError& failure) {
        throw NamingError(failure.what());
    }
    return own;
}

// A template that reads right, and how many of the neighbours it fits.
struct Fitting {
    std::string text;
    std::size_t count;
};

// The first of those that read right and fit the most neighbours.
std::optional<Fitting> bestOf(const Texts& texts, const NamedBytes& named,
                              const std::vector<std::pair<std::string, Range>>& old,
                              const Neighbours& neighbours)
{
    std::optional<Fitting> best;
    for (const std::string& text : texts) {
        if (!readsRight(text, named, old))
            continue;
        const std::size_t count = countFitting(text, neighbours.sample);
        if (!best || count > best->count)
            best = Fitting{text, count};
    }
    return best;
}

// A type that all neighbours' values fit lets the template fit as many as any other does.
std::string best(const Candidates& candidates, const Template* pathTemplate,
                 const NamedBytes& named, const std::vector<std::pair<std::string, Range>>& old,
                 const Neighbours& neighbours)
{
    const auto bestWith = [&](const std::string& type) {
        return bestOf(candidates.of(pathTemplate, "{" + named.name + type + "}"), named, old,
                      neighbours);
    };
    std::optional<Fitting> best;
    for (const char* type : {":number", ":digits", ":word", ""}) {
        std::optional<Fitting> fitting = bestWith(type);
        if (fitting && (!best || fitting->count > best->count))
            best = std::move(fitting);
    }
    if (!best)
        throw NamingError("no template reads exactly this from the path");
    // Numbers that are counted with zeros in front are names.
    const Texts values = valuesOf(best->text, named.name, neighbours.sample);
    if (allFit(":digits", values) && std::any_of(values.begin(), values.end(), hasLeadingZero)) {
        const std::optional<Fitting> digits = bestWith(":digits");
        if (digits && digits->count >= best->count)
            return digits->text;
    }
    return best->text;
}

} // namespace

Neighbours findNeighbours(const Files& files, const std::string& path,
                          const std::atomic<bool>& isCancelled)
{
    const Views own = componentsOf(path);
    const std::string_view ending = endingOf(path);
    Neighbours neighbours;
    neighbours.agree.assign(own.size(), true);
    std::vector<std::string_view> found;
    for (const auto& shard : files.shards()) {
        if (isCancelled)
            break;
        for (std::size_t i = 0; i < shard->fileCount(); ++i) {
            const std::string_view other = shard->path(i);
            if (endingOf(other) != ending || depthOf(other) + 1 != own.size())
                continue;
            const Views components = componentsOf(other);
            for (std::size_t k = 0; k < own.size(); ++k)
                neighbours.agree[k] = neighbours.agree[k] && components[k] == own[k];
            found.push_back(other);
        }
    }
    const std::size_t step = found.size() / Neighbours::mostSampled + 1;
    for (std::size_t i = 0; i < found.size(); i += step)
        neighbours.sample.emplace_back(found[i]);
    neighbours.sample.push_back(path);
    return neighbours;
}

NamedTemplates nameBytes(const NamedBytes& named, const std::vector<std::string>& templates,
                         const Neighbours& neighbours)
{
    NamedTemplates result = {templates, templates.size()};
    std::optional<Template> old;
    for (std::size_t i = 0; i < templates.size() && !old; ++i) {
        if (templates[i].find_first_not_of(" \t") == std::string::npos)
            continue;
        Template each(templates[i]);
        if (!Matcher(each).match(named.path))
            continue;
        old = std::move(each);
        result.index = i;
    }
    std::vector<std::pair<std::string, Range>> known;
    if (old)
        known = readings(*old, named.path);
    const std::optional<std::string> own =
        check(named, known, old ? old->columns() : std::vector<TemplateColumn>());
    std::string text =
        own ? renamed(*old, *own, named.name)
            : best(Candidates(named, neighbours), old ? &*old : nullptr, named, known, neighbours);
    if (old)
        result.templates[result.index] = std::move(text);
    else
        result.templates.push_back(std::move(text));

    Texts counting;
    for (const std::string& each : result.templates) {
        if (each.find_first_not_of(" \t") != std::string::npos)
            counting.push_back(each);
    }
    try {
        static_cast<void>(TemplateList(counting));
    } catch (const TemplateError& failure) {
        throw NamingError(failure.what());
    }
    return result;
}

} // namespace casetable
