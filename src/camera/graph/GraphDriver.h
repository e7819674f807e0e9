#pragma once

#include "camera/CameraDriver.h"
#include "camera/HeldFrame.h"
#include "camera/graph/DeviceMonitor.h"
#include "camera/graph/GraphDecoder.h"
#include "camera/graph/GraphFile.h"
#include "camera/graph/GraphMode.h"
#include "camera/graph/GraphParameters.h"
#include "common/Clock.h"

#include <QSize>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

struct _GstElement;
struct _GstSample;
struct _GstBus;
struct _GstMessage;
struct _GstVideoConverter;
struct _GstBuffer;

namespace tavix {

// A camera made of the graph file: any source GStreamer can open (a USB
// camera through v4l2src, a test source, ...). LoadGrfFile finds the camera
// element; Open replaces whatever followed it in the file by the program's
// own tail (a filter asking for the mode, an appsink) so that frames reach
// the driver on GStreamer's streaming thread. There is one camera, index 0.
//
// Modes are every size the camera's output pin offers, each named "WxH"
// under Resolution::indexOf and taken in the format the camera sends fastest
// at that size: raw video, Motion-JPEG (decoded with libjpeg-turbo; for the
// live picture scaled down to the size the sink shows it at, and recorded
// into AVI files as the camera sent it) or 8-bit Bayer. The sink gets RGB,
// BGR and grey frames as they are, YUY2 and Bayer frames as the camera's own
// pixels (FrameView::raw), other raw formats converted to RGB. A YUY2,
// compressed or Bayer frame becomes a full-size RGB picture (converted,
// decoded, demosaiced) only when it is frozen, saved or recorded. SetMode (while stopped) changes what the
// next Start negotiates. How a mode lies on the sensor is not known: a USB camera may scale its whole field
// into a mode or crop it. Parameters map onto the controls of the video device that a v4l2src feeding the
// camera element has open (the camera element itself, or one upstream of it); a source without one (a test
// source) reports every range as not enabled:
//   1 brightness, 2 contrast, 19 saturation, 109 hue, 12 black level
//   13 gain (its automatic gain reported only while on)
//   3 gamma x 64 / 100 (the device counts 100 for a gamma of 1), 111 its
//     enable (off sets the device's default gamma, on brings back the last)
//   7 exposure in 100 us units, automatic with the device's exposure mode
//   4 vertical flip, 5 horizontal flip
//   9 red and 11 blue balance (the automatic white balance reported only while on)
//   6 one-push white balance: the device's own when it has one, else its
//     automatic white balance for GraphParameters::kWhiteBalanceMs on the
//     clock, then held
//   160 white-balance temperature in kelvin, automatic with the automatic white balance
//   161 focus, automatic with autofocus; 162 power-line frequency (the menu's
//     index); 163 dynamic frame rate (the exposure's automatic priority)
//   147 frame rate: the rates the camera offers at the mode, in whole frames
//     a second (greyed when it offers one); a new rate restarts the stream
//   24 AVI being written
// An error on the pipeline while streaming (a pulled cable) is logged with
// GStreamer's text; the stream ends, IsStarted answers 0, connectionLost
// true, and the newest frame stays held (no save or grab passes it off as
// new). When the graph opens a video device, a device monitor watches it:
// unplugged, the device is let go at once (the pipeline to NULL, its
// controls closed); plugged in again (the same by-id name, or the same card
// on the same bus, under any /dev/videoN) it is opened again and a stream
// that was running resumes by itself.
class GraphDriver : public CameraDriver {
public:
    static constexpr int kFailed = -1;
    static constexpr int kNotSupported = -2;
    static constexpr int kOutOfRange = -4;
    static constexpr int kNotOpen = -5;
    static constexpr int kBusy = -6;
    static constexpr int kNoFrame = HeldFrame::kNoFrame;
    static constexpr int kWriteFailed = HeldFrame::kWriteFailed;
    static constexpr int kBadCamera = -9;
    static constexpr int kDisconnected = -10;
    static constexpr int kRefused = -11;  // the device refused a write (an automatic mode holds the control)
    static constexpr int kAlreadyOpen = -24;

    using Log = GraphFile::Log;
    // Opens the controls of the device the graph's v4l2src has open (null:
    // none); given the graph file, ready. Tests hand in a fake device.
    using OpenControls = std::function<std::unique_ptr<V4l2ControlAccess>(const GraphFile&)>;

    // `clock` (not owned) times the one-push white balance; null: the system clock.
    GraphDriver(const QString& graphPath, const QString& cameraFilterName, Log log = {},
                Clock* clock = nullptr, OpenControls openControls = {});
    ~GraphDriver() override;
    GraphDriver(const GraphDriver&) = delete;
    GraphDriver& operator=(const GraphDriver&) = delete;

    // Watches `devicePath` (empty: the device the graph's v4l2src opens) with
    // `monitor` instead of GStreamer's device monitor; before Open.
    void watchDevices(std::unique_ptr<DeviceMonitor> monitor, const QString& devicePath = {});

    // Loads the graph file once; later calls answer what the first found.
    bool LoadGrfFile();
    int prepare() override;
    const GraphFile& graphFile() const { return file_; }

    QString driverName() const override { return QStringLiteral("graph"); }
    int GetVersion(int which, QString& version) override;
    // 1 when the graph file holds a camera, else 0.
    int Init() override;
    // The device's name when it opens one, else the element's kind and name.
    int GetName(int cam, QString& name) override;
    int Open(int cam) override;
    int IsOpen(int cam) override;
    int Close(int cam) override;
    int GetModeList(int cam, std::vector<std::int32_t>& modes) override;
    int GetMode(int cam, std::int32_t& mode) override;
    // Only while stopped (kBusy while streaming); the next Start negotiates it.
    int SetMode(int cam, std::int32_t mode) override;
    int SetDisplayMode(int cam, int mode, int a, int b, int c, int d) override;
    int Start(int cam, quintptr window, FrameSink* sink, int a, int b) override;
    int IsStarted(int cam) override;
    int Stop(int cam) override;
    bool connectionLost(int cam) const override { return lost_ && cam == 0 && open_; }
    bool reconnects(int cam) const override { return watching_ && cam == 0; }
    // How often the camera came back after it was unplugged.
    int returns() const { return returns_; }
    int GetGoodFrames(int cam, std::int32_t& count) override;
    // Frames flagged corrupt, too short, or missing from the source's count.
    int GetBrokenFrames(int cam, std::int32_t& count) override;
    int SaveToFile(int cam, const QString& path) override;
    void SetSaveQuality(int quality) override { frame_.setQuality(quality); }
    bool canGrabFrame() const override { return true; }
    int GrabFrame(int cam, QImage& frame) override;
    int readFrame(int cam, const FrameReader& read) override;
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

    // For tests and the bench: the size of the newest frame, the format each
    // mode streams in, the pipeline.
    QSize frameSize() const;
    const std::vector<GraphMode>& modes() const { return modes_; }
    // The frame rate of the frames arriving (their caps'), 0 before the first.
    double arrivingFps() const { return fps_; }
    _GstElement* pipeline() const { return file_.graph(); }

private:
    static int onBusMessage(_GstBus* bus, _GstMessage* message, void* self);
    static int onNewSample(_GstElement* sink, void* self);

    int checkOpen(int cam) const;
    bool buildTail();
    void findModes();
    const GraphMode* modeOf(std::int32_t index) const;
    int startStream(FrameSink* sink);
    // The frame rate (147): the rates the camera offers at the mode, in whole frames a second.
    int frameRateRange(CamParamRange& range) const;
    int setFrameRate(std::int32_t fps);
    void startWatching();
    void onDevice(const DeviceMonitor::Device& device, bool added);
    void receive(_GstSample* sample);
    // Under frame_.lock(): a raw frame converted to RGB.
    bool convertRaw(_GstSample* sample, FrameView& view);
    // Under frame_.lock(): the held YUY2, JPEG or Bayer frame becomes the full-size picture held.
    void develop();
    void developHeld();
    void releaseHeld();
    void dropHeld();

    Log log_;
    std::unique_ptr<SystemClock> ownClock_;
    Clock* clock_;
    OpenControls openControls_;
    GraphFile file_;
    bool loadTried_ = false;
    bool loaded_ = false;
    bool open_ = false;
    _GstElement* filter_ = nullptr;  // the size the camera is asked for
    _GstElement* appsink_ = nullptr;
    std::vector<GraphMode> modes_;
    std::int32_t mode_ = -1;
    std::int32_t wantedFps_ = 0;  // 0: each mode at its fastest rate
    GraphParameters parameters_;

    // Unplugging and plugging in again, from the monitor's thread: these and
    // every call that changes the stream or the controls take deviceMutex_.
    std::unique_ptr<DeviceMonitor> monitor_;
    QString watchPath_;
    DeviceMonitor::Device camera_;  // the device the camera was last seen as
    std::recursive_mutex deviceMutex_;
    std::atomic<bool> watching_{false};
    bool away_ = false;                // unplugged, not back yet
    FrameSink* wantedSink_ = nullptr;  // a stream to resume: Start's sink until Stop
    bool wanted_ = false;
    std::atomic<int> returns_{0};

    std::atomic<bool> started_{false};
    std::atomic<bool> lost_{false};
    std::atomic<std::int32_t> good_{0};
    std::atomic<std::int32_t> broken_{0};
    std::uint64_t nextOffset_ = 0;  // the source's number of the next frame; streaming thread only
    std::atomic<double> fps_{0};    // written by the streaming thread, read by SaveAvi

    // The newest frame, its sample mapped into one of two GstMapInfo made
    // once (the held frame's and the arriving one's); changed only under
    // frame_.lock(). A raw frame in a format the live view does not read is
    // held as its conversion; a YUY2, JPEG or Bayer frame as it came, its
    // full-size picture made (developed) when it is needed.
    HeldFrame frame_;
    _GstSample* held_ = nullptr;
    void* maps_[2] = {nullptr, nullptr};
    int heldMap_ = 0;
    GraphMode::Kind heldKind_ = GraphMode::Kind::Raw;
    RawLayout heldRaw_ = RawLayout::None;  // the held frame's layout as the sink got it
    QSize heldSize_;
    bool developed_ = false;
    GraphDecoder fullDecoder_;
    // The raw converter and its output.
    _GstVideoConverter* converter_ = nullptr;
    void* converterIn_ = nullptr;  // GstVideoInfo of what the converter takes
    _GstBuffer* rgb_ = nullptr;

    // Streaming thread only: the sink, the live picture's JPEG decoder.
    FrameSink* sink_ = nullptr;
    GraphDecoder liveDecoder_;
};

}  // namespace tavix
