#include "crawler/MetadataFileCrawler.h"

#include <cstddef>
#include <iostream>
#include <list>
#include <memory>

#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <vtkSmartPointer.h>
#include <vtkTable.h>
#include <vtkVariant.h>

#include <gtest/gtest.h>

#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataPattern.h"
#include "host/AuxFileInfoInterface.h"
#include "host/ExceptionBase.h"
#include "host/FileInfoInterface.h"
#include "host/ImportLoadContextInterface.h"
#include "tests/crawler/AllocationFaults.h"
#include "tests/crawler/Doubles.h"

namespace {

using doubles::failEverywhere;
using doubles::makeImporter;

// Too long to be kept without memory.
const std::string stem = "a/folder/with/a/rather/long/name/";
const std::list<std::string> firstFiles = {stem + "Mach0.80/of the first and foremost/a.dat"};
const std::list<std::string> secondFiles = {
    stem + "Mach0.81/of the first and foremost/name of the case/b.dat",
    stem + "Mach1D5/of the second after the first/name of the case/c.dat",
    stem + "Mach0.800000000000000001/of the second after the first/name of the case/d.dat",
    stem + "Mach0.81/of the first and foremost/name of the case/e.dat", stem + "unmatched.dat"};
const std::string longMarker = "/folder/with/a/rather/long/name/Mach";
const std::vector<MetadataPattern> firstPatterns = {{longMarker, MetadataPattern::NumberValue},
                                                    {"of the ", MetadataPattern::StringValue}};
// The same column three times: two names must be made unique.
const std::vector<MetadataPattern> secondPatterns = {{"/", MetadataPattern::StringValue},
                                                     {"/", MetadataPattern::StringValue},
                                                     {"/", MetadataPattern::StringValue},
                                                     {"Mach", MetadataPattern::NumberValue},
                                                     {"of the ", MetadataPattern::StringValue}};

// Below a path too long to be kept without memory, too.
doubles::MemoryFilePtr file(const std::string& name)
{
    return doubles::memoryFile("/the/full/path/of/the/entry/" + name);
}

doubles::MemoryFilePtr folder(const std::string& name,
                              std::vector<doubles::MemoryFilePtr> entries = {})
{
    return doubles::memoryFolder("/the/full/path/of/the/entry/" + name, std::move(entries));
}

std::string lines(const std::list<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += text + "\n";
    return all;
}

std::string lines(const std::vector<boost::shared_ptr<AuxFileInfoInterface>>& files)
{
    std::string all;
    for (const auto& file : files)
        all +=
            file->filePath() + (file->isMatched() ? std::to_string(file->caseIndex()) : "-") + "\n";
    return all;
}

std::string lines(const std::vector<MetadataInfo>& infos)
{
    std::string all;
    for (const MetadataInfo& info : infos)
        all += std::to_string(info.patternPosition) + " " + info.value + "\n";
    return all;
}

std::string lines(vtkTable& table)
{
    std::string all;
    for (vtkIdType column = 0; column < table.GetNumberOfColumns(); ++column) {
        all += std::string(table.GetColumnName(column)) + ":";
        for (vtkIdType row = 0; row < table.GetNumberOfRows(); ++row)
            all += " " + table.GetValue(row, column).ToString();
        all += "\n";
    }
    return all;
}

/// Takes the result and no memory.
struct PlainContext : ImportLoadContextInterface {
    void setMetadataTable(vtkSmartPointer<vtkTable> theTable) override
    {
        table = theTable, ++given;
    }
    void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>&) override { ++given; }
    vtkSmartPointer<vtkTable> table;
    int given = 0;
};

/// An importer over the module's own parser, which took in the first files and patterns.
struct Import {
    Import() : parser(new CrawlerBasicImporterParser), importer(makeImporter(parser))
    {
        first.folder = folder("first");
        first.files = firstFiles;
        second.folder = secondFolder;
        second.files = secondFiles;
        importer->setCrawlResult(first);
        importer->setMetadataPatternList(firstPatterns);
    }
    Import(const Import&) = delete;
    Import& operator=(const Import&) = delete;

    CrawlerBasicImporterParser* parser; // Owned by the importer.
    std::unique_ptr<MetadataFileCrawler> importer;
    doubles::MemoryFilePtr secondFolder = folder("second");
    FolderCrawler::Result first;
    FolderCrawler::Result second;
    PlainContext context;
};

std::unique_ptr<Import> makeImport()
{
    return std::make_unique<Import>();
}

std::unique_ptr<Import> makeSecondImport()
{
    auto import = makeImport();
    import->importer->setCrawlResult(import->second);
    import->importer->setMetadataPatternList(secondPatterns);
    return import;
}

std::vector<std::string> columnNamesOf(Import& import)
{
    import.importer->extract(import.context);
    vtkTable& table = *import.context.table;
    std::vector<std::string> names;
    for (vtkIdType j = 0; j < table.GetNumberOfColumns(); ++j)
        names.emplace_back(table.GetColumnName(j));
    return names;
}

std::string state(Import& import)
{
    return import.importer->folder()->fileName() + "\n" + lines(import.importer->files()) +
           lines(import.parser->crawlerFilePathList());
}

TEST(AllocationFailure, GivesTheParserBackWhenAnImporterCannotBeMade)
{
    struct Nothing {};
    failEverywhere(
        "construction", [] { return std::make_unique<Nothing>(); },
        [](Nothing&) { return makeImporter(new CrawlerBasicImporterParser); },
        [](Nothing&, const auto& importer) { return lines(importer->files()) + "made"; });
}

TEST(AllocationFailure, LeavesACrawlResultTakenWholeOrNotAtAll)
{
    failEverywhere(
        "setCrawlResult", makeImport,
        [](Import& import) { return import.importer->setCrawlResult(import.second), 0; },
        [](Import& import, int) { return state(import); },
        [](Import& import) {
            const std::size_t appended = import.parser->crawlerFilePathList().size() - 1;
            if (import.importer->folder() == import.first.folder) {
                EXPECT_EQ(import.first.files, import.importer->files());
                EXPECT_EQ(0u, appended);
            } else {
                EXPECT_EQ(import.second.folder, import.importer->folder());
                EXPECT_EQ(import.second.files, import.importer->files());
                EXPECT_LT(appended, secondFiles.size());
            }
            EXPECT_EQ(1u, import.parser->numDefinedCases());
        });
}

TEST(AllocationFailure, ChangesNothingWhenARefusalRunsOutOfMemory)
{
    const std::string before = state(*makeImport());
    const auto makeRefused = [](bool present, bool directory, bool readable) {
        return [=] {
            auto import = makeImport();
            import->secondFolder->present = present;
            import->secondFolder->directory = directory;
            import->secondFolder->readable = readable;
            return import;
        };
    };
    const auto act = [](Import& import) -> std::string {
        try {
            import.importer->setCrawlResult(import.second);
        } catch (const ortelo::ExceptionBase& refusal) {
            return std::string(refusal.what());
        }
        return std::string();
    };
    const auto look = [](Import& import, const std::string& refusal) {
        return refusal + "\n" + state(import);
    };
    const auto holds = [&](Import& import) { EXPECT_EQ(before, state(import)); };
    failEverywhere("no folder", makeRefused(false, true, true), act, look, holds);
    failEverywhere("no directory", makeRefused(true, false, true), act, look, holds);
    failEverywhere("not readable", makeRefused(true, true, false), act, look, holds);
}

TEST(AllocationFailure, LeavesAnImporterThatCanExtractWhenItsPatternsCouldNotBeApplied)
{
    // The last list begins with what fits into the place of the old one's beginning.
    for (const std::vector<MetadataPattern>& patterns :
         {secondPatterns,
          {secondPatterns.front()},
          {},
          {firstPatterns.back(),
           {"a marker that is longer than each of the first ones",
            MetadataPattern::StringValue}}}) {
        const auto whole = makeSecondImport();
        whole->importer->setMetadataPatternList(patterns);
        const std::vector<std::string> newNames = columnNamesOf(*whole);
        whole->importer->setMetadataPatternList(firstPatterns);
        const std::vector<std::string> oldNames = columnNamesOf(*whole);
        failEverywhere(
            "setMetadataPatternList",
            [] {
                auto import = makeSecondImport();
                import->importer->setMetadataPatternList(firstPatterns);
                return import;
            },
            [&](Import& import) { return import.importer->setMetadataPatternList(patterns), 0; },
            [](Import& import, int) {
                import.importer->extract(import.context);
                return state(import) + lines(*import.context.table);
            },
            [&](Import& import) {
                const std::vector<std::string> names = columnNamesOf(import);
                EXPECT_EQ(static_cast<vtkIdType>(import.parser->numDefinedCases()),
                          import.context.table->GetNumberOfRows());
                const bool hasColumns = import.parser->numDefinedCases() > 0;
                EXPECT_TRUE(!hasColumns || names == oldNames || names == newNames)
                    << ::testing::PrintToString(names);
            });
    }
}

TEST(AllocationFailure, LeavesTheImportersAnswersAsTheyWere)
{
    failEverywhere(
        "identifiedAuxFiles", makeSecondImport,
        [](Import& import) { return import.importer->identifiedAuxFiles(); },
        [](Import& import, const auto& files) { return lines(files) + state(import); });
    failEverywhere(
        "metadataInfoList", makeSecondImport,
        [](Import& import) { return import.importer->metadataInfoList(secondFiles.front()); },
        [](Import& import, const auto& infos) { return lines(infos) + state(import); });
}

TEST(AllocationFailure, HandsNothingToTheContextWhenAnExtractionRunsOutOfMemory)
{
    for (const auto& make : {makeImport, makeSecondImport}) {
        failEverywhere(
            "extract", make,
            [](Import& import) { return import.importer->extract(import.context), 0; },
            [](Import& import, int) { return lines(*import.context.table) + state(import); },
            [](Import& import) {
                EXPECT_FALSE(import.context.table);
                EXPECT_EQ(0, import.context.given);
            });
    }
}

struct Walk {
    doubles::MemoryFilePtr locked = folder("a folder that may be locked away");
    doubles::MemoryFilePtr root =
        folder("root", {file("a file with a rather long name.dat"),
                        folder("a folder with a rather long name",
                               {file("a file with a rather long name in it.dat"), locked}),
                        file("z")});
    FolderCrawler crawler{root};
};

TEST(AllocationFailure, LeavesARunWithoutAnErrorText)
{
    for (const bool readable : {true, false}) {
        failEverywhere(
            "run",
            [=] {
                auto walk = std::make_unique<Walk>();
                walk->locked->readable = readable;
                return walk;
            },
            [](Walk& walk) { return walk.crawler.run(), 0; },
            [](Walk& walk, int) {
                return lines(walk.crawler.result().files) +
                       walk.crawler.result().errorString.toStdString();
            },
            [](Walk& walk) { EXPECT_TRUE(walk.crawler.result().errorString.isNull()); });
    }
}

TEST(AllocationFailure, LetsGoOfTheRootWhenACrawlerCannotBeMade)
{
    failEverywhere(
        "construction", [] { return std::make_unique<Walk>(); },
        [](Walk& walk) { return std::make_unique<FolderCrawler>(walk.root); },
        [](Walk& walk, const auto& crawler) {
            return std::to_string(walk.root.use_count()) + lines(crawler->result().files);
        });
}

class Total : public ::testing::Environment {
    void TearDown() override
    {
        const doubles::AllocationPoints& points = doubles::allocationPoints();
        std::cout << points.failed << " allocation points failed, " << points.survived
                  << " of them survived; " << points.spared << " of Qt and VTK spared\n";
        ::testing::Test::RecordProperty("AllocationPointsInAll", std::to_string(points.failed));
    }
};

[[maybe_unused]] const auto* const total = ::testing::AddGlobalTestEnvironment(new Total);

} // namespace
