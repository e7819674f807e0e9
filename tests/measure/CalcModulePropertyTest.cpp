// Compares every geometry routine with an independent computation in long
// double (or a closed form) over many random point sets from a fixed seed.
//
// Tolerances are in units of the double epsilon and follow the conditioning
// of the formula the routines use. Where that formula is ill-conditioned
// (nearly collinear circle points, nearly parallel lines, angles near 0 and
// pi, perpendiculars onto steep lines, small figures far from the picture
// origin) the cases are
// split off by an explicit rule and checked against the formula's first-order
// error estimate instead, in tests whose names say so. Each test prints the
// worst error it met.

#include "measure/CalcModule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace tavix;
using namespace tavix::CalcModule;

namespace {
using LD = long double;

constexpr int Cases = 20000;
constexpr double Eps = std::numeric_limits<double>::epsilon();
constexpr LD PiExact = 3.141592653589793238462643383279502884L;
// The program's pi lies this far below the true pi (about 3.2e-15).
constexpr LD PiShortfall = PiExact - static_cast<LD>(Pi);

// Largest value seen of some error, printed when the test ends.
class Worst {
public:
    explicit Worst(std::string what) : what_(std::move(what)) {}
    ~Worst() { std::printf("[ worst    ] %s: %.3g\n", what_.c_str(), value_); }
    void note(double v) { value_ = std::max(value_, v); }
    double value() const { return value_; }

private:
    std::string what_;
    double value_ = 0;
};

class Random {
public:
    double uniform(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(gen_); }
    double logUniform(double lo, double hi) { return std::exp(uniform(std::log(lo), std::log(hi))); }
    int integer(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(gen_); }
    double sign() { return integer(0, 1) ? 1.0 : -1.0; }
    // A picture position: half of them on whole pixels, as clicks at
    // magnification 1 give, the others anywhere.
    double coord()
    {
        const double v = uniform(0, 4000);
        return integer(0, 1) ? std::round(v) : v;
    }
    PointD point() { return {coord(), coord()}; }

private:
    std::mt19937_64 gen_{20240601};
};

LD distanceOf(PointD a, PointD b)
{
    return hypotl(LD(a.x) - b.x, LD(a.y) - b.y);
}

double scaleOf(std::initializer_list<PointD> points)
{
    double s = 1;
    for (const PointD& p : points)
        s = std::max({s, std::fabs(p.x), std::fabs(p.y)});
    return s;
}

// Exact unsigned angle a-v-b from the cross and dot products.
LD angleOf(PointD a, PointD v, PointD b)
{
    const LD ax = LD(a.x) - v.x, ay = LD(a.y) - v.y, bx = LD(b.x) - v.x, by = LD(b.y) - v.y;
    return atan2l(fabsl(ax * by - ay * bx), ax * bx + ay * by);
}
}  // namespace

// --- RadToDeg

TEST(CalcModuleProperty, RadToDeg_MatchesDivisionByThePiLiteral)
{
    Random rnd;
    Worst worst("RadToDeg relative error against the literal, eps");
    for (int i = 0; i < Cases; ++i) {
        const double rad = rnd.uniform(-7, 7);
        const LD ref = LD(rad) * 180 / LD(Pi);
        const double err = double(fabsl(RadToDeg(rad) - ref) / fabsl(ref)) / Eps;
        worst.note(err);
        ASSERT_LE(err, 1.0) << rad;
    }
}

TEST(CalcModuleProperty, RadToDeg_ReadsHighByThePiLiteralShortfall)
{
    // Against the true pi every result is too large by (pi - literal) / pi,
    // about 1e-15 relative, some five units in the last place.
    Random rnd;
    Worst worst("RadToDeg relative error against true pi beyond the shortfall, eps");
    const LD expected = PiShortfall / PiExact;
    for (int i = 0; i < Cases; ++i) {
        const double rad = rnd.uniform(-7, 7);
        const LD ref = LD(rad) * 180 / PiExact;
        const LD rel = (RadToDeg(rad) - ref) / ref;
        const double err = double(fabsl(rel - expected)) / Eps;
        worst.note(err);
        ASSERT_LE(err, 1.0) << rad;
    }
}

// --- CalcDistance

TEST(CalcModuleProperty, CalcDistance_MatchesHypot)
{
    Random rnd;
    Worst worst("CalcDistance relative error, eps");
    for (int i = 0; i < Cases; ++i) {
        const PointD a = rnd.point(), b = rnd.point();
        const LD ref = distanceOf(a, b);
        const double d = CalcDistance(a, b);
        if (ref == 0) {
            ASSERT_EQ(d, 0.0);
            continue;
        }
        const double err = double(fabsl(d - ref) / ref) / Eps;
        worst.note(err);
        ASSERT_LE(err, 1.5) << a.x << "," << a.y << " " << b.x << "," << b.y;
    }
}

// --- CalcAtan2

TEST(CalcModuleProperty, CalcAtan2_MatchesAtan2_WhenDxIsNotNegative)
{
    Random rnd;
    Worst worst("CalcAtan2 relative error for dx >= 0, eps");
    for (int i = 0; i < Cases; ++i) {
        const double dy = rnd.coord() - rnd.coord();
        const double dx = std::fabs(rnd.coord() - rnd.coord());
        const double a = CalcAtan2(dy, dx);
        if (dx == 0) {
            ASSERT_EQ(a, dy == 0 ? 0.0 : std::copysign(Pi / 2, dy));
            continue;
        }
        const LD ref = atan2l(dy, dx);
        if (ref == 0) {
            ASSERT_EQ(a, 0.0);
            continue;
        }
        const double err = double(fabsl(a - ref) / fabsl(ref)) / Eps;
        worst.note(err);
        ASSERT_LE(err, 2.0) << dy << " " << dx;
    }
}

TEST(CalcModuleProperty, CalcAtan2_FallsShortByThePiLiteral_WhenDxIsNegative)
{
    // Left half-plane: the result is the exact direction less the literal's
    // shortfall (towards 0), plus rounding of up to an ulp of pi.
    Random rnd;
    Worst shifted("CalcAtan2 error for dx < 0 against the shifted direction, ulp of pi");
    Worst exact("CalcAtan2 absolute error for dx < 0 against the exact direction");
    const double ulpPi = std::nextafter(Pi, 4.0) - Pi;
    for (int i = 0; i < Cases; ++i) {
        const double dy = rnd.coord() - rnd.coord();
        const double dx = -std::fabs(rnd.coord() - rnd.coord());
        if (dx == 0)
            continue;
        const double a = CalcAtan2(dy, dx);
        const LD ref = atan2l(dy, dx);
        const LD shiftedRef = dy == 0 ? LD(Pi) : ref - std::copysign(1.0, dy) * PiShortfall;
        const double err = double(fabsl(a - shiftedRef)) / ulpPi;
        shifted.note(err);
        exact.note(double(fabsl(a - ref)));
        ASSERT_LE(err, 1.0) << dy << " " << dx;
        ASSERT_GT(a, -Pi);
        ASSERT_LE(a, Pi);
    }
    EXPECT_GT(exact.value(), 3e-15);
}

// --- CalcMidPoint

TEST(CalcModuleProperty, CalcMidPoint_MatchesHalfTheSum)
{
    Random rnd;
    Worst worst("CalcMidPoint error relative to the larger coordinate, eps");
    for (int i = 0; i < Cases; ++i) {
        const PointD a = rnd.point(), b = rnd.point();
        const PointD m = CalcMidPoint(a, b);
        const LD ex = (LD(a.x) + b.x) / 2, ey = (LD(a.y) + b.y) / 2;
        const double err =
            double(std::max(fabsl(m.x - ex) / std::max({std::fabs(a.x), std::fabs(b.x), 1.0}),
                            fabsl(m.y - ey) / std::max({std::fabs(a.y), std::fabs(b.y), 1.0}))) /
            Eps;
        worst.note(err);
        ASSERT_LE(err, 1.0);
    }
}

// --- CalcPerpendicular

namespace {
struct PerpendicularError {
    double foot;    // |F - exact F| / picture scale, in eps
    double length;  // |L - exact L| / picture scale, in eps
};

// The exact foot is the projection of Q onto the line.
PerpendicularError perpendicularError(PointD p0, PointD p1, PointD q)
{
    PointD foot;
    double length = 0;
    EXPECT_TRUE(CalcPerpendicular(p0, p1, q, foot, length));
    const LD dx = LD(p1.x) - p0.x, dy = LD(p1.y) - p0.y;
    const LD t = ((LD(q.x) - p0.x) * dx + (LD(q.y) - p0.y) * dy) / (dx * dx + dy * dy);
    const LD fx = p0.x + t * dx, fy = p0.y + t * dy;
    const LD l = hypotl(q.x - fx, q.y - fy);
    const double s = scaleOf({p0, p1, q});
    return {double(hypotl(foot.x - fx, foot.y - fy) / s) / Eps, double(fabsl(length - l) / s) / Eps};
}
}  // namespace

TEST(CalcModuleProperty, CalcPerpendicular_MatchesProjection_WhenSlopeIsModerate)
{
    // Rule: |slope| <= 2 (lines up to 63 degrees from horizontal); steeper
    // lines have their own test.
    Random rnd;
    Worst foot("CalcPerpendicular foot error / picture scale, |slope| <= 2, eps");
    Worst length("CalcPerpendicular length error / picture scale, |slope| <= 2, eps");
    int checked = 0;
    for (int i = 0; i < Cases; ++i) {
        const PointD p0 = rnd.point(), p1 = rnd.point(), q = rnd.point();
        if (std::fabs((LD(p1.y) - p0.y) / (LD(p1.x) - p0.x)) > 2)
            continue;
        const PerpendicularError e = perpendicularError(p0, p1, q);
        foot.note(e.foot);
        length.note(e.length);
        ASSERT_LE(e.foot, 4.0);
        ASSERT_LE(e.length, 4.0);
        ++checked;
    }
    EXPECT_GT(checked, Cases / 2);
}

TEST(CalcModuleProperty, CalcPerpendicular_LosesPrecisionInProportionToSlope_ForSteepLines)
{
    // The foot's y comes from (F.x - P0.x) * slope, so the rounding of F.x is
    // multiplied by the slope: the error grows like eps * scale * |slope|,
    // where a projection would stay at eps * scale.
    Random rnd;
    Worst foot("CalcPerpendicular foot error / (picture scale * (1 + |slope|)), |slope| 2..1e12, eps");
    Worst absolute("CalcPerpendicular foot error, |slope| 2..1e12, pixels");
    for (int i = 0; i < Cases; ++i) {
        const PointD p0 = rnd.point(), q = rnd.point();
        const double slope = rnd.logUniform(2, 1e12);
        const double h = rnd.sign() * rnd.uniform(10, 4000);
        const PointD p1{p0.x + h / slope, p0.y + h};
        if (p1.x == p0.x)
            continue;
        const double m = double(fabsl((LD(p1.y) - p0.y) / (LD(p1.x) - p0.x)));
        const PerpendicularError e = perpendicularError(p0, p1, q);
        foot.note(e.foot / (1 + m));
        absolute.note(e.foot * Eps * scaleOf({p0, p1, q}));
        ASSERT_LE(e.foot / (1 + m), 4.0) << m;
        ASSERT_LE(e.length / (1 + m), 4.0) << m;
    }
}

// --- CalcPolygonArea

namespace {
struct Polygon {
    std::vector<PointD> points;  // 1-based, element 0 unused
    LD exactArea;                // trapezoid rule on coordinate differences
    double condition;            // sum of |shoelace terms| / |their sum|
};

// A star-shaped polygon around a picture position, of 3 to 24 corners.
Polygon randomPolygon(Random& rnd)
{
    const PointD c = rnd.point();
    const double r = rnd.logUniform(1, 2000);
    const int n = rnd.integer(3, 24);
    std::vector<double> angles(n);
    for (double& a : angles)
        a = rnd.uniform(0, 2 * std::numbers::pi);
    std::sort(angles.begin(), angles.end());
    Polygon poly;
    poly.points.push_back({-1e9, 1e9});
    for (double a : angles) {
        const double radius = r * rnd.uniform(0.2, 1);
        poly.points.push_back({c.x + radius * std::cos(a), c.y + radius * std::sin(a)});
    }
    LD sum = 0, terms = 0, absTerms = 0;
    for (int i = 1; i <= n; ++i) {
        const PointD& p = poly.points[i];
        const PointD& next = poly.points[i == n ? 1 : i + 1];
        sum += (LD(next.x) - p.x) * (LD(next.y) + p.y);
        terms += LD(p.x) * next.y - LD(next.x) * p.y;
        absTerms += fabsl(LD(p.x) * next.y) + fabsl(LD(next.x) * p.y);
    }
    poly.exactArea = fabsl(sum) / 2;
    poly.condition = double(absTerms / fabsl(terms));
    return poly;
}
}  // namespace

TEST(CalcModuleProperty, CalcPolygonArea_MatchesTrapezoidRule_WhenWellConditioned)
{
    // Rule: the shoelace terms may cancel to no less than 1/100 of their
    // absolute sum (a polygon large against its distance from the origin).
    Random rnd;
    Worst worst("CalcPolygonArea relative error, condition <= 100, eps");
    int checked = 0;
    for (int i = 0; i < Cases; ++i) {
        const Polygon poly = randomPolygon(rnd);
        if (poly.condition > 100)
            continue;
        double area = 0;
        ASSERT_TRUE(CalcPolygonArea(poly.points, area));
        const double err = double(fabsl(area - poly.exactArea) / poly.exactArea) / Eps;
        worst.note(err);
        ASSERT_LE(err, 32.0);
        ++checked;
    }
    EXPECT_GT(checked, 1000);
}

TEST(CalcModuleProperty, CalcPolygonArea_LosesDigits_ForSmallPolygonsFarFromTheOrigin)
{
    // The shoelace rule multiplies absolute coordinates, so a small figure far
    // from the picture origin cancels away digits: the error follows
    // eps * condition, where the trapezoid rule on differences stays exact.
    Random rnd;
    Worst ratio("CalcPolygonArea relative error / condition, all polygons, eps");
    Worst relative("CalcPolygonArea relative error, all polygons");
    for (int i = 0; i < Cases; ++i) {
        const Polygon poly = randomPolygon(rnd);
        double area = 0;
        ASSERT_TRUE(CalcPolygonArea(poly.points, area));
        const double rel = double(fabsl(area - poly.exactArea) / poly.exactArea);
        relative.note(rel);
        ratio.note(rel / Eps / poly.condition);
        ASSERT_LE(rel / Eps / poly.condition, 2.0) << poly.condition;
    }
}

// --- CalcCircle3Points

namespace {
struct CircleCheck {
    bool found = false;
    double error = 0;        // |C - exact C| / exact R, in eps
    double radiusError = 0;  // |R - exact R| / exact R, in eps
    double condition = 0;    // the formula's first-order error estimate, same units
};

// The exact centre is the crossing of two perpendicular bisectors, taken on
// coordinate differences in long double.
CircleCheck checkCircle(PointD p0, PointD p1, PointD p2)
{
    CircleCheck check;
    PointD c;
    double r = 0;
    check.found = CalcCircle3Points(p0, p1, p2, c, r);
    if (!check.found)
        return check;
    const LD d1x = LD(p1.x) - p0.x, d1y = LD(p1.y) - p0.y, d2x = LD(p2.x) - p0.x, d2y = LD(p2.y) - p0.y;
    const LD e1 = (d1x * d1x + d1y * d1y) / 2, e2 = (d2x * d2x + d2y * d2y) / 2;
    const LD det = d1x * d2y - d1y * d2x;
    const LD cx = p0.x + (e1 * d2y - e2 * d1y) / det, cy = p0.y + (d1x * e2 - d2x * e1) / det;
    const LD exactR = hypotl(cx - p0.x, cy - p0.y);
    check.error = double(hypotl(c.x - cx, c.y - cy) / exactR) / Eps;
    check.radiusError = double(fabsl(r - exactR) / exactR) / Eps;

    // How the routine's roundings reach the centre: the squares of absolute
    // coordinates in c1, c2 and the cancellation in the determinant.
    const double a1 = 2 * (p1.x - p0.x), a2 = 2 * (p2.x - p0.x), b1 = 2 * (p1.y - p0.y),
                 b2 = 2 * (p2.y - p0.y);
    const double q0 = p0.x * p0.x + p0.y * p0.y, q1 = p1.x * p1.x + p1.y * p1.y,
                 q2 = p2.x * p2.x + p2.y * p2.y;
    const double c1 = q0 - q1, c2 = q0 - q2, d = std::fabs(a1 * b2 - a2 * b1);
    const double detCondition = (std::fabs(a1 * b2) + std::fabs(a2 * b1)) / d;
    const double ex =
        (std::fabs(b1) * (q0 + q2) + std::fabs(b2) * (q0 + q1) + std::fabs(c2 * b1) + std::fabs(c1 * b2)) /
            d +
        std::fabs(c.x) * detCondition;
    const double ey =
        (std::fabs(a2) * (q0 + q1) + std::fabs(a1) * (q0 + q2) + std::fabs(a2 * c1) + std::fabs(a1 * c2)) /
            d +
        std::fabs(c.y) * detCondition;
    check.condition = std::hypot(ex, ey) / double(exactR);
    return check;
}
}  // namespace

TEST(CalcModuleProperty, CalcCircle3Points_MatchesBisectorCrossing_WhenWellConditioned)
{
    // Rule: the formula's error estimate stays within 32 eps of the radius,
    // which excludes flat triangles and small ones far from the origin.
    Random rnd;
    Worst centre("CalcCircle3Points centre error / radius, condition <= 32, eps");
    Worst radius("CalcCircle3Points radius relative error, condition <= 32, eps");
    int checked = 0;
    for (int i = 0; i < Cases; ++i) {
        const CircleCheck check = checkCircle(rnd.point(), rnd.point(), rnd.point());
        if (!check.found || check.condition > 32)
            continue;
        centre.note(check.error);
        radius.note(check.radiusError);
        ASSERT_LE(check.error, 32.0);
        ASSERT_LE(check.radiusError, 32.0);
        ++checked;
    }
    EXPECT_GT(checked, Cases / 2);
}

TEST(CalcModuleProperty, CalcCircle3Points_FollowsItsErrorEstimate_ForTrianglesOutsideTheRule)
{
    // Random triangles the rule above leaves out: flat ones, and small ones
    // far from the origin, whose squared absolute coordinates cancel.
    Random rnd;
    Worst ratio("CalcCircle3Points centre error / error estimate, condition > 32");
    Worst relative("CalcCircle3Points centre error / radius, condition > 32");
    int checked = 0;
    for (int i = 0; i < Cases; ++i) {
        const CircleCheck check = checkCircle(rnd.point(), rnd.point(), rnd.point());
        if (!check.found || check.condition <= 32)
            continue;
        ratio.note(check.error / check.condition);
        relative.note(check.error * Eps);
        ASSERT_LE(check.error, 2 * check.condition);
        ++checked;
    }
    EXPECT_GT(checked, 0);
}

TEST(CalcModuleProperty, CalcCircle3Points_GivesIllConditionedHugeCircle_ForNearlyCollinearPoints)
{
    // A third point within a pixel of the line through the other two: the
    // true circle is huge and the routine, with no tolerance, still returns
    // one. Its error is bounded by the first-order estimate, not by a fixed
    // tolerance.
    Random rnd;
    Worst ratio("CalcCircle3Points centre error / error estimate, nearly collinear");
    Worst relative("CalcCircle3Points centre error / radius, nearly collinear");
    for (int i = 0; i < Cases; ++i) {
        const PointD p0 = rnd.point(), p1 = rnd.point();
        const double t = rnd.uniform(-1, 2);
        const double len = double(distanceOf(p0, p1));
        if (len < 1)
            continue;
        const double h = rnd.sign() * rnd.logUniform(1e-6, 1);
        const PointD p2{p0.x + t * (p1.x - p0.x) - h * (p1.y - p0.y) / len,
                        p0.y + t * (p1.y - p0.y) + h * (p1.x - p0.x) / len};
        const CircleCheck check = checkCircle(p0, p1, p2);
        if (!check.found)
            continue;
        ratio.note(check.error / check.condition);
        relative.note(check.error * Eps);
        ASSERT_LE(check.error, 2 * check.condition);
    }
}

TEST(CalcModuleProperty, CalcCircle3Points_GivesHugeCircleNotFailure_ForPointsCollinearBeforeRounding)
{
    // Points on one line up to the rounding of their coordinates: the exact
    // answer is "no circle", but the determinant is rarely exactly 0, so the
    // routine mostly returns a circle far larger than any picture.
    Random rnd;
    Worst smallest("CalcCircle3Points smallest radius for points collinear before rounding, pixels");
    int failures = 0;
    double smallestRadius = std::numeric_limits<double>::infinity();
    for (int i = 0; i < Cases; ++i) {
        const PointD p0 = rnd.point(), p1 = rnd.point();
        const double t = rnd.uniform(-1, 2);
        const PointD p2{p0.x + t * (p1.x - p0.x), p0.y + t * (p1.y - p0.y)};
        PointD c;
        double r = 0;
        if (!CalcCircle3Points(p0, p1, p2, c, r)) {
            ++failures;
            continue;
        }
        smallestRadius = std::min(smallestRadius, r);
    }
    smallest.note(smallestRadius);
    std::printf("[ worst    ] collinear before rounding: %d of %d fail\n", failures, Cases);
    EXPECT_GT(smallestRadius, 1e8);
    EXPECT_LT(failures, Cases);
}

// --- CalcLineCross

namespace {
struct CrossCheck {
    double error;      // |X - exact X| / max(|X|, picture scale), in eps
    double condition;  // the formula's first-order error estimate, same units
};

// The exact crossing in parametric form X = A0 + t (A1 - A0).
CrossCheck checkCross(PointD a0, PointD a1, PointD b0, PointD b1)
{
    PointD x;
    EXPECT_TRUE(CalcLineCross(a0, a1, b0, b1, x));
    const LD ax = LD(a1.x) - a0.x, ay = LD(a1.y) - a0.y, bx = LD(b1.x) - b0.x, by = LD(b1.y) - b0.y;
    const LD t = ((LD(b0.x) - a0.x) * by - (LD(b0.y) - a0.y) * bx) / (ax * by - ay * bx);
    const LD xx = a0.x + t * ax, xy = a0.y + t * ay;
    const double scale = std::max(double(hypotl(xx, xy)), scaleOf({a0, a1, b0, b1}));

    // Rounding of the products of absolute coordinates and of the denominator.
    const double t1 = (a0.x - a1.x) * (b1.y - b0.y), t2 = (b0.x - b1.x) * (a1.y - a0.y);
    const double den = std::fabs(t1 - t2);
    const double crossB = std::fabs(b0.x * b1.y) + std::fabs(b0.y * b1.x);
    const double crossA = std::fabs(a0.x * a1.y) + std::fabs(a1.x * a0.y);
    const double denCondition = (std::fabs(t1) + std::fabs(t2)) / den;
    const double ex = (crossB * std::fabs(a0.x - a1.x) + crossA * std::fabs(b0.x - b1.x)) / den +
                      std::fabs(x.x) * denCondition;
    const double ey = (crossA * std::fabs(b1.y - b0.y) + crossB * std::fabs(a1.y - a0.y)) / den +
                      std::fabs(x.y) * denCondition;
    return {double(hypotl(x.x - xx, x.y - xy) / scale) / Eps, std::hypot(ex, ey) / scale};
}
}  // namespace

TEST(CalcModuleProperty, CalcLineCross_MatchesParametricCrossing_WhenWellConditioned)
{
    // Rule: the error estimate stays within 32 eps of the scale, which
    // excludes nearly parallel lines and short lines far from the origin.
    Random rnd;
    Worst worst("CalcLineCross error / scale, condition <= 32, eps");
    int checked = 0;
    for (int i = 0; i < Cases; ++i) {
        const PointD a0 = rnd.point(), a1 = rnd.point(), b0 = rnd.point(), b1 = rnd.point();
        const CrossCheck check = checkCross(a0, a1, b0, b1);
        if (check.condition > 32)
            continue;
        worst.note(check.error);
        ASSERT_LE(check.error, 32.0);
        ++checked;
    }
    EXPECT_GT(checked, Cases * 9 / 10);
}

TEST(CalcModuleProperty, CalcLineCross_LosesPrecision_ForNearlyParallelLines)
{
    // Lines within a few degrees down to micro-radians of parallel: the
    // crossing moves far out and the products of absolute coordinates
    // cancel; the error follows the first-order estimate.
    Random rnd;
    Worst ratio("CalcLineCross error / error estimate, nearly parallel");
    for (int i = 0; i < Cases; ++i) {
        const PointD a0 = rnd.point(), a1 = rnd.point(), b0 = rnd.point();
        const double len = double(distanceOf(a0, a1));
        if (len < 1)
            continue;
        const double turn = rnd.sign() * rnd.logUniform(1e-9, 0.05);
        const double ux = (a1.x - a0.x) / len, uy = (a1.y - a0.y) / len;
        const double l = rnd.uniform(10, 2000);
        const PointD b1{b0.x + l * (ux * std::cos(turn) - uy * std::sin(turn)),
                        b0.y + l * (ux * std::sin(turn) + uy * std::cos(turn))};
        PointD x;
        if (!CalcLineCross(a0, a1, b0, b1, x))
            continue;
        const CrossCheck check = checkCross(a0, a1, b0, b1);
        ratio.note(check.error / check.condition);
        ASSERT_LE(check.error, 2 * check.condition);
    }
}

// --- CalcAngle

TEST(CalcModuleProperty, CalcAngle_MatchesCrossAndDotAngle_AwayFromZeroAndPi)
{
    // Rule: the sine of the true angle is at least 0.1 (the angle lies some
    // 6 degrees or more from 0 and from pi), where the arc cosine is well
    // conditioned.
    Random rnd;
    Worst worst("CalcAngle absolute error, sin(angle) >= 0.1, eps");
    int checked = 0;
    for (int i = 0; i < Cases; ++i) {
        const PointD a = rnd.point(), v = rnd.point(), b = rnd.point();
        const LD ref = angleOf(a, v, b);
        if (a == v || b == v || sinl(ref) < 0.1)
            continue;
        double angle = 0;
        ASSERT_TRUE(CalcAngle(a, v, b, angle));
        const double err = double(fabsl(angle - ref)) / Eps;
        worst.note(err);
        ASSERT_LE(err, 32.0);
        ++checked;
    }
    EXPECT_GT(checked, Cases * 9 / 10);
}

TEST(CalcModuleProperty, CalcAngle_LosesPrecision_NearZeroAndPi)
{
    // The arc cosine, here built from the arctangent, turns the rounding of c
    // near +-1 into an error of about eps / sin(angle), up to sqrt(eps) for
    // angles that rounding makes exactly 0 or pi; a straight angle gives the
    // literal pi, short of the true one.
    Random rnd;
    Worst ratio("CalcAngle error / (eps / max(sin angle, sqrt eps)), angles within 0.1 of 0 or pi");
    Worst absolute("CalcAngle absolute error, angles within 0.1 of 0 or pi");
    for (int i = 0; i < Cases; ++i) {
        const PointD v = rnd.point();
        const double la = rnd.uniform(1, 3000), lb = rnd.uniform(1, 3000);
        const double dir = rnd.uniform(0, 2 * std::numbers::pi);
        const double off = rnd.logUniform(1e-12, 0.1);
        const double turn = rnd.integer(0, 1) ? off : std::numbers::pi - off;
        const PointD a{v.x + la * std::cos(dir), v.y + la * std::sin(dir)};
        const PointD b{v.x + lb * std::cos(dir + turn), v.y + lb * std::sin(dir + turn)};
        if (a == v || b == v)
            continue;
        double angle = 0;
        ASSERT_TRUE(CalcAngle(a, v, b, angle));
        const LD ref = angleOf(a, v, b);
        const double err = double(fabsl(angle - ref));
        const double bound = Eps / std::max(double(sinl(ref)), std::sqrt(Eps));
        ratio.note(err / bound);
        absolute.note(err);
        ASSERT_LE(err, 8 * bound) << double(ref);
    }
}

// --- CalcArcPoints

TEST(CalcModuleProperty, CalcArcPoints_LieOnTheCircleAndSweepEvenlyFromStartToEnd)
{
    // Rule: the three directions are at least 1e-3 radians apart and from the
    // zero direction, so that each step is far above the rounding of the
    // positions and the order of the directions is not in doubt.
    // The directions of the points may be off by the 32 additions of the step
    // (each up to half an ulp of 4 pi, 128 eps in all), by the two literals
    // (pi and two pi fall short by 15 and 29 eps) and by the rounding of the
    // positions (size / radius eps): a budget of 176 + 4 size / radius eps.
    Random rnd;
    Worst radial("CalcArcPoints distance from the circle / (radius + |centre|), eps");
    Worst along("CalcArcPoints direction error / budget");
    Worst ends("CalcArcPoints end points off the given points / radius / budget");
    int missedMiddle = 0;
    int startEndMiddle = 0;
    for (int i = 0; i < Cases; ++i) {
        const PointD c = rnd.point();
        const double r = rnd.logUniform(1, 2000);
        const double as = rnd.uniform(0, 2 * std::numbers::pi), am = rnd.uniform(0, 2 * std::numbers::pi),
                     ae = rnd.uniform(0, 2 * std::numbers::pi);
        const double gap = std::min({std::fabs(as - am), std::fabs(am - ae), std::fabs(as - ae), as, am, ae,
                                     2 * std::numbers::pi - std::max({as, am, ae})});
        if (gap < 1e-3)
            continue;
        auto at = [&](double a) { return PointD{c.x + r * std::cos(a), c.y + r * std::sin(a)}; };
        const PointD s = at(as), m = at(am), e = at(ae);
        ArcPoints points;
        ASSERT_TRUE(CalcArcPoints(s, m, e, c, r, points));

        const double size = r + std::hypot(c.x, c.y);
        const double budget = 176 + 4 * size / r;
        // Which way it runs: the first point is S or E.
        const bool fromStart = distanceOf(points.front(), s) < distanceOf(points.front(), e);
        const PointD first = fromStart ? s : e, last = fromStart ? e : s;
        const double endErr =
            double(std::max(distanceOf(points.front(), first), distanceOf(points.back(), last)));
        ends.note(endErr / r / Eps / budget);
        ASSERT_LE(endErr / r / Eps, budget);

        const LD a0 = atan2l(LD(first.y) - c.y, LD(first.x) - c.x);
        LD a1 = atan2l(LD(last.y) - c.y, LD(last.x) - c.x);
        if (a1 <= a0)
            a1 += 2 * PiExact;
        const LD step = (a1 - a0) / ArcSegments;
        for (int k = 0; k <= ArcSegments; ++k) {
            const PointD& p = points[k];
            const double off = double(fabsl(distanceOf(p, c) - r)) / size / Eps;
            radial.note(off);
            ASSERT_LE(off, 4.0);
            const LD dir = atan2l(LD(p.y) - c.y, LD(p.x) - c.x);
            const LD want = a0 + k * step;
            const double dirErr = double(fabsl(remainderl(dir - want, 2 * PiExact))) / Eps;
            along.note(dirErr / budget);
            ASSERT_LE(dirErr, budget) << k;
        }

        // The sweep passes the middle point, except when the directions come
        // in the order start < end < middle: the fifth test takes that case
        // and draws the arc from start to end the short way round.
        const LD mid = remainderl(atan2l(LD(m.y) - c.y, LD(m.x) - c.x) - a0, 2 * PiExact);
        const bool passes = (mid < 0 ? mid + 2 * PiExact : mid) < a1 - a0;
        const bool oddOrder = as < ae && ae < am;
        startEndMiddle += oddOrder;
        if (!passes)
            ++missedMiddle;
        ASSERT_EQ(passes, !oddOrder) << as << " " << am << " " << ae;
    }
    std::printf(
        "[ worst    ] CalcArcPoints: arcs missing the middle point %d (order start < end < middle %d)\n",
        missedMiddle, startEndMiddle);
    EXPECT_GT(startEndMiddle, 0);
}

// --- ConvertUnit

TEST(CalcModuleProperty, ConvertUnit_ToPixelsUndoesToUnits)
{
    Random rnd;
    Worst worst("ConvertUnit round trip relative error, eps");
    for (int i = 0; i < Cases; ++i) {
        const UnitContext context{rnd.logUniform(1e-4, 100), rnd.logUniform(1e-4, 100),
                                  rnd.logUniform(0.1, 10), false};
        const PointD value{rnd.uniform(-5000, 5000), rnd.uniform(-5000, 5000)};
        const PointD back = ConvertUnit(ConvertUnit(value, false, context), true, context);
        const double err = std::max(std::fabs(back.x - value.x) / std::fabs(value.x),
                                    std::fabs(back.y - value.y) / std::fabs(value.y)) /
                           Eps;
        worst.note(err);
        ASSERT_LE(err, 1.0);
    }
}
