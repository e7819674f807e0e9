#include "camera/graph/LinuxVideoDevices.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <QDir>
#include <QFileInfo>
#include <cerrno>

namespace tavix {

QStringList LinuxVideoDevices::nodes() const
{
    QStringList found;
    const QDir dev(QStringLiteral("/dev"));
    for (const QString& name : dev.entryList({QStringLiteral("video*")}, QDir::System | QDir::Files))
        found << dev.filePath(name);
    return found;
}

int LinuxVideoDevices::queryCapability(const QString& node, Capability& capability) const
{
    // Non-blocking, so that a device another program streams from still answers.
    const int fd = ::open(QFile::encodeName(node).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return errno;
    v4l2_capability cap{};
    int r = 0;
    do
        r = ioctl(fd, VIDIOC_QUERYCAP, &cap);
    while (r == -1 && errno == EINTR);
    const int error = r == 0 ? 0 : errno;
    ::close(fd);
    if (error != 0)
        return error;
    capability.card = QString::fromUtf8(
        reinterpret_cast<const char*>(cap.card),
        static_cast<int>(qstrnlen(reinterpret_cast<const char*>(cap.card), sizeof cap.card)));
    capability.busInfo = QString::fromUtf8(
        reinterpret_cast<const char*>(cap.bus_info),
        static_cast<int>(qstrnlen(reinterpret_cast<const char*>(cap.bus_info), sizeof cap.bus_info)));
    capability.deviceCaps = (cap.capabilities & V4L2_CAP_DEVICE_CAPS) ? cap.device_caps : cap.capabilities;
    return 0;
}

std::vector<VideoDeviceSystem::Link> LinuxVideoDevices::byIdLinks() const
{
    std::vector<Link> links;
    const QDir byId(QStringLiteral("/dev/v4l/by-id"));
    for (const QFileInfo& link : byId.entryInfoList(QDir::System | QDir::Files, QDir::Name)) {
        if (link.isSymLink())
            links.push_back({link.absoluteFilePath(), link.canonicalFilePath()});
    }
    return links;
}

}  // namespace tavix
