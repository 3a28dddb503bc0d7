#include "casetable/system/Thread.h"

#include <chrono>
#include <cstddef>
#include <exception>
#include <future>
#include <utility>

#include <pthread.h>

#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"

namespace casetable {

namespace {

// What the module gives the thread of a walk. Only address space is reserved.
const std::size_t stackBytes = std::size_t{64} * 1024 * 1024;

const std::chrono::milliseconds interval(50);

extern "C" void* runThread(void* act)
{
    (*static_cast<std::function<void()>*>(act))();
    return nullptr;
}

} // namespace

struct Thread::Impl {
    std::function<void()> act;
    pthread_t thread = {};
};

std::unique_ptr<Thread> Thread::start(std::function<void()> act)
{
    auto impl = std::make_unique<Impl>();
    impl->act = std::move(act);
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return nullptr;
    const SignalsBlocked signalsBlocked;
    const bool isStarted = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                           pthread_create(&impl->thread, &attributes, runThread, &impl->act) == 0;
    pthread_attr_destroy(&attributes);
    return isStarted ? std::unique_ptr<Thread>(new Thread(std::move(impl))) : nullptr;
}

Thread::Thread(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Thread::~Thread()
{
    pthread_join(impl_->thread, nullptr);
}

void runOnThread(const std::function<void()>& act, const std::function<void()>& meanwhile)
{
    std::promise<void> ended; // With what `act` threw, if it did.
    std::future<void> end = ended.get_future();
    const std::unique_ptr<Thread> thread = Thread::start([&act, &ended] {
        try {
            act();
            ended.set_value();
        } catch (...) {
            ended.set_exception(std::current_exception());
        }
    });
    if (!thread)
        throw Failure(ExitCode::ImportFailed, "the system has no thread left for the walk");
    while (end.wait_for(interval) == std::future_status::timeout)
        meanwhile();
    end.get();
}

} // namespace casetable
