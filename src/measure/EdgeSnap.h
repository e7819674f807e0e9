#pragma once

#include "measure/PointD.h"

#include <QImage>
#include <optional>
#include <vector>

namespace tavix {

// Moves a click onto the nearest strong edge of the picture, to a fraction of
// a pixel.
//
// The strongest smoothed gradient within reach of the click gives the edge and
// its direction; the grey profile across the edge (averaged a little along
// it) is then differentiated and the centroid of its peak taken as the edge.
// The click moves only across the edge, so a click beside a long edge lands
// on the edge right beside it. A thin line (a dark or bright stroke, such as a
// micrometer's tick) gives two opposite peaks close together: the point goes
// to the line's middle. Too weak a gradient (noise, a flat area) is no edge.
//
// Works on the picture as it is, in picture pixels, whatever the zoom shown.
// Cheap to make: the picture is shared, and each query reads only a small
// patch around the click.
class EdgeSnap {
public:
    // How far from the click an edge is looked for, in picture pixels.
    static constexpr double kReach = 5.0;

    explicit EdgeSnap(QImage picture);

    // The edge point near `click`, or nothing when there is no edge in reach.
    std::optional<PointD> find(PointD click) const;
    // The edge point, or the click itself.
    PointD snap(PointD click) const { return find(click).value_or(click); }

    // Profiles along a line (the caliper, the rays of the one-click circle)
    // are sampled this far apart, in picture pixels.
    static constexpr double kProfileStep = 0.25;

    // An edge met along a profile: where it lies (picture pixels from the
    // profile's start) and its slope (grey levels per pixel, positive where
    // the picture gets brighter).
    struct ProfileEdge {
        double at = 0;
        double slope = 0;
    };

    // Grey level at a picture point, bilinear between pixel centres; points
    // outside the picture read its border.
    double grey(PointD p) const;

    // The grey profile from `from` to `to`, a sample every kProfileStep px,
    // each the mean over a band `band` px wide across the line (1: the line
    // alone). Empty for a null picture or a line shorter than a pixel.
    std::vector<double> profile(PointD from, PointD to, int band) const;

    // Every edge of such a profile, in order: each slope that stands out of
    // the profile's noise, placed at the centroid of its slope as the snap
    // places a click, and kept apart from its neighbours, so that both sides
    // of a thin line are found.
    static std::vector<ProfileEdge> edgesOf(const std::vector<double>& profile);

private:
    QImage picture_;
};

}  // namespace tavix
