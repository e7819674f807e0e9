#pragma once

#include <QRect>
#include <QSize>
#include <cstdint>
#include <vector>

namespace tavix::SensorModes {

// How a resolution of the program's table is cut from a sensor: the sensor is
// binned by `binning` in both directions, and `region` (in binned pixels) is
// centred on what remains, so that the picture keeps as much of the field of
// view as the size allows.
struct Fit {
    int binning = 1;
    QRect region;
};

// The resolution indices whose size fits the sensor, smallest first, at most
// `capacity` of them (the largest kept when there are more).
std::vector<std::int32_t> fitting(QSize sensor, int capacity);

// The fit of one resolution index: the largest binning up to maxBinning that
// still leaves room for the size, and a centred region whose offsets are
// multiples of offsetStep. A region of size 0 when the index is unknown or
// does not fit.
Fit fit(QSize sensor, std::int32_t mode, int maxBinning, int offsetStep = 1);

}  // namespace tavix::SensorModes
