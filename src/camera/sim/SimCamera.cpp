#include "camera/sim/SimCamera.h"

#include "media/FrameFile.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tavix {

namespace {

constexpr int kAviWriting = SimParameters::kAviWriting;

}  // namespace

SimCamera::SimCamera() : SimCamera(Options{}, nullptr)
{
}

SimCamera::SimCamera(Clock* clock) : SimCamera(Options{}, clock)
{
}

SimCamera::SimCamera(Options options, Clock* clock)
    : options_(std::move(options)),
      clock_(clock),
      modes_(options_.modes, options_.defaultMode),
      mode_(modes_.defaultMode()),
      params_(options_.frameRateInsteadOfClock, options_.gainReportsAuto, modeFrameRate(mode_))
{
    if (!clock_) {
        ownClock_ = std::make_unique<SystemClock>();
        clock_ = ownClock_.get();
    }
    noise_ = options_.noise;
    for (const auto& [type, range] : options_.ranges)
        params_.overrideRange(type, range);
}

SimCamera::~SimCamera()
{
    stopThread();
}

double SimCamera::micrometresPerPixel(std::int32_t mode)
{
    return SimModes::known(mode) ? SimScene::micrometresPerPixel(modeSize(mode)) : 0.0;
}

// ---- bookkeeping ----

template <typename... Args>
std::optional<int> SimCamera::enterLocked(const char* name, int type, Args... args)
{
    return calls_.enter(faults_.failWith, name, type, args...);
}

template <typename... Args>
std::optional<int> SimCamera::enterOpenLocked(const char* name, int type, int cam, Args... args)
{
    if (auto fail = enterLocked(name, type, cam, args...))
        return fail;
    if (const int s = checkOpenLocked(cam))
        return s;
    return std::nullopt;
}

int SimCamera::checkOpenLocked(int cam) const
{
    if (!camOk(cam))
        return kBadCamera;
    return open_ ? 0 : kNotOpen;
}

void SimCamera::settleWhiteBalanceLocked()
{
    if (!faults_.whiteBalanceNeverEnds)
        params_.settleWhiteBalance(clock_->tickMs());
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

QString SimCamera::cameraId() const
{
    std::lock_guard lock(mutex_);
    return faults_.name;
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
        if (auto s = enterOpenLocked("Close", -1, cam))
            return *s;
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
    if (auto s = enterOpenLocked("GetModeList", -1, cam))
        return *s;
    modes = modes_.list(kModeListCapacity, faults_.omitDefaultMode);
    return 0;
}

int SimCamera::GetMode(int cam, std::int32_t& mode)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("GetMode", -1, cam))
        return *s;
    mode = mode_;
    return 0;
}

int SimCamera::SetMode(int cam, std::int32_t mode)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("SetMode", -1, cam, mode))
        return *s;
    if (started_)
        return kBusy;
    if (!modes_.offers(mode))
        return kNotSupported;
    mode_ = mode;
    params_.setModeFrameRate(modeFrameRate(mode_));
    return 0;
}

int SimCamera::SetDisplayMode(int cam, int mode, int a, int b, int c, int d)
{
    std::lock_guard lock(mutex_);
    return enterOpenLocked("SetDisplayMode", -1, cam, mode, a, b, c, d).value_or(0);
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
        if (auto s = enterOpenLocked("Start", -1, cam, window, a, b))
            return *s;
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
        if (auto s = enterOpenLocked("Stop", -1, cam))
            return *s;
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
    if (auto s = enterOpenLocked("GetGoodFrames", -1, cam))
        return *s;
    count = goodFrames_;
    return 0;
}

int SimCamera::GetBrokenFrames(int cam, std::int32_t& count)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("GetBrokenFrames", -1, cam))
        return *s;
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
            std::chrono::duration_cast<std::chrono::steady_clock::duration>(Ms(params_.framePeriodMs()));
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
            // No more frames: a running recording ends with those it has.
            if (recorder_)
                recorder_->stop();
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
        const int slot = renderLocked(sequence);
        std::lock_guard lock(mutex_);
        ++goodFrames_;
        delivering_ = slot;
        view = frames_.view(slot);
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
    int slot = 0;
    qint64 now = 0;
    bool autoExposure = false;
    int target = 0;
    {
        std::lock_guard lock(mutex_);
        settleWhiteBalanceLocked();
        if (!faults_.whiteBalanceNeverEnds)
            params_.stepWhiteBalance();
        look = lookLocked();
        size = modeSize(mode_);
        autoExposure = params_.autoExposure();
        target = params_.exposureTarget();
        previous = newest_;
        slot = SimFrameRing::freeSlot(newest_, delivering_);
        now = clock_->tickMs();
    }
    frames_.render(slot, previous, size, look, sequence, now);

    // Automatic exposure steers the still scene's mean grey towards the target.
    double mean = 0;
    if (autoExposure)
        mean = frames_.meanLevel();

    std::lock_guard lock(mutex_);
    newest_ = slot;
    if (autoExposure)
        params_.steerExposure(mean, target);
    return slot;
}

int SimCamera::newestSlot() const
{
    std::lock_guard lock(mutex_);
    return newest_;
}

QImage SimCamera::renderFrame()
{
    std::lock_guard render(renderMutex_);
    std::uint64_t sequence;
    {
        std::lock_guard lock(mutex_);
        sequence = sequence_;
    }
    return frames_.image(renderLocked(sequence)).copy();
}

QImage SimCamera::latestFrame() const
{
    std::lock_guard render(renderMutex_);
    const int slot = newestSlot();
    return slot < 0 ? QImage() : frames_.image(slot).copy();
}

int SimCamera::SaveToFile(int cam, const QString& path)
{
    {
        std::lock_guard lock(mutex_);
        if (auto s = enterOpenLocked("SaveToFile", -1, cam, path))
            return *s;
        // The newest frame is the last one before the loss: no new picture to give.
        if (disconnected_)
            return kDisconnected;
    }
    std::lock_guard save(saveMutex_);
    {
        // Encoding holds the renderer off the buffer for a few milliseconds.
        std::lock_guard render(renderMutex_);
        const int slot = newestSlot();
        if (slot < 0 || !FrameFile::encode(frames_.image(slot), path, jpegQuality_, bmpBuffer_))
            return kNoFrame;
    }
    return FrameFile::store(path, bmpBuffer_) == 0 ? 0 : kWriteFailed;
}

int SimCamera::GrabFrame(int cam, QImage& frame)
{
    return readNewest("GrabFrame", cam, [&](int slot) { frames_.copyTo(slot, frame); });
}

int SimCamera::readFrame(int cam, const FrameReader& read)
{
    return readNewest("readFrame", cam, [&](int slot) { read(frames_.view(slot)); });
}

int SimCamera::readNewest(const char* call, int cam, const std::function<void(int slot)>& use)
{
    {
        std::lock_guard lock(mutex_);
        if (auto s = enterOpenLocked(call, -1, cam))
            return *s;
        if (disconnected_)
            return kDisconnected;
    }
    // The renderer waits meanwhile: it never writes the slot being read.
    std::lock_guard render(renderMutex_);
    const int slot = newestSlot();
    if (slot < 0)
        return kNoFrame;
    use(slot);
    return 0;
}

void SimCamera::SetSaveQuality(int quality)
{
    jpegQuality_ = std::clamp(quality, 0, 100);
}

int SimCamera::SaveAvi(int cam, const QString& path, int a, int seconds)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("SaveAvi", -1, cam, path, a, seconds))
        return *s;
    if (!started_)
        return kNoFrame;
    if (!recorder_)
        recorder_ = std::make_unique<AviRecorder>();
    AviRecorder::Format format;
    format.size = modeSize(mode_);
    format.fps = 1000.0 / params_.framePeriodMs();
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
    if (auto s = enterOpenLocked("SetCamParameter", type, cam, type, value))
        return *s;
    return params_.set(type, value);
}

int SimCamera::GetCamParameter(int cam, int type, std::int32_t& value)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("GetCamParameter", type, cam, type))
        return *s;
    if (!params_.range(type).enabled)
        return kNotSupported;
    settleWhiteBalanceLocked();
    if (type == kAviWriting)
        value = recorder_ && (recorder_->busy() || faults_.recordingNeverEnds) ? 1 : 0;
    else
        value = params_.value(type);
    return 0;
}

int SimCamera::GetCamParameterRange(int cam, int type, CamParamRange& range)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("GetCamParameterRange", type, cam, type))
        return *s;
    if (!SimParameters::known(type))
        return kNotSupported;
    range = params_.range(type);
    return 0;
}

int SimCamera::GetExposure(int cam, float& ms)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("GetExposure", -1, cam))
        return *s;
    ms = static_cast<float>(params_.exposureMs());
    return 0;
}

int SimCamera::GetParamAuto(int cam, int type, std::int32_t& flag)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("GetParamAuto", type, cam, type))
        return *s;
    return params_.getAuto(type, flag);
}

int SimCamera::SetParamAuto(int cam, int type, std::int32_t flag)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("SetParamAuto", type, cam, type, flag))
        return *s;
    return params_.setAuto(type, flag);
}

int SimCamera::SetParamAutoDef(int cam, int type)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("SetParamAutoDef", type, cam, type))
        return *s;
    return params_.setAutoDefault(type);
}

int SimCamera::SetParamOnePush(int cam, int type)
{
    std::lock_guard lock(mutex_);
    if (auto s = enterOpenLocked("SetParamOnePush", type, cam, type))
        return *s;
    return params_.startOnePush(type, clock_->tickMs());
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
    calls_.setRecording(on);
}

QStringList SimCamera::calls() const
{
    std::lock_guard lock(mutex_);
    return calls_.calls();
}

void SimCamera::clearCalls()
{
    std::lock_guard lock(mutex_);
    calls_.clear();
}

double SimCamera::framePeriodMs() const
{
    std::lock_guard lock(mutex_);
    return params_.framePeriodMs();
}

SimLook SimCamera::look() const
{
    std::lock_guard lock(mutex_);
    return lookLocked();
}

SimLook SimCamera::lookLocked() const
{
    SimLook l = params_.look();
    l.noise = noise_;
    return l;
}

}  // namespace tavix
