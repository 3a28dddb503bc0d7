#include "casetable/listing/FilePath.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(FilePath, HasNoFaultWhereItCanNameAFileBelowARoot)
{
    for (const std::string path : {"a", "a/b", "./a", "././a", "a/./b", "...", ".a", "a.", "..a/b",
                                   "a../b", "a/...", "a\\", "-", " ", "a\n", "\xff/\x80"})
        EXPECT_EQ(pathFault(path), PathFault::None) << path;
}

TEST(FilePath, HasTheFaultThatKeepsItFromNamingAFile)
{
    const std::vector<std::pair<std::string, PathFault>> rows = {
        {"", PathFault::Empty},
        {"/", PathFault::Absolute},
        {"/a", PathFault::Absolute},
        {"//a/../b/", PathFault::Absolute},
        {"a//b", PathFault::EmptyComponent},
        {"a//.", PathFault::EmptyComponent},
        {"..//a", PathFault::EmptyComponent},
        {"a/", PathFault::NamesFolder},
        {"a//", PathFault::NamesFolder},
        {"../", PathFault::NamesFolder},
        {".", PathFault::NamesFolder},
        {"a/.", PathFault::NamesFolder},
        {"../.", PathFault::NamesFolder},
        {"..", PathFault::ClimbsOut},
        {"../a", PathFault::ClimbsOut},
        {"a/..", PathFault::ClimbsOut},
        {"a/../b", PathFault::ClimbsOut},
    };
    for (const auto& row : rows)
        EXPECT_EQ(pathFault(row.first), row.second) << row.first;
}

TEST(FilePath, HasAFaultJustWhereAPlainExpressionRefusesIt)
{
    // Any components but "" and "..", of which the last is not "." either.
    const std::regex accepted("((?![.]{2}/)[^/]+/)*(?![.]{1,2}$)[^/]+");
    const unsigned seed = 4711;
    std::mt19937 random(seed);
    std::size_t faultless = 0;
    std::size_t faulty = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string path(random() % 9, '\0');
        for (char& c : path)
            c = "//..ab"[random() % 6];
        const bool isAccepted = std::regex_match(path, accepted);

        ASSERT_EQ(pathFault(path) == PathFault::None, isAccepted)
            << "seed " << seed << ", path \"" << path << "\"";

        ++(isAccepted ? faultless : faulty);
    }
    EXPECT_GT(faultless, 1000u);
    EXPECT_GT(faulty, 1000u);
}

TEST(FilePath, HasTheSameFaultWhateverItSharesWithOneThatHasNone)
{
    std::mt19937 random(12);
    std::size_t faulty = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string other(1 + random() % 9, '\0');
        for (char& c : other)
            c = "//..ab"[random() % 6];
        if (pathFault(other) != PathFault::None)
            continue;
        std::string path = other.substr(0, random() % (other.size() + 1));
        for (auto more = random() % 5; more > 0; --more)
            path += "//..ab"[random() % 6];

        ASSERT_EQ(pathFault(path, commonLength(path, other)), pathFault(path))
            << path << " behind " << other;

        faulty += pathFault(path) != PathFault::None ? 1 : 0;
    }
    EXPECT_GT(faulty, 1000u);
}

TEST(CommonLength, IsThatOfTheEqualBytes)
{
    std::mt19937 random(13);
    for (int round = 0; round < 10000; ++round) {
        std::string left(random() % 40, 'a');
        std::string right(random() % 40, 'a');
        if (random() % 2 == 0 && !right.empty())
            right[random() % right.size()] = '\xff';
        const auto ends = std::mismatch(left.begin(), left.end(), right.begin(), right.end());

        ASSERT_EQ(commonLength(left, right), static_cast<std::size_t>(ends.first - left.begin()))
            << left << ", " << right;
    }
}

} // namespace tests
} // namespace casetable
