#pragma once

#include "camera/graph/VideoDeviceSystem.h"

namespace tavix {

// The video devices of this machine, from /dev and the kernel.
class LinuxVideoDevices : public VideoDeviceSystem {
public:
    QStringList nodes() const override;
    int queryCapability(const QString& node, Capability& capability) const override;
    std::vector<Link> byIdLinks() const override;
};

}  // namespace tavix
