#include "SimStill.h"
#include "calib/ScalePeriod.h"
#include "camera/sim/SimScene.h"

#include <gtest/gtest.h>
#include <QPainter>
#include <cstdio>

using namespace tavix;
using namespace tavix::test;

namespace {

const SimScene::Geometry& g = SimScene::geometry();

// A line over the short ticks of a scale, a little past its first and last tick.
std::pair<PointD, PointD> alongHorizontalScale(const QImage& still)
{
    const SimScene::Scale& s = g.horizontalScale;
    const double y = s.zero.y() - s.shortTick / 2;
    return {scenePixel(still, {s.zero.x() - 5, y}), scenePixel(still, {s.zero.x() + s.length + 5, y})};
}

std::pair<PointD, PointD> alongVerticalScale(const QImage& still)
{
    const SimScene::Scale& s = g.verticalScale;
    const double x = s.zero.x() - s.shortTick / 2;
    return {scenePixel(still, {x, s.zero.y() - 5}), scenePixel(still, {x, s.zero.y() + s.length + 5})};
}

class ScalePeriodOnSimStill : public ::testing::TestWithParam<int> {};

// The factor from the micrometer's divisions is the scene's within 0.05 %.
TEST_P(ScalePeriodOnSimStill, HorizontalScale_GivesTheFactorWithinFiveHundredthsOfAPercent)
{
    const QImage still = simStill(GetParam());
    const auto [from, to] = alongHorizontalScale(still);
    const auto r = ScalePeriod::measure(still, from, to);
    ASSERT_TRUE(r.has_value());
    const double factor = g.horizontalScale.division / r->periodPixels;
    const double truth = SimScene::micrometresPerPixel(still.size());
    EXPECT_NEAR(factor / truth - 1, 0.0, 0.0005);
    EXPECT_EQ(r->divisions, 100);
    EXPECT_LT(r->spreadPixels, 0.15);
    std::printf("SCALE %dx%d x: %.6f um/px (truth %.6f, error %+.4f %%), %d divisions, spread %.3f px\n",
                still.width(), still.height(), factor, truth, 100 * (factor / truth - 1), r->divisions,
                r->spreadPixels);
}

TEST_P(ScalePeriodOnSimStill, VerticalScale_GivesTheFactorWithinFiveHundredthsOfAPercent)
{
    const QImage still = simStill(GetParam());
    const auto [from, to] = alongVerticalScale(still);
    const auto r = ScalePeriod::measure(still, from, to);
    ASSERT_TRUE(r.has_value());
    const double factor = g.verticalScale.division / r->periodPixels;
    const double truth = SimScene::micrometresPerPixel(still.size());
    EXPECT_NEAR(factor / truth - 1, 0.0, 0.0005);
    EXPECT_EQ(r->divisions, 50);
    std::printf("SCALE %dx%d y: %.6f um/px (truth %.6f, error %+.4f %%), %d divisions, spread %.3f px\n",
                still.width(), still.height(), factor, truth, 100 * (factor / truth - 1), r->divisions,
                r->spreadPixels);
}

// A line across the discs and the bare slide: no divisions, refused.
TEST_P(ScalePeriodOnSimStill, LineWithoutMicrometer_IsRefused)
{
    const QImage still = simStill(GetParam());
    EXPECT_FALSE(
        ScalePeriod::measure(still, scenePixel(still, {-600, -270}), scenePixel(still, {-150, -270})));
    EXPECT_FALSE(ScalePeriod::measure(still, scenePixel(still, {-400, 300}), scenePixel(still, {400, 300})));
}

INSTANTIATE_TEST_SUITE_P(Stills, ScalePeriodOnSimStill, ::testing::Values(kMode640, kMode1280, kMode2592));

TEST(ScalePeriod, TooShortALine_IsRefused)
{
    const QImage still = simStill(kMode1280);
    const auto [from, to] = alongHorizontalScale(still);
    // Three divisions are too few to call a scale.
    EXPECT_FALSE(ScalePeriod::measure(still, from, {from.x + 3 * 10 / 1.0125, from.y}));
}

TEST(ScalePeriod, NullPictureOrZeroLengthLine_IsRefused)
{
    EXPECT_FALSE(ScalePeriod::measure(QImage(), {0, 0}, {100, 0}));
    EXPECT_FALSE(ScalePeriod::measure(simStill(kMode640), {10, 10}, {10, 10}));
}

// Stripes at irregular distances have no single period.
TEST(ScalePeriod, IrregularStripes_AreRefused)
{
    QImage stripes(600, 40, QImage::Format_RGB32);
    stripes.fill(Qt::white);
    QPainter p(&stripes);
    double x = 5;
    for (int i = 0; x < 590; ++i) {
        p.fillRect(QRectF(x, 0, 1.5, 40), Qt::black);
        x += (i * 7919 % 13) + 4;
    }
    p.end();
    EXPECT_FALSE(ScalePeriod::measure(stripes, {0, 20}, {600, 20}));
}

}  // namespace
