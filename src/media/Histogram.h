#pragma once

#include "media/FrameView.h"

#include <QImage>
#include <QSize>
#include <QtGlobal>
#include <array>
#include <cstdint>

namespace tavix {

// How many pixels of a picture have each level, for setting the exposure: the
// grey level and, for a colour picture, red, green and blue, and the share of
// pixels clipped at 0 or 255. A pass may read every step-th pixel of every
// step-th row only, so that a live picture is counted cheaply.
class Histogram {
public:
    static constexpr int kLevels = 256;
    enum Channel { Grey = 0, Red, Green, Blue };
    using Counts = std::array<std::uint32_t, kLevels>;

    // Counts the pixels at columns 0, step, 2 step, ... of rows 0, step, ...
    // Grey, RGB888 and the 32-bit RGB formats are read as they stand; the
    // image overload converts other formats first.
    static Histogram of(const FrameView& frame, int step = 1);
    static Histogram of(const QImage& image, int step = 1);

    // The smallest step that counts at most `budget` pixels of a picture this size.
    static int stepFor(QSize size, qint64 budget);

    // The grey level of a colour pixel, weighted as the eye sees brightness.
    static int greyOf(int red, int green, int blue)
    {
        return (77 * red + 150 * green + 29 * blue + 128) >> 8;
    }

    const Counts& counts(Channel channel) const { return counts_[channel]; }
    // Pixels counted.
    qint64 pixels() const { return pixels_; }
    // True when some counted pixel had red, green and blue not all equal.
    bool colour() const { return colour_; }
    // Shares (0..1) of the counted pixels with a channel at 0, or at 255.
    double clippedDark() const { return share(dark_); }
    double clippedBright() const { return share(bright_); }
    // The highest count of one level in the channels shown, for drawing to scale.
    std::uint32_t peak() const;

private:
    template <int Bpp, int RedAt, int BlueAt>
    void countRows(const FrameView& frame, int step);
    double share(qint64 n) const { return pixels_ > 0 ? double(n) / double(pixels_) : 0.0; }

    std::array<Counts, 4> counts_{};
    qint64 pixels_ = 0;
    qint64 dark_ = 0;
    qint64 bright_ = 0;
    bool colour_ = false;
};

}  // namespace tavix
