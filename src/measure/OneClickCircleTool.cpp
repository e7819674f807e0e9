#include "measure/OneClickCircleTool.h"

#include "measure/OneClickCircle.h"
#include "measure/ToolGeometry.h"

namespace tavix {

void OneClickCircleTool::addPoint(PointD p)
{
    missed_ = false;
    ClickTool::addPoint(p);
}

void OneClickCircleTool::reset()
{
    ClickTool::reset();
    missed_ = false;
}

std::optional<Measurement> OneClickCircleTool::measure(const std::vector<PointD>& points,
                                                       const MeasureContext& context) const
{
    if (points.empty())
        return std::nullopt;
    const std::optional<OneClickCircle::Circle> found =
        OneClickCircle::find(EdgeSnap(context.picture), points[0]);
    if (!found)
        return std::nullopt;
    // The rim in calibrated space, so that unequal x and y factors give the
    // right diameter; the picture's top left is the centre's origin.
    const UnitSpace space({0, 0}, context.units);
    std::vector<PointD> rim;
    rim.reserve(found->edges.size());
    for (const PointD& p : found->edges)
        rim.push_back(space.toUnits(p));
    const std::optional<OneClickCircle::Circle> inUnits = OneClickCircle::leastSquares(rim);
    if (!inUnits)
        return std::nullopt;
    const double diameter = 2 * inUnits->radius;
    CalcModule::CheckFinite(diameter);
    CalcModule::CheckFinite(inUnits->centre.x);
    CalcModule::CheckFinite(inUnits->centre.y);

    const ToolGeometry::Circle circle{inUnits->centre, inUnits->radius};
    const PointD c = circle.centre;
    const PointD centre = space.toPicture(c);
    Shape shape;
    shape.polylines.push_back(ToolGeometry::circlePolyline(circle, space));
    shape.guides.push_back(
        {space.toPicture({c.x - circle.radius, c.y}), space.toPicture({c.x + circle.radius, c.y})});
    shape.marks = {centre};
    shape.labels.push_back({centre, QString(), 0});

    Measurement m;
    m.tool = Number;
    m.points = {points[0]};
    m.values = {{diameter, Caption::CircleDiameter, UnitKind::Length},
                {c.x, Caption::CircleCentreX, UnitKind::Length},
                {c.y, Caption::CircleCentreY, UnitKind::Length}};
    m.shape = std::move(shape);
    m.relabel(context.decimals);
    return m;
}

std::optional<Measurement> OneClickCircleTool::result(const MeasureContext& context) const
{
    std::optional<Measurement> m = ClickTool::result(context);
    missed_ = complete() && !m;
    return m;
}

}  // namespace tavix
