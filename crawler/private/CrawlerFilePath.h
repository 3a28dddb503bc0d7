#ifndef CRAWLER_PRIVATE_CRAWLERFILEPATH_H
#define CRAWLER_PRIVATE_CRAWLERFILEPATH_H

#include <cstddef>
#include <string>
#include <vector>

#include "crawler/MetadataPattern.h"
#include "host/AuxFileInfoInterface.h"

/// The parser's record of one crawled file: its path, what a pattern list read out of it, and the
/// case that it joined. Created with boost::make_shared and shared by the parser with its callers.
class CrawlerFilePath final : public virtual AuxFileInfoInterface {
public:
    /// Keeps `rawPath` as it stands and asks auxFileType() for its kind.
    explicit CrawlerFilePath(const std::string& rawPath);

    std::string filePath() const override;
    bool isMatched() const override;
    void setCaseIndex(std::size_t index) override;
    std::size_t caseIndex() const override;
    /// Always empty.
    std::string label() const override;
    Type type() const override;

    /// One value text per pattern, in pattern order: the key of the file's case. Meaningful only
    /// while isMatched() is true.
    virtual const std::vector<std::string>& metadataValues() const;

    /// One entry per pattern that matched, in pattern order; complete when the file is matched.
    const std::vector<MetadataInfo>& metadataInfoList() const;

    /// Empties the metadata infos and nothing else.
    void clearMetadataInfoList();

    /// Matches `patterns` against the path, appends what they read to the metadata infos, and
    /// returns whether all of them matched. An empty list changes nothing and returns false.
    ///
    /// Throws std::out_of_range when a marker begins within the text marker before it, and what is
    /// left of that one is all extension; the matched flag and the values then stay as they were.
    bool applyMetadataPatterns(const std::vector<MetadataPattern>& patterns);

private:
    bool extractValues(const std::vector<MetadataPattern>& patterns, const std::size_t* positions);

    std::string rawPath_;
    std::size_t caseIndex_ = 0;
    Type type_;
    std::vector<MetadataInfo> metadataInfos_;
    std::vector<std::string> metadataValues_;
    bool matched_ = false;
};

#endif
