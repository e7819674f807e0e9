#include "measure/AngleTool.h"

#include "measure/ToolGeometry.h"

#include <algorithm>

namespace tavix {

using namespace CalcModule;

int AngleTool::guidance() const
{
    // The two points of line 2 share one text.
    static constexpr int numbers[] = {47, 48, 49, 49};
    return numbers[std::min<std::size_t>(points_.size(), 3)];
}

std::optional<Measurement> AngleTool::measure(const std::vector<PointD>& points,
                                              const MeasureContext& context) const
{
    if (points.size() < 4)
        return std::nullopt;
    const UnitSpace space(points[0], context.units);
    const std::optional<ToolGeometry::Crossing> crossing =
        ToolGeometry::crossingOf(points[0], points[1], points[2], points[3], space);
    if (!crossing)
        return std::nullopt;
    const double degrees = RadToDeg(crossing->angle);
    CheckFinite(degrees);

    const std::vector<PointD> clicked(points.begin(), points.begin() + 4);
    const PointD cross = crossing->crossPicture;
    Shape shape;
    ToolGeometry::drawCrossingLines(shape, clicked, cross);
    shape.marks = clicked;
    shape.marks.push_back(cross);
    const PointD armA = clicked[static_cast<std::size_t>(crossing->farIndexA)];
    const PointD armB = clicked[static_cast<std::size_t>(crossing->farIndexB)];
    if (const auto mark =
            ToolGeometry::angleMark(cross, armA, ToolGeometry::bisectorPoint(cross, armA, armB), armB)) {
        shape.polylines.push_back(mark->arc);
        shape.labels.push_back(mark->label);
    } else {
        shape.labels.push_back({cross, QString(), 0});
    }
    return ToolGeometry::single(Number, clicked, {degrees, Caption::Angle, UnitKind::Angle}, std::move(shape),
                                context.decimals);
}

Shape AngleTool::twoLines(const std::vector<PointD>& points)
{
    Shape shape;
    for (std::size_t i = 0; i + 1 < points.size() && i < 4; i += 2)
        shape.lines.push_back({points[i], points[i + 1]});
    shape.marks = points;
    return shape;
}

Shape AngleTool::sketch(const std::vector<PointD>& points, const MeasureContext&) const
{
    return twoLines(points);
}

}  // namespace tavix
