#include "casetable/system/Processors.h"

#include <algorithm>
#include <fstream>
#include <thread>

#include <sched.h>

namespace casetable {

namespace {

std::size_t processorsToRunOn()
{
    cpu_set_t processors;
    CPU_ZERO(&processors);
    // The system refuses where it has more of them than the set has room for.
    if (::sched_getaffinity(0, sizeof processors, &processors) != 0)
        return std::max(std::thread::hardware_concurrency(), 1U);
    return std::max(CPU_COUNT(&processors), 1);
}

// A number that a file begins with; 0 where it begins with none, as with a word for no limit, or
// with one below 0.
std::size_t numberIn(std::istream& file)
{
    long long number = 0;
    return file >> number && number > 0 ? static_cast<std::size_t>(number) : 0;
}

// For how many processors there is time in a group whose folder is given.
std::size_t processorsOfGroup(const std::string& folder, std::size_t most)
{
    // In microseconds of each period.
    std::ifstream unified(folder + "/cpu.max");
    std::ifstream quota(folder + "/cpu.cfs_quota_us");
    std::ifstream quotaPeriod(folder + "/cpu.cfs_period_us");
    const std::size_t time = unified ? numberIn(unified) : numberIn(quota);
    const std::size_t period = unified ? numberIn(unified) : numberIn(quotaPeriod);
    if (time == 0 || period == 0)
        return most;
    return std::clamp<std::size_t>((time - 1) / period + 1, 1, most);
}

bool hasWord(const std::string& words, const std::string& word)
{
    return (',' + words + ',').find(',' + word + ',') != std::string::npos;
}

} // namespace

std::size_t availableProcessors()
{
    return processorsOfGroups("/proc/self/cgroup", "/sys/fs/cgroup", processorsToRunOn());
}

std::size_t processorsOfGroups(const std::string& membership, const std::string& hierarchies,
                               std::size_t most)
{
    std::ifstream groups(membership);
    // Such as "0::/one/two" of the unified hierarchy, and "4:cpu,cpuacct:/one/two" of others.
    for (std::string line; std::getline(groups, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(':', first + 1);
        if (first == std::string::npos || second == std::string::npos)
            continue;
        const std::string matters = line.substr(first + 1, second - first - 1);
        if (!matters.empty() && !hasWord(matters, "cpu"))
            continue;
        const std::string hierarchy = hierarchies + (matters.empty() ? "" : "/" + matters);
        std::string group = line.substr(second + 1);
        if (group == "/")
            group.clear();
        // In a container, what is mounted may begin at the group itself, so that its path is not
        // there: then the limit stands at the root.
        for (;; group.resize(group.find_last_of('/'))) {
            most = processorsOfGroup(hierarchy + group, most);
            if (group.empty())
                break;
        }
    }
    return most;
}

} // namespace casetable
