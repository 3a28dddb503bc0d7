#include "casetable/suggesting/NameParts.h"

#include <algorithm>
#include <string>

namespace casetable {

namespace {

// No name that people read has more; what is left is one part.
const std::size_t maxParts = 24;

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

} // namespace

bool isDigit(char byte)
{
    return '0' <= byte && byte <= '9';
}

bool isLetter(char byte)
{
    return ('a' <= byte && byte <= 'z') || ('A' <= byte && byte <= 'Z');
}

bool isSeparator(char byte)
{
    return std::string_view("_-=,.@+ ").find(byte) != std::string_view::npos;
}

NameReader::NameReader(const Words& signedWords, const Words& keys)
    : matcher_(Template(firstPart(signedWords, keys)))
{
}

std::vector<NamePart>
NameReader::divide(std::string_view name,
                   const std::vector<std::pair<std::size_t, std::string_view>>& again)
{
    static const std::vector<Kinds> kinds = {fixedKind, 0, 0, numberKind, mixedKind, otherKind};
    std::vector<NamePart> parts;
    const auto take = [&](std::size_t length) {
        const std::string_view text = name.substr(0, length);
        name.remove_prefix(text.size());
        return text;
    };
    do {
        matcher_.match(name);
        const std::vector<Span>& spans = matcher_.columns();
        NamePart part{take(spans[0].length), {}, {}, emptyKind};
        std::size_t length = 0;
        for (const auto& [place, text] : again)
            if (text.size() >= length && name.substr(0, text.size()) == text &&
                (name.size() == text.size() || isSeparator(name[text.size()]))) {
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
        if (parts.size() + 1 == maxParts && length < name.size()) {
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

std::string_view endingOf(std::string_view name)
{
    // A digit at most, as in ".mp4": "f003" is a value.
    thread_local Matcher matcher(Template(
        R"({stem,(?s:.+?)}{ending,\.[A-Za-z]{1,8}\d?(?:\.(?:gz|bz2|xz|zst|zip|md5|sha\d+))?)"
        R"(|\.[0-9]?[A-Za-z]{1,8}\d?|})"));
    return !name.empty() && matcher.match(name) ? name.substr(matcher.columns()[1].begin)
                                                : std::string_view();
}

} // namespace casetable
