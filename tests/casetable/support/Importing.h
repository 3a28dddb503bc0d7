#ifndef TESTS_CASETABLE_SUPPORT_IMPORTING_H
#define TESTS_CASETABLE_SUPPORT_IMPORTING_H

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "casetable/importing/Reading.h"
#include "casetable/listing/FileSystem.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"
#include "host/AuxFileInfoInterface.h"

namespace casetable {
namespace tests {

// An importer that was given these files.
struct Importing {
    Importing(const std::vector<std::string>& files, const Reading& reading)
        : importer(makeParser(reading))
    {
        FolderCrawler::Result result;
        result.folder = fileSystemRoot(fileSystem, "/");
        result.files.assign(files.begin(), files.end());
        importer.setCrawlResult(result);
        importer.setMetadataPatternList(reading.patterns());
    }

    Importing(const std::vector<std::string>& files, const std::vector<MetadataPattern>& patterns)
        : Importing(files, Reading(patterns))
    {
    }

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    static std::auto_ptr<CrawlerImporterParserInterface> makeParser(const Reading& reading)
    {
        return std::auto_ptr<CrawlerImporterParserInterface>(reading.makeParser().release());
    }
#pragma GCC diagnostic pop

    FileSystem fileSystem;
    MetadataFileCrawler importer;
};

// The paths of the importer's crawl result that belong to no case, in byte order.
inline std::vector<std::string> unmatchedPaths(const MetadataFileCrawler& importer)
{
    std::vector<std::string> all(importer.files().begin(), importer.files().end());
    std::sort(all.begin(), all.end());
    std::vector<std::string> matched;
    for (const auto& file : importer.identifiedAuxFiles())
        matched.push_back(file->filePath());
    std::vector<std::string> paths;
    std::set_difference(all.begin(), all.end(), matched.begin(), matched.end(),
                        std::back_inserter(paths));
    return paths;
}

} // namespace tests
} // namespace casetable

#endif
