#include "AviProbe.h"
#include "SmallDisk.h"
#include "WriteKinds.h"
#include "media/AviRecorder.h"
#include "media/BmpFile.h"
#include "media/FrameFile.h"
#include "media/JpegWriter.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <map>

using namespace tavix;
using namespace tavix::reliability;
using tavix::test::SmallDisk;

namespace {

// Every file in the folder but the disk's filler, by name.
std::map<QString, QByteArray> contentOf(const QString& folder)
{
    std::map<QString, QByteArray> files;
    for (const QFileInfo& info : QDir(folder).entryInfoList(QDir::Files))
        files[info.fileName()] = SmallDisk::read(info.absoluteFilePath());
    return files;
}

QImage frame(int shade)
{
    QImage image(640, 480, QImage::Format_RGB888);
    image.fill(QColor(shade, 255 - shade, 90));
    return image;
}

class FullDisk : public ::testing::TestWithParam<Kind> {
protected:
    void SetUp() override
    {
        if (!disk.mounted())
            GTEST_SKIP() << "no right to mount a small filesystem here";
    }
    SmallDisk disk{8 << 20};
};

}  // namespace

// The write fails, the file written before stays as it was, and once there is
// room again the next write goes through.
TEST_P(FullDisk, TheEarlierFileStaysWhole_AndTheNextWriteWorksWhenThereIsRoom)
{
    const Kind kind = GetParam();
    prepare(kind, disk.path());
    ASSERT_TRUE(writeVersion(kind, disk.path(), 0));
    const auto before = contentOf(disk.path());
    disk.fill();
    ASSERT_LT(disk.freeBytes(), 4096);

    const bool written = writeVersion(kind, disk.path(), 1);

    if (kind != Kind::Settings) {  // the exit writes log their failure and go on
        EXPECT_FALSE(written);
    }
    auto after = contentOf(disk.path());
    after.erase(QStringLiteral(".filler"));
    for (const auto& [name, content] : before)
        EXPECT_EQ(after[name], content) << name.toStdString() << " changed on a full disk";
    disk.makeRoom();
    EXPECT_TRUE(writeVersion(kind, disk.path(), 1));
    EXPECT_NE(SmallDisk::read(filePath(kind, disk.path())),
              before.at(QFileInfo(filePath(kind, disk.path())).fileName()));
}

INSTANTIATE_TEST_SUITE_P(KeptFiles, FullDisk,
                         ::testing::Values(Kind::Settings, Kind::Calibration, Kind::Results, Kind::Bitmap,
                                           Kind::Jpeg, Kind::Comment, Kind::Series),
                         [](const auto& info) { return nameOf(info.param).toStdString(); });

// A picture a camera writes under the user's name is kept whole too; only the
// program's scratch bitmaps are written in place.
TEST(FullDiskCamera, ACameraBitmapUnderAKeptName_LeavesTheEarlierFileWhole)
{
    SmallDisk disk(8 << 20);
    if (!disk.mounted())
        GTEST_SKIP() << "no right to mount a small filesystem here";
    FrameFile::setScratchBitmap(disk.file(QStringLiteral("TavixStill.bmp")));
    const QString kept = disk.file(QStringLiteral("series_001.bmp"));
    QByteArray buffer;
    ASSERT_TRUE(FrameFile::encode(frame(40), kept, 90, buffer));
    ASSERT_EQ(FrameFile::store(kept, buffer), 0);
    const QByteArray earlier = SmallDisk::read(kept);
    disk.fill();

    ASSERT_TRUE(FrameFile::encode(frame(200), kept, 90, buffer));
    EXPECT_NE(FrameFile::store(kept, buffer), 0);

    EXPECT_EQ(SmallDisk::read(kept), earlier);
    FrameFile::setScratchBitmap(QString());
}

// A recording that fills the disk ends, and the file holds what fitted, playable.
TEST(FullDiskRecording, ARecordingThatFillsTheDisk_EndsWithAPlayableFile)
{
    SmallDisk disk(3 << 20);
    if (!disk.mounted())
        GTEST_SKIP() << "no right to mount a small filesystem here";
    const QString clip = disk.file(QStringLiteral("clip.avi"));
    AviRecorder recorder;
    AviRecorder::Format format;
    format.size = QSize(640, 480);
    format.fps = 30;
    format.quality = 95;
    ASSERT_TRUE(recorder.start(clip, format, 60));
    // Noise does not compress: a few dozen frames fill 3 MB.
    QImage noise(format.size, QImage::Format_RGB888);
    quint32 seed = 1;
    for (int i = 0; i < 600 && recorder.busy(); ++i) {
        for (int y = 0; y < noise.height(); ++y) {
            uchar* line = noise.scanLine(y);
            for (int x = 0; x < noise.width() * 3; ++x)
                line[x] = uchar((seed = seed * 1664525u + 1013904223u) >> 24);
        }
        recorder.addFrame({noise.constBits(), noise.width(), noise.height(), noise.bytesPerLine(),
                           noise.format(), std::uint64_t(i), i * 33'333'333LL});
        QThread::msleep(10);
    }
    recorder.stop();
    ASSERT_TRUE(recorder.waitFinished(30000));

    const RecordingStats stats = recorder.stats();
    EXPECT_FALSE(stats.failure.isEmpty()) << "a full disk ends the recording with a reason";
    EXPECT_TRUE(stats.finished);
    const QString kept = QFile::exists(clip) ? clip : AviRecorder::partName(clip);
    const test::AviProbe probe = test::AviProbe::of(kept);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    // No more frames than were written, and the disk full of them: the frames
    // played fill the file but for its headers and the frame cut off.
    QByteArray jpeg;
    ASSERT_EQ(JpegWriter::encode(noise, format.quality, jpeg), JpegWriter::kOk);
    const qint64 fileBytes = QFileInfo(kept).size();
    EXPECT_LE(probe.frames, stats.framesWritten);
    EXPECT_NEAR(probe.frames, fileBytes / jpeg.size(), 1) << fileBytes << " bytes, frames of " << jpeg.size();
    EXPECT_GT(fileBytes, (3 << 20) * 3 / 4) << "the file had most of the disk";
    std::printf("[ figures  ] full disk: %lld frames written, %d played, failure \"%s\"\n",
                static_cast<long long>(stats.framesWritten), probe.frames, qPrintable(stats.failure));
}
