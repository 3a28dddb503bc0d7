#ifndef CASETABLE_INTERRUPT_H
#define CASETABLE_INTERRUPT_H

namespace casetable {

/// Thrown when the user interrupts the program; it leaves with 128 + `signal`.
struct Interrupted {
    int signal;
};

/// From now on the first SIGINT, SIGTERM or SIGHUP is only remembered; a second one of the same
/// kind ends the program at once.
void catchInterrupts();

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
};

} // namespace casetable

#endif
