#include "camera/FrameStatistics.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(FrameStatistics, Tick_ShowsCountsRateAndAverage)
{
    FrameStatistics stats;
    stats.reset(100.0f);
    stats.tick(30, 0, 101.0f);
    const auto& t = stats.tick(90, 2, 102.0f);
    EXPECT_EQ(t.frames, QStringLiteral("Frames:90"));
    EXPECT_EQ(t.fps, QStringLiteral("FPS:60.00"));
    EXPECT_EQ(t.average, QStringLiteral("Average:45.00"));
    EXPECT_EQ(t.badFrames, QStringLiteral("Bad frames:2"));
}

TEST(FrameStatistics, RestartValue_StartsTheMeasurementAfreshAtTheNextTick)
{
    FrameStatistics stats;
    stats.reset(100.0f);
    stats.tick(300, 0, 110.0f);  // 30 fps
    stats.restart();
    EXPECT_EQ(stats.startTime(), 99999.0f);
    const auto& atRestart = stats.tick(310, 0, 111.0f);
    EXPECT_EQ(atRestart.average, QStringLiteral("Average:30.00"))
        << "the restart tick keeps the last figures";
    EXPECT_EQ(stats.startTime(), 111.0f);
    const auto& after = stats.tick(315, 0, 112.0f);  // 5 fps since the restart
    EXPECT_EQ(after.fps, QStringLiteral("FPS:5.00"));
    EXPECT_EQ(after.average, QStringLiteral("Average:5.00"));
}

TEST(FrameStatistics, SameTime_KeepsTheLastRate)
{
    FrameStatistics stats;
    stats.reset(10.0f);
    stats.tick(10, 0, 11.0f);
    const auto& t = stats.tick(20, 0, 11.0f);
    EXPECT_EQ(t.fps, QStringLiteral("FPS:10.00"));
    EXPECT_EQ(t.frames, QStringLiteral("Frames:20"));
}
