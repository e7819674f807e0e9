#include "measure/CalcModule.h"

#include "common/RunError.h"

#include <cmath>

namespace tavix::CalcModule {

namespace {
double Sgn(double v)
{
    return v > 0 ? 1.0 : (v < 0 ? -1.0 : 0.0);
}
}  // namespace

double RadToDeg(double radians)
{
    return radians * 180 / Pi;
}

double CalcDistance(PointD a, PointD b)
{
    const double dx = std::fabs(a.x - b.x);
    const double dy = std::fabs(a.y - b.y);
    // The short cuts keep axis-parallel distances exact.
    if (dx == 0)
        return dy;
    if (dy == 0)
        return dx;
    return std::sqrt(std::pow(dx, 2) + std::pow(dy, 2));
}

double CalcAtan2(double dy, double dx)
{
    if (dx == 0) {
        if (dy == 0)
            return 0;
        return Sgn(dy) * Pi / 2;
    }
    if (dx > 0)
        return std::atan(dy / dx);
    if (dy == 0)
        return Pi;
    return std::atan(dy / dx) + Sgn(dy) * Pi;
}

PointD CalcMidPoint(PointD a, PointD b)
{
    PointD mid;
    mid.x = a.x < b.x ? a.x + (b.x - a.x) / 2 : b.x + (a.x - b.x) / 2;
    mid.y = a.y < b.y ? a.y + (b.y - a.y) / 2 : b.y + (a.y - b.y) / 2;
    return mid;
}

bool CalcPerpendicular(PointD p0, PointD p1, PointD q, PointD& foot, double& length)
{
    // Horizontal first, so that a degenerate line counts as horizontal.
    if (p1.y - p0.y == 0) {
        foot = {q.x, p0.y};
        length = std::fabs(q.y - p0.y);
    } else if (p1.x - p0.x == 0) {
        foot = {p0.x, q.y};
        length = std::fabs(q.x - p0.x);
    } else {
        const double m = (p1.y - p0.y) / (p1.x - p0.x);
        const double n = -1 / m;
        const double fx = (m * p0.x + (q.y - p0.y) - n * q.x) / (m - n);
        const double fy = (fx - p0.x) * m + p0.y;
        foot = {fx, fy};
        length = std::sqrt(std::pow(q.x - fx, 2) + std::pow(q.y - fy, 2));
    }
    return true;
}

bool CalcPolygonArea(const std::vector<PointD>& points, double& area)
{
    // Shoelace rule over points[1] .. points[n]; points[0] is not used.
    const std::size_t n = points.empty() ? 0 : points.size() - 1;
    double sum = 0;
    if (n >= 2) {
        for (std::size_t i = 1; i <= n - 1; ++i)
            sum += points[i].x * points[i + 1].y - points[i + 1].x * points[i].y;
        sum += points[n].x * points[1].y - points[1].x * points[n].y;
    }
    area = std::fabs(sum / 2);
    return true;
}

bool CalcCircle3Points(PointD p0, PointD p1, PointD p2, PointD& centre, double& radius)
{
    const double a1 = 2 * (p1.x - p0.x);
    const double a2 = 2 * (p2.x - p0.x);
    const double b1 = 2 * (p1.y - p0.y);
    const double b2 = 2 * (p2.y - p0.y);
    const double c1 = std::pow(p0.y, 2) - std::pow(p1.y, 2) + std::pow(p0.x, 2) - std::pow(p1.x, 2);
    const double c2 = std::pow(p0.y, 2) - std::pow(p2.y, 2) + std::pow(p0.x, 2) - std::pow(p2.x, 2);
    const double det = a1 * b2 - a2 * b1;
    if (det == 0)
        return false;
    const PointD c{(c2 * b1 - c1 * b2) / det, (a2 * c1 - a1 * c2) / det};
    centre = c;
    radius = CalcDistance(c, p0);
    return true;
}

bool CalcLineCross(PointD a0, PointD a1, PointD b0, PointD b1, PointD& cross)
{
    const double den = (a0.x - a1.x) * (b1.y - b0.y) - (b0.x - b1.x) * (a1.y - a0.y);
    if (den == 0)
        return false;
    const double crossB = b0.x * b1.y - b0.y * b1.x;
    const double crossA = a0.x * a1.y - a1.x * a0.y;
    cross.x = (crossB * (a0.x - a1.x) - crossA * (b0.x - b1.x)) / den;
    cross.y = (crossA * (b1.y - b0.y) - crossB * (a1.y - a0.y)) / den;
    return true;
}

bool CalcAngle(PointD a, PointD vertex, PointD b, double& angle)
{
    const double p = CalcDistance(vertex, b) * CalcDistance(vertex, a);
    if (p == 0)
        return false;
    const double c = ((b.x - vertex.x) * (a.x - vertex.x) + (b.y - vertex.y) * (a.y - vertex.y)) / p;
    // Rounding can push c a little past +-1, where the square root would fail.
    if (c >= 1)
        angle = 0;
    else if (c <= -1)
        angle = Pi;
    else
        angle = std::atan(-c / std::sqrt(1 - c * c)) + 2 * std::atan(1.0);  // arc cosine of c
    return true;
}

bool CalcArcPoints(PointD start, PointD middle, PointD end, PointD centre, double radius, ArcPoints& points)
{
    auto directionOf = [&](PointD p) {
        const double a = CalcAtan2(p.y - centre.y, p.x - centre.x);
        return a < 0 ? a + TwoPi : a;
    };
    const double aS = directionOf(start);
    const double aM = directionOf(middle);
    const double aE = directionOf(end);

    bool fromStart;
    if (aS < aM && aM < aE)
        fromStart = true;
    else if (aM < aS && aE < aM)
        fromStart = false;
    else if (aE < aS && aM < aE)
        fromStart = true;
    else if (aS < aE && aM < aS)
        fromStart = false;
    else if (aS < aM && aE < aM)
        fromStart = true;
    // Never reached: the test above already takes these cases. Kept so that the
    // order of the tests, and thus every arc drawn so far, stays as it was.
    else if (aE < aM && aS < aM)
        fromStart = false;
    else
        return false;

    const double first = fromStart ? aS : aE;
    const double other = fromStart ? aE : aS;
    double last;
    if (other > first)
        last = other;
    else if (other < first)
        last = other + TwoPi;
    else
        return false;

    const double step = (last - first) / ArcSegments;
    double theta = first;
    for (PointD& p : points) {
        p = {std::cos(theta) * radius + centre.x, std::sin(theta) * radius + centre.y};
        theta += step;
    }
    return true;
}

PointD ConvertUnit(PointD value, bool toPixels, const UnitContext& context)
{
    double fx = (1 / context.magnification) * context.xFactor;
    double fy = (1 / context.magnification) * context.yFactor;
    // Uncalibrated, or a reference length is being measured: stay in pixels.
    if (fx == 0 || context.takingCalibrationValue)
        fx = 1;
    if (fy == 0 || context.takingCalibrationValue)
        fy = 1;
    if (toPixels)
        return {value.x / fx, value.y / fy};
    return {value.x * fx, value.y * fy};
}

void CheckFinite(double value)
{
    if (!std::isfinite(value))
        throw RunError(err::Overflow);
}

void CheckFinite(PointD value)
{
    CheckFinite(value.x);
    CheckFinite(value.y);
}

}  // namespace tavix::CalcModule
