#include "casetable/listing/Shard.h"

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "crawler/FolderCrawler.h"
#include "tests/crawler/Doubles.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

using EntryPtr = boost::shared_ptr<FileInfoInterface const>;
using Texts = std::vector<std::string>;

Shard shardOf(const Texts& paths)
{
    Shard shard;
    for (const std::string& path : paths)
        shard.append(path);
    return shard;
}

Texts pathsOf(const Shard& shard)
{
    const std::vector<std::string_view> paths = shard.paths();
    return {paths.begin(), paths.end()};
}

// What a walk through the shard finds.
Texts walked(const Shard& shard)
{
    const std::vector<std::string_view> paths = shard.paths();
    FolderCrawler crawler(shardRoot(paths, "root"));
    doubles::runToEnd(crawler); // On its own thread, whose stack carries deep shards.
    EXPECT_TRUE(crawler.result().errorString.isNull());
    return {crawler.result().files.begin(), crawler.result().files.end()};
}

// The files of the shards into which a cutter divides the paths.
std::vector<Texts> cut(const Texts& paths, const ShardSize& size)
{
    std::vector<Texts> shards;
    ShardCutter cutter(size, [&shards](const Shard& shard) { shards.push_back(pathsOf(shard)); });
    for (const std::string& path : paths)
        cutter.take(path);
    cutter.finish();
    return shards;
}

} // namespace

TEST(Shard, HoldsItsPathsInByteOrderEachOnce)
{
    const Shard shard = shardOf({"b", "a/x", "b", "", "\xff", "a!"});

    EXPECT_EQ(pathsOf(shard), Texts({"", "a!", "a/x", "b", "\xff"}));
    EXPECT_EQ(shard.fileCount(), 6u);
    EXPECT_EQ(shard.byteCount(), 8u);
}

TEST(Shard, IsATreeOfTheFoldersInItsPaths)
{
    const Shard shard = shardOf({"a/b/file", "file"});
    const std::vector<std::string_view> paths = shard.paths();

    const EntryPtr root = shardRoot(paths, "the root");
    EXPECT_TRUE(root->exists() && root->isDirectory() && root->isReadable() && !root->isFile());
    EXPECT_EQ(root->fullPath(), "the root");

    const auto entries = root->entries(std::string());
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_TRUE(entries[0]->isDirectory() && !entries[0]->isFile() && entries[0]->isReadable());
    EXPECT_EQ(entries[0]->fullPath(), "a");
    EXPECT_TRUE(entries[1]->isFile() && !entries[1]->isDirectory() && entries[1]->exists());
    EXPECT_EQ(entries[1]->fullPath(), "file");

    const EntryPtr b = entries[0]->entries(std::string()).at(0);
    EXPECT_EQ(b->fileName(), "b");
    EXPECT_EQ(b->fullPath(), "a/b");
    EXPECT_EQ(b->entries(std::string()).at(0)->fullPath(), "a/b/file");
}

TEST(Shard, MayBeEmpty)
{
    EXPECT_EQ(walked(Shard()), Texts());
}

TEST(Shard, IsWalkedInByteOrderOfPath)
{
    const Texts paths = {"./a/b", "A", "a!", "a.txt", "a/x", "a/x!/y", "a/x.", "a0", "ab/c/d/e"};
    EXPECT_EQ(walked(shardOf(paths)), paths);
}

TEST(Shard, IsWalkedWhateverItsFoldersAre)
{
    const unsigned seed = 3;
    std::mt19937 random(seed);
    const Texts folders = {"a", "a!", "b", "."};
    for (int i = 0; i < 1000; ++i) {
        std::set<std::string> paths;
        for (auto count = random() % 12; count > 0; --count) {
            std::string path;
            for (auto depth = random() % 4; depth > 0; --depth)
                path += folders[random() % folders.size()] + "/";
            paths.insert(path + "f" + std::to_string(random() % 3)); // No folder has such a name.
        }
        Texts shuffled(paths.begin(), paths.end());
        std::shuffle(shuffled.begin(), shuffled.end(), random);
        EXPECT_EQ(walked(shardOf(shuffled)), Texts(paths.begin(), paths.end()));
    }
}

TEST(Shard, IsWalkedAsDeepAsAListMayBe)
{
    // On each level the thread sanitizer takes some hundred kilobytes of its own.
    const int depth = BUILT_WITH_THREAD_SANITIZER ? 2'000 : 20'000;
    std::string path;
    for (int level = 0; level < depth; ++level)
        path += "a/";
    path += "a";
    EXPECT_EQ(walked(shardOf({path})), Texts({path}));
}

TEST(ShardCutter, CutsWhereAShardHasSoManyFiles)
{
    EXPECT_EQ(cut({"b", "a", "c", "e", "d"}, {2, 1000}),
              std::vector<Texts>({{"a", "b"}, {"c", "e"}, {"d"}}));
    EXPECT_EQ(cut({"b", "a"}, {2, 1000}), std::vector<Texts>({{"a", "b"}}));
    EXPECT_EQ(cut({}, {2, 1000}), std::vector<Texts>());
}

TEST(ShardCutter, CutsWhereAShardHasSoManyBytes)
{
    EXPECT_EQ(cut({"aaa", "b", "c", "ddddd", "e"}, {100, 4}),
              std::vector<Texts>({{"aaa", "b"}, {"c", "ddddd"}, {"e"}}));
}

} // namespace tests
} // namespace casetable
