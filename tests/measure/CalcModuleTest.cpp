#include "measure/CalcModule.h"

#include "common/RunError.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

using namespace tavix;
using namespace tavix::CalcModule;

namespace {
constexpr double Sentinel = -12345.5;
const PointD SentinelPoint{Sentinel, Sentinel};

double angleOf(PointD p, PointD centre)
{
    return std::atan2(p.y - centre.y, p.x - centre.x);
}

// Distance between two directions, modulo a full turn.
double angleGap(double a, double b)
{
    return std::fabs(std::remainder(a - b, 2 * std::numbers::pi));
}
}  // namespace

// --- constants and RadToDeg

TEST(CalcModule, Pi_IsTheFifteenDigitLiteralBelowTheRoundedPi)
{
    EXPECT_EQ(std::bit_cast<std::uint64_t>(Pi), 0x400921FB54442D11u);
    EXPECT_LT(Pi, std::numbers::pi);
    EXPECT_EQ(TwoPi, 6.28318530717958);
    EXPECT_EQ(TwoPi, 2 * Pi);
}

TEST(CalcModule, RadToDeg_GivesExactDegreesForThePiLiteral)
{
    EXPECT_EQ(RadToDeg(Pi), 180.0);
    EXPECT_EQ(RadToDeg(0.0), 0.0);
    EXPECT_EQ(RadToDeg(-Pi / 2), -90.0);
}

TEST(CalcModule, RadToDeg_GivesMoreThan180ForTheExactPi)
{
    // The literal lies below pi, so the true pi reads a little over half a turn.
    EXPECT_GT(RadToDeg(std::numbers::pi), 180.0);
    EXPECT_NEAR(RadToDeg(std::numbers::pi), 180.0, 1e-12);
}

// --- CalcDistance

TEST(CalcModule, CalcDistance_IsExact_WhenPointsShareY)
{
    EXPECT_EQ(CalcDistance({0, 0}, {3, 0}), 3.0);
    EXPECT_EQ(CalcDistance({0.1, 7}, {0.7, 7}), std::fabs(0.1 - 0.7));
}

TEST(CalcModule, CalcDistance_IsExact_WhenPointsShareX)
{
    EXPECT_EQ(CalcDistance({2, 10}, {2, 4}), 6.0);
    EXPECT_EQ(CalcDistance({5, 0.3}, {5, 0.1}), std::fabs(0.3 - 0.1));
}

TEST(CalcModule, CalcDistance_IsExactlyFive_ForThreeFourFive)
{
    EXPECT_EQ(CalcDistance({0, 0}, {3, 4}), 5.0);
    EXPECT_EQ(CalcDistance({3, 4}, {0, 0}), 5.0);
}

TEST(CalcModule, CalcDistance_IsZero_ForTheSamePoint)
{
    EXPECT_EQ(CalcDistance({17.25, -3}, {17.25, -3}), 0.0);
}

// --- CalcAtan2

TEST(CalcModule, CalcAtan2_IsThePiLiteral_ForNegativeXAxis)
{
    EXPECT_EQ(std::bit_cast<std::uint64_t>(CalcAtan2(0, -1)), std::bit_cast<std::uint64_t>(Pi));
    EXPECT_EQ(CalcAtan2(0, -1e-300), Pi);
}

TEST(CalcModule, CalcAtan2_IsMinusHalfPiLiteral_StraightUp)
{
    EXPECT_EQ(CalcAtan2(-1, 0), -3.14159265358979 / 2);
    EXPECT_EQ(CalcAtan2(5, 0), 3.14159265358979 / 2);
}

TEST(CalcModule, CalcAtan2_IsZero_ForZeroVector)
{
    EXPECT_EQ(CalcAtan2(0, 0), 0.0);
}

TEST(CalcModule, CalcAtan2_CoversEveryQuadrant)
{
    const double q = std::numbers::pi / 4;
    EXPECT_NEAR(CalcAtan2(1, 1), q, 1e-15);
    EXPECT_NEAR(CalcAtan2(1, -1), 3 * q, 1e-14);
    EXPECT_NEAR(CalcAtan2(-1, -1), -3 * q, 1e-14);
    EXPECT_NEAR(CalcAtan2(-1, 1), -q, 1e-15);
}

TEST(CalcModule, CalcAtan2_AddsThePiLiteral_WhenDxNegative)
{
    // Left half-plane: the arctangent shifted by the literal, not by the exact pi.
    EXPECT_EQ(CalcAtan2(1, -1), std::atan(-1.0) + Pi);
    EXPECT_EQ(CalcAtan2(-2, -3), std::atan(2.0 / 3.0) - Pi);
    EXPECT_NE(CalcAtan2(1, -1), std::atan2(1.0, -1.0));
}

// --- CalcMidPoint

TEST(CalcModule, CalcMidPoint_IsHalfway)
{
    EXPECT_EQ(CalcMidPoint({1, 5}, {4, 2}), (PointD{2.5, 3.5}));
    EXPECT_EQ(CalcMidPoint({-2, 0}, {2, 0}), (PointD{0, 0}));
}

TEST(CalcModule, CalcMidPoint_DoesNotDependOnOrder)
{
    const PointD a{0.1, 1e-3};
    const PointD b{3999.7, 0.3};
    EXPECT_EQ(CalcMidPoint(a, b), CalcMidPoint(b, a));
}

// --- CalcPerpendicular

TEST(CalcModule, CalcPerpendicular_DropsOntoHorizontalLine)
{
    PointD foot;
    double length = 0;
    EXPECT_TRUE(CalcPerpendicular({0, 2}, {10, 2}, {3, 7}, foot, length));
    EXPECT_EQ(foot, (PointD{3, 2}));
    EXPECT_EQ(length, 5.0);
}

TEST(CalcModule, CalcPerpendicular_DropsOntoVerticalLine)
{
    PointD foot;
    double length = 0;
    EXPECT_TRUE(CalcPerpendicular({4, 0}, {4, 9}, {1, 6}, foot, length));
    EXPECT_EQ(foot, (PointD{4, 6}));
    EXPECT_EQ(length, 3.0);
}

TEST(CalcModule, CalcPerpendicular_DropsOntoSlantedLine)
{
    PointD foot;
    double length = 0;
    EXPECT_TRUE(CalcPerpendicular({0, 0}, {2, 2}, {0, 2}, foot, length));
    EXPECT_EQ(foot, (PointD{1, 1}));
    EXPECT_EQ(length, std::sqrt(2.0));
}

TEST(CalcModule, CalcPerpendicular_TreatsCoincidentLinePointsAsHorizontal)
{
    PointD foot;
    double length = 0;
    EXPECT_TRUE(CalcPerpendicular({5, 5}, {5, 5}, {8, 1}, foot, length));
    EXPECT_EQ(foot, (PointD{8, 5}));
    EXPECT_EQ(length, 4.0);
}

TEST(CalcModule, CalcPerpendicular_GivesZeroLength_ForPointOnLine)
{
    PointD foot;
    double length = 1;
    EXPECT_TRUE(CalcPerpendicular({0, 0}, {4, 2}, {2, 1}, foot, length));
    EXPECT_EQ(foot, (PointD{2, 1}));
    EXPECT_EQ(length, 0.0);
}

// --- CalcPolygonArea

TEST(CalcModule, CalcPolygonArea_IgnoresElementZero)
{
    const std::vector<PointD> square{{1e9, -1e9}, {0, 0}, {4, 0}, {4, 3}, {0, 3}};
    double area = 0;
    EXPECT_TRUE(CalcPolygonArea(square, area));
    EXPECT_EQ(area, 12.0);
}

TEST(CalcModule, CalcPolygonArea_IsPositive_InEitherTurn)
{
    const std::vector<PointD> clockwise{{}, {0, 0}, {0, 3}, {4, 3}, {4, 0}};
    const std::vector<PointD> anticlockwise{{}, {0, 0}, {4, 0}, {4, 3}, {0, 3}};
    double a = 0;
    double b = 0;
    CalcPolygonArea(clockwise, a);
    CalcPolygonArea(anticlockwise, b);
    EXPECT_EQ(a, 12.0);
    EXPECT_EQ(b, 12.0);
}

TEST(CalcModule, CalcPolygonArea_ClosesTheTriangle)
{
    const std::vector<PointD> triangle{{}, {1, 1}, {5, 1}, {1, 4}};
    double area = 0;
    EXPECT_TRUE(CalcPolygonArea(triangle, area));
    EXPECT_EQ(area, 6.0);
}

TEST(CalcModule, CalcPolygonArea_IsZero_WithFewerThanTwoPoints)
{
    double area = -1;
    EXPECT_TRUE(CalcPolygonArea({{7, 7}, {3, 9}}, area));
    EXPECT_EQ(area, 0.0);
    area = -1;
    EXPECT_TRUE(CalcPolygonArea({{7, 7}}, area));
    EXPECT_EQ(area, 0.0);
    area = -1;
    EXPECT_TRUE(CalcPolygonArea({}, area));
    EXPECT_EQ(area, 0.0);
}

TEST(CalcModule, CalcPolygonArea_IsZero_ForTwoPoints)
{
    double area = -1;
    EXPECT_TRUE(CalcPolygonArea({{}, {1, 2}, {30, 40}}, area));
    EXPECT_EQ(area, 0.0);
}

// --- CalcCircle3Points

TEST(CalcModule, CalcCircle3Points_FindsCentreAndRadius)
{
    PointD centre;
    double radius = 0;
    EXPECT_TRUE(CalcCircle3Points({0, 0}, {2, 0}, {0, 2}, centre, radius));
    EXPECT_EQ(centre, (PointD{1, 1}));
    EXPECT_EQ(radius, std::sqrt(2.0));
}

TEST(CalcModule, CalcCircle3Points_Fails_ForCollinearPoints)
{
    PointD centre = SentinelPoint;
    double radius = Sentinel;
    EXPECT_FALSE(CalcCircle3Points({0, 0}, {1, 1}, {3, 3}, centre, radius));
    EXPECT_EQ(centre, SentinelPoint);
    EXPECT_EQ(radius, Sentinel);
}

TEST(CalcModule, CalcCircle3Points_Fails_WhenTwoPointsCoincide)
{
    PointD centre = SentinelPoint;
    double radius = Sentinel;
    EXPECT_FALSE(CalcCircle3Points({5, 1}, {5, 1}, {9, 7}, centre, radius));
    EXPECT_EQ(centre, SentinelPoint);
    EXPECT_EQ(radius, Sentinel);
}

TEST(CalcModule, CalcCircle3Points_GivesHugeCircle_ForExactlyCollinearPointsWhoseDifferencesRound)
{
    // Three points exactly on y = 3x; the differences taken from them are
    // rounded, the determinant is not exactly 0, and without a tolerance this
    // yields a circle of some 1e15 pixels instead of a failure.
    const PointD p0{0x1.7427272125c98p+6, 0x1.171d5d58dc572p+8};
    const PointD p1{0x1.2ce7dba567fe0p-1, 0x1.c35bc9781bfd0p+0};
    const PointD p2{0x1.00b5630928c88p-1, 0x1.8110148dbd2ccp+0};
    for (const PointD& p : {p0, p1, p2})
        ASSERT_EQ(std::fma(p.x, 3.0, -p.y), 0.0) << "not exactly on the line";
    PointD centre;
    double radius = 0;
    EXPECT_TRUE(CalcCircle3Points(p0, p1, p2, centre, radius));
    EXPECT_GT(radius, 1e12);
}

// --- CalcLineCross

TEST(CalcModule, CalcLineCross_FindsCrossing)
{
    PointD cross;
    EXPECT_TRUE(CalcLineCross({0, 0}, {2, 2}, {0, 2}, {2, 0}, cross));
    EXPECT_EQ(cross, (PointD{1, 1}));
}

TEST(CalcModule, CalcLineCross_FindsCrossingOutsideTheSegments)
{
    PointD cross;
    EXPECT_TRUE(CalcLineCross({0, 0}, {1, 0}, {5, 1}, {5, 2}, cross));
    EXPECT_EQ(cross, (PointD{5, 0}));
}

TEST(CalcModule, CalcLineCross_Fails_ForParallelLines)
{
    PointD cross = SentinelPoint;
    EXPECT_FALSE(CalcLineCross({0, 0}, {2, 1}, {0, 3}, {4, 5}, cross));
    EXPECT_EQ(cross, SentinelPoint);
}

TEST(CalcModule, CalcLineCross_Fails_ForTheSameLine)
{
    PointD cross = SentinelPoint;
    EXPECT_FALSE(CalcLineCross({0, 0}, {2, 1}, {4, 2}, {6, 3}, cross));
    EXPECT_EQ(cross, SentinelPoint);
}

// --- CalcAngle

TEST(CalcModule, CalcAngle_Fails_WhenFirstPointIsTheVertex)
{
    double angle = Sentinel;
    EXPECT_FALSE(CalcAngle({3, 3}, {3, 3}, {7, 1}, angle));
    EXPECT_EQ(angle, Sentinel);
}

TEST(CalcModule, CalcAngle_Fails_WhenSecondPointIsTheVertex)
{
    double angle = Sentinel;
    EXPECT_FALSE(CalcAngle({7, 1}, {3, 3}, {3, 3}, angle));
    EXPECT_EQ(angle, Sentinel);
}

TEST(CalcModule, CalcAngle_IsThePiLiteral_ForStraightLine)
{
    double angle = 0;
    EXPECT_TRUE(CalcAngle({0, 0}, {1, 0}, {2, 0}, angle));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(angle), std::bit_cast<std::uint64_t>(Pi));
    EXPECT_TRUE(CalcAngle({0, 0}, {3, 4}, {6, 8}, angle));
    EXPECT_EQ(angle, 3.14159265358979);
}

TEST(CalcModule, CalcAngle_MissesTheStraightAngleByRounding_ForDiagonalLine)
{
    // sqrt(8) * sqrt(2) rounds above 4, so c stays just above -1 and the arc
    // cosine near -1 turns that last-bit error into some 2e-8 radians.
    double angle = 0;
    EXPECT_TRUE(CalcAngle({0, 0}, {1, 1}, {3, 3}, angle));
    EXPECT_LT(angle, Pi - 1e-8);
    EXPECT_GT(angle, Pi - 1e-7);
}

TEST(CalcModule, CalcAngle_IsZero_WhenBothPointsLieOnTheSameSide)
{
    double angle = 1;
    EXPECT_TRUE(CalcAngle({2, 0}, {0, 0}, {5, 0}, angle));
    EXPECT_EQ(angle, 0.0);
    angle = 1;
    EXPECT_TRUE(CalcAngle({1, 1}, {0, 0}, {3, 3}, angle));
    EXPECT_EQ(angle, 0.0);
}

TEST(CalcModule, CalcAngle_GivesQuarterTurnFromTheArctangentOfOne)
{
    // Here the quarter turn is 2 * atan(1), the rounded pi / 2, not the literal's half.
    double angle = 0;
    EXPECT_TRUE(CalcAngle({5, 0}, {0, 0}, {0, 7}, angle));
    EXPECT_EQ(angle, std::numbers::pi / 2);
    EXPECT_NE(angle, Pi / 2);
}

TEST(CalcModule, CalcAngle_IsUnsigned)
{
    double above = 0;
    double below = 0;
    EXPECT_TRUE(CalcAngle({1, 0}, {0, 0}, {1, 1}, above));
    EXPECT_TRUE(CalcAngle({1, 0}, {0, 0}, {1, -1}, below));
    EXPECT_EQ(above, below);
    EXPECT_NEAR(above, std::numbers::pi / 4, 1e-15);
}

// --- CalcArcPoints

TEST(CalcModule, CalcArcPoints_Fails_WhenStartIsEnd)
{
    CalcModule::ArcPoints points;
    points.fill(SentinelPoint);
    EXPECT_FALSE(CalcArcPoints({10, 0}, {0, 10}, {10, 0}, {0, 0}, 10, points));
    EXPECT_FALSE(CalcArcPoints({0, 10}, {10, 0}, {0, 10}, {0, 0}, 10, points));
    for (const PointD& p : points)
        EXPECT_EQ(p, SentinelPoint);
}

TEST(CalcModule, CalcArcPoints_Fails_WhenMiddleHasTheStartDirection)
{
    CalcModule::ArcPoints points;
    points.fill(SentinelPoint);
    EXPECT_FALSE(CalcArcPoints({10, 0}, {20, 0}, {0, 10}, {0, 0}, 10, points));
    EXPECT_EQ(points[0], SentinelPoint);
}

TEST(CalcModule, CalcArcPoints_RunsFromStartAngleToEndAngle)
{
    const PointD centre{100, 50};
    const double r = 20;
    const PointD s{centre.x + r, centre.y};  // angle 0
    const PointD m{centre.x, centre.y + r};  // angle pi/2
    const PointD e{centre.x - r, centre.y};  // angle pi
    CalcModule::ArcPoints points;
    ASSERT_TRUE(CalcArcPoints(s, m, e, centre, r, points));
    EXPECT_NEAR(points.front().x, s.x, 1e-12);
    EXPECT_NEAR(points.front().y, s.y, 1e-12);
    EXPECT_NEAR(points.back().x, e.x, 1e-12);
    EXPECT_NEAR(points.back().y, e.y, 1e-12);
    EXPECT_NEAR(angleOf(points[16], centre), std::numbers::pi / 2, 1e-14);
}

TEST(CalcModule, CalcArcPoints_RunsFromEndAngle_WhenTheMiddleComesBeforeTheStart)
{
    const PointD centre{0, 0};
    const double r = 10;
    auto at = [&](double a) { return PointD{r * std::cos(a), r * std::sin(a)}; };
    CalcModule::ArcPoints points;
    ASSERT_TRUE(CalcArcPoints(at(2.0), at(1.0), at(0.5), centre, r, points));
    EXPECT_NEAR(angleOf(points.front(), centre), 0.5, 1e-14);
    EXPECT_NEAR(angleOf(points.back(), centre), 2.0, 1e-13);
    EXPECT_NEAR(angleOf(points[16], centre), 1.25, 1e-14);
}

TEST(CalcModule, CalcArcPoints_CrossesTheZeroDirection)
{
    const PointD centre{0, 0};
    const double r = 10;
    auto at = [&](double a) { return PointD{r * std::cos(a), r * std::sin(a)}; };
    CalcModule::ArcPoints points;
    ASSERT_TRUE(CalcArcPoints(at(-0.5), at(0.1), at(0.5), centre, r, points));
    EXPECT_NEAR(angleOf(points.front(), centre), -0.5, 1e-14);
    EXPECT_NEAR(angleOf(points[16], centre), 0.0, 1e-13);
    EXPECT_NEAR(angleOf(points.back(), centre), 0.5, 1e-13);
}

TEST(CalcModule, CalcArcPoints_KeepsTheSweepFromStart_WhenTheMiddleLiesBeyondTheEnd)
{
    // Directions start < end < middle: the fifth test takes this case before
    // the sixth could, so the arc runs from start to end and misses the middle.
    const PointD centre{0, 0};
    const double r = 10;
    auto at = [&](double a) { return PointD{r * std::cos(a), r * std::sin(a)}; };
    CalcModule::ArcPoints points;
    ASSERT_TRUE(CalcArcPoints(at(0.5), at(2.0), at(1.0), centre, r, points));
    EXPECT_NEAR(angleOf(points.front(), centre), 0.5, 1e-14);
    EXPECT_NEAR(angleOf(points.back(), centre), 1.0, 1e-13);
    for (const PointD& p : points)
        EXPECT_GT(angleGap(angleOf(p, centre), 2.0), 0.9);
}

TEST(CalcModule, CalcArcPoints_SpacesThePointsEvenly)
{
    const PointD centre{30, 40};
    const double r = 7;
    CalcModule::ArcPoints points;
    ASSERT_TRUE(CalcArcPoints({37, 40}, {30, 47}, {23, 40}, centre, r, points));
    for (std::size_t i = 1; i < points.size(); ++i)
        EXPECT_NEAR(CalcDistance(points[i - 1], points[i]), 2 * r * std::sin(std::numbers::pi / 64), 1e-12);
}

// --- CheckFinite

TEST(CalcModule, CheckFinite_RaisesOverflow_ForInfinityAndNaN)
{
    for (double bad : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                       std::numeric_limits<double>::quiet_NaN()}) {
        try {
            CheckFinite(bad);
            ADD_FAILURE() << "no error for " << bad;
        } catch (const RunError& e) {
            EXPECT_EQ(e.number(), err::Overflow);
        }
        EXPECT_THROW(CheckFinite(PointD{1, bad}), RunError);
    }
}

TEST(CalcModule, CheckFinite_AcceptsFiniteValues)
{
    EXPECT_NO_THROW(CheckFinite(0.0));
    EXPECT_NO_THROW(CheckFinite(std::numeric_limits<double>::max()));
    EXPECT_NO_THROW(CheckFinite(PointD{-1e300, 1e-320}));
}

TEST(CalcModule, CheckFinite_CatchesOverflowingDistance)
{
    const double d = CalcDistance({0, 0}, {1e200, 1e200});
    EXPECT_THROW(CheckFinite(d), RunError);
}

// --- ConvertUnit

namespace {
struct ConvertCase {
    const char* name;
    UnitContext context;
    PointD value;
    bool toPixels;
    PointD expected;
};

void PrintTo(const ConvertCase& c, std::ostream* os)
{
    *os << c.name;
}

class ConvertUnitTest : public ::testing::TestWithParam<ConvertCase> {};
}  // namespace

TEST_P(ConvertUnitTest, ConvertsEachAxisWithItsFactor)
{
    const ConvertCase& c = GetParam();
    const PointD result = ConvertUnit(c.value, c.toPixels, c.context);
    EXPECT_EQ(result.x, c.expected.x);
    EXPECT_EQ(result.y, c.expected.y);
}

INSTANTIATE_TEST_SUITE_P(
    CalcModule, ConvertUnitTest,
    ::testing::Values(
        ConvertCase{"ZeroFactorsKeepPixels", {0, 0, 1, false}, {123.5, 67.25}, false, {123.5, 67.25}},
        ConvertCase{"ZeroFactorsKeepPixelsAtAnyMagnification",
                    {0, 0, 2, false},
                    {123.5, 67.25},
                    false,
                    {123.5, 67.25}},
        ConvertCase{"ZeroFactorsKeepPixelsToPixels", {0, 0, 4, false}, {123.5, 67.25}, true, {123.5, 67.25}},
        ConvertCase{"ZeroXFactorKeepsOnlyXInPixels", {0, 0.5, 1, false}, {100, 100}, false, {100, 50}},
        ConvertCase{"TakingCalibrationValueGivesPixels", {0.5, 0.25, 1, true}, {100, 80}, false, {100, 80}},
        ConvertCase{
            "TakingCalibrationValueIgnoresMagnification", {0.5, 0.25, 2, true}, {100, 80}, true, {100, 80}},
        ConvertCase{"ToUnits", {0.5, 0.25, 1, false}, {100, 100}, false, {50, 25}},
        ConvertCase{"MagnificationTwoHalvesTheUnits", {0.5, 0.25, 2, false}, {100, 100}, false, {25, 12.5}},
        ConvertCase{"ToPixelsInvertsToUnits", {0.5, 0.25, 1, false}, {50, 25}, true, {100, 100}},
        ConvertCase{
            "ToPixelsInvertsToUnitsAtMagnificationTwo", {0.5, 0.25, 2, false}, {25, 12.5}, true, {100, 100}},
        ConvertCase{"XAndYFactorsKeptApart", {2, 3, 1, false}, {10, 10}, false, {20, 30}},
        ConvertCase{"XAndYFactorsKeptApartToPixels", {2, 3, 1, false}, {20, 30}, true, {10, 10}}),
    [](const ::testing::TestParamInfo<ConvertCase>& info) { return std::string(info.param.name); });

TEST(CalcModule, ConvertUnit_ScalesByTheReciprocalOfTheMagnificationTimesTheFactor)
{
    // (1 / M) * factor, not factor / M: the two round differently here.
    const PointD units = ConvertUnit({100, 100}, false, {0.1, 0.1, 2.5, false});
    EXPECT_EQ(units.x, 100 * ((1 / 2.5) * 0.1));
    EXPECT_NE(units.x, 100 * (0.1 / 2.5));
    EXPECT_NEAR(units.x, 4.0, 1e-14);
}

TEST(CalcModule, ConvertUnit_IsInfinite_AtZeroMagnification)
{
    // A fault the caller's guard reports through CheckFinite.
    const PointD units = ConvertUnit({10, 10}, false, {0.5, 0.5, 0, false});
    EXPECT_THROW(CheckFinite(units), RunError);
}
