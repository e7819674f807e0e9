#include "measure/ToolGeometry.h"

#include <algorithm>
#include <cmath>

namespace tavix::ToolGeometry {

using namespace CalcModule;

namespace {

// Which side of the line a-b the point p lies on (sign of the cross product).
double sideOf(PointD a, PointD b, PointD p)
{
    return (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
}

// The point at distance r from the centre towards p; nothing when p is the centre.
std::optional<PointD> towards(PointD centre, PointD p, double r)
{
    const double length = CalcDistance(centre, p);
    if (length == 0)
        return std::nullopt;
    return PointD{centre.x + (p.x - centre.x) / length * r, centre.y + (p.y - centre.y) / length * r};
}

}  // namespace

Shape path(const std::vector<PointD>& points)
{
    Shape shape;
    for (std::size_t i = 1; i < points.size(); ++i)
        shape.lines.push_back({points[i - 1], points[i]});
    shape.marks = points;
    return shape;
}

std::optional<Circle> circleThrough(PointD p0, PointD p1, PointD p2, const UnitSpace& space)
{
    PointD centre;
    double radius = 0;
    if (!CalcCircle3Points(p0, p1, p2, centre, radius))
        return std::nullopt;
    Circle circle;
    if (!CalcCircle3Points(space.toUnits(p0), space.toUnits(p1), space.toUnits(p2), circle.centre,
                           circle.radius))
        return std::nullopt;
    return circle;
}

std::vector<PointD> circlePolyline(const Circle& circle, const UnitSpace& space)
{
    // The arc routine's stepping over a whole turn: it cannot draw one itself,
    // since a start equal to the end gives no arc.
    const PointD c = circle.centre;
    const double r = circle.radius;
    const double step = TwoPi / ArcSegments;
    std::vector<PointD> points;
    points.reserve(ArcSegments + 1);
    double theta = 0;
    for (int i = 0; i < ArcSegments; ++i) {
        points.push_back(space.toPicture({std::cos(theta) * r + c.x, std::sin(theta) * r + c.y}));
        theta += step;
    }
    points.push_back(points.front());  // closed exactly, whatever the rounding of the steps
    return points;
}

std::optional<ArcPoints> arcThrough(PointD start, PointD middle, PointD end, PointD centre, double radius)
{
    ArcPoints arc;
    if (!CalcArcPoints(start, middle, end, centre, radius, arc))
        return std::nullopt;
    // The arc through the middle point has its own middle on the middle
    // point's side of the chord start-end.
    const double wanted = sideOf(start, end, middle);
    const double drawn = sideOf(start, end, arc[ArcSegments / 2]);
    if ((wanted > 0 && drawn < 0) || (wanted < 0 && drawn > 0)) {
        if (!CalcArcPoints(end, middle, start, centre, radius, arc))
            return std::nullopt;
    }
    return arc;
}

std::optional<Crossing> crossingOf(PointD a0, PointD a1, PointD b0, PointD b1, const UnitSpace& space)
{
    const PointD ua0 = space.toUnits(a0), ua1 = space.toUnits(a1);
    const PointD ub0 = space.toUnits(b0), ub1 = space.toUnits(b1);
    Crossing c;
    if (!CalcLineCross(ua0, ua1, ub0, ub1, c.cross))
        return std::nullopt;
    const bool a0Far = CalcDistance(c.cross, ua0) >= CalcDistance(c.cross, ua1);
    const bool b0Far = CalcDistance(c.cross, ub0) >= CalcDistance(c.cross, ub1);
    c.farA = a0Far ? ua0 : ua1;
    c.farB = b0Far ? ub0 : ub1;
    c.farIndexA = a0Far ? 0 : 1;
    c.farIndexB = b0Far ? 2 : 3;
    if (!CalcAngle(c.farA, c.cross, c.farB, c.angle))
        return std::nullopt;
    c.crossPicture = space.toPicture(c.cross);
    return c;
}

void drawCrossingLines(Shape& shape, const std::vector<PointD>& clicked, PointD cross)
{
    for (std::size_t i = 0; i + 1 < 4 && i + 1 < clicked.size(); i += 2) {
        const PointD p = clicked[i], q = clicked[i + 1];
        shape.lines.push_back({p, q});
        const double length = CalcDistance(p, q);
        const double toP = CalcDistance(cross, p), toQ = CalcDistance(cross, q);
        if (std::max(toP, toQ) > length)
            shape.guides.push_back({toP < toQ ? p : q, cross});
    }
}

PointD bisectorPoint(PointD cross, PointD a, PointD b)
{
    const double la = CalcDistance(cross, a), lb = CalcDistance(cross, b);
    if (la == 0 || lb == 0)
        return cross;
    const PointD da{(a.x - cross.x) / la, (a.y - cross.y) / la};
    const PointD db{(b.x - cross.x) / lb, (b.y - cross.y) / lb};
    PointD sum{da.x + db.x, da.y + db.y};
    if (CalcDistance({0, 0}, sum) < 1e-9)
        sum = {-da.y, da.x};
    return {cross.x + sum.x, cross.y + sum.y};
}

std::optional<AngleMark> angleMark(PointD cross, PointD from, PointD through, PointD to)
{
    const double shorter = std::min(CalcDistance(cross, from), CalcDistance(cross, to));
    const double r = std::clamp(shorter * 0.3, 10.0, 80.0);
    const std::optional<PointD> s = towards(cross, from, r);
    const std::optional<PointD> m = towards(cross, through, r);
    const std::optional<PointD> e = towards(cross, to, r);
    if (!s || !m || !e)
        return std::nullopt;
    const std::optional<ArcPoints> arc = arcThrough(*s, *m, *e, cross, r);
    if (!arc)
        return std::nullopt;
    AngleMark mark;
    mark.arc.assign(arc->begin(), arc->end());
    const PointD middle = (*arc)[ArcSegments / 2];
    mark.label = {middle, QString(), 0, middle.y > cross.y};
    return mark;
}

Perpendicular perpendicular(PointD p0, PointD p1, PointD q, const UnitSpace& space)
{
    PointD foot;
    double length = 0;
    CalcPerpendicular(space.toUnits(p0), space.toUnits(p1), space.toUnits(q), foot, length);
    return {space.toPicture(foot), length};
}

Shape perpendicularShape(PointD p0, PointD p1, PointD q, PointD foot)
{
    Shape shape;
    shape.lines = {{p0, p1}, {q, foot}};
    const double length = CalcDistance(p0, p1);
    const double to0 = CalcDistance(foot, p0), to1 = CalcDistance(foot, p1);
    if (std::max(to0, to1) > length)
        shape.guides.push_back({to0 < to1 ? p0 : p1, foot});
    shape.marks = {p0, p1, q};
    shape.labels.push_back({CalcMidPoint(q, foot), QString(), 0});
    return shape;
}

Measurement single(int tool, const std::vector<PointD>& points, ResultValue value, Shape shape, int decimals)
{
    Measurement m;
    m.tool = tool;
    m.points = points;
    m.values = {value};
    m.shape = std::move(shape);
    m.relabel(decimals);
    return m;
}

double distanceToSegment(PointD p, Segment s)
{
    PointD foot;
    double length = 0;
    CalcPerpendicular(s.a, s.b, p, foot, length);
    const double span = CalcDistance(s.a, s.b);
    if (span > 0 && CalcDistance(s.a, foot) <= span && CalcDistance(s.b, foot) <= span)
        return length;
    return std::min(CalcDistance(p, s.a), CalcDistance(p, s.b));
}

}  // namespace tavix::ToolGeometry
