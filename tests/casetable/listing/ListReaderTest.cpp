#include "casetable/listing/ListReader.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/ExitCode.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

// A reader, and the files that it has handed on.
struct ListReading {
    explicit ListReading(bool nullSeparated = false, Selection selection = {}, bool rereads = true)
        : reader(options(nullSeparated, std::move(selection), rereads),
                 [this](std::string_view path) { files.emplace_back(path); })
    {
    }

    void append(std::string_view piece)
    {
        text += piece;
        reader.append(piece);
    }

    Texts sortedFiles() const
    {
        Texts sorted = files;
        std::sort(sorted.begin(), sorted.end());
        return sorted;
    }

    std::string text; // So far.
    Texts files;
    ListReader reader;

private:
    ListReader::Options options(bool nullSeparated, Selection selection, bool rereads)
    {
        ListReader::Options options = {"list", nullSeparated, std::move(selection), nullptr};
        if (rereads) {
            // Cut elsewhere than the pieces of the first reading.
            options.reread = [this](const auto& take) {
                const std::size_t middle = text.size() / 2;
                take(std::string_view(text).substr(0, middle));
                take(std::string_view(text).substr(middle));
            };
        }
        return options;
    }
};

// The files of a list of lines, in byte order.
Texts read(const std::string& text, const Selection& selection = {})
{
    ListReading reading(false, selection);
    reading.append(text);
    reading.reader.finish();
    return reading.sortedFiles();
}

// Fills the list, and answers why it refused the text.
std::string refusal(ListReading& reading, const std::string& text)
{
    try {
        reading.append(text);
        reading.reader.finish();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::ImportFailed);
        return failure.what();
    }
    return "no refusal";
}

std::string refusal(const std::string& text)
{
    ListReading reading;
    return refusal(reading, text);
}

std::string refusalOfRecords(const std::string& text)
{
    ListReading reading(true);
    return refusal(reading, text);
}

std::string repeated(const std::string& text, std::size_t count)
{
    std::string all;
    for (; count > 0; --count)
        all += text;
    return all;
}

} // namespace

TEST(ListReader, HandsOnTheFilesInTheOrderOfTheLines)
{
    ListReading reading;
    reading.append("b\na/x\nb\nc\na");
    reading.append("/x\na/w\n");
    reading.reader.finish();

    EXPECT_EQ(reading.files, Texts({"b", "a/x", "c", "a/w"}));
    EXPECT_EQ(reading.reader.pathCount(), 6u);
}

TEST(ListReader, MayBeEmpty)
{
    EXPECT_EQ(read(""), Texts());
}

TEST(ListReader, CountsALastLineWithoutItsEnd)
{
    EXPECT_EQ(read("a\nb"), Texts({"a", "b"}));
    EXPECT_EQ(read("a\nb\n"), Texts({"a", "b"}));
}

TEST(ListReader, TakesPathsAsTheyStand)
{
    EXPECT_EQ(read("./a/b\n"), Texts({"./a/b"}));
    EXPECT_EQ(read("a/./b\na/b\n"), Texts({"a/./b", "a/b"}));
    EXPECT_EQ(read("a\r\nb \n\\n\n-n\n"), Texts({"-n", "\\n", "a\r", "b "}));
    EXPECT_EQ(read("\xff\xfe/\xc3\n...\n..a/b..\n"), Texts({"...", "..a/b..", "\xff\xfe/\xc3"}));
}

TEST(ListReader, MayBeDividedByNulls)
{
    ListReading reading(true);
    reading.append(std::string("a\n/b\0c\0", 7));
    reading.append("d");
    reading.reader.finish();

    EXPECT_EQ(reading.files, Texts({"a\n/b", "c", "d"}));
    EXPECT_EQ(reading.reader.pathCount(), 3u);
}

TEST(ListReader, HoldsAPathOnceHoweverOftenItOccurs)
{
    EXPECT_EQ(read("b\na/x\nb\na/x\na/x"), Texts({"a/x", "b"}));
}

TEST(ListReader, HandsOnWhatTheSelectionTakes)
{
    const std::string text = "x.log\n.x\na/x.log\na/x\na/b/x\nc/x\n./a/y\n./b/c/y\n";
    Selection selection;

    selection.excluded = {Glob("*.log"), Glob("/c")};
    EXPECT_EQ(read(text, selection), Texts({"./a/y", "./b/c/y", ".x", "a/b/x", "a/x"}));
    selection.excluded = {Glob("a/b/"), Glob("/a/y")};
    EXPECT_EQ(read(text, selection), Texts({"./b/c/y", ".x", "a/x", "a/x.log", "c/x", "x.log"}));
    selection.excluded.clear();
    selection.maxDepth = 1;
    EXPECT_EQ(read(text, selection), Texts({".x", "x.log"}));
    selection.maxDepth = 2;
    EXPECT_EQ(read(text, selection), Texts({"./a/y", ".x", "a/x", "a/x.log", "c/x", "x.log"}));
}

TEST(ListReader, RefusesEmptyPathsAndComponents)
{
    EXPECT_EQ(refusal("a\n\nb\n"), "list: line 2: the path is empty");
    EXPECT_EQ(refusal("\n"), "list: line 1: the path is empty");
    EXPECT_EQ(refusal("a//b\n"), "list: line 1: a//b: a component of the path is empty");
    EXPECT_EQ(refusal("x\ny\na/b/"),
              "list: line 3: a/b/: a path that ends in / names a folder; list files only");
    EXPECT_EQ(refusalOfRecords(std::string("a\0\0", 3)), "list: record 2: the path is empty");
    EXPECT_EQ(refusalOfRecords(std::string("a\nb//\0", 6)),
              "list: record 1: a\\nb//: a path that ends in / names a folder; list files only");
}

TEST(ListReader, RefusesADotAtTheEndOfAPath)
{
    for (const std::string path : {".", "./.", "a/."}) {
        EXPECT_EQ(refusal("x\n" + path + "\n"),
                  "list: line 2: " + path +
                      ": a path that ends in . names a folder; list files only");
    }
    EXPECT_EQ(refusal("a.\na/..b.\na/b/...\n"), "no refusal");
}

TEST(ListReader, RefusesAbsolutePathsAndThoseThatClimbOut)
{
    EXPECT_EQ(refusal("a\n/b\n"),
              "list: line 2: /b: the path is absolute; list files relative to one folder");
    EXPECT_EQ(refusal("//b\n"),
              "list: line 1: //b: the path is absolute; list files relative to one folder");
    for (const std::string path : {"..", "../a", "a/..", "a/../b", "./.."}) {
        EXPECT_EQ(refusal(path + "\n"),
                  "list: line 1: " + path + ": the path climbs out by \"..\"");
    }
    EXPECT_EQ(refusal("...\n..a/b\na../b\n"), "no refusal");
}

TEST(ListReader, RefusesANullInALine)
{
    const std::string reason = ": a path holds no NUL; a list divided by NULs needs --null";
    EXPECT_EQ(refusal(std::string("x\na/b\0c/d\n", 10)), "list: line 2: a/b\\x00" + reason);
    EXPECT_EQ(refusal(std::string("/\0", 2)), "list: line 1: /\\x00" + reason);
}

TEST(ListReader, RefusesANullBeforeItsLineEnds)
{
    ListReading reading;
    reading.append("x\na");

    EXPECT_THROW(reading.append(std::string_view("\0", 1)), Failure);
}

TEST(ListReader, RefusesLinesWhereNullsAreExpected)
{
    EXPECT_EQ(refusalOfRecords("a\nb\n"),
              "list: record 1: a\\nb\\n: no NUL ends it; a list of lines is read without --null");
    EXPECT_EQ(refusalOfRecords(std::string("a\nb\0", 4)), "no refusal");
    EXPECT_EQ(refusalOfRecords(std::string("a\0b\nc", 5)), "no refusal");
    EXPECT_EQ(refusalOfRecords("a"), "no refusal");
}

TEST(ListReader, RefusesAPathWithoutEndOnceItIsLongerThanAnyPath)
{
    const std::size_t longest = std::size_t{16} * 1024 * 1024;
    for (const bool nullSeparated : {false, true}) {
        ListReading reading(nullSeparated);
        const std::string piece(longest / 4, 'a');
        for (int i = 0; i < 4; ++i)
            reading.append(piece);
        EXPECT_THROW(reading.append("a"), Failure);
    }
}

TEST(ListReader, RefusesAFileThatIsAFolderToo)
{
    EXPECT_EQ(refusal("a/b\nx\na/b/c\n"),
              "list: line 3: a/b/c: line 1 names a/b as a file; list files only");
    EXPECT_EQ(refusal("a/b/c\na/b\n"),
              "list: line 2: a/b: line 1 names it as a folder; list files only");
    EXPECT_EQ(refusalOfRecords(std::string("a\0a/b", 5)),
              "list: record 2: a/b: record 1 names a as a file; list files only");
    // Others stand between the two in byte order.
    EXPECT_EQ(refusal("a\na!\na.b/c\na/b\n"),
              "list: line 4: a/b: line 1 names a as a file; list files only");
}

TEST(ListReader, NamesTheFirstLineThatContradictsOneBefore)
{
    EXPECT_EQ(refusal("a\nz/y\nz\na/b\n"),
              "list: line 3: z: line 2 names it as a folder; list files only");
    EXPECT_EQ(refusal("a/z\na/y\na\na\na/x\n"),
              "list: line 3: a: line 1 names it as a folder; list files only");
    EXPECT_EQ(refusal("a\na\na/b/c\na/b\n"),
              "list: line 3: a/b/c: line 1 names a as a file; list files only");
}

TEST(ListReader, RefusesMoreFoldersThanAWalkCanEnter)
{
    EXPECT_EQ(refusal(repeated("a/", 20'000) + "a"), "no refusal");
    const std::string text = refusal("x\n" + repeated("a/", 20'001) + "a\n");
    EXPECT_EQ(text.substr(0, 17), "list: line 2: a/a");
    EXPECT_EQ(text.substr(text.find("...")), "...: the path lies below more than 20000 folders");
}

TEST(ListReader, ShowsNoMoreOfALongPathThanItsBeginning)
{
    EXPECT_EQ(refusal("/" + std::string(1'000'000, 'x')),
              "list: line 1: /" + std::string(499, 'x') +
                  "...: the path is absolute; list files relative to one folder");
}

TEST(ListReader, WarnsOfWhatIsProbablyNotMeantAndKeepsIt)
{
    const auto warnings = [](const std::string& text, bool nullSeparated) {
        ListReading reading(nullSeparated);
        reading.append(text);
        reading.reader.finish();
        return reading.reader.warnings();
    };
    const std::string mark = "list: the byte order mark is taken as a part of the first path";
    const std::string returns =
        "list: all lines end in CR LF, and the CR is taken as a part of the paths";
    const std::string quotes = "list: quotes around paths are taken as parts of "
                               "them; with --null a lister need not quote, as with -z or -print0";

    EXPECT_EQ(warnings("\xef\xbb\xbf"
                       "a\n",
                       false),
              Texts({mark}));
    EXPECT_EQ(warnings("a\r\nb\r\n", false), Texts({returns}));
    EXPECT_EQ(warnings("a\n\"b c\"\n", false), Texts({quotes}));
    EXPECT_EQ(warnings("\xef\xbb\xbf\"a\"\r\n", false), Texts({mark, returns}));
    EXPECT_EQ(read("a/b\r\nb\r\n"), Texts({"a/b\r", "b\r"}));

    EXPECT_EQ(warnings("", false), Texts());
    EXPECT_EQ(warnings("a\r\nb\n\"\n\"c\nd\"\n\xef\xbb\xbf\n", false), Texts());
    EXPECT_EQ(warnings(std::string("a\r\0\"b\"\0", 7), true), Texts());
}

TEST(ListReader, IsTheSameHoweverItsTextIsCut)
{
    const std::string text = "b/c\na/b\n./x\n\xff\r\nlast";
    const Texts expected = read(text);
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        ListReading reading;
        reading.append(text.substr(0, cut));
        reading.append("");
        reading.append(text.substr(cut));
        reading.reader.finish();
        EXPECT_EQ(reading.sortedFiles(), expected) << cut;
    }
    ListReading bytes;
    for (const char byte : text)
        bytes.append(std::string_view(&byte, 1));
    bytes.reader.finish();
    EXPECT_EQ(bytes.sortedFiles(), expected);
    EXPECT_EQ(bytes.reader.pathCount(), 5u);
}

TEST(ListReader, IsTheSameHoweverManyLinesAPieceHas)
{
    const unsigned seed = 9;
    std::mt19937 random(seed);
    std::string text;
    std::set<std::string> expected;
    for (int i = 0; i < 20'000; ++i) {
        const auto path = std::to_string(random() % 100) + "/" + std::string(random() % 40, 'a') +
                          std::to_string(random() % 1'000);
        expected.insert(path);
        text += path + "\n";
    }
    for (const std::size_t size : {100u, 5'000u, 1'000'000u}) {
        ListReading reading;
        for (std::size_t begin = 0; begin < text.size(); begin += size)
            reading.append(text.substr(begin, size));
        reading.reader.finish();
        EXPECT_EQ(reading.sortedFiles(), Texts(expected.begin(), expected.end())) << size;
    }
}

TEST(ListReader, ReadsALineOnceMoreOnlyWhereLinesAreNotInByteOrder)
{
    std::size_t count = 0;
    const auto read = [&count](const std::string& text) {
        count = 0;
        ListReader::Options options = {"list", false, {}, nullptr};
        options.reread = [&](const auto& take) {
            ++count;
            take(text);
        };
        ListReader reader(options, [](std::string_view) {});
        reader.append(text);
        reader.finish();
    };

    read("a\na\na!\na.b/c\nb/a\nb/c\nb0\n\xff\n");
    EXPECT_EQ(count, 0u);
    read("b\na\nd\nc\n");
    EXPECT_EQ(count, 1u);
}

namespace {

// Reads the lines one by one, and keeps all files and folders met.
class PlainReading {
public:
    std::set<std::string> files;
    std::size_t refusedLine = 0; // 0 when all are fine.
    bool contradicts = false;

    explicit PlainReading(const Texts& lines)
    {
        // Bad paths are refused as they come, contradictions at the end.
        for (std::size_t i = 0; i < lines.size() && refusedLine == 0; ++i) {
            if (isBad(lines[i]))
                refusedLine = i + 1;
        }
        std::set<std::string> folders;
        for (std::size_t i = 0; i < lines.size() && refusedLine == 0; ++i) {
            const std::set<std::string> above = foldersOf(lines[i]);
            for (const std::string& folder : above)
                contradicts = contradicts || files.count(folder) != 0;
            contradicts = contradicts || folders.count(lines[i]) != 0;
            if (contradicts)
                refusedLine = i + 1;
            folders.insert(above.begin(), above.end());
            files.insert(lines[i]);
        }
    }

private:
    static bool isBad(const std::string& path)
    {
        const std::string framed = "/" + path + "/";
        const bool namesAFolder = framed.size() > 2 && framed.substr(framed.size() - 3) == "/./";
        return namesAFolder || framed.find("//") != std::string::npos ||
               framed.find("/../") != std::string::npos;
    }

    static std::set<std::string> foldersOf(const std::string& path)
    {
        std::set<std::string> folders;
        for (std::size_t i = 0; i < path.size(); ++i) {
            if (path[i] == '/')
                folders.insert(path.substr(0, i));
        }
        return folders;
    }
};

} // namespace

TEST(ListReader, AgreesWithAPlainReadingLineByLine)
{
    const unsigned seed = 5;
    std::mt19937 random(seed);
    const std::string letters = "aab.!0//";
    std::size_t taken = 0;
    std::size_t contradictory = 0;
    for (std::size_t i = 0; i < 6000; ++i) {
        Texts lines(1 + random() % 9);
        for (std::string& line : lines) {
            for (auto length = 1 + random() % 5; length > 0; --length) {
                const bool mayDivide = !line.empty() && line.back() != '/' && length > 1;
                char letter = letters[random() % letters.size()];
                // Mostly good paths.
                if (letter == '/' && !mayDivide && random() % 32 != 0)
                    letter = 'b';
                line += letter;
            }
        }
        // Many of the lists begin in byte order, so that both ways of remembering meet.
        const std::size_t ordered = lines.size() * (i % 4) / 3;
        std::sort(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(ordered));
        std::string text;
        for (const std::string& line : lines)
            text += line + "\n";
        SCOPED_TRACE(testing::PrintToString(text));
        const PlainReading plain(lines);
        ListReading reading(false, {}, i % 5 != 0);

        const std::string refused = refusal(reading, text);

        if (plain.refusedLine != 0) {
            const std::string& path = lines[plain.refusedLine - 1];
            EXPECT_EQ(refused.find("list: line " + std::to_string(plain.refusedLine) + ": " + path +
                                   ": "),
                      0u)
                << refused;
            EXPECT_EQ(refused.find(" as a f") != std::string::npos, plain.contradicts);
            contradictory += plain.contradicts;
        } else {
            EXPECT_EQ(refused, "no refusal");
            EXPECT_EQ(reading.sortedFiles(), Texts(plain.files.begin(), plain.files.end()));
            ++taken;
        }
    }
    EXPECT_GT(taken, 1000u);
    EXPECT_GT(contradictory, 500u);
}

namespace {

// Judges each folder of the path anew.
bool isTaken(const std::string& path, const Selection& selection)
{
    std::size_t depth = 0;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        depth += path.substr(begin, end - begin) == "." ? 0 : 1;
        if (selection.judge(path.substr(0, end), depth, end < path.size()) !=
            Selection::Verdict::Taken)
            return false;
        begin = end + 1;
    }
    return true;
}

} // namespace

TEST(ListReader, JudgesEachPathWithItsFoldersWhateverStandsBefore)
{
    const unsigned seed = 8;
    std::mt19937 random(seed);
    const Texts components = {"a", "ab", ".", ".b", "b.log"};
    std::size_t taken = 0;
    std::size_t leftOut = 0;
    for (int i = 0; i < 2000; ++i) {
        Selection selection;
        selection.hidden = random() % 2 == 0;
        selection.maxDepth = 1 + random() % 5;
        for (const char* const glob : {"*.log", "ab/", "/a/b*"}) {
            if (random() % 2 == 0)
                selection.excluded.emplace_back(glob);
        }
        std::string text;
        Texts expected;
        for (std::size_t line = 0; line < 6; ++line) {
            std::string path;
            for (auto folders = random() % 4; folders > 0; --folders)
                path += components[random() % components.size()] + "/";
            path += std::to_string(line);
            text += path + "\n";
            const bool isExpected = isTaken(path, selection);
            if (isExpected)
                expected.push_back(path);
            ++(isExpected ? taken : leftOut);
        }
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(read(text, selection), expected) << text;
    }
    EXPECT_GT(taken, 1000u);
    EXPECT_GT(leftOut, 1000u);
}

} // namespace tests
} // namespace casetable
