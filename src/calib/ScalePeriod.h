#pragma once

#include "measure/PointD.h"

#include <QImage>
#include <optional>

namespace tavix {

// The spacing of a graduated scale's divisions along a line drawn over its
// ticks, to a small fraction of a pixel.
//
// The grey profile along the line (averaged a few pixels across it) gives the
// period roughly from the strongest peak of its spectrum; each tick's centre
// is then the centroid of its contrast, and a straight line fitted through
// tick number against position over the whole length gives the period. The
// scatter of the ticks about that line is the spread.
class ScalePeriod {
public:
    struct Result {
        double periodPixels = 0;  // picture pixels per division
        int divisions = 0;        // divisions between the first and last tick used
        double spreadPixels = 0;  // RMS distance of the ticks from the fitted line
    };

    // Nothing when the line crosses no regular divisions (too few ticks, no
    // clear period, or ticks too scattered to be a scale).
    static std::optional<Result> measure(const QImage& picture, PointD from, PointD to);

    // Fewer divisions than this along the line are no scale.
    static constexpr int kMinDivisions = 5;
};

}  // namespace tavix
