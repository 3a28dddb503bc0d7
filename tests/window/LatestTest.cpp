#include "window/model/Latest.h"

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

TEST(Latest, RunsAJob)
{
    std::promise<void> done;
    Latest latest;
    latest.run([&done](const std::atomic<bool>& isCancelled) {
        EXPECT_FALSE(isCancelled);
        done.set_value();
    });
    done.get_future().wait();
}

TEST(Latest, EndsTheJobBeforeAndDropsThatWhichWaits)
{
    std::promise<void> begun;
    std::promise<void> mayEnd;
    std::promise<void> done;
    std::atomic<int> droppedRuns{0};
    Latest latest;
    latest.run([&](const std::atomic<bool>& isCancelled) {
        begun.set_value();
        mayEnd.get_future().wait();
        EXPECT_TRUE(isCancelled);
    });
    begun.get_future().wait();
    latest.run([&droppedRuns](const std::atomic<bool>&) { ++droppedRuns; });
    latest.run([&done](const std::atomic<bool>&) { done.set_value(); });
    mayEnd.set_value();
    done.get_future().wait();
    EXPECT_EQ(droppedRuns, 0);
}

TEST(Latest, EndsItsJobWithItself)
{
    std::atomic<bool> hasEnded{false};
    {
        std::promise<void> begun;
        Latest latest;
        latest.run([&](const std::atomic<bool>& isCancelled) {
            begun.set_value();
            while (!isCancelled)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            hasEnded = true;
        });
        begun.get_future().wait();
    }
    EXPECT_TRUE(hasEnded);
}

} // namespace tests
} // namespace casetable
