#include "camera/graph/GraphDriver.h"

#include "camera/graph/GstCameraMonitor.h"
#include "camera/graph/V4l2Controls.h"

#include <QFileInfo>

#include <algorithm>

#undef signals
#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>

namespace tavix {

namespace {

constexpr int kExposure = 7;
constexpr int kAviWriting = 24;
constexpr int kFrameRate = 147;

// Describes a raw frame in its own pixels when the live view reads them as
// they are; false for a format that is converted to RGB first.
bool describeRaw(GstVideoFormat format, FrameView& view)
{
    switch (format) {
        case GST_VIDEO_FORMAT_RGB:
            view.format = QImage::Format_RGB888;
            return true;
        case GST_VIDEO_FORMAT_BGR:
            view.format = QImage::Format_BGR888;
            return true;
        case GST_VIDEO_FORMAT_GRAY8:
            view.format = QImage::Format_Grayscale8;
            return true;
        case GST_VIDEO_FORMAT_YUY2:
            view.raw = RawLayout::Yuyv;
            return view.width % 2 == 0;  // pairs of pixels share their colour
        default:
            return false;
    }
}

}  // namespace

GraphDriver::GraphDriver(const QString& graphPath, const QString& cameraFilterName, Log log, Clock* clock,
                         OpenControls openControls)
    : log_(std::move(log)),
      ownClock_(clock ? nullptr : std::make_unique<SystemClock>()),
      clock_(clock ? clock : ownClock_.get()),
      openControls_(std::move(openControls)),
      file_(graphPath, cameraFilterName, log_),
      parameters_(*clock_)
{
    if (!openControls_)
        openControls_ = [](const GraphFile& file) { return V4l2Controls::ofSource(file.deviceSource()); };
    for (void*& map : maps_)
        map = new GstMapInfo;
    converterIn_ = new GstVideoInfo;
    gst_video_info_init(static_cast<GstVideoInfo*>(converterIn_));
}

GraphDriver::~GraphDriver()
{
    if (open_)
        Close(0);
    dropHeld();
    for (void* map : maps_)
        delete static_cast<GstMapInfo*>(map);
    if (converter_)
        gst_video_converter_free(converter_);
    if (rgb_)
        gst_buffer_unref(rgb_);
    delete static_cast<GstVideoInfo*>(converterIn_);
}

bool GraphDriver::LoadGrfFile()
{
    if (!loadTried_) {
        loadTried_ = true;
        loaded_ = file_.LoadGrfFile();
    }
    return loaded_;
}

int GraphDriver::prepare()
{
    return LoadGrfFile() ? 0 : file_.errorNumber();
}

int GraphDriver::checkOpen(int cam) const
{
    if (!open_)
        return kNotOpen;
    return cam == 0 ? 0 : kBadCamera;
}

// ---- session ----

int GraphDriver::GetVersion(int which, QString& version)
{
    if (!gst_is_initialized() && !gst_init_check(nullptr, nullptr, nullptr))
        return 1;
    gchar* text = gst_version_string();
    version = QString::fromUtf8(text);
    g_free(text);
    return 0;
}

int GraphDriver::Init()
{
    return LoadGrfFile() ? 1 : 0;
}

int GraphDriver::GetName(int cam, QString& name)
{
    if (cam != 0 || !loaded_)
        return kBadCamera;
    GstElement* camera = file_.cameraFilter();
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(camera), "device-name") && open_) {
        gchar* device = nullptr;
        g_object_get(camera, "device-name", &device, nullptr);
        name = QString::fromUtf8(device ? device : "");
        g_free(device);
        if (!name.isEmpty())
            return 0;
    }
    GstElementFactory* factory = gst_element_get_factory(camera);
    gchar* own = gst_element_get_name(camera);
    name = QStringLiteral("%1 (%2)").arg(
        QString::fromUtf8(factory ? gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_LONGNAME)
                                  : "GStreamer"),
        QString::fromUtf8(own));
    g_free(own);
    return 0;
}

bool GraphDriver::buildTail()
{
    GstElement* graph = file_.graph();
    GstPad* pin = file_.outputPin();
    // What the file put after the camera is replaced by the program's own tail.
    if (GstPad* peer = gst_pad_get_peer(pin)) {
        gst_pad_unlink(pin, peer);
        std::vector<GstElement*> downstream{gst_pad_get_parent_element(peer)};
        gst_object_unref(peer);
        while (!downstream.empty()) {
            GstElement* element = downstream.back();
            downstream.pop_back();
            if (!element)
                continue;
            GstIterator* pads = gst_element_iterate_src_pads(element);
            GValue item = G_VALUE_INIT;
            while (gst_iterator_next(pads, &item) == GST_ITERATOR_OK) {
                if (GstPad* next = gst_pad_get_peer(GST_PAD(g_value_get_object(&item)))) {
                    downstream.push_back(gst_pad_get_parent_element(next));
                    gst_object_unref(next);
                }
                g_value_reset(&item);
            }
            g_value_unset(&item);
            gst_iterator_free(pads);
            if (GstObject* parent = gst_object_get_parent(GST_OBJECT(element))) {
                gst_bin_remove(GST_BIN(parent), element);
                gst_object_unref(parent);
            }
            gst_object_unref(element);
        }
    }
    // The camera's own frames reach the driver: it converts, decodes or records them as they are.
    filter_ = gst_element_factory_make("capsfilter", nullptr);
    appsink_ = gst_element_factory_make("appsink", nullptr);
    if (!filter_ || !appsink_) {
        for (GstElement* e : {filter_, appsink_})
            if (e)
                gst_object_unref(gst_object_ref_sink(e));
        filter_ = appsink_ = nullptr;
        if (log_)
            log_(QStringLiteral("Error: graph camera: GStreamer lacks capsfilter or appsink"));
        return false;
    }
    gst_bin_add_many(GST_BIN(graph), filter_, appsink_, nullptr);
    GstPad* filterIn = gst_element_get_static_pad(filter_, "sink");
    const bool linked = gst_pad_link_maybe_ghosting(pin, filterIn) && gst_element_link(filter_, appsink_);
    gst_object_unref(filterIn);
    if (!linked) {
        if (log_)
            log_(QStringLiteral("Error: graph camera: the camera's output cannot be converted to pictures"));
        return false;
    }
    // Frames are shown as they come: no waiting on the clock, no queue behind a slow view.
    g_object_set(appsink_, "sync", FALSE, "max-buffers", 1, "drop", TRUE, "enable-last-sample", FALSE,
                 nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = [](GstAppSink* sink, gpointer self) {
        return static_cast<GstFlowReturn>(onNewSample(GST_ELEMENT(sink), self));
    };
    gst_app_sink_set_callbacks(GST_APP_SINK(appsink_), &callbacks, this, nullptr);
    GstBus* bus = gst_element_get_bus(graph);
    gst_bus_set_sync_handler(
        bus,
        [](GstBus* b, GstMessage* m, gpointer self) {
            return static_cast<GstBusSyncReply>(onBusMessage(b, m, self));
        },
        this, nullptr);
    gst_object_unref(bus);
    return true;
}

void GraphDriver::findModes()
{
    GstCaps* offered = gst_pad_query_caps(file_.outputPin(), nullptr);
    modes_ = GraphMode::offered(offered);
    // The size the camera takes by itself, else the largest.
    mode_ = modes_.empty() ? -1 : modes_.back().index;
    const QSize own = GraphMode::ownSize(offered);
    for (const GraphMode& m : modes_)
        if (m.size == own)
            mode_ = m.index;
    if (modes_.empty() && log_) {
        gchar* text = gst_caps_to_string(offered);
        log_(QStringLiteral("Error: graph camera offers no picture format the program reads (") +
             QString::fromUtf8(text) + QLatin1Char(')'));
        g_free(text);
    }
    gst_caps_unref(offered);
}

const GraphMode* GraphDriver::modeOf(std::int32_t index) const
{
    for (const GraphMode& m : modes_)
        if (m.index == index)
            return &m;
    return nullptr;
}

void GraphDriver::watchDevices(std::unique_ptr<DeviceMonitor> monitor, const QString& devicePath)
{
    monitor_ = std::move(monitor);
    watchPath_ = devicePath;
}

void GraphDriver::startWatching()
{
    const QString path = watchPath_.isEmpty() ? file_.devicePath() : watchPath_;
    if (path.isEmpty())
        return;
    if (!monitor_)
        monitor_ = std::make_unique<GstCameraMonitor>();
    camera_ = DeviceMonitor::Device{};
    camera_.path = path;
    camera_.links = GstCameraMonitor::linksTo(path);
    const QString target = QFileInfo(path).canonicalFilePath();
    for (const DeviceMonitor::Device& d : monitor_->devices())
        if (d.path == path || (!target.isEmpty() && QFileInfo(d.path).canonicalFilePath() == target))
            camera_ = d;
    watching_ = monitor_->start([this](const DeviceMonitor::Device& d, bool added) { onDevice(d, added); });
}

void GraphDriver::onDevice(const DeviceMonitor::Device& device, bool added)
{
    const std::lock_guard guard(deviceMutex_);
    if (!open_ || !device.sameCamera(camera_) || added != away_)
        return;
    if (!added) {
        // Let go of the device at once: nothing may keep it open while it is gone.
        away_ = true;
        started_ = false;
        lost_ = true;
        frame_.lose();
        gst_element_set_state(file_.graph(), GST_STATE_NULL);
        sink_ = nullptr;
        parameters_.close();
        if (log_)
            log_(QStringLiteral("graph camera unplugged (%1)").arg(device.path));
        return;
    }
    // Back, perhaps under another device file: open that one.
    camera_ = device;
    if (GstElement* source = file_.deviceSource())
        g_object_set(source, "device", device.path.toUtf8().constData(), nullptr);
    if (gst_element_set_state(file_.graph(), GST_STATE_READY) == GST_STATE_CHANGE_FAILURE) {
        gst_element_set_state(file_.graph(), GST_STATE_NULL);
        if (log_)
            log_(QStringLiteral("Error: graph camera plugged in again but cannot be opened (%1)")
                     .arg(device.path));
        return;
    }
    away_ = false;
    lost_ = false;
    frame_.found();
    parameters_.open(openControls_(file_));
    const int resumed = wanted_ ? startStream(wantedSink_) : 0;
    if (log_)
        log_(resumed == 0 ? QStringLiteral("graph camera plugged in again (%1)").arg(device.path)
                          : QStringLiteral("Error: graph camera plugged in again but does not stream (%1)")
                                .arg(device.path));
    ++returns_;
}

int GraphDriver::Open(int cam)
{
    const std::lock_guard guard(deviceMutex_);
    if (open_)
        return cam == 0 ? kAlreadyOpen : kBadCamera;
    if (cam != 0 || !LoadGrfFile())
        return kBadCamera;
    if (!filter_ && !buildTail())
        return kFailed;
    lost_ = false;
    frame_.found();
    // Ready opens the device, so that the pin offers what the device can do.
    if (gst_element_set_state(file_.graph(), GST_STATE_READY) == GST_STATE_CHANGE_FAILURE) {
        gst_element_set_state(file_.graph(), GST_STATE_NULL);
        return kFailed;
    }
    findModes();
    if (modes_.empty()) {
        gst_element_set_state(file_.graph(), GST_STATE_NULL);
        return kFailed;
    }
    parameters_.open(openControls_(file_));
    open_ = true;
    away_ = false;
    startWatching();
    return 0;
}

int GraphDriver::IsOpen(int cam)
{
    return checkOpen(cam) == 0 ? 0 : 1;
}

int GraphDriver::Close(int cam)
{
    if (const int s = checkOpen(cam))
        return s;
    // Stopped first, outside the lock: a call of the monitor may be waiting for it.
    if (monitor_)
        monitor_->stop();
    watching_ = false;
    const std::lock_guard guard(deviceMutex_);
    Stop(cam);
    frame_.endRecording();
    gst_element_set_state(file_.graph(), GST_STATE_NULL);
    parameters_.close();
    open_ = false;
    return 0;
}

int GraphDriver::GetModeList(int cam, std::vector<std::int32_t>& modes)
{
    if (const int s = checkOpen(cam))
        return s;
    modes.clear();
    for (const GraphMode& m : modes_)
        modes.push_back(m.index);
    return 0;
}

int GraphDriver::GetMode(int cam, std::int32_t& mode)
{
    if (const int s = checkOpen(cam))
        return s;
    mode = mode_;
    return 0;
}

int GraphDriver::SetMode(int cam, std::int32_t mode)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    if (started_)
        return kBusy;
    if (!modeOf(mode))
        return kOutOfRange;
    mode_ = mode;
    return 0;
}

int GraphDriver::SetDisplayMode(int cam, int mode, int a, int b, int c, int d)
{
    return checkOpen(cam);
}

int GraphDriver::Start(int cam, quintptr window, FrameSink* sink, int a, int b)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    if (started_)
        return kBusy;
    if (lost_)
        return kDisconnected;
    wanted_ = true;
    wantedSink_ = sink;
    good_ = 0;
    broken_ = 0;
    fps_ = 0;
    return startStream(sink);
}

int GraphDriver::startStream(FrameSink* sink)
{
    const GraphMode mode = modeOf(mode_)->atRate(wantedFps_);
    GstCaps* caps = mode.caps();
    g_object_set(filter_, "caps", caps, nullptr);
    gst_caps_unref(caps);
    sink_ = sink;
    nextOffset_ = GST_BUFFER_OFFSET_NONE;
    started_ = true;
    if (gst_element_set_state(file_.graph(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
        started_ = false;
        gst_element_set_state(file_.graph(), GST_STATE_READY);
        return kFailed;
    }
    return lost_ ? kDisconnected : 0;
}

int GraphDriver::IsStarted(int cam)
{
    return checkOpen(cam) == 0 && started_ ? 1 : 0;
}

int GraphDriver::Stop(int cam)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    wanted_ = false;
    wantedSink_ = nullptr;
    started_ = false;
    // Back to ready joins the streaming thread; the newest frame stays held.
    // An unplugged camera's pipeline stays at NULL.
    if (!away_)
        gst_element_set_state(file_.graph(), GST_STATE_READY);
    sink_ = nullptr;
    return 0;
}

int GraphDriver::onBusMessage(GstBus* bus, GstMessage* message, void* self)
{
    auto* driver = static_cast<GraphDriver*>(self);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        const QString text = QString::fromUtf8(error ? error->message : "");
        g_clear_error(&error);
        // Only the first error of a stream is the loss; those after it are its echoes.
        const bool streaming = driver->started_.exchange(false);
        if (streaming) {
            driver->lost_ = true;
            // What is held now is the camera's last picture, not a new one.
            driver->frame_.lose();
        }
        if (driver->log_ && (streaming || !driver->lost_))
            driver->log_((streaming ? QStringLiteral("Error: graph camera lost (")
                                    : QStringLiteral("Error: graph camera (")) +
                         text + QLatin1Char(')'));
    }
    // Nobody reads the bus later: keeping messages there would only pile them up.
    gst_message_unref(message);
    return GST_BUS_DROP;
}

// ---- frames ----

int GraphDriver::onNewSample(GstElement* sink, void* self)
{
    if (GstSample* sample = gst_app_sink_pull_sample(GST_APP_SINK(sink)))
        static_cast<GraphDriver*>(self)->receive(sample);
    return GST_FLOW_OK;
}

void GraphDriver::receive(GstSample* sample)
{
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    GstCaps* caps = gst_sample_get_caps(sample);
    if (!started_ || !buffer || !caps) {
        gst_sample_unref(sample);
        return;
    }
    // The source numbers its frames: a gap is frames it made that never arrived.
    const std::uint64_t offset = GST_BUFFER_OFFSET(buffer);
    if (offset != GST_BUFFER_OFFSET_NONE) {
        if (nextOffset_ != GST_BUFFER_OFFSET_NONE && offset > nextOffset_)
            broken_ += static_cast<std::int32_t>(std::min<std::uint64_t>(offset - nextOffset_, 1u << 30));
        nextOffset_ = offset + 1;
    }
    const GstStructure* s = gst_caps_get_structure(caps, 0);
    GraphMode::Kind kind = GraphMode::Kind::Raw;
    if (gst_structure_has_name(s, "image/jpeg"))
        kind = GraphMode::Kind::Jpeg;
    else if (gst_structure_has_name(s, "video/x-bayer"))
        kind = GraphMode::Kind::Bayer;
    QSize size;
    gst_structure_get_int(s, "width", &size.rwidth());
    gst_structure_get_int(s, "height", &size.rheight());
    gint fpsN = 0;
    gint fpsD = 1;
    if (gst_structure_get_fraction(s, "framerate", &fpsN, &fpsD) && fpsN > 0 && fpsD > 0)
        fps_ = double(fpsN) / fpsD;

    // Only this thread maps, and only into the slot the held frame does not use.
    auto* map = static_cast<GstMapInfo*>(maps_[1 - heldMap_]);
    if (size.isEmpty() || GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_CORRUPTED) ||
        !gst_buffer_map(buffer, map, GST_MAP_READ)) {
        ++broken_;
        gst_sample_unref(sample);
        return;
    }
    FrameView view;
    view.captureNs = GST_BUFFER_PTS_IS_VALID(buffer) ? static_cast<std::int64_t>(GST_BUFFER_PTS(buffer)) : -1;
    bool usable = false;
    bool convert = false;  // a raw format the view does not read: converted to RGB, not held
    if (kind == GraphMode::Kind::Raw) {
        GstVideoInfo info;
        usable = gst_video_info_from_caps(&info, caps) && map->size >= GST_VIDEO_INFO_SIZE(&info);
        if (usable) {
            view.bits = map->data;
            view.width = GST_VIDEO_INFO_WIDTH(&info);
            view.height = GST_VIDEO_INFO_HEIGHT(&info);
            view.bytesPerLine = GST_VIDEO_INFO_PLANE_STRIDE(&info, 0);
            convert = !describeRaw(GST_VIDEO_INFO_FORMAT(&info), view);
        }
    } else if (kind == GraphMode::Kind::Jpeg) {
        const QSize shown = sink_ ? sink_->shownSize() : QSize();
        usable = !sink_ ||
                 liveDecoder_.jpeg(map->data, map->size, GraphDecoder::jpegScale(size, shown), true, view);
    } else {
        view.raw = GraphDecoder::bayerLayout(gst_structure_get_string(s, "format"));
        view.bits = map->data;
        view.width = size.width();
        view.height = size.height();
        view.bytesPerLine = (size.width() + 3) & ~3;  // GStreamer's rows of 8-bit cells
        usable = view.raw != RawLayout::None && size.width() >= 2 && size.height() >= 2 &&
                 map->size >= size_t(view.bytesPerLine) * size_t(size.height());
    }
    if (!usable) {
        gst_buffer_unmap(buffer, map);
        ++broken_;
        gst_sample_unref(sample);
        return;
    }

    // Frames the view reads in the camera's own layout are developed for a recording, one by one.
    const bool developEach = view.raw != RawLayout::None && frame_.recording();
    const auto lock = frame_.lock();
    view.sequence = static_cast<std::uint64_t>(++good_);
    if (convert) {
        // Converted under the lock: the held picture is the converter's output.
        const bool converted = convertRaw(sample, view);
        gst_buffer_unmap(buffer, map);
        gst_sample_unref(sample);
        if (!converted) {
            ++broken_;
            return;
        }
        dropHeld();
        heldKind_ = kind;
        heldRaw_ = RawLayout::None;
        heldSize_ = size;
        if (sink_)
            sink_->frameReady(view);
        frame_.hold(view);
        return;
    }
    // The newest frame stays mapped until a newer one replaces it. A picture
    // developed from the frame before stays until the next freeze (SaveAvi
    // takes its size from it); one that was that frame's own pixels goes with it.
    const bool asItIs = kind == GraphMode::Kind::Raw && view.raw == RawLayout::None;
    if (asItIs || (held_ && heldKind_ == GraphMode::Kind::Raw && heldRaw_ == RawLayout::None))
        dropHeld();
    else
        releaseHeld();
    held_ = sample;
    heldMap_ = 1 - heldMap_;
    heldKind_ = kind;
    heldRaw_ = view.raw;
    heldSize_ = size;
    developed_ = asItIs;
    if (sink_)
        sink_->frameReady(view);
    if (asItIs) {
        frame_.hold(view);
    } else if (kind == GraphMode::Kind::Jpeg) {
        frame_.holdJpeg(map->data, map->size, view.captureNs);
    } else if (developEach) {
        develop();
        FrameView full = frame_.view();
        full.captureNs = view.captureNs;
        full.sequence = view.sequence;
        frame_.hold(full);
    }
}

bool GraphDriver::convertRaw(GstSample* sample, FrameView& view)
{
    GstVideoInfo in;
    if (!gst_video_info_from_caps(&in, gst_sample_get_caps(sample)))
        return false;
    auto* converterIn = static_cast<GstVideoInfo*>(converterIn_);
    GstVideoInfo out;
    gst_video_info_set_format(&out, GST_VIDEO_FORMAT_RGB, GST_VIDEO_INFO_WIDTH(&in),
                              GST_VIDEO_INFO_HEIGHT(&in));
    GST_VIDEO_INFO_FPS_N(&out) = GST_VIDEO_INFO_FPS_N(&in);
    GST_VIDEO_INFO_FPS_D(&out) = GST_VIDEO_INFO_FPS_D(&in);
    GST_VIDEO_INFO_PAR_N(&out) = GST_VIDEO_INFO_PAR_N(&in);
    GST_VIDEO_INFO_PAR_D(&out) = GST_VIDEO_INFO_PAR_D(&in);
    if (!converter_ || !gst_video_info_is_equal(&in, converterIn)) {
        if (converter_)
            gst_video_converter_free(converter_);
        if (rgb_)
            gst_buffer_unref(rgb_);
        converter_ = gst_video_converter_new(&in, &out, nullptr);
        rgb_ = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&out), nullptr);
        *converterIn = in;
        if (!converter_)
            return false;
    }
    GstVideoFrame from;
    GstVideoFrame to;
    if (!gst_video_frame_map(&from, &in, gst_sample_get_buffer(sample), GST_MAP_READ))
        return false;
    if (!gst_video_frame_map(&to, &out, rgb_, GST_MAP_WRITE)) {
        gst_video_frame_unmap(&from);
        return false;
    }
    gst_video_converter_frame(converter_, &from, &to);
    // The output buffer is the driver's own and lives on: its memory stays valid after the unmap.
    view.bits = static_cast<const uchar*>(GST_VIDEO_FRAME_PLANE_DATA(&to, 0));
    view.width = GST_VIDEO_INFO_WIDTH(&out);
    view.height = GST_VIDEO_INFO_HEIGHT(&out);
    view.bytesPerLine = GST_VIDEO_INFO_PLANE_STRIDE(&out, 0);
    view.format = QImage::Format_RGB888;
    view.raw = RawLayout::None;
    gst_video_frame_unmap(&to);
    gst_video_frame_unmap(&from);
    return true;
}

void GraphDriver::develop()
{
    if (!held_ || developed_)
        return;
    const auto* map = static_cast<const GstMapInfo*>(maps_[heldMap_]);
    FrameView full;
    bool ok = false;
    if (heldKind_ == GraphMode::Kind::Jpeg)
        ok = fullDecoder_.jpeg(map->data, map->size, 1, false, full);
    else if (heldKind_ == GraphMode::Kind::Bayer)
        ok = fullDecoder_.bayer(map->data, (heldSize_.width() + 3) & ~3, heldSize_, heldRaw_, full);
    else
        ok = convertRaw(held_, full);
    if (ok) {
        frame_.place(full);
        developed_ = true;
    } else {
        frame_.clear();
    }
}

void GraphDriver::developHeld()
{
    const auto lock = frame_.lock();
    develop();
}

void GraphDriver::releaseHeld()
{
    if (held_) {
        gst_buffer_unmap(gst_sample_get_buffer(held_), static_cast<GstMapInfo*>(maps_[heldMap_]));
        gst_sample_unref(held_);
    }
    held_ = nullptr;
}

void GraphDriver::dropHeld()
{
    releaseHeld();
    frame_.clear();
}

int GraphDriver::GetGoodFrames(int cam, std::int32_t& count)
{
    if (const int s = checkOpen(cam))
        return s;
    count = good_;
    return 0;
}

int GraphDriver::GetBrokenFrames(int cam, std::int32_t& count)
{
    if (const int s = checkOpen(cam))
        return s;
    count = broken_;
    return 0;
}

QSize GraphDriver::frameSize() const
{
    const auto lock = frame_.lock();
    return heldSize_;
}

// ---- files ----

int GraphDriver::SaveToFile(int cam, const QString& path)
{
    if (const int s = checkOpen(cam))
        return s;
    developHeld();
    return frame_.save(path);
}

int GraphDriver::GrabFrame(int cam, QImage& frame)
{
    if (const int s = checkOpen(cam))
        return s;
    developHeld();
    return frame_.copy(frame);
}

int GraphDriver::readFrame(int cam, const FrameReader& read)
{
    if (const int s = checkOpen(cam))
        return s;
    developHeld();
    return frame_.read(read);
}

int GraphDriver::SaveAvi(int cam, const QString& path, int a, int seconds)
{
    if (const int s = checkOpen(cam))
        return s;
    if (!started_)
        return kNoFrame;
    // The file takes the size and rate of the frames the camera sends now;
    // a JPEG camera's frames go into it as they come.
    const double fps = fps_ > 0 ? fps_.load() : 30.0;
    QSize size;
    bool jpeg = false;
    {
        const auto lock = frame_.lock();
        if (!held_ && heldKind_ != GraphMode::Kind::Raw)
            return kNoFrame;
        develop();
        size = heldSize_;
        jpeg = heldKind_ == GraphMode::Kind::Jpeg;
    }
    return jpeg ? frame_.recordJpeg(path, size, fps, seconds) : frame_.record(path, fps, seconds);
}

bool GraphDriver::recordingStats(int cam, RecordingStats& stats)
{
    return checkOpen(cam) == 0 && frame_.recordingStats(stats);
}

// ---- parameters ----

int GraphDriver::GetCamParameterRange(int cam, int type, CamParamRange& range)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    if (type == kAviWriting) {
        range = CamParamRange{};
        range.enabled = 1;
        return 0;
    }
    if (type == kFrameRate)
        return frameRateRange(range);
    return parameters_.range(type, range);
}

int GraphDriver::frameRateRange(CamParamRange& range) const
{
    range = CamParamRange{};
    const GraphMode* mode = modeOf(mode_);
    if (!mode || mode->rates.empty())
        return 0;
    const auto& [lowN, lowD] = mode->rates.front();
    const auto& [highN, highD] = mode->rates.back();
    range.minimum = std::max(1, (lowN + lowD - 1) / lowD);
    range.maximum = highN / highD;
    range.defaultValue = range.maximum;
    // One rate offered leaves nothing to choose.
    range.enabled = range.maximum > range.minimum ? 1 : 0;
    return 0;
}

int GraphDriver::setFrameRate(std::int32_t fps)
{
    CamParamRange range;
    frameRateRange(range);
    if (!range.enabled)
        return kNotSupported;
    if (fps < range.minimum || fps > range.maximum)
        return kOutOfRange;
    wantedFps_ = fps;
    // A camera takes a new rate only with a new stream (an unplugged one when it is back).
    if (!started_ || away_)
        return 0;
    gst_element_set_state(file_.graph(), GST_STATE_READY);
    return startStream(wantedSink_);
}

int GraphDriver::SetCamParameter(int cam, int type, std::int32_t value)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    if (type == kFrameRate)
        return setFrameRate(value);
    return parameters_.set(type, value);
}

int GraphDriver::GetCamParameter(int cam, int type, std::int32_t& value)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    if (type == kAviWriting) {
        value = frame_.recording() ? 1 : 0;
        return 0;
    }
    if (type == kFrameRate) {
        CamParamRange range;
        frameRateRange(range);
        if (!range.enabled)
            return kNotSupported;
        const GraphMode now = modeOf(mode_)->atRate(wantedFps_);
        value = now.fpsN / std::max(1, now.fpsD);
        return 0;
    }
    return parameters_.get(type, value);
}

int GraphDriver::GetExposure(int cam, float& ms)
{
    std::int32_t units = 0;
    if (const int s = GetCamParameter(cam, kExposure, units))
        return s;
    ms = static_cast<float>(units) / 10.0f;  // the device counts 100 us
    return 0;
}

int GraphDriver::GetParamAuto(int cam, int type, std::int32_t& flag)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    return parameters_.getAuto(type, flag);
}

int GraphDriver::SetParamAuto(int cam, int type, std::int32_t flag)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    return parameters_.setAuto(type, flag);
}

int GraphDriver::SetParamAutoDef(int cam, int type)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    return parameters_.setAutoDefault(type);
}

int GraphDriver::SetParamOnePush(int cam, int type)
{
    if (const int s = checkOpen(cam))
        return s;
    const std::lock_guard guard(deviceMutex_);
    return parameters_.onePush(type);
}

}  // namespace tavix
