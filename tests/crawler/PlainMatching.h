#ifndef TESTS_CRAWLER_PLAINMATCHING_H
#define TESTS_CRAWLER_PLAINMATCHING_H

#include <algorithm>
#include <cstddef>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "crawler/MetadataPattern.h"

/// The rules of path matching said once more, as slowly and plainly as possible, for the tests to
/// hold the module against; and random input for both.
namespace plain {

/// All that matching knows of one path.
struct Record {
    std::string path;
    std::size_t caseIndex = 0;
    std::vector<MetadataInfo> infos;
    std::vector<std::string> values;
    bool matched = false;
};

/// The start of every marker, each after the start of the one before, and the length of the path
/// at the end. False when a marker is missing.
inline bool locate(const std::string& path, const std::vector<MetadataPattern>& patterns,
                   std::vector<std::size_t>& positions)
{
    std::size_t at = 0;
    for (const MetadataPattern& pattern : patterns) {
        const std::string& marker = pattern.pattern;
        while (at + marker.size() <= path.size() && path.substr(at, marker.size()) != marker)
            ++at;
        if (at + marker.size() > path.size())
            return false;
        positions.push_back(at++);
    }
    positions.push_back(path.size());
    return true;
}

/// The number that stands at the beginning of `text`; false when there is none.
inline bool number(const std::string& text, std::string& value)
{
    static const std::regex form("[-+]?([0-9]+([.][0-9]*)?|[.][0-9]+)([DEde][-+]?[0-9]+)?");
    std::smatch match;
    if (!std::regex_search(text, match, form, std::regex_constants::match_continuous))
        return false;
    value = match.str();
    if (value.back() == '.')
        value.pop_back();
    return true;
}

/// `text` without the extensions of its last component.
inline std::string withoutExtensions(std::string text)
{
    for (;;) {
        const std::size_t separator = text.find_last_of("/\\");
        const std::string name = separator == std::string::npos ? text : text.substr(separator + 1);
        const std::size_t dot = name.rfind('.');
        if (dot == std::string::npos || name == "." || name == "..")
            return text;
        text.resize(text.size() - (name.size() - dot));
    }
}

/// The text behind a marker of `length` bytes that begins `segment`; false when there is none. The
/// end is looked for without the extensions, but what is cut is the segment with them.
inline bool text(const std::string& segment, std::size_t length, std::string& value)
{
    const std::string stripped = withoutExtensions(segment);
    std::size_t end = stripped.size();
    bool separated = false;
    for (std::size_t i = stripped.size(); i-- > length;) {
        if (stripped[i] == '/' || stripped[i] == '\\') {
            end = i;
            separated = true;
        }
    }
    if (separated) {
        value = segment.substr(length, end - length);
        return true;
    }
    if (stripped.empty()) {
        if (segment.size() < length)
            throw std::out_of_range("invalid string position");
        value = segment.substr(length);
        return true;
    }
    if (length + 1 >= stripped.size())
        return false;
    value = segment.substr(length, end - length);
    return true;
}

inline bool extract(Record& record, const std::vector<MetadataPattern>& patterns,
                    const std::vector<std::size_t>& positions)
{
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        const std::size_t length = patterns[i].pattern.size();
        const std::string segment =
            record.path.substr(positions[i], positions[i + 1] - positions[i]);

        MetadataInfo info;
        if (patterns[i].valueType == MetadataPattern::NumberValue) {
            if (segment.size() < length || !number(segment.substr(length), info.value))
                return false;
        } else if (!text(segment, length, info.value)) {
            return false;
        }
        info.patternPosition = positions[i];
        info.valuePosition = positions[i] + length;
        info.valueLength = info.value.size();
        record.infos.push_back(info);
    }
    return true;
}

/// Appends to the infos; throws as the module does.
inline bool apply(Record& record, const std::vector<MetadataPattern>& patterns)
{
    if (patterns.empty())
        return false;
    std::vector<std::size_t> positions;
    record.matched =
        locate(record.path, patterns, positions) && extract(record, patterns, positions);
    if (record.matched) {
        record.values.clear();
        for (const MetadataInfo& info : record.infos)
            record.values.push_back(info.value);
    }
    return record.matched;
}

using Random = std::mt19937;

/// A number below `limit`.
inline std::size_t below(Random& random, std::size_t limit)
{
    return random() % limit;
}

inline std::string randomText(Random& random, const std::string& alphabet, std::size_t maxLength)
{
    std::string text(below(random, maxLength + 1), '\0');
    std::generate(text.begin(), text.end(),
                  [&] { return alphabet[below(random, alphabet.size())]; });
    return text;
}

/// Patterns whose markers are mostly cut out of `path` from left to right, so that they are found
/// and often overlap.
inline std::vector<MetadataPattern> randomPatterns(Random& random, const std::string& path,
                                                   const std::string& alphabet,
                                                   std::size_t maxCount)
{
    std::vector<MetadataPattern> patterns(below(random, maxCount + 1));
    std::size_t from = 0;
    for (MetadataPattern& pattern : patterns) {
        if (below(random, 5) == 0) {
            pattern.pattern = randomText(random, alphabet, 3);
        } else {
            from = std::min(path.size(), from + below(random, 5));
            pattern.pattern = path.substr(from, below(random, 5));
            ++from;
        }
        const std::size_t types[] = {0, 0, 0, 1, 1, 1, 7};
        pattern.valueType = static_cast<MetadataPattern::ValueType>(types[below(random, 7)]);
    }
    return patterns;
}

/// The patterns as they would be written down, for the report of a failure.
inline std::string describe(const std::vector<MetadataPattern>& patterns)
{
    std::string description;
    for (const MetadataPattern& pattern : patterns)
        description += " (\"" + pattern.pattern + "\", " +
                       std::to_string(static_cast<unsigned>(pattern.valueType)) + ")";
    return description;
}

} // namespace plain

#endif
