#include "measure/ToolGeometry.h"

#include "ToolTestSupport.h"

using namespace tavix;
using namespace tavix::test;
using namespace tavix::ToolGeometry;

namespace {

TEST(ToolGeometry, ArcThrough_TakesTheArcThroughTheMiddle_WhenTheMiddleDirectionComesAfterTheEnd)
{
    // Directions from the centre: start 0, end 90, middle 180 degrees.
    const std::optional<CalcModule::ArcPoints> arc = arcThrough({10, 0}, {-10, 0}, {0, 10}, {0, 0}, 10);
    ASSERT_TRUE(arc);
    const std::vector<PointD> line(arc->begin(), arc->end());
    EXPECT_TRUE(passesNear(Shape{{}, {}, {line}, {}, {}}, {-10, 0}, 0.1));
    EXPECT_FALSE(passesNear(Shape{{}, {}, {line}, {}, {}}, {7.07, 7.07}, 1));
}

TEST(ToolGeometry, ArcThrough_KeepsTheArcRoutinesArc_WhenItPassesTheMiddle)
{
    CalcModule::ArcPoints expected;
    ASSERT_TRUE(CalcModule::CalcArcPoints({10, 0}, {0, 10}, {-10, 0}, {0, 0}, 10, expected));
    const std::optional<CalcModule::ArcPoints> arc = arcThrough({10, 0}, {0, 10}, {-10, 0}, {0, 0}, 10);
    ASSERT_TRUE(arc);
    EXPECT_EQ(*arc, expected);
}

TEST(ToolGeometry, ArcThrough_IsNothing_WhenStartAndEndCoincide)
{
    EXPECT_FALSE(arcThrough({10, 0}, {0, 10}, {10, 0}, {0, 0}, 10));
}

TEST(ToolGeometry, CirclePolyline_IsClosedAndRoundInPicturePixels_WhenTheFactorsDiffer)
{
    const UnitSpace space({0, 0}, {1, 2, 1, false});
    const std::vector<PointD> line = circlePolyline({{0, 0}, 10}, space);
    ASSERT_EQ(line.size(), 33u);  // 32 segments, as an arc
    EXPECT_EQ(line.front(), line.back());
    // A circle of radius 10 units is an ellipse of 10 by 5 pixels.
    for (const PointD& p : line)
        EXPECT_NEAR(p.x * p.x / 100 + p.y * p.y / 25, 1, 1e-9);
}

TEST(ToolGeometry, DistanceToSegment_IsSquareInsideAndToTheNearerEndOutside)
{
    EXPECT_EQ(distanceToSegment({5, 3}, {{0, 0}, {10, 0}}), 3);
    EXPECT_EQ(distanceToSegment({13, 4}, {{0, 0}, {10, 0}}), 5);
    EXPECT_EQ(distanceToSegment({3, 4}, {{0, 0}, {0, 0}}), 5);
}

TEST(ToolGeometry, CircleThrough_IsNothing_ForCollinearPixels)
{
    const UnitSpace space({0, 0}, {0.1, 0.3, 1, false});
    EXPECT_FALSE(circleThrough({0, 0}, {1, 2}, {3, 6}, space));
    EXPECT_TRUE(circleThrough({0, 0}, {1, 2}, {3, 5}, space));
}

}  // namespace
