#include "camera/sim/SimParameters.h"

#include "camera/sim/SimCamera.h"
#include "camera/sim/SimScene.h"

#include <algorithm>
#include <cmath>

namespace tavix {

namespace {

struct ParamSpec {
    int type;
    bool hasAuto;
    bool autoDefault;
    std::int32_t def;
    std::int32_t min;
    std::int32_t max;
};

// 160-163 are the program's own (ExtraParam): white-balance temperature, focus,
// power-line frequency and dynamic frame rate.
constexpr ParamSpec kParams[] = {
    {1, false, false, 0, -64, 64},        {2, false, false, 32, 0, 64},    {3, false, false, 64, 16, 255},
    {4, false, false, 0, 0, 1},           {5, false, false, 0, 0, 1},      {6, false, false, 0, 0, 1},
    {7, true, false, 960, 1, 50000},      {8, false, false, 128, 16, 240}, {9, false, false, 64, 0, 255},
    {10, false, false, 64, 0, 255},       {11, false, false, 64, 0, 255},  {12, true, true, 4, 0, 64},
    {13, false, false, 32, 32, 255},      {14, false, false, 1, 0, 1},     {15, false, false, 48, 12, 96},
    {19, false, false, 64, 0, 128},       {24, false, false, 0, 0, 1},     {43, false, false, 0, 0, 1},
    {106, false, false, 0, -64, 64},      {107, false, false, 0, -64, 64}, {108, false, false, 0, -64, 64},
    {109, false, false, 0, -180, 180},    {110, false, false, 0, 0, 1},    {111, false, false, 1, 0, 1},
    {115, false, false, 0, 0, 1},         {117, false, false, 1, 0, 1},    {147, false, false, 30, 1, 30},
    {160, true, false, 4600, 2800, 6500}, {161, true, false, 0, 0, 255},   {162, false, false, 1, 0, 2},
    {163, false, false, 0, 0, 1},
};

const ParamSpec* specOf(int type)
{
    for (const ParamSpec& p : kParams)
        if (p.type == type)
            return &p;
    return nullptr;
}

constexpr int kRedGain = 9;
constexpr int kGreenGain = 10;
constexpr int kBlueGain = 11;
constexpr int kBlackLevel = 12;
constexpr int kGain = 13;

}  // namespace

SimParameters::SimParameters(bool frameRateInsteadOfClock, bool gainReportsAuto, double modeFrameRate)
    : frameRateInsteadOfClock_(frameRateInsteadOfClock),
      gainReportsAuto_(gainReportsAuto),
      modeFrameRate_(modeFrameRate)
{
    for (const ParamSpec& p : kParams)
        params_[p.type] = Param{p.def, p.autoDefault};
    params_[kFrameRate].value = static_cast<std::int32_t>(modeFrameRate_);
    autoExposureRaw_ = params_[kExposure].value;
}

bool SimParameters::known(int type)
{
    return specOf(type) != nullptr;
}

void SimParameters::overrideRange(int type, const CamParamRange& range)
{
    ranges_[type] = range;
}

CamParamRange SimParameters::range(int type) const
{
    CamParamRange r;
    const ParamSpec* p = specOf(type);
    if (!p)
        return r;
    if (const auto own = ranges_.find(type); own != ranges_.end())
        return own->second;
    r.enabled = 1;
    r.autoMode = p->hasAuto ? 1 : 0;
    r.third = 1;  // the step
    r.defaultValue = p->def;
    r.minimum = p->min;
    r.maximum = p->max;
    if (type == kGain && gainReportsAuto_)
        r.autoMode = 1;
    if (type == kClock && frameRateInsteadOfClock_)
        r.enabled = 0;
    if (type == kFrameRate) {
        r.enabled = frameRateInsteadOfClock_ ? 1 : 0;
        r.maximum = r.defaultValue = static_cast<std::int32_t>(modeFrameRate_);
    }
    return r;
}

std::int32_t SimParameters::value(int type) const
{
    if (type == kWhiteBalance)
        return whiteBalanceRunning_ ? 0 : 1;
    if (type == kExposure)
        return exposureRaw();
    return params_.at(type).value;
}

int SimParameters::set(int type, std::int32_t value)
{
    const CamParamRange r = range(type);
    if (!r.enabled)
        return SimCamera::kNotSupported;
    if (type == kWhiteBalance || type == kAviWriting)
        return SimCamera::kReadOnly;
    if (value < r.minimum || value > r.maximum)
        return SimCamera::kOutOfRange;
    params_[type].value = value;
    if (type == kExposure)
        autoExposureRaw_ = value;  // automatic exposure goes on from here
    return 0;
}

int SimParameters::getAuto(int type, std::int32_t& flag) const
{
    if (!range(type).autoMode)
        return SimCamera::kNotSupported;
    flag = params_.at(type).autoOn ? 1 : 0;
    return 0;
}

int SimParameters::setAuto(int type, std::int32_t flag)
{
    if (!range(type).autoMode)
        return SimCamera::kNotSupported;
    if (flag != 0 && flag != 1)
        return SimCamera::kOutOfRange;
    Param& p = params_[type];
    if (type == kExposure && p.autoOn != (flag == 1)) {
        if (flag == 1)
            autoExposureRaw_ = p.value;
        else
            p.value = autoExposureRaw_;  // the exposure stays where automatic left it
    }
    p.autoOn = flag == 1;
    return 0;
}

int SimParameters::setAutoDefault(int type)
{
    const ParamSpec* spec = specOf(type);
    if (!spec || !range(type).autoMode)
        return SimCamera::kNotSupported;
    Param& p = params_[type];
    if (type == kExposure && p.autoOn && !spec->autoDefault)
        p.value = autoExposureRaw_;
    p.autoOn = spec->autoDefault;
    return 0;
}

void SimParameters::setModeFrameRate(double fps)
{
    modeFrameRate_ = fps;
    auto& rate = params_[kFrameRate].value;
    rate = std::min(rate, static_cast<std::int32_t>(fps));
}

// ---- white balance ----

int SimParameters::startOnePush(int type, qint64 nowMs)
{
    if (type != kWhiteBalance)
        return SimCamera::kNotSupported;
    whiteBalanceRunning_ = true;
    whiteBalanceStart_ = nowMs;
    return 0;
}

std::array<std::int32_t, 2> SimParameters::whiteBalanceTarget() const
{
    // Red and blue gains that make the lamp grey, green kept where it is.
    const QColor lamp = SimScene::lampColour();
    const double green = params_.at(kGreenGain).value;
    return {std::clamp(static_cast<std::int32_t>(std::lround(green * lamp.green() / lamp.red())), 0, 255),
            std::clamp(static_cast<std::int32_t>(std::lround(green * lamp.green() / lamp.blue())), 0, 255)};
}

void SimParameters::stepWhiteBalance()
{
    if (!whiteBalanceRunning_)
        return;
    // Each frame of the run takes the red and blue gains half way to grey, so the cast fades
    // over a few frames as on a real camera.
    const auto target = whiteBalanceTarget();
    for (const int i : {0, 1}) {
        std::int32_t& gain = params_[i == 0 ? kRedGain : kBlueGain].value;
        gain += (target[static_cast<size_t>(i)] - gain) / 2;
    }
}

void SimParameters::settleWhiteBalance(qint64 nowMs)
{
    if (!whiteBalanceRunning_ || nowMs - whiteBalanceStart_ < kWhiteBalanceMs)
        return;
    whiteBalanceRunning_ = false;
    const auto target = whiteBalanceTarget();
    params_[kRedGain].value = target[0];
    params_[kBlueGain].value = target[1];
}

// ---- exposure and look ----

std::int32_t SimParameters::exposureRaw() const
{
    return params_.at(kExposure).autoOn ? autoExposureRaw_ : params_.at(kExposure).value;
}

int SimParameters::clockMHz() const
{
    return frameRateInsteadOfClock_ ? kDefaultClockMHz : params_.at(kClock).value;
}

double SimParameters::exposureMs() const
{
    return static_cast<double>(exposureRaw()) / clockMHz();
}

double SimParameters::framePeriodMs() const
{
    double fps = modeFrameRate_;
    if (frameRateInsteadOfClock_)
        fps = std::min<double>(fps, params_.at(kFrameRate).value);
    else
        fps = fps * clockMHz() / kDefaultClockMHz;
    return std::max(1000.0 / fps, exposureMs());
}

SimLook SimParameters::look() const
{
    const auto v = [this](int type) { return params_.at(type).value; };
    SimLook l;
    l.exposureMs = exposureMs();
    l.gain = v(kGain);
    l.blackLevel = params_.at(kBlackLevel).autoOn ? specOf(kBlackLevel)->def : v(kBlackLevel);
    l.brightness = v(1);
    l.contrast = v(2);
    l.gamma = v(3);
    l.gammaOn = v(111) != 0;
    l.rgbGain = {v(kRedGain), v(kGreenGain), v(kBlueGain)};
    l.rgbOffset = {v(106), v(107), v(108)};
    l.flipV = v(4) != 0;
    l.flipH = v(5) != 0;
    l.colour = v(14) != 0;
    l.saturation = v(19);
    l.hue = v(109);
    l.colourCorrection = v(110) != 0;
    l.colourProcessing = v(117) != 0;
    l.tnr = v(115) != 0;
    return l;
}

void SimParameters::steerExposure(double meanLevel, std::int32_t target)
{
    if (!autoExposure() || std::abs(meanLevel - target) <= 3.0)
        return;
    const double ratio = std::clamp(target / std::max(meanLevel, 1.0), 0.5, 2.0);
    const ParamSpec* spec = specOf(kExposure);
    autoExposureRaw_ =
        std::clamp(static_cast<std::int32_t>(std::lround(autoExposureRaw_ * std::pow(ratio, 0.8))), spec->min,
                   spec->max);
}

}  // namespace tavix
