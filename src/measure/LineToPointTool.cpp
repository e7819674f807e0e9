#include "measure/LineToPointTool.h"

#include "measure/ToolGeometry.h"

#include <algorithm>

namespace tavix {

int LineToPointTool::guidance() const
{
    static constexpr int numbers[] = {57, 58, 59};
    return numbers[std::min<std::size_t>(points_.size(), 2)];
}

std::optional<Measurement> LineToPointTool::measure(const std::vector<PointD>& points,
                                                    const MeasureContext& context) const
{
    if (points.size() < 3)
        return std::nullopt;
    const UnitSpace space(points[0], context.units);
    const ToolGeometry::Perpendicular p = ToolGeometry::perpendicular(points[0], points[1], points[2], space);
    CalcModule::CheckFinite(p.length);
    return ToolGeometry::single(
        Number, {points[0], points[1], points[2]}, {p.length, Caption::Distance, UnitKind::Length},
        ToolGeometry::perpendicularShape(points[0], points[1], points[2], p.foot), context.decimals);
}

}  // namespace tavix
