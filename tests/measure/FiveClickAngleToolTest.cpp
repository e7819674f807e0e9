#include "measure/FiveClickAngleTool.h"

#include "ToolTestSupport.h"

#include <cmath>

using namespace tavix;
using namespace tavix::test;

namespace {

// Arm A along +x, arm B at 60 degrees (y down), crossing at the origin.
const double root3 = std::sqrt(3.0);
const std::vector<PointD> lines{{10, 0}, {20, 0}, {5, 5 * root3}, {10, 10 * root3}};

PointD at(double degrees)
{
    const double r = degrees * 3.14159265358979 / 180;
    return {10 * std::cos(r), 10 * std::sin(r)};
}

struct SideCase {
    const char* name;
    PointD picked;
    double expectedDegrees;
    int expectedCaption;
};

class FiveClickSide : public ::testing::TestWithParam<SideCase> {};

TEST_P(FiveClickSide, GivesTheAngleOfTheSectorPickedByTheFifthClick)
{
    const SideCase& c = GetParam();
    FiveClickAngleTool tool;
    std::vector<PointD> clicks = lines;
    clicks.push_back(c.picked);
    clickAll(tool, clicks);
    const std::optional<Measurement> m = tool.result(contextWith(1, 1));
    ASSERT_TRUE(m);
    EXPECT_NEAR(m->values[0].value, c.expectedDegrees, 1e-9);
    EXPECT_EQ(m->values[0].kindCaption, c.expectedCaption);
    EXPECT_EQ(m->values[0].unit, UnitKind::Angle);
}

INSTANTIATE_TEST_SUITE_P(FiveClickAngleTool, FiveClickSide,
                         ::testing::Values(SideCase{"BetweenTheArms", at(30), 60, 11134},
                                           SideCase{"BeyondArmB", at(120), 120, 11139},
                                           SideCase{"BeyondArmA", at(-60), 120, 11139},
                                           SideCase{"BehindTheCrossing", at(210), 300, 11140},
                                           SideCase{"OnTheCrossing", {0, 0}, 60, 11134},
                                           SideCase{"FarOutBetweenTheArms", {1000, 500}, 60, 11134}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FiveClickAngleTool, ParallelLines_GiveNoResult)
{
    FiveClickAngleTool tool;
    clickAll(tool, {{0, 0}, {10, 0}, {0, 5}, {10, 5}, {3, 3}});
    EXPECT_TRUE(tool.complete());
    EXPECT_FALSE(tool.result(contextWith(1, 1)));
}

TEST(FiveClickAngleTool, Result_DrawsTheArcThroughThePickedSector)
{
    FiveClickAngleTool tool;
    std::vector<PointD> clicks = lines;
    clicks.push_back(at(210));
    clickAll(tool, clicks);
    const std::optional<Measurement> m = tool.result(contextWith(1, 1, 1));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 107);
    ASSERT_EQ(m->shape.polylines.size(), 1u);
    const std::vector<PointD>& arc = m->shape.polylines[0];
    // Radius 0.3 times the shorter arm (10), at least 10 pixels; the arc passes
    // the picked direction.
    const double r = CalcModule::CalcDistance(arc.front(), {0, 0});
    const PointD picked = at(210);
    EXPECT_TRUE(passesNear(Shape{{}, {}, {arc}, {}, {}}, {picked.x * r / 10, picked.y * r / 10}, 0.5));
    EXPECT_FALSE(passesNear(Shape{{}, {}, {arc}, {}, {}}, {at(30).x * r / 10, at(30).y * r / 10}, 0.5));
    ASSERT_EQ(m->shape.labels.size(), 1u);
    EXPECT_EQ(m->shape.labels[0].text, QString("300.0") + QChar(0x00B0));
}

TEST(FiveClickAngleTool, Guidance_CountsTheFiveClicks)
{
    FiveClickAngleTool tool;
    std::vector<PointD> clicks = lines;
    clicks.push_back(at(30));
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(tool.guidance(), 52 + i) << "before click " << i;
        tool.addPoint(clicks[static_cast<std::size_t>(i)]);
    }
    EXPECT_TRUE(tool.complete());
}

TEST(FiveClickAngleTool, Preview_ChangesKind_AsThePointerMovesIntoAnotherSector)
{
    FiveClickAngleTool tool;
    clickAll(tool, lines);
    const Shape inside = tool.preview(at(30), contextWith(1, 1, 0));
    const Shape behind = tool.preview(at(210), contextWith(1, 1, 0));
    ASSERT_EQ(inside.labels.size(), 1u);
    ASSERT_EQ(behind.labels.size(), 1u);
    EXPECT_EQ(inside.labels[0].text, QString("60") + QChar(0x00B0));
    EXPECT_EQ(behind.labels[0].text, QString("300") + QChar(0x00B0));
}

TEST(FiveClickAngleTool, Preview_DrawsTheTwoLines_BeforeTheFifthClick)
{
    FiveClickAngleTool tool;
    clickAll(tool, {lines[0], lines[1], lines[2]});
    const Shape shape = tool.preview(lines[3], contextWith(1, 1));
    EXPECT_TRUE(hasLine(shape, lines[0], lines[1]));
    EXPECT_TRUE(hasLine(shape, lines[2], lines[3]));
    EXPECT_TRUE(shape.labels.empty());
}

}  // namespace
