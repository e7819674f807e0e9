#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// The angle between two lines of two clicks each, taken between the clicked
// parts of the lines where they cross (0 to 180 degrees).
class AngleTool : public ClickTool {
public:
    static constexpr int Number = 106;

    int number() const override { return Number; }
    int guidance() const override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

    // The rubber band of two lines in the making, shared with the five-click angle.
    static Shape twoLines(const std::vector<PointD>& points);

protected:
    std::size_t pointsNeeded() const override { return 4; }
    Shape sketch(const std::vector<PointD>& points, const MeasureContext& context) const override;
};

}  // namespace tavix
