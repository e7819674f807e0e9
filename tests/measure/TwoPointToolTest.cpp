#include "measure/TwoPointTool.h"

#include "common/RunError.h"

#include "ToolTestSupport.h"

#include <cmath>

using namespace tavix;
using namespace tavix::test;

namespace {

struct DistanceCase {
    const char* name;
    PointD a, b;
    double xFactor, yFactor;
    double expected;
};

class TwoPointDistance : public ::testing::TestWithParam<DistanceCase> {};

TEST_P(TwoPointDistance, GivesTheCalibratedDistance)
{
    const DistanceCase& c = GetParam();
    TwoPointTool tool;
    const std::optional<double> value = valueOf(tool, {c.a, c.b}, contextWith(c.xFactor, c.yFactor));
    ASSERT_TRUE(value);
    EXPECT_DOUBLE_EQ(*value, c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    TwoPointTool, TwoPointDistance,
    ::testing::Values(DistanceCase{"ThreeFourFiveInPixels", {0, 0}, {3, 4}, 1, 1, 5},
                      DistanceCase{"ThreeFourFiveTimesTheFactor", {10, 20}, {13, 24}, 0.5, 0.5, 2.5},
                      DistanceCase{"ThreeFourFiveTimesFactorTwo", {0, 0}, {3, 4}, 2, 2, 10},
                      DistanceCase{"ZeroFactorsCountAsOne", {0, 0}, {3, 4}, 0, 0, 5},
                      DistanceCase{"ZeroYFactorCountsAsOne", {0, 0}, {3, 4}, 2, 0, std::sqrt(52.0)},
                      DistanceCase{"EachAxisByItsOwnFactor", {0, 0}, {3, 4}, 2, 0.5, std::sqrt(40.0)},
                      DistanceCase{"HorizontalIsExact", {10, 10}, {110, 10}, 0.25, 4, 25},
                      DistanceCase{"VerticalTakesTheYFactor", {10, 10}, {10, 110}, 0.25, 4, 400},
                      DistanceCase{"SamePointIsZero", {7, 7}, {7, 7}, 1, 1, 0}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(TwoPointTool, Result_IsTheSame_AtAnyMagnificationOfTheView)
{
    TwoPointTool tool;
    clickAll(tool, {{0, 0}, {3, 4}});
    const auto atOne = tool.result(contextWith(0.5, 0.5, 3, 1));
    const auto atFour = tool.result(contextWith(0.5, 0.5, 3, 4));
    ASSERT_TRUE(atOne && atFour);
    EXPECT_EQ(atFour->values[0].value, atOne->values[0].value);
    EXPECT_EQ(atFour->values[0].value, 2.5);
}

TEST(TwoPointTool, Result_GivesTheDistanceKindInLengthUnits_WithPointsAndALabelAtTheMidpoint)
{
    TwoPointTool tool;
    clickAll(tool, {{10, 10}, {16, 18}});
    const std::optional<Measurement> m = tool.result(contextWith(1, 1, 3));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 101);
    EXPECT_TRUE(m->addsResultRows());
    ASSERT_EQ(m->values.size(), 1u);
    EXPECT_EQ(m->values[0].kindCaption, 11132);
    EXPECT_EQ(m->values[0].unit, UnitKind::Length);
    EXPECT_EQ(m->points, (std::vector<PointD>{{10, 10}, {16, 18}}));
    EXPECT_TRUE(hasLine(m->shape, {10, 10}, {16, 18}));
    ASSERT_EQ(m->shape.labels.size(), 1u);
    EXPECT_EQ(m->shape.labels[0].anchor, (PointD{13, 14}));
    EXPECT_EQ(m->shape.labels[0].text, "10.000");
}

TEST(TwoPointTool, Result_IsNothing_BeforeTheSecondClick)
{
    TwoPointTool tool;
    tool.addPoint({1, 1});
    EXPECT_FALSE(tool.complete());
    EXPECT_FALSE(tool.result(contextWith(1, 1)));
}

TEST(TwoPointTool, AddPoint_IsIgnored_OnceComplete)
{
    TwoPointTool tool;
    clickAll(tool, {{0, 0}, {3, 4}, {100, 100}});
    EXPECT_EQ(tool.clickCount(), 2);
    EXPECT_EQ(tool.result(contextWith(1, 1))->values[0].value, 5);
}

TEST(TwoPointTool, Guidance_AsksForTheFirstThenTheSecondPoint_AndAgainAfterStartNext)
{
    TwoPointTool tool;
    EXPECT_EQ(tool.guidance(), 32);
    tool.addPoint({0, 0});
    EXPECT_EQ(tool.guidance(), 33);
    tool.addPoint({1, 0});
    tool.startNext();
    EXPECT_EQ(tool.clickCount(), 0);
    EXPECT_EQ(tool.guidance(), 32);
}

TEST(TwoPointTool, Preview_DrawsFromTheFirstPointToThePointer_WithTheLiveValue)
{
    TwoPointTool tool;
    tool.addPoint({0, 0});
    const Shape first = tool.preview({3, 4}, contextWith(2, 2, 1));
    EXPECT_TRUE(hasLine(first, {0, 0}, {3, 4}));
    ASSERT_EQ(first.labels.size(), 1u);
    EXPECT_EQ(first.labels[0].text, "10.0");

    const Shape moved = tool.preview({6, 8}, contextWith(2, 2, 1));
    EXPECT_TRUE(hasLine(moved, {0, 0}, {6, 8}));
    EXPECT_EQ(moved.labels[0].text, "20.0");
}

TEST(TwoPointTool, Preview_ShowsOnlyThePointer_BeforeTheFirstClick)
{
    TwoPointTool tool;
    const Shape shape = tool.preview({5, 6}, contextWith(1, 1));
    EXPECT_TRUE(shape.lines.empty());
    EXPECT_EQ(shape.marks, (std::vector<PointD>{{5, 6}}));
}

TEST(TwoPointTool, Result_RaisesOverflow_WhenTheValueIsNoFiniteNumber)
{
    TwoPointTool tool;
    clickAll(tool, {{0, 0}, {1e200, 0}});
    try {
        tool.result(contextWith(1e200, 1e200));
        FAIL() << "no run-time error";
    } catch (const RunError& e) {
        EXPECT_EQ(e.number(), err::Overflow);
    }
}

TEST(TwoPointTool, Preview_FallsBackToTheLine_WhenTheLiveValueOverflows)
{
    TwoPointTool tool;
    tool.addPoint({0, 0});
    const Shape shape = tool.preview({1e200, 0}, contextWith(1e200, 1e200));
    EXPECT_TRUE(hasLine(shape, {0, 0}, {1e200, 0}));
    EXPECT_TRUE(shape.labels.empty());
}

TEST(TwoPointTool, Preview_IsEmpty_OnceComplete)
{
    TwoPointTool tool;
    clickAll(tool, {{0, 0}, {3, 4}});
    EXPECT_TRUE(tool.preview({9, 9}, contextWith(1, 1)).empty());
}

TEST(TwoPointTool, Reset_DropsThePlacedPoint)
{
    TwoPointTool tool;
    tool.addPoint({1, 2});
    tool.reset();
    EXPECT_EQ(tool.clickCount(), 0);
    EXPECT_EQ(tool.guidance(), 32);
}

}  // namespace
