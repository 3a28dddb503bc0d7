#include "casetable/listing/FileList.h"

#include <algorithm>
#include <cstddef>
#include <list>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/ExitCode.h"
#include "crawler/FolderCrawler.h"
#include "tests/crawler/Doubles.h"

namespace casetable {
namespace tests {

namespace {

using EntryPtr = boost::shared_ptr<FileInfoInterface const>;
using Texts = std::vector<std::string>;

Texts walked(FileList& list)
{
    FolderCrawler crawler(list.root());
    doubles::runToEnd(crawler); // On its own thread, whose stack carries deep lists.
    EXPECT_TRUE(crawler.result().errorString.isNull());
    return {crawler.result().files.begin(), crawler.result().files.end()};
}

// The files of a walk through a list of lines.
Texts walked(const std::string& text)
{
    FileList list("list", false);
    list.append(text);
    list.finish();
    return walked(list);
}

// Fills the list, and answers why it refused the text.
std::string refusal(FileList& list, const std::string& text)
{
    try {
        list.append(text);
        list.finish();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::ImportFailed);
        return failure.what();
    }
    return "no refusal";
}

std::string refusal(const std::string& text)
{
    FileList list("list", false);
    return refusal(list, text);
}

std::string refusalOfRecords(const std::string& text)
{
    FileList list("list", true);
    return refusal(list, text);
}

std::map<std::string, EntryPtr> entriesByName(const FileInfoInterface& folder)
{
    std::map<std::string, EntryPtr> entries;
    for (const EntryPtr& entry : folder.entries(std::string()))
        EXPECT_TRUE(entries.emplace(entry->fileName(), entry).second) << entry->fileName();
    return entries;
}

std::string repeated(const std::string& text, std::size_t count)
{
    std::string all;
    for (; count > 0; --count)
        all += text;
    return all;
}

} // namespace

TEST(FileList, IsATreeOfTheFoldersInItsPaths)
{
    FileList list("the list", false);
    list.append("a/b/file\nfile\n");
    list.finish();

    const EntryPtr root = list.root();
    EXPECT_TRUE(root->exists());
    EXPECT_TRUE(root->isDirectory());
    EXPECT_FALSE(root->isFile());
    EXPECT_TRUE(root->isReadable());
    EXPECT_EQ(root->fullPath(), "the list");

    const auto entries = entriesByName(*root);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_TRUE(entries.at("file")->isFile());
    EXPECT_FALSE(entries.at("file")->isDirectory());
    EXPECT_EQ(entries.at("file")->fullPath(), "file");
    const EntryPtr a = entries.at("a");
    EXPECT_TRUE(a->isDirectory());
    EXPECT_FALSE(a->isFile());
    EXPECT_TRUE(a->exists());
    EXPECT_TRUE(a->isReadable());
    EXPECT_EQ(a->fullPath(), "a");

    const EntryPtr b = entriesByName(*a).at("b");
    EXPECT_TRUE(b->isDirectory());
    EXPECT_EQ(b->fileName(), "b");
    EXPECT_EQ(b->fullPath(), "a/b");
    EXPECT_EQ(entriesByName(*b).at("file")->fullPath(), "a/b/file");
}

TEST(FileList, MayBeEmpty)
{
    EXPECT_EQ(walked(""), Texts());
}

TEST(FileList, CountsALastLineWithoutItsEnd)
{
    EXPECT_EQ(walked("a\nb"), Texts({"a", "b"}));
    EXPECT_EQ(walked("a\nb\n"), Texts({"a", "b"}));
}

TEST(FileList, TakesPathsAsTheyStand)
{
    EXPECT_EQ(walked("./a/b\n"), Texts({"./a/b"}));
    EXPECT_EQ(walked("a/./b\na/b\n"), Texts({"a/./b", "a/b"}));
    EXPECT_EQ(walked("a\r\nb \n\\n\n-n\n"), Texts({"-n", "\\n", "a\r", "b "}));
    EXPECT_EQ(walked("\xff\xfe/\xc3\n...\n..a/b..\n"), Texts({"...", "..a/b..", "\xff\xfe/\xc3"}));
}

TEST(FileList, MayBeDividedByNulls)
{
    FileList list("list", true);
    list.append(std::string("a\n/b\0c\0", 7));
    list.append("d");
    list.finish();

    EXPECT_EQ(walked(list), Texts({"a\n/b", "c", "d"}));
    EXPECT_EQ(list.pathCount(), 3u);
}

TEST(FileList, HoldsAPathOnceHoweverOftenItOccurs)
{
    EXPECT_EQ(walked("b\na/x\nb\na/x\na/x"), Texts({"a/x", "b"}));
}

TEST(FileList, ListsInByteOrderOfThePathsBelow)
{
    FileList list("list", false);
    list.append("b\na.txt\na!\nA\na0\nab\n\xff\na/x\n");
    list.finish();

    Texts names;
    for (const EntryPtr& entry : list.root()->entries(std::string()))
        names.push_back(entry->fileName());

    EXPECT_EQ(names, Texts({"A", "a!", "a.txt", "a", "a0", "ab", "b", "\xff"}));
}

TEST(FileList, CountsTheFilesListed)
{
    FileList list("list", false);
    list.append("a\nb\nf/c\nf/d\n");
    list.finish();
    EXPECT_EQ(list.filesSeen, 0u);

    const auto entries = entriesByName(*list.root());
    EXPECT_EQ(list.filesSeen, 2u);
    entriesByName(*entries.at("f"));
    EXPECT_EQ(list.filesSeen, 4u);
}

TEST(FileList, ListsWhatTheSelectionTakes)
{
    FileList list("list", false);
    list.append("x.log\n.x\na/x.log\na/x\na/b/x\nc/x\n./a/y\n./b/c/y\n");
    list.finish();

    list.selection.excluded = {Glob("*.log"), Glob("/c")};
    EXPECT_EQ(walked(list), Texts({"./a/y", "./b/c/y", ".x", "a/b/x", "a/x"}));
    list.selection.excluded = {Glob("a/b/"), Glob("/a/y")};
    EXPECT_EQ(walked(list), Texts({"./b/c/y", ".x", "a/x", "a/x.log", "c/x", "x.log"}));
    list.selection.excluded.clear();
    list.selection.maxDepth = 1;
    EXPECT_EQ(walked(list), Texts({".x", "x.log"}));
    list.selection.maxDepth = 2;
    EXPECT_EQ(walked(list), Texts({"./a/y", ".x", "a/x", "a/x.log", "c/x", "x.log"}));
}

TEST(FileList, RefusesEmptyPathsAndComponents)
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

TEST(FileList, RefusesADotAtTheEndOfAPath)
{
    for (const std::string path : {".", "./.", "a/."}) {
        EXPECT_EQ(refusal("x\n" + path + "\n"),
                  "list: line 2: " + path +
                      ": a path that ends in . names a folder; list files only");
    }
    EXPECT_EQ(refusal("a.\na/..b.\na/b/...\n"), "no refusal");
}

TEST(FileList, RefusesAbsolutePathsAndThoseThatClimbOut)
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

TEST(FileList, RefusesANullInALine)
{
    const std::string reason = ": a path holds no NUL; a list divided by NULs needs --null";
    EXPECT_EQ(refusal(std::string("x\na/b\0c/d\n", 10)), "list: line 2: a/b\\x00" + reason);
    EXPECT_EQ(refusal(std::string("/\0", 2)), "list: line 1: /\\x00" + reason);
}

TEST(FileList, RefusesANullBeforeItsLineEnds)
{
    FileList list("list", false);
    list.append("x\na");

    EXPECT_THROW(list.append(std::string_view("\0", 1)), Failure);
}

TEST(FileList, RefusesLinesWhereNullsAreExpected)
{
    EXPECT_EQ(refusalOfRecords("a\nb\n"),
              "list: record 1: a\\nb\\n: no NUL ends it; a list of lines is read without --null");
    EXPECT_EQ(refusalOfRecords(std::string("a\nb\0", 4)), "no refusal");
    EXPECT_EQ(refusalOfRecords(std::string("a\0b\nc", 5)), "no refusal");
    EXPECT_EQ(refusalOfRecords("a"), "no refusal");
}

TEST(FileList, RefusesAPathWithoutEndOnceItIsLongerThanAnyPath)
{
    const std::size_t longest = std::size_t{16} * 1024 * 1024;
    for (const bool nullSeparated : {false, true}) {
        FileList list("list", nullSeparated);
        const std::string piece(longest / 4, 'a');
        for (int i = 0; i < 4; ++i)
            list.append(piece);
        EXPECT_THROW(list.append("a"), Failure);
    }
}

TEST(FileList, RefusesAFileThatIsAFolderToo)
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

TEST(FileList, NamesTheFirstLineThatContradictsOneBefore)
{
    EXPECT_EQ(refusal("a\nz/y\nz\na/b\n"),
              "list: line 3: z: line 2 names it as a folder; list files only");
    EXPECT_EQ(refusal("a/z\na/y\na\na\na/x\n"),
              "list: line 3: a: line 1 names it as a folder; list files only");
    EXPECT_EQ(refusal("a\na\na/b/c\na/b\n"),
              "list: line 3: a/b/c: line 1 names a as a file; list files only");
}

TEST(FileList, RefusesMoreFoldersThanAWalkCanEnter)
{
    EXPECT_EQ(refusal(repeated("a/", 20'000) + "a"), "no refusal");
    const std::string text = refusal("x\n" + repeated("a/", 20'001) + "a\n");
    EXPECT_EQ(text.substr(0, 17), "list: line 2: a/a");
    EXPECT_EQ(text.substr(text.find("...")), "...: the path lies below more than 20000 folders");
}

TEST(FileList, IsWalkedAsDeepAsItMayBe)
{
    const std::string path = repeated("a/", 20'000) + "a";
    EXPECT_EQ(walked(path), Texts({path}));
}

TEST(FileList, ShowsNoMoreOfALongPathThanItsBeginning)
{
    EXPECT_EQ(refusal("/" + std::string(1'000'000, 'x')),
              "list: line 1: /" + std::string(499, 'x') +
                  "...: the path is absolute; list files relative to one folder");
}

TEST(FileList, WarnsOfWhatIsProbablyNotMeantAndKeepsIt)
{
    const auto warnings = [](const std::string& text, bool nullSeparated) {
        FileList list("list", nullSeparated);
        list.append(text);
        list.finish();
        return list.warnings();
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
    EXPECT_EQ(walked("a/b\r\nb\r\n"), Texts({"a/b\r", "b\r"}));

    EXPECT_EQ(warnings("", false), Texts());
    EXPECT_EQ(warnings("a\r\nb\n\"\n\"c\nd\"\n\xef\xbb\xbf\n", false), Texts());
    EXPECT_EQ(warnings(std::string("a\r\0\"b\"\0", 7), true), Texts());
}

TEST(FileList, IsTheSameHoweverItsTextIsCut)
{
    const std::string text = "b/c\na/b\n./x\n\xff\r\nlast";
    const Texts expected = walked(text);
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        FileList list("list", false);
        list.append(text.substr(0, cut));
        list.append("");
        list.append(text.substr(cut));
        list.finish();
        EXPECT_EQ(walked(list), expected) << cut;
    }
    FileList bytes("list", false);
    for (const char byte : text)
        bytes.append(std::string_view(&byte, 1));
    bytes.finish();
    EXPECT_EQ(walked(bytes), expected);
    EXPECT_EQ(bytes.pathCount(), 5u);
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

TEST(FileList, AgreesWithAPlainReadingLineByLine)
{
    const unsigned seed = 5;
    std::mt19937 random(seed);
    const std::string letters = "aab.!0//";
    std::size_t taken = 0;
    std::size_t contradictory = 0;
    for (int i = 0; i < 6000; ++i) {
        Texts lines(1 + random() % 9);
        std::string text;
        for (std::string& line : lines) {
            for (auto length = 1 + random() % 5; length > 0; --length) {
                const bool mayDivide = !line.empty() && line.back() != '/' && length > 1;
                char letter = letters[random() % letters.size()];
                // Mostly good paths.
                if (letter == '/' && !mayDivide && random() % 32 != 0)
                    letter = 'b';
                line += letter;
            }
            text += line + "\n";
        }
        SCOPED_TRACE(testing::PrintToString(text));
        const PlainReading plain(lines);
        FileList list("list", false);

        const std::string refused = refusal(list, text);

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
            EXPECT_EQ(walked(list), Texts(plain.files.begin(), plain.files.end()));
            ++taken;
        }
    }
    EXPECT_GT(taken, 1000u);
    EXPECT_GT(contradictory, 500u);
}

} // namespace tests
} // namespace casetable
