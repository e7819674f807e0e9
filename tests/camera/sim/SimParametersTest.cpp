#include "camera/sim/SimCamera.h"
#include "camera/sim/SimParameters.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

SimParameters withClock(double modeFrameRate = 45)
{
    return SimParameters(false, false, modeFrameRate);
}

}  // namespace

TEST(SimParameters, Exposure_IsRawUnitsOverTheClock)
{
    SimParameters p = withClock();
    EXPECT_EQ(p.exposureRaw(), 960);
    EXPECT_DOUBLE_EQ(p.exposureMs(), 20.0);
    ASSERT_EQ(p.set(SimParameters::kClock, 96), 0);
    EXPECT_DOUBLE_EQ(p.exposureMs(), 10.0);
}

TEST(SimParameters, FramePeriod_IsTheLongerOfExposureAndFrameRate)
{
    SimParameters p = withClock(45);
    EXPECT_DOUBLE_EQ(p.framePeriodMs(), 1000.0 / 45);
    ASSERT_EQ(p.set(SimParameters::kExposure, 48000), 0);
    EXPECT_DOUBLE_EQ(p.framePeriodMs(), 1000.0);
}

TEST(SimParameters, Set_RefusesReadOnlyUnknownAndOutOfRange)
{
    SimParameters p = withClock();
    EXPECT_EQ(p.set(SimParameters::kWhiteBalance, 1), SimCamera::kReadOnly);
    EXPECT_EQ(p.set(SimParameters::kAviWriting, 1), SimCamera::kReadOnly);
    EXPECT_EQ(p.set(99, 0), SimCamera::kNotSupported);
    EXPECT_EQ(p.set(2, 65), SimCamera::kOutOfRange);
    EXPECT_EQ(p.value(2), 32);
    EXPECT_EQ(p.set(SimParameters::kFrameRate, 10),
              SimCamera::kNotSupported);  // offered only instead of the clock
}

TEST(SimParameters, FrameRate_StaysWithinTheModesRate)
{
    SimParameters p(true, false, 45);
    EXPECT_EQ(p.value(SimParameters::kFrameRate), 45);
    EXPECT_FALSE(p.range(SimParameters::kClock).enabled);
    p.setModeFrameRate(30);
    EXPECT_EQ(p.value(SimParameters::kFrameRate), 30);
    EXPECT_EQ(p.range(SimParameters::kFrameRate).maximum, 30);
    p.setModeFrameRate(90);
    EXPECT_EQ(p.value(SimParameters::kFrameRate), 30);
}

TEST(SimParameters, AutoExposure_MovesTowardsTheTarget_AndStaysThereWhenTurnedOff)
{
    SimParameters p = withClock();
    p.steerExposure(64, 128);  // automatic is off: nothing moves
    EXPECT_EQ(p.exposureRaw(), 960);
    ASSERT_EQ(p.setAuto(SimParameters::kExposure, 1), 0);
    p.steerExposure(64, 128);
    const std::int32_t brighter = p.exposureRaw();
    EXPECT_GT(brighter, 960);
    p.steerExposure(127, 128);  // close enough
    EXPECT_EQ(p.exposureRaw(), brighter);
    ASSERT_EQ(p.setAuto(SimParameters::kExposure, 0), 0);
    EXPECT_EQ(p.value(SimParameters::kExposure), brighter);
}

TEST(SimParameters, WhiteBalance_StepsEveryFrame_AndSettlesWhenTimeIsUp)
{
    SimParameters p = withClock();
    EXPECT_EQ(p.startOnePush(7, 0), SimCamera::kNotSupported);
    ASSERT_EQ(p.startOnePush(SimParameters::kWhiteBalance, 1000), 0);
    EXPECT_EQ(p.value(SimParameters::kWhiteBalance), 0);
    p.stepWhiteBalance();
    const std::int32_t halfWay = p.value(9);
    EXPECT_NE(halfWay, 64);
    p.settleWhiteBalance(1000 + SimParameters::kWhiteBalanceMs - 1);
    EXPECT_EQ(p.value(SimParameters::kWhiteBalance), 0);
    p.settleWhiteBalance(1000 + SimParameters::kWhiteBalanceMs);
    EXPECT_EQ(p.value(SimParameters::kWhiteBalance), 1);
    EXPECT_EQ(p.look().rgbGain[0], p.value(9));
    EXPECT_EQ(p.look().rgbGain[1], 64);
}
