#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// One click inside a disc or a hole: its rim is found all around
// (OneClickCircle) and its diameter and centre are measured, the centre in
// calibrated units from the picture's top left corner.
class OneClickCircleTool : public ClickTool {
public:
    static constexpr int Number = 111;

    int number() const override { return Number; }
    int guidance() const override { return missed_ ? 84 : 82; }
    bool takesSnappedPoints() const override { return false; }
    void addPoint(PointD p) override;
    void reset() override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;
    std::optional<Measurement> result(const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override { return 1; }

private:
    // The last click found no circle: the guidance says so.
    mutable bool missed_ = false;
};

}  // namespace tavix
