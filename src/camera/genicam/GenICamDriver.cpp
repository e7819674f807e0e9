#include "camera/genicam/GenICamDriver.h"

#include "camera/genicam/AravisCalls.h"
#include "camera/genicam/SensorModes.h"
#include "media/BayerDemosaic.h"

// GLib names a struct member "signals", which Qt's keyword macro would rewrite.
#undef signals
#include <arv.h>

#include <QStringList>
#include <algorithm>

namespace tavix {

namespace {

constexpr int kAviWriting = 24;

// The formats frames reach the program in, the 8-bit Bayer ones first: a
// colour camera sends a third of the bytes of RGB8 that way.
constexpr const char* kPixelFormats[] = {"BayerRG8", "BayerGR8",   "BayerGB8", "BayerBG8",
                                         "RGB8",     "RGB8Packed", "Mono8"};

// A region in binned pixels as a field of the full-resolution sensor.
ModeGeometry geometryOf(int binning, QRect region)
{
    return {double(binning), QRectF(QRect(region.topLeft() * binning, region.size() * binning))};
}

}  // namespace

GenICamDriver::GenICamDriver(Log log) : log_(std::move(log)), features_(log_)
{
}

GenICamDriver::~GenICamDriver()
{
    if (camera_)
        Close(openIndex_);
    dropHeld();
}

void GenICamDriver::useFakeCameraOnly()
{
    arv_enable_interface("Fake");
    arv_disable_interface("GigEVision");
    arv_disable_interface("USB3Vision");
}

void GenICamDriver::useRealCameras()
{
    arv_disable_interface("Fake");
    arv_enable_interface("GigEVision");
    arv_enable_interface("USB3Vision");
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
    arv_update_device_list();
    found_.clear();
    const unsigned n = arv_get_n_devices();
    for (unsigned i = 0; i < n; ++i) {
        const auto text = [](const char* s) { return QString::fromUtf8(s ? s : ""); };
        found_.push_back({text(arv_get_device_id(i)),
                          QStringList{text(arv_get_device_vendor(i)), text(arv_get_device_model(i)),
                                      text(arv_get_device_serial_nbr(i))}
                              .join(QLatin1Char(' '))
                              .simplified()});
    }
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
    camera_ = arv_camera_new(found_[static_cast<size_t>(cam)].id.toUtf8().constData(), &error);
    if (AravisCalls::failed(error, log_) || !camera_) {
        g_clear_object(&camera_);
        return kFailed;
    }
    openIndex_ = cam;
    lost_ = false;
    frame_.found();
    lostHandler_ =
        g_signal_connect(arv_camera_get_device(camera_), "control-lost", G_CALLBACK(onControlLost), this);

    gint width = 0;
    gint height = 0;
    arv_camera_get_sensor_size(camera_, &width, &height, &error);
    AravisCalls::failed(error, log_);
    sensor_ = QSize(width, height);
    maxBinning_ = 1;
    if (arv_camera_is_binning_available(camera_, nullptr)) {
        gint minX = 1, maxX = 1, minY = 1, maxY = 1;
        arv_camera_get_x_binning_bounds(camera_, &minX, &maxX, nullptr);
        arv_camera_get_y_binning_bounds(camera_, &minY, &maxY, nullptr);
        maxBinning_ = std::max(1, std::min(maxX, maxY));
    }
    modes_ = SensorModes::fitting(sensor_, kModeListCapacity);
    if (modes_.empty() || !choosePixelFormat()) {
        Close(cam);
        return kFailed;
    }

    // The camera's own region when it is one of the program's sizes, else the largest.
    gint x = 0, y = 0, w = 0, h = 0, bx = 1, by = 1;
    arv_camera_get_region(camera_, &x, &y, &w, &h, nullptr);
    arv_camera_get_binning(camera_, &bx, &by, nullptr);
    mode_ = -1;
    for (std::int32_t m : modes_) {
        const SensorModes::Fit fit = SensorModes::fit(sensor_, m, maxBinning_);
        if (QSize(w, h) == fit.region.size() && bx == fit.binning && by == fit.binning) {
            mode_ = m;
            geometry_ = geometryOf(bx, QRect(x, y, w, h));
        }
    }
    if (mode_ < 0 && applyMode(modes_.back()) != 0) {
        Close(cam);
        return kFailed;
    }
    features_.attach(camera_);
    return 0;
}

bool GenICamDriver::choosePixelFormat()
{
    const char* current = arv_camera_get_pixel_format_as_string(camera_, nullptr);
    const auto supported = [](const char* name) {
        return std::any_of(std::begin(kPixelFormats), std::end(kPixelFormats),
                           [name](const char* f) { return name && qstrcmp(name, f) == 0; });
    };
    if (supported(current))
        return true;
    ArvDevice* device = arv_camera_get_device(camera_);
    for (const char* format : kPixelFormats) {
        if (!arv_device_is_enumeration_entry_available(device, "PixelFormat", format, nullptr))
            continue;
        GError* error = nullptr;
        arv_camera_set_pixel_format_from_string(camera_, format, &error);
        if (!AravisCalls::failed(error, log_))
            return true;
    }
    if (log_)
        log_(QStringLiteral("GenICam: the camera sends none of Mono8, RGB8 and the 8-bit Bayer formats"));
    return false;
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
    modes = modes_;
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
    if (std::find(modes_.begin(), modes_.end(), mode) == modes_.end())
        return kOutOfRange;
    return applyMode(mode);
}

int GenICamDriver::offsetStep() const
{
    return std::max(arv_camera_get_x_offset_increment(camera_, nullptr),
                    arv_camera_get_y_offset_increment(camera_, nullptr));
}

std::optional<ModeGeometry> GenICamDriver::modeGeometry(std::int32_t mode) const
{
    if (!camera_ || std::find(modes_.begin(), modes_.end(), mode) == modes_.end())
        return std::nullopt;
    if (mode == mode_)
        return geometry_;
    const SensorModes::Fit fit = SensorModes::fit(sensor_, mode, maxBinning_, offsetStep());
    return geometryOf(fit.binning, fit.region);
}

QString GenICamDriver::cameraId() const
{
    const int index = openIndex_;
    return camera_ && index >= 0 ? found_[static_cast<size_t>(index)].id : QString();
}

int GenICamDriver::applyMode(std::int32_t mode)
{
    const int step = offsetStep();
    // A camera may refuse some binnings (many take only powers of two): the next smaller one is tried.
    for (int binning = maxBinning_; binning >= 1; --binning) {
        const SensorModes::Fit fit = SensorModes::fit(sensor_, mode, binning, step);
        if (fit.binning != binning)
            continue;
        GError* error = nullptr;
        if (maxBinning_ > 1) {
            arv_camera_set_binning(camera_, binning, binning, &error);
            if (error) {
                g_clear_error(&error);
                continue;
            }
        }
        const QRect& r = fit.region;
        arv_camera_set_region(camera_, r.x(), r.y(), r.width(), r.height(), &error);
        if (AravisCalls::failed(error, log_))
            return kFailed;
        gint x = 0, y = 0, w = 0, h = 0;
        arv_camera_get_region(camera_, &x, &y, &w, &h, nullptr);
        if (QSize(w, h) != r.size())
            continue;
        mode_ = mode;
        // What the camera took, which may round the offsets.
        geometry_ = geometryOf(binning, QRect(x, y, w, h));
        return 0;
    }
    return kFailed;
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
    frame_.setSink(sink);
    GError* error = nullptr;
    stream_ = arv_camera_create_stream(camera_, nullptr, nullptr, &error);
    if (AravisCalls::failed(error, log_) || !stream_) {
        g_clear_object(&stream_);
        return kFailed;
    }
    const guint payload = arv_camera_get_payload(camera_, &error);
    if (AravisCalls::failed(error, log_)) {
        g_clear_object(&stream_);
        return kFailed;
    }
    for (int i = 0; i < kBufferCount; ++i)
        arv_stream_push_buffer(stream_, arv_buffer_new(payload, nullptr));
    good_ = 0;
    incomplete_ = 0;
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
    frame_.setSink(nullptr);
    frame_.endRecording();
    // Joins the stream thread; a frame still being received goes back to the stream's pool.
    g_clear_object(&stream_);
}

void GenICamDriver::dropHeld()
{
    if (held_)
        g_object_unref(held_);
    held_ = nullptr;
    frame_.clear();
}

void GenICamDriver::onNewBuffer(_ArvStream* stream, void* self)
{
    if (ArvBuffer* buffer = arv_stream_try_pop_buffer(stream))
        static_cast<GenICamDriver*>(self)->receive(stream, buffer);
}

void GenICamDriver::receive(_ArvStream* from, _ArvBuffer* buffer)
{
    const auto giveBack = [from](ArvBuffer* b) {
        if (from)
            arv_stream_push_buffer(from, b);
        else
            g_object_unref(b);
    };
    if (!started_ || lost_) {
        giveBack(buffer);
        return;
    }
    FrameView view;
    size_t size = 0;
    const auto* data = static_cast<const uchar*>(arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS
                                                     ? arv_buffer_get_image_data(buffer, &size)
                                                     : nullptr);
    const ArvPixelFormat format = data ? arv_buffer_get_image_pixel_format(buffer) : 0;
    view.width = data ? arv_buffer_get_image_width(buffer) : 0;
    view.height = data ? arv_buffer_get_image_height(buffer) : 0;
    gint padX = 0, padY = 0;
    if (data)
        arv_buffer_get_image_padding(buffer, &padX, &padY);
    const int bytesPerPixel = format == ARV_PIXEL_FORMAT_RGB_8_PACKED ? 3 : 1;
    view.bytesPerLine = static_cast<qsizetype>(view.width) * bytesPerPixel + padX;
    const bool known = format == ARV_PIXEL_FORMAT_MONO_8 || format == ARV_PIXEL_FORMAT_RGB_8_PACKED ||
                       format == ARV_PIXEL_FORMAT_BAYER_RG_8 || format == ARV_PIXEL_FORMAT_BAYER_GR_8 ||
                       format == ARV_PIXEL_FORMAT_BAYER_GB_8 || format == ARV_PIXEL_FORMAT_BAYER_BG_8;
    // Incomplete (missing packets, time-out) or not a picture we can show: a broken frame.
    if (!known || view.width < 2 || view.height < 2 ||
        size < static_cast<size_t>(view.bytesPerLine) * static_cast<size_t>(view.height)) {
        ++incomplete_;
        giveBack(buffer);
        return;
    }

    const auto lock = frame_.lock();
    view.sequence = static_cast<std::uint64_t>(++good_);
    if (format == ARV_PIXEL_FORMAT_MONO_8) {
        view.bits = data;
        view.format = QImage::Format_Grayscale8;
    } else if (format == ARV_PIXEL_FORMAT_RGB_8_PACKED) {
        view.bits = data;
        view.format = QImage::Format_RGB888;
    } else {
        const BayerDemosaic::Pattern pattern =
            format == ARV_PIXEL_FORMAT_BAYER_RG_8   ? BayerDemosaic::Pattern::RGGB
            : format == ARV_PIXEL_FORMAT_BAYER_GR_8 ? BayerDemosaic::Pattern::GRBG
            : format == ARV_PIXEL_FORMAT_BAYER_GB_8 ? BayerDemosaic::Pattern::GBRG
                                                    : BayerDemosaic::Pattern::BGGR;
        const qsizetype stride = static_cast<qsizetype>(view.width) * 3;
        rgb_.resize(static_cast<size_t>(stride) * static_cast<size_t>(view.height));
        BayerDemosaic::toRgb(data, view.bytesPerLine, view.width, view.height, pattern, rgb_.data(), stride);
        view.bits = rgb_.data();
        view.bytesPerLine = stride;
        view.format = QImage::Format_RGB888;
    }
    // The newest frame stays out of the pool until a newer one replaces it.
    ArvBuffer* previous = held_;
    held_ = buffer;
    if (previous)
        giveBack(previous);
    frame_.hold(view);
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
    return frame_.size();
}

QImage::Format GenICamDriver::frameFormat() const
{
    return frame_.format();
}

// ---- files ----

int GenICamDriver::SaveToFile(int cam, const QString& path)
{
    if (const int s = checkOpen(cam))
        return s;
    return frame_.save(path);
}

int GenICamDriver::GrabFrame(int cam, QImage& frame)
{
    if (const int s = checkOpen(cam))
        return s;
    return frame_.copy(frame);
}

int GenICamDriver::SaveAvi(int cam, const QString& path, int a, int seconds)
{
    if (const int s = checkOpen(cam))
        return s;
    if (!started_)
        return kNoFrame;
    GError* error = nullptr;
    const double rate = arv_camera_get_frame_rate(camera_, &error);
    const bool rateKnown = !AravisCalls::failed(error, log_) && rate > 0;
    // The file takes the size and pixels of the frames the camera sends now.
    return frame_.record(path, rateKnown ? rate : 30.0, seconds);
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
