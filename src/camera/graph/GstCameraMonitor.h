#pragma once

#include "camera/graph/DeviceMonitor.h"

#include <mutex>

struct _GstDeviceMonitor;

namespace tavix {

// The video capture devices as GStreamer's device monitor sees them (udev
// underneath); the by-id names are read from /dev/v4l/by-id.
class GstCameraMonitor : public DeviceMonitor {
public:
    GstCameraMonitor();
    ~GstCameraMonitor() override;
    GstCameraMonitor(const GstCameraMonitor&) = delete;
    GstCameraMonitor& operator=(const GstCameraMonitor&) = delete;

    std::vector<Device> devices() override;
    bool start(Listener listener) override;
    void stop() override;

    // The by-id names of a device file (for tests: the folder they are looked for in).
    static QStringList linksTo(const QString& path, const QString& folder = QStringLiteral("/dev/v4l/by-id"));

private:
    static int onMessage(void* bus, void* message, void* self);

    _GstDeviceMonitor* monitor_ = nullptr;
    std::mutex mutex_;
    Listener listener_;
    bool running_ = false;
};

}  // namespace tavix
