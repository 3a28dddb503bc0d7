#include "crawler/private/CrawlerFilePath.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <gtest/gtest.h>

#include "host/AuxFileInfoInterface.h"
#include "tests/crawler/Allocations.h"
#include "tests/crawler/PlainMatching.h"

namespace {

// What the host's function was asked, and what it answers.
std::vector<std::string> askedPaths;
AuxFileInfoInterface::Type answeredType = AuxFileInfoInterface::OtherFile;

} // namespace

AuxFileInfoInterface::Type auxFileType(const std::string& path)
{
    askedPaths.push_back(path);
    return answeredType;
}

namespace {

const auto StringValue = MetadataPattern::StringValue;
const auto NumberValue = MetadataPattern::NumberValue;

using Patterns = std::vector<MetadataPattern>;
using Texts = std::vector<std::string>;

Texts infoValues(const CrawlerFilePath& file)
{
    Texts values;
    for (const MetadataInfo& info : file.metadataInfoList())
        values.push_back(info.value);
    return values;
}

void expectInfo(const MetadataInfo& info, std::size_t patternPosition, std::size_t valuePosition,
                const std::string& value)
{
    EXPECT_EQ(info.patternPosition, patternPosition);
    EXPECT_EQ(info.valuePosition, valuePosition);
    EXPECT_EQ(info.valueLength, value.size());
    EXPECT_EQ(info.value, value);
}

struct Row {
    std::string marker;
    std::string path;
    bool matched;
    std::string value;
};

Row reads(const std::string& marker, const std::string& path, const std::string& value)
{
    return {marker, path, true, value};
}

Row refuses(const std::string& marker, const std::string& path)
{
    return {marker, path, false, ""};
}

void expectRows(MetadataPattern::ValueType type, const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        SCOPED_TRACE("path \"" + row.path + "\", marker \"" + row.marker + "\"");
        CrawlerFilePath file(row.path);

        EXPECT_EQ(file.applyMetadataPatterns({{row.marker, type}}), row.matched);

        EXPECT_EQ(file.isMatched(), row.matched);
        EXPECT_EQ(infoValues(file), row.matched ? Texts{row.value} : Texts{});
        EXPECT_EQ(file.metadataValues(), infoValues(file));
    }
}

/// The values read from `path` until a pattern failed.
void expectValues(const std::string& path, const Patterns& patterns, bool matched,
                  const Texts& values)
{
    SCOPED_TRACE("path \"" + path + "\"," + plain::describe(patterns));
    CrawlerFilePath file(path);

    EXPECT_EQ(file.applyMetadataPatterns(patterns), matched);

    EXPECT_EQ(file.isMatched(), matched);
    EXPECT_EQ(infoValues(file), values);
    EXPECT_EQ(file.metadataValues(), matched ? values : Texts{});
}

TEST(CrawlerFilePath, StartsUnmatchedInCaseZeroWithoutMetadata)
{
    const CrawlerFilePath file("run_T300.dat");

    EXPECT_EQ(file.filePath(), "run_T300.dat");
    EXPECT_FALSE(file.isMatched());
    EXPECT_EQ(file.caseIndex(), 0u);
    EXPECT_TRUE(file.metadataInfoList().empty());
    EXPECT_TRUE(file.metadataValues().empty());
}

TEST(CrawlerFilePath, KeepsEveryByteOfItsPath)
{
    for (const std::string& path :
         {std::string(), std::string("a//b/../c\\.\\"), std::string("\xff\0\x80 \n", 5)}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(CrawlerFilePath(path).filePath(), path);
    }
}

TEST(CrawlerFilePath, HasAnEmptyLabelMatchedOrNot)
{
    CrawlerFilePath file("T20.dat");
    EXPECT_EQ(file.label(), "");

    ASSERT_TRUE(file.applyMetadataPatterns({{"T", NumberValue}}));
    EXPECT_EQ(file.label(), "");
}

TEST(CrawlerFilePath, AsksTheHostForTheTypeOfItsPathOnceAtConstruction)
{
    askedPaths.clear();
    answeredType = AuxFileInfoInterface::MeshFile;
    CrawlerFilePath file("x/T20.vtk");
    answeredType = AuxFileInfoInterface::TextFile;
    file.applyMetadataPatterns({{"T", NumberValue}});

    EXPECT_EQ(file.type(), AuxFileInfoInterface::MeshFile);
    EXPECT_EQ(file.type(), AuxFileInfoInterface::MeshFile);
    EXPECT_EQ(askedPaths, Texts{"x/T20.vtk"});
}

TEST(CrawlerFilePath, HandsOnATypeThatItDoesNotKnow)
{
    answeredType = static_cast<AuxFileInfoInterface::Type>(0xfffffff0u);
    const CrawlerFilePath file("x");
    answeredType = AuxFileInfoInterface::OtherFile;

    EXPECT_EQ(file.type(), static_cast<AuxFileInfoInterface::Type>(0xfffffff0u));
}

TEST(CrawlerFilePath, KeepsTheCaseIndexLastAssignedThroughEveryApplication)
{
    const boost::shared_ptr<AuxFileInfoInterface> info =
        boost::make_shared<CrawlerFilePath>("T20.dat");
    info->setCaseIndex(7);
    EXPECT_EQ(info->caseIndex(), 7u);
    info->setCaseIndex(static_cast<std::size_t>(-1));
    EXPECT_EQ(info->caseIndex(), static_cast<std::size_t>(-1));

    auto* file = dynamic_cast<CrawlerFilePath*>(info.get());
    ASSERT_NE(file, nullptr);
    file->applyMetadataPatterns({{"T", NumberValue}});
    file->applyMetadataPatterns({{"X", NumberValue}});
    EXPECT_EQ(info->caseIndex(), static_cast<std::size_t>(-1));
}

TEST(CrawlerFilePath, ChangesNothingForAnEmptyPatternList)
{
    CrawlerFilePath fresh("T20.dat");
    EXPECT_FALSE(fresh.applyMetadataPatterns({}));
    EXPECT_FALSE(fresh.isMatched());
    EXPECT_TRUE(fresh.metadataInfoList().empty());

    CrawlerFilePath file("T20.dat");
    ASSERT_TRUE(file.applyMetadataPatterns({{"T", NumberValue}}));
    file.setCaseIndex(3);

    EXPECT_FALSE(file.applyMetadataPatterns({}));

    EXPECT_TRUE(file.isMatched());
    EXPECT_EQ(infoValues(file), Texts{"20"});
    EXPECT_EQ(file.metadataValues(), Texts{"20"});
    EXPECT_EQ(file.caseIndex(), 3u);
}

TEST(CrawlerFilePath, IsUnmatchedWhenAMarkerIsMissing)
{
    expectValues("run_T300_P5.dat", {{"_X", NumberValue}}, false, {});
    expectValues("run_T300_P5.dat", {{"_t", NumberValue}}, false, {});
    expectValues("run_T300_P5.dat", {{"_T", NumberValue}, {"_X", NumberValue}}, false, {});
    expectValues("T1", {{"T1_", NumberValue}}, false, {});
    expectValues("", {{"T", StringValue}}, false, {});
}

TEST(CrawlerFilePath, IsUnmatchedWhenAMarkerStandsOnlyBeforeTheNextSearchStart)
{
    expectValues("_P5_T300", {{"_T", NumberValue}, {"_P", NumberValue}}, false, {});
    expectValues("T300", {{"T", NumberValue}, {"T", NumberValue}}, false, {});
    expectValues("T300T", {{"T", NumberValue}, {"T", NumberValue}}, false, {"300"});
    expectValues("T300T4", {{"T", NumberValue}, {"T", NumberValue}}, true, {"300", "4"});
}

TEST(CrawlerFilePath, TakesTheFirstOccurrenceOfAMarker)
{
    CrawlerFilePath file("xT1T2T3");

    EXPECT_TRUE(file.applyMetadataPatterns({{"T", NumberValue}, {"T", NumberValue}}));

    ASSERT_EQ(file.metadataInfoList().size(), 2u);
    expectInfo(file.metadataInfoList()[0], 1, 2, "1");
    expectInfo(file.metadataInfoList()[1], 3, 4, "2");
}

TEST(CrawlerFilePath, TriesNoOtherOccurrenceOfAMarkerThatWasFound)
{
    // Behind the second "T" stands a number, and behind "b2" no second "b" that "a1" is behind.
    expectValues("Tx_T5", {{"T", NumberValue}}, false, {});
    expectValues("Tx_T5/P7", {{"T", NumberValue}, {"P", NumberValue}}, false, {});
    expectValues("b2/a1", {{"a", NumberValue}, {"b", NumberValue}}, false, {});
}

TEST(CrawlerFilePath, FindsAMarkerInsideTheTextOfThePreviousOne)
{
    // Looked for behind the whole first marker, the second one would be found and both would match.
    expectValues("aaa1/aa2/", {{"aaa", StringValue}, {"aa", StringValue}}, false, {});
    expectValues("run1", {{"run", StringValue}, {"un", NumberValue}}, false, {});
}

TEST(CrawlerFilePath, TakesMarkersLiterally)
{
    expectValues("xT*5", {{"T*", NumberValue}}, true, {"5"});
    expectValues("xTT5", {{"T*", NumberValue}}, false, {});
    expectValues("x[T]5", {{"[T]", NumberValue}}, true, {"5"});
    expectValues("x\\d5", {{"\\d", NumberValue}}, true, {"5"});
    expectValues(std::string("T\0T5", 4), {{std::string("\0T", 2), NumberValue}}, true, {"5"});
    expectValues("\xc3\xa4"
                 "5",
                 {{"\xa4", NumberValue}}, true, {"5"});
}

TEST(CrawlerFilePath, FindsAnEmptyMarkerWhereTheSearchStarts)
{
    CrawlerFilePath first("12T3");
    EXPECT_TRUE(first.applyMetadataPatterns({{"", NumberValue}, {"T", NumberValue}}));
    ASSERT_EQ(first.metadataInfoList().size(), 2u);
    expectInfo(first.metadataInfoList()[0], 0, 0, "12");
    expectInfo(first.metadataInfoList()[1], 2, 3, "3");

    CrawlerFilePath separators("/ab/");
    EXPECT_TRUE(separators.applyMetadataPatterns({{"", StringValue}, {"", StringValue}}));
    ASSERT_EQ(separators.metadataInfoList().size(), 2u);
    expectInfo(separators.metadataInfoList()[0], 0, 0, "");
    expectInfo(separators.metadataInfoList()[1], 1, 1, "ab");
}

TEST(CrawlerFilePath, FindsAnEmptyMarkerAtTheVeryEndButNotBehindIt)
{
    expectValues("", {{"", StringValue}}, true, {""});
    expectValues("/", {{"", StringValue}, {"", StringValue}}, true, {"", ""});
    expectValues("/", {{"", StringValue}, {"", StringValue}, {"", StringValue}}, false, {});
    expectValues("1", {{"", NumberValue}, {"", StringValue}}, true, {"1", ""});
    expectValues("1", {{"", NumberValue}, {"", NumberValue}}, false, {"1"});
}

TEST(CrawlerFilePath, RefusesOneCharacterOfTextAtTheEndButReadsTheSameNumber)
{
    CrawlerFilePath file("run_T300_P5.dat");
    EXPECT_FALSE(file.applyMetadataPatterns({{"_T", NumberValue}, {"_P", StringValue}}));
    EXPECT_FALSE(file.isMatched());
    ASSERT_EQ(file.metadataInfoList().size(), 1u);
    expectInfo(file.metadataInfoList()[0], 3, 5, "300");

    file.clearMetadataInfoList();
    EXPECT_TRUE(file.applyMetadataPatterns({{"_T", NumberValue}, {"_P", NumberValue}}));
    EXPECT_TRUE(file.isMatched());
    EXPECT_EQ(file.metadataValues(), (Texts{"300", "5"}));
}

TEST(CrawlerFilePath, EndsTextAtASeparator)
{
    CrawlerFilePath file("data/T20/x.dat");

    EXPECT_TRUE(file.applyMetadataPatterns({{"T", StringValue}}));

    ASSERT_EQ(file.metadataInfoList().size(), 1u);
    expectInfo(file.metadataInfoList()[0], 5, 6, "20");
    EXPECT_EQ(file.metadataInfoList()[0].valueLength, 2u);
}

TEST(CrawlerFilePath, ReadsAnExtensionBehindAMarkerThatIsItsDot)
{
    CrawlerFilePath file("x/.dat");

    EXPECT_TRUE(file.applyMetadataPatterns({{".", StringValue}}));

    EXPECT_EQ(file.metadataValues(), Texts{"dat"});
}

TEST(CrawlerFilePath, ReadsNumbers)
{
    const std::vector<Row> rows = {
        reads("T", "T300.dat", "300"),
        reads("T", "T-1.5e3_x", "-1.5e3"),
        reads("T", "T.5", ".5"),
        reads("T", "T12.", "12"),
        reads("T", "T12.e5", "12.e5"),
        reads("T", "T1D+07", "1D+07"),
        refuses("T", "Tx12"),
        refuses("T", "T-"),
        // Signs.
        reads("T", "T+5", "+5"),
        reads("T", "T-5", "-5"),
        reads("T", "T-.5", "-.5"),
        reads("T", "T+.5x", "+.5"),
        reads("T", "T1-2", "1"),
        reads("T", "T1+2", "1"),
        refuses("T", "T+"),
        refuses("T", "T--1"),
        refuses("T", "T+-1"),
        refuses("T", "T-x1"),
        // Fractions.
        refuses("T", "T."),
        refuses("T", "T+."),
        refuses("T", "T-."),
        refuses("T", "T.."),
        refuses("T", "T..5"),
        refuses("T", "T.x5"),
        refuses("T", "T.e5"),
        reads("T", "T1.", "1"),
        reads("T", "T-1.", "-1"),
        reads("T", "T1..2", "1"),
        reads("T", "T1.5.2", "1.5"),
        reads("T", "T1.5.", "1.5"),
        reads("T", "T.5.", ".5"),
        reads("T", "T.5.5", ".5"),
        reads("T", "T1.x", "1"),
        reads("T", "T0.0", "0.0"),
        // Exponents.
        reads("T", "T1.e5", "1.e5"),
        reads("T", "T.5e1", ".5e1"),
        reads("T", "T1e5", "1e5"),
        reads("T", "T1E5", "1E5"),
        reads("T", "T1d5", "1d5"),
        reads("T", "T1D5", "1D5"),
        reads("T", "T1d-3", "1d-3"),
        reads("T", "T1e+3.", "1e+3"),
        reads("T", "T1e", "1"),
        reads("T", "T1e+", "1"),
        reads("T", "T1e-x", "1"),
        reads("T", "T1e+-3", "1"),
        reads("T", "T1.e", "1"),
        reads("T", "T1.e+", "1"),
        reads("T", "T.5e", ".5"),
        reads("T", "T1ee5", "1"),
        reads("T", "T1de5", "1"),
        reads("T", "T1e.5", "1"),
        reads("T", "T1E5E5", "1E5"),
        reads("T", "T1e5.5", "1e5"),
        reads("T", "T1f5", "1"),
        refuses("T", "Te5"),
        // What else may stand behind the marker.
        refuses("T", "T"),
        refuses("T", "T 1"),
        refuses("T", "T/1"),
        refuses("T", "Tinf"),
        refuses("T", "Tnan"),
        refuses("T", "T\xb2"),
        refuses("T", std::string("T\0001", 3)),
        reads("T", std::string("T1\0002", 4), "1"),
        reads("T", "T1\xb2", "1"),
        reads("T", "T1/2", "1"),
        reads("T", "T1\\2", "1"),
        reads("T", "T1,5", "1"),
        reads("T", "T1 5", "1"),
        reads("T", "T0x10", "0"),
        reads("T", "T007", "007"),
        reads("T", "T0123456789", "0123456789"),
        reads("", "12", "12"),
        reads("a/T", "a/T12", "12"),
        reads("T1", "T12", "2"),
        reads("T-", "T-2", "2"),
    };
    expectRows(NumberValue, rows);
}

TEST(CrawlerFilePath, ReadsNumbersOfAnyLength)
{
    const std::string digits(200000, '7');
    expectRows(NumberValue, {reads("T", "T-" + digits + "." + digits + "e-" + digits + "x",
                                   "-" + digits + "." + digits + "e-" + digits)});
}

TEST(CrawlerFilePath, EndsANumberAtTheNextMarker)
{
    expectValues("T1234", {{"T", NumberValue}, {"3", NumberValue}}, true, {"12", "4"});
    expectValues("T1.5e3", {{"T", NumberValue}, {"e", NumberValue}}, true, {"1.5", "3"});
    expectValues("T1e+5", {{"T", NumberValue}, {"+", NumberValue}}, true, {"1", "5"});
    expectValues("T1e5", {{"T", NumberValue}, {"5", StringValue}}, false, {"1"});
    expectValues("T12.34", {{"T", NumberValue}, {".", NumberValue}}, true, {"12", "34"});
    expectValues("T12.34", {{"T", NumberValue}, {"3", NumberValue}}, true, {"12", "4"});
    expectValues("T.56", {{"T", NumberValue}, {"5", NumberValue}}, false, {});
    expectValues("T-56", {{"T", NumberValue}, {"5", NumberValue}}, false, {});
    expectValues("T56", {{"T", NumberValue}, {"5", NumberValue}}, false, {});
    expectValues("T12", {{"T", NumberValue}, {"", NumberValue}}, false, {});
    expectValues("12T", {{"", NumberValue}, {"", NumberValue}}, true, {"1", "2"});
}

TEST(CrawlerFilePath, ReadsTextUpToASeparator)
{
    const std::vector<Row> rows = {
        reads("T", "T20/x", "20"),
        reads("T", "T20\\x", "20"),
        reads("T", "T20\\x/y", "20"),
        reads("T", "T20/x\\y", "20"),
        reads("T", "a/b/T20/x", "20"),
        // One character is enough before a separator.
        reads("T", "T5/", "5"),
        reads("T", "T5\\", "5"),
        reads("T", "T5/x.dat", "5"),
        // Directly behind the marker.
        reads("T", "T/", ""),
        reads("T", "T\\", ""),
        reads("T", "T/x.dat", ""),
        reads("T", "T//x", ""),
        reads("/", "//x", ""),
        reads("//", "//ab.c", "ab"),
        refuses("//", "//a.b"),
        // Separators inside the marker do not count.
        reads("a/b", "a/bc/d", "c"),
        reads("a\\b", "a\\bc\\d", "c"),
        refuses("a/b", "a/bc"),
        // Only the last component loses its extensions.
        reads("T", "T1.5/x", "1.5"),
        reads("T", "T1.5/x.y", "1.5"),
        reads("T", "T1.5.6\\x.y", "1.5.6"),
        reads("T", "T.a/b.c", ".a"),
        reads("T", "T../b", ".."),
        reads("T", "TA.tar.gz/", "A.tar.gz"),
        reads("T", "TA.tar.gz\\", "A.tar.gz"),
        // Any byte but a separator belongs to the text.
        reads("T", "T \xff\n*/x", " \xff\n*"),
        reads("T", std::string("T1\0002/x", 6), std::string("1\0002", 3)),
        reads("\xc3\xa4", "\xc3\xa4\xc3\xb6/x", "\xc3\xb6"),
    };
    expectRows(StringValue, rows);
}

TEST(CrawlerFilePath, ReadsTextUpToTheExtensionsOfTheLastComponent)
{
    const std::vector<Row> rows = {
        reads("T", "T55", "55"),
        reads("T", "T55.dat", "55"),
        reads("T", "TAB.tar.gz", "AB"),
        reads("T", "x/TAB.tar.gz", "AB"),
        reads("T", "x\\TAB.tar.gz", "AB"),
        // Fewer than two characters behind the marker.
        refuses("T", "T"),
        refuses("T", "T5"),
        refuses("T", "T5.dat"),
        refuses("T", "TA.tar.gz"),
        refuses("T", "T.dat"),
        refuses("T", "T..."),
        refuses("data.", "data.csv"),
        refuses("data.c", "data.csv"),
        refuses("A.tar.", "A.tar.gz"),
        refuses("x/", "x/.dat"),
        refuses("a\\", "a\\.b.c"),
        refuses("/", "a/.x"),
        // A marker with a dot of its own, in a component that is all extension.
        reads(".", "x.dat", "dat"),
        reads(".", ".dat", "dat"),
        reads(".", ".d", "d"),
        reads(".d", "x.d", ""),
        reads(".dat", "x.dat", ""),
        reads(".t", "A.tar.gz", "ar.gz"),
        reads(".tar", "A.tar.gz", ".gz"),
        reads(".tar.gz", "A.tar.gz", ""),
        reads(".x", "..x.y", ".y"),
        refuses(".", "..x.y"),
        reads(".x", "..x", ""),
        refuses(".", "..x"),
        refuses(".", "."),
        refuses(".", ".."),
        refuses(".", "..."),
        refuses(".", "...."),
    };
    expectRows(StringValue, rows);
}

TEST(CrawlerFilePath, ReadsNoTextWhereAnExtensionBeginsWithinTheMarker)
{
    const std::vector<Row> rows = {
        refuses("v1.", "v1.55"),
        refuses("v1.", "x/v1.55.dat"),
        refuses("a.b", "x/a.bcc"),
        refuses("/.a", "x/.abc"),
        // The extension that is left off is that of the last component.
        reads("v1.", "v1.55/x", "55"),
        reads("v1.", "v1.55/x.dat", "55"),
        reads("a.b", "x/a.bcc/y", "cc"),
        // And where nothing stands before it, none is left off.
        reads(".", "x.d", "d"),
        reads(".d", "x.dat", "at"),
        reads(".dat", "x.dat", ""),
    };
    expectRows(StringValue, rows);
}

TEST(CrawlerFilePath, TakesNoExtensionFromComponentsOfOneOrTwoDots)
{
    const std::vector<Row> rows = {
        // Without a marker the whole segment is read.
        reads("", "", ""),
        reads("", "AB", "AB"),
        reads("", "AB.tar.gz", "AB"),
        refuses("", "A"),
        refuses("", "A.tar.gz"),
        reads("", ".dat", ".dat"),
        reads("", ".tar.gz", ".tar.gz"),
        refuses("", "."),
        reads("", "..", ".."),
        reads("", "...", ".."),
        reads("", "....", ".."),
        refuses("", "a.."),
        reads("", "ab..", "ab"),
        refuses("", "..x"),
        refuses("", "..x.y"),
        reads("", "/", ""),
        reads("", "\\", ""),
        reads("", "ab/", "ab"),
        reads("", "x/.dat", "x"),
        reads("", "a\\.b.c", "a"),
        reads("x", "x/.dat", ""),
        reads("a", "a\\.b.c", ""),
        // The same behind a separator.
        refuses("/", "a/."),
        refuses("\\", "a\\."),
        reads("/", "a/..", ".."),
        reads("\\", "a\\..", ".."),
        reads("/", "a/...", ".."),
        refuses("/", "a/..x"),
        refuses("/", "a/b."),
        reads("/", "a/bc.", "bc"),
        reads("/", "a/bc..", "bc"),
        reads("/", "a/bc.d/", "bc.d"),
        reads("/", "a/bc.d/.", "bc.d"),
        reads("/", "a/.x/..", ".x"),
        reads("T", "aT/", ""),
        reads("ab", "ab//", ""),
        reads("T", "T55/.", "55"),
    };
    expectRows(StringValue, rows);
}

TEST(CrawlerFilePath, TakesTheExtensionsFromEverySegment)
{
    expectValues("caseAA.b_T5", {{"case", StringValue}, {"_T", NumberValue}}, true, {"AA", "5"});
    expectValues("caseA.b_T5", {{"case", StringValue}, {"_T", NumberValue}}, false, {});
    expectValues("caseAA.b.c/_T5", {{"case", StringValue}, {"_T", NumberValue}}, true,
                 {"AA.b.c", "5"});
    expectValues("x.A_T5", {{".", StringValue}, {"_T", NumberValue}}, true, {"A", "5"});
    expectValues("x.A.B_T5", {{".", StringValue}, {"_T", NumberValue}}, true, {"A.B", "5"});
    expectValues("d1.5/e2.5/x", {{"d", StringValue}, {"e", StringValue}}, true, {"1.5", "2.5"});
    expectValues("d11.5e22.5", {{"d", StringValue}, {"e", StringValue}}, true, {"11", "22"});
    // The next marker takes the separator away.
    expectValues("d1/e2/x", {{"d", StringValue}, {"/e", StringValue}}, false, {});
    expectValues("d11/e2/x", {{"d", StringValue}, {"/e", StringValue}}, true, {"11", "2"});
}

TEST(CrawlerFilePath, ReadsAsManyMarkersAsThereAre)
{
    for (const std::size_t count : {31U, 32U, 33U, 34U, 100U}) {
        SCOPED_TRACE(count);
        std::string path;
        Texts values;
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(std::to_string(i));
            path += "_T" + values.back();
        }
        const Patterns patterns(count, {"_T", NumberValue});
        CrawlerFilePath file(path);

        EXPECT_TRUE(file.applyMetadataPatterns(patterns));

        EXPECT_EQ(file.metadataValues(), values);
        EXPECT_EQ(infoValues(file), values);
    }
}

TEST(CrawlerFilePath, KeepsWhatWasReadBeforeThePatternThatFailed)
{
    CrawlerFilePath file("T20_P30/U40");
    ASSERT_TRUE(file.applyMetadataPatterns({{"T", NumberValue}}));
    file.clearMetadataInfoList();

    EXPECT_FALSE(
        file.applyMetadataPatterns({{"_P", NumberValue}, {"/", StringValue}, {"U", StringValue}}));

    EXPECT_FALSE(file.isMatched());
    ASSERT_EQ(file.metadataInfoList().size(), 1u);
    expectInfo(file.metadataInfoList()[0], 3, 5, "30");
    EXPECT_EQ(file.metadataValues(), Texts{"20"}) << "the values of the last match stay";
}

TEST(CrawlerFilePath, ReadsNothingWhenALaterMarkerIsMissing)
{
    CrawlerFilePath file("T20_P30");
    ASSERT_TRUE(file.applyMetadataPatterns({{"T", NumberValue}}));
    file.clearMetadataInfoList();

    EXPECT_FALSE(file.applyMetadataPatterns({{"T", NumberValue}, {"_X", NumberValue}}));

    EXPECT_FALSE(file.isMatched());
    EXPECT_TRUE(file.metadataInfoList().empty());
    EXPECT_EQ(file.metadataValues(), Texts{"20"});
}

TEST(CrawlerFilePath, AppendsToTheMetadataThatItHolds)
{
    CrawlerFilePath file("T20_P30");
    ASSERT_TRUE(file.applyMetadataPatterns({{"T", NumberValue}}));
    EXPECT_TRUE(file.applyMetadataPatterns({{"_P", NumberValue}}));

    EXPECT_EQ(infoValues(file), (Texts{"20", "30"}));
    EXPECT_EQ(file.metadataValues(), (Texts{"20", "30"}));
}

TEST(CrawlerFilePath, ClearsItsMetadataInfosAndNothingElse)
{
    CrawlerFilePath file("T20_P30");
    ASSERT_TRUE(file.applyMetadataPatterns({{"T", NumberValue}, {"_P", NumberValue}}));
    file.setCaseIndex(4);

    file.clearMetadataInfoList();

    EXPECT_TRUE(file.metadataInfoList().empty());
    EXPECT_EQ(file.metadataValues(), (Texts{"20", "30"}));
    EXPECT_TRUE(file.isMatched());
    EXPECT_EQ(file.caseIndex(), 4u);
    EXPECT_EQ(file.filePath(), "T20_P30");
}

TEST(CrawlerFilePath, AnswersItsListsByReference)
{
    CrawlerFilePath file("T20");
    const std::vector<MetadataInfo>& infos = file.metadataInfoList();
    const Texts& values = file.metadataValues();

    ASSERT_TRUE(file.applyMetadataPatterns({{"T", NumberValue}}));

    EXPECT_EQ(infos.size(), 1u);
    EXPECT_EQ(values, Texts{"20"});
}

/// What applying `patterns` throws; empty when it throws nothing.
std::string thrownBy(CrawlerFilePath& file, const Patterns& patterns)
{
    try {
        file.applyMetadataPatterns(patterns);
    } catch (const std::out_of_range& error) {
        return error.what();
    }
    return "";
}

TEST(CrawlerFilePath, ThrowsWhenASegmentIsShorterThanItsMarkerAndAllExtension)
{
    const std::string message = "invalid string position";
    const std::vector<std::pair<std::string, Patterns>> throwing = {
        {".ab", {{".ab", StringValue}, {"b", StringValue}}},
        {"x.ab", {{".ab", StringValue}, {"b", NumberValue}}},
        {"x/.tar.gz", {{".tar.gz", StringValue}, {"gz", StringValue}}},
        {"x.abcd", {{".abc", StringValue}, {"bcd", StringValue}}},
    };
    for (const auto& row : throwing) {
        SCOPED_TRACE("path \"" + row.first + "\"," + plain::describe(row.second));
        CrawlerFilePath file(row.first);
        EXPECT_EQ(thrownBy(file, row.second), message);
    }

    // Anything left of the segment without its extensions makes the path unmatched instead.
    for (const auto& row : std::vector<std::pair<std::string, Patterns>>{
             {"xab", {{"xab", StringValue}, {"b", StringValue}}},
             {"x.ab", {{"x.ab", StringValue}, {"b", StringValue}}},
             {"..b", {{"..b", StringValue}, {".b", StringValue}}},
             {"/.ab", {{"/.ab", StringValue}, {"b", StringValue}}},
         }) {
        SCOPED_TRACE("path \"" + row.first + "\"," + plain::describe(row.second));
        CrawlerFilePath file(row.first);
        EXPECT_EQ(thrownBy(file, row.second), "");
        EXPECT_FALSE(file.isMatched());
    }
}

TEST(CrawlerFilePath, KeepsItsAnswersWhenAnOverlapThrows)
{
    CrawlerFilePath file("12/.ab");
    ASSERT_TRUE(file.applyMetadataPatterns({{"", NumberValue}}));
    file.setCaseIndex(5);
    file.clearMetadataInfoList();

    EXPECT_EQ(thrownBy(file, {{"1", NumberValue}, {".ab", StringValue}, {"b", StringValue}}),
              "invalid string position");

    EXPECT_TRUE(file.isMatched());
    EXPECT_EQ(infoValues(file), Texts{"2"});
    EXPECT_EQ(file.metadataValues(), Texts{"12"});
    EXPECT_EQ(file.caseIndex(), 5u);
}

/// Everything that can be seen of a record, as one text.
std::string seen(bool matched, std::size_t caseIndex, const std::vector<MetadataInfo>& infos,
                 const Texts& values)
{
    std::string text = matched ? "matched" : "unmatched";
    text += " in " + std::to_string(caseIndex) + ", infos";
    for (const MetadataInfo& info : infos)
        text += " {" + std::to_string(info.patternPosition) + " " +
                std::to_string(info.valuePosition) + " " + std::to_string(info.valueLength) +
                " \"" + info.value + "\"}";
    text += ", values";
    for (const std::string& value : values)
        text += " \"" + value + "\"";
    return text;
}

TEST(CrawlerFilePath, TakesNoMemoryForAPathWithoutAValue)
{
    const Patterns patterns = {{"Mach", NumberValue}, {"AoA", StringValue}};
    const Patterns many(24, MetadataPattern("", NumberValue));
    for (const char* const path : {"a/rather/long/path/without/any/marker/at/all.dat",
                                   "a/rather/long/path/with/Mach0.80/and/nothing/else.dat",
                                   "a/rather/long/path/with/Mach-/AoA2.5/in/its/folders.dat"}) {
        SCOPED_TRACE(path);
        CrawlerFilePath file(path);
        const std::size_t before = doubles::allocations();

        const bool matched =
            file.applyMetadataPatterns(patterns) || file.applyMetadataPatterns(many);

        EXPECT_EQ(doubles::allocations(), before);
        EXPECT_FALSE(matched);
    }
}

TEST(CrawlerFilePath, TakesMemoryTwiceForItsFirstMetadataAndNoMoreForOthers)
{
    const Patterns patterns = {{"Mach", NumberValue}, {"AoA", StringValue}, {"run_", NumberValue}};
    const Patterns others = {{"AoA", NumberValue}, {"run_", NumberValue}, {"f", StringValue}};
    CrawlerFilePath file("a/rather/long/path/with/Mach0.80/AoA-2.5/run_0007/flow.vtu");
    const std::size_t before = doubles::allocations();

    ASSERT_TRUE(file.applyMetadataPatterns(patterns));
    EXPECT_EQ(doubles::allocations(), before + 2);
    file.clearMetadataInfoList();
    ASSERT_TRUE(file.applyMetadataPatterns(others));
    EXPECT_EQ(doubles::allocations(), before + 2);
    EXPECT_EQ(file.metadataValues(), (Texts{"-2.5", "0007", "low"}));
}

TEST(CrawlerFilePath, EqualsThePlainRulesForRandomPathsAndPatterns)
{
    // The shorter one makes markers overlap more often.
    const std::string alphabets[] = {"ab/\\.019+-eED_T", "ab./1"};
    const unsigned seed = 20190;
    plain::Random random(seed);
    std::size_t matches = 0;
    std::size_t failures = 0;
    std::size_t throws = 0;
    for (int round = 0; round < 40000; ++round) {
        const std::string& alphabet = alphabets[round % 2];
        const std::string path = plain::randomText(random, alphabet, 14);
        CrawlerFilePath file(path);
        plain::Record expected;
        expected.path = path;
        std::string history = "seed " + std::to_string(seed) + ", round " + std::to_string(round) +
                              ", path \"" + path + "\"";
        for (int application = 0; application < 3; ++application) {
            const Patterns patterns = plain::randomPatterns(random, path, alphabet, 4);
            const bool clears = plain::below(random, 4) != 0;
            history += clears ? ", cleared," : ", kept,";
            history += plain::describe(patterns);
            SCOPED_TRACE(history);
            if (clears) {
                file.clearMetadataInfoList();
                expected.infos.clear();
            }

            std::string expectedAnswer;
            try {
                expectedAnswer = plain::apply(expected, patterns) ? "true" : "false";
            } catch (const std::out_of_range& error) {
                expectedAnswer = error.what();
            }
            std::string answer;
            try {
                answer = file.applyMetadataPatterns(patterns) ? "true" : "false";
            } catch (const std::out_of_range& error) {
                answer = error.what();
            }

            ASSERT_EQ(answer, expectedAnswer);
            ASSERT_EQ(seen(file.isMatched(), file.caseIndex(), file.metadataInfoList(),
                           file.metadataValues()),
                      seen(expected.matched, expected.caseIndex, expected.infos, expected.values));
            ++(answer == "true" ? matches : answer == "false" ? failures : throws);
        }
        ASSERT_EQ(file.filePath(), path);
    }
    // The input is worth something only if it reaches every outcome.
    EXPECT_GT(matches, 1000u);
    EXPECT_GT(failures, 1000u);
    EXPECT_GT(throws, 100u);
}

} // namespace
