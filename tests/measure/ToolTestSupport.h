#pragma once

#include "measure/CalcModule.h"
#include "measure/MeasureContext.h"
#include "measure/MeasureTool.h"
#include "measure/Measurement.h"
#include "measure/ToolGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tavix {

inline void PrintTo(const PointD& p, std::ostream* os)
{
    *os << "(" << p.x << ", " << p.y << ")";
}

namespace test {

inline MeasureContext contextWith(double xFactor, double yFactor, int decimals = 3, double magnification = 1)
{
    MeasureContext c;
    c.units.xFactor = xFactor;
    c.units.yFactor = yFactor;
    c.units.magnification = magnification;
    c.decimals = decimals;
    return c;
}

// Releases the button on each click in turn; a double click after the last
// one for the tools that end that way.
inline void clickAll(MeasureTool& tool, const std::vector<PointD>& clicks, bool doubleClickAtEnd = false)
{
    for (const PointD& p : clicks)
        tool.addPoint(p);
    if (doubleClickAtEnd)
        tool.finishOnDoubleClick();
}

// The first value of what the clicks give, or nothing.
inline std::optional<double> valueOf(MeasureTool& tool, const std::vector<PointD>& clicks,
                                     const MeasureContext& c, bool doubleClickAtEnd = false)
{
    clickAll(tool, clicks, doubleClickAtEnd);
    const std::optional<Measurement> m = tool.result(c);
    if (!m || m->values.empty())
        return std::nullopt;
    return m->values.front().value;
}

// Whether any line, guide or polyline piece of the shape passes within
// `tolerance` of p.
inline bool passesNear(const Shape& shape, PointD p, double tolerance)
{
    for (const Segment& s : shape.lines)
        if (ToolGeometry::distanceToSegment(p, s) <= tolerance)
            return true;
    for (const Segment& s : shape.guides)
        if (ToolGeometry::distanceToSegment(p, s) <= tolerance)
            return true;
    for (const auto& line : shape.polylines)
        for (std::size_t i = 1; i < line.size(); ++i)
            if (ToolGeometry::distanceToSegment(p, {line[i - 1], line[i]}) <= tolerance)
                return true;
    return false;
}

inline bool hasLine(const Shape& shape, PointD a, PointD b, double tolerance = 1e-9)
{
    for (const Segment& s : shape.lines) {
        const bool same =
            CalcModule::CalcDistance(s.a, a) <= tolerance && CalcModule::CalcDistance(s.b, b) <= tolerance;
        const bool swapped =
            CalcModule::CalcDistance(s.a, b) <= tolerance && CalcModule::CalcDistance(s.b, a) <= tolerance;
        if (same || swapped)
            return true;
    }
    return false;
}

inline std::string caseName(const char* name)
{
    return name;
}

}  // namespace test
}  // namespace tavix
