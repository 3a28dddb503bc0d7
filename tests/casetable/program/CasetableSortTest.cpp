#include <set>
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

const Arguments byTemplate = {"-t", "{run}/T[{T:number}]/*", "results"};

Arguments with(Arguments arguments, const Arguments& more)
{
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

// In the order of their paths, as the cases are: run1, run10, run2.
TemporaryTree runs()
{
    return TemporaryTree({"results/run1/T10/x", "results/run10/T5.0/x", "results/run10/T5.0/y",
                          "results/run2/T/x", "results/run2/T-1/x", "results/run2/T5/x"});
}

// A list of a path for each line of the table that --files makes of it.
void listPaths(const TemporaryTree& tree, int count)
{
    std::string list;
    for (int i = 0; i < count; ++i)
        list += "T" + std::to_string(i) + "/run" + std::to_string(count - i) + "\n";
    tree.file("list", list);
}

} // namespace

TEST(CasetableSort, OrdersNumbersByValueAndTextsAsPeopleCount)
{
    const TemporaryTree tree = runs();

    EXPECT_EQ(run(tree, byTemplate), prints("case,run,T,files\n"
                                            "0,run1,10,1\n"
                                            "1,run10,5.0,2\n"
                                            "2,run2,-1,1\n"
                                            "3,run2,,1\n"
                                            "4,run2,5,1\n"));
    EXPECT_EQ(run(tree, with(byTemplate, {"--sort", "T"})), prints("case,run,T,files\n"
                                                                   "2,run2,-1,1\n"
                                                                   "1,run10,5.0,2\n"
                                                                   "4,run2,5,1\n"
                                                                   "0,run1,10,1\n"
                                                                   "3,run2,,1\n"));
    EXPECT_EQ(run(tree, with(byTemplate, {"--sort=run"})), prints("case,run,T,files\n"
                                                                  "0,run1,10,1\n"
                                                                  "2,run2,-1,1\n"
                                                                  "3,run2,,1\n"
                                                                  "4,run2,5,1\n"
                                                                  "1,run10,5.0,2\n"));
}

TEST(CasetableSort, PutsNoValueLastInDescendingOrderToo)
{
    const TemporaryTree tree = runs();

    EXPECT_EQ(run(tree, with(byTemplate, {"--sort=-T"})), prints("case,run,T,files\n"
                                                                 "0,run1,10,1\n"
                                                                 "1,run10,5.0,2\n"
                                                                 "4,run2,5,1\n"
                                                                 "2,run2,-1,1\n"
                                                                 "3,run2,,1\n"));
}

TEST(CasetableSort, GoesBySeveralColumns)
{
    const TemporaryTree tree = runs();

    EXPECT_EQ(run(tree, with(byTemplate, {"--sort", "-run,-case"})), prints("case,run,T,files\n"
                                                                            "1,run10,5.0,2\n"
                                                                            "4,run2,5,1\n"
                                                                            "3,run2,,1\n"
                                                                            "2,run2,-1,1\n"
                                                                            "0,run1,10,1\n"));
    EXPECT_EQ(run(tree, with(byTemplate, {"--sort", "-files", "--sort", "-run,T,case"})),
              prints("case,run,T,files\n"
                     "1,run10,5.0,2\n"
                     "2,run2,-1,1\n"
                     "4,run2,5,1\n"
                     "3,run2,,1\n"
                     "0,run1,10,1\n"));
}

TEST(CasetableSort, OrdersFilesByPathAndByWhatTheyHold)
{
    const TemporaryTree tree = runs();

    EXPECT_EQ(run(tree, with(byTemplate, {"--files", "--sort", "path"})),
              prints("path,case,run,T\n"
                     "run1/T10/x,0,run1,10\n"
                     "run2/T-1/x,2,run2,-1\n"
                     "run2/T/x,3,run2,\n"
                     "run2/T5/x,4,run2,5\n"
                     "run10/T5.0/x,1,run10,5.0\n"
                     "run10/T5.0/y,1,run10,5.0\n"));
    EXPECT_EQ(run(tree, with(byTemplate, {"--files", "--sort", "-T,-path", "-a", "x=X"})),
              prints("path,case,run,T,tag\n"
                     "run1/T10/x,0,run1,10,X\n"
                     "run10/T5.0/y,1,run10,5.0,\n"
                     "run10/T5.0/x,1,run10,5.0,X\n"
                     "run2/T5/x,4,run2,5,X\n"
                     "run2/T-1/x,2,run2,-1,X\n"
                     "run2/T/x,3,run2,,X\n"));
}

TEST(CasetableSort, KeepsTheFilesUnderATagWithTheirCase)
{
    const TemporaryTree tree({"results/T1/b.log", "results/T2/a.log", "results/T2/c.log",
                              "results/T3/d", "results/T10/e.log"});

    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=log", "--sort", "-log files,-T", "results"}),
              prints("case,T,log,log files,files\n"
                     "2,2,T2/a.log,2,2\n"
                     "1,10,T10/e.log,1,1\n"
                     "0,1,T1/b.log,1,1\n"
                     "3,3,,0,1\n"));
    EXPECT_EQ(run(tree, {"-n", "T", "-a", "*.log=log", "--sort=-log", "-f", "jsonl", "results"}),
              prints("{\"case\":1,\"T\":10,\"log\":[\"T10/e.log\"],\"files\":1}\n"
                     "{\"case\":2,\"T\":2,\"log\":[\"T2/a.log\",\"T2/c.log\"],\"files\":2}\n"
                     "{\"case\":0,\"T\":1,\"log\":[\"T1/b.log\"],\"files\":1}\n"
                     "{\"case\":3,\"T\":3,\"log\":[],\"files\":1}\n"));
}

TEST(CasetableSort, HoldsForEachFormat)
{
    const TemporaryTree tree({"results/T1/x", "results/T10/x", "results/T2/x"});
    const auto sortedAs = [&tree](const std::string& format) {
        return run(tree, {"-n", "T", "--sort", "-T", "-f", format, "results"});
    };

    EXPECT_EQ(sortedAs("table"), prints("case   T  files\n"
                                        "   1  10      1\n"
                                        "   2   2      1\n"
                                        "   0   1      1\n"));
    EXPECT_EQ(sortedAs("tsv"), prints("case\tT\tfiles\n1\t10\t1\n2\t2\t1\n0\t1\t1\n"));
    EXPECT_EQ(sortedAs("json"), prints("{\"columns\": [{\"name\":\"T\",\"type\":\"number\"}],\n"
                                       " \"cases\": [\n"
                                       "  {\"case\":1,\"files\":1,\"values\":{\"T\":10}},\n"
                                       "  {\"case\":2,\"files\":1,\"values\":{\"T\":2}},\n"
                                       "  {\"case\":0,\"files\":1,\"values\":{\"T\":1}}\n"
                                       " ]}\n"));
    EXPECT_EQ(run(tree, {"-n", "T", "--sort", "-T", "-o", "out.vtt", "results"}), prints(""));
    EXPECT_EQ(readVtt(tree.path("out.vtt")),
              std::vector<VttColumn>({{"case", "integers", {"1", "2", "0"}},
                                      {"T", "doubles", {"10", "2", "1"}},
                                      {"files", "integers", {"1", "1", "1"}}}));
}

TEST(CasetableSort, TakesColumnsOfAnyName)
{
    const std::vector<std::string> names = {"a,b", "-a", "-", ",", "--", "a b", "\xff\n", "=", "'"};
    for (const std::string& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        const TemporaryTree tree({"results/" + name + "xx9/file", "results/" + name + "xx10/file"});

        const Outcome outcome = run(tree, {"-s", name, "--sort", name, "results"});

        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(
            parseCsv(outcome.output),
            std::vector<Record>({{"case", name, "files"}, {"1", "xx9", "1"}, {"0", "xx10", "1"}}));
        EXPECT_EQ(run(tree, {"-s", name, "--sort=-" + name, "results"}),
                  run(tree, {"-s", name, "results"}));
    }
}

TEST(CasetableSort, TakesANameWithACommaWholeBeforeItIsDivided)
{
    const TemporaryTree tree({"results/a,b1_a2_b1/x", "results/a,b2_a1_b2/x"});
    const auto cases = [&tree](const std::string& sort) {
        const Outcome outcome =
            run(tree, {"-n", "a,b", "-n", "_a", "-n", "_b", "--sort=" + sort, "results"});
        return parseCsv(outcome.output).at(1).at(0);
    };

    EXPECT_EQ(cases("-a,b"), "1");
    EXPECT_EQ(cases("a,b"), "0");
    EXPECT_EQ(cases("_a,_b"), "1");
    EXPECT_EQ(cases("_b,_a"), "0");
}

TEST(CasetableSort, KeepsATableOfNoRowAndOfOne)
{
    const TemporaryTree tree({"one/T1/x", "none/x", "empty/"});

    EXPECT_EQ(run(tree, {"-n", "T", "--sort", "-T,files", "one"}), prints("case,T,files\n0,1,1\n"));
    EXPECT_EQ(run(tree, {"-n", "T", "--sort", "T", "none"}),
              ends(1, "case,T,files\n",
                   "no file matched: marker 'T' failed for 1 file; --unmatched lists them"));
    EXPECT_EQ(run(tree, {"-n", "T", "--sort", "path", "--files", "empty"}),
              ends(1, "path,case,T\n", "no file matched: there is no file below empty"));
}

TEST(CasetableSort, OrdersAHundredThousandRows)
{
    const int count = 100'000;
    const TemporaryTree tree;
    listPaths(tree, count);

    for (const std::string sort : {"-T", "run"}) {
        const Outcome outcome =
            run(tree, {"-t", "T{T:number}/{run}", "--from-list", "list", "--sort", sort});
        const std::vector<Record> records = parseCsv(outcome.output);
        ASSERT_EQ(records.size(), static_cast<std::size_t>(count) + 1);
        std::set<std::string> seen;
        for (int i = 0; i < count; ++i) {
            const Record& record = records[static_cast<std::size_t>(i) + 1];
            ASSERT_EQ(record[1], std::to_string(count - 1 - i));
            ASSERT_EQ(record[2], "run" + std::to_string(i + 1));
            seen.insert(record[0]);
        }
        EXPECT_EQ(seen.size(), static_cast<std::size_t>(count));
    }
}

TEST(CasetableSort, RefusesAnUnknownColumnBeforeAnythingIsWalked)
{
    const TemporaryTree tree;
    tree.file("out", "earlier");

    EXPECT_EQ(run(tree, {"-n", "T", "--sort", "T,x\n", "-o", "out", "missing"}),
              fails(2, "--sort 'x\\n': there is no such column; choose 'case', 'T' or 'files'"));
    EXPECT_EQ(
        run(tree, {"-n", "T", "-n", "T", "--files", "--sort", "files", "missing"}),
        fails(2, "--sort 'files': there is no such column; choose 'path', 'case', 'T' or 'T(2)'"));
    EXPECT_EQ(tree.content("out"), "earlier");
    EXPECT_EQ(run(tree, {"-n", "T", "--sort", "T", "--unmatched", "missing"}),
              fails(2, "--unmatched and --sort exclude each other"));
}

} // namespace tests
} // namespace casetable
