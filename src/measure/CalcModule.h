#pragma once

#include "measure/PointD.h"

#include <array>
#include <vector>

namespace tavix {

// Plane geometry of the measuring tools, in picture pixels (x right, y down).
//
// The routines keep no state and never round to display decimals. They
// compare with 0 exactly, so nearly collinear points give a very large circle
// rather than a failure. A routine that fails returns false and leaves its out
// arguments untouched.
//
// Floating-point faults: the routines never throw. An overflow, a division by
// zero or an invalid operation shows up as an infinite or NaN value in what
// they return. Callers run inside their own error guard and pass the values
// they go on with through CheckFinite, which raises RunError(err::Overflow) so
// that the guard logs "... Error.(6)". An intermediate overflow that still ends
// in a finite value goes unnoticed; it needs coordinates far outside any
// picture (beyond 1e150 pixels).
namespace CalcModule {

// The program's pi and two pi: the 15-digit literals, a few bits below the
// exactly rounded values. Results depend on them bit for bit.
inline constexpr double Pi = 3.14159265358979;
inline constexpr double TwoPi = 6.28318530717958;

// Number of segments of an arc polyline; the list holds one point more.
inline constexpr int ArcSegments = 32;
using ArcPoints = std::array<PointD, ArcSegments + 1>;

double RadToDeg(double radians);

// Axis-parallel distances are exact.
double CalcDistance(PointD a, PointD b);

// Direction of (dx, dy) in radians, in (-Pi, Pi]. Since y grows downwards, a
// growing angle turns clockwise on the screen.
double CalcAtan2(double dy, double dx);

PointD CalcMidPoint(PointD a, PointD b);

// Foot of the perpendicular from q onto the line p0-p1 and its length. A
// degenerate line (p0 == p1) counts as horizontal. Always true.
bool CalcPerpendicular(PointD p0, PointD p1, PointD q, PointD& foot, double& length);

// Area of the closed polygon points[1] .. points[size - 1]; points[0] is not
// part of it. Fewer than two points give 0. Always true.
bool CalcPolygonArea(const std::vector<PointD>& points, double& area);

// False (nothing written) when the points are collinear or two coincide.
bool CalcCircle3Points(PointD p0, PointD p1, PointD p2, PointD& centre, double& radius);

// False (nothing written) when the lines a0-a1 and b0-b1 are parallel.
bool CalcLineCross(PointD a0, PointD a1, PointD b0, PointD b1, PointD& cross);

// Unsigned angle a-vertex-b in radians, 0 to Pi. False (nothing written) when
// a or b coincides with the vertex.
bool CalcAngle(PointD a, PointD vertex, PointD b, double& angle);

// Polyline of the arc from start over middle to end on the circle (centre,
// radius). False (nothing written) when the three points give no direction.
bool CalcArcPoints(PointD start, PointD middle, PointD end, PointD centre, double radius, ArcPoints& points);

// What the unit conversion reads of the program's state.
struct UnitContext {
    double xFactor = 0;  // selected calibration entry, units per pixel, 0 = none
    double yFactor = 0;
    double magnification = 1;             // display magnification of the still view
    bool takingCalibrationValue = false;  // calibration dialog marks a length
};

// Converts a value pair between picture pixels and calibrated units, x with the
// x factor and y with the y factor. The pair is two lengths (or an x and a y
// extent), not a position. A zero factor, or a calibration being taken from the
// picture, leaves that axis in pixels.
PointD ConvertUnit(PointD value, bool toPixels, const UnitContext& context);

// Raises RunError(err::Overflow) when a result carries a floating-point fault.
void CheckFinite(double value);
void CheckFinite(PointD value);

}  // namespace CalcModule
}  // namespace tavix
