#ifndef WINDOW_MODEL_LATEST_H
#define WINDOW_MODEL_LATEST_H

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

namespace casetable {

class Thread;

/// Runs jobs on a thread of its own, of which only the latest counts: a newer one ends the one
/// before.
class Latest {
public:
    /// Must not throw. Should end soon once `isCancelled`; what it found is of no use then.
    using Job = std::function<void(const std::atomic<bool>& isCancelled)>;

    /// Throws Failure with ExitCode::ImportFailed where the system has no thread left.
    Latest();

    /// Cancels the job that runs, and waits for its end.
    ~Latest();
    Latest(const Latest&) = delete;
    Latest& operator=(const Latest&) = delete;

    /// Cancels the job that runs, drops the one that waits, if any, and runs this one then. Returns
    /// at once.
    void run(Job job);

    /// Cancels and drops all.
    void cancel() { run(nullptr); }

private:
    void work();

    std::mutex mutex_; // Guards all below but the thread.
    std::condition_variable changed_;
    Job next_;
    std::shared_ptr<std::atomic<bool>> isCancelled_; // Of the job that runs.
    bool isClosed_ = false;
    std::unique_ptr<Thread> thread_;
};

} // namespace casetable

#endif
