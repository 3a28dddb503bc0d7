#include "crawler/FolderCrawler.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

#include <gtest/gtest.h>

#include "tests/crawler/Doubles.h"
#include "tests/support/MemoryFile.h"

namespace {

using doubles::runToEnd;

/// Where in the stack the topmost and the deepest listing of a walk were made.
struct StackUse {
    std::atomic<std::uintptr_t> top{0};
    std::atomic<std::uintptr_t> deepest{0};
};

/// Writes down where in the stack a listing is made.
void measure(StackUse& use, const std::string& call)
{
    if (call.find(" entries()") == std::string::npos)
        return;
    // The frame itself: a sanitizer may keep locals elsewhere.
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    if (use.top == 0)
        use.top = here;
    use.deepest = here;
}

const int levels = 20000;

} // namespace

TEST(FolderCrawlerDepth, OfTwentyThousandLevelsTakesLessThanHalfOfTheStack)
{
    StackUse use;
    FolderCrawler crawler(
        doubles::deepTree(levels, [&use](const std::string& call) { measure(use, call); }));
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
