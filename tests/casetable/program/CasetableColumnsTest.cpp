#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

TEST(CasetableColumns, StandInTheOrderOfTheOptions)
{
    const TemporaryTree tree({"results/wing_a1/Mach0.8/body_b2/AoA-4.dat"});

    EXPECT_EQ(
        run(tree, {"-s", "wing_", "--number", "Mach", "--string=body_", "results", "-n", "AoA"}),
        prints("case,wing_,Mach,body_,AoA,files\n0,a1,0.8,b2,-4,1\n"));
}

TEST(CasetableColumns, KeepTheTextOfNumbers)
{
    const TemporaryTree tree;
    for (const char* number : {"007", "1.50", "-2e-3", "+.5"})
        tree.file(std::string("results/T") + number + "/file");

    EXPECT_EQ(run(tree, {"-n", "T", "results"}),
              prints("case,T,files\n0,+.5,1\n1,-2e-3,1\n2,007,1\n3,1.50,1\n"));
}

TEST(CasetableColumns, AreEmptyWhereANumberDoesNotConvert)
{
    const TemporaryTree tree({"results/T1D+07/file"});

    EXPECT_EQ(run(tree, {"-n", "T", "results"}), prints("case,T,files\n0,,1\n"));
}

TEST(CasetableColumns, MakeOneCaseOfEqualValues)
{
    const TemporaryTree tree(
        {"results/c/T1/x", "results/b/T1/y", "results/a/T2/x", "results/d/T1.0/x"});

    EXPECT_EQ(run(tree, {"-n", "T", "results"}), prints("case,T,files\n0,2,1\n1,1,2\n2,1.0,1\n"));
}

TEST(CasetableColumns, OfOneMarkerHaveNamesOfTheirOwn)
{
    const TemporaryTree tree({"results/T1/T2/T3.dat"});

    EXPECT_EQ(run(tree, {"-n", "T", "-n", "T", "-n", "T", "results"}),
              prints("case,T,T(2),T(3),files\n0,1,2,3,1\n"));
}

TEST(CasetableColumns, HaveTheSameNamesWithAndWithoutCases)
{
    const TemporaryTree tree({"full/case1/case2.dat", "empty/"});

    const auto header = [&tree](const std::string& root) {
        return parseCsv(run(tree, {"-n", "case", "-n", "case", root}).output).at(0);
    };

    EXPECT_EQ(header("full"), Record({"case", "case(2)", "case(3)", "files"}));
    EXPECT_EQ(header("empty"), header("full"));
}

TEST(CasetableColumns, TakeAnyTextAsMarker)
{
    const std::vector<std::string> markers = {
        "-s",    "--files", "--help", "--",        "-",       "--string",    "--aux=x", "{}",
        "[a,b]", "%%",      "[]",     "[\"a\"]",   "'a'",     "\"a\"",       "`a`",     "a b",
        "=",     "==",      "a,b",    "a\nb",      "\\n",     "\xff\xfe",    "$HOME",   "*",
        "++",    "#",       "@file",  "\xc3\xa4=", "(a)\\(b", "\x1b[31mred", "~",       "true"};
    // Each is typed in one of these ways, in turn.
    const std::vector<std::function<Arguments(const std::string&)>> ways = {
        [](const std::string& marker) {
            return Arguments{"-s", marker, "results"};
        },
        [](const std::string& marker) {
            return Arguments{"--string", marker, "results"};
        },
        [](const std::string& marker) {
            return Arguments{"--string=" + marker, "results"};
        },
        [](const std::string& marker) {
            return Arguments{"results", "-s" + marker};
        }};
    for (std::size_t i = 0; i < markers.size(); ++i) {
        const std::string& marker = markers[i];
        SCOPED_TRACE(testing::PrintToString(marker));
        const TemporaryTree tree({"results/" + marker + "value/file"});

        const Outcome outcome = run(tree, ways[i % ways.size()](marker));

        EXPECT_EQ(outcome.exitCode, 0) << outcome;
        EXPECT_EQ(parseCsv(outcome.output),
                  std::vector<Record>({{"case", marker, "files"}, {"0", "value", "1"}}));
    }
}

TEST(CasetableColumns, TakeAMarkerThatLooksLikeAnOptionWithoutItsValue)
{
    const TemporaryTree tree({"results/--string=value/file"});

    EXPECT_EQ(run(tree, {"-s", "--string=", "results"}),
              prints("case,--string=,files\n0,value,1\n"));
}

TEST(CasetableFormat, IsCsvInAPipeAndAnAlignedTableOnATerminal)
{
    const TemporaryTree tree({"results/T1/file", "results/T200/file"});

    for (const Arguments& arguments :
         {Arguments{"-n", "T", "results"}, Arguments{"-n", "T", "--format", "auto", "results"}}) {
        EXPECT_EQ(run(tree, arguments), prints("case,T,files\n0,1,1\n1,200,1\n"));
        EXPECT_EQ(run(arguments, withOutput(tree, Stream::Terminal)),
                  prints("case    T  files\n   0    1      1\n   1  200      1\n"));
    }
}

TEST(CasetableFormat, IsCsvInAFile)
{
    const TemporaryTree tree({"results/T1/file"});

    EXPECT_EQ(run({"-n", "T", "-o", "cases", "results"}, withOutput(tree, Stream::Terminal)),
              prints(""));
    EXPECT_EQ(tree.content("cases"), "case,T,files\n0,1,1\n");
}

TEST(CasetableFormat, IsGuessedFromTheEndingOfTheFile)
{
    const TemporaryTree tree({"results/T1/file"});
    const auto written = [&tree](const std::string& file, const Arguments& more) {
        Arguments arguments = {"-n", "T", "-o", file, "results"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(run(tree, arguments), prints(""));
        return tree.content(file);
    };

    EXPECT_EQ(written("out.CSV", {}), "case,T,files\n0,1,1\n");
    EXPECT_EQ(written("out.tsv", {}), "case\tT\tfiles\n0\t1\t1\n");
    EXPECT_EQ(written("out.txt", {}), "case  T  files\n   0  1      1\n");
    EXPECT_EQ(written("out.json", {}).front(), '{');
    EXPECT_EQ(written("out.vtt", {}).substr(0, 5), "<?xml");
    EXPECT_EQ(written("out.json", {"-f", "table"}), "case  T  files\n   0  1      1\n");
    EXPECT_EQ(written("out.txt", {"-f", "auto"}), "case  T  files\n   0  1      1\n");
}

TEST(CasetableFormat, IsATableWhenTheOutputNamesATerminal)
{
    const TemporaryTree tree({"results/T1/file"});
    const Terminal terminal;

    EXPECT_EQ(run(tree, {"-n", "T", "-o", terminal.path(), "results"}), prints(""));
    EXPECT_EQ(terminal.text(), "case  T  files\n   0  1      1\n");
}

TEST(CasetableFormat, IsTheOneAskedForWhereverItGoes)
{
    const TemporaryTree tree({"results/T1/file"});

    EXPECT_EQ(run({"-n", "T", "-f", "csv", "results"}, withOutput(tree, Stream::Terminal)),
              prints("case,T,files\n0,1,1\n"));
    EXPECT_EQ(run(tree, {"-n", "T", "-f", "table", "results"}),
              prints("case  T  files\n   0  1      1\n"));
    EXPECT_EQ(run(tree, {"-n", "T", "-f", "json", "results"}).output.front(), '{');
    EXPECT_EQ(run(tree, {"-n", "T", "-f", "table", "--format=csv", "results"}),
              prints("case,T,files\n0,1,1\n"));
}

} // namespace tests
} // namespace casetable
