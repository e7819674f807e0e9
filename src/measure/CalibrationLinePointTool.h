#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// Marks a known length for the calibration as the distance of a point from a
// line (two clicks on the line, then the point), measured square to the line;
// gives it in picture pixels (tool 22 for the x axis, 24 for the y axis).
class CalibrationLinePointTool : public ClickTool {
public:
    static constexpr int NumberX = 22;
    static constexpr int NumberY = 24;

    explicit CalibrationLinePointTool(bool yAxis) : yAxis_(yAxis) {}

    int number() const override { return yAxis_ ? NumberY : NumberX; }
    int guidance() const override { return yAxis_ ? 73 : 71; }
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

    // The marked length in picture pixels once the point is placed.
    std::optional<double> pixelDistance() const;

protected:
    std::size_t pointsNeeded() const override { return 3; }

private:
    bool yAxis_;
};

}  // namespace tavix
