#pragma once

#include "camera/sim/SimCamera.h"
#include "common/PictureMemory.h"

#include <QImage>
#include <cstring>
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
        // On pictures' own memory, as the camera's frame ring holds it.
        const QImage rendered = sim.renderFrame().convertToFormat(QImage::Format_RGB888);
        QImage frame = PictureMemory::image(rendered.size(), rendered.format());
        for (int y = 0; y < frame.height(); ++y)
            std::memcpy(frame.scanLine(y), rendered.constScanLine(y),
                        static_cast<size_t>(frame.bytesPerLine()));
        found = frames.emplace(mode, frame).first;
    }
    return found->second;
}

}  // namespace tavix::bench
