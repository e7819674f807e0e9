#include "camera/graph/GraphDecoder.h"
#include "media/BayerDemosaic.h"
#include "media/JpegWriter.h"

#include <gtest/gtest.h>
#include <vector>

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

TEST(GraphDecoder, BayerLayout_IsThePatternOfItsName_AndNoneForAnotherName)
{
    EXPECT_EQ(GraphDecoder::bayerLayout("rggb"), RawLayout::BayerRggb);
    EXPECT_EQ(GraphDecoder::bayerLayout("grbg"), RawLayout::BayerGrbg);
    EXPECT_EQ(GraphDecoder::bayerLayout("gbrg"), RawLayout::BayerGbrg);
    EXPECT_EQ(GraphDecoder::bayerLayout("bggr"), RawLayout::BayerBggr);
    EXPECT_EQ(GraphDecoder::bayerLayout("xxxx"), RawLayout::None);
}

TEST(GraphDecoder, Bayer_IsTheFullSizeDemosaicOfItsPattern)
{
    // Two cells side by side, GRBG, in rows of six bytes.
    const uchar cells[] = {10, 200, 20, 210, 0, 0, 30, 50, 40, 60, 0, 0};
    GraphDecoder decoder;
    FrameView view;
    ASSERT_TRUE(decoder.bayer(cells, 6, QSize(4, 2), RawLayout::BayerGrbg, view));
    ASSERT_EQ(QSize(view.width, view.height), QSize(4, 2));
    EXPECT_EQ(view.format, QImage::Format_RGB888);
    uchar expected[4 * 2 * 3];
    BayerDemosaic::toRgb(cells, 6, 4, 2, BayerDemosaic::Pattern::GRBG, expected, 12);
    for (int y = 0; y < 2; ++y)
        EXPECT_EQ(
            std::vector<uchar>(view.bits + y * view.bytesPerLine, view.bits + y * view.bytesPerLine + 12),
            std::vector<uchar>(expected + y * 12, expected + y * 12 + 12))
            << y;
    EXPECT_FALSE(decoder.bayer(cells, 6, QSize(4, 2), RawLayout::Yuyv, view));
    EXPECT_FALSE(decoder.bayer(cells, 6, QSize(4, 1), RawLayout::BayerGrbg, view));
}
