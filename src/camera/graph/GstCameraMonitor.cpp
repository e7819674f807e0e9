#include "camera/graph/GstCameraMonitor.h"

#include <QDir>
#include <QFileInfo>

#undef signals
#include <gst/gst.h>

namespace tavix {

namespace {

QString text(const GstStructure* s, const char* field)
{
    const gchar* value = s ? gst_structure_get_string(s, field) : nullptr;
    return value ? QString::fromUtf8(value) : QString();
}

DeviceMonitor::Device deviceOf(GstDevice* device)
{
    DeviceMonitor::Device d;
    GstStructure* props = gst_device_get_properties(device);
    d.path = text(props, "device.path");
    if (d.path.isEmpty())
        d.path = text(props, "api.v4l2.path");
    d.card = text(props, "v4l2.device.card");
    d.bus = text(props, "v4l2.device.bus_info");
    if (props)
        gst_structure_free(props);
    d.links = GstCameraMonitor::linksTo(d.path);
    return d;
}

}  // namespace

GstCameraMonitor::GstCameraMonitor()
{
    if (!gst_is_initialized() && !gst_init_check(nullptr, nullptr, nullptr))
        return;
    monitor_ = gst_device_monitor_new();
    gst_device_monitor_add_filter(monitor_, "Video/Source", nullptr);
}

GstCameraMonitor::~GstCameraMonitor()
{
    stop();
    if (monitor_)
        gst_object_unref(monitor_);
}

QStringList GstCameraMonitor::linksTo(const QString& path, const QString& folder)
{
    QStringList links;
    if (path.isEmpty())
        return links;
    const QString target = QFileInfo(path).canonicalFilePath();
    const QDir dir(folder);
    for (const QFileInfo& link : dir.entryInfoList(QDir::System | QDir::Files | QDir::NoDotAndDotDot))
        if (link.canonicalFilePath() == target)
            links.append(link.absoluteFilePath());
    return links;
}

std::vector<DeviceMonitor::Device> GstCameraMonitor::devices()
{
    std::vector<Device> found;
    if (!monitor_)
        return found;
    GList* list = gst_device_monitor_get_devices(monitor_);
    for (GList* item = list; item; item = item->next)
        found.push_back(deviceOf(GST_DEVICE(item->data)));
    g_list_free_full(list, gst_object_unref);
    return found;
}

int GstCameraMonitor::onMessage(void* bus, void* message, void* self)
{
    auto* m = static_cast<GstMessage*>(message);
    auto* monitor = static_cast<GstCameraMonitor*>(self);
    const bool added = GST_MESSAGE_TYPE(m) == GST_MESSAGE_DEVICE_ADDED;
    if (added || GST_MESSAGE_TYPE(m) == GST_MESSAGE_DEVICE_REMOVED) {
        GstDevice* device = nullptr;
        if (added)
            gst_message_parse_device_added(m, &device);
        else
            gst_message_parse_device_removed(m, &device);
        if (device) {
            const Device d = deviceOf(device);
            gst_object_unref(device);
            const std::lock_guard lock(monitor->mutex_);
            if (monitor->running_ && monitor->listener_)
                monitor->listener_(d, added);
        }
    }
    gst_message_unref(m);
    return GST_BUS_DROP;
}

bool GstCameraMonitor::start(Listener listener)
{
    if (!monitor_)
        return false;
    {
        const std::lock_guard lock(mutex_);
        listener_ = std::move(listener);
        running_ = true;
    }
    GstBus* bus = gst_device_monitor_get_bus(monitor_);
    gst_bus_set_sync_handler(
        bus,
        [](GstBus* b, GstMessage* m, gpointer self) {
            return static_cast<GstBusSyncReply>(onMessage(b, m, self));
        },
        this, nullptr);
    gst_object_unref(bus);
    return gst_device_monitor_start(monitor_);
}

void GstCameraMonitor::stop()
{
    {
        const std::lock_guard lock(mutex_);
        if (!running_)
            return;
        running_ = false;
        listener_ = {};
    }
    gst_device_monitor_stop(monitor_);
}

}  // namespace tavix
