#pragma once

#include <QRectF>

namespace tavix {

// How the pixels of a camera mode lie on the camera's sensor, in the sensor's
// full-resolution pixels: what a calibration made in one mode needs to be
// carried to another, since binning, decimation and scaling change the size
// of a picture pixel while cropping only moves the field.
struct ModeGeometry {
    // A picture pixel's side: 1 for a crop, 2 for 2x2 binning or decimation.
    double pixelSize = 1;
    // The part of the sensor the picture shows.
    QRectF field;

    friend bool operator==(const ModeGeometry&, const ModeGeometry&) = default;
};

}  // namespace tavix
