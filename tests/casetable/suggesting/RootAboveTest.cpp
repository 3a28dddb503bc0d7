#include "casetable/suggesting/RootAbove.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

Options below(const std::string& root)
{
    Options options;
    options.source.root = root;
    return options;
}

} // namespace

TEST(RootAbove, IsTheFolderThatTheRootStandsIn)
{
    const TemporaryTree tree;
    tree.folder("a/b/c");
    const std::vector<std::pair<std::string, std::string>> roots = {
        {"a/b", "a"}, {"a/b///", "a"}, {"a/b/.", "a/b/./.."}, {"a/b/c/..", "a/b/c/../.."}};
    for (const auto& [root, expected] : roots) {
        SCOPED_TRACE(root);
        const std::optional<RootAbove> above = rootAbove(below(tree.path(root)));
        ASSERT_TRUE(above);
        EXPECT_EQ(above->options.source.root, tree.path(expected));
        EXPECT_EQ(above->name, "b");
        EXPECT_FALSE(above->options.source.follow);
    }
    EXPECT_EQ(rootAbove(below("a"))->options.source.root, ".");
    EXPECT_EQ(rootAbove(below("/a"))->options.source.root, "/");
    EXPECT_EQ(rootAbove(below("."))->options.source.root, "..");
    EXPECT_EQ(rootAbove(below(".."))->options.source.root, "../..");
}

TEST(RootAbove, IsNoneWhereNoFolderIsAboveOrItIsMissing)
{
    EXPECT_FALSE(rootAbove(below("/")));
    EXPECT_FALSE(rootAbove(below("//")));
    EXPECT_FALSE(rootAbove(below("/.")));
    EXPECT_FALSE(rootAbove(below("")));
    const TemporaryTree tree;
    EXPECT_FALSE(rootAbove(below(tree.path("missing/a"))));
    EXPECT_FALSE(rootAbove(below(tree.path("missing/.."))));
}

TEST(RootAbove, LeavesOutWhatCannotBeReadBesideTheRoot)
{
    EXPECT_TRUE(rootAbove(below("a"))->options.source.keepGoing);
}

TEST(RootAbove, IsTheFolderThatTheTargetOfALinkStandsIn)
{
    const TemporaryTree tree;
    tree.folder("a/b");
    tree.link("link", "a/b");
    for (const char* root : {"link", "link/"}) {
        const std::optional<RootAbove> above = rootAbove(below(tree.path(root)));
        ASSERT_TRUE(above);
        EXPECT_EQ(above->options.source.root, tree.path("link/.."));
        EXPECT_EQ(above->name, "b");
        EXPECT_FALSE(above->options.source.follow);
    }
    tree.link("dangling", "missing");
    EXPECT_FALSE(rootAbove(below(tree.path("dangling"))));
}

TEST(RootAbove, SelectsTheSameFiles)
{
    Options options = below("a*b");
    options.source.selection.maxDepth = 2;
    for (const char* glob : {"*.tmp", "old/", "/x/y*", "x/y/", "**/z"})
        options.source.selection.excluded.emplace_back(glob);

    const std::optional<RootAbove> above = rootAbove(options);

    ASSERT_TRUE(above);
    EXPECT_EQ(above->options.source.selection.maxDepth, 3u);
    std::vector<std::string> globs;
    for (const Glob& glob : above->options.source.selection.excluded)
        globs.push_back(glob.text());
    EXPECT_EQ(globs, std::vector<std::string>(
                         {"*.tmp", "old/", "/a\\*b/x/y*", "/a\\*b/x/y/", "/a\\*b/**/z"}));
}

TEST(RootAbove, IsNoneWhereTheRootWouldBeLeftOut)
{
    Options hidden = below(".a");
    EXPECT_TRUE(rootAbove(hidden));
    hidden.source.selection.hidden = false;
    EXPECT_FALSE(rootAbove(hidden));
    Options excluded = below("abc");
    excluded.source.selection.excluded.emplace_back("a*");
    EXPECT_FALSE(rootAbove(excluded));
}

} // namespace tests
} // namespace casetable
