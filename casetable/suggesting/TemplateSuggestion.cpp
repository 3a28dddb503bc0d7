#include "casetable/suggesting/TemplateSuggestion.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <set>

#include "casetable/suggesting/Census.h"
#include "casetable/suggesting/Shape.h"
#include "casetable/templates/Matcher.h"

// One example through all steps:
//
//     sub-01/anat/sub-01_T1w.nii.gz             sub-02/anat/sub-02_T1w.nii.gz
//     sub-01/func/sub-01_run-1_bold.nii.gz      sub-02/func/sub-02_run-1_bold.nii.gz
//     sub-03/func/sub-03_run-1_bold.json        README
//
// 1. Each component is divided: "sub" "-01", "func", "sub" "-01" "_run" "-1" "_bold". "sub"
//    and "run" stand in front of a "-" all over, so they are keys: "sub-01" is one part.
// 2. takeCensus() puts paths with parts of the same kinds between the same separators in a class:
//    the two with T1w, the three with a run, and README.
// 3. mergeShapes() lays the first two side by side. "anat" and "func" are values of one place, as
//    are "T1w" and "bold"; "_run-1" has no counterpart and gets optional. README is too different.
// 4. Writer makes the places text, where the value is always the same, or columns, of the
//    type that their values are of, named by the key in front or the folder's place. The second
//    "sub" always has the value of the first: its name again. The endings differ: ".*".
//
//        sub-{sub:digits}/{dir2}/sub-{sub}[_run-{run:digits}]_{name:word}.*
//
// 5. Templates are kept that a Matcher reads enough of the paths with. One README is nothing
//    regular.

namespace casetable {

namespace {

const std::size_t sampleSize = 2000;
const std::size_t maxClasses = 300;
const std::size_t maxShapes = 64;
const std::size_t maxTemplates = 8;

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char byte : text) {
        if (std::string_view("\\*?[]{}").find(byte) != std::string_view::npos)
            result += '\\';
        result += byte;
    }
    return result;
}

bool areAll(const ShapeTexts& texts, bool (*isKind)(char))
{
    return std::all_of(texts.distinct.begin(), texts.distinct.end(), [&](std::string_view text) {
        return !text.empty() && std::all_of(text.begin(), text.end(), isKind);
    });
}

bool isLetterOrDigit(char byte)
{
    return isLetter(byte) || isDigit(byte);
}

// The type that fits all values, with its ":". A run is a piece of a part: nothing but its kind or
// its length ends it.
std::string typeOf(const ShapeTexts& values, Kinds kinds, bool isRun)
{
    const std::size_t length = values.distinct.begin()->size();
    const bool haveOneLength =
        std::all_of(values.distinct.begin(), values.distinct.end(),
                    [&](std::string_view value) { return value.size() == length; });
    if (areAll(values, isDigit))
        return ":digits";
    if (kinds == numberKind)
        return ":number";
    if (kinds == fixedKind && haveOneLength)
        return ":text" + std::to_string(length);
    if (isRun)
        return haveOneLength ? ":word" + std::to_string(length) : ",[A-Za-z]+";
    return areAll(values, isLetterOrDigit) ? ":word" : "";
}

// Letters and numbers in turn, where all values have the same turns; otherwise nothing.
std::vector<ShapeSlot> divideRuns(const ShapeSlot& slot)
{
    std::vector<ShapeSlot> runs(runsOf(*slot.values.distinct.begin()).size());
    for (const std::string_view value : slot.values.all) {
        const std::vector<std::string_view> texts = runsOf(value);
        if (value.data() != nullptr && texts.size() != runs.size())
            return {};
        for (std::size_t i = 0; i < runs.size(); ++i) {
            runs[i].kinds |= texts.empty()               ? 0
                             : isLetter(texts[i].back()) ? letterKind
                                                         : numberKind;
            runs[i].values.add(texts.empty() ? std::string_view() : texts[i]);
        }
    }
    const bool haveSameTurns = std::all_of(runs.begin(), runs.end(), [](const ShapeSlot& run) {
        return run.kinds == letterKind || run.kinds == numberKind;
    });
    return haveSameTurns ? runs : std::vector<ShapeSlot>();
}

// Whether each name has an ending of its own, and comes again in many folders: they are the files
// of one run, "flow.vtu" and "forces.dat".
bool areListed(const Shape& shape)
{
    const ShapeTexts& stems = shape.components.back().texts;
    return shape.endings.size() > 1 && shape.names.size() == stems.distinct.size() &&
           shape.paths >= 3 * shape.names.size() &&
           std::all_of(stems.distinct.begin(), stems.distinct.end(), [](std::string_view stem) {
               return std::none_of(stem.begin(), stem.end(), isDigit);
           });
}

// Writes the template of a shape.
class Writer {
public:
    // `areNumbers` tells of the names in other templates, which are numbers in all or in none.
    Writer(const Shape& shape, std::map<std::string, bool>& areNumbers) : areNumbers_(areNumbers)
    {
        for (const ShapeComponent& component : shape.components) {
            const bool isFile = &component == &shape.components.back();
            place_ = isFile ? "name" : "dir" + std::to_string(written_.size() + 1);
            isWhole_ = component.slots.size() == 1 &&
                       (!isFile || (shape.endings.size() == 1 && !shape.endings.count({})));
            again_.clear();
            add(component.isOptional ? "[" : "");
            if (isFile && areListed(shape)) {
                add("*");
                return;
            }
            write(component);
            written_.push_back(again_ + (component.isOptional ? "]" : ""));
            add(isFile ? "" : component.isOptional ? "/]" : "/");
        }
        add(shape.endings.size() > 1 ? ".*" : escaped(*shape.endings.begin()));
    }

    const std::string& text() const { return text_; }

    // Whether more than chance made the names of so many paths alike: numbers, the same file in
    // many folders, or that they are a good share of all.
    bool isRegular(std::size_t paths, std::size_t all) const
    {
        return !columns_.empty() && (hasNumbers_ || !hasNames_ ||
                                     (paths >= 10 && paths * (hasFolders_ ? 20 : 2) >= all));
    }

private:
    struct NamedColumn {
        std::string name;
        ShapeTexts values;
    };

    void add(const std::string& text)
    {
        text_ += text;
        again_ += text;
    }

    void write(const ShapeComponent& component)
    {
        // A first part that may be missing has the separator behind it.
        const bool isFirstOptional = component.slots.front().isOptional;
        std::string word;
        for (std::size_t i = 0; i < component.slots.size(); ++i) {
            const ShapeSlot& slot = component.slots[i];
            add(slot.isOptional ? "[" : "");
            add(i == 1 && isFirstOptional ? "" : escaped(slot.separator));
            add(escaped(slot.key));
            if (!slot.key.empty())
                word = slot.key.substr(0, slot.key.size() - 1);
            write(slot, word, slot.isOptional || component.isOptional);
            const bool isWord = slot.values.isConstant() && slot.kinds == letterKind;
            word = isWord && !slot.isOptional ? *slot.values.distinct.begin() : "";
            add(i == 0 && isFirstOptional ? escaped(component.slots[1].separator) : "");
            add(slot.isOptional ? "]" : "");
        }
    }

    // `word` is what stands in front.
    void write(const ShapeSlot& slot, std::string word, bool isOptional)
    {
        const std::string_view sample = *slot.values.distinct.begin();
        for (std::size_t i = 0; i < written_.size() && i < maxAgain; ++i)
            if (slot.kinds == againKind << i)
                return add(written_[i]);
        if (slot.values.isConstant() && !isOptional)
            return add(escaped(sample));
        if (slot.kinds == fixedKind) {
            const bool isTime = sample.size() == 6 || sample.find_first_of("-:") == 2;
            const bool isDate = sample.substr(0, 2) == "19" || sample.substr(0, 2) == "20";
            word = isTime ? "time" : isDate && sample.size() < 30 ? "date" : "id";
        }
        const bool isDivided = slot.kinds < fixedKind && slot.kinds != numberKind;
        const std::vector<ShapeSlot> runs = isDivided ? divideRuns(slot) : std::vector<ShapeSlot>();
        if (runs.size() < 2 || find(slot.values) != nullptr || !isCode(slot, runs))
            return addColumn(word, typeOf(slot.values, slot.kinds, false), slot.values);
        for (std::size_t i = 0; i < runs.size(); ++i) {
            const std::string text(*runs[i].values.distinct.begin());
            const bool isLast = i + 1 == runs.size();
            const bool isLetters = runs[i].kinds == letterKind;
            if (runs[i].values.isConstant() && (isLetters || !isOptional)) {
                add(text);
                word = isLetters ? text : "";
                continue;
            }
            if (word.empty() && !isLast && runs[i + 1].values.isConstant())
                word = *runs[i + 1].values.distinct.begin(); // "20K": the unit
            const bool isRun = !isLast || slot.kinds != letterKind;
            addColumn(word, typeOf(runs[i].values, runs[i].kinds, isRun), runs[i].values);
            word.clear();
        }
    }

    // Whether columns of the runs tell more than one of the slot: all letters are the same or
    // known, but for the last of "wingA", or are the rows of a grid, "B03".
    bool isCode(const ShapeSlot& slot, const std::vector<ShapeSlot>& runs) const
    {
        const std::size_t all = slot.values.distinct.size();
        const std::size_t first = runs[0].values.distinct.size();
        const bool isGrid = runs.size() == 2 && runs[0].kinds == letterKind && all >= 2 * first &&
                            first * runs[1].values.distinct.size() <= 2 * all;
        return isGrid || std::all_of(runs.begin(), runs.end(), [&](const ShapeSlot& run) {
                   return run.kinds == numberKind || run.values.isConstant() ||
                          find(run.values) != nullptr ||
                          (&run == &runs.back() && slot.kinds == letterKind);
               });
    }

    // The column that has these values wherever there are any. Few may be the same by chance.
    const NamedColumn* find(const ShapeTexts& values) const
    {
        const std::size_t distinct = values.distinct.size();
        const bool isKnown = distinct > 2 || (distinct == 2 && values.all.size() >= 10);
        const auto column =
            std::find_if(columns_.begin(), columns_.end(), [&](const NamedColumn& candidate) {
                return isKnown && std::equal(values.all.begin(), values.all.end(),
                                             candidate.values.all.begin(),
                                             [](std::string_view a, std::string_view b) {
                                                 return a.data() == nullptr ||
                                                        (a == b && b.data() != nullptr);
                                             });
            });
        return column != columns_.end() ? &*column : nullptr;
    }

    // The name is unique in the template and none of the table's own.
    void addColumn(const std::string& word, const std::string& type, const ShapeTexts& values)
    {
        if (const NamedColumn* const known = find(values))
            return add("{" + known->name + "}");
        const std::string base = word.empty() ? place_ : word;
        const bool isNumber = type == ":number";
        std::string name = base;
        for (int i = 2;
             used_.count(name) > 0 || areNumbers_.emplace(name, isNumber).first->second != isNumber;
             ++i)
            name = base + "_" + std::to_string(i);
        used_.insert(name);
        columns_.push_back({name, values});
        // A whole component needs no type: "/" or the ending ends it.
        text_ += "{" + name + (type == ":word" && isWhole_ ? "" : type) + "}";
        again_ += "{" + name + "}";
        hasNumbers_ = hasNumbers_ || (!type.empty() && type != ":word");
        (place_ == "name" ? hasNames_ : hasFolders_) = true;
    }

    std::map<std::string, bool>& areNumbers_;
    std::set<std::string> used_ = {"case", "path", "files"};
    std::vector<NamedColumn> columns_;
    std::vector<std::string> written_; // of each component, where it comes again
    std::string text_;
    std::string again_;
    std::string place_;
    bool isWhole_ = false;
    bool hasNumbers_ = false;
    bool hasFolders_ = false;
    bool hasNames_ = false;
};

// The classes, each merged with the one that it makes least vague; the largest first.
std::vector<Shape> shapesOf(const std::vector<PathClass>& classes)
{
    std::vector<Shape> shapes;
    for (std::size_t i = 0; i < std::min(classes.size(), maxClasses); ++i) {
        const Shape shape(classes[i]);
        std::optional<MergedShape> best;
        std::size_t place = 0;
        for (std::size_t k = 0; k < shapes.size(); ++k) {
            std::optional<MergedShape> merged = mergeShapes(shapes[k], shape);
            if (!merged || (best && best->cost <= merged->cost))
                continue;
            best = std::move(merged);
            place = k;
        }
        if (best)
            shapes[place] = std::move(best->shape);
        else if (shapes.size() < maxShapes)
            shapes.push_back(shape);
    }
    std::stable_sort(shapes.begin(), shapes.end(),
                     [](const Shape& a, const Shape& b) { return a.paths > b.paths; });
    return shapes;
}

// All, where the template is too large, or too vague for one of them.
std::vector<std::string_view> unreadBy(const std::string& text,
                                       const std::vector<std::string_view>& paths)
try {
    Matcher matcher{Template(text)};
    std::vector<std::string_view> unread;
    std::copy_if(paths.begin(), paths.end(), std::back_inserter(unread),
                 [&](std::string_view path) { return !matcher.match(path); });
    return unread;
} catch (const TemplateError&) {
    return paths;
} catch (const MatchError&) {
    return paths;
}

} // namespace

std::vector<std::string> suggestTemplates(const std::vector<std::string_view>& paths)
{
    std::vector<std::string_view> left = samplePaths(paths, sampleSize);
    const std::size_t all = left.size();
    const std::size_t least = std::max<std::size_t>(all < 20 ? 2 : 3, (all + 99) / 100);
    std::map<std::string, bool> areNumbers;
    std::vector<std::string> templates;
    for (const Shape& shape : shapesOf(takeCensus(left))) {
        if (templates.size() == maxTemplates || left.size() * 50 < all || shape.paths < least)
            break;
        std::map<std::string, bool> areNumbersThen = areNumbers;
        const Writer writer(shape, areNumbersThen);
        if (!writer.isRegular(shape.paths, all))
            continue;
        std::vector<std::string_view> unread = unreadBy(writer.text(), left);
        if (left.size() - unread.size() < least)
            continue;
        left = std::move(unread);
        templates.push_back(writer.text());
        areNumbers = std::move(areNumbersThen);
    }
    return templates;
}

} // namespace casetable
