#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

class CasetableUnreadable : public testing::Test {
protected:
    void SetUp() override { SKIP_UNLESS_ORDINARY_USER_IS_POSSIBLE(); }

    Outcome runAsOrdinaryUser(const Arguments& arguments) const
    {
        return run(arguments, withOrdinaryUser(tree_));
    }

    const TemporaryTree tree_;
};

} // namespace

TEST_F(CasetableUnreadable, FolderStopsTheWalkWithTheMessageOfTheModule)
{
    tree_.file("results/T1/file");
    tree_.folder("results/closed");

    for (const mode_t mode : {0000, 0333, 0444}) { // Nothing, not to be listed, not to be entered.
        tree_.setMode("results/closed", mode);
        EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "results"}),
                  fails(3, "The specified path: results/closed is not readable. "
                           "--keep-going leaves such folders out."));
    }
}

TEST_F(CasetableUnreadable, FolderIsLeftOutWithAWarningWhenKeptGoing)
{
    tree_.file("results/T1/file");
    tree_.file("results/a/T2/file");
    tree_.file("results/a/closed/T3/file");

    for (const mode_t mode : {0000, 0333, 0444}) {
        tree_.setMode("results/a/closed", mode);
        EXPECT_EQ(
            runAsOrdinaryUser({"-n", "T", "--keep-going", "results"}),
            prints("case,T,files\n0,1,1\n1,2,1\n", "warning: results/a/closed: Permission denied"));
    }
}

TEST_F(CasetableUnreadable, FoldersAreWarnedOfOneByOne)
{
    tree_.file("results/T1/file");
    for (const char* name : {"x", "y", "z"}) {
        tree_.folder(std::string("results/") + name);
        tree_.setMode(std::string("results/") + name, 0);
    }

    const Outcome outcome = runAsOrdinaryUser({"-n", "T", "--keep-going", "results"});

    EXPECT_EQ(outcome.exitCode, 0) << outcome;
    for (const char* name : {"x", "y", "z"}) {
        const std::string line =
            std::string("casetable: warning: results/") + name + ": Permission denied\n";
        EXPECT_NE(outcome.errors.find(line), std::string::npos) << outcome;
        EXPECT_EQ(outcome.errors.size(), 3 * line.size());
    }
}

TEST_F(CasetableUnreadable, FoldersAreLeftOutInSilenceWhenQuiet)
{
    tree_.file("results/T1/file");
    tree_.folder("results/closed");
    tree_.setMode("results/closed", 0);

    for (const char* quiet : {"-q", "--quiet"})
        EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "--keep-going", quiet, "results"}),
                  prints("case,T,files\n0,1,1\n"));
}

TEST_F(CasetableUnreadable, FolderBehindALinkIsTreatedAlike)
{
    tree_.file("results/T1/file");
    tree_.folder("closed");
    tree_.setMode("closed", 0);
    tree_.link("results/link", "../closed");

    EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "-L", "results"}),
              fails(3, "The specified path: results/link is not readable. "
                       "--keep-going leaves such folders out."));
    EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "-L", "--keep-going", "results"}),
              prints("case,T,files\n0,1,1\n", "warning: results/link: Permission denied"));
}

TEST_F(CasetableUnreadable, FolderIsNamedInOneLineWhateverItsName)
{
    tree_.file("results/T1/file");
    tree_.folder("results/a\nb\x1b\xff");
    tree_.setMode("results/a\nb\x1b\xff", 0);

    // The module's message goes through a text of Qt, which holds no such byte.
    EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "results"}),
              fails(3, "The specified path: results/a\\nb\\x1b\xef\xbf\xbd is not "
                       "readable. --keep-going leaves such folders out."));
    EXPECT_EQ(
        runAsOrdinaryUser({"-n", "T", "--keep-going", "results"}),
        prints("case,T,files\n0,1,1\n", "warning: results/a\\nb\\x1b\\xff: Permission denied"));
}

TEST_F(CasetableUnreadable, RootIsAnErrorThatNamesIt)
{
    tree_.file("results/T1/file");
    tree_.setMode("results", 0);

    for (const Arguments& arguments :
         {Arguments{"-n", "T", "results"}, Arguments{"-n", "T", "--keep-going", "results"}}) {
        EXPECT_EQ(runAsOrdinaryUser(arguments),
                  fails(3, "results: The specified directory is not readable."));
    }
}

TEST_F(CasetableUnreadable, FolderAboveTheRootIsNoMissingRoot)
{
    tree_.file("closed/results/T1/file");
    tree_.setMode("closed", 0);

    EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "closed/results"}),
              fails(3, "closed/results: The specified directory is not readable."));
}

TEST_F(CasetableUnreadable, TargetOfALinkIsWarnedOf)
{
    tree_.file("results/T1/file");
    tree_.file("closed/file");
    tree_.setMode("closed", 0);
    tree_.link("results/T1/link", "../../closed/file");

    EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "--files", "results"}),
              prints("path,case,T\nT1/file,0,1\n", "warning: results/T1/link: Permission denied"));
}

TEST_F(CasetableUnreadable, FilesAreListedLikeOthers)
{
    tree_.file("results/T1/file");
    tree_.setMode("results/T1/file", 0);

    EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "--files", "results"}),
              prints("path,case,T\nT1/file,0,1\n"));
}

TEST_F(CasetableUnreadable, FoldersAmongLoopsOfLinksAreWarnedOfOnEveryWayToThem)
{
    tree_.file("results/a/file");
    tree_.file("results/b/file");
    tree_.file("results/b/closed/file");
    tree_.link("results/a/itself", ".");
    tree_.link("results/a/to b", "../b");
    tree_.link("results/b/to a", "../a");
    tree_.link("results/b/up", "../..");
    tree_.link("results/into file", "b/closed/file");
    tree_.link("results/to closed", "b/closed");
    const Arguments arguments = {"-s", "fi", "-L", "--keep-going", "--files", "results"};

    for (const mode_t mode : {0000, 0111, 0333, 0444}) {
        SCOPED_TRACE(mode);
        tree_.setMode("results/b/closed", mode);
        const bool mayBeEntered = (mode & 0111) != 0;
        const Outcome outcome = runAsOrdinaryUser(arguments);

        EXPECT_EQ(outcome.exitCode, 0) << outcome;
        EXPECT_EQ(outcome.output, std::string("path,case,fi\na/file,0,le\na/to b/file,0,le\n"
                                              "b/file,0,le\nb/to a/file,0,le\n") +
                                      (mayBeEntered ? "into file,0,le\n" : ""));
        std::multiset<std::string> warnings;
        std::istringstream lines(outcome.errors);
        for (std::string line; std::getline(lines, line);)
            warnings.insert(line);
        std::multiset<std::string> expected;
        for (const std::string path : {"a/to b/closed", "b/closed", "to closed"})
            expected.insert("casetable: warning: results/" + path + ": Permission denied");
        if (!mayBeEntered)
            expected.insert("casetable: warning: results/into file: Permission denied");
        EXPECT_EQ(warnings, expected);
    }
}

TEST_F(CasetableUnreadable, FolderInALoopOfLinksStopsTheWalkUnlessItKeepsGoing)
{
    tree_.file("results/a/T1");
    tree_.link("results/a/up", "..");
    tree_.link("results/b/to a", "../a");
    tree_.link("results/b/to c", "../c");
    tree_.link("results/c/to b", "../b");
    tree_.setMode("results/c", 0);

    EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "-L", "results"}),
              fails(3, "The specified path: results/b/to c is not readable. "
                       "--keep-going leaves such folders out."));
    EXPECT_EQ(runAsOrdinaryUser({"-n", "T", "-L", "--keep-going", "-q", "results"}),
              prints("case,T,files\n0,1,2\n"));
}

} // namespace tests
} // namespace casetable
