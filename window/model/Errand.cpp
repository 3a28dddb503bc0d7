#include "window/model/Errand.h"

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

std::vector<Left>& leftErrands()
{
    static std::vector<Left> errands;
    return errands;
}

// Takes those off that have ended.
void reapLeft()
{
    std::vector<Left>& errands = leftErrands();
    errands.erase(std::remove_if(errands.begin(), errands.end(),
                                 [](const Left& errand) { return errand.hasEnded->load(); }),
                  errands.end());
}

} // namespace

Errand::Errand(std::function<void()> act) : hasEnded_(std::make_shared<std::atomic<bool>>(false))
{
    reapLeft();
    thread_ = Thread::start([hasEnded = hasEnded_, act = std::move(act)] {
        act();
        *hasEnded = true;
    });
    if (!thread_)
        throw Failure(ExitCode::ImportFailed, "the system has no thread left");
}

Errand::~Errand()
{
    if (!hasEnded())
        leftErrands().push_back({hasEnded_, std::move(thread_)});
}

bool Errand::isAnyLeft()
{
    reapLeft();
    return !leftErrands().empty();
}

} // namespace casetable
