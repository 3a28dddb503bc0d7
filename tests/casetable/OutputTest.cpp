#include "casetable/Output.h"

#include <csignal>
#include <set>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "casetable/ExitCode.h"
#include "casetable/Interrupt.h"
#include "tests/casetable/OrdinaryUser.h"
#include "tests/casetable/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;

// More than any buffer holds back.
const std::string plenty(1000000, 'x');

} // namespace

TEST(Output, LeavesAnEarlierFileAsItWasUntilItIsCommitted)
{
    const TemporaryTree tree;
    tree.file("file", "earlier");
    Output output(tree.path("file"));
    output.write(plenty);
    output.write("end");
    EXPECT_EQ(tree.content("file"), "earlier");

    output.commit();

    EXPECT_EQ(tree.content("file"), plenty + "end");
    EXPECT_EQ(tree.names("."), Names({"file"}));
}

TEST(Output, LeavesNothingBehindWhenItIsNotCommitted)
{
    const TemporaryTree tree;
    tree.file("earlier", "earlier");
    for (const char* name : {"earlier", "new"}) {
        Output output(tree.path(name));
        output.write(plenty);
        EXPECT_GT(tree.names(".").size(), 1u) << "the temporary file stands in the folder";
    }

    EXPECT_EQ(tree.names("."), Names({"earlier"}));
    EXPECT_EQ(tree.content("earlier"), "earlier");
}

TEST(Output, TouchesNothingWhenItIsConstructed)
{
    const TemporaryTree tree;
    tree.file("file", "earlier");

    const Output earlier(tree.path("file"));
    const Output other(tree.path("other"));

    EXPECT_EQ(tree.names("."), Names({"file"}));
    EXPECT_EQ(tree.content("file"), "earlier");
}

TEST(Output, MayBeEmpty)
{
    const TemporaryTree tree;
    tree.file("file", "earlier");
    Output output(tree.path("file"));

    output.commit();

    EXPECT_EQ(tree.content("file"), "");
}

TEST(Output, NamesThePathWhenTheSystemRefuses)
{
    const TemporaryTree tree;
    try {
        Output output(tree.path("missing/file"));
        FAIL() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::OutputFailed);
        EXPECT_EQ(failure.what(), tree.path("missing/file") + ": No such file or directory");
    }
}

TEST(Output, FailsWhenTheFolderGoesAwayMeanwhile)
{
    const TemporaryTree tree;
    tree.folder("folder");
    Output output(tree.path("folder/file"));
    tree.remove("folder");

    EXPECT_THROW(
        {
            output.write("text");
            output.commit();
        },
        Failure);
}

TEST(Output, IsNoTerminalWhenItIsAFile)
{
    const TemporaryTree tree;

    EXPECT_FALSE(Output(tree.path("file")).isTerminal());
}

TEST(Output, IsLeftAsItWasByAnInterrupt)
{
    const TemporaryTree tree;
    tree.file("file", "earlier");
    inOwnProcess([&tree] {
        catchInterrupts();
        {
            Output output(tree.path("file"));
            output.write(plenty);
            raise(SIGINT);
            EXPECT_THROW(output.commit(), Interrupted);
        }
        EXPECT_EQ(tree.names("."), Names({"file"}));
        EXPECT_EQ(tree.content("file"), "earlier");
    });
}

TEST(Output, KeepsTheOwnerOfAnEarlierFileWhereItMay)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root gives files away";
    const TemporaryTree tree;
    tree.file("file", "earlier");
    ASSERT_EQ(chown(tree.path("file").c_str(), 65534, 65534), 0);

    Output output(tree.path("file"));
    output.write("text");
    output.commit();

    struct stat status = {};
    ASSERT_EQ(stat(tree.path("file").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 65534u);
    EXPECT_EQ(status.st_gid, 65534u);
}

TEST(Output, TakesItsUserAsOwnerWhereItMayNot)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can act for two users";
    const TemporaryTree tree;
    tree.file("file", "earlier");
    tree.setMode(".", 0777);
    tree.setMode("file", 0666);
    inOwnProcess([&tree] {
        ASSERT_EQ(setgid(65534), 0);
        ASSERT_EQ(setuid(65534), 0);
        Output output(tree.path("file"));
        output.write("text");
        ASSERT_NO_THROW(output.commit());
        EXPECT_EQ(tree.content("file"), "text");
        EXPECT_EQ(tree.mode("file"), 0606u);
    });
}

TEST(Output, RefusesAFileThatItsUserMayNotWrite)
{
    const TemporaryTree tree;
    tree.file("file", "earlier");
    tree.setMode(".", 0777);
    tree.setMode("file", 0444);
    inOwnProcess([&tree] {
        if (geteuid() == 0) {
            ASSERT_EQ(setgid(65534), 0);
            ASSERT_EQ(setuid(65534), 0);
        }
        EXPECT_THROW(Output(tree.path("file")), Failure);
        EXPECT_EQ(tree.content("file"), "earlier");
    });
}

} // namespace tests
} // namespace casetable
