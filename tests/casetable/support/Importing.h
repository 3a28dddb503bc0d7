#ifndef TESTS_CASETABLE_SUPPORT_IMPORTING_H
#define TESTS_CASETABLE_SUPPORT_IMPORTING_H

#include <memory>
#include <string>
#include <vector>

#include "casetable/listing/FileSystem.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"

namespace casetable {
namespace tests {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
inline std::auto_ptr<CrawlerImporterParserInterface> makeParser()
{
    return std::auto_ptr<CrawlerImporterParserInterface>(new CrawlerBasicImporterParser);
}
#pragma GCC diagnostic pop

// An importer that was given these files.
struct Importing {
    Importing(const std::vector<std::string>& files, const std::vector<MetadataPattern>& patterns)
        : importer(makeParser())
    {
        FolderCrawler::Result result;
        result.folder = fileSystemRoot(fileSystem, "/");
        result.files.assign(files.begin(), files.end());
        importer.setCrawlResult(result);
        importer.setMetadataPatternList(patterns);
    }

    FileSystem fileSystem;
    MetadataFileCrawler importer;
};

} // namespace tests
} // namespace casetable

#endif
