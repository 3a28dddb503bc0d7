#include "casetable/system/Processors.h"

#include <algorithm>
#include <fstream>
#include <string>

#include <sched.h>

namespace casetable {

namespace {

const std::string groupsFolder = "/sys/fs/cgroup";

std::size_t processorsToRunOn()
{
    cpu_set_t processors;
    CPU_ZERO(&processors);
    if (::sched_getaffinity(0, sizeof processors, &processors) != 0)
        return 1;
    return std::max(CPU_COUNT(&processors), 1);
}

// The path of the process's control group, as the unified hierarchy has it; empty where there is
// none.
std::string controlGroup()
{
    std::ifstream groups("/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        if (line.compare(0, 3, "0::") == 0)
            return line.substr(3);
    }
    return "";
}

// For how many processors at once the group has time, at most `most`.
std::size_t processorsOf(const std::string& group, std::size_t most)
{
    std::ifstream limit(groupsFolder + group + "/cpu.max");
    std::size_t time = 0; // In microseconds of each period; "max" where there is no limit.
    std::size_t period = 0;
    if (!(limit >> time >> period) || period == 0)
        return most;
    return std::clamp<std::size_t>((time + period - 1) / period, 1, most);
}

} // namespace

std::size_t availableProcessors()
{
    std::size_t count = processorsToRunOn();
    for (std::string group = controlGroup(); !group.empty(); group.resize(group.find_last_of('/')))
        count = processorsOf(group == "/" ? "" : group, count);
    return count;
}

void useAllProcessors()
{
    cpu_set_t processors;
    std::fill_n(reinterpret_cast<unsigned char*>(&processors), sizeof processors,
                static_cast<unsigned char>(0xff));
    // The system leaves out those that there are not. Where it refuses, the binding stays.
    static_cast<void>(::sched_setaffinity(0, sizeof processors, &processors));
}

} // namespace casetable
