#include "crawler/private/CrawlerFilePath.h"

#include <stdexcept>
#include <utility>

#include <boost/container/small_vector.hpp>
#include <boost/utility/string_view.hpp>

namespace {

// What a scanner answers that finds no value.
const std::size_t noValue = std::string::npos;

// On the stack for any list that a user is likely to write, so that a path without values takes no
// memory.
using Positions = boost::container::small_vector<std::size_t, 32>;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isSign(char c)
{
    return c == '-' || c == '+';
}

bool isExponentLetter(char c)
{
    return c == 'D' || c == 'E' || c == 'd' || c == 'e';
}

bool isSeparator(char c)
{
    return c == '/' || c == '\\';
}

// Appends the position of each marker, in order, as far as they are found, and then the size of the
// path. Only the start positions grow: a marker may be found inside the text of the one before.
bool locateMarkers(const std::string& path, const std::vector<MetadataPattern>& patterns,
                   Positions& positions)
{
    std::size_t start = 0;
    bool allFound = true;
    for (const MetadataPattern& pattern : patterns) {
        const std::size_t position = path.find(pattern.pattern, start);
        if (position == std::string::npos) {
            allFound = false;
            break;
        }
        positions.push_back(position);
        start = position + 1;
    }
    positions.push_back(path.size());
    return allFound;
}

std::size_t skipDigits(boost::string_view segment, std::size_t index)
{
    while (index < segment.size() && isDigit(segment[index]))
        ++index;
    return index;
}

bool digitAt(boost::string_view segment, std::size_t index)
{
    return index < segment.size() && isDigit(segment[index]);
}

// The index after the number that begins at `begin`, or noValue.
std::size_t scanNumberValue(boost::string_view segment, std::size_t begin)
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

// The length of the segment without the extensions of its last component.
std::size_t lengthWithoutExtensions(boost::string_view segment)
{
    std::size_t component = segment.size();
    while (component > 0 && !isSeparator(segment[component - 1]))
        --component;

    std::size_t length = segment.size();
    for (;;) {
        const boost::string_view name = segment.substr(component, length - component);
        const std::size_t point = name.rfind('.');
        if (point == boost::string_view::npos || name == "." || name == "..")
            return length;
        length = component + point;
    }
}

// The index after the text that begins at `begin`, or noValue. The answer may be the size of the
// unstripped segment, and may then lie before `begin`.
std::size_t scanStringValue(boost::string_view segment, std::size_t begin)
{
    const std::size_t length = lengthWithoutExtensions(segment);
    for (std::size_t index = begin; index < length; ++index) {
        if (isSeparator(segment[index]))
            return index;
    }
    if (length == 0)
        return segment.size();
    // A single character at the end of a segment is no value, on purpose.
    return begin < length - 1 ? length : noValue;
}

std::size_t scanValue(boost::string_view segment, const MetadataPattern& pattern)
{
    const std::size_t begin = pattern.pattern.size();
    return pattern.valueType == MetadataPattern::NumberValue ? scanNumberValue(segment, begin)
                                                             : scanStringValue(segment, begin);
}

} // namespace

CrawlerFilePath::CrawlerFilePath(const std::string& rawPath)
    : rawPath_(rawPath), type_(auxFileType(rawPath))
{
}

std::string CrawlerFilePath::filePath() const
{
    return rawPath_;
}

bool CrawlerFilePath::isMatched() const
{
    return matched_;
}

void CrawlerFilePath::setCaseIndex(std::size_t index)
{
    caseIndex_ = index;
}

std::size_t CrawlerFilePath::caseIndex() const
{
    return caseIndex_;
}

std::string CrawlerFilePath::label() const
{
    return std::string();
}

AuxFileInfoInterface::Type CrawlerFilePath::type() const
{
    return type_;
}

const std::vector<std::string>& CrawlerFilePath::metadataValues() const
{
    return metadataValues_;
}

const std::vector<MetadataInfo>& CrawlerFilePath::metadataInfoList() const
{
    return metadataInfos_;
}

void CrawlerFilePath::clearMetadataInfoList()
{
    metadataInfos_.clear();
}

bool CrawlerFilePath::applyMetadataPatterns(const std::vector<MetadataPattern>& patterns)
{
    if (patterns.empty())
        return false;

    Positions positions;
    const bool matched =
        locateMarkers(rawPath_, patterns, positions) && extractValues(patterns, positions.data());
    // An unmatched file keeps the values of its last match, on purpose; nobody reads them.
    if (matched) {
        metadataValues_.resize(metadataInfos_.size());
        for (std::size_t k = 0; k < metadataInfos_.size(); ++k)
            metadataValues_[k] = metadataInfos_[k].value;
    }
    matched_ = matched;
    return matched_;
}

// What was read before a pattern that fails stays in the metadata infos, on purpose.
bool CrawlerFilePath::extractValues(const std::vector<MetadataPattern>& patterns,
                                    const std::size_t* positions)
{
    for (std::size_t k = 0; k < patterns.size(); ++k) {
        const std::size_t markerLength = patterns[k].pattern.size();
        const boost::string_view segment =
            boost::string_view(rawPath_.data() + positions[k], positions[k + 1] - positions[k]);
        const std::size_t end = scanValue(segment, patterns[k]);
        if (end == noValue)
            return false;
        if (markerLength > segment.size())
            throw std::out_of_range("invalid string position");

        MetadataInfo info;
        info.patternPosition = positions[k];
        info.valuePosition = positions[k] + markerLength;
        info.valueLength = end - markerLength;
        info.value.assign(rawPath_, info.valuePosition, info.valueLength);
        // Only now, so that a path without any value takes no memory.
        if (k == 0)
            metadataInfos_.reserve(metadataInfos_.size() + patterns.size());
        metadataInfos_.push_back(std::move(info));
    }
    return true;
}
