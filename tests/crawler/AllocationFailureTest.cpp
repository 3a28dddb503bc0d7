#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include "crawler/AuxFileIdentifierValidator.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "crawler/MetadataPattern.h"
#include "crawler/SyntaxNameFilter.h"
#include "host/AuxFileCollectionInterface.h"
#include "host/TagValidator.h"
#include "host/ValidationResult.h"
#include "tests/crawler/AllocationFaults.h"
#include "tests/crawler/AuxFileDoubles.h"

namespace {

using doubles::failEverywhere;
using doubles::FixedAuxFile;

using AuxFiles = std::vector<boost::shared_ptr<AuxFileInfoInterface>>;
using Patterns = std::vector<MetadataPattern>;

// Too long to be kept without memory.
const std::string stem = "a/folder/with/a/rather/long/name/";
const std::string longText = "a text that is too long to be kept without memory";
const std::string otherText = "another text that is too long to be kept without memory";

/// An object of nothing, for operations that make one.
struct Nothing {};

std::unique_ptr<Nothing> makeNothing()
{
    return std::make_unique<Nothing>();
}

std::string show(const MetadataPattern& pattern)
{
    return pattern.pattern + "," + std::to_string(pattern.valueType);
}

std::string show(const MetadataInfo& info)
{
    return std::to_string(info.patternPosition) + "," + std::to_string(info.valuePosition) + "," +
           std::to_string(info.valueLength) + "," + info.value;
}

std::string show(const std::vector<MetadataInfo>& infos)
{
    std::string all;
    for (const MetadataInfo& info : infos)
        all += show(info) + "\n";
    return all;
}

std::string show(const AuxFiles& files)
{
    std::string all;
    for (const auto& file : files)
        all +=
            file->filePath() + (file->isMatched() ? std::to_string(file->caseIndex()) : "-") + "\n";
    return all;
}

std::string show(const ortelo::ValidationResult& result)
{
    return result.isValid() ? "valid" : result.errorString();
}

std::string show(const AuxFileCollectionInterface& collection)
{
    std::string all;
    for (const std::string& tag : collection.tags()) {
        for (std::size_t index = 0; index < collection.indexCount(); ++index) {
            all += tag + " " + std::to_string(index) + ":";
            for (const std::string& path : collection.filePaths(index, tag))
                all += " " + path;
            all += "\n";
        }
    }
    return all;
}

MetadataInfo longInfo()
{
    MetadataInfo info;
    info.patternPosition = 1;
    info.valuePosition = 2;
    info.valueLength = otherText.size();
    info.value = otherText;
    return info;
}

const std::string& textOf(const MetadataPattern& pattern)
{
    return pattern.pattern;
}

const std::string& textOf(const MetadataInfo& info)
{
    return info.value;
}

template <class Record> struct Pair {
    Record from;
    Record to;
};

/// Copies `from`, and assigns it over `to`, whose text stays when memory runs out.
template <class Record> void copyEverywhere(const Record& from, const Record& to)
{
    using Records = Pair<Record>;
    const auto make = [&] { return std::make_unique<Records>(Records{from, to}); };
    const auto holds = [&](Records& records) {
        EXPECT_EQ(show(from), show(records.from));
        EXPECT_EQ(textOf(to), textOf(records.to));
    };
    failEverywhere(
        "copy", make, [](Records& records) { return Record(records.from); },
        [](Records&, const Record& copy) { return show(copy); }, holds);
    failEverywhere(
        "copy assignment", make, [](Records& records) { return records.to = records.from, 0; },
        [](Records& records, int) { return show(records.to); }, holds);
}

TEST(AllocationFailure, LeavesTheTextsOfRecordsThatCouldNotBeCopied)
{
    copyEverywhere(MetadataPattern(otherText, MetadataPattern::NumberValue),
                   MetadataPattern("to", MetadataPattern::StringValue));
    MetadataInfo to;
    to.value = "to";
    copyEverywhere(longInfo(), to);
    failEverywhere(
        "construction", makeNothing,
        [](Nothing&) { return MetadataPattern(longText, MetadataPattern::NumberValue); },
        [](Nothing&, const MetadataPattern& pattern) { return show(pattern); });
}

const Patterns firstPatterns = {{"/", MetadataPattern::StringValue}};
const Patterns secondPatterns = {{"Mach", MetadataPattern::NumberValue},
                                 {"of the ", MetadataPattern::StringValue}};

std::unique_ptr<CrawlerBasicImporterParser> makeParser()
{
    auto parser = std::make_unique<CrawlerBasicImporterParser>();
    parser->appendRawFilePath(stem + "Mach0.800000000000000001/of the first and foremost/a.dat");
    parser->appendRawFilePath(stem + "Mach0.800000000000000002/of the first and foremost/b.dat");
    parser->appendRawFilePath(stem + "Mach0.800000000000000003/of the second after it/c.dat");
    parser->appendRawFilePath(stem + "Mach0.800000000000000002/of the first and foremost/d.dat");
    parser->appendRawFilePath(stem + "Mach0.800000000000000002/of the first and foremost/g.dat");
    parser->appendRawFilePath(stem + "Mach0.800000000000000003/of the second after it/e.dat");
    parser->appendRawFilePath(stem + "Mach0.800000000000000003/of the second after it/f.dat");
    parser->appendRawFilePath(stem + "unmatched.dat");
    parser->applyMetadataPatternList(firstPatterns);
    return parser;
}

std::string state(const CrawlerBasicImporterParser& parser, std::size_t patterns)
{
    std::string all;
    for (std::size_t i = 0; i < parser.numDefinedCases(); ++i)
        for (std::size_t j = 0; j < patterns; ++j)
            all += parser.caseMetadataSValue(i, j) + "\n";
    for (const auto& file : parser.crawlerFilePathList())
        all += show(parser.metadataInfoList(file->filePath()));
    return all + show(parser.crawlerFilePathList());
}

TEST(AllocationFailure, LeavesAParserAsItWasWhenAPathCannotBeAppended)
{
    const std::string before = state(*makeParser(), 1);
    for (const std::string& path : {stem + "a new path.dat", stem + "unmatched.dat"}) {
        failEverywhere(
            "appendRawFilePath", makeParser,
            [&](CrawlerBasicImporterParser& parser) { return parser.appendRawFilePath(path), 0; },
            [](CrawlerBasicImporterParser& parser, int) { return state(parser, 1); },
            [&](CrawlerBasicImporterParser& parser) { EXPECT_EQ(before, state(parser, 1)); });
    }
}

TEST(AllocationFailure, LeavesTheFirstCasesWhenPatternsCannotBeApplied)
{
    std::vector<std::string> machs;
    const auto whole = makeParser();
    whole->applyMetadataPatternList(secondPatterns);
    for (std::size_t i = 0; i < whole->numDefinedCases(); ++i)
        machs.push_back(whole->caseMetadataSValue(i, 0));
    ASSERT_EQ(3u, machs.size());

    failEverywhere(
        "applyMetadataPatternList", makeParser,
        [](CrawlerBasicImporterParser& parser) {
            return parser.applyMetadataPatternList(secondPatterns), 0;
        },
        [](CrawlerBasicImporterParser& parser, int) { return state(parser, 2); },
        [&](CrawlerBasicImporterParser& parser) {
            ASSERT_LE(parser.numDefinedCases(), machs.size());
            for (std::size_t i = 0; i < parser.numDefinedCases(); ++i) {
                EXPECT_EQ(machs[i], parser.caseMetadataSValue(i, 0));
                EXPECT_NE("", parser.caseMetadataSValue(i, 1));
            }
            EXPECT_EQ(8u, parser.crawlerFilePathList().size());
        });
    failEverywhere(
        "the empty list", makeParser,
        [](CrawlerBasicImporterParser& parser) { return parser.applyMetadataPatternList({}), 0; },
        [](CrawlerBasicImporterParser& parser, int) { return state(parser, 0); });
}

TEST(AllocationFailure, LeavesAParsersAnswersAsTheyWere)
{
    const auto make = [] {
        auto parser = makeParser();
        parser->applyMetadataPatternList(secondPatterns);
        return parser;
    };
    const std::string path = stem + "Mach0.800000000000000001/of the first and foremost/a.dat";
    const auto look = [](CrawlerBasicImporterParser& parser, const auto& answer) {
        return show(answer) + state(parser, 2);
    };
    failEverywhere(
        "metadataInfoList", make,
        [&](CrawlerBasicImporterParser& parser) { return parser.metadataInfoList(path); }, look);
    failEverywhere(
        "crawlerFilePathList", make,
        [](CrawlerBasicImporterParser& parser) { return parser.crawlerFilePathList(); }, look);
    failEverywhere(
        "caseMetadataSValue", make,
        [](CrawlerBasicImporterParser& parser) { return parser.caseMetadataSValue(2, 1); },
        [](CrawlerBasicImporterParser& parser, const std::string& value) {
            return value + state(parser, 2);
        });
    failEverywhere(
        "clearFilePaths", make,
        [](CrawlerBasicImporterParser& parser) { return parser.clearFilePaths(), 0; },
        [](CrawlerBasicImporterParser& parser, int) { return state(parser, 2); });
    failEverywhere(
        "construction", makeNothing,
        [](Nothing&) { return std::make_unique<CrawlerBasicImporterParser>(); },
        [](Nothing&, const auto& parser) { return std::to_string(parser->numDefinedCases()); });
}

/// How often memory is taken to number the cases of `paths` anew.
std::size_t occasionsFor(const std::vector<std::string>& paths)
{
    CrawlerBasicImporterParser parser;
    for (const std::string& path : paths)
        parser.appendRawFilePath(path);
    const Patterns patterns = {{"Mach", MetadataPattern::NumberValue}};
    // The first time, the files take memory for what is read from them.
    parser.applyMetadataPatternList(patterns);
    const std::size_t before = doubles::allocations();
    parser.applyMetadataPatternList(patterns);
    return doubles::allocations() - before;
}

TEST(AllocationFailure, HasNoMoreOccasionsWhereOthersInterruptACaseTimeAndAgain)
{
    std::vector<std::string> inARow;
    std::vector<std::string> interrupted;
    for (int i = 1000; i < 1500; ++i) {
        const std::string number = std::to_string(i);
        inARow.push_back("a" + number + "Mach0");
        inARow.push_back("b" + number + "Mach" + number);
        interrupted.push_back("a" + number + "aMach0");
        interrupted.push_back("a" + number + "bMach" + number);
    }

    // A few, for the lists that grow at other moments.
    EXPECT_LE(occasionsFor(interrupted), occasionsFor(inARow) + 10);
}

std::unique_ptr<SyntaxNameFilter> makeFilter()
{
    return std::make_unique<SyntaxNameFilter>(QStringList{"first/a.dat", "second/b.dat", "c.txt"});
}

TEST(AllocationFailure, LeavesAFilterThatSelectsAsBefore)
{
    for (const std::string& name : {std::string("*.dat"), std::string("*[ab].dat"),
                                    std::string("*.no candidate ends like this one does")}) {
        failEverywhere(
            "filter", makeFilter, [&](SyntaxNameFilter& filter) { return filter.filter(name); },
            [](SyntaxNameFilter&, const QStringList& selected) {
                return selected.join('\n').toStdString();
            });
        failEverywhere(
            "validate", makeFilter, [&](SyntaxNameFilter& filter) { return filter.validate(name); },
            [](SyntaxNameFilter&, const ortelo::ValidationResult& result) { return show(result); });
    }
    failEverywhere(
        "construction", makeNothing,
        [](Nothing&) { return std::make_unique<SyntaxNameFilter>(longText); },
        [](Nothing&, const auto& filter) { return filter->filter("*").join('\n').toStdString(); });
}

struct AcceptingTagValidator : TagValidator {
    ortelo::ValidationResult validate(const std::string&) const override
    {
        return ortelo::ValidationResult();
    }
};

/// A validator over files of three cases, and what it was made of.
struct Choice {
    doubles::RecordingProvider provider = {{"*[ab].dat of a rather long syntax name", longText},
                                           {"*.dat of a rather long syntax name", otherText},
                                           {"*.txt", "T"}};
    AuxFiles files = {
        boost::make_shared<FixedAuxFile>(stem + "a.dat of a rather long syntax name", 0),
        boost::make_shared<FixedAuxFile>(stem + "b.dat of a rather long syntax name", 2),
        boost::make_shared<FixedAuxFile>(stem + "c.dat of a rather long syntax name", 1),
        boost::make_shared<FixedAuxFile>(stem + "d.txt", 2),
        boost::make_shared<FixedAuxFile>(stem + "d.txt", 0)};
    boost::shared_ptr<AcceptingTagValidator> tags = boost::make_shared<AcceptingTagValidator>();
    AuxFileIdentifierValidator validator{provider, files, tags};
    boost::shared_ptr<AuxFileCollectionInterface> collection;
};

std::unique_ptr<Choice> makeChoice()
{
    return std::make_unique<Choice>();
}

TEST(AllocationFailure, LeavesAValidatorThatJudgesAndCollectsAsBefore)
{
    const auto answers = [](Choice& choice) { return show(*choice.validator.auxFiles()); };
    failEverywhere(
        "isValid", makeChoice, [](Choice& choice) { return choice.validator.isValid(); },
        [&](Choice& choice, bool valid) { return (valid ? "valid\n" : "bad\n") + answers(choice); },
        [&](Choice& choice) { EXPECT_NE("", answers(choice)); });
    failEverywhere(
        "identifiers", makeChoice, [](Choice& choice) { return choice.validator.identifiers(); },
        [&](Choice& choice, const auto& identifiers) {
            return identifiers.back().tag + answers(choice);
        });
    failEverywhere(
        "auxFiles", makeChoice, [](Choice& choice) { return choice.validator.auxFiles(); },
        [&](Choice& choice, const auto& files) { return show(*files) + answers(choice); });
    failEverywhere(
        "validators", makeChoice,
        [](Choice& choice) {
            return std::make_pair(choice.validator.syntaxNameValidator()->validate("*.txt"),
                                  choice.validator.tagValidator()->validate(longText));
        },
        [](Choice&, const auto& results) { return show(results.first) + show(results.second); });
    failEverywhere(
        "syntax name", makeChoice,
        [](Choice& choice) {
            return choice.validator.syntaxNameValidator()->validate(
                choice.provider.answers.front().front().syntaxName);
        },
        [](Choice&, const ortelo::ValidationResult& result) { return show(result); });
}

TEST(AllocationFailure, LeavesABadSyntaxNameUnknown)
{
    const auto judge = [](Choice& choice) {
        return choice.validator.syntaxNameValidator()->validate(
            "*.no file ends like this one does");
    };
    failEverywhere(
        "bad syntax name", makeChoice, judge,
        [](Choice&, const ortelo::ValidationResult& result) { return show(result); },
        [&](Choice& choice) { EXPECT_FALSE(judge(choice).isValid()); });
}

TEST(AllocationFailure, LeavesTheKnownNamesWhenIdentifiersCannotBeJudged)
{
    const std::string known = "*.known from an earlier list of identifiers";
    const auto make = [&] {
        auto choice = makeChoice();
        const auto identifiers = choice->provider.answers;
        choice->provider.answer({{{known, "T"}}});
        choice->validator.isValid();
        choice->provider.answer(identifiers);
        return choice;
    };
    const auto knows = [&](Choice& choice) {
        return choice.validator.syntaxNameValidator()->validate(known).isValid();
    };
    failEverywhere(
        "isValid", make, [](Choice& choice) { return choice.validator.isValid(); },
        [&](Choice& choice, bool valid) {
            return std::string(valid ? "valid" : "bad") + (knows(choice) ? ", known" : "");
        },
        [&](Choice& choice) { EXPECT_TRUE(knows(choice)); });
}

TEST(AllocationFailure, CannotMeetASyntaxNameThatIsKnown)
{
    // A set is matched by an expression, for which Qt would take memory.
    const std::string name = "*[ab].dat of a rather long syntax name";
    const auto choice = makeChoice();
    const auto names = choice->validator.syntaxNameValidator();
    const std::size_t before = doubles::allocations();
    ASSERT_TRUE(names->validate(name).isValid());
    const std::size_t afterMatching = doubles::allocations();
    ASSERT_TRUE(names->validate(name).isValid());

    EXPECT_LT(before, afterMatching);
    EXPECT_EQ(afterMatching, doubles::allocations()) << "it is not matched again";
}

TEST(AllocationFailure, LetsGoOfTheFilesWhenAValidatorCannotBeMade)
{
    failEverywhere(
        "construction", makeChoice,
        [](Choice& choice) {
            return std::make_unique<AuxFileIdentifierValidator>(choice.provider, choice.files,
                                                                choice.tags);
        },
        [](Choice& choice, const auto& validator) {
            return std::to_string(choice.tags.use_count()) + show(*validator->auxFiles());
        },
        [](Choice& choice) {
            EXPECT_EQ(2, choice.tags.use_count());
            EXPECT_EQ(Choice().files.front().use_count(), choice.files.front().use_count());
        });
}

TEST(AllocationFailure, LeavesACollectionsAnswersAsTheyWere)
{
    const auto make = [] {
        auto choice = makeChoice();
        choice->collection = choice->validator.auxFiles();
        return choice;
    };
    failEverywhere(
        "tags", make, [](Choice& choice) { return choice.collection->tags(); },
        [](Choice& choice, const auto& tags) {
            return std::to_string(tags.size()) + show(*choice.collection);
        });
    failEverywhere(
        "filePaths", make, [](Choice& choice) { return choice.collection->filePaths(2, longText); },
        [](Choice& choice, const auto& paths) {
            return std::to_string(paths.size()) + show(*choice.collection);
        });
}

} // namespace
