#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// The diameter of the circle through three clicked edge points.
class CircleTool : public ClickTool {
public:
    static constexpr int Number = 102;

    int number() const override { return Number; }
    int guidance() const override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override { return 3; }
};

}  // namespace tavix
