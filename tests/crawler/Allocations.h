#ifndef TESTS_CRAWLER_ALLOCATIONS_H
#define TESTS_CRAWLER_ALLOCATIONS_H

#include <cstddef>

/// A program that is linked with Allocations.cpp has an operator new that counts and that can fail.
/// For programs of one thread. What calls malloc itself, as Qt's containers do, is not seen.
namespace doubles {

/// How often operator new was called.
std::size_t allocations();

/// How many blocks of operator new were not given back yet.
std::size_t liveBlocks();

/// Whether memory comes back after the allocation that failed.
enum class Shortage { Once, Lasting };

/// Fails the `number`-th allocation from now, counted from 1; with Lasting also all that follow,
/// until endShortage(). Spares and does not count what Qt and VTK allocate for themselves: they
/// leak or crash when that fails, and nothing around them can help it.
void failAllocation(std::size_t number, Shortage shortage);

/// No allocation fails any more. Returns whether one did.
bool endShortage();

/// How many allocations of Qt and VTK were spared since failAllocation().
std::size_t sparedAllocations();

} // namespace doubles

#endif
