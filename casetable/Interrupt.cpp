#include "casetable/Interrupt.h"

#include <csignal>
#include <initializer_list>

namespace casetable {

namespace {

volatile std::sig_atomic_t caughtSignal = 0;

extern "C" void rememberSignal(int signal)
{
    caughtSignal = signal;
}

sigset_t caughtSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, signal);
    return signals;
}

} // namespace

void catchInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = rememberSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present = {};
        sigaction(signal, nullptr, &present);
        // What the caller ignores, as nohup does, stays ignored.
        if (present.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

void throwIfInterrupted()
{
    if (caughtSignal != 0)
        throw Interrupted{caughtSignal};
}

SignalsBlocked::SignalsBlocked()
{
    const sigset_t signals = caughtSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

SignalsBlocked::~SignalsBlocked()
{
    const sigset_t signals = caughtSignals();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

} // namespace casetable
