#include "casetable/explaining/Explain.h"

#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/Printable.h"
#include "crawler/CrawlerBasicImporterParser.h"
#include "host/AuxFileInfoInterface.h"
#include "tests/crawler/PlainMatching.h"

namespace casetable {
namespace tests {

namespace {

using Patterns = std::vector<MetadataPattern>;

const MetadataPattern::ValueType text = MetadataPattern::StringValue;
const MetadataPattern::ValueType number = MetadataPattern::NumberValue;

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string explained(const std::string& path, const Patterns& patterns)
{
    return explain(path, patterns, false).text;
}

// The line about the only marker.
std::string lineAbout(const std::string& path, const MetadataPattern& pattern)
{
    return linesOf(explained(path, {pattern})).at(1);
}

// What is said below the markers about a path that is not matched.
std::string verdict(const std::string& path, const Patterns& patterns)
{
    const Explanation explanation = explain(path, patterns, false);
    EXPECT_FALSE(explanation.isMatched);
    const std::size_t begin = explanation.text.find("\nnot matched: ");
    return begin == std::string::npos ? explanation.text : explanation.text.substr(begin + 1);
}

std::string marker(const MetadataPattern& pattern)
{
    return (pattern.valueType == number ? "-n " : "-s ") + printable(pattern.pattern);
}

// Why a path is not matched, said once more by the plain rules, in the words that must be in the
// verdict; empty for a match.
std::vector<std::string> plainReason(const std::string& path, const Patterns& patterns)
{
    std::vector<std::size_t> positions;
    if (!plain::locate(path, patterns, positions)) {
        const std::string& missing = patterns[positions.size()].pattern;
        return {path.find(missing) == std::string::npos ? "does not stand in the path"
                                                        : "stands only in front of the place"};
    }
    plain::Record record;
    record.path = path;
    bool stopsImport = false;
    try {
        if (plain::extract(record, patterns, positions))
            return {};
    } catch (const std::out_of_range&) {
        stopsImport = true;
    }
    const std::size_t k = record.infos.size();
    const bool isLast = k + 1 == patterns.size();
    const std::size_t length = patterns[k].pattern.size();
    const std::string segment = path.substr(positions[k], positions[k + 1] - positions[k]);
    if (stopsImport)
        return {"begins within", "stops the whole import"};
    if (segment.size() < length)
        return {"the next marker", "begins within"};
    if (segment.size() == length)
        return {isLast ? "the path ends with" : "begins right behind"};
    if (patterns[k].valueType == number)
        return {"begins no number"};
    const std::size_t stripped = plain::withoutExtensions(segment).size();
    if (stripped < length)
        return {"the extension", "begins within"};
    if (stripped == length)
        return {"only the extension"};
    return {"One character at the end of a segment is not taken as a value",
            "only '" + printable(segment.substr(length, 1)) + "' stands behind"};
}

} // namespace

TEST(Explain, ShowsMarkersAndValuesUnderThePath)
{
    const Explanation explanation =
        explain("wingA/Mach0.80/AoA-2.5/run_0001_Re65e5.vtu",
                {{"wing", text}, {"Mach", number}, {"AoA", number}, {"_Re", text}}, false);

    EXPECT_TRUE(explanation.isMatched);
    EXPECT_EQ(explanation.text,
              "wingA/Mach0.80/AoA-2.5/run_0001_Re65e5.vtu\n"
              "^^^^~  -s wing: 'A', up to the /\n"
              "      ^^^^~~~~  -n Mach: '0.80', up to the /\n"
              "               ^^^~~~~  -n AoA: '-2.5', up to the /\n"
              "                               ^^^~~~~  -s _Re: '65e5', the extension '.vtu' is "
              "left off\n"
              "matched\n");
}

TEST(Explain, TellsWhereAValueEndsAndWhy)
{
    struct Row {
        std::string path;
        MetadataPattern pattern;
        std::string end;
    };
    for (const Row& row : {
             Row{"T20/x", {"T", text}, "'20', up to the /"},
             Row{"T20\\x", {"T", text}, "'20', up to the \\"},
             Row{"T/x", {"T", text}, "'', up to the /"},
             Row{"T20", {"T", text}, "'20', up to the end"},
             Row{"T20.tar.gz", {"T", text}, "'20', the extension '.tar.gz' is left off"},
             Row{"x/.dat",
                 {".", text},
                 "'dat', up to the end; an extension is kept where nothing "
                 "stands before it"},
             Row{"T20/x", {"T", number}, "'20', up to the /"},
             Row{"T20", {"T", number}, "'20', up to the end"},
             Row{"T20_x", {"T", number}, "'20', up to '_'"},
             Row{"T20\xc3\xa4", {"T", number}, "'20', up to '\xc3\xa4'"},
             Row{"T20\xff", {"T", number}, "'20', up to '\\xff'"},
             Row{"T20.dat", {"T", number}, "'20', a point without digits behind it is left off"},
             Row{"T2.0.dat", {"T", number}, "'2.0', up to '.'"},
             Row{"T2e", {"T", number}, "'2', up to 'e', which begins no exponent without digits"},
             Row{"T2e5e", {"T", number}, "'2e5', up to 'e'"},
             Row{"T1D+07",
                 {"T", number},
                 "'1D+07', up to the end; it converts to no number, so its cell holds no value"},
         }) {
        const std::string line = lineAbout(row.path, row.pattern);
        const std::string shown = "  " + marker(row.pattern) + ": " + row.end;
        ASSERT_GE(line.size(), shown.size()) << line;
        EXPECT_EQ(line.substr(line.size() - shown.size()), shown);
        EXPECT_EQ(linesOf(explained(row.path, {row.pattern})).at(2), "matched");
    }
}

TEST(Explain, TellsThatAValueEndsAtTheNextMarker)
{
    EXPECT_EQ(explained("T300_P52", {{"T", text}, {"_P", number}}),
              "T300_P52\n"
              "^~~~  -s T: '300', up to the next marker\n"
              "    ^^~~  -n _P: '52', up to the end\n"
              "matched\n");
    EXPECT_EQ(explained("T1234", {{"T", number}, {"3", number}}),
              "T1234\n"
              "^~~  -n T: '12', up to the next marker\n"
              "   ^~  -n 3: '4', up to the end\n"
              "matched\n");
}

TEST(Explain, TellsAMarkerThatIsNotInThePath)
{
    EXPECT_EQ(explained("T1/x", {{"T", number}, {"P", number}, {"Q", text}}),
              "T1/x\n"
              "^  -n T: found, not read\n"
              "-n P: not found\n"
              "-s Q: not searched for\n"
              "not matched: -n P does not stand in the path\n"
              "  Every marker must be found before any value is read.\n");
}

TEST(Explain, TellsAMarkerThatStandsOnlyBeforeItsSearch)
{
    EXPECT_EQ(explained("P2/T1.dat", {{"T", number}, {"P", number}}),
              "P2/T1.dat\n"
              "   ^  -n T: found, not read\n"
              "^  -n P: stands only here\n"
              "not matched: -n P stands only in front of the place where its search starts\n"
              "  Each marker is searched for behind the first byte of the one before.\n");
    EXPECT_EQ(linesOf(explained("T1", {{"T", number}, {"T", number}})).at(2),
              "^  -n T: stands only here");
}

TEST(Explain, SaysThatOneCharacterAtTheEndOfASegmentIsNotTaken)
{
    EXPECT_EQ(explained("run_T300_P5.dat", {{"_T", number}, {"_P", text}}),
              "run_T300_P5.dat\n"
              "   ^^~~~  -n _T: '300', up to the next marker\n"
              "        ^^  -s _P: no value\n"
              "not matched: only '5' stands behind -s _P, as the extension '.dat' is left off\n"
              "  One character at the end of a segment is not taken as a value; a segment ends\n"
              "  at the next marker or with the path. A number may be one digit:\n"
              "  -n _P\n");
    EXPECT_EQ(linesOf(verdict("T5", {{"T", text}})).at(0),
              "not matched: only '5' stands behind -s T");
    EXPECT_EQ(verdict("Tx", {{"T", text}}),
              "not matched: only 'x' stands behind -s T\n"
              "  One character at the end of a segment is not taken as a value; a segment ends\n"
              "  at the next marker or with the path.\n");
    EXPECT_EQ(linesOf(verdict("T5P66", {{"T", text}, {"P", text}})).at(0),
              "not matched: only '5' stands behind -s T");
    EXPECT_EQ(linesOf(verdict("T\xff", {{"T", text}})).at(0),
              "not matched: only '\\xff' stands behind -s T");
}

TEST(Explain, TellsExtensionsThatLeaveNoText)
{
    EXPECT_EQ(verdict("a/T.dat", {{"T", text}}),
              "not matched: only the extension '.dat' stands behind -s T\n"
              "  Extensions at the end of a segment are left off.\n");
    EXPECT_EQ(verdict("a/run.v12", {{"run.v", text}}),
              "not matched: the extension '.v12' begins within -s run.v\n"
              "  Extensions at the end of a segment are left off.\n");
}

TEST(Explain, TellsAPathThatEndsWithTheMarker)
{
    EXPECT_EQ(verdict("a/T", {{"T", text}}),
              "not matched: the path ends with -s T\n"
              "  A text that no / or \\ ends has two characters or more.\n");
    EXPECT_EQ(linesOf(verdict("a/T", {{"T", number}})).at(0),
              "not matched: the path ends with -n T");
}

TEST(Explain, ShowsWhatBeginsNoNumber)
{
    const std::vector<std::vector<std::string>> rows = {{"Tx12", "x"},
                                                        {"T/1", "/"},
                                                        {"T-", "-"},
                                                        {"T+x", "+x"},
                                                        {"T.x", ".x"},
                                                        {"T-.", "-."},
                                                        {"T--1", "--"},
                                                        {"T\xc3\xa4", "\xc3\xa4"},
                                                        {"T-\xff\x80", "-\\xff\\x80"}};
    for (const std::vector<std::string>& row : rows)
        EXPECT_EQ(verdict(row[0], {{"T", number}}),
                  "not matched: '" + row[1] +
                      "' behind -n T begins no number\n"
                      "  A number is an optional sign and digits; a point may stand among them or "
                      "before them.\n");
}

TEST(Explain, TellsMarkersThatLeaveNoRoomForAValue)
{
    EXPECT_EQ(verdict("T1", {{"T", number}, {"1", number}}),
              "not matched: the next marker, -n 1, begins right behind -n T\n"
              "  A value ends where the next marker begins.\n");
    EXPECT_EQ(verdict("Temp12", {{"Temp", number}, {"emp", number}}),
              "not matched: the next marker, -n emp, begins within -n Temp\n"
              "  A value ends where the next marker begins.\n");
}

TEST(Explain, TellsMarkersThatStopTheWholeImport)
{
    const std::string path = "x/.ab12";
    const Patterns patterns = {{".ab", text}, {"b", number}};
    CrawlerBasicImporterParser parser;
    parser.appendRawFilePath(path);
    ASSERT_THROW(parser.applyMetadataPatternList(patterns), std::out_of_range);

    EXPECT_EQ(
        explained(path, patterns),
        "x/.ab12\n"
        "  ^^^  -s .ab: no value\n"
        "    ^  -n b: found, not read\n"
        "not matched: the next marker, -n b, begins within -s .ab\n"
        "  What is left of the marker is all extension: such a path stops the whole import.\n");
}

TEST(Explain, AlignsUnderEscapesAndWideCharacters)
{
    EXPECT_EQ(explained("\n\xe7\xbf\xbc\xff_T1\x1bP\xc3\xa4\xc3\xa4/x",
                        {{"_T", number}, {"\x1bP", text}}),
              "\\n\xe7\xbf\xbc\\xff_T1\\x1bP\xc3\xa4\xc3\xa4/x\n"
              "        ^^~  -n _T: '1', up to the next marker\n"
              "           ^^^^^~~  -s \\x1bP: '\xc3\xa4\xc3\xa4', up to the /\n"
              "matched\n");
}

TEST(Explain, AlignsWhereAMarkerDividesACharacter)
{
    EXPECT_EQ(explained("T\xc3\xa4"
                        "12",
                        {{"T\xc3", text}}),
              "T\\xc3\\xa412\n"
              "^^^^^~~~~~~  -s T\\xc3: '\\xa412', up to the end\n"
              "matched\n");
}

TEST(Explain, ColoursNothingButTheMarks)
{
    const Patterns patterns = {{"T", number}, {"P", number}};

    EXPECT_EQ(explain("T1P2", patterns, true).text,
              "T1P2\n"
              "\x1b[1m^~\x1b[0m  -n T: '1', up to the next marker\n"
              "  \x1b[1m^~\x1b[0m  -n P: '2', up to the end\n"
              "matched\n");
}

TEST(Explain, AgreesWithTheModuleOnEveryPath)
{
    const std::string alphabet = "T.P1122-+..e/\\_a";
    plain::Random random(20241103);
    std::map<std::string, int> reasons;
    for (int round = 0; round < 20000; ++round) {
        const std::string path = plain::randomText(random, alphabet, 14);
        Patterns patterns = plain::randomPatterns(random, path, alphabet, 3);
        for (MetadataPattern& pattern : patterns) {
            if (pattern.pattern.empty())
                pattern.pattern = "T";
        }
        if (patterns.empty())
            continue;
        SCOPED_TRACE(path + plain::describe(patterns));
        CrawlerBasicImporterParser parser;
        parser.appendRawFilePath(path);
        try {
            parser.applyMetadataPatternList(patterns);
        } catch (const std::out_of_range&) { // Then it is not matched.
        }
        const bool isMatched = parser.crawlerFilePathList().front()->isMatched();
        const std::vector<MetadataInfo> infos = parser.metadataInfoList(path);

        const Explanation explanation = explain(path, patterns, false);
        const std::vector<std::string> lines = linesOf(explanation.text);

        ASSERT_EQ(explanation.isMatched, isMatched);
        ASSERT_GT(lines.size(), patterns.size() + 1);
        ASSERT_EQ(lines[0], path);
        for (std::size_t k = 0; k < patterns.size(); ++k) {
            const std::string& line = lines[k + 1];
            if (k >= infos.size()) {
                ASSERT_EQ(line.find('~'), std::string::npos) << line;
                continue;
            }
            const std::string expected = std::string(infos[k].patternPosition, ' ') +
                                         std::string(patterns[k].pattern.size(), '^') +
                                         std::string(infos[k].valueLength, '~') + "  " +
                                         marker(patterns[k]) + ": '" + infos[k].value + "', ";
            ASSERT_EQ(line.substr(0, expected.size()), expected);
        }

        const std::vector<std::string> reason = plainReason(path, patterns);
        ASSERT_EQ(reason.empty(), isMatched);
        for (const std::string& words : reason)
            ASSERT_NE(verdict(path, patterns).find(words), std::string::npos) << words << "\n"
                                                                              << explanation.text;
        ++reasons[reason.empty() ? "matched" : reason.front()];
    }
    EXPECT_EQ(reasons.size(), 11u) << testing::PrintToString(reasons);
    for (const auto& reason : reasons)
        EXPECT_GT(reason.second, 10) << reason.first;
}

TEST(Explain, ShowsNoControlCharacterWhateverThePathHolds)
{
    plain::Random random(77);
    const std::string alphabet = "T1\n\x1b\xff\xc3\xa4\xe7\xbf\xbc/\x7f.";
    for (int round = 0; round < 3000; ++round) {
        const std::string path = plain::randomText(random, alphabet, 16);
        Patterns patterns = plain::randomPatterns(random, path, alphabet, 3);
        patterns.emplace_back("T", text);
        for (MetadataPattern& pattern : patterns) {
            if (pattern.pattern.empty())
                pattern.pattern = "\xff";
        }
        const std::string text = explained(path, patterns);
        SCOPED_TRACE(testing::PrintToString(text));
        for (const std::string& line : linesOf(text))
            ASSERT_EQ(printable(line), line);
        ASSERT_GE(linesOf(text).size(), patterns.size() + 2);
    }
}

} // namespace tests
} // namespace casetable
