#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

TEST(CasetableUnmatched, ListsEachFileWithTheFirstMarkerThatFailedAndWhy)
{
    const TemporaryTree tree({"results/T1/P2.dat", "results/T1/none", "results/none",
                              "results/Tx/P2.dat", "results/P2/T1.dat", "results/T1/P.dat"});

    EXPECT_EQ(run(tree, {"-n", "T", "-n", "P", "--unmatched", "results"}),
              prints("path,marker,reason\n"
                     "P2/T1.dat,P,not found\n"
                     "T1/P.dat,P,no value\n"
                     "T1/none,P,not found\n"
                     "Tx/P2.dat,T,no value\n"
                     "none,T,not found\n"));
}

TEST(CasetableUnmatched, ListsAFileWhoseTextIsTooShort)
{
    const TemporaryTree tree({"results/run_P5.dat", "results/run_P55.dat"});

    EXPECT_EQ(run(tree, {"-s", "_P", "--unmatched", "results"}),
              prints("path,marker,reason\nrun_P5.dat,_P,\"one character, which is no value here; "
                     "--suggest finds templates, and -t reads by them\"\n"));
}

TEST(CasetableUnmatched, ListsAFileInWhichTheNextMarkerIsFoundInsideOne)
{
    const TemporaryTree tree({"results/HPPC_5.csv"});

    EXPECT_EQ(run(tree, {"-s", "HPPC_", "-s", "_", "--unmatched", "results"}).output,
              "path,marker,reason\nHPPC_5.csv,HPPC_,\"'_' is found inside it; --suggest finds "
              "templates, and -t reads by them\"\n");
}

TEST(CasetableUnmatched, IsEmptyWhenAllFilesMatch)
{
    const TemporaryTree tree({"results/T1/file"});

    EXPECT_EQ(run(tree, {"-n", "T", "--unmatched", "results"}), prints("path,marker,reason\n"));
}

TEST(CasetableUnmatched, ListsAllFilesWhenNoneMatches)
{
    const TemporaryTree tree({"results/a\nb", "results/c"});

    EXPECT_EQ(run(tree, {"-n", "T", "--unmatched", "results"}),
              ends(1, "path,marker,reason\n\"a\nb\",T,not found\nc,T,not found\n",
                   "no file matched: marker 'T' failed for 2 files"));
}

TEST(CasetableUnmatched, IsAlignedInATable)
{
    const TemporaryTree tree({"results/T1/file", "results/a\x1b", "results/long name"});

    EXPECT_EQ(run(tree, {"-n", "T", "--unmatched", "-f", "table", "results"}),
              prints("path       marker  reason\n"
                     "a\\x1b      T       not found\n"
                     "long name  T       not found\n"));
}

} // namespace tests
} // namespace casetable
