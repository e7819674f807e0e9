#pragma once

#include "media/FrameView.h"

#include <QImage>
#include <cstdint>
#include <vector>

namespace tavix {

// Shrinks a camera frame straight into a picture of the size it is shown at
// (Format_RGB32), reading each source pixel at most once. Every shown pixel is
// the mean of a block of kx x ky source pixels (2x2 Bayer cells for Bayer
// frames, so that a cell gives one colour pixel without demosaicing), where
// k = source / shown, rounded down, between 1 and kMaxFactor; the blocks start
// at x * source / shown. YUYV is averaged in YUV and then converted
// (limited-range BT.601). The tables and row buffers are kept between frames:
// while the sizes stay the same, scale() allocates nothing.
//
// One scaler per thread; it owns no frame.
class ViewScaler {
public:
    enum class Kernel { Plain, Sse2, Avx2 };
    static constexpr int kMaxFactor = 8;

    // The fastest kernel this processor runs.
    static Kernel fastest();
    explicit ViewScaler(Kernel kernel = fastest());
    Kernel kernel() const { return kernel_; }

    // Scales `frame` into all of `dst`, which must be Format_RGB32 and not
    // null. False (and `dst` untouched) for a pixel layout it does not read:
    // formats other than Grayscale8, RGB888, BGR888 and the 32-bit RGB ones,
    // or a YUYV frame of odd width.
    bool scale(const FrameView& frame, QImage& dst);

    // Source units (pixels, or Bayer cells) averaged per shown pixel along an axis.
    static int factor(int sourceUnits, int shownPixels);

    // The mean (sum + count / 2) / count as the kernels compute it, without a
    // division: a 16-bit multiply keeping the high half, then a shift. Sums
    // are at most 255 * count, count at most 2 * kMaxFactor^2.
    struct Divider {
        std::uint16_t half = 0;
        std::uint16_t mul = 0;  // 0: a shift alone (count is a power of two)
        int shift = 0;
    };
    static Divider dividerFor(int count);

private:
    Kernel kernel_;
    // Prepared for one geometry; rebuilt only when it changes.
    int srcWidth_ = 0, srcHeight_ = 0, dstWidth_ = 0, dstHeight_ = 0, layoutKey_ = -1;
    Divider divider_;
    std::vector<int> xOffsets_;  // per shown column: where its block starts in the row sums
    std::vector<int> yRows_;     // per shown row: the first source unit row
    std::vector<std::uint16_t> sums_, sums2_, units_;
};

}  // namespace tavix
