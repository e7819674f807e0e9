#pragma once

#include "camera/graph/DeviceMonitor.h"

#include <memory>
#include <mutex>

namespace tavix::test {

// Video devices a test plugs in and pulls out. The test keeps the Devices
// and hands monitor() to the driver; unplug() and plug() call the driver's
// listener from a thread of their own, as a real monitor does, and return
// when it has returned.
class ScriptedDevices {
public:
    ScriptedDevices();
    std::unique_ptr<DeviceMonitor> monitor() const;

    void plug(const DeviceMonitor::Device& device);
    void unplug(const QString& path);
    bool watched() const;  // a monitor is started

    struct State;

private:
    std::shared_ptr<State> state_;
};

}  // namespace tavix::test
