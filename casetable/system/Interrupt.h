#ifndef CASETABLE_SYSTEM_INTERRUPT_H
#define CASETABLE_SYSTEM_INTERRUPT_H

#include <csignal>

namespace casetable {

/// Thrown when a signal interrupts the program, which then exits with 128 + `signal`.
struct Interrupted {
    int signal;

    /// Whether threads were abandoned, as the system kept them waiting. They may go on at any time,
    /// so the program must end without destroying what is static.
    bool leavesThreads = false;
};

/// From now on SIGINT, SIGTERM and SIGHUP, the interrupts, do not end the program but are
/// remembered for isInterrupted(). Those that were ignored when the program was started stay
/// ignored.
void catchInterrupts();

/// From now on a write fails with an error where a reader has gone away or a file may not grow.
/// Otherwise SIGPIPE or SIGXFSZ would end the program without a message.
void takeBrokenWritesAsFailures();

/// From now on the interrupts end the program at once, with 128 + the signal's number, and nothing
/// is destroyed: for when nothing is half-written. Those that are ignored stay so.
void releaseInterrupts();

/// Whether an interrupt has come in since catchInterrupts(). May be asked from any thread.
bool isInterrupted();

/// Throws Interrupted where isInterrupted().
void throwIfInterrupted();

/// The same when threads were abandoned.
void throwIfInterruptedLeavingThreads();

/// While it lives, its thread and those that it starts do not receive the interrupts; the started
/// ones never will, so that no interrupt cuts their system calls short.
class SignalsBlocked {
public:
    SignalsBlocked();
    ~SignalsBlocked();
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t previous_;
};

} // namespace casetable

#endif
