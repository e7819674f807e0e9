#pragma once

#include "camera/CameraChoice.h"
#include "camera/CameraDriver.h"
#include "camera/HeldFrame.h"
#include "camera/genicam/FrameRateMeter.h"
#include "camera/genicam/GenICamDiscovery.h"
#include "camera/genicam/GenICamFeatures.h"
#include "camera/genicam/PixelConversion.h"
#include "camera/genicam/SensorModes.h"

#include <QSize>
#include <QString>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

// Aravis's types, kept out of this header so that its users need not see GLib.
struct _ArvCamera;
struct _ArvStream;
struct _ArvBuffer;

namespace tavix {

// GenICam cameras (USB3 Vision, GigE Vision) through Aravis. Init lists the
// cameras Aravis finds, the one with the wanted serial number first; Open(n)
// opens the n-th. Init does not wait for GigE discovery (GenICamDiscovery)
// unless a wanted camera is not on USB or setGigEWait asks it to. Frames arrive on Aravis's
// stream thread in a pool of reused buffers; that thread only queues them.
// The driver's own worker thread hands each to the sink as the camera sent
// it (Bayer as raw cells; deeper samples cut to 8 bits first, PixelConversion)
// and to a running recording, and gives the buffer back; the newest frame is
// held back from the pool so that SaveToFile can write it. A Bayer frame is
// demosaiced only when a freeze, a file or a recording needs it. When the
// worker falls behind it skips to the newest frame unless a recording needs
// every one.
//
// Modes are the whole sensor at each binning, then the program's resolutions
// that fit it, cut by binning and a centred region (SensorModes); modeGeometry
// tells the binning and region of each (as set for the current mode, as they
// will be set for the others). A mode the camera refuses is logged and the
// previous one stays. Parameters map onto the standard GenICam
// features where the camera has them (the others report a range that is not enabled):
//   7 exposure in microseconds (ExposureTime), automatic with ExposureAuto
//   8 exposure target (AutoTargetBrightness, TargetBrightness)
//   13 gain (Gain in tenths of a dB, or GainRaw as it stands); its GainAuto
//     has no box in the settings dialog, so it is reported only while on
//   12 black level (BlackLevel, BlackLevelRaw), automatic with BlackLevelAuto
//   3 gamma x 64 (Gamma), 111 its enable (GammaEnable)
//   5 ReverseX, 4 ReverseY
//   9-11 red/green/blue BalanceRatio x 64 (BalanceWhiteAuto reported as
//     their automatic mode only while on), 6 BalanceWhiteAuto Once: reads 0
//     while the camera balances, 1 when done
//   147 AcquisitionFrameRate in fps (enabling AcquisitionFrameRateEnable)
//   24 AVI being written: always 0
// The default of a parameter is the camera's factory setting (its "Default"
// user set; the value at open on a camera without user sets), that of an
// automatic mode with a box in the dialog likewise; the modes without a box
// default to off.
// A value written while its automatic mode is on is left to that mode.
//
// A camera that drops off the bus (control lost) is logged; the stream ends,
// IsStarted answers 0 and the newest frame stays for SaveToFile.
class GenICamDriver : public CameraDriver {
public:
    static constexpr int kFailed = -1;
    static constexpr int kNotSupported = -2;  // also what the program accepts for parameter 43
    static constexpr int kOutOfRange = -4;
    static constexpr int kNotOpen = -5;
    static constexpr int kBusy = -6;
    static constexpr int kNoFrame = HeldFrame::kNoFrame;
    static constexpr int kWriteFailed = HeldFrame::kWriteFailed;
    static constexpr int kBadCamera = -9;
    static constexpr int kDisconnected = -10;
    static constexpr int kAlreadyOpen = -24;

    static constexpr int kBufferCount = 16;

    using Log = std::function<void(const QString&)>;

    // Aravis's GigE discovery takes a second; a wait this long sees it through.
    static constexpr std::chrono::milliseconds kGigEDiscovery{1200};

    // `serial`: the camera to open, empty for the first one found.
    explicit GenICamDriver(Log log = {}, QString serial = {});
    ~GenICamDriver() override;
    GenICamDriver(const GenICamDriver&) = delete;
    GenICamDriver& operator=(const GenICamDriver&) = delete;

    // Aravis's built-in fake camera instead of the real buses (tests, bench).
    static void useFakeCameraOnly();
    // Back to the buses Aravis looks on by default.
    static void useRealCameras();
    // Every camera on the buses: driver "genicam", id the serial number, name
    // vendor and model, place the network address or the USB port. GigE
    // cameras are those of a discovery that ends within `gigeWait`, else of
    // the newest one.
    static std::vector<CameraChoice> listCameras(std::chrono::milliseconds gigeWait = kGigEDiscovery);

    // The serial number Init puts first (empty: the first camera found).
    void setWantedSerial(const QString& serial) { serial_ = serial; }
    QString wantedSerial() const { return serial_; }
    // How Open reaches the camera's factory settings (tests play the camera).
    void setFactoryLoader(GenICamFeatures::FactoryLoader loader)
    {
        features_.setFactoryLoader(std::move(loader));
    }
    // How long Init waits for GigE discovery when no wanted camera is on USB
    // (0 by default: a GigE camera then counts once its discovery has ended).
    void setGigEWait(std::chrono::milliseconds wait) { gigeWait_ = wait; }

    QString driverName() const override { return QStringLiteral("genicam"); }
    int GetVersion(int which, QString& version) override;
    int Init() override;
    // "vendor model serial".
    int GetName(int cam, QString& name) override;
    int Open(int cam) override;
    int IsOpen(int cam) override;
    int Close(int cam) override;
    int GetModeList(int cam, std::vector<std::int32_t>& modes) override;
    int GetMode(int cam, std::int32_t& mode) override;
    // Only while stopped (kBusy while streaming); kFailed when the camera
    // refuses the mode, which leaves the previous one set.
    int SetMode(int cam, std::int32_t mode) override;
    std::optional<ModeGeometry> modeGeometry(std::int32_t mode) const override;
    // Aravis's device id (vendor, model and serial number).
    QString cameraId() const override;
    int SetDisplayMode(int cam, int mode, int a, int b, int c, int d) override;
    int Start(int cam, quintptr window, FrameSink* sink, int a, int b) override;
    int IsStarted(int cam) override;
    int Stop(int cam) override;
    bool connectionLost(int cam) const override { return lost_ && cam == openIndex_; }
    // Complete frames since Start.
    int GetGoodFrames(int cam, std::int32_t& count) override;
    // Incomplete frames since Start, and those Aravis lost for want of a free buffer.
    int GetBrokenFrames(int cam, std::int32_t& count) override;
    int SaveToFile(int cam, const QString& path) override;
    void SetSaveQuality(int quality) override { frame_.setQuality(quality); }
    bool canGrabFrame() const override { return true; }
    int GrabFrame(int cam, QImage& frame) override;
    int readFrame(int cam, const FrameReader& read) override;
    // Records the stream through the program's recorder at the frames' size,
    // stamped with the rate the frames arrive at (the set rate before a few came).
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

    // For tests and the bench: the open camera (null when closed), the size
    // and format of the newest frame.
    _ArvCamera* arvCamera() const { return camera_; }
    QSize frameSize() const;
    QImage::Format frameFormat() const;
    // The rate whole frames arrive at now (0 before a few came).
    double deliveredFps() const { return rate_.fps(); }
    // A buffer as the worker takes it from `from` (whose pool gets it back;
    // released when null): counted, converted and shown. Public for tests of
    // what arrives.
    void receive(_ArvStream* from, _ArvBuffer* buffer);

private:
    struct Found {
        GenICamDiscovery::Device device;
        QString name;
    };

    static void onNewBuffer(_ArvStream* stream, void* self);
    static void onControlLost(void* device, void* self);

    int checkOpen(int cam) const;
    bool choosePixelFormat();
    SensorModes::Limits readLimits();
    const SensorModes::Mode* modeOf(std::int32_t index) const;
    int applyMode(const SensorModes::Mode& mode);
    void stopStream();
    void dropHeld();
    // Under frame_.lock(): the held Bayer frame becomes the full-size picture held.
    void develop();
    void developHeld();
    void work();
    void giveBack(_ArvBuffer* buffer);
    // Counts a broken buffer, and times a whole one.
    bool complete(_ArvBuffer* buffer);

    Log log_;
    QString serial_;
    std::chrono::milliseconds gigeWait_{0};
    std::vector<Found> found_;
    std::atomic<int> openIndex_{-1};  // read by Aravis's thread when the camera is lost
    _ArvCamera* camera_ = nullptr;
    unsigned long lostHandler_ = 0;
    std::vector<SensorModes::Mode> modes_;
    std::int32_t mode_ = -1;
    ModeGeometry geometry_;  // of mode_, as the camera reported it back
    GenICamFeatures features_;

    _ArvStream* stream_ = nullptr;
    std::atomic<bool> started_{false};
    std::atomic<bool> lost_{false};
    std::atomic<std::int32_t> good_{0};
    std::atomic<std::int32_t> incomplete_{0};
    FrameRateMeter rate_;

    // Buffers the stream thread handed over, waiting for the worker.
    std::thread worker_;
    std::mutex queueLock_;
    std::condition_variable queued_;
    std::vector<_ArvBuffer*> queue_;
    std::vector<_ArvBuffer*> taken_;  // the worker's batch; both reserved, never grown per frame
    bool stopWorker_ = false;

    // The newest frame; the buffer behind it changes only under frame_.lock().
    // A Bayer frame is held as its cells, its full-size picture made
    // (developed) into developedPixels_ when it is needed.
    HeldFrame frame_;
    _ArvBuffer* held_ = nullptr;
    FrameView heldView_;  // the held frame as the sink got it
    bool developed_ = false;
    std::vector<uchar> developedPixels_;
    FrameSink* sink_ = nullptr;   // the worker's, from Start until the stream stops
    PixelConversion conversion_;  // the worker's
};

}  // namespace tavix
