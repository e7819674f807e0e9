#include "measure/CalibrationTwoPointTool.h"

#include "measure/ToolGeometry.h"

namespace tavix {

std::optional<Measurement> CalibrationTwoPointTool::measure(const std::vector<PointD>& points,
                                                            const MeasureContext& context) const
{
    if (points.size() < 2)
        return std::nullopt;
    const double pixels = CalcModule::CalcDistance(points[0], points[1]);
    CalcModule::CheckFinite(pixels);
    Shape shape = ToolGeometry::path({points[0], points[1]});
    shape.labels.push_back({CalcModule::CalcMidPoint(points[0], points[1]), QString(), 0});
    // Marking colours, apart from those of measurements.
    shape.lineSlot = 3;
    shape.valueSlot = 2;
    return ToolGeometry::single(number(), {points[0], points[1]}, {pixels, 0, UnitKind::Pixels},
                                std::move(shape), context.decimals);
}

std::optional<double> CalibrationTwoPointTool::pixelDistance() const
{
    if (!complete())
        return std::nullopt;
    const std::optional<Measurement> m = measure(points_, {});
    if (!m)
        return std::nullopt;
    return m->values.front().value;
}

}  // namespace tavix
