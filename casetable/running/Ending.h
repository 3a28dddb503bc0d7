#ifndef CASETABLE_RUNNING_ENDING_H
#define CASETABLE_RUNNING_ENDING_H

#include <functional>

#include "casetable/system/ExitCode.h"

namespace casetable {

class Console;

/// How a program ends.
struct Ending {
    int status; ///< For the system.
    /// Whether threads were abandoned, so that nothing static may be destroyed.
    bool leavesThreads = false;
};

/// Calls `act`, tells on `console` of what it throws, and returns the ending that this means.
Ending endingOf(const std::function<ExitCode()>& act, Console& console);

} // namespace casetable

#endif
