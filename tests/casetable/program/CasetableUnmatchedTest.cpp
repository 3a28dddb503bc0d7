#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

TEST(CasetableUnmatched, ListsEachFileWithTheFirstMarkerThatFailedAndWhy)
{
    const TemporaryTree tree;
    for (const char* file : {"T1/P2.dat", "T1/none", "none", "Tx/P2.dat", "P2/T1.dat", "T1/P.dat"})
        tree.file(std::string("results/") + file);

    const Outcome outcome = run(tree, {"-n", "T", "-n", "P", "--unmatched", "results"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output, "path,marker,reason\r\n"
                              "P2/T1.dat,P,not found\r\n"
                              "T1/P.dat,P,no value\r\n"
                              "T1/none,P,not found\r\n"
                              "Tx/P2.dat,T,no value\r\n"
                              "none,T,not found\r\n");
}

TEST(CasetableUnmatched, ListsAFileWhoseTextIsTooShort)
{
    const TemporaryTree tree;
    tree.file("results/run_P5.dat");
    tree.file("results/run_P55.dat");

    EXPECT_EQ(run(tree, {"-s", "_P", "--unmatched", "results"}).output,
              "path,marker,reason\r\nrun_P5.dat,_P,no value\r\n");
}

TEST(CasetableUnmatched, IsEmptyWhenAllFilesMatch)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");

    const Outcome outcome = run(tree, {"-n", "T", "--unmatched", "results"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output, "path,marker,reason\r\n");
}

TEST(CasetableUnmatched, ListsAllFilesWhenNoneMatches)
{
    const TemporaryTree tree;
    tree.file("results/a\nb");
    tree.file("results/c");

    const Outcome outcome = run(tree, {"-n", "T", "--unmatched", "results"});

    EXPECT_EQ(outcome.exitCode, 1) << outcome;
    EXPECT_EQ(outcome.output, "path,marker,reason\r\n\"a\nb\",T,not found\r\nc,T,not found\r\n");
    EXPECT_EQ(message(outcome.errors), "no file matched: marker 'T' failed for 2 files");
}

TEST(CasetableUnmatched, IsAlignedInATable)
{
    const TemporaryTree tree;
    tree.file("results/T1/file");
    tree.file("results/a\x1b");
    tree.file("results/long name");

    EXPECT_EQ(run(tree, {"-n", "T", "--unmatched", "-f", "table", "results"}).output,
              "path       marker  reason\n"
              "a\\x1b      T       not found\n"
              "long name  T       not found\n");
}

} // namespace tests
} // namespace casetable
