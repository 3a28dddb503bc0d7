#ifndef MPI_MPI_H
#define MPI_MPI_H

#include <cstddef>
#include <list>
#include <optional>
#include <string>

#include "casetable/distributing/Processes.h"

namespace casetable {

/// The processes that a launcher of MPI has started together. Made once, by the main thread, which
/// alone calls the library.
///
/// Short messages are sent without waiting, so that two processes may send them to each other at
/// once. Longer ones wait until the other receives them: nobody may wait in a circle with them.
class Mpi final : public Processes {
public:
    /// Joins the other processes. Ends all with a message where the library allows no threads
    /// beside the one that calls it.
    Mpi(int& argc, char**& argv);

    /// Leaves them, which waits until all leave. What has still come for this process is dropped.
    ~Mpi() override;
    Mpi(const Mpi&) = delete;
    Mpi& operator=(const Mpi&) = delete;

    std::size_t number() const override { return number_; }
    std::size_t count() const override { return count_; }
    std::size_t countHere() const override { return countHere_; }
    std::string machine() const override;
    void send(std::size_t to, const char* bytes, std::size_t size, bool mark) override;
    std::optional<Arrival> arrival() override;
    void receive(const Arrival& arrival, char* bytes) override;
    [[noreturn]] void abort(int status) override;

private:
    struct Sending;

    void forgetSent();
    void drop();

    std::size_t number_ = 0;
    std::size_t count_ = 1;
    std::size_t countHere_ = 1;
    std::list<Sending> sendings_; // That the library may still be at.
};

} // namespace casetable

#endif
