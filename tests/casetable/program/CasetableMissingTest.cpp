#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/casetable/support/Vtt.h"

namespace casetable {
namespace tests {

namespace {

// Of wings A and B at 2 and 10, the latter with B alone.
TemporaryTree campaign()
{
    return TemporaryTree({"results/wingA/T2/x", "results/wingB/T10/x", "results/wingB/T2.0/x",
                          "results/wingB/T2.0/y"});
}

Arguments missing(const std::string& columns, const Arguments& more = {})
{
    Arguments arguments = {"-t", "wing{wing}/T[{T:number}]/*", "results", "--missing", columns};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

} // namespace

TEST(CasetableMissing, ListsTheCombinationsThatNoCaseHas)
{
    const TemporaryTree tree({"results/wingA/T10/x", "results/wingA/T2/x", "results/wingB/T10/x",
                              "results/wingC/T-1/x"});

    EXPECT_EQ(run(tree, missing("wing,T")), prints("wing,T\nA,-1\nB,-1\nB,2\nC,2\nC,10\n"));
    EXPECT_EQ(run(tree, missing("T,wing")), prints("T,wing\n-1,A\n-1,B\n2,B\n2,C\n10,C\n"));
    EXPECT_EQ(run(tree, missing("T", {"--missing", "wing"})), run(tree, missing("T,wing")));
}

TEST(CasetableMissing, TakesEqualNumbersAsOneAndShowsTheFirst)
{
    EXPECT_EQ(run(campaign(), missing("wing,T")), prints("wing,T\nA,10\n"));
    const TemporaryTree tree({"results/wingA/T2.0/x", "results/wingA/T9/x", "results/wingB/T9/x",
                              "results/wingC/T2/x", "results/wingC/T9.0/x"});
    EXPECT_EQ(run(tree, missing("wing,T")), prints("wing,T\nB,2.0\n"));
}

TEST(CasetableMissing, LeavesOutCasesWithoutAValue)
{
    const TemporaryTree tree({"results/wingA/T2/x", "results/wingB/T10/x", "results/wingC/T/x"});

    EXPECT_EQ(run(tree, missing("wing,T")), prints("wing,T\nA,10\nB,2\n"));
}

TEST(CasetableMissing, IsAnEmptyTableWhereNothingIsMissing)
{
    const TemporaryTree tree({"results/wingA/T2/x", "results/wingB/T2/x"});

    EXPECT_EQ(run(tree, missing("wing,T")), prints("wing,T\n"));
    EXPECT_EQ(run(tree, missing("wing,T", {"-f", "json"})),
              prints("{\"columns\": [{\"name\":\"wing\",\"type\":\"string\"},"
                     "{\"name\":\"T\",\"type\":\"number\"}],\n \"missing\": [\n ]}\n"));
    EXPECT_EQ(run(tree, missing("wing,T", {"-f", "jsonl"})), prints(""));
    EXPECT_EQ(run(tree, missing("wing,T", {"-f", "table"})), prints("wing  T\n"));
}

TEST(CasetableMissing, IsAnEmptyTableOfOneCaseAndOfNone)
{
    EXPECT_EQ(run(TemporaryTree({"results/wingA/T2/x"}), missing("wing,T")), prints("wing,T\n"));
    EXPECT_EQ(run(TemporaryTree({"results/wingA/T/x"}), missing("wing,T")), prints("wing,T\n"));
    EXPECT_EQ(run(TemporaryTree({"results/"}), missing("wing,T")),
              ends(1, "wing,T\n", "no file matched: there is no file below results"));
}

TEST(CasetableMissing, HoldsForEachFormat)
{
    const TemporaryTree tree = campaign();

    EXPECT_EQ(run(tree, missing("wing,T", {"-f", "table"})), prints("wing   T\nA     10\n"));
    EXPECT_EQ(run(tree, missing("wing,T", {"-f", "tsv"})), prints("wing\tT\nA\t10\n"));
    EXPECT_EQ(run(tree, missing("wing,T", {"-f", "json"})),
              prints("{\"columns\": [{\"name\":\"wing\",\"type\":\"string\"},"
                     "{\"name\":\"T\",\"type\":\"number\"}],\n \"missing\": [\n"
                     "  {\"values\":{\"wing\":\"A\",\"T\":10}}\n ]}\n"));
    EXPECT_EQ(run(tree, missing("wing,T", {"-f", "jsonl"})), prints("{\"wing\":\"A\",\"T\":10}\n"));
    EXPECT_EQ(run(tree, missing("wing,T", {"-o", "out.vtt"})), prints(""));
    EXPECT_EQ(readVtt(tree.path("out.vtt")),
              std::vector<VttColumn>({{"wing", "texts", {"A"}}, {"T", "doubles", {"10"}}}));
}

TEST(CasetableMissing, IsSortedAsAskedFor)
{
    const TemporaryTree tree({"results/wingA/T10/x", "results/wingA/T2/x", "results/wingB/T10/x",
                              "results/wingC/T-1/x"});

    EXPECT_EQ(run(tree, missing("wing,T", {"--sort", "-T"})),
              prints("wing,T\nC,10\nB,2\nC,2\nA,-1\nB,-1\n"));
    EXPECT_EQ(run(tree, missing("wing,T", {"--sort", "case"})),
              fails(2, "--sort 'case': there is no such column; choose 'wing' or 'T'"));
}

TEST(CasetableMissing, TakesColumnsOfAnyName)
{
    const std::vector<std::string> names = {"a,b", "-a", "-", ",", "--", "a b", "\xff\n", "=", "'"};
    for (const std::string& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        const TemporaryTree tree({"results/" + name + "xx9/T1/f", "results/" + name + "xx10/T2/f"});

        const Outcome outcome =
            run(tree, {"-s", name, "-n", "T", "--missing", name, "--missing=T", "results"});

        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(parseCsv(outcome.output),
                  std::vector<Record>({{name, "T"}, {"xx9", "2"}, {"xx10", "1"}}));
    }
}

TEST(CasetableMissing, NamesColumnsAsTheTableDoes)
{
    const TemporaryTree tree({"results/case1_T1_T2/f", "results/case2_T3_T4/f"});

    EXPECT_EQ(run(tree, {"-n", "case", "-n", "T", "-n", "T", "--missing", "T(2),case(2)", "-f",
                         "csv", "results"}),
              prints("T(2),case(2)\n2,2\n4,1\n"));
}

TEST(CasetableMissing, LooksAtAHundredThousandCases)
{
    const TemporaryTree tree;
    std::string list;
    for (int i = 0; i < 100'001; ++i) {
        if (i != 7 && i != 99'999)
            list += "wing" + std::string(1, "AB"[i % 2]) + "/T" + std::to_string(i / 2) + "/x\n";
    }
    tree.file("list", list);

    EXPECT_EQ(
        run(tree, {"-t", "wing{wing}/T{T:number}/*", "--missing", "T,wing", "--from-list", "list"}),
        prints("T,wing\n3,B\n49999,B\n50000,B\n"));
}

TEST(CasetableMissing, RefusesMoreThanAHundredThousand)
{
    const TemporaryTree tree;
    std::string list;
    for (int i = 0; i < 400; ++i)
        list += "a" + std::to_string(i) + "/b" + std::to_string(i % 300) + "/T1\n";
    tree.file("list", list);
    tree.file("out", "earlier");

    EXPECT_EQ(run(tree, {"-n", "a", "-n", "b", "-n", "T", "--missing", "T,b,a", "--from-list",
                         "list", "-o", "out"}),
              fails(3, "--missing: more than 100000 combinations are missing; most values have 'a' "
                       "with 400, 'b' with 300, 'T' with 1"));
    EXPECT_EQ(tree.content("out"), "earlier");
}

TEST(CasetableMissing, IsCountedOnATerminal)
{
    const TemporaryTree tree = campaign();

    const Outcome outcome = run(missing("wing,T"), withErrors(tree, Stream::Terminal));

    EXPECT_EQ(outcome.output, "wing,T\nA,10\n");
    EXPECT_NE(outcome.errors.find("casetable: missing: 1 of 4 combinations\n"), std::string::npos)
        << outcome;
    EXPECT_EQ(run(missing("wing,T", {"--quiet"}), withErrors(tree, Stream::Terminal)).errors, "");
}

TEST(CasetableMissing, RefusesWhatItCannotUseBeforeAnythingIsWalked)
{
    const TemporaryTree tree;
    const auto refused = [&tree](const Arguments& more) {
        Arguments arguments = {"-n", "T", "-n", "P", "missing"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(tree, arguments);
    };

    EXPECT_EQ(refused({"--missing", "T,p"}),
              fails(2, "--missing 'p': there is no such column; choose 'T' or 'P'"));
    EXPECT_EQ(refused({"--missing", "T,case"}),
              fails(2, "--missing 'case': there is no such column; choose 'T' or 'P'"));
    EXPECT_EQ(refused({"--missing", "T"}), fails(2, "--missing 'T': expected two columns or more"));
    EXPECT_EQ(refused({"--missing", "T,T"}), fails(2, "--missing 'T': the column is given twice"));
    EXPECT_EQ(refused({"--missing", "T,P", "--files"}),
              fails(2, "--files and --missing exclude each other"));
    EXPECT_EQ(refused({"--missing", "T,P", "--unmatched"}),
              fails(2, "--unmatched and --missing exclude each other"));
    EXPECT_EQ(refused({"--missing", "T,P", "-a", "*.x=X"}),
              fails(2, "--aux and --missing exclude each other"));
}

} // namespace tests
} // namespace casetable
