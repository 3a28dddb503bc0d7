#include "crawler/private/CrawlerFilePath.h"

#include <stdexcept>
#include <utility>

#include <boost/container/small_vector.hpp>
#include <boost/utility/string_view.hpp>

#include "crawler/private/PathReading.h"

namespace {

// More than any user is likely to write.
const std::size_t usualPositions = 32;

// On the stack for a usual list, so that a path without values takes no memory.
using Positions = boost::container::small_vector<std::size_t, usualPositions>;

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
    const bool allFound = reading::locateMarkers(rawPath_, patterns, positions);
    positions.push_back(rawPath_.size());
    const bool matched = allFound && extractValues(patterns, positions.data());
    // An unmatched file keeps the values of its last match: nobody reads them, and the next match
    // reuses their memory.
    if (matched) {
        metadataValues_.resize(metadataInfos_.size());
        for (std::size_t k = 0; k < metadataInfos_.size(); ++k)
            metadataValues_[k] = metadataInfos_[k].value;
    }
    matched_ = matched;
    return matched_;
}

// What was read before a pattern that fails stays in the metadata infos: they tell how far the
// patterns matched.
bool CrawlerFilePath::extractValues(const std::vector<MetadataPattern>& patterns,
                                    const std::size_t* positions)
{
    for (std::size_t k = 0; k < patterns.size(); ++k) {
        const std::size_t markerLength = patterns[k].pattern.size();
        const boost::string_view segment =
            boost::string_view(rawPath_.data() + positions[k], positions[k + 1] - positions[k]);
        const std::size_t end = reading::scanValue(segment, patterns[k]);
        if (end == reading::noValue)
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
