#pragma once

#include "measure/ClickTool.h"
#include "measure/EdgeSnap.h"

#include <utility>
#include <vector>

namespace tavix {

// A line dragged (or two clicks) across a feature: the grey profile along it,
// averaged over a band a few pixels wide, every edge on it to a fraction of a
// pixel, and the width between the outermost two. Another pair of edges can
// be measured on the same line (measurePair).
//
// Points: the line's two ends, then the two edge points measured when a pair
// other than the outermost was picked.
class CaliperTool : public ClickTool {
public:
    static constexpr int Number = 110;
    // The band across the line over which the profile is averaged, px.
    static constexpr int kBand = 5;
    // A release this close to the press is a click, not a drag (picture px).
    static constexpr double kClickSlop = 3.0;

    // The profile along a line and the edges on it; positions in picture
    // pixels from the line's start.
    struct Profile {
        PointD from, to;
        std::vector<double> samples;  // every EdgeSnap::kProfileStep px
        std::vector<EdgeSnap::ProfileEdge> edges;

        PointD pointAt(double at) const;
    };
    static Profile profileAlong(const QImage& picture, PointD from, PointD to);

    // The width between edges `first` and `last` of the profile along the
    // line; nothing when there is no such pair.
    static std::optional<Measurement> measurePair(const Profile& profile, int first, int last,
                                                  const MeasureContext& context);

    // The edges a measurement of this tool measured between: the outermost
    // pair, or the pair nearest its picked edge points.
    static std::pair<int, int> pairOf(const std::vector<PointD>& points, const Profile& profile);

    int number() const override { return Number; }
    int guidance() const override;
    void press(PointD p) override;
    void addPoint(PointD p) override;
    bool takesSnappedPoints() const override { return false; }
    void startNext() override;
    void reset() override;
    std::optional<Measurement> measure(const std::vector<PointD>& points,
                                       const MeasureContext& context) const override;
    std::optional<Measurement> result(const MeasureContext& context) const override;

protected:
    std::size_t pointsNeeded() const override { return 2; }

private:
    bool pressed_ = false;  // the first point came with the button going down
    // The last line gave no pair of edges: the guidance says so.
    mutable bool missed_ = false;
};

}  // namespace tavix
