#ifndef CASETABLE_SYSTEM_PROCESSORS_H
#define CASETABLE_SYSTEM_PROCESSORS_H

#include <cstddef>
#include <string>

namespace casetable {

/// How many processors this process may keep busy, at least 1: no more than it may run on, nor than
/// its control group, or one above that, gives it time for.
std::size_t availableProcessors();

/// For how many processors at once the control groups of a process have time, rounded up, at least
/// 1; `most` where they do not limit it to fewer, or cannot be read.
///
/// `membership` is the file that names the groups, as /proc/self/cgroup does; `hierarchies` the
/// folder below which they stand, as /sys/fs/cgroup. Of a unified hierarchy "cpu.max" is read in
/// each group, of others that have processors for their matter "cpu.cfs_quota_us" and
/// "cpu.cfs_period_us".
std::size_t processorsOfGroups(const std::string& membership, const std::string& hierarchies,
                               std::size_t most);

} // namespace casetable

#endif
