#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// The area of a polygon: a click on each corner, a double click on the last
// corner closes it (three corners at least).
class AreaTool : public ClickTool {
public:
    static constexpr int Number = 105;
    static constexpr std::size_t MinimumCorners = 3;

    int number() const override { return Number; }
    int guidance() const override;
    bool finishOnDoubleClick() override;
    bool complete() const override { return finished_; }
    void startNext() override;
    void reset() override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override;
    Shape sketch(const std::vector<PointD>& points, const MeasureContext& context) const override;

private:
    bool finished_ = false;
};

}  // namespace tavix
