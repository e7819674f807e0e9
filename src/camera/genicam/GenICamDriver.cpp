#include "camera/genicam/GenICamDriver.h"

#include "camera/Resolution.h"
#include "camera/genicam/AravisCalls.h"
#include "camera/genicam/PixelFormatChoice.h"
#include "camera/genicam/SensorModes.h"

// GLib names a struct member "signals", which Qt's keyword macro would rewrite.
#undef signals
#include <arv.h>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <QStringList>
#include <algorithm>

namespace tavix {

namespace {

constexpr int kAviWriting = 24;

// A region in binned pixels as a field of the full-resolution sensor.
ModeGeometry geometryOf(int binning, QRect region)
{
    return {double(binning), QRectF(QRect(region.topLeft() * binning, region.size() * binning))};
}

}  // namespace

GenICamDriver::GenICamDriver(Log log, QString serial)
    : log_(std::move(log)), serial_(std::move(serial)), features_(log_)
{
    // Under way while the program starts; Init takes what it found by then.
    GenICamDiscovery::startGigE();
}

GenICamDriver::~GenICamDriver()
{
    if (camera_)
        Close(openIndex_);
    dropHeld();
}

void GenICamDriver::useFakeCameraOnly()
{
    GenICamDiscovery::useFakeOnly(true);
}

void GenICamDriver::useRealCameras()
{
    GenICamDiscovery::useFakeOnly(false);
}

std::vector<CameraChoice> GenICamDriver::listCameras(std::chrono::milliseconds gigeWait)
{
    GenICamDiscovery::startGigE();
    std::vector<CameraChoice> choices;
    for (const GenICamDiscovery::Device& d : GenICamDiscovery::find(gigeWait))
        choices.push_back({QStringLiteral("genicam"), d.serial,
                           QStringList{d.vendor, d.model}.join(QLatin1Char(' ')).simplified(), d.place});
    return choices;
}

int GenICamDriver::checkOpen(int cam) const
{
    if (!camera_)
        return kNotOpen;
    return cam == openIndex_ ? 0 : kBadCamera;
}

// ---- session ----

int GenICamDriver::GetVersion(int which, QString& version)
{
    version = QStringLiteral("%1.%2.%3")
                  .arg(arv_get_major_version())
                  .arg(arv_get_minor_version())
                  .arg(arv_get_micro_version());
    return 0;
}

int GenICamDriver::Init()
{
    const auto wanted = [this](const GenICamDiscovery::Device& d) { return d.serial == serial_; };
    std::vector<GenICamDiscovery::Device> devices = GenICamDiscovery::find(gigeWait_);
    if (!serial_.isEmpty() && std::none_of(devices.begin(), devices.end(), wanted)) {
        // The wanted camera may be on the network, found by a discovery from now on.
        GenICamDiscovery::startGigE();
        devices = GenICamDiscovery::find(kGigEDiscovery);
    }
    const auto first = std::find_if(devices.begin(), devices.end(), wanted);
    if (first != devices.end())
        std::rotate(devices.begin(), first, first + 1);
    else if (!serial_.isEmpty() && !devices.empty() && log_)
        log_(QStringLiteral("GenICam: no camera with serial number %1; the first one found is used")
                 .arg(serial_));
    found_.clear();
    for (const GenICamDiscovery::Device& d : devices)
        found_.push_back({d, QStringList{d.vendor, d.model, d.serial}.join(QLatin1Char(' ')).simplified()});
    return static_cast<int>(found_.size());
}

int GenICamDriver::GetName(int cam, QString& name)
{
    if (cam < 0 || cam >= static_cast<int>(found_.size()))
        return kBadCamera;
    name = found_[static_cast<size_t>(cam)].name;
    return 0;
}

int GenICamDriver::Open(int cam)
{
    if (camera_)
        return cam == openIndex_ ? kAlreadyOpen : kBusy;
    if (cam < 0 || cam >= static_cast<int>(found_.size()))
        return kBadCamera;
    GError* error = nullptr;
    ArvDevice* device = GenICamDiscovery::open(found_[static_cast<size_t>(cam)].device, &error);
    if (!AravisCalls::failed(error, log_) && device) {
        camera_ = arv_camera_new_with_device(device, &error);
        AravisCalls::failed(error, log_);
    }
    g_clear_object(&device);
    if (!camera_)
        return kFailed;
    openIndex_ = cam;
    lost_ = false;
    frame_.found();
    lostHandler_ =
        g_signal_connect(arv_camera_get_device(camera_), "control-lost", G_CALLBACK(onControlLost), this);

    // First, as reading the factory settings loads them for a moment.
    features_.attach(camera_);
    if (arv_camera_is_gv_device(camera_)) {
        // The largest packet the link carries whole (jumbo frames where the network has them).
        arv_camera_gv_auto_packet_size(camera_, &error);
        AravisCalls::failed(error, log_);
        // Aravis's packet socket listens on network cards and misses a camera on this machine's loopback.
        if (found_[static_cast<size_t>(cam)].device.place.startsWith(QLatin1String("127.")))
            arv_camera_gv_set_stream_options(camera_, ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    } else if (arv_camera_is_uv_device(camera_)) {
        arv_camera_uv_set_usb_mode(camera_, ARV_UV_USB_MODE_ASYNC);
    }
    modes_ = SensorModes::list(readLimits());
    if (modes_.empty() || !choosePixelFormat()) {
        Close(cam);
        return kFailed;
    }

    // The camera's own region when it is one of the modes, else the first (the whole sensor).
    gint x = 0, y = 0, w = 0, h = 0, bx = 1, by = 1;
    arv_camera_get_region(camera_, &x, &y, &w, &h, nullptr);
    arv_camera_get_binning(camera_, &bx, &by, nullptr);
    mode_ = -1;
    for (const SensorModes::Mode& m : modes_) {
        if (QSize(w, h) == m.region.size() && bx == m.binning && by == m.binning) {
            mode_ = m.index;
            geometry_ = geometryOf(bx, QRect(x, y, w, h));
            break;
        }
    }
    if (mode_ < 0 && applyMode(modes_.front()) != 0) {
        Close(cam);
        return kFailed;
    }
    return 0;
}

bool GenICamDriver::choosePixelFormat()
{
    GError* error = nullptr;
    const auto current = static_cast<std::uint32_t>(arv_camera_get_pixel_format(camera_, &error));
    AravisCalls::failed(error, log_);
    guint n = 0;
    gint64* offered = arv_camera_dup_available_pixel_formats(camera_, &n, &error);
    AravisCalls::failed(error, log_);
    std::vector<std::uint32_t> formats;
    for (guint i = 0; i < n; ++i)
        formats.push_back(static_cast<std::uint32_t>(offered[i]));
    g_free(offered);
    const std::int64_t chosen = PixelFormatChoice::choose(current, formats);
    if (chosen < 0) {
        if (log_)
            log_(QStringLiteral("GenICam: the camera sends no pixel format the program can show"));
        return false;
    }
    if (static_cast<std::uint32_t>(chosen) == current)
        return true;
    arv_camera_set_pixel_format(camera_, static_cast<ArvPixelFormat>(chosen), &error);
    return !AravisCalls::failed(error, log_);
}

int GenICamDriver::IsOpen(int cam)
{
    return checkOpen(cam) == 0 ? 0 : 1;
}

int GenICamDriver::Close(int cam)
{
    if (const int s = checkOpen(cam))
        return s;
    stopStream();
    if (lostHandler_)
        g_signal_handler_disconnect(arv_camera_get_device(camera_), lostHandler_);
    lostHandler_ = 0;
    features_.attach(nullptr);
    g_clear_object(&camera_);
    openIndex_ = -1;
    const auto lock = frame_.lock();
    dropHeld();
    return 0;
}

// ---- modes ----

int GenICamDriver::GetModeList(int cam, std::vector<std::int32_t>& modes)
{
    if (const int s = checkOpen(cam))
        return s;
    modes.clear();
    for (const SensorModes::Mode& m : modes_)
        modes.push_back(m.index);
    return 0;
}

int GenICamDriver::GetMode(int cam, std::int32_t& mode)
{
    if (const int s = checkOpen(cam))
        return s;
    mode = mode_;
    return 0;
}

int GenICamDriver::SetMode(int cam, std::int32_t mode)
{
    if (const int s = checkOpen(cam))
        return s;
    if (started_)
        return kBusy;
    const SensorModes::Mode* wanted = modeOf(mode);
    if (!wanted)
        return kOutOfRange;
    if (applyMode(*wanted) == 0)
        return 0;
    if (log_)
        log_(QStringLiteral("GenICam: the camera refuses %1 (binning %2); %3 stays")
                 .arg(Resolution::name(mode))
                 .arg(wanted->binning)
                 .arg(Resolution::name(mode_)));
    // Whatever part of the refused mode the camera took is undone.
    if (const SensorModes::Mode* previous = modeOf(mode_))
        applyMode(*previous);
    return kFailed;
}

const SensorModes::Mode* GenICamDriver::modeOf(std::int32_t index) const
{
    const auto m = std::find_if(modes_.begin(), modes_.end(),
                                [index](const SensorModes::Mode& mode) { return mode.index == index; });
    return m == modes_.end() ? nullptr : &*m;
}

SensorModes::Limits GenICamDriver::readLimits()
{
    SensorModes::Limits limits;
    GError* error = nullptr;
    gint width = 0, height = 0;
    if (arv_device_is_feature_available(arv_camera_get_device(camera_), "SensorWidth", nullptr)) {
        arv_camera_get_sensor_size(camera_, &width, &height, &error);
        if (!AravisCalls::failed(error, log_))
            limits.sensor = QSize(width, height);
    }
    gint bx = 1, by = 1;
    const bool bins = arv_camera_is_binning_available(camera_, nullptr);
    if (bins)
        arv_camera_get_binning(camera_, &bx, &by, nullptr);
    gint min = 1, max = 0;
    arv_camera_get_width_bounds(camera_, &min, &max, nullptr);
    limits.widthMin = std::max(1, min);
    limits.maximum.setWidth(max * std::max(1, bx));
    arv_camera_get_height_bounds(camera_, &min, &max, nullptr);
    limits.heightMin = std::max(1, min);
    limits.maximum.setHeight(max * std::max(1, by));
    limits.widthStep = std::max(1, arv_camera_get_width_increment(camera_, nullptr));
    limits.heightStep = std::max(1, arv_camera_get_height_increment(camera_, nullptr));
    limits.offsetStep = std::max({1, arv_camera_get_x_offset_increment(camera_, nullptr),
                                  arv_camera_get_y_offset_increment(camera_, nullptr)});
    if (bins) {
        gint minX = 1, maxX = 1, minY = 1, maxY = 1;
        arv_camera_get_x_binning_bounds(camera_, &minX, &maxX, nullptr);
        arv_camera_get_y_binning_bounds(camera_, &minY, &maxY, nullptr);
        const int step = std::max({1, arv_camera_get_x_binning_increment(camera_, nullptr),
                                   arv_camera_get_y_binning_increment(camera_, nullptr)});
        limits.binnings.clear();
        for (int b = std::max({1, minX, minY}); b <= std::min(maxX, maxY); b += step)
            limits.binnings.push_back(b);
        if (limits.binnings.empty())
            limits.binnings.push_back(1);
    }
    return limits;
}

std::optional<ModeGeometry> GenICamDriver::modeGeometry(std::int32_t mode) const
{
    const SensorModes::Mode* m = camera_ ? modeOf(mode) : nullptr;
    if (!m)
        return std::nullopt;
    if (mode == mode_)
        return geometry_;
    return geometryOf(m->binning, m->region);
}

QString GenICamDriver::cameraId() const
{
    const int index = openIndex_;
    return camera_ && index >= 0 ? found_[static_cast<size_t>(index)].device.id : QString();
}

int GenICamDriver::applyMode(const SensorModes::Mode& mode)
{
    GError* error = nullptr;
    if (arv_camera_is_binning_available(camera_, nullptr)) {
        gint bx = 1, by = 1;
        arv_camera_get_binning(camera_, &bx, &by, nullptr);
        if (bx != mode.binning || by != mode.binning) {
            // A region larger than the new binning leaves would make the camera refuse it.
            gint w = 0, h = 0;
            arv_camera_get_region(camera_, nullptr, nullptr, &w, &h, nullptr);
            arv_camera_set_region(camera_, 0, 0, std::min(w, mode.region.width()),
                                  std::min(h, mode.region.height()), nullptr);
            arv_camera_set_binning(camera_, mode.binning, mode.binning, &error);
            if (AravisCalls::failed(error, log_))
                return kFailed;
        }
    }
    const QRect& r = mode.region;
    arv_camera_set_region(camera_, r.x(), r.y(), r.width(), r.height(), &error);
    if (AravisCalls::failed(error, log_))
        return kFailed;
    gint x = 0, y = 0, w = 0, h = 0;
    arv_camera_get_region(camera_, &x, &y, &w, &h, nullptr);
    if (QSize(w, h) != r.size())
        return kFailed;
    mode_ = mode.index;
    // What the camera took, which may round the offsets.
    geometry_ = geometryOf(mode.binning, QRect(x, y, w, h));
    return 0;
}

int GenICamDriver::SetDisplayMode(int cam, int mode, int a, int b, int c, int d)
{
    return checkOpen(cam);
}

// ---- streaming ----

int GenICamDriver::Start(int cam, quintptr window, FrameSink* sink, int a, int b)
{
    if (const int s = checkOpen(cam))
        return s;
    if (lost_)
        return kDisconnected;
    if (started_)
        return kBusy;
    stopStream();  // a stream that ended with the camera lost
    {
        const auto lock = frame_.lock();
        dropHeld();
    }
    sink_ = sink;
    GError* error = nullptr;
    stream_ = arv_camera_create_stream(camera_, nullptr, nullptr, &error);
    if (AravisCalls::failed(error, log_) || !stream_) {
        g_clear_object(&stream_);
        return kFailed;
    }
    // A socket buffer that holds a whole frame, and half a second for a frame's last packets
    // (a resend included) on a busy machine before the frame counts as broken.
    if (ARV_IS_GV_STREAM(stream_))
        g_object_set(stream_, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_AUTO, "frame-retention", 500000u,
                     nullptr);
    const guint payload = arv_camera_get_payload(camera_, &error);
    if (AravisCalls::failed(error, log_)) {
        g_clear_object(&stream_);
        return kFailed;
    }
    for (int i = 0; i < kBufferCount; ++i)
        arv_stream_push_buffer(stream_, arv_buffer_new(payload, nullptr));
    good_ = 0;
    incomplete_ = 0;
    rate_.clear();
    queue_.reserve(kBufferCount);
    taken_.reserve(kBufferCount);
    worker_ = std::thread([this] { work(); });
    g_signal_connect(stream_, "new-buffer", G_CALLBACK(onNewBuffer), this);
    arv_stream_set_emit_signals(stream_, TRUE);
    arv_camera_set_acquisition_mode(camera_, ARV_ACQUISITION_MODE_CONTINUOUS, &error);
    AravisCalls::failed(error, log_);
    started_ = true;
    arv_camera_start_acquisition(camera_, &error);
    if (AravisCalls::failed(error, log_)) {
        stopStream();
        return kFailed;
    }
    return 0;
}

int GenICamDriver::IsStarted(int cam)
{
    return checkOpen(cam) == 0 && started_ ? 1 : 0;
}

int GenICamDriver::Stop(int cam)
{
    if (const int s = checkOpen(cam))
        return s;
    stopStream();
    return 0;
}

void GenICamDriver::stopStream()
{
    started_ = false;
    if (!stream_)
        return;
    // A lost camera does not answer; asking it would only wait for time-outs.
    if (!lost_) {
        GError* error = nullptr;
        arv_camera_stop_acquisition(camera_, &error);
        AravisCalls::failed(error, log_);
    }
    arv_stream_set_emit_signals(stream_, FALSE);
    g_signal_handlers_disconnect_by_data(stream_, this);
    {
        const std::lock_guard lock(queueLock_);
        stopWorker_ = true;
    }
    queued_.notify_one();
    if (worker_.joinable())
        worker_.join();
    sink_ = nullptr;
    frame_.endRecording();
    // Joins the stream thread; a frame still being received goes back to the stream's pool.
    g_clear_object(&stream_);
    // What was queued when the worker stopped (or by a last call on the stream thread).
    for (ArvBuffer* buffer : queue_)
        g_object_unref(buffer);
    queue_.clear();
    stopWorker_ = false;
}

void GenICamDriver::dropHeld()
{
    if (held_)
        g_object_unref(held_);
    held_ = nullptr;
    heldView_ = FrameView{};
    frame_.clear();
}

void GenICamDriver::develop()
{
    if (!held_ || developed_ || heldView_.raw == RawLayout::None)
        return;
    frame_.place(PixelConversion::develop(heldView_, developedPixels_));
    developed_ = true;
}

void GenICamDriver::developHeld()
{
    const auto lock = frame_.lock();
    develop();
}

void GenICamDriver::onNewBuffer(_ArvStream* stream, void* self)
{
    // The thread that receives the packets goes first where the system lets it; it does nothing else.
    static thread_local bool raised = false;
    if (!raised) {
        raised = true;
        setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), -10);
    }
    ArvBuffer* buffer = arv_stream_try_pop_buffer(stream);
    if (!buffer)
        return;
    auto* driver = static_cast<GenICamDriver*>(self);
    {
        const std::lock_guard lock(driver->queueLock_);
        driver->queue_.push_back(buffer);
    }
    driver->queued_.notify_one();
}

void GenICamDriver::work()
{
    for (;;) {
        {
            std::unique_lock lock(queueLock_);
            queued_.wait(lock, [this] { return stopWorker_ || !queue_.empty(); });
            if (stopWorker_)
                return;
            taken_.swap(queue_);
        }
        // Only the newest of a backlog is shown; a recording takes them all.
        const bool everyFrame = frame_.recording();
        for (size_t i = 0; i < taken_.size(); ++i) {
            if (everyFrame || i + 1 == taken_.size()) {
                receive(stream_, taken_[i]);
            } else {
                if (complete(taken_[i]))
                    ++good_;
                giveBack(taken_[i]);
            }
        }
        taken_.clear();
    }
}

void GenICamDriver::giveBack(_ArvBuffer* buffer)
{
    if (stream_)
        arv_stream_push_buffer(stream_, buffer);
    else
        g_object_unref(buffer);
}

bool GenICamDriver::complete(_ArvBuffer* buffer)
{
    if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS) {
        rate_.arrived(static_cast<std::int64_t>(arv_buffer_get_system_timestamp(buffer)));
        return true;
    }
    ++incomplete_;
    return false;
}

void GenICamDriver::receive(_ArvStream* from, _ArvBuffer* buffer)
{
    const auto back = [from](ArvBuffer* b) {
        if (from)
            arv_stream_push_buffer(from, b);
        else
            g_object_unref(b);
    };
    if (!started_ || lost_) {
        back(buffer);
        return;
    }
    FrameView view;
    size_t size = 0;
    const auto* data =
        complete(buffer) ? static_cast<const uchar*>(arv_buffer_get_image_data(buffer, &size)) : nullptr;
    gint padX = 0, padY = 0;
    if (data)
        arv_buffer_get_image_padding(buffer, &padX, &padY);
    // Not a picture we can show (a format we do not know, a short buffer): a broken frame.
    if (data && !conversion_.convert(arv_buffer_get_image_pixel_format(buffer), data, size,
                                     arv_buffer_get_image_width(buffer), arv_buffer_get_image_height(buffer),
                                     padX, view)) {
        ++incomplete_;
        data = nullptr;
    }
    if (!data) {
        back(buffer);
        return;
    }
    const bool recordingCells = view.raw != RawLayout::None && frame_.recording();
    ArvBuffer* previous = nullptr;
    {
        const auto lock = frame_.lock();
        view.sequence = static_cast<std::uint64_t>(++good_);
        // The newest frame stays out of the pool until a newer one replaces it.
        previous = held_;
        held_ = buffer;
        heldView_ = view;
        developed_ = false;
        if (sink_)
            sink_->frameReady(view);
        if (view.raw == RawLayout::None) {
            frame_.hold(view);
        } else if (recordingCells) {
            // A recording takes full-size pictures: each frame is developed while it runs.
            develop();
            frame_.hold(frame_.view());
        }
    }
    if (previous)
        back(previous);
}

void GenICamDriver::onControlLost(void* device, void* self)
{
    auto* driver = static_cast<GenICamDriver*>(self);
    if (driver->lost_.exchange(true))
        return;
    driver->started_ = false;
    // What is held now is the camera's last picture, not a new one.
    driver->frame_.lose();
    // Aravis's thread may get here while the camera is being closed.
    const int index = driver->openIndex_;
    if (driver->log_ && index >= 0)
        driver->log_(QStringLiteral("Error: GenICam camera lost (") +
                     driver->found_[static_cast<size_t>(index)].name + QLatin1Char(')'));
}

int GenICamDriver::GetGoodFrames(int cam, std::int32_t& count)
{
    if (const int s = checkOpen(cam))
        return s;
    count = good_;
    return 0;
}

int GenICamDriver::GetBrokenFrames(int cam, std::int32_t& count)
{
    if (const int s = checkOpen(cam))
        return s;
    guint64 completed = 0, failures = 0, underruns = 0;
    if (stream_)
        arv_stream_get_statistics(stream_, &completed, &failures, &underruns);
    count = incomplete_ + AravisCalls::clampInt(static_cast<double>(underruns));
    return 0;
}

QSize GenICamDriver::frameSize() const
{
    const auto lock = frame_.lock();
    return {heldView_.width, heldView_.height};
}

QImage::Format GenICamDriver::frameFormat() const
{
    const auto lock = frame_.lock();
    if (!heldView_.bits)
        return QImage::Format_Invalid;
    return heldView_.raw == RawLayout::None ? heldView_.format : QImage::Format_RGB888;
}

// ---- files ----

int GenICamDriver::SaveToFile(int cam, const QString& path)
{
    if (const int s = checkOpen(cam))
        return s;
    developHeld();
    return frame_.save(path);
}

int GenICamDriver::GrabFrame(int cam, QImage& frame)
{
    if (const int s = checkOpen(cam))
        return s;
    developHeld();
    return frame_.copy(frame);
}

int GenICamDriver::readFrame(int cam, const FrameReader& read)
{
    if (const int s = checkOpen(cam))
        return s;
    developHeld();
    return frame_.read(read);
}

int GenICamDriver::SaveAvi(int cam, const QString& path, int a, int seconds)
{
    if (const int s = checkOpen(cam))
        return s;
    if (!started_)
        return kNoFrame;
    double rate = rate_.fps();
    if (rate <= 0) {
        GError* error = nullptr;
        rate = arv_camera_get_frame_rate(camera_, &error);
        if (AravisCalls::failed(error, log_) || rate <= 0)
            rate = 30.0;
    }
    // The file takes the size and pixels of the frames the camera sends now.
    developHeld();
    return frame_.record(path, rate, seconds);
}

bool GenICamDriver::recordingStats(int cam, RecordingStats& stats)
{
    return checkOpen(cam) == 0 && frame_.recordingStats(stats);
}

// ---- parameters ----

int GenICamDriver::SetCamParameter(int cam, int type, std::int32_t value)
{
    if (const int s = checkOpen(cam))
        return s;
    return features_.set(type, value);
}

int GenICamDriver::GetCamParameter(int cam, int type, std::int32_t& value)
{
    if (const int s = checkOpen(cam))
        return s;
    if (type == kAviWriting) {
        value = frame_.recording() ? 1 : 0;
        return 0;
    }
    return features_.get(type, value);
}

int GenICamDriver::GetCamParameterRange(int cam, int type, CamParamRange& range)
{
    if (const int s = checkOpen(cam))
        return s;
    if (type == kAviWriting) {
        range = CamParamRange{};
        range.enabled = 1;
        return 0;
    }
    return features_.range(type, range);
}

int GenICamDriver::GetExposure(int cam, float& ms)
{
    if (const int s = checkOpen(cam))
        return s;
    GError* error = nullptr;
    const double us = arv_camera_get_exposure_time(camera_, &error);
    if (AravisCalls::failed(error, log_))
        return kFailed;
    ms = static_cast<float>(us / 1000.0);
    return 0;
}

int GenICamDriver::GetParamAuto(int cam, int type, std::int32_t& flag)
{
    if (const int s = checkOpen(cam))
        return s;
    return features_.getAuto(type, flag);
}

int GenICamDriver::SetParamAuto(int cam, int type, std::int32_t flag)
{
    if (const int s = checkOpen(cam))
        return s;
    return features_.setAuto(type, flag);
}

int GenICamDriver::SetParamAutoDef(int cam, int type)
{
    if (const int s = checkOpen(cam))
        return s;
    return features_.setAutoDefault(type);
}

int GenICamDriver::SetParamOnePush(int cam, int type)
{
    if (const int s = checkOpen(cam))
        return s;
    return features_.onePush(type);
}

}  // namespace tavix
