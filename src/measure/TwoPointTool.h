#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// The distance between two clicked points.
class TwoPointTool : public ClickTool {
public:
    static constexpr int Number = 101;

    int number() const override { return Number; }
    int guidance() const override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override { return 2; }
};

}  // namespace tavix
