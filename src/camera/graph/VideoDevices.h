#pragma once

#include "camera/CameraChoice.h"
#include "camera/graph/VideoDeviceSystem.h"

#include <optional>
#include <vector>

namespace tavix {

// The USB video cameras of the system as people know them. A UVC camera
// brings two device nodes, one for pictures and one for metadata that cannot
// stream; only nodes that capture video count, and each is known by its
// stable /dev/v4l/by-id link where udev made one, so that a choice survives
// replugging and reboots while /dev/videoN numbers move.
class VideoDevices {
public:
    struct Device {
        QString node;  // /dev/videoN now
        QString byId;  // the stable link, empty when udev made none
        QString card;
        QString busInfo;
        // The path to keep: the stable link, else the node.
        QString stablePath() const { return byId.isEmpty() ? node : byId; }
    };

    explicit VideoDevices(const VideoDeviceSystem& system) : system_(system) {}

    // The nodes that capture video, in node-number order.
    std::vector<Device> cameras() const;
    // The camera a path names: a node, a by-id link or any other link to a node.
    std::optional<Device> find(const QString& path) const;

    // As the camera list shows it: driver "graph", the stable path, the card
    // name and the USB port.
    static CameraChoice choiceOf(const Device& device);
    // "usb-0000:00:14.0-2.1" as "USB port 2.1 (0000:00:14.0)"; other bus texts as they are.
    static QString portName(const QString& busInfo);

private:
    const VideoDeviceSystem& system_;
};

}  // namespace tavix
