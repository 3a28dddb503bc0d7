#include "casetable/listing/FilePath.h"

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

} // namespace tests
} // namespace casetable
