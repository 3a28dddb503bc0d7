#ifndef TESTS_CRAWLER_ALLOCATIONS_H
#define TESTS_CRAWLER_ALLOCATIONS_H

#include <cstddef>

namespace doubles {

/// How often operator new was called in a program that is linked with Allocations.cpp, which
/// replaces it. For programs of one thread.
std::size_t allocations();

} // namespace doubles

#endif
