#pragma once

#include <QString>
#include <chrono>
#include <vector>

struct _ArvDevice;
struct _GError;

namespace tavix {

// Finds GenICam cameras bus by bus, so that a start without a camera need not
// wait: USB3 Vision answers at once, while GigE Vision discovery waits a
// second for answers on the network and so runs on a thread of its own,
// beside the rest of the start-up.
class GenICamDiscovery {
public:
    enum class Bus { Usb3, GigE, Fake };
    struct Device {
        Bus bus = Bus::Usb3;
        QString id;  // Aravis's device id
        QString vendor;
        QString model;
        QString serial;
        QString place;  // network address, or "USB" and the port
    };

    // Aravis's in-process fake camera instead of the buses (tests, bench), or back.
    static void useFakeOnly(bool fake);
    // Begins a GigE discovery unless one is under way.
    static void startGigE();
    // The USB3 Vision cameras (or the fake), then the GigE cameras of the
    // newest discovery, waiting up to gigeWait for one under way (a first one
    // is started if none ran yet).
    static std::vector<Device> find(std::chrono::milliseconds gigeWait);
    // Opens a device found on its own bus; null (and `error` set) on failure.
    // A GigE device waits for a discovery under way.
    static _ArvDevice* open(const Device& device, _GError** error);
};

}  // namespace tavix
