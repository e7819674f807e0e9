#include "camera/genicam/FrameRateMeter.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(FrameRateMeter, NeedsAFewFrames)
{
    FrameRateMeter meter;
    EXPECT_EQ(meter.fps(), 0);
    std::int64_t t = 1'000'000'000;
    for (int i = 1; i < FrameRateMeter::kFewest; ++i, t += 40'000'000)
        meter.arrived(t);
    EXPECT_EQ(meter.fps(), 0);
    meter.arrived(t);
    EXPECT_DOUBLE_EQ(meter.fps(), 25);
}

TEST(FrameRateMeter, FollowsTheNewestFrames_NotTheWholeRun)
{
    FrameRateMeter meter;
    std::int64_t t = 0;
    for (int i = 0; i < 100; ++i, t += 100'000'000)  // 10 fps
        meter.arrived(t);
    for (int i = 0; i < FrameRateMeter::kWindow; ++i, t += 50'000'000)  // then 20 fps
        meter.arrived(t);
    EXPECT_DOUBLE_EQ(meter.fps(), 20);
}

TEST(FrameRateMeter, Clear_StartsAfresh_AndAClockStandingStillGivesNoRate)
{
    FrameRateMeter meter;
    for (int i = 0; i < FrameRateMeter::kFewest; ++i)
        meter.arrived(i * 100'000'000);
    ASSERT_DOUBLE_EQ(meter.fps(), 10);
    meter.clear();
    EXPECT_EQ(meter.fps(), 0);
    for (int i = 0; i < FrameRateMeter::kFewest; ++i)
        meter.arrived(7);
    EXPECT_EQ(meter.fps(), 0);
}
