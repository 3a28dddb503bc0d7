#include "window/model/BackgroundJobs.h"

#include <future>
#include <memory>

#include <gtest/gtest.h>

#include <QTest>
#include <QThread>

namespace casetable {
namespace tests {

namespace {

bool waitForEnd(const BackgroundJobs& jobs)
{
    return QTest::qWaitFor([&jobs] { return jobs.areDone(); }, 20000);
}

} // namespace

TEST(BackgroundJobs, HaveTheirEffectOnTheThreadThatBeganThem)
{
    const QThread* const own = QThread::currentThread();
    QObject receiver;
    BackgroundJobs jobs;
    bool isElsewhere = false;
    int effects = 0;
    jobs.run(receiver, [&] {
        isElsewhere = QThread::currentThread() != own;
        return [&] { effects += QThread::currentThread() == own ? 1 : 0; };
    });
    jobs.run(receiver, [] { return nullptr; });
    EXPECT_FALSE(jobs.areDone());
    ASSERT_TRUE(waitForEnd(jobs));
    EXPECT_TRUE(isElsewhere);
    EXPECT_EQ(effects, 1);
}

TEST(BackgroundJobs, MayBeginOthersAsTheirEffect)
{
    QObject receiver;
    BackgroundJobs jobs;
    bool isDone = false;
    jobs.run(receiver, [&] {
        return [&] { jobs.run(receiver, [&] { return [&isDone] { isDone = true; }; }); };
    });
    ASSERT_TRUE(waitForEnd(jobs));
    EXPECT_TRUE(isDone);
}

TEST(BackgroundJobs, HaveNoEffectOnAReceiverThatIsGone)
{
    auto receiver = std::make_unique<QObject>();
    BackgroundJobs jobs;
    bool hasEffect = false;
    jobs.run(*receiver, [&hasEffect] { return [&hasEffect] { hasEffect = true; }; });
    receiver.reset();
    ASSERT_TRUE(waitForEnd(jobs));
    EXPECT_FALSE(hasEffect);
}

TEST(BackgroundJobs, AreLeftToThemselvesByTheirOwner)
{
    std::promise<void> mayEnd;
    QObject receiver;
    auto jobs = std::make_unique<BackgroundJobs>();
    jobs->run(receiver, [&mayEnd] {
        mayEnd.get_future().wait();
        return nullptr;
    });
    jobs.reset();
    EXPECT_TRUE(BackgroundJob::isAnyLeft());
    mayEnd.set_value();
    EXPECT_TRUE(QTest::qWaitFor([] { return !BackgroundJob::isAnyLeft(); }, 20000));
}

} // namespace tests
} // namespace casetable
