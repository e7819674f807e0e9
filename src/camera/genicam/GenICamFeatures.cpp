#include "camera/genicam/GenICamFeatures.h"

#include "camera/genicam/AravisCalls.h"
#include "camera/genicam/GenICamDriver.h"

// GLib names a struct member "signals", which Qt's keyword macro would rewrite.
#undef signals
#include <arv.h>

#include <QByteArray>
#include <QRect>
#include <algorithm>
#include <cmath>

namespace tavix {

using AravisCalls::clampInt;

namespace {

constexpr int kWhiteBalance = 6;
constexpr int kExposure = 7;

// Where each parameter type lives among the standard feature names, first
// name found wins. Float features are scaled to the integer the dialog shows.
struct Mapping {
    int type;
    const char* names[2];
    double floatScale;
    const char* selector;  // an enumeration set to selectorValue before every access
    const char* selectorValue;
    const char* autoName;  // the Off/Continuous enumeration of its automatic mode
    const char* enable;    // a boolean switched on before a write
    // Whether the settings dialog has a box for the automatic mode; one
    // without is reported only while on, and its default is off.
    bool autoBox = true;
};

constexpr Mapping kMappings[] = {
    {kExposure, {"ExposureTime", "ExposureTimeAbs"}, 1, nullptr, nullptr, "ExposureAuto", nullptr},
    {8, {"AutoTargetBrightness", "TargetBrightness"}, 1, nullptr, nullptr, nullptr, nullptr},
    {13, {"Gain", "GainRaw"}, 10, nullptr, nullptr, "GainAuto", nullptr, false},
    {12, {"BlackLevel", "BlackLevelRaw"}, 1, nullptr, nullptr, "BlackLevelAuto", nullptr},
    {3, {"Gamma", nullptr}, 64, nullptr, nullptr, nullptr, nullptr},
    {111, {"GammaEnable", nullptr}, 1, nullptr, nullptr, nullptr, nullptr},
    {5, {"ReverseX", nullptr}, 1, nullptr, nullptr, nullptr, nullptr},
    {4, {"ReverseY", nullptr}, 1, nullptr, nullptr, nullptr, nullptr},
    {9,
     {"BalanceRatio", "BalanceRatioAbs"},
     64,
     "BalanceRatioSelector",
     "Red",
     "BalanceWhiteAuto",
     nullptr,
     false},
    {10,
     {"BalanceRatio", "BalanceRatioAbs"},
     64,
     "BalanceRatioSelector",
     "Green",
     "BalanceWhiteAuto",
     nullptr,
     false},
    {11,
     {"BalanceRatio", "BalanceRatioAbs"},
     64,
     "BalanceRatioSelector",
     "Blue",
     "BalanceWhiteAuto",
     nullptr,
     false},
    {147,
     {"AcquisitionFrameRate", "AcquisitionFrameRateAbs"},
     1,
     nullptr,
     nullptr,
     nullptr,
     "AcquisitionFrameRateEnable"},
};

const Mapping* mappingOf(int type)
{
    for (const Mapping& m : kMappings)
        if (m.type == type)
            return &m;
    return nullptr;
}

}  // namespace

struct GenICamFeatures::Feature {
    const Mapping* mapping = nullptr;
    const char* name = nullptr;
    enum Kind { Integer, Float, Boolean } kind = Integer;
};

GenICamFeatures::GenICamFeatures(Log log) : log_(std::move(log))
{
}

struct GenICamFeatures::Snapshot {
    std::vector<std::pair<int, std::int32_t>> values;
    std::vector<std::pair<const char*, QByteArray>> autos;  // automatic mode and its entry
    gint64 pixelFormat = 0;
    gint binX = 0, binY = 0;
    QRect region;
};

bool GenICamFeatures::loadDefaultUserSet(_ArvCamera* camera)
{
    ArvDevice* device = arv_camera_get_device(camera);
    if (!arv_device_is_feature_available(device, "UserSetLoad", nullptr) ||
        !arv_device_is_enumeration_entry_available(device, "UserSetSelector", "Default", nullptr))
        return false;
    GError* error = nullptr;
    arv_device_set_string_feature_value(device, "UserSetSelector", "Default", &error);
    if (!error)
        arv_device_execute_command(device, "UserSetLoad", &error);
    const bool loaded = error == nullptr;
    g_clear_error(&error);
    return loaded;
}

GenICamFeatures::Snapshot GenICamFeatures::take() const
{
    Snapshot s;
    ArvDevice* device = arv_camera_get_device(camera_);
    for (const Mapping& m : kMappings) {
        Feature f;
        std::int32_t value = 0;
        if (feature(m.type, f) && read(f, value) == 0)
            s.values.emplace_back(m.type, value);
        const bool listed = std::any_of(s.autos.begin(), s.autos.end(),
                                        [&m](const auto& a) { return qstrcmp(a.first, m.autoName) == 0; });
        if (m.autoName && !listed && arv_device_is_feature_available(device, m.autoName, nullptr))
            s.autos.emplace_back(m.autoName,
                                 arv_device_get_string_feature_value(device, m.autoName, nullptr));
    }
    s.pixelFormat = arv_camera_get_pixel_format(camera_, nullptr);
    if (arv_camera_is_binning_available(camera_, nullptr))
        arv_camera_get_binning(camera_, &s.binX, &s.binY, nullptr);
    gint x = 0, y = 0, w = 0, h = 0;
    arv_camera_get_region(camera_, &x, &y, &w, &h, nullptr);
    s.region = QRect(x, y, w, h);
    return s;
}

void GenICamFeatures::putBack(const Snapshot& user)
{
    ArvDevice* device = arv_camera_get_device(camera_);
    GError* error = nullptr;
    if (user.binX > 0 && user.binY > 0)
        arv_camera_set_binning(camera_, user.binX, user.binY, &error);
    AravisCalls::failed(error, log_);
    arv_camera_set_pixel_format(camera_, static_cast<ArvPixelFormat>(user.pixelFormat), &error);
    AravisCalls::failed(error, log_);
    arv_camera_set_region(camera_, user.region.x(), user.region.y(), user.region.width(),
                          user.region.height(), &error);
    AravisCalls::failed(error, log_);
    // Automatic modes first: a value under a mode that is on is the mode's to set.
    for (const auto& [name, entry] : user.autos) {
        arv_device_set_string_feature_value(device, name, entry.constData(), &error);
        AravisCalls::failed(error, log_);
    }
    for (const auto& [type, value] : user.values) {
        Feature f;
        if (feature(type, f) && !(f.mapping->autoName && hasAuto(type) && autoOn(f.mapping->autoName)))
            write(f, value);
    }
}

void GenICamFeatures::attach(_ArvCamera* camera)
{
    camera_ = camera;
    defaults_.clear();
    autoDefaults_.clear();
    if (!camera_)
        return;
    const Snapshot user = take();
    const bool factory = loader_ && loader_(camera_);
    const Snapshot defaults = factory ? take() : user;
    if (factory)
        putBack(user);
    defaults_ = defaults.values;
    for (const Mapping& m : kMappings) {
        if (!m.autoName || !m.autoBox)
            continue;
        const auto a = std::find_if(defaults.autos.begin(), defaults.autos.end(),
                                    [&m](const auto& a) { return qstrcmp(a.first, m.autoName) == 0; });
        if (a != defaults.autos.end())
            autoDefaults_.emplace_back(m.type, a->second != "Off" ? 1 : 0);
    }
}

bool GenICamFeatures::feature(int type, Feature& f) const
{
    const Mapping* m = mappingOf(type);
    if (!m || !camera_)
        return false;
    ArvDevice* device = arv_camera_get_device(camera_);
    if (m->selector) {
        if (!arv_device_is_feature_available(device, m->selector, nullptr) ||
            !arv_device_is_enumeration_entry_available(device, m->selector, m->selectorValue, nullptr))
            return false;
        GError* error = nullptr;
        arv_device_set_string_feature_value(device, m->selector, m->selectorValue, &error);
        if (error) {
            g_clear_error(&error);
            return false;
        }
    }
    for (const char* name : m->names) {
        if (!name || !arv_device_is_feature_available(device, name, nullptr))
            continue;
        ArvGcNode* node = arv_device_get_feature(device, name);
        f.mapping = m;
        f.name = name;
        if (ARV_IS_GC_INTEGER(node))
            f.kind = Feature::Integer;
        else if (ARV_IS_GC_FLOAT(node))
            f.kind = Feature::Float;
        else if (ARV_IS_GC_BOOLEAN(node))
            f.kind = Feature::Boolean;
        else
            continue;
        return true;
    }
    return false;
}

int GenICamFeatures::read(const Feature& f, std::int32_t& value) const
{
    ArvDevice* device = arv_camera_get_device(camera_);
    GError* error = nullptr;
    double v = 0;
    if (f.kind == Feature::Integer)
        v = static_cast<double>(arv_device_get_integer_feature_value(device, f.name, &error));
    else if (f.kind == Feature::Float)
        v = arv_device_get_float_feature_value(device, f.name, &error) * f.mapping->floatScale;
    else
        v = arv_device_get_boolean_feature_value(device, f.name, &error) ? 1 : 0;
    if (AravisCalls::failed(error, log_))
        return GenICamDriver::kFailed;
    value = clampInt(std::lround(v));
    return 0;
}

int GenICamFeatures::write(const Feature& f, std::int32_t value)
{
    ArvDevice* device = arv_camera_get_device(camera_);
    GError* error = nullptr;
    if (f.mapping->enable && arv_device_is_feature_available(device, f.mapping->enable, nullptr)) {
        arv_device_set_boolean_feature_value(device, f.mapping->enable, TRUE, &error);
        AravisCalls::failed(error, log_);
    }
    if (f.kind == Feature::Integer)
        arv_device_set_integer_feature_value(device, f.name, value, &error);
    else if (f.kind == Feature::Float)
        arv_device_set_float_feature_value(device, f.name, value / f.mapping->floatScale, &error);
    else
        arv_device_set_boolean_feature_value(device, f.name, value != 0, &error);
    return AravisCalls::failed(error, log_) ? GenICamDriver::kFailed : 0;
}

bool GenICamFeatures::autoOn(const char* autoFeature) const
{
    const char* value =
        arv_device_get_string_feature_value(arv_camera_get_device(camera_), autoFeature, nullptr);
    return value && qstrcmp(value, "Off") != 0;
}

int GenICamFeatures::range(int type, CamParamRange& range) const
{
    range = CamParamRange{};
    ArvDevice* device = arv_camera_get_device(camera_);
    if (type == kWhiteBalance) {
        if (arv_device_is_feature_available(device, "BalanceWhiteAuto", nullptr) &&
            arv_device_is_enumeration_entry_available(device, "BalanceWhiteAuto", "Once", nullptr)) {
            range.enabled = 1;
            range.defaultValue = range.maximum = 1;
        }
        return 0;
    }
    Feature f;
    if (!feature(type, f))
        return 0;  // the camera lacks it: not enabled
    GError* error = nullptr;
    if (f.kind == Feature::Integer) {
        gint64 min = 0, max = 0;
        arv_device_get_integer_feature_bounds(device, f.name, &min, &max, &error);
        range.minimum = clampInt(static_cast<double>(min));
        range.maximum = clampInt(static_cast<double>(max));
    } else if (f.kind == Feature::Float) {
        double min = 0, max = 0;
        arv_device_get_float_feature_bounds(device, f.name, &min, &max, &error);
        range.minimum = clampInt(std::ceil(min * f.mapping->floatScale - 1e-9));
        range.maximum = clampInt(std::floor(max * f.mapping->floatScale + 1e-9));
    } else {
        range.maximum = 1;
    }
    if (AravisCalls::failed(error, log_))
        return GenICamDriver::kFailed;
    range.enabled = 1;
    const char* autoName = f.mapping->autoName;
    if (autoName && arv_device_is_feature_available(device, autoName, nullptr))
        range.autoMode = f.mapping->autoBox || autoOn(autoName) ? 1 : 0;
    range.third = 1;
    const auto def =
        std::find_if(defaults_.begin(), defaults_.end(), [type](auto& d) { return d.first == type; });
    // Within the range the camera has now (a default beyond it would only be refused).
    range.defaultValue =
        std::clamp(def != defaults_.end() ? def->second : range.minimum, range.minimum, range.maximum);
    return 0;
}

int GenICamFeatures::get(int type, std::int32_t& value) const
{
    if (type == kWhiteBalance) {
        CamParamRange r;
        range(type, r);
        if (!r.enabled)
            return GenICamDriver::kNotSupported;
        value = autoOn("BalanceWhiteAuto") ? 0 : 1;
        return 0;
    }
    Feature f;
    if (!feature(type, f))
        return GenICamDriver::kNotSupported;
    return read(f, value);
}

int GenICamFeatures::set(int type, std::int32_t value)
{
    Feature f;
    if (!feature(type, f))
        return GenICamDriver::kNotSupported;
    CamParamRange r;
    range(type, r);
    if (value < r.minimum || value > r.maximum)
        return GenICamDriver::kOutOfRange;
    // Its automatic mode governs the value now: a camera refuses the write or undoes it.
    if (r.autoMode && autoOn(f.mapping->autoName))
        return 0;
    return write(f, value);
}

bool GenICamFeatures::hasAuto(int type) const
{
    const Mapping* m = mappingOf(type);
    return m && m->autoName && camera_ &&
           arv_device_is_feature_available(arv_camera_get_device(camera_), m->autoName, nullptr);
}

int GenICamFeatures::getAuto(int type, std::int32_t& flag) const
{
    if (!hasAuto(type))
        return GenICamDriver::kNotSupported;
    flag = autoOn(mappingOf(type)->autoName) ? 1 : 0;
    return 0;
}

int GenICamFeatures::setAuto(int type, std::int32_t flag)
{
    if (!hasAuto(type))
        return GenICamDriver::kNotSupported;
    if (flag != 0 && flag != 1)
        return GenICamDriver::kOutOfRange;
    GError* error = nullptr;
    arv_device_set_string_feature_value(arv_camera_get_device(camera_), mappingOf(type)->autoName,
                                        flag ? "Continuous" : "Off", &error);
    return AravisCalls::failed(error, log_) ? GenICamDriver::kFailed : 0;
}

int GenICamFeatures::setAutoDefault(int type)
{
    // A mode the dialog cannot switch goes off, so that the value's default is taken.
    if (hasAuto(type) && !mappingOf(type)->autoBox)
        return setAuto(type, 0);
    const auto def =
        std::find_if(autoDefaults_.begin(), autoDefaults_.end(), [type](auto& d) { return d.first == type; });
    if (def == autoDefaults_.end())
        return GenICamDriver::kNotSupported;
    return setAuto(type, def->second);
}

int GenICamFeatures::onePush(int type)
{
    CamParamRange r;
    range(type, r);
    if (type != kWhiteBalance || !r.enabled)
        return GenICamDriver::kNotSupported;
    GError* error = nullptr;
    arv_device_set_string_feature_value(arv_camera_get_device(camera_), "BalanceWhiteAuto", "Once", &error);
    return AravisCalls::failed(error, log_) ? GenICamDriver::kFailed : 0;
}

}  // namespace tavix
