#ifndef TESTS_MPI_SUPPORT_MPIRUN_H
#define TESTS_MPI_SUPPORT_MPIRUN_H

#include <cstddef>
#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/casetable/support/Program.h"

namespace casetable {
namespace tests {

/// The setting in which a Program is so many processes of casetable-mpi, under their launcher.
/// `preload` is a library to load in front of each; none where it is empty.
Setting asProcesses(std::size_t count, Setting setting, const std::string& preload = "");

/// Runs so many processes in `tree`, with pipes.
Outcome runMpi(const TemporaryTree& tree, std::size_t count, const Arguments& arguments);

/// The processes of casetable-mpi that work in `tree`, by their numbers; fewer than `count` where
/// so many do not turn up, all at work, in a generous time.
std::vector<pid_t> processesAtWork(const TemporaryTree& tree, std::size_t count);

/// Waits until none works there any more; false where that takes too long.
bool waitUntilNoneIsLeft(const TemporaryTree& tree);

/// The first line of errors that is casetable's, without its end: launchers have words of their own
/// before and behind it.
std::string ownLine(const std::string& errors);

/// What this machine is called.
std::string machine();

} // namespace tests
} // namespace casetable

#endif
