#include "camera/graph/V4l2Controls.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <cerrno>

namespace tavix {

namespace {

int xioctl(int fd, unsigned long request, void* arg)
{
    int r = 0;
    do
        r = ioctl(fd, request, arg);
    while (r == -1 && errno == EINTR);
    return r;
}

}  // namespace

V4l2Controls::V4l2Controls(const QString& device)
{
    // Non-blocking: a device busy streaming must not hold up a control read.
    fd_ = ::open(device.toLocal8Bit().constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
}

V4l2Controls::~V4l2Controls()
{
    if (fd_ >= 0)
        ::close(fd_);
}

bool V4l2Controls::query(std::uint32_t id, Range& range) const
{
    v4l2_queryctrl q{};
    q.id = id;
    if (fd_ < 0 || xioctl(fd_, VIDIOC_QUERYCTRL, &q) != 0 || (q.flags & V4L2_CTRL_FLAG_DISABLED))
        return false;
    range.minimum = q.minimum;
    range.maximum = q.maximum;
    range.defaultValue = q.default_value;
    range.isMenu = q.type == V4L2_CTRL_TYPE_MENU || q.type == V4L2_CTRL_TYPE_INTEGER_MENU;
    range.isButton = q.type == V4L2_CTRL_TYPE_BUTTON;
    return true;
}

bool V4l2Controls::hasMenuEntry(std::uint32_t id, std::int32_t index) const
{
    v4l2_querymenu m{};
    m.id = id;
    m.index = static_cast<std::uint32_t>(index);
    return fd_ >= 0 && index >= 0 && xioctl(fd_, VIDIOC_QUERYMENU, &m) == 0;
}

bool V4l2Controls::get(std::uint32_t id, std::int32_t& value) const
{
    v4l2_control c{};
    c.id = id;
    if (fd_ < 0 || xioctl(fd_, VIDIOC_G_CTRL, &c) != 0)
        return false;
    value = c.value;
    return true;
}

bool V4l2Controls::set(std::uint32_t id, std::int32_t value)
{
    v4l2_control c{};
    c.id = id;
    c.value = value;
    return fd_ >= 0 && xioctl(fd_, VIDIOC_S_CTRL, &c) == 0;
}

}  // namespace tavix
