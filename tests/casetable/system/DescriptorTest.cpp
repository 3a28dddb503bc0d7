#include "casetable/system/Descriptor.h"

#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace casetable {
namespace tests {

namespace {

int openNull()
{
    return open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool isOpen(int number)
{
    return fcntl(number, F_GETFD) != -1;
}

} // namespace

TEST(Descriptor, ClosesWhatItOwns)
{
    int number = -1;
    {
        const Descriptor descriptor(openNull());
        number = descriptor.number();
        EXPECT_TRUE(descriptor.isOpen());
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(Descriptor, OwnsNothingWhereNothingWasOpened)
{
    EXPECT_FALSE(Descriptor().isOpen());
    EXPECT_FALSE(Descriptor(-1).isOpen());
}

TEST(Descriptor, HandsOverWhenItIsMoved)
{
    Descriptor from(openNull());
    const int number = from.number();

    const Descriptor to(std::move(from));

    EXPECT_EQ(to.number(), number);
    EXPECT_TRUE(isOpen(number));
}

TEST(Descriptor, ClosesWhatItOwnedWhenItTakesOverAnother)
{
    Descriptor descriptor(openNull());
    const int earlier = descriptor.number();
    const int number = openNull();

    descriptor = Descriptor(number);

    EXPECT_EQ(descriptor.number(), number);
    EXPECT_TRUE(isOpen(number));
    EXPECT_FALSE(isOpen(earlier));
}

TEST(Descriptor, LeavesOpenWhatItReleases)
{
    int number = -1;
    {
        Descriptor descriptor(openNull());
        number = descriptor.release();
        EXPECT_FALSE(descriptor.isOpen());
    }
    EXPECT_TRUE(isOpen(number));
    close(number);
}

} // namespace tests
} // namespace casetable
