#include "casetable/suggesting/PathTemplates.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace casetable {

namespace {

using Index = PathTree::Index;
using Kind = Token::Kind;

// A name with what bears it.
struct Entry {
    const Name* name;
    std::size_t weight; // The number of files concerned.
    std::vector<Index> bearers;
};

// Names that agree up to a token, but for the values in their slots.
struct Alike {
    std::vector<std::size_t> entries;
    std::size_t token = 0;
    std::vector<Slot> slots;
    std::size_t literal = 0; // The token behind the last slot.
};

struct Group {
    std::vector<std::size_t> entries;
    std::vector<Slot> slots;
    std::string tail;
};

// Nearly all: few names that do not fit must not spoil the others.
bool isMost(std::size_t part, std::size_t whole)
{
    return part * 5 >= whole * 4;
}

// Sorts the names that stand at one place into groups of like ones.
class Place {
public:
    Place(std::vector<Entry> entries, bool files, bool textInFileNames, std::string before)
        : entries_(std::move(entries)), files_(files), textInFileNames_(textInFileNames),
          before_(std::move(before))
    {
    }

    const std::vector<Entry>& entries() const { return entries_; }

    std::vector<Group> groups()
    {
        Alike all;
        for (std::size_t e = 0; e < entries_.size(); ++e)
            all.entries.push_back(e);
        weight_ = weight(all.entries);
        if (!all.entries.empty())
            work_.push_back(std::move(all));
        while (!work_.empty()) {
            const Alike alike = std::move(work_.back());
            work_.pop_back();
            divide(alike);
        }
        return std::move(groups_);
    }

    // One group of `entries` whose names are values as a whole.
    Group wholeNames(std::vector<std::size_t> entries) const
    {
        Group group;
        const std::string beginning(commonBeginning(entries, 0));
        group.slots = {Slot{MetadataPattern::StringValue, 0, beginning.size(), Slot::toTheEnd,
                            before_ + beginning, beginning.size(), false, false}};
        group.entries = std::move(entries);
        return group;
    }

    std::size_t weight(const std::vector<std::size_t>& entries) const
    {
        std::size_t sum = 0;
        for (const std::size_t e : entries)
            sum += entries_[e].weight;
        return sum;
    }

    std::size_t weight() const { return weight_; }

private:
    const Name& name(std::size_t entry) const { return *entries_[entry].name; }

    std::size_t stem(std::size_t entry) const
    {
        return files_ ? name(entry).stem : name(entry).text.size();
    }

    const Token* token(std::size_t entry, std::size_t index) const
    {
        const std::vector<Token>& tokens = name(entry).tokens;
        return index < tokens.size() && tokens[index].begin < stem(entry) ? &tokens[index]
                                                                          : nullptr;
    }

    std::string_view text(std::size_t entry, std::size_t index) const
    {
        const Token* const found = token(entry, index);
        return found == nullptr ? std::string_view() : found->in(name(entry).text);
    }

    bool isKind(std::size_t entry, std::size_t index, Kind kind) const
    {
        const Token* const found = token(entry, index);
        return found != nullptr && found->kind == kind;
    }

    // A number that is a part of something else, such as a hash, has a word right behind it, and
    // not always the same, or stands where there are words too.
    bool areWhole(const std::vector<std::size_t>& numbers, std::size_t index,
                  std::size_t values) const
    {
        std::map<std::string_view, std::size_t> weights;
        for (const std::size_t e : numbers)
            weights[isKind(e, index + 1, Kind::Word) ? text(e, index + 1) : std::string_view()] +=
                entries_[e].weight;
        const auto most =
            std::max_element(weights.begin(), weights.end(),
                             [](const auto& a, const auto& b) { return a.second < b.second; });
        const std::size_t all = weight(numbers);
        return isMost(most->second, all) && (most->first.empty() || isMost(all, values));
    }

    // The name from token `index` on, without extensions.
    std::string_view rest(std::size_t entry, std::size_t index) const
    {
        const Token* const found = token(entry, index);
        return found == nullptr ? std::string_view()
                                : name(entry).text.substr(found->begin, stem(entry) - found->begin);
    }

    // What follows a word, but for the values: numbers, and words that do not belong to one. Empty
    // without a number.
    std::string pattern(std::size_t entry, std::size_t index) const
    {
        std::string pattern;
        bool number = false;
        for (; token(entry, index) != nullptr; ++index) {
            const Kind kind = token(entry, index)->kind;
            const bool isKey = kind == Kind::Word && (isKind(entry, index + 1, Kind::Number) ||
                                                      isKind(entry, index + 1, Kind::Numbers));
            if (kind == Kind::Number || kind == Kind::Numbers) {
                number = true;
                pattern += '\0';
            } else if (kind == Kind::Word && !isKey) {
                pattern += '\1';
            } else {
                pattern += text(entry, index);
            }
        }
        return number ? pattern : std::string();
    }

    // Whether a key and the separator that joins it with its value stand before this token: "=", or
    // a "-" if that is so in several places of the name, as in task-rest_run-2.
    bool isPair(const Alike& alike) const
    {
        const std::size_t e = alike.entries.front();
        if (alike.token == 0 || !isKind(e, alike.token - 1, Kind::Separator))
            return false;
        return text(e, alike.token - 1).back() == '=' ||
               (isDashedKey(e, alike.token - 1) && dashedKeys(e) > 1);
    }

    // Whether a key before a "-" ends at this token.
    bool isDashedKey(std::size_t entry, std::size_t dash) const
    {
        return dash > 0 && isKind(entry, dash, Kind::Separator) && text(entry, dash) == "-" &&
               isKind(entry, dash - 1, Kind::Word) &&
               (dash == 1 || (isKind(entry, dash - 2, Kind::Separator) &&
                              text(entry, dash - 2).back() != '-')) &&
               token(entry, dash + 1) != nullptr;
    }

    std::size_t dashedKeys(std::size_t entry) const
    {
        std::size_t keys = 0;
        for (std::size_t index = 0; token(entry, index) != nullptr; ++index)
            keys += isDashedKey(entry, index) ? 1 : 0;
        return keys;
    }

    // The token behind a value that begins at token `index`, if another key follows it, or a word
    // that belongs to no key.
    std::size_t endOfPair(std::size_t entry, std::size_t index) const
    {
        const char joint = text(entry, index - 1).back();
        std::size_t end = Slot::toTheEnd;
        for (++index; token(entry, index) != nullptr; ++index) {
            if (!isKind(entry, index, Kind::Separator))
                continue;
            if (joint == '-' && text(entry, index).front() != '-')
                return index;
            if (joint == '=' && text(entry, index).front() == '=')
                return end;
            end = index;
        }
        return Slot::toTheEnd;
    }

    // What all different texts at a token begin with, as in meshfine, meshmedium and meshcoarse.
    // Empty if they are so few, or what they share or differ in so short, that it may be by chance.
    std::string_view commonBeginning(const std::vector<std::size_t>& entries,
                                     std::size_t index) const
    {
        std::set<std::string_view> texts;
        std::size_t shortest = longestName;
        for (const std::size_t e : entries) {
            if (!isKind(e, index, Kind::Word))
                return {};
            texts.insert(text(e, index));
            shortest = std::min(shortest, text(e, index).size());
        }
        if (texts.size() < 3)
            return {};
        const std::string_view first = *texts.begin();
        const std::string_view last = *texts.rbegin(); // Those between begin with the same.
        std::size_t length = 0;
        while (length < shortest && first[length] == last[length] &&
               static_cast<unsigned char>(first[length]) < 128)
            ++length;
        return length < 4 || length + 3 > shortest ? std::string_view() : first.substr(0, length);
    }

    // Whether text may be a value at this token: behind a constant text that ends like one.
    bool textMayBegin(const Alike& alike) const
    {
        if (alike.token == 0)
            return false;
        const std::size_t e = alike.entries.front();
        if (isPair(alike))
            return true;
        if (files_ && !textInFileNames_)
            return false;
        return isKind(e, alike.token - 1, Kind::Separator) ||
               (isKind(e, alike.token - 1, Kind::Word) && isKind(e, alike.token, Kind::Word)) ||
               isMost(weight(alike.entries), weight_);
    }

    void divide(const Alike& alike)
    {
        std::vector<std::size_t> ends;
        std::vector<std::size_t> separators;
        std::vector<std::size_t> numbers;
        std::vector<std::size_t> joined;
        std::vector<std::size_t> words;
        for (const std::size_t e : alike.entries) {
            const Token* const found = token(e, alike.token);
            (found == nullptr                 ? ends
             : found->kind == Kind::Separator ? separators
             : found->kind == Kind::Number    ? numbers
             : found->kind == Kind::Numbers   ? joined
                                              : words)
                .push_back(e);
        }
        if (!ends.empty())
            finish(alike, ends);
        divideByText(alike, separators);

        // Beside 0,75 a whole number has a decimal comma that is not written.
        const bool commas = std::any_of(joined.begin(), joined.end(), [&](std::size_t e) {
            return this->text(e, alike.token).find(',') != std::string_view::npos;
        });
        if (commas) {
            joined.insert(joined.end(), numbers.begin(), numbers.end());
            std::sort(joined.begin(), joined.end());
            numbers.clear();
        }

        // The separators that follow say nothing about the kind of the values.
        const std::size_t values = weight(numbers) + weight(joined) + weight(words);
        const bool text = textMayBegin(alike);
        if (!numbers.empty() && (!text || isMost(weight(numbers), values))) {
            if (areWhole(numbers, alike.token, values)) {
                addSlot(alike, std::exchange(numbers, {}), MetadataPattern::NumberValue);
            } else if (!text) {
                finish(alike, numbers);
                numbers.clear();
            }
        }
        if (!joined.empty() && (!text || isMost(weight(joined), values)))
            addJoined(alike, std::exchange(joined, {}));
        if (text) {
            std::vector<std::size_t> texts = std::move(words);
            texts.insert(texts.end(), numbers.begin(), numbers.end());
            texts.insert(texts.end(), joined.begin(), joined.end());
            std::sort(texts.begin(), texts.end());
            divideTexts(alike, texts);
        } else if (alike.token == 0) {
            divideFirstWords(alike, words);
        } else {
            divideByText(alike, words);
        }
    }

    static Alike part(const Alike& alike, std::vector<std::size_t> entries)
    {
        Alike part;
        part.entries = std::move(entries);
        part.token = alike.token + 1;
        part.slots = alike.slots;
        part.literal = alike.literal;
        return part;
    }

    static Alike behindFirstWord(const Alike& alike, std::vector<std::size_t> entries)
    {
        Alike behind = part(alike, std::move(entries));
        behind.literal = behind.token;
        return behind;
    }

    std::map<std::string_view, std::vector<std::size_t>>
    byText(const std::vector<std::size_t>& entries, std::size_t index) const
    {
        std::map<std::string_view, std::vector<std::size_t>> parts;
        for (const std::size_t e : entries)
            parts[text(e, index)].push_back(e);
        return parts;
    }

    void divideByText(const Alike& alike, const std::vector<std::size_t>& entries)
    {
        for (auto& [same, members] : byText(entries, alike.token))
            work_.push_back(part(alike, std::move(members)));
    }

    // Values of text, unless there is but one.
    void divideTexts(const Alike& alike, const std::vector<std::size_t>& entries)
    {
        if (entries.empty())
            return;
        const bool isPair = this->isPair(alike);
        const bool differ = std::any_of(entries.begin(), entries.end(), [&](std::size_t e) {
            return text(e, alike.token) != text(entries.front(), alike.token);
        });
        if (!differ && !isPair) {
            divideByText(alike, entries);
            return;
        }
        if (!isPair) {
            addTexts(alike, entries);
            return;
        }
        std::map<std::size_t, std::vector<std::size_t>> byEnd;
        std::set<std::string_view> rests;
        for (const std::size_t e : entries) {
            const std::size_t end = endOfPair(e, alike.token);
            byEnd[end].push_back(e);
            rests.insert(rest(e, end));
        }
        // What follows is read with the last text, so it must say nothing.
        if (rests.size() == 1 &&
            rests.begin()->find_first_of("=-0123456789") == rests.begin()->npos)
            byEnd = {{Slot::toTheEnd, entries}};
        for (auto& [end, members] : byEnd) {
            if (end == Slot::toTheEnd)
                addTexts(alike, members);
            else
                addSlot(alike, std::move(members), MetadataPattern::StringValue, end);
        }
    }

    // A unit is read with them, as in 0,75s.
    void addJoined(const Alike& alike, std::vector<std::size_t> entries)
    {
        const std::size_t behind = alike.token + 1;
        const bool unit = std::all_of(entries.begin(), entries.end(), [&](std::size_t e) {
            return isKind(e, behind, Kind::Word) &&
                   text(e, behind) == text(entries.front(), behind);
        });
        addSlot(alike, std::move(entries), MetadataPattern::StringValue, behind + (unit ? 1 : 0));
    }

    void addTexts(const Alike& alike, const std::vector<std::size_t>& entries)
    {
        const std::string rest = pattern(entries.front(), alike.token + 1);
        const bool goesOn =
            !rest.empty() && std::all_of(entries.begin(), entries.end(), [&](std::size_t e) {
                return isKind(e, alike.token, Kind::Word) &&
                       isKind(e, alike.token + 1, Kind::Separator) &&
                       pattern(e, alike.token + 1) == rest;
            });
        addSlot(alike, entries, MetadataPattern::StringValue,
                goesOn ? alike.token + 1 : Slot::toTheEnd);
    }

    // The first words of folders are values where they stand before the same numbers, as in
    // steel_T300 and alloy_T300, or the same texts, and constant otherwise. Those of files make no
    // slots, but are no part of what stands before the numbers either.
    void divideFirstWords(const Alike& alike, const std::vector<std::size_t>& entries)
    {
        std::map<std::string, std::vector<std::size_t>> byRest;
        for (const std::size_t e : entries)
            byRest[isKind(e, 1, Kind::Separator) ? pattern(e, 1) : std::string()].push_back(e);
        std::vector<std::size_t> constant;
        for (auto& [rest, members] : byRest) {
            bool isConstant = rest.empty();
            for (const auto& [word, same] : byText(members, 0))
                isConstant = isConstant || isMost(weight(same), weight(members));
            if (isConstant)
                constant.insert(constant.end(), members.begin(), members.end());
            else if (files_)
                work_.push_back(behindFirstWord(alike, std::move(members)));
            else
                addSlot(alike, std::move(members), MetadataPattern::StringValue);
        }
        std::sort(constant.begin(), constant.end());
        if (!files_ && areCombined(constant))
            addSlot(alike, constant, MetadataPattern::StringValue);
        else
            divideByText(alike, constant);
    }

    // Whether nearly all combinations of some first words and some rests occur, as of water and
    // oil with -hot and -cold.
    bool areCombined(const std::vector<std::size_t>& entries) const
    {
        std::set<std::string_view> words;
        std::set<std::string_view> rests;
        for (const std::size_t e : entries) {
            if (!isKind(e, 1, Kind::Separator))
                return false;
            words.insert(text(e, 0));
            rests.insert(name(e).text.substr(name(e).tokens[1].begin));
        }
        return words.size() > 1 && rests.size() > 1 &&
               isMost(entries.size(), words.size() * rests.size());
    }

    // The text between the slot before and token `index`.
    std::string_view literal(const Alike& alike, std::size_t entry, std::size_t index) const
    {
        const Name& of = name(entry);
        const std::size_t begin =
            alike.literal < of.tokens.size() ? of.tokens[alike.literal].begin : of.text.size();
        const std::size_t end = index < of.tokens.size() ? of.tokens[index].begin : of.text.size();
        return of.text.substr(begin, end - begin);
    }

    // Slots of text end before token `end`, all others behind their first.
    void addSlot(const Alike& alike, std::vector<std::size_t> entries,
                 MetadataPattern::ValueType type, std::optional<std::size_t> end = std::nullopt)
    {
        const std::string_view beginning = type == MetadataPattern::StringValue && !isPair(alike)
                                               ? commonBeginning(entries, alike.token)
                                               : std::string_view();
        std::string left(literal(alike, entries.front(), alike.token));
        left += beginning;
        Slot slot{type,
                  alike.token,
                  beginning.size(),
                  end.value_or(alike.token + 1),
                  (alike.literal == 0 ? before_ : std::string()) + left,
                  left.size(),
                  !alike.slots.empty() && alike.slots.back().type == MetadataPattern::StringValue,
                  isPair(alike)};
        Alike next;
        next.entries = std::move(entries);
        next.slots = alike.slots;
        next.token = slot.endToken;
        next.literal = slot.endToken;
        next.slots.push_back(std::move(slot));
        if (next.token != Slot::toTheEnd)
            work_.push_back(std::move(next));
        else
            groups_.push_back(Group{std::move(next.entries), std::move(next.slots), ""});
    }

    void finish(const Alike& alike, std::vector<std::size_t> entries)
    {
        const bool constant = !alike.slots.empty() || entries.size() == 1;
        const std::string_view tail =
            constant ? literal(alike, entries.front(), Slot::toTheEnd) : std::string_view();
        groups_.push_back(Group{std::move(entries), alike.slots, std::string(tail)});
    }

    std::vector<Entry> entries_;
    const bool files_;
    const bool textInFileNames_;
    const std::string before_;
    std::size_t weight_ = 0;
    std::vector<Alike> work_;
    std::vector<Group> groups_;
};

class Classifier {
public:
    Classifier(const PathTree& tree, bool textInFileNames)
        : tree_(tree), textInFileNames_(textInFileNames), entryOfName_(tree.names().size())
    {
    }

    PathTemplates classes()
    {
        FolderClass root;
        root.parent = 0;
        root.folders = {PathTree::root};
        templates_.folders.push_back(std::move(root));
        for (std::size_t c = 0; c < templates_.folders.size(); ++c) {
            divideFiles(c);
            divideFolders(c);
        }
        return std::move(templates_);
    }

private:
    std::string before(std::size_t folderClass) const
    {
        return folderClass == 0 ? std::string() : templates_.folders[folderClass].tail + "/";
    }

    // The names at one place, in the order of their first bearers.
    template <class Bearers> std::vector<Entry> entries(std::size_t folderClass, Bearers bearersOf)
    {
        std::vector<Entry> entries;
        std::vector<Index> seen;
        for (const Index folder : templates_.folders[folderClass].folders)
            bearersOf(folder, [&](Index nameIndex, Index bearer, std::size_t weight) {
                std::size_t& entry = entryOfName_[nameIndex];
                if (entry == 0) {
                    entries.push_back(Entry{&tree_.names()[nameIndex], 0, {}});
                    entry = entries.size();
                    seen.push_back(nameIndex);
                }
                entries[entry - 1].weight += weight;
                entries[entry - 1].bearers.push_back(bearer);
            });
        for (const Index nameIndex : seen)
            entryOfName_[nameIndex] = 0;
        return someOf(std::move(entries), seen);
    }

    static std::vector<Entry> someOf(std::vector<Entry> entries, const std::vector<Index>& names)
    {
        if (entries.size() < enoughToLookAt)
            return entries;
        std::vector<Entry> some;
        for (std::size_t e = 0; e < entries.size(); ++e) {
            if (isLookedAt(names[e], entries.size()))
                some.push_back(std::move(entries[e]));
        }
        return some;
    }

    static std::vector<Index> bearers(const Place& place, const Group& group)
    {
        std::vector<Index> all;
        for (const std::size_t e : group.entries) {
            const std::vector<Index>& some = place.entries()[e].bearers;
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }

    void divideFiles(std::size_t c)
    {
        Place place(entries(c,
                            [this](Index folder, const auto& take) {
                                for (const Index file : tree_.folders()[folder].files)
                                    take(tree_.files()[file].name, file, 1);
                            }),
                    true, textInFileNames_, before(c));
        for (Group& group : place.groups())
            templates_.files.push_back(FileClass{c, bearers(place, group), std::move(group.slots)});
    }

    void divideFolders(std::size_t c)
    {
        Place place(entries(c,
                            [this](Index folder, const auto& take) {
                                for (const Index child : tree_.folders()[folder].folders)
                                    take(tree_.folders()[child].name, child,
                                         tree_.fileCount(child));
                            }),
                    false, textInFileNames_, before(c));
        std::vector<Group> groups = place.groups();

        // Folders whose names say nothing to us may be values as a whole. Of words that only some
        // begin with, as "lab Ulm" and "lab Kiel" beside "field_2", no marker can be made for all.
        const auto saysNothing = [&place](const Group& group) {
            const bool isText =
                std::all_of(group.slots.begin(), group.slots.end(), [](const Slot& slot) {
                    return slot.type == MetadataPattern::StringValue && !slot.isPair;
                });
            return group.slots.empty() || group.entries.size() == 1 ||
                   (isText && place.weight(group.entries) * 4 < place.weight() * 3);
        };
        std::vector<std::size_t> plain;
        for (const Group& group : groups) {
            if (saysNothing(group))
                plain.insert(plain.end(), group.entries.begin(), group.entries.end());
        }
        std::sort(plain.begin(), plain.end());
        if (plain.size() > 1 && place.weight(plain) * 2 >= place.weight() &&
            holdTheSame(place, plain)) {
            groups.erase(std::remove_if(groups.begin(), groups.end(), saysNothing), groups.end());
            groups.push_back(place.wholeNames(plain));
        }
        for (Group& group : groups)
            templates_.folders.push_back(FolderClass{
                c, bearers(place, group), std::move(group.slots), std::move(group.tail)});
    }

    // Whether most of the files below folders of these names are such, or in such folders, as are
    // found below another of the names too.
    bool holdTheSame(const Place& place, const std::vector<std::size_t>& plain) const
    {
        struct Seen {
            std::size_t entry;
            bool twice;
        };
        std::unordered_map<std::uint64_t, Seen> seen;
        const auto look = [&seen](std::uint64_t what, std::size_t entry) {
            Seen& before = seen.emplace(what, Seen{entry, false}).first->second;
            before.twice = before.twice || before.entry != entry;
        };
        for (const std::size_t e : plain)
            forEachFile(place.entries()[e], [&](std::uint64_t file, std::uint64_t folder) {
                look(file, e);
                look(folder, e);
            });
        std::size_t all = 0;
        std::size_t same = 0;
        for (const std::size_t e : plain)
            forEachFile(place.entries()[e], [&](std::uint64_t file, std::uint64_t folder) {
                ++all;
                same += seen.at(file).twice || seen.at(folder).twice ? 1 : 0;
            });
        return same * 2 >= all;
    }

    // Calls `take` with the shapes of each file's name and of the folder that leads to it; files
    // and folders never have the same.
    template <class Take> void forEachFile(const Entry& entry, Take take) const
    {
        const std::uint64_t isFolder = std::uint64_t(1) << 32;
        for (const Index folder : entry.bearers) {
            const PathTree::Folder& top = tree_.folders()[folder];
            for (const Index file : top.files) {
                const std::uint64_t shape = shapeOf(tree_.files()[file].name);
                take(shape, shape);
            }
            for (const Index child : top.folders) {
                const PathTree::Folder& below = tree_.folders()[child];
                for (Index file = below.firstFile; file < below.lastFile; ++file)
                    take(shapeOf(tree_.files()[file].name), isFolder | shapeOf(below.name));
            }
        }
    }

    std::uint64_t shapeOf(Index nameIndex) const { return tree_.names()[nameIndex].shape; }

    const PathTree& tree_;
    const bool textInFileNames_;
    std::vector<std::size_t> entryOfName_; // One more than the entry; 0 for none.
    PathTemplates templates_;
};

} // namespace

PathTemplates pathTemplates(const PathTree& tree, bool textInFileNames)
{
    return Classifier(tree, textInFileNames).classes();
}

} // namespace casetable
