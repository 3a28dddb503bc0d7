#include "casetable/Suggest.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "casetable/PathTemplates.h"
#include "casetable/PathTree.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {

namespace {

// More markers than anybody wants to read; a bound for trees that are nothing but numbers.
const std::size_t maxSlots = 64;
const std::size_t sampleSize = 5;
const std::size_t pathsToTry = 2000;
const std::size_t maxMarkers = 8;

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

// Where the last word of `left`, with the separators behind it, begins.
std::size_t lastWord(std::string_view left)
{
    std::size_t begin = left.size();
    if (begin > 0 && left[begin - 1] == '/')
        --begin;
    while (begin > 0 && left[begin - 1] != '/' && !isWordByte(left[begin - 1]))
        --begin;
    while (begin > 0 && isWordByte(left[begin - 1]))
        --begin;
    return begin;
}

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
            const std::optional<KeyIndex> counter = fileCounter(chosen);
            if (counter) {
                refused.insert(*counter);
                continue;
            }
            std::vector<MetadataPattern> patterns;
            const std::optional<KeyIndex> failed = mark(chosen, patterns);
            if (!failed)
                return patterns;
            refused.insert(*failed);
        }
    }

    // Values at the beginning of paths, if there is more than one.
    std::vector<std::string> unmarked() const
    {
        std::set<std::string_view> values;
        for (const FolderClass& folders : templates_.folders) {
            if (folders.parent != 0 || folders.slots.empty() || !folders.slots.front().left.empty())
                continue;
            for (const PathTree::Index folder : folders.folders) {
                const Name& name = tree_.names()[tree_.folders()[folder].name];
                values.insert(valueOf(folders.slots.front(), name, name.text.size()));
            }
        }
        if (values.size() < 2)
            return {};
        std::vector<std::string> some(values.begin(), values.end());
        some.resize(std::min(some.size(), sampleSize));
        return some;
    }

private:
    std::size_t fileCount() const { return tree_.files().size(); }

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
            if (candidate.varies && candidate.files * 2 >= fileCount() && refused.count(index) == 0)
                order.emplace_back(candidate.files, index);
        }
        std::stable_sort(order.begin(), order.end(),
                         [](const auto& a, const auto& b) { return a.first > b.first; });

        std::vector<KeyIndex> chosen;
        std::size_t shared = fileCount();
        for (const auto& [files, index] : order) {
            const std::vector<KeyIndex> wider = inOrder(chosen, index);
            const std::size_t left = size(supporters(wider));
            if (!wider.empty() && left * 2 >= fileCount() &&
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
    // most folders again, and they are text, or they count.
    std::optional<KeyIndex> fileCounter(const std::vector<KeyIndex>& chosen) const
    {
        bool folderVaries = false;
        for (const KeyIndex index : chosen) {
            for (const Route* route : supporters_)
                folderVaries = folderVaries || !route->find(index)->inFileName();
        }
        if (!folderVaries)
            return std::nullopt;
        for (const KeyIndex index : chosen) {
            if (countsFiles(index))
                return index;
        }
        return std::nullopt;
    }

    bool countsFiles(KeyIndex index) const
    {
        struct Seen {
            std::size_t folders = 0;
            PathTree::Index last = 0;
        };
        std::unordered_map<std::string_view, Seen> values;
        std::unordered_set<PathTree::Index> folders;
        const Slot& slot = *supporters_.front()->find(index)->slot;
        for (const Route* route : supporters_) {
            const Key& key = *route->find(index);
            if (!key.inFileName())
                return false;
            for (const PathTree::Index file : route->files->files) {
                const PathTree::Index folder = tree_.files()[file].folder;
                Seen& seen = values[valueAt(*key.slot, true, file)];
                if (seen.folders == 0 || seen.last != folder)
                    ++seen.folders;
                seen.last = folder;
                folders.insert(folder);
            }
        }
        std::size_t occurrences = 0;
        for (const auto& entry : values)
            occurrences += entry.second.folders;
        const bool repeated = folders.size() > 1 && values.size() > 1 &&
                              occurrences * 2 >= folders.size() * values.size();
        if (!repeated || slot.left.back() == '=')
            return false;
        std::vector<std::string_view> texts;
        texts.reserve(values.size());
        for (const auto& entry : values)
            texts.push_back(entry.first);
        // A parameter has its word right before it, as in AoA1, AoA2 and AoA3.
        return slot.type == MetadataPattern::StringValue ||
               (!isWordByte(slot.left.back()) && count(texts));
    }

    // Whether these are whole numbers that are padded, or that count from 0 or 1.
    static bool count(const std::vector<std::string_view>& texts)
    {
        bool padded = false;
        std::set<std::uint64_t> numbers;
        for (const std::string_view text : texts) {
            std::uint64_t number = 0;
            const char* const end = text.data() + text.size();
            const auto result = std::from_chars(text.data(), end, number);
            if (result.ec != std::errc() || result.ptr != end)
                return false;
            padded = padded || (text.size() > 1 && text.front() == '0');
            numbers.insert(number);
        }
        return padded || (numbers.size() > 2 && *numbers.begin() <= 1 &&
                          *numbers.rbegin() - *numbers.begin() == numbers.size() - 1);
    }

    // A path, and where the values of the chosen keys begin and end in it.
    struct Trial {
        std::string_view path;
        std::vector<std::size_t> begins;
        std::vector<std::size_t> ends;
        std::vector<bool> exact; // Whether the value must end there and not later.
    };

    // Some of the paths that have all chosen keys, the same whatever their order.
    std::vector<Trial> trials(const std::vector<KeyIndex>& chosen) const
    {
        const std::size_t step = size(supporters_) / pathsToTry + 1;
        std::vector<Trial> trials;
        for (const Route* route : supporters_) {
            std::vector<const Key*> keys;
            keys.reserve(chosen.size());
            for (const KeyIndex index : chosen)
                keys.push_back(route->find(index));
            std::size_t taken = 0;
            for (const PathTree::Index file : route->files->files) {
                // Neighbours are alike, so a fixed step might always meet the same kind of file.
                if (taken == 0 || (std::uint64_t(file) * 2654435761U >> 7) % step == 0) {
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

    // The text before the value of key `k` that all trials share, as far back as the value before.
    static std::string_view commonLeft(const std::vector<Trial>& trials, std::size_t k)
    {
        const auto leftOf = [k](const Trial& trial) {
            const std::size_t begin = k == 0 ? 0 : trial.ends[k - 1];
            return trial.path.substr(begin, trial.begins[k] - begin);
        };
        std::string_view common = leftOf(trials.front());
        for (const Trial& trial : trials) {
            const std::string_view left = leftOf(trial);
            const auto end =
                std::mismatch(left.rbegin(), left.rend(), common.rbegin(), common.rend());
            common.remove_prefix(static_cast<std::size_t>(common.rend() - end.second));
        }
        return common;
    }

    // Words, numbers and separators.
    static int kindOf(char c) { return isWordByte(c) ? 0 : c >= '0' && c <= '9' ? 1 : 2; }

    // Where a word begins that ends in a number at `end`, as in "x1=", if only separators stand
    // behind; `end` where there is none.
    static std::size_t numberedWord(std::string_view left, std::size_t end)
    {
        std::size_t number = end;
        while (number > 0 && kindOf(left[number - 1]) == 1)
            --number;
        std::size_t word = number;
        while (word > 0 && isWordByte(left[word - 1]))
            --word;
        const bool follows = end < left.size() && !isWordByte(left[end]);
        return follows && number < end && word < number ? word : end;
    }

    // What could be the marker of key `k`, the most pleasant first: ends of the text that stands
    // before its value in all trials.
    std::vector<std::string> markers(KeyIndex index, const std::vector<Trial>& trials,
                                     std::size_t k) const
    {
        const Slot& slot = *supporters_.front()->find(index)->slot;
        std::size_t constant = slot.left.size(); // As far as there is no slot in it.
        bool afterText = true;
        for (const Route* route : supporters_) {
            const Slot& other = *route->find(index)->slot;
            const auto end = std::mismatch(other.left.rbegin(), other.left.rend(),
                                           slot.left.rbegin(), slot.left.rend());
            constant =
                std::min(constant, static_cast<std::size_t>(end.first - other.left.rbegin()));
            afterText = afterText && other.afterText && other.leftInName == slot.leftInName;
        }
        const std::string left(commonLeft(trials, k));
        constant = std::min(constant, left.size());
        const std::size_t word =
            left.size() - constant + lastWord(left.substr(left.size() - constant));
        std::vector<std::string> markers;
        // The separators behind a text are no part of it.
        if (afterText && slot.leftInName <= constant)
            markers.push_back(left.substr(left.size() - slot.leftInName));
        const std::size_t numbered = numberedWord(left, word);
        if (numbered < word)
            markers.push_back(left.substr(numbered));
        markers.push_back(left.substr(word));
        for (std::size_t begin = word; begin > 0 && markers.size() < maxMarkers;) {
            const int kind = kindOf(left[begin - 1]);
            while (begin > 0 && kindOf(left[begin - 1]) == kind)
                --begin;
            // Values may share their last letters by chance.
            if (begin > 0 || constant == left.size())
                markers.push_back(left.substr(begin));
        }
        // Without its word, a marker may stand where the one before takes the word.
        std::size_t separators = word;
        while (separators < left.size() && isWordByte(left[separators]))
            ++separators;
        markers.push_back(left.substr(separators));
        markers.erase(std::remove(markers.begin(), markers.end(), std::string()), markers.end());
        return markers;
    }

    // In how many paths the marker of key `k` is found in its place, behind a marker of
    // `lengthBefore` bytes for the key before.
    static std::size_t foundInPlace(const std::vector<Trial>& trials, std::size_t k,
                                    const std::string& marker, std::size_t lengthBefore)
    {
        std::size_t found = 0;
        for (const Trial& trial : trials) {
            const std::size_t start = k == 0 ? 0 : trial.begins[k - 1] - lengthBefore + 1;
            const std::size_t position = trial.path.find(marker, start);
            found +=
                position != std::string_view::npos && position + marker.size() == trial.begins[k]
                    ? 1
                    : 0;
        }
        return found;
    }

    // In how many paths the text of key `k`, with this marker, is a value when the next marker has
    // `lengthBehind` bytes.
    static std::size_t textsRead(const std::vector<Trial>& trials, std::size_t k,
                                 const std::string& marker, std::size_t lengthBehind)
    {
        std::map<std::string, std::size_t> segments;
        CrawlerBasicImporterParser parser;
        for (const Trial& trial : trials) {
            const std::size_t begin = trial.begins[k] - marker.size();
            const std::size_t end = trial.begins[k + 1] - lengthBehind;
            if (begin < end)
                ++segments[std::string(trial.path.substr(begin, end - begin))];
        }
        for (const auto& segment : segments)
            parser.appendRawFilePath(segment.first);
        try {
            parser.applyMetadataPatternList({{marker, MetadataPattern::StringValue}});
        } catch (const std::out_of_range&) {
            return 0;
        }
        std::size_t read = 0;
        for (const auto& file : parser.crawlerFilePathList())
            read += file->isMatched() ? segments.at(file->filePath()) : 0;
        return read;
    }

    // The values that are read where they should, for each pattern.
    static std::vector<std::size_t> readWell(const std::vector<Trial>& trials,
                                             const std::vector<MetadataPattern>& patterns)
    {
        std::vector<std::size_t> well(patterns.size(), 0);
        for (const Trial& trial : trials) {
            CrawlerBasicImporterParser parser;
            const std::string path(trial.path);
            parser.appendRawFilePath(path);
            try {
                parser.applyMetadataPatternList(patterns);
            } catch (const std::out_of_range&) {
                continue;
            }
            const std::vector<MetadataInfo> infos = parser.metadataInfoList(path);
            for (std::size_t k = 0; k < infos.size(); ++k) {
                const std::size_t end = infos[k].valuePosition + infos[k].valueLength;
                if (infos[k].valuePosition == trial.begins[k] &&
                    (end == trial.ends[k] || (end > trial.ends[k] && !trial.exact[k])))
                    ++well[k];
            }
        }
        return well;
    }

    static bool isMost(std::size_t part, std::size_t whole) { return part * 10 >= whole * 9; }

    MetadataPattern::ValueType typeOf(KeyIndex index) const
    {
        return supporters_.front()->find(index)->slot->type;
    }

    // A marker for a key, with the best choice for the keys before.
    struct Choice {
        std::string marker;
        std::size_t cost; // The paths in which something is not found, before the pleasantness.
        std::size_t before;
    };

    // The choices for key `k`, those for the key before given; or a key that cannot be had.
    std::optional<KeyIndex> addChoices(const std::vector<KeyIndex>& chosen,
                                       const std::vector<Trial>& trials,
                                       std::vector<std::vector<Choice>>& choices) const
    {
        const std::size_t k = choices.size();
        const std::vector<Choice> start = {Choice{"", 0, 0}};
        const std::vector<Choice>& choicesBefore = choices.empty() ? start : choices.back();
        const bool behindText = k > 0 && typeOf(chosen[k - 1]) == MetadataPattern::StringValue;
        const std::vector<std::string> markers = this->markers(chosen[k], trials, k);
        std::vector<Choice> added;
        bool found = false;
        for (std::size_t m = 0; m < markers.size(); ++m) {
            std::optional<Choice> best;
            for (std::size_t b = 0; b < choicesBefore.size(); ++b) {
                const Choice& before = choicesBefore[b];
                std::size_t good = foundInPlace(trials, k, markers[m], before.marker.size());
                found = found || isMost(good, trials.size());
                if (behindText && isMost(good, trials.size()))
                    good =
                        std::min(good, textsRead(trials, k - 1, before.marker, markers[m].size()));
                const std::size_t cost =
                    before.cost + (trials.size() - good) * maxSlots * (maxMarkers + 1) + m;
                if (isMost(good, trials.size()) && (!best || cost < best->cost))
                    best = Choice{markers[m], cost, b};
            }
            if (best)
                added.push_back(*best);
        }
        if (added.empty())
            return found ? chosen[k - 1] : chosen[k];
        choices.push_back(std::move(added));
        return std::nullopt;
    }

    // Gives each key, of one at least, its marker; otherwise answers a key that has none which
    // works. Whether a marker is found in its place depends on the one before.
    std::optional<KeyIndex> mark(const std::vector<KeyIndex>& chosen,
                                 std::vector<MetadataPattern>& patterns) const
    {
        const std::vector<Trial> trials = this->trials(chosen);
        std::vector<std::vector<Choice>> choices;
        do {
            if (const std::optional<KeyIndex> failed = addChoices(chosen, trials, choices))
                return failed;
        } while (choices.size() < chosen.size());
        const std::vector<Choice>& last = choices.back();
        const auto best =
            std::min_element(last.begin(), last.end(),
                             [](const Choice& a, const Choice& b) { return a.cost < b.cost; });
        auto choice = static_cast<std::size_t>(best - last.begin());
        for (std::size_t k = chosen.size(); k-- > 0; choice = choices[k][choice].before)
            patterns.emplace_back(choices[k][choice].marker, typeOf(chosen[k]));
        std::reverse(patterns.begin(), patterns.end());

        const std::vector<std::size_t> well = readWell(trials, patterns);
        for (std::size_t k = 0; k < chosen.size(); ++k) {
            if (!isMost(well[k], trials.size()))
                return chosen[k];
        }
        return std::nullopt;
    }

    const PathTree& tree_;
    const PathTemplates templates_;
    std::vector<std::vector<Key>> keysOfFolders_;
    std::vector<std::vector<Key>> keysOfFiles_;
    std::vector<Route> routes_;
    std::vector<const Route*> supporters_; // Of the keys chosen.
};

double sizeOf(std::string number)
{
    std::replace_if(
        number.begin(), number.end(), [](char c) { return c == 'D' || c == 'd'; }, 'e');
    const char* const begin = number.data() + (number.front() == '+' ? 1 : 0);
    double size = 0;
    std::from_chars(begin, number.data() + number.size(), size);
    return size;
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
            if (leaveOut == patterns.size())
                return;
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
        if (patterns.empty())
            patterns = Suggester(tree, true).patterns();
    }
    countWhatVaries(paths, patterns, suggestion);
    return suggestion;
}

} // namespace casetable
