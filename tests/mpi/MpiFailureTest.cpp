#include <csignal>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/mpi/support/MpiRun.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;

// A tree in which a walk that follows links takes very long, and an earlier output.
class MpiEnd : public testing::Test {
protected:
    MpiEnd()
    {
        tree_.knot("results", 14);
        tree_.file("out", "earlier");
    }

    // That all ended, and left everything as it was.
    void expectNothingIsLeft() const
    {
        EXPECT_TRUE(waitUntilNoneIsLeft(tree_));
        EXPECT_EQ(tree_.content("out"), "earlier");
        EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
    }

    const TemporaryTree tree_;
    const Arguments arguments_ = {"-n", "T", "-L", "-o", "out", "results"};
};

} // namespace

TEST(MpiFailure, NamesTheMachineAndTheFolderThatCannotBeRead)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    const TemporaryTree tree(
        {"results/a/b/P1", "results/c/d/P2", "results/e/f/", "results/g/h/P3"});
    tree.file("out", "earlier");
    tree.setMode("results/e/f", 0);
    tree.setMode("results/g/h", 0);
    const Arguments arguments = {"-n", "P", "-o", "out", "results"};
    const Setting setting = withOrdinaryUser(tree);
    const Outcome expected = run(arguments, setting);
    ASSERT_EQ(expected.exitCode, 3);

    for (const std::size_t processes : {1, 3}) {
        const Outcome seen = run(arguments, asProcesses(processes, setting));

        EXPECT_EQ(seen.exitCode, 3);
        EXPECT_EQ(ownLine(seen.errors), ownLine(expected.errors) + " (on " + machine() + ")");
        EXPECT_EQ(tree.content("out"), "earlier");
        EXPECT_EQ(tree.names("."), Names({"out", "results"}));
    }
}

TEST(MpiFailure, HandsOnTheExitCodesAndMessagesOfOneProcess)
{
    const TemporaryTree tree({"results/P1", "folder/"});
    const std::vector<Arguments> lines = {{"results"},
                                          {"-n", "P"},
                                          {"-n", "P", "results", "-f", "none"},
                                          {"-n", "X", "results"},
                                          {"-n", "P", "results", "-a", "*.x=tag"},
                                          {"-n", "P", "results", "-o", "missing/out"},
                                          {"-n", "P", "results", "-o", "folder"},
                                          {"-s", "re", "-n", "e", "results"}};
    for (const Arguments& arguments : lines) {
        const Outcome expected = run(tree, arguments);
        const Outcome seen = runMpi(tree, 2, arguments);
        EXPECT_EQ(seen.exitCode, expected.exitCode) << seen;
        EXPECT_EQ(seen.output, expected.output) << seen;
        EXPECT_EQ(ownLine(seen.errors), ownLine(expected.errors));
    }
}

TEST(MpiFailure, RefusesWhatNeedsOneProcess)
{
    const TemporaryTree tree({"results/P1"});
    struct Case {
        Arguments arguments;
        std::string message;
    };
    const std::vector<Case> cases = {
        {{"--suggest", "results"}, "--suggest: only casetable has this option"},
        {{"-n", "P", "--explain", "P1"}, "--explain: only casetable has this option"},
        {{"-n", "P", "--from-list", "-"},
         "--from-list: standard input has but one reader; name a file, of which each process reads "
         "a part"}};
    for (const Case& each : cases) {
        const Outcome outcome = runMpi(tree, 2, each.arguments);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(ownLine(outcome.errors), "casetable: " + each.message);
    }
}

TEST(MpiFailure, AnswersHelpAndVersionOnce)
{
    const TemporaryTree tree;
    EXPECT_EQ(runMpi(tree, 3, {"--version"}), prints("casetable-mpi " CASETABLE_VERSION "\n"));
    const Outcome help = runMpi(tree, 3, {"--help"});
    EXPECT_EQ(help.output.find("Usage: "), help.output.rfind("Usage: "));
    EXPECT_NE(help.output.find("--no-duplicates"), std::string::npos);
}

TEST_F(MpiEnd, ComesToAllWhereOneIsKilled)
{
    for (const std::size_t killed : {0, 2}) {
        Program program(arguments_, asProcesses(3, in(tree_)));
        const std::vector<pid_t> processes = processesAtWork(tree_, 3);
        ASSERT_EQ(processes.size(), 3u);

        ::kill(processes[killed], SIGKILL);

        EXPECT_EQ(program.finish().exitCode, 128 + SIGKILL);
        expectNothingIsLeft();
    }
}

TEST_F(MpiEnd, ComesToAllWhereOneIsInterrupted)
{
    for (const std::size_t interrupted : {0, 2}) {
        Program program(arguments_, asProcesses(3, in(tree_)));
        const std::vector<pid_t> processes = processesAtWork(tree_, 3);
        ASSERT_EQ(processes.size(), 3u);

        ::kill(processes[interrupted], SIGTERM);

        EXPECT_EQ(program.finish().exitCode, 128 + SIGTERM);
        expectNothingIsLeft();
    }
}

TEST_F(MpiEnd, ComesToAllWhereTheLauncherIsInterrupted)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        Program program(arguments_, asProcesses(3, in(tree_)));
        ASSERT_EQ(processesAtWork(tree_, 3).size(), 3u);

        program.send(signal);

        EXPECT_NE(program.finish().exitCode, 0);
        expectNothingIsLeft();
    }
}

} // namespace tests
} // namespace casetable
