#include "tests/casetable/support/ListingCalls.h"

#include <mutex>
#include <random>
#include <set>
#include <thread>

#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace casetable {
namespace tests {

std::atomic<bool> kindsAreHidden{false};
std::atomic<unsigned> longestDelay{0};
std::function<void()> beforeListing;

namespace {

std::mutex mutex;
std::mt19937 random;
std::set<std::thread::id> threads;

unsigned delayOfNext()
{
    const std::lock_guard<std::mutex> lock(mutex);
    threads.insert(std::this_thread::get_id());
    return static_cast<unsigned>(random() % (longestDelay + 1));
}

} // namespace

std::size_t threadsThatListed()
{
    const std::lock_guard<std::mutex> lock(mutex);
    const std::size_t count = threads.size();
    threads.clear();
    return count;
}

} // namespace tests
} // namespace casetable

// Stands in front of the system's.
extern "C" ssize_t getdents64(int folder, void* buffer, size_t length) noexcept
{
    using namespace casetable::tests;
    if (beforeListing)
        beforeListing();
    const unsigned delay = delayOfNext();
    if (delay > 0)
        usleep(delay);
    const ssize_t size = syscall(SYS_getdents64, folder, buffer, length);
    for (ssize_t offset = 0; kindsAreHidden && offset < size;) {
        auto* const entry = reinterpret_cast<dirent64*>(static_cast<char*>(buffer) + offset);
        entry->d_type = DT_UNKNOWN;
        offset += entry->d_reclen;
    }
    return size;
}
