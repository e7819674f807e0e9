#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// The angle that an arc spans, seen from its centre: clicks on the start, the
// middle and the end of the arc. The value is in degrees (up to 360); the
// arc's length is not given, its radius follows from the circle tool.
class ArcTool : public ClickTool {
public:
    static constexpr int Number = 109;

    int number() const override { return Number; }
    int guidance() const override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override { return 3; }
};

}  // namespace tavix
