#include "camera/SwitchableCamera.h"

namespace tavix {

std::unique_ptr<CameraDriver> SwitchableCamera::replace(std::unique_ptr<CameraDriver> driver)
{
    std::swap(inner_, driver);
    return driver;
}

QString SwitchableCamera::driverName() const
{
    return inner_->driverName();
}

bool SwitchableCamera::drawsIntoWindow() const
{
    return inner_->drawsIntoWindow();
}

bool SwitchableCamera::savesInBackground() const
{
    return inner_->savesInBackground();
}

int SwitchableCamera::prepare()
{
    return inner_->prepare();
}

int SwitchableCamera::GetVersion(int which, QString& version)
{
    return inner_->GetVersion(which, version);
}

int SwitchableCamera::Init()
{
    return inner_->Init();
}

int SwitchableCamera::GetName(int cam, QString& name)
{
    return inner_->GetName(cam, name);
}

int SwitchableCamera::Open(int cam)
{
    return inner_->Open(cam);
}

int SwitchableCamera::IsOpen(int cam)
{
    return inner_->IsOpen(cam);
}

int SwitchableCamera::Close(int cam)
{
    return inner_->Close(cam);
}

int SwitchableCamera::modeListCapacity() const
{
    return inner_->modeListCapacity();
}

int SwitchableCamera::GetModeList(int cam, std::vector<std::int32_t>& modes)
{
    return inner_->GetModeList(cam, modes);
}

int SwitchableCamera::GetMode(int cam, std::int32_t& mode)
{
    return inner_->GetMode(cam, mode);
}

int SwitchableCamera::SetMode(int cam, std::int32_t mode)
{
    return inner_->SetMode(cam, mode);
}

std::optional<ModeGeometry> SwitchableCamera::modeGeometry(std::int32_t mode) const
{
    return inner_->modeGeometry(mode);
}

QString SwitchableCamera::cameraId() const
{
    return inner_->cameraId();
}

int SwitchableCamera::SetDisplayMode(int cam, int mode, int a, int b, int c, int d)
{
    return inner_->SetDisplayMode(cam, mode, a, b, c, d);
}

int SwitchableCamera::Start(int cam, quintptr window, FrameSink* sink, int a, int b)
{
    return inner_->Start(cam, window, sink, a, b);
}

int SwitchableCamera::IsStarted(int cam)
{
    return inner_->IsStarted(cam);
}

bool SwitchableCamera::connectionLost(int cam) const
{
    return inner_->connectionLost(cam);
}

bool SwitchableCamera::reconnects(int cam) const
{
    return inner_->reconnects(cam);
}

int SwitchableCamera::Stop(int cam)
{
    return inner_->Stop(cam);
}

int SwitchableCamera::GetGoodFrames(int cam, std::int32_t& count)
{
    return inner_->GetGoodFrames(cam, count);
}

int SwitchableCamera::GetBrokenFrames(int cam, std::int32_t& count)
{
    return inner_->GetBrokenFrames(cam, count);
}

int SwitchableCamera::SaveToFile(int cam, const QString& path)
{
    return inner_->SaveToFile(cam, path);
}

void SwitchableCamera::SetSaveQuality(int quality)
{
    inner_->SetSaveQuality(quality);
}

bool SwitchableCamera::canGrabFrame() const
{
    return inner_->canGrabFrame();
}

int SwitchableCamera::GrabFrame(int cam, QImage& frame)
{
    return inner_->GrabFrame(cam, frame);
}

int SwitchableCamera::readFrame(int cam, const FrameReader& read)
{
    return inner_->readFrame(cam, read);
}

int SwitchableCamera::SaveAvi(int cam, const QString& path, int a, int seconds)
{
    return inner_->SaveAvi(cam, path, a, seconds);
}

bool SwitchableCamera::recordingStats(int cam, RecordingStats& stats)
{
    return inner_->recordingStats(cam, stats);
}

int SwitchableCamera::SetCamParameter(int cam, int type, std::int32_t value)
{
    return inner_->SetCamParameter(cam, type, value);
}

int SwitchableCamera::GetCamParameter(int cam, int type, std::int32_t& value)
{
    return inner_->GetCamParameter(cam, type, value);
}

int SwitchableCamera::GetCamParameterRange(int cam, int type, CamParamRange& range)
{
    return inner_->GetCamParameterRange(cam, type, range);
}

int SwitchableCamera::GetExposure(int cam, float& ms)
{
    return inner_->GetExposure(cam, ms);
}

int SwitchableCamera::GetParamAuto(int cam, int type, std::int32_t& flag)
{
    return inner_->GetParamAuto(cam, type, flag);
}

int SwitchableCamera::SetParamAuto(int cam, int type, std::int32_t flag)
{
    return inner_->SetParamAuto(cam, type, flag);
}

int SwitchableCamera::SetParamAutoDef(int cam, int type)
{
    return inner_->SetParamAutoDef(cam, type);
}

int SwitchableCamera::SetParamOnePush(int cam, int type)
{
    return inner_->SetParamOnePush(cam, type);
}

}  // namespace tavix
