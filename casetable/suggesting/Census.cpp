#include "casetable/suggesting/Census.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "casetable/templates/Matcher.h"

namespace casetable {

namespace {

using Paths = std::vector<DividedPath>;
using Words = std::set<std::string_view>;

// No name that people read has more; what is left is one part.
const std::size_t maxParts = 16;
// No system has longer ones; a list may.
const std::size_t maxPathSize = 4096;

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

// What stands first in a name, in the language of templates: a column for each kind.
std::string firstPart(const Words& signedWords, const Words& keys)
{
    const std::string begin = "(?<![A-Za-z0-9])";
    const std::string end = "(?![^-_=,.@+ ])";
    const std::string clock = R"((?:[01]\d|2[0-3])[-:]?[0-5]\d[-:]?[0-5]\d)";
    const std::string date =
        R"((?:(?:19|20)\d\d(?:(?:0[1-9]|1[0-2])(?:[0-2]\d|3[01])|-(?:0[1-9]|1[0-2])(?:-[0-3]\d)?))"
        "(?:T" +
        clock + "Z?)?)";
    const std::string uuid = "[0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4}){4}[0-9A-Fa-f]{8}" + end;
    const std::string sign = anyOf(signedWords, "") + "-(?=[0-9])";
    // A "-" behind another separator and before a digit is a sign.
    return "{separator,[-_=,.@+ ]*[_=,.@+ ](?=-[0-9])|[-_=,.@+ ]*}"
           "[{key,(?<![-=A-Za-z0-9])(?:" +
           anyOf(keys, "(?!)") + "-|[A-Za-z]+=)(?=[^-_=,.@+ ])}]" + "[{fixed," + begin + date +
           end + "|" + uuid + "|" + begin + R"(\d+(?:\.\d+){3,})" + end +
           "}[{between,[-_. ]}{time," + clock + end + "}]][{number," + begin + "-?" + number + end +
           "}]" + "[{word," + begin + "(?:[A-Za-z]+[0-9]+?(?=" + uuid + ")|(?:" + sign +
           ")?(?:" + number + "|[A-Za-z])+" + end + ")}][{other," + begin +
           "[^-_=,.@+ ]+}]{rest,(?s:.*)}";
}

std::string_view endingOf(std::string_view name)
{
    // A digit at most, as in ".mp4": "f003" is a value.
    thread_local Matcher matcher(Template(
        R"({stem,(?s:.+?)}{ending,\.[A-Za-z]{1,8}\d?(?:\.(?:gz|bz2|xz|zst|zip|md5|sha\d+))?)"
        R"(|\.[0-9]?[A-Za-z]{1,8}\d?|})"));
    return !name.empty() && matcher.match(name) ? name.substr(matcher.columns()[1].begin)
                                                : std::string_view();
}

using Again = std::vector<std::pair<std::size_t, std::string_view>>;

// The parts of a name. Texts of `again`, components by their places, are one part each.
std::vector<NamePart> divideName(std::string_view name, Matcher& firstPart, const Again& again)
{
    static const std::vector<Kinds> kinds = {fixedKind, 0, 0, numberKind, mixedKind, otherKind};
    std::vector<NamePart> parts;
    const auto take = [&](std::size_t length) {
        const std::string_view text = name.substr(0, length);
        name.remove_prefix(text.size());
        return text;
    };
    do {
        firstPart.match(name);
        const std::vector<Span>& spans = firstPart.columns();
        NamePart part{take(spans[0].length), {}, {}, emptyKind};
        std::size_t length = 0;
        for (const auto& [place, text] : again)
            if (text.size() >= length && name.substr(0, text.size()) == text &&
                (name.size() == text.size() ||
                 name.find_first_of("_-=,.@+ ", text.size()) == text.size())) {
                length = text.size();
                part.kind = againKind << place;
            }
        if (length == 0)
            part.key = take(spans[1].length);
        for (std::size_t i = 0; i < kinds.size() && length == 0; ++i)
            if (kinds[i] != 0 && spans[2 + i].length > 0) {
                length = spans[2 + i].length;
                part.kind = kinds[i];
            }
        if (parts.size() + 1 >= maxParts && length < name.size()) {
            length = name.size();
            part.kind = otherKind;
        }
        part.text = take(length);
        if (part.kind == mixedKind && std::all_of(part.text.begin(), part.text.end(), isLetter))
            part.kind = letterKind;
        parts.push_back(part);
        if (part.kind == fixedKind && spans[4].length > 0) {
            const std::string_view separator = take(spans[3].length);
            parts.push_back({separator, {}, take(spans[4].length), fixedKind});
        }
    } while (!name.empty());
    return parts;
}

DividedPath componentsOf(std::string_view path)
{
    DividedPath divided;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        divided.components.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    divided.ending = endingOf(divided.components.back());
    divided.components.back().remove_suffix(divided.ending.size());
    divided.parts.resize(divided.components.size());
    return divided;
}

// A folder's name of letters or of several parts is one part where it comes again behind it:
// "MPI-ESM/tas_MPI-ESM_r1.nc".
void divide(Paths& paths, Matcher& firstPart, bool findsAgain)
{
    for (DividedPath& path : paths) {
        Again again;
        for (std::size_t i = 0; i < path.parts.size(); ++i) {
            std::vector<NamePart>& parts = path.parts[i];
            parts = divideName(path.components[i], firstPart, again);
            const bool isWord = parts.front().key.empty() && path.components[i].size() > 1 &&
                                (parts.front().kind & (letterKind | mixedKind)) != 0;
            if (findsAgain && i < maxAgain && (parts.size() > 1 || isWord))
                again.emplace_back(i, path.components[i]);
        }
    }
}

// In "sub-01_task-rest_bold", few words stand before a "-", and mostly several in a path: they are
// keys. Others, "Peck-solid", are not. Words that stand before a number with a "-" and also without
// are signed: "AoA-2.5" and "AoA2.5".
Matcher readerOf(const Paths& paths)
{
    Words joined;
    Words behindMinus;
    std::map<std::string_view, std::pair<std::size_t, std::size_t>> counts;
    for (const DividedPath& path : paths) {
        Words words;
        for (const std::vector<NamePart>& parts : path.parts)
            for (std::size_t i = 0; i < parts.size(); ++i) {
                const NamePart& part = parts[i];
                for (const std::string_view run : runsOf(part.text))
                    joined.insert(part.kind == mixedKind ? run : std::string_view());
                if (part.kind != letterKind || i + 1 == parts.size() || part.separator == "-" ||
                    parts[i + 1].separator != "-" || parts[i + 1].kind == emptyKind)
                    continue;
                words.insert(part.text);
                if (isDigit(parts[i + 1].text.front()))
                    behindMinus.insert(part.text);
            }
        for (const std::string_view word : words) {
            ++counts[word].first;
            counts[word].second += words.size() > 1 ? 1 : 0;
        }
    }
    Words signedWords;
    std::set_intersection(joined.begin(), joined.end(), behindMinus.begin(), behindMinus.end(),
                          std::inserter(signedWords, signedWords.end()));
    Words keys;
    std::size_t ofOthers = 0;
    std::size_t ofKeys = 0;
    for (const auto& [word, count] : counts) {
        const bool isKey = count.first >= 3 && count.first * 200 >= paths.size() &&
                           count.second * 2 >= count.first && signedWords.count(word) == 0;
        (isKey ? ofKeys : ofOthers) += count.first;
        if (isKey)
            keys.insert(word);
    }
    return Matcher(Template(firstPart(signedWords, ofOthers * 4 <= ofKeys ? keys : Words())));
}

std::string signatureOf(const DividedPath& path)
{
    std::string signature(1, path.ending.empty() ? '-' : '.');
    for (const std::vector<NamePart>& parts : path.parts) {
        for (const NamePart& part : parts)
            signature.append(part.separator)
                .append(1, '\0')
                .append(part.key.empty() ? std::to_string(part.kind) : std::string(part.key))
                .append(1, '\0');
        signature += '/';
    }
    return signature;
}

std::uint64_t hashOf(std::string_view path)
{
    std::uint64_t hash = 14695981039346656037U; // FNV-1a, the same on all machines
    for (const char byte : path)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    return hash ^ (hash >> 29U);
}

} // namespace

bool isDigit(char byte)
{
    return '0' <= byte && byte <= '9';
}

bool isLetter(char byte)
{
    return ('a' <= byte && byte <= 'z') || ('A' <= byte && byte <= 'Z');
}

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

std::vector<std::string_view> samplePaths(const std::vector<std::string_view>& paths,
                                          std::size_t count)
{
    std::vector<std::pair<std::uint64_t, std::string_view>> hashed;
    hashed.reserve(paths.size());
    for (const std::string_view path : paths)
        if (path.size() <= maxPathSize)
            hashed.emplace_back(hashOf(path), path);
    if (hashed.size() > count) {
        std::nth_element(hashed.begin(), hashed.begin() + static_cast<std::ptrdiff_t>(count),
                         hashed.end());
        hashed.resize(count);
    }
    std::vector<std::string_view> sample(hashed.size());
    std::transform(hashed.begin(), hashed.end(), sample.begin(),
                   [](const auto& entry) { return entry.second; });
    std::sort(sample.begin(), sample.end());
    return sample;
}

std::vector<PathClass> takeCensus(const std::vector<std::string_view>& paths)
{
    Paths divided;
    std::transform(paths.begin(), paths.end(), std::back_inserter(divided), componentsOf);
    Matcher plainReader{Template(firstPart({}, {}))};
    divide(divided, plainReader, false);
    Matcher reader = readerOf(divided);
    divide(divided, reader, true);
    std::map<std::string, PathClass> classes;
    for (DividedPath& path : divided)
        classes[signatureOf(path)].push_back(std::move(path));
    std::vector<PathClass> largestFirst(classes.size());
    std::transform(classes.begin(), classes.end(), largestFirst.begin(),
                   [](auto& entry) { return std::move(entry.second); });
    std::stable_sort(largestFirst.begin(), largestFirst.end(),
                     [](const PathClass& a, const PathClass& b) { return a.size() > b.size(); });
    return largestFirst;
}

} // namespace casetable
