#pragma once

#include "measure/CalcModule.h"
#include "measure/Measurement.h"
#include "measure/PointD.h"
#include "measure/Shape.h"
#include "measure/UnitSpace.h"

#include <optional>
#include <vector>

namespace tavix {

struct MeasureContext;

// Pieces the tools share: circles and crossings in calibrated space, arcs
// and rubber bands in picture pixels.
namespace ToolGeometry {

// The path through the points with a mark at each: the rubber band of a tool
// whose points so far form a chain.
Shape path(const std::vector<PointD>& points);

// A circle in calibrated space.
struct Circle {
    PointD centre;
    double radius = 0;
};

// The circle through three clicked points, or nothing when they are collinear
// or two coincide. The test runs on the pixels, where it is exact; the circle
// itself is taken in calibrated space.
std::optional<Circle> circleThrough(PointD p0, PointD p1, PointD p2, const UnitSpace& space);

// A whole circle of calibrated space as a closed polyline in picture pixels:
// 33 points, 32 segments, like an arc; the last point is the first.
std::vector<PointD> circlePolyline(const Circle& circle, const UnitSpace& space);

// The 33 points of the arc from start over middle to end. The arc routine
// goes the short way from start to end when the directions run start, end,
// middle; the arc asked the other way round then passes the middle point.
std::optional<CalcModule::ArcPoints> arcThrough(PointD start, PointD middle, PointD end, PointD centre,
                                                double radius);

// Two lines of two clicks each and where they cross, in calibrated space.
// Each line's arm is the clicked point farther from the crossing, so the angle
// is the one between the parts of the lines that were clicked.
struct Crossing {
    PointD cross;         // calibrated space
    PointD crossPicture;  // the same point in picture pixels
    PointD farA, farB;    // the arms' clicked points, calibrated space
    int farIndexA = 0;    // which click is the arm of line A (0 or 1) and of B (2 or 3)
    int farIndexB = 2;
    double angle = 0;  // radians, 0 to pi, between the arms
};

// Nothing when the lines are parallel (or a line is a single point).
std::optional<Crossing> crossingOf(PointD a0, PointD a1, PointD b0, PointD b1, const UnitSpace& space);

// The drawing of two lines that cross: the clicked lines and, where the
// crossing lies outside a clicked line, a guide from its nearer point.
void drawCrossingLines(Shape& shape, const std::vector<PointD>& clicked, PointD cross);

// A small arc at the crossing (picture pixels) from the direction of `from`
// over that of `through` to that of `to`, and its label (value 0), put on the
// arc's middle on the side away from the crossing.
struct AngleMark {
    std::vector<PointD> arc;
    Label label;
};
std::optional<AngleMark> angleMark(PointD cross, PointD from, PointD through, PointD to);

// A point on the bisector of the angle a-cross-b (picture pixels); square to
// a when a and b point in opposite directions.
PointD bisectorPoint(PointD cross, PointD a, PointD b);

// A line and a point measured square to it: the shared geometry of the line-to-point
// distance, the perpendicular and the line-and-point calibration.
struct Perpendicular {
    PointD foot;    // picture pixels
    double length;  // calibrated units
};
Perpendicular perpendicular(PointD p0, PointD p1, PointD q, const UnitSpace& space);

// Its drawing: the line, a guide to the foot when the foot lies beyond the
// line's ends, the perpendicular and its label (value 0).
Shape perpendicularShape(PointD p0, PointD p1, PointD q, PointD foot);

// A measurement of one value, its labels written with that many decimals.
Measurement single(int tool, const std::vector<PointD>& points, ResultValue value, Shape shape, int decimals);

// Distance from a point to a segment, all in picture pixels.
double distanceToSegment(PointD p, Segment s);

}  // namespace ToolGeometry
}  // namespace tavix
