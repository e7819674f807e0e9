#include "camera/LiveView.h"

#include <algorithm>

namespace tavix {

void LiveView::setNotifier(std::function<void()> notify)
{
    std::lock_guard lock(mutex_);
    notify_ = std::move(notify);
}

void LiveView::setTap(FrameSink* tap)
{
    std::lock_guard lock(mutex_);
    tap_ = tap;
}

void LiveView::setDisplaySize(QSize size)
{
    std::lock_guard lock(mutex_);
    size_ = size;
}

QSize LiveView::displaySize() const
{
    std::lock_guard lock(mutex_);
    return size_;
}

void LiveView::frameReady(const FrameView& frame)
{
    QSize wanted;
    FrameSink* tap = nullptr;
    {
        std::lock_guard lock(mutex_);
        ++counters_.received;
        wanted = size_;
        tap = tap_;
    }
    if (tap)
        tap->frameReady(frame);
    if (wanted.isEmpty() || frame.bits == nullptr)
        return;
    // The back buffer belongs to this thread; it is scaled without the lock so
    // that painting never waits for it. A new size costs one allocation per buffer.
    if (back_.size() != wanted)
        back_ = QImage(wanted, QImage::Format_RGB32);
    scaleInto(frame, back_, xOffsets_);

    std::function<void()> notify;
    {
        std::lock_guard lock(mutex_);
        std::swap(back_, ready_);
        if (readyFresh_)
            ++counters_.replaced;
        else
            notify = notify_;
        readyFresh_ = true;
    }
    if (notify)
        notify();
}

const QImage* LiveView::takeFrame()
{
    std::lock_guard lock(mutex_);
    if (!readyFresh_)
        return nullptr;
    std::swap(ready_, front_);
    readyFresh_ = false;
    ++counters_.shown;
    return &front_;
}

LiveView::Counters LiveView::counters() const
{
    std::lock_guard lock(mutex_);
    return counters_;
}

namespace {

// One output pixel is the mean of the 2x2 source pixels at its place. Each
// output row first adds the two source rows it reads (a plain loop the
// compiler vectorises), then takes two neighbours from that sum, which stays
// in the first-level cache; the pixel layout is a template argument so that
// the inner loop has no branch.
template <int Bpp, int Red, int Blue>
void scaleRows(const FrameView& frame, QImage& dst, const std::vector<int>& xOffsets)
{
    const int dw = dst.width();
    const int dh = dst.height();
    const int sh = frame.height;
    const int rowBytes = frame.width * Bpp;
    thread_local std::vector<quint16> sums;
    sums.resize(static_cast<size_t>(rowBytes));
    quint16* sum = sums.data();
    for (int y = 0; y < dh; ++y) {
        const int sy = std::min(sh - 1, static_cast<int>((static_cast<long long>(y) * sh + sh / 2) / dh));
        const uchar* row0 = frame.bits + static_cast<qsizetype>(sy) * frame.bytesPerLine;
        const uchar* row1 =
            frame.bits + static_cast<qsizetype>(std::min(sh - 1, sy + 1)) * frame.bytesPerLine;
        for (int i = 0; i < rowBytes; ++i)
            sum[i] = static_cast<quint16>(row0[i] + row1[i]);
        auto* out = reinterpret_cast<QRgb*>(dst.scanLine(y));
        const int* off = xOffsets.data();
        for (int x = 0; x < dw; ++x, off += 2) {
            const quint16* a = sum + off[0];
            const quint16* b = sum + off[1];
            if constexpr (Bpp == 1) {
                const unsigned v = (a[0] + b[0] + 2u) >> 2;
                out[x] = 0xff000000u | (v << 16) | (v << 8) | v;
            } else {
                const unsigned r = (a[Red] + b[Red] + 2u) >> 2;
                const unsigned g = (a[1] + b[1] + 2u) >> 2;
                const unsigned bl = (a[Blue] + b[Blue] + 2u) >> 2;
                out[x] = 0xff000000u | (r << 16) | (g << 8) | bl;
            }
        }
    }
}

}  // namespace

void LiveView::scaleInto(const FrameView& frame, QImage& dst, std::vector<int>& xOffsets)
{
    const int dw = dst.width();
    const int dh = dst.height();
    if (dw <= 0 || dh <= 0 || frame.width <= 0 || frame.height <= 0)
        return;
    int bpp = 3;
    switch (frame.format) {
        case QImage::Format_Grayscale8:
            bpp = 1;
            break;
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
            bpp = 4;  // 0xAARRGGBB in memory order B, G, R, A
            break;
        default:
            bpp = 3;
            break;
    }
    const int sw = frame.width;
    if (static_cast<int>(xOffsets.size()) != dw * 2)
        xOffsets.resize(static_cast<size_t>(dw) * 2);
    for (int x = 0; x < dw; ++x) {
        const int sx = std::min(sw - 1, static_cast<int>((static_cast<long long>(x) * sw + sw / 2) / dw));
        xOffsets[static_cast<size_t>(2 * x)] = sx * bpp;
        xOffsets[static_cast<size_t>(2 * x + 1)] = std::min(sw - 1, sx + 1) * bpp;
    }
    if (bpp == 1)
        scaleRows<1, 0, 0>(frame, dst, xOffsets);
    else if (bpp == 4)
        scaleRows<4, 2, 0>(frame, dst, xOffsets);
    else
        scaleRows<3, 0, 2>(frame, dst, xOffsets);
}

}  // namespace tavix
