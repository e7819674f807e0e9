#include "measure/ArcTool.h"

#include "measure/ToolGeometry.h"

#include <algorithm>

namespace tavix {

using namespace CalcModule;

int ArcTool::guidance() const
{
    static constexpr int numbers[] = {60, 61, 62};
    return numbers[std::min<std::size_t>(points_.size(), 2)];
}

std::optional<Measurement> ArcTool::measure(const std::vector<PointD>& points,
                                            const MeasureContext& context) const
{
    if (points.size() < 3)
        return std::nullopt;
    const UnitSpace space(points[0], context.units);
    const std::optional<ToolGeometry::Circle> circle =
        ToolGeometry::circleThrough(points[0], points[1], points[2], space);
    if (!circle)
        return std::nullopt;
    const PointD c = circle->centre;
    const PointD start = space.toUnits(points[0]);
    const PointD middle = space.toUnits(points[1]);
    const PointD end = space.toUnits(points[2]);

    // Start to middle and middle to end each fit within the angle from start
    // to end only when the middle lies on the shorter arc; otherwise the arc
    // is the longer way round.
    double toMiddle = 0, fromMiddle = 0, startToEnd = 0;
    if (!CalcAngle(start, c, middle, toMiddle) || !CalcAngle(middle, c, end, fromMiddle) ||
        !CalcAngle(start, c, end, startToEnd))
        return std::nullopt;
    const double sweep =
        (toMiddle <= startToEnd && fromMiddle <= startToEnd) ? startToEnd : TwoPi - startToEnd;
    const double degrees = RadToDeg(sweep);
    CheckFinite(degrees);

    const std::optional<ArcPoints> arc = ToolGeometry::arcThrough(start, middle, end, c, circle->radius);
    if (!arc)
        return std::nullopt;
    Shape shape;
    std::vector<PointD> line;
    line.reserve(arc->size());
    for (const PointD& p : *arc)
        line.push_back(space.toPicture(p));
    const PointD centre = space.toPicture(c);
    const PointD top = line[ArcSegments / 2];
    shape.polylines.push_back(std::move(line));
    shape.guides = {{centre, points[0]}, {centre, points[2]}};
    shape.marks = {points[0], points[1], points[2], centre};
    shape.labels.push_back({top, QString(), 0, top.y > centre.y});
    return ToolGeometry::single(Number, {points[0], points[1], points[2]},
                                {degrees, Caption::Arc, UnitKind::Angle}, std::move(shape), context.decimals);
}

}  // namespace tavix
