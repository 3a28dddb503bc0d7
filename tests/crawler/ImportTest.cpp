#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <vtkSmartPointer.h>
#include <vtkTable.h>
#include <vtkVariant.h>

#include <gtest/gtest.h>

#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"
#include "host/AuxFileCollectionInterface.h"
#include "host/AuxFileInfoInterface.h"
#include "host/TagValidator.h"
#include "host/ValidationResult.h"
#include "tests/crawler/Doubles.h"

namespace {

using doubles::FilePtr;
using doubles::FileSystem;
using doubles::makeImporter;
using doubles::MemoryFilePtr;
using doubles::RecordingContext;
using doubles::runToEnd;

using Texts = std::vector<std::string>;
using Rows = std::vector<Texts>;
using Patterns = std::vector<MetadataPattern>;

/// Accepts every tag but the empty one.
struct NonEmptyTag : TagValidator {
    ortelo::ValidationResult validate(const std::string& tag) const override
    {
        ortelo::ValidationResult result;
        if (tag.empty())
            result.setErrorString("A tag is needed.");
        return result;
    }
};

struct FixedIdentifiers : AuxFileIdentifierValidator::IdentifierProviderInterface {
    explicit FixedIdentifiers(std::vector<AuxFileIdentifier> theList) : list(std::move(theList)) {}
    std::vector<AuxFileIdentifier> identifiers() const override { return list; }

    std::vector<AuxFileIdentifier> list;
};

/// Two runs at two temperatures, and files that belong to no run.
MemoryFilePtr measurements(const FileSystem& disk)
{
    const auto run = [&](const std::string& path) {
        return disk.directory(path, {disk.file(path + "/probe.mesh"), disk.file(path + "/log.txt"),
                                     disk.directory(path + "/empty")});
    };
    return disk.directory(
        "/lab", {disk.file("/lab/readme.txt"), run("/lab/run_T300_Pair"), run("/lab/run_T20_Pair"),
                 disk.directory("/lab/more", {run("/lab/more/run_T300_Pair"),
                                              run("/lab/more/run_T-1.5e3_Pvacuum")})});
}

const Patterns& temperatureAndGas()
{
    static const Patterns patterns{{"_T", MetadataPattern::NumberValue},
                                   {"_P", MetadataPattern::StringValue}};
    return patterns;
}

/// Crawls `root` in the crawler's thread and hands the result to a new importer.
std::unique_ptr<MetadataFileCrawler> importTree(const FilePtr& root, const Patterns& patterns)
{
    FolderCrawler crawler(root);
    runToEnd(crawler);
    std::unique_ptr<MetadataFileCrawler> importer = makeImporter(new CrawlerBasicImporterParser);
    importer->setCrawlResult(crawler.result());
    importer->setMetadataPatternList(patterns);
    return importer;
}

Rows rowsOf(vtkTable& table)
{
    Rows rows;
    for (vtkIdType row = 0; row < table.GetNumberOfRows(); ++row) {
        rows.emplace_back();
        for (vtkIdType column = 0; column < table.GetNumberOfColumns(); ++column)
            rows.back().emplace_back(table.GetValue(row, column).ToString());
    }
    return rows;
}

} // namespace

TEST(Import, TurnsAFolderTreeIntoACaseTableWithItsAuxFiles)
{
    const FileSystem disk;
    const auto importer = importTree(measurements(disk), temperatureAndGas());
    const FixedIdentifiers identifiers(
        {{"*.mesh", "geometry"}, {"", ""}, {"*T300*.txt", "notes"}, {"*.txt", "other notes"}});
    AuxFileIdentifierValidator validator(identifiers, importer->identifiedAuxFiles(),
                                         boost::make_shared<NonEmptyTag>());
    ASSERT_TRUE(validator.isValid());
    importer->setAuxFilesToLoad(validator.auxFiles());
    RecordingContext context;

    importer->extract(context);

    // Numbered by first appearance in byte order: more/run_T-1.5e3, more/run_T300, run_T20.
    EXPECT_STREQ("_T", context.table->GetColumnName(0));
    EXPECT_STREQ("_P", context.table->GetColumnName(1));
    EXPECT_EQ((Rows{{"-1.5e3", "vacuum"}, {"300", "air"}, {"20", "air"}}), rowsOf(*context.table));
    ASSERT_TRUE(context.auxFiles);
    EXPECT_EQ((std::set<std::string>{"geometry", "notes", "other notes"}),
              context.auxFiles->tags());
    ASSERT_EQ(3U, context.auxFiles->indexCount());
    EXPECT_EQ((Texts{"more/run_T300_Pair/probe.mesh", "run_T300_Pair/probe.mesh"}),
              context.auxFiles->filePaths(1, "geometry"));
    EXPECT_EQ((Texts{"more/run_T300_Pair/log.txt", "run_T300_Pair/log.txt"}),
              context.auxFiles->filePaths(1, "notes"));
    EXPECT_EQ(Texts{}, context.auxFiles->filePaths(1, "other notes"));
    EXPECT_EQ((Texts{"run_T20_Pair/log.txt"}), context.auxFiles->filePaths(2, "other notes"));
    EXPECT_EQ((Texts{"more/run_T-1.5e3_Pvacuum/probe.mesh"}),
              context.auxFiles->filePaths(0, "geometry"));
}

TEST(Import, IdentifiesMatchedFilesOnlyAndAnswersTheirMetadata)
{
    const FileSystem disk;
    const auto importer = importTree(measurements(disk), temperatureAndGas());

    ASSERT_EQ(9U, importer->files().size());
    EXPECT_EQ("readme.txt", importer->files().front());
    EXPECT_EQ(8U, importer->identifiedAuxFiles().size());
    EXPECT_TRUE(importer->hasCases());
    EXPECT_TRUE(importer->metadataInfoList("readme.txt").empty());
    const std::vector<MetadataInfo> infos = importer->metadataInfoList("run_T20_Pair/log.txt");
    ASSERT_EQ(2U, infos.size());
    EXPECT_EQ("20", infos[0].value);
    EXPECT_EQ("air", infos[1].value);
    EXPECT_EQ(9U, infos[1].valuePosition);
}

TEST(Import, TakesThePatternListAgainAfterAFurtherResult)
{
    const FileSystem disk;
    const auto importer = importTree(disk.directory("/a", {disk.file("/a/x_T1_")}),
                                     {{"_T", MetadataPattern::NumberValue}});
    FolderCrawler second(disk.directory("/b", {disk.file("/b/w_T2_")}));
    runToEnd(second);
    importer->setCrawlResult(second.result());
    RecordingContext context;
    importer->extract(context);
    EXPECT_EQ((Rows{{"1"}}), rowsOf(*context.table));

    importer->setMetadataPatternList({{"_T", MetadataPattern::NumberValue}});
    importer->extract(context);

    EXPECT_EQ((Rows{{"2"}, {"1"}}), rowsOf(*context.table));
}

TEST(Import, GoesOnWithThePartOfATreeThatWasReadable)
{
    const FileSystem disk;
    const MemoryFilePtr locked = disk.directory("/r/locked");
    locked->readable = false;
    const MemoryFilePtr root =
        disk.directory("/r", {disk.file("/r/x_T1_"), locked, disk.file("/r/x_T2_")});
    FolderCrawler crawler(root);
    runToEnd(crawler);
    ASSERT_EQ("The specified path: /r/locked is not readable.",
              crawler.result().errorString.toStdString());

    const auto importer = makeImporter(new CrawlerBasicImporterParser);
    importer->setCrawlResult(crawler.result());
    importer->setMetadataPatternList({{"_T", MetadataPattern::NumberValue}});
    RecordingContext context;
    importer->extract(context);

    EXPECT_EQ((Rows{{"1"}}), rowsOf(*context.table));
}

TEST(Import, GroupsRandomTreesByTheirValues)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::mt19937 random(seed);
        const FileSystem disk;
        // Path and values of every file; the map sorts the paths as the parser does.
        std::map<std::string, Texts> values;
        std::vector<MemoryFilePtr> folders;
        for (auto folder = random() % 6; folder > 0; --folder) {
            const std::string gas = random() % 2 ? "air" : "argon";
            const std::string name = std::to_string(random() % 100) + "_P" + gas;
            std::vector<MemoryFilePtr> files;
            for (auto file = random() % 6; file > 0; --file) {
                const std::string number = std::to_string(random() % 4);
                const std::string leaf = std::to_string(random() % 100) + "_T" + number + ".dat";
                files.push_back(disk.file("/r/" + name + "/" + leaf));
                values[name + "/" + leaf] = {gas, number};
            }
            folders.push_back(disk.directory("/r/" + name, files));
        }
        Rows expected;
        std::map<std::string, std::size_t> caseOf;
        for (const auto& file : values) {
            std::size_t index = 0;
            while (index < expected.size() && expected[index] != file.second)
                ++index;
            if (index == expected.size())
                expected.push_back(file.second);
            caseOf[file.first] = index;
        }
        SCOPED_TRACE("seed " + std::to_string(seed) + " " + testing::PrintToString(values));

        const auto importer =
            importTree(disk.directory("/r", folders), {{"_P", MetadataPattern::StringValue},
                                                       {"_T", MetadataPattern::NumberValue}});
        RecordingContext context;
        importer->extract(context);

        ASSERT_EQ(expected, rowsOf(*context.table));
        std::map<std::string, std::size_t> found;
        for (const auto& file : importer->identifiedAuxFiles())
            found[file->filePath()] = file->caseIndex();
        ASSERT_EQ(caseOf, found);
    }
}
