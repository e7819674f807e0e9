#include "camera/genicam/GenICamDiscovery.h"

#undef signals
#include <arv.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace tavix {

namespace {

std::atomic<bool> fakeOnly{false};

// What the newest GigE discovery found. Its thread is detached and the state
// is never destroyed: a discovery waits a second for answers, and the program
// must not wait for it when it ends.
struct GigE {
    std::mutex lock;
    std::condition_variable finished;
    bool running = false;
    bool ran = false;
    std::vector<GenICamDiscovery::Device> devices;
};

GigE& gige()
{
    static GigE* g = new GigE;
    return *g;
}

QString text(const char* s)
{
    return QString::fromUtf8(s ? s : "");
}

ArvInterface* interfaceOf(GenICamDiscovery::Bus bus)
{
    switch (bus) {
        case GenICamDiscovery::Bus::Usb3:
            return arv_uv_interface_get_instance();
        case GenICamDiscovery::Bus::GigE:
            return arv_gv_interface_get_instance();
        case GenICamDiscovery::Bus::Fake:
            return arv_fake_interface_get_instance();
    }
    return nullptr;
}

std::vector<GenICamDiscovery::Device> listed(GenICamDiscovery::Bus bus)
{
    ArvInterface* iface = interfaceOf(bus);
    arv_interface_update_device_list(iface);
    std::vector<GenICamDiscovery::Device> devices;
    const unsigned n = arv_interface_get_n_devices(iface);
    for (unsigned i = 0; i < n; ++i) {
        GenICamDiscovery::Device d;
        d.bus = bus;
        d.id = text(arv_interface_get_device_id(iface, i));
        d.vendor = text(arv_interface_get_device_vendor(iface, i));
        d.model = text(arv_interface_get_device_model(iface, i));
        d.serial = text(arv_interface_get_device_serial_nbr(iface, i));
        if (bus == GenICamDiscovery::Bus::GigE)
            d.place = text(arv_interface_get_device_address(iface, i));
        else if (bus == GenICamDiscovery::Bus::Usb3)
            d.place =
                (QStringLiteral("USB ") + text(arv_interface_get_device_physical_id(iface, i))).trimmed();
        else
            d.place = text(arv_interface_get_device_protocol(iface, i));
        devices.push_back(d);
    }
    return devices;
}

}  // namespace

void GenICamDiscovery::useFakeOnly(bool fake)
{
    fakeOnly = fake;
}

void GenICamDiscovery::startGigE()
{
    if (fakeOnly)
        return;
    GigE& g = gige();
    const std::lock_guard lock(g.lock);
    if (g.running)
        return;
    g.running = true;
    std::thread([] {
        std::vector<Device> found = listed(Bus::GigE);
        GigE& g = gige();
        {
            const std::lock_guard lock(g.lock);
            g.devices = std::move(found);
            g.running = false;
            g.ran = true;
        }
        g.finished.notify_all();
    }).detach();
}

std::vector<GenICamDiscovery::Device> GenICamDiscovery::find(std::chrono::milliseconds gigeWait)
{
    if (fakeOnly)
        return listed(Bus::Fake);
    GigE& g = gige();
    bool ran = false;
    {
        const std::lock_guard lock(g.lock);
        ran = g.ran || g.running;
    }
    if (!ran)
        startGigE();
    std::vector<Device> devices = listed(Bus::Usb3);
    std::unique_lock lock(g.lock);
    g.finished.wait_for(lock, gigeWait, [&g] { return !g.running; });
    devices.insert(devices.end(), g.devices.begin(), g.devices.end());
    return devices;
}

_ArvDevice* GenICamDiscovery::open(const Device& device, _GError** error)
{
    if (device.bus != Bus::GigE)
        return arv_interface_open_device(interfaceOf(device.bus), device.id.toUtf8().constData(), error);
    // Aravis's GigE list is not to be read while a discovery rewrites it; none starts meanwhile.
    GigE& g = gige();
    std::unique_lock lock(g.lock);
    g.finished.wait(lock, [&g] { return !g.running; });
    return arv_interface_open_device(interfaceOf(device.bus), device.id.toUtf8().constData(), error);
}

}  // namespace tavix
