#include "camera/graph/DeviceMonitor.h"

namespace tavix {

bool DeviceMonitor::Device::sameCamera(const Device& other) const
{
    for (const QString& link : links)
        if (other.links.contains(link))
            return true;
    if (!card.isEmpty() && !bus.isEmpty())
        return card == other.card && bus == other.bus;
    return links.isEmpty() && other.links.isEmpty() && !path.isEmpty() && path == other.path;
}

}  // namespace tavix
