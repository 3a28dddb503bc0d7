#ifndef TESTS_CASETABLE_SUPPORT_THREADPROCESSES_H
#define TESTS_CASETABLE_SUPPORT_THREADPROCESSES_H

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "casetable/distributing/Processes.h"

namespace casetable {
namespace tests {

/// What Processes::abort() ends the threads with that stand for processes.
struct Aborted {
    int status;
};

/// Runs `act` on so many threads at once, each as a process with the others. Returns the status
/// with which one of them aborted all; nothing if none did.
std::optional<int> runAsProcesses(std::size_t count,
                                  const std::function<void(Processes& processes)>& act);

/// A process that is alone.
class LoneProcess : public Processes {
public:
    std::size_t number() const override { return 0; }
    std::size_t count() const override { return 1; }
    std::size_t countHere() const override { return 1; }
    std::string machine() const override { return "here"; }
    void send(std::size_t, const char*, std::size_t, bool) override {}
    std::optional<Arrival> arrival() override { return std::nullopt; }
    void receive(const Arrival&, char*) override {}
    [[noreturn]] void abort(int status) override { throw Aborted{status}; }
};

} // namespace tests
} // namespace casetable

#endif
