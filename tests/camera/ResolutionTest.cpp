#include "camera/Resolution.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(Resolution, NamesAndSizesOfTheTable)
{
    EXPECT_EQ(Resolution::name(0), QStringLiteral("320x240"));
    EXPECT_EQ(Resolution::name(8), QStringLiteral("2592x1944"));
    EXPECT_EQ(Resolution::size(9), QSize(3840, 2748));
    EXPECT_EQ(Resolution::name(10), QStringLiteral("1920x1200"));
}

TEST(Resolution, Index11_IsNotSupportedAndZeroByZero)
{
    EXPECT_EQ(Resolution::name(11), QStringLiteral("not supported"));
    EXPECT_EQ(Resolution::size(11), QSize(0, 0));
    EXPECT_EQ(Resolution::name(-1), QStringLiteral("not supported"));
}
