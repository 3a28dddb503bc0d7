#ifndef CRAWLER_PRIVATE_PATHREADING_H
#define CRAWLER_PRIVATE_PATHREADING_H

#include <cstddef>
#include <string>
#include <vector>

#include <boost/lexical_cast/try_lexical_convert.hpp>

#include "crawler/MetadataPattern.h"

/// The rules by which values are read from a path. They stand here once: for the module, which
/// reads by them, and for the stand-alone host, which explains what the module did. Neither
/// installed nor exported.
///
/// A `Text` is a boost::string_view or a std::string_view, which C++14 does not have. All functions
/// may be called from any thread. Those that matching calls for every path are static, so that the
/// compiler takes each into its caller: as calls they cost matching some per cent of its time.
///
/// A segment is the part of a path from the start of a marker up to the start of the next, or up to
/// the end of the path. The value of the marker is looked for in its segment alone.
namespace reading {

inline bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

inline bool isSign(char c)
{
    return c == '-' || c == '+';
}

inline bool isExponentLetter(char c)
{
    return c == 'D' || c == 'E' || c == 'd' || c == 'e';
}

inline bool isSeparator(char c)
{
    return c == '/' || c == '\\';
}

/// Whether `index` lies within the text and a digit stands there.
template <class Text> static bool digitAt(Text text, std::size_t index)
{
    return index < text.size() && isDigit(text[index]);
}

/// The first index from `index` on at which no digit stands.
template <class Text> static std::size_t skipDigits(Text text, std::size_t index)
{
    while (digitAt(text, index))
        ++index;
    return index;
}

/// Appends to `positions` where each marker begins in `path`, in list order, as far as they are
/// found, and returns whether all are. Each is the first occurrence behind the first byte of the
/// marker before, and may so lie inside that one. No other occurrence is tried where a later marker
/// is not found.
template <class Positions>
static bool locateMarkers(const std::string& path, const std::vector<MetadataPattern>& patterns,
                          Positions& positions)
{
    std::size_t start = 0;
    for (const MetadataPattern& pattern : patterns) {
        const std::size_t position = path.find(pattern.pattern, start);
        if (position == std::string::npos)
            return false;
        positions.push_back(position);
        start = position + 1;
    }
    return true;
}

/// The same as a list of its own.
inline std::vector<std::size_t> markerPositions(const std::string& path,
                                                const std::vector<MetadataPattern>& patterns)
{
    std::vector<std::size_t> positions;
    locateMarkers(path, patterns, positions);
    return positions;
}

/// What a scan answers that finds no value.
const std::size_t noValue = std::string::npos;

/// The index behind the number that begins at `begin`, or noValue.
template <class Text> static std::size_t scanNumberValue(Text segment, std::size_t begin)
{
    if (begin > segment.size())
        return noValue;

    std::size_t end = begin;
    if (end < segment.size() && isSign(segment[end]))
        ++end;

    const bool hasWholePart = digitAt(segment, end);
    end = skipDigits(segment, end);
    if (end < segment.size() && segment[end] == '.' && (hasWholePart || digitAt(segment, end + 1)))
        end = skipDigits(segment, end + 1);
    else if (!hasWholePart)
        return noValue;

    if (end < segment.size() && isExponentLetter(segment[end])) {
        std::size_t exponent = end + 1;
        if (exponent < segment.size() && isSign(segment[exponent]))
            ++exponent;
        if (digitAt(segment, exponent))
            end = skipDigits(segment, exponent);
    }

    // A trailing decimal point is never part of the value.
    return segment[end - 1] == '.' ? end - 1 : end;
}

/// The length of the segment without the extensions of its last component. An extension begins at a
/// point, also at one in front of the component; the components "." and ".." have none.
template <class Text> static std::size_t lengthWithoutExtensions(Text segment)
{
    std::size_t component = segment.size();
    while (component > 0 && !isSeparator(segment[component - 1]))
        --component;

    std::size_t length = segment.size();
    for (;;) {
        const Text name = segment.substr(component, length - component);
        const std::size_t point = name.rfind('.');
        if (point == Text::npos || name == "." || name == "..")
            return length;
        length = component + point;
    }
}

/// The index behind the text that begins at `begin`, or noValue. Extensions are left off before the
/// text is looked for, unless nothing is left then. The answer may be the size of the whole
/// segment, and may then lie before `begin`.
template <class Text> static std::size_t scanStringValue(Text segment, std::size_t begin)
{
    const std::size_t length = lengthWithoutExtensions(segment);
    for (std::size_t index = begin; index < length; ++index) {
        if (isSeparator(segment[index]))
            return index;
    }
    if (length == 0)
        return segment.size();
    // By contract, a single character at the end of a segment is no value.
    return begin < length - 1 ? length : noValue;
}

/// The index in `segment`, which begins with the marker, behind the value of `pattern`, or noValue.
template <class Text> static std::size_t scanValue(Text segment, const MetadataPattern& pattern)
{
    const std::size_t begin = pattern.pattern.size();
    return pattern.valueType == MetadataPattern::NumberValue ? scanNumberValue(segment, begin)
                                                             : scanStringValue(segment, begin);
}

/// Whether `text` as a whole is one number, which is then in `number`. Numbers are judged as
/// boost::lexical_cast reads them, under the global C++ locale.
template <class Number> bool convertsToNumber(const std::string& text, Number& number)
{
    return boost::conversion::try_lexical_convert(text, number);
}

} // namespace reading

#endif
