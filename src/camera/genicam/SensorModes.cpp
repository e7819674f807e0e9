#include "camera/genicam/SensorModes.h"

#include "camera/Resolution.h"

#include <algorithm>

namespace tavix::SensorModes {

namespace {
constexpr int kTableSize = 11;  // the resolution indices the program names
const QSize kSmallest(320, 240);

bool takes(int value, int minimum, int step)
{
    return value >= minimum && (value - minimum) % std::max(1, step) == 0;
}

// The largest value the camera takes that is not above `value`.
int floorTo(int value, int minimum, int step)
{
    return value < minimum ? 0 : minimum + (value - minimum) / std::max(1, step) * std::max(1, step);
}
}  // namespace

QSize sensorOf(const Limits& limits)
{
    return limits.sensor.isEmpty() ? limits.maximum : limits.sensor;
}

std::vector<Mode> list(const Limits& limits)
{
    const QSize sensor = sensorOf(limits);
    std::vector<Mode> modes;
    const auto listed = [&](std::int32_t index) {
        return std::any_of(modes.begin(), modes.end(), [index](const Mode& m) { return m.index == index; });
    };
    const int step = std::max(1, limits.offsetStep);
    // The region of `size` centred on the sensor binned by b.
    const auto centred = [&](QSize size, int b) {
        const QSize binned(sensor.width() / b, sensor.height() / b);
        return QRect(QPoint((binned.width() - size.width()) / 2 / step * step,
                            (binned.height() - size.height()) / 2 / step * step),
                     size);
    };
    std::vector<int> binnings;
    for (const int b : limits.binnings)
        if (b >= 1)
            binnings.push_back(b);
    std::sort(binnings.begin(), binnings.end());
    for (const int b : binnings) {
        const QSize size(floorTo(sensor.width() / b, limits.widthMin, limits.widthStep),
                         floorTo(sensor.height() / b, limits.heightMin, limits.heightStep));
        if (size.width() < 1 || size.height() < 1)
            continue;
        if (b > 1 && (size.width() < kSmallest.width() || size.height() < kSmallest.height()))
            break;
        const std::int32_t index = Resolution::indexOf(size);
        if (!listed(index))
            modes.push_back({index, b, centred(size, b)});
    }

    std::vector<std::int32_t> table;
    for (std::int32_t m = 0; m < kTableSize; ++m)
        table.push_back(m);
    const auto area = [](std::int32_t m) {
        const QSize s = Resolution::size(m);
        return static_cast<long long>(s.width()) * s.height();
    };
    std::stable_sort(table.begin(), table.end(),
                     [&](std::int32_t a, std::int32_t b) { return area(a) > area(b); });
    for (const std::int32_t m : table) {
        const QSize size = Resolution::size(m);
        if (listed(m) || !takes(size.width(), limits.widthMin, limits.widthStep) ||
            !takes(size.height(), limits.heightMin, limits.heightStep))
            continue;
        // The largest binning that still holds the size keeps the most of the field of view.
        const auto b = std::find_if(binnings.rbegin(), binnings.rend(), [&](int b) {
            return sensor.width() / b >= size.width() && sensor.height() / b >= size.height();
        });
        if (b != binnings.rend())
            modes.push_back({m, *b, centred(size, *b)});
    }
    return modes;
}

}  // namespace tavix::SensorModes
