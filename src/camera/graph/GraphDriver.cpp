#include "camera/graph/GraphDriver.h"

#include "camera/Resolution.h"
#include "camera/graph/V4l2Controls.h"

#include <linux/videodev2.h>
#include <QFileInfo>
#include <algorithm>

#undef signals
#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>

namespace tavix {

namespace {

constexpr int kGamma = 3;
constexpr int kWhiteBalance = 6;
constexpr int kExposure = 7;
constexpr int kAviWriting = 24;
constexpr int kEnableGamma = 111;

// The device control behind each plain parameter, and its scale
// (parameter = control * numerator / denominator).
struct Mapping {
    int type;
    std::uint32_t id;
    int numerator;
    int denominator;
};

constexpr Mapping kMappings[] = {
    {1, V4L2_CID_BRIGHTNESS, 1, 1},    {2, V4L2_CID_CONTRAST, 1, 1},
    {19, V4L2_CID_SATURATION, 1, 1},   {109, V4L2_CID_HUE, 1, 1},
    {13, V4L2_CID_GAIN, 1, 1},         {12, V4L2_CID_BLACK_LEVEL, 1, 1},
    {kGamma, V4L2_CID_GAMMA, 64, 100}, {kExposure, V4L2_CID_EXPOSURE_ABSOLUTE, 1, 1},
    {4, V4L2_CID_VFLIP, 1, 1},         {5, V4L2_CID_HFLIP, 1, 1},
    {9, V4L2_CID_RED_BALANCE, 1, 1},   {11, V4L2_CID_BLUE_BALANCE, 1, 1},
};

const Mapping* mappingOf(int type)
{
    for (const Mapping& m : kMappings)
        if (m.type == type)
            return &m;
    return nullptr;
}

std::int32_t toParameter(const Mapping& m, std::int32_t control)
{
    return static_cast<std::int32_t>(static_cast<std::int64_t>(control) * m.numerator / m.denominator);
}

std::int32_t toControl(const Mapping& m, std::int32_t parameter)
{
    return static_cast<std::int32_t>(static_cast<std::int64_t>(parameter) * m.denominator / m.numerator);
}

GstCaps* rawCaps(QSize size)
{
    return gst_caps_new_simple("video/x-raw", "width", G_TYPE_INT, size.width(), "height", G_TYPE_INT,
                               size.height(), nullptr);
}

}  // namespace

GraphDriver::GraphDriver(const QString& graphPath, const QString& cameraFilterName, Log log)
    : log_(std::move(log)), file_(graphPath, cameraFilterName, log_)
{
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

bool GraphDriver::hasControls() const
{
    return controls_ && controls_->isOpen();
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
    const QString device = file_.devicePath();
    if (!device.isEmpty() && QFileInfo::exists(device))
        controls_ = std::make_unique<V4l2Controls>(device);
    gammaBeforeOff_ = -1;
    whiteBalancing_ = false;
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
    controls_.reset();
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
        if (streaming)
            driver->lost_ = true;
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
    range = CamParamRange{};
    if (type == kAviWriting) {
        range.enabled = 1;
        return 0;
    }
    V4l2Controls::Range control;
    if (!hasControls())
        return 0;  // a source without device controls: nothing enabled
    if (type == kWhiteBalance) {
        if (controls_->query(V4L2_CID_DO_WHITE_BALANCE, control) ||
            controls_->query(V4L2_CID_AUTO_WHITE_BALANCE, control)) {
            range.enabled = 1;
            range.defaultValue = range.maximum = 1;
        }
        return 0;
    }
    if (type == kEnableGamma) {
        if (controls_->query(V4L2_CID_GAMMA, control)) {
            range.enabled = 1;
            range.defaultValue = range.maximum = 1;
        }
        return 0;
    }
    const Mapping* m = mappingOf(type);
    if (!m || !controls_->query(m->id, control))
        return 0;
    range.enabled = 1;
    range.third = 1;
    range.minimum = toParameter(*m, control.minimum);
    range.maximum = toParameter(*m, control.maximum);
    range.defaultValue = toParameter(*m, control.defaultValue);
    range.autoMode = type == kExposure && controls_->query(V4L2_CID_EXPOSURE_AUTO, control) ? 1 : 0;
    return 0;
}

int GraphDriver::SetCamParameter(int cam, int type, std::int32_t value)
{
    if (const int s = checkOpen(cam))
        return s;
    CamParamRange range;
    GetCamParameterRange(cam, type, range);
    if (!range.enabled || type == kAviWriting || type == kWhiteBalance)
        return kNotSupported;
    if (value < range.minimum || value > range.maximum)
        return kOutOfRange;
    if (type == kEnableGamma) {
        V4l2Controls::Range gamma;
        controls_->query(V4L2_CID_GAMMA, gamma);
        std::int32_t now = gamma.defaultValue;
        controls_->get(V4L2_CID_GAMMA, now);
        if (value == 0 && gammaBeforeOff_ < 0) {
            gammaBeforeOff_ = now;
            return controls_->set(V4L2_CID_GAMMA, gamma.defaultValue) ? 0 : kFailed;
        }
        if (value == 1 && gammaBeforeOff_ >= 0) {
            const std::int32_t back = gammaBeforeOff_;
            gammaBeforeOff_ = -1;
            return controls_->set(V4L2_CID_GAMMA, back) ? 0 : kFailed;
        }
        return 0;
    }
    const Mapping* m = mappingOf(type);
    return controls_->set(m->id, toControl(*m, value)) ? 0 : kFailed;
}

int GraphDriver::GetCamParameter(int cam, int type, std::int32_t& value)
{
    if (const int s = checkOpen(cam))
        return s;
    if (type == kAviWriting) {
        value = frame_.recording() ? 1 : 0;
        return 0;
    }
    CamParamRange range;
    GetCamParameterRange(cam, type, range);
    if (!range.enabled)
        return kNotSupported;
    if (type == kWhiteBalance) {
        // The balance found while automatic is held once its time is up.
        if (whiteBalancing_ && std::chrono::steady_clock::now() >= whiteBalanceEnds_) {
            whiteBalancing_ = false;
            controls_->set(V4L2_CID_AUTO_WHITE_BALANCE, 0);
        }
        value = whiteBalancing_ ? 0 : 1;
        return 0;
    }
    if (type == kEnableGamma) {
        value = gammaBeforeOff_ < 0 ? 1 : 0;
        return 0;
    }
    const Mapping* m = mappingOf(type);
    std::int32_t control = 0;
    if (!controls_->get(m->id, control))
        return kFailed;
    value = toParameter(*m, control);
    return 0;
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
    CamParamRange range;
    GetCamParameterRange(cam, type, range);
    std::int32_t mode = 0;
    if (!range.autoMode || !controls_->get(V4L2_CID_EXPOSURE_AUTO, mode))
        return kNotSupported;
    flag = mode == V4L2_EXPOSURE_MANUAL ? 0 : 1;
    return 0;
}

int GraphDriver::SetParamAuto(int cam, int type, std::int32_t flag)
{
    if (const int s = checkOpen(cam))
        return s;
    CamParamRange range;
    GetCamParameterRange(cam, type, range);
    if (!range.autoMode)
        return kNotSupported;
    if (flag != 0 && flag != 1)
        return kOutOfRange;
    // USB cameras mostly offer only the aperture-priority kind of automatic exposure.
    std::int32_t mode = V4L2_EXPOSURE_MANUAL;
    if (flag)
        mode = controls_->hasMenuEntry(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY)
                   ? V4L2_EXPOSURE_APERTURE_PRIORITY
                   : V4L2_EXPOSURE_AUTO;
    return controls_->set(V4L2_CID_EXPOSURE_AUTO, mode) ? 0 : kFailed;
}

int GraphDriver::SetParamAutoDef(int cam, int type)
{
    if (const int s = checkOpen(cam))
        return s;
    CamParamRange range;
    GetCamParameterRange(cam, type, range);
    V4l2Controls::Range control;
    if (!range.autoMode || !controls_->query(V4L2_CID_EXPOSURE_AUTO, control))
        return kNotSupported;
    return controls_->set(V4L2_CID_EXPOSURE_AUTO, control.defaultValue) ? 0 : kFailed;
}

int GraphDriver::SetParamOnePush(int cam, int type)
{
    if (const int s = checkOpen(cam))
        return s;
    CamParamRange range;
    GetCamParameterRange(cam, type, range);
    if (type != kWhiteBalance || !range.enabled)
        return kNotSupported;
    V4l2Controls::Range control;
    if (controls_->query(V4L2_CID_DO_WHITE_BALANCE, control))
        return controls_->set(V4L2_CID_DO_WHITE_BALANCE, 1) ? 0 : kFailed;
    if (!controls_->set(V4L2_CID_AUTO_WHITE_BALANCE, 1))
        return kFailed;
    whiteBalancing_ = true;
    whiteBalanceEnds_ = std::chrono::steady_clock::now() + kWhiteBalanceTime;
    return 0;
}

}  // namespace tavix
