#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

TEST(CasetableFiles, AreTheMatchedOnesWithPathCaseAndValues)
{
    const TemporaryTree tree(
        {"results/b/T1/x", "results/b/T1/y", "results/a/T2/x", "results/none"});

    EXPECT_EQ(run(tree, {"-n", "T", "--files", "results"}), prints("path,case,T\n"
                                                                   "a/T2/x,0,2\n"
                                                                   "b/T1/x,1,1\n"
                                                                   "b/T1/y,1,1\n"));
}

TEST(CasetableFiles, AreAlignedInATable)
{
    const TemporaryTree tree({"results/T1/long name", "results/T20/x"});

    EXPECT_EQ(run(tree, {"-n", "T", "--files", "-f", "table", "results"}),
              prints("path          case   T\n"
                     "T1/long name     0   1\n"
                     "T20/x            1  20\n"));
}

TEST(CasetableFiles, HaveColumnsApartFromMarkersOfTheSameName)
{
    const TemporaryTree tree({"results/path1/case2.dat"});

    EXPECT_EQ(run(tree, {"-n", "path", "-n", "case", "--files", "results"}),
              prints("path,case,path(2),case(2)\npath1/case2.dat,0,1,2\n"));
}

TEST(CasetableFiles, AreNoneWithoutCases)
{
    const TemporaryTree tree({"results/none"});

    EXPECT_EQ(run(tree, {"-n", "T", "--files", "results"}),
              ends(1, "path,case,T\n",
                   "no file matched: marker 'T' failed for 1 file; --unmatched lists them"));
}

} // namespace tests
} // namespace casetable
