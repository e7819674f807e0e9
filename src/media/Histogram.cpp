#include "media/Histogram.h"

#include "media/FrameViewOf.h"

#include <algorithm>
#include <cmath>

namespace tavix {

template <int Bpp, int RedAt, int BlueAt>
void Histogram::countRows(const FrameView& frame, int step)
{
    Counts& grey = counts_[Grey];
    Counts& red = counts_[Red];
    Counts& green = counts_[Green];
    Counts& blue = counts_[Blue];
    const qsizetype stride = static_cast<qsizetype>(step) * Bpp;
    unsigned differ = 0;
    qint64 dark = 0, bright = 0;
    for (int y = 0; y < frame.height; y += step) {
        const uchar* p = frame.bits + static_cast<qsizetype>(y) * frame.bytesPerLine;
        const uchar* end = p + static_cast<qsizetype>(frame.width) * Bpp;
        for (; p < end; p += stride) {
            if constexpr (Bpp == 1) {
                ++grey[p[0]];
            } else {
                const unsigned r = p[RedAt], g = p[1], b = p[BlueAt];
                ++red[r];
                ++green[g];
                ++blue[b];
                ++grey[static_cast<unsigned>(greyOf(int(r), int(g), int(b)))];
                differ |= (r ^ g) | (g ^ b);
                // A pixel with any channel at an end of the range lost detail there.
                dark += std::min({r, g, b}) == 0u;
                bright += std::max({r, g, b}) == 255u;
            }
        }
    }
    pixels_ = qint64((frame.width + step - 1) / step) * ((frame.height + step - 1) / step);
    colour_ = differ != 0;
    dark_ = Bpp == 1 ? grey[0] : dark;
    bright_ = Bpp == 1 ? grey[kLevels - 1] : bright;
}

Histogram Histogram::of(const FrameView& frame, int step)
{
    Histogram h;
    if (frame.bits == nullptr || frame.width <= 0 || frame.height <= 0)
        return h;
    step = std::max(step, 1);
    switch (frame.format) {
        case QImage::Format_Grayscale8:
            h.countRows<1, 0, 0>(frame, step);
            break;
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
            h.countRows<4, 2, 0>(frame, step);  // 0xAARRGGBB: B, G, R, A in memory
            break;
        case QImage::Format_RGB888:
            h.countRows<3, 0, 2>(frame, step);
            break;
        default:
            break;
    }
    return h;
}

Histogram Histogram::of(const QImage& image, int step)
{
    switch (image.format()) {
        case QImage::Format_Grayscale8:
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
        case QImage::Format_RGB888:
            return of(frameViewOf(image), step);
        default: {
            const QImage converted = image.convertToFormat(image.isGrayscale() ? QImage::Format_Grayscale8
                                                                               : QImage::Format_RGB888);
            return of(frameViewOf(converted), step);
        }
    }
}

int Histogram::stepFor(QSize size, qint64 budget)
{
    const qint64 area = qint64(std::max(size.width(), 0)) * std::max(size.height(), 0);
    if (budget <= 0 || area <= budget)
        return 1;
    int step = static_cast<int>(std::ceil(std::sqrt(double(area) / double(budget))));
    // Rounding can leave a few pixels over the budget: one step more then.
    const auto counted = [&](int s) {
        return qint64((size.width() + s - 1) / s) * ((size.height() + s - 1) / s);
    };
    while (counted(step) > budget)
        ++step;
    return step;
}

std::uint32_t Histogram::peak() const
{
    std::uint32_t top = 0;
    for (int c = Grey; c <= (colour_ ? Blue : Grey); ++c)
        top = std::max(top, *std::max_element(counts_[c].begin(), counts_[c].end()));
    return top;
}

}  // namespace tavix
