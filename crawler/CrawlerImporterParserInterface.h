#ifndef CRAWLER_CRAWLERIMPORTERPARSERINTERFACE_H
#define CRAWLER_CRAWLERIMPORTERPARSERINTERFACE_H

#include <cstddef>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "crawler/Export.h"
#include "crawler/MetadataPattern.h"

class AuxFileInfoInterface;

/// Turns a set of crawled paths into numbered cases by a list of metadata patterns.
///
/// Append every path, apply a pattern list, and only then read; apply again after any change of
/// either. Implementations inherit this class as a virtual base and are used by one thread at a
/// time.
class CRAWLER_API CrawlerImporterParserInterface {
public:
    CrawlerImporterParserInterface() = default;
    CrawlerImporterParserInterface(const CrawlerImporterParserInterface&) = default;
    CrawlerImporterParserInterface& operator=(const CrawlerImporterParserInterface&) = default;

    /// Records a path as it stands. It belongs to no case until a pattern list is applied.
    virtual void appendRawFilePath(const std::string& path) = 0;

    /// Forgets every recorded path; the cases of the last application stay until the next.
    virtual void clearFilePaths() = 0;

    /// Matches `patterns` against every recorded path and numbers the cases anew.
    virtual void applyMetadataPatternList(const std::vector<MetadataPattern>& patterns) = 0;

    /// What the patterns read out of the path `name`: one entry per pattern, in pattern order, as
    /// far as they matched; empty for a path that is not recorded.
    virtual std::vector<MetadataInfo> metadataInfoList(const std::string& name) const = 0;

    /// The number of cases that the last application defined. It is asked several times while a
    /// table is built and must not change meanwhile.
    virtual std::size_t numDefinedCases() const = 0;

    /// The value that the files of a case share for one pattern. `caseIndex` must be below
    /// numDefinedCases(), `metadataIndex` below the number of patterns applied.
    virtual std::string caseMetadataSValue(std::size_t caseIndex,
                                           std::size_t metadataIndex) const = 0;

    /// Every recorded file, matched or not; ownership is shared with the caller.
    virtual std::vector<boost::shared_ptr<AuxFileInfoInterface>> crawlerFilePathList() const = 0;

    virtual ~CrawlerImporterParserInterface();
};

#endif
