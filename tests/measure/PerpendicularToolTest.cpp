#include "measure/PerpendicularTool.h"

#include "ToolTestSupport.h"

#include <cmath>

using namespace tavix;
using namespace tavix::test;

namespace {

struct PerpendicularCase {
    const char* name;
    PointD p0, p1, q;
    double xFactor, yFactor;
    double expected;
};

class PerpendicularLength : public ::testing::TestWithParam<PerpendicularCase> {};

TEST_P(PerpendicularLength, MeasuresThePointSquareToTheBaseLine)
{
    const PerpendicularCase& c = GetParam();
    PerpendicularTool tool;
    const std::optional<double> value = valueOf(tool, {c.p0, c.p1, c.q}, contextWith(c.xFactor, c.yFactor));
    ASSERT_TRUE(value);
    EXPECT_NEAR(*value, c.expected, 1e-12);
}

INSTANTIATE_TEST_SUITE_P(
    PerpendicularTool, PerpendicularLength,
    ::testing::Values(PerpendicularCase{"HorizontalBase", {0, 0}, {100, 0}, {40, 25}, 1, 1, 25},
                      PerpendicularCase{"HorizontalBaseTimesFactor", {0, 0}, {100, 0}, {40, 25}, 0.2, 0.2, 5},
                      PerpendicularCase{"VerticalBaseTakesTheXFactor", {0, 0}, {0, 100}, {25, 40}, 0.2, 3, 5},
                      PerpendicularCase{"SlopedBase", {0, 0}, {3, 4}, {4, -3}, 1, 1, 5},
                      PerpendicularCase{"ZeroFactorsCountAsOne", {0, 0}, {100, 0}, {40, 25}, 0, 0, 25}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(PerpendicularTool, Result_IsOfThePerpendicularKind)
{
    PerpendicularTool tool;
    clickAll(tool, {{0, 0}, {100, 0}, {40, 25}});
    const std::optional<Measurement> m = tool.result(contextWith(1, 1));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 104);
    EXPECT_EQ(m->values[0].kindCaption, 11137);
    EXPECT_TRUE(hasLine(m->shape, {40, 25}, {40, 0}));
}

TEST(PerpendicularTool, Guidance_AsksForTheBaseLineThenThePointThenTheNextPoint)
{
    PerpendicularTool tool;
    EXPECT_EQ(tool.guidance(), 43);
    tool.addPoint({0, 0});
    EXPECT_EQ(tool.guidance(), 44);
    tool.addPoint({100, 0});
    EXPECT_EQ(tool.guidance(), 45);
    tool.addPoint({10, 10});
    ASSERT_TRUE(tool.complete());
    tool.startNext();
    EXPECT_EQ(tool.guidance(), 46);
}

TEST(PerpendicularTool, StartNext_KeepsTheBaseLine_ForTheNextPoint)
{
    PerpendicularTool tool;
    clickAll(tool, {{0, 0}, {100, 0}, {10, 10}});
    tool.startNext();
    EXPECT_EQ(tool.clickCount(), 2);
    EXPECT_FALSE(tool.complete());
    tool.addPoint({50, -30});
    const std::optional<Measurement> m = tool.result(contextWith(1, 1));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->values[0].value, 30);
    EXPECT_EQ(m->points, (std::vector<PointD>{{0, 0}, {100, 0}, {50, -30}}));
}

TEST(PerpendicularTool, StartNext_ChangesNothing_BeforeTheFirstPoint)
{
    PerpendicularTool tool;
    clickAll(tool, {{0, 0}, {100, 0}});
    tool.startNext();
    EXPECT_EQ(tool.clickCount(), 2);
    EXPECT_EQ(tool.guidance(), 45);
}

TEST(PerpendicularTool, Reset_DropsTheBaseLine)
{
    PerpendicularTool tool;
    clickAll(tool, {{0, 0}, {100, 0}, {10, 10}});
    tool.startNext();
    tool.reset();
    EXPECT_EQ(tool.clickCount(), 0);
    EXPECT_EQ(tool.guidance(), 43);
}

TEST(PerpendicularTool, Preview_FollowsThePointer_OnTheKeptBaseLine)
{
    PerpendicularTool tool;
    clickAll(tool, {{0, 0}, {100, 0}, {10, 10}});
    tool.startNext();
    const Shape shape = tool.preview({60, 20}, contextWith(1, 1, 0));
    EXPECT_TRUE(hasLine(shape, {0, 0}, {100, 0}));
    EXPECT_TRUE(hasLine(shape, {60, 20}, {60, 0}));
    ASSERT_EQ(shape.labels.size(), 1u);
    EXPECT_EQ(shape.labels[0].text, "20");
}

}  // namespace
