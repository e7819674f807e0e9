#include "media/Histogram.h"

#include <gtest/gtest.h>
#include <QImage>

using namespace tavix;

namespace {

QImage grey(int width, int height, std::initializer_list<int> levels)
{
    QImage image(width, height, QImage::Format_Grayscale8);
    auto it = levels.begin();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.scanLine(y)[x] = static_cast<uchar>(*it++);
    return image;
}

// Red, green, blue, mid grey, white and a dark colour, in two rows of three.
QImage sixColours(QImage::Format format)
{
    QImage image(3, 2, QImage::Format_RGB32);
    const QRgb pixels[] = {qRgb(255, 0, 0),     qRgb(0, 255, 0),     qRgb(0, 0, 255),
                           qRgb(100, 100, 100), qRgb(255, 255, 255), qRgb(10, 20, 30)};
    for (int i = 0; i < 6; ++i)
        image.setPixel(i % 3, i / 3, pixels[i]);
    return image.convertToFormat(format);
}

// The levels with a count, as "level:count".
std::vector<std::string> nonZero(const Histogram::Counts& counts)
{
    std::vector<std::string> out;
    for (int level = 0; level < Histogram::kLevels; ++level)
        if (counts[level] != 0)
            out.push_back(std::to_string(level) + ":" + std::to_string(counts[level]));
    return out;
}

using Levels = std::vector<std::string>;

}  // namespace

TEST(Histogram, AGreyPicture_CountsEachLevel_AndItsClippedPixels)
{
    // Five wide: the rows are padded in memory, the padding is not counted.
    const Histogram h = Histogram::of(grey(5, 2, {0, 0, 10, 255, 128, 10, 10, 128, 255, 7}));
    EXPECT_EQ(h.pixels(), 10);
    EXPECT_FALSE(h.colour());
    EXPECT_EQ(nonZero(h.counts(Histogram::Grey)), (Levels{"0:2", "7:1", "10:3", "128:2", "255:2"}));
    EXPECT_DOUBLE_EQ(h.clippedDark(), 0.2);
    EXPECT_DOUBLE_EQ(h.clippedBright(), 0.2);
    EXPECT_EQ(h.peak(), 3u);
}

TEST(Histogram, AColourPicture_CountsRedGreenBlueAndGrey)
{
    const Histogram h = Histogram::of(sixColours(QImage::Format_RGB888));
    EXPECT_EQ(h.pixels(), 6);
    EXPECT_TRUE(h.colour());
    EXPECT_EQ(nonZero(h.counts(Histogram::Red)), (Levels{"0:2", "10:1", "100:1", "255:2"}));
    EXPECT_EQ(nonZero(h.counts(Histogram::Green)), (Levels{"0:2", "20:1", "100:1", "255:2"}));
    EXPECT_EQ(nonZero(h.counts(Histogram::Blue)), (Levels{"0:2", "30:1", "100:1", "255:2"}));
    // (77 r + 150 g + 29 b + 128) / 256, rounded down: blue 29, dark colour 18,
    // red 77, grey 100, green 149, white 255.
    EXPECT_EQ(nonZero(h.counts(Histogram::Grey)),
              (Levels{"18:1", "29:1", "77:1", "100:1", "149:1", "255:1"}));
}

TEST(Histogram, AColourPixel_IsClipped_WhenAnyChannelIsAtAnEnd)
{
    const Histogram h = Histogram::of(sixColours(QImage::Format_RGB888));
    EXPECT_DOUBLE_EQ(h.clippedDark(), 3.0 / 6.0) << "red, green and blue each have two channels at 0";
    EXPECT_DOUBLE_EQ(h.clippedBright(), 4.0 / 6.0) << "red, green, blue and white have one at 255";
}

TEST(Histogram, ThirtyTwoBitAndOtherFormats_CountAsTheSamePixels)
{
    const Histogram rgb = Histogram::of(sixColours(QImage::Format_RGB888));
    for (const QImage::Format format :
         {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGBX8888}) {
        const Histogram h = Histogram::of(sixColours(format));
        for (const auto channel : {Histogram::Grey, Histogram::Red, Histogram::Green, Histogram::Blue})
            EXPECT_EQ(h.counts(channel), rgb.counts(channel)) << format << " channel " << channel;
        EXPECT_EQ(h.clippedBright(), rgb.clippedBright()) << format;
    }
}

TEST(Histogram, AColourPictureOfGreysOnly_IsNotColour)
{
    const Histogram h = Histogram::of(
        grey(5, 2, {0, 0, 10, 255, 128, 10, 10, 128, 255, 7}).convertToFormat(QImage::Format_RGB888));
    EXPECT_FALSE(h.colour());
    EXPECT_EQ(nonZero(h.counts(Histogram::Grey)), (Levels{"0:2", "7:1", "10:3", "128:2", "255:2"}));
    EXPECT_DOUBLE_EQ(h.clippedBright(), 0.2);
}

TEST(Histogram, AStep_CountsEveryStepthPixelOfEveryStepthRow)
{
    // Rows 0 and 2, columns 0, 2 and 4: the levels 1..6; every other pixel is 200.
    const Histogram h = Histogram::of(grey(5, 3,
                                           {1, 200, 2, 200, 3,        //
                                            200, 200, 200, 200, 200,  //
                                            4, 200, 5, 200, 255}),
                                      2);
    EXPECT_EQ(h.pixels(), 6);
    EXPECT_EQ(nonZero(h.counts(Histogram::Grey)), (Levels{"1:1", "2:1", "3:1", "4:1", "5:1", "255:1"}));
    EXPECT_DOUBLE_EQ(h.clippedBright(), 1.0 / 6.0);
    EXPECT_DOUBLE_EQ(h.clippedDark(), 0.0);
}

TEST(Histogram, StepFor_KeepsThePassWithinTheBudget)
{
    EXPECT_EQ(Histogram::stepFor({100, 100}, 1 << 17), 1);
    EXPECT_EQ(Histogram::stepFor({640, 480}, 1 << 17), 2);    // 320 x 240 pixels
    EXPECT_EQ(Histogram::stepFor({2592, 1944}, 1 << 17), 7);  // 371 x 278 pixels
    EXPECT_EQ(Histogram::stepFor({1000, 1}, 10), 100);
    EXPECT_EQ(Histogram::stepFor({0, 0}, 10), 1);
}

TEST(Histogram, NoPicture_CountsNothing)
{
    const Histogram h = Histogram::of(QImage());
    EXPECT_EQ(h.pixels(), 0);
    EXPECT_EQ(h.clippedDark(), 0.0);
    EXPECT_EQ(h.peak(), 0u);
}
