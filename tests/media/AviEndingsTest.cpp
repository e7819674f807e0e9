#include "media/AviClosing.h"
#include "media/AviRecorder.h"

#include "AviProbe.h"
#include "AviRiff.h"
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
using test::AviRiff;
using test::TempDir;

// Grey pictures, a shade per frame, stamped `stepMs` apart.
class Clip {
public:
    explicit Clip(int stepMs) : stepMs_(stepMs), pixels_(size_t(kWidth) * 3 * kHeight) {}

    FrameView frame(int n)
    {
        std::fill(pixels_.begin(), pixels_.end(), static_cast<uchar>(n * 37));
        for (size_t i = 0; i < pixels_.size(); i += 97)
            pixels_[i] = static_cast<uchar>(i + static_cast<size_t>(n));
        FrameView v;
        v.bits = pixels_.data();
        v.width = kWidth;
        v.height = kHeight;
        v.bytesPerLine = kWidth * 3;
        v.format = QImage::Format_RGB888;
        v.captureNs = std::int64_t(n) * stepMs_ * 1000000;
        return v;
    }

    // Frames until the recorder takes no more or `limit` frames, 3 ms of real time apart.
    void feed(AviRecorder& recorder, int limit)
    {
        for (; next_ < limit && recorder.busy(); ++next_) {
            recorder.addFrame(frame(next_));
            QThread::msleep(3);
        }
    }

    static constexpr int kWidth = 320, kHeight = 240;

private:
    int stepMs_;
    int next_ = 0;
    std::vector<uchar> pixels_;
};

AviRecorder::Format clipFormat()
{
    AviRecorder::Format f;
    f.size = QSize(Clip::kWidth, Clip::kHeight);
    f.fps = 25;
    return f;
}

// The file's own structure and ffprobe agree on a complete file of `frames` frames.
void expectComplete(const QString& path, std::int64_t frames)
{
    const AviRiff riff = AviRiff::of(path);
    ASSERT_TRUE(riff.ok) << riff.error.toStdString();
    EXPECT_EQ(riff.frames, frames);
    EXPECT_TRUE(riff.indexed()) << "idx1 " << riff.idx1Frames << ", indx " << riff.indxFrames << ", frames "
                                << riff.frames;
    EXPECT_TRUE(riff.countsMatch()) << "avih " << riff.avihFrames << ", strh " << riff.strhLength << ", dmlh "
                                    << riff.dmlhFrames << ", frames " << riff.frames;
    const AviProbe probe = AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(probe.frames, frames);
}

TEST(AviEndings, LengthReached_TheFileIsIndexedAndCountsItsFrames)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("length.avi"));
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, clipFormat(), 2));
    Clip clip(40);
    clip.feed(recorder, 1000);
    ASSERT_TRUE(recorder.waitFinished(10000));
    const RecordingStats stats = recorder.stats();
    EXPECT_TRUE(stats.failure.isEmpty()) << stats.failure.toStdString();
    expectComplete(path, stats.framesWritten);
}

TEST(AviEndings, Stopped_TheFileIsIndexedAndCountsItsFrames)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("stopped.avi"));
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, clipFormat(), 10));
    Clip clip(40);
    clip.feed(recorder, 12);
    recorder.stop();
    ASSERT_TRUE(recorder.waitFinished(10000));
    const RecordingStats stats = recorder.stats();
    EXPECT_TRUE(stats.failure.isEmpty()) << stats.failure.toStdString();
    expectComplete(path, stats.framesWritten);
}

TEST(AviEndings, DiskFull_TheFramesOnDiskAreIndexedAndCounted)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("full.avi"));
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, clipFormat(), 10));
    Clip clip(40);
    // A file size limit fails the writes as a full disk does, the index's too.
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 512 * 1024;
    setrlimit(RLIMIT_FSIZE, &small);
    clip.feed(recorder, 1000);
    const bool finished = recorder.waitFinished(10000);
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    ASSERT_TRUE(finished);

    const RecordingStats stats = recorder.stats();
    EXPECT_FALSE(stats.failure.isEmpty());
    EXPECT_GT(stats.framesWritten, 5);
    EXPECT_FALSE(QFile::exists(AviRecorder::partName(path)));
    EXPECT_LE(QFile(path).size(), 512 * 1024);
    expectComplete(path, stats.framesWritten);
}

// A finished file cut as a writer that died leaves it: the index and the
// second half of the last frame gone, the headers as written at the start.
TEST(AviEndings, Closing_AFileCutInTheMiddleOfAFrame_KeepsTheWholeFrames)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("cut.avi"));
    {
        AviRecorder recorder;
        ASSERT_TRUE(recorder.start(path, clipFormat(), 1));
        Clip clip(40);
        clip.feed(recorder, 1000);
        ASSERT_TRUE(recorder.waitFinished(10000));
    }
    const AviRiff whole = AviRiff::of(path);
    ASSERT_TRUE(whole.ok) << whole.error.toStdString();
    ASSERT_GT(whole.frames, 10);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    // The last frame's chunk, before the index at the end.
    const qsizetype last = bytes.lastIndexOf("00db", bytes.lastIndexOf("idx1"));
    ASSERT_GT(last, 0);
    ASSERT_TRUE(file.resize(last + 100));
    file.close();

    const AviClosing::Result closed = AviClosing::close(path);
    ASSERT_TRUE(closed.ok) << closed.error.toStdString();
    EXPECT_EQ(closed.frames, whole.frames - 1);
    expectComplete(path, whole.frames - 1);
    // Closed once, it is left as it is.
    const QByteArray before = dir.read(QStringLiteral("cut.avi"));
    EXPECT_TRUE(AviClosing::close(path).ok);
    EXPECT_EQ(dir.read(QStringLiteral("cut.avi")), before);
}

TEST(AviEndings, Closing_SomethingThatIsNoAvi_SaysSo)
{
    TempDir dir;
    dir.write(QStringLiteral("no.avi"), "RIFF....WAVEfmt ");
    const AviClosing::Result closed = AviClosing::close(dir.file(QStringLiteral("no.avi")));
    EXPECT_FALSE(closed.ok);
    EXPECT_FALSE(closed.error.isEmpty());
}

}  // namespace
}  // namespace tavix
