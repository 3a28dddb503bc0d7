#include "casetable/suggesting/TemplateSuggestion.h"

#include <algorithm>
#include <cstddef>
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
//     sub-01/func/sub-01_run-1_bold.json        README
//
// 1. NameReader divides each component: "sub" "-01", "func", "sub" "-01" "_run" "-1" "_bold". "sub"
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

struct DraftColumn {
    std::string key;   // what stands in front of it, may be empty
    std::string place; // its name where there is no key
    std::string type;  // with the ":" or "," in front
    ShapeTexts values;
};

// A template without the names of its columns: text, and columns by their index.
struct Draft {
    struct Piece {
        std::string text;
        std::optional<std::size_t> column;
    };
    std::vector<Piece> pieces;
    std::vector<DraftColumn> columns;
};

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

class Writer {
public:
    explicit Writer(const Shape& shape)
    {
        for (const ShapeComponent& component : shape.components) {
            const bool isFile = &component == &shape.components.back();
            place_ = isFile ? "name" : "dir" + std::to_string(written_.size() + 1);
            isWhole_ = component.slots.size() == 1 &&
                       (!isFile || (shape.endings.size() == 1 && !shape.endings.count({})));
            const std::size_t begin = draft_.pieces.size();
            addText(component.isOptional ? "[" : "");
            if (component.slots.front().kinds == listedKind && !component.texts.isConstant())
                addText("*");
            else
                write(component);
            written_.emplace_back(draft_.pieces.begin() + static_cast<std::ptrdiff_t>(begin),
                                  draft_.pieces.end());
            written_.back().push_back({component.isOptional ? "]" : "", {}});
            addText(isFile ? "" : "/");
            addText(component.isOptional ? "]" : "");
        }
        addText(shape.endings.size() > 1 ? ".*" : escaped(*shape.endings.begin()));
    }

    Draft draft() { return std::move(draft_); }

private:
    void addText(const std::string& text) { draft_.pieces.push_back({text, {}}); }

    void write(const ShapeComponent& component)
    {
        std::string word;
        for (const ShapeSlot& slot : component.slots) {
            // A first part that may be missing has its separator behind it.
            const bool isFirst = &slot == &component.slots.front();
            const bool isBehindFirst = !isFirst && &slot == &component.slots[1];
            addText(slot.isOptional ? "[" : "");
            if (!isBehindFirst || !component.slots.front().isOptional)
                addText(escaped(slot.separator));
            addText(escaped(slot.key));
            if (!slot.key.empty())
                word = slot.key.substr(0, slot.key.size() - 1);
            write(slot, word, slot.isOptional || component.isOptional);
            word = slot.values.isConstant() && !slot.isOptional && slot.kinds == letterKind
                       ? std::string(*slot.values.distinct.begin())
                       : "";
            if (isFirst && slot.isOptional)
                addText(escaped(component.slots[1].separator));
            addText(slot.isOptional ? "]" : "");
        }
    }

    void write(const ShapeSlot& slot, std::string word, bool isOptional)
    {
        for (std::size_t i = 0; i < written_.size() && i < maxAgain; ++i)
            if (slot.kinds == againKind << i) {
                draft_.pieces.insert(draft_.pieces.end(), written_[i].begin(), written_[i].end());
                return;
            }
        if (slot.values.isConstant() && !isOptional)
            return addText(escaped(*slot.values.distinct.begin()));
        if (slot.kinds == fixedKind) {
            const std::string_view sample = *slot.values.distinct.begin();
            const bool isTime = sample.size() == 6 || sample.find_first_of("-:") == 2;
            const bool isDate = sample.substr(0, 2) == "19" || sample.substr(0, 2) == "20";
            word = isTime ? "time" : isDate && sample.size() < 30 ? "date" : "id";
        }
        const bool isDivided = slot.kinds < fixedKind && slot.kinds != numberKind;
        const std::vector<ShapeSlot> runs = isDivided ? divideRuns(slot) : std::vector<ShapeSlot>();
        if (runs.size() < 2 || find(slot.values) || !isCode(slot, runs))
            return addColumn(word, typeOf(slot.values, slot.kinds, false), slot.values);
        for (std::size_t i = 0; i < runs.size(); ++i) {
            const bool isLast = i + 1 == runs.size();
            const bool isText = runs[i].kinds == letterKind || !isOptional;
            if (runs[i].values.isConstant() && isText) {
                addText(std::string(*runs[i].values.distinct.begin()));
                word = isLetter(addedText().back()) ? addedText() : "";
                continue;
            }
            // "20K": the unit behind it.
            if (word.empty() && !isLast && runs[i + 1].values.isConstant())
                word = *runs[i + 1].values.distinct.begin();
            const bool isLastOfWord = isLast && slot.kinds == letterKind;
            addColumn(word, typeOf(runs[i].values, runs[i].kinds, !isLastOfWord), runs[i].values);
            word.clear();
        }
    }

    const std::string& addedText() const { return draft_.pieces.back().text; }

    // Whether columns of the runs tell more than one of the slot: all letters are the same or
    // known, or rows of a grid ("B03").
    bool isCode(const ShapeSlot& slot, const std::vector<ShapeSlot>& runs) const
    {
        const std::size_t all = slot.values.distinct.size();
        const std::size_t first = runs[0].values.distinct.size();
        const bool isGrid = runs.size() == 2 && runs[0].kinds == letterKind && all >= 2 * first &&
                            first * runs[1].values.distinct.size() <= 2 * all;
        // The last may vary: "wingA".
        return isGrid || std::all_of(runs.begin(), runs.end(), [&](const ShapeSlot& run) {
                   return run.kinds == numberKind || run.values.isConstant() || find(run.values) ||
                          (&run == &runs.back() && slot.kinds == letterKind);
               });
    }

    // The column that has these values wherever there are any. Few may be the same by chance.
    std::optional<std::size_t> find(const ShapeTexts& values) const
    {
        const std::size_t distinct = values.distinct.size();
        for (std::size_t i = 0; i < draft_.columns.size(); ++i)
            if ((distinct > 2 || (distinct == 2 && values.all.size() >= 10)) &&
                std::equal(values.all.begin(), values.all.end(),
                           draft_.columns[i].values.all.begin(),
                           [](std::string_view a, std::string_view b) {
                               return a.data() == nullptr || (a == b && b.data() != nullptr);
                           }))
                return i;
        return std::nullopt;
    }

    void addColumn(std::string word, std::string type, const ShapeTexts& values)
    {
        const std::optional<std::size_t> known = find(values);
        draft_.pieces.push_back({"", known.value_or(draft_.columns.size())});
        if (known) {
            std::string& key = draft_.columns[*known].key;
            key = key.empty() ? word : key;
            return;
        }
        // A whole component needs no type: "/" or the ending ends it.
        type = type == ":word" && isWhole_ ? "" : type;
        draft_.columns.push_back({word, place_, type, values});
    }

    Draft draft_;
    std::vector<std::vector<Draft::Piece>> written_; // of each component
    std::string place_;
    bool isWhole_ = false;
};

// Whether more than chance made the names alike: numbers, the same file in many folders, or a good
// share of all paths.
bool isRegular(const Draft& draft, std::size_t paths, std::size_t all)
{
    bool hasNumbers = false;
    bool hasFolders = false;
    bool hasNames = false;
    for (const DraftColumn& column : draft.columns) {
        hasNumbers = hasNumbers || (!column.type.empty() && column.type != ":word");
        hasFolders = hasFolders || column.place != "name";
        hasNames = hasNames || column.place == "name";
    }
    return hasFolders + hasNames > 0 &&
           (hasNumbers || !hasNames || (paths >= 10 && paths * (hasFolders ? 20 : 2) >= all));
}

// The template, with names that are unique in it and none of the table's own. `areNumbers` tells of
// the names in the templates before, of which no one may be a number in some only.
std::string textOf(const Draft& draft, std::map<std::string, bool>& areNumbers)
{
    std::set<std::string> used = {"case", "path", "files"};
    std::vector<std::string> names;
    for (const DraftColumn& column : draft.columns) {
        const std::string base = column.key.empty() ? column.place : column.key;
        const bool isNumber = column.type == ":number";
        std::string name = base;
        for (int i = 2;
             used.count(name) > 0 || areNumbers.emplace(name, isNumber).first->second != isNumber;
             ++i)
            name = base + "_" + std::to_string(i);
        used.insert(name);
        names.push_back(name);
    }
    std::string text;
    std::set<std::size_t> written;
    for (const Draft::Piece& piece : draft.pieces) {
        text += piece.text;
        if (piece.column)
            text +=
                "{" + names[*piece.column] +
                (written.insert(*piece.column).second ? draft.columns[*piece.column].type : "") +
                "}";
    }
    return text;
}

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
        const Draft draft = Writer(shape).draft();
        if (!isRegular(draft, shape.paths, all))
            continue;
        std::map<std::string, bool> areNumbersThen = areNumbers;
        const std::string text = textOf(draft, areNumbersThen);
        Matcher matcher{Template(text)};
        const auto unread = std::stable_partition(
            left.begin(), left.end(), [&](std::string_view path) { return !matcher.match(path); });
        if (static_cast<std::size_t>(left.end() - unread) < least)
            continue;
        left.erase(unread, left.end());
        templates.push_back(text);
        areNumbers = std::move(areNumbersThen);
    }
    return templates;
}

} // namespace casetable
