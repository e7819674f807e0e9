#pragma once

#include "camera/sim/SimImagePipeline.h"
#include "common/PictureMemory.h"
#include "media/FrameView.h"

#include <QImage>
#include <QSize>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace tavix {

// The simulated camera's frames: rendered through the image pipeline into
// three reused RGB888 buffers (rows padded to four bytes), so that the next
// frame can be rendered while the newest is kept and another is being
// delivered. Not locked: the camera renders and reads it under its render lock.
class SimFrameRing {
public:
    static constexpr int kSlots = 3;

    // The slot to render into: neither the newest nor the one being delivered (-1: none).
    static int freeSlot(int newest, int delivering);

    // Renders a frame of `size` and `look` into `slot`, with the particle where
    // it is at `nowMs`; `previous` is the slot of the last frame (-1: none),
    // blended in while TNR is on when it has the same size.
    void render(int slot, int previous, QSize size, const SimLook& look, std::uint64_t sequence,
                qint64 nowMs);
    // The mean grey level of the still scene of the last render, for the automatic exposure.
    double meanLevel() { return pipeline_.meanLevel(); }

    // The frame in `slot` as the sink receives it, without its capture time.
    FrameView view(int slot) const;
    // The frame in `slot`, not copied: valid until the slot is rendered again.
    QImage image(int slot) const;
    // Copies the frame in `slot` into `frame`, reusing its memory when size and format fit.
    void copyTo(int slot, QImage& frame) const;

private:
    static qsizetype stride(QSize size);

    SimImagePipeline pipeline_;
    std::array<PictureMemory::Buffer<uchar>, kSlots> buffers_;
    std::array<QSize, kSlots> sizes_;
    std::array<std::uint64_t, kSlots> sequences_{};
    std::mt19937 rng_{2024};
};

}  // namespace tavix
