#include "casetable/system/Output.h"

#include <csignal>
#include <filesystem>
#include <iterator>
#include <optional>
#include <set>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/TemporaryFile.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;

// More than any buffer holds back.
const std::string plenty(1000000, 'x');

std::size_t openDescriptors()
{
    const std::filesystem::directory_iterator listing("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(listing), end(listing)));
}

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

TEST(Output, MayLieInTheRootFolder)
{
    const std::string path = "/casetable-test-that-nobody-has-made";
    if (access("/", W_OK) == 0) {
        EXPECT_NO_THROW(Output{path});
    } else {
        try {
            const Output output(path);
            ADD_FAILURE() << "no failure";
        } catch (const Failure& failure) {
            EXPECT_STRNE(failure.what(), (path + ": No such file or directory").c_str());
        }
    }
    EXPECT_NE(access(path.c_str(), F_OK), 0);
}

TEST(Output, LeavesTheMaskOfNewFilesAsItWas)
{
    const TemporaryTree tree;
    inOwnProcess([&tree] {
        umask(027);
        Output output(tree.path("file"));
        output.commit();
        EXPECT_EQ(umask(0), 027u);
    });
}

TEST(Output, LeavesStandardOutputOpen)
{
    inOwnProcess([] {
        {
            Output output(std::nullopt);
            output.commit();
        }
        EXPECT_NE(fcntl(STDOUT_FILENO, F_GETFD), -1);
    });
}

TEST(Output, ClosesWhatItOpens)
{
    const TemporaryTree tree;
    tree.pipe("pipe");
    const int reader = open(tree.path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_GE(reader, 0);
    const std::size_t before = openDescriptors();
    for (const std::string& path : {tree.path("file"), tree.path("pipe"), std::string("/dev/null"),
                                    std::string("/dev/fd/1")}) {
        SCOPED_TRACE(path);
        for (const bool commits : {false, true}) {
            Output output(path);
            output.isTerminal();
            output.write(path == tree.path("file") || path == "/dev/null" ? plenty : "");
            if (commits)
                output.commit();
        }
        EXPECT_EQ(openDescriptors(), before);
    }
    close(reader);
}

TEST(Output, PutsATemporaryFileInPlaceThatTheCallerHasFilled)
{
    const TemporaryTree tree;
    tree.file("file", "earlier");
    tree.setMode("file", 0640);
    tree.link("link", "file");
    Output output(tree.path("link"));
    EXPECT_EQ(output.replacedFile(), tree.path("file"));
    const std::string temporary = output.temporaryFile();
    EXPECT_EQ(temporary.compare(0, tree.path("").size(), tree.path("")), 0) << temporary;
    tree.file(temporary.substr(tree.path("").size()), plenty);
    EXPECT_EQ(tree.content("file"), "earlier");

    output.commit();

    EXPECT_EQ(tree.content("file"), plenty);
    EXPECT_EQ(tree.mode("file"), 0640u);
    EXPECT_EQ(tree.names("."), Names({"file", "link"}));
}

TEST(Output, RemovesATemporaryFileThatIsNotCommitted)
{
    const TemporaryTree tree;
    const std::size_t before = openDescriptors();
    {
        Output output(tree.path("file"));
        output.temporaryFile();
        EXPECT_EQ(tree.names(".").size(), 1u);
    }

    EXPECT_EQ(tree.names("."), Names());
    EXPECT_EQ(openDescriptors(), before);
}

TEST(Output, RemovesTheTemporaryFileOfAProgramThatWasKilled)
{
    const TemporaryTree tree;
    makeTemporaryFile(tree.path("file")); // Which nobody holds when it is closed.
    EXPECT_EQ(tree.names(".").size(), 1u);

    Output output(tree.path("file"));
    output.write("text");
    output.commit();

    EXPECT_EQ(tree.names("."), Names({"file"}));
}

TEST(Output, LeavesTheTemporaryFilesOfOthersThatWriteTheSameFile)
{
    const TemporaryTree tree;
    Output first(tree.path("file"));
    first.write(plenty);
    Output second(tree.path("file"));
    second.temporaryFile();
    Output third(tree.path("file"));
    third.write(plenty);
    EXPECT_EQ(tree.names(".").size(), 3u);

    third.commit();
    EXPECT_EQ(tree.content("file"), plenty);
    second.commit();
    EXPECT_EQ(tree.content("file"), "");
    first.write("first");
    first.commit();
    EXPECT_EQ(tree.content("file"), plenty + "first");
    EXPECT_EQ(tree.names("."), Names({"file"}));
}

TEST(Output, ReplacesNoFileWhereItWritesDirectly)
{
    const TemporaryTree tree;
    tree.pipe("pipe");
    tree.file("file");
    const int opened = open(tree.path("file").c_str(), O_WRONLY | O_CLOEXEC);

    EXPECT_EQ(Output(std::nullopt).replacedFile(), "");
    for (const std::string& path :
         {tree.path("pipe"), std::string("/dev/null"), std::string("/dev/stdout"),
          "/dev/fd/" + std::to_string(opened), "/proc/self/fd/" + std::to_string(opened)})
        EXPECT_EQ(Output(path).replacedFile(), "") << path;
    EXPECT_EQ(Output(tree.path("new")).replacedFile(), tree.path("new"));
    close(opened);
}

TEST(Output, NamesThePathAndTheReasonWhenTheFolderGoesAwayMeanwhile)
{
    const TemporaryTree tree;
    tree.folder("folder");
    Output output(tree.path("folder/file"));
    tree.remove("folder");
    try {
        output.commit();
        ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, ExitCode::OutputFailed);
        EXPECT_EQ(failure.what(), tree.path("folder/file") + ": No such file or directory");
    }
}

} // namespace tests
} // namespace casetable
