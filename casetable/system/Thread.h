#ifndef CASETABLE_SYSTEM_THREAD_H
#define CASETABLE_SYSTEM_THREAD_H

#include <functional>
#include <memory>

namespace casetable {

/// A thread with a stack as large as that of the module's own walks, 64 MiB of address space. It
/// does not receive the interrupts.
class Thread {
public:
    /// Starts `act`, which must not throw, on a thread of its own. Returns null where the system
    /// has no thread left.
    static std::unique_ptr<Thread> start(std::function<void()> act);

    /// Waits for the thread to end.
    ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

private:
    struct Impl;
    explicit Thread(std::unique_ptr<Impl> impl);

    const std::unique_ptr<Impl> impl_;
};

/// Runs `act` on such a thread, and calls `meanwhile` on this one about every twentieth of a second
/// until it has ended. Throws what either threw, when `act` has ended, and Failure with
/// ExitCode::ImportFailed where the system has no thread left.
void runOnThread(const std::function<void()>& act, const std::function<void()>& meanwhile);

} // namespace casetable

#endif
