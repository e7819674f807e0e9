#include "measure/FiveClickAngleTool.h"

#include "measure/AngleTool.h"
#include "measure/ToolGeometry.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavix {

using namespace CalcModule;

namespace {

enum class Sector { Between, BesideB, BesideA, Opposite };

// The sector of the picked point from its angles to the two arms: each sector
// has its own sum or difference of the two that equals the angle.
Sector sectorOf(PointD armA, PointD cross, PointD armB, PointD picked, double angle)
{
    double toA = 0, toB = 0;
    if (!CalcAngle(armA, cross, picked, toA) || !CalcAngle(armB, cross, picked, toB))
        return Sector::Between;  // picked on the crossing itself
    const std::array<double, 4> misfit{
        std::fabs(toA + toB - angle),            // between the arms
        std::fabs(toA - toB - angle),            // beyond arm B, beside it
        std::fabs(toB - toA - angle),            // beyond arm A, beside it
        std::fabs(toA + toB - (TwoPi - angle)),  // behind the crossing
    };
    const auto best = std::min_element(misfit.begin(), misfit.end());
    return static_cast<Sector>(best - misfit.begin());
}

PointD mirrored(PointD p, PointD centre)
{
    return {2 * centre.x - p.x, 2 * centre.y - p.y};
}

}  // namespace

int FiveClickAngleTool::guidance() const
{
    return 52 + static_cast<int>(std::min<std::size_t>(points_.size(), 4));
}

std::optional<Measurement> FiveClickAngleTool::measure(const std::vector<PointD>& points,
                                                       const MeasureContext& context) const
{
    if (points.size() < 5)
        return std::nullopt;
    const UnitSpace space(points[0], context.units);
    const std::optional<ToolGeometry::Crossing> crossing =
        ToolGeometry::crossingOf(points[0], points[1], points[2], points[3], space);
    if (!crossing)
        return std::nullopt;
    const Sector sector =
        sectorOf(crossing->farA, crossing->cross, crossing->farB, space.toUnits(points[4]), crossing->angle);
    double radians = crossing->angle;
    int caption = Caption::Angle;
    if (sector == Sector::BesideA || sector == Sector::BesideB) {
        radians = Pi - crossing->angle;
        caption = Caption::SupplementaryAngle;
    } else if (sector == Sector::Opposite) {
        radians = TwoPi - crossing->angle;
        caption = Caption::ReflexAngle;
    }
    const double degrees = RadToDeg(radians);
    CheckFinite(degrees);

    const std::vector<PointD> clicked(points.begin(), points.begin() + 5);
    const PointD cross = crossing->crossPicture;
    Shape shape;
    ToolGeometry::drawCrossingLines(shape, clicked, cross);
    shape.marks = clicked;
    shape.marks.push_back(cross);

    const PointD armA = clicked[static_cast<std::size_t>(crossing->farIndexA)];
    const PointD armB = clicked[static_cast<std::size_t>(crossing->farIndexB)];
    PointD from = armA, to = armB;
    if (sector == Sector::BesideB)
        from = mirrored(armA, cross);
    else if (sector == Sector::BesideA)
        to = mirrored(armB, cross);
    PointD through = clicked[4];
    if (through == cross)
        through = ToolGeometry::bisectorPoint(cross, from, to);
    if (const auto mark = ToolGeometry::angleMark(cross, from, through, to)) {
        shape.polylines.push_back(mark->arc);
        shape.labels.push_back(mark->label);
    } else {
        shape.labels.push_back({cross, QString(), 0});
    }
    return ToolGeometry::single(Number, clicked, {degrees, caption, UnitKind::Angle}, std::move(shape),
                                context.decimals);
}

Shape FiveClickAngleTool::sketch(const std::vector<PointD>& points, const MeasureContext&) const
{
    return AngleTool::twoLines(points);
}

}  // namespace tavix
