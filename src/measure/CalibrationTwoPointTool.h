#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// Marks a known length for the calibration by its two ends; gives the length
// in picture pixels (tool 21 for the x axis, 23 for the y axis).
class CalibrationTwoPointTool : public ClickTool {
public:
    static constexpr int NumberX = 21;
    static constexpr int NumberY = 23;

    explicit CalibrationTwoPointTool(bool yAxis) : yAxis_(yAxis) {}

    int number() const override { return yAxis_ ? NumberY : NumberX; }
    int guidance() const override { return yAxis_ ? 72 : 70; }
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

    // The marked length in picture pixels once both ends are placed.
    std::optional<double> pixelDistance() const;

protected:
    std::size_t pointsNeeded() const override { return 2; }

private:
    bool yAxis_;
};

}  // namespace tavix
