#include "TempDir.h"
#include "media/BmpFile.h"
#include "media/FrameFile.h"

#include <gtest/gtest.h>
#include <QDir>

using namespace tavix;
using tavix::test::TempDir;

namespace {
QImage frame()
{
    QImage image(32, 24, QImage::Format_RGB888);
    image.fill(QColor(200, 100, 50));
    return image;
}
}  // namespace

TEST(FrameFile, JpegName_InAnyCase_GivesAJpeg_OtherNamesABitmap)
{
    TempDir dir;
    QByteArray buffer;
    ASSERT_TRUE(FrameFile::encode(frame(), dir.file(QStringLiteral("a.JPG")), 90, buffer));
    EXPECT_TRUE(buffer.startsWith("\xFF\xD8"));
    ASSERT_TRUE(FrameFile::encode(frame(), dir.file(QStringLiteral("a.bmp")), 90, buffer));
    ASSERT_EQ(FrameFile::store(dir.file(QStringLiteral("a.bmp")), buffer), 0);
    QImage back;
    ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("a.bmp")), back), 0);
    EXPECT_EQ(back.convertToFormat(QImage::Format_RGB888), frame());
}

TEST(FrameFile, StoreIntoAMissingFolder_ReportsTheError)
{
    TempDir dir;
    QByteArray buffer;
    const QString path = dir.file(QStringLiteral("missing/a.jpg"));
    ASSERT_TRUE(FrameFile::encode(frame(), path, 90, buffer));
    EXPECT_NE(FrameFile::store(path, buffer), 0);
    EXPECT_FALSE(dir.exists(QStringLiteral("missing/a.jpg")));
}

TEST(FrameFile, ScratchBitmaps_AreTheTemporaryStillAndTheFilesNamedAfterIt)
{
    TempDir dir;
    FrameFile::setScratchBitmap(dir.file(QStringLiteral("TavixStill.bmp")));

    EXPECT_TRUE(FrameFile::isScratch(dir.file(QStringLiteral("TavixStill.bmp"))));
    EXPECT_TRUE(FrameFile::isScratch(dir.file(QStringLiteral("TavixStill_001.bmp"))));
    EXPECT_FALSE(FrameFile::isScratch(dir.file(QStringLiteral("sample.bmp"))));
    EXPECT_FALSE(FrameFile::isScratch(dir.file(QStringLiteral("TavixStill.jpg"))));
    EXPECT_FALSE(FrameFile::isScratch(QDir::tempPath() + QStringLiteral("/TavixStill.bmp")));

    FrameFile::setScratchBitmap(QString());
    EXPECT_FALSE(FrameFile::isScratch(dir.file(QStringLiteral("TavixStill.bmp"))));
}
