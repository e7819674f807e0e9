#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// The distance of a point from a line, measured square to the line: two
// clicks on the line, then the point.
class LineToPointTool : public ClickTool {
public:
    static constexpr int Number = 108;

    int number() const override { return Number; }
    int guidance() const override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override { return 3; }
};

}  // namespace tavix
