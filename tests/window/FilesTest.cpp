#include "window/model/Files.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/window/Kept.h"

namespace casetable {
namespace tests {

TEST(Files, HasEachPathAtItsIndex)
{
    std::mt19937 random(5);
    for (int i = 0; i < 300; ++i) {
        std::vector<std::string> paths;
        for (std::size_t n = random() % 40; n > 0; --n)
            paths.push_back("p" + std::to_string(random() % 50));
        const Files files = filesOf(paths, 1 + random() % 5);
        std::sort(paths.begin(), paths.end());
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
        EXPECT_EQ(pathsOf(files), paths);
    }
}

TEST(Files, SharesItsShardsWhenTheyAreInOrder)
{
    const Files files = filesOf({"a", "b", "c", "d"});
    EXPECT_EQ(files.inByteOrder().shards(), files.shards());
}

} // namespace tests
} // namespace casetable
