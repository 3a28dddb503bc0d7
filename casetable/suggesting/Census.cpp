#include "casetable/suggesting/Census.h"

#include <map>
#include <set>
#include <string>
#include <utility>

#include "casetable/templates/Matcher.h"
#include "crawler/private/PathReading.h"

namespace casetable {

namespace {

using Words = std::set<std::string_view>;

// A part of a path. All are pieces of the path.
struct PathPart {
    std::string_view separator; // in front of it
    std::string_view key;       // "sub-" of "sub-01", else empty
    std::string_view text;      // "01"
    Kinds kind;
};
using PathParts = std::vector<PathPart>;

// No path that people read has more; of others there will be no template.
const std::size_t maxParts = 64;

// "0.85", "6.5e6", "1e-3", "007"; no point in "20200101.000000", "01.5" and the like.
const std::string number =
    R"((?>(?:0|[1-9]\d{0,4})\.\d{1,7}(?!\d|\.\d{1,2}(?!\d))(?:[eE][-+]?\d+(?![A-Za-z0-9]))?)"
    R"(|\d+[eE][-+]?\d+(?![A-Za-z0-9])|\d+))";

std::string anyOf(const Words& words, const std::string& orElse)
{
    std::string alternatives;
    for (const std::string_view word : words)
        alternatives += std::string(word) + "|";
    return "(?:" + alternatives + orElse + ")";
}

// Reads what stands first in what is left of a path: a column for each kind.
Matcher makeReader(const Words& signedWords, const Words& keys)
{
    const std::string begin = "(?<![A-Za-z0-9])";
    const std::string end = "(?![^-_=,.@+ /])";
    const std::string clock = R"((?:[01]\d|2[0-3])[-:]?[0-5]\d[-:]?[0-5]\d)";
    const std::string month = "(?:0[1-9]|1[0-2])";
    const std::string date = R"((?:19|20)\d\d(?:)" + month + R"((?:[0-2]\d|3[01])|-)" + month +
                             R"((?:-[0-3]\d)?|_)" + month + R"(_[0-3]\d)(?:T)" + clock + "Z?)?";
    const std::string uuid = "[0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4}){4}[0-9A-Fa-f]{8}";
    const std::string sign = anyOf(signedWords, "") + "-(?=[0-9])";
    // A "-" behind another separator and before a digit is a sign.
    return Matcher(Template("{separator,[-_=,.@+ /]*[_=,.@+ /](?=-[0-9])|[-_=,.@+ /]*}"
                            "[{key,(?<![-=A-Za-z0-9])(?:" +
                            anyOf(keys, "(?!)") +
                            "-|[A-Za-z]+=)(?=[^-_=,.@+ /])}]"
                            "[{fixed," +
                            begin + "(?:" + date + R"(|\d\d[-:]\d\d[-:]\d\d|\d+(?:\.\d+){3,}))" +
                            end + "|" + uuid + end + "}][{number," + begin + "-?" + number + end +
                            "}]"
                            "[{letters," +
                            begin + "(?!" + sign + ")[A-Za-z]+" + end +
                            "}]"
                            "[{mixed," +
                            begin + "(?:[A-Za-z]+[0-9]+?(?=" + uuid + end + ")|(?:" + sign +
                            ")?(?:" + number + "|[A-Za-z])+" + end + ")}][{other," + begin +
                            "[^-_=,.@+ /]+}]{rest,(?s:.*)}"));
}

// The parts of a path, of which the last is its ending. The name of a folder is one part where it
// comes again behind it: "MPI-ESM/tas_MPI-ESM_r1.nc".
PathParts divide(std::string_view path, Matcher& reader, bool findsAgain)
{
    thread_local Matcher endings(
        Template(R"({stem,(?s:(?:.*/)?[^/]+?)}[.{ending,(?:[A-Za-z]{1,8}\d{0,2})"
                 R"((?:\.(?:gz|bz2|xz|zst|zip|md5|sha\d+))?|[0-9][A-Za-z]{1,8})}])"));
    static const std::vector<Kinds> kinds = {fixedKind, numberKind, letterKind, mixedKind,
                                             otherKind};
    PathParts parts;
    PathPart ending{{}, {}, path.substr(path.size()), endingKind | emptyKind};
    if (endings.match(path) && endings.columns()[1].length > 0) {
        const std::size_t begin = endings.columns()[1].begin;
        ending = {path.substr(begin - 1, 1), {}, path.substr(begin), endingKind};
    }
    path.remove_suffix(ending.separator.size() + ending.text.size());
    const auto take = [&](std::size_t length) {
        const std::string_view text = path.substr(0, length);
        path.remove_prefix(text.size());
        return text;
    };
    std::vector<std::string_view> folders;
    const char* folder = path.data();
    std::size_t opening = 0;
    do {
        reader.match(path);
        const std::vector<Span>& spans = reader.columns();
        PathPart part{take(spans[0].length), {}, {}, emptyKind};
        if (part.separator.find('/') != std::string_view::npos) {
            const std::string_view name(folder,
                                        static_cast<std::size_t>(part.separator.data() - folder));
            if (findsAgain && !parts.empty() && parts[opening].key.empty() &&
                name.find_first_not_of("0123456789-_.") != std::string_view::npos)
                folders.push_back(name);
            folder = path.data();
            opening = parts.size();
        }
        std::size_t length = 0;
        for (const std::string_view name : folders)
            if (name.size() > length && path.substr(0, name.size()) == name &&
                (path.size() == name.size() ||
                 path.find_first_of("_-=,.@+ /", name.size()) == name.size())) {
                length = name.size();
                part.kind = againKind;
            }
        if (length == 0)
            part.key = take(spans[1].length);
        for (std::size_t i = 0; i < kinds.size() && length == 0; ++i)
            if (spans[2 + i].length > 0) {
                length = spans[2 + i].length;
                part.kind = kinds[i];
            }
        part.text = take(length);
        parts.push_back(part);
    } while (!path.empty() && parts.size() < maxParts);
    parts.push_back(ending);
    return parts;
}

// In "sub-01_task-rest_bold", several words of a path stand before a "-": they are keys. Otherwise,
// as in "Peck-solid", they are not. Words that stand before a number with a "-" and also without
// are signed: "AoA-2.5" and "AoA2.5", but not "LC-01" and "LC01".
Matcher readerOf(const std::vector<PathParts>& paths)
{
    Words joined;
    Words padded;
    std::map<std::string_view, std::size_t> counts;
    std::size_t single = 0;
    std::size_t several = 0;
    for (const PathParts& parts : paths) {
        Words words;
        for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
            const std::string_view text = parts[i].text;
            const std::string_view next = parts[i + 1].text;
            if (parts[i].kind == mixedKind)
                for (const std::string_view run : runsOf(text))
                    joined.insert(run);
            if (parts[i].kind == letterKind && parts[i].separator != "-" &&
                parts[i + 1].separator == "-") {
                words.insert(text);
                if (next.size() > 1 && next[0] == '0' && reading::isDigit(next[1]))
                    padded.insert(text);
            }
        }
        single += words.size() == 1 ? 1 : 0;
        several += words.size() > 1 ? 1 : 0;
        for (const std::string_view word : words)
            ++counts[word];
    }
    Words signedWords;
    Words keys;
    for (const auto& [word, count] : counts)
        if (joined.count(word) > 0 && padded.count(word) == 0)
            signedWords.insert(word);
        else if (several > single && count * 200 >= paths.size())
            keys.insert(word);
    return makeReader(signedWords, keys);
}

} // namespace

std::vector<std::string_view> runsOf(std::string_view text)
{
    thread_local Matcher matcher(Template("[{letters,[a-z]{2,}(?=[A-Z])|[A-Za-z]+}][{number,-?" +
                                          number + "}]{rest,(?s:.*)}"));
    std::vector<std::string_view> runs;
    while (!text.empty()) {
        matcher.match(text);
        const std::vector<Span>& spans = matcher.columns();
        if (spans[2].length == text.size())
            return {};
        for (const std::size_t length : {spans[0].length, spans[1].length}) {
            if (length > 0)
                runs.push_back(text.substr(0, length));
            text.remove_prefix(length);
        }
    }
    return runs;
}

std::vector<Shape> takeCensus(const std::vector<std::string_view>& paths)
{
    std::vector<PathParts> divided(paths.size());
    const auto divideAll = [&](Matcher reader, bool findsAgain) {
        for (std::size_t i = 0; i < paths.size(); ++i)
            divided[i] = divide(paths[i], reader, findsAgain);
    };
    divideAll(makeReader({}, {}), false);
    divideAll(readerOf(divided), true);

    std::map<std::string, Shape> shapes;
    for (const PathParts& parts : divided) {
        std::string signature;
        for (const PathPart& part : parts)
            signature.append(part.separator)
                .append(part.key.empty() ? std::to_string(part.kind) : part.key);
        std::vector<ShapeSlot>& slots = shapes[signature].slots;
        slots.resize(parts.size());
        for (std::size_t i = 0; i < parts.size(); ++i) {
            slots[i].separator = parts[i].separator;
            slots[i].key = parts[i].key;
            slots[i].kinds |= parts[i].kind;
            slots[i].values.add(parts[i].text);
        }
    }
    std::vector<Shape> all;
    all.reserve(shapes.size());
    for (auto& entry : shapes)
        all.push_back(std::move(entry.second));
    return all;
}

} // namespace casetable
