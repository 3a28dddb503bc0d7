#include <functional>
#include <string>
#include <vector>

#include <grp.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/support/Sanitizer.h"

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

// A tree of many folders, for anybody to read.
class CasetableJobsWithLittle : public testing::Test {
protected:
    CasetableJobsWithLittle()
    {
        std::string paths;
        for (int i = 0; i < 80; ++i) {
            const std::string path =
                "T" + std::to_string(i / 10) + "/P" + std::to_string(i % 10) + "_/";
            for (const char* const file : {"a.dat", "deeper/b.dat"}) {
                tree_.file("results/" + path + file);
                paths += path + file + "\n";
            }
        }
        tree_.file("list", paths);
        tree_.setMode(".", 0755);
    }

    // What comes of the tree and of the list, where `prepare` has limited what a run may have.
    Outcome runWith(const std::string& jobs, const std::string& source,
                    const std::function<void()>& prepare) const
    {
        Arguments arguments = {"-n", "T", "-n", "P", "--files", "-j", jobs};
        if (source == "list")
            arguments.emplace_back("--from-list");
        arguments.push_back(source);
        Setting setting = in(tree_);
        // Opening a folder takes so long that many threads are wanted for it.
        setting.program = {"env", "LD_PRELOAD=" CASETABLE_HANGING_FOLDERS};
        setting.prepare = prepare;
        return run(arguments, setting);
    }

    void expectSameWith(const std::function<void()>& prepare) const
    {
        for (const std::string source : {"results", "list"}) {
            const Outcome plain = runWith("1", source, nullptr);
            EXPECT_EQ(plain.exitCode, 0) << plain;
            for (const std::string jobs : {"1", "2", "8"}) {
                SCOPED_TRACE(jobs);
                EXPECT_EQ(runWith(jobs, source, prepare), plain);
            }
        }
    }

    const TemporaryTree tree_;
};

// The system counts the threads of a user, and never too many for root; so another one, of whom
// nothing else runs. Ends the process where there is none.
void becomeNobodyElse()
{
    const uid_t user = 1'234'567'890;
    if (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0)
        _exit(1);
}

void limitTo(int resource, rlim_t most)
{
    const rlimit limit = {most, most};
    setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

} // namespace

TEST_F(CasetableJobsWithLittle, ChangeNothingWhereDescriptorsAreFew)
{
    SKIP_WHERE_SANITIZERS_COME_FIRST();
    for (const rlim_t most : {16, 20, 64}) {
        SCOPED_TRACE(most);
        expectSameWith([most] { limitTo(RLIMIT_NOFILE, most); });
    }
}

TEST_F(CasetableJobsWithLittle, ChangeNothingWhereThreadsAreFew)
{
    SKIP_WHERE_SANITIZERS_COME_FIRST();
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    if (runWith("1", "results", becomeNobodyElse).exitCode != 0)
        GTEST_SKIP() << "another user cannot run the program here";
    for (const rlim_t most : {2, 3, 8}) {
        SCOPED_TRACE(most);
        expectSameWith([most] {
            becomeNobodyElse();
            limitTo(RLIMIT_NPROC, most);
        });
    }
    const Outcome outcome = runWith("8", "results", [] {
        becomeNobodyElse();
        limitTo(RLIMIT_NPROC, 1);
    });
    EXPECT_EQ(outcome, fails(3, "the system has no thread left for the walk"));
}

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
