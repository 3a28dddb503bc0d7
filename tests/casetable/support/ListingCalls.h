#ifndef TESTS_CASETABLE_SUPPORT_LISTINGCALLS_H
#define TESTS_CASETABLE_SUPPORT_LISTINGCALLS_H

#include <atomic>
#include <cstddef>
#include <functional>

namespace casetable {
namespace tests {

/// Whether the system's listings of folders, in this process, hide the kinds of entries, as those
/// of some file systems do.
extern std::atomic<bool> kindsAreHidden;

/// Up to how many microseconds they take longer, each another random time.
extern std::atomic<unsigned> longestDelay;

/// Called before each, if it is set; only while one thread reads listings.
extern std::function<void()> beforeListing;

/// How many threads have read listings since the last call.
std::size_t threadsThatListed();

} // namespace tests
} // namespace casetable

#endif
