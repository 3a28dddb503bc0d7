#include "mpi/Mpi.h"

#include <array>
#include <cstdlib>

#include <mpi.h>

#include "casetable/system/Console.h"
#include "casetable/system/ExitCode.h"

namespace casetable {

// What the library returns is not looked at: it ends the program where a call fails.

namespace {

template <class Ask> std::size_t answer(const Ask& ask)
{
    int number = 0;
    ask(&number);
    return static_cast<std::size_t>(number);
}

// What is no longer than this is copied, and sent while this process goes on.
const std::size_t shortBytes = std::size_t{64} * 1024;

// Ends all with a message of the first process, for which the others wait.
[[noreturn]] void refuseThreads(bool isFirst)
{
    const int status = static_cast<int>(ExitCode::ImportFailed);
    if (isFirst) {
        Console().error("the MPI library allows no threads (MPI_THREAD_FUNNELED)");
        MPI_Abort(MPI_COMM_WORLD, status);
    }
    MPI_Barrier(MPI_COMM_WORLD);
    std::_Exit(status);
}

} // namespace

struct Mpi::Sending {
    std::string bytes;
    MPI_Request request = MPI_REQUEST_NULL;
};

Mpi::Mpi(int& argc, char**& argv)
{
    int provided = 0;
    MPI_Init_thread(&argc, &argv, MPI_THREAD_FUNNELED, &provided);
    number_ = answer([](int* number) { MPI_Comm_rank(MPI_COMM_WORLD, number); });
    count_ = answer([](int* count) { MPI_Comm_size(MPI_COMM_WORLD, count); });
    if (provided < MPI_THREAD_FUNNELED)
        refuseThreads(number_ == 0);
    MPI_Comm here = MPI_COMM_NULL;
    MPI_Comm_split_type(MPI_COMM_WORLD, MPI_COMM_TYPE_SHARED, 0, MPI_INFO_NULL, &here);
    countHere_ = answer([here](int* count) { MPI_Comm_size(here, count); });
    MPI_Comm_free(&here);
}

// Behind the barrier all have sent all that they send, and a library need not bear that something
// of it was never received.
Mpi::~Mpi()
{
    while (!sendings_.empty())
        drop();
    MPI_Request all = MPI_REQUEST_NULL;
    MPI_Ibarrier(MPI_COMM_WORLD, &all);
    for (int isPassed = 0; isPassed == 0; MPI_Test(&all, &isPassed, MPI_STATUS_IGNORE))
        drop();
    drop();
    MPI_Finalize();
}

std::string Mpi::machine() const
{
    std::array<char, MPI_MAX_PROCESSOR_NAME> name = {};
    const std::size_t length =
        answer([&name](int* size) { MPI_Get_processor_name(name.data(), size); });
    return {name.data(), length};
}

void Mpi::send(std::size_t to, const char* bytes, std::size_t size, bool mark)
{
    const auto count = static_cast<int>(size);
    const auto receiver = static_cast<int>(to);
    const int tag = mark ? 1 : 0;
    if (size > shortBytes) {
        MPI_Send(bytes, count, MPI_BYTE, receiver, tag, MPI_COMM_WORLD);
        return;
    }
    forgetSent();
    Sending& sending = sendings_.emplace_back();
    sending.bytes.assign(bytes, size);
    MPI_Isend(sending.bytes.data(), count, MPI_BYTE, receiver, tag, MPI_COMM_WORLD,
              &sending.request);
    // forgetSent() tests the request until it is done.
} // NOLINT(clang-analyzer-optin.mpi.MPI-Checker)

std::optional<Processes::Arrival> Mpi::arrival()
{
    int isThere = 0;
    MPI_Status status = {};
    MPI_Iprobe(MPI_ANY_SOURCE, MPI_ANY_TAG, MPI_COMM_WORLD, &isThere, &status);
    if (isThere == 0)
        return std::nullopt;
    const std::size_t size =
        answer([&status](int* count) { MPI_Get_count(&status, MPI_BYTE, count); });
    return Arrival{static_cast<std::size_t>(status.MPI_SOURCE), size, status.MPI_TAG != 0};
}

void Mpi::receive(const Arrival& arrival, char* bytes)
{
    MPI_Recv(bytes, static_cast<int>(arrival.size), MPI_BYTE, static_cast<int>(arrival.from),
             arrival.mark ? 1 : 0, MPI_COMM_WORLD, MPI_STATUS_IGNORE);
}

// Lets go of the messages at the front that were sent.
void Mpi::forgetSent()
{
    for (int isSent = 1; isSent != 0 && !sendings_.empty();) {
        MPI_Test(&sendings_.front().request, &isSent, MPI_STATUS_IGNORE);
        if (isSent != 0)
            sendings_.pop_front();
    }
}

// Receives what has come, for nobody.
void Mpi::drop()
{
    forgetSent();
    std::string bytes;
    while (const auto next = arrival()) {
        bytes.resize(next->size);
        receive(*next, bytes.data());
    }
}

void Mpi::abort(int status)
{
    MPI_Abort(MPI_COMM_WORLD, status);
    std::_Exit(status);
}

} // namespace casetable
