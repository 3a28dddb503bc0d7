#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

TEST(CasetableFiles, AreTheMatchedOnesWithPathCaseAndValues)
{
    const TemporaryTree tree;
    for (const char* file : {"b/T1/x", "b/T1/y", "a/T2/x", "none"})
        tree.file(std::string("results/") + file);

    const Outcome outcome = run(tree, {"-n", "T", "--files", "results"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output, "path,case,T\r\n"
                              "a/T2/x,0,2\r\n"
                              "b/T1/x,1,1\r\n"
                              "b/T1/y,1,1\r\n");
}

TEST(CasetableFiles, AreAlignedInATable)
{
    const TemporaryTree tree;
    tree.file("results/T1/long name");
    tree.file("results/T20/x");

    EXPECT_EQ(run(tree, {"-n", "T", "--files", "-f", "table", "results"}).output,
              "path          case   T\n"
              "T1/long name     0   1\n"
              "T20/x            1  20\n");
}

TEST(CasetableFiles, HaveColumnsApartFromMarkersOfTheSameName)
{
    const TemporaryTree tree;
    tree.file("results/path1/case2.dat");

    EXPECT_EQ(run(tree, {"-n", "path", "-n", "case", "--files", "results"}).output,
              "path,case,path(2),case(2)\r\npath1/case2.dat,0,1,2\r\n");
}

TEST(CasetableFiles, AreNoneWithoutCases)
{
    const TemporaryTree tree;
    tree.file("results/none");

    const Outcome outcome = run(tree, {"-n", "T", "--files", "results"});

    EXPECT_EQ(outcome.exitCode, 1) << outcome;
    EXPECT_EQ(outcome.output, "path,case,T\r\n");
}

} // namespace tests
} // namespace casetable
