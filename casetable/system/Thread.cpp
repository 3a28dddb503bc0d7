#include "casetable/system/Thread.h"

#include <cstddef>
#include <utility>

#include <pthread.h>

#include "casetable/system/Interrupt.h"

namespace casetable {

namespace {

// What the module gives the thread of a walk. Only address space is reserved.
const std::size_t stackBytes = std::size_t{64} * 1024 * 1024;

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

} // namespace casetable
