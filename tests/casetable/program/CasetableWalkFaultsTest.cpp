#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/Injection.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

const char* const accessCalls = "faccessat,faccessat2";
const char* const statusCalls = "newfstatat,statx";
const std::string eraseLine = "\r\x1b[K";

// What stays on the terminal: every status line is erased before anything else is written.
std::string withoutStatus(std::string errors)
{
    for (std::size_t start = 0; (start = errors.find(eraseLine, start)) != std::string::npos;) {
        const std::size_t behind = start + eraseLine.size();
        const std::size_t next = errors.find(eraseLine, behind);
        const bool isStatus = next != std::string::npos && errors.find('\n', behind) > next;
        errors.erase(start, isStatus ? next - start : eraseLine.size());
    }
    return errors;
}

// Ends in failure what the system refuses in the middle of a walk.
class CasetableWalkFaults : public testing::Test {
protected:
    void SetUp() override { SKIP_UNLESS_FAULTS_CAN_BE_INJECTED(tree_); }

    CasetableWalkFaults()
    {
        tree_.file("results/T1/file");
        tree_.file("results/T2/file");
        tree_.link("results/T1/link", "file");
    }

    // Runs with a fault in those calls that name `path` or a descriptor of it.
    Outcome runWith(const std::string& systemCalls, const std::string& error,
                    const std::string& path, const std::string& option) const
    {
        return run({"-n", "T", "--files", option, root_},
                   withInjection(tree_, systemCalls, "error=" + error, {"-P", path}));
    }

    // Such a fault ends the walk whether it is to keep going or not.
    void expectEnd(const std::string& systemCalls, const std::string& error,
                   const std::string& path, const std::string& text) const
    {
        SCOPED_TRACE(systemCalls + " " + path);
        for (const char* option : {"--quiet", "--keep-going"})
            EXPECT_EQ(runWith(systemCalls, error, path, option), fails(3, text));
    }

    const TemporaryTree tree_;
    const std::string root_ = tree_.path("results");
};

} // namespace

TEST_F(CasetableWalkFaults, OfTheDiskEndItWithTheFolderAndTheReason)
{
    expectEnd("openat", "EIO", "T2", root_ + "/T2: Input/output error");
    expectEnd("getdents64", "EIO", root_ + "/T2", root_ + "/T2: Input/output error");
    expectEnd("getdents64", "EIO", root_, root_ + ": Input/output error");
    expectEnd(statusCalls, "EIO", "link", root_ + "/T1: Input/output error");
}

TEST_F(CasetableWalkFaults, OfTheDiskAreNotTakenForAWantOfPermission)
{
    expectEnd(accessCalls, "EIO", root_, root_ + ": Input/output error");
    EXPECT_EQ(runWith(accessCalls, "EIO", "T2", "--quiet"),
              fails(3, root_ + "/T2: Input/output error"));
    EXPECT_EQ(runWith(accessCalls, "EIO", "T2", "--keep-going"),
              fails(3, root_ + ": Input/output error"));
}

TEST_F(CasetableWalkFaults, OfOneFolderLeaveItOutWhenKeptGoing)
{
    struct Reason {
        std::string error;
        std::string text;
    };
    for (const Reason& reason :
         {Reason{"EACCES", "Permission denied"}, Reason{"EPERM", "Operation not permitted"},
          Reason{"ESTALE", "Stale file handle"}, Reason{"ENOENT", "No such file or directory"}}) {
        for (const std::string systemCalls : {"openat", accessCalls}) {
            SCOPED_TRACE(systemCalls + " " + reason.error);
            EXPECT_EQ(runWith(systemCalls, reason.error, "T2", "--keep-going"),
                      prints("path,case,T\nT1/file,0,1\nT1/link,0,1\n",
                             "warning: " + root_ + "/T2: " + reason.text));
        }
    }
}

TEST_F(CasetableWalkFaults, OfARootThatDisappearsNameItWhereverTheyMeetIt)
{
    expectEnd(accessCalls, "ENOENT", root_, root_ + ": The specified directory does not exist.");
    expectEnd(accessCalls, "ENOENT:when=2+", root_,
              root_ + ": The specified directory is not readable.");
    expectEnd("openat", "ENOENT", root_, root_ + ": No such file or directory");
    // A folder that is removed while it is open has no entries left.
    expectEnd("getdents64", "ENOENT", root_, root_ + ": No such file or directory");
}

TEST_F(CasetableWalkFaults, OfAThreadThatCannotBeStartedAreTold)
{
    EXPECT_EQ(
        run({"-n", "T", "-o", "out", root_}, withInjection(tree_, "clone,clone3", "error=EAGAIN")),
        fails(3, "the system has no thread left for the walk"));
    EXPECT_FALSE(tree_.exists("out"));
}

TEST_F(CasetableWalkFaults, AreNoneWhenASignalIsMeantForTheThreadOfTheWalk)
{
    // Signals stay away from that thread, lest they cut its calls short. The main thread takes
    // them.
    EXPECT_EQ(run({"-n", "T", root_},
                  withInjection(tree_, "getdents64", "signal=SIGINT", {"-P", root_ + "/T1"})),
              prints("case,T,files\n0,1,2\n1,2,1\n"));
}

// Here no call is tampered with: the folders are removed.
class CasetableDisappearing : public testing::Test {
protected:
    CasetableDisappearing() { tree_.knot("T1", 14); }

    // What comes of a walk during which `remove` is called.
    Outcome walkDuring(const std::function<void()>& remove, const Arguments& options) const
    {
        Arguments arguments = {"-s", "fi", "-L", "T1"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Program program(arguments, withErrors(tree_, Stream::Terminal));
        program.waitForWalk();
        remove();
        return program.finish();
    }

    void removeFoldersBelowRoot() const
    {
        for (const std::string& name : tree_.names("T1"))
            std::filesystem::remove_all(tree_.path("T1/" + name));
    }

    // The lines that stay on the terminal, the last of them apart.
    struct Lines {
        std::vector<std::string> warnings;
        std::string last;
    };

    static Lines linesOf(const Outcome& outcome)
    {
        Lines lines;
        std::istringstream stream(withoutStatus(outcome.errors));
        for (std::string line; std::getline(stream, line);) {
            if (!lines.last.empty())
                lines.warnings.push_back(lines.last);
            lines.last = line;
        }
        return lines;
    }

    static void expectWarningsOfMissingFolders(const std::vector<std::string>& warnings)
    {
        const std::string start = "casetable: warning: T1/";
        const std::string end = ": No such file or directory";
        EXPECT_FALSE(warnings.empty());
        for (const std::string& line : warnings) {
            ASSERT_GT(line.size(), start.size() + end.size());
            EXPECT_EQ(line.substr(0, start.size()), start);
            EXPECT_EQ(line.substr(line.size() - end.size()), end);
        }
    }

    const TemporaryTree tree_;
};

TEST_F(CasetableDisappearing, RootEndsTheWalkInOneLine)
{
    const Outcome outcome =
        walkDuring([this] { std::filesystem::remove_all(tree_.path("T1")); }, {"-o", "out"});

    EXPECT_EQ(outcome.exitCode, 3) << outcome;
    EXPECT_EQ(outcome.output, "");
    const std::string text = message(withoutStatus(outcome.errors));
    EXPECT_NE(text.find("T1/"), std::string::npos) << text;
    EXPECT_FALSE(tree_.exists("out"));
}

TEST_F(CasetableDisappearing, RootIsAnErrorAfterAWalkThatKeepsGoing)
{
    const Outcome outcome =
        walkDuring([this] { std::filesystem::remove_all(tree_.path("T1")); }, {"--keep-going"});

    EXPECT_EQ(outcome.exitCode, 3) << outcome;
    EXPECT_EQ(outcome.output, "");
    const Lines lines = linesOf(outcome);
    expectWarningsOfMissingFolders(lines.warnings);
    EXPECT_EQ(lines.last, "casetable: The specified folder: T1 does not exist.");
}

TEST_F(CasetableDisappearing, FoldersLeaveAWalkThatKeepsGoingWithTheFilesFoundBefore)
{
    const Outcome outcome = walkDuring([this] { removeFoldersBelowRoot(); }, {"--keep-going"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    EXPECT_EQ(outcome.output.substr(0, 19), "case,fi,files\n0,le,") << outcome;
    const Lines lines = linesOf(outcome);
    expectWarningsOfMissingFolders(lines.warnings);
    EXPECT_EQ(lines.last.substr(0, 26), "casetable: cases: 1, from ") << lines.last;
}

} // namespace tests
} // namespace casetable
