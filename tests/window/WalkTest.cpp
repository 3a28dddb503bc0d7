#include "window/model/Walk.h"

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/casetable/support/TemporaryTree.h"
#include "tests/window/Kept.h"
#include "window/model/BackgroundJob.h"

namespace casetable {
namespace tests {

namespace {

using Texts = std::vector<std::string>;

void waitForEnd(const Walk& walk)
{
    while (!walk.hasEnded())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

Source folder(const std::string& root)
{
    Source source;
    source.root = root;
    source.selection.hidden = false;
    return source;
}

Source list(const std::string& file)
{
    Source source;
    source.list = file;
    return source;
}

} // namespace

TEST(Walk, KeepsTheFilesOfAFolderInByteOrder)
{
    const TemporaryTree tree({"b/1", "a", "b.x", ".hidden", "b/0/z"});
    const Walk walk(folder(tree.path()));
    waitForEnd(walk);
    EXPECT_EQ(pathsOf(walk.files()), Texts({"a", "b.x", "b/0/z", "b/1"}));
    EXPECT_EQ(walk.end().error, "");
    EXPECT_FALSE(walk.end().isStopped);
    EXPECT_EQ(walk.end().hiddenLeftOut, 1U);
    EXPECT_EQ(walk.progress().files, 4U);
    EXPECT_EQ(walk.progress().folders, 3U);
}

TEST(Walk, KeepsTheFilesOfAListInByteOrder)
{
    const TemporaryTree tree;
    tree.file("list", "c\na\nb/x\na\n");
    const Walk walk(list(tree.path("list")));
    waitForEnd(walk);
    EXPECT_EQ(pathsOf(walk.files()), Texts({"a", "b/x", "c"}));
}

TEST(Walk, TellsInTheProgramsWordsWhyItFails)
{
    const TemporaryTree tree;
    const Walk walk(folder(tree.path("missing")));
    waitForEnd(walk);
    EXPECT_EQ(walk.end().error.find(tree.path("missing") + ": "), 0U) << walk.end().error;
    tree.file("list", "a\n../b\n");
    const Walk refused(list(tree.path("list")));
    waitForEnd(refused);
    EXPECT_NE(refused.end().error.find("../b"), std::string::npos) << refused.end().error;
}

TEST(Walk, KeepsWhatItHasWhenItIsStopped)
{
    const TemporaryTree tree;
    tree.chain("deep", 3000, "folder", "file");
    Walk walk(folder(tree.path()));
    walk.stop();
    waitForEnd(walk);
    EXPECT_TRUE(walk.end().isStopped);
    EXPECT_EQ(walk.end().error, "");
    EXPECT_LE(walk.files().count(), 1U);
}

// A list in a pipe, of which more is expected, keeps the walk waiting as a dead folder does.
TEST(Walk, EndsWithTheFilesSoFarWhenItIsLeft)
{
    const TemporaryTree tree;
    ASSERT_EQ(::mkfifo(tree.path("list").c_str(), 0600), 0);
    Walk walk(list(tree.path("list")));
    const int writer = ::open(tree.path("list").c_str(), O_WRONLY);
    EXPECT_EQ(::write(writer, "c\na\nb\n", 6), 6);
    while (walk.progress().files < 3)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_FALSE(walk.hasEnded());
    walk.leave();
    waitForEnd(walk);
    EXPECT_TRUE(BackgroundJob::isAnyLeft());
    EXPECT_EQ(pathsOf(walk.files()), Texts({"a", "b", "c"}));
    EXPECT_EQ(walk.progress().files, 3U);
    EXPECT_TRUE(walk.end().isStopped);
    EXPECT_EQ(::write(writer, "d\n", 2), 2);
    ::close(writer);
    while (BackgroundJob::isAnyLeft())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(walk.files().count(), 3U);
}

TEST(Walk, MayBeLeftAgainAndAgain)
{
    const TemporaryTree tree;
    ASSERT_EQ(::mkfifo(tree.path("list").c_str(), 0600), 0);
    Walk walk(list(tree.path("list")));
    const int writer = ::open(tree.path("list").c_str(), O_WRONLY);
    EXPECT_EQ(::write(writer, "c\na\nb\n", 6), 6);
    while (walk.progress().files < 3)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    walk.leave();
    while (!walk.hasEnded())
        walk.leave();
    walk.leave();
    EXPECT_EQ(pathsOf(walk.files()), Texts({"a", "b", "c"}));
    EXPECT_TRUE(walk.end().isStopped);
    ::close(writer);
    while (BackgroundJob::isAnyLeft())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

TEST(Walk, KeepsHowItEndedWhenItIsLeftLater)
{
    const TemporaryTree tree({"folder/a", "folder/.hidden"});
    Walk walk(folder(tree.path("folder")));
    waitForEnd(walk);
    walk.leave();
    EXPECT_TRUE(walk.hasEnded());
    EXPECT_EQ(pathsOf(walk.files()), Texts({"a"}));
    EXPECT_EQ(walk.end().hiddenLeftOut, 1U);
    EXPECT_FALSE(walk.end().isStopped);
    tree.file("list", "b\na\n../c\n");
    Walk refused(list(tree.path("list")));
    waitForEnd(refused);
    refused.leave();
    EXPECT_EQ(pathsOf(refused.files()), Texts({"a", "b"}));
    EXPECT_NE(refused.end().error.find("../c"), std::string::npos) << refused.end().error;
    EXPECT_FALSE(refused.end().isStopped);
}

TEST(Walk, IsLeftToItselfByItsOwner)
{
    const TemporaryTree tree({"a/b"});
    for (int i = 0; i < 50; ++i)
        const Walk walk(folder(tree.path()));
    while (BackgroundJob::isAnyLeft())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace tests
} // namespace casetable
