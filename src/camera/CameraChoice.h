#pragma once

#include <QString>

namespace tavix {

// One camera the system offers, as the camera list and the camera chooser
// show it. `id` is what the settings keep to find the same camera again: the
// stable /dev/v4l/by-id path of a USB video camera, the serial number of a
// GenICam camera.
struct CameraChoice {
    QString driver;  // "graph", "genicam", ... as [CAMERA] DRIVER names them
    QString id;
    QString name;   // the card or model name people know the camera by
    QString place;  // where it is plugged in: USB port, network address
    bool operator==(const CameraChoice&) const = default;
};

}  // namespace tavix
