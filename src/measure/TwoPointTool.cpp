#include "measure/TwoPointTool.h"

#include "measure/ToolGeometry.h"

namespace tavix {

int TwoPointTool::guidance() const
{
    return points_.empty() ? 32 : 33;
}

std::optional<Measurement> TwoPointTool::measure(const std::vector<PointD>& points,
                                                 const MeasureContext& context) const
{
    if (points.size() < 2)
        return std::nullopt;
    const UnitSpace space(points[0], context.units);
    const double distance = CalcModule::CalcDistance(space.toUnits(points[0]), space.toUnits(points[1]));
    CalcModule::CheckFinite(distance);
    Shape shape = ToolGeometry::path({points[0], points[1]});
    shape.labels.push_back({CalcModule::CalcMidPoint(points[0], points[1]), QString(), 0});
    return ToolGeometry::single(Number, {points[0], points[1]},
                                {distance, Caption::Distance, UnitKind::Length}, std::move(shape),
                                context.decimals);
}

}  // namespace tavix
