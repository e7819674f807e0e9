#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

namespace tavix {

// What the system tells of its video devices: the device nodes, what each
// one's kernel driver answers to VIDIOC_QUERYCAP, and the stable links udev
// makes to them. The real one asks /dev and the kernel; a fake stands in for
// cameras in tests.
class VideoDeviceSystem {
public:
    struct Capability {
        QString card;                  // the device's name, as its driver gives it
        QString busInfo;               // "usb-0000:00:14.0-2": the port it is plugged into
        std::uint32_t deviceCaps = 0;  // V4L2_CAP_* of this node
    };
    struct Link {
        QString path;    // /dev/v4l/by-id/usb-Maker_Model_SERIAL-video-index0
        QString target;  // the node it points to, /dev/videoN
    };

    virtual ~VideoDeviceSystem() = default;

    // "/dev/video0", "/dev/video1", ...
    virtual QStringList nodes() const = 0;
    // 0, or the errno of opening or asking the node.
    virtual int queryCapability(const QString& node, Capability& capability) const = 0;
    virtual std::vector<Link> byIdLinks() const = 0;
};

}  // namespace tavix
