#include "camera/genicam/FrameRateMeter.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(FrameRateMeter, NeedsTwoFrames)
{
    FrameRateMeter meter;
    EXPECT_EQ(meter.fps(), 0);
    meter.arrived(1'000'000'000);
    EXPECT_EQ(meter.fps(), 0);
    meter.arrived(1'040'000'000);
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
    meter.arrived(0);
    meter.arrived(500'000'000);
    meter.clear();
    meter.arrived(7);
    meter.arrived(7);
    EXPECT_EQ(meter.fps(), 0);
}
