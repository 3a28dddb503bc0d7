#include "casetable/suggesting/Suggest.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "casetable/suggesting/MarkerFinder.h"
#include "casetable/suggesting/MixedFiles.h"
#include "casetable/suggesting/PathTemplates.h"
#include "casetable/suggesting/PathTree.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

// More markers than anybody wants to read; a bound for trees that are nothing but numbers.
const std::size_t maxSlots = 32;
const std::size_t sampleSize = 5;

// A slot in the names of a class of folders or files.
struct Key {
    std::string text; // The type, the word and the separators before the value.
    const Slot* slot;
    std::size_t folders; // The class of folders that bears it; for file names, none.
    bool varies;
    std::string_view first; // One of the values.

    bool inFileName() const { return folders == noFolders; }

    static const std::size_t noFolders = static_cast<std::size_t>(-1);
};

// The same for keys of different classes when they have the same text, and as many others with that
// text stand before them.
using KeyIndex = std::uint32_t;

// A class of files with the keys on its way, from left to right.
struct Route {
    struct Stop {
        KeyIndex index;
        const Key* key;
    };

    const FileClass* files;
    std::vector<Stop> stops;

    const Key* find(KeyIndex index) const
    {
        const auto stop = std::find_if(stops.begin(), stops.end(),
                                       [index](const Stop& stop) { return stop.index == index; });
        return stop == stops.end() ? nullptr : stop->key;
    }

    // Whether it has all of these, in this order.
    bool has(const std::vector<KeyIndex>& indices) const
    {
        auto stop = stops.begin();
        for (const KeyIndex index : indices) {
            stop = std::find_if(stop, stops.end(),
                                [index](const Stop& stop) { return stop.index == index; });
            if (stop == stops.end())
                return false;
            ++stop;
        }
        return true;
    }

    std::size_t size() const { return files->files.size(); }
};

// What tells keys apart. For a value at the beginning of a name that is its being there: the folder
// above may differ.
std::string keyText(const Slot& slot)
{
    const std::string word = slot.leftInName == 0 ? "/" : slot.left.substr(lastWord(slot.left));
    return (slot.type == MetadataPattern::NumberValue ? "n" : "s") + word;
}

class Suggester {
public:
    Suggester(const PathTree& tree, bool textInFileNames)
        : tree_(tree), templates_(pathTemplates(tree, textInFileNames))
    {
        findRoutes();
        findUnmarked();
    }

    // The markers; empty when nothing can be said.
    std::vector<MetadataPattern> patterns()
    {
        std::set<KeyIndex> refused;
        for (;;) {
            const std::vector<KeyIndex> chosen = choose(refused);
            if (chosen.empty())
                return {};
            supporters_ = supporters(chosen);
            std::vector<MetadataPattern> patterns;
            const std::optional<KeyIndex> unfit = mark(chosen, patterns);
            if (!unfit) {
                foldersTell_ = readsFolders(chosen);
                fileNamesTell_ = fileNamesTell(chosen);
                return patterns;
            }
            refused.insert(*unfit);
        }
    }

    // Values at the beginning of paths, if there is more than one.
    const std::vector<std::string>& unmarked() const { return unmarked_; }

    // Whether the folders alone tell what a file belongs to. Then the texts in its name tell what
    // is in it.
    bool foldersTell() const { return (foldersTell_ || unmarkedFolders_) && !fileNamesTell_; }

private:
    void findUnmarked()
    {
        std::set<std::string_view> values;
        for (const FolderClass& folders : templates_.folders) {
            if (folders.parent == 0 && beginsPaths(folders.slots))
                addValues(folders.slots.front(), false, folders.folders, values);
        }
        unmarkedFolders_ = values.size() > 1;
        if (!unmarkedFolders_)
            values = firstValuesOfMostFiles();
        if (values.size() > 1)
            unmarked_.assign(values.begin(), values.end());
        unmarked_.resize(std::min(unmarked_.size(), sampleSize));
    }

    // Some numbered files beside folders say nothing about most paths.
    std::set<std::string_view> firstValuesOfMostFiles() const
    {
        std::set<std::string_view> values;
        std::size_t count = 0;
        for (const FileClass& files : templates_.files) {
            if (files.folders != 0 || !beginsPaths(files.slots))
                continue;
            count += files.files.size();
            addValues(files.slots.front(), true, files.files, values);
        }
        return count * 2 >= fileCount_ ? values : std::set<std::string_view>();
    }

    static bool beginsPaths(const std::vector<Slot>& slots)
    {
        return !slots.empty() && slots.front().left.empty();
    }

    void addValues(const Slot& slot, bool areFiles, const std::vector<PathTree::Index>& bearers,
                   std::set<std::string_view>& values) const
    {
        for (const PathTree::Index bearer : bearers)
            values.insert(valueAt(slot, areFiles, bearer));
    }

    std::vector<Key> keysOf(const std::vector<Slot>& slots, std::size_t folders,
                            const std::vector<PathTree::Index>& bearers) const
    {
        std::vector<Key> keys;
        for (const Slot& slot : slots) {
            if (slot.left.empty())
                continue;
            Key key{keyText(slot), &slot, folders, false, {}};
            key.first = valueAt(slot, key.inFileName(), bearers.front());
            key.varies = std::any_of(bearers.begin(), bearers.end(), [&](PathTree::Index bearer) {
                return valueAt(slot, key.inFileName(), bearer) != key.first;
            });
            keys.push_back(std::move(key));
        }
        return keys;
    }

    std::string_view valueAt(const Slot& slot, bool isFile, PathTree::Index bearer) const
    {
        const Name& name =
            tree_.names()[isFile ? tree_.files()[bearer].name : tree_.folders()[bearer].name];
        return valueOf(slot, name, isFile ? name.stem : name.text.size());
    }

    void findRoutes()
    {
        for (std::size_t c = 0; c < templates_.folders.size(); ++c)
            keysOfFolders_.push_back(
                keysOf(templates_.folders[c].slots, c, templates_.folders[c].folders));
        for (const FileClass& files : templates_.files)
            keysOfFiles_.push_back(keysOf(files.slots, Key::noFolders, files.files));

        std::map<std::pair<std::string_view, std::size_t>, KeyIndex> indices;
        for (std::size_t f = 0; f < templates_.files.size(); ++f) {
            Route route{&templates_.files[f], {}};
            fileCount_ += route.size();
            std::map<std::string_view, std::size_t> counts;
            for (const Key* key : keysTo(f)) {
                const std::string_view text = key->text;
                const auto entry = indices.emplace(std::make_pair(text, ++counts[text]),
                                                   static_cast<KeyIndex>(indices.size()));
                route.stops.push_back({entry.first->second, key});
            }
            if (!route.stops.empty())
                routes_.push_back(std::move(route));
        }
    }

    // The keys on the way to a class of files.
    std::vector<const Key*> keysTo(std::size_t files) const
    {
        std::vector<const Key*> keys;
        for (std::size_t c = templates_.files[files].folders; c != 0;
             c = templates_.folders[c].parent) {
            for (auto key = keysOfFolders_[c].rbegin(); key != keysOfFolders_[c].rend(); ++key)
                keys.push_back(&*key);
        }
        std::reverse(keys.begin(), keys.end());
        for (const Key& key : keysOfFiles_[files])
            keys.push_back(&key);
        keys.resize(std::min(keys.size(), maxSlots));
        return keys;
    }

    std::vector<const Route*> supporters(const std::vector<KeyIndex>& keys) const
    {
        std::vector<const Route*> supporters;
        for (const Route& route : routes_) {
            if (route.has(keys))
                supporters.push_back(&route);
        }
        return supporters;
    }

    static std::size_t size(const std::vector<const Route*>& routes)
    {
        std::size_t sum = 0;
        for (const Route* route : routes)
            sum += route->size();
        return sum;
    }

    // The keys that stand in most paths, together and in the same order; one that would leave out
    // many of the paths that the others share is not taken.
    std::vector<KeyIndex> choose(const std::set<KeyIndex>& refused) const
    {
        struct Candidate {
            std::size_t files = 0;
            bool varies = false;
            std::string_view first;
        };
        std::map<KeyIndex, Candidate> candidates;
        for (const Route& route : routes_) {
            for (const Route::Stop& stop : route.stops) {
                Candidate& candidate = candidates[stop.index];
                if (candidate.files == 0)
                    candidate.first = stop.key->first;
                candidate.files += route.size();
                candidate.varies =
                    candidate.varies || stop.key->varies || stop.key->first != candidate.first;
            }
        }
        std::vector<std::pair<std::size_t, KeyIndex>> order;
        for (const auto& [index, candidate] : candidates) {
            if (candidate.varies && candidate.files * 2 >= fileCount_ && refused.count(index) == 0)
                order.emplace_back(candidate.files, index);
        }
        std::stable_sort(order.begin(), order.end(),
                         [](const auto& a, const auto& b) { return a.first > b.first; });

        std::vector<KeyIndex> chosen;
        std::size_t shared = fileCount_;
        for (const auto& [files, index] : order) {
            const std::vector<KeyIndex> wider = inOrder(chosen, index);
            const std::size_t left = size(supporters(wider));
            if (!wider.empty() && left * 2 >= fileCount_ &&
                (chosen.empty() || left * 4 >= shared * 3)) {
                chosen = wider;
                shared = left;
            }
        }
        return chosen;
    }

    // `keys` and `added` in the order that most of the paths have that have them all; empty when
    // there are none.
    std::vector<KeyIndex> inOrder(const std::vector<KeyIndex>& keys, KeyIndex added) const
    {
        std::map<std::vector<KeyIndex>, std::size_t> orders;
        for (const Route& route : routes_) {
            if (route.find(added) == nullptr || !route.has(keys))
                continue;
            std::vector<KeyIndex> order;
            for (const Route::Stop& stop : route.stops) {
                if (stop.index == added ||
                    std::find(keys.begin(), keys.end(), stop.index) != keys.end())
                    order.push_back(stop.index);
            }
            orders[std::move(order)] += route.size();
        }
        const auto most =
            std::max_element(orders.begin(), orders.end(),
                             [](const auto& a, const auto& b) { return a.second < b.second; });
        return most == orders.end() ? std::vector<KeyIndex>() : most->first;
    }

    // A chosen key that tells the files of one case apart, if there is one: its values occur in
    // most folders again, and they are text, or they count. Where numbers tell the files of a
    // folder apart, text in their names may do so too.
    std::optional<KeyIndex> fileCounter(const std::vector<KeyIndex>& chosen) const
    {
        if (!readsFolders(chosen) && !unmarkedFolders_)
            return std::nullopt;
        const bool fileNamesTell = this->fileNamesTell(chosen);
        for (const KeyIndex index : chosen) {
            if (countsFiles(index) && !(fileNamesTell && isText(index)))
                return index;
        }
        return std::nullopt;
    }

    bool isText(KeyIndex index) const
    {
        return supporters_.front()->find(index)->slot->type == MetadataPattern::StringValue;
    }

    // Whether a number among these keys, which is no counter, varies in most folders.
    bool fileNamesTell(const std::vector<KeyIndex>& chosen) const
    {
        return std::any_of(chosen.begin(), chosen.end(), [this](KeyIndex index) {
            return !isText(index) && variesInFolders(index) && !countsFiles(index);
        });
    }

    bool variesInFolders(KeyIndex index) const
    {
        struct Seen {
            std::string_view value;
            bool varies;
        };
        std::unordered_map<PathTree::Index, Seen> folders;
        for (const Route* route : supporters_) {
            const Key& key = *route->find(index);
            if (!key.inFileName())
                return false;
            for (const PathTree::Index file : route->files->files) {
                const std::string_view value = valueAt(*key.slot, true, file);
                Seen& seen =
                    folders.emplace(tree_.files()[file].folder, Seen{value, false}).first->second;
                seen.varies = seen.varies || seen.value != value;
            }
        }
        const auto varying = std::count_if(folders.begin(), folders.end(),
                                           [](const auto& folder) { return folder.second.varies; });
        return static_cast<std::size_t>(varying) * 2 >= folders.size();
    }

    bool readsFolders(const std::vector<KeyIndex>& chosen) const
    {
        return !std::all_of(chosen.begin(), chosen.end(),
                            [this](KeyIndex index) { return isInFileNames(index); });
    }

    bool isInFileNames(KeyIndex index) const
    {
        return std::all_of(supporters_.begin(), supporters_.end(), [index](const Route* route) {
            return route->find(index)->inFileName();
        });
    }

    bool countsFiles(KeyIndex index) const
    {
        std::set<std::string_view> values;
        std::unordered_set<PathTree::Index> folders;
        std::vector<std::pair<PathTree::Index, std::string_view>> occurrences;
        const Slot& slot = *supporters_.front()->find(index)->slot;
        for (const Route* route : supporters_) {
            const Key& key = *route->find(index);
            if (!key.inFileName())
                return false;
            for (const PathTree::Index file : route->files->files) {
                occurrences.emplace_back(tree_.files()[file].folder,
                                         valueAt(*key.slot, true, file));
                folders.insert(occurrences.back().first);
                values.insert(occurrences.back().second);
            }
        }
        // Several files of a folder may have the same value.
        std::sort(occurrences.begin(), occurrences.end());
        occurrences.erase(std::unique(occurrences.begin(), occurrences.end()), occurrences.end());
        const bool repeated = folders.size() > 1 && values.size() > 1 &&
                              occurrences.size() * 2 >= folders.size() * values.size();
        if (!repeated || slot.isPair)
            return false;
        // Dates and the like count nothing.
        if (slot.type == MetadataPattern::StringValue)
            return !std::all_of(values.begin(), values.end(), beginsWithDigit);
        return count(values, isWordByte(slot.left.back()));
    }

    static bool beginsWithDigit(std::string_view text)
    {
        return !text.empty() && text.front() >= '0' && text.front() <= '9';
    }

    // Whether these are whole numbers that are padded, or that count from 0 or 1. A parameter may
    // look like either if it has its word right before it, as in AoA1, AoA2 and AoA3, but not like
    // both with three digits, as IM001, IM002 and IM003.
    static bool count(const std::set<std::string_view>& texts, bool behindWord)
    {
        std::size_t padded = 0;
        std::set<std::uint64_t> numbers;
        for (const std::string_view text : texts) {
            std::uint64_t number = 0;
            const char* const end = text.data() + text.size();
            const auto result = std::from_chars(text.data(), end, number);
            if (result.ec != std::errc() || result.ptr != end)
                return false;
            if (text.size() > 1 && text.front() == '0')
                padded = std::max(padded, text.size());
            numbers.insert(number);
        }
        const bool counts = numbers.size() > 2 && *numbers.begin() <= 1 &&
                            *numbers.rbegin() - *numbers.begin() == numbers.size() - 1;
        return behindWord ? counts && padded >= 3 : counts || padded > 0;
    }

    // Some of the paths that have all chosen keys, the same whatever their order.
    std::vector<Trial> trials(const std::vector<KeyIndex>& chosen) const
    {
        const std::size_t paths = size(supporters_);
        std::vector<Trial> trials;
        for (const Route* route : supporters_) {
            std::vector<const Key*> keys;
            keys.reserve(chosen.size());
            for (const KeyIndex index : chosen)
                keys.push_back(route->find(index));
            std::size_t taken = 0;
            for (const PathTree::Index file : route->files->files) {
                if (taken == 0 || isLookedAt(file, paths)) {
                    trials.push_back(trial(*route, keys, file));
                    ++taken;
                }
            }
        }
        return trials;
    }

    Trial trial(const Route& route, const std::vector<const Key*>& keys,
                PathTree::Index fileIndex) const
    {
        const PathTree::File& file = tree_.files()[fileIndex];
        Trial trial{file.path, {}, {}, {}};
        trial.begins.resize(keys.size());
        trial.ends.resize(keys.size());
        trial.exact.resize(keys.size());
        PathTree::Index folder = file.folder;
        std::size_t folders = route.files->folders;
        for (std::size_t k = keys.size(); k-- > 0;) {
            const Key& key = *keys[k];
            while (!key.inFileName() && folders != key.folders) {
                folder = tree_.folders()[folder].parent;
                folders = templates_.folders[folders].parent;
            }
            const std::string_view value =
                valueAt(*key.slot, key.inFileName(), key.inFileName() ? fileIndex : folder);
            const std::string_view name =
                tree_.names()[key.inFileName() ? file.name : tree_.folders()[folder].name].text;
            const std::size_t nameAt =
                key.inFileName() ? file.nameAt : tree_.folders()[folder].nameAt;
            trial.begins[k] = nameAt + static_cast<std::size_t>(value.data() - name.data());
            trial.ends[k] = trial.begins[k] + value.size();
            trial.exact[k] = key.inFileName() && key.slot->type == MetadataPattern::StringValue;
        }
        return trial;
    }

    // A chosen key whose values are those of one before, if there is one, as in
    // subject01/subject01_rest.dat.
    std::optional<KeyIndex> repetition(const std::vector<KeyIndex>& chosen,
                                       const std::vector<Trial>& trials) const
    {
        for (std::size_t k = 1; k < chosen.size(); ++k) {
            for (std::size_t before = 0; before < k; ++before) {
                if (repeats(trials, k, before, wordOf(chosen[k]) == wordOf(chosen[before])))
                    return chosen[k];
            }
        }
        return std::nullopt;
    }

    // The word that stands before the values of a key, without separators.
    std::string_view wordOf(KeyIndex index) const
    {
        const std::string_view text = supporters_.front()->find(index)->text;
        return text.substr(1, text.find_last_not_of("-_=. "));
    }

    static bool repeats(const std::vector<Trial>& trials, std::size_t k, std::size_t before,
                        bool sameWord)
    {
        std::set<std::string> values;
        std::size_t same = 0;
        std::size_t length = 0;
        for (const Trial& trial : trials) {
            std::string value = bare(trial.value(k));
            same += value == bare(trial.value(before)) ? 1 : 0;
            length = std::max(length, value.size());
            values.insert(std::move(value));
        }
        // A few short values may agree by chance.
        const bool isCertain = sameWord || values.size() >= 8 || length >= 4;
        return isCertain && same * 10 >= trials.size() * 9;
    }

    // The same for a value that is written in another way, as 20240131 for 2024-01-31 or 7 for 007.
    static std::string bare(std::string_view value)
    {
        while (value.size() > 1 && value.front() == '0')
            value.remove_prefix(1);
        std::string bare;
        for (const char c : value) {
            if (bare.empty() || (c != '-' && c != '_' && c != ':'))
                bare += c;
        }
        return bare;
    }

    // What stands before the values of a key, as far as it is the same in all paths.
    ValuePlace place(KeyIndex index) const
    {
        const Slot& slot = *supporters_.front()->find(index)->slot;
        std::size_t constant = slot.left.size();
        bool afterText = true;
        for (const Route* route : supporters_) {
            const Slot& other = *route->find(index)->slot;
            const auto end = std::mismatch(other.left.rbegin(), other.left.rend(),
                                           slot.left.rbegin(), slot.left.rend());
            constant =
                std::min(constant, static_cast<std::size_t>(end.first - other.left.rbegin()));
            afterText = afterText && other.afterText && other.leftInName == slot.leftInName;
        }
        ValuePlace place{slot.type, constant, std::nullopt};
        if (afterText)
            place.behindText = slot.leftInName;
        return place;
    }

    // Gives each key its marker; otherwise answers one that must not be chosen.
    std::optional<KeyIndex> mark(const std::vector<KeyIndex>& chosen,
                                 std::vector<MetadataPattern>& patterns) const
    {
        if (const std::optional<KeyIndex> counter = fileCounter(chosen))
            return counter;
        std::vector<Trial> trials = this->trials(chosen);
        if (const std::optional<KeyIndex> repeating = repetition(chosen, trials))
            return repeating;
        std::vector<ValuePlace> places;
        places.reserve(chosen.size());
        for (const KeyIndex index : chosen)
            places.push_back(place(index));
        const MarkerFinder finder(std::move(places), std::move(trials));
        const std::optional<std::size_t> failed = finder.find(patterns);
        if (!failed)
            return std::nullopt;
        // A folder tells more than the text at the beginning of the names in it.
        const std::size_t next = *failed + 1;
        const bool textFollows = next < chosen.size() && isText(chosen[next]) &&
                                 isInFileNames(chosen[next]) && !isInFileNames(chosen[*failed]);
        return chosen[textFollows ? next : *failed];
    }

    const PathTree& tree_;
    const PathTemplates templates_;
    std::vector<std::vector<Key>> keysOfFolders_;
    std::vector<std::vector<Key>> keysOfFiles_;
    std::vector<Route> routes_;
    std::size_t fileCount_ = 0; // Of those in classes.
    std::vector<std::string> unmarked_;
    bool unmarkedFolders_ = false;         // Whether those are in the names of folders.
    std::vector<const Route*> supporters_; // Of the keys chosen.
    bool foldersTell_ = false;
    bool fileNamesTell_ = false;
};

double sizeOf(std::string number)
{
    std::replace_if(
        number.begin(), number.end(), [](char c) { return c == 'D' || c == 'd'; }, 'e');
    return std::strtod(number.c_str(), nullptr); // Also of what no number holds, as 1e999.
}

std::vector<std::string> sampleOf(const std::set<std::string>& values,
                                  MetadataPattern::ValueType type)
{
    std::vector<std::string> sample(values.begin(), values.end());
    if (type == MetadataPattern::NumberValue)
        std::stable_sort(sample.begin(), sample.end(),
                         [](const auto& a, const auto& b) { return sizeOf(a) < sizeOf(b); });
    sample.resize(std::min(sample.size(), sampleSize));
    return sample;
}

// Runs the module on all paths. False when the markers overlap in one of them.
bool count(CrawlerBasicImporterParser& parser, const std::vector<MetadataPattern>& patterns,
           Suggestion& suggestion)
{
    try {
        parser.applyMetadataPatternList(patterns);
    } catch (const std::out_of_range&) {
        return false;
    }
    suggestion.patterns.clear();
    suggestion.cases = parser.numDefinedCases();
    suggestion.matchedFiles = 0;
    for (const auto& file : parser.crawlerFilePathList())
        suggestion.matchedFiles += file->isMatched() ? 1 : 0;
    for (std::size_t k = 0; k < patterns.size(); ++k) {
        std::set<std::string> values;
        for (std::size_t index = 0; index < suggestion.cases; ++index)
            values.insert(parser.caseMetadataSValue(index, k));
        suggestion.patterns.push_back(
            {patterns[k], values.size(), sampleOf(values, patterns[k].valueType)});
    }
    return true;
}

// Leaves out what reads but one value, and of markers that overlap the last text: only text
// overlaps.
void countWhatVaries(const std::list<std::string>& paths, std::vector<MetadataPattern> patterns,
                     Suggestion& suggestion)
{
    CrawlerBasicImporterParser parser;
    for (const std::string& path : paths)
        parser.appendRawFilePath(path);
    while (!patterns.empty()) {
        std::size_t leaveOut = patterns.size();
        if (count(parser, patterns, suggestion)) {
            for (std::size_t k = 0; k < patterns.size() && leaveOut == patterns.size(); ++k)
                leaveOut = suggestion.patterns[k].valueCount < 2 ? k : leaveOut;
            if (leaveOut == patterns.size()) {
                suggestion.mixed = mixedFiles(parser);
                return;
            }
        } else {
            for (std::size_t k = 0; k < patterns.size(); ++k)
                leaveOut = patterns[k].valueType == MetadataPattern::StringValue ? k : leaveOut;
        }
        patterns.erase(patterns.begin() + static_cast<std::ptrdiff_t>(leaveOut));
    }
    suggestion.patterns.clear();
    suggestion.matchedFiles = 0;
    suggestion.cases = 0;
}

} // namespace

Suggestion suggest(const std::list<std::string>& paths)
{
    Suggestion suggestion;
    std::vector<MetadataPattern> patterns;
    {
        const PathTree tree(paths);
        suggestion.files = tree.files().size();
        Suggester suggester(tree, false);
        suggestion.unmarked = suggester.unmarked();
        patterns = suggester.patterns();
        if (patterns.empty() || !suggester.foldersTell()) {
            std::vector<MetadataPattern> more = Suggester(tree, true).patterns();
            if (more.size() > patterns.size())
                patterns = std::move(more);
        }
    }
    countWhatVaries(paths, patterns, suggestion);
    return suggestion;
}

} // namespace casetable
