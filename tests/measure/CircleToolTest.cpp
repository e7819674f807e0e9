#include "measure/CircleTool.h"

#include "ToolTestSupport.h"

#include <cmath>

using namespace tavix;
using namespace tavix::test;

namespace {

struct CircleCase {
    const char* name;
    PointD p0, p1, p2;
    double xFactor, yFactor;
    double expected;
};

class CircleDiameter : public ::testing::TestWithParam<CircleCase> {};

TEST_P(CircleDiameter, GivesTheDiameterOfTheCircleThroughTheThreePoints)
{
    const CircleCase& c = GetParam();
    CircleTool tool;
    const std::optional<double> value = valueOf(tool, {c.p0, c.p1, c.p2}, contextWith(c.xFactor, c.yFactor));
    ASSERT_TRUE(value);
    EXPECT_NEAR(*value, c.expected, 1e-12 * std::max(1.0, c.expected));
}

INSTANTIATE_TEST_SUITE_P(
    CircleTool, CircleDiameter,
    ::testing::Values(
        CircleCase{"RightAngleCornerPoints", {0, 0}, {2, 0}, {0, 2}, 1, 1, 2 * std::sqrt(2.0)},
        CircleCase{"RightAngleCornerPointsTimesFactor", {0, 0}, {2, 0}, {0, 2}, 0.5, 0.5, std::sqrt(2.0)},
        CircleCase{"ZeroFactorsCountAsOne", {0, 0}, {2, 0}, {0, 2}, 0, 0, 2 * std::sqrt(2.0)},
        CircleCase{"AroundAnOffCentre", {150, 100}, {100, 150}, {50, 100}, 1, 1, 100},
        // Points of an ellipse in pixels that is a circle of radius 10 in units.
        CircleCase{"CircleInUnitsWhenTheFactorsDiffer", {10, 0}, {0, 5}, {-10, 0}, 1, 2, 20}),
    [](const auto& info) { return std::string(info.param.name); });

struct NoCircleCase {
    const char* name;
    PointD p0, p1, p2;
};

class CircleWithoutResult : public ::testing::TestWithParam<NoCircleCase> {};

TEST_P(CircleWithoutResult, GivesNoResult)
{
    const NoCircleCase& c = GetParam();
    CircleTool tool;
    clickAll(tool, {c.p0, c.p1, c.p2});
    EXPECT_TRUE(tool.complete());
    EXPECT_FALSE(tool.result(contextWith(1, 1)));
}

INSTANTIATE_TEST_SUITE_P(CircleTool, CircleWithoutResult,
                         ::testing::Values(NoCircleCase{"CollinearPoints", {0, 0}, {1, 1}, {2, 2}},
                                           NoCircleCase{"CollinearHorizontal", {0, 5}, {10, 5}, {30, 5}},
                                           NoCircleCase{"TwoPointsCoincide", {0, 0}, {0, 0}, {1, 5}}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(CircleTool, CollinearPoints_GiveNoResult_WhenTheFactorsDiffer)
{
    // Scaled unevenly, collinear pixels might round into a huge circle; the
    // test runs on the pixels.
    CircleTool tool;
    clickAll(tool, {{0, 0}, {1, 2}, {3, 6}});
    EXPECT_FALSE(tool.result(contextWith(0.1, 0.3)));
}

TEST(CircleTool, Result_DrawsAClosedCircleThroughTheClicks_WithTheLabelAtTheCentre)
{
    CircleTool tool;
    clickAll(tool, {{150, 100}, {100, 150}, {50, 100}});
    const std::optional<Measurement> m = tool.result(contextWith(1, 1, 1));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 102);
    EXPECT_EQ(m->values[0].kindCaption, 11133);
    ASSERT_EQ(m->shape.polylines.size(), 1u);
    const std::vector<PointD>& circle = m->shape.polylines[0];
    EXPECT_EQ(circle.size(), 33u);
    EXPECT_EQ(circle.front(), circle.back());
    for (const PointD& p : circle)
        EXPECT_NEAR(CalcModule::CalcDistance(p, {100, 100}), 50, 1e-9);
    ASSERT_EQ(m->shape.labels.size(), 1u);
    EXPECT_NEAR(m->shape.labels[0].anchor.x, 100, 1e-9);
    EXPECT_NEAR(m->shape.labels[0].anchor.y, 100, 1e-9);
    EXPECT_EQ(m->shape.labels[0].text, "100.0");
}

TEST(CircleTool, Guidance_CountsTheThreeEdgePoints)
{
    CircleTool tool;
    EXPECT_EQ(tool.guidance(), 34);
    tool.addPoint({0, 0});
    EXPECT_EQ(tool.guidance(), 35);
    tool.addPoint({2, 0});
    EXPECT_EQ(tool.guidance(), 36);
}

TEST(CircleTool, Preview_DrawsTheCircleThroughThePointer_AfterTwoClicks)
{
    CircleTool tool;
    clickAll(tool, {{150, 100}, {100, 150}});
    const Shape shape = tool.preview({50, 100}, contextWith(1, 1, 0));
    ASSERT_EQ(shape.polylines.size(), 1u);
    EXPECT_TRUE(passesNear(shape, {50, 100}, 0.5));
    EXPECT_TRUE(passesNear(shape, {100, 50}, 0.5));
    ASSERT_EQ(shape.labels.size(), 1u);
    EXPECT_EQ(shape.labels[0].text, "100");
}

TEST(CircleTool, Preview_FallsBackToThePath_WhenThePointerIsInLine)
{
    CircleTool tool;
    clickAll(tool, {{0, 0}, {10, 0}});
    const Shape shape = tool.preview({20, 0}, contextWith(1, 1));
    EXPECT_TRUE(shape.polylines.empty());
    EXPECT_TRUE(hasLine(shape, {10, 0}, {20, 0}));
    EXPECT_TRUE(shape.labels.empty());
}

}  // namespace
