#ifndef TESTS_CRAWLER_ALLOCATIONFAULTS_H
#define TESTS_CRAWLER_ALLOCATIONFAULTS_H

#include <cstddef>
#include <new>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "tests/crawler/Allocations.h"

namespace doubles {

/// What all failEverywhere() of the program tried, each point counted once.
struct AllocationPoints {
    std::size_t failed = 0;
    /// Those of `failed` at which the operation did without the memory.
    std::size_t survived = 0;
    /// Allocations of Qt and VTK, which are not failed.
    std::size_t spared = 0;
};

inline AllocationPoints& allocationPoints()
{
    static AllocationPoints points;
    return points;
}

/// Makes an object anew for every allocation of `act` on it and fails that allocation, once alone
/// and once with all that follow. Whatever fails, std::bad_alloc alone comes out, `holds` checks
/// what was promised then, `act` afterwards gives what it gives on a fresh object, as `look` shows
/// it, and nothing leaks. Where the memory was not needed after all, the result must be whole.
template <class Make, class Act, class Look, class Holds>
void failEverywhere(const std::string& operation, const Make& make, const Act& act,
                    const Look& look, const Holds& holds)
{
    SCOPED_TRACE(operation);
    std::string expected;
    for (int warmUp = 0; warmUp < 2; ++warmUp) {
        const auto object = make();
        const auto result = act(*object);
        expected = look(*object, result);
    }
    AllocationPoints& points = allocationPoints();
    for (const Shortage shortage : {Shortage::Once, Shortage::Lasting}) {
        bool failed = true;
        for (std::size_t number = 1; failed; ++number) {
            const std::size_t before = liveBlocks();
            bool thrown = false;
            bool otherThrown = false;
            bool equal = false;
            std::size_t spared = 0;
            {
                const auto object = make();
                std::optional<decltype(act(*object))> result;
                failAllocation(number, shortage);
                try {
                    result.emplace(act(*object));
                } catch (const std::bad_alloc&) {
                    thrown = true;
                } catch (...) {
                    otherThrown = true;
                }
                failed = endShortage();
                spared = sparedAllocations();
                if (thrown)
                    holds(*object);
                if (!result)
                    result.emplace(act(*object));
                const std::string given = look(*object, *result);
                equal = given == expected;
                EXPECT_EQ(expected, given)
                    << "allocation " << number << (thrown ? ", thrown" : ", survived")
                    << (shortage == Shortage::Once ? ", once" : ", lasting");
            }
            EXPECT_FALSE(otherThrown) << "allocation " << number;
            // A failed expectation keeps memory for its message.
            if (equal && !otherThrown) {
                EXPECT_EQ(before, liveBlocks()) << "allocation " << number << " leaks";
            }
            if (shortage == Shortage::Lasting)
                continue;
            points.failed += failed ? 1 : 0;
            points.survived += failed && !thrown ? 1 : 0;
            points.spared += failed ? 0 : spared;
        }
    }
    ::testing::Test::RecordProperty("AllocationPoints", std::to_string(points.failed));
}

template <class Make, class Act, class Look>
void failEverywhere(const std::string& operation, const Make& make, const Act& act,
                    const Look& look)
{
    failEverywhere(operation, make, act, look, [](auto&) {});
}

} // namespace doubles

#endif
