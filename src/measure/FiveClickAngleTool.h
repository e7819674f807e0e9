#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// The angle between two lines of two clicks each, on the side picked by a
// fifth click. Where the lines cross they part the plane into four sectors:
// between the clicked parts of the lines (the arms) lies the angle; between
// one arm and the other line's continuation behind the crossing, its
// supplement (180 degrees less); in the sector opposite the arms, behind the
// crossing, the reflex angle (360 degrees less), which runs the long way round
// from one arm to the other.
class FiveClickAngleTool : public ClickTool {
public:
    static constexpr int Number = 107;

    int number() const override { return Number; }
    int guidance() const override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override { return 5; }
    Shape sketch(const std::vector<PointD>& points, const MeasureContext& context) const override;
};

}  // namespace tavix
