#include "camera/graph/GraphParameters.h"

#include "camera/graph/GraphDriver.h"
#include "camera/graph/V4l2Controls.h"

#include <linux/videodev2.h>
#include <QFileInfo>

namespace tavix {

namespace {

constexpr int kGamma = 3;
constexpr int kWhiteBalance = 6;
constexpr int kExposure = 7;
constexpr int kEnableGamma = 111;

// The device control behind each plain parameter, and its scale
// (parameter = control * numerator / denominator).
struct Mapping {
    int type;
    std::uint32_t id;
    int numerator;
    int denominator;
};

constexpr Mapping kMappings[] = {
    {1, V4L2_CID_BRIGHTNESS, 1, 1},    {2, V4L2_CID_CONTRAST, 1, 1},
    {19, V4L2_CID_SATURATION, 1, 1},   {109, V4L2_CID_HUE, 1, 1},
    {13, V4L2_CID_GAIN, 1, 1},         {12, V4L2_CID_BLACK_LEVEL, 1, 1},
    {kGamma, V4L2_CID_GAMMA, 64, 100}, {kExposure, V4L2_CID_EXPOSURE_ABSOLUTE, 1, 1},
    {4, V4L2_CID_VFLIP, 1, 1},         {5, V4L2_CID_HFLIP, 1, 1},
    {9, V4L2_CID_RED_BALANCE, 1, 1},   {11, V4L2_CID_BLUE_BALANCE, 1, 1},
};

const Mapping* mappingOf(int type)
{
    for (const Mapping& m : kMappings)
        if (m.type == type)
            return &m;
    return nullptr;
}

std::int32_t toParameter(const Mapping& m, std::int32_t control)
{
    return static_cast<std::int32_t>(static_cast<std::int64_t>(control) * m.numerator / m.denominator);
}

std::int32_t toControl(const Mapping& m, std::int32_t parameter)
{
    return static_cast<std::int32_t>(static_cast<std::int64_t>(parameter) * m.denominator / m.numerator);
}

}  // namespace

GraphParameters::GraphParameters() = default;

GraphParameters::~GraphParameters() = default;

void GraphParameters::open(const QString& device)
{
    if (!device.isEmpty() && QFileInfo::exists(device))
        controls_ = std::make_unique<V4l2Controls>(device);
    gammaBeforeOff_ = -1;
    whiteBalancing_ = false;
}

void GraphParameters::close()
{
    controls_.reset();
}

bool GraphParameters::hasControls() const
{
    return controls_ && controls_->isOpen();
}

CamParamRange GraphParameters::range(int type) const
{
    CamParamRange range;
    V4l2Controls::Range control;
    if (!hasControls())
        return range;  // a source without device controls: nothing enabled
    if (type == kWhiteBalance) {
        if (controls_->query(V4L2_CID_DO_WHITE_BALANCE, control) ||
            controls_->query(V4L2_CID_AUTO_WHITE_BALANCE, control)) {
            range.enabled = 1;
            range.defaultValue = range.maximum = 1;
        }
        return range;
    }
    if (type == kEnableGamma) {
        if (controls_->query(V4L2_CID_GAMMA, control)) {
            range.enabled = 1;
            range.defaultValue = range.maximum = 1;
        }
        return range;
    }
    const Mapping* m = mappingOf(type);
    if (!m || !controls_->query(m->id, control))
        return range;
    range.enabled = 1;
    range.third = 1;
    range.minimum = toParameter(*m, control.minimum);
    range.maximum = toParameter(*m, control.maximum);
    range.defaultValue = toParameter(*m, control.defaultValue);
    range.autoMode = type == kExposure && controls_->query(V4L2_CID_EXPOSURE_AUTO, control) ? 1 : 0;
    return range;
}

int GraphParameters::set(int type, std::int32_t value)
{
    const CamParamRange r = range(type);
    if (!r.enabled || type == kWhiteBalance)
        return GraphDriver::kNotSupported;
    if (value < r.minimum || value > r.maximum)
        return GraphDriver::kOutOfRange;
    if (type == kEnableGamma) {
        V4l2Controls::Range gamma;
        controls_->query(V4L2_CID_GAMMA, gamma);
        std::int32_t now = gamma.defaultValue;
        controls_->get(V4L2_CID_GAMMA, now);
        if (value == 0 && gammaBeforeOff_ < 0) {
            gammaBeforeOff_ = now;
            return controls_->set(V4L2_CID_GAMMA, gamma.defaultValue) ? 0 : GraphDriver::kFailed;
        }
        if (value == 1 && gammaBeforeOff_ >= 0) {
            const std::int32_t back = gammaBeforeOff_;
            gammaBeforeOff_ = -1;
            return controls_->set(V4L2_CID_GAMMA, back) ? 0 : GraphDriver::kFailed;
        }
        return 0;
    }
    const Mapping* m = mappingOf(type);
    return controls_->set(m->id, toControl(*m, value)) ? 0 : GraphDriver::kFailed;
}

int GraphParameters::get(int type, std::int32_t& value)
{
    if (!range(type).enabled)
        return GraphDriver::kNotSupported;
    if (type == kWhiteBalance) {
        // The balance found while automatic is held once its time is up.
        if (whiteBalancing_ && std::chrono::steady_clock::now() >= whiteBalanceEnds_) {
            whiteBalancing_ = false;
            controls_->set(V4L2_CID_AUTO_WHITE_BALANCE, 0);
        }
        value = whiteBalancing_ ? 0 : 1;
        return 0;
    }
    if (type == kEnableGamma) {
        value = gammaBeforeOff_ < 0 ? 1 : 0;
        return 0;
    }
    const Mapping* m = mappingOf(type);
    std::int32_t control = 0;
    if (!controls_->get(m->id, control))
        return GraphDriver::kFailed;
    value = toParameter(*m, control);
    return 0;
}

int GraphParameters::getAuto(int type, std::int32_t& flag) const
{
    std::int32_t mode = 0;
    if (!range(type).autoMode || !controls_->get(V4L2_CID_EXPOSURE_AUTO, mode))
        return GraphDriver::kNotSupported;
    flag = mode == V4L2_EXPOSURE_MANUAL ? 0 : 1;
    return 0;
}

int GraphParameters::setAuto(int type, std::int32_t flag)
{
    if (!range(type).autoMode)
        return GraphDriver::kNotSupported;
    if (flag != 0 && flag != 1)
        return GraphDriver::kOutOfRange;
    // USB cameras mostly offer only the aperture-priority kind of automatic exposure.
    std::int32_t mode = V4L2_EXPOSURE_MANUAL;
    if (flag)
        mode = controls_->hasMenuEntry(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY)
                   ? V4L2_EXPOSURE_APERTURE_PRIORITY
                   : V4L2_EXPOSURE_AUTO;
    return controls_->set(V4L2_CID_EXPOSURE_AUTO, mode) ? 0 : GraphDriver::kFailed;
}

int GraphParameters::setAutoDefault(int type)
{
    V4l2Controls::Range control;
    if (!range(type).autoMode || !controls_->query(V4L2_CID_EXPOSURE_AUTO, control))
        return GraphDriver::kNotSupported;
    return controls_->set(V4L2_CID_EXPOSURE_AUTO, control.defaultValue) ? 0 : GraphDriver::kFailed;
}

int GraphParameters::onePush(int type)
{
    if (type != kWhiteBalance || !range(type).enabled)
        return GraphDriver::kNotSupported;
    V4l2Controls::Range control;
    if (controls_->query(V4L2_CID_DO_WHITE_BALANCE, control))
        return controls_->set(V4L2_CID_DO_WHITE_BALANCE, 1) ? 0 : GraphDriver::kFailed;
    if (!controls_->set(V4L2_CID_AUTO_WHITE_BALANCE, 1))
        return GraphDriver::kFailed;
    whiteBalancing_ = true;
    whiteBalanceEnds_ = std::chrono::steady_clock::now() + GraphDriver::kWhiteBalanceTime;
    return 0;
}

}  // namespace tavix
