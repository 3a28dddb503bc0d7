#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// More files than a few shards hold, by their number and by their bytes; some are in no case.
std::string manyPaths(bool inOrder)
{
    std::string paths;
    for (int i = 0; i < 45'000; ++i) {
        const int k = 100'000 + (inOrder ? i : i * 7919 % 45'000);
        paths += "T" + std::to_string(k / 10) + (k % 11 == 0 ? "/none/" : "/P1_") +
                 std::to_string(k) + ".dat\n";
    }
    for (int i = 10; i < 19; ++i)
        paths += "T1/P" + std::to_string(i) + "_/" + std::string(1'000'000, 'x') + "\n";
    return paths;
}

void expectSameForAnyJobs(const TemporaryTree& tree, const Arguments& arguments)
{
    const auto with = [&](const std::string& jobs) {
        Arguments all = {"-n", "T", "-n", "P", "--jobs", jobs, "--from-list", "list"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return run(tree, all);
    };
    const Outcome one = with("1");
    EXPECT_EQ(one.exitCode, 0) << one;
    for (const std::string jobs : {"2", "8"}) {
        const Outcome several = with(jobs);
        EXPECT_EQ(several.exitCode, one.exitCode) << jobs;
        EXPECT_TRUE(several.output == one.output) << jobs;
        EXPECT_EQ(several.errors, one.errors) << jobs;
    }
}

} // namespace

TEST(CasetableJobs, ChangeNothingInTheOutput)
{
    const TemporaryTree tree;
    for (const bool inOrder : {true, false}) {
        tree.file("list", manyPaths(inOrder));
        expectSameForAnyJobs(tree, {"--aux", "*1.dat=one", "--format", "json"});
        expectSameForAnyJobs(tree, {"--aux", "*1.dat=one", "--files"});
        expectSameForAnyJobs(tree, {"--unmatched"});
    }
}

TEST(CasetableJobs, ChangeNothingInWhatIsSaidOnATerminal)
{
    const TemporaryTree tree;
    tree.file("list", manyPaths(true));
    const Setting setting = withErrors(tree, Stream::Terminal);
    const auto said = [&](const std::string& jobs) {
        const Outcome outcome =
            run({"-n", "T", "-n", "P", "-j" + jobs, "--from-list", "list"}, setting);
        return outcome.errors.substr(outcome.errors.find("casetable:"));
    };

    const std::string one = said("1");
    EXPECT_NE(one.find("cases: "), std::string::npos) << one;
    EXPECT_EQ(said("2"), one);
    EXPECT_EQ(said("8"), one);
}

TEST(CasetableJobs, NameTheSameFailure)
{
    const TemporaryTree tree;
    tree.file("list", manyPaths(false) + "z.ab\ny.ab\n");
    for (const std::string jobs : {"1", "2", "8"})
        EXPECT_EQ(run(tree, {"-s", ".ab", "-s", "b", "-j", jobs, "--from-list", "list"}),
                  fails(3, "y.ab: the markers overlap: invalid string position"));
}

} // namespace tests
} // namespace casetable
