#include "camera/graph/VideoDevices.h"

#include <linux/videodev2.h>
#include <QFileInfo>
#include <algorithm>

namespace tavix {

namespace {

int nodeNumber(const QString& node)
{
    qsizetype digits = node.size();
    while (digits > 0 && node.at(digits - 1).isDigit())
        --digits;
    bool ok = false;
    const int n = node.mid(digits).toInt(&ok);
    return ok ? n : -1;
}

bool captures(std::uint32_t caps)
{
    return (caps & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE)) != 0;
}

}  // namespace

std::vector<VideoDevices::Device> VideoDevices::cameras() const
{
    QStringList nodes = system_.nodes();
    std::sort(nodes.begin(), nodes.end(),
              [](const QString& a, const QString& b) { return nodeNumber(a) < nodeNumber(b); });
    const std::vector<VideoDeviceSystem::Link> links = system_.byIdLinks();
    std::vector<Device> found;
    for (const QString& node : nodes) {
        VideoDeviceSystem::Capability cap;
        if (system_.queryCapability(node, cap) != 0 || !captures(cap.deviceCaps))
            continue;
        Device d{node, {}, cap.card, cap.busInfo};
        for (const VideoDeviceSystem::Link& link : links) {
            if (link.target == node) {
                d.byId = link.path;
                break;
            }
        }
        found.push_back(d);
    }
    return found;
}

std::optional<VideoDevices::Device> VideoDevices::find(const QString& path) const
{
    // A link udev made is known by name even where the file system cannot
    // follow it (a fake system); any other path is followed to its node.
    QString node = path;
    for (const VideoDeviceSystem::Link& link : system_.byIdLinks()) {
        if (link.path == path) {
            node = link.target;
            break;
        }
    }
    if (node == path) {
        const QFileInfo info(path);
        if (info.isSymLink())
            node = info.canonicalFilePath();
    }
    for (const Device& d : cameras())
        if (d.node == node)
            return d;
    return std::nullopt;
}

CameraChoice VideoDevices::choiceOf(const Device& device)
{
    return {QStringLiteral("graph"), device.stablePath(), device.card, portName(device.busInfo)};
}

QString VideoDevices::portName(const QString& busInfo)
{
    if (!busInfo.startsWith(QLatin1String("usb-")))
        return busInfo;
    const QString rest = busInfo.mid(4);
    const qsizetype dash = rest.lastIndexOf(QLatin1Char('-'));
    if (dash <= 0)
        return busInfo;
    return QStringLiteral("USB port %1 (%2)").arg(rest.mid(dash + 1), rest.left(dash));
}

}  // namespace tavix
