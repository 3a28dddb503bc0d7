#include "window/model/BackgroundJobs.h"

#include <algorithm>
#include <utility>

namespace casetable {

namespace {

// How often it is looked whether one has ended. A job may outlive this, so it has nobody to signal.
const int lookMilliseconds = 15;

} // namespace

BackgroundJobs::BackgroundJobs()
{
    timer_.setInterval(lookMilliseconds);
    connect(&timer_, &QTimer::timeout, this, &BackgroundJobs::look);
}

void BackgroundJobs::run(QObject& receiver, std::function<Effect()> act)
{
    const auto effect = std::make_shared<Effect>();
    auto job = std::make_unique<BackgroundJob>([effect, act = std::move(act)] { *effect = act(); });
    running_.push_back({&receiver, effect, std::move(job)});
    timer_.start();
}

// An effect may begin another job.
void BackgroundJobs::look()
{
    const auto ended =
        std::stable_partition(running_.begin(), running_.end(),
                              [](const Running& each) { return !each.job->hasEnded(); });
    std::vector<Running> done(std::make_move_iterator(ended),
                              std::make_move_iterator(running_.end()));
    running_.erase(ended, running_.end());
    if (running_.empty())
        timer_.stop();
    for (const Running& each : done) {
        if (each.receiver && *each.effect)
            (*each.effect)();
    }
}

} // namespace casetable
