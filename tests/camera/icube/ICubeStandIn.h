#pragma once

#include <dlfcn.h>
#include <QString>
#include <QStringList>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavix::test {

// Scripts and inspects the stand-in of the vendor camera library. Opening the
// file a driver has loaded gives the same handle, so both see one camera.
class ICubeStandIn {
public:
    // The folder of the full stand-in, and of the one that lacks ICubeSDK_Start.
    static QString folder() { return QStringLiteral(TAVIX_ICUBE_STANDIN_DIR); }
    static QString withoutStartFolder() { return QStringLiteral(TAVIX_ICUBE_STANDIN_WITHOUT_START_DIR); }
    static QString path() { return folder() + QStringLiteral("/libICubeSDK.so"); }

    explicit ICubeStandIn(const QString& file = path())
        : handle_(dlopen(file.toLocal8Bit().constData(), RTLD_NOW | RTLD_LOCAL))
    {
        if (!handle_)
            throw std::runtime_error(std::string("cannot load the stand-in: ") + dlerror());
    }
    ~ICubeStandIn() { dlclose(handle_); }
    ICubeStandIn(const ICubeStandIn&) = delete;
    ICubeStandIn& operator=(const ICubeStandIn&) = delete;

    void reset() { call<void (*)()>("StandIn_Reset")(); }
    void setResult(const char* function, int status)
    {
        call<void (*)(const char*, int)>("StandIn_SetResult")(function, status);
    }
    void setCameraCount(int count) { call<void (*)(int)>("StandIn_SetCameraCount")(count); }
    void setVersion(const char* text) { call<void (*)(const char*)>("StandIn_SetVersion")(text); }
    void setName(const char* text) { call<void (*)(const char*)>("StandIn_SetName")(text); }
    void setModeList(const std::vector<int>& modes)
    {
        call<void (*)(const int*, int)>("StandIn_SetModeList")(modes.data(), static_cast<int>(modes.size()));
    }
    void setMode(int mode) { call<void (*)(int)>("StandIn_SetMode")(mode); }
    int mode() { return call<int (*)()>("StandIn_Mode")(); }
    void setParam(int type, int value) { call<void (*)(int, int)>("StandIn_SetParam")(type, value); }
    int param(int type) { return call<int (*)(int)>("StandIn_Param")(type); }
    void setParamRange(int type, int enabled, int autoMode, int third, int defaultValue, int minimum,
                       int maximum)
    {
        call<void (*)(int, int, int, int, int, int, int)>("StandIn_SetParamRange")(
            type, enabled, autoMode, third, defaultValue, minimum, maximum);
    }
    // Modes 640x480, 1280x1024 (current) and 2592x1944, and every parameter of
    // the settings dialog except the frame rate, each with a value of its own.
    void offerEveryDialogParameter()
    {
        setModeList({1, 5, 8});
        setMode(5);
        struct R {
            int type, autoMode, def, min, max, value;
        };
        for (const R& r : std::initializer_list<R>{
                 {1, 0, 0, -64, 64, 5},       {2, 0, 32, 0, 64, 40},      {3, 0, 64, 16, 255, 96},
                 {4, 0, 0, 0, 1, 1},          {5, 0, 0, 0, 1, 0},         {6, 0, 0, 0, 1, 1},
                 {7, 1, 960, 1, 50000, 5000}, {8, 0, 128, 16, 240, 100},  {9, 0, 64, 0, 255, 70},
                 {10, 0, 64, 0, 255, 64},     {11, 0, 64, 0, 255, 90},    {12, 1, 4, 0, 64, 6},
                 {13, 0, 32, 32, 255, 48},    {14, 0, 1, 0, 1, 1},        {15, 0, 48, 12, 96, 48},
                 {19, 0, 64, 0, 128, 70},     {106, 0, 0, -64, 64, -3},   {107, 0, 0, -64, 64, 0},
                 {108, 0, 0, -64, 64, 7},     {109, 0, 0, -180, 180, 20}, {110, 0, 0, 0, 1, 0},
                 {111, 0, 1, 0, 1, 1},        {115, 0, 0, 0, 1, 1},       {117, 0, 1, 0, 1, 1},
             }) {
            setParamRange(r.type, 1, r.autoMode, 1, r.def, r.min, r.max);
            setParam(r.type, r.value);
        }
        setExposure(20.0f);
    }
    void setParamAuto(int type, int flag) { call<void (*)(int, int)>("StandIn_SetParamAuto")(type, flag); }
    int paramAuto(int type) { return call<int (*)(int)>("StandIn_ParamAuto")(type); }
    void setExposure(float ms) { call<void (*)(float)>("StandIn_SetExposure")(ms); }
    void setFrames(int good, int broken) { call<void (*)(int, int)>("StandIn_SetFrames")(good, broken); }
    void setFrameSize(int width, int height)
    {
        call<void (*)(int, int)>("StandIn_SetFrameSize")(width, height);
    }
    // SaveToFile writes in the background: after `beforeMs` half the file, after `midwayMs` more the rest.
    void setSaveDelay(int beforeMs, int midwayMs)
    {
        call<void (*)(int, int)>("StandIn_SetSaveDelay")(beforeMs, midwayMs);
    }
    void setOnePushPolls(int polls) { call<void (*)(int)>("StandIn_SetOnePushPolls")(polls); }
    // Reads of 1 from parameter 24 after SaveAvi: -1 the seconds asked for, kAviForever never 0.
    static constexpr int kAviForever = -2;
    void setAviPolls(int polls) { call<void (*)(int)>("StandIn_SetAviPolls")(polls); }
    // The cable is pulled: the camera stops and closes, and every call that needs it returns kUnplugged.
    static constexpr int kUnplugged = -10;
    void unplug() { call<void (*)()>("StandIn_Unplug")(); }
    bool isOpen() { return call<int (*)()>("StandIn_IsOpen")() != 0; }
    bool isStarted() { return call<int (*)()>("StandIn_IsStarted")() != 0; }

    // Forgets the calls so far; the camera stays as scripted.
    void clearCalls() { call<void (*)()>("StandIn_ClearCalls")(); }
    int callCount(const char* function) { return call<int (*)(const char*)>("StandIn_CallCount")(function); }
    // The arguments of the function's last call as "0,43,1"; pointers show as "ptr".
    QString lastArgs(const char* function)
    {
        return QString::fromUtf8(call<const char* (*)(const char*)>("StandIn_LastArgs")(function));
    }
    // Every call since the last reset, "ICubeSDK_Open(0)", in order.
    QStringList callLog()
    {
        return QString::fromUtf8(call<const char* (*)()>("StandIn_CallLog")())
            .split(u'\n', Qt::SkipEmptyParts);
    }
    unsigned long lastWindow() { return call<unsigned long (*)()>("StandIn_LastWindow")(); }
    QString libraryPath() { return QString::fromLocal8Bit(call<const char* (*)()>("StandIn_LibraryPath")()); }

private:
    template <typename Fn>
    Fn call(const char* name)
    {
        void* symbol = dlsym(handle_, name);
        if (!symbol)
            throw std::runtime_error(std::string("the stand-in lacks ") + name);
        return reinterpret_cast<Fn>(symbol);
    }

    void* handle_;
};

}  // namespace tavix::test
