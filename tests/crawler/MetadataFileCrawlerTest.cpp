#include "crawler/MetadataFileCrawler.h"

#include <list>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <QString>

#include <gtest/gtest.h>

#include "crawler/CrawlerBasicImporterParser.h"
#include "host/ExceptionBase.h"
#include "tests/crawler/Doubles.h"

namespace {

using doubles::Calls;
using doubles::crawlResult;
using doubles::EmptyCollection;
using doubles::FileSystem;
using doubles::makeImporter;
using doubles::MemoryFilePtr;
using doubles::ParserRecord;
using doubles::ParserRecordPtr;
using doubles::RecordingContext;
using doubles::StubAuxFile;

using Files = std::list<std::string>;
using ImporterPtr = std::unique_ptr<MetadataFileCrawler>;

/// An importer over a recording parser, and a readable root folder.
struct Arrangement {
    FileSystem disk;
    MemoryFilePtr root = disk.directory("/r");
    ParserRecordPtr parser = std::make_shared<ParserRecord>();
    ImporterPtr importer = makeImporter(parser);
};

/// The message of the host exception that the importer throws at `result`; empty if none.
std::string messageOf(MetadataFileCrawler& importer, const FolderCrawler::Result& result)
{
    try {
        importer.setCrawlResult(result);
    } catch (const ortelo::ExceptionBase& exception) {
        EXPECT_FALSE(exception.flag());
        return exception.what();
    }
    return std::string();
}

} // namespace

TEST(MetadataFileCrawler, TakesTheParserOutOfItsArgument)
{
    const ParserRecordPtr record = std::make_shared<ParserRecord>();
    bool leftEmpty = false;

    const ImporterPtr importer = makeImporter(new doubles::RecordingParser(record), &leftEmpty);

    EXPECT_TRUE(leftEmpty);
    EXPECT_EQ(Calls{}, record->log->calls());
}

TEST(MetadataFileCrawler, AcceptsANullParserAtConstruction)
{
    const ImporterPtr importer =
        makeImporter(static_cast<CrawlerImporterParserInterface*>(nullptr));

    EXPECT_FALSE(importer->folder());
    EXPECT_TRUE(importer->files().empty());
}

TEST(MetadataFileCrawler, DestroysTheParserOnce)
{
    Arrangement given;

    given.importer.reset();

    EXPECT_EQ((Calls{"parser destroyed"}), given.parser->log->calls());
}

TEST(MetadataFileCrawler, HasNeitherFolderNorFilesBeforeTheFirstResult)
{
    const Arrangement given;

    EXPECT_FALSE(given.importer->folder());
    EXPECT_TRUE(given.importer->files().empty());
}

TEST(MetadataFileCrawler, TakesInFolderAndFilesAndAppendsThemInListOrder)
{
    const Arrangement given;

    given.importer->setCrawlResult(crawlResult(given.root, {"z", "a/b", "z", "a"}));

    EXPECT_EQ(given.root, given.importer->folder());
    EXPECT_EQ((Files{"z", "a/b", "z", "a"}), given.importer->files());
    EXPECT_EQ((Calls{"appendRawFilePath(z)", "appendRawFilePath(a/b)", "appendRawFilePath(z)",
                     "appendRawFilePath(a)"}),
              given.parser->log->calls());
    EXPECT_EQ((Calls{"/r exists", "/r isDirectory", "/r isReadable"}), given.disk.log->calls());
}

TEST(MetadataFileCrawler, RefusesAFolderThatDoesNotExist)
{
    const Arrangement given;
    given.root->present = false;

    EXPECT_EQ("The specified folder: /r does not exist.",
              messageOf(*given.importer, crawlResult(given.root, {"a"})));
    EXPECT_EQ((Calls{"/r exists", "/r fullPath"}), given.disk.log->calls());
}

TEST(MetadataFileCrawler, RefusesAFolderThatIsAFile)
{
    const Arrangement given;
    const MemoryFilePtr file = given.disk.file("C:\\x y");

    EXPECT_EQ("The specified path: C:\\x y must be a directory.",
              messageOf(*given.importer, crawlResult(file, {"a"})));
    EXPECT_EQ((Calls{"C:\\x y exists", "C:\\x y isDirectory", "C:\\x y fullPath"}),
              given.disk.log->calls());
}

TEST(MetadataFileCrawler, RefusesAFolderThatIsNotReadable)
{
    const Arrangement given;
    given.root->readable = false;

    EXPECT_EQ("The specified path: /r is not readable.",
              messageOf(*given.importer, crawlResult(given.root, {"a"})));
    EXPECT_EQ((Calls{"/r exists", "/r isDirectory", "/r isReadable", "/r fullPath"}),
              given.disk.log->calls());
}

TEST(MetadataFileCrawler, HoldsTheFolderOfAResultUntilItHasRefusedIt)
{
    const Arrangement given;
    MemoryFilePtr lost = given.disk.directory("/lost");
    FolderCrawler::Result result = crawlResult(lost);
    lost->present = false;
    lost->hook = [&](const std::string&) {
        lost.reset();
        result.folder.reset();
    };

    EXPECT_EQ("The specified folder: /lost does not exist.", messageOf(*given.importer, result));
}

TEST(MetadataFileCrawler, TestsExistenceThenKindThenReadability)
{
    struct Row {
        bool present;
        bool directory;
        bool readable;
        const char* message;
    };
    const Row rows[] = {
        {false, false, false, "The specified folder: /r does not exist."},
        {false, false, true, "The specified folder: /r does not exist."},
        {false, true, false, "The specified folder: /r does not exist."},
        {false, true, true, "The specified folder: /r does not exist."},
        {true, false, false, "The specified path: /r must be a directory."},
        {true, false, true, "The specified path: /r must be a directory."},
        {true, true, false, "The specified path: /r is not readable."},
        {true, true, true, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.present << row.directory << row.readable);
        const Arrangement given;
        given.root->present = row.present;
        given.root->directory = row.directory;
        given.root->readable = row.readable;
        EXPECT_EQ(row.message, messageOf(*given.importer, crawlResult(given.root)));
    }
}

TEST(MetadataFileCrawler, ChangesNothingWhenItRefusesAResult)
{
    const Arrangement given;
    given.importer->setCrawlResult(crawlResult(given.root, {"a"}));
    const Calls before = given.parser->log->calls();

    for (bool doubles::MemoryFile::*flaw :
         {&doubles::MemoryFile::present, &doubles::MemoryFile::directory,
          &doubles::MemoryFile::readable}) {
        const MemoryFilePtr bad = given.disk.directory("/bad");
        (*bad).*flaw = false;
        EXPECT_THROW(given.importer->setCrawlResult(crawlResult(bad, {"b"})),
                     ortelo::ExceptionBase);
    }

    EXPECT_EQ(given.root, given.importer->folder());
    EXPECT_EQ((Files{"a"}), given.importer->files());
    EXPECT_EQ(before, given.parser->log->calls());
}

TEST(MetadataFileCrawler, StaysWithoutFolderAndFilesWhenTheFirstResultIsRefused)
{
    const Arrangement given;
    given.root->present = false;

    EXPECT_EQ("The specified folder: /r does not exist.",
              messageOf(*given.importer, crawlResult(given.root, {"a"})));

    EXPECT_FALSE(given.importer->folder());
    EXPECT_TRUE(given.importer->files().empty());
}

TEST(MetadataFileCrawler, AcceptsTheResultOfAFailedCrawl)
{
    const Arrangement given;
    FolderCrawler::Result result = crawlResult(given.root, {"a"});
    result.errorString = QStringLiteral("The specified directory is not readable.");

    given.importer->setCrawlResult(result);

    EXPECT_EQ((Files{"a"}), given.importer->files());
    EXPECT_EQ((Calls{"appendRawFilePath(a)"}), given.parser->log->calls());
}

TEST(MetadataFileCrawler, GivesTheParserNoPathAndHasNoCasesForAnEmptyResult)
{
    const Arrangement given;

    given.importer->setCrawlResult(crawlResult(given.root));

    EXPECT_EQ(Calls{}, given.parser->log->calls());

    const ImporterPtr importer = makeImporter(new CrawlerBasicImporterParser);
    importer->setCrawlResult(crawlResult(given.root));
    for (const std::vector<MetadataPattern>& patterns :
         {std::vector<MetadataPattern>{},
          {{"", MetadataPattern::StringValue}},
          {{"T", MetadataPattern::NumberValue}, {"P", MetadataPattern::StringValue}}}) {
        importer->setMetadataPatternList(patterns);
        EXPECT_FALSE(importer->hasCases());
    }
}

TEST(MetadataFileCrawler, ShowsTheSecondResultOnlyButLeavesTheFirstWithTheParser)
{
    const Arrangement given;
    const MemoryFilePtr second = given.disk.directory("/s");
    given.importer->setCrawlResult(crawlResult(given.root, {"a", "b"}));

    given.importer->setCrawlResult(crawlResult(second, {"c"}));

    EXPECT_EQ(second, given.importer->folder());
    EXPECT_EQ((Files{"c"}), given.importer->files());
    EXPECT_EQ((Calls{"appendRawFilePath(a)", "appendRawFilePath(b)", "appendRawFilePath(c)"}),
              given.parser->log->calls());
}

TEST(MetadataFileCrawler, KeepsOneFileListObjectForItsLife)
{
    const Arrangement given;
    const Files* before = &given.importer->files();
    given.importer->setCrawlResult(crawlResult(given.root, {"a"}));
    given.importer->setCrawlResult(crawlResult(given.root, {"b"}));

    EXPECT_EQ(before, &given.importer->files());
}

TEST(MetadataFileCrawler, CopiesTheResultSoThatTheCallersMayChange)
{
    const Arrangement given;
    FolderCrawler::Result result = crawlResult(given.root, {"a"});
    given.importer->setCrawlResult(result);

    result.files.clear();
    result.folder.reset();

    EXPECT_EQ((Files{"a"}), given.importer->files());
    EXPECT_EQ(given.root, given.importer->folder());
}

TEST(MetadataFileCrawler, HasTakenTheResultWhenItAppends)
{
    const Arrangement given;
    given.parser->hook = [&](const std::string&) {
        EXPECT_EQ(given.root, given.importer->folder());
        EXPECT_EQ((Files{"a", "b"}), given.importer->files());
    };

    given.importer->setCrawlResult(crawlResult(given.root, {"a", "b"}));

    EXPECT_EQ(2U, given.parser->log->calls().size());
}

TEST(MetadataFileCrawler, AppendsTheFilesThatItTookAlsoWhenTheCallersChangeMeanwhile)
{
    const Arrangement given;
    FolderCrawler::Result result = crawlResult(given.root, {"a", "b", "c"});
    given.parser->hook = [&](const std::string&) {
        for (std::string& file : result.files)
            file = "changed";
    };

    given.importer->setCrawlResult(result);

    EXPECT_EQ((Calls{"appendRawFilePath(a)", "appendRawFilePath(b)", "appendRawFilePath(c)"}),
              given.parser->log->calls());
    EXPECT_EQ((Files{"a", "b", "c"}), given.importer->files());
}

TEST(MetadataFileCrawler, NeverClearsTheParsersPaths)
{
    const Arrangement given;
    const std::vector<MetadataPattern> patterns{{"T", MetadataPattern::NumberValue}};
    for (int i = 0; i < 3; ++i) {
        given.importer->setCrawlResult(crawlResult(given.root, {"a"}));
        given.importer->setMetadataPatternList(patterns);
    }

    const Calls round{"appendRawFilePath(a)", "applyMetadataPatternList(1)"};
    EXPECT_EQ((Calls{round[0], round[1], round[0], round[1], round[0], round[1]}),
              given.parser->log->calls());
}

TEST(MetadataFileCrawler, GivesTheParserTheCallersOwnPatternVector)
{
    const Arrangement given;
    const std::vector<MetadataPattern> patterns{{"T", MetadataPattern::NumberValue},
                                                {"P", MetadataPattern::StringValue}};

    given.importer->setMetadataPatternList(patterns);

    EXPECT_EQ(&patterns, given.parser->appliedList);
    EXPECT_EQ((Calls{"T", "P"}), given.parser->appliedMarkers);
    EXPECT_EQ((Calls{"applyMetadataPatternList(2)"}), given.parser->log->calls());
}

TEST(MetadataFileCrawler, KeepsACopyOfThePatternList)
{
    const Arrangement given;
    given.parser->cases = {{"1", "2"}};
    given.importer->setCrawlResult(crawlResult(given.root));
    std::vector<MetadataPattern> patterns{{"T", MetadataPattern::StringValue},
                                          {"P", MetadataPattern::StringValue}};
    given.importer->setMetadataPatternList(patterns);
    patterns.clear();

    RecordingContext context;
    given.importer->extract(context);

    ASSERT_EQ(2, context.table->GetNumberOfColumns());
    EXPECT_STREQ("T", context.table->GetColumnName(0));
    EXPECT_STREQ("P", context.table->GetColumnName(1));
}

TEST(MetadataFileCrawler, EmptiesItsPatternListAndStillAppliesIt)
{
    const Arrangement given;
    given.parser->cases = {{"1"}};
    given.importer->setCrawlResult(crawlResult(given.root));
    given.importer->setMetadataPatternList({{"T", MetadataPattern::StringValue}});

    given.importer->setMetadataPatternList(std::vector<MetadataPattern>());

    EXPECT_EQ("applyMetadataPatternList(0)", given.parser->log->calls().back());
    RecordingContext context;
    given.importer->extract(context);
    EXPECT_EQ(0, context.table->GetNumberOfColumns());
}

TEST(MetadataFileCrawler, HasCasesWhenTheParserDefinedOne)
{
    const Arrangement given;
    EXPECT_FALSE(given.importer->hasCases());

    given.parser->cases.resize(1);
    EXPECT_TRUE(given.importer->hasCases());

    given.parser->cases.resize(3);
    EXPECT_TRUE(given.importer->hasCases());
    EXPECT_EQ((Calls{"numDefinedCases()", "numDefinedCases()", "numDefinedCases()"}),
              given.parser->log->calls());
}

TEST(MetadataFileCrawler, IdentifiesTheMatchedFilesInTheParsersOrderAskingEachOnce)
{
    const Arrangement given;
    std::vector<boost::shared_ptr<StubAuxFile>> files;
    for (const bool matched : {false, true, true, false, true, false})
        files.push_back(boost::make_shared<StubAuxFile>(matched));
    given.parser->files.assign(files.begin(), files.end());

    const std::vector<boost::shared_ptr<AuxFileInfoInterface>> identified =
        given.importer->identifiedAuxFiles();

    EXPECT_EQ((std::vector<boost::shared_ptr<AuxFileInfoInterface>>{files[1], files[2], files[4]}),
              identified);
    for (const boost::shared_ptr<StubAuxFile>& file : files)
        EXPECT_EQ(1, file->matchedAsked);
    EXPECT_EQ((Calls{"crawlerFilePathList()"}), given.parser->log->calls());
}

TEST(MetadataFileCrawler, IdentifiesNoFileBeforeAPatternListOrWithoutAMatch)
{
    const FileSystem disk;
    const ImporterPtr importer = makeImporter(new CrawlerBasicImporterParser);
    importer->setCrawlResult(crawlResult(disk.directory("/r"), {"a/T1.dat", "b.txt"}));
    EXPECT_TRUE(importer->identifiedAuxFiles().empty());

    importer->setMetadataPatternList({{"nowhere", MetadataPattern::StringValue}});
    EXPECT_TRUE(importer->identifiedAuxFiles().empty());

    importer->setMetadataPatternList({{"T", MetadataPattern::NumberValue}});
    ASSERT_EQ(1U, importer->identifiedAuxFiles().size());
    EXPECT_EQ("a/T1.dat", importer->identifiedAuxFiles().front()->filePath());
}

/// The identified files, each as "path in case".
std::vector<std::string> identified(const MetadataFileCrawler& importer)
{
    std::vector<std::string> files;
    for (const auto& file : importer.identifiedAuxFiles())
        files.push_back(file->filePath() + " in " + std::to_string(file->caseIndex()));
    return files;
}

TEST(MetadataFileCrawler, IdentifiesTheFilesOfEarlierMatchesWhenThePatternListIsEmpty)
{
    const FileSystem disk;
    const ImporterPtr importer = makeImporter(new CrawlerBasicImporterParser);
    importer->setCrawlResult(crawlResult(disk.directory("/r"), {"T1", "T2", "x"}));
    importer->setMetadataPatternList({{"T", MetadataPattern::NumberValue}});

    importer->setMetadataPatternList({});

    EXPECT_FALSE(importer->hasCases());
    EXPECT_EQ((std::vector<std::string>{"T1 in 0", "T2 in 1"}), identified(*importer));
}

TEST(MetadataFileCrawler, IdentifiesTheFilesOfEarlierMatchesBehindThePathAtWhichPatternsThrew)
{
    const FileSystem disk;
    const ImporterPtr importer = makeImporter(new CrawlerBasicImporterParser);
    importer->setCrawlResult(
        crawlResult(disk.directory("/r"), {"1", "2.abx/bcy/", "3.abxx/bcyy/", "4.abc", "5"}));
    importer->setMetadataPatternList({{"", MetadataPattern::NumberValue}});

    EXPECT_THROW(importer->setMetadataPatternList(
                     {{".ab", MetadataPattern::StringValue}, {"bc", MetadataPattern::StringValue}}),
                 std::out_of_range);

    // The first does not match the new list; the last two were not reached.
    EXPECT_EQ(
        (std::vector<std::string>{"2.abx/bcy/ in 0", "3.abxx/bcyy/ in 1", "4.abc in 3", "5 in 4"}),
        identified(*importer));
}

TEST(MetadataFileCrawler, AnswersMetadataForPathsAsTheyStandInItsFilesAndForNoOthers)
{
    const FileSystem disk;
    const ImporterPtr importer = makeImporter(new CrawlerBasicImporterParser);
    importer->setCrawlResult(crawlResult(disk.directory("/r"), {"a/T1.dat"}));
    importer->setMetadataPatternList({{"T", MetadataPattern::NumberValue}});

    ASSERT_EQ(1U, importer->metadataInfoList(importer->files().front()).size());
    EXPECT_EQ("1", importer->metadataInfoList("a/T1.dat").front().value);
    for (const std::string name : {"T1.dat", "/r/a/T1.dat", "./a/T1.dat", "a//T1.dat", ""})
        EXPECT_TRUE(importer->metadataInfoList(name).empty()) << name;
}

TEST(MetadataFileCrawler, ReplacesTheAuxFilesToLoadEvenByNothing)
{
    const Arrangement given;
    given.importer->setCrawlResult(crawlResult(given.root));
    const auto first = boost::make_shared<EmptyCollection>();
    const auto second = boost::make_shared<EmptyCollection>();
    RecordingContext context;

    given.importer->setAuxFilesToLoad(first);
    given.importer->setAuxFilesToLoad(second);
    given.importer->extract(context);
    EXPECT_EQ(second, context.auxFiles);
    EXPECT_EQ(1, first.use_count());

    given.importer->setAuxFilesToLoad(boost::shared_ptr<AuxFileCollectionInterface>());
    given.importer->extract(context);
    EXPECT_FALSE(context.auxFiles);
    EXPECT_EQ(1, second.use_count());
}

TEST(MetadataFileCrawler, LetsTheHostsExceptionsPassUnchanged)
{
    for (const char* call : {"/r exists", "/r isDirectory", "/r isReadable"}) {
        SCOPED_TRACE(call);
        const Arrangement given;
        given.root->hook = [&](const std::string& made) {
            if (made == call)
                throw std::range_error("host");
        };
        try {
            given.importer->setCrawlResult(crawlResult(given.root, {"a"}));
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::range_error& exception) {
            EXPECT_STREQ("host", exception.what());
        }
        EXPECT_FALSE(given.importer->folder());
        EXPECT_EQ(Calls{}, given.parser->log->calls());
    }
}

TEST(MetadataFileCrawler, LetsAHostsOwnExceptionWithItsFlagPassUnchanged)
{
    const Arrangement given;
    given.root->hook = [](const std::string&) { throw ortelo::ExceptionBase("offline", true); };
    try {
        given.importer->setCrawlResult(crawlResult(given.root));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const ortelo::ExceptionBase& exception) {
        EXPECT_STREQ("offline", exception.what());
        EXPECT_TRUE(exception.flag());
    }
}

TEST(MetadataFileCrawler, LetsTheParsersExceptionsPassUnchanged)
{
    const Arrangement given;
    given.parser->hook = [](const std::string&) { throw std::bad_alloc(); };
    EXPECT_THROW(given.importer->setCrawlResult(crawlResult(given.root, {"a"})), std::bad_alloc);

    given.parser->hook = [](const std::string& call) { throw std::out_of_range(call); };
    EXPECT_THROW(given.importer->setMetadataPatternList({}), std::out_of_range);
    EXPECT_THROW(given.importer->hasCases(), std::out_of_range);
    EXPECT_THROW(given.importer->identifiedAuxFiles(), std::out_of_range);
    EXPECT_THROW(given.importer->metadataInfoList("a"), std::out_of_range);
}

TEST(MetadataFileCrawler, LetsGoOfResultThenAuxFilesThenParser)
{
    Arrangement given;
    const doubles::CallLogPtr log = given.parser->log;
    boost::shared_ptr<FileInfoInterface const> folder(
        given.root.get(), [log](const FileInfoInterface*) { log->add("folder released"); });
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles(
        new EmptyCollection, [log](AuxFileCollectionInterface* collection) {
            log->add("auxiliary files released");
            delete collection;
        });
    given.importer->setCrawlResult(crawlResult(folder));
    given.importer->setAuxFilesToLoad(auxFiles);
    folder.reset();
    auxFiles.reset();
    ASSERT_EQ(Calls{}, log->calls());

    given.importer.reset();

    EXPECT_EQ((Calls{"folder released", "auxiliary files released", "parser destroyed"}),
              log->calls());
}

namespace {

/// Unambiguous only while the importer inherits both interfaces as virtual bases.
struct ExtendedImporter : MetadataFileCrawler,
                          virtual ImporterInterface,
                          virtual MetadataInfoProviderInterface {};

} // namespace

TEST(MetadataFileCrawler, InheritsItsInterfacesAsVirtualBases)
{
    EXPECT_TRUE((std::is_convertible<ExtendedImporter*, ImporterInterface*>::value));
    EXPECT_TRUE((std::is_convertible<ExtendedImporter*, MetadataInfoProviderInterface*>::value));
    EXPECT_TRUE(std::has_virtual_destructor<MetadataFileCrawler>::value);
    EXPECT_FALSE(std::is_copy_constructible<MetadataFileCrawler>::value);
    EXPECT_FALSE(std::is_copy_assignable<MetadataFileCrawler>::value);
}
