#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

namespace tavix {

// Tells which video devices are plugged in and when they come and go, so
// that the graph camera can let go of an unplugged camera at once and take
// it up again when it returns, possibly under another /dev/videoN.
class DeviceMonitor {
public:
    struct Device {
        QString path;       // the device file, /dev/videoN
        QStringList links;  // its names under /dev/v4l/by-id, which stay with the camera
        QString card;       // the camera's name as its driver reports it
        QString bus;        // where it is plugged in, as its driver reports it

        // The same camera: a by-id name in common, or the same card on the same
        // bus; with neither known, the same device file.
        bool sameCamera(const Device& other) const;
    };
    // Called from the monitor's own thread.
    using Listener = std::function<void(const Device& device, bool added)>;

    virtual ~DeviceMonitor() = default;
    // The video devices plugged in now.
    virtual std::vector<Device> devices() = 0;
    // Reports devices coming and going until stop(); false when it cannot watch.
    virtual bool start(Listener listener) = 0;
    // Returns when no call of the listener is running or will come.
    virtual void stop() = 0;
};

}  // namespace tavix
