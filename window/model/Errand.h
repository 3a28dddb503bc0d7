#ifndef WINDOW_MODEL_ERRAND_H
#define WINDOW_MODEL_ERRAND_H

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
class Errand {
public:
    /// Begins it. `act` must not throw, and owns or shares all that it uses. Throws Failure with
    /// ExitCode::ImportFailed where the system has no thread left.
    explicit Errand(std::function<void()> act);

    ~Errand();
    Errand(const Errand&) = delete;
    Errand& operator=(const Errand&) = delete;

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
