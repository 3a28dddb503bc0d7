#include "casetable/importing/ShardWorkers.h"

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

Shard shardOf(int file)
{
    Shard shard;
    shard.append(std::to_string(file));
    return shard;
}

} // namespace

class ShardWorkersOfSeveralThreads : public testing::TestWithParam<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Jobs, ShardWorkersOfSeveralThreads, testing::Values(1, 2, 8));

TEST_P(ShardWorkersOfSeveralThreads, WorkOnEachShardOnce)
{
    std::mutex mutex;
    std::multiset<std::string> met;
    std::multiset<std::string> given;
    ShardWorkers workers(GetParam(), [&](const Shard& shard) {
        const std::lock_guard<std::mutex> lock(mutex);
        met.emplace(shard.paths().front());
    });
    for (int file = 0; file < 500; ++file) {
        workers.give(shardOf(file));
        given.insert(std::to_string(file));
    }
    workers.finish();

    EXPECT_EQ(met, given);
}

TEST_P(ShardWorkersOfSeveralThreads, HandOnAFailure)
{
    ShardWorkers workers(GetParam(), [](const Shard& shard) {
        if (shard.paths().front() == "50")
            throw std::runtime_error("no 50");
    });
    const auto workOnAll = [&workers] {
        for (int file = 0; file < 100; ++file)
            workers.give(shardOf(file));
        workers.finish();
    };

    EXPECT_THROW(workOnAll(), std::runtime_error);
}

TEST_P(ShardWorkersOfSeveralThreads, MayBeDestroyedBeforeAllIsDone)
{
    std::atomic<int> running{0};
    {
        ShardWorkers workers(GetParam(), [&running](const Shard&) {
            ++running;
            std::this_thread::yield();
            --running;
        });
        for (int file = 0; file < 20; ++file)
            workers.give(shardOf(file));
    }
    EXPECT_EQ(running, 0);
}

TEST(ShardWorkers, WorkOnOneThreadWhereThatIsAskedFor)
{
    std::set<std::thread::id> threads;
    ShardWorkers workers(1,
                         [&threads](const Shard&) { threads.insert(std::this_thread::get_id()); });
    for (int file = 0; file < 20; ++file)
        workers.give(shardOf(file));
    workers.finish();

    EXPECT_EQ(threads, std::set<std::thread::id>({std::this_thread::get_id()}));
}

} // namespace tests
} // namespace casetable
