#ifndef WINDOW_MODEL_BACKGROUNDJOB_H
#define WINDOW_MODEL_BACKGROUNDJOB_H

#include <atomic>
#include <functional>
#include <memory>

namespace casetable {

class Thread;

/// A job on a thread of its own that the system may keep waiting, such as one that asks for a
/// folder of another machine. Nobody ever waits for it: one that still runs when it is destroyed is
/// left to itself.
///
/// Used by one thread, that of the window.
class BackgroundJob {
public:
    /// Begins it. `act` must not throw, and owns or shares all that it uses. Throws Failure with
    /// ExitCode::ImportFailed where the system has no thread left.
    explicit BackgroundJob(std::function<void()> act);

    ~BackgroundJob();
    BackgroundJob(const BackgroundJob&) = delete;
    BackgroundJob& operator=(const BackgroundJob&) = delete;

    bool hasEnded() const { return *hasEnded_; }

    /// Whether one that was left to itself still runs. Then the program must end without destroying
    /// what is static.
    static bool isAnyLeft();

private:
    const std::shared_ptr<std::atomic<bool>> hasEnded_;
    std::unique_ptr<Thread> thread_;
};

} // namespace casetable

#endif
