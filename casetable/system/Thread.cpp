#include "casetable/system/Thread.h"

#include <chrono>
#include <cstddef>
#include <exception>
#include <future>
#include <utility>

#include <QThread>
#include <QtGlobal>

#include "casetable/system/ExitCode.h"
#include "casetable/system/Interrupt.h"

namespace casetable {

namespace {

// What the module gives the thread of a walk. Only address space is reserved.
const unsigned stackBytes = 64U * 1024U * 1024U;

const std::chrono::milliseconds interval(50);

} // namespace

// A thread of Qt's, as what it knows of threads that others started outlives them at times.
struct Thread::Impl : public QThread {
    void run() override
    {
        act();
        ended.set_value();
    }

    std::function<void()> act;

    // What wait() tells, in a way that thread checkers see too: they know nothing of Qt's waiting.
    std::promise<void> ended;
};

std::unique_ptr<Thread> Thread::start(std::function<void()> act)
{
    auto impl = std::make_unique<Impl>();
    impl->act = std::move(act);
    impl->setStackSize(stackBytes);
    const SignalsBlocked signalsBlocked;
    // Without this, Qt would print a line of its own where the thread does not start.
    const QtMessageHandler own =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    impl->start();
    qInstallMessageHandler(own);
    const bool isStarted = impl->isRunning() || impl->isFinished();
    return isStarted ? std::unique_ptr<Thread>(new Thread(std::move(impl))) : nullptr;
}

Thread::Thread(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Thread::~Thread()
{
    impl_->ended.get_future().wait();
    impl_->wait();
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
