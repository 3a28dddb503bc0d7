#include "window/model/Latest.h"

#include <utility>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "casetable/system/ExitCode.h"
#include "casetable/system/Thread.h"

namespace casetable {

namespace {

// Where there is too much to do for all processors, the window's thread goes first.
const int lowerPriority = 5;

} // namespace

Latest::Latest() : isCancelled_(std::make_shared<std::atomic<bool>>(false))
{
    thread_ = Thread::start([this] { work(); });
    if (!thread_)
        throw Failure(ExitCode::ImportFailed, "the system has no thread left");
}

Latest::~Latest()
{
    cancel();
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isClosed_ = true;
    }
    changed_.notify_all();
}

void Latest::run(Job job)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        *isCancelled_ = true;
        next_ = std::move(job);
    }
    changed_.notify_all();
}

// The threads that a job starts take its priority.
void Latest::work()
{
    static_cast<void>(
        ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), lowerPriority));
    for (;;) {
        Job job;
        std::shared_ptr<std::atomic<bool>> isCancelled;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait(lock, [this] { return isClosed_ || next_; });
            if (isClosed_)
                return;
            job = std::exchange(next_, nullptr);
            isCancelled = isCancelled_ = std::make_shared<std::atomic<bool>>(false);
        }
        job(*isCancelled);
    }
}

} // namespace casetable
