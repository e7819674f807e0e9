#pragma once

#include "media/ModeGeometry.h"

#include <QSize>
#include <cstdint>
#include <optional>
#include <vector>

namespace tavix {

// The simulated camera's resolutions: the size and frame rate (at the default
// 48 MHz clock) of every resolution index the program knows, and the ones a
// camera offers with its default among them.
class SimModes {
public:
    static bool known(std::int32_t mode);
    static QSize size(std::int32_t mode);        // 0 x 0 for an unknown mode
    static double frameRate(std::int32_t mode);  // 0 for an unknown mode
    // Every mode sees the same width of the slide, centred: the widest mode's
    // pixels are the sensor's, the others scale the same field into fewer.
    static std::optional<ModeGeometry> geometry(std::int32_t mode);

    // Unknown indices are left out; none left offers 5. A default that is not
    // offered becomes the first offered.
    SimModes(std::vector<std::int32_t> offered, std::int32_t defaultMode);

    std::int32_t defaultMode() const { return default_; }
    bool offers(std::int32_t mode) const;
    // The list a camera reports: at most `capacity` modes, without the default
    // when `omitDefault`.
    std::vector<std::int32_t> list(int capacity, bool omitDefault) const;

private:
    std::vector<std::int32_t> offered_;
    std::int32_t default_;
};

}  // namespace tavix
