#include "measure/CircleTool.h"

#include "measure/ToolGeometry.h"

#include <algorithm>

namespace tavix {

int CircleTool::guidance() const
{
    static constexpr int numbers[] = {34, 35, 36};
    return numbers[std::min<std::size_t>(points_.size(), 2)];
}

std::optional<Measurement> CircleTool::measure(const std::vector<PointD>& points,
                                               const MeasureContext& context) const
{
    if (points.size() < 3)
        return std::nullopt;
    const UnitSpace space(points[0], context.units);
    const std::optional<ToolGeometry::Circle> circle =
        ToolGeometry::circleThrough(points[0], points[1], points[2], space);
    if (!circle)
        return std::nullopt;
    const double diameter = 2 * circle->radius;
    CalcModule::CheckFinite(diameter);

    const PointD c = circle->centre;
    const PointD centre = space.toPicture(c);
    Shape shape;
    shape.polylines.push_back(ToolGeometry::circlePolyline(*circle, space));
    // The diameter that the value gives, across the centre.
    shape.guides.push_back(
        {space.toPicture({c.x - circle->radius, c.y}), space.toPicture({c.x + circle->radius, c.y})});
    shape.marks = {points[0], points[1], points[2], centre};
    shape.labels.push_back({centre, QString(), 0});
    return ToolGeometry::single(Number, {points[0], points[1], points[2]},
                                {diameter, Caption::CircleDiameter, UnitKind::Length}, std::move(shape),
                                context.decimals);
}

}  // namespace tavix
