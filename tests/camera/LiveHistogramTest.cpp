#include "camera/LiveHistogram.h"
#include "media/FrameViewOf.h"

#include "camera/LiveView.h"
#include "common/Clock.h"

#include <gtest/gtest.h>
#include <QColor>
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

namespace {

// A frame of `bytes` in the camera's own layout, `width` x `height` pixels.
FrameView rawFrame(const std::vector<uchar>& bytes, int width, int height, qsizetype bytesPerLine,
                   RawLayout raw)
{
    FrameView f;
    f.bits = bytes.data();
    f.width = width;
    f.height = height;
    f.bytesPerLine = bytesPerLine;
    f.raw = raw;
    return f;
}

// YUYV with every pair given by its two lumas and its colour.
std::vector<uchar> yuyv(int width, int height, qsizetype bytesPerLine, uchar y0, uchar y1, uchar u, uchar v)
{
    std::vector<uchar> bytes(size_t(bytesPerLine) * size_t(height), 7);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width / 2; ++x) {
            uchar* pair = bytes.data() + y * bytesPerLine + 4 * x;
            pair[0] = y0;
            pair[1] = u;
            pair[2] = y1;
            pair[3] = v;
        }
    return bytes;
}

// Bayer cells of one colour in the pattern whose red sits at `red` (row * 2 + column).
std::vector<uchar> bayer(int width, int height, int red, uchar r, uchar g1, uchar g2, uchar b)
{
    std::vector<uchar> bytes(size_t(width) * size_t(height));
    const int green = red == 0 || red == 3 ? 1 : 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int k = (y % 2) * 2 + x % 2;
            bytes[size_t(y) * width + x] = k == red ? r : k == 3 - red ? b : k == green ? g1 : g2;
        }
    return bytes;
}

}  // namespace

TEST_F(LiveHistogramTest, AYuyvFrame_CountsEachPixelsOwnLuma)
{
    // Black and white pixels side by side, no colour; a row longer than its pixels.
    const std::vector<uchar> bytes = yuyv(64, 48, 140, 16, 235, 128, 128);
    live.setEnabled(true);
    live.frameReady(rawFrame(bytes, 64, 48, 140, RawLayout::Yuyv));
    const std::optional<Histogram> taken = live.take();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->pixels(), 64 * 48);
    EXPECT_EQ(taken->counts(Histogram::Grey)[0], 32u * 48u);
    EXPECT_EQ(taken->counts(Histogram::Grey)[255], 32u * 48u);
    EXPECT_FALSE(taken->colour());
}

TEST_F(LiveHistogramTest, AYuyvFrame_IsCountedInItsColours)
{
    const std::vector<uchar> bytes = yuyv(64, 48, 128, 81, 81, 90, 240);  // red
    live.setEnabled(true);
    live.frameReady(rawFrame(bytes, 64, 48, 128, RawLayout::Yuyv));
    const std::optional<Histogram> taken = live.take();
    ASSERT_TRUE(taken);
    EXPECT_TRUE(taken->colour());
    EXPECT_EQ(taken->counts(Histogram::Red)[255], 64u * 48u);
    EXPECT_EQ(taken->counts(Histogram::Green)[0], 64u * 48u);
    EXPECT_EQ(taken->counts(Histogram::Blue)[0], 64u * 48u);
}

TEST_F(LiveHistogramTest, ABayerFrame_CountsEachCellAsOnePixelOfItsColours_InEveryPattern)
{
    const RawLayout layouts[] = {RawLayout::BayerRggb, RawLayout::BayerGrbg, RawLayout::BayerGbrg,
                                 RawLayout::BayerBggr};
    for (int red = 0; red < 4; ++red) {
        SCOPED_TRACE(red);
        const std::vector<uchar> bytes = bayer(64, 48, red, 200, 100, 50, 10);
        live.setEnabled(false);
        live.setEnabled(true);
        live.frameReady(rawFrame(bytes, 64, 48, 64, layouts[red]));
        const std::optional<Histogram> taken = live.take();
        ASSERT_TRUE(taken);
        EXPECT_EQ(taken->pixels(), 32 * 24);
        EXPECT_EQ(taken->counts(Histogram::Red)[200], 32u * 24u);
        EXPECT_EQ(taken->counts(Histogram::Green)[75], 32u * 24u);
        EXPECT_EQ(taken->counts(Histogram::Blue)[10], 32u * 24u);
    }
}

TEST_F(LiveHistogramTest, AFiveMegapixelBayerFrame_IsCountedOnASampleOfItsCells)
{
    const std::vector<uchar> bytes = bayer(2592, 1944, 0, 255, 255, 255, 255);
    live.setEnabled(true);
    live.frameReady(rawFrame(bytes, 2592, 1944, 2592, RawLayout::BayerRggb));
    const std::optional<Histogram> taken = live.take();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->pixels(), 324 * 243) << "every 4th cell of every 4th row of cells";
    EXPECT_LE(taken->pixels(), LiveHistogram::kSampleBudget);
    EXPECT_EQ(taken->clippedBright(), 1.0);
}

TEST_F(LiveHistogramTest, ABgrFrame_IsCountedWithItsChannelsInPlace)
{
    QImage frame(64, 48, QImage::Format_BGR888);
    frame.fill(QColor(200, 100, 10));
    live.setEnabled(true);
    live.frameReady(frameViewOf(frame));
    const std::optional<Histogram> taken = live.take();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->counts(Histogram::Red)[200], 64u * 48u);
    EXPECT_EQ(taken->counts(Histogram::Blue)[10], 64u * 48u);
}
