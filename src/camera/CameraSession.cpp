#include "camera/CameraSession.h"

#include "camera/Resolution.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/Settings.h"

namespace tavix {

namespace {
constexpr int kCameraAway = 27302;

QString sdkError(const char* function, int status)
{
    return QStringLiteral("Error: ICubeSDK_%1(%2)").arg(QLatin1String(function)).arg(status);
}
}  // namespace

CameraSession::CameraSession(CameraDriver& driver, Settings& settings, const MessageTable& messages,
                             const ErrorLog& log, Prompter& prompter)
    : driver_(driver), settings_(settings), messages_(messages), log_(log), prompter_(prompter)
{
}

bool CameraSession::fatal(const QString& logLine, int status)
{
    log_.write(logLine);
    prompter_.message({messages_.text(26999, status), messages_.text(26998), Prompter::Icon::Critical});
    shutdown();
    return false;
}

bool CameraSession::noCamera(const QString& logLine)
{
    log_.write(logLine);
    prompter_.message({messages_.text(20104) + QStringLiteral("\r\n") + messages_.text(20105),
                       messages_.text(11103), Prompter::Icon::Critical});
    shutdown();
    return false;
}

bool CameraSession::open(const View& view)
{
    view_ = view;
    QString version;
    if (const int r = driver_.GetVersion(1, version); r == 1)
        return fatal(sdkError("GetVersion", r), r);
    log_.write(QStringLiteral("ICubeSDK API Version ") + version);

    const int count = driver_.Init();
    if (count < 1)
        return noCamera(QStringLiteral("Error: ICubeSDK_Init(NumOfCam=0)"));
    camera_ = 0;

    if (count == 1) {
        QString name;
        if (const int r = driver_.GetName(camera_, name); r != 0)
            return noCamera(sdkError("GetName", r));
        log_.write(QStringLiteral("Camera Name:") + name);
    } else {
        log_.write(QStringLiteral("Camera Name:Unkown"));  // several cameras: the first is used
    }

    if (const int r = driver_.Open(camera_); r != 0 && r != -24)
        return fatal(sdkError("Open", r), r);

    if (const int r = driver_.SetCamParameter(camera_, 43, 1); r != 0 && r != -2)
        log_.write(sdkError("SetCamParameter", r));

    modes_.clear();
    const int capacity = driver_.modeListCapacity();
    if (capacity >= 0)
        modes_.reserve(static_cast<size_t>(capacity));
    if (const int r = driver_.GetModeList(camera_, modes_); r != 0)
        return fatal(sdkError("GetModeList", r), r);
    if (capacity >= 0 && modes_.size() > static_cast<size_t>(capacity))
        modes_.resize(static_cast<size_t>(capacity));

    if (const int r = driver_.GetMode(camera_, currentMode_); r != 0)
        return fatal(QStringLiteral("ICubeSDK_GetMode(%1)").arg(r), r);

    const std::int32_t wanted = settings_.DEFAULTRESOLUTION;
    if (wanted >= 0 && wanted != currentMode_) {
        // A resolution the camera does not list is ignored: it keeps its own mode.
        for (const std::int32_t mode : modes_) {
            if (mode != wanted)
                continue;
            currentMode_ = mode;
            if (const int r = driver_.SetMode(camera_, mode); r != 0)
                return fatal(sdkError("SetMode", r), r);
            break;
        }
    }

    if (view_.showResolution)
        view_.showResolution(resolutionText());
    return start();
}

QString CameraSession::resolutionText() const
{
    return QStringLiteral("Resolution:") + Resolution::name(currentMode_);
}

bool CameraSession::start()
{
    if (driver_.IsStarted(camera_) == 1)
        driver_.Stop(camera_);
    if (view_.placeCameraView)
        view_.placeCameraView(Resolution::size(currentMode_));
    if (const int r = driver_.SetDisplayMode(camera_, 1, 0, 0, 0, 0); r != 0)
        return fatal(sdkError("SetDisplayMode", r), r);
    if (const int r = driver_.Start(camera_, view_.window, view_.sink, -1, 0); r != 0)
        return fatal(sdkError("Start", r), r);
    return true;
}

void CameraSession::closeCamera()
{
    if (driver_.IsStarted(camera_) == 1)
        driver_.Stop(camera_);
    if (driver_.IsOpen(camera_) == 0)
        driver_.Close(camera_);
}

void CameraSession::shutdown()
{
    closeCamera();
    if (view_.endProgram)
        view_.endProgram();
}

void CameraSession::exit()
{
    if (driver_.IsStarted(camera_) == 1) {
        if (const int r = driver_.Stop(camera_); r != 0)
            log_.write(sdkError("Stop", r));
    }
    if (driver_.IsOpen(camera_) == 0) {
        if (const int r = driver_.Close(camera_); r != 0)
            log_.write(sdkError("Close", r));
    }
}

bool CameraSession::changeMode(std::int32_t mode)
{
    // An unplugged camera that will come back keeps its mode: no start could succeed now.
    if (driver_.connectionLost(camera_) && driver_.reconnects(camera_)) {
        prompter_.message({messages_.text(kCameraAway), messages_.text(26998), Prompter::Icon::Exclamation});
        return false;
    }
    driver_.Stop(camera_);
    currentMode_ = mode;
    bool ok = true;
    if (const int r = driver_.SetMode(camera_, mode); r != 0) {
        log_.write(sdkError("SetMode", r));
        prompter_.message({messages_.text(26999, r), messages_.text(26998), Prompter::Icon::Critical});
        closeCamera();
        ok = false;
    }
    settings_.DEFAULTRESOLUTION = static_cast<qint16>(currentMode_);
    start();
    if (view_.showResolution)
        view_.showResolution(resolutionText());
    return ok;
}

}  // namespace tavix
