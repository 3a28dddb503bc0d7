#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <gtest/gtest.h>

#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/FolderCrawler.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataPattern.h"
#include "host/ExceptionBase.h"
#include "host/TagValidator.h"
#include "tests/crawler/AuxFileDoubles.h"
#include "tests/crawler/Doubles.h"

namespace {

using doubles::Calls;
using doubles::crawlResult;
using doubles::FileSystem;
using doubles::makeImporter;
using doubles::MemoryFilePtr;
using doubles::ParserRecord;
using doubles::ParserRecordPtr;

using AuxFiles = std::vector<boost::shared_ptr<AuxFileInfoInterface>>;
using Files = std::list<std::string>;

/// What a host may throw.
enum class Thrown { HostException, RuntimeError, Int };

const Thrown everyKind[] = {Thrown::HostException, Thrown::RuntimeError, Thrown::Int};

[[noreturn]] void throwThe(Thrown kind)
{
    if (kind == Thrown::HostException)
        throw ortelo::ExceptionBase("of the host", true);
    if (kind == Thrown::RuntimeError)
        throw std::runtime_error("of the library");
    throw 17;
}

std::string nameOf(Thrown kind)
{
    if (kind == Thrown::HostException)
        return "ortelo::ExceptionBase of the host, true";
    return kind == Thrown::RuntimeError ? "std::runtime_error of the library" : "int 17";
}

/// What came out of `act`, in the words of nameOf(); empty when nothing did.
std::string thrownBy(const std::function<void()>& act)
{
    try {
        act();
    } catch (const ortelo::ExceptionBase& exception) {
        return std::string("ortelo::ExceptionBase ") + exception.what() +
               (exception.flag() ? ", true" : ", false");
    } catch (const std::runtime_error& exception) {
        return std::string("std::runtime_error ") + exception.what();
    } catch (int number) {
        return "int " + std::to_string(number);
    }
    return std::string();
}

/// Throws at `call`.
doubles::Hook throwAt(const std::string& call, Thrown kind)
{
    return [=](const std::string& made) {
        if (made == call)
            throwThe(kind);
    };
}

/// /r with the file a, the folder s of the files b and c, the locked folder l, and the file d.
struct Tree {
    FileSystem disk;
    MemoryFilePtr fileA = disk.file("/r/a");
    MemoryFilePtr fileB = disk.file("/r/s/b");
    MemoryFilePtr fileC = disk.file("/r/s/c");
    MemoryFilePtr folder = disk.directory("/r/s", {fileB, fileC});
    MemoryFilePtr locked = disk.directory("/r/l");
    MemoryFilePtr fileD = disk.file("/r/d");
    MemoryFilePtr root = disk.directory("/r", {fileA, folder, locked, fileD});

    Tree() { locked->readable = false; }

    void hookAll(const doubles::Hook& hook) const
    {
        for (const MemoryFilePtr& entry : {root, fileA, folder, fileB, fileC, locked, fileD})
            entry->hook = hook;
    }
};

TEST(HostFailure, StopsTheWalkAtAnyCallAndBecomesTheErrorTextOnlyAsAHostException)
{
    // Every call of the whole walk in its order, and the files found before it.
    const std::vector<std::pair<std::string, Files>> callSites = {
        {"/r exists", {}},
        {"/r isReadable", {}},
        {"/r isDirectory", {}},
        {"/r fullPath", {}},
        {"/r entries()", {}},
        {"/r/a fileName", {}},
        {"/r/a isFile", {}},
        {"/r/s fileName", {"a"}},
        {"/r/s isFile", {"a"}},
        {"/r/s isReadable", {"a"}},
        {"/r/s isDirectory", {"a"}},
        {"/r/s fullPath", {"a"}},
        {"/r/s entries()", {"a"}},
        {"/r/s/b fileName", {"a"}},
        {"/r/s/b isFile", {"a"}},
        {"/r/s/c fileName", {"a", "s/b"}},
        {"/r/s/c isFile", {"a", "s/b"}},
        {"/r/l fileName", {"a", "s/b", "s/c"}},
        {"/r/l isFile", {"a", "s/b", "s/c"}},
        {"/r/l isReadable", {"a", "s/b", "s/c"}},
        {"/r/l fullPath", {"a", "s/b", "s/c"}},
    };
    const Tree whole;
    FolderCrawler(whole.root).run();
    Calls expectedCalls;
    for (const auto& site : callSites)
        expectedCalls.push_back(site.first);
    ASSERT_EQ(expectedCalls, whole.disk.log->calls());

    for (const Thrown kind : everyKind) {
        for (const auto& site : callSites) {
            SCOPED_TRACE(site.first + " throws " + nameOf(kind));
            const Tree tree;
            FolderCrawler crawler(tree.root);
            tree.hookAll(throwAt(site.first, kind));

            const std::string thrown = thrownBy([&] { crawler.run(); });

            const bool becomesText = kind == Thrown::HostException;
            EXPECT_EQ(becomesText ? "" : nameOf(kind), thrown);
            EXPECT_EQ(!becomesText, crawler.result().errorString.isNull());
            EXPECT_EQ(becomesText ? "of the host" : "", crawler.result().errorString.toStdString());
            EXPECT_EQ(site.second, crawler.result().files);
            EXPECT_EQ(tree.root, crawler.result().folder);
            EXPECT_EQ(site.first, tree.disk.log->calls().back());

            tree.hookAll(nullptr);
            tree.locked->readable = true;
            crawler.run();
            EXPECT_EQ((Files{"a", "s/b", "s/c", "d"}), crawler.result().files);
        }
    }
}

TEST(HostFailure, LeavesTheImporterAsItWasWhenTheFolderOfAResultThrows)
{
    struct Row {
        std::string call;
        bool exists;
        bool isDirectory;
        bool isReadable;
    };
    const std::vector<Row> rows = {
        {"/new exists", true, true, true},     {"/new isDirectory", true, true, true},
        {"/new isReadable", true, true, true}, {"/new fullPath", false, true, true},
        {"/new fullPath", true, false, true},  {"/new fullPath", true, true, false}};
    for (const Thrown kind : everyKind) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.call + " throws " + nameOf(kind));
            const FileSystem disk;
            const MemoryFilePtr old = disk.directory("/old");
            const MemoryFilePtr folder = disk.directory("/new");
            folder->present = row.exists;
            folder->directory = row.isDirectory;
            folder->readable = row.isReadable;
            folder->hook = throwAt(row.call, kind);
            const ParserRecordPtr parser = std::make_shared<ParserRecord>();
            const auto importer = makeImporter(parser);
            importer->setCrawlResult(crawlResult(old, {"a"}));

            EXPECT_EQ(nameOf(kind),
                      thrownBy([&] { importer->setCrawlResult(crawlResult(folder, {"b"})); }));

            EXPECT_EQ(row.call, disk.log->calls().back());
            EXPECT_EQ(old, importer->folder());
            EXPECT_EQ(Files{"a"}, importer->files());
            EXPECT_EQ(Calls{"appendRawFilePath(a)"}, parser->log->calls());
        }
    }
}

/// An importer over a parser of one case and one file.
struct Import {
    ParserRecordPtr parser = std::make_shared<ParserRecord>();
    FileSystem disk;
    MemoryFilePtr root = disk.directory("/r");
    std::unique_ptr<MetadataFileCrawler> importer = makeImporter(parser);
    doubles::RecordingContext context;

    Import()
    {
        importer->setCrawlResult(crawlResult(root, {"a"}));
        importer->setMetadataPatternList({{"T", MetadataPattern::StringValue}});
        parser->cases = {{"1"}};
    }
};

TEST(HostFailure, LetsEveryFailureOfTheParserOut)
{
    struct Row {
        std::string call;
        std::function<void(Import&)> act;
    };
    const auto take = [](Import& import) {
        import.importer->setCrawlResult(crawlResult(import.root, {"b", "c"}));
    };
    const auto extract = [](Import& import) { import.importer->extract(import.context); };
    const std::vector<Row> rows = {
        {"appendRawFilePath(b)", take},
        {"appendRawFilePath(c)", take},
        {"applyMetadataPatternList(0)",
         [](Import& import) { import.importer->setMetadataPatternList({}); }},
        {"numDefinedCases()", [](Import& import) { import.importer->hasCases(); }},
        {"crawlerFilePathList()", [](Import& import) { import.importer->identifiedAuxFiles(); }},
        {"metadataInfoList(a)", [](Import& import) { import.importer->metadataInfoList("a"); }},
        {"numDefinedCases()", extract},
        {"caseMetadataSValue(0,0)", extract}};
    for (const Thrown kind : everyKind) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.call + " throws " + nameOf(kind));
            Import given;
            given.parser->hook = throwAt(row.call, kind);

            EXPECT_EQ(nameOf(kind), thrownBy([&] { row.act(given); }));

            EXPECT_EQ(row.call, given.parser->log->calls().back());
            EXPECT_EQ(Calls{}, given.context.log.calls());
            EXPECT_EQ(given.root, given.importer->folder());
            given.parser->hook = nullptr;
            EXPECT_EQ("", thrownBy([&] { row.act(given); }));
        }
    }
}

TEST(HostFailure, KeepsTheNewResultAndPatternsWhenTheParserRefusesThem)
{
    for (const Thrown kind : everyKind) {
        SCOPED_TRACE(nameOf(kind));
        Import given;
        given.parser->hook = [&](const std::string&) { throwThe(kind); };
        const MemoryFilePtr folder = given.disk.directory("/new");

        EXPECT_EQ(nameOf(kind), thrownBy([&] {
                      given.importer->setCrawlResult(crawlResult(folder, {"b", "c"}));
                  }));
        EXPECT_EQ(nameOf(kind), thrownBy([&] {
                      given.importer->setMetadataPatternList({{"P", MetadataPattern::StringValue},
                                                              {"Q", MetadataPattern::StringValue}});
                  }));

        EXPECT_EQ(folder, given.importer->folder());
        EXPECT_EQ((Files{"b", "c"}), given.importer->files());
        given.parser->hook = nullptr;
        given.parser->cases = {{"1", "2"}};
        given.importer->extract(given.context);
        ASSERT_EQ(2, given.context.table->GetNumberOfColumns());
        EXPECT_STREQ("P", given.context.table->GetColumnName(0));
        EXPECT_STREQ("Q", given.context.table->GetColumnName(1));
    }
}

struct RefusingContext : doubles::RecordingContext {
    void setMetadataTable(vtkSmartPointer<vtkTable> theTable) override
    {
        if (refused == "setMetadataTable")
            throwThe(kind);
        RecordingContext::setMetadataTable(theTable);
    }
    void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>& theFiles) override
    {
        if (refused == "setAuxFiles")
            throwThe(kind);
        RecordingContext::setAuxFiles(theFiles);
    }

    std::string refused;
    Thrown kind = Thrown::Int;
};

TEST(HostFailure, LetsTheContextRefuseTheTableOrTheFiles)
{
    for (const Thrown kind : everyKind) {
        for (const std::string refused : {"setMetadataTable", "setAuxFiles"}) {
            SCOPED_TRACE(refused + " throws " + nameOf(kind));
            Import given;
            RefusingContext context;
            context.refused = refused;
            context.kind = kind;

            EXPECT_EQ(nameOf(kind), thrownBy([&] { given.importer->extract(context); }));

            EXPECT_EQ(refused == "setAuxFiles" ? Calls{"setMetadataTable"} : Calls{},
                      context.log.calls());
            EXPECT_EQ(refused == "setAuxFiles", context.table != nullptr);
            context.refused.clear();
            given.importer->extract(context);
            EXPECT_EQ(1, context.table->GetNumberOfRows());
        }
    }
}

/// A file that throws at one of its operations.
struct FailingFile : doubles::FixedAuxFile {
    using FixedAuxFile::FixedAuxFile;
    std::string filePath() const override { return fail("filePath"), FixedAuxFile::filePath(); }
    bool isMatched() const override { return fail("isMatched"), FixedAuxFile::isMatched(); }
    std::size_t caseIndex() const override { return fail("caseIndex"), FixedAuxFile::caseIndex(); }

    void fail(const std::string& operation) const
    {
        if (operation == failing)
            throwThe(kind);
    }

    std::string failing;
    Thrown kind = Thrown::Int;
};

TEST(HostFailure, LetsOutTheFailureOfAFileThatCannotSayWhetherItMatched)
{
    for (const Thrown kind : everyKind) {
        SCOPED_TRACE(nameOf(kind));
        Import given;
        const auto file = boost::make_shared<FailingFile>("b");
        given.parser->files = {boost::make_shared<doubles::FixedAuxFile>("a"), file};
        file->failing = "isMatched";
        file->kind = kind;

        EXPECT_EQ(nameOf(kind), thrownBy([&] { given.importer->identifiedAuxFiles(); }));

        file->failing.clear();
        EXPECT_EQ(given.parser->files, given.importer->identifiedAuxFiles());
        EXPECT_EQ(2, file.use_count());
    }
}

struct FailingProvider : doubles::RecordingProvider {
    Identifiers identifiers() const override
    {
        if (asked + 1 == failing)
            throwThe(kind);
        return RecordingProvider::identifiers();
    }

    /// The number of the call that throws, from 1; none if 0.
    std::size_t failing = 0;
    Thrown kind = Thrown::Int;
};

struct FailingTagValidator : TagValidator {
    ortelo::ValidationResult validate(const std::string& tag) const override
    {
        if (tag == failing)
            throwThe(kind);
        return ortelo::ValidationResult();
    }

    std::string failing;
    Thrown kind = Thrown::Int;
};

/// A validator that selects each of two files under a tag of its own.
struct Choice {
    FailingProvider provider;
    boost::shared_ptr<FailingFile> file = boost::make_shared<FailingFile>("b.y", 1);
    AuxFiles files = {boost::make_shared<doubles::FixedAuxFile>("a.x"), file};
    boost::shared_ptr<FailingTagValidator> tags = boost::make_shared<FailingTagValidator>();
    AuxFileIdentifierValidator validator{provider, files, tags};

    Choice() { provider.answer({{{"*.x", "X"}, {"*.y", "Y"}}}); }
    void setKind(Thrown kind) { provider.kind = file->kind = tags->kind = kind; }
};

TEST(HostFailure, LetsEveryFailureOutOfTheValidatorAndKeepsTheKnownNames)
{
    struct Row {
        std::string name;
        std::function<void(Choice&)> prepare;
        std::function<void(Choice&)> act;
    };
    const auto isValid = [](Choice& choice) { choice.validator.isValid(); };
    const auto collect = [](Choice& choice) { choice.validator.auxFiles(); };
    const auto list = [](Choice& choice) { choice.validator.identifiers(); };
    const auto askedFirst = [](Choice& choice) { choice.provider.failing = 1; };
    const auto askedAgain = [](Choice& choice) { choice.provider.failing = 2; };
    const auto tag = [](Choice& choice) { choice.tags->failing = "Y"; };
    const std::vector<Row> rows = {
        {"isValid, first question", askedFirst, isValid},
        {"isValid, second question", askedAgain, isValid},
        {"isValid, tag", tag, isValid},
        {"identifiers", askedFirst, list},
        {"auxFiles, question", askedFirst, collect},
        {"auxFiles, tag", tag, collect},
        {"auxFiles, case", [](Choice& choice) { choice.file->failing = "caseIndex"; }, collect},
        {"auxFiles, path", [](Choice& choice) { choice.file->failing = "filePath"; }, collect},
        {"tagValidator", tag,
         [](Choice& choice) { choice.validator.tagValidator()->validate("Y"); }}};
    for (const Thrown kind : everyKind) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.name + " throws " + nameOf(kind));
            Choice given;
            given.setKind(kind);
            // A bad name that was visited counts as known, which tells that it stayed.
            given.provider.answer({{{"*.bad", "X"}}});
            ASSERT_FALSE(given.validator.isValid());
            given.provider.answer({{{"*.x", "X"}, {"*.y", "Y"}}});
            row.prepare(given);

            EXPECT_EQ(nameOf(kind), thrownBy([&] { row.act(given); }));

            EXPECT_TRUE(given.validator.syntaxNameValidator()->validate("*.bad").isValid());
            given.provider.failing = 0;
            given.tags->failing.clear();
            given.file->failing.clear();
            const auto collection = given.validator.auxFiles();
            EXPECT_EQ(std::vector<std::string>{"a.x"}, collection->filePaths(0, "X"));
            EXPECT_EQ(std::vector<std::string>{"b.y"}, collection->filePaths(1, "Y"));
            EXPECT_TRUE(given.validator.isValid());
        }
    }
}

TEST(HostFailure, LetsGoOfEverythingWhenAFileHasNoPathForTheValidator)
{
    for (const Thrown kind : everyKind) {
        SCOPED_TRACE(nameOf(kind));
        Choice given;
        given.setKind(kind);
        given.file->failing = "filePath";
        const long owners = given.file.use_count();

        EXPECT_EQ(nameOf(kind), thrownBy([&] {
                      const AuxFileIdentifierValidator other(given.provider, given.files,
                                                             given.tags);
                  }));

        EXPECT_EQ(owners, given.file.use_count());
        EXPECT_EQ(2, given.tags.use_count());
    }
}

} // namespace
