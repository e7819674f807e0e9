#include "TempDir.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QRandomGenerator>
#include <csignal>

using namespace tavix;
using tavix::test::TempDir;

namespace {

QImage randomImage(int width, int height, QImage::Format format, quint32 seed = 7)
{
    QImage image(width, height, format);
    QRandomGenerator rng(seed);
    for (int y = 0; y < height; ++y) {
        uchar* line = image.scanLine(y);
        for (qsizetype i = 0; i < image.bytesPerLine(); ++i)
            line[i] = static_cast<uchar>(rng.bounded(256));
    }
    if (format == QImage::Format_RGB32) {  // the unused byte must read 0xff
        for (int y = 0; y < height; ++y) {
            auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < width; ++x)
                line[x] |= 0xff000000u;
        }
    }
    return image;
}

// Pixel-by-pixel comparison in a common format, with the first difference named.
::testing::AssertionResult samePixels(const QImage& a, const QImage& b)
{
    if (a.size() != b.size())
        return ::testing::AssertionFailure() << "sizes differ";
    const bool alpha = a.hasAlphaChannel() || b.hasAlphaChannel();
    const QImage::Format f = alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    const QImage ca = a.convertToFormat(f);
    const QImage cb = b.convertToFormat(f);
    for (int y = 0; y < ca.height(); ++y)
        for (int x = 0; x < ca.width(); ++x)
            if (ca.pixel(x, y) != cb.pixel(x, y))
                return ::testing::AssertionFailure() << "pixel (" << x << "," << y << ") " << std::hex
                                                     << ca.pixel(x, y) << " vs " << cb.pixel(x, y);
    return ::testing::AssertionSuccess();
}

QByteArray qtBmp(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "bmp");
    EXPECT_TRUE(writer.write(image));
    return bytes;
}

// A hand-made 32-bit BI_RGB bitmap with a 40-byte header.
QByteArray bmp32(int width, int height, const QList<quint32>& bgrx)
{
    QByteArray b(54, '\0');
    auto put = [&b](int at, quint32 v) {
        for (int i = 0; i < 4; ++i)
            b[at + i] = static_cast<char>(v >> (8 * i));
    };
    b[0] = 'B';
    b[1] = 'M';
    put(2, static_cast<quint32>(54 + width * 4 * std::abs(height)));
    put(10, 54);
    put(14, 40);
    put(18, static_cast<quint32>(width));
    put(22, static_cast<quint32>(height));
    b[26] = 1;
    b[28] = 32;
    for (quint32 v : bgrx)
        for (int i = 0; i < 4; ++i)
            b.append(static_cast<char>(v >> (8 * i)));
    return b;
}

}  // namespace

class BmpRoundTrip : public ::testing::TestWithParam<int> {};

TEST_P(BmpRoundTrip, WriteThenRead_GivesIdenticalPixels_ForEveryRowPadding)
{
    TempDir dir;
    const int width = GetParam();
    const QImage original = randomImage(width, 5, QImage::Format_RGB888, static_cast<quint32>(width));
    const QString path = dir.file(QStringLiteral("round.bmp"));

    ASSERT_EQ(BmpFile::write(path, original), 0);
    QImage read;
    ASSERT_EQ(BmpFile::read(path, read), 0);

    EXPECT_EQ(read.format(), QImage::Format_RGB888);
    EXPECT_TRUE(samePixels(read, original));
    EXPECT_EQ(QFile(path).size(), BmpFile::fileSize(width, 5));
}

INSTANTIATE_TEST_SUITE_P(Widths, BmpRoundTrip, ::testing::Values(1, 2, 3, 4, 5, 6, 7, 9, 641, 2592));

TEST(BmpFile, Encode_PadsEachRowWithZerosToFourBytes)
{
    QImage image(3, 2, QImage::Format_RGB888);
    image.fill(QColor(10, 20, 30));
    QByteArray bytes;

    ASSERT_TRUE(BmpFile::encode(image, bytes));

    ASSERT_EQ(bytes.size(), 54 + 12 * 2);  // 9 pixel bytes + 3 padding per row
    const QByteArray row = bytes.mid(54, 12);
    EXPECT_EQ(row, QByteArray::fromHex("1e140a1e140a1e140a000000"));
    EXPECT_EQ(bytes.mid(66, 12), row);
}

TEST(BmpFile, Encode_WritesBottomRowFirst)
{
    QImage image(1, 2, QImage::Format_RGB888);
    image.setPixelColor(0, 0, QColor(255, 0, 0));
    image.setPixelColor(0, 1, QColor(0, 0, 255));
    QByteArray bytes;

    ASSERT_TRUE(BmpFile::encode(image, bytes));

    EXPECT_EQ(bytes.mid(54, 4), QByteArray::fromHex("ff000000"));  // blue (B,G,R) of the bottom row
    EXPECT_EQ(bytes.mid(58, 4), QByteArray::fromHex("0000ff00"));
}

TEST(BmpFile, Encode_GivesSameBytes_ForRgb32AndRgb888OfOnePicture)
{
    const QImage rgb32 = randomImage(37, 11, QImage::Format_RGB32);
    QByteArray fromRgb32, fromRgb888;

    ASSERT_TRUE(BmpFile::encode(rgb32, fromRgb32));
    ASSERT_TRUE(BmpFile::encode(rgb32.convertToFormat(QImage::Format_RGB888), fromRgb888));

    EXPECT_EQ(fromRgb32, fromRgb888);
}

TEST(BmpFile, Encode_ConvertsOtherFormats)
{
    QImage grey(6, 4, QImage::Format_Grayscale8);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x)
            grey.setPixel(x, y, qRgb(x * 40, x * 40, x * 40));
    QByteArray bytes;

    ASSERT_TRUE(BmpFile::encode(grey, bytes));

    EXPECT_TRUE(samePixels(BmpFile::decode(bytes), grey));
}

TEST(BmpFile, Encode_ReusesTheBuffer_ForPicturesOfOneSize)
{
    QByteArray bytes;
    ASSERT_TRUE(BmpFile::encode(randomImage(64, 48, QImage::Format_RGB888, 1), bytes));
    const char* first = bytes.constData();

    ASSERT_TRUE(BmpFile::encode(randomImage(64, 48, QImage::Format_RGB888, 2), bytes));

    EXPECT_EQ(bytes.constData(), first);
}

TEST(BmpFile, Encode_Fails_ForNullPicture)
{
    QByteArray bytes;
    EXPECT_FALSE(BmpFile::encode(QImage(), bytes));
}

TEST(BmpFile, WrittenFile_ReadsWithQImageReader)
{
    TempDir dir;
    const QImage original = randomImage(33, 17, QImage::Format_RGB888);
    const QString path = dir.file(QStringLiteral("ours.bmp"));
    ASSERT_EQ(BmpFile::write(path, original), 0);

    QImageReader reader(path);
    const QImage read = reader.read();

    ASSERT_FALSE(read.isNull()) << reader.errorString().toStdString();
    EXPECT_EQ(QImageReader::imageFormat(path), "bmp");
    EXPECT_TRUE(samePixels(read, original));
}

TEST(BmpFile, Read_TakesQtWritten24BitFile)
{
    const QImage original = randomImage(31, 9, QImage::Format_RGB32);
    const QByteArray bytes = qtBmp(original);
    ASSERT_EQ(static_cast<uchar>(bytes[28]), 24u) << "Qt writes this picture with 24 bits";

    const QImage read = BmpFile::decode(bytes);

    EXPECT_EQ(read.format(), QImage::Format_RGB888);
    EXPECT_TRUE(samePixels(read, original));
}

TEST(BmpFile, Read_Takes32BitBitFieldsFileWithAlphaMask)
{
    // What painting programs write: a 108-byte header carrying the four masks.
    QByteArray bytes = bmp32(2, 1, {0x80010203u, 0xff040506u});
    bytes.insert(54, QByteArray(68, '\0'));
    auto put = [&bytes](int at, quint32 v) {
        for (int i = 0; i < 4; ++i)
            bytes[at + i] = static_cast<char>(v >> (8 * i));
    };
    put(10, 14 + 108);
    put(14, 108);
    put(30, 3);  // BI_BITFIELDS
    put(54, 0x00ff0000u);
    put(58, 0x0000ff00u);
    put(62, 0x000000ffu);
    put(66, 0xff000000u);

    const QImage read = BmpFile::decode(bytes);

    ASSERT_EQ(read.format(), QImage::Format_ARGB32);
    EXPECT_EQ(read.pixel(0, 0), 0x80010203u);
    EXPECT_EQ(read.pixel(1, 0), 0xff040506u);
    QBuffer buffer(&bytes);
    EXPECT_TRUE(samePixels(read, QImageReader(&buffer, "bmp").read()));
}

TEST(BmpFile, Read_LeavesOtherMasksToQt)
{
    // 32-bit pixels with red and blue masks swapped.
    QByteArray bytes = bmp32(1, 1, {0x00010203u});
    bytes.insert(54, QByteArray(12, '\0'));
    auto put = [&bytes](int at, quint32 v) {
        for (int i = 0; i < 4; ++i)
            bytes[at + i] = static_cast<char>(v >> (8 * i));
    };
    put(10, 66);
    put(30, 3);
    put(54, 0x000000ffu);
    put(58, 0x0000ff00u);
    put(62, 0x00ff0000u);

    const QImage read = BmpFile::decode(bytes);

    ASSERT_FALSE(read.isNull());
    EXPECT_EQ(read.pixel(0, 0) & 0xffffffu, 0x030201u);
}

TEST(BmpFile, Read_Takes32BitFileWithoutMasks_AsOpaque)
{
    const QByteArray bytes = bmp32(2, 1, {0x00030201u, 0x00060504u});

    const QImage read = BmpFile::decode(bytes);

    ASSERT_EQ(read.format(), QImage::Format_RGB32);
    EXPECT_EQ(read.pixel(0, 0), 0xff030201u);
    EXPECT_EQ(read.pixel(1, 0), 0xff060504u);
}

TEST(BmpFile, Read_TakesTopDownFile)
{
    const QByteArray bytes = bmp32(1, -2, {0x00ff0000u, 0x000000ffu});  // red row first, then blue

    const QImage read = BmpFile::decode(bytes);

    ASSERT_EQ(read.size(), QSize(1, 2));
    EXPECT_EQ(read.pixel(0, 0), qRgb(255, 0, 0));
    EXPECT_EQ(read.pixel(0, 1), qRgb(0, 0, 255));
}

TEST(BmpFile, Read_LeavesPalettePicturesToQt)
{
    QImage indexed(10, 3, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(0, 0, 0), qRgb(200, 100, 50), qRgb(1, 2, 3)});
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 10; ++x)
            indexed.setPixel(x, y, static_cast<uint>((x + y) % 3));
    const QByteArray bytes = qtBmp(indexed);
    ASSERT_LT(static_cast<uchar>(bytes[28]), 24u) << "Qt writes a palette picture";

    const QImage read = BmpFile::decode(bytes);

    EXPECT_TRUE(samePixels(read, indexed));
}

TEST(BmpFile, Read_ReusesThePictureBuffer_WhenSizeAndFormatMatch)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("a.bmp"));
    ASSERT_EQ(BmpFile::write(path, randomImage(40, 30, QImage::Format_RGB888, 1)), 0);
    QImage image;
    ASSERT_EQ(BmpFile::read(path, image), 0);
    const uchar* first = image.constBits();
    const QImage second = randomImage(40, 30, QImage::Format_RGB888, 2);
    ASSERT_EQ(BmpFile::write(path, second), 0);

    ASSERT_EQ(BmpFile::read(path, image), 0);

    EXPECT_EQ(image.constBits(), first);
    EXPECT_TRUE(samePixels(image, second));
}

TEST(BmpFile, Read_DoesNotWriteIntoSharedPicture)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("a.bmp"));
    ASSERT_EQ(BmpFile::write(path, randomImage(8, 8, QImage::Format_RGB888, 1)), 0);
    QImage image;
    ASSERT_EQ(BmpFile::read(path, image), 0);
    const QImage kept = image;  // shares the pixels
    const QImage keptCopy = kept.copy();
    ASSERT_EQ(BmpFile::write(path, randomImage(8, 8, QImage::Format_RGB888, 2)), 0);

    ASSERT_EQ(BmpFile::read(path, image), 0);

    EXPECT_TRUE(samePixels(kept, keptCopy));
}

TEST(BmpFile, Read_Returns481AndKeepsPicture_WhenFileIsCutOff)
{
    TempDir dir;
    QByteArray bytes;
    ASSERT_TRUE(BmpFile::encode(randomImage(20, 20, QImage::Format_RGB888), bytes));
    const QString path = dir.write(QStringLiteral("cut.bmp"), bytes.left(bytes.size() - 1));
    QImage image(3, 3, QImage::Format_RGB888);
    image.fill(Qt::green);

    EXPECT_EQ(BmpFile::read(path, image), BmpFile::kInvalidPicture);

    EXPECT_EQ(image.size(), QSize(3, 3));
    EXPECT_EQ(image.pixelColor(1, 1), QColor(Qt::green));
}

TEST(BmpFile, Read_Returns481_ForTextFile)
{
    TempDir dir;
    const QString path =
        dir.write(QStringLiteral("text.bmp"), "BM but not a bitmap at all, just some words\r\n");
    QImage image;

    EXPECT_EQ(BmpFile::read(path, image), BmpFile::kInvalidPicture);
    EXPECT_TRUE(image.isNull());
}

TEST(BmpFile, Read_Returns481_ForEmptyFile)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("empty.bmp"), QByteArray());
    QImage image;

    EXPECT_EQ(BmpFile::read(path, image), BmpFile::kInvalidPicture);
}

TEST(BmpFile, Read_Returns53_WhenFileIsMissing)
{
    TempDir dir;
    QImage image;

    EXPECT_EQ(BmpFile::read(dir.file(QStringLiteral("none.bmp")), image), 53);
}

TEST(BmpFile, Decode_RejectsHugeDimensions)
{
    QByteArray bytes = bmp32(1, 1, {0});
    bytes[18] = 0;  // width 0x7fff0000
    bytes[19] = 0;
    bytes[20] = static_cast<char>(0xff);
    bytes[21] = 0x7f;

    EXPECT_TRUE(BmpFile::decode(bytes).isNull());
}

TEST(BmpFile, Decode_RejectsPixelOffsetBeyondFile)
{
    QByteArray bytes = bmp32(1, 1, {0});
    bytes[10] = 0x7f;

    EXPECT_TRUE(BmpFile::decode(bytes).isNull());
}

TEST(BmpFile, Write_Returns76AndCreatesNothing_WhenFolderIsMissing)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("missing/picture.bmp"));

    EXPECT_EQ(BmpFile::write(path, randomImage(4, 4, QImage::Format_RGB888)), 76);

    EXPECT_FALSE(QFile::exists(path));
}

TEST(BmpFile, Write_LeavesOldFileWhole_WhenDiskFillsUp)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("old.bmp"), "the old picture");
    // A file size limit makes every write past 4 KB fail as a full disk would.
    struct rlimit saved {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    struct rlimit small = saved;
    small.rlim_cur = 4096;
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);

    const int result = BmpFile::write(path, randomImage(200, 200, QImage::Format_RGB888));

    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(result, 61);
    EXPECT_EQ(dir.read(QStringLiteral("old.bmp")), QByteArray("the old picture"));
}

TEST(BmpFile, Write_Returns5AndLeavesOldFile_ForNullPicture)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("old.bmp"), "old");

    EXPECT_EQ(BmpFile::write(path, QImage()), 5);

    EXPECT_EQ(dir.read(QStringLiteral("old.bmp")), QByteArray("old"));
}

TEST(BmpFile, Write_KeepsThePicturesResolution)
{
    TempDir dir;
    QImage image = randomImage(4, 4, QImage::Format_RGB888);
    image.setDotsPerMeterX(5000);
    image.setDotsPerMeterY(6000);
    const QString path = dir.file(QStringLiteral("dpi.bmp"));
    ASSERT_EQ(BmpFile::write(path, image), 0);
    QImage read;

    ASSERT_EQ(BmpFile::read(path, read), 0);

    EXPECT_EQ(read.dotsPerMeterX(), 5000);
    EXPECT_EQ(read.dotsPerMeterY(), 6000);
}

TEST(BmpFile, WriteOfManyRows_GivesTheSameFileAsEncode)
{
    // More rows than go into one piece of the streamed write.
    TempDir dir;
    const QImage original = randomImage(641, 600, QImage::Format_RGB32, 3);
    const QString path = dir.file(QStringLiteral("tall.bmp"));
    ASSERT_EQ(BmpFile::write(path, original), 0);
    QByteArray encoded;
    ASSERT_TRUE(BmpFile::encode(original, encoded));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll() == encoded);
}

TEST(BmpFile, WriteOfSeveralMegabytes_GivesTheSameFileAsEncode)
{
    // Pieces end inside rows and between them, with padded rows.
    TempDir dir;
    for (const QImage::Format format : {QImage::Format_RGB888, QImage::Format_BGR888}) {
        const QImage original = randomImage(1501, 1003, format, 4);
        const QString path = dir.file(QStringLiteral("large.bmp"));
        ASSERT_EQ(BmpFile::write(path, original), 0);
        QByteArray encoded;
        ASSERT_TRUE(BmpFile::encode(original, encoded));
        ASSERT_GT(encoded.size(), 4 << 20);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_TRUE(file.readAll() == encoded) << format;
    }
}

TEST(BmpFile, ReadAsStored_GivesBgr888_WithTheSamePixels)
{
    TempDir dir;
    const QImage original = randomImage(7, 5, QImage::Format_RGB888, 9);
    const QString path = dir.file(QStringLiteral("stored.bmp"));
    ASSERT_EQ(BmpFile::write(path, original), 0);
    QImage read;
    ASSERT_EQ(BmpFile::readAsStored(path, read), 0);
    EXPECT_EQ(read.format(), QImage::Format_BGR888);
    EXPECT_TRUE(samePixels(read, original));
}

TEST(BmpFile, StoredRows_PointIntoTheFile_TopRowFirst)
{
    QImage original = randomImage(7, 5, QImage::Format_RGB888, 11);
    original.setDotsPerMeterX(2000);
    original.setDotsPerMeterY(3000);
    QByteArray bytes;
    ASSERT_TRUE(BmpFile::encode(original, bytes));
    const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
    BmpFile::StoredRows rows;

    ASSERT_TRUE(BmpFile::storedRows(data, bytes.size(), rows));

    EXPECT_EQ(rows.width, 7);
    EXPECT_EQ(rows.height, 5);
    EXPECT_EQ(rows.format, QImage::Format_BGR888);
    EXPECT_EQ(rows.step, -24);  // bottom-up, 21 bytes padded to 24
    EXPECT_EQ(rows.top, data + BmpFile::kHeaderSize + 4 * 24);
    EXPECT_EQ(rows.dotsPerMeterX, 2000);
    EXPECT_EQ(rows.dotsPerMeterY, 3000);
    for (int y = 0; y < rows.height; ++y)
        for (int x = 0; x < rows.width; ++x) {
            const uchar* p = rows.top + y * rows.step + 3 * x;
            ASSERT_EQ(qRgb(p[2], p[1], p[0]), original.pixel(x, y)) << x << "," << y;
        }
}

TEST(BmpFile, StoredRows_OfATopDown32BitFile_AreRgb32_GoingDown)
{
    const QByteArray bytes = bmp32(1, -2, {0x00ff0000u, 0x000000ffu});  // red row first, then blue
    const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
    BmpFile::StoredRows rows;

    ASSERT_TRUE(BmpFile::storedRows(data, bytes.size(), rows));

    EXPECT_EQ(rows.format, QImage::Format_RGB32);
    EXPECT_EQ(rows.step, 4);
    EXPECT_EQ(rows.top, data + BmpFile::kHeaderSize);
    EXPECT_EQ(rows.top[2], 0xff);  // red, stored blue first
}

TEST(BmpFile, StoredRows_AreRefused_ForFilesOnlyQtReads_AndForNoBitmap)
{
    QImage palette(4, 4, QImage::Format_Indexed8);
    palette.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    palette.fill(1);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(QImageWriter(&buffer, "bmp").write(palette));
    BmpFile::StoredRows rows;

    EXPECT_FALSE(BmpFile::storedRows(reinterpret_cast<const uchar*>(bytes.constData()), bytes.size(), rows));
    const QByteArray text = "not a bitmap at all, just some text";
    EXPECT_FALSE(BmpFile::storedRows(reinterpret_cast<const uchar*>(text.constData()), text.size(), rows));
    EXPECT_FALSE(BmpFile::storedRows(nullptr, 0, rows));
}
