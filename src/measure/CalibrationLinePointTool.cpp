#include "measure/CalibrationLinePointTool.h"

#include "measure/ToolGeometry.h"

namespace tavix {

std::optional<Measurement> CalibrationLinePointTool::measure(const std::vector<PointD>& points,
                                                             const MeasureContext& context) const
{
    if (points.size() < 3)
        return std::nullopt;
    PointD foot;
    double pixels = 0;
    CalcModule::CalcPerpendicular(points[0], points[1], points[2], foot, pixels);
    CalcModule::CheckFinite(pixels);
    Shape shape = ToolGeometry::perpendicularShape(points[0], points[1], points[2], foot);
    shape.lineSlot = 3;
    shape.valueSlot = 2;
    return ToolGeometry::single(number(), {points[0], points[1], points[2]}, {pixels, 0, UnitKind::Pixels},
                                std::move(shape), context.decimals);
}

std::optional<double> CalibrationLinePointTool::pixelDistance() const
{
    if (!complete())
        return std::nullopt;
    const std::optional<Measurement> m = measure(points_, {});
    if (!m)
        return std::nullopt;
    return m->values.front().value;
}

}  // namespace tavix
