#include "ScriptedDeviceMonitor.h"

#include <algorithm>
#include <thread>

namespace tavix::test {

struct ScriptedDevices::State {
    std::mutex mutex;
    std::vector<DeviceMonitor::Device> present;
    DeviceMonitor::Listener listener;
    bool running = false;

    void tell(const DeviceMonitor::Device& device, bool added)
    {
        std::thread([this, device, added] {
            DeviceMonitor::Listener listener;
            {
                const std::lock_guard lock(mutex);
                if (!running)
                    return;
                listener = this->listener;
            }
            listener(device, added);
        }).join();
    }
};

namespace {

class ScriptedMonitor : public DeviceMonitor {
public:
    explicit ScriptedMonitor(std::shared_ptr<ScriptedDevices::State> state) : state_(std::move(state)) {}
    ~ScriptedMonitor() override { stop(); }
    std::vector<Device> devices() override
    {
        const std::lock_guard lock(state_->mutex);
        return state_->present;
    }
    bool start(Listener listener) override
    {
        const std::lock_guard lock(state_->mutex);
        state_->listener = std::move(listener);
        state_->running = true;
        return true;
    }
    void stop() override
    {
        const std::lock_guard lock(state_->mutex);
        state_->running = false;
        state_->listener = {};
    }

private:
    std::shared_ptr<ScriptedDevices::State> state_;
};

}  // namespace

ScriptedDevices::ScriptedDevices() : state_(std::make_shared<State>())
{
}

std::unique_ptr<DeviceMonitor> ScriptedDevices::monitor() const
{
    return std::make_unique<ScriptedMonitor>(state_);
}

void ScriptedDevices::plug(const DeviceMonitor::Device& device)
{
    {
        const std::lock_guard lock(state_->mutex);
        state_->present.push_back(device);
    }
    state_->tell(device, true);
}

void ScriptedDevices::unplug(const QString& path)
{
    DeviceMonitor::Device gone;
    {
        const std::lock_guard lock(state_->mutex);
        auto it = std::find_if(state_->present.begin(), state_->present.end(),
                               [&](const DeviceMonitor::Device& d) { return d.path == path; });
        if (it == state_->present.end())
            return;
        gone = *it;
        state_->present.erase(it);
    }
    state_->tell(gone, false);
}

bool ScriptedDevices::watched() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->running;
}

}  // namespace tavix::test
