#include "SimStill.h"
#include "ToolTestSupport.h"
#include "camera/sim/SimScene.h"
#include "measure/CaliperTool.h"

#include <gtest/gtest.h>
#include <QImage>
#include <cmath>
#include <cstdio>

using namespace tavix;
using namespace tavix::test;

namespace {

const SimScene::Geometry& g = SimScene::geometry();

// A dark bar from x = left to x = right (picture pixels) on a bright ground,
// each pixel grey by the share of it the bar covers.
QImage bar(double left, double right, int width = 100, int height = 60)
{
    QImage picture(width, height, QImage::Format_Grayscale8);
    for (int x = 0; x < width; ++x) {
        const double cover = std::clamp(std::min<double>(x + 1, right) - std::max<double>(x, left), 0.0, 1.0);
        const int v = static_cast<int>(std::lround(200 - 150 * cover));
        for (int y = 0; y < height; ++y)
            picture.scanLine(y)[x] = static_cast<uchar>(v);
    }
    return picture;
}

MeasureContext onPicture(const QImage& picture, double factor = 0)
{
    MeasureContext c = contextWith(factor, factor);
    c.picture = picture;
    return c;
}

TEST(EdgeSnapProfile, EdgesOfABar_AreBothItsSides)
{
    const EdgeSnap snap(bar(40.3, 60.7));
    const auto edges = EdgeSnap::edgesOf(snap.profile({20, 30}, {80, 30}, 5));
    ASSERT_EQ(edges.size(), 2u);
    EXPECT_NEAR(20 + edges[0].at, 40.3, 0.02);
    EXPECT_NEAR(20 + edges[1].at, 60.7, 0.02);
    EXPECT_LT(edges[0].slope, 0);  // darker into the bar
    EXPECT_GT(edges[1].slope, 0);
}

// A line a few pixels wide has both its sides; a line about a pixel wide has
// them too, but its darkness sits in one or two pixels, so only its middle is
// exact.
TEST(EdgeSnapProfile, NarrowLines_GiveBothSides)
{
    const EdgeSnap wide(bar(50.2, 53.5));
    auto edges = EdgeSnap::edgesOf(wide.profile({30, 30}, {70, 30}, 1));
    ASSERT_EQ(edges.size(), 2u);
    EXPECT_NEAR(30 + edges[0].at, 50.2, 0.03);
    EXPECT_NEAR(30 + edges[1].at, 53.5, 0.03);

    const EdgeSnap thin(bar(50.2, 51.3));
    edges = EdgeSnap::edgesOf(thin.profile({30, 30}, {70, 30}, 1));
    ASSERT_EQ(edges.size(), 2u);
    EXPECT_NEAR(30 + edges[0].at, 50.2, 0.25);
    EXPECT_NEAR(30 + edges[1].at, 51.3, 0.25);
}

TEST(EdgeSnapProfile, FlatPicture_AndShortLine_GiveNoEdge)
{
    QImage flat(50, 50, QImage::Format_RGB32);
    flat.fill(QColor(90, 90, 90));
    const EdgeSnap snap(flat);
    EXPECT_TRUE(EdgeSnap::edgesOf(snap.profile({5, 5}, {45, 45}, 5)).empty());
    EXPECT_TRUE(snap.profile({5, 5}, {5.5, 5}, 5).empty());
    EXPECT_TRUE(EdgeSnap(QImage()).profile({0, 0}, {10, 0}, 1).empty());
}

TEST(EdgeSnapProfile, Grey_IsBilinearBetweenPixelCentres)
{
    QImage two(2, 1, QImage::Format_Grayscale8);
    two.scanLine(0)[0] = 10;
    two.scanLine(0)[1] = 30;
    const EdgeSnap snap(two);
    EXPECT_DOUBLE_EQ(snap.grey({0.5, 0.5}), 10);
    EXPECT_DOUBLE_EQ(snap.grey({1.0, 0.5}), 20);
    EXPECT_DOUBLE_EQ(snap.grey({-4, 0.5}), 10);  // outside reads the border
    EXPECT_DOUBLE_EQ(snap.grey({9, 3}), 30);
}

TEST(CaliperTool, DraggedAcrossABar_MeasuresItsWidthInUnits)
{
    CaliperTool tool;
    EXPECT_EQ(tool.guidance(), 80);
    tool.press({20, 30});
    EXPECT_EQ(tool.clickCount(), 1);
    EXPECT_EQ(tool.guidance(), 81);
    tool.addPoint({80, 31});
    ASSERT_TRUE(tool.complete());
    const auto m = tool.result(onPicture(bar(40.3, 60.7), 0.5));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 110);
    ASSERT_EQ(m->values.size(), 1u);
    EXPECT_EQ(m->values[0].kindCaption, 27102);
    EXPECT_EQ(m->values[0].unit, UnitKind::Length);
    // Along the slightly tilted line the bar is a little wider than 20.4 px.
    const double along = 20.4 * std::hypot(60.0, 1.0) / 60.0;
    EXPECT_NEAR(m->values[0].value, along * 0.5, 0.02 * 0.5);
    EXPECT_EQ(m->points.size(), 2u);
    EXPECT_EQ(m->shape.labels.size(), 1u);
}

TEST(CaliperTool, AClickThenAClick_AlsoMakesTheLine)
{
    CaliperTool tool;
    tool.press({20, 30});
    tool.addPoint({21, 30.5});  // released where it went down: the start stays
    EXPECT_FALSE(tool.complete());
    EXPECT_EQ(tool.clickCount(), 1);
    tool.press({80, 30});  // the second click's press places nothing
    EXPECT_EQ(tool.clickCount(), 1);
    tool.addPoint({80, 30});
    ASSERT_TRUE(tool.complete());
    const auto m = tool.result(onPicture(bar(40.3, 60.7)));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->points[0], (PointD{20, 30}));
    EXPECT_NEAR(m->values[0].value, 20.4, 0.03);
}

TEST(CaliperTool, NoTwoEdges_GivesNoResult_AndSaysSo)
{
    QImage flat(100, 60, QImage::Format_Grayscale8);
    flat.fill(120);
    CaliperTool tool;
    clickAll(tool, {{10, 10}, {90, 50}});
    EXPECT_FALSE(tool.result(onPicture(flat)));
    tool.startNext();
    EXPECT_EQ(tool.guidance(), 83);
    tool.addPoint({10, 10});
    EXPECT_EQ(tool.guidance(), 81);
    tool.reset();
    EXPECT_EQ(tool.guidance(), 80);
}

TEST(CaliperTool, EdgeSnap_DoesNotMoveItsPoints)
{
    EXPECT_FALSE(CaliperTool().takesSnappedPoints());
}

TEST(CaliperTool, AnotherPair_IsMeasured_AndComputedAgainFromItsPoints)
{
    // Two bars: edges at 20.5, 30.25, 60.5 and 70.75.
    QImage two = bar(20.5, 30.25);
    const QImage second = bar(60.5, 70.75);
    for (int y = 0; y < two.height(); ++y)
        for (int x = 50; x < two.width(); ++x)
            two.scanLine(y)[x] = second.constScanLine(y)[x];
    const MeasureContext c = onPicture(two);
    const CaliperTool::Profile profile = CaliperTool::profileAlong(two, {5, 30}, {95, 30});
    ASSERT_EQ(profile.edges.size(), 4u);
    EXPECT_EQ(CaliperTool::pairOf({{5, 30}, {95, 30}}, profile), std::make_pair(0, 3));

    const auto outer = CaliperTool().measure({{5, 30}, {95, 30}}, c);
    ASSERT_TRUE(outer);
    EXPECT_NEAR(outer->values[0].value, 50.25, 0.03);

    const auto inner = CaliperTool::measurePair(profile, 2, 1, c);
    ASSERT_TRUE(inner);
    EXPECT_NEAR(inner->values[0].value, 30.25, 0.03);
    ASSERT_EQ(inner->points.size(), 4u);
    EXPECT_EQ(CaliperTool::pairOf(inner->points, profile), std::make_pair(1, 2));
    const auto again = CaliperTool().measure(inner->points, c);
    ASSERT_TRUE(again);
    EXPECT_DOUBLE_EQ(again->values[0].value, inner->values[0].value);

    EXPECT_FALSE(CaliperTool::measurePair(profile, 1, 1, c));
    EXPECT_FALSE(CaliperTool::measurePair(profile, 0, 4, c));
}

// A caliper line across a feature of the slide (micrometres from the field's
// centre), and what it must measure.
struct CaliperCase {
    const char* name;
    QPointF from, to;
    double truthUm;  // the outermost pair's distance
    int edges;       // how many edges the line crosses
};

CaliperCase rectangleWidth()
{
    const double y = (g.rectangle[0].y() + g.rectangle[3].y()) / 2;
    return {"RectangleWidth",
            {g.rectangle[0].x() - 40, y},
            {g.rectangle[1].x() + 40, y},
            g.rectangle[1].x() - g.rectangle[0].x(),
            2};
}

CaliperCase rectangleHeight()
{
    const double x = (g.rectangle[0].x() + g.rectangle[1].x()) / 2;
    return {"RectangleHeight",
            {x, g.rectangle[0].y() - 40},
            {x, g.rectangle[3].y() + 30},
            g.rectangle[3].y() - g.rectangle[0].y(),
            2};
}

// Across every tick of the micrometer, just above its base line: from the
// left side of tick 0 to the right side of tick 100.
CaliperCase micrometerTicks()
{
    const SimScene::Scale& s = g.horizontalScale;
    const double y = s.zero.y() - s.shortTick / 2;
    return {"MicrometerTicks",
            {s.zero.x() - 15, y},
            {s.zero.x() + s.length + 15, y},
            s.length + s.lineWidth,
            2 * (static_cast<int>(std::lround(s.length / s.division)) + 1)};
}

struct StillCase {
    int mode;
    CaliperCase (*feature)();
};

class CaliperOnSimStill : public ::testing::TestWithParam<StillCase> {};

TEST_P(CaliperOnSimStill, OutermostPair_IsTheSlides)
{
    const QImage still = simStill(GetParam().mode);
    const CaliperCase f = GetParam().feature();
    const double umPerPixel = SimScene::micrometresPerPixel(still.size());
    CaliperTool tool;
    tool.press(scenePixel(still, f.from));
    tool.addPoint(scenePixel(still, f.to));
    const auto m = tool.result(onPicture(still));
    ASSERT_TRUE(m);
    const CaliperTool::Profile profile =
        CaliperTool::profileAlong(still, scenePixel(still, f.from), scenePixel(still, f.to));
    EXPECT_EQ(static_cast<int>(profile.edges.size()), f.edges) << f.name;
    const double error = m->values[0].value - f.truthUm / umPerPixel;
    EXPECT_NEAR(error, 0.0, 0.05) << f.name;
    std::printf("ERRORS %dx%d caliper %-16s %.4f px %.4f um\n", still.width(), still.height(), f.name,
                std::abs(error), std::abs(error) * umPerPixel);
}

std::vector<StillCase> stillCases()
{
    std::vector<StillCase> cases;
    for (int mode : {kMode640, kMode1280, kMode2592})
        for (auto feature : {rectangleWidth, rectangleHeight})
            cases.push_back({mode, feature});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Stills, CaliperOnSimStill, ::testing::ValuesIn(stillCases()), [](const auto& info) {
    return std::string(info.param.feature().name) + "_" + std::to_string(info.param.mode);
});

class CaliperOnMicrometer : public ::testing::TestWithParam<int> {};

// Every tick has its two sides; their middles lie on the divisions, and the
// left sides of ticks 0, 50 and 100 are 500 and 1000 um apart, within 0.1 px.
// A tick is 2 um wide, one pixel at 640x480: its sides then hold only the
// antialiasing of that pixel and are placed to half a pixel; its middle and a
// pair of like sides keep their accuracy.
TEST_P(CaliperOnMicrometer, TicksAndPickedPairs_AreTheDivisions)
{
    const QImage still = simStill(GetParam());
    const double umPerPixel = SimScene::micrometresPerPixel(still.size());
    const CaliperCase f = micrometerTicks();
    const PointD from = scenePixel(still, f.from);
    const CaliperTool::Profile profile = CaliperTool::profileAlong(still, from, scenePixel(still, f.to));
    ASSERT_EQ(static_cast<int>(profile.edges.size()), f.edges);
    const SimScene::Scale& s = g.horizontalScale;
    double worstMiddle = 0;
    for (std::size_t i = 0; i + 1 < profile.edges.size(); i += 2) {
        const double middle = from.x + (profile.edges[i].at + profile.edges[i + 1].at) / 2;
        const double truth =
            scenePixel(still, s.zero + QPointF(s.division * static_cast<double>(i / 2), 0)).x;
        worstMiddle = std::max(worstMiddle, std::abs(middle - truth));
    }
    EXPECT_LT(worstMiddle, 0.1);
    const MeasureContext c = onPicture(still);
    const auto half = CaliperTool::measurePair(profile, 0, 100, c);
    const auto whole = CaliperTool::measurePair(profile, 0, 200, c);
    ASSERT_TRUE(half && whole);
    const double worstPair = std::max(std::abs(half->values[0].value - 500 / umPerPixel),
                                      std::abs(whole->values[0].value - 1000 / umPerPixel));
    EXPECT_LT(worstPair, 0.1);
    std::printf(
        "ERRORS %dx%d caliper TickMiddles      %.4f px %.4f um | left sides 0-50-100 %.4f px %.4f um\n",
        still.width(), still.height(), worstMiddle, worstMiddle * umPerPixel, worstPair,
        worstPair * umPerPixel);
}

INSTANTIATE_TEST_SUITE_P(Stills, CaliperOnMicrometer, ::testing::Values(kMode640, kMode1280, kMode2592));

}  // namespace
