#include "casetable/listing/FileSystem.h"

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

using Names = std::set<std::string>;

// The folder and file names on a path that leads through links.
Names namesAt(const TemporaryTree& tree, const std::string& root, const Names& path)
{
    FileSystem fileSystem;
    fileSystem.followLinks = true;
    auto folder = fileSystemRoot(fileSystem, tree.path(root));
    Names names;
    for (std::size_t level = 0; level <= path.size(); ++level) {
        names.clear();
        boost::shared_ptr<FileInfoInterface const> next;
        for (const auto& entry : folder->entries(std::string())) {
            names.insert(entry->fileName());
            if (path.count(entry->fileName()) != 0 && entry->isDirectory())
                next = entry;
        }
        if (level < path.size()) {
            EXPECT_TRUE(next) << "level " << level;
            if (!next)
                return Names();
            folder = next;
        }
    }
    return names;
}

} // namespace

TEST(FileSystemLinks, ToFoldersStandInTheListingAsFoldersDo)
{
    const TemporaryTree tree;
    tree.file("elsewhere/file");
    tree.link("root/a", "../elsewhere");
    tree.link("root/a.txt", "../elsewhere/file");
    tree.file("root/a0");
    FileSystem fileSystem;
    fileSystem.followLinks = true;

    std::vector<std::string> names;
    for (const auto& entry : fileSystemRoot(fileSystem, tree.path("root"))->entries(std::string()))
        names.push_back(entry->fileName());

    EXPECT_EQ(names, (std::vector<std::string>{"a.txt", "a", "a0"}));
}

TEST(FileSystemLinks, ToFoldersAreFoldersUnderTheirOwnName)
{
    const TemporaryTree tree;
    tree.file("elsewhere/file");
    tree.link("root/link", "../elsewhere");
    FileSystem fileSystem;
    fileSystem.followLinks = true;

    const auto entries = fileSystemRoot(fileSystem, tree.path("root"))->entries(std::string());

    ASSERT_EQ(entries.size(), 1u);
    EXPECT_TRUE(entries[0]->isDirectory());
    EXPECT_FALSE(entries[0]->isFile());
    EXPECT_TRUE(entries[0]->isReadable());
    EXPECT_TRUE(entries[0]->exists());
    EXPECT_EQ(entries[0]->fileName(), "link");
    const auto inner = entries[0]->entries(std::string());
    ASSERT_EQ(inner.size(), 1u);
    EXPECT_EQ(inner[0]->fullPath(), tree.path("root/link/file"));
}

TEST(FileSystemLinks, ToAnAncestorAreLeftOut)
{
    const TemporaryTree tree;
    tree.file("root/a/b/file");
    tree.link("root/self", ".");
    tree.link("root/a/up", "..");
    tree.link("root/a/b/self", ".");
    tree.link("root/a/b/root", "../..");

    EXPECT_EQ(namesAt(tree, "root", {}), Names({"a"}));
    EXPECT_EQ(namesAt(tree, "root", {"a"}), Names({"b"}));
    EXPECT_EQ(namesAt(tree, "root", {"a", "b"}), Names({"file"}));
}

TEST(FileSystemLinks, ToAFolderBesideAreFollowed)
{
    const TemporaryTree tree;
    tree.file("root/a/file");
    tree.link("root/b", "a");

    EXPECT_EQ(namesAt(tree, "root", {}), Names({"a", "b"}));
    EXPECT_EQ(namesAt(tree, "root", {"b"}), Names({"file"}));
}

TEST(FileSystemLinks, MakeAnOrdinaryFolderItsOwnAncestorToo)
{
    const TemporaryTree tree;
    tree.file("above/root/inner/file");
    tree.link("above/root/inner/out", "../..");

    EXPECT_EQ(namesAt(tree, "above/root", {"inner"}), Names({"file", "out"}));
    EXPECT_EQ(namesAt(tree, "above/root", {"inner", "out"}), Names());
}

TEST(FileSystemLinks, DoNotMatterToARootThatIsOne)
{
    const TemporaryTree tree;
    tree.file("folder/a/file");
    tree.link("folder/a/back", "../../root");
    tree.link("root", "folder");

    EXPECT_EQ(namesAt(tree, "root", {"a"}), Names({"file"}));
}

} // namespace tests
} // namespace casetable
