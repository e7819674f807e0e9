#pragma once

#include "camera/CameraChoice.h"

#include <QByteArray>
#include <QString>

namespace tavix {

struct AppData;
class VideoDeviceSystem;

// Keeps a camera chosen in the camera settings for the next start. Before
// its driver is made, the settings the driver is made from take the choice
// (DRIVER, the GenICam serial number in CAMERAID) and a USB camera's stable
// path goes into the graph file; once the camera opened, [CAMERA] DRIVER and
// CAMERAID are written to the settings file. When it did not open, the
// settings and the graph file are given back what they had.
class CameraChoiceKeeper {
public:
    explicit CameraChoiceKeeper(AppData& data) : data_(data) {}

    // The camera a driver opened at start, as the camera list names it: a
    // GenICam camera by the serial number asked for, a USB camera by the
    // stable path of the graph file's device.
    static CameraChoice current(const QString& driverName, const AppData& data,
                                const VideoDeviceSystem& devices);

    // Before the driver is made. False when the choice cannot be made
    // (a graph file that takes no video device); logged.
    bool prepare(const CameraChoice& choice);
    void done(const CameraChoice& choice, bool opened);

private:
    void take(const CameraChoice& choice);

    AppData& data_;
    QString driverBefore_;
    QString idBefore_;
    QByteArray graphBefore_;
    bool graphChanged_ = false;
};

}  // namespace tavix
