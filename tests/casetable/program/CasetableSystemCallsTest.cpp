#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// Every system call that takes a path, by any thread.
const Arguments tracer = {"strace",
                          "-f",
                          "-qq",
                          "-s",
                          "1000",
                          "-o",
                          "trace",
                          "-e",
                          "trace=%file",
                          "-E",
                          "ASAN_OPTIONS=detect_leaks=0"};

bool canTrace(const TemporaryTree& tree)
{
    Setting setting = in(tree);
    setting.program = tracer;
    return run({"--version"}, setting).exitCode == 0 &&
           tree.content("trace").find("execve") != std::string::npos;
}

} // namespace

TEST(CasetableSystemCalls, AreNotSpentOnOrdinaryEntries)
{
    const TemporaryTree tree;
    if (!canTrace(tree))
        GTEST_SKIP() << "no strace, or not permitted";
    for (int i = 0; i < 10; ++i)
        tree.file("results/T1/ordinary file " + std::to_string(i));
    tree.link("results/T1/linked file", "ordinary file 1");

    for (const char* option : {"--quiet", "--keep-going", "--follow", "--hidden", "--max-depth=2",
                               "--exclude=*.log", "--exclude=T*/*.log"}) {
        Setting setting = in(tree);
        setting.program = tracer;
        const Outcome outcome = run({"-n", "T", "--files", option, "results"}, setting);
        const std::string trace = tree.content("trace");

        EXPECT_EQ(outcome.exitCode, 0) << outcome;
        EXPECT_NE(outcome.output.find("ordinary file 9"), std::string::npos);
        EXPECT_NE(trace.find("linked file"), std::string::npos) << "the trace shows no entries";
        EXPECT_EQ(trace.find("ordinary file"), std::string::npos) << trace;
    }
}

TEST(CasetableSystemCalls, AreNotSpentOnWhatIsLeftOut)
{
    const TemporaryTree tree;
    if (!canTrace(tree))
        GTEST_SKIP() << "no strace, or not permitted";
    tree.file("results/T1/file");
    tree.link("results/T1/linked file", "file");
    for (const char* const folder : {"results/.hidden", "results/T1/deep", "results/excluded"})
        tree.file(std::string(folder) + "/file");
    tree.link("results/.hidden link", "T1");
    tree.link("results/T1/excluded", "file");

    for (const char* option : {"--quiet", "--keep-going", "--follow"}) {
        Setting setting = in(tree);
        setting.program = tracer;
        const Outcome outcome =
            run({"-n", "T", "-E", "exclude[d]", "-d", "2", option, "results"}, setting);
        const std::string trace = tree.content("trace");

        EXPECT_EQ(outcome.exitCode, 0) << outcome;
        EXPECT_NE(trace.find("\"linked file\""), std::string::npos) << "the trace shows no entries";
        for (const char* const name : {"\".hidden", "\"deep\"", "\"excluded\""})
            EXPECT_EQ(trace.find(name), std::string::npos) << trace;
    }
}

} // namespace tests
} // namespace casetable
