#include "media/BayerDemosaic.h"

#include <gtest/gtest.h>
#include <QPoint>
#include <array>
#include <vector>

using namespace tavix;
using Pattern = BayerDemosaic::Pattern;

namespace {

// Column and row of red within the cell, as the pattern names it.
QPoint redAt(Pattern p)
{
    switch (p) {
        case Pattern::RGGB:
            return {0, 0};
        case Pattern::GRBG:
            return {1, 0};
        case Pattern::GBRG:
            return {0, 1};
        case Pattern::BGGR:
            return {1, 1};
    }
    return {};
}

// Samples a picture whose colour at (x, y) is colour(x, y) through the pattern.
template <typename F>
std::vector<uchar> mosaic(int w, int h, Pattern p, F colour)
{
    std::vector<uchar> out(static_cast<size_t>(w * h));
    const QPoint red = redAt(p);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const std::array<int, 3> c = colour(x, y);
            const bool redRow = (y & 1) == red.y();
            const bool redCol = (x & 1) == red.x();
            const int channel = redRow && redCol ? 0 : (!redRow && !redCol ? 2 : 1);
            out[static_cast<size_t>(y * w + x)] = static_cast<uchar>(c[static_cast<size_t>(channel)]);
        }
    return out;
}

class BayerPatterns : public ::testing::TestWithParam<Pattern> {};

}  // namespace

TEST_P(BayerPatterns, UniformColour_ComesBackEverywhere_EdgesIncluded)
{
    const int w = 7, h = 5;
    const auto src = mosaic(w, h, GetParam(), [](int, int) { return std::array<int, 3>{200, 100, 50}; });
    std::vector<uchar> rgb(static_cast<size_t>(w * h * 3), 0);
    BayerDemosaic::toRgb(src.data(), w, w, h, GetParam(), rgb.data(), w * 3);
    for (int i = 0; i < w * h; ++i) {
        ASSERT_EQ(rgb[static_cast<size_t>(3 * i)], 200) << i;
        ASSERT_EQ(rgb[static_cast<size_t>(3 * i + 1)], 100) << i;
        ASSERT_EQ(rgb[static_cast<size_t>(3 * i + 2)], 50) << i;
    }
}

TEST_P(BayerPatterns, HorizontalRamp_IsInterpolatedLinearlyInside)
{
    const int w = 8, h = 6;
    // Every channel rises by 10 per column: the mean of the neighbours is exact.
    const auto ramp = [](int x, int) { return std::array<int, 3>{10 * x + 20, 10 * x + 5, 10 * x}; };
    const auto src = mosaic(w, h, GetParam(), ramp);
    std::vector<uchar> rgb(static_cast<size_t>(w * h * 3), 0);
    BayerDemosaic::toRgb(src.data(), w, w, h, GetParam(), rgb.data(), w * 3);
    for (int y = 0; y < h; ++y)
        for (int x = 1; x < w - 1; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(rgb[static_cast<size_t>((y * w + x) * 3 + c)], ramp(x, y)[static_cast<size_t>(c)])
                    << x << "," << y << " channel " << c;
}

INSTANTIATE_TEST_SUITE_P(AllPatterns, BayerPatterns,
                         ::testing::Values(Pattern::RGGB, Pattern::GRBG, Pattern::GBRG, Pattern::BGGR));
