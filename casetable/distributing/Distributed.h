#ifndef CASETABLE_DISTRIBUTING_DISTRIBUTED_H
#define CASETABLE_DISTRIBUTING_DISTRIBUTED_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>

#include "casetable/distributing/Mail.h"
#include "casetable/options/Options.h"

namespace casetable {

class Console;
class Processes;

/// How often and how much a run of several processes tells, or sends.
struct DistributedLimits {
    std::size_t mostBytes = Mail::mostBytes; ///< That are sent at once.
    /// After how long it is told again how far the run has come, where there is no terminal.
    std::chrono::milliseconds progressInterval = std::chrono::minutes(1);
};

/// Makes one run of all processes, each of which calls this. `parse` reads the options, which are
/// the same for all. The first process writes the output and all messages, on `console`; others
/// write nothing. Returns the exit code of this process, which is 0 for all but the first.
///
/// A process that fails ends all, by Processes::abort(): then this does not return.
int runDistributed(const std::function<std::optional<Options>()>& parse, Processes& processes,
                   Console& console, const DistributedLimits& limits = {});

} // namespace casetable

#endif
