#include "casetable/listing/ReadAhead.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <functional>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "casetable/system/Processors.h"
#include "tests/support/Sanitizer.h"

namespace casetable {
namespace tests {

namespace {

using Jobs = ReadAhead::Jobs;
using Limits = ReadAhead::Limits;
using Meter = ReadAhead::Meter;

const Limits many = {8, 128, 1'000'000, 1000};

// A number that goes up and down, and the highest that it was.
class Level {
public:
    void rise(int by = 1)
    {
        const int now = level_ += by;
        for (int highest = highest_; now > highest;) {
            if (highest_.compare_exchange_weak(highest, now))
                break;
        }
    }
    void fall() { --level_; }
    int now() const { return level_; }
    int highest() const { return highest_; }

private:
    std::atomic<int> level_{0};
    std::atomic<int> highest_{0};
};

// A job that calls a function, and leads to the jobs that it was given.
class Call : public ReadAhead::Job {
public:
    using Function = std::function<void(Call& job, Meter* ahead)>;

    Call(Call* parent, Function function)
        : Job(ReadAhead::JobPtr(parent)), function_(std::move(function))
    {
        ++alive;
    }
    ~Call() override { --alive; }

    Jobs run(Meter* ahead) override
    {
        function_(*this, ahead);
        wasAhead = ahead != nullptr;
        return next;
    }
    void closeDescriptor() override { isClosed = true; }
    void discard() override {}

    // Both are made before a walk begins.
    boost::intrusive_ptr<Call> add(Function function)
    {
        next.emplace_back(new Call(this, std::move(function)));
        return boost::intrusive_ptr<Call>(static_cast<Call*>(next.back().get()));
    }

    static std::atomic<int> alive;

    Jobs next;
    bool wasAhead = false;
    bool isClosed = false;

private:
    const Function function_;
};

std::atomic<int> Call::alive{0};

using CallPtr = boost::intrusive_ptr<Call>;

void nothing(Call& /*job*/, Meter* /*ahead*/) {}

void rest(Call& /*job*/, Meter* /*ahead*/)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

class ReadAheadOfJobs : public testing::Test {
protected:
    ~ReadAheadOfJobs() override
    {
        ahead_->close();
        // A job and the one that led to it hold each other.
        dismantle(root_);
        root_.reset();
        EXPECT_EQ(Call::alive, 0);
    }

    void use(const Limits& limits)
    {
        ahead_ = std::make_shared<ReadAhead>(limits, ReadAhead::Duration(0));
    }

    // Finishes a job and all to which it leads, calling `visit` behind each.
    void walk(
        Call& job, const std::function<void(Call&)>& visit = [](Call&) {})
    {
        ahead_->finish(job);
        visit(job);
        for (const ReadAhead::JobPtr& each : job.next)
            walk(static_cast<Call&>(*each), visit);
    }

    std::shared_ptr<ReadAhead> ahead_ = std::make_shared<ReadAhead>(many, ReadAhead::Duration(0));
    CallPtr root_{new Call(nullptr, rest)};

private:
    static void dismantle(const CallPtr& job)
    {
        for (const ReadAhead::JobPtr& each : std::exchange(job->next, {}))
            dismantle(CallPtr(static_cast<Call*>(each.get())));
    }
};

} // namespace

TEST_F(ReadAheadOfJobs, DoesEachOnce)
{
    std::atomic<int> runs{0};
    const auto count = [&runs](Call& job, Meter* ahead) {
        ++runs;
        rest(job, ahead);
    };
    for (int i = 0; i < 10; ++i) {
        const CallPtr job = root_->add(count);
        for (int j = 0; j < 10; ++j)
            job->add(count);
    }
    int ahead = 0;

    walk(*root_, [&ahead](const Call& job) { ahead += job.wasAhead ? 1 : 0; });

    EXPECT_EQ(runs, 110);
    EXPECT_GT(ahead, 0);
}

TEST_F(ReadAheadOfJobs, StartsNoThreadBeforeTheyHaveTakenAWhile)
{
    ahead_ = std::make_shared<ReadAhead>(many, ReadAhead::Duration(1e6));
    const std::thread::id walk = std::this_thread::get_id();
    for (int i = 0; i < 20; ++i)
        root_->add([walk](Call& job, Meter* ahead) {
            EXPECT_EQ(std::this_thread::get_id(), walk);
            rest(job, ahead);
        });

    this->walk(*root_, [](const Call& job) { EXPECT_FALSE(job.wasAhead); });
}

TEST_F(ReadAheadOfJobs, KeepsToTheNumbersOfThreadsAndJobs)
{
    use({4, 0, 1'000'000, 5});
    Level running;
    Level held;
    for (int i = 0; i < 200; ++i)
        root_->add([&](Call& job, Meter* ahead) {
            running.rise();
            held.rise();
            rest(job, ahead);
            running.fall();
        });

    walk(*root_, [&](const Call& job) {
        if (&job != root_.get())
            held.fall();
    });

    EXPECT_LE(running.highest(), 4 + 1) << "the walk works too";
    EXPECT_LE(held.highest(), 5 + 4 + 1) << "those being done come on top";
    EXPECT_GT(held.highest(), 1);
}

TEST_F(ReadAheadOfJobs, KeepsToTheNumberOfDescriptors)
{
    use({8, 3, 1'000'000, 1000});
    Level kept;
    for (int i = 0; i < 100; ++i)
        root_->add([&kept](Call& job, Meter* ahead) {
            rest(job, ahead);
            if (ahead != nullptr && ahead->mayKeepDescriptor()) {
                kept.rise();
                job.isClosed = false;
            } else {
                job.isClosed = true;
            }
        });
    int keptInAll = 0;

    walk(*root_, [&](const Call& job) {
        if (&job != root_.get() && !job.isClosed) {
            kept.fall();
            ++keptInAll;
        }
    });

    // One more than the limit may have been counted, as finish() returns before the count falls.
    EXPECT_LE(kept.highest(), 3 + 1);
    EXPECT_GT(keptInAll, 0);
}

TEST_F(ReadAheadOfJobs, LetsThoseThatGrowTooMuchWaitForTheWalk)
{
    use({4, 0, 1'000'000, 1000});
    Level bytes;
    const int step = 100'000;
    for (int i = 0; i < 20; ++i)
        root_->add([&bytes](Call& job, Meter* ahead) {
            rest(job, ahead);
            for (int grown = 0; ahead != nullptr && grown < 1'200'000; grown += step) {
                bytes.rise(step);
                ahead->grow(step);
            }
        });
    int ahead = 0;

    walk(*root_, [&](const Call& job) {
        ahead += job.wasAhead ? 1 : 0;
        if (job.wasAhead)
            bytes.rise(-1'200'000);
    });

    EXPECT_GT(ahead, 0);
    // The walk, which never waits, may help with one job, and wait for another one.
    EXPECT_LE(bytes.highest(), 1'000'000 + 4 * step + 2 * 1'200'000);
}

TEST_F(ReadAheadOfJobs, LeavesFailuresToTheWalk)
{
    for (int i = 0; i < 50; ++i)
        root_->add([i](Call& job, Meter* ahead) {
            rest(job, ahead);
            if (ahead != nullptr && i % 3 == 0)
                throw std::system_error(EIO, std::generic_category());
            if (ahead != nullptr && i % 3 == 1)
                throw i;
        });
    const CallPtr last =
        root_->add([](Call&, Meter*) { throw std::system_error(ENOENT, std::generic_category()); });

    try {
        walk(*root_);
        ADD_FAILURE() << "no failure";
    } catch (const std::system_error& failure) {
        EXPECT_EQ(failure.code().value(), ENOENT);
    }
}

TEST_F(ReadAheadOfJobs, GivesUpThreadsThatLackDescriptors)
{
    std::atomic<int> lacks{0};
    for (int i = 0; i < 200; ++i)
        root_->add([&lacks](Call& job, Meter* ahead) {
            rest(job, ahead);
            if (ahead != nullptr) {
                ++lacks;
                throw std::system_error(EMFILE, std::generic_category());
            }
        });

    walk(*root_, [](const Call& job) { EXPECT_FALSE(job.wasAhead); });

    EXPECT_GT(lacks, 0);
    EXPECT_LE(lacks, static_cast<int>(many.threads) * 2);
}

TEST_F(ReadAheadOfJobs, LetTheWalkHaveTheDescriptorsThatItLacks)
{
    std::atomic<int> ahead{0};
    for (int i = 0; i < 20; ++i)
        root_->add([&ahead](Call& job, Meter* meter) {
            rest(job, meter);
            ahead += meter != nullptr ? 1 : 0;
        });
    ahead_->finish(*root_);
    while (ahead < 5)
        std::this_thread::yield();
    int runs = 0;
    const CallPtr greedy(new Call(nullptr, [&](Call&, Meter*) {
        ++runs;
        const bool areClosed =
            std::all_of(root_->next.begin(), root_->next.end(), [](const ReadAhead::JobPtr& each) {
                const Call& job = static_cast<const Call&>(*each);
                return job.isClosed || !job.wasAhead;
            });
        if (runs == 1 || !areClosed)
            throw std::system_error(EMFILE, std::generic_category());
    }));

    ahead_->finish(*greedy);

    EXPECT_EQ(runs, 2);
    runs = 0;
    EXPECT_THROW(ahead_->finish(*greedy), std::system_error) << "there is nothing more to be had";
    EXPECT_EQ(runs, 1);
}

TEST_F(ReadAheadOfJobs, TakesNoMoreThreadsThanProcessorsWhereTheyCompute)
{
    if (BUILT_WITH_ADDRESS_SANITIZER || BUILT_WITH_THREAD_SANITIZER)
        GTEST_SKIP() << "the sanitizers wait, too";
    Level running;
    const auto compute = [&running](Call&, Meter*) {
        running.rise();
        const auto start = std::chrono::steady_clock::now();
        while (std::chrono::steady_clock::now() - start < std::chrono::microseconds(500))
            continue;
        running.fall();
    };
    const CallPtr root(new Call(nullptr, compute));
    for (int i = 0; i < 100; ++i)
        root->add(compute);

    walk(*root);

    EXPECT_LE(running.highest(), static_cast<int>(availableProcessors()));
    root->next.clear();
}

TEST_F(ReadAheadOfJobs, BlocksInterruptsInItsThreads)
{
    const std::thread::id walk = std::this_thread::get_id();
    std::atomic<int> blocked{0};
    std::atomic<int> open{0};
    for (int i = 0; i < 20; ++i)
        root_->add([&, walk](Call& job, Meter* ahead) {
            rest(job, ahead);
            sigset_t signals;
            pthread_sigmask(SIG_SETMASK, nullptr, &signals);
            for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
                if (std::this_thread::get_id() != walk)
                    ++(sigismember(&signals, signal) == 1 ? blocked : open);
            }
        });

    this->walk(*root_);

    EXPECT_GT(blocked, 0);
    EXPECT_EQ(open, 0);
}

TEST_F(ReadAheadOfJobs, LetsGoOfThoseThatNobodyFinishes)
{
    for (int i = 0; i < 50; ++i)
        root_->add(rest)->add(rest);
    ahead_->finish(*root_);

    ahead_->close();
    ahead_.reset();

    EXPECT_EQ(root_->next.front()->parent(), root_.get());
    ahead_ = std::make_shared<ReadAhead>(many);
}

TEST_F(ReadAheadOfJobs, MayStandBelowEachOtherOnAnyNumberOfLevels)
{
    CallPtr last(new Call(nullptr, nothing));
    for (int level = 0; level < 300'000; ++level)
        last = new Call(last.get(), nothing);

    last.reset();

    EXPECT_EQ(Call::alive, 1) << "the root of the fixture";
}

} // namespace tests
} // namespace casetable
