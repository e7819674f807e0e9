#include "camera/sim/SimCamera.h"

#include "media/FrameFile.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

namespace tavix {

namespace {

struct ModeSpec {
    int width;
    int height;
    double fps;  // at 48 MHz
};

// Resolution index -> size and frame rate.
constexpr ModeSpec kModes[] = {
    {320, 240, 120},  {640, 480, 90},   {752, 480, 85},   {800, 600, 75},
    {1024, 768, 60},  {1280, 1024, 45}, {1600, 1200, 40}, {2048, 1536, 35},
    {2592, 1944, 30}, {3840, 2748, 15}, {1920, 1200, 38},
};

bool knownMode(std::int32_t mode)
{
    return mode >= 0 && mode < static_cast<std::int32_t>(std::size(kModes));
}

struct ParamSpec {
    int type;
    bool hasAuto;
    bool autoDefault;
    std::int32_t def;
    std::int32_t min;
    std::int32_t max;
};

constexpr ParamSpec kParams[] = {
    {1, false, false, 0, -64, 64},     {2, false, false, 32, 0, 64},    {3, false, false, 64, 16, 255},
    {4, false, false, 0, 0, 1},        {5, false, false, 0, 0, 1},      {6, false, false, 0, 0, 1},
    {7, true, false, 960, 1, 50000},   {8, false, false, 128, 16, 240}, {9, false, false, 64, 0, 255},
    {10, false, false, 64, 0, 255},    {11, false, false, 64, 0, 255},  {12, true, true, 4, 0, 64},
    {13, false, false, 32, 32, 255},   {14, false, false, 1, 0, 1},     {15, false, false, 48, 12, 96},
    {19, false, false, 64, 0, 128},    {24, false, false, 0, 0, 1},     {43, false, false, 0, 0, 1},
    {106, false, false, 0, -64, 64},   {107, false, false, 0, -64, 64}, {108, false, false, 0, -64, 64},
    {109, false, false, 0, -180, 180}, {110, false, false, 0, 0, 1},    {111, false, false, 1, 0, 1},
    {115, false, false, 0, 0, 1},      {117, false, false, 1, 0, 1},    {147, false, false, 30, 1, 30},
};

const ParamSpec* specOf(int type)
{
    for (const ParamSpec& p : kParams)
        if (p.type == type)
            return &p;
    return nullptr;
}

constexpr int kWhiteBalance = 6;
constexpr int kExposure = 7;
constexpr int kBlackLevel = 12;
constexpr int kGain = 13;
constexpr int kClock = 15;
constexpr int kAviWriting = 24;
constexpr int kFrameRate = 147;

qsizetype ringStride(QSize size)
{
    return (static_cast<qsizetype>(size.width()) * 3 + 3) & ~qsizetype(3);
}

QString argText()
{
    return {};
}

template <typename T, typename... Rest>
QString argText(const T& first, const Rest&... rest)
{
    QString text;
    if constexpr (std::is_same_v<T, QString>)
        text = first;
    else
        text = QString::number(first);
    if constexpr (sizeof...(rest) > 0)
        text += QLatin1Char(',') + argText(rest...);
    return text;
}

}  // namespace

SimCamera::SimCamera() : SimCamera(Options{}, nullptr)
{
}

SimCamera::SimCamera(Clock* clock) : SimCamera(Options{}, clock)
{
}

SimCamera::SimCamera(Options options, Clock* clock) : options_(std::move(options)), clock_(clock)
{
    if (!clock_) {
        ownClock_ = std::make_unique<SystemClock>();
        clock_ = ownClock_.get();
    }
    auto& modes = options_.modes;
    modes.erase(std::remove_if(modes.begin(), modes.end(), [](std::int32_t m) { return !knownMode(m); }),
                modes.end());
    if (modes.empty())
        modes.push_back(5);
    if (std::find(modes.begin(), modes.end(), options_.defaultMode) == modes.end())
        options_.defaultMode = modes.front();
    mode_ = options_.defaultMode;
    noise_ = options_.noise;
    for (const ParamSpec& p : kParams)
        params_[p.type] = Param{p.def, p.autoDefault};
    params_[kFrameRate].value = static_cast<std::int32_t>(modeFrameRate(mode_));
    autoExposureRaw_ = params_[kExposure].value;
}

SimCamera::~SimCamera()
{
    stopThread();
}

// ---- ground truth ----

QSize SimCamera::modeSize(std::int32_t mode)
{
    return knownMode(mode) ? QSize(kModes[mode].width, kModes[mode].height) : QSize(0, 0);
}

double SimCamera::micrometresPerPixel(std::int32_t mode)
{
    return knownMode(mode) ? SimScene::micrometresPerPixel(modeSize(mode)) : 0.0;
}

double SimCamera::modeFrameRate(std::int32_t mode)
{
    return knownMode(mode) ? kModes[mode].fps : 0.0;
}

// ---- bookkeeping ----

template <typename... Args>
std::optional<int> SimCamera::enterLocked(const char* name, int type, Args... args)
{
    const QString op = QString::fromLatin1(name);
    if (recordCalls_)
        calls_.append(op + QLatin1Char('(') + argText(args...) + QLatin1Char(')'));
    if (type >= 0) {
        const auto it = faults_.failWith.find(op + QLatin1Char(':') + QString::number(type));
        if (it != faults_.failWith.end())
            return it->second;
    }
    const auto it = faults_.failWith.find(op);
    if (it != faults_.failWith.end())
        return it->second;
    return std::nullopt;
}

int SimCamera::checkOpenLocked(int cam) const
{
    if (!camOk(cam))
        return kBadCamera;
    return open_ ? 0 : kNotOpen;
}

bool SimCamera::knownType(int type) const
{
    return specOf(type) != nullptr;
}

CamParamRange SimCamera::rangeLocked(int type) const
{
    CamParamRange r;
    const ParamSpec* p = specOf(type);
    if (!p)
        return r;
    r.enabled = 1;
    r.autoMode = p->hasAuto ? 1 : 0;
    r.third = 1;  // the step
    r.defaultValue = p->def;
    r.minimum = p->min;
    r.maximum = p->max;
    if (type == kGain && options_.gainReportsAuto)
        r.autoMode = 1;
    if (type == kClock && options_.frameRateInsteadOfClock)
        r.enabled = 0;
    if (type == kFrameRate) {
        r.enabled = options_.frameRateInsteadOfClock ? 1 : 0;
        r.maximum = r.defaultValue = static_cast<std::int32_t>(modeFrameRate(mode_));
    }
    return r;
}

std::int32_t SimCamera::exposureRawLocked() const
{
    return params_.at(kExposure).autoOn ? autoExposureRaw_ : params_.at(kExposure).value;
}

int SimCamera::clockMHzLocked() const
{
    return options_.frameRateInsteadOfClock ? kDefaultClockMHz : params_.at(kClock).value;
}

double SimCamera::exposureMsLocked() const
{
    return static_cast<double>(exposureRawLocked()) / clockMHzLocked();
}

double SimCamera::framePeriodMsLocked() const
{
    double fps = modeFrameRate(mode_);
    if (options_.frameRateInsteadOfClock)
        fps = std::min<double>(fps, params_.at(kFrameRate).value);
    else
        fps = fps * clockMHzLocked() / kDefaultClockMHz;
    return std::max(1000.0 / fps, exposureMsLocked());
}

SimLook SimCamera::lookLocked() const
{
    const auto v = [this](int type) { return params_.at(type).value; };
    SimLook l;
    l.exposureMs = exposureMsLocked();
    l.gain = v(13);
    l.blackLevel = params_.at(kBlackLevel).autoOn ? specOf(kBlackLevel)->def : v(kBlackLevel);
    l.brightness = v(1);
    l.contrast = v(2);
    l.gamma = v(3);
    l.gammaOn = v(111) != 0;
    l.rgbGain = {v(9), v(10), v(11)};
    l.rgbOffset = {v(106), v(107), v(108)};
    l.flipV = v(4) != 0;
    l.flipH = v(5) != 0;
    l.colour = v(14) != 0;
    l.saturation = v(19);
    l.hue = v(109);
    l.colourCorrection = v(110) != 0;
    l.colourProcessing = v(117) != 0;
    l.tnr = v(115) != 0;
    l.noise = noise_;
    return l;
}

std::array<std::int32_t, 2> SimCamera::whiteBalanceTargetLocked() const
{
    // Red and blue gains that make the lamp grey, green kept where it is.
    const QColor lamp = SimScene::lampColour();
    const double green = params_.at(10).value;
    return {std::clamp(static_cast<std::int32_t>(std::lround(green * lamp.green() / lamp.red())), 0, 255),
            std::clamp(static_cast<std::int32_t>(std::lround(green * lamp.green() / lamp.blue())), 0, 255)};
}

void SimCamera::stepWhiteBalanceLocked()
{
    if (!whiteBalanceRunning_ || faults_.whiteBalanceNeverEnds)
        return;
    // Each frame of the run takes the red and blue gains half way to grey, so the cast fades
    // over a few frames as on a real camera.
    const auto target = whiteBalanceTargetLocked();
    for (const int i : {0, 1}) {
        std::int32_t& gain = params_[i == 0 ? 9 : 11].value;
        gain += (target[static_cast<size_t>(i)] - gain) / 2;
    }
}

void SimCamera::settleWhiteBalanceLocked()
{
    if (!whiteBalanceRunning_ || faults_.whiteBalanceNeverEnds)
        return;
    if (clock_->tickMs() - whiteBalanceStart_ < kWhiteBalanceMs)
        return;
    whiteBalanceRunning_ = false;
    const auto target = whiteBalanceTargetLocked();
    params_[9].value = target[0];
    params_[11].value = target[1];
}

// ---- session ----

int SimCamera::GetVersion(int which, QString& version)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetVersion", -1, which))
        return *fail;
    version = faults_.version;
    return 0;
}

int SimCamera::Init()
{
    std::lock_guard lock(mutex_);
    const int count = enterLocked("Init", -1).value_or(faults_.cameraCount);
    initialised_ = count > 0;
    return count;
}

int SimCamera::GetName(int cam, QString& name)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetName", -1, cam))
        return *fail;
    if (!initialised_)
        return kFailed;
    if (!camOk(cam))
        return kBadCamera;
    name = faults_.name;
    return 0;
}

int SimCamera::Open(int cam)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("Open", -1, cam))
        return *fail;
    if (!initialised_)
        return kFailed;
    if (!camOk(cam))
        return kBadCamera;
    if (open_)
        return kAlreadyOpen;
    open_ = true;
    disconnected_ = false;
    return 0;
}

int SimCamera::IsOpen(int cam)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("IsOpen", -1, cam))
        return *fail;
    return camOk(cam) && open_ ? 0 : 1;
}

int SimCamera::Close(int cam)
{
    {
        std::lock_guard lock(mutex_);
        if (auto fail = enterLocked("Close", -1, cam))
            return *fail;
        if (const int s = checkOpenLocked(cam))
            return s;
    }
    stopThread();
    std::lock_guard lock(mutex_);
    open_ = false;
    disconnected_ = false;
    return 0;
}

int SimCamera::GetModeList(int cam, std::vector<std::int32_t>& modes)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetModeList", -1, cam))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    modes.clear();
    for (std::int32_t m : options_.modes) {
        if (faults_.omitDefaultMode && m == options_.defaultMode)
            continue;
        if (static_cast<int>(modes.size()) < kModeListCapacity)
            modes.push_back(m);
    }
    return 0;
}

int SimCamera::GetMode(int cam, std::int32_t& mode)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetMode", -1, cam))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    mode = mode_;
    return 0;
}

int SimCamera::SetMode(int cam, std::int32_t mode)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("SetMode", -1, cam, mode))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    if (started_)
        return kBusy;
    if (std::find(options_.modes.begin(), options_.modes.end(), mode) == options_.modes.end())
        return kNotSupported;
    mode_ = mode;
    auto& fps = params_[kFrameRate].value;
    fps = std::min(fps, static_cast<std::int32_t>(modeFrameRate(mode_)));
    return 0;
}

int SimCamera::SetDisplayMode(int cam, int mode, int a, int b, int c, int d)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("SetDisplayMode", -1, cam, mode, a, b, c, d))
        return *fail;
    return checkOpenLocked(cam);
}

bool SimCamera::connectionLost(int cam) const
{
    std::lock_guard lock(mutex_);
    return camOk(cam) && disconnected_;
}

int SimCamera::Start(int cam, quintptr window, FrameSink* sink, int a, int b)
{
    {
        std::lock_guard lock(mutex_);
        if (auto fail = enterLocked("Start", -1, cam, window, a, b))
            return *fail;
        if (const int s = checkOpenLocked(cam))
            return s;
        if (started_)
            return kBusy;
        if (disconnected_)
            return kDisconnected;
    }
    stopThread();  // a stream that ended by itself leaves its thread to join
    std::lock_guard lock(mutex_);
    sink_ = sink;
    sequence_ = 0;
    goodFrames_ = brokenFrames_ = 0;
    started_ = true;
    stopRequested_ = false;
    if (options_.threaded)
        thread_ = std::thread([this] { run(); });
    return 0;
}

int SimCamera::IsStarted(int cam)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("IsStarted", -1, cam))
        return *fail;
    return camOk(cam) && started_ ? 1 : 0;
}

int SimCamera::Stop(int cam)
{
    {
        std::lock_guard lock(mutex_);
        if (auto fail = enterLocked("Stop", -1, cam))
            return *fail;
        if (const int s = checkOpenLocked(cam))
            return s;
    }
    stopThread();
    return 0;
}

void SimCamera::stopThread()
{
    {
        std::lock_guard lock(mutex_);
        started_ = false;
        stopRequested_ = true;
    }
    wake_.notify_all();
    // Stopped from the sink, the loop ends by itself and is joined later.
    if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id())
        thread_.join();
    // No more frames: a recording ends with what it has.
    if (recorder_)
        recorder_->stop();
}

int SimCamera::GetGoodFrames(int cam, std::int32_t& count)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetGoodFrames", -1, cam))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    count = goodFrames_;
    return 0;
}

int SimCamera::GetBrokenFrames(int cam, std::int32_t& count)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetBrokenFrames", -1, cam))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    count = brokenFrames_;
    return 0;
}

// ---- frames ----

void SimCamera::run()
{
    using Ms = std::chrono::duration<double, std::milli>;
    auto next = std::chrono::steady_clock::now();
    for (;;) {
        const FrameFate fate = produceFrame();
        if (fate == FrameFate::NotStarted || fate == FrameFate::Disconnected)
            return;
        std::unique_lock lock(mutex_);
        const auto period =
            std::chrono::duration_cast<std::chrono::steady_clock::duration>(Ms(framePeriodMsLocked()));
        next += period;
        const auto now = std::chrono::steady_clock::now();
        if (next < now - period)
            next = now;  // far behind (a slow machine or a long exposure change): no burst to catch up
        if (wake_.wait_until(lock, next, [this] { return stopRequested_; }))
            return;
    }
}

SimCamera::FrameFate SimCamera::produceFrame()
{
    std::uint64_t sequence = 0;
    FrameSink* sink = nullptr;
    AviRecorder* recorder = nullptr;
    {
        std::lock_guard lock(mutex_);
        if (!started_)
            return FrameFate::NotStarted;
        if (faults_.disconnectAfter > 0 && sequence_ >= static_cast<std::uint64_t>(faults_.disconnectAfter)) {
            started_ = false;
            disconnected_ = true;
            return FrameFate::Disconnected;
        }
        sequence = ++sequence_;
        if (faults_.dropEvery > 0 && sequence % static_cast<std::uint64_t>(faults_.dropEvery) == 0)
            return FrameFate::Dropped;
        if (faults_.breakEvery > 0 && sequence % static_cast<std::uint64_t>(faults_.breakEvery) == 0) {
            ++brokenFrames_;
            return FrameFate::Broken;
        }
        sink = sink_;
        recorder = recorder_.get();
    }

    FrameView view;
    {
        std::lock_guard render(renderMutex_);
        const int index = renderLocked(sequence);
        std::lock_guard lock(mutex_);
        ++goodFrames_;
        delivering_ = index;
        view.bits = ring_[static_cast<size_t>(index)].data();
        view.width = ringSize_[static_cast<size_t>(index)].width();
        view.height = ringSize_[static_cast<size_t>(index)].height();
        view.bytesPerLine = ringStride(ringSize_[static_cast<size_t>(index)]);
        view.format = QImage::Format_RGB888;
        view.sequence = sequence;
        view.captureNs = clock_->tickMs() * 1000000;
    }
    if (sink)
        sink->frameReady(view);
    if (recorder)
        recorder->addFrame(view);
    std::lock_guard lock(mutex_);
    delivering_ = -1;
    return FrameFate::Delivered;
}

int SimCamera::renderLocked(std::uint64_t sequence)
{
    SimLook look;
    QSize size;
    int previous = -1;
    int index = 0;
    qint64 now = 0;
    bool autoExposure = false;
    int target = 0;
    {
        std::lock_guard lock(mutex_);
        settleWhiteBalanceLocked();
        stepWhiteBalanceLocked();
        look = lookLocked();
        size = modeSize(mode_);
        autoExposure = params_[kExposure].autoOn;
        target = params_[8].value;
        previous = newest_;
        while (index == newest_ || index == delivering_)
            ++index;
        now = clock_->tickMs();
    }

    auto& buffer = ring_[static_cast<size_t>(index)];
    const size_t bytes = static_cast<size_t>(ringStride(size) * size.height());
    if (buffer.size() != bytes)
        buffer.assign(bytes, 0);
    ringSize_[static_cast<size_t>(index)] = size;
    ringSequence_[static_cast<size_t>(index)] = sequence;

    pipeline_.setSize(size);
    pipeline_.setLook(look);
    const bool blend = previous >= 0 && ringSize_[static_cast<size_t>(previous)] == size;
    pipeline_.compose(buffer.data(), ringStride(size),
                      blend ? ring_[static_cast<size_t>(previous)].data() : nullptr,
                      SimScene::particleCentre(now), static_cast<std::uint32_t>(rng_()));

    // Automatic exposure steers the still scene's mean grey towards the target.
    double mean = 0;
    if (autoExposure)
        mean = pipeline_.meanLevel();

    std::lock_guard lock(mutex_);
    newest_ = index;
    if (autoExposure && params_[kExposure].autoOn && std::abs(mean - target) > 3.0) {
        const double ratio = std::clamp(target / std::max(mean, 1.0), 0.5, 2.0);
        const ParamSpec* spec = specOf(kExposure);
        autoExposureRaw_ =
            std::clamp(static_cast<std::int32_t>(std::lround(autoExposureRaw_ * std::pow(ratio, 0.8))),
                       spec->min, spec->max);
    }
    return index;
}

QImage SimCamera::renderFrame()
{
    std::lock_guard render(renderMutex_);
    std::uint64_t sequence;
    {
        std::lock_guard lock(mutex_);
        sequence = sequence_;
    }
    const int index = renderLocked(sequence);
    const QSize size = ringSize_[static_cast<size_t>(index)];
    return QImage(ring_[static_cast<size_t>(index)].data(), size.width(), size.height(), ringStride(size),
                  QImage::Format_RGB888)
        .copy();
}

QImage SimCamera::latestFrame() const
{
    std::lock_guard render(renderMutex_);
    int index;
    {
        std::lock_guard lock(mutex_);
        index = newest_;
    }
    if (index < 0)
        return {};
    const QSize size = ringSize_[static_cast<size_t>(index)];
    return QImage(ring_[static_cast<size_t>(index)].data(), size.width(), size.height(), ringStride(size),
                  QImage::Format_RGB888)
        .copy();
}

int SimCamera::SaveToFile(int cam, const QString& path)
{
    {
        std::lock_guard lock(mutex_);
        if (auto fail = enterLocked("SaveToFile", -1, cam, path))
            return *fail;
        if (const int s = checkOpenLocked(cam))
            return s;
    }
    std::lock_guard save(saveMutex_);
    {
        // Encoding holds the renderer off the buffer for a few milliseconds.
        std::lock_guard render(renderMutex_);
        int index;
        {
            std::lock_guard lock(mutex_);
            index = newest_;
        }
        if (index < 0)
            return kNoFrame;
        const QSize size = ringSize_[static_cast<size_t>(index)];
        const QImage frame(ring_[static_cast<size_t>(index)].data(), size.width(), size.height(),
                           ringStride(size), QImage::Format_RGB888);
        if (!FrameFile::encode(frame, path, jpegQuality_, bmpBuffer_))
            return kNoFrame;
    }
    return FrameFile::store(path, bmpBuffer_) == 0 ? 0 : kWriteFailed;
}

int SimCamera::GrabFrame(int cam, QImage& frame)
{
    {
        std::lock_guard lock(mutex_);
        if (auto fail = enterLocked("GrabFrame", -1, cam))
            return *fail;
        if (const int s = checkOpenLocked(cam))
            return s;
    }
    std::lock_guard render(renderMutex_);
    int index;
    {
        std::lock_guard lock(mutex_);
        index = newest_;
    }
    if (index < 0)
        return kNoFrame;
    const QSize size = ringSize_[static_cast<size_t>(index)];
    if (frame.size() != size || frame.format() != QImage::Format_RGB888)
        frame = QImage(size, QImage::Format_RGB888);
    const uchar* bits = ring_[static_cast<size_t>(index)].data();
    const qsizetype rowBytes = qsizetype(size.width()) * 3;
    for (int y = 0; y < size.height(); ++y)
        std::memcpy(frame.scanLine(y), bits + y * ringStride(size), static_cast<size_t>(rowBytes));
    return 0;
}

void SimCamera::SetSaveQuality(int quality)
{
    jpegQuality_ = std::clamp(quality, 0, 100);
}

int SimCamera::SaveAvi(int cam, const QString& path, int a, int seconds)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("SaveAvi", -1, cam, path, a, seconds))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    if (!started_)
        return kNoFrame;
    if (!recorder_)
        recorder_ = std::make_unique<AviRecorder>();
    AviRecorder::Format format;
    format.size = modeSize(mode_);
    format.fps = 1000.0 / framePeriodMsLocked();
    return recorder_->start(path, format, seconds) ? 0 : kWriteFailed;
}

bool SimCamera::recordingStats(int cam, RecordingStats& stats)
{
    std::lock_guard lock(mutex_);
    if (!camOk(cam) || !recorder_)
        return false;
    stats = recorder_->stats();
    return true;
}

// ---- parameters ----

int SimCamera::SetCamParameter(int cam, int type, std::int32_t value)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("SetCamParameter", type, cam, type, value))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    const CamParamRange r = rangeLocked(type);
    if (!r.enabled)
        return kNotSupported;
    if (type == kWhiteBalance || type == kAviWriting)
        return kReadOnly;
    if (value < r.minimum || value > r.maximum)
        return kOutOfRange;
    params_[type].value = value;
    if (type == kExposure)
        autoExposureRaw_ = value;  // automatic exposure goes on from here
    return 0;
}

int SimCamera::GetCamParameter(int cam, int type, std::int32_t& value)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetCamParameter", type, cam, type))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    if (!rangeLocked(type).enabled)
        return kNotSupported;
    settleWhiteBalanceLocked();
    if (type == kWhiteBalance)
        value = whiteBalanceRunning_ ? 0 : 1;
    else if (type == kExposure)
        value = exposureRawLocked();
    else if (type == kAviWriting)
        value = recorder_ && (recorder_->busy() || faults_.recordingNeverEnds) ? 1 : 0;
    else
        value = params_[type].value;
    return 0;
}

int SimCamera::GetCamParameterRange(int cam, int type, CamParamRange& range)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetCamParameterRange", type, cam, type))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    if (!knownType(type))
        return kNotSupported;
    range = rangeLocked(type);
    return 0;
}

int SimCamera::GetExposure(int cam, float& ms)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetExposure", -1, cam))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    ms = static_cast<float>(exposureMsLocked());
    return 0;
}

int SimCamera::GetParamAuto(int cam, int type, std::int32_t& flag)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("GetParamAuto", type, cam, type))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    if (!rangeLocked(type).autoMode)
        return kNotSupported;
    flag = params_[type].autoOn ? 1 : 0;
    return 0;
}

int SimCamera::SetParamAuto(int cam, int type, std::int32_t flag)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("SetParamAuto", type, cam, type, flag))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    if (!rangeLocked(type).autoMode)
        return kNotSupported;
    if (flag != 0 && flag != 1)
        return kOutOfRange;
    Param& p = params_[type];
    if (type == kExposure && p.autoOn != (flag == 1)) {
        if (flag == 1)
            autoExposureRaw_ = p.value;
        else
            p.value = autoExposureRaw_;  // the exposure stays where automatic left it
    }
    p.autoOn = flag == 1;
    return 0;
}

int SimCamera::SetParamAutoDef(int cam, int type)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("SetParamAutoDef", type, cam, type))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    const ParamSpec* spec = specOf(type);
    if (!spec || !rangeLocked(type).autoMode)
        return kNotSupported;
    Param& p = params_[type];
    if (type == kExposure && p.autoOn && !spec->autoDefault)
        p.value = autoExposureRaw_;
    p.autoOn = spec->autoDefault;
    return 0;
}

int SimCamera::SetParamOnePush(int cam, int type)
{
    std::lock_guard lock(mutex_);
    if (auto fail = enterLocked("SetParamOnePush", type, cam, type))
        return *fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    if (type != kWhiteBalance)
        return kNotSupported;
    whiteBalanceRunning_ = true;
    whiteBalanceStart_ = clock_->tickMs();
    return 0;
}

// ---- test hooks ----

void SimCamera::setFaults(const Faults& faults)
{
    std::lock_guard lock(mutex_);
    faults_ = faults;
}

SimCamera::Faults SimCamera::faults() const
{
    std::lock_guard lock(mutex_);
    return faults_;
}

void SimCamera::failCall(const QString& name, int status)
{
    std::lock_guard lock(mutex_);
    faults_.failWith[name] = status;
}

void SimCamera::setNoise(bool on)
{
    std::lock_guard lock(mutex_);
    noise_ = on;
}

void SimCamera::setRecordCalls(bool on)
{
    std::lock_guard lock(mutex_);
    recordCalls_ = on;
}

QStringList SimCamera::calls() const
{
    std::lock_guard lock(mutex_);
    return calls_;
}

void SimCamera::clearCalls()
{
    std::lock_guard lock(mutex_);
    calls_.clear();
}

double SimCamera::framePeriodMs() const
{
    std::lock_guard lock(mutex_);
    return framePeriodMsLocked();
}

SimLook SimCamera::look() const
{
    std::lock_guard lock(mutex_);
    return lookLocked();
}

}  // namespace tavix
