#include "mpi/Mpi.h"

#include <array>
#include <cstdlib>

#include <mpi.h>

namespace casetable {

// What the library returns is not looked at: it ends the program where a call fails.

namespace {

template <class Ask> std::size_t answer(const Ask& ask)
{
    int number = 0;
    ask(&number);
    return static_cast<std::size_t>(number);
}

} // namespace

Mpi::Mpi(int& argc, char**& argv)
{
    int provided = 0;
    MPI_Init_thread(&argc, &argv, MPI_THREAD_FUNNELED, &provided);
    number_ = answer([](int* number) { MPI_Comm_rank(MPI_COMM_WORLD, number); });
    count_ = answer([](int* count) { MPI_Comm_size(MPI_COMM_WORLD, count); });
    MPI_Comm here = MPI_COMM_NULL;
    MPI_Comm_split_type(MPI_COMM_WORLD, MPI_COMM_TYPE_SHARED, 0, MPI_INFO_NULL, &here);
    countHere_ = answer([here](int* count) { MPI_Comm_size(here, count); });
    MPI_Comm_free(&here);
}

Mpi::~Mpi()
{
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
    MPI_Send(bytes, static_cast<int>(size), MPI_BYTE, static_cast<int>(to), mark ? 1 : 0,
             MPI_COMM_WORLD);
}

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

void Mpi::abort(int status)
{
    MPI_Abort(MPI_COMM_WORLD, status);
    std::_Exit(status);
}

} // namespace casetable
