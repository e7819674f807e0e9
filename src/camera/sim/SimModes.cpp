#include "camera/sim/SimModes.h"

#include <QSizeF>
#include <algorithm>
#include <iterator>

namespace tavix {

namespace {

struct ModeSpec {
    int width;
    int height;
    double fps;  // at 48 MHz
};

// Resolution index -> size and frame rate.
constexpr ModeSpec kModes[] = {
    {320, 240, 120},  {640, 480, 90},   {752, 480, 85},   {800, 600, 75},
    {1024, 768, 60},  {1280, 1024, 45}, {1600, 1200, 40}, {2048, 1536, 35},
    {2592, 1944, 30}, {3840, 2748, 15}, {1920, 1200, 38},
};

// The sensor: as wide as the widest mode, as tall as the tallest field (the 5:4 modes').
QSizeF sensorSize()
{
    double width = 0;
    for (const ModeSpec& m : kModes)
        width = std::max(width, double(m.width));
    double height = 0;
    for (const ModeSpec& m : kModes)
        height = std::max(height, width * m.height / m.width);
    return {width, height};
}

}  // namespace

bool SimModes::known(std::int32_t mode)
{
    return mode >= 0 && mode < static_cast<std::int32_t>(std::size(kModes));
}

QSize SimModes::size(std::int32_t mode)
{
    return known(mode) ? QSize(kModes[mode].width, kModes[mode].height) : QSize(0, 0);
}

double SimModes::frameRate(std::int32_t mode)
{
    return known(mode) ? kModes[mode].fps : 0.0;
}

std::optional<ModeGeometry> SimModes::geometry(std::int32_t mode)
{
    if (!known(mode))
        return std::nullopt;
    static const QSizeF sensor = sensorSize();
    const double pixel = sensor.width() / kModes[mode].width;
    const double height = kModes[mode].height * pixel;
    return ModeGeometry{pixel, QRectF(0, (sensor.height() - height) / 2, sensor.width(), height)};
}

SimModes::SimModes(std::vector<std::int32_t> offered, std::int32_t defaultMode)
    : offered_(std::move(offered)), default_(defaultMode)
{
    offered_.erase(std::remove_if(offered_.begin(), offered_.end(), [](std::int32_t m) { return !known(m); }),
                   offered_.end());
    if (offered_.empty())
        offered_.push_back(5);
    if (!offers(default_))
        default_ = offered_.front();
}

bool SimModes::offers(std::int32_t mode) const
{
    return std::find(offered_.begin(), offered_.end(), mode) != offered_.end();
}

std::vector<std::int32_t> SimModes::list(int capacity, bool omitDefault) const
{
    std::vector<std::int32_t> modes;
    for (std::int32_t m : offered_) {
        if (omitDefault && m == default_)
            continue;
        if (static_cast<int>(modes.size()) < capacity)
            modes.push_back(m);
    }
    return modes;
}

}  // namespace tavix
