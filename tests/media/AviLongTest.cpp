#include "media/AviRecorder.h"

#include "AviRiff.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QThread>
#include <csignal>
#include <cstdio>
#include <vector>

namespace tavix {
namespace {

// Long checks, run by scripts/long_checks.sh and not by the test command: the
// file is kept in TAVIX_LONG_DIR for the players the script asks afterwards.

// Noise, which hardly compresses (about a megabyte a frame), until the
// recorder takes no more or 2000 frames went in. Each frame waits for the
// encoder to be done with the one before, so that a busy machine makes the
// file no smaller.
void feedNoise(AviRecorder& recorder)
{
    std::vector<quint32> pixels(size_t(1280) * 1024 * 3 / 4 + 1);
    for (int n = 0; recorder.busy() && n < 2000; ++n) {
        QRandomGenerator::global()->fillRange(pixels.data(), pixels.size());
        FrameView v;
        v.bits = reinterpret_cast<const uchar*>(pixels.data());
        v.width = 1280;
        v.height = 1024;
        v.bytesPerLine = 1280 * 3;
        v.format = QImage::Format_RGB888;
        v.captureNs = std::int64_t(n) * 40'000'000;
        recorder.addFrame(v);
        for (int waited = 0; waited < 5000 && recorder.busy(); waited += 5) {
            const RecordingStats stats = recorder.stats();
            if (stats.framesWritten + stats.framesDropped >= n)  // the frame rate element holds back one
                break;
            QThread::msleep(5);
        }
    }
}

AviRecorder::Format largeFormat()
{
    AviRecorder::Format format;
    format.size = QSize(1280, 1024);
    format.fps = 25;
    format.quality = 95;
    return format;
}

// The file's own structure: several parts, every frame indexed and counted.
void expectSeveralPartsComplete(const QString& path, std::int64_t framesWritten)
{
    const test::AviRiff riff = test::AviRiff::of(path);
    ASSERT_TRUE(riff.ok) << riff.error.toStdString();
    EXPECT_GT(riff.parts, 1);
    EXPECT_TRUE(riff.indexed()) << "indx " << riff.indxFrames << " idx1 " << riff.idx1Frames;
    EXPECT_EQ(riff.indxBroken, 0);
    EXPECT_TRUE(riff.countsMatch()) << "avih " << riff.avihFrames << " strh " << riff.strhLength << " dmlh "
                                    << riff.dmlhFrames;
    EXPECT_EQ(riff.frames, framesWritten);
    std::printf("%s: %lld bytes, %d RIFF parts, %lld frames\n", qPrintable(QFileInfo(path).fileName()),
                static_cast<long long>(QFileInfo(path).size()), riff.parts,
                static_cast<long long>(riff.frames));
}

}  // namespace

TEST(AviLong, DISABLED_OverOneGigabyte_IsOpenDmlIndexedAndCounted)
{
    const QString path =
        qEnvironmentVariable("TAVIX_LONG_DIR", QDir::tempPath()) + QStringLiteral("/over1gb.avi");
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, largeFormat(), 80));
    feedNoise(recorder);
    ASSERT_TRUE(recorder.waitFinished(600'000));
    const RecordingStats stats = recorder.stats();
    EXPECT_TRUE(stats.failure.isEmpty()) << stats.failure.toStdString();
    EXPECT_GT(QFileInfo(path).size(), qint64(1) << 30);
    expectSeveralPartsComplete(path, stats.framesWritten);
    std::printf("written %lld, dropped %lld\n", static_cast<long long>(stats.framesWritten),
                static_cast<long long>(stats.framesDropped));
}

// A full disk past the first gigabyte: the file, cut in its second part, is
// closed with every whole frame (a file size limit fails the writes as a full
// disk does).
TEST(AviLong, DISABLED_CutShortOverOneGigabyte_IsClosedWithEveryWholeFrame)
{
    const QString path =
        qEnvironmentVariable("TAVIX_LONG_DIR", QDir::tempPath()) + QStringLiteral("/cut1gb.avi");
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, largeFormat(), 80));
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = old;
    limit.rlim_cur = (rlim_t(1) << 30) + (rlim_t(200) << 20);
    setrlimit(RLIMIT_FSIZE, &limit);
    feedNoise(recorder);
    const bool finished = recorder.waitFinished(600'000);
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    ASSERT_TRUE(finished);
    const RecordingStats stats = recorder.stats();
    EXPECT_FALSE(stats.failure.isEmpty());
    EXPECT_FALSE(QFile::exists(AviRecorder::partName(path)));
    EXPECT_GT(QFileInfo(path).size(), qint64(1) << 30);
    expectSeveralPartsComplete(path, stats.framesWritten);
}

}  // namespace tavix
