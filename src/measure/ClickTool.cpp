#include "measure/ClickTool.h"

#include "common/RunError.h"
#include "measure/ToolGeometry.h"

namespace tavix {

void ClickTool::addPoint(PointD p)
{
    if (!complete())
        points_.push_back(p);
}

bool ClickTool::complete() const
{
    return points_.size() >= pointsNeeded();
}

Shape ClickTool::preview(PointD pointer, const MeasureContext& context) const
{
    if (complete())
        return {};
    std::vector<PointD> points = points_;
    points.push_back(pointer);
    if (points.size() == pointsNeeded()) {
        // The pointer is where the last click would go: show what it would give.
        try {
            if (std::optional<Measurement> m = measure(points, context))
                return m->shape;
        } catch (const RunError&) {
            // no live value for a fault; the click itself reports it
        }
    }
    return sketch(points, context);
}

std::optional<Measurement> ClickTool::result(const MeasureContext& context) const
{
    if (!complete())
        return std::nullopt;
    return measure(points_, context);
}

Shape ClickTool::sketch(const std::vector<PointD>& points, const MeasureContext&) const
{
    return ToolGeometry::path(points);
}

}  // namespace tavix
