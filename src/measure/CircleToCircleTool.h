#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// Two circles of three edge points each (clicks 0 to 2 and 3 to 5). Two
// values: the distance between the centres, and the gap between the circles'
// edges (0 where they cross; inside one another, the gap to the outer edge).
class CircleToCircleTool : public ClickTool {
public:
    static constexpr int Number = 103;

    int number() const override { return Number; }
    int guidance() const override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override { return 6; }
    Shape sketch(const std::vector<PointD>& points, const MeasureContext& context) const override;
};

}  // namespace tavix
