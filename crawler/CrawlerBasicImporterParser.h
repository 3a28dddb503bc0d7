#ifndef CRAWLER_CRAWLERBASICIMPORTERPARSER_H
#define CRAWLER_CRAWLERBASICIMPORTERPARSER_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "crawler/CrawlerImporterParserInterface.h"
#include "crawler/Export.h"
#include "crawler/MetadataPattern.h"

/// The module's parser. Paths are worked off in ascending byte order, and cases are numbered from 0
/// in the order in which their values first appear.
///
/// Not copyable. Used by one thread at a time. Operations throw std::bad_alloc when memory runs
/// out.
class CRAWLER_API CrawlerBasicImporterParser : public virtual CrawlerImporterParserInterface {
public:
    CrawlerBasicImporterParser();
    CrawlerBasicImporterParser(const CrawlerBasicImporterParser&) = delete;
    CrawlerBasicImporterParser& operator=(const CrawlerBasicImporterParser&) = delete;
    ~CrawlerBasicImporterParser() override;

    /// Records `path` under exactly its bytes; a path that is already there gets a fresh record,
    /// without metadata, in place of the old one. Leaves the cases as they are.
    void appendRawFilePath(const std::string& path) override;

    /// Forgets every path. The cases of the last application can be read until the next one.
    void clearFilePaths() override;

    /// Reads the metadata of every path and numbers the cases anew. With an empty list no path is
    /// matched: there are no cases and no metadata then, and each file keeps its matched flag and
    /// its case index.
    ///
    /// Throws std::out_of_range ("invalid string position") for a path in which a marker begins
    /// within the text marker before it, and what is left of that one is all extension, as in
    /// `x.ab` with the markers `.ab` and `b`. The cases built so far stay.
    void applyMetadataPatternList(const std::vector<MetadataPattern>& patterns) override;

    std::vector<MetadataInfo> metadataInfoList(const std::string& name) const override;
    std::size_t numDefinedCases() const override;

    /// The indices are not checked.
    std::string caseMetadataSValue(std::size_t caseIndex, std::size_t metadataIndex) const override;

    /// Every recorded file in ascending byte order of path, unmatched ones included.
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> crawlerFilePathList() const override;

private:
    struct CRAWLER_LOCAL Impl;
    const std::unique_ptr<Impl> impl_;
};

#endif
