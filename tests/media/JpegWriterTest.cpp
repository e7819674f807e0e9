#include "TempDir.h"
#include "media/JpegWriter.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QRandomGenerator>
#include <csignal>
#include <cstring>
#include <ostream>

using namespace tavix;
using tavix::test::TempDir;

namespace {

// A picture with smooth areas, edges and some noise, like a camera still.
QImage scene(int width, int height, QImage::Format format = QImage::Format_RGB888, quint32 seed = 3)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator rng(seed);
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int n = static_cast<int>(rng.bounded(9));
            line[x] =
                qRgb((x * 255 / width + n) & 255, (y * 255 / height + n) & 255, ((x + y) / 3 + n) & 255);
        }
    }
    QPainter painter(&image);
    painter.setPen(QPen(Qt::black, 2));
    for (int x = 10; x < width; x += 25)
        painter.drawLine(x, height / 4, x, height / 2);
    painter.setBrush(QColor(40, 60, 160));
    painter.drawEllipse(QPoint(width / 2, height * 2 / 3), width / 6, height / 6);
    painter.end();
    return image.convertToFormat(format);
}

QByteArray qtJpeg(const QImage& image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    EXPECT_TRUE(writer.write(image)) << writer.errorString().toStdString();
    return bytes;
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

// --- the routine's rules ---

TEST(SaveJpeg, Returns13AndWritesNothing_WhenNoPictureIsGiven)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("none.jpg"));

    EXPECT_EQ(SaveJpeg(nullptr, path, 75), 13);

    EXPECT_FALSE(QFile::exists(path));
}

TEST(SaveJpeg, Returns13AndKeepsOldFile_WhenThePictureHasNoPixels)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("old.jpg"), "old");
    const QImage empty;

    EXPECT_EQ(SaveJpeg(&empty, path, 75), 13);

    EXPECT_EQ(dir.read(QStringLiteral("old.jpg")), QByteArray("old"));
}

TEST(SaveJpeg, ReturnsZeroAndWritesAJpegFile)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("still.jpg"));
    const QImage picture = scene(160, 120);

    ASSERT_EQ(SaveJpeg(&picture, path, 75), 0);

    QImageReader reader(path);
    EXPECT_EQ(reader.format(), QByteArray("jpeg"));
    EXPECT_EQ(reader.read().size(), QSize(160, 120));
}

// The quality reaches the compressor as given: the file is byte for byte what
// Qt's own JPEG writer makes at that quality (and differs from its neighbour).
class SaveJpegQuality : public ::testing::TestWithParam<int> {};

TEST_P(SaveJpegQuality, QualityReachesTheEncoderUnchanged)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("q.jpg"));
    const QImage picture = scene(96, 64);
    const int quality = GetParam();

    ASSERT_EQ(SaveJpeg(&picture, path, static_cast<quint8>(quality)), 0);

    const QByteArray written = fileBytes(path);
    EXPECT_EQ(written, qtJpeg(picture, quality));
    EXPECT_NE(written, qtJpeg(picture, quality == 100 ? 99 : quality + 1));
}

INSTANTIATE_TEST_SUITE_P(Qualities, SaveJpegQuality, ::testing::Values(10, 11, 50, 75, 99, 100));

class SaveJpegQualityAbove100 : public ::testing::TestWithParam<int> {};

TEST_P(SaveJpegQualityAbove100, QualityIsCutTo100)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("q.jpg"));
    const QImage picture = scene(96, 64);

    ASSERT_EQ(SaveJpeg(&picture, path, static_cast<quint8>(GetParam())), 0);

    const QByteArray written = fileBytes(path);
    EXPECT_EQ(written, qtJpeg(picture, 100));
    EXPECT_NE(written, qtJpeg(picture, 99));
}

INSTANTIATE_TEST_SUITE_P(Qualities, SaveJpegQualityAbove100, ::testing::Values(101, 150, 255));

TEST(SaveJpeg, HigherQualityGivesALargerFile)
{
    TempDir dir;
    const QImage picture = scene(320, 240);
    ASSERT_EQ(SaveJpeg(&picture, dir.file(QStringLiteral("10.jpg")), 10), 0);
    ASSERT_EQ(SaveJpeg(&picture, dir.file(QStringLiteral("100.jpg")), 100), 0);

    EXPECT_LT(dir.read(QStringLiteral("10.jpg")).size() * 4, dir.read(QStringLiteral("100.jpg")).size());
}

// --- picture formats ---

class JpegWriterFormat : public ::testing::TestWithParam<QImage::Format> {};

TEST_P(JpegWriterFormat, Encode_GivesWhatQtWritesForTheSamePicture)
{
    const QImage picture = scene(120, 90, GetParam());
    QByteArray bytes;

    ASSERT_EQ(JpegWriter::encode(picture, 80, bytes), 0);

    EXPECT_EQ(bytes, qtJpeg(picture, 80));
}

INSTANTIATE_TEST_SUITE_P(Formats, JpegWriterFormat,
                         ::testing::Values(QImage::Format_RGB888, QImage::Format_RGB32, QImage::Format_ARGB32,
                                           QImage::Format_ARGB32_Premultiplied, QImage::Format_BGR888,
                                           QImage::Format_RGBX8888, QImage::Format_RGBA8888,
                                           QImage::Format_Grayscale8, QImage::Format_RGB16,
                                           QImage::Format_Indexed8));

TEST(JpegWriter, Encode_WritesOneChannel_ForAGreyPicture)
{
    QByteArray bytes;
    ASSERT_EQ(JpegWriter::encode(scene(64, 48, QImage::Format_Grayscale8), 75, bytes), 0);

    EXPECT_EQ(QImage::fromData(bytes).format(), QImage::Format_Grayscale8);
}

TEST(JpegWriter, Encode_KeepsThePicturesResolution)
{
    QImage picture = scene(64, 48);
    picture.setDotsPerMeterX(5000);  // 50 dots per centimetre
    picture.setDotsPerMeterY(5000);
    QByteArray bytes;

    ASSERT_EQ(JpegWriter::encode(picture, 75, bytes), 0);

    const QImage back = QImage::fromData(bytes);
    EXPECT_EQ(back.dotsPerMeterX(), 5000);
    EXPECT_EQ(back.dotsPerMeterY(), 5000);
}

TEST(JpegWriter, Encode_RefusesAPictureWiderThanAJpegFileHolds)
{
    const QImage picture(JpegWriter::kMaxSide + 1, 1, QImage::Format_RGB888);
    QByteArray bytes = "left over";

    EXPECT_EQ(JpegWriter::encode(picture, 75, bytes), JpegWriter::kInvalidPicture);
}

TEST(JpegWriter, Encode_ReplacesTheBuffersContent_AndGrowsItForALargePicture)
{
    QByteArray bytes(100, 'x');
    // Noise at the highest quality compresses worst: more than the first guess.
    QImage noise(400, 300, QImage::Format_RGB888);
    QRandomGenerator rng(9);
    for (int y = 0; y < noise.height(); ++y)
        for (qsizetype i = 0; i < noise.bytesPerLine(); ++i)
            noise.scanLine(y)[i] = static_cast<uchar>(rng.bounded(256));

    ASSERT_EQ(JpegWriter::encode(noise, 100, bytes), 0);

    EXPECT_TRUE(bytes.startsWith("\xff\xd8"));
    EXPECT_TRUE(bytes.endsWith("\xff\xd9"));
    EXPECT_EQ(bytes, qtJpeg(noise, 100));
}

TEST(JpegWriter, EncodeRows_GivesTheFileOfThePicture_WithRowsTakenInAnyOrderOfMemory)
{
    QImage picture = scene(70, 45, QImage::Format_BGR888);
    picture.setDotsPerMeterX(3780);
    picture.setDotsPerMeterY(3780);
    // The rows stored bottom-up, as in a bitmap file.
    const qsizetype rowBytes = picture.bytesPerLine();
    QByteArray flipped(rowBytes * picture.height(), '\0');
    for (int y = 0; y < picture.height(); ++y)
        std::memcpy(flipped.data() + (picture.height() - 1 - y) * rowBytes, picture.constScanLine(y),
                    static_cast<size_t>(rowBytes));
    const auto* last =
        reinterpret_cast<const uchar*>(flipped.constData()) + (picture.height() - 1) * rowBytes;
    JpegWriter::Rows rows{picture.width(),
                          picture.height(),
                          picture.format(),
                          3780,
                          3780,
                          [&](int y) { return last - y * rowBytes; }};
    QByteArray fromRows;
    QByteArray fromPicture;

    ASSERT_EQ(JpegWriter::encode(rows, 80, fromRows), JpegWriter::kOk);
    ASSERT_EQ(JpegWriter::encode(picture, 80, fromPicture), JpegWriter::kOk);
    EXPECT_EQ(fromRows, fromPicture);
}

TEST(JpegWriter, EncodeRows_RefusesRowsThatWouldNeedConverting)
{
    const QImage picture = scene(8, 8, QImage::Format_RGB16);
    JpegWriter::Rows rows{8, 8, picture.format(), 0, 0, [&](int y) { return picture.constScanLine(y); }};
    QByteArray bytes;

    EXPECT_EQ(JpegWriter::encode(rows, 75, bytes), JpegWriter::kNoPicture);
    rows.format = QImage::Format_RGB888;
    rows.row = nullptr;
    EXPECT_EQ(JpegWriter::encode(rows, 75, bytes), JpegWriter::kNoPicture);
}

// --- file errors ---

TEST(SaveJpeg, Returns10AndCreatesNothing_WhenTheFolderIsMissing)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("missing/still.jpg"));
    const QImage picture = scene(32, 32);

    EXPECT_EQ(SaveJpeg(&picture, path, 75), JpegWriter::kFolderMissing);

    EXPECT_FALSE(QFile::exists(path));
}

TEST(SaveJpeg, Returns7AndKeepsTheOldFileWhole_WhenTheDiskFillsUp)
{
    TempDir dir;
    const QByteArray old = qtJpeg(scene(20, 20), 75);
    const QString path = dir.write(QStringLiteral("still.jpg"), old);
    const QImage picture = scene(400, 300);
    // A file-size limit fails every write past 4 KB as a full disk does, even for root.
    rlimit saved{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    rlimit small = saved;
    small.rlim_cur = 4096;
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);

    const int status = SaveJpeg(&picture, path, 90);

    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);
    EXPECT_EQ(status, JpegWriter::kWriteFailed);
    EXPECT_EQ(dir.read(QStringLiteral("still.jpg")), old);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("still.jpg")});
}

struct WriteErrorCase {
    int runError;
    int status;
};

void PrintTo(const WriteErrorCase& c, std::ostream* os)
{
    *os << "error " << c.runError << " <-> status " << c.status;
}

class JpegWriterWriteError : public ::testing::TestWithParam<WriteErrorCase> {};

TEST_P(JpegWriterWriteError, FileErrorsHaveTheirOwnStatus_AndMapBack)
{
    EXPECT_EQ(JpegWriter::statusOfWriteError(GetParam().runError), GetParam().status);
    EXPECT_EQ(JpegWriter::writeErrorOfStatus(GetParam().status), GetParam().runError);
}

INSTANTIATE_TEST_SUITE_P(Table, JpegWriterWriteError,
                         ::testing::Values(WriteErrorCase{0, 0}, WriteErrorCase{61, 7},
                                           WriteErrorCase{75, 12}, WriteErrorCase{76, 10}));

TEST(JpegWriter, WriteErrorOfStatus_IsZero_ForStatusesNotAboutTheFile)
{
    for (const int status : {JpegWriter::kEncoderFailed, JpegWriter::kInvalidPicture,
                             JpegWriter::kOutOfMemory, JpegWriter::kNoPicture})
        EXPECT_EQ(JpegWriter::writeErrorOfStatus(status), 0) << status;
}
