#include "camera/graph/GraphDecoder.h"
#include "media/JpegWriter.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(GraphDecoder, JpegScale_IsTheLargestThatKeepsTheShownSize)
{
    EXPECT_EQ(GraphDecoder::jpegScale(QSize(1920, 1080), QSize()), 1);
    EXPECT_EQ(GraphDecoder::jpegScale(QSize(1920, 1080), QSize(1920, 1080)), 1);
    EXPECT_EQ(GraphDecoder::jpegScale(QSize(1920, 1080), QSize(960, 540)), 2);
    EXPECT_EQ(GraphDecoder::jpegScale(QSize(1920, 1080), QSize(961, 540)), 1);
    EXPECT_EQ(GraphDecoder::jpegScale(QSize(1920, 1080), QSize(400, 225)), 4);
    EXPECT_EQ(GraphDecoder::jpegScale(QSize(2592, 1944), QSize(100, 75)), 8);
}

TEST(GraphDecoder, Jpeg_DecodesAtTheScale_AndRefusesWhatIsNoJpeg)
{
    QImage picture(640, 480, QImage::Format_RGB888);
    picture.fill(QColor(200, 40, 30));
    QByteArray jpeg;
    ASSERT_EQ(JpegWriter::encode(picture, 90, jpeg), JpegWriter::kOk);
    GraphDecoder decoder;
    FrameView view;
    ASSERT_TRUE(
        decoder.jpeg(reinterpret_cast<const uchar*>(jpeg.constData()), size_t(jpeg.size()), 4, true, view));
    EXPECT_EQ(QSize(view.width, view.height), QSize(160, 120));
    EXPECT_NEAR(view.bits[0], 200, 4);
    EXPECT_NEAR(view.bits[2], 30, 4);
    const QByteArray broken = jpeg.left(40);
    FrameView kept = view;
    EXPECT_FALSE(decoder.jpeg(reinterpret_cast<const uchar*>(broken.constData()), size_t(broken.size()), 1,
                              false, kept));
    EXPECT_EQ(kept.width, 160);
}

TEST(GraphDecoder, BayerHalf_TakesEachCellAsOnePixel)
{
    // Two cells side by side, GRBG: green, red on top; blue, green below.
    const uchar cells[] = {10, 200, 20, 210, 0, 0, 30, 50, 40, 60, 0, 0};
    GraphDecoder decoder;
    FrameView view;
    ASSERT_TRUE(decoder.bayer(cells, 6, QSize(4, 2), "grbg", true, view));
    ASSERT_EQ(QSize(view.width, view.height), QSize(2, 1));
    EXPECT_EQ(view.bits[0], 200);  // red
    EXPECT_EQ(view.bits[1], 30);   // (10 + 50) / 2
    EXPECT_EQ(view.bits[2], 30);   // blue
    EXPECT_EQ(view.bits[3], 210);
    EXPECT_EQ(view.bits[4], 40);  // (20 + 60) / 2
    EXPECT_EQ(view.bits[5], 40);
    EXPECT_FALSE(decoder.bayer(cells, 6, QSize(4, 2), "xxxx", true, view));
}
