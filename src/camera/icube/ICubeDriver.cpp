#include "camera/icube/ICubeDriver.h"

#include <dlfcn.h>
#include <link.h>
#include <QDir>
#include <QFile>
#include <algorithm>
#include <array>

namespace tavix {

static_assert(sizeof(unsigned long) >= sizeof(quintptr),
              "a native window id fits the library's window argument");
static_assert(sizeof(std::int32_t) == sizeof(int), "32-bit values pass through the library's int pointers");
static_assert(CameraDriver::kModeListCapacity == ICUBESDK_MODE_LIST_CAPACITY);

namespace {

// The text the library left in a blank-filled buffer: up to its first NUL
// (it need not write one), without the trailing blanks.
QString bufferText(const char* buffer, int length)
{
    int n = 0;
    while (n < length && buffer[n] != '\0')
        ++n;
    while (n > 0 && buffer[n - 1] == ' ')
        --n;
    return QString::fromUtf8(buffer, n);
}

QString loadedFile(void* handle, const QString& fallback)
{
    link_map* map = nullptr;
    if (dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && map && map->l_name && *map->l_name)
        return QString::fromLocal8Bit(map->l_name);
    return fallback;
}

}  // namespace

ICubeDriver::ICubeDriver(const QString& programFolder) : ICubeDriver(candidates(programFolder))
{
}

ICubeDriver::ICubeDriver(const QStringList& candidates)
{
    load(candidates);
}

ICubeDriver::~ICubeDriver()
{
    if (handle_)
        dlclose(handle_);
}

QStringList ICubeDriver::candidates(const QString& programFolder)
{
    QStringList list;
    if (!programFolder.isEmpty())
        list << QDir(programFolder).filePath(QString::fromLatin1(kLibraryFile));
    list << QString::fromLatin1(kLibraryFile);
    return list;
}

void ICubeDriver::load(const QStringList& candidates)
{
    QStringList failures;
    for (const QString& candidate : candidates) {
        void* handle = dlopen(QFile::encodeName(candidate).constData(), RTLD_NOW | RTLD_LOCAL);
        if (!handle) {
            const char* why = dlerror();
            failures << (why ? QString::fromLocal8Bit(why) : candidate);
            continue;
        }
        const QString path = loadedFile(handle, candidate);
        // A library that is there but incomplete is reported rather than passed
        // over for another copy: the program folder's copy was put there on purpose.
        if (const char* missing = bind(handle)) {
            dlclose(handle);
            api_ = Api{};
            errorText_ = QStringLiteral("ICubeSDK library lacks %1 (%2)").arg(QLatin1String(missing), path);
            return;
        }
        handle_ = handle;
        libraryPath_ = path;
        return;
    }
    if (failures.isEmpty())
        failures << QStringLiteral("no place to look");
    errorText_ = QStringLiteral("ICubeSDK library not found (%1): %2")
                     .arg(QLatin1String(kLibraryFile), failures.join(QStringLiteral("; ")));
}

const char* ICubeDriver::bind(void* handle)
{
    const char* missing = nullptr;
    auto bindOne = [&](const char* name, auto& slot) {
        if (missing)
            return;
        dlerror();
        void* symbol = dlsym(handle, name);
        if (!symbol || dlerror()) {
            missing = name;
            return;
        }
        slot = reinterpret_cast<std::remove_reference_t<decltype(slot)>>(symbol);
    };
#define TAVIX_ICUBE_BIND(fn) bindOne("ICubeSDK_" #fn, api_.fn)
    TAVIX_ICUBE_BIND(GetVersion);
    TAVIX_ICUBE_BIND(Init);
    TAVIX_ICUBE_BIND(GetName);
    TAVIX_ICUBE_BIND(Open);
    TAVIX_ICUBE_BIND(IsOpen);
    TAVIX_ICUBE_BIND(Close);
    TAVIX_ICUBE_BIND(SetCamParameter);
    TAVIX_ICUBE_BIND(GetCamParameter);
    TAVIX_ICUBE_BIND(GetCamParameterRange);
    TAVIX_ICUBE_BIND(GetModeList);
    TAVIX_ICUBE_BIND(GetMode);
    TAVIX_ICUBE_BIND(SetMode);
    TAVIX_ICUBE_BIND(SetDisplayMode);
    TAVIX_ICUBE_BIND(Start);
    TAVIX_ICUBE_BIND(IsStarted);
    TAVIX_ICUBE_BIND(Stop);
    TAVIX_ICUBE_BIND(GetGoodFrames);
    TAVIX_ICUBE_BIND(GetBrokenFrames);
    TAVIX_ICUBE_BIND(SaveToFile);
    TAVIX_ICUBE_BIND(SaveAvi);
    TAVIX_ICUBE_BIND(GetExposure);
    TAVIX_ICUBE_BIND(GetParamAuto);
    TAVIX_ICUBE_BIND(SetParamAuto);
    TAVIX_ICUBE_BIND(SetParamAutoDef);
    TAVIX_ICUBE_BIND(SetParamOnePush);
#undef TAVIX_ICUBE_BIND
    return missing;
}

int ICubeDriver::GetVersion(int which, QString& version)
{
    if (!loaded())
        return 1;
    std::array<char, ICUBESDK_VERSION_LENGTH + 1> buffer;
    buffer.fill(' ');
    buffer.back() = '\0';
    const int status = api_.GetVersion(which, buffer.data());
    version = bufferText(buffer.data(), ICUBESDK_VERSION_LENGTH);
    return status;
}

int ICubeDriver::Init()
{
    return loaded() ? api_.Init() : 0;
}

int ICubeDriver::GetName(int cam, QString& name)
{
    if (!loaded())
        return kNotLoaded;
    std::array<char, ICUBESDK_NAME_LENGTH + 1> buffer;
    buffer.fill(' ');
    buffer.back() = '\0';
    const int status = api_.GetName(cam, buffer.data());
    name = bufferText(buffer.data(), ICUBESDK_NAME_LENGTH);
    return status;
}

int ICubeDriver::Open(int cam)
{
    return loaded() ? api_.Open(cam) : kNotLoaded;
}

int ICubeDriver::IsOpen(int cam)
{
    return loaded() ? api_.IsOpen(cam) : kNotLoaded;
}

int ICubeDriver::Close(int cam)
{
    started_ = false;
    return loaded() ? api_.Close(cam) : kNotLoaded;
}

int ICubeDriver::GetModeList(int cam, std::vector<std::int32_t>& modes)
{
    if (!loaded())
        return kNotLoaded;
    std::array<int, ICUBESDK_MODE_LIST_CAPACITY> buffer{};
    int count = ICUBESDK_MODE_LIST_CAPACITY;
    const int status = api_.GetModeList(cam, buffer.data(), &count);
    const int kept = std::clamp(count, 0, ICUBESDK_MODE_LIST_CAPACITY);
    modes.assign(buffer.begin(), buffer.begin() + kept);
    return status;
}

int ICubeDriver::GetMode(int cam, std::int32_t& mode)
{
    return loaded() ? api_.GetMode(cam, &mode) : kNotLoaded;
}

int ICubeDriver::SetMode(int cam, std::int32_t mode)
{
    return loaded() ? api_.SetMode(cam, mode) : kNotLoaded;
}

int ICubeDriver::SetDisplayMode(int cam, int mode, int a, int b, int c, int d)
{
    return loaded() ? api_.SetDisplayMode(cam, mode, a, b, c, d) : kNotLoaded;
}

int ICubeDriver::Start(int cam, quintptr window, FrameSink* /*sink*/, int a, int b)
{
    if (!loaded())
        return kNotLoaded;
    const int status = api_.Start(cam, static_cast<unsigned long>(window), a, b);
    if (status == 0)
        started_ = true;
    return status;
}

int ICubeDriver::IsStarted(int cam)
{
    return loaded() ? api_.IsStarted(cam) : 0;
}

bool ICubeDriver::connectionLost(int cam) const
{
    // A camera the program stopped or closed itself was not lost, whatever the library says.
    return loaded() && started_ && api_.IsStarted(cam) != 1 && api_.IsOpen(cam) != 0;
}

int ICubeDriver::Stop(int cam)
{
    started_ = false;
    return loaded() ? api_.Stop(cam) : kNotLoaded;
}

int ICubeDriver::GetGoodFrames(int cam, std::int32_t& count)
{
    return loaded() ? api_.GetGoodFrames(cam, &count) : kNotLoaded;
}

int ICubeDriver::GetBrokenFrames(int cam, std::int32_t& count)
{
    return loaded() ? api_.GetBrokenFrames(cam, &count) : kNotLoaded;
}

int ICubeDriver::SaveToFile(int cam, const QString& path)
{
    return loaded() ? api_.SaveToFile(cam, path.toUtf8().constData()) : kNotLoaded;
}

int ICubeDriver::SaveAvi(int cam, const QString& path, int a, int seconds)
{
    return loaded() ? api_.SaveAvi(cam, path.toUtf8().constData(), a, seconds) : kNotLoaded;
}

namespace {

// The program's own parameter types, which the library does not know.
bool programsOwn(int type)
{
    return type >= ExtraParam::kWhiteBalanceTemperature && type <= ExtraParam::kDynamicFrameRate;
}

}  // namespace

int ICubeDriver::SetCamParameter(int cam, int type, std::int32_t value)
{
    if (programsOwn(type))
        return kNotOffered;
    return loaded() ? api_.SetCamParameter(cam, type, value) : kNotLoaded;
}

int ICubeDriver::GetCamParameter(int cam, int type, std::int32_t& value)
{
    if (programsOwn(type))
        return kNotOffered;
    return loaded() ? api_.GetCamParameter(cam, type, &value) : kNotLoaded;
}

int ICubeDriver::GetCamParameterRange(int cam, int type, CamParamRange& range)
{
    if (!loaded())
        return kNotLoaded;
    if (programsOwn(type)) {
        range = CamParamRange{};
        return 0;
    }
    ICubeSDK_ParamRange record{range.enabled,      range.autoMode, range.third,
                               range.defaultValue, range.minimum,  range.maximum};
    const int status = api_.GetCamParameterRange(cam, type, &record);
    range.enabled = record.enabled;
    range.autoMode = record.autoMode;
    range.third = record.third;
    range.defaultValue = record.defaultValue;
    range.minimum = record.minimum;
    range.maximum = record.maximum;
    return status;
}

int ICubeDriver::GetExposure(int cam, float& ms)
{
    return loaded() ? api_.GetExposure(cam, &ms) : kNotLoaded;
}

int ICubeDriver::GetParamAuto(int cam, int type, std::int32_t& flag)
{
    if (programsOwn(type))
        return kNotOffered;
    return loaded() ? api_.GetParamAuto(cam, type, &flag) : kNotLoaded;
}

int ICubeDriver::SetParamAuto(int cam, int type, std::int32_t flag)
{
    if (programsOwn(type))
        return kNotOffered;
    return loaded() ? api_.SetParamAuto(cam, type, flag) : kNotLoaded;
}

int ICubeDriver::SetParamAutoDef(int cam, int type)
{
    if (programsOwn(type))
        return kNotOffered;
    return loaded() ? api_.SetParamAutoDef(cam, type) : kNotLoaded;
}

int ICubeDriver::SetParamOnePush(int cam, int type)
{
    if (programsOwn(type))
        return kNotOffered;
    return loaded() ? api_.SetParamOnePush(cam, type) : kNotLoaded;
}

}  // namespace tavix
