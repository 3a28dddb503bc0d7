#include <csignal>
#include <set>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"
#include "tests/casetable/support/Vtt.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

using Columns = std::vector<VttColumn>;

// Runs in the tree and reads what was written.
Columns imported(const TemporaryTree& tree, Arguments arguments,
                 const Outcome& expected = prints(""))
{
    arguments.insert(arguments.end(), {"-o", "out.vtt", "results"});
    EXPECT_EQ(run(tree, arguments), expected);
    return readVtt(tree.path("out.vtt"));
}

} // namespace

TEST(CasetableVtt, HoldsCasesWithNumbersAsDoubles)
{
    const TemporaryTree tree({"results/wing_a\n\xff/T1.5/a.log", "results/wing_/T-2e-1/b"});

    EXPECT_EQ(imported(tree, {"-s", "wing_", "-n", "T", "-a", "*.log=log"}),
              Columns({{"case", "integers", {"0", "1"}},
                       {"wing_", "texts", {"", "a\n\xff"}},
                       {"T", "doubles", {"-0.20000000000000001", "1.5"}},
                       {"log", "texts", {"", "wing_a\n\xff/T1.5/a.log"}},
                       {"log files", "integers", {"0", "1"}},
                       {"files", "integers", {"1", "1"}}}));
}

TEST(CasetableVtt, HoldsNaNWhereANumberDoesNotConvert)
{
    const TemporaryTree tree({"results/T1/file", "results/T1D+07/file"});

    EXPECT_EQ(imported(tree, {"-n", "T"}), Columns({{"case", "integers", {"0", "1"}},
                                                    {"T", "doubles", {"1", "nan"}},
                                                    {"files", "integers", {"1", "1"}}}));
}

TEST(CasetableVtt, HoldsFilesAndUnmatchedFiles)
{
    const TemporaryTree tree({"results/T1/file", "results/none"});

    EXPECT_EQ(imported(tree, {"-n", "T", "--files"}), Columns({{"path", "texts", {"T1/file"}},
                                                               {"case", "integers", {"0"}},
                                                               {"T", "doubles", {"1"}}}));
    EXPECT_EQ(imported(tree, {"-n", "T", "--unmatched"}),
              Columns({{"path", "texts", {"none"}},
                       {"marker", "texts", {"T"}},
                       {"reason", "texts", {"not found"}}}));
}

TEST(CasetableVtt, IsATableWithoutRowsWithoutCases)
{
    const TemporaryTree tree({"results/"});

    EXPECT_EQ(imported(tree, {"-n", "T", "-s", "M"},
                       fails(1, "no file matched: there is no file below results")),
              Columns({{"case", "integers", {}},
                       {"T", "doubles", {}},
                       {"M", "texts", {}},
                       {"files", "integers", {}}}));
}

TEST(CasetableVtt, GoesToStandardOutputToo)
{
    const TemporaryTree tree({"results/T1/file"});
    const Outcome outcome = run(tree, {"-n", "T", "-f", "vtt", "results"});
    tree.file("out", outcome.output);

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(readVtt(tree.path("out")), Columns({{"case", "integers", {"0"}},
                                                  {"T", "doubles", {"1"}},
                                                  {"files", "integers", {"1"}}}));
}

TEST(CasetableVtt, IntoAFileThatMayNotGrowLeavesTheEarlierOne)
{
    SKIP_WHERE_SANITIZERS_WRITE();
    const TemporaryTree tree({"results/T1/file"});
    tree.file("out", "earlier");
    const Arguments arguments = {"-n", "T", "-f", "vtt", "-o", "out", "results"};
    Setting setting = in(tree);
    setting.prepare = [] {
        const rlimit limit = {100, 100};
        setrlimit(RLIMIT_FSIZE, &limit);
    };

    EXPECT_EQ(run(arguments, setting), fails(4, "out: File too large"));
    EXPECT_EQ(run(tree, {"-n", "T", "-f", "vtt", "-o", "/dev/full", "results"}),
              fails(4, "/dev/full: No space left on device"));
    EXPECT_EQ(tree.content("out"), "earlier");
    EXPECT_EQ(tree.names("."), std::set<std::string>({"out", "results"}));
}

} // namespace tests
} // namespace casetable
