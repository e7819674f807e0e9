#include "camera/graph/GraphDriver.h"

#include "camera/Resolution.h"
#include "camera/graph/V4l2Controls.h"

#include <algorithm>

#undef signals
#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>

namespace tavix {

namespace {

constexpr int kExposure = 7;
constexpr int kAviWriting = 24;

GstCaps* rawCaps(QSize size)
{
    return gst_caps_new_simple("video/x-raw", "width", G_TYPE_INT, size.width(), "height", G_TYPE_INT,
                               size.height(), nullptr);
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
}

GraphDriver::~GraphDriver()
{
    if (open_)
        Close(0);
    dropHeld();
    for (void* map : maps_)
        delete static_cast<GstMapInfo*>(map);
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
    GstElement* convert = gst_element_factory_make("videoconvert", nullptr);
    filter_ = gst_element_factory_make("capsfilter", nullptr);
    appsink_ = gst_element_factory_make("appsink", nullptr);
    if (!convert || !filter_ || !appsink_) {
        for (GstElement* e : {convert, filter_, appsink_})
            if (e)
                gst_object_unref(gst_object_ref_sink(e));
        filter_ = appsink_ = nullptr;
        if (log_)
            log_(QStringLiteral("Error: graph camera: GStreamer lacks videoconvert, capsfilter or appsink"));
        return false;
    }
    gst_bin_add_many(GST_BIN(graph), convert, filter_, appsink_, nullptr);
    GstPad* convertIn = gst_element_get_static_pad(convert, "sink");
    const bool linked = gst_pad_link_maybe_ghosting(pin, convertIn) &&
                        gst_element_link_many(convert, filter_, appsink_, nullptr);
    gst_object_unref(convertIn);
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
    modes_.clear();
    GstCaps* offered = gst_pad_query_caps(file_.outputPin(), nullptr);
    std::vector<std::int32_t> all;
    for (int m = 0; m <= 10; ++m) {
        GstCaps* wanted = rawCaps(Resolution::size(m));
        if (gst_caps_can_intersect(offered, wanted))
            all.push_back(m);
        gst_caps_unref(wanted);
    }
    std::sort(all.begin(), all.end(), [](std::int32_t a, std::int32_t b) {
        const QSize sa = Resolution::size(a), sb = Resolution::size(b);
        return qint64(sa.width()) * sa.height() < qint64(sb.width()) * sb.height();
    });
    const size_t keep = std::min(all.size(), static_cast<size_t>(kModeListCapacity));
    modes_.assign(all.end() - static_cast<std::ptrdiff_t>(keep), all.end());

    // The size the camera takes by itself when it is one of ours, else the largest.
    mode_ = modes_.empty() ? -1 : modes_.back();
    GstCaps* raw = gst_caps_new_empty_simple("video/x-raw");
    GstCaps* own = gst_caps_intersect(offered, raw);
    if (!gst_caps_is_empty(own)) {
        own = gst_caps_fixate(own);
        gint w = 0, h = 0;
        const GstStructure* s = gst_caps_get_structure(own, 0);
        if (gst_structure_get_int(s, "width", &w) && gst_structure_get_int(s, "height", &h))
            for (std::int32_t m : modes_)
                if (Resolution::size(m) == QSize(w, h))
                    mode_ = m;
    }
    if (modes_.empty() && log_) {
        gchar* text = gst_caps_to_string(offered);
        log_(QStringLiteral("Error: graph camera offers none of the program's resolutions (") +
             QString::fromUtf8(text) + QLatin1Char(')'));
        g_free(text);
    }
    gst_caps_unref(own);
    gst_caps_unref(raw);
    gst_caps_unref(offered);
}

int GraphDriver::Open(int cam)
{
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
    modes = modes_;
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
    if (started_)
        return kBusy;
    if (std::find(modes_.begin(), modes_.end(), mode) == modes_.end())
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
    if (started_)
        return kBusy;
    if (lost_)
        return kDisconnected;
    GstCaps* caps = rawCaps(Resolution::size(mode_));
    gst_caps_set_simple(caps, "format", G_TYPE_STRING, "RGB", nullptr);
    g_object_set(filter_, "caps", caps, nullptr);
    gst_caps_unref(caps);
    frame_.setSink(sink);
    good_ = 0;
    broken_ = 0;
    nextOffset_ = GST_BUFFER_OFFSET_NONE;
    fps_ = 0;
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
    started_ = false;
    // Back to ready joins the streaming thread; the newest frame stays held.
    gst_element_set_state(file_.graph(), GST_STATE_READY);
    frame_.setSink(nullptr);
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
    if (!started_ || !buffer) {
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
    GstVideoInfo info;
    // Only this thread maps, and only into the slot the held frame does not use.
    auto* map = static_cast<GstMapInfo*>(maps_[1 - heldMap_]);
    const bool usable = gst_video_info_from_caps(&info, gst_sample_get_caps(sample)) &&
                        !GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_CORRUPTED) &&
                        gst_buffer_map(buffer, map, GST_MAP_READ);
    if (!usable || map->size < GST_VIDEO_INFO_SIZE(&info)) {
        if (usable)
            gst_buffer_unmap(buffer, map);
        ++broken_;
        gst_sample_unref(sample);
        return;
    }
    FrameView view;
    view.bits = map->data;
    view.width = GST_VIDEO_INFO_WIDTH(&info);
    view.height = GST_VIDEO_INFO_HEIGHT(&info);
    view.bytesPerLine = GST_VIDEO_INFO_PLANE_STRIDE(&info, 0);
    view.format = QImage::Format_RGB888;
    view.captureNs = GST_BUFFER_PTS_IS_VALID(buffer) ? static_cast<std::int64_t>(GST_BUFFER_PTS(buffer)) : -1;

    const auto lock = frame_.lock();
    view.sequence = static_cast<std::uint64_t>(++good_);
    if (GST_VIDEO_INFO_FPS_N(&info) > 0 && GST_VIDEO_INFO_FPS_D(&info) > 0)
        fps_ = double(GST_VIDEO_INFO_FPS_N(&info)) / GST_VIDEO_INFO_FPS_D(&info);
    // The newest frame stays mapped until a newer one replaces it.
    dropHeld();
    held_ = sample;
    heldMap_ = 1 - heldMap_;
    frame_.hold(view);
}

void GraphDriver::dropHeld()
{
    if (held_) {
        gst_buffer_unmap(gst_sample_get_buffer(held_), static_cast<GstMapInfo*>(maps_[heldMap_]));
        gst_sample_unref(held_);
    }
    held_ = nullptr;
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
    return frame_.size();
}

// ---- files ----

int GraphDriver::SaveToFile(int cam, const QString& path)
{
    if (const int s = checkOpen(cam))
        return s;
    return frame_.save(path);
}

int GraphDriver::GrabFrame(int cam, QImage& frame)
{
    if (const int s = checkOpen(cam))
        return s;
    return frame_.copy(frame);
}

int GraphDriver::SaveAvi(int cam, const QString& path, int a, int seconds)
{
    if (const int s = checkOpen(cam))
        return s;
    if (!started_)
        return kNoFrame;
    // The file takes the size and rate of the frames the camera sends now.
    const double fps = fps_;
    return frame_.record(path, fps > 0 ? fps : 30.0, seconds);
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
    if (type == kAviWriting) {
        range = CamParamRange{};
        range.enabled = 1;
        return 0;
    }
    return parameters_.range(type, range);
}

int GraphDriver::SetCamParameter(int cam, int type, std::int32_t value)
{
    if (const int s = checkOpen(cam))
        return s;
    return parameters_.set(type, value);
}

int GraphDriver::GetCamParameter(int cam, int type, std::int32_t& value)
{
    if (const int s = checkOpen(cam))
        return s;
    if (type == kAviWriting) {
        value = frame_.recording() ? 1 : 0;
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
    return parameters_.getAuto(type, flag);
}

int GraphDriver::SetParamAuto(int cam, int type, std::int32_t flag)
{
    if (const int s = checkOpen(cam))
        return s;
    return parameters_.setAuto(type, flag);
}

int GraphDriver::SetParamAutoDef(int cam, int type)
{
    if (const int s = checkOpen(cam))
        return s;
    return parameters_.setAutoDefault(type);
}

int GraphDriver::SetParamOnePush(int cam, int type)
{
    if (const int s = checkOpen(cam))
        return s;
    return parameters_.onePush(type);
}

}  // namespace tavix
