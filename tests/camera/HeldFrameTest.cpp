#include "AviProbe.h"
#include "AviRiff.h"
#include "TempDir.h"
#include "camera/HeldFrame.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <atomic>
#include <thread>
#include <vector>

using namespace tavix;
using tavix::test::TempDir;

namespace {

class RecordingSink : public FrameSink {
public:
    void frameReady(const FrameView& frame) override { seen.push_back(frame.sequence); }
    std::vector<std::uint64_t> seen;
};

// A frame whose rows are padded past their pixels, as cameras send them.
struct PaddedFrame {
    PaddedFrame(int width, int height, QImage::Format format, int pad)
    {
        const int depth = QImage(1, 1, format).depth() / 8;
        view.width = width;
        view.height = height;
        view.format = format;
        view.bytesPerLine = qsizetype(width) * depth + pad;
        bytes.resize(static_cast<size_t>(view.bytesPerLine) * static_cast<size_t>(height), 0xEE);
        for (int y = 0; y < height; ++y)
            for (qsizetype x = 0; x < qsizetype(width) * depth; ++x)
                bytes[static_cast<size_t>(y * view.bytesPerLine + x)] =
                    static_cast<uchar>((x * 7 + y * 13) & 0xFF);
        view.bits = bytes.data();
    }
    QImage image() const
    {
        return QImage(view.bits, view.width, view.height, view.bytesPerLine, view.format).copy();
    }
    std::vector<uchar> bytes;
    FrameView view;
};

// Hands `view` over as a driver's stream thread does.
void holdFrame(HeldFrame& held, const FrameView& view)
{
    const auto lock = held.lock();
    held.hold(view);
}

// Frames a tenth of a second apart from 0 on, each given time to reach the encoder.
void holdTenthsApart(HeldFrame& held, FrameView view, int count)
{
    for (int n = 0; n < count; ++n) {
        view.captureNs = qint64(n) * 100'000'000;
        holdFrame(held, view);
        QThread::msleep(10);
    }
}

// Waits up to 20 s for the recording's file to be closed; true when it is.
bool recordingEnds(const HeldFrame& held)
{
    QElapsedTimer t;
    t.start();
    while (held.recording() && t.elapsed() < 20000)
        QThread::msleep(20);
    return !held.recording();
}

}  // namespace

TEST(HeldFrame, NothingHeld_SavesCopiesAndRecordsNothing)
{
    HeldFrame frame;
    TempDir dir;
    QImage copy;
    EXPECT_EQ(frame.save(dir.file(QStringLiteral("a.bmp"))), HeldFrame::kNoFrame);
    EXPECT_FALSE(dir.exists(QStringLiteral("a.bmp")));
    EXPECT_EQ(frame.copy(copy), HeldFrame::kNoFrame);
    EXPECT_TRUE(copy.isNull());
    EXPECT_EQ(frame.record(dir.file(QStringLiteral("a.avi")), 30, 1), HeldFrame::kNoFrame);
    EXPECT_FALSE(frame.recording());
    RecordingStats stats;
    EXPECT_FALSE(frame.recordingStats(stats));
    EXPECT_EQ(frame.format(), QImage::Format_Invalid);
}

TEST(HeldFrame, Hold_HandsEachFrameToTheSink_UntilTheSinkIsTakenAway)
{
    HeldFrame frame;
    RecordingSink sink;
    PaddedFrame pixels(8, 4, QImage::Format_RGB888, 0);
    frame.setSink(&sink);
    for (std::uint64_t n = 1; n <= 3; ++n) {
        pixels.view.sequence = n;
        holdFrame(frame, pixels.view);
    }
    frame.setSink(nullptr);
    pixels.view.sequence = 4;
    holdFrame(frame, pixels.view);
    EXPECT_EQ(sink.seen, (std::vector<std::uint64_t>{1, 2, 3}));
    EXPECT_EQ(frame.size(), QSize(8, 4));
    EXPECT_EQ(frame.format(), QImage::Format_RGB888);
    {
        const auto lock = frame.lock();
        EXPECT_EQ(frame.view().sequence, 4u);
        frame.clear();
    }
    EXPECT_EQ(frame.format(), QImage::Format_Invalid);
}

// Grey, RGB and 32-bit frames with padded rows: the copy holds the pixels
// only, and an image of the right size and format is filled where it is.
TEST(HeldFrame, Copy_TakesThePixelsOfEveryRowOfEveryFormat_AndReusesTheImage)
{
    for (const QImage::Format format :
         {QImage::Format_Grayscale8, QImage::Format_RGB888, QImage::Format_RGB32}) {
        HeldFrame frame;
        PaddedFrame pixels(33, 5, format, 7);
        holdFrame(frame, pixels.view);
        QImage copy;
        ASSERT_EQ(frame.copy(copy), 0);
        EXPECT_EQ(copy.format(), format);
        EXPECT_EQ(copy, pixels.image()) << format;
        const uchar* buffer = copy.constBits();
        ASSERT_EQ(frame.copy(copy), 0);
        EXPECT_EQ(copy.constBits(), buffer) << "the image's own buffer is filled again";
    }
}

TEST(HeldFrame, Save_WritesTheHeldFrame_AsBitmapOrJpeg_AndSaysWhenTheDiskRefuses)
{
    HeldFrame frame;
    PaddedFrame pixels(16, 12, QImage::Format_RGB888, 3);
    holdFrame(frame, pixels.view);
    TempDir dir;
    ASSERT_EQ(frame.save(dir.file(QStringLiteral("still.bmp"))), 0);
    QImage bmp;
    ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("still.bmp")), bmp), 0);
    EXPECT_EQ(bmp.convertToFormat(QImage::Format_RGB888), pixels.image());

    frame.setQuality(95);
    ASSERT_EQ(frame.save(dir.file(QStringLiteral("still.jpg"))), 0);
    EXPECT_TRUE(dir.read(QStringLiteral("still.jpg")).startsWith("\xFF\xD8"));
    EXPECT_EQ(QImage(dir.file(QStringLiteral("still.jpg"))).size(), QSize(16, 12));

    EXPECT_EQ(frame.save(dir.file(QStringLiteral("missing/still.bmp"))), HeldFrame::kWriteFailed);
}

TEST(HeldFrame, Record_TakesTheHeldFramesSize_AndTheFramesHeldAfterIt)
{
    HeldFrame frame;
    PaddedFrame pixels(64, 48, QImage::Format_RGB888, 0);
    holdFrame(frame, pixels.view);
    TempDir dir;
    const QString path = dir.file(QStringLiteral("clip.avi"));
    ASSERT_EQ(frame.record(path, 10, 1), 0);
    EXPECT_TRUE(frame.recording());
    // Ten frames, and the one at one second that ends the clip.
    holdTenthsApart(frame, pixels.view, 11);
    ASSERT_TRUE(recordingEnds(frame));
    RecordingStats stats;
    ASSERT_TRUE(frame.recordingStats(stats));
    EXPECT_TRUE(stats.finished);
    EXPECT_EQ(stats.framesWritten, 10);
    const test::AviProbe probe = test::AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(QSize(probe.width, probe.height), QSize(64, 48));
    EXPECT_NEAR(probe.fps, 10, 0.5);
    EXPECT_EQ(probe.frames, 10);
}

TEST(HeldFrame, EndRecording_ClosesTheFileWithWhatItHolds)
{
    HeldFrame frame;
    PaddedFrame pixels(64, 48, QImage::Format_RGB888, 0);
    holdFrame(frame, pixels.view);
    TempDir dir;
    const QString path = dir.file(QStringLiteral("cut.avi"));
    ASSERT_EQ(frame.record(path, 10, 60), 0);
    holdTenthsApart(frame, pixels.view, 10);
    frame.endRecording();
    ASSERT_TRUE(recordingEnds(frame));
    const test::AviProbe probe = test::AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_NEAR(probe.frames, 10, 1);  // a minute was asked for: 600 frames
}

TEST(HeldFrame, Read_ShowsTheHeldFrameWhereItLies_UnderTheLock)
{
    HeldFrame frame;
    int reads = 0;
    EXPECT_EQ(frame.read([&](const FrameView&) { ++reads; }), HeldFrame::kNoFrame);
    EXPECT_EQ(reads, 0);
    PaddedFrame pixels(33, 5, QImage::Format_RGB888, 7);
    PaddedFrame newer(33, 5, QImage::Format_RGB888, 9);
    holdFrame(frame, pixels.view);
    std::atomic<bool> replaced{false};
    std::thread stream;
    ASSERT_EQ(frame.read([&](const FrameView& view) {
        ++reads;
        // The stream's next frame waits until the reader is done with this one.
        stream = std::thread([&] {
            holdFrame(frame, newer.view);
            replaced = true;
        });
        QThread::msleep(50);
        EXPECT_FALSE(replaced);
        EXPECT_EQ(view.bits, pixels.view.bits);
        EXPECT_EQ(view.bytesPerLine, pixels.view.bytesPerLine);
    }),
              0);
    stream.join();
    EXPECT_TRUE(replaced);
    EXPECT_EQ(reads, 1);
    frame.lose();
    EXPECT_EQ(frame.read([&](const FrameView&) { ++reads; }), HeldFrame::kCameraLost);
    EXPECT_EQ(reads, 1);
}

TEST(HeldFrame, Lost_RefusesTheOldFrame_AndEndsTheRecordingWithACompleteFile_UntilFoundAgain)
{
    HeldFrame frame;
    PaddedFrame pixels(64, 48, QImage::Format_RGB888, 0);
    holdFrame(frame, pixels.view);
    TempDir dir;
    const QString path = dir.file(QStringLiteral("lost.avi"));
    ASSERT_EQ(frame.record(path, 10, 60), 0);
    holdTenthsApart(frame, pixels.view, 8);

    frame.lose();

    ASSERT_TRUE(recordingEnds(frame));
    const test::AviRiff riff = test::AviRiff::of(path);
    ASSERT_TRUE(riff.ok) << riff.error.toStdString();
    EXPECT_TRUE(riff.indexed());
    EXPECT_TRUE(riff.countsMatch());
    EXPECT_NEAR(riff.frames, 8, 1);
    EXPECT_FALSE(QFile::exists(path + QStringLiteral(".part")));
    EXPECT_EQ(frame.save(dir.file(QStringLiteral("a.bmp"))), HeldFrame::kCameraLost);
    EXPECT_FALSE(dir.exists(QStringLiteral("a.bmp")));
    QImage copy;
    EXPECT_EQ(frame.copy(copy), HeldFrame::kCameraLost);
    EXPECT_EQ(frame.record(dir.file(QStringLiteral("b.avi")), 10, 5), HeldFrame::kCameraLost);

    frame.found();
    EXPECT_EQ(frame.copy(copy), 0);
}
