#include "window/model/Errands.h"

#include <future>
#include <memory>

#include <gtest/gtest.h>

#include <QTest>
#include <QThread>

namespace casetable {
namespace tests {

namespace {

bool waitForEnd(const Errands& errands)
{
    return QTest::qWaitFor([&errands] { return errands.areDone(); }, 20000);
}

} // namespace

TEST(Errands, HaveTheirEffectOnTheThreadThatBeganThem)
{
    const QThread* const own = QThread::currentThread();
    QObject receiver;
    Errands errands;
    bool isElsewhere = false;
    int effects = 0;
    errands.run(receiver, [&] {
        isElsewhere = QThread::currentThread() != own;
        return [&] { effects += QThread::currentThread() == own ? 1 : 0; };
    });
    errands.run(receiver, [] { return nullptr; });
    EXPECT_FALSE(errands.areDone());
    ASSERT_TRUE(waitForEnd(errands));
    EXPECT_TRUE(isElsewhere);
    EXPECT_EQ(effects, 1);
}

TEST(Errands, MayBeginOthersAsTheirEffect)
{
    QObject receiver;
    Errands errands;
    bool isDone = false;
    errands.run(receiver, [&] {
        return [&] { errands.run(receiver, [&] { return [&isDone] { isDone = true; }; }); };
    });
    ASSERT_TRUE(waitForEnd(errands));
    EXPECT_TRUE(isDone);
}

TEST(Errands, HaveNoEffectOnAReceiverThatIsGone)
{
    auto receiver = std::make_unique<QObject>();
    Errands errands;
    bool hasEffect = false;
    errands.run(*receiver, [&hasEffect] { return [&hasEffect] { hasEffect = true; }; });
    receiver.reset();
    ASSERT_TRUE(waitForEnd(errands));
    EXPECT_FALSE(hasEffect);
}

TEST(Errands, AreLeftToThemselvesByTheirOwner)
{
    std::promise<void> mayEnd;
    QObject receiver;
    auto errands = std::make_unique<Errands>();
    errands->run(receiver, [&mayEnd] {
        mayEnd.get_future().wait();
        return nullptr;
    });
    errands.reset();
    EXPECT_TRUE(Errand::isAnyLeft());
    mayEnd.set_value();
    EXPECT_TRUE(QTest::qWaitFor([] { return !Errand::isAnyLeft(); }, 20000));
}

} // namespace tests
} // namespace casetable
