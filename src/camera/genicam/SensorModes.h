#pragma once

#include <QRect>
#include <QSize>
#include <cstdint>
#include <vector>

namespace tavix::SensorModes {

// What a camera allows for its picture, as read at open.
struct Limits {
    QSize sensor;   // SensorWidth/Height; empty when the camera lacks them
    QSize maximum;  // WidthMax/HeightMax at binning 1, the sensor of a camera without them
    std::vector<int> binnings{1};
    int widthMin = 1;
    int widthStep = 1;
    int heightMin = 1;
    int heightStep = 1;
    int offsetStep = 1;
};

// One mode: its resolution index, the binning in both directions and the
// region in binned pixels.
struct Mode {
    std::int32_t index = -1;
    int binning = 1;
    QRect region;
    bool operator==(const Mode&) const = default;
};

// The sensor the modes are cut from.
QSize sensorOf(const Limits& limits);

// The modes a camera offers: the whole sensor at each binning first (down to
// the smallest size the program names, so that a tiny sensor still gets its
// own), then the program's table sizes that fit, largest first, each at the
// largest binning that still holds it and centred on the binned sensor.
// Every width and height is one the camera takes (its minimum plus whole
// steps); sizes outside the table get their index from Resolution::indexOf.
std::vector<Mode> list(const Limits& limits);

}  // namespace tavix::SensorModes
