#include "camera/LiveView.h"
#include "media/FrameViewOf.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace tavix;

namespace {

struct RgbFrame {
    RgbFrame(int w, int h, uchar r, uchar g, uchar b)
        : width(w), height(h), bytes(static_cast<size_t>(w) * h * 3)
    {
        for (size_t i = 0; i < bytes.size(); i += 3) {
            bytes[i] = r;
            bytes[i + 1] = g;
            bytes[i + 2] = b;
        }
    }
    FrameView view(std::uint64_t sequence = 0) const
    {
        FrameView v;
        v.bits = bytes.data();
        v.width = width;
        v.height = height;
        v.bytesPerLine = width * 3;
        v.format = QImage::Format_RGB888;
        v.sequence = sequence;
        return v;
    }
    int width, height;
    std::vector<uchar> bytes;
};

}  // namespace

TEST(LiveView, TakeFrame_GivesNothing_BeforeAFrameArrives)
{
    LiveView view;
    view.setDisplaySize(QSize(64, 48));
    EXPECT_EQ(view.takeFrame(), nullptr);
}

TEST(LiveView, Frame_IsScaledToTheDisplaySize)
{
    LiveView view;
    view.setDisplaySize(QSize(64, 48));
    const RgbFrame frame(640, 480, 200, 100, 50);
    view.frameReady(frame.view());
    const QImage* shown = view.takeFrame();
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->size(), QSize(64, 48));
    EXPECT_EQ(shown->pixel(10, 10), qRgb(200, 100, 50));
    EXPECT_EQ(view.takeFrame(), nullptr) << "a frame is shown once";
}

TEST(LiveView, NewerFrameReplacesUnshownOne_AndNotifiesOnce)
{
    LiveView view;
    int notified = 0;
    view.setNotifier([&] { ++notified; });
    view.setDisplaySize(QSize(32, 24));
    const RgbFrame red(320, 240, 255, 0, 0), blue(320, 240, 0, 0, 255);
    view.frameReady(red.view(1));
    view.frameReady(blue.view(2));
    EXPECT_EQ(notified, 1);
    const QImage* shown = view.takeFrame();
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->pixel(5, 5), qRgb(0, 0, 255));
    const auto c = view.counters();
    EXPECT_EQ(c.received, 2u);
    EXPECT_EQ(c.shown, 1u);
    EXPECT_EQ(c.replaced, 1u);
    view.frameReady(red.view(3));
    EXPECT_EQ(notified, 2);
}

TEST(LiveView, Frame_AveragesNeighbouringSamples)
{
    // Columns alternate black and white: a 2:1 reduction gives mid-grey.
    const int w = 8, h = 4;
    std::vector<uchar> bytes(static_cast<size_t>(w) * h * 3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c)
                bytes[static_cast<size_t>((y * w + x) * 3 + c)] = (x % 2) ? 255 : 0;
    FrameView f;
    f.bits = bytes.data();
    f.width = w;
    f.height = h;
    f.bytesPerLine = w * 3;
    LiveView view;
    view.setDisplaySize(QSize(4, 2));
    view.frameReady(f);
    const QImage* shown = view.takeFrame();
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(qRed(shown->pixel(1, 1)), 128);
    EXPECT_EQ(qGreen(shown->pixel(2, 0)), 128);
}

TEST(LiveView, FrameInAFormatTheScalerDoesNotRead_IsConvertedAndShown)
{
    QImage source(16, 16, QImage::Format_RGB16);
    source.fill(QColor(255, 0, 0));
    LiveView view;
    view.setDisplaySize(QSize(8, 8));
    view.frameReady(frameViewOf(source));
    const QImage* shown = view.takeFrame();
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->pixel(3, 3), qRgb(255, 0, 0));
}

TEST(LiveView, YuyvFrameOfOddWidth_IsNotShown)
{
    std::vector<uchar> bytes(static_cast<size_t>(15) * 4 * 2, 128);
    FrameView f;
    f.bits = bytes.data();
    f.width = 15;
    f.height = 4;
    f.bytesPerLine = 30;
    f.raw = RawLayout::Yuyv;
    LiveView view;
    view.setDisplaySize(QSize(8, 2));
    view.frameReady(f);
    EXPECT_EQ(view.takeFrame(), nullptr);
    EXPECT_EQ(view.counters().received, 1u);
}

TEST(LiveView, FramesFromAnotherThread_AreCountedAndNeverQueue)
{
    LiveView view;
    view.setDisplaySize(QSize(80, 60));
    const RgbFrame frame(800, 600, 1, 2, 3);
    std::thread producer([&] {
        for (std::uint64_t i = 0; i < 200; ++i)
            view.frameReady(frame.view(i));
    });
    std::uint64_t taken = 0;
    while (taken < 20 && view.counters().received < 200)
        if (view.takeFrame())
            ++taken;
    producer.join();
    if (view.takeFrame())
        ++taken;
    const auto c = view.counters();
    EXPECT_EQ(c.received, 200u);
    EXPECT_EQ(c.shown, taken);
    EXPECT_EQ(c.shown + c.replaced, c.received) << "every frame is shown or replaced by a newer one";
}
