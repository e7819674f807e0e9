#include "camera/genicam/SensorModes.h"

#include "camera/Resolution.h"

#include <algorithm>

namespace tavix::SensorModes {

namespace {
constexpr int kTableSize = 11;  // the resolution indices the program names
}

std::vector<std::int32_t> fitting(QSize sensor, int capacity)
{
    std::vector<std::int32_t> modes;
    for (std::int32_t m = 0; m < kTableSize; ++m) {
        const QSize s = Resolution::size(m);
        if (s.width() <= sensor.width() && s.height() <= sensor.height())
            modes.push_back(m);
    }
    const auto area = [](std::int32_t m) {
        const QSize s = Resolution::size(m);
        return static_cast<long long>(s.width()) * s.height();
    };
    std::stable_sort(modes.begin(), modes.end(),
                     [&](std::int32_t a, std::int32_t b) { return area(a) < area(b); });
    if (capacity >= 0 && static_cast<int>(modes.size()) > capacity)
        modes.erase(modes.begin(), modes.end() - capacity);
    return modes;
}

Fit fit(QSize sensor, std::int32_t mode, int maxBinning, int offsetStep)
{
    const QSize size = Resolution::size(mode);
    if (size.isEmpty() || size.width() > sensor.width() || size.height() > sensor.height())
        return {};
    int binning = std::max(1, maxBinning);
    while (binning > 1 &&
           (sensor.width() / binning < size.width() || sensor.height() / binning < size.height()))
        --binning;
    const int step = std::max(1, offsetStep);
    const int x = (sensor.width() / binning - size.width()) / 2 / step * step;
    const int y = (sensor.height() / binning - size.height()) / 2 / step * step;
    return {binning, QRect(QPoint(x, y), size)};
}

}  // namespace tavix::SensorModes
