#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "crawler/MetadataPattern.h"

/// What the fuzz targets share: reading their input, and ending at a difference.
namespace fuzz {

using Patterns = std::vector<MetadataPattern>;
using Texts = std::vector<std::string>;

/// The bytes of `text` with all but plain ASCII escaped, so that a report can be read.
inline std::string shown(const std::string& text)
{
    std::string escaped = "\"";
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte >= 0x20 && byte < 0x7f && letter != '"' && letter != '\\') {
            escaped += letter;
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02x", byte);
            escaped += escape;
        }
    }
    return escaped + "\"";
}

inline std::string shown(const Texts& texts)
{
    std::string list = "{";
    for (const std::string& text : texts)
        list += " " + shown(text);
    return list + " }";
}

inline std::string shown(const Patterns& patterns)
{
    std::string list = "{";
    for (const MetadataPattern& pattern : patterns)
        list += " (" + shown(pattern.pattern) + ", " +
                std::to_string(static_cast<unsigned>(pattern.valueType)) + ")";
    return list + " }";
}

inline std::string shown(const std::vector<MetadataInfo>& infos)
{
    std::string list = "{";
    for (const MetadataInfo& info : infos)
        list += " (" + std::to_string(info.patternPosition) + ", " +
                std::to_string(info.valuePosition) + ", " + std::to_string(info.valueLength) +
                ", " + shown(info.value) + ")";
    return list + " }";
}

/// Ends the run, which keeps the input, unless both texts are the same.
inline void expectSame(const std::string& what, const std::string& seen,
                       const std::string& expected, const std::string& input)
{
    if (seen == expected)
        return;
    std::fprintf(stderr, "%s differs\n  seen     %s\n  expected %s\n  input    %s\n", what.c_str(),
                 seen.c_str(), expected.c_str(), input.c_str());
    std::abort();
}

/// Mostly one of the two kinds, sometimes a number that is neither.
inline MetadataPattern::ValueType valueType(FuzzedDataProvider& data)
{
    const auto number = data.ConsumeIntegralInRange<unsigned>(0, 7);
    return static_cast<MetadataPattern::ValueType>(number < 7 ? number % 2 : number);
}

/// At most `maxCount` patterns. A marker is cut out of `path`, so that it is found and may overlap
/// its neighbours, or is any text.
inline Patterns patterns(FuzzedDataProvider& data, const std::string& path, std::size_t maxCount)
{
    Patterns list(data.ConsumeIntegralInRange<std::size_t>(0, maxCount));
    for (MetadataPattern& pattern : list) {
        pattern.valueType = valueType(data);
        if (data.ConsumeBool()) {
            const auto from = data.ConsumeIntegralInRange<std::size_t>(0, path.size());
            pattern.pattern = path.substr(from, data.ConsumeIntegralInRange<std::size_t>(0, 8));
        } else {
            pattern.pattern = data.ConsumeRandomLengthString(12);
        }
    }
    return list;
}

} // namespace fuzz

#endif
