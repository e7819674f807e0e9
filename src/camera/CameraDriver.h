#pragma once

#include "media/FrameView.h"
#include "media/ModeGeometry.h"

#include <QImage>
#include <QSize>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tavix {

// The range record of a camera parameter, in the SDK's field order.
struct CamParamRange {
    std::int32_t enabled = 0;   // 0: the camera does not offer the parameter
    std::int32_t autoMode = 0;  // 1: the parameter has an automatic mode
    std::int32_t third = 0;     // not used by the program
    std::int32_t defaultValue = 0;
    std::int32_t minimum = 0;
    std::int32_t maximum = 0;
};

// Parameter types of the program's own, beyond the vendor's: controls that
// USB and GenICam cameras offer and the vendor's cameras lack. A driver whose
// camera lacks one reports its range as not enabled.
namespace ExtraParam {
constexpr int kWhiteBalanceTemperature = 160;  // kelvin; automatic white balance is its auto mode
constexpr int kFocus = 161;                    // the camera's focus units; autofocus is its auto mode
constexpr int kPowerLineFrequency = 162;       // 0 off, 1 50 Hz, 2 60 Hz, 3 automatic
constexpr int kDynamicFrameRate = 163;         // 1: automatic exposure may lower the frame rate
}  // namespace ExtraParam

// Receives frames from a driver's own thread.
class FrameSink {
public:
    virtual ~FrameSink() = default;
    virtual void frameReady(const FrameView& frame) = 0;
    // The size the frames are shown at, so that a driver whose frames must be
    // decoded first can decode them no larger; empty: the full size.
    virtual QSize shownSize() const { return {}; }
};

// The operations the program calls on a camera, shaped after the vendor SDK
// and returning its integer status codes (0 = success unless said otherwise).
// Session, live view, properties dialog, interval save and recording are
// written once against this.
class CameraDriver {
public:
    static constexpr int kModeListCapacity = 10;

    virtual ~CameraDriver() = default;

    // "sim", "icube", ... as the status bar names the driver.
    virtual QString driverName() const = 0;
    // True when the camera draws the live picture into a native window itself
    // (Start's window); false when it hands frames to the sink.
    virtual bool drawsIntoWindow() const { return false; }
    // True when SaveToFile may return before the file is complete (the camera
    // writes it in the background); false when the file is complete on return.
    virtual bool savesInBackground() const { return false; }

    // Reads what the driver is made from (the graph camera's graph file)
    // before the session opens it: 0, or the run-time error number that ends
    // the start-up.
    virtual int prepare() { return 0; }

    // Fills the API version text; a result of 1 is failure.
    virtual int GetVersion(int which, QString& version) = 0;
    // The number of cameras found (less than 1: none).
    virtual int Init() = 0;
    virtual int GetName(int cam, QString& name) = 0;
    // 0 and -24 both mean open.
    virtual int Open(int cam) = 0;
    virtual int IsOpen(int cam) = 0;
    virtual int Close(int cam) = 0;

    // The most modes the session keeps of GetModeList; negative: no limit.
    // Only the vendor's library has a fixed-size mode array.
    virtual int modeListCapacity() const { return -1; }
    virtual int GetModeList(int cam, std::vector<std::int32_t>& modes) = 0;
    virtual int GetMode(int cam, std::int32_t& mode) = 0;
    virtual int SetMode(int cam, std::int32_t mode) = 0;
    // How a mode of the open camera lies on its sensor; none when the driver
    // cannot tell (the camera may scale its whole field into the mode or crop it).
    virtual std::optional<ModeGeometry> modeGeometry(std::int32_t mode) const { return std::nullopt; }
    // The open camera as saved calibrations tell cameras apart (a model and
    // serial number, say); empty when not known.
    virtual QString cameraId() const { return {}; }

    virtual int SetDisplayMode(int cam, int mode, int a, int b, int c, int d) = 0;
    // Starts streaming: into the native window when the driver draws itself,
    // else as frames to the sink (from the driver's thread).
    virtual int Start(int cam, quintptr window, FrameSink* sink, int a, int b) = 0;
    // 1 while streaming.
    virtual int IsStarted(int cam) = 0;
    // True once the camera stopped answering in the middle of a stream (a
    // pulled cable); the program goes on with its last picture.
    virtual bool connectionLost(int cam) const { return false; }
    // True when the driver takes a lost camera up again by itself once it is
    // plugged in again (the stream resumes; IsStarted answers 1 again), so
    // that the program waits for it instead of asking for a restart.
    virtual bool reconnects(int cam) const { return false; }
    virtual int Stop(int cam) = 0;

    virtual int GetGoodFrames(int cam, std::int32_t& count) = 0;
    virtual int GetBrokenFrames(int cam, std::int32_t& count) = 0;

    // Writes the current frame to a file: a JPEG when the name ends in ".jpg"
    // (any case), else a bitmap.
    virtual int SaveToFile(int cam, const QString& path) = 0;
    // The quality (0..100) of the JPEG files SaveToFile writes, for drivers
    // that let the program choose it.
    virtual void SetSaveQuality(int quality) {}
    // Drivers that hand frames to the program can also copy the current frame
    // into `frame` (reusing its buffer when it has the size already) instead
    // of a round trip through a bitmap file; 0 = success.
    virtual bool canGrabFrame() const { return false; }
    virtual int GrabFrame(int cam, QImage& frame) { return -1; }
    // The same drivers let `read` see the current frame where it lies,
    // developed as GrabFrame would copy it, holding the stream off it until
    // `read` returns: no copy. 0 = success, and `read` was called.
    using FrameReader = std::function<void(const FrameView&)>;
    virtual int readFrame(int cam, const FrameReader& read) { return -1; }
    // Records an AVI file of the given length; parameter 24 stays non-zero while writing.
    virtual int SaveAvi(int cam, const QString& path, int a, int seconds) = 0;
    // The newest recording's figures, for drivers whose frames the program
    // records itself; false when the camera records on its own or never did.
    virtual bool recordingStats(int cam, RecordingStats& stats) { return false; }

    virtual int SetCamParameter(int cam, int type, std::int32_t value) = 0;
    virtual int GetCamParameter(int cam, int type, std::int32_t& value) = 0;
    virtual int GetCamParameterRange(int cam, int type, CamParamRange& range) = 0;
    // The true exposure time in milliseconds.
    virtual int GetExposure(int cam, float& ms) = 0;
    virtual int GetParamAuto(int cam, int type, std::int32_t& flag) = 0;
    virtual int SetParamAuto(int cam, int type, std::int32_t flag) = 0;
    virtual int SetParamAutoDef(int cam, int type) = 0;
    virtual int SetParamOnePush(int cam, int type) = 0;
};

}  // namespace tavix
