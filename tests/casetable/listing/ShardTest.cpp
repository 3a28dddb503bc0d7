#include "casetable/listing/Shard.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

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
