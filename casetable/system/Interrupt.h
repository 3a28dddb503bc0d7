#ifndef CASETABLE_SYSTEM_INTERRUPT_H
#define CASETABLE_SYSTEM_INTERRUPT_H

#include <csignal>

namespace casetable {

/// Thrown when the user interrupts the program; it leaves with 128 + `signal`.
struct Interrupted {
    int signal;
};

/// From now on SIGINT, SIGTERM and SIGHUP are only remembered, except those that the caller of the
/// program had it ignore.
void catchInterrupts();

/// From now on a reader that goes away, or a file that may not grow, is a failed write instead of
/// the program's sudden end.
void takeBrokenWritesAsFailures();

/// From now on the signals end the program at once again.
void releaseInterrupts();

/// True when a signal came in.
bool isInterrupted();

/// Throws Interrupted when a signal came in.
void throwIfInterrupted();

/// Keeps the signals away from the threads that are started during its life, so that no system
/// call of theirs is cut short.
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
