#pragma once

#include "camera/CameraDriver.h"
#include "camera/sim/SimCallLog.h"
#include "camera/sim/SimFrameRing.h"
#include "camera/sim/SimImagePipeline.h"
#include "camera/sim/SimModes.h"
#include "camera/sim/SimParameters.h"
#include "camera/sim/SimScene.h"
#include "common/Clock.h"
#include "media/AviRecorder.h"

#include <QByteArray>
#include <QSize>
#include <QStringList>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace tavix {

// The built-in simulated camera: a measuring microscope looking at a slide of
// known geometry (see SimScene for the features and the micrometres per pixel
// of every resolution), with a particle drifting across so that live is
// visibly live. Its parameters change the picture as a real camera's would.
// It can be told to fail in many ways, for tests.
//
// Use as the program uses a camera: Init(), Open(0), then the rest. Status
// codes: 0 success; -24 Open of an open camera (the camera stays open) and
// the negative codes below. IsOpen returns 0 while open, else 1; IsStarted 1
// while streaming, else 0.
//
// Parameters (type: range, default; "auto" where it has an automatic mode):
//   1 brightness -64..64, 0 (added levels)   2 contrast 0..64, 32 (32 = x1)
//   3 gamma 16..255, 64 (out = in^(value/64) while 111 is on)
//   4 vertical flip, 5 horizontal flip 0..1, 0
//   6 white balance one-push: reads 0 while running, 1 otherwise; started by
//     SetParamOnePush(6), it ends 300 ms later (on the camera's clock) with
//     9 and 11 set so that the lamp light comes out grey; every frame made
//     meanwhile takes them half way there
//   7 exposure 1..50000, 960, auto; one unit is 1000 clock cycles, so
//     milliseconds = value / clock MHz (20 ms at the default 48 MHz)
//   8 exposure target (mean grey level of automatic exposure) 16..240, 128
//   9-11 red/green/blue gain 0..255, 64 (64 = x1)
//   12 black level 0..64, 4, auto (auto holds the camera's own level, 4)
//   13 gain 32..255, 32 (32 = x1); with gainReportsAuto its range reports an
//      automatic mode (off by default) that leaves the gain where it is
//   14 colour enable 0..1, 1 (0: grey)
//   15 clock 12..96 MHz, 48 (absent with frameRateInsteadOfClock)
//   19 saturation 0..128, 64   24 AVI still being written (1 while writing), read-only
//   43 0..1, 0   106-108 red/green/blue offset -64..64, 0   109 hue -180..180, 0
//   110 colour correction 0..1, 0   111 enable gamma 0..1, 1
//   115 temporal noise reduction 0..1, 0   117 colour processing 0..1, 1
//   147 acquisition frame rate 1..(the mode's rate at 48 MHz), that rate
//       (only with frameRateInsteadOfClock; the clock then stays at 48 MHz)
//   160 white-balance temperature 2800..6500 K, 4600, auto (off)
//   161 focus 0..255, 0, auto (off)   162 power-line frequency 0..2, 1
//   163 dynamic frame rate 0..1, 0 (these four are stored, the picture keeps)
// Values outside the range are refused (-4), unknown types too (-3).
// The frame period is the longer of the exposure and 1 / frame rate, the
// frame rate being the mode's rate at 48 MHz scaled by clock / 48 (or
// parameter 147).
class SimCamera : public CameraDriver {
public:
    static constexpr int kAlreadyOpen = -24;
    static constexpr int kFailed = -1;
    static constexpr int kNotSupported = -3;
    static constexpr int kOutOfRange = -4;
    static constexpr int kNotOpen = -5;
    static constexpr int kBusy = -6;  // streaming, or started twice
    static constexpr int kNoFrame = -7;
    static constexpr int kWriteFailed = -8;
    static constexpr int kBadCamera = -9;
    static constexpr int kDisconnected = -10;
    static constexpr int kReadOnly = -11;

    static constexpr int kWhiteBalanceMs = SimParameters::kWhiteBalanceMs;
    static constexpr int kDefaultClockMHz = SimParameters::kDefaultClockMHz;

    struct Options {
        std::vector<std::int32_t> modes{1, 3, 5, 8};  // resolution indices 0..10
        std::int32_t defaultMode = 5;
        bool frameRateInsteadOfClock = false;  // offer 147 instead of 15
        // The gain's range reports an automatic mode, as on cameras whose gain
        // follows their automatic exposure.
        bool gainReportsAuto = false;
        // Parameters whose range the camera reports as given instead of its
        // own (enabled 0: the camera lacks it).
        std::map<int, CamParamRange> ranges;
        bool noise = true;
        // False: Start() starts no thread and frames are made by produceFrame().
        bool threaded = true;
    };

    struct Faults {
        // Calls that fail: operation name ("Open", "SetMode", "SaveToFile", ...),
        // or name:type for one parameter ("SetCamParameter:7"), to the status
        // they return instead of doing anything. For Init the status is the
        // camera count, for IsOpen and IsStarted the answer.
        std::map<QString, int> failWith;
        int cameraCount = 1;
        QString name = QStringLiteral("SimCam 1296");
        QString version = QStringLiteral("1.0.0.0");
        int dropEvery = 0;             // every Nth frame is lost: not delivered, not counted
        int breakEvery = 0;            // every Nth frame is broken: counted as broken, not delivered
        int disconnectAfter = 0;       // after N frames the stream ends as if unplugged
        bool omitDefaultMode = false;  // the mode list lacks the camera's default mode
        bool whiteBalanceNeverEnds = false;
        bool recordingNeverEnds = false;  // parameter 24 stays 1 once a recording was started
    };

    enum class FrameFate { Delivered, Dropped, Broken, NotStarted, Disconnected };

    // The clock (not owned) times the white balance and moves the particle;
    // null: the system clock.
    SimCamera();
    explicit SimCamera(Clock* clock);
    explicit SimCamera(Options options, Clock* clock = nullptr);
    ~SimCamera() override;
    SimCamera(const SimCamera&) = delete;
    SimCamera& operator=(const SimCamera&) = delete;

    QString driverName() const override { return QStringLiteral("sim"); }
    int GetVersion(int which, QString& version) override;
    int Init() override;
    int GetName(int cam, QString& name) override;
    int Open(int cam) override;
    int IsOpen(int cam) override;
    int Close(int cam) override;
    int GetModeList(int cam, std::vector<std::int32_t>& modes) override;
    int GetMode(int cam, std::int32_t& mode) override;
    int SetMode(int cam, std::int32_t mode) override;
    // The same field at every mode (SimModes::geometry).
    std::optional<ModeGeometry> modeGeometry(std::int32_t mode) const override
    {
        return SimModes::geometry(mode);
    }
    // The camera's name.
    QString cameraId() const override;
    int SetDisplayMode(int cam, int mode, int a, int b, int c, int d) override;
    int Start(int cam, quintptr window, FrameSink* sink, int a, int b) override;
    int IsStarted(int cam) override;
    int Stop(int cam) override;
    bool connectionLost(int cam) const override;
    int GetGoodFrames(int cam, std::int32_t& count) override;
    int GetBrokenFrames(int cam, std::int32_t& count) override;
    // Writes the newest frame as a 24-bit bitmap, complete when it returns.
    int SaveToFile(int cam, const QString& path) override;
    void SetSaveQuality(int quality) override;
    bool canGrabFrame() const override { return true; }
    int GrabFrame(int cam, QImage& frame) override;
    int readFrame(int cam, const FrameReader& read) override;
    // Records the stream through AviRecorder at the mode's size and the
    // camera's frame rate; kNoFrame when not streaming, kWriteFailed when the
    // file cannot be started. Stopping the camera completes the file early.
    int SaveAvi(int cam, const QString& path, int a, int seconds) override;
    bool recordingStats(int cam, RecordingStats& stats) override;
    int SetCamParameter(int cam, int type, std::int32_t value) override;
    int GetCamParameter(int cam, int type, std::int32_t& value) override;
    int GetCamParameterRange(int cam, int type, CamParamRange& range) override;
    int GetExposure(int cam, float& ms) override;
    int GetParamAuto(int cam, int type, std::int32_t& flag) override;
    int SetParamAuto(int cam, int type, std::int32_t flag) override;
    int SetParamAutoDef(int cam, int type) override;
    int SetParamOnePush(int cam, int type) override;

    // Ground truth for tests and the user guide: 0 x 0 and 0 for an unknown
    // mode, frame rates at 48 MHz.
    static QSize modeSize(std::int32_t mode) { return SimModes::size(mode); }
    static double micrometresPerPixel(std::int32_t mode);
    static double modeFrameRate(std::int32_t mode) { return SimModes::frameRate(mode); }
    static const SimScene::Geometry& scene() { return SimScene::geometry(); }

    // Test hooks.
    void setFaults(const Faults& faults);
    Faults faults() const;
    void failCall(const QString& name, int status);
    void setNoise(bool on);
    void setRecordCalls(bool on);
    QStringList calls() const;  // "SetCamParameter(0,43,1)", while recording
    void clearCalls();
    // Renders a frame now, streaming or not, makes it the newest and returns a copy.
    QImage renderFrame();
    // A copy of the newest frame; null before the first.
    QImage latestFrame() const;
    // One step of the stream as the thread would make it (use with threaded = false).
    FrameFate produceFrame();
    double framePeriodMs() const;
    SimLook look() const;

private:
    // Records the call and answers its scripted status, if any; `type` is the
    // parameter type of a parameter call, else -1.
    template <typename... Args>
    std::optional<int> enterLocked(const char* name, int type, Args... args);
    // The same, then the status of a camera index that is wrong or not open.
    template <typename... Args>
    std::optional<int> enterOpenLocked(const char* name, int type, int cam, Args... args);
    bool camOk(int cam) const { return cam >= 0 && cam < faults_.cameraCount; }
    int checkOpenLocked(int cam) const;
    SimLook lookLocked() const;
    void settleWhiteBalanceLocked();
    void stopThread();
    void run();
    // Renders the next frame into a free slot of the ring (render lock held)
    // and returns the slot.
    int renderLocked(std::uint64_t sequence);
    int newestSlot() const;
    // Checks the call as `call`, then gives `use` the newest slot, render lock
    // held: 0, or the call's status.
    int readNewest(const char* call, int cam, const std::function<void(int slot)>& use);

    Options options_;
    std::unique_ptr<SystemClock> ownClock_;
    Clock* clock_;

    // Camera state, guarded by mutex_.
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    Faults faults_;
    bool initialised_ = false;
    bool open_ = false;
    bool started_ = false;
    bool stopRequested_ = false;
    bool disconnected_ = false;
    bool noise_ = true;
    SimModes modes_;
    std::int32_t mode_ = 0;
    SimParameters params_;
    FrameSink* sink_ = nullptr;
    std::uint64_t sequence_ = 0;
    std::int32_t goodFrames_ = 0;
    std::int32_t brokenFrames_ = 0;
    int newest_ = -1;      // ring slot of the newest frame
    int delivering_ = -1;  // ring slot the sink is reading
    SimCallLog calls_;
    std::thread thread_;

    // Rendering, guarded by renderMutex_ (taken before mutex_, never after).
    mutable std::mutex renderMutex_;
    SimFrameRing frames_;

    // Made by the first recording and kept, so the stream can reach it without a lock.
    std::unique_ptr<AviRecorder> recorder_;

    std::mutex saveMutex_;  // one save at a time through the reused buffer
    QByteArray bmpBuffer_;  // the encoded file, bitmap or JPEG
    std::atomic<int> jpegQuality_{75};
};

}  // namespace tavix
