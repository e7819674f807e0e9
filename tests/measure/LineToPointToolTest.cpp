#include "measure/LineToPointTool.h"

#include "ToolTestSupport.h"

#include <cmath>

using namespace tavix;
using namespace tavix::test;

namespace {

struct LinePointCase {
    const char* name;
    PointD p0, p1, q;
    double xFactor, yFactor;
    double expected;
    PointD foot;
};

class LineToPointDistance : public ::testing::TestWithParam<LinePointCase> {};

TEST_P(LineToPointDistance, MeasuresSquareToTheLine)
{
    const LinePointCase& c = GetParam();
    LineToPointTool tool;
    clickAll(tool, {c.p0, c.p1, c.q});
    const std::optional<Measurement> m = tool.result(contextWith(c.xFactor, c.yFactor));
    ASSERT_TRUE(m);
    EXPECT_NEAR(m->values[0].value, c.expected, 1e-12);
    EXPECT_TRUE(hasLine(m->shape, c.q, c.foot, 1e-9)) << "perpendicular to the foot";
}

INSTANTIATE_TEST_SUITE_P(
    LineToPointTool, LineToPointDistance,
    ::testing::Values(
        LinePointCase{"HorizontalLine", {0, 0}, {10, 0}, {5, 7}, 1, 1, 7, {5, 0}},
        LinePointCase{"HorizontalLineTimesFactor", {0, 0}, {10, 0}, {5, 7}, 0.5, 0.5, 3.5, {5, 0}},
        LinePointCase{"VerticalLine", {3, 0}, {3, 10}, {10, 4}, 1, 1, 7, {3, 4}},
        LinePointCase{"DiagonalLine", {0, 0}, {10, 10}, {0, 10}, 1, 1, std::sqrt(50.0), {5, 5}},
        LinePointCase{"FootBeyondTheClickedLine", {0, 0}, {10, 0}, {30, -4}, 1, 1, 4, {30, 0}},
        LinePointCase{"SquareToAHorizontalLineTakesTheYFactor", {0, 0}, {10, 0}, {5, 7}, 2, 0.5, 3.5, {5, 0}},
        LinePointCase{"ZeroFactorsCountAsOne", {0, 0}, {10, 0}, {5, 7}, 0, 0, 7, {5, 0}},
        LinePointCase{"SinglePointLineCountsAsHorizontal", {5, 5}, {5, 5}, {100, 8}, 1, 1, 3, {100, 5}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(LineToPointTool, Result_IsADistanceWithALabelHalfWayUpThePerpendicular)
{
    LineToPointTool tool;
    clickAll(tool, {{0, 0}, {10, 0}, {4, 6}});
    const std::optional<Measurement> m = tool.result(contextWith(1, 1, 2));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 108);
    EXPECT_EQ(m->values[0].kindCaption, 11132);
    EXPECT_EQ(m->values[0].unit, UnitKind::Length);
    EXPECT_TRUE(hasLine(m->shape, {0, 0}, {10, 0}));
    ASSERT_EQ(m->shape.labels.size(), 1u);
    EXPECT_EQ(m->shape.labels[0].anchor, (PointD{4, 3}));
    EXPECT_EQ(m->shape.labels[0].text, "6.00");
}

TEST(LineToPointTool, Result_ExtendsTheLineByAGuide_WhenTheFootLiesBeyondIt)
{
    LineToPointTool tool;
    clickAll(tool, {{0, 0}, {10, 0}, {30, -4}});
    const std::optional<Measurement> m = tool.result(contextWith(1, 1));
    ASSERT_TRUE(m);
    ASSERT_EQ(m->shape.guides.size(), 1u);
    EXPECT_EQ(m->shape.guides[0], (Segment{{10, 0}, {30, 0}}));
}

TEST(LineToPointTool, Guidance_FollowsLinePointsThenThePoint)
{
    LineToPointTool tool;
    EXPECT_EQ(tool.guidance(), 57);
    tool.addPoint({0, 0});
    EXPECT_EQ(tool.guidance(), 58);
    tool.addPoint({10, 0});
    EXPECT_EQ(tool.guidance(), 59);
}

TEST(LineToPointTool, Preview_DrawsThePerpendicularFromThePointer_OnceTheLineIsPlaced)
{
    LineToPointTool tool;
    clickAll(tool, {{0, 0}, {10, 0}});
    const Shape shape = tool.preview({7, 9}, contextWith(1, 1, 0));
    EXPECT_TRUE(hasLine(shape, {7, 9}, {7, 0}));
    ASSERT_EQ(shape.labels.size(), 1u);
    EXPECT_EQ(shape.labels[0].text, "9");
}

TEST(LineToPointTool, Preview_DrawsTheLineToThePointer_AfterTheFirstClick)
{
    LineToPointTool tool;
    tool.addPoint({2, 2});
    const Shape shape = tool.preview({8, 3}, contextWith(1, 1));
    EXPECT_TRUE(hasLine(shape, {2, 2}, {8, 3}));
    EXPECT_TRUE(shape.labels.empty());
}

}  // namespace
