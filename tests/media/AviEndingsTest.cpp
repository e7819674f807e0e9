#include "media/AviClosing.h"
#include "media/AviRecorder.h"

#include "AviProbe.h"
#include "AviRiff.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <QFile>
#include <QThread>
#include <QtEndian>
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

namespace {

void put32(QByteArray& b, qsizetype at, quint32 v)
{
    for (int i = 0; i < 4; ++i)
        b[at + i] = static_cast<char>(v >> (8 * i));
}

QByteArray le32(quint32 v)
{
    QByteArray b(4, 0);
    put32(b, 0, v);
    return b;
}

// A standard index ("ix00") over frame chunks at `at` (file offsets of their
// headers), counted from `base`, as a writer of several parts puts one at the
// end of each part's movie list.
QByteArray standardIndex(const std::vector<qsizetype>& at, const std::vector<quint32>& sizes, qint64 base)
{
    QByteArray ix("ix00");
    ix += le32(quint32(24 + 8 * at.size()));
    ix += QByteArray("\x02\x00\x00\x01", 4);
    ix += le32(quint32(at.size()));
    ix += "00db";
    ix += le32(quint32(base)) + le32(quint32(quint64(base) >> 32)) + le32(0);
    for (size_t i = 0; i < at.size(); ++i)
        ix += le32(quint32(at[i] + 8 - base)) + le32(sizes[i]);
    return ix;
}

}  // namespace

// A recording over 1 GB cut by a full disk in its third RIFF part, as the
// writer leaves it: the first part with its standard index and idx1 and the
// sizes of the start, a whole second part, the third part's header from the
// start with three whole frames and half a fourth after it. Built small from
// the frames of a short recording.
TEST(AviEndings, Closing_AFileOfSeveralPartsCutInItsLast_IndexesEveryPartAndCountsAll)
{
    TempDir dir;
    const QString source = dir.file(QStringLiteral("source.avi"));
    {
        AviRecorder recorder;
        ASSERT_TRUE(recorder.start(source, clipFormat(), 10));
        Clip clip(40);
        clip.feed(recorder, 16);
        recorder.stop();
        ASSERT_TRUE(recorder.waitFinished(10000));
    }
    const QByteArray whole = dir.read(QStringLiteral("source.avi"));
    const qsizetype movi = whole.indexOf("movi") - 8;
    const qsizetype idx1 = whole.lastIndexOf("idx1");
    ASSERT_GT(movi, 0);
    QByteArrayList frames;
    for (qsizetype at = movi + 12; at < idx1;) {
        const quint32 size = qFromLittleEndian<quint32>(whole.constData() + at + 4);
        if (whole.mid(at, 4) == "00db")
            frames.push_back(whole.mid(at, 8 + size + (size & 1)));
        at += 8 + size + (size & 1);
    }
    ASSERT_GE(frames.size(), 8);
    auto sizeOf = [](const QByteArray& chunk) { return qFromLittleEndian<quint32>(chunk.constData() + 4); };

    // Part 1: frames 0..4, their standard index, their idx1.
    QByteArray file = whole.left(movi + 12);
    put32(file, 4, quint32(movi + 12 - 8));  // the sizes of the start
    put32(file, movi + 4, 4);
    std::vector<qsizetype> at;
    std::vector<quint32> sizes;
    QByteArray idx("idx1");
    idx += le32(16 * 5);
    for (int i = 0; i < 5; ++i) {
        at.push_back(file.size());
        sizes.push_back(sizeOf(frames[i]));
        idx += "00db" + le32(0x10) + le32(quint32(file.size() - movi - 8)) + le32(sizes.back());
        file += frames[i];
    }
    file += standardIndex(at, sizes, 0);
    file += idx;
    // Part 2, whole: frames 5..7 and its standard index, its sizes rewritten.
    const qsizetype second = file.size();
    file += "RIFF" + le32(0) + "AVIXLIST" + le32(0) + "movi";
    at.clear();
    sizes.clear();
    for (int i = 5; i < 8; ++i) {
        at.push_back(file.size());
        sizes.push_back(sizeOf(frames[i]));
        file += frames[i];
    }
    file += standardIndex(at, sizes, second);
    put32(file, second + 4, quint32(file.size() - second - 8));
    put32(file, second + 16, quint32(file.size() - second - 20));
    // Part 3, cut: the header of the start, frames 0..2, half of frame 3.
    file += "RIFF" + le32(12) + "AVIXLIST" + le32(0) + "movi";
    for (int i = 0; i < 3; ++i)
        file += frames[i];
    file += frames[3].left(frames[3].size() / 2);
    const QString path = dir.file(QStringLiteral("cut.avi"));
    dir.write(QStringLiteral("cut.avi"), file);

    const AviClosing::Result closed = AviClosing::close(path);
    ASSERT_TRUE(closed.ok) << closed.error.toStdString();
    EXPECT_EQ(closed.frames, 11);
    const AviRiff riff = AviRiff::of(path);
    ASSERT_TRUE(riff.ok) << riff.error.toStdString();
    EXPECT_EQ(riff.parts, 3);
    EXPECT_EQ(riff.frames, 11);
    EXPECT_EQ(riff.indxFrames, 11);
    EXPECT_EQ(riff.indxBroken, 0);
    EXPECT_EQ(riff.idx1Frames, 5);
    EXPECT_EQ(riff.avihFrames, 5);
    EXPECT_EQ(riff.strhLength, 11);
    EXPECT_EQ(riff.dmlhFrames, 11);
    const AviProbe probe = AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(probe.frames, 11);
    // Closed once, it is left as it is.
    const QByteArray before = dir.read(QStringLiteral("cut.avi"));
    const AviClosing::Result again = AviClosing::close(path);
    EXPECT_TRUE(again.ok);
    EXPECT_EQ(again.frames, 11);
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
