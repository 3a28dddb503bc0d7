#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "casetable/distributing/Distributed.h"
#include "casetable/options/Options.h"
#include "casetable/system/Console.h"
#include "casetable/system/Interrupt.h"
#include "casetable/system/Processors.h"
#include "mpi/Mpi.h"

namespace casetable {

namespace {

// Only the first process answers --help and --version.
void silenceOutput()
{
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0)
        ::dup2(nowhere, STDOUT_FILENO);
}

// CASETABLE_MPI_BYTES in the environment is for tests alone: the most bytes that one call of MPI
// sends, so that small messages are cut as large ones are. Users are not told of it. What is no
// number, 0 or above the limit changes nothing.
std::size_t mostBytesAtOnce()
{
    const char* const text = std::getenv("CASETABLE_MPI_BYTES");
    const unsigned long long bytes = text == nullptr ? 0 : std::strtoull(text, nullptr, 10);
    return bytes > 0 && bytes < Mail::mostBytes ? bytes : Mail::mostBytes;
}

} // namespace

} // namespace casetable

int main(int argc, char** argv)
{
    using namespace casetable;

    takeBrokenWritesAsFailures();
    Mpi processes(argc, argv);
    useAllProcessors(); // Behind the library, which may bind this process itself.
    if (processes.number() != 0)
        silenceOutput();
    Console console;
    DistributedLimits limits;
    limits.mostBytes = mostBytesAtOnce();
    return runDistributed([&] { return parseOptions(argc, argv, Program::CasetableMpi); },
                          processes, console, limits);
}
