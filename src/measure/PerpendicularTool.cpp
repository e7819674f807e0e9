#include "measure/PerpendicularTool.h"

#include "measure/ToolGeometry.h"

namespace tavix {

int PerpendicularTool::guidance() const
{
    if (points_.size() >= 2)
        return measuredOnce_ ? 46 : 45;
    return points_.empty() ? 43 : 44;
}

void PerpendicularTool::startNext()
{
    if (!complete())
        return;
    points_.resize(2);
    measuredOnce_ = true;
}

void PerpendicularTool::reset()
{
    ClickTool::reset();
    measuredOnce_ = false;
}

std::optional<Measurement> PerpendicularTool::measure(const std::vector<PointD>& points,
                                                      const MeasureContext& context) const
{
    if (points.size() < 3)
        return std::nullopt;
    const UnitSpace space(points[0], context.units);
    const ToolGeometry::Perpendicular p = ToolGeometry::perpendicular(points[0], points[1], points[2], space);
    CalcModule::CheckFinite(p.length);
    return ToolGeometry::single(
        Number, {points[0], points[1], points[2]}, {p.length, Caption::Perpendicular, UnitKind::Length},
        ToolGeometry::perpendicularShape(points[0], points[1], points[2], p.foot), context.decimals);
}

}  // namespace tavix
