#include "measure/PointCountTool.h"

#include <limits>

namespace tavix {

namespace {
constexpr int FirstGuidance = 30;
constexpr int NextGuidance = 31;

// Numbered marks, so that the last number is the count.
Shape numberedMarks(const std::vector<PointD>& points)
{
    Shape shape;
    shape.marks = points;
    for (std::size_t i = 0; i < points.size(); ++i)
        shape.labels.push_back({points[i], QString::number(i + 1), -1});
    return shape;
}
}  // namespace

int PointCountTool::guidance() const
{
    return points_.empty() ? FirstGuidance : NextGuidance;
}

bool PointCountTool::finishOnDoubleClick()
{
    if (points_.empty())
        return false;
    finished_ = true;
    return true;
}

void PointCountTool::startNext()
{
    ClickTool::startNext();
    finished_ = false;
}

void PointCountTool::reset()
{
    ClickTool::reset();
    finished_ = false;
}

std::size_t PointCountTool::pointsNeeded() const
{
    return std::numeric_limits<std::size_t>::max();
}

std::optional<Measurement> PointCountTool::measure(const std::vector<PointD>& points,
                                                   const MeasureContext&) const
{
    if (points.empty())
        return std::nullopt;
    Measurement m;
    m.tool = Number;
    m.points = points;
    m.values = {{static_cast<double>(points.size()), Caption::PointCount, UnitKind::Count}};
    m.shape = numberedMarks(points);
    return m;
}

Shape PointCountTool::sketch(const std::vector<PointD>& points, const MeasureContext&) const
{
    return numberedMarks(points);
}

}  // namespace tavix
