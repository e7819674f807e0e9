#pragma once

#include "measure/ClickTool.h"

namespace tavix {

// Counts clicked points: each click numbers a point, a double click on the
// last point ends the count.
class PointCountTool : public ClickTool {
public:
    static constexpr int Number = 100;

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
