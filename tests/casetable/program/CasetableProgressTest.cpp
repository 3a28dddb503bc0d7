#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

const std::string eraseLine = "\r\x1b[K";

// A walk of every order of so many folders does not end within anyone's patience.
class CasetableProgress : public testing::Test {
protected:
    void SetUp() override { tree_.knot("results", 14); }

    Setting onTerminal() const { return withErrors(tree_, Stream::Terminal); }

    const TemporaryTree tree_;
    const Arguments endless_ = {"-n", "T", "-L", "results"};
};

std::vector<std::string> statusLines(const std::string& errors)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    while ((start = errors.find(eraseLine, start)) != std::string::npos) {
        start += eraseLine.size();
        lines.push_back(errors.substr(start, errors.find(eraseLine, start) - start));
    }
    return lines;
}

} // namespace

TEST_F(CasetableProgress, IsOneLineOfFoldersAndFilesSeenAndTheFolderOnATerminal)
{
    Program program(endless_, onTerminal());
    program.waitForErrors(
        [](const std::string& errors) { return statusLines(errors).size() >= 3; });
    program.send(SIGINT);
    const Outcome outcome = program.finish();

    EXPECT_EQ(outcome.exitCode, 130) << outcome;
    EXPECT_EQ(outcome.errors.find('\n'), std::string::npos) << outcome;
    EXPECT_EQ(outcome.errors.compare(0, eraseLine.size(), eraseLine), 0);
    std::vector<std::string> lines = statusLines(outcome.errors);
    ASSERT_GE(lines.size(), 3u) << outcome;
    EXPECT_EQ(lines.back(), "") << "the line is left behind";
    lines.pop_back();
    unsigned long last = 0;
    for (const std::string& line : lines) {
        unsigned long folders = 0;
        unsigned long files = 0;
        int end = 0;
        ASSERT_EQ(
            std::sscanf(line.c_str(), "%lu folders, %lu files: results%n", &folders, &files, &end),
            2)
            << line;
        EXPECT_GT(end, 0) << line;
        EXPECT_GT(folders, last);
        EXPECT_GT(files, 0u);
        last = folders;
    }
}

TEST_F(CasetableProgress, IsCutToTheWidthOfTheTerminal)
{
    Setting setting = onTerminal();
    setting.terminalColumns = 20;
    Program program(endless_, setting);
    program.waitForErrors(
        [](const std::string& errors) { return statusLines(errors).size() >= 2; });
    program.send(SIGINT);

    const std::vector<std::string> lines = statusLines(program.finish().errors);

    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines.front().size(), 19u) << lines.front();
    for (const std::string& line : lines)
        EXPECT_LT(line.size(), 20u) << line;
}

TEST_F(CasetableProgress, IsCutToTheUsualWidthWhereTheTerminalDoesNotTellIts)
{
    const TemporaryTree tree;
    const std::string root(100, 'r');
    tree.knot(root, 14);
    Setting setting = withErrors(tree, Stream::Terminal);
    setting.terminalColumns = 0;
    Program program({"-n", "T", "-L", root}, setting);
    program.waitForErrors(
        [](const std::string& errors) { return statusLines(errors).size() >= 2; });
    program.send(SIGINT);

    const std::vector<std::string> lines = statusLines(program.finish().errors);

    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines.front().size(), 79u) << lines.front();
}

TEST_F(CasetableProgress, IsNothingInAPipe)
{
    Program program(endless_, withOutput(tree_, Stream::Terminal));

    EXPECT_EQ(program.errorsFor(700), "");

    program.send(SIGINT);
    EXPECT_EQ(program.finish().errors, "");
}

TEST_F(CasetableProgress, IsNothingWhenQuiet)
{
    Arguments arguments = endless_;
    arguments.push_back("--quiet");
    Program program(arguments, onTerminal());

    EXPECT_EQ(program.errorsFor(700), "");

    program.send(SIGINT);
    EXPECT_EQ(program.finish().errors, "");
}

TEST_F(CasetableProgress, HoldsNoControlCharacterOfAFolderName)
{
    const TemporaryTree tree;
    tree.knot("\x1b[31m\n\xff", 14);
    Program program({"-n", "T", "-L", "\x1b[31m\n\xff"}, withErrors(tree, Stream::Terminal));
    program.waitForErrors(
        [](const std::string& errors) { return statusLines(errors).size() >= 2; });
    program.send(SIGINT);

    const std::string errors = program.finish().errors;

    EXPECT_NE(errors.find(": \\x1b[31m\\n"), std::string::npos) << errors;
    for (const std::string& line : statusLines(errors))
        EXPECT_EQ(line.find_first_of("\x1b\n"), std::string::npos) << line;
}

TEST(CasetableRemark, OnATerminalTellsHowManyFilesAreInCases)
{
    const TemporaryTree tree({"results/T1/a", "results/T1/b", "results/T2/a", "results/none"});
    const Setting setting = withErrors(tree, Stream::Terminal);

    const std::string table = "case,T,files\n0,1,2\n1,2,1\n";

    EXPECT_EQ(run({"-n", "T", "results"}, setting),
              prints(table, "cases: 2, from 3 of 4 files; --unmatched lists the others"));
    EXPECT_EQ(run({"-n", "T", "-q", "results"}, setting), prints(table));
}

TEST(CasetableRemark, MentionsUnmatchedFilesOnlyWhereThereAreSomeThatAreNotListed)
{
    const TemporaryTree tree({"results/T1/a", "results/none", "all/T1/a"});
    const Setting setting = withErrors(tree, Stream::Terminal);

    EXPECT_EQ(run({"-n", "T", "--unmatched", "results"}, setting),
              prints("path,marker,reason\nnone,T,not found\n", "cases: 1, from 1 of 2 files"));
    EXPECT_EQ(run({"-n", "T", "--files", "results"}, setting),
              prints("path,case,T\nT1/a,0,1\n",
                     "cases: 1, from 1 of 2 files; --unmatched lists the others"));
    EXPECT_EQ(run({"-n", "T", "all"}, setting),
              prints("case,T,files\n0,1,1\n", "cases: 1, from 1 of 1 files"));
}

TEST(CasetableRemark, CountsTheCellsOfANumberColumnThatAreNoNumber)
{
    const TemporaryTree tree(
        {"results/T1D5/a", "results/T1D5/b", "results/T1d7/a", "results/T2/a"});
    const Setting setting = withErrors(tree, Stream::Terminal);

    EXPECT_EQ(run({"-n", "T", "results"}, setting).errors,
              "casetable: cases: 3, from 4 of 4 files\n"
              "casetable: 2 cells of 'T' are no number, as in T1D5/a, which gives '1D5'\n");
    EXPECT_EQ(run({"-t", "T{T:number,.*}/*", "-t", "x{x}", "results"}, setting).errors,
              "casetable: cases: 3, from 4 of 4 files\n"
              "casetable: the template x{x} reads no file\n"
              "casetable: 2 cells of 'T' are no number, as in T1D5/a, which gives '1D5'\n");
    EXPECT_EQ(run({"-t", "T[1D{T:number}]*/*", "results"}, setting).errors,
              "casetable: cases: 2, from 4 of 4 files\n")
        << "a part that is left out";
}

TEST(CasetableRemark, TellsOfCasesThatDifferOnlyInHowNumbersAreWritten)
{
    const TemporaryTree tree({"results/T5/P_x", "results/T5.0/P_x", "results/T5e0/P_x",
                              "results/T5/P_y", "results/T6.0/P_y", "results/T6/P_z"});
    const Setting setting = withErrors(tree, Stream::Terminal);
    const std::string cases = "casetable: cases: 6, from 6 of 6 files\n";

    EXPECT_EQ(run({"-t", "T{T:number}/P_{P}", "results"}, setting).errors,
              cases + "casetable: 2 cases differ from another only in how numbers are written, as "
                      "'T' in T5.0/P_x, which gives '5.0', and in T5/P_x, which gives '5'\n");
    EXPECT_EQ(run({"-t", "T{T}/P_{P}", "results"}, setting).errors, cases) << "texts";
}

TEST(CasetableRemark, ComparesOnlyCasesThatHaveAllNumbers)
{
    const TemporaryTree tree(
        {"results/Re1d3/f", "results/Re2d3/f", "results/Re5/f", "results/Re5.0/f"});

    EXPECT_EQ(run({"-n", "Re", "results"}, withErrors(tree, Stream::Terminal)).errors,
              "casetable: cases: 4, from 4 of 4 files\n"
              "casetable: 2 cells of 'Re' are no number, as in Re1d3/f, which gives '1d3'\n"
              "casetable: 1 case differs from another only in how numbers are written, as 'Re' in "
              "Re5.0/f, which gives '5.0', and in Re5/f, which gives '5'\n");
}

TEST(CasetableRemark, TellsOfValuesThatAreCutAndWhyFilesMayNotMatch)
{
    const TemporaryTree tree({"results/P1.5bar_T1,5", "results/p1_T1"});
    const Setting setting = withErrors(tree, Stream::Terminal);

    const std::string otherwise = "; --suggest finds templates, and -t reads by them";
    const std::string oneCharacter = "one character stands behind 'P' in 1 file, as in "
                                     "P1.5bar_T1,5, which is no value there" +
                                     otherwise;

    EXPECT_EQ(run({"-s", "P", "-n", "_T", "results"}, setting).errors,
              "casetable: no file matched: marker 'P' failed for 2 files; " + oneCharacter +
                  "; --unmatched lists them\n");
    tree.file("results/P12.5bar_T1,5");
    EXPECT_EQ(
        run({"-s", "P", "-n", "_T", "results"}, setting).errors,
        "casetable: cases: 1, from 1 of 3 files; --unmatched lists the others\n"
        "casetable: the value of 'P' ends at a '.' in 1 file, as in P12.5bar_T1,5, which gives "
        "'12'" +
            otherwise +
            "\n"
            "casetable: the value of '_T' ends at a ',' in 1 file, as in P12.5bar_T1,5, which "
            "gives '1'" +
            otherwise + "\ncasetable: " + oneCharacter + "\n");
}

} // namespace tests
} // namespace casetable
