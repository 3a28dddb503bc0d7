#include <csignal>
#include <set>
#include <string>

#include <fcntl.h>
#include <sys/syscall.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Injection.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;

Outcome interruptWalk(const TemporaryTree& tree, int signal, const Arguments& options)
{
    Arguments arguments = {"-n", "T", "-L", "results"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    Program program(arguments, withErrors(tree, Stream::Terminal));
    program.waitForWalk();
    program.send(signal);
    return program.finish();
}

} // namespace

TEST(CasetableInterrupt, StopsTheWalkAndLeavesWith130)
{
    const TemporaryTree tree;
    tree.knot("results", 14);

    const Outcome outcome = interruptWalk(tree, SIGINT, {});

    EXPECT_EQ(outcome.exitCode, 130) << outcome;
    EXPECT_EQ(outcome.output, "");
}

TEST(CasetableInterrupt, LeavesWith128AndTheNumberOfOtherSignals)
{
    const TemporaryTree tree;
    tree.knot("results", 14);

    EXPECT_EQ(interruptWalk(tree, SIGTERM, {}).exitCode, 128 + SIGTERM);
    EXPECT_EQ(interruptWalk(tree, SIGHUP, {"--keep-going"}).exitCode, 128 + SIGHUP);
}

TEST(CasetableInterrupt, OfTheWalkMakesNoOutput)
{
    const TemporaryTree tree;
    tree.knot("results", 14);

    EXPECT_EQ(interruptWalk(tree, SIGINT, {"-o", "out"}).exitCode, 130);

    EXPECT_EQ(tree.names("."), Names({"results"}));
}

TEST(CasetableInterrupt, OfTheWalkLeavesAnEarlierOutputAsItWas)
{
    const TemporaryTree tree;
    tree.knot("results", 14);
    tree.file("out", "earlier");

    EXPECT_EQ(interruptWalk(tree, SIGINT, {"--output=out"}).exitCode, 130);

    EXPECT_EQ(tree.content("out"), "earlier");
    EXPECT_EQ(tree.names("."), Names({"out", "results"}));
}

TEST(CasetableInterrupt, EndsAWalkThatTheSystemKeepsWaiting)
{
    const TemporaryTree tree;
    SKIP_WHERE_SANITIZERS_COME_FIRST();
    tree.file("out", "earlier");
    tree.file("hanging/file");
    for (int i = 0; i < 200; ++i) {
        tree.file("begun/T" + std::to_string(i) + "/file");
        tree.file("begun/T" + std::to_string(i) + "/inner/file");
    }
    tree.file("begun/T2/hanging/file");
    struct Walk {
        std::string root;
        std::string jobs;
    };
    // The system keeps the walk itself waiting, or what lists folders ahead of it.
    for (const auto& [root, jobs] : {Walk{"hanging", "1"}, Walk{"hanging", "2"}, Walk{"begun", "1"},
                                     Walk{"begun", "2"}, Walk{"begun", "8"}}) {
        SCOPED_TRACE(root + ", " + jobs);
        Setting setting = withErrors(tree, Stream::Terminal);
        setting.program = {"env", "LD_PRELOAD=" CASETABLE_HANGING_FOLDERS};
        Program program({"-n", "T", "-j", jobs, "-o", "out", root}, setting);
        program.waitForWalk();

        program.send(SIGINT);

        EXPECT_EQ(program.finish().exitCode, 130);
        EXPECT_EQ(tree.content("out"), "earlier");
        EXPECT_EQ(tree.names("."), Names({"begun", "hanging", "out"}));
    }
}

TEST(CasetableInterrupt, StopsWritingToAPipeThatNobodyReads)
{
    const TemporaryTree tree({"results/T1/"});
    for (int i = 0; i < 2000; ++i)
        tree.file("results/T1/" + std::string(100, 'x') + std::to_string(i));

    Program program({"-n", "T", "--files", "results"}, withOutput(tree, Stream::SmallPipe));
    program.waitUntilOutputIsFull();
    program.send(SIGINT);
    const Outcome outcome = program.finish();

    EXPECT_EQ(outcome.exitCode, 130) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    EXPECT_LT(outcome.output.size(), 2000u * 100u);
}

TEST(CasetableInterrupt, StopsWaitingForTheReaderOfAPipeThatDoesNotBlock)
{
    const TemporaryTree tree;
    for (int i = 0; i < 2000; ++i)
        tree.file("results/T1/" + std::string(100, 'x') + std::to_string(i));
    Setting setting = withOutput(tree, Stream::SmallPipe);
    setting.prepare = [] { fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK); };

    Program program({"-n", "T", "--files", "results"}, setting);
    program.waitUntilOutputIsFull();
    if (!program.waitUntilIn(SYS_poll))
        GTEST_SKIP() << "the system does not tell where a program waits";
    program.send(SIGINT);
    const Outcome outcome = program.finish();

    EXPECT_EQ(outcome.exitCode, 130) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
}

TEST(CasetableInterrupt, StopsWaitingForAReaderOfANamedPipe)
{
    const TemporaryTree tree({"results/T1/file"});
    tree.pipe("pipe");

    Program program({"-n", "T", "-o", "pipe", "results"}, in(tree));
    if (!program.waitUntilIn(SYS_openat))
        GTEST_SKIP() << "the system does not tell where a program waits";
    program.send(SIGINT);
    EXPECT_EQ(program.finish(), ends(130, ""));
}

} // namespace tests
} // namespace casetable
