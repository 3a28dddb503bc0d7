#include "crawler/FolderCrawler.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include "host/FileInfoInterface.h"
#include "tests/crawler/Doubles.h"

namespace {

using doubles::FilePtr;
using doubles::runToEnd;

/// Where in the stack the topmost and the deepest listing of a walk were made.
struct StackUse {
    std::atomic<std::uintptr_t> top{0};
    std::atomic<std::uintptr_t> deepest{0};
};

/// A directory that makes its only child when it is listed, so that no chain of owners as long as
/// the tree is deep has to be torn down. Only the lowest folders have a name: the paths stay short.
struct MeasuringFolder : FileInfoInterface {
    MeasuringFolder(StackUse& theUse, int theLevelsBelow) : use(theUse), levelsBelow(theLevelsBelow)
    {
    }

    bool isDirectory() const override { return levelsBelow > 0; }
    bool isReadable() const override { return true; }
    bool isFile() const override { return levelsBelow == 0; }
    bool exists() const override { return true; }
    std::string fullPath() const override { return std::to_string(levelsBelow); }
    std::string fileName() const override { return levelsBelow < 3 ? fullPath() : std::string(); }
    std::vector<FilePtr> entries(const std::string&) const override
    {
        // The frame itself: a sanitizer may keep locals elsewhere.
        const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
        if (use.top == 0)
            use.top = here;
        use.deepest = here;
        return {boost::make_shared<MeasuringFolder>(use, levelsBelow - 1)};
    }

    StackUse& use;
    const int levelsBelow;
};

const int levels = 20000;

} // namespace

TEST(FolderCrawlerDepth, OfTwentyThousandLevelsTakesLessThanHalfOfTheStack)
{
    StackUse use;
    FolderCrawler crawler(boost::make_shared<MeasuringFolder>(use, levels));
    const std::size_t stack = crawler.stackSize();
    ASSERT_EQ(std::size_t{64} * 1024 * 1024, stack);

    runToEnd(crawler);

    ASSERT_EQ(std::list<std::string>{"2/1/0"}, crawler.result().files);
    ASSERT_GT(use.top, use.deepest) << "the stack grows downwards";
    const std::size_t taken = use.top - use.deepest;
    RecordProperty("BytesPerLevel", static_cast<int>(taken / (levels - 1)));
    EXPECT_GE(taken, std::size_t{16} * (levels - 1)) << "every level has a frame";
    EXPECT_LT(taken, stack / 2) << taken / (levels - 1) << " bytes a level";
}
