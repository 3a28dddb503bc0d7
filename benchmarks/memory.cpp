// memory ROOT: what an import of the campaign below ROOT holds, by holder, in bytes a file with the
// overhead of the C library's allocator. One "name value" a line.

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <malloc.h>

#include <boost/make_shared.hpp>

#include "benchmarks/Campaign.h"
#include "benchmarks/Host.h"
#include "casetable/importing/PlainTagValidator.h"
#include "casetable/importing/Reading.h"
#include "casetable/listing/FileSystem.h"
#include "crawler/FolderCrawler.h"
#include "host/AuxFileInfoInterface.h"

namespace {

// Takes paths in and forgets them, which leaves the importer's own holdings.
class EmptyParser : public virtual CrawlerImporterParserInterface {
public:
    void appendRawFilePath(const std::string& /*path*/) override {}
    void clearFilePaths() override {}
    void applyMetadataPatternList(const std::vector<MetadataPattern>& /*patterns*/) override {}
    std::vector<MetadataInfo> metadataInfoList(const std::string& /*name*/) const override
    {
        return {};
    }
    std::size_t numDefinedCases() const override { return 0; }
    std::string caseMetadataSValue(std::size_t /*caseIndex*/,
                                   std::size_t /*metadataIndex*/) const override
    {
        return {};
    }
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> crawlerFilePathList() const override
    {
        return {};
    }
};

std::size_t heldBytes()
{
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Reports by how much the program's holdings have grown since they were `before`.
void report(const char* holder, std::size_t before, std::size_t files)
{
    const double growth = static_cast<double>(heldBytes()) - static_cast<double>(before);
    std::printf("%s %.1f\n", holder, growth / static_cast<double>(files));
}

template <class Act> void report(const char* holder, std::size_t files, Act act)
{
    const std::size_t before = heldBytes();
    act();
    report(holder, before, files);
}

void measureParser(const char* records, const char* values, const casetable::Reading& reading,
                   const FolderCrawler::Result& result)
{
    const auto parser = reading.makeParser();
    report(records, result.files.size(), [&] {
        for (const std::string& file : result.files)
            parser->appendRawFilePath(file);
    });
    report(values, result.files.size(),
           [&] { parser->applyMetadataPatternList(reading.patterns()); });
}

void measure(const char* root)
{
    casetable::FileSystem fileSystem;
    FolderCrawler crawler(casetable::fileSystemRoot(fileSystem, root));
    const std::size_t before = heldBytes();
    crawler.start();
    crawler.wait();
    const FolderCrawler::Result& result = crawler.result();
    const std::size_t files = result.files.size();
    report("crawlersFileList", before, files);

    const auto empty = campaign::makeImporter(std::make_unique<EmptyParser>());
    report("importersFileList", files, [&] { empty->setCrawlResult(result); });

    measureParser("parsersRecords", "valuesAndCases", casetable::Reading(campaign::patterns()),
                  result);
    measureParser("templateParsersRecords", "templateParsersCases",
                  casetable::Reading(casetable::TemplateList({campaign::pathTemplate})), result);

    const auto importer = campaign::makeImporter();
    campaign::TableKeeper context;
    importer->setCrawlResult(result);
    importer->setMetadataPatternList(campaign::patterns());
    report("table", files, [&] { importer->extract(context); });

    const campaign::IdentifierList provider;
    std::unique_ptr<AuxFileIdentifierValidator> validator;
    boost::shared_ptr<AuxFileCollectionInterface> collection;
    report("validator", files, [&] {
        validator = std::make_unique<AuxFileIdentifierValidator>(
            provider, importer->identifiedAuxFiles(),
            boost::make_shared<casetable::PlainTagValidator>());
    });
    report("auxFiles", files, [&] { collection = validator->auxFiles(); });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: memory ROOT\n";
        return 2;
    }
    measure(argv[1]);
}
