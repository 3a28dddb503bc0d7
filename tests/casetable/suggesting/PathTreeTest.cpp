#include "casetable/suggesting/PathTree.h"

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(LookingAtSome, LooksAtAllOfFew)
{
    for (std::uint64_t number = 0; number < 10000; ++number)
        EXPECT_TRUE(isLookedAt(number, enoughToLookAt - 1)) << number;
}

TEST(LookingAtSome, LooksAtEnoughInWhateverDistanceTheyStand)
{
    for (const std::size_t count : {enoughToLookAt, 2 * enoughToLookAt + 5, 10 * enoughToLookAt}) {
        for (std::uint64_t distance = 1; distance <= 4096; distance += distance < 64 ? 1 : 64) {
            for (const std::uint64_t first : {0, 1, 4}) {
                std::size_t looked = 0;
                for (std::size_t i = 0; i < count; ++i)
                    looked += isLookedAt(first + i * distance, count) ? 1 : 0;
                EXPECT_GT(looked, enoughToLookAt / 3) << count << ' ' << distance << ' ' << first;
                EXPECT_LT(looked, enoughToLookAt * 2) << count << ' ' << distance << ' ' << first;
            }
        }
    }
}

} // namespace tests
} // namespace casetable
