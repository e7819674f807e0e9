#include "measure/AreaTool.h"

#include "ToolTestSupport.h"

using namespace tavix;
using namespace tavix::test;

namespace {

struct AreaCase {
    const char* name;
    std::vector<PointD> corners;
    double xFactor, yFactor;
    double expected;
};

class PolygonArea : public ::testing::TestWithParam<AreaCase> {};

TEST_P(PolygonArea, GivesTheAreaInUnitsSquared)
{
    const AreaCase& c = GetParam();
    AreaTool tool;
    const std::optional<double> value = valueOf(tool, c.corners, contextWith(c.xFactor, c.yFactor), true);
    ASSERT_TRUE(value);
    EXPECT_DOUBLE_EQ(*value, c.expected);
}

const std::vector<PointD> rectangle{{10, 20}, {210, 20}, {210, 120}, {10, 120}};

INSTANTIATE_TEST_SUITE_P(
    AreaTool, PolygonArea,
    ::testing::Values(AreaCase{"RectangleInPixels", rectangle, 1, 1, 20000},
                      AreaCase{"RectangleTimesBothFactors", rectangle, 0.5, 0.25, 2500},
                      AreaCase{"ZeroFactorsCountAsOne", rectangle, 0, 0, 20000},
                      AreaCase{"ZeroYFactorCountsAsOne", rectangle, 0.5, 0, 10000},
                      AreaCase{"Triangle", {{0, 0}, {4, 0}, {0, 3}}, 1, 1, 6},
                      AreaCase{"ClockwiseOrderGivesThePositiveArea", {{0, 0}, {0, 3}, {4, 0}}, 1, 1, 6},
                      AreaCase{
                          "ConcaveL", {{0, 0}, {20, 0}, {20, 10}, {10, 10}, {10, 20}, {0, 20}}, 1, 1, 300}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(AreaTool, DoubleClick_DoesNotClose_WithFewerThanThreeCorners)
{
    AreaTool tool;
    clickAll(tool, {{0, 0}, {10, 0}});
    EXPECT_FALSE(tool.finishOnDoubleClick());
    EXPECT_FALSE(tool.complete());
    tool.addPoint({10, 10});
    EXPECT_TRUE(tool.finishOnDoubleClick());
    EXPECT_TRUE(tool.complete());
}

TEST(AreaTool, KeepsTakingCorners_UntilTheDoubleClick)
{
    AreaTool tool;
    clickAll(tool, rectangle);
    EXPECT_FALSE(tool.complete());
    EXPECT_FALSE(tool.result(contextWith(1, 1)));
    EXPECT_EQ(tool.clickCount(), 4);
}

TEST(AreaTool, Result_IsOfTheAreaKind_DrawnClosed_WithTheLabelInside)
{
    AreaTool tool;
    clickAll(tool, rectangle, true);
    const std::optional<Measurement> m = tool.result(contextWith(1, 1, 0));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 105);
    EXPECT_EQ(m->values[0].kindCaption, 11138);
    EXPECT_EQ(m->values[0].unit, UnitKind::Area);
    EXPECT_EQ(m->shape.lines.size(), 4u);
    EXPECT_TRUE(hasLine(m->shape, {10, 120}, {10, 20}));
    ASSERT_EQ(m->shape.labels.size(), 1u);
    EXPECT_EQ(m->shape.labels[0].anchor, (PointD{110, 70}));
    EXPECT_EQ(m->shape.labels[0].text, "20000");
}

TEST(AreaTool, Guidance_AsksForTheFirstCornerThenTheNext)
{
    AreaTool tool;
    EXPECT_EQ(tool.guidance(), 50);
    tool.addPoint({0, 0});
    EXPECT_EQ(tool.guidance(), 51);
    tool.addPoint({5, 0});
    EXPECT_EQ(tool.guidance(), 51);
}

TEST(AreaTool, StartNext_BeginsANewPolygon)
{
    AreaTool tool;
    clickAll(tool, rectangle, true);
    tool.startNext();
    EXPECT_FALSE(tool.complete());
    EXPECT_EQ(tool.clickCount(), 0);
    EXPECT_EQ(tool.guidance(), 50);
}

TEST(AreaTool, Preview_ClosesFromThePointerToTheFirstCorner_WithTheLiveArea)
{
    AreaTool tool;
    clickAll(tool, {{0, 0}, {40, 0}});
    const Shape shape = tool.preview({0, 30}, contextWith(1, 1, 0));
    EXPECT_TRUE(hasLine(shape, {40, 0}, {0, 30}));
    ASSERT_EQ(shape.guides.size(), 1u);
    EXPECT_EQ(shape.guides[0], (Segment{{0, 30}, {0, 0}}));
    ASSERT_EQ(shape.labels.size(), 1u);
    EXPECT_EQ(shape.labels[0].text, "600");
}

}  // namespace
