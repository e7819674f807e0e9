#pragma once

#include "measure/MeasureTool.h"

#include <cstddef>
#include <vector>

namespace tavix {

// The common part of the tools: placed points in click order, complete at a
// fixed number of points, the result computed from the points alone (so that
// a stored measurement can be computed again from its points).
class ClickTool : public MeasureTool {
public:
    int clickCount() const override { return static_cast<int>(points_.size()); }
    void addPoint(PointD p) override;
    bool complete() const override;
    Shape preview(PointD pointer, const MeasureContext& context) const override;
    std::optional<Measurement> result(const MeasureContext& context) const override;
    void startNext() override { points_.clear(); }
    void reset() override { points_.clear(); }

    // The measurement of a full set of points, or nothing when they give none.
    virtual std::optional<Measurement> measure(const std::vector<PointD>& points,
                                               const MeasureContext& context) const = 0;

protected:
    // The number of points that completes the tool.
    virtual std::size_t pointsNeeded() const = 0;

    // The rubber band of an incomplete set (the placed points and the
    // pointer): by default the path through them.
    virtual Shape sketch(const std::vector<PointD>& points, const MeasureContext& context) const;

    std::vector<PointD> points_;
};

}  // namespace tavix
