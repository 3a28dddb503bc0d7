#ifndef CASETABLE_IMPORTING_SHARDWORKERS_H
#define CASETABLE_IMPORTING_SHARDWORKERS_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "casetable/listing/Shard.h"

namespace casetable {

class Thread;

/// Works on shards on several threads, of which the caller's is one.
///
/// The caller is the one thread that makes the shards. It works on one itself where the others have
/// enough to do, so never more of them wait than there are threads.
class ShardWorkers {
public:
    /// `work` is called on as many as `jobs` threads at once, fewer where the system has no more or
    /// there is less to do.
    ShardWorkers(std::size_t jobs, std::function<void(const Shard& shard)> work);

    /// Waits for the shards that are being worked on. Others, that wait, are dropped.
    ~ShardWorkers();
    ShardWorkers(const ShardWorkers&) = delete;
    ShardWorkers& operator=(const ShardWorkers&) = delete;

    /// Has the shard worked on, now or later. Throws what `work` threw, also for another shard;
    /// then there is nothing to be done but to destroy this.
    void give(Shard shard);

    /// Waits until all shards have been worked on. Throws as give().
    void finish();

private:
    void workOnAll();

    const std::function<void(const Shard& shard)> work_;
    std::size_t jobs_;
    std::mutex mutex_;                // Guards
    std::condition_variable changed_; // what follows but the threads, and tells of changes.
    std::deque<Shard> waiting_;
    bool isComplete_ = false;
    std::exception_ptr failure_;
    std::vector<std::unique_ptr<Thread>> threads_;
};

} // namespace casetable

#endif
