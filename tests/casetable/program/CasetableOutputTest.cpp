#include <algorithm>
#include <csignal>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;

const std::string csv = "case,T\r\n0,1\r\n";

class CasetableOutput : public testing::Test {
protected:
    void SetUp() override { tree_.file("results/T1/file"); }

    Outcome write(const std::string& file) const
    {
        return run(tree_, {"-n", "T", "-o", file, "results"});
    }

    void expectFailure(const Outcome& outcome, const std::string& text) const
    {
        EXPECT_EQ(outcome.exitCode, 4) << outcome;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(message(outcome.errors), text);
    }

    const TemporaryTree tree_;
};

} // namespace

TEST_F(CasetableOutput, GoesToTheFileAndNowhereElse)
{
    const Outcome outcome = write("out.csv");

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output + outcome.errors, "");
    EXPECT_EQ(tree_.content("out.csv"), csv);
    EXPECT_EQ(tree_.names("."), Names({"out.csv", "results"}));
}

TEST_F(CasetableOutput, TakesAnyPath)
{
    tree_.folder("folder/deeper");
    const std::string longest(255, 'x');
    for (const std::string& file :
         std::vector<std::string>{longest, "./a", "folder/b", "folder/deeper/../c", "-o", "{}",
                                  "a\nb", "\xff", "%%", "[a]", " "}) {
        SCOPED_TRACE(testing::PrintToString(file));
        EXPECT_EQ(write(file).exitCode, 0);
        EXPECT_EQ(tree_.content(file), csv);
    }
    EXPECT_EQ(write(tree_.path("absolute")).exitCode, 0);
    EXPECT_EQ(tree_.content("absolute"), csv);
}

TEST_F(CasetableOutput, ReplacesNoneOfTheMatchedFiles)
{
    tree_.file("results/T1/file", "precious");
    tree_.file("results/other", "earlier");
    tree_.link("link", "results/T1/file");
    for (const std::string& file :
         {std::string("results/T1/file"), std::string("./results/../results//T1/./file"),
          tree_.path("results/T1/file"), std::string("link")}) {
        SCOPED_TRACE(file);
        expectFailure(write(file), file + ": is one of the matched files, and is not replaced");
    }
    EXPECT_EQ(tree_.content("results/T1/file"), "precious");

    EXPECT_EQ(write("results/other").exitCode, 0);
    EXPECT_EQ(tree_.content("results/other"), csv);
    EXPECT_EQ(
        run(tree_, {"-n", "T", "--exclude", "file", "-o", "results/T1/file", "results"}).exitCode,
        1);
    EXPECT_EQ(tree_.content("results/T1/file"), "case,T\r\n");
}

TEST_F(CasetableOutput, IsCsvWhereItsEndingStandsForNoFormatWhichIsRemarked)
{
    Setting setting = in(tree_);
    setting.errors = Stream::Terminal;
    const auto remarks = [&](const std::string& file, const std::string& format) {
        return run({"-n", "T", "-f", format, "-o", file, "results"}, setting).errors;
    };
    const std::string remark = ": written as CSV, as no format goes by that ending";

    EXPECT_NE(remarks("a.xlsx", "auto").find("a.xlsx" + remark), std::string::npos);
    EXPECT_EQ(tree_.content("a.xlsx"), csv);
    EXPECT_EQ(remarks("a.xlsx", "csv").find(remark), std::string::npos);
    EXPECT_EQ(remarks("a.CSV", "auto").find(remark), std::string::npos);
    EXPECT_EQ(remarks("a", "auto").find(remark), std::string::npos);
    EXPECT_EQ(remarks("/dev/null", "auto").find(remark), std::string::npos);
    EXPECT_EQ(run({"-n", "T", "results"}, setting).errors.find(remark), std::string::npos);
}

TEST_F(CasetableOutput, ReplacesAnEarlierFileAndKeepsItsMode)
{
    for (const mode_t mode : {0600, 0640, 0664, 0755}) {
        tree_.file("out", "earlier, and longer than what comes");
        tree_.setMode("out", mode);
        EXPECT_EQ(write("out").exitCode, 0);
        EXPECT_EQ(tree_.content("out"), csv);
        EXPECT_EQ(tree_.mode("out"), mode);
    }
    EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
}

TEST_F(CasetableOutput, HasTheModeThatTheUserGivesNewFiles)
{
    Setting setting = in(tree_);
    setting.prepare = [] { umask(027); };

    EXPECT_EQ(run({"-n", "T", "-o", "out", "results"}, setting).exitCode, 0);

    EXPECT_EQ(tree_.mode("out"), 0640u);
}

TEST_F(CasetableOutput, FollowsALink)
{
    tree_.file("folder/file", "earlier");
    tree_.link("folder/link", "file");
    tree_.link("out", "folder/link");

    EXPECT_EQ(write("out").exitCode, 0);

    EXPECT_TRUE(tree_.isLink("out"));
    EXPECT_TRUE(tree_.isLink("folder/link"));
    EXPECT_FALSE(tree_.isLink("folder/file"));
    EXPECT_EQ(tree_.content("folder/file"), csv);
    EXPECT_EQ(tree_.names("."), Names({"folder", "out", "results"}));
    EXPECT_EQ(tree_.names("folder"), Names({"file", "link"}));
}

TEST_F(CasetableOutput, FollowsALinkToAFileThatDoesNotExistYet)
{
    tree_.folder("folder");
    tree_.link("out", "folder/file");

    EXPECT_EQ(write("out").exitCode, 0);

    EXPECT_TRUE(tree_.isLink("out"));
    EXPECT_EQ(tree_.names("folder"), Names({"file"}));
}

TEST_F(CasetableOutput, FollowsALinkToAnAbsolutePath)
{
    tree_.folder("folder");
    tree_.link("out", tree_.path("folder/file"));

    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(write("out").exitCode, 0);
        EXPECT_TRUE(tree_.isLink("out"));
        EXPECT_FALSE(tree_.isLink("folder/file"));
        EXPECT_EQ(tree_.content("folder/file"), csv);
    }
}

TEST_F(CasetableOutput, FollowsAsManyLinksAsTheSystem)
{
    tree_.file("links/0", "earlier");
    int links = 0;
    do {
        tree_.link("links/" + std::to_string(links + 1), std::to_string(links));
        ++links;
    } while (links < 100 &&
             access(tree_.path("links/" + std::to_string(links)).c_str(), F_OK) == 0);
    const std::string last = "links/" + std::to_string(links - 1);

    EXPECT_EQ(write(last).exitCode, 0);
    EXPECT_TRUE(tree_.isLink(last));
    EXPECT_EQ(tree_.content("links/0"), csv);
    expectFailure(write("links/" + std::to_string(links)),
                  "links/" + std::to_string(links) + ": Too many levels of symbolic links");
}

TEST_F(CasetableOutput, IsNoLinkToItself)
{
    tree_.link("out", "out");

    expectFailure(run(tree_, {"-n", "T", "-o", "out", "no root"}),
                  "out: Too many levels of symbolic links");
    EXPECT_TRUE(tree_.isLink("out"));
}

TEST_F(CasetableOutput, DoesNotReplaceADevice)
{
    EXPECT_EQ(write("/dev/null").exitCode, 0);

    struct stat status = {};
    ASSERT_EQ(stat("/dev/null", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST_F(CasetableOutput, GoesThroughANamedPipe)
{
    tree_.pipe("pipe");
    const int reader = open(tree_.path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_GE(reader, 0);

    const Outcome outcome = write("pipe");
    char buffer[100];
    const ssize_t count = read(reader, buffer, sizeof buffer);
    close(reader);

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    ASSERT_GT(count, 0);
    EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(count)), csv);
    EXPECT_EQ(tree_.names("."), Names({"pipe", "results"}));
}

TEST_F(CasetableOutput, HoldsNothingElseWhenTheStandardStreamsAreClosed)
{
    Setting setting = in(tree_);
    setting.output = Stream::Closed;
    setting.errors = Stream::Closed;

    EXPECT_EQ(run({"-n", "T", "-o", "out", "results"}, setting).exitCode, 0);
    EXPECT_EQ(tree_.content("out"), csv);
    EXPECT_EQ(run({"-n", "none", "-o", "out", "results"}, setting).exitCode, 1);
    EXPECT_EQ(tree_.content("out"), "case,none\r\n");
}

TEST_F(CasetableOutput, NamedByADashIsStandardOutput)
{
    const Outcome outcome = write("-");

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output, csv);
    EXPECT_EQ(tree_.names("."), Names({"results"}));
}

TEST_F(CasetableOutput, GoesThroughTheNameOfStandardOutput)
{
    const Outcome outcome = write("/dev/stdout");

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output, csv);
}

TEST_F(CasetableOutput, AppendsWhereTheNameOfStandardOutputStandsForAnAppendedFile)
{
    tree_.file("log", "earlier\n");
    for (const char* name : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
        tree_.file("log", "earlier\n");
        Setting setting = in(tree_);
        setting.prepare = [this] {
            dup2(open(tree_.path("log").c_str(), O_WRONLY | O_APPEND), STDOUT_FILENO);
        };

        EXPECT_EQ(run({"-n", "T", "-o", name, "results"}, setting).exitCode, 0) << name;

        EXPECT_EQ(tree_.content("log"), std::string("earlier\n") + csv) << name;
    }
    EXPECT_EQ(tree_.names("."), Names({"log", "results"}));
}

TEST_F(CasetableOutput, AppendsWhereTheNameOfAnotherDescriptorStandsForAnAppendedFile)
{
    const int high = 1000;
    for (const std::string name :
         {"/dev/stderr", "/dev/fd/2", "/dev/fd/1000", "/proc/self/fd/1000"}) {
        SCOPED_TRACE(name);
        tree_.file("log", "earlier\n");
        Setting setting = in(tree_);
        setting.prepare = [&] {
            const rlimit limit = {high + 1, high + 1};
            setrlimit(RLIMIT_NOFILE, &limit);
            dup2(open(tree_.path("log").c_str(), O_WRONLY | O_APPEND),
                 name.back() == '0' ? high : STDERR_FILENO);
        };

        EXPECT_EQ(run({"-n", "T", "-o", name, "results"}, setting).exitCode, 0);

        EXPECT_EQ(tree_.content("log"), "earlier\n" + csv);
        EXPECT_EQ(tree_.names("."), Names({"log", "results"}));
    }
}

TEST_F(CasetableOutput, IsNoDescriptorThatIsNotOpen)
{
    for (const std::string name : {"/dev/fd/77", "/proc/self/fd/9999"})
        expectFailure(run(tree_, {"-n", "T", "-o", name, "no root"}),
                      name + ": Bad file descriptor");
    // No number that a descriptor can have.
    for (const std::string name : {"/dev/fd/99999999999999999999", "/dev/fd/", "/dev/fd/1x"})
        EXPECT_EQ(write(name).exitCode, 4) << name;
}

TEST_F(CasetableOutput, WaitsForTheReaderOfAPipeThatDoesNotBlock)
{
    for (int i = 100; i < 2000; ++i)
        tree_.file("many/T" + std::to_string(i) + "/file");
    Setting setting = in(tree_);
    setting.output = Stream::SmallPipe;
    setting.prepare = [] { fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK); };
    Program program({"-n", "T", "many"}, setting);
    program.waitUntilOutputIsFull();

    const Outcome outcome = program.finish();

    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1901);
}

TEST_F(CasetableOutput, RefusesANameThatIsTooLongBeforeTheWalk)
{
    const std::string name(300, 'n');

    expectFailure(run(tree_, {"-n", "T", "-o", name, "no root"}), name + ": File name too long");
}

TEST_F(CasetableOutput, FailsOnAFullDevice)
{
    expectFailure(write("/dev/full"), "/dev/full: No space left on device");
}

TEST_F(CasetableOutput, LeavesAnEarlierFileAsItWasWhenTheDiskIsFull)
{
    tree_.file("out", "earlier");
    Setting setting = in(tree_);
    setting.prepare = [] { // A limit on file sizes stands in for the full disk.
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {4, 4};
        setrlimit(RLIMIT_FSIZE, &limit);
    };

    const Outcome outcome = run({"-n", "T", "-o", "out", "results"}, setting);

    expectFailure(outcome, "out: File too large");
    EXPECT_EQ(tree_.content("out"), "earlier");
    EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
}

TEST_F(CasetableOutput, LeavesAnEarlierFileAsItWasWhenTheWalkOrAnIdentifierFails)
{
    tree_.file("out", "earlier");
    tree_.setMode("out", 0640);

    const Outcome walk = run(tree_, {"-n", "T", "-o", "out", "missing"});
    const Outcome identifier = run(tree_, {"-n", "T", "-a", "*.log=log", "-o", "out", "results"});

    EXPECT_EQ(walk.exitCode, 3) << walk;
    EXPECT_EQ(identifier.exitCode, 3) << identifier;
    EXPECT_EQ(tree_.content("out"), "earlier");
    EXPECT_EQ(tree_.mode("out"), 0640u);
    EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
}

TEST_F(CasetableOutput, IsNotMadeWhenTheWalkFails)
{
    EXPECT_EQ(run(tree_, {"-n", "T", "-o", "out", "missing"}).exitCode, 3);

    EXPECT_EQ(tree_.names("."), Names({"results"}));
}

TEST_F(CasetableOutput, HoldsTheHeaderWhenThereAreNoCases)
{
    tree_.file("out", "earlier");

    const Outcome outcome = run(tree_, {"-n", "none", "-o", "out", "results"});

    EXPECT_EQ(outcome.exitCode, 1) << outcome;
    EXPECT_EQ(tree_.content("out"), "case,none\r\n");
}

TEST_F(CasetableOutput, NeedsAFolderThatExists)
{
    expectFailure(write("missing/out"), "missing/out: No such file or directory");
    expectFailure(write("missing/"), "missing/: No such file or directory");
    EXPECT_EQ(tree_.names("."), Names({"results"}));
}

TEST_F(CasetableOutput, NeedsAFolderThatExistsBehindALinkToo)
{
    tree_.link("out", "missing/file");

    expectFailure(write("out"), "out: No such file or directory");
    EXPECT_TRUE(tree_.isLink("out"));
}

TEST_F(CasetableOutput, TellsWhenTheFolderIsAFile)
{
    tree_.file("file");
    tree_.setMode("file", 0777);

    expectFailure(write("results/T1/file/out"), "results/T1/file/out: Not a directory");
    expectFailure(run(tree_, {"-n", "T", "-o", "file/out", "no root"}),
                  "file/out: Not a directory");
}

TEST_F(CasetableOutput, IsNoFolder)
{
    tree_.folder("folder");
    tree_.link("link", "folder");

    for (const std::string file : {"folder", "folder/", ".", "/", "link", "results/.."})
        EXPECT_EQ(write(file).exitCode, 4) << file;
    expectFailure(write("folder"), "folder: Is a directory");
}

TEST_F(CasetableOutput, IsJudgedBeforeTheWalk)
{
    const Outcome outcome = run(tree_, {"-n", "T", "-o", "missing/out", "no root"});

    expectFailure(outcome, "missing/out: No such file or directory");
}

TEST_F(CasetableOutput, NeedsAFolderThatCanBeWritten)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.file("folder/out", "earlier");
    tree_.setMode("folder", 0555);
    Setting setting = in(tree_);
    setting.ordinaryUser = true;

    for (const std::string file : {"folder/out", "folder/new"}) {
        const Outcome outcome = run({"-n", "T", "-o", file, "results"}, setting);
        expectFailure(outcome, file + ": Permission denied");
    }
    EXPECT_EQ(tree_.content("folder/out"), "earlier");
    EXPECT_EQ(tree_.names("folder"), Names({"out"}));
}

TEST_F(CasetableOutput, GoesThroughANamedPipeInAFolderThatMayNotBeWritten)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.pipe("folder/pipe");
    tree_.setMode("folder", 0555);
    const int reader = open(tree_.path("folder/pipe").c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_GE(reader, 0);
    Setting setting = in(tree_);
    setting.ordinaryUser = true;

    const Outcome outcome = run({"-n", "T", "-o", "folder/pipe", "results"}, setting);
    char buffer[100];
    const ssize_t count = read(reader, buffer, sizeof buffer);
    close(reader);

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    ASSERT_GT(count, 0);
    EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(count)), csv);
}

TEST_F(CasetableOutput, NeedsAFolderThatCanBeEntered)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.folder("folder");
    tree_.setMode("folder", 0666);
    Setting setting = in(tree_);
    setting.ordinaryUser = true;

    expectFailure(run({"-n", "T", "-o", "folder/out", "no root"}, setting),
                  "folder/out: Permission denied");
}

TEST_F(CasetableOutput, IsNoFileThatTheUserMayNotWrite)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.file("out", "earlier");
    tree_.setMode("out", 0444);
    Setting setting = in(tree_);
    setting.ordinaryUser = true;

    expectFailure(run({"-n", "T", "-o", "out", "results"}, setting), "out: Permission denied");

    EXPECT_EQ(tree_.content("out"), "earlier");
    EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
}

TEST_F(CasetableOutput, MayLieInTheTree)
{
    EXPECT_EQ(write("results/T2.csv").exitCode, 0);

    EXPECT_EQ(tree_.content("results/T2.csv"), csv);
    EXPECT_EQ(tree_.names("results"), Names({"T1", "T2.csv"}));
}

} // namespace tests
} // namespace casetable
