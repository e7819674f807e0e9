#pragma once

#include "measure/EdgeSnap.h"
#include "measure/PointD.h"

#include <optional>
#include <vector>

namespace tavix {

// Finds the disc or hole around a click: rays from the click, the first edge
// on each to a fraction of a pixel (the edge-snap engine's profile edges),
// a least-squares circle through them that drops the rays which met
// something else (a speck, a neighbour), then the same again on rays from the
// circle's centre, which cross the edge square.
class OneClickCircle {
public:
    struct Circle {
        PointD centre;  // picture pixels
        double radius = 0;
        std::vector<PointD> edges;  // the edge points the circle was fitted to
        int dropped = 0;            // rays whose edge was left out
    };

    // Nothing when the click has no closed edge around it (the bare slide,
    // an edge on too few rays).
    static std::optional<Circle> find(const EdgeSnap& snap, PointD click);

    // The least-squares circle through all the points (distances to the
    // circle squared and summed); nothing for fewer than 3 or a line.
    static std::optional<Circle> leastSquares(const std::vector<PointD>& points);

    // The least-squares circle through the points (distances to the circle
    // squared and summed), leaving out one by one the points that lie far
    // off it. Nothing for fewer than `minimum` points left (at least 3).
    static std::optional<Circle> fit(std::vector<PointD> points, std::size_t minimum);
};

}  // namespace tavix
