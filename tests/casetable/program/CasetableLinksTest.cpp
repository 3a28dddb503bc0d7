#include <set>
#include <string>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/Csv.h"
#include "tests/casetable/support/OrdinaryUser.h"
#include "tests/casetable/support/Program.h"
#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

// The paths of all files that the walk finds; each must be found once.
std::set<std::string> paths(const TemporaryTree& tree, const Arguments& options,
                            const std::string& root = "results")
{
    Arguments arguments = {"-n", "no such marker", "--unmatched", root};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = run(tree, arguments);
    EXPECT_EQ(outcome.exitCode, 1) << outcome;
    std::set<std::string> paths;
    for (const Record& record : parseCsv(outcome.output))
        EXPECT_TRUE(paths.insert(record.at(0)).second) << record.at(0);
    paths.erase("path");
    return paths;
}

using Paths = std::set<std::string>;

} // namespace

TEST(CasetableLinks, ToFoldersAreLeftOutUnlessFollowed)
{
    const TemporaryTree tree({"results/a/file", "elsewhere/deep/file"});
    tree.link("results/link", "../elsewhere");
    tree.link("results/to link", "link");

    EXPECT_EQ(paths(tree, {}), Paths({"a/file"}));
    for (const char* follow : {"-L", "--follow"})
        EXPECT_EQ(paths(tree, {follow}), Paths({"a/file", "link/deep/file", "to link/deep/file"}));
}

TEST(CasetableLinks, ToTheirOwnFolderAreNotEntered)
{
    const TemporaryTree tree({"results/a/file"});
    tree.link("results/self", ".");
    tree.link("results/a/self", "../a");

    EXPECT_EQ(paths(tree, {"-L"}), Paths({"a/file"}));
}

TEST(CasetableLinks, ToTheParentAreNotEntered)
{
    const TemporaryTree tree({"results/a/b/file"});
    tree.link("results/a/b/up", "..");
    tree.link("results/a/b/top", "../..");

    EXPECT_EQ(paths(tree, {"-L"}), Paths({"a/b/file"}));
}

TEST(CasetableLinks, ToEachOtherAreFollowedOnce)
{
    const TemporaryTree tree({"results/a/file", "results/b/file"});
    tree.link("results/a/to b", "../b");
    tree.link("results/b/to a", "../a");

    EXPECT_EQ(paths(tree, {"-L"}), Paths({"a/file", "a/to b/file", "b/file", "b/to a/file"}));
}

TEST(CasetableLinks, ToAFolderAboveTheRootDoNotLeadIntoTheRootAgain)
{
    const TemporaryTree tree({"all/results/a/file", "all/beside/file"});
    tree.link("all/results/a/out", "../..");

    EXPECT_EQ(paths(tree, {"-L"}, "all/results"), Paths({"a/file", "a/out/beside/file"}));
}

TEST(CasetableLinks, ToAFolderThatHoldsTheirOwnLeadThereOnce)
{
    const TemporaryTree tree({"outer/inner/file", "outer/file"});
    tree.link("outer/inner/out", "..");
    tree.link("results/in", "../outer/inner");

    EXPECT_EQ(paths(tree, {"-L"}), Paths({"in/file", "in/out/file"}));
}

TEST(CasetableLinks, ToOneFolderAreAllFollowed)
{
    const TemporaryTree tree({"elsewhere/file"});
    tree.link("results/a", "../elsewhere");
    tree.link("results/b", "../elsewhere");

    EXPECT_EQ(paths(tree, {"-L"}), Paths({"a/file", "b/file"}));
}

TEST(CasetableLinks, InAKnotAreFollowedInEveryOrder)
{
    const TemporaryTree tree;
    tree.knot("results", 4);

    // A file for each ordered choice of one to four folders.
    EXPECT_EQ(paths(tree, {"-L"}).size(), 4u + 12u + 24u + 24u);
}

TEST(CasetableLinks, MayBeTheRootItself)
{
    const TemporaryTree tree({"elsewhere/a/file"});
    tree.link("elsewhere/a/back", "..");
    tree.link("results", "elsewhere");

    EXPECT_EQ(paths(tree, {}), Paths({"a/file"}));
    EXPECT_EQ(paths(tree, {"-L"}), Paths({"a/file"}));
}

TEST(CasetableLinks, ToMissingFoldersAndToThemselvesAreLeftOutWithoutAWord)
{
    const TemporaryTree tree({"results/file"});
    tree.link("results/broken", "missing/folder");
    tree.link("results/itself", "itself");
    tree.link("results/ping", "pong");
    tree.link("results/pong", "ping");

    EXPECT_EQ(run(tree, {"-s", "fi", "-L", "--files", "results"}),
              prints("path,case,fi\nfile,0,le\n"));
}

TEST(CasetableLinks, ToNamesThatAreTooLongAreBrokenOnes)
{
    const TemporaryTree tree({"results/file"});
    tree.link("results/link", std::string(300, 'n'));

    for (const char* option : {"--quiet", "--follow", "--keep-going"})
        EXPECT_EQ(run(tree, {"-s", "fi", option, "--files", "results"}),
                  prints("path,case,fi\nfile,0,le\n"))
            << option;
}

TEST(CasetableLinks, ToAFolderFarAboveTheRootDoNotLeadIntoTheRootAgain)
{
    const TemporaryTree tree({"all/of/the/results/a/file", "all/of/file"});
    tree.link("all/of/the/results/a/out", "../../../..");

    EXPECT_EQ(paths(tree, {"-L"}, "all/of/the/results"), Paths({"a/file", "a/out/of/file"}));
}

TEST(CasetableLinks, ToAnotherFileSystemAreFollowedWhereItNumbersItsFoldersAlike)
{
    const TemporaryTree tree;
    const std::string refused = "no mount is permitted";
    inOwnProcess([&tree, &refused] {
        tree.folder("one");
        tree.folder("two");
        // The mounts are seen by this process and the program alone, and go with them.
        if (unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", tree.path("one").c_str(), "tmpfs", 0, nullptr) != 0 ||
            mount("none", tree.path("two").c_str(), "tmpfs", 0, nullptr) != 0) {
            tree.file(refused);
            return;
        }
        struct stat one = {};
        struct stat two = {};
        ASSERT_EQ(stat(tree.path("one").c_str(), &one), 0);
        ASSERT_EQ(stat(tree.path("two").c_str(), &two), 0);
        EXPECT_EQ(one.st_ino, two.st_ino);
        tree.link("one/link", "../two");
        tree.file("two/file");

        EXPECT_EQ(paths(tree, {"-L"}, "one"), Paths({"link/file"}));
        EXPECT_EQ(umount(tree.path("one").c_str()), 0);
        EXPECT_EQ(umount(tree.path("two").c_str()), 0);
    });
    if (tree.exists(refused))
        GTEST_SKIP() << refused;
}

} // namespace tests
} // namespace casetable
