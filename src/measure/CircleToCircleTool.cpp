#include "measure/CircleToCircleTool.h"

#include "measure/ToolGeometry.h"

#include <algorithm>
#include <cmath>

namespace tavix {

using namespace CalcModule;

namespace {

// One circle's clicks so far: the circle once it has three, else the path.
void sketchCircle(Shape& shape, const std::vector<PointD>& clicks, const UnitSpace& space)
{
    if (clicks.size() == 3) {
        if (const std::optional<ToolGeometry::Circle> circle =
                ToolGeometry::circleThrough(clicks[0], clicks[1], clicks[2], space)) {
            shape.polylines.push_back(ToolGeometry::circlePolyline(*circle, space));
            shape.marks.insert(shape.marks.end(), clicks.begin(), clicks.end());
            return;
        }
    }
    const Shape path = ToolGeometry::path(clicks);
    shape.lines.insert(shape.lines.end(), path.lines.begin(), path.lines.end());
    shape.marks.insert(shape.marks.end(), path.marks.begin(), path.marks.end());
}

}  // namespace

int CircleToCircleTool::guidance() const
{
    return 37 + static_cast<int>(std::min<std::size_t>(points_.size(), 5));
}

std::optional<Measurement> CircleToCircleTool::measure(const std::vector<PointD>& points,
                                                       const MeasureContext& context) const
{
    if (points.size() < 6)
        return std::nullopt;
    const UnitSpace space(points[0], context.units);
    const std::optional<ToolGeometry::Circle> first =
        ToolGeometry::circleThrough(points[0], points[1], points[2], space);
    const std::optional<ToolGeometry::Circle> second =
        ToolGeometry::circleThrough(points[3], points[4], points[5], space);
    if (!first || !second)
        return std::nullopt;
    const PointD c1 = first->centre, c2 = second->centre;
    const double r1 = first->radius, r2 = second->radius;
    const double centres = CalcDistance(c1, c2);

    // Edge points on the line of centres that the gap runs between.
    const PointD dir = centres > 0 ? PointD{(c2.x - c1.x) / centres, (c2.y - c1.y) / centres} : PointD{1, 0};
    auto along = [&](PointD c, double r) { return PointD{c.x + dir.x * r, c.y + dir.y * r}; };
    double gap = 0;
    PointD gapAnchor = along(c1, r1);
    if (centres >= r1 + r2) {
        gap = centres - r1 - r2;
        gapAnchor = CalcMidPoint(along(c1, r1), along(c2, -r2));
    } else if (centres <= std::fabs(r1 - r2)) {
        gap = std::fabs(r1 - r2) - centres;
        gapAnchor = r1 >= r2 ? CalcMidPoint(along(c1, r1), along(c2, r2))
                             : CalcMidPoint(along(c1, -r1), along(c2, -r2));
    }
    CheckFinite(centres);
    CheckFinite(gap);

    const PointD centre1 = space.toPicture(c1), centre2 = space.toPicture(c2);
    Measurement m;
    m.tool = Number;
    m.points.assign(points.begin(), points.begin() + 6);
    m.values = {{centres, Caption::CircleCentres, UnitKind::Length},
                {gap, Caption::CircleEdges, UnitKind::Length}};
    m.shape.polylines = {ToolGeometry::circlePolyline(*first, space),
                         ToolGeometry::circlePolyline(*second, space)};
    m.shape.lines = {{centre1, centre2}};
    m.shape.marks = m.points;
    m.shape.marks.push_back(centre1);
    m.shape.marks.push_back(centre2);
    m.shape.labels = {{CalcMidPoint(centre1, centre2), QString(), 0},
                      {space.toPicture(gapAnchor), QString(), 1, true}};
    m.relabel(context.decimals);
    return m;
}

Shape CircleToCircleTool::sketch(const std::vector<PointD>& points, const MeasureContext& context) const
{
    Shape shape;
    if (points.empty())
        return shape;
    const UnitSpace space(points[0], context.units);
    const std::size_t split = std::min<std::size_t>(points.size(), 3);
    sketchCircle(shape, {points.begin(), points.begin() + static_cast<std::ptrdiff_t>(split)}, space);
    if (points.size() > 3)
        sketchCircle(shape, {points.begin() + 3, points.end()}, space);
    return shape;
}

}  // namespace tavix
