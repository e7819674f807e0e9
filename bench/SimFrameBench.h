#pragma once

#include "camera/sim/SimCamera.h"

#include <QImage>
#include <map>

namespace tavix::bench {

// The simulated camera's picture in a mode, 24-bit as a driver hands it
// over; rendered once per mode.
inline const QImage& simFrame(int mode)
{
    static std::map<int, QImage> frames;
    auto found = frames.find(mode);
    if (found == frames.end()) {
        SimCamera::Options options;
        options.threaded = false;
        SimCamera sim(options);
        sim.Init();
        sim.Open(0);
        sim.SetMode(0, mode);
        found = frames.emplace(mode, sim.renderFrame().convertToFormat(QImage::Format_RGB888)).first;
    }
    return found->second;
}

}  // namespace tavix::bench
