#include "measure/CircleToCircleTool.h"

#include "ToolTestSupport.h"

#include <cmath>

using namespace tavix;
using namespace tavix::test;

namespace {

// Three edge points of the circle (centre, radius).
std::vector<PointD> edge(PointD c, double r)
{
    return {{c.x + r, c.y}, {c.x, c.y + r}, {c.x - r, c.y}};
}

std::vector<PointD> twoCircles(PointD c1, double r1, PointD c2, double r2)
{
    std::vector<PointD> clicks = edge(c1, r1);
    const std::vector<PointD> second = edge(c2, r2);
    clicks.insert(clicks.end(), second.begin(), second.end());
    return clicks;
}

struct TwoCircleCase {
    const char* name;
    PointD c1;
    double r1;
    PointD c2;
    double r2;
    double factor;
    double centres, edges;
};

class CircleToCircleDistance : public ::testing::TestWithParam<TwoCircleCase> {};

TEST_P(CircleToCircleDistance, GivesTheCentreDistanceAndTheEdgeGap)
{
    const TwoCircleCase& c = GetParam();
    CircleToCircleTool tool;
    clickAll(tool, twoCircles(c.c1, c.r1, c.c2, c.r2));
    const std::optional<Measurement> m = tool.result(contextWith(c.factor, c.factor));
    ASSERT_TRUE(m);
    ASSERT_EQ(m->values.size(), 2u);
    EXPECT_EQ(m->values[0].kindCaption, 11135);
    EXPECT_EQ(m->values[1].kindCaption, 11136);
    EXPECT_NEAR(m->values[0].value, c.centres, 1e-9);
    EXPECT_NEAR(m->values[1].value, c.edges, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    CircleToCircleTool, CircleToCircleDistance,
    ::testing::Values(TwoCircleCase{"ApartInPixels", {0, 0}, 1, {10, 0}, 1, 1, 10, 8},
                      TwoCircleCase{"ApartTimesFactor", {0, 0}, 1, {10, 0}, 1, 0.5, 5, 4},
                      TwoCircleCase{"ZeroFactorCountsAsOne", {0, 0}, 1, {10, 0}, 1, 0, 10, 8},
                      TwoCircleCase{"ThreeFourFiveApart", {100, 100}, 10, {130, 140}, 20, 1, 50, 20},
                      TwoCircleCase{"CrossingHaveNoGap", {0, 0}, 5, {6, 0}, 5, 1, 6, 0},
                      TwoCircleCase{"SmallInsideLarge", {0, 0}, 10, {3, 0}, 2, 1, 3, 5},
                      TwoCircleCase{"LargeAroundSmall", {3, 0}, 2, {0, 0}, 10, 1, 3, 5},
                      TwoCircleCase{"Concentric", {50, 50}, 10, {50, 50}, 4, 1, 0, 6}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(CircleToCircleTool, CollinearPointsOnTheFirstCircle_GiveNoResult)
{
    CircleToCircleTool tool;
    std::vector<PointD> clicks{{0, 0}, {1, 1}, {2, 2}};
    const std::vector<PointD> second = edge({10, 0}, 1);
    clicks.insert(clicks.end(), second.begin(), second.end());
    clickAll(tool, clicks);
    EXPECT_TRUE(tool.complete());
    EXPECT_FALSE(tool.result(contextWith(1, 1)));
}

TEST(CircleToCircleTool, CollinearPointsOnTheSecondCircle_GiveNoResult)
{
    CircleToCircleTool tool;
    std::vector<PointD> clicks = edge({0, 0}, 1);
    clicks.insert(clicks.end(), {{10, 0}, {11, 0}, {12, 0}});
    clickAll(tool, clicks);
    EXPECT_TRUE(tool.complete());
    EXPECT_FALSE(tool.result(contextWith(1, 1)));
}

TEST(CircleToCircleTool, Result_DrawsBothCirclesAndTheLineOfCentres_WithALabelPerValue)
{
    CircleToCircleTool tool;
    clickAll(tool, twoCircles({0, 0}, 1, {10, 0}, 1));
    const std::optional<Measurement> m = tool.result(contextWith(1, 1, 1));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 103);
    EXPECT_EQ(m->points.size(), 6u);
    EXPECT_EQ(m->shape.polylines.size(), 2u);
    EXPECT_TRUE(hasLine(m->shape, {0, 0}, {10, 0}, 1e-9));
    ASSERT_EQ(m->shape.labels.size(), 2u);
    EXPECT_EQ(m->shape.labels[0].value, 0);
    EXPECT_EQ(m->shape.labels[0].text, "10.0");
    EXPECT_EQ(m->shape.labels[1].value, 1);
    EXPECT_EQ(m->shape.labels[1].text, "8.0");
    EXPECT_TRUE(m->shape.labels[1].below);
}

TEST(CircleToCircleTool, Guidance_CountsThreePointsOnEachCircle)
{
    CircleToCircleTool tool;
    const std::vector<PointD> clicks = twoCircles({0, 0}, 1, {10, 0}, 1);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(tool.guidance(), 37 + i) << "before click " << i;
        tool.addPoint(clicks[static_cast<std::size_t>(i)]);
    }
    EXPECT_TRUE(tool.complete());
}

TEST(CircleToCircleTool, Preview_KeepsTheFirstCircle_WhileTheSecondFollowsThePointer)
{
    CircleToCircleTool tool;
    const std::vector<PointD> clicks = twoCircles({0, 0}, 1, {10, 0}, 1);
    clickAll(tool, {clicks[0], clicks[1], clicks[2], clicks[3]});
    const Shape shape = tool.preview({10, 5}, contextWith(1, 1));
    ASSERT_EQ(shape.polylines.size(), 1u);
    EXPECT_TRUE(passesNear(shape, {0, -1}, 0.05));
    EXPECT_TRUE(hasLine(shape, clicks[3], {10, 5}));
}

TEST(CircleToCircleTool, Preview_ShowsBothCirclesAndTheLiveValue_BeforeTheLastClick)
{
    CircleToCircleTool tool;
    const std::vector<PointD> clicks = twoCircles({0, 0}, 1, {10, 0}, 1);
    clickAll(tool, {clicks.begin(), clicks.begin() + 5});
    const Shape shape = tool.preview(clicks[5], contextWith(1, 1, 0));
    EXPECT_EQ(shape.polylines.size(), 2u);
    ASSERT_EQ(shape.labels.size(), 2u);
    EXPECT_EQ(shape.labels[0].text, "10");
}

}  // namespace
