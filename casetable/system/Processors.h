#ifndef CASETABLE_SYSTEM_PROCESSORS_H
#define CASETABLE_SYSTEM_PROCESSORS_H

#include <cstddef>

namespace casetable {

/// How many processors this process may keep busy, at least 1: no more than it may run on, nor than
/// its control group, or one above that, gives it time for.
std::size_t availableProcessors();

/// Lets this thread, and those that it starts, run on all processors that the system grants it,
/// also where whoever started the program had bound it to fewer.
void useAllProcessors();

} // namespace casetable

#endif
