#include "tests/mpi/support/MpiRun.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <system_error>
#include <thread>
#include <utility>

#include <unistd.h>

#include "tests/casetable/support/TemporaryTree.h"

namespace casetable {
namespace tests {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

const std::chrono::seconds patience(60);

std::string contentOf(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The number that the launcher has given a process; empty where it is none of its processes.
std::string numberOf(const fs::path& process)
{
    const std::string name = std::string("\0OMPI_COMM_WORLD_RANK=", 22);
    const std::string environment = contentOf(process / "environ");
    const std::size_t begin = environment.find(name);
    return begin == std::string::npos ? "" : std::string(environment.c_str() + begin + name.size());
}

// Whether it has started the thread that lists.
bool isAtWork(const fs::path& process)
{
    std::error_code failure;
    for (const auto& thread : fs::directory_iterator(process / "task", failure)) {
        if (contentOf(thread.path() / "comm") == "QThread\n")
            return true;
    }
    return false;
}

// The processes in the folder, by number.
std::map<std::size_t, pid_t> processesIn(const TemporaryTree& tree, bool onlyAtWork)
{
    std::map<std::size_t, pid_t> found;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::error_code failure;
        const fs::path folder = fs::read_symlink(entry.path() / "cwd", failure);
        if (failure || folder != tree.path() ||
            contentOf(entry.path() / "comm") != "casetable-mpi\n")
            continue;
        const std::string number = numberOf(entry.path());
        if (!number.empty() && (!onlyAtWork || isAtWork(entry.path())))
            found[std::stoul(number)] = static_cast<pid_t>(std::stol(entry.path().filename()));
    }
    return found;
}

} // namespace

Setting asProcesses(std::size_t count, Setting setting, const std::string& preload)
{
    // What a Program starts with its arguments is casetable, of which only these are wanted.
    const std::string script = std::string("shift; exec '") + CASETABLE_MPI_LAUNCHER +
                               "' --oversubscribe --bind-to none " +
                               (preload.empty() ? "" : "-x LD_PRELOAD='" + preload + "' ") + "-n " +
                               std::to_string(count) + " '" + CASETABLE_MPI_PROGRAM + "' \"$@\"";
    setting.program = {"env",
                       "OMPI_ALLOW_RUN_AS_ROOT=1",
                       "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1",
                       "OMPI_MCA_pml=ob1", // Looking for networks takes long.
                       "OMPI_MCA_btl_vader_single_copy_mechanism=none",
                       "sh",
                       "-c",
                       script,
                       "sh"};
    return setting;
}

Outcome runMpi(const TemporaryTree& tree, std::size_t count, const Arguments& arguments)
{
    return run(arguments, asProcesses(count, in(tree)));
}

std::vector<pid_t> processesAtWork(const TemporaryTree& tree, std::size_t count)
{
    std::map<std::size_t, pid_t> found;
    for (const auto deadline = Clock::now() + patience;
         found.size() < count && Clock::now() < deadline;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        found = processesIn(tree, true);
    }
    std::vector<pid_t> processes;
    for (const auto& entry : found)
        processes.push_back(entry.second);
    return processes;
}

bool waitUntilNoneIsLeft(const TemporaryTree& tree)
{
    for (const auto deadline = Clock::now() + patience; Clock::now() < deadline;) {
        if (processesIn(tree, false).empty())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

std::string ownLine(const std::string& errors)
{
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 10, "casetable:") == 0)
            return line;
    }
    return "";
}

std::string machine()
{
    std::array<char, 256> name = {};
    ::gethostname(name.data(), name.size() - 1);
    return name.data();
}

} // namespace tests
} // namespace casetable
