#include "crawler/CrawlerBasicImporterParser.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <gtest/gtest.h>

#include "host/AuxFileInfoInterface.h"
#include "tests/crawler/ParserModel.h"
#include "tests/crawler/PlainMatching.h"

namespace {

const auto StringValue = MetadataPattern::StringValue;
const auto NumberValue = MetadataPattern::NumberValue;

using File = boost::shared_ptr<AuxFileInfoInterface>;
using Patterns = std::vector<MetadataPattern>;
using Texts = std::vector<std::string>;

void append(CrawlerImporterParserInterface& parser, const Texts& paths)
{
    for (const std::string& path : paths)
        parser.appendRawFilePath(path);
}

Texts listedPaths(const CrawlerImporterParserInterface& parser)
{
    Texts paths;
    for (const File& file : parser.crawlerFilePathList())
        paths.push_back(file->filePath());
    return paths;
}

/// The record of a path that the parser holds.
File fileAt(const CrawlerImporterParserInterface& parser, const std::string& path)
{
    for (const File& file : parser.crawlerFilePathList())
        if (file->filePath() == path)
            return file;
    throw std::logic_error("no record of " + path);
}

/// The first value of every case.
Texts caseValues(const CrawlerImporterParserInterface& parser)
{
    Texts values;
    for (std::size_t i = 0; i < parser.numDefinedCases(); ++i)
        values.push_back(parser.caseMetadataSValue(i, 0));
    return values;
}

Texts infoValues(const CrawlerImporterParserInterface& parser, const std::string& path)
{
    Texts values;
    for (const MetadataInfo& info : parser.metadataInfoList(path))
        values.push_back(info.value);
    return values;
}

/// What applying `patterns` throws; empty when it throws nothing.
std::string thrownBy(CrawlerImporterParserInterface& parser, const Patterns& patterns)
{
    try {
        parser.applyMetadataPatternList(patterns);
    } catch (const std::out_of_range& error) {
        return error.what();
    }
    return "";
}

TEST(CrawlerBasicImporterParser, HasNoCasesWithoutPaths)
{
    for (const Patterns& patterns :
         {Patterns{}, Patterns{{"T", NumberValue}}, Patterns{{"", StringValue}}}) {
        SCOPED_TRACE(plain::describe(patterns));
        CrawlerBasicImporterParser parser;
        EXPECT_EQ(parser.numDefinedCases(), 0u);
        EXPECT_TRUE(parser.crawlerFilePathList().empty());

        parser.applyMetadataPatternList(patterns);

        EXPECT_EQ(parser.numDefinedCases(), 0u);
        EXPECT_TRUE(parser.crawlerFilePathList().empty());
        EXPECT_TRUE(parser.metadataInfoList("").empty());
    }
}

TEST(CrawlerBasicImporterParser, IsAParserThatCannotBeCopied)
{
    const std::unique_ptr<CrawlerImporterParserInterface> parser(new CrawlerBasicImporterParser);
    parser->appendRawFilePath("T1");
    parser->applyMetadataPatternList({{"T", NumberValue}});

    EXPECT_EQ(parser->numDefinedCases(), 1u);
    EXPECT_FALSE(std::is_copy_constructible<CrawlerBasicImporterParser>::value);
    EXPECT_FALSE(std::is_copy_assignable<CrawlerBasicImporterParser>::value);
}

TEST(CrawlerBasicImporterParser, NumbersCasesByFirstAppearanceInPathOrder)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"b/T1.dat", "a/T2.dat", "c/T1.dat"});

    parser.applyMetadataPatternList({{"T", NumberValue}});

    EXPECT_EQ(listedPaths(parser), (Texts{"a/T2.dat", "b/T1.dat", "c/T1.dat"}));
    EXPECT_EQ(caseValues(parser), (Texts{"2", "1"}));
    EXPECT_EQ(fileAt(parser, "a/T2.dat")->caseIndex(), 0u);
    EXPECT_EQ(fileAt(parser, "b/T1.dat")->caseIndex(), 1u);
    EXPECT_EQ(fileAt(parser, "c/T1.dat")->caseIndex(), 1u);
}

TEST(CrawlerBasicImporterParser, GroupsFilesWhoseValuesAreAllEqualAsText)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"1_T5_P1", "2_T5.0_P1", "3_T5_P2", "4_T5_P1", "5_T05_P1", "6_T+5_P1", "7_P1"});

    parser.applyMetadataPatternList({{"_T", NumberValue}, {"_P", NumberValue}});

    std::vector<std::size_t> indices;
    for (const File& file : parser.crawlerFilePathList())
        indices.push_back(file->caseIndex());
    EXPECT_EQ(indices, (std::vector<std::size_t>{0, 1, 2, 0, 3, 4, 0}));
    EXPECT_EQ(caseValues(parser), (Texts{"5", "5.0", "5", "05", "+5"}));
    EXPECT_EQ(parser.caseMetadataSValue(2, 1), "2");
    EXPECT_FALSE(fileAt(parser, "7_P1")->isMatched());
}

TEST(CrawlerBasicImporterParser, DoesNotConfuseWhereOneValueEndsAndTheNextBegins)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"x/ab/Tc/", "x/a/Tbc/", "x//Tabc/", "x/abc/T/"});

    parser.applyMetadataPatternList({{"x/", StringValue}, {"T", StringValue}});

    EXPECT_EQ(parser.numDefinedCases(), 4u);
    EXPECT_EQ(caseValues(parser), (Texts{"", "a", "ab", "abc"}));
}

TEST(CrawlerBasicImporterParser, KeepsUnmatchedFilesInTheListButInNoCase)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"T1", "U2", "T"});

    parser.applyMetadataPatternList({{"T", NumberValue}});

    EXPECT_EQ(listedPaths(parser), (Texts{"T", "T1", "U2"}));
    EXPECT_EQ(parser.numDefinedCases(), 1u);
    EXPECT_FALSE(fileAt(parser, "T")->isMatched());
    EXPECT_TRUE(fileAt(parser, "T1")->isMatched());
    EXPECT_FALSE(fileAt(parser, "U2")->isMatched());
}

TEST(CrawlerBasicImporterParser, AnswersTheInfosOfAPathAsFarAsItMatched)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"run_T300_P5.dat", "run_T20_P44.dat"});

    parser.applyMetadataPatternList({{"_T", NumberValue}, {"_P", StringValue}});

    EXPECT_EQ(infoValues(parser, "run_T300_P5.dat"), Texts{"300"});
    const std::vector<MetadataInfo> infos = parser.metadataInfoList("run_T20_P44.dat");
    ASSERT_EQ(infos.size(), 2u);
    EXPECT_EQ(infos[1].patternPosition, 7u);
    EXPECT_EQ(infos[1].valuePosition, 9u);
    EXPECT_EQ(infos[1].valueLength, 2u);
    EXPECT_EQ(infos[1].value, "44");
}

TEST(CrawlerBasicImporterParser, AnswersNoInfosForANameThatIsNotExactlyAPath)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"a/T1.dat"});

    parser.applyMetadataPatternList({{"T", NumberValue}});

    ASSERT_EQ(infoValues(parser, "a/T1.dat"), Texts{"1"});
    for (const std::string& name :
         {std::string(), std::string("a/T1"), std::string("A/T1.dat"), std::string("a\\T1.dat"),
          std::string("./a/T1.dat"), std::string("a/T1.dat\0", 9), std::string("T1.dat")}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(parser.metadataInfoList(name).empty());
    }
}

TEST(CrawlerBasicImporterParser, KeepsOneRecordForAPathAppendedTwice)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"a/T1.dat", "a/T1.dat"});

    parser.applyMetadataPatternList({{"T", NumberValue}});

    EXPECT_EQ(listedPaths(parser), Texts{"a/T1.dat"});
    EXPECT_EQ(parser.numDefinedCases(), 1u);
}

TEST(CrawlerBasicImporterParser, ReplacesTheRecordOfAPathAppendedAgain)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"T1", "T2"});
    parser.applyMetadataPatternList({{"T", NumberValue}});
    const File old = fileAt(parser, "T2");

    parser.appendRawFilePath("T2");

    const File fresh = fileAt(parser, "T2");
    EXPECT_NE(fresh, old);
    EXPECT_FALSE(fresh->isMatched());
    EXPECT_EQ(fresh->caseIndex(), 0u);
    EXPECT_TRUE(parser.metadataInfoList("T2").empty());
    EXPECT_EQ(caseValues(parser), (Texts{"1", "2"})) << "the cases are not touched";

    // The old record is the callers' alone.
    parser.applyMetadataPatternList({{"T2", StringValue}});
    EXPECT_TRUE(old->isMatched());
    EXPECT_EQ(old->caseIndex(), 1u);
    EXPECT_FALSE(fresh->isMatched());
}

TEST(CrawlerBasicImporterParser, KeepsPathsApartThatDifferInCaseOrSeparators)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"a/T1.dat", "a\\T1.dat", "A/T1.dat", "a//T1.dat"});

    parser.applyMetadataPatternList({{"T", NumberValue}});

    EXPECT_EQ(listedPaths(parser), (Texts{"A/T1.dat", "a//T1.dat", "a/T1.dat", "a\\T1.dat"}));
    EXPECT_EQ(parser.numDefinedCases(), 1u);
    for (const File& file : parser.crawlerFilePathList()) {
        EXPECT_TRUE(file->isMatched());
        EXPECT_EQ(file->caseIndex(), 0u);
    }
}

TEST(CrawlerBasicImporterParser, OrdersPathsByTheirBytesAsUnsignedNumbers)
{
    const Texts ordered = {"",
                           std::string("\0", 1),
                           std::string("\0\0", 2),
                           "\x01",
                           "A",
                           "a",
                           std::string("a\0", 2),
                           std::string("a\0b", 3),
                           "a b",
                           "a.",
                           "a/",
                           "aB",
                           "ab",
                           "a\x7f",
                           "a\x80",
                           "a\xff",
                           "b",
                           "\x7f",
                           "\x80",
                           "\xc3\xa4",
                           "\xff",
                           "\xff\x01"};
    Texts reversed = ordered;
    std::reverse(reversed.begin(), reversed.end());
    CrawlerBasicImporterParser parser;
    append(parser, reversed);

    EXPECT_EQ(listedPaths(parser), ordered);
}

TEST(CrawlerBasicImporterParser, NumbersCasesInByteOrderOfTheirPaths)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"\xff/T1", "z/T2", "\x80/T3", std::string("\0/T4", 4), "/T5"});

    parser.applyMetadataPatternList({{"T", NumberValue}});

    EXPECT_EQ(caseValues(parser), (Texts{"4", "5", "2", "3", "1"}));
}

TEST(CrawlerBasicImporterParser, KeepsValuesWithAnyByte)
{
    CrawlerBasicImporterParser parser;
    const std::string value("\0\xff\n", 3);
    append(parser, {"T" + value + "/x"});

    parser.applyMetadataPatternList({{"T", StringValue}});

    ASSERT_EQ(parser.numDefinedCases(), 1u);
    EXPECT_EQ(parser.caseMetadataSValue(0, 0), value);
}

TEST(CrawlerBasicImporterParser, ForgetsMetadataButNotMatchesWhenThePatternListIsEmpty)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"T1", "T2", "U3"});
    parser.applyMetadataPatternList({{"T", NumberValue}});

    parser.applyMetadataPatternList({});

    EXPECT_EQ(parser.numDefinedCases(), 0u);
    for (const std::string& path : Texts{"T1", "T2", "U3"})
        EXPECT_TRUE(parser.metadataInfoList(path).empty()) << path;
    EXPECT_TRUE(fileAt(parser, "T1")->isMatched());
    EXPECT_TRUE(fileAt(parser, "T2")->isMatched());
    EXPECT_EQ(fileAt(parser, "T2")->caseIndex(), 1u);
    EXPECT_FALSE(fileAt(parser, "U3")->isMatched());
}

TEST(CrawlerBasicImporterParser, KeepsTheCasesWhenPathsAreCleared)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"T1", "T2", "U3"});
    parser.applyMetadataPatternList({{"T", NumberValue}});

    parser.clearFilePaths();

    EXPECT_EQ(parser.numDefinedCases(), 2u);
    EXPECT_EQ(caseValues(parser), (Texts{"1", "2"}));
    EXPECT_TRUE(parser.crawlerFilePathList().empty());
    for (const std::string& path : Texts{"T1", "T2", "U3"})
        EXPECT_TRUE(parser.metadataInfoList(path).empty()) << path;

    parser.applyMetadataPatternList({{"T", NumberValue}});
    EXPECT_EQ(parser.numDefinedCases(), 0u);
}

TEST(CrawlerBasicImporterParser, StartsOverWithNewPathsAfterTheyWereCleared)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"T1", "T2"});
    parser.applyMetadataPatternList({{"T", NumberValue}});
    parser.clearFilePaths();
    append(parser, {"T2", "T3"});
    EXPECT_EQ(caseValues(parser), (Texts{"1", "2"})) << "until the patterns are applied";

    parser.applyMetadataPatternList({{"T", NumberValue}});

    EXPECT_EQ(caseValues(parser), (Texts{"2", "3"}));
    EXPECT_EQ(fileAt(parser, "T2")->caseIndex(), 0u);
}

TEST(CrawlerBasicImporterParser, LeavesTheCasesAloneWhenAPathIsAppended)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"T2"});
    parser.applyMetadataPatternList({{"T", NumberValue}});

    parser.appendRawFilePath("T1");

    EXPECT_EQ(caseValues(parser), Texts{"2"});
    EXPECT_EQ(listedPaths(parser), (Texts{"T1", "T2"}));
    EXPECT_FALSE(fileAt(parser, "T1")->isMatched());
    EXPECT_TRUE(parser.metadataInfoList("T1").empty());

    parser.applyMetadataPatternList({{"T", NumberValue}});
    EXPECT_EQ(caseValues(parser), (Texts{"1", "2"}));
    EXPECT_EQ(fileAt(parser, "T2")->caseIndex(), 1u);
}

TEST(CrawlerBasicImporterParser, KeepsTheOldCaseIndexOfAFileThatMatchesNoLonger)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"a_T1", "b_T2", "c_T2_P3"});
    parser.applyMetadataPatternList({{"_T", NumberValue}});
    ASSERT_EQ(fileAt(parser, "b_T2")->caseIndex(), 1u);

    parser.applyMetadataPatternList({{"_P", NumberValue}});

    EXPECT_EQ(caseValues(parser), Texts{"3"});
    EXPECT_FALSE(fileAt(parser, "b_T2")->isMatched());
    EXPECT_EQ(fileAt(parser, "b_T2")->caseIndex(), 1u);
    EXPECT_TRUE(parser.metadataInfoList("b_T2").empty());
    EXPECT_EQ(fileAt(parser, "c_T2_P3")->caseIndex(), 0u);
}

TEST(CrawlerBasicImporterParser, EmptiesTheMetadataBeforeItAppliesNewPatterns)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"_T1_P2"});
    parser.applyMetadataPatternList({{"_T", NumberValue}});
    parser.applyMetadataPatternList({{"_P", NumberValue}});
    parser.applyMetadataPatternList({{"_P", NumberValue}});

    EXPECT_EQ(infoValues(parser, "_T1_P2"), Texts{"2"});
    EXPECT_EQ(caseValues(parser), Texts{"2"});
}

TEST(CrawlerBasicImporterParser, SharesItsRecordsWithTheCaller)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"a_T1", "b_T2"});
    const std::vector<File> before = parser.crawlerFilePathList();

    parser.applyMetadataPatternList({{"_T", NumberValue}});

    EXPECT_EQ(parser.crawlerFilePathList(), before);
    EXPECT_TRUE(before[1]->isMatched());
    EXPECT_EQ(before[1]->caseIndex(), 1u);
    EXPECT_EQ(before[1]->label(), "");
    EXPECT_EQ(before[1]->type(), auxFileType("b_T2"));
}

TEST(CrawlerBasicImporterParser, LeavesSharedRecordsAliveWhenItIsGone)
{
    std::vector<File> files;
    {
        CrawlerBasicImporterParser parser;
        append(parser, {"a_T1", "b_T2"});
        parser.applyMetadataPatternList({{"_T", NumberValue}});
        files = parser.crawlerFilePathList();
    }

    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[1]->filePath(), "b_T2");
    EXPECT_TRUE(files[1]->isMatched());
    EXPECT_EQ(files[1]->caseIndex(), 1u);
}

TEST(CrawlerBasicImporterParser, KeepsMatchedRecordsAliveUntilTheNextApplication)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"T1", "T1x", "U2"});
    parser.applyMetadataPatternList({{"T", NumberValue}});
    std::vector<boost::weak_ptr<AuxFileInfoInterface>> files;
    for (const File& file : parser.crawlerFilePathList())
        files.emplace_back(file);

    parser.clearFilePaths();
    EXPECT_FALSE(files[0].expired());
    EXPECT_FALSE(files[1].expired());
    EXPECT_TRUE(files[2].expired()) << "the unmatched one belongs to no case";

    parser.applyMetadataPatternList({});
    EXPECT_TRUE(files[0].expired());
    EXPECT_TRUE(files[1].expired());
}

TEST(CrawlerBasicImporterParser, KeepsTheCasesBuiltBeforeAnOverlapThrows)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"1.abxx/bcyy/", "2.abx/bcy/", "3.abc", "4.abzz/bcyy/", "5"});
    parser.applyMetadataPatternList({{"", NumberValue}});
    ASSERT_EQ(parser.numDefinedCases(), 5u);

    EXPECT_EQ(thrownBy(parser, {{".ab", StringValue}, {"bc", StringValue}}),
              "invalid string position");

    EXPECT_EQ(caseValues(parser), (Texts{"xx", "x"}));
    EXPECT_EQ(parser.caseMetadataSValue(1, 1), "y");
    EXPECT_EQ(infoValues(parser, "2.abx/bcy/"), (Texts{"x", "y"}));
    // The files that were not reached hold the match of the application before, without metadata.
    for (const std::string& path : Texts{"3.abc", "4.abzz/bcyy/", "5"}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(parser.metadataInfoList(path).empty());
        EXPECT_TRUE(fileAt(parser, path)->isMatched());
        EXPECT_EQ(fileAt(parser, path)->caseIndex(), static_cast<std::size_t>(path[0] - '1'));
    }
}

TEST(CrawlerBasicImporterParser, StaysUsableAfterAnOverlapThrew)
{
    CrawlerBasicImporterParser parser;
    append(parser, {"1.abxx/bcyy/", "3.abc"});
    const Patterns patterns = {{".ab", StringValue}, {"bc", StringValue}};
    ASSERT_EQ(thrownBy(parser, patterns), "invalid string position");

    append(parser, {"2"});
    parser.applyMetadataPatternList({{"", NumberValue}});
    EXPECT_EQ(caseValues(parser), (Texts{"1", "2", "3"}));

    EXPECT_EQ(thrownBy(parser, patterns), "invalid string position");
    EXPECT_EQ(caseValues(parser), Texts{"xx"});

    parser.clearFilePaths();
    append(parser, {"1.abxx/bcyy/"});
    EXPECT_EQ(thrownBy(parser, patterns), "");
    EXPECT_EQ(caseValues(parser), Texts{"xx"});
}

std::string seenOfCases(const CrawlerImporterParserInterface& parser, const model::Parser& model)
{
    std::string text = std::to_string(parser.numDefinedCases()) + " cases";
    for (std::size_t i = 0; i < parser.numDefinedCases() && i < model.cases.size(); ++i) {
        text += ",";
        for (std::size_t k = 0; k < model.cases[i].size(); ++k)
            text += " \"" + parser.caseMetadataSValue(i, k) + "\"";
    }
    return text;
}

std::string expectedOfCases(const model::Parser& model)
{
    std::string text = std::to_string(model.cases.size()) + " cases";
    for (const Texts& values : model.cases) {
        text += ",";
        for (const std::string& value : values)
            text += " \"" + value + "\"";
    }
    return text;
}

std::string seenOfInfos(const std::vector<MetadataInfo>& infos)
{
    std::string text;
    for (const MetadataInfo& info : infos)
        text += " {" + std::to_string(info.patternPosition) + " " +
                std::to_string(info.valuePosition) + " " + std::to_string(info.valueLength) +
                " \"" + info.value + "\"}";
    return text;
}

/// Holds all that the parser shows against the model, and every record that it ever showed, the
/// replaced and cleared ones included.
void expectSame(const CrawlerImporterParserInterface& parser, const model::Parser& model,
                std::vector<std::shared_ptr<model::File>>& shownFiles)
{
    ASSERT_EQ(seenOfCases(parser, model), expectedOfCases(model));

    const std::vector<File> files = parser.crawlerFilePathList();
    ASSERT_EQ(files.size(), model.files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        model::File& expected = *model.files[i];
        ASSERT_EQ(files[i]->filePath(), expected.record.path);
        ASSERT_EQ(seenOfInfos(parser.metadataInfoList(expected.record.path)),
                  seenOfInfos(expected.record.infos));
        if (!expected.shown) {
            for (const auto& other : shownFiles)
                ASSERT_NE(other->shown, files[i]) << "an old record in a new place";
            expected.shown = files[i];
            shownFiles.push_back(model.files[i]);
        }
        ASSERT_EQ(expected.shown, files[i]) << "another record for the same path";
    }
    for (const auto& file : shownFiles) {
        ASSERT_EQ(file->shown->filePath(), file->record.path);
        ASSERT_EQ(file->shown->isMatched(), file->record.matched) << file->record.path;
        ASSERT_EQ(file->shown->caseIndex(), file->record.caseIndex) << file->record.path;
    }
}

TEST(CrawlerBasicImporterParser, EqualsTheNaiveModelForRandomSequences)
{
    const std::string alphabets[] = {std::string("ab/.T1\xff\0", 8), "ab./1"};
    const unsigned seed = 4711;
    plain::Random random(seed);
    std::size_t shared = 0;
    std::size_t throws = 0;
    for (int round = 0; round < 1000; ++round) {
        const std::string& alphabet = alphabets[round % 2];
        CrawlerBasicImporterParser parser;
        model::Parser model;
        std::vector<std::shared_ptr<model::File>> shownFiles;
        std::string history = "seed " + std::to_string(seed) + ", round " + std::to_string(round);
        for (int step = 0; step < 60; ++step) {
            const std::size_t action = plain::below(random, 20);
            if (action == 0) {
                history += "\nclear";
                parser.clearFilePaths();
                model.files.clear();
            } else if (action < 14) {
                const std::string path = plain::randomText(random, alphabet, 6);
                history += "\nappend \"" + path + "\"";
                parser.appendRawFilePath(path);
                model.append(path);
            } else {
                const std::string path =
                    model.files.empty()
                        ? std::string("a/1")
                        : model.files[plain::below(random, model.files.size())]->record.path;
                const std::size_t dot = path.find('.');
                Patterns patterns = plain::randomPatterns(random, path, alphabet, 2);
                if (plain::below(random, 4) == 0 && dot < path.size() && path.size() - dot >= 3)
                    patterns = {{path.substr(dot, 3), StringValue},
                                {path.substr(dot + 2, 1), StringValue}};
                history += "\napply" + plain::describe(patterns);
                std::string expectedError;
                try {
                    model.apply(patterns);
                } catch (const std::out_of_range& error) {
                    expectedError = error.what();
                    ++throws;
                }
                ASSERT_EQ(thrownBy(parser, patterns), expectedError) << history;
                std::size_t matched = 0;
                for (const auto& file : model.files)
                    matched += file->record.matched && !file->record.infos.empty() ? 1 : 0;
                shared += matched > model.cases.size() ? 1 : 0;
            }
            SCOPED_TRACE(history);
            expectSame(parser, model, shownFiles);
            if (HasFatalFailure())
                return;
        }
    }
    // The input is worth something only if files share cases and overlaps throw.
    EXPECT_GT(shared, 300u);
    EXPECT_GT(throws, 30u);
}

} // namespace
