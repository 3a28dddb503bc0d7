#include "casetable/importing/Cases.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(Cases, AreNoneAtFirst)
{
    const Cases cases;

    EXPECT_TRUE(cases.empty());
    EXPECT_EQ(cases.size(), 0u);
    EXPECT_EQ(cases.begin(), cases.end());
}

TEST(Cases, StandInTheOrderInWhichTheyWereAdded)
{
    Cases cases;

    EXPECT_EQ(cases.add("b", "x", 1), 0u);
    EXPECT_EQ(cases.add("", "y", 2), 1u);
    EXPECT_EQ(cases.add("a", "", 3), 2u);
    EXPECT_EQ(cases.add("", "z", 4), 1u);

    EXPECT_EQ(cases[1].key(), "");
    EXPECT_EQ(cases[1].leastPath(), "y");
    EXPECT_EQ(cases[1].fileCount(), 6u);
    EXPECT_EQ(cases[2].leastPath(), "");
}

TEST(Cases, KeepTheLeastPathWhetherLongerOrShorter)
{
    Cases cases;
    for (const std::string path : {"z", "yyyyyyyy", "x", "www", "vvvv", "vv"}) {
        cases.add("key", path, 1);
        EXPECT_EQ(cases[0].leastPath(), path);
        cases.add("key", path + "a", 1);
        EXPECT_EQ(cases[0].leastPath(), path);
    }
    EXPECT_EQ(cases[0].key(), "key");
}

TEST(Cases, MayBeMoved)
{
    Cases cases;
    cases.add("a", "path", 1);
    Cases moved = std::move(cases);
    cases = Cases();

    EXPECT_EQ(cases.add("a", "other", 1), 0u);
    EXPECT_EQ(moved.add("a", "quite", 1), 0u);
    EXPECT_EQ(moved[0].leastPath(), "path");
    EXPECT_EQ(cases[0].leastPath(), "other");
}

TEST(Cases, AreThoseOfAPlainMap)
{
    struct Plain {
        std::uint32_t index;
        std::string leastPath;
        std::size_t fileCount;
    };
    const unsigned seed = 6;
    std::mt19937 random(seed);
    Cases cases;
    std::map<std::string, Plain> plain;
    for (int i = 0; i < 100'000; ++i) {
        const std::string key(random() % 4, static_cast<char>(random() % 20));
        const std::string longKey = key + std::to_string(random() % 5'000);
        const std::string path = std::to_string(random()) + std::string(random() % 60, 'x');
        const std::size_t count = random() % 5;
        const auto known = plain.emplace(
            longKey, Plain{static_cast<std::uint32_t>(plain.size()), path, std::size_t{0}});
        Plain& expected = known.first->second;
        expected.leastPath = std::min(expected.leastPath, path);
        expected.fileCount += count;

        ASSERT_EQ(cases.add(longKey, path, count), expected.index);
    }
    ASSERT_EQ(cases.size(), plain.size());
    for (const auto& [key, expected] : plain) {
        EXPECT_EQ(cases[expected.index].key(), key);
        EXPECT_EQ(cases[expected.index].leastPath(), expected.leastPath);
        EXPECT_EQ(cases[expected.index].fileCount(), expected.fileCount);
    }
}

TEST(Cases, AreTheSameAddedTogetherOrOneByOne)
{
    std::mt19937 random(7);
    Cases together;
    Cases oneByOne;
    for (const std::size_t size : {0, 1, 31, 32, 33, 500, 20'000}) {
        Cases others;
        for (std::size_t i = 0; i < size; ++i)
            others.add(std::to_string(random() % 30'000), std::to_string(random()), i);

        const std::vector<std::uint32_t> indices = together.addAll(others);

        ASSERT_EQ(indices.size(), others.size());
        for (std::size_t i = 0; i < others.size(); ++i) {
            const Cases::Case& each = others[i];
            ASSERT_EQ(oneByOne.add(each.key(), each.leastPath(), each.fileCount()), indices[i]);
        }
    }
    ASSERT_EQ(together.size(), oneByOne.size());
    for (std::size_t i = 0; i < together.size(); ++i) {
        EXPECT_EQ(together[i].key(), oneByOne[i].key());
        EXPECT_EQ(together[i].leastPath(), oneByOne[i].leastPath());
        EXPECT_EQ(together[i].fileCount(), oneByOne[i].fileCount());
    }
}

} // namespace tests
} // namespace casetable
