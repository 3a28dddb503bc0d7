#include "casetable/suggesting/TemplateSuggestion.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <set>

#include "casetable/suggesting/Census.h"
#include "casetable/suggesting/Shape.h"
#include "casetable/templates/Matcher.h"
#include "crawler/private/PathReading.h"

// One example through all steps:
//
//     sub-01/anat/sub-01_T1w.nii.gz             sub-02/anat/sub-02_T1w.nii.gz
//     sub-01/func/sub-01_run-1_bold.nii.gz      sub-02/func/sub-02_run-1_bold.nii.gz
//     sub-03/func/sub-03_run-1_bold.json        README
//
// 1. Each path is divided: "sub-01", "/anat", "/sub-01", "_T1w", and the ending. "sub" and "run"
//    stand in front of a "-" all over, so they are keys: "sub-01" is one part.
// 2. takeCensus() puts paths with parts of the same kinds between the same separators into a shape:
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
// No system has longer paths; a list may.
const std::size_t maxPathSize = 4096;
const std::size_t maxTemplates = 8;

// The first type that fits all values. A run is a piece of a part: nothing but its kind or its
// length ends it.
std::string typeOf(const ShapeTexts& values, Kinds kinds, bool isRun)
{
    const std::string length = std::to_string(values.distinct.begin()->size());
    const std::vector<std::string> types = {":digits", ":number",
                                            isRun                ? ":word" + length
                                            : kinds == fixedKind ? ":text" + length
                                                                 : ":word",
                                            isRun ? ",[A-Za-z]+" : ""};
    const auto fits = [&](const std::string& type) {
        Matcher matcher(Template("{value" + type + "}"));
        return std::all_of(values.distinct.begin(), values.distinct.end(),
                           [&](std::string_view value) { return matcher.match(value); });
    };
    const auto type = std::find_if(types.begin(), types.end(), fits);
    return type != types.end() ? *type : "";
}

// Letters and numbers in turn, where all values have the same turns, and columns of these tell more
// than one of the slot: all letters are the same, but for the last of "wingA", or are the rows of a
// grid, "B03". Otherwise the slot.
std::vector<ShapeSlot> divideRuns(const ShapeSlot& slot)
{
    std::vector<ShapeSlot> runs(runsOf(*slot.values.distinct.begin()).size());
    for (const std::string_view value : slot.values.all) {
        const std::vector<std::string_view> texts = runsOf(value);
        if (value.data() != nullptr && texts.size() != runs.size())
            return {slot};
        for (std::size_t i = 0; i < runs.size(); ++i) {
            const std::string_view text = texts.empty() ? std::string_view() : texts[i];
            runs[i].values.add(text);
            if (!text.empty())
                runs[i].kinds |= reading::isDigit(text.back()) ? numberKind : letterKind;
        }
    }
    if (runs.empty())
        return {slot};
    const std::size_t all = slot.values.distinct.size();
    const std::size_t first = runs.front().values.distinct.size();
    const bool isGrid = runs.size() == 2 && runs[0].kinds == letterKind && all >= 2 * first &&
                        runs[1].kinds == numberKind &&
                        first * runs[1].values.distinct.size() <= 2 * all;
    const bool isCode = std::all_of(runs.begin(), runs.end(), [&](const ShapeSlot& run) {
        return run.kinds == numberKind || (run.kinds == letterKind && run.values.isConstant()) ||
               (&run == &runs.back() && slot.kinds == letterKind);
    });
    return isGrid || isCode ? runs : std::vector<ShapeSlot>{slot};
}

// Whether the names are those of the files of one run, "flow.vtu" and "forces.dat": most are words,
// each has but one ending, and they come again in many folders. `stems` are without endings.
bool areListed(const ShapeTexts& names, const ShapeTexts& stems, const ShapeTexts& endings)
{
    const auto words = std::count_if(stems.distinct.begin(), stems.distinct.end(), [](auto stem) {
        return std::none_of(stem.begin(), stem.end(), reading::isDigit);
    });
    const std::size_t size = names.distinct.size();
    return !endings.isConstant() && stems.distinct.size() == size && names.all.size() >= 3 * size &&
           static_cast<std::size_t>(words) * 2 > size;
}

// A column, or the name of a folder, and what stands for it where it comes again: "{sub}".
struct Known {
    std::string text;
    ShapeTexts values;
    std::string type = {};
};

// What of `known` has these values wherever there are any.
const Known* findKnown(const std::vector<Known>& known, const ShapeTexts& values)
{
    const auto isSame = [](std::string_view a, std::string_view b) {
        return a.data() == nullptr || (a == b && b.data() != nullptr);
    };
    const auto found = std::find_if(known.begin(), known.end(), [&](const Known& candidate) {
        return std::equal(values.all.begin(), values.all.end(), candidate.values.all.begin(),
                          isSame);
    });
    return found != known.end() ? &*found : nullptr;
}

// Writes the template of a shape.
class Writer {
public:
    // `areNumbers` tells of the names in all templates, which are numbers in all or in none.
    Writer(const Shape& shape, std::map<std::string, bool>& areNumbers)
        : shape_(shape), areNumbers_(areNumbers)
    {
        const ShapeTexts& endings = shape.slots.back().values;
        for (std::size_t begin = 0; begin < shape.slots.size();) {
            const std::size_t end = shape.endOfComponent(begin);
            const ShapeTexts names = shape.stretch(begin, end);
            const std::size_t size = text_.size() + separatorOf(begin).size();
            const bool isFile = end == shape.slots.size();
            place_ = isFile ? "name" : "dir" + std::to_string(folders_.size() + 1);
            inFolders_ = isFile ? columns_.size() : 0;
            if (isFile && areListed(names, shape.stretch(begin, end - 1), endings)) {
                text_ += separatorOf(begin) + "*";
                return;
            }
            isWhole_ =
                isFile ? begin + 2 == end && endings.isConstant() && endings.distinct.count({}) == 0
                       : begin + 1 == end;
            for (; begin < end; ++begin)
                write(begin);
            folders_.push_back({text_.substr(size), names});
        }
    }

    // A column has its type where it stands first.
    std::string text() const
    {
        std::string text = text_;
        for (const Known& column : columns_)
            text.insert(text.find(column.text) + column.text.size() - 1, column.type);
        return text;
    }

    // Whether more than chance made the names of so many paths alike: numbers, the same file in
    // many folders, or that they are a good share of all.
    bool isRegular(std::size_t all) const
    {
        const bool hasCodes =
            std::any_of(columns_.begin(), columns_.end(), [](const Known& column) {
                return !column.type.empty() && column.type != ":word";
            });
        const bool isNamed = columns_.size() > inFolders_;
        return hasCodes || (inFolders_ > 0 && !isNamed) ||
               (isNamed && shape_.paths() >= 10 &&
                shape_.paths() * (inFolders_ > 0 ? 20 : 2) >= all);
    }

private:
    // A first part that may be missing has the separator of the next behind it.
    bool isLeading(std::size_t index) const
    {
        return shape_.slots[index].isOptional && shape_.opens(index);
    }

    std::string separatorOf(std::size_t index) const
    {
        return index > 0 && isLeading(index - 1) ? "" : escaped(shape_.slots[index].separator);
    }

    void write(std::size_t index)
    {
        const ShapeSlot& slot = shape_.slots[index];
        const std::string separator = separatorOf(index);
        text_ += isLeading(index) ? separator + "[" : slot.isOptional ? "[" + separator : separator;
        text_ += escaped(slot.key);
        if (!slot.key.empty())
            word_ = slot.key.substr(0, slot.key.size() - 1);
        else if (shape_.opens(index))
            word_.clear();
        const bool isBehindDate = index > 0 && shape_.slots[index - 1].kinds == fixedKind;
        if (isBehindDate && slot.kinds == numberKind && slot.values.distinct.begin()->size() == 6)
            word_ = "time";
        writeValues(slot);
        if (!slot.isOptional)
            return;
        text_ += (isLeading(index) ? escaped(shape_.slots[index + 1].separator) : "") + "]";
        word_.clear();
    }

    void writeValues(const ShapeSlot& slot)
    {
        const std::string_view sample = *slot.values.distinct.begin();
        const Known* const folder =
            slot.kinds == againKind ? findKnown(folders_, slot.values) : nullptr;
        if (folder != nullptr || (slot.kinds == endingKind && !slot.values.isConstant())) {
            text_ += folder != nullptr ? folder->text : ".*";
            word_.clear();
            return;
        }
        if (slot.kinds == fixedKind) {
            const bool isTime = sample.find_first_of("-:") == 2;
            const bool isDate = sample.substr(0, 2) == "19" || sample.substr(0, 2) == "20";
            word_ = isTime ? "time" : isDate && sample.size() < 30 ? "date" : "id";
        }
        const bool isDivided = slot.kinds < fixedKind && findColumn(slot.values) == nullptr;
        const std::vector<ShapeSlot> runs =
            isDivided ? divideRuns(slot) : std::vector<ShapeSlot>{slot};
        for (std::size_t i = 0; i < runs.size(); ++i) {
            const std::string text(*runs[i].values.distinct.begin());
            const bool isLetters = runs[i].kinds == letterKind;
            const bool isLast = i + 1 == runs.size();
            if (runs[i].values.isConstant() &&
                (!slot.isOptional || (isLetters && runs.size() > 1))) {
                text_ += escaped(text);
                word_ = isLetters ? text : "";
                continue;
            }
            if (word_.empty() && !isLast && runs[i + 1].values.isConstant())
                word_ = *runs[i + 1].values.distinct.begin(); // "20K": the unit
            const bool isRun = !isLast || (runs.size() > 1 && slot.kinds != letterKind);
            addColumn(typeOf(runs[i].values, runs[i].kinds, isRun), runs[i].values);
            word_.clear();
        }
        if (runs.size() > 1)
            word_.clear(); // "mm" of "5mm_left" does not name what is left
    }

    // The column that always has these values. Few may be the same by chance.
    const Known* findColumn(const ShapeTexts& values) const
    {
        const std::size_t distinct = values.distinct.size();
        const bool isKnown = distinct > 2 || (distinct == 2 && values.all.size() >= 10);
        return isKnown ? findKnown(columns_, values) : nullptr;
    }

    // The name is unique in the template and none of the table's own.
    void addColumn(const std::string& type, const ShapeTexts& values)
    {
        if (const Known* const known = findColumn(values)) {
            text_ += known->text;
            return;
        }
        const std::string base = word_.empty() ? place_ : word_;
        const bool isNumber = type == ":number";
        std::string name = base;
        for (int i = 2;
             used_.count(name) > 0 || areNumbers_.emplace(name, isNumber).first->second != isNumber;
             ++i)
            name = base + "_" + std::to_string(i);
        used_.insert(name);
        // A whole component needs no type: "/" or the ending ends it.
        const bool isWord = type == ":word";
        columns_.push_back({"{" + name + "}", values, isWord && isWhole_ ? "" : type});
        text_ += columns_.back().text;
    }

    const Shape& shape_;
    std::map<std::string, bool>& areNumbers_;
    std::set<std::string> used_ = {"case", "path", "files"};
    std::vector<Known> columns_;
    std::vector<Known> folders_;
    std::string text_;          // columns without their types
    std::string place_;         // names columns
    std::string word_;          // what stands in front, before all
    bool isWhole_ = false;      // whether the component has one slot
    std::size_t inFolders_ = 0; // columns in the names of folders
};

// So many of the paths that a system can have: the same ones in whatever order they are given, and
// spread over all of them.
std::vector<std::string_view> samplePaths(const std::vector<std::string_view>& paths)
{
    std::vector<std::pair<std::size_t, std::string_view>> hashed;
    hashed.reserve(paths.size());
    for (const std::string_view path : paths)
        if (path.size() <= maxPathSize)
            hashed.emplace_back(std::hash<std::string_view>()(path), path);
    if (hashed.size() > sampleSize) {
        std::nth_element(hashed.begin(), hashed.begin() + sampleSize, hashed.end());
        hashed.resize(sampleSize);
    }
    std::vector<std::string_view> sample;
    sample.reserve(hashed.size());
    for (const auto& entry : hashed)
        sample.push_back(entry.second);
    std::sort(sample.begin(), sample.end());
    return sample;
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
    std::vector<std::string_view> left = samplePaths(paths);
    const std::size_t all = left.size();
    const std::size_t least = std::max<std::size_t>(all < 20 ? 2 : 3, (all + 99) / 100);
    std::map<std::string, bool> areNumbers;
    std::vector<std::string> templates;
    for (const Shape& shape : mergeShapes(takeCensus(left))) {
        if (templates.size() == maxTemplates || left.size() * 50 < all || shape.paths() < least)
            break;
        const Writer writer(shape, areNumbers);
        if (!writer.isRegular(all))
            continue;
        const std::string text = writer.text();
        std::vector<std::string_view> unread = unreadBy(text, left);
        if (left.size() - unread.size() < least)
            continue;
        left = std::move(unread);
        templates.push_back(text);
    }
    return templates;
}

} // namespace casetable
