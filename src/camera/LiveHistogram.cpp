#include "camera/LiveHistogram.h"

#include "common/Clock.h"

#include <QSize>
#include <algorithm>

namespace tavix {

namespace {

uchar clampByte(int v)
{
    return static_cast<uchar>(std::clamp(v, 0, 255));
}

// Limited-range BT.601, as the live view shows YUYV.
void yuvToRgb(int y, int u, int v, uchar* rgb)
{
    const int c = 298 * (y - 16) + 128;
    const int d = u - 128;
    const int e = v - 128;
    rgb[0] = clampByte((c + 409 * e) >> 8);
    rgb[1] = clampByte((c - 100 * d - 208 * e) >> 8);
    rgb[2] = clampByte((c + 516 * d) >> 8);
}

// Writes the pixel of every step-th unit (pixel, or Bayer cell of `unit` x
// `unit` pixels) of every step-th unit row as three RGB bytes; returns how
// many there are across.
template <typename Pixel>
int sampleUnits(const FrameView& frame, int unit, int step, uchar* out, Pixel pixel)
{
    const int across = frame.width / unit;
    const int down = frame.height / unit;
    for (int y = 0; y < down; y += step) {
        const uchar* row = frame.bits + static_cast<qsizetype>(y) * unit * frame.bytesPerLine;
        for (int x = 0; x < across; x += step, out += 3)
            pixel(row, x, out);
    }
    return (across + step - 1) / step;
}

}  // namespace

void LiveHistogram::setEnabled(bool on)
{
    if (on && !enabled_)
        restart_ = true;
    enabled_ = on;
}

void LiveHistogram::setNotifier(std::function<void()> notify)
{
    std::lock_guard lock(mutex_);
    notify_ = std::move(notify);
}

void LiveHistogram::frameReady(const FrameView& frame)
{
    if (!enabled_ || frame.bits == nullptr)
        return;
    const qint64 now = clock_.tickMs();
    if (!restart_.exchange(false) && now - lastMs_ < kIntervalMs)
        return;
    lastMs_ = now;
    // Counted without the lock: taking the last one never waits for this.
    Histogram counted = count(frame);
    std::function<void()> notify;
    {
        std::lock_guard lock(mutex_);
        if (!ready_)
            notify = notify_;
        ready_ = counted;
        ++passes_;
    }
    if (notify)
        notify();
}

Histogram LiveHistogram::count(const FrameView& frame)
{
    const bool bayer = frame.raw != RawLayout::None && frame.raw != RawLayout::Yuyv;
    if (frame.raw == RawLayout::None && frame.format != QImage::Format_BGR888)
        return Histogram::of(frame, Histogram::stepFor(QSize(frame.width, frame.height), kSampleBudget));
    // Only the pixels sampled are converted, into a buffer kept between counts.
    const int unit = bayer ? 2 : 1;
    const QSize units(frame.width / unit, frame.height / unit);
    const int step = Histogram::stepFor(units, kSampleBudget);
    const int down = (units.height() + step - 1) / step;
    const size_t bytes = size_t((units.width() + step - 1) / step) * size_t(down) * 3;
    if (sample_.size() < bytes)
        sample_.resize(bytes);
    uchar* out = sample_.data();
    int across = 0;
    if (frame.raw == RawLayout::Yuyv) {
        across = sampleUnits(frame, unit, step, out, [](const uchar* row, int x, uchar* rgb) {
            const uchar* pair = row + 4 * (x / 2);  // Y0 U Y1 V
            yuvToRgb(pair[2 * (x & 1)], pair[1], pair[3], rgb);
        });
    } else if (bayer) {
        // Where red sits in the 2x2 cell, as row * 2 + column; blue is opposite it.
        const int red = static_cast<int>(frame.raw) - static_cast<int>(RawLayout::BayerRggb);
        const int green = red == 0 || red == 3 ? 1 : 0;
        const qsizetype line = frame.bytesPerLine;
        across = sampleUnits(frame, unit, step, out, [=](const uchar* row, int x, uchar* rgb) {
            const uchar* cell = row + 2 * x;
            const auto at = [&](int k) { return int(cell[(k >> 1) * line + (k & 1)]); };
            rgb[0] = static_cast<uchar>(at(red));
            rgb[1] = static_cast<uchar>((at(green) + at(3 - green) + 1) >> 1);
            rgb[2] = static_cast<uchar>(at(3 - red));
        });
    } else {
        across = sampleUnits(frame, unit, step, out, [](const uchar* row, int x, uchar* rgb) {
            const uchar* bgr = row + 3 * x;
            rgb[0] = bgr[2];
            rgb[1] = bgr[1];
            rgb[2] = bgr[0];
        });
    }
    FrameView rgb;
    rgb.bits = sample_.data();
    rgb.width = across;
    rgb.height = down;
    rgb.bytesPerLine = qsizetype(across) * 3;
    rgb.format = QImage::Format_RGB888;
    return Histogram::of(rgb);
}

std::optional<Histogram> LiveHistogram::take()
{
    std::lock_guard lock(mutex_);
    std::optional<Histogram> taken;
    taken.swap(ready_);
    return taken;
}

int LiveHistogram::passes() const
{
    std::lock_guard lock(mutex_);
    return passes_;
}

}  // namespace tavix
