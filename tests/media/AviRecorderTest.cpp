#include "media/AviRecorder.h"

#include "AviProbe.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <QFile>
#include <QThread>
#include <csignal>
#include <vector>

namespace tavix {
namespace {

using test::AviProbe;
using test::TempDir;

constexpr std::int64_t kMs = 1000000;

// Frames of one size whose content changes, so that every JPEG differs.
class Frames {
public:
    Frames(int width, int height) : width_(width), height_(height), pixels_(size_t(width) * 3 * height)
    {
        for (size_t i = 0; i < pixels_.size(); ++i)
            pixels_[i] = static_cast<uchar>((i * 7 + (i >> 9) * 13) & 0xff);
    }

    FrameView at(std::int64_t captureNs, int seed)
    {
        // A band that moves down the picture.
        const size_t row = size_t(width_) * 3;
        const size_t top = (static_cast<size_t>(seed) * 8) % static_cast<size_t>(height_);
        std::fill_n(pixels_.begin() + static_cast<std::ptrdiff_t>(top * row),
                    std::min<size_t>(8, static_cast<size_t>(height_) - top) * row,
                    static_cast<uchar>(seed * 40));
        FrameView v;
        v.bits = pixels_.data();
        v.width = width_;
        v.height = height_;
        v.bytesPerLine = width_ * 3;
        v.format = QImage::Format_RGB888;
        v.captureNs = captureNs;
        return v;
    }

private:
    int width_;
    int height_;
    std::vector<uchar> pixels_;
};

AviRecorder::Format format(int width, int height, double fps)
{
    AviRecorder::Format f;
    f.size = QSize(width, height);
    f.fps = fps;
    return f;
}

// Feeds frames every `stepMs` of capture time, waiting `paceMs` of real time
// between them, until the recorder stops taking them or `limit` frames. A
// frame the encoder has no buffer for yet is counted as dropped and handed
// again a moment later until it is taken, so that what the file holds does
// not depend on how fast this machine encodes. Returns the hand-overs refused.
std::int64_t feed(AviRecorder& recorder, Frames& frames, int stepMs, int paceMs, int limit = 1000)
{
    std::int64_t refused = 0;
    for (int i = 0; i < limit && recorder.busy(); ++i) {
        for (;;) {
            const std::int64_t droppedBefore = recorder.stats().framesDropped;
            recorder.addFrame(frames.at(std::int64_t(i) * stepMs * kMs, i));
            if (recorder.stats().framesDropped == droppedBefore || !recorder.busy())
                break;
            ++refused;
            QThread::msleep(2);
        }
        if (paceMs > 0)
            QThread::msleep(static_cast<unsigned long>(paceMs));
    }
    return refused;
}

TEST(AviRecorderTest, Start_WritesMotionJpegAviAtTheFramesSizeAndRate)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("clip.avi"));
    AviRecorder recorder;
    QString error;
    ASSERT_TRUE(recorder.start(path, format(320, 240, 25), 2, &error)) << error.toStdString();
    EXPECT_TRUE(recorder.busy());
    Frames frames(320, 240);
    const std::int64_t refused = feed(recorder, frames, 40, 5);
    ASSERT_TRUE(recorder.waitFinished(10000));

    const RecordingStats stats = recorder.stats();
    EXPECT_TRUE(stats.finished);
    EXPECT_TRUE(stats.failure.isEmpty()) << stats.failure.toStdString();
    EXPECT_EQ(stats.path, path);
    EXPECT_EQ(stats.framesDropped, refused);  // each frame refused counted once, none lost later
    EXPECT_NEAR(stats.framesWritten, 50, 1);
    EXPECT_NEAR(stats.seconds, 2.0, 0.05);
    EXPECT_FALSE(QFile::exists(AviRecorder::partName(path)));

    const AviProbe probe = AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(probe.format, QStringLiteral("avi"));
    EXPECT_EQ(probe.codec, QStringLiteral("mjpeg"));
    EXPECT_EQ(probe.width, 320);
    EXPECT_EQ(probe.height, 240);
    EXPECT_DOUBLE_EQ(probe.fps, 25.0);
    EXPECT_NEAR(probe.frames, 50, 1);
}

TEST(AviRecorderTest, SlowCamera_FileStillPlaysAtRealSpeed)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("slow.avi"));
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, format(160, 120, 25), 2));
    Frames frames(160, 120);
    // The camera delivers only every 100 ms: each frame stands for the time until the next.
    const std::int64_t refused = feed(recorder, frames, 100, 5);
    ASSERT_TRUE(recorder.waitFinished(10000));

    const AviProbe probe = AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_NEAR(probe.frames, 50, 1);
    EXPECT_EQ(recorder.stats().framesDropped, refused);
}

TEST(AviRecorderTest, FramesTheEncoderCannotTakeAreCountedAsDropped)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("fast.avi"));
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, format(2592, 1944, 30), 1));
    Frames frames(2592, 1944);
    // Thirty 5-megapixel frames handed over at once: far faster than any encoder.
    for (int i = 0; i < 30; ++i)
        recorder.addFrame(frames.at(std::int64_t(i) * 33 * kMs, i));
    recorder.addFrame(frames.at(std::int64_t(30) * 34 * kMs, 30));  // past the length: ends the file
    ASSERT_TRUE(recorder.waitFinished(60000));

    const RecordingStats stats = recorder.stats();
    EXPECT_GT(stats.framesDropped, 0);
    EXPECT_TRUE(stats.failure.isEmpty()) << stats.failure.toStdString();
    EXPECT_NEAR(stats.seconds, 1.0, 0.05);
    const AviProbe probe = AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_NEAR(probe.frames, 30, 1);  // dropped frames are filled by their predecessors
}

TEST(AviRecorderTest, Stop_EndsTheFileEarlyWithWhatItHas)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("short.avi"));
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, format(160, 120, 20), 10));
    Frames frames(160, 120);
    feed(recorder, frames, 50, 5, 10);
    EXPECT_TRUE(recorder.busy());
    recorder.stop();
    ASSERT_TRUE(recorder.waitFinished(10000));
    EXPECT_FALSE(recorder.busy());

    const AviProbe probe = AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_NEAR(probe.frames, 10, 1);
    EXPECT_TRUE(recorder.stats().failure.isEmpty());
}

TEST(AviRecorderTest, Start_RefusedWhileARecordingRuns)
{
    TempDir dir;
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(dir.file(QStringLiteral("a.avi")), format(160, 120, 20), 5));
    QString error;
    EXPECT_FALSE(recorder.start(dir.file(QStringLiteral("b.avi")), format(160, 120, 20), 5, &error));
    EXPECT_FALSE(error.isEmpty());
    recorder.stop();
    ASSERT_TRUE(recorder.waitFinished(10000));
    EXPECT_FALSE(QFile::exists(dir.file(QStringLiteral("b.avi"))));
    // Once closed, the next recording may start.
    EXPECT_TRUE(recorder.start(dir.file(QStringLiteral("b.avi")), format(160, 120, 20), 5));
}

TEST(AviRecorderTest, Start_RefusesAFrameFormatItCannotEncode)
{
    TempDir dir;
    AviRecorder recorder;
    AviRecorder::Format f = format(160, 120, 20);
    f.pixels = QImage::Format_Mono;
    QString error;
    EXPECT_FALSE(recorder.start(dir.file(QStringLiteral("a.avi")), f, 5, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(recorder.busy());
}

TEST(AviRecorderTest, FolderMissing_StartFailsWithTheReason)
{
    TempDir dir;
    AviRecorder recorder;
    QString error;
    EXPECT_FALSE(recorder.start(dir.file(QStringLiteral("no/such/a.avi")), format(160, 120, 20), 5, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(recorder.busy());
}

TEST(AviRecorderTest, DiskFullMidway_StopsAndKeepsAPlayableFile)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("full.avi"));
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, format(320, 240, 25), 10));
    Frames frames(320, 240);
    // A file size limit acts on the writes as a full disk does.
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 1024 * 1024;
    setrlimit(RLIMIT_FSIZE, &small);
    feed(recorder, frames, 40, 5);
    const bool finished = recorder.waitFinished(10000);
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    ASSERT_TRUE(finished);

    const RecordingStats stats = recorder.stats();
    EXPECT_FALSE(stats.failure.isEmpty());
    EXPECT_LT(stats.seconds, 10.0);
    ASSERT_TRUE(QFile::exists(path));
    const AviProbe probe = AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_GT(probe.frames, 5);
}

TEST(AviRecorderTest, FileRemovedWhileWriting_SaysSo)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("gone.avi"));
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, format(160, 120, 20), 1));
    Frames frames(160, 120);
    feed(recorder, frames, 50, 5, 5);
    ASSERT_TRUE(QFile::remove(AviRecorder::partName(path)));
    feed(recorder, frames, 50, 5);
    ASSERT_TRUE(recorder.waitFinished(10000));
    EXPECT_FALSE(recorder.stats().failure.isEmpty());
    EXPECT_FALSE(QFile::exists(path));
}

}  // namespace
}  // namespace tavix
