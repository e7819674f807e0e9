#include "camera/graph/V4l2Controls.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <cerrno>

#undef signals
#include <gst/gst.h>

namespace tavix {

namespace {

// 0, or the errno of the failed request.
int xioctl(int fd, unsigned long request, void* arg)
{
    if (fd < 0)
        return EBADF;
    int r = 0;
    do
        r = ioctl(fd, request, arg);
    while (r == -1 && errno == EINTR);
    return r == 0 ? 0 : errno;
}

}  // namespace

V4l2Controls::V4l2Controls(int fd)
{
    if (fd >= 0)
        fd_ = fcntl(fd, F_DUPFD_CLOEXEC, 0);
}

V4l2Controls::~V4l2Controls()
{
    if (fd_ >= 0)
        ::close(fd_);
}

std::unique_ptr<V4l2ControlAccess> V4l2Controls::ofSource(GstElement* source)
{
    if (!source)
        return nullptr;
    GParamSpec* spec = g_object_class_find_property(G_OBJECT_GET_CLASS(source), "device-fd");
    if (!spec || spec->value_type != G_TYPE_INT)
        return nullptr;
    gint fd = -1;
    g_object_get(source, "device-fd", &fd, nullptr);
    auto controls = std::make_unique<V4l2Controls>(fd);
    if (!controls->isOpen())
        return nullptr;
    return controls;
}

int V4l2Controls::query(std::uint32_t id, Control& control)
{
    v4l2_queryctrl q{};
    q.id = id;
    if (const int e = xioctl(fd_, VIDIOC_QUERYCTRL, &q))
        return e;
    control.type = q.type;
    control.minimum = q.minimum;
    control.maximum = q.maximum;
    control.step = q.step;
    control.defaultValue = q.default_value;
    control.flags = q.flags;
    return 0;
}

int V4l2Controls::queryMenu(std::uint32_t id, std::uint32_t index)
{
    v4l2_querymenu m{};
    m.id = id;
    m.index = index;
    return xioctl(fd_, VIDIOC_QUERYMENU, &m);
}

int V4l2Controls::get(std::uint32_t id, std::int32_t& value)
{
    v4l2_control c{};
    c.id = id;
    if (const int e = xioctl(fd_, VIDIOC_G_CTRL, &c))
        return e;
    value = c.value;
    return 0;
}

int V4l2Controls::set(std::uint32_t id, std::int32_t value)
{
    v4l2_control c{};
    c.id = id;
    c.value = value;
    return xioctl(fd_, VIDIOC_S_CTRL, &c);
}

}  // namespace tavix
