#include "casetable/importing/ShardWorkers.h"

#include <utility>

#include "casetable/system/Thread.h"

namespace casetable {

ShardWorkers::ShardWorkers(std::size_t jobs, std::function<void(const Shard& shard)> work)
    : work_(std::move(work)), jobs_(jobs)
{
}

ShardWorkers::~ShardWorkers()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        waiting_.clear();
        isComplete_ = true;
    }
    changed_.notify_all();
    threads_.clear();
}

void ShardWorkers::give(Shard shard)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (failure_)
            std::rethrow_exception(failure_);
        if (waiting_.size() >= threads_.size() && threads_.size() + 1 < jobs_) {
            std::unique_ptr<Thread> thread = Thread::start([this] { workOnAll(); });
            if (thread)
                threads_.push_back(std::move(thread));
            else
                jobs_ = threads_.size() + 1;
        }
        // One for each of the others and one more, so that none runs out of them while the caller
        // works on its own and then makes the next.
        if (!threads_.empty() && waiting_.size() <= threads_.size()) {
            waiting_.push_back(std::move(shard));
            changed_.notify_one();
            return;
        }
    }
    work_(shard);
}

void ShardWorkers::finish()
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isComplete_ = true;
    }
    changed_.notify_all();
    workOnAll();
    threads_.clear();
    if (failure_)
        std::rethrow_exception(failure_);
}

void ShardWorkers::workOnAll()
{
    for (;;) {
        Shard shard;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait(lock, [this] { return isComplete_ || failure_ || !waiting_.empty(); });
            if (failure_ || waiting_.empty())
                return;
            shard = std::move(waiting_.front());
            waiting_.pop_front();
        }
        try {
            work_(shard);
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mutex_);
            failure_ = std::current_exception();
            changed_.notify_all();
        }
    }
}

} // namespace casetable
