#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

TEST(CasetableTable, AlignsTextToTheLeftAndNumbersToTheRight)
{
    const TemporaryTree tree({"results/wing_delta/Mach0.8/file", "results/wing_a/Mach10.25/file"});

    EXPECT_EQ(run(tree, {"-s", "wing_", "-n", "Mach", "-f", "table", "results"}),
              prints("case  wing_   Mach  files\n"
                     "   0  a      10.25      1\n"
                     "   1  delta    0.8      1\n"));
}

TEST(CasetableTable, ShowsADashForNoValue)
{
    const TemporaryTree tree({"results/wing_/T1D+07/file"});

    EXPECT_EQ(run(tree, {"-s", "wing_", "-n", "T", "-f", "table", "results"}),
              prints("case  wing_  T  files\n"
                     "   0  -      -      1\n"));
}

TEST(CasetableTable, AlignsByTheKindOfAColumnWhateverItsName)
{
    const TemporaryTree tree({"results/case_delta/T10/file", "results/case_ab/T5/file"});

    EXPECT_EQ(run(tree, {"-s", "case", "-n", "T", "-f", "table", "results"}),
              prints("case  case(2)   T  files\n"
                     "   0  _ab       5      1\n"
                     "   1  _delta   10      1\n"));
    EXPECT_EQ(run(tree, {"-s", "case", "--files", "-f", "table", "results"}),
              prints("path                 case  case(2)\n"
                     "case_ab/T5/file         0  _ab\n"
                     "case_delta/T10/file     1  _delta\n"));
}

TEST(CasetableTable, AlignsByTheColumnsThatCharactersTakeOnATerminal)
{
    const TemporaryTree tree(
        {"results/P_\xe7\xbf\xbc\xe5\x9e\x8b/T1/file"}); // Two wide characters.
    tree.file("results/P_a\xcc\x88\xc3\xa4/T2/file");    // A combining and a narrow one.

    EXPECT_EQ(run(tree, {"-s", "P_", "-n", "T", "-f", "table", "results"}),
              prints("case  P_    T  files\n"
                     "   0  a\xcc\x88\xc3\xa4    2      1\n"
                     "   1  \xe7\xbf\xbc\xe5\x9e\x8b  1      1\n"));
}

TEST(CasetableTable, EscapesWhatCouldDriveTheTerminal)
{
    const std::vector<std::vector<std::string>> rows = {
        {"red\x1b[31m", "red\\x1b[31m"},
        {"a\nb", "a\\nb"},
        {"a\rb\tc", "a\\rb\\tc"},
        {"bell\a\b\x7f", "bell\\x07\\x08\\x7f"},
        {"\xc2\x9b"
         "31m",
         "\\u{9b}31m"},                                       // A C1 control.
        {"\xe2\x80\xaetxt", "\\u{202e}txt"},                  // Right-to-left override.
        {"\xe2\x81\xa6x\xe2\x81\xa9", "\\u{2066}x\\u{2069}"}, // Isolates.
        {"a\xe2\x80\xa8z", "a\\u{2028}z"},                    // Line separator.
        {"a\xff\xfez", "a\\xff\\xfez"},
        {"\xed\xa0\x80", "\\xed\\xa0\\x80"}, // A surrogate.
        {"\xc3\xa4\xe2\x82\xac", "\xc3\xa4\xe2\x82\xac"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row[1]);
        const TemporaryTree tree({"results/M_" + row[0] + "/T1/" + row[0]});

        const std::string cases = run(tree, {"-s", "M_", "-f", "table", "results"}).output;
        EXPECT_NE(cases.find("\n   0  " + row[1] + "  "), std::string::npos) << cases;
        EXPECT_EQ(std::count(cases.begin(), cases.end(), '\n'), 2) << cases;
        const std::string files =
            run(tree, {"-n", "T", "--files", "-f", "table", "results"}).output;
        EXPECT_NE(files.find("M_" + row[1] + "/T1/" + row[1] + "  "), std::string::npos) << files;
    }
}

TEST(CasetableTable, EscapesTheHeaderAndAuxiliaryFiles)
{
    const TemporaryTree tree({"results/\x1bT1/a\nb.log"});

    EXPECT_EQ(run(tree, {"-n", "\x1bT", "-a", "*.log=l\xff", "-f", "table", "results"}),
              prints("case  \\x1bT  l\\xff            l\\xff files  files\n"
                     "   0      1  \\x1bT1/a\\nb.log            1      1\n"));
}

TEST(CasetableTable, HoldsNoControlCharacterWhateverNamesHold)
{
    const TemporaryTree tree;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/')
            tree.file("results/T" + std::to_string(byte) + "/x" + static_cast<char>(byte) + "y");
    }

    const std::string output =
        run({"-n", "T", "--files", "results"}, withOutput(tree, Stream::Terminal)).output;

    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 255);
    EXPECT_TRUE(std::all_of(output.begin(), output.end(), [](char c) {
        return c == '\n' || (c >= ' ' && c < '\x7f');
    })) << testing::PrintToString(output);
}

TEST(CasetableTable, IsTheHeaderAloneWithoutCases)
{
    const TemporaryTree tree({"results/"});

    EXPECT_EQ(run(tree, {"-n", "T", "-s", "M", "-f", "table", "results"}),
              ends(1, "case  T  M  files\n", "no file matched: there is no file below results"));
}

} // namespace tests
} // namespace casetable
