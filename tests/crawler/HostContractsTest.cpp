#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <vtkSmartPointer.h>
#include <vtkTable.h>

#include <gtest/gtest.h>

#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/CrawlerImporterParserInterface.h"
#include "crawler/MetadataFileCrawler.h"
#include "crawler/MetadataInfoProviderInterface.h"
#include "crawler/SyntaxNameFilter.h"
#include "host/AuxFileCollectionInterface.h"
#include "host/AuxFileInfoInterface.h"
#include "host/ExceptionBase.h"
#include "host/FileInfoInterface.h"
#include "host/ImportLoadContextInterface.h"
#include "host/ImporterInterface.h"
#include "host/SignalConnectionCollection.h"
#include "host/ValidationResult.h"
#include "host/ValidatorInterface.h"
#include "tests/crawler/Doubles.h"

namespace {

// A host that implements every contract with exactly the operations that the contract lists. No
// double from elsewhere stands in: the classes show that a host can be written so.

struct PlainImporter : virtual ImporterInterface {
    void extract(ImportLoadContextInterface& context) override
    {
        context.setMetadataTable(vtkSmartPointer<vtkTable>::New());
        context.setAuxFiles(boost::shared_ptr<AuxFileCollectionInterface>());
    }
};

struct PlainInfoProvider : virtual MetadataInfoProviderInterface {
    std::vector<MetadataInfo> metadataInfoList(const std::string& name) const override
    {
        return std::vector<MetadataInfo>(name.size());
    }
};

struct PlainContext : ImportLoadContextInterface {
    void setMetadataTable(vtkSmartPointer<vtkTable> theTable) override { table = theTable; }
    void setAuxFiles(const boost::shared_ptr<AuxFileCollectionInterface>& theFiles) override
    {
        auxFiles = theFiles;
    }

    vtkSmartPointer<vtkTable> table;
    boost::shared_ptr<AuxFileCollectionInterface> auxFiles;
};

struct PlainFileInfo : FileInfoInterface {
    bool isDirectory() const override { return true; }
    bool isReadable() const override { return true; }
    bool isFile() const override { return false; }
    bool exists() const override { return true; }
    std::string fullPath() const override { return "/plain"; }
    std::string fileName() const override { return "plain"; }
    std::vector<boost::shared_ptr<FileInfoInterface const>>
    entries(const std::string& filter) const override
    {
        return std::vector<boost::shared_ptr<FileInfoInterface const>>(filter.size());
    }
};

struct PlainValidator : virtual ortelo::ValidatorInterface<std::string> {
    ortelo::ValidationResult validate(const std::string& value) const override
    {
        ortelo::ValidationResult result;
        if (value != "good")
            result.setErrorString("Not good: " + value);
        return result;
    }
};

struct PlainAuxFile : virtual AuxFileInfoInterface {
    std::string filePath() const override { return "a/b"; }
    bool isMatched() const override { return true; }
    void setCaseIndex(std::size_t index) override { index_ = index; }
    std::size_t caseIndex() const override { return index_; }
    std::string label() const override { return "label"; }
    Type type() const override { return static_cast<Type>(9); }

private:
    std::size_t index_ = 0;
};

struct PlainCollection : virtual AuxFileCollectionInterface {
    bool isEmpty() const override { return false; }
    std::set<std::string> tags() const override { return {"tag"}; }
    std::vector<std::string> filePaths(std::size_t index, const std::string& tag) const override
    {
        return {std::to_string(index) + tag};
    }
    std::size_t indexCount() const override { return 2; }
};

struct PlainParser : virtual CrawlerImporterParserInterface {
    void appendRawFilePath(const std::string& path) override { paths.push_back(path); }
    void clearFilePaths() override { paths.clear(); }
    void applyMetadataPatternList(const std::vector<MetadataPattern>&) override {}
    std::vector<MetadataInfo> metadataInfoList(const std::string&) const override { return {}; }
    std::size_t numDefinedCases() const override { return paths.size(); }
    std::string caseMetadataSValue(std::size_t caseIndex, std::size_t) const override
    {
        return paths.at(caseIndex);
    }
    std::vector<boost::shared_ptr<AuxFileInfoInterface>> crawlerFilePathList() const override
    {
        return {boost::make_shared<PlainAuxFile>()};
    }

    std::vector<std::string> paths;
};

} // namespace

TEST(HostContracts, AreAbstractWithAVirtualDestructor)
{
    EXPECT_TRUE(std::is_abstract<ImporterInterface>::value);
    EXPECT_TRUE(std::is_abstract<MetadataInfoProviderInterface>::value);
    EXPECT_TRUE(std::is_abstract<ImportLoadContextInterface>::value);
    EXPECT_TRUE(std::is_abstract<FileInfoInterface>::value);
    EXPECT_TRUE(std::is_abstract<ortelo::ValidatorInterface<std::string>>::value);
    EXPECT_TRUE(std::is_abstract<AuxFileInfoInterface>::value);
    EXPECT_TRUE(std::is_abstract<AuxFileCollectionInterface>::value);
    EXPECT_TRUE(std::is_abstract<CrawlerImporterParserInterface>::value);
    EXPECT_TRUE(std::has_virtual_destructor<ImporterInterface>::value);
    EXPECT_TRUE(std::has_virtual_destructor<MetadataInfoProviderInterface>::value);
    EXPECT_TRUE(std::has_virtual_destructor<ImportLoadContextInterface>::value);
    EXPECT_TRUE(std::has_virtual_destructor<FileInfoInterface>::value);
    EXPECT_TRUE(std::has_virtual_destructor<ortelo::ValidatorInterface<std::string>>::value);
    EXPECT_TRUE(std::has_virtual_destructor<AuxFileInfoInterface>::value);
    EXPECT_TRUE(std::has_virtual_destructor<AuxFileCollectionInterface>::value);
    EXPECT_TRUE(std::has_virtual_destructor<CrawlerImporterParserInterface>::value);
    EXPECT_TRUE(std::has_virtual_destructor<ortelo::ValidationResult>::value);
    EXPECT_TRUE(std::has_virtual_destructor<ortelo::ExceptionBase>::value);
}

TEST(HostContracts, LetAnImporterServeAContext)
{
    const std::unique_ptr<ImporterInterface> importer(new PlainImporter);
    PlainContext context;
    context.auxFiles = boost::make_shared<PlainCollection>();

    importer->extract(context);

    EXPECT_TRUE(context.table);
    EXPECT_FALSE(context.auxFiles);
}

TEST(HostContracts, LetAProviderAnswerMetadataInfosAndBeCopied)
{
    const PlainInfoProvider provider;
    const PlainInfoProvider copy(provider);
    PlainInfoProvider assigned;
    assigned = copy;
    const MetadataInfoProviderInterface& seen = assigned;

    EXPECT_EQ(3U, seen.metadataInfoList("abc").size());
}

TEST(HostContracts, LetAFileSystemAnswerEveryQuestion)
{
    const boost::shared_ptr<FileInfoInterface const> entry = boost::make_shared<PlainFileInfo>();

    EXPECT_TRUE(entry->isDirectory() && entry->isReadable() && entry->exists());
    EXPECT_FALSE(entry->isFile());
    EXPECT_EQ("/plain", entry->fullPath());
    EXPECT_EQ("plain", entry->fileName());
    EXPECT_TRUE(entry->entries(std::string()).empty());
}

TEST(HostContracts, LetAValidatorAnswerByValueAndBeCopied)
{
    const PlainValidator validator;
    const PlainValidator copy(validator);
    PlainValidator assigned;
    assigned = copy;
    const ortelo::ValidatorInterface<std::string>& seen = assigned;

    EXPECT_TRUE(seen.validate("good").isValid());
    EXPECT_FALSE(seen.validate("bad").isValid());
    EXPECT_EQ("Not good: bad", seen.validate("bad").errorString());
}

TEST(HostContracts, LetACrawledFileAndACollectionBeSeenThroughTheirInterfaces)
{
    const std::unique_ptr<AuxFileInfoInterface> file(new PlainAuxFile);
    const std::unique_ptr<AuxFileCollectionInterface> collection(new PlainCollection);

    file->setCaseIndex(4);

    EXPECT_EQ(4U, file->caseIndex());
    EXPECT_TRUE(file->isMatched());
    EXPECT_EQ("a/b", file->filePath());
    EXPECT_EQ("label", file->label());
    EXPECT_EQ(9, static_cast<int>(file->type()));
    EXPECT_EQ(sizeof(std::uint32_t), sizeof(AuxFileInfoInterface::Type));
    EXPECT_FALSE(collection->isEmpty());
    EXPECT_EQ((std::set<std::string>{"tag"}), collection->tags());
    EXPECT_EQ((std::vector<std::string>{"1tag"}), collection->filePaths(1, "tag"));
    EXPECT_EQ(2U, collection->indexCount());
}

TEST(HostContracts, LetTheImporterWorkWithPlainImplementationsOfAll)
{
    const auto importer = doubles::makeImporter(new PlainParser);
    importer->setCrawlResult(doubles::crawlResult(boost::make_shared<PlainFileInfo>(), {"p", "q"}));
    importer->setMetadataPatternList({{"T", MetadataPattern::StringValue}});
    const auto auxFiles = boost::make_shared<PlainCollection>();
    importer->setAuxFilesToLoad(auxFiles);
    PlainContext context;

    importer->extract(context);

    EXPECT_EQ(2, context.table->GetNumberOfRows());
    EXPECT_EQ(auxFiles, context.auxFiles);
    EXPECT_EQ(1U, importer->identifiedAuxFiles().size());
}

TEST(ValidationResult, IsValidAndWithoutAMessageByDefault)
{
    const ortelo::ValidationResult result;

    EXPECT_TRUE(result.isValid());
    EXPECT_EQ("", result.errorString());
}

TEST(ValidationResult, IsInvalidOnceAMessageIsSet)
{
    ortelo::ValidationResult result;
    result.setErrorString("Invalid pattern.");
    EXPECT_FALSE(result.isValid());
    EXPECT_EQ("Invalid pattern.", result.errorString());

    result.setErrorString("Other.");
    EXPECT_FALSE(result.isValid());
    EXPECT_EQ("Other.", result.errorString());
}

TEST(ValidationResult, IsInvalidEvenWithAnEmptyMessage)
{
    ortelo::ValidationResult result;

    result.setErrorString(std::string());

    EXPECT_FALSE(result.isValid());
}

TEST(ValidationResult, CopiesAndAssignsValidityAndMessage)
{
    const ortelo::ValidationResult valid;
    ortelo::ValidationResult invalid;
    invalid.setErrorString("Invalid pattern.");

    const ortelo::ValidationResult copy(invalid);
    EXPECT_FALSE(copy.isValid());
    EXPECT_EQ("Invalid pattern.", copy.errorString());

    invalid = valid;
    EXPECT_TRUE(invalid.isValid());
    EXPECT_EQ("", invalid.errorString());
}

TEST(ValidationResult, AsksADerivedResult)
{
    struct Doubtful : ortelo::ValidationResult {
        bool isValid() const override { return false; }
        void setErrorString(std::string message) override { seen = message; }
        std::string seen;
    };
    Doubtful doubtful;
    ortelo::ValidationResult& result = doubtful;

    result.setErrorString("text");

    EXPECT_FALSE(result.isValid());
    EXPECT_EQ("text", doubtful.seen);
}

TEST(ExceptionBase, KeepsItsMessageAndItsFlag)
{
    const ortelo::ExceptionBase plain("text", false);
    const ortelo::ExceptionBase flagged("", true);

    EXPECT_STREQ("text", plain.what());
    EXPECT_FALSE(plain.flag());
    EXPECT_STREQ("", flagged.what());
    EXPECT_TRUE(flagged.flag());
}

TEST(ExceptionBase, CopiesItsMessageSoThatTheOriginalMayGo)
{
    auto original = std::make_unique<ortelo::ExceptionBase>("first", true);
    const ortelo::ExceptionBase copy(*original);
    ortelo::ExceptionBase assigned("second", false);
    assigned = *original;
    original.reset();

    EXPECT_STREQ("first", copy.what());
    EXPECT_TRUE(copy.flag());
    EXPECT_STREQ("first", assigned.what());
    EXPECT_TRUE(assigned.flag());
}

TEST(ExceptionBase, IsCaughtAsItselfWhenTheModuleThrowsIt)
{
    const auto importer = doubles::makeImporter(new PlainParser);
    PlainContext context;
    try {
        importer->extract(context);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const ortelo::ExceptionBase& exception) {
        EXPECT_STREQ("Folder name not specified.", exception.what());
        EXPECT_FALSE(exception.flag());
    }
}

TEST(ExceptionBase, IsCaughtAsAStandardExceptionWhenTheModuleThrowsIt)
{
    const auto importer = doubles::makeImporter(new PlainParser);
    PlainContext context;
    try {
        importer->extract(context);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::exception& exception) {
        EXPECT_STREQ("Folder name not specified.", exception.what());
        EXPECT_NE(nullptr, dynamic_cast<const ortelo::ExceptionBase*>(&exception));
    }
}

TEST(ExceptionBase, PassesThroughTheModuleWhenTheHostThrowsIt)
{
    struct LostFolder : PlainFileInfo {
        bool exists() const override { throw ortelo::ExceptionBase("lost", true); }
    };
    const auto importer = doubles::makeImporter(new PlainParser);
    try {
        importer->setCrawlResult(doubles::crawlResult(boost::make_shared<LostFolder>()));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const ortelo::ExceptionBase& exception) {
        EXPECT_STREQ("lost", exception.what());
        EXPECT_TRUE(exception.flag());
    }
}

TEST(AuxFileType, IsRecognisedByTheEndOfThePath)
{
    using Kinds = AuxFileInfoInterface;
    for (const char* const ending : {".txt", ".log", ".dat", ".csv"})
        EXPECT_EQ(Kinds::TextFile, auxFileType(std::string("a/b") + ending)) << ending;
    for (const char* const ending : {".png", ".jpg", ".jpeg", ".tif", ".tiff"})
        EXPECT_EQ(Kinds::ImageFile, auxFileType(std::string("a/b") + ending)) << ending;
    for (const char* const ending : {".vtk", ".vtp", ".vtu", ".stl"})
        EXPECT_EQ(Kinds::MeshFile, auxFileType(std::string("a/b") + ending)) << ending;
    EXPECT_EQ(Kinds::TextFile, auxFileType(".txt")) << "nothing need stand before it";
    EXPECT_EQ(Kinds::MeshFile, auxFileType("b.png.vtk")) << "the last ending alone counts";
    for (const char* const path : {"", "txt", "a/txt", "b.txt.bak", "b.txt/c", "b.TXT", "b.tx"})
        EXPECT_EQ(Kinds::OtherFile, auxFileType(path)) << path;
}

TEST(SignalConnectionCollection, CanBeMadeAndDestroyed)
{
    EXPECT_TRUE(std::is_default_constructible<SignalConnectionCollection>::value);
    EXPECT_TRUE(std::is_destructible<SignalConnectionCollection>::value);
}

namespace {

// Each of these converts to the interface unambiguously only while the module's class inherits it
// as a virtual base, as they do.

struct ExtendedFilter : SyntaxNameFilter, virtual ortelo::ValidatorInterface<std::string> {
    ExtendedFilter() : SyntaxNameFilter(std::string("a.dat")) {}
    ortelo::ValidationResult validate(const std::string& name) const override
    {
        return SyntaxNameFilter::validate(name);
    }
};

struct ExtendedParser : CrawlerBasicImporterParser, virtual CrawlerImporterParserInterface {};

struct ExtendedImporter : MetadataFileCrawler,
                          virtual ImporterInterface,
                          virtual MetadataInfoProviderInterface {};

template <class Class, class Interface>
constexpr bool isVirtualBase = std::is_convertible<Class*, Interface*>::value;

/// Two copies of one interface: what the check above is to find.
struct FirstHeir : MetadataInfoProviderInterface {};
struct SecondHeir : MetadataInfoProviderInterface {};
struct AmbiguousHeir : FirstHeir, SecondHeir {};

} // namespace

TEST(HostContracts, AreVirtualBasesOfTheModulesClasses)
{
    EXPECT_TRUE((isVirtualBase<ExtendedFilter, ortelo::ValidatorInterface<std::string>>));
    EXPECT_TRUE((isVirtualBase<ExtendedParser, CrawlerImporterParserInterface>));
    EXPECT_TRUE((isVirtualBase<ExtendedImporter, ImporterInterface>));
    EXPECT_TRUE((isVirtualBase<ExtendedImporter, MetadataInfoProviderInterface>));
    EXPECT_FALSE((isVirtualBase<AmbiguousHeir, MetadataInfoProviderInterface>));
}

TEST(HostContracts, ReachTheModulesClassesThroughTheSharedBase)
{
    const ExtendedFilter filter;
    const ortelo::ValidatorInterface<std::string>& validator = filter;
    ExtendedParser parser;
    CrawlerImporterParserInterface& parserInterface = parser;

    parserInterface.appendRawFilePath("a");

    EXPECT_TRUE(validator.validate("*.dat").isValid());
    EXPECT_EQ("Invalid pattern.", validator.validate("*.txt").errorString());
    EXPECT_EQ(1U, parserInterface.crawlerFilePathList().size());
}
