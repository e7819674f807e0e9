#pragma once

#include "measure/PointD.h"

#include <QImage>
#include <optional>

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

private:
    QImage picture_;
};

}  // namespace tavix
