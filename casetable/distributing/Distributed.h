#ifndef CASETABLE_DISTRIBUTING_DISTRIBUTED_H
#define CASETABLE_DISTRIBUTING_DISTRIBUTED_H

#include <functional>
#include <optional>

#include "casetable/distributing/Mail.h"
#include "casetable/options/Options.h"

namespace casetable {

class Console;
class Processes;

/// Makes one run of all processes, each of which calls this. `parse` reads the options, which are
/// the same for all. The first process writes the output and all messages, on `console`; others
/// write nothing. Returns the exit code of this process, which is 0 for all but the first.
///
/// A process that fails ends all, by Processes::abort(): then this does not return. `mostBytes` is
/// the most that is sent at once.
int runDistributed(const std::function<std::optional<Options>()>& parse, Processes& processes,
                   Console& console, std::size_t mostBytes = Mail::mostBytes);

} // namespace casetable

#endif
