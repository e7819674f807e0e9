#include "measure/AngleTool.h"

#include "ToolTestSupport.h"

#include <cmath>

using namespace tavix;
using namespace tavix::test;

namespace {

const double root3 = std::sqrt(3.0);

struct AngleCase {
    const char* name;
    std::vector<PointD> clicks;  // two points of line 1, two of line 2
    double xFactor, yFactor;
    double expectedDegrees;
};

class TwoLineAngle : public ::testing::TestWithParam<AngleCase> {};

TEST_P(TwoLineAngle, GivesTheAngleBetweenTheClickedArms)
{
    const AngleCase& c = GetParam();
    AngleTool tool;
    const std::optional<double> value = valueOf(tool, c.clicks, contextWith(c.xFactor, c.yFactor));
    ASSERT_TRUE(value);
    EXPECT_NEAR(*value, c.expectedDegrees, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    AngleTool, TwoLineAngle,
    ::testing::Values(
        AngleCase{"PerpendicularLinesMeetingAtACorner", {{0, 0}, {10, 0}, {20, -10}, {20, -20}}, 1, 1, 90},
        AngleCase{"PerpendicularLinesCrossing", {{-10, 0}, {10, 0}, {3, -10}, {3, 10}}, 1, 1, 90},
        AngleCase{"PerpendicularTimesFactor", {{0, 0}, {10, 0}, {20, -10}, {20, -20}}, 0.5, 0.5, 90},
        AngleCase{"ZeroFactorsCountAsOne", {{0, 0}, {10, 0}, {20, -10}, {20, -20}}, 0, 0, 90},
        AngleCase{"Sixty", {{5, 0}, {10, 0}, {1, root3}, {2, 2 * root3}}, 1, 1, 60},
        AngleCase{"ObtuseArms", {{5, 0}, {10, 0}, {-5, 5}, {-10, 10}}, 1, 1, 135},
        AngleCase{"ArmsTakenFromTheFartherPoints", {{10, 0}, {5, 0}, {-10, 10}, {-5, 5}}, 1, 1, 135},
        // Square in pixels, but y counts twice as much as x: (1, 2) against (1, -2).
        AngleCase{"AngleInUnitsWhenTheFactorsDiffer",
                  {{10, 10}, {20, 20}, {10, -10}, {20, -20}},
                  1,
                  2,
                  std::acos(-0.6) * 180 / 3.14159265358979}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(AngleTool, ParallelLines_GiveNoResult)
{
    AngleTool tool;
    clickAll(tool, {{0, 0}, {10, 0}, {0, 5}, {10, 5}});
    EXPECT_TRUE(tool.complete());
    EXPECT_FALSE(tool.result(contextWith(1, 1)));
}

TEST(AngleTool, Result_IsAnAngleWithAnArcAtTheCrossing_AndGuidesToIt)
{
    AngleTool tool;
    clickAll(tool, {{0, 0}, {10, 0}, {20, -10}, {20, -20}});
    const std::optional<Measurement> m = tool.result(contextWith(1, 1, 3));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 106);
    EXPECT_EQ(m->values[0].kindCaption, 11134);
    EXPECT_EQ(m->values[0].unit, UnitKind::Angle);
    EXPECT_TRUE(hasLine(m->shape, {0, 0}, {10, 0}));
    EXPECT_TRUE(hasLine(m->shape, {20, -10}, {20, -20}));
    ASSERT_EQ(m->shape.guides.size(), 2u);
    EXPECT_EQ(m->shape.guides[0], (Segment{{10, 0}, {20, 0}}));
    EXPECT_EQ(m->shape.guides[1], (Segment{{20, -10}, {20, 0}}));
    ASSERT_EQ(m->shape.polylines.size(), 1u);
    for (const PointD& p : m->shape.polylines[0])
        EXPECT_NEAR(CalcModule::CalcDistance(p, {20, 0}), 10, 1e-9);
    ASSERT_EQ(m->shape.labels.size(), 1u);
    EXPECT_EQ(m->shape.labels[0].text, QString("90.000") + QChar(0x00B0));
}

TEST(AngleTool, Guidance_AsksForLineOnePointsThenLineTwo)
{
    AngleTool tool;
    const int expected[] = {47, 48, 49, 49};
    const std::vector<PointD> clicks{{0, 0}, {10, 0}, {20, -10}, {20, -20}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(tool.guidance(), expected[i]) << "before click " << i;
        tool.addPoint(clicks[static_cast<std::size_t>(i)]);
    }
    EXPECT_TRUE(tool.complete());
}

TEST(AngleTool, Preview_GivesTheLiveAngle_ForTheLastPointAtThePointer)
{
    AngleTool tool;
    clickAll(tool, {{5, 0}, {10, 0}, {-5, 5}});
    const Shape shape = tool.preview({-10, 10}, contextWith(1, 1, 0));
    ASSERT_EQ(shape.labels.size(), 1u);
    EXPECT_EQ(shape.labels[0].text, QString("135") + QChar(0x00B0));
    EXPECT_TRUE(hasLine(shape, {-5, 5}, {-10, 10}));
}

TEST(AngleTool, Preview_DrawsLineOneAndMarksThePointer_WhileLineTwoIsStarted)
{
    AngleTool tool;
    clickAll(tool, {{0, 0}, {10, 0}});
    const Shape shape = tool.preview({20, -10}, contextWith(1, 1));
    ASSERT_EQ(shape.lines.size(), 1u);
    EXPECT_TRUE(hasLine(shape, {0, 0}, {10, 0}));
    EXPECT_EQ(shape.marks.back(), (PointD{20, -10}));
}

}  // namespace
