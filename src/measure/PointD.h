#pragma once

namespace tavix {

// A position on the still picture in pixels, x to the right and y downwards.
struct PointD {
    double x = 0;
    double y = 0;

    friend bool operator==(const PointD&, const PointD&) = default;
};

}  // namespace tavix
