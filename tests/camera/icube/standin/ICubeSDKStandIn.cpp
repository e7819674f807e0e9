// A stand-in for the vendor camera library, built from our own sources for the
// tests only (never installed). It exports every function that ICubeSDK.h
// declares, with C linkage, and keeps a small camera in memory. Tests reach the
// StandIn_* control functions with dlsym on the same handle the driver loaded,
// to script answers and to read back what was called.
//
// Scripting rules:
// - StandIn_SetResult(name, status) makes that function return `status`
//   instead of its own result; it still does its work (fills its outputs,
//   changes the camera's state), except that SaveToFile writes no file and
//   SaveAvi starts no recording when the scripted status is non-zero.
// - For the parameter functions a status can be scripted for one parameter
//   type alone: StandIn_SetResult("ICubeSDK_GetCamParameter:4", -5).
// - Init returns the camera count; IsStarted 1 while streaming, else 0;
//   IsOpen 0 while open, else 1.
// - After SetParamOnePush(type) the parameter reads 0 for a number of reads,
//   then 1 (the one-push run finished). After SaveAvi parameter 24 reads 1
//   for as many reads as the seconds asked for, then 0; StandIn_SetAviPolls(n)
//   makes that n reads instead, and StandIn_SetAviPolls(-2) makes it read 1
//   for ever (a camera that never reports the end of its recording).
// - StandIn_Unplug() pulls the camera's cable until the next reset: it stops
//   streaming and closes (IsStarted 0, IsOpen 1), and every call that needs
//   the camera (Open, GetName, Start, SetDisplayMode, the mode, parameter and
//   exposure calls, the frame counters, SaveToFile, SaveAvi) does nothing and
//   returns -10, unless a status is scripted for it.
// - After StandIn_SetSaveDelay(before, midway) SaveToFile returns at once and
//   writes the file on a thread of its own, as the vendor's library does: it
//   waits `before` ms, writes the first half, waits `midway` ms, writes the rest.
// - Every call of an ICubeSDK_* function is recorded with its arguments as
//   decimal text, strings as they came: "ICubeSDK_SetCamParameter(0,43,1)".
//
// Built with ICUBE_STANDIN_WITHOUT_START it lacks ICubeSDK_Start, for the
// missing-function path of the driver.

#include "camera/icube/ICubeSDK.h"

#include <dlfcn.h>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#define STANDIN_API extern "C" __attribute__((visibility("default")))

namespace {

struct Camera {
    std::map<std::string, int> results;
    int cameraCount = 1;
    std::string version = "2.1.0";
    std::string name = "ICube Stand";
    std::vector<int> modes{0, 1, 3, 5, 8};
    int mode = 1;
    bool open = false;
    bool started = false;
    unsigned long lastWindow = 0;
    std::map<int, int> params;
    std::map<int, ICubeSDK_ParamRange> ranges;
    std::map<int, int> autoFlags;
    float exposure = 10.0f;
    int goodFrames = 0;
    int brokenFrames = 0;
    int frameWidth = 8;
    int frameHeight = 6;
    int onePushPolls = 3;            // reads of 0 before a one-push run reports done; -1: never
    std::map<int, int> onePushLeft;  // per parameter type, while a run is pending
    int aviPolls = -1;               // reads of 1 after SaveAvi; -1: the seconds asked for; -2: never 0
    int aviLeft = 0;                 // -1: for ever
    bool unplugged = false;
    int saveBeforeMs = -1;  // -1: SaveToFile writes before it returns
    int saveMidwayMs = 0;
    std::vector<std::string> calls;
    std::map<std::string, std::string> lastArgs;
    std::map<std::string, int> counts;
    std::string text;  // what the last text-returning control function handed out
};

std::mutex mutex;
Camera camera;

constexpr int kAviForever = -2;
constexpr int kUnplugged = -10;  // what the calls that need the camera return once it is unplugged

// The background writer of SaveToFile; joined before the next one starts, on
// reset and when the library is unloaded.
struct Writer {
    std::thread thread;
    void join()
    {
        if (thread.joinable())
            thread.join();
    }
    ~Writer() { join(); }
} writer;

using Lock = std::lock_guard<std::mutex>;

std::string joinArgs()
{
    return {};
}

std::string argText(const char* s)
{
    return s ? s : "(null)";
}
std::string argText(const void* p)
{
    return p ? "ptr" : "null";
}
template <typename T>
std::string argText(T v)
{
    return std::to_string(v);
}

template <typename First, typename... Rest>
std::string joinArgs(First first, Rest... rest)
{
    std::string text = argText(first);
    ((text += "," + argText(rest)), ...);
    return text;
}

// Records the call and returns the scripted status, else the function's own.
template <typename... Args>
int finish(const char* function, int own, Args... args)
{
    const std::string list = joinArgs(args...);
    camera.calls.push_back(std::string(function) + "(" + list + ")");
    camera.lastArgs[function] = list;
    ++camera.counts[function];
    const auto scripted = camera.results.find(function);
    return scripted == camera.results.end() ? own : scripted->second;
}

// The same for a parameter call: a status scripted for "name:type" wins over one for the name.
template <typename... Args>
int finishTyped(const char* function, int type, int own, Args... args)
{
    const int status = finish(function, own, args...);
    const auto scripted = camera.results.find(std::string(function) + ":" + std::to_string(type));
    return scripted == camera.results.end() ? status : scripted->second;
}

// The status a call that needs the camera returns by itself.
int own(int status)
{
    return camera.unplugged ? kUnplugged : status;
}

bool scriptedFailure(const char* function)
{
    const auto scripted = camera.results.find(function);
    return scripted != camera.results.end() && scripted->second != 0;
}

// Writes at most `length` characters; a NUL only if there is room for it.
void fillText(char* buffer, const std::string& text, std::size_t length)
{
    if (!buffer)
        return;
    const std::size_t n = std::min(text.size(), length);
    std::memcpy(buffer, text.data(), n);
    if (n < length)
        buffer[n] = '\0';
}

void put16(std::vector<unsigned char>& out, unsigned v)
{
    out.push_back(v & 0xff);
    out.push_back((v >> 8) & 0xff);
}

void put32(std::vector<unsigned char>& out, std::uint32_t v)
{
    put16(out, v & 0xffff);
    put16(out, v >> 16);
}

// A 24-bit bottom-up bitmap with a grey ramp, so that a still has something to show.
std::vector<unsigned char> bitmap(int width, int height)
{
    const std::uint32_t stride = (static_cast<std::uint32_t>(width) * 3 + 3) & ~3u;
    const std::uint32_t imageSize = stride * static_cast<std::uint32_t>(height);
    std::vector<unsigned char> out;
    out.reserve(54 + imageSize);
    out.push_back('B');
    out.push_back('M');
    put32(out, 54 + imageSize);
    put32(out, 0);
    put32(out, 54);
    put32(out, 40);
    put32(out, static_cast<std::uint32_t>(width));
    put32(out, static_cast<std::uint32_t>(height));
    put16(out, 1);
    put16(out, 24);
    put32(out, 0);
    put32(out, imageSize);
    put32(out, 2835);
    put32(out, 2835);
    put32(out, 0);
    put32(out, 0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned char grey = static_cast<unsigned char>((x * 255) / (width > 1 ? width - 1 : 1));
            out.insert(out.end(), {grey, grey, grey});
        }
        out.resize(out.size() + (stride - static_cast<std::uint32_t>(width) * 3), 0);
    }
    return out;
}

bool writeBitmap(const char* fileName, int width, int height)
{
    if (!fileName || width <= 0 || height <= 0)
        return false;
    const std::vector<unsigned char> out = bitmap(width, height);
    FILE* file = std::fopen(fileName, "wb");
    if (!file)
        return false;
    const bool ok = std::fwrite(out.data(), 1, out.size(), file) == out.size();
    return std::fclose(file) == 0 && ok;
}

void writeBitmapLater(const std::string& fileName, std::vector<unsigned char> bytes, int beforeMs,
                      int midwayMs)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(beforeMs));
    FILE* file = std::fopen(fileName.c_str(), "wb");
    if (!file)
        return;
    const std::size_t half = bytes.size() / 2;
    std::fwrite(bytes.data(), 1, half, file);
    std::fflush(file);
    std::this_thread::sleep_for(std::chrono::milliseconds(midwayMs));
    std::fwrite(bytes.data() + half, 1, bytes.size() - half, file);
    std::fclose(file);
}

const char* handOut(std::string text)
{
    camera.text = std::move(text);
    return camera.text.c_str();
}

const char ownAddress = 0;  // dladdr finds this copy's file by it

}  // namespace

// ---- The library's functions -------------------------------------------------

STANDIN_API int ICubeSDK_GetVersion(int which, char* version)
{
    Lock lock(mutex);
    fillText(version, camera.version, ICUBESDK_VERSION_LENGTH);
    return finish("ICubeSDK_GetVersion", 0, which);
}

STANDIN_API int ICubeSDK_Init(void)
{
    Lock lock(mutex);
    return finish("ICubeSDK_Init", camera.cameraCount);
}

STANDIN_API int ICubeSDK_GetName(int cam, char* name)
{
    Lock lock(mutex);
    if (!camera.unplugged)
        fillText(name, camera.name, ICUBESDK_NAME_LENGTH);
    return finish("ICubeSDK_GetName", own(0), cam);
}

STANDIN_API int ICubeSDK_Open(int cam)
{
    Lock lock(mutex);
    camera.open = !camera.unplugged;
    return finish("ICubeSDK_Open", own(0), cam);
}

STANDIN_API int ICubeSDK_IsOpen(int cam)
{
    Lock lock(mutex);
    return finish("ICubeSDK_IsOpen", camera.open ? 0 : 1, cam);
}

STANDIN_API int ICubeSDK_Close(int cam)
{
    Lock lock(mutex);
    camera.open = false;
    camera.started = false;
    return finish("ICubeSDK_Close", 0, cam);
}

STANDIN_API int ICubeSDK_SetCamParameter(int cam, int type, int value)
{
    Lock lock(mutex);
    if (!camera.unplugged) {
        camera.params[type] = value;
        camera.onePushLeft.erase(type);
    }
    return finishTyped("ICubeSDK_SetCamParameter", type, own(0), cam, type, value);
}

STANDIN_API int ICubeSDK_GetCamParameter(int cam, int type, int* value)
{
    Lock lock(mutex);
    if (camera.unplugged)
        return finishTyped("ICubeSDK_GetCamParameter", type, kUnplugged, cam, type,
                           static_cast<const void*>(value));
    int read = camera.params[type];
    if (type == 24 && camera.aviLeft != 0) {
        if (camera.aviLeft > 0)
            --camera.aviLeft;
        read = 1;
    }
    const auto pending = camera.onePushLeft.find(type);
    if (pending != camera.onePushLeft.end()) {
        if (pending->second == 0) {
            camera.params[type] = 1;
            read = 1;
            camera.onePushLeft.erase(pending);
        } else {
            if (pending->second > 0)
                --pending->second;
            read = 0;
        }
    }
    if (value)
        *value = read;
    return finishTyped("ICubeSDK_GetCamParameter", type, 0, cam, type, static_cast<const void*>(value));
}

STANDIN_API int ICubeSDK_GetCamParameterRange(int cam, int type, ICubeSDK_ParamRange* range)
{
    Lock lock(mutex);
    if (range && !camera.unplugged) {
        const auto known = camera.ranges.find(type);
        *range = known == camera.ranges.end() ? ICubeSDK_ParamRange{} : known->second;
    }
    return finishTyped("ICubeSDK_GetCamParameterRange", type, own(0), cam, type,
                       static_cast<const void*>(range));
}

STANDIN_API int ICubeSDK_GetModeList(int cam, int* modes, int* count)
{
    Lock lock(mutex);
    const int capacity = count ? *count : 0;
    const std::string args = joinArgs(cam, static_cast<const void*>(modes), capacity);
    if (!camera.unplugged) {
        for (int i = 0; modes && i < capacity && i < static_cast<int>(camera.modes.size()); ++i)
            modes[i] = camera.modes[static_cast<std::size_t>(i)];
        // The count says how many the camera has, even beyond the capacity given.
        if (count)
            *count = static_cast<int>(camera.modes.size());
    }
    camera.calls.push_back("ICubeSDK_GetModeList(" + args + ")");
    camera.lastArgs["ICubeSDK_GetModeList"] = args;
    ++camera.counts["ICubeSDK_GetModeList"];
    const auto scripted = camera.results.find("ICubeSDK_GetModeList");
    return scripted == camera.results.end() ? own(0) : scripted->second;
}

STANDIN_API int ICubeSDK_GetMode(int cam, int* mode)
{
    Lock lock(mutex);
    if (mode && !camera.unplugged)
        *mode = camera.mode;
    return finish("ICubeSDK_GetMode", own(0), cam, static_cast<const void*>(mode));
}

STANDIN_API int ICubeSDK_SetMode(int cam, int mode)
{
    Lock lock(mutex);
    if (!camera.unplugged)
        camera.mode = mode;
    return finish("ICubeSDK_SetMode", own(0), cam, mode);
}

STANDIN_API int ICubeSDK_SetDisplayMode(int cam, int mode, int a, int b, int c, int d)
{
    Lock lock(mutex);
    return finish("ICubeSDK_SetDisplayMode", own(0), cam, mode, a, b, c, d);
}

#ifndef ICUBE_STANDIN_WITHOUT_START
STANDIN_API int ICubeSDK_Start(int cam, unsigned long window, int a, int b)
{
    Lock lock(mutex);
    if (!camera.unplugged) {
        camera.started = true;
        camera.lastWindow = window;
    }
    return finish("ICubeSDK_Start", own(0), cam, window, a, b);
}
static_assert(std::is_same_v<decltype(&ICubeSDK_Start), ICubeSDK_StartFn>);
#endif

STANDIN_API int ICubeSDK_IsStarted(int cam)
{
    Lock lock(mutex);
    return finish("ICubeSDK_IsStarted", camera.started ? 1 : 0, cam);
}

STANDIN_API int ICubeSDK_Stop(int cam)
{
    Lock lock(mutex);
    camera.started = false;
    return finish("ICubeSDK_Stop", 0, cam);
}

STANDIN_API int ICubeSDK_GetGoodFrames(int cam, int* count)
{
    Lock lock(mutex);
    if (count && !camera.unplugged)
        *count = camera.goodFrames;
    return finish("ICubeSDK_GetGoodFrames", own(0), cam, static_cast<const void*>(count));
}

STANDIN_API int ICubeSDK_GetBrokenFrames(int cam, int* count)
{
    Lock lock(mutex);
    if (count && !camera.unplugged)
        *count = camera.brokenFrames;
    return finish("ICubeSDK_GetBrokenFrames", own(0), cam, static_cast<const void*>(count));
}

STANDIN_API int ICubeSDK_SaveToFile(int cam, const char* fileName)
{
    writer.join();
    Lock lock(mutex);
    int status = own(0);
    if (scriptedFailure("ICubeSDK_SaveToFile") || camera.unplugged) {
        // writes nothing
    } else if (camera.saveBeforeMs >= 0 && fileName && camera.frameWidth > 0 && camera.frameHeight > 0) {
        writer.thread = std::thread(writeBitmapLater, std::string(fileName),
                                    bitmap(camera.frameWidth, camera.frameHeight), camera.saveBeforeMs,
                                    camera.saveMidwayMs);
    } else if (!writeBitmap(fileName, camera.frameWidth, camera.frameHeight)) {
        status = -1;
    }
    return finish("ICubeSDK_SaveToFile", status, cam, fileName);
}

STANDIN_API int ICubeSDK_SaveAvi(int cam, const char* fileName, int a, int seconds)
{
    Lock lock(mutex);
    if (!scriptedFailure("ICubeSDK_SaveAvi") && !camera.unplugged)
        camera.aviLeft = camera.aviPolls == kAviForever ? -1
                         : camera.aviPolls >= 0         ? camera.aviPolls
                                                        : seconds;
    return finish("ICubeSDK_SaveAvi", own(0), cam, fileName, a, seconds);
}

STANDIN_API int ICubeSDK_GetExposure(int cam, float* milliseconds)
{
    Lock lock(mutex);
    if (milliseconds && !camera.unplugged)
        *milliseconds = camera.exposure;
    return finish("ICubeSDK_GetExposure", own(0), cam, static_cast<const void*>(milliseconds));
}

STANDIN_API int ICubeSDK_GetParamAuto(int cam, int type, int* flag)
{
    Lock lock(mutex);
    if (flag && !camera.unplugged)
        *flag = camera.autoFlags[type];
    return finishTyped("ICubeSDK_GetParamAuto", type, own(0), cam, type, static_cast<const void*>(flag));
}

STANDIN_API int ICubeSDK_SetParamAuto(int cam, int type, int flag)
{
    Lock lock(mutex);
    if (!camera.unplugged)
        camera.autoFlags[type] = flag;
    return finishTyped("ICubeSDK_SetParamAuto", type, own(0), cam, type, flag);
}

STANDIN_API int ICubeSDK_SetParamAutoDef(int cam, int type)
{
    Lock lock(mutex);
    return finishTyped("ICubeSDK_SetParamAutoDef", type, own(0), cam, type);
}

STANDIN_API int ICubeSDK_SetParamOnePush(int cam, int type)
{
    Lock lock(mutex);
    if (!camera.unplugged) {
        camera.params[type] = 0;
        camera.onePushLeft[type] = camera.onePushPolls;
    }
    return finishTyped("ICubeSDK_SetParamOnePush", type, own(0), cam, type);
}

// The stand-in must keep the shapes the driver binds to.
static_assert(std::is_same_v<decltype(&ICubeSDK_GetVersion), ICubeSDK_GetVersionFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_Init), ICubeSDK_InitFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_GetName), ICubeSDK_GetNameFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_Open), ICubeSDK_OpenFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_IsOpen), ICubeSDK_IsOpenFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_Close), ICubeSDK_CloseFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_SetCamParameter), ICubeSDK_SetCamParameterFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_GetCamParameter), ICubeSDK_GetCamParameterFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_GetCamParameterRange), ICubeSDK_GetCamParameterRangeFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_GetModeList), ICubeSDK_GetModeListFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_GetMode), ICubeSDK_GetModeFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_SetMode), ICubeSDK_SetModeFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_SetDisplayMode), ICubeSDK_SetDisplayModeFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_IsStarted), ICubeSDK_IsStartedFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_Stop), ICubeSDK_StopFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_GetGoodFrames), ICubeSDK_GetGoodFramesFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_GetBrokenFrames), ICubeSDK_GetBrokenFramesFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_SaveToFile), ICubeSDK_SaveToFileFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_SaveAvi), ICubeSDK_SaveAviFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_GetExposure), ICubeSDK_GetExposureFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_GetParamAuto), ICubeSDK_GetParamAutoFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_SetParamAuto), ICubeSDK_SetParamAutoFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_SetParamAutoDef), ICubeSDK_SetParamAutoDefFn>);
static_assert(std::is_same_v<decltype(&ICubeSDK_SetParamOnePush), ICubeSDK_SetParamOnePushFn>);

// ---- Control functions for the tests -----------------------------------------

STANDIN_API void StandIn_Reset(void)
{
    writer.join();
    Lock lock(mutex);
    camera = Camera{};
}

STANDIN_API void StandIn_ClearCalls(void)
{
    Lock lock(mutex);
    camera.calls.clear();
    camera.lastArgs.clear();
    camera.counts.clear();
}

STANDIN_API void StandIn_SetResult(const char* function, int status)
{
    Lock lock(mutex);
    camera.results[argText(function)] = status;
}

STANDIN_API void StandIn_ClearResult(const char* function)
{
    Lock lock(mutex);
    camera.results.erase(argText(function));
}

STANDIN_API void StandIn_SetCameraCount(int count)
{
    Lock lock(mutex);
    camera.cameraCount = count;
}

STANDIN_API void StandIn_SetVersion(const char* version)
{
    Lock lock(mutex);
    camera.version = argText(version);
}

STANDIN_API void StandIn_SetName(const char* name)
{
    Lock lock(mutex);
    camera.name = argText(name);
}

STANDIN_API void StandIn_SetModeList(const int* modes, int count)
{
    Lock lock(mutex);
    camera.modes.assign(modes, modes + (modes && count > 0 ? count : 0));
}

STANDIN_API void StandIn_SetMode(int mode)
{
    Lock lock(mutex);
    camera.mode = mode;
}

STANDIN_API int StandIn_Mode(void)
{
    Lock lock(mutex);
    return camera.mode;
}

STANDIN_API void StandIn_SetParam(int type, int value)
{
    Lock lock(mutex);
    camera.params[type] = value;
}

STANDIN_API int StandIn_Param(int type)
{
    Lock lock(mutex);
    const auto known = camera.params.find(type);
    return known == camera.params.end() ? 0 : known->second;
}

STANDIN_API void StandIn_SetParamRange(int type, int enabled, int autoMode, int third, int defaultValue,
                                       int minimum, int maximum)
{
    Lock lock(mutex);
    camera.ranges[type] = ICubeSDK_ParamRange{enabled, autoMode, third, defaultValue, minimum, maximum};
}

STANDIN_API void StandIn_SetParamAuto(int type, int flag)
{
    Lock lock(mutex);
    camera.autoFlags[type] = flag;
}

STANDIN_API int StandIn_ParamAuto(int type)
{
    Lock lock(mutex);
    const auto known = camera.autoFlags.find(type);
    return known == camera.autoFlags.end() ? 0 : known->second;
}

STANDIN_API void StandIn_SetExposure(float milliseconds)
{
    Lock lock(mutex);
    camera.exposure = milliseconds;
}

STANDIN_API void StandIn_SetFrames(int good, int broken)
{
    Lock lock(mutex);
    camera.goodFrames = good;
    camera.brokenFrames = broken;
}

STANDIN_API void StandIn_SetFrameSize(int width, int height)
{
    Lock lock(mutex);
    camera.frameWidth = width;
    camera.frameHeight = height;
}

STANDIN_API void StandIn_SetSaveDelay(int beforeMs, int midwayMs)
{
    Lock lock(mutex);
    camera.saveBeforeMs = beforeMs;
    camera.saveMidwayMs = midwayMs;
}

STANDIN_API void StandIn_SetOnePushPolls(int polls)
{
    Lock lock(mutex);
    camera.onePushPolls = polls;
}

// Reads of 1 from parameter 24 after SaveAvi: -1 the seconds asked for, -2 for ever.
STANDIN_API void StandIn_SetAviPolls(int polls)
{
    Lock lock(mutex);
    camera.aviPolls = polls;
}

STANDIN_API void StandIn_Unplug(void)
{
    Lock lock(mutex);
    camera.unplugged = true;
    camera.started = false;
    camera.open = false;
    camera.aviLeft = 0;
}

STANDIN_API int StandIn_IsOpen(void)
{
    Lock lock(mutex);
    return camera.open ? 1 : 0;
}

STANDIN_API int StandIn_IsStarted(void)
{
    Lock lock(mutex);
    return camera.started ? 1 : 0;
}

STANDIN_API int StandIn_CallCount(const char* function)
{
    Lock lock(mutex);
    const auto known = camera.counts.find(argText(function));
    return known == camera.counts.end() ? 0 : known->second;
}

// The arguments of the function's last call ("" when never called).
STANDIN_API const char* StandIn_LastArgs(const char* function)
{
    Lock lock(mutex);
    const auto known = camera.lastArgs.find(argText(function));
    return handOut(known == camera.lastArgs.end() ? std::string() : known->second);
}

// Every call since the last reset, one per line.
STANDIN_API const char* StandIn_CallLog(void)
{
    Lock lock(mutex);
    std::string log;
    for (const std::string& call : camera.calls)
        log += call + "\n";
    return handOut(std::move(log));
}

STANDIN_API unsigned long StandIn_LastWindow(void)
{
    Lock lock(mutex);
    return camera.lastWindow;
}

// The file this copy of the stand-in was loaded from.
STANDIN_API const char* StandIn_LibraryPath(void)
{
    Lock lock(mutex);
    Dl_info info{};
    if (dladdr(&ownAddress, &info) == 0 || !info.dli_fname)
        return handOut(std::string());
    return handOut(info.dli_fname);
}
