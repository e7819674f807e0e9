#include "media/AviRecorder.h"

#include "AviRiff.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QThread>
#include <vector>

namespace tavix {
namespace {

// Long checks, run by scripts/long_checks.sh and not by the test command: the
// file is kept in TAVIX_LONG_DIR for the players the script asks afterwards.
TEST(AviLong, DISABLED_OverOneGigabyte_IsOpenDmlIndexedAndCounted)
{
    const QString folder = qEnvironmentVariable("TAVIX_LONG_DIR", QDir::tempPath());
    const QString path = folder + QStringLiteral("/over1gb.avi");
    AviRecorder::Format format;
    format.size = QSize(1280, 1024);
    format.fps = 25;
    format.quality = 95;
    AviRecorder recorder;
    ASSERT_TRUE(recorder.start(path, format, 80));
    // Noise hardly compresses: about a megabyte a frame.
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
        QThread::msleep(30);
    }
    ASSERT_TRUE(recorder.waitFinished(600'000));
    const RecordingStats stats = recorder.stats();
    EXPECT_TRUE(stats.failure.isEmpty()) << stats.failure.toStdString();
    EXPECT_GT(QFileInfo(path).size(), qint64(1) << 30);
    const test::AviRiff riff = test::AviRiff::of(path);
    ASSERT_TRUE(riff.ok) << riff.error.toStdString();
    EXPECT_GT(riff.parts, 1);
    EXPECT_TRUE(riff.indexed()) << "indx " << riff.indxFrames << " idx1 " << riff.idx1Frames;
    EXPECT_EQ(riff.indxBroken, 0);
    EXPECT_TRUE(riff.countsMatch()) << "avih " << riff.avihFrames << " strh " << riff.strhLength << " dmlh "
                                    << riff.dmlhFrames;
    EXPECT_EQ(riff.frames, stats.framesWritten);
    std::printf("over1gb.avi: %lld bytes, %d RIFF parts, %lld frames, written %lld, dropped %lld\n",
                static_cast<long long>(QFileInfo(path).size()), riff.parts,
                static_cast<long long>(riff.frames), static_cast<long long>(stats.framesWritten),
                static_cast<long long>(stats.framesDropped));
}

}  // namespace
}  // namespace tavix
