#include "camera/graph/GraphParameters.h"

#include "camera/graph/GraphDriver.h"
#include "common/Clock.h"

#include <linux/videodev2.h>
#include <algorithm>
#include <cerrno>
#include <cmath>

namespace tavix {

namespace {

constexpr int kGamma = 3;
constexpr int kWhiteBalance = 6;
constexpr int kEnableGamma = 111;

// A device's answer as the driver's status.
int statusOf(int error)
{
    switch (error) {
        case 0:
            return 0;
        case ENODEV:
            return GraphDriver::kDisconnected;
        case EACCES:
        case EPERM:
            return GraphDriver::kRefused;
        case EINVAL:
        case ERANGE:
            return GraphDriver::kOutOfRange;
        default:
            return GraphDriver::kFailed;
    }
}

}  // namespace

// The device control behind a parameter, and its scale (parameter = control *
// numerator / denominator, rounded either way so that every value comes back as written).
struct GraphParameters::Mapping {
    int type;
    std::uint32_t id;
    int numerator;
    int denominator;

    std::int32_t toParameter(std::int32_t control) const
    {
        return static_cast<std::int32_t>(std::lround(double(control) * numerator / denominator));
    }
    std::int32_t toControl(std::int32_t parameter) const
    {
        return static_cast<std::int32_t>(std::lround(double(parameter) * denominator / numerator));
    }
};

// The control that switches a parameter's automatic mode, and whether the
// settings dialog has a box for it.
struct GraphParameters::AutoMode {
    int type;
    std::uint32_t id;
    bool box;
};

const GraphParameters::Mapping* GraphParameters::mappingOf(int type)
{
    static constexpr Mapping kMappings[] = {
        {1, V4L2_CID_BRIGHTNESS, 1, 1},
        {2, V4L2_CID_CONTRAST, 1, 1},
        {19, V4L2_CID_SATURATION, 1, 1},
        {109, V4L2_CID_HUE, 1, 1},
        {13, V4L2_CID_GAIN, 1, 1},
        {12, V4L2_CID_BLACK_LEVEL, 1, 1},
        {kGamma, V4L2_CID_GAMMA, 64, 100},  // the device counts 100 for a gamma of 1
        {7, V4L2_CID_EXPOSURE_ABSOLUTE, 1, 1},
        {4, V4L2_CID_VFLIP, 1, 1},
        {5, V4L2_CID_HFLIP, 1, 1},
        {9, V4L2_CID_RED_BALANCE, 1, 1},
        {11, V4L2_CID_BLUE_BALANCE, 1, 1},
        {ExtraParam::kWhiteBalanceTemperature, V4L2_CID_WHITE_BALANCE_TEMPERATURE, 1, 1},
        {ExtraParam::kFocus, V4L2_CID_FOCUS_ABSOLUTE, 1, 1},
        {ExtraParam::kPowerLineFrequency, V4L2_CID_POWER_LINE_FREQUENCY, 1, 1},
        {ExtraParam::kDynamicFrameRate, V4L2_CID_EXPOSURE_AUTO_PRIORITY, 1, 1},
    };
    for (const Mapping& m : kMappings)
        if (m.type == type)
            return &m;
    return nullptr;
}

const GraphParameters::AutoMode* GraphParameters::autoModeOf(int type)
{
    static constexpr AutoMode kAutoModes[] = {
        {7, V4L2_CID_EXPOSURE_AUTO, true},
        {ExtraParam::kWhiteBalanceTemperature, V4L2_CID_AUTO_WHITE_BALANCE, true},
        {ExtraParam::kFocus, V4L2_CID_FOCUS_AUTO, true},
        {13, V4L2_CID_AUTOGAIN, false},
        {9, V4L2_CID_AUTO_WHITE_BALANCE, false},
        {11, V4L2_CID_AUTO_WHITE_BALANCE, false},
    };
    for (const AutoMode& a : kAutoModes)
        if (a.type == type)
            return &a;
    return nullptr;
}

GraphParameters::GraphParameters(Clock& clock) : clock_(clock)
{
}

GraphParameters::~GraphParameters() = default;

void GraphParameters::open(std::unique_ptr<V4l2ControlAccess> controls)
{
    controls_ = std::move(controls);
    gammaBeforeOff_ = -1;
    whiteBalancing_ = false;
}

void GraphParameters::close()
{
    controls_.reset();
}

// False when the device lacks the control or has it disabled (status 0), or
// when asking failed (the status says why).
bool GraphParameters::offered(std::uint32_t id, V4l2ControlAccess::Control& control, int& status)
{
    status = 0;
    if (!controls_)
        return false;
    const int e = controls_->query(id, control);
    if (e == EINVAL)
        return false;
    status = statusOf(e);
    return status == 0 && !(control.flags & V4L2_CTRL_FLAG_DISABLED);
}

bool GraphParameters::autoOn(const AutoMode& a, int& status)
{
    std::int32_t value = 0;
    status = statusOf(controls_->get(a.id, value));
    return status == 0 && (a.id == V4L2_CID_EXPOSURE_AUTO ? value != V4L2_EXPOSURE_MANUAL : value != 0);
}

int GraphParameters::whiteBalanceRange(CamParamRange& range)
{
    V4l2ControlAccess::Control control;
    int status = 0;
    if (offered(V4L2_CID_DO_WHITE_BALANCE, control, status) ||
        (status == 0 && offered(V4L2_CID_AUTO_WHITE_BALANCE, control, status))) {
        range.enabled = 1;
        range.defaultValue = range.maximum = 1;
    }
    return status;
}

int GraphParameters::range(int type, CamParamRange& range)
{
    range = CamParamRange{};
    if (type == kWhiteBalance)
        return whiteBalanceRange(range);
    V4l2ControlAccess::Control control;
    int status = 0;
    if (type == kEnableGamma) {
        if (offered(V4L2_CID_GAMMA, control, status)) {
            range.enabled = 1;
            range.defaultValue = range.maximum = 1;
        }
        return status;
    }
    const Mapping* m = mappingOf(type);
    if (!m || !offered(m->id, control, status))
        return status;
    range.enabled = 1;
    range.third = std::max(1, m->toParameter(control.step));  // the step
    range.minimum = m->toParameter(control.minimum);
    range.maximum = m->toParameter(control.maximum);
    range.defaultValue = m->toParameter(control.defaultValue);
    if (const AutoMode* a = autoModeOf(type); a && offered(a->id, control, status)) {
        // A mode without a box in the dialog is reported only while it governs the value.
        range.autoMode = a->box || autoOn(*a, status) ? 1 : 0;
    }
    return status;
}

int GraphParameters::get(int type, std::int32_t& value)
{
    CamParamRange r;
    if (const int s = range(type, r))
        return s;
    if (!r.enabled)
        return GraphDriver::kNotSupported;
    if (type == kWhiteBalance) {
        // The balance found while automatic is held once its time is up; a
        // device that will not leave its automatic mode is still balancing.
        if (whiteBalancing_ && clock_.tickMs() >= whiteBalanceEnds_ &&
            controls_->set(V4L2_CID_AUTO_WHITE_BALANCE, 0) == 0)
            whiteBalancing_ = false;
        value = whiteBalancing_ ? 0 : 1;
        return 0;
    }
    if (type == kEnableGamma) {
        value = gammaBeforeOff_ < 0 ? 1 : 0;
        return 0;
    }
    const Mapping* m = mappingOf(type);
    std::int32_t control = 0;
    if (const int e = controls_->get(m->id, control))
        return statusOf(e);
    value = m->toParameter(control);
    return 0;
}

int GraphParameters::gammaEnable(std::int32_t value)
{
    V4l2ControlAccess::Control gamma;
    int status = 0;
    offered(V4L2_CID_GAMMA, gamma, status);
    std::int32_t now = gamma.defaultValue;
    controls_->get(V4L2_CID_GAMMA, now);
    if (value == 0 && gammaBeforeOff_ < 0) {
        gammaBeforeOff_ = now;
        return statusOf(controls_->set(V4L2_CID_GAMMA, gamma.defaultValue));
    }
    if (value == 1 && gammaBeforeOff_ >= 0) {
        const std::int32_t back = gammaBeforeOff_;
        gammaBeforeOff_ = -1;
        return statusOf(controls_->set(V4L2_CID_GAMMA, back));
    }
    return 0;
}

int GraphParameters::set(int type, std::int32_t value)
{
    CamParamRange r;
    if (const int s = range(type, r))
        return s;
    if (!r.enabled || type == kWhiteBalance)
        return GraphDriver::kNotSupported;
    if (value < r.minimum || value > r.maximum)
        return GraphDriver::kOutOfRange;
    if (type == kEnableGamma)
        return gammaEnable(value);
    const Mapping* m = mappingOf(type);
    V4l2ControlAccess::Control control;
    int status = 0;
    if (!offered(m->id, control, status))
        return status ? status : GraphDriver::kNotSupported;
    // Its automatic mode governs the value now: the device would refuse it.
    if (control.flags & V4L2_CTRL_FLAG_INACTIVE)
        return 0;
    const std::int32_t wanted = std::clamp(m->toControl(value), control.minimum, control.maximum);
    if ((control.type == V4L2_CTRL_TYPE_MENU || control.type == V4L2_CTRL_TYPE_INTEGER_MENU) &&
        controls_->queryMenu(m->id, static_cast<std::uint32_t>(wanted)) != 0)
        return GraphDriver::kOutOfRange;
    return statusOf(controls_->set(m->id, wanted));
}

int GraphParameters::getAuto(int type, std::int32_t& flag)
{
    const AutoMode* a = autoModeOf(type);
    V4l2ControlAccess::Control control;
    int status = 0;
    if (!a || !offered(a->id, control, status))
        return status ? status : GraphDriver::kNotSupported;
    const bool on = autoOn(*a, status);
    if (status)
        return status;
    flag = on ? 1 : 0;
    return 0;
}

int GraphParameters::setAuto(int type, std::int32_t flag)
{
    const AutoMode* a = autoModeOf(type);
    V4l2ControlAccess::Control control;
    int status = 0;
    if (!a || !offered(a->id, control, status))
        return status ? status : GraphDriver::kNotSupported;
    if (flag != 0 && flag != 1)
        return GraphDriver::kOutOfRange;
    std::int32_t mode = flag;
    if (a->id == V4L2_CID_EXPOSURE_AUTO) {
        // USB cameras mostly offer only the aperture-priority kind of automatic exposure.
        mode = !flag ? V4L2_EXPOSURE_MANUAL
               : controls_->queryMenu(a->id, V4L2_EXPOSURE_APERTURE_PRIORITY) == 0
                   ? V4L2_EXPOSURE_APERTURE_PRIORITY
                   : V4L2_EXPOSURE_AUTO;
    }
    return statusOf(controls_->set(a->id, mode));
}

int GraphParameters::setAutoDefault(int type)
{
    const AutoMode* a = autoModeOf(type);
    V4l2ControlAccess::Control control;
    int status = 0;
    if (!a || !offered(a->id, control, status))
        return status ? status : GraphDriver::kNotSupported;
    if (a->box)
        return statusOf(controls_->set(a->id, control.defaultValue));
    // A mode the dialog cannot switch goes off, so that the value's default is the camera's.
    return setAuto(type, 0);
}

int GraphParameters::onePush(int type)
{
    CamParamRange r;
    if (type != kWhiteBalance)
        return GraphDriver::kNotSupported;
    if (const int s = range(type, r))
        return s;
    if (!r.enabled)
        return GraphDriver::kNotSupported;
    V4l2ControlAccess::Control control;
    int status = 0;
    if (offered(V4L2_CID_DO_WHITE_BALANCE, control, status))
        return statusOf(controls_->set(V4L2_CID_DO_WHITE_BALANCE, 1));
    if (const int e = controls_->set(V4L2_CID_AUTO_WHITE_BALANCE, 1))
        return statusOf(e);
    whiteBalancing_ = true;
    whiteBalanceEnds_ = clock_.tickMs() + kWhiteBalanceMs;
    return 0;
}

}  // namespace tavix
