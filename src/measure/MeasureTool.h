#pragma once

#include "measure/MeasureContext.h"
#include "measure/Measurement.h"
#include "measure/PointD.h"
#include "measure/Shape.h"

#include <optional>

namespace tavix {

// One measuring tool of the still view: points in, rubber band and result out.
// Storing results, undo and selection belong to the caller.
//
// The caller's cycle: addPoint() on each button release (picture pixels); on a
// double click, finishOnDoubleClick() for the tools that end that way (the
// first release of the double click has placed the point, the release that
// ends it places none); preview() on each mouse move while not complete();
// once complete(), take result() and call startNext(). reset() cancels.
class MeasureTool {
public:
    virtual ~MeasureTool() = default;

    // The tool number: 100..109 measuring, 21..24 calibration marking.
    virtual int number() const = 0;

    // Guidance number for the next click.
    virtual int guidance() const = 0;

    // Points placed for the measurement in progress.
    virtual int clickCount() const = 0;

    // Places the next point; ignored once the tool is complete.
    virtual void addPoint(PointD p) = 0;

    // The left button went down: a tool that is dragged (the caliper) takes
    // its first point here; the others wait for the release.
    virtual void press(PointD) {}

    // Whether edge snap moves this tool's points. Tools that look for edges
    // themselves take the pointer as it is.
    virtual bool takesSnappedPoints() const { return true; }

    // Ends a tool whose number of points is open (point count, area). False
    // when the tool does not end that way or has too few points yet.
    virtual bool finishOnDoubleClick() { return false; }

    virtual bool complete() const = 0;

    // The rubber band from the placed points to the pointer, with the live
    // value when the pointer would complete the tool. Never throws.
    virtual Shape preview(PointD pointer, const MeasureContext& context) const = 0;

    // The finished measurement; nothing while incomplete or when the points
    // give none (collinear points, parallel lines). Throws
    // RunError(err::Overflow) when the values are no finite numbers.
    virtual std::optional<Measurement> result(const MeasureContext& context) const = 0;

    // After a result: ready for the next measurement of the same tool.
    virtual void startNext() = 0;

    // Drops every placed point.
    virtual void reset() = 0;
};

}  // namespace tavix
