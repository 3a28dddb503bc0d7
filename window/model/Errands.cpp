#include "window/model/Errands.h"

#include <algorithm>
#include <utility>

namespace casetable {

namespace {

// How often it is looked whether one has ended. One that was left could not tell, as whom it would
// tell may be gone.
const int lookMilliseconds = 15;

} // namespace

Errands::Errands()
{
    timer_.setInterval(lookMilliseconds);
    connect(&timer_, &QTimer::timeout, this, &Errands::look);
}

void Errands::run(QObject& receiver, std::function<Effect()> act)
{
    const auto effect = std::make_shared<Effect>();
    auto errand = std::make_unique<Errand>([effect, act = std::move(act)] { *effect = act(); });
    running_.push_back({&receiver, effect, std::move(errand)});
    timer_.start();
}

// An effect may begin another errand.
void Errands::look()
{
    const auto ended =
        std::stable_partition(running_.begin(), running_.end(),
                              [](const Running& each) { return !each.errand->hasEnded(); });
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
