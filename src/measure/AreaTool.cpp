#include "measure/AreaTool.h"

#include "common/RunError.h"
#include "measure/ToolGeometry.h"

#include <limits>

namespace tavix {

int AreaTool::guidance() const
{
    return points_.empty() ? 50 : 51;
}

bool AreaTool::finishOnDoubleClick()
{
    if (points_.size() < MinimumCorners)
        return false;
    finished_ = true;
    return true;
}

void AreaTool::startNext()
{
    ClickTool::startNext();
    finished_ = false;
}

void AreaTool::reset()
{
    ClickTool::reset();
    finished_ = false;
}

std::size_t AreaTool::pointsNeeded() const
{
    return std::numeric_limits<std::size_t>::max();
}

std::optional<Measurement> AreaTool::measure(const std::vector<PointD>& points,
                                             const MeasureContext& context) const
{
    if (points.size() < MinimumCorners)
        return std::nullopt;
    // The area routine counts its corners from 1.
    std::vector<PointD> corners{PointD{}};
    corners.insert(corners.end(), points.begin(), points.end());
    double pixels = 0;
    CalcModule::CalcPolygonArea(corners, pixels);
    const double area = UnitSpace(points[0], context.units).area(pixels);
    CalcModule::CheckFinite(area);

    Shape shape = ToolGeometry::path(points);
    shape.lines.push_back({points.back(), points.front()});
    PointD centre;
    for (const PointD& p : points) {
        centre.x += p.x;
        centre.y += p.y;
    }
    centre = {centre.x / static_cast<double>(points.size()), centre.y / static_cast<double>(points.size())};
    shape.labels.push_back({centre, QString(), 0});
    return ToolGeometry::single(Number, points, {area, Caption::Area, UnitKind::Area}, std::move(shape),
                                context.decimals);
}

Shape AreaTool::sketch(const std::vector<PointD>& points, const MeasureContext& context) const
{
    if (points.size() >= MinimumCorners) {
        try {
            if (std::optional<Measurement> m = measure(points, context)) {
                // The side that the double click would close stays a guide.
                m->shape.guides.push_back(m->shape.lines.back());
                m->shape.lines.pop_back();
                return m->shape;
            }
        } catch (const RunError&) {
        }
    }
    return ToolGeometry::path(points);
}

}  // namespace tavix
