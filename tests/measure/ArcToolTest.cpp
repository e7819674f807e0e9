#include "measure/ArcTool.h"

#include "ToolTestSupport.h"

#include <cmath>

using namespace tavix;
using namespace tavix::test;

namespace {

const double r45 = 10 * std::sqrt(0.5);

struct ArcCase {
    const char* name;
    PointD start, middle, end;
    double factor;
    double expectedDegrees;
};

class ArcAngle : public ::testing::TestWithParam<ArcCase> {};

TEST_P(ArcAngle, GivesTheAngleTheArcSpansThroughItsMiddle)
{
    const ArcCase& c = GetParam();
    ArcTool tool;
    clickAll(tool, {c.start, c.middle, c.end});
    const std::optional<Measurement> m = tool.result(contextWith(c.factor, c.factor));
    ASSERT_TRUE(m);
    EXPECT_NEAR(m->values[0].value, c.expectedDegrees, 1e-9);
    ASSERT_EQ(m->shape.polylines.size(), 1u);
    const std::vector<PointD>& arc = m->shape.polylines[0];
    EXPECT_EQ(arc.size(), 33u);
    // The drawn arc runs from one clicked end to the other through the middle click.
    const bool forwards = CalcModule::CalcDistance(arc.front(), c.start) < 1e-9;
    EXPECT_NEAR(CalcModule::CalcDistance(forwards ? arc.front() : arc.back(), c.start), 0, 1e-9);
    EXPECT_NEAR(CalcModule::CalcDistance(forwards ? arc.back() : arc.front(), c.end), 0, 1e-9);
    EXPECT_TRUE(passesNear(Shape{{}, {}, {arc}, {}, {}}, c.middle, 0.1));
}

INSTANTIATE_TEST_SUITE_P(
    ArcTool, ArcAngle,
    ::testing::Values(ArcCase{"HalfCircle", {10, 0}, {0, 10}, {-10, 0}, 1, 180},
                      ArcCase{"QuarterCircle", {10, 0}, {r45, r45}, {0, 10}, 1, 90},
                      ArcCase{"ThreeQuartersTheOtherWay", {10, 0}, {0, -10}, {0, 10}, 1, 270},
                      // Directions start < end < middle: the arc routine alone would take the short way.
                      ArcCase{"ThreeQuartersWithTheMiddleAfterTheEnd", {10, 0}, {-10, 0}, {0, 10}, 1, 270},
                      ArcCase{"HalfCircleIsNotScaledByTheFactor", {10, 0}, {0, 10}, {-10, 0}, 0.5, 180}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ArcTool, Result_IsAnArcAngleInDegrees_WithTheLabelOnTheArc)
{
    ArcTool tool;
    clickAll(tool, {{110, 100}, {100, 110}, {90, 100}});
    const std::optional<Measurement> m = tool.result(contextWith(1, 1, 1));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 109);
    EXPECT_EQ(m->values[0].kindCaption, 11141);
    EXPECT_EQ(m->values[0].unit, UnitKind::Angle);
    ASSERT_EQ(m->shape.labels.size(), 1u);
    EXPECT_EQ(m->shape.labels[0].text, QString("180.0") + QChar(0x00B0));
    EXPECT_NEAR(CalcModule::CalcDistance(m->shape.labels[0].anchor, {100, 100}), 10, 1e-9);
}

TEST(ArcTool, CollinearPoints_GiveNoResult)
{
    ArcTool tool;
    clickAll(tool, {{0, 0}, {5, 5}, {10, 10}});
    EXPECT_TRUE(tool.complete());
    EXPECT_FALSE(tool.result(contextWith(1, 1)));
}

TEST(ArcTool, Guidance_AsksForStartMiddleAndEnd)
{
    ArcTool tool;
    EXPECT_EQ(tool.guidance(), 60);
    tool.addPoint({10, 0});
    EXPECT_EQ(tool.guidance(), 61);
    tool.addPoint({0, 10});
    EXPECT_EQ(tool.guidance(), 62);
}

TEST(ArcTool, Preview_DrawsTheArcToThePointer_AfterStartAndMiddle)
{
    ArcTool tool;
    clickAll(tool, {{10, 0}, {0, 10}});
    const Shape shape = tool.preview({-10, 0}, contextWith(1, 1, 0));
    ASSERT_EQ(shape.polylines.size(), 1u);
    EXPECT_NEAR(CalcModule::CalcDistance(shape.polylines[0].back(), {-10, 0}) *
                    CalcModule::CalcDistance(shape.polylines[0].front(), {-10, 0}),
                0, 1e-6);
    ASSERT_EQ(shape.labels.size(), 1u);
    EXPECT_EQ(shape.labels[0].text, QString("180") + QChar(0x00B0));
}

}  // namespace
