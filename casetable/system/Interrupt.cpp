#include "casetable/system/Interrupt.h"

#include <atomic>
#include <initializer_list>

#include <unistd.h>

namespace casetable {

namespace {

// Threads ask for it while a handler sets it.
std::atomic<int> caughtSignal(0);
static_assert(std::atomic<int>::is_always_lock_free,
              "a signal handler may only set what never locks");

extern "C" void rememberSignal(int signal)
{
    caughtSignal = signal;
}

extern "C" void endProgram(int signal)
{
    ::_exit(128 + signal);
}

void handleSignals(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present = {};
        sigaction(signal, nullptr, &present);
        // What was ignored when the program was started, as by nohup, stays ignored.
        if (present.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

} // namespace

void catchInterrupts()
{
    handleSignals(rememberSignal);
}

void takeBrokenWritesAsFailures()
{
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

void releaseInterrupts()
{
    handleSignals(endProgram);
}

bool isInterrupted()
{
    return caughtSignal != 0;
}

void throwIfInterrupted()
{
    if (isInterrupted())
        throw Interrupted{caughtSignal};
}

void throwIfInterruptedLeavingThreads()
{
    if (isInterrupted())
        throw Interrupted{caughtSignal, true};
}

SignalsBlocked::SignalsBlocked() : previous_()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, &previous_);
}

SignalsBlocked::~SignalsBlocked()
{
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

} // namespace casetable
