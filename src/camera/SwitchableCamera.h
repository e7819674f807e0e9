#pragma once

#include "camera/CameraDriver.h"

#include <memory>

namespace tavix {

// The camera the program holds, whichever driver is behind it: every
// operation goes to the current driver, and the user can put another camera
// in its place while the program runs, without the session, the still capture
// or the recorders that hold this one noticing. New operations of the camera
// contract must be passed on here as well.
class SwitchableCamera : public CameraDriver {
public:
    explicit SwitchableCamera(std::unique_ptr<CameraDriver> driver) : inner_(std::move(driver)) {}

    // Puts `driver` in place and returns the one it replaces; the caller
    // stops and closes the old camera first.
    std::unique_ptr<CameraDriver> replace(std::unique_ptr<CameraDriver> driver);
    CameraDriver& current() const { return *inner_; }

    QString driverName() const override;
    bool drawsIntoWindow() const override;
    bool savesInBackground() const override;
    int prepare() override;
    int GetVersion(int which, QString& version) override;
    int Init() override;
    int GetName(int cam, QString& name) override;
    int Open(int cam) override;
    int IsOpen(int cam) override;
    int Close(int cam) override;
    int modeListCapacity() const override;
    int GetModeList(int cam, std::vector<std::int32_t>& modes) override;
    int GetMode(int cam, std::int32_t& mode) override;
    int SetMode(int cam, std::int32_t mode) override;
    std::optional<ModeGeometry> modeGeometry(std::int32_t mode) const override;
    QString cameraId() const override;
    int SetDisplayMode(int cam, int mode, int a, int b, int c, int d) override;
    int Start(int cam, quintptr window, FrameSink* sink, int a, int b) override;
    int IsStarted(int cam) override;
    bool connectionLost(int cam) const override;
    bool reconnects(int cam) const override;
    int Stop(int cam) override;
    int GetGoodFrames(int cam, std::int32_t& count) override;
    int GetBrokenFrames(int cam, std::int32_t& count) override;
    int SaveToFile(int cam, const QString& path) override;
    void SetSaveQuality(int quality) override;
    bool canGrabFrame() const override;
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

private:
    std::unique_ptr<CameraDriver> inner_;
};

}  // namespace tavix
