#pragma once

#include "camera/CameraDriver.h"
#include "camera/icube/ICubeSDK.h"

#include <QString>
#include <QStringList>

namespace tavix {

// The vendor camera library ICubeSDK, loaded at run time so that the program
// builds and runs without it. Every operation forwards to the library function
// of the same name; the library draws the live stream into the native window
// itself. The library does not tell how a mode lies on the sensor, so the
// modes' geometry is not known.
//
// A driver whose library could not be loaded (or lacks a function) says why in
// errorText() and answers every call without touching the library: Init finds
// no camera (0), IsStarted reports not streaming (0), GetVersion fails (1) and
// every other call returns kNotLoaded.
class ICubeDriver : public CameraDriver {
public:
    static constexpr const char* kLibraryFile = "libICubeSDK.so";
    static constexpr int kNotLoaded = -1001;
    // The program's own parameter types (ExtraParam) are not the library's:
    // their ranges read not enabled without asking it, every other call of
    // them answers this.
    static constexpr int kNotOffered = -1002;

    // Looks for the library in the program folder first, then by name on the
    // system library path.
    explicit ICubeDriver(const QString& programFolder);
    // Tries each candidate in turn: a path with a '/' is opened as it stands, a
    // bare name is looked up by the dynamic loader. The first that loads is used.
    explicit ICubeDriver(const QStringList& candidates);
    ~ICubeDriver() override;

    ICubeDriver(const ICubeDriver&) = delete;
    ICubeDriver& operator=(const ICubeDriver&) = delete;

    // The candidates for a program folder: its own copy, then the system's.
    static QStringList candidates(const QString& programFolder);

    bool loaded() const { return handle_ != nullptr; }
    // Why the library is not loaded; empty when it is.
    const QString& errorText() const { return errorText_; }
    // The file the loader opened; empty when none.
    const QString& libraryPath() const { return libraryPath_; }

    QString driverName() const override { return QStringLiteral("icube"); }
    bool drawsIntoWindow() const override { return true; }    // the SDK draws the stream itself
    bool savesInBackground() const override { return true; }  // SaveToFile returns before the file is written

    int GetVersion(int which, QString& version) override;
    int Init() override;
    int GetName(int cam, QString& name) override;
    int Open(int cam) override;
    int IsOpen(int cam) override;
    int Close(int cam) override;

    int modeListCapacity() const override { return kModeListCapacity; }
    // modes receives the first `count` entries the library reports, count
    // clamped to 0..kModeListCapacity, whatever the status.
    int GetModeList(int cam, std::vector<std::int32_t>& modes) override;
    int GetMode(int cam, std::int32_t& mode) override;
    int SetMode(int cam, std::int32_t mode) override;

    int SetDisplayMode(int cam, int mode, int a, int b, int c, int d) override;
    // The library draws into `window`; the sink is not used.
    int Start(int cam, quintptr window, FrameSink* sink, int a, int b) override;
    int IsStarted(int cam) override;
    // The library has no call of its own for a lost camera: one this driver
    // started that is neither streaming nor open any more was unplugged.
    bool connectionLost(int cam) const override;
    int Stop(int cam) override;

    int GetGoodFrames(int cam, std::int32_t& count) override;
    int GetBrokenFrames(int cam, std::int32_t& count) override;

    int SaveToFile(int cam, const QString& path) override;
    int SaveAvi(int cam, const QString& path, int a, int seconds) override;

    int SetCamParameter(int cam, int type, std::int32_t value) override;
    int GetCamParameter(int cam, int type, std::int32_t& value) override;
    int GetCamParameterRange(int cam, int type, CamParamRange& range) override;
    int GetExposure(int cam, float& ms) override;
    int GetParamAuto(int cam, int type, std::int32_t& flag) override;
    int SetParamAuto(int cam, int type, std::int32_t flag) override;
    int SetParamAutoDef(int cam, int type) override;
    int SetParamOnePush(int cam, int type) override;

private:
    struct Api {
        ICubeSDK_GetVersionFn GetVersion = nullptr;
        ICubeSDK_InitFn Init = nullptr;
        ICubeSDK_GetNameFn GetName = nullptr;
        ICubeSDK_OpenFn Open = nullptr;
        ICubeSDK_IsOpenFn IsOpen = nullptr;
        ICubeSDK_CloseFn Close = nullptr;
        ICubeSDK_SetCamParameterFn SetCamParameter = nullptr;
        ICubeSDK_GetCamParameterFn GetCamParameter = nullptr;
        ICubeSDK_GetCamParameterRangeFn GetCamParameterRange = nullptr;
        ICubeSDK_GetModeListFn GetModeList = nullptr;
        ICubeSDK_GetModeFn GetMode = nullptr;
        ICubeSDK_SetModeFn SetMode = nullptr;
        ICubeSDK_SetDisplayModeFn SetDisplayMode = nullptr;
        ICubeSDK_StartFn Start = nullptr;
        ICubeSDK_IsStartedFn IsStarted = nullptr;
        ICubeSDK_StopFn Stop = nullptr;
        ICubeSDK_GetGoodFramesFn GetGoodFrames = nullptr;
        ICubeSDK_GetBrokenFramesFn GetBrokenFrames = nullptr;
        ICubeSDK_SaveToFileFn SaveToFile = nullptr;
        ICubeSDK_SaveAviFn SaveAvi = nullptr;
        ICubeSDK_GetExposureFn GetExposure = nullptr;
        ICubeSDK_GetParamAutoFn GetParamAuto = nullptr;
        ICubeSDK_SetParamAutoFn SetParamAuto = nullptr;
        ICubeSDK_SetParamAutoDefFn SetParamAutoDef = nullptr;
        ICubeSDK_SetParamOnePushFn SetParamOnePush = nullptr;
    };

    void load(const QStringList& candidates);
    // Binds every function; names the first one missing, or returns null.
    const char* bind(void* handle);

    void* handle_ = nullptr;
    Api api_;
    bool started_ = false;  // a Start succeeded and no Stop or Close came after it
    QString errorText_;
    QString libraryPath_;
};

}  // namespace tavix
