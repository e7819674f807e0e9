#include "camera/LiveHistogram.h"
#include "media/FrameViewOf.h"

#include "camera/LiveView.h"
#include "common/Clock.h"

#include <gtest/gtest.h>
#include <QImage>

using namespace tavix;

namespace {

QImage filled(int width, int height, int level)
{
    QImage image(width, height, QImage::Format_Grayscale8);
    image.fill(level);
    return image;
}

class LiveHistogramTest : public ::testing::Test {
protected:
    LiveHistogramTest()
    {
        live.setNotifier([this] { ++notified; });
    }

    ManualClock clock;
    LiveHistogram live{clock};
    int notified = 0;
    QImage dark = filled(64, 48, 0);
    QImage bright = filled(64, 48, 255);
};

}  // namespace

TEST_F(LiveHistogramTest, Off_FramesPassUncounted)
{
    live.frameReady(frameViewOf(dark));
    EXPECT_EQ(live.passes(), 0);
    EXPECT_FALSE(live.take());
    EXPECT_EQ(notified, 0);
}

TEST_F(LiveHistogramTest, On_TheFirstFrameIsCountedAtOnce_ThenOneFrameAQuarterSecond)
{
    live.setEnabled(true);
    live.frameReady(frameViewOf(dark));
    EXPECT_EQ(live.passes(), 1);
    for (int i = 1; i <= 7; ++i) {  // 30 frames a second
        clock.advance(33);
        live.frameReady(frameViewOf(bright));
    }
    EXPECT_EQ(live.passes(), 1) << "231 ms after the first count";
    clock.advance(19);
    live.frameReady(frameViewOf(bright));
    EXPECT_EQ(live.passes(), 2) << "250 ms after it";
}

TEST_F(LiveHistogramTest, Take_GivesTheNewestCountOnce_AndTheNotifierWaitsForIt)
{
    live.setEnabled(true);
    live.frameReady(frameViewOf(dark));
    clock.advance(LiveHistogram::kIntervalMs);
    live.frameReady(frameViewOf(bright));
    EXPECT_EQ(notified, 1) << "the first count was not taken yet";

    const std::optional<Histogram> taken = live.take();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->clippedBright(), 1.0);
    EXPECT_EQ(taken->pixels(), 64 * 48);
    EXPECT_FALSE(live.take());

    clock.advance(LiveHistogram::kIntervalMs);
    live.frameReady(frameViewOf(dark));
    EXPECT_EQ(notified, 2);
}

TEST_F(LiveHistogramTest, SwitchedOnAgain_CountsTheNextFrameAtOnce)
{
    live.setEnabled(true);
    live.frameReady(frameViewOf(dark));
    live.setEnabled(false);
    live.setEnabled(true);
    clock.advance(10);
    live.frameReady(frameViewOf(bright));
    EXPECT_EQ(live.passes(), 2);
}

TEST_F(LiveHistogramTest, AFiveMegapixelFrame_IsCountedOnASample)
{
    const QImage frame = filled(2592, 1944, 255).convertToFormat(QImage::Format_RGB888);
    live.setEnabled(true);
    live.frameReady(frameViewOf(frame));
    const std::optional<Histogram> taken = live.take();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->pixels(), 371 * 278) << "every 7th pixel of every 7th row";
    EXPECT_LE(taken->pixels(), LiveHistogram::kSampleBudget);
    EXPECT_EQ(taken->clippedBright(), 1.0);
}

TEST_F(LiveHistogramTest, TheLiveView_HandsEachFrameToItsTap)
{
    LiveView view;
    view.setTap(&live);
    live.setEnabled(true);
    view.frameReady(frameViewOf(bright));  // no display size yet: the tap sees it all the same
    EXPECT_EQ(live.passes(), 1);
    EXPECT_EQ(view.counters().received, 1u);
}
