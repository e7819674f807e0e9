#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// Perpendiculars to one base line: two clicks on the base line, then any
// number of points, each measured square to it, until the tool is reset.
class PerpendicularTool : public ClickTool {
public:
    static constexpr int Number = 104;

    int number() const override { return Number; }
    int guidance() const override;
    // Keeps the base line for the next point.
    void startNext() override;
    void reset() override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override { return 3; }

private:
    bool measuredOnce_ = false;
};

}  // namespace tavix
