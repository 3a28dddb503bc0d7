#include "window/model/BackgroundJob.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "casetable/system/ExitCode.h"
#include "casetable/system/Thread.h"

namespace casetable {

namespace {

// Those that were left to themselves.
struct Left {
    std::shared_ptr<const std::atomic<bool>> hasEnded;
    std::unique_ptr<Thread> thread;
};

std::vector<Left>& leftJobs()
{
    static std::vector<Left> jobs;
    return jobs;
}

// Takes those off that have ended.
void reapLeft()
{
    std::vector<Left>& jobs = leftJobs();
    jobs.erase(std::remove_if(jobs.begin(), jobs.end(),
                              [](const Left& job) { return job.hasEnded->load(); }),
               jobs.end());
}

} // namespace

BackgroundJob::BackgroundJob(std::function<void()> act)
    : hasEnded_(std::make_shared<std::atomic<bool>>(false))
{
    reapLeft();
    thread_ = Thread::start([hasEnded = hasEnded_, act = std::move(act)] {
        act();
        *hasEnded = true;
    });
    if (!thread_)
        throw Failure(ExitCode::ImportFailed, "the system has no thread left");
}

BackgroundJob::~BackgroundJob()
{
    if (!hasEnded())
        leftJobs().push_back({hasEnded_, std::move(thread_)});
}

bool BackgroundJob::isAnyLeft()
{
    reapLeft();
    return !leftJobs().empty();
}

} // namespace casetable
