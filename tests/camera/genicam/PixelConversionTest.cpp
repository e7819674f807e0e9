#include "camera/genicam/PixelConversion.h"
#include "camera/genicam/PixelFormatChoice.h"
#include "media/BayerDemosaic.h"

#include <gtest/gtest.h>

#undef signals
#include <arv.h>

using namespace tavix;

namespace {

constexpr std::uint32_t kMono12p = 0x010c0047u;

// Twelve-bit samples (ten-bit ones are their high bits) 0x000, 0x123, 0xABC, 0xFFF on each of two lines, as
// each packing lays them out.
const std::vector<unsigned> kSamples = {0x000, 0x123, 0xABC, 0xFFF};

std::vector<uchar> little16(int bits)
{
    std::vector<uchar> out;
    for (int line = 0; line < 2; ++line)
        for (unsigned s : kSamples) {
            const unsigned v = s >> (12 - bits);
            out.push_back(static_cast<uchar>(v & 0xff));
            out.push_back(static_cast<uchar>(v >> 8));
        }
    return out;
}

std::vector<uchar> packedGigE()
{
    std::vector<uchar> out;
    for (int line = 0; line < 2; ++line)
        for (size_t i = 0; i < kSamples.size(); i += 2) {
            const unsigned a = kSamples[i], b = kSamples[i + 1];
            out.push_back(static_cast<uchar>(a >> 4));
            out.push_back(static_cast<uchar>((a & 0xf) | ((b & 0xf) << 4)));
            out.push_back(static_cast<uchar>(b >> 4));
        }
    return out;
}

std::vector<uchar> packedLsbFirst()
{
    std::vector<uchar> out;
    for (int line = 0; line < 2; ++line)
        for (size_t i = 0; i < kSamples.size(); i += 2) {
            const unsigned a = kSamples[i], b = kSamples[i + 1];
            out.push_back(static_cast<uchar>(a & 0xff));
            out.push_back(static_cast<uchar>((a >> 8) | ((b & 0xf) << 4)));
            out.push_back(static_cast<uchar>(b >> 4));
        }
    return out;
}

struct DeepCase {
    const char* name;
    std::uint32_t format;
    std::vector<uchar> data;
};

class DeepMono : public ::testing::TestWithParam<DeepCase> {};

}  // namespace

TEST_P(DeepMono, KeepsTheEightHighBits_AsGrey)
{
    const DeepCase& c = GetParam();
    PixelConversion conversion;
    FrameView view;
    ASSERT_TRUE(conversion.convert(c.format, c.data.data(), c.data.size(), 4, 2, 0, view));
    EXPECT_EQ(view.format, QImage::Format_Grayscale8);
    ASSERT_EQ(view.width, 4);
    ASSERT_EQ(view.height, 2);
    for (int y = 0; y < 2; ++y) {
        const uchar* line = view.bits + y * view.bytesPerLine;
        EXPECT_EQ(std::vector<int>(line, line + 4), (std::vector<int>{0x00, 0x12, 0xAB, 0xFF})) << y;
    }
}

INSTANTIATE_TEST_SUITE_P(Packings, DeepMono,
                         ::testing::Values(DeepCase{"Mono12", ARV_PIXEL_FORMAT_MONO_12, little16(12)},
                                           DeepCase{"Mono10", ARV_PIXEL_FORMAT_MONO_10, little16(10)},
                                           DeepCase{"Mono12Packed", ARV_PIXEL_FORMAT_MONO_12_PACKED,
                                                    packedGigE()},
                                           DeepCase{"Mono12p", kMono12p, packedLsbFirst()}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(PixelConversion, Mono16_ShowsTheHighByte)
{
    const std::vector<uchar> data = {0x34, 0x12, 0xff, 0xff, 0x00, 0x80, 0x00, 0x00};
    PixelConversion conversion;
    FrameView view;
    ASSERT_TRUE(conversion.convert(ARV_PIXEL_FORMAT_MONO_16, data.data(), data.size(), 2, 2, 0, view));
    EXPECT_EQ(std::vector<int>(view.bits, view.bits + 2), (std::vector<int>{0x12, 0xff}));
    EXPECT_EQ(std::vector<int>(view.bits + view.bytesPerLine, view.bits + view.bytesPerLine + 2),
              (std::vector<int>{0x80, 0x00}));
}

TEST(PixelConversion, TwelveBitBayer_IsHandedOnAsItsEightBitHighBits_AndDevelopedLikeThem)
{
    // A 4x2 RGGB picture: red 0xABC, greens 0x123, blue 0xFFF.
    const std::vector<unsigned> cells = {0xABC, 0x123, 0xABC, 0x123, 0x123, 0xFFF, 0x123, 0xFFF};
    std::vector<uchar> twelve, eight;
    for (unsigned s : cells) {
        twelve.push_back(static_cast<uchar>(s & 0xff));
        twelve.push_back(static_cast<uchar>(s >> 8));
        eight.push_back(static_cast<uchar>(s >> 4));
    }
    PixelConversion deep, plain;
    FrameView a, b;
    ASSERT_TRUE(deep.convert(ARV_PIXEL_FORMAT_BAYER_RG_12, twelve.data(), twelve.size(), 4, 2, 0, a));
    ASSERT_TRUE(plain.convert(ARV_PIXEL_FORMAT_BAYER_RG_8, eight.data(), eight.size(), 4, 2, 0, b));
    EXPECT_EQ(a.raw, RawLayout::BayerRggb);
    EXPECT_EQ(a.bytesPerLine, 4);
    EXPECT_EQ(std::vector<uchar>(a.bits, a.bits + 8), eight);

    std::vector<uchar> fromDeep, fromPlain;
    const FrameView fullA = PixelConversion::develop(a, fromDeep);
    const FrameView fullB = PixelConversion::develop(b, fromPlain);
    EXPECT_EQ(fullA.format, QImage::Format_RGB888);
    EXPECT_EQ(fullA.raw, RawLayout::None);
    EXPECT_EQ(fullA.bytesPerLine, 12);
    EXPECT_EQ(std::vector<uchar>(fullA.bits, fullA.bits + 24),
              std::vector<uchar>(fullB.bits, fullB.bits + 24));
    EXPECT_EQ(fullA.bits[0], 0xAB);           // the red sample at its own place
    EXPECT_EQ(fullA.bits[2 * 12 - 1], 0xFF);  // the blue sample at its own place
}

TEST(PixelConversion, EightBitBayer_PassesAsItsCells_InItsPattern_AndDevelopsIntoItsDemosaic)
{
    const std::vector<std::pair<std::uint32_t, RawLayout>> formats = {
        {ARV_PIXEL_FORMAT_BAYER_RG_8, RawLayout::BayerRggb},
        {ARV_PIXEL_FORMAT_BAYER_GR_8, RawLayout::BayerGrbg},
        {ARV_PIXEL_FORMAT_BAYER_GB_8, RawLayout::BayerGbrg},
        {ARV_PIXEL_FORMAT_BAYER_BG_8, RawLayout::BayerBggr}};
    const BayerDemosaic::Pattern patterns[] = {BayerDemosaic::Pattern::RGGB, BayerDemosaic::Pattern::GRBG,
                                               BayerDemosaic::Pattern::GBRG, BayerDemosaic::Pattern::BGGR};
    std::vector<uchar> data(4 * 10);  // 8 cells and 2 bytes of padding a line
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<uchar>(i * 37);
    for (size_t k = 0; k < formats.size(); ++k) {
        SCOPED_TRACE(k);
        PixelConversion conversion;
        FrameView view;
        ASSERT_TRUE(conversion.convert(formats[k].first, data.data(), data.size(), 8, 4, 2, view));
        EXPECT_EQ(view.raw, formats[k].second);
        EXPECT_EQ(view.bits, data.data());
        EXPECT_EQ(view.bytesPerLine, 10);

        std::vector<uchar> rgb;
        const FrameView full = PixelConversion::develop(view, rgb);
        std::vector<uchar> expected(8 * 4 * 3);
        BayerDemosaic::toRgb(data.data(), 10, 8, 4, patterns[k], expected.data(), 8 * 3);
        EXPECT_EQ(QSize(full.width, full.height), QSize(8, 4));
        ASSERT_EQ(full.bits, rgb.data());
        EXPECT_EQ(std::vector<uchar>(full.bits, full.bits + expected.size()), expected);
    }
}

TEST(PixelConversion, AConvertedFrame_StaysWholeWhileTheNextIsConverted)
{
    const std::vector<uchar> first = little16(12), second(first.size(), 0);
    PixelConversion conversion;
    FrameView a, b;
    ASSERT_TRUE(conversion.convert(ARV_PIXEL_FORMAT_MONO_12, first.data(), first.size(), 4, 2, 0, a));
    ASSERT_TRUE(conversion.convert(ARV_PIXEL_FORMAT_MONO_12, second.data(), second.size(), 4, 2, 0, b));
    EXPECT_NE(a.bits, b.bits);
    EXPECT_EQ(a.bits[3], 0xFF);
}

TEST(PixelConversion, Mono8Rgb8AndBgr8_PassAsTheyAre_WithTheirPadding)
{
    const std::vector<uchar> data(2 * 10);
    PixelConversion conversion;
    FrameView view;
    ASSERT_TRUE(conversion.convert(ARV_PIXEL_FORMAT_MONO_8, data.data(), data.size(), 8, 2, 2, view));
    EXPECT_EQ(view.bits, data.data());
    EXPECT_EQ(view.bytesPerLine, 10);
    const std::vector<uchar> rgb(2 * 6 * 3);
    ASSERT_TRUE(conversion.convert(ARV_PIXEL_FORMAT_RGB_8_PACKED, rgb.data(), rgb.size(), 6, 2, 0, view));
    EXPECT_EQ(view.format, QImage::Format_RGB888);
    EXPECT_EQ(view.bits, rgb.data());
    ASSERT_TRUE(conversion.convert(ARV_PIXEL_FORMAT_BGR_8_PACKED, rgb.data(), rgb.size(), 6, 2, 0, view));
    EXPECT_EQ(view.format, QImage::Format_BGR888);
    EXPECT_EQ(view.raw, RawLayout::None);
    EXPECT_EQ(view.bits, rgb.data());
    // Nothing to develop: the full picture is the frame itself.
    std::vector<uchar> unused;
    EXPECT_EQ(PixelConversion::develop(view, unused).bits, rgb.data());
    EXPECT_TRUE(unused.empty());
}

TEST(PixelConversion, AShortBufferOrAnUnknownFormat_IsRefused)
{
    const std::vector<uchar> data = little16(12);
    PixelConversion conversion;
    FrameView view;
    EXPECT_FALSE(conversion.convert(ARV_PIXEL_FORMAT_MONO_12, data.data(), data.size() - 1, 4, 2, 0, view));
    EXPECT_FALSE(
        conversion.convert(ARV_PIXEL_FORMAT_YUV_422_PACKED, data.data(), data.size(), 4, 2, 0, view));
    EXPECT_FALSE(PixelConversion::known(ARV_PIXEL_FORMAT_YUV_422_PACKED));
}

TEST(PixelFormatChoice, AColourFormat_WinsOverGrey_TheLeanestFirst)
{
    using PixelFormatChoice::choose;
    const std::vector<std::uint32_t> offered = {ARV_PIXEL_FORMAT_MONO_8, ARV_PIXEL_FORMAT_RGB_8_PACKED,
                                                ARV_PIXEL_FORMAT_BAYER_RG_12, ARV_PIXEL_FORMAT_BAYER_GR_8};
    EXPECT_EQ(choose(ARV_PIXEL_FORMAT_MONO_8, offered), ARV_PIXEL_FORMAT_BAYER_GR_8);
    EXPECT_EQ(choose(ARV_PIXEL_FORMAT_RGB_8_PACKED, offered),
              ARV_PIXEL_FORMAT_RGB_8_PACKED);  // colour already
}

TEST(PixelFormatChoice, AGreyCamera_KeepsAFormatItCanShow_ElseTheLeanestKnown)
{
    using PixelFormatChoice::choose;
    const std::vector<std::uint32_t> grey = {ARV_PIXEL_FORMAT_MONO_8, ARV_PIXEL_FORMAT_MONO_12,
                                             ARV_PIXEL_FORMAT_MONO_12_PACKED};
    EXPECT_EQ(choose(ARV_PIXEL_FORMAT_MONO_12, grey), ARV_PIXEL_FORMAT_MONO_12);
    EXPECT_EQ(choose(ARV_PIXEL_FORMAT_YUV_422_PACKED, grey), ARV_PIXEL_FORMAT_MONO_8);
    EXPECT_EQ(choose(ARV_PIXEL_FORMAT_YUV_422_PACKED, {ARV_PIXEL_FORMAT_YUV_422_PACKED}), -1);
}
