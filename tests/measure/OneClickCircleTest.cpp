#include "SimStill.h"
#include "ToolTestSupport.h"
#include "camera/sim/SimScene.h"
#include "measure/OneClickCircle.h"
#include "measure/OneClickCircleTool.h"

#include <gtest/gtest.h>
#include <QImage>
#include <QPainter>
#include <cmath>
#include <cstdio>

using namespace tavix;
using namespace tavix::test;

namespace {

const SimScene::Geometry& g = SimScene::geometry();

// A disc of `inside` grey on `outside`, each pixel grey by the share of it
// the disc covers (16 x 16 samples a pixel).
QImage disc(PointD centre, double radius, int inside, int outside, QSize size = {160, 120})
{
    QImage picture(size, QImage::Format_Grayscale8);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            int covered = 0;
            for (int j = 0; j < 16; ++j)
                for (int i = 0; i < 16; ++i)
                    covered +=
                        std::hypot(x + (i + 0.5) / 16 - centre.x, y + (j + 0.5) / 16 - centre.y) < radius;
            const double share = covered / 256.0;
            picture.scanLine(y)[x] = static_cast<uchar>(std::lround(outside + (inside - outside) * share));
        }
    return picture;
}

TEST(OneClickCircleFit, DropsThePointsOffTheCircle)
{
    std::vector<PointD> points;
    for (int i = 0; i < 40; ++i) {
        const double a = 2 * M_PI * i / 40;
        points.push_back({30 + 12 * std::cos(a), -5 + 12 * std::sin(a)});
    }
    points.push_back({30, 10});  // specks inside and outside the rim
    points.push_back({50, -5});
    points.push_back({31, -4});
    const auto c = OneClickCircle::fit(points, 20);
    ASSERT_TRUE(c);
    EXPECT_NEAR(c->centre.x, 30, 1e-9);
    EXPECT_NEAR(c->centre.y, -5, 1e-9);
    EXPECT_NEAR(c->radius, 12, 1e-9);
    EXPECT_EQ(c->dropped, 3);
    EXPECT_EQ(c->edges.size(), 40u);
    // Too few left after the outliers went.
    EXPECT_FALSE(OneClickCircle::fit(points, 42));
    EXPECT_FALSE(OneClickCircle::leastSquares({{0, 0}, {1, 1}, {2, 2}}));
}

TEST(OneClickCircle, DarkDiscAndBrightHole_AreFound)
{
    for (auto [inside, outside] : {std::pair{40, 210}, std::pair{230, 30}}) {
        const QImage picture = disc({70.3, 55.6}, 21.7, inside, outside);
        const auto c = OneClickCircle::find(EdgeSnap(picture), {64, 60});
        ASSERT_TRUE(c) << inside;
        EXPECT_NEAR(c->centre.x, 70.3, 0.03) << inside;
        EXPECT_NEAR(c->centre.y, 55.6, 0.03) << inside;
        EXPECT_NEAR(c->radius, 21.7, 0.03) << inside;
    }
}

TEST(OneClickCircle, NoClosedEdge_IsNoCircle)
{
    QImage flat(120, 90, QImage::Format_RGB32);
    flat.fill(QColor(100, 100, 100));
    EXPECT_FALSE(OneClickCircle::find(EdgeSnap(flat), {60, 45}));
    // A straight edge beside the click closes nothing.
    QImage half = flat;
    QPainter(&half).fillRect(QRect(0, 0, 50, 90), QColor(220, 220, 220));
    EXPECT_FALSE(OneClickCircle::find(EdgeSnap(half), {70, 45}));
    EXPECT_FALSE(OneClickCircle::find(EdgeSnap(QImage()), {1, 1}));
}

TEST(OneClickCircle, BareSlideOfTheSimulatedCamera_IsNoCircle)
{
    const QImage still = simStill(kMode640);
    EXPECT_FALSE(OneClickCircle::find(EdgeSnap(still), scenePixel(still, {100, 250})));
}

TEST(OneClickCircleTool, GivesDiameterAndCentre_InUnits)
{
    MeasureContext c = contextWith(0.5, 0.5, 3);
    c.picture = disc({70.3, 55.6}, 21.7, 40, 210);
    OneClickCircleTool tool;
    EXPECT_EQ(tool.guidance(), 82);
    EXPECT_FALSE(tool.takesSnappedPoints());
    tool.addPoint({75, 50});
    ASSERT_TRUE(tool.complete());
    const auto m = tool.result(c);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 111);
    ASSERT_EQ(m->values.size(), 3u);
    EXPECT_EQ(m->values[0].kindCaption, Caption::CircleDiameter);
    EXPECT_EQ(m->values[1].kindCaption, 27103);
    EXPECT_EQ(m->values[2].kindCaption, 27104);
    EXPECT_NEAR(m->values[0].value, 2 * 21.7 * 0.5, 0.03);
    EXPECT_NEAR(m->values[1].value, 70.3 * 0.5, 0.02);
    EXPECT_NEAR(m->values[2].value, 55.6 * 0.5, 0.02);
    EXPECT_EQ(m->shape.polylines.size(), 1u);
    ASSERT_EQ(m->shape.labels.size(), 1u);
    EXPECT_EQ(m->shape.labels[0].text, valueLabel(m->values[0], 3));
    EXPECT_TRUE(passesNear(m->shape, {70.3 + 21.7, 55.6}, 0.2));
}

TEST(OneClickCircleTool, NoCircle_GivesNoResult_AndSaysSo)
{
    MeasureContext c = contextWith(1, 1);
    c.picture = QImage(40, 40, QImage::Format_RGB32);
    c.picture.fill(Qt::gray);
    OneClickCircleTool tool;
    tool.addPoint({20, 20});
    EXPECT_FALSE(tool.result(c));
    tool.startNext();
    EXPECT_EQ(tool.guidance(), 84);
    tool.reset();
    EXPECT_EQ(tool.guidance(), 82);
}

struct DiscCase {
    int mode;
    bool large;
};

class OneClickCircleOnSimStill : public ::testing::TestWithParam<DiscCase> {};

// Clicks at the centre and up to half the radius off it, on stills with sensor
// noise: diameter and centre within 0.05 px of the slide's.
TEST_P(OneClickCircleOnSimStill, DiameterAndCentre_AreTheSlidesWithinFiveHundredthsOfAPixel)
{
    const QImage still = simStill(GetParam().mode);
    const SimScene::Circle& truth = GetParam().large ? g.largeCircle : g.smallCircle;
    const double umPerPixel = SimScene::micrometresPerPixel(still.size());
    const PointD centre = scenePixel(still, truth.centre);
    const double diameter = truth.diameter / umPerPixel;
    const EdgeSnap snap(still);
    double worstDiameter = 0, worstCentre = 0;
    for (const auto& [dx, dy] : {std::pair{0.0, 0.0}, std::pair{0.5, 0.0}, std::pair{0.0, -0.5},
                                 std::pair{-0.35, 0.35}, std::pair{0.2, 0.3}}) {
        const PointD click{centre.x + dx * diameter / 2, centre.y + dy * diameter / 2};
        const auto c = OneClickCircle::find(snap, click);
        ASSERT_TRUE(c) << dx << "," << dy;
        const double dError = 2 * c->radius - diameter;
        const double cError = std::hypot(c->centre.x - centre.x, c->centre.y - centre.y);
        EXPECT_NEAR(dError, 0.0, 0.05) << dx << "," << dy;
        EXPECT_LT(cError, 0.05) << dx << "," << dy;
        worstDiameter = std::max(worstDiameter, std::abs(dError));
        worstCentre = std::max(worstCentre, cError);
    }
    std::printf("ERRORS %dx%d one-click %-10s diameter %.4f px %.4f um | centre %.4f px %.4f um\n",
                still.width(), still.height(), GetParam().large ? "LargeDisc" : "SmallDisc", worstDiameter,
                worstDiameter * umPerPixel, worstCentre, worstCentre * umPerPixel);
}

INSTANTIATE_TEST_SUITE_P(Stills, OneClickCircleOnSimStill,
                         ::testing::Values(DiscCase{kMode640, true}, DiscCase{kMode640, false},
                                           DiscCase{kMode1280, true}, DiscCase{kMode1280, false},
                                           DiscCase{kMode2592, true}, DiscCase{kMode2592, false}),
                         [](const auto& info) {
                             return std::string(info.param.large ? "LargeDisc_" : "SmallDisc_") +
                                    std::to_string(info.param.mode);
                         });

}  // namespace
