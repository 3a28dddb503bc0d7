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

const std::string csv = "case,T,files\n0,1,1\n";

class CasetableOutput : public testing::Test {
protected:
    void SetUp() override { tree_.file("results/T1/file"); }

    Outcome write(const std::string& file) const
    {
        return run(tree_, {"-n", "T", "-o", file, "results"});
    }

    const TemporaryTree tree_;
};

} // namespace

TEST_F(CasetableOutput, GoesToTheFileAndNowhereElse)
{
    EXPECT_EQ(write("out.csv"), prints(""));
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
        EXPECT_EQ(write(file), prints(""));
        EXPECT_EQ(tree_.content(file), csv);
    }
    EXPECT_EQ(write(tree_.path("absolute")), prints(""));
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
        EXPECT_EQ(write(file),
                  fails(4, file + ": is one of the matched files, and is not replaced"));
    }
    EXPECT_EQ(tree_.content("results/T1/file"), "precious");

    EXPECT_EQ(write("results/other"), prints(""));
    EXPECT_EQ(tree_.content("results/other"), csv);
    EXPECT_EQ(
        run(tree_, {"-n", "T", "--exclude", "file", "-o", "results/T1/file", "results"}).exitCode,
        1);
    EXPECT_EQ(tree_.content("results/T1/file"), "case,T,files\n");
}

TEST_F(CasetableOutput, IsCsvWhereItsEndingStandsForNoFormatWhichIsRemarked)
{
    const Setting setting = withErrors(tree_, Stream::Terminal);
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
        EXPECT_EQ(write("out"), prints(""));
        EXPECT_EQ(tree_.content("out"), csv);
        EXPECT_EQ(tree_.mode("out"), mode);
    }
    EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
}

TEST_F(CasetableOutput, HasTheModeThatTheUserGivesNewFiles)
{
    Setting setting = in(tree_);
    setting.prepare = [] { umask(027); };

    EXPECT_EQ(run({"-n", "T", "-o", "out", "results"}, setting), prints(""));

    EXPECT_EQ(tree_.mode("out"), 0640u);
}

TEST_F(CasetableOutput, FollowsALink)
{
    tree_.file("folder/file", "earlier");
    tree_.link("folder/link", "file");
    tree_.link("out", "folder/link");

    EXPECT_EQ(write("out"), prints(""));

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

    EXPECT_EQ(write("out"), prints(""));

    EXPECT_TRUE(tree_.isLink("out"));
    EXPECT_EQ(tree_.names("folder"), Names({"file"}));
}

TEST_F(CasetableOutput, FollowsALinkToAnAbsolutePath)
{
    tree_.folder("folder");
    tree_.link("out", tree_.path("folder/file"));

    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(write("out"), prints(""));
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

    EXPECT_EQ(write(last), prints(""));
    EXPECT_TRUE(tree_.isLink(last));
    EXPECT_EQ(tree_.content("links/0"), csv);
    EXPECT_EQ(write("links/" + std::to_string(links)),
              fails(4, "links/" + std::to_string(links) + ": Too many levels of symbolic links"));
}

TEST_F(CasetableOutput, IsNoLinkToItself)
{
    tree_.link("out", "out");

    EXPECT_EQ(run(tree_, {"-n", "T", "-o", "out", "no root"}),
              fails(4, "out: Too many levels of symbolic links"));
    EXPECT_TRUE(tree_.isLink("out"));
}

TEST_F(CasetableOutput, DoesNotReplaceADevice)
{
    EXPECT_EQ(write("/dev/null"), prints(""));

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

    EXPECT_EQ(outcome, prints(""));
    ASSERT_GT(count, 0);
    EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(count)), csv);
    EXPECT_EQ(tree_.names("."), Names({"pipe", "results"}));
}

TEST_F(CasetableOutput, HoldsNothingElseWhenTheStandardStreamsAreClosed)
{
    Setting setting = withOutput(tree_, Stream::Closed);
    setting.errors = Stream::Closed;

    EXPECT_EQ(run({"-n", "T", "-o", "out", "results"}, setting), prints(""));
    EXPECT_EQ(tree_.content("out"), csv);
    EXPECT_EQ(run({"-n", "none", "-o", "out", "results"}, setting).exitCode, 1);
    EXPECT_EQ(tree_.content("out"), "case,none,files\n");
}

TEST_F(CasetableOutput, NamedByADashIsStandardOutput)
{
    EXPECT_EQ(write("-"), prints(csv));
    EXPECT_EQ(tree_.names("."), Names({"results"}));
}

TEST_F(CasetableOutput, GoesThroughTheNameOfStandardOutput)
{
    EXPECT_EQ(write("/dev/stdout"), prints(csv));
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

        EXPECT_EQ(run({"-n", "T", "-o", name, "results"}, setting), prints("")) << name;

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

        EXPECT_EQ(run({"-n", "T", "-o", name, "results"}, setting), prints(""));

        EXPECT_EQ(tree_.content("log"), "earlier\n" + csv);
        EXPECT_EQ(tree_.names("."), Names({"log", "results"}));
    }
}

TEST_F(CasetableOutput, IsNoDescriptorThatIsNotOpen)
{
    for (const std::string name : {"/dev/fd/77", "/proc/self/fd/9999"})
        EXPECT_EQ(run(tree_, {"-n", "T", "-o", name, "no root"}),
                  fails(4, name + ": Bad file descriptor"));
    // No number that a descriptor can have.
    for (const std::string name : {"/dev/fd/99999999999999999999", "/dev/fd/", "/dev/fd/1x"})
        EXPECT_EQ(write(name).exitCode, 4) << name;
}

TEST_F(CasetableOutput, WaitsForTheReaderOfAPipeThatDoesNotBlock)
{
    for (int i = 100; i < 2000; ++i)
        tree_.file("many/T" + std::to_string(i) + "/file");
    Setting setting = withOutput(tree_, Stream::SmallPipe);
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

    EXPECT_EQ(run(tree_, {"-n", "T", "-o", name, "no root"}),
              fails(4, name + ": File name too long"));
}

TEST_F(CasetableOutput, FailsOnAFullDevice)
{
    EXPECT_EQ(write("/dev/full"), fails(4, "/dev/full: No space left on device"));
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

    EXPECT_EQ(run({"-n", "T", "-o", "out", "results"}, setting), fails(4, "out: File too large"));
    EXPECT_EQ(tree_.content("out"), "earlier");
    EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
}

TEST_F(CasetableOutput, LeavesAnEarlierFileAsItWasWhenTheWalkOrAnIdentifierFails)
{
    tree_.file("out", "earlier");
    tree_.setMode("out", 0640);

    EXPECT_EQ(run(tree_, {"-n", "T", "-o", "out", "missing"}),
              fails(3, "missing: The specified directory does not exist."));
    EXPECT_EQ(
        run(tree_, {"-n", "T", "-a", "*.log=log", "-o", "out", "results"}),
        fails(3, "--aux '*.log=log': Invalid pattern. It selects none of the matched files."));
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

    EXPECT_EQ(run(tree_, {"-n", "none", "-o", "out", "results"}),
              fails(1, "no file matched: marker 'none' failed for 1 file; --unmatched lists them"));
    EXPECT_EQ(tree_.content("out"), "case,none,files\n");
}

TEST_F(CasetableOutput, NeedsAFolderThatExists)
{
    EXPECT_EQ(write("missing/out"), fails(4, "missing/out: No such file or directory"));
    EXPECT_EQ(write("missing/"), fails(4, "missing/: No such file or directory"));
    EXPECT_EQ(tree_.names("."), Names({"results"}));
}

TEST_F(CasetableOutput, NeedsAFolderThatExistsBehindALinkToo)
{
    tree_.link("out", "missing/file");

    EXPECT_EQ(write("out"), fails(4, "out: No such file or directory"));
    EXPECT_TRUE(tree_.isLink("out"));
}

TEST_F(CasetableOutput, TellsWhenTheFolderIsAFile)
{
    tree_.file("file");
    tree_.setMode("file", 0777);

    EXPECT_EQ(write("results/T1/file/out"), fails(4, "results/T1/file/out: Not a directory"));
    EXPECT_EQ(run(tree_, {"-n", "T", "-o", "file/out", "no root"}),
              fails(4, "file/out: Not a directory"));
}

TEST_F(CasetableOutput, IsNoFolder)
{
    tree_.folder("folder");
    tree_.link("link", "folder");

    for (const std::string file : {"folder", "folder/", ".", "/", "link", "results/.."})
        EXPECT_EQ(write(file).exitCode, 4) << file;
    EXPECT_EQ(write("folder"), fails(4, "folder: Is a directory"));
}

TEST_F(CasetableOutput, IsJudgedBeforeTheWalk)
{
    EXPECT_EQ(run(tree_, {"-n", "T", "-o", "missing/out", "no root"}),
              fails(4, "missing/out: No such file or directory"));
}

TEST_F(CasetableOutput, NeedsAFolderThatCanBeWritten)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.file("folder/out", "earlier");
    tree_.setMode("folder", 0555);

    for (const std::string file : {"folder/out", "folder/new"})
        EXPECT_EQ(run({"-n", "T", "-o", file, "results"}, withOrdinaryUser(tree_)),
                  fails(4, file + ": Permission denied"));
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

    const Outcome outcome =
        run({"-n", "T", "-o", "folder/pipe", "results"}, withOrdinaryUser(tree_));
    char buffer[100];
    const ssize_t count = read(reader, buffer, sizeof buffer);
    close(reader);

    EXPECT_EQ(outcome, prints(""));
    ASSERT_GT(count, 0);
    EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(count)), csv);
}

TEST_F(CasetableOutput, NeedsAFolderThatCanBeEntered)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.folder("folder");
    tree_.setMode("folder", 0666);

    EXPECT_EQ(run({"-n", "T", "-o", "folder/out", "no root"}, withOrdinaryUser(tree_)),
              fails(4, "folder/out: Permission denied"));
}

TEST_F(CasetableOutput, IsNoFileThatTheUserMayNotWrite)
{
    SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE();
    tree_.file("out", "earlier");
    tree_.setMode("out", 0444);

    EXPECT_EQ(run({"-n", "T", "-o", "out", "results"}, withOrdinaryUser(tree_)),
              fails(4, "out: Permission denied"));

    EXPECT_EQ(tree_.content("out"), "earlier");
    EXPECT_EQ(tree_.names("."), Names({"out", "results"}));
}

TEST_F(CasetableOutput, MayLieInTheTree)
{
    EXPECT_EQ(write("results/T2.csv"), prints(""));

    EXPECT_EQ(tree_.content("results/T2.csv"), csv);
    EXPECT_EQ(tree_.names("results"), Names({"T1", "T2.csv"}));
}

} // namespace tests
} // namespace casetable
