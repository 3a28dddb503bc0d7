#include "casetable/system/Interrupt.h"

#include <csignal>

#include <gtest/gtest.h>

#include "tests/casetable/support/OrdinaryUser.h"

namespace casetable {
namespace tests {

namespace {

bool isBlocked(int signal)
{
    sigset_t blocked;
    sigemptyset(&blocked);
    EXPECT_EQ(pthread_sigmask(SIG_BLOCK, nullptr, &blocked), 0);
    return sigismember(&blocked, signal) == 1;
}

} // namespace

TEST(Interrupt, IsRememberedWithItsSignal)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        inOwnProcess([signal] {
            catchInterrupts();
            EXPECT_NO_THROW(throwIfInterrupted());
            raise(signal);
            try {
                throwIfInterrupted();
                ADD_FAILURE() << signal;
            } catch (const Interrupted& interrupted) {
                EXPECT_EQ(interrupted.signal, signal);
            }
        });
    }
}

TEST(Interrupt, IsRememberedHoweverOftenItComes)
{
    inOwnProcess([] {
        catchInterrupts();
        raise(SIGINT);
        raise(SIGINT);
        EXPECT_TRUE(isInterrupted());
    });
}

TEST(Interrupt, EndsTheProgramOnceItIsReleased)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(
            {
                useDefaultInterrupts();
                catchInterrupts();
                raise(signal);
                releaseInterrupts();
                raise(signal);
            },
            testing::ExitedWithCode(128 + signal), "");
    }
}

TEST(Interrupt, StaysIgnoredWhereTheCallerIgnoresIt)
{
    inOwnProcess([] {
        std::signal(SIGHUP, SIG_IGN);
        catchInterrupts();
        raise(SIGHUP);
        EXPECT_NO_THROW(throwIfInterrupted());
        raise(SIGINT);
        EXPECT_THROW(throwIfInterrupted(), Interrupted);
    });
}

TEST(Interrupt, IsBlockedOnlyDuringALifeOfSignalsBlocked)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_FALSE(isBlocked(signal));
        {
            const SignalsBlocked signalsBlocked;
            EXPECT_TRUE(isBlocked(signal));
        }
        EXPECT_FALSE(isBlocked(signal));
    }
}

TEST(Interrupt, StaysIgnoredWhereTheCallerIgnoresItAlsoOnceReleased)
{
    inOwnProcess([] {
        std::signal(SIGHUP, SIG_IGN);
        catchInterrupts();
        releaseInterrupts();
        raise(SIGHUP);
    });
}

TEST(Interrupt, StaysBlockedWhereItWasBlockedBefore)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const SignalsBlocked before;
        {
            const SignalsBlocked signalsBlocked;
        }
        EXPECT_TRUE(isBlocked(signal));
    }
}

} // namespace tests
} // namespace casetable
