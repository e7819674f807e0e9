#include "media/ViewScaler.h"

#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define TAVIX_SCALER_X86 1
#endif

namespace tavix {

namespace {

enum class Layout { Gray, Rgb24, Bgr24, Rgb32, Yuyv, Bayer };

// What the row kernels need for one frame.
struct RowJob {
    const uchar* bits;
    qsizetype bytesPerLine;
    Layout layout;
    int pattern;     // Bayer: 0 RGGB, 1 GRBG, 2 GBRG, 3 BGGR
    int rowBytes;    // bytes of a source row that are summed
    int unitsCount;  // source units per row (pixels, or Bayer cells)
    int kx, ky;
    int stride;  // values per unit in what blockMeans reads
    bool gray, swapRb;
    ViewScaler::Divider div;
    const int* xOffsets;
    const int* yRows;
    int dw, dh;
    uchar* dstBits;
    qsizetype dstBytesPerLine;
    quint16* sums;
    quint16* sums2;
    quint16* units;
};

struct Geometry {
    Layout layout;
    int pattern = 0;
    int bytesPerPixel = 1;
};

bool geometryOf(const FrameView& frame, Geometry& g)
{
    switch (frame.raw) {
        case RawLayout::Yuyv:
            g = {Layout::Yuyv, 0, 2};
            return frame.width % 2 == 0;
        case RawLayout::BayerRggb:
        case RawLayout::BayerGrbg:
        case RawLayout::BayerGbrg:
        case RawLayout::BayerBggr:
            g = {Layout::Bayer, static_cast<int>(frame.raw) - static_cast<int>(RawLayout::BayerRggb), 1};
            return true;
        case RawLayout::None:
            break;
    }
    switch (frame.format) {
        case QImage::Format_Grayscale8:
            g = {Layout::Gray, 0, 1};
            return true;
        case QImage::Format_RGB888:
            g = {Layout::Rgb24, 0, 3};
            return true;
        case QImage::Format_BGR888:
            g = {Layout::Bgr24, 0, 3};
            return true;
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
            g = {Layout::Rgb32, 0, 4};  // 0xAARRGGBB: blue first in memory
            return true;
        default:
            return false;
    }
}

}  // namespace

namespace plain {
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC push_options
#pragma GCC optimize("no-tree-vectorize")
#endif
#include "media/ViewScalerRows.inc"
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC pop_options
#endif
void run(const RowJob& job)
{
    scaleFrame(job);
}
}  // namespace plain

#ifdef TAVIX_SCALER_X86
#define TAVIX_SCALER_SIMD 1
namespace sse2 {
#include "media/ViewScalerRows.inc"
void run(const RowJob& job)
{
    scaleFrame(job);
}
}  // namespace sse2

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif
#define TAVIX_SCALER_AVX2 1
namespace avx2 {
#include "media/ViewScalerRows.inc"
void run(const RowJob& job)
{
    scaleFrame(job);
}
}  // namespace avx2
#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif
#undef TAVIX_SCALER_AVX2
#undef TAVIX_SCALER_SIMD
#endif

ViewScaler::Kernel ViewScaler::fastest()
{
#ifdef TAVIX_SCALER_X86
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2"))
        return Kernel::Avx2;
    return Kernel::Sse2;
#else
    return Kernel::Plain;
#endif
}

ViewScaler::ViewScaler(Kernel kernel) : kernel_(kernel)
{
#ifndef TAVIX_SCALER_X86
    kernel_ = Kernel::Plain;
#else
    if (kernel_ == Kernel::Avx2 && fastest() != Kernel::Avx2)
        kernel_ = Kernel::Sse2;
#endif
}

int ViewScaler::factor(int sourceUnits, int shownPixels)
{
    if (shownPixels <= 0)
        return 1;
    const int k = sourceUnits / shownPixels;
    return k < 1 ? 1 : (k > kMaxFactor ? kMaxFactor : k);
}

ViewScaler::Divider ViewScaler::dividerFor(int count)
{
    Divider d;
    d.half = static_cast<std::uint16_t>(count / 2);
    if ((count & (count - 1)) == 0) {
        while ((1 << d.shift) < count)
            ++d.shift;
        return d;
    }
    // The first multiplier and shift that give the exact mean of every sum.
    const unsigned top = 255u * static_cast<unsigned>(count) + d.half;
    for (int shift = 0; shift < 16; ++shift) {
        const unsigned mul =
            ((1u << (16 + shift)) + static_cast<unsigned>(count) - 1) / static_cast<unsigned>(count);
        if (mul > 0xffff)
            break;
        bool exact = true;
        for (unsigned s = d.half; s <= top && exact; ++s)
            exact = ((s * mul) >> (16 + shift)) == s / static_cast<unsigned>(count);
        if (exact) {
            d.mul = static_cast<std::uint16_t>(mul);
            d.shift = shift;
            return d;
        }
    }
    return d;  // not reached for counts up to 2 * kMaxFactor^2 (the tests check every one)
}

bool ViewScaler::scale(const FrameView& frame, QImage& dst)
{
    Geometry g;
    if (!frame.bits || frame.width <= 0 || frame.height <= 0 || dst.isNull() ||
        dst.format() != QImage::Format_RGB32 || !geometryOf(frame, g))
        return false;
    const bool bayer = g.layout == Layout::Bayer;
    const int uw = bayer ? frame.width / 2 : frame.width;
    const int uh = bayer ? frame.height / 2 : frame.height;
    if (uw <= 0 || uh <= 0)
        return false;
    const int dw = dst.width();
    const int dh = dst.height();
    const int kx = factor(uw, dw);
    const int ky = factor(uh, dh);
    const bool expanded = bayer || g.layout == Layout::Yuyv;
    const int stride = expanded ? 4 : g.bytesPerPixel;
    const int key = static_cast<int>(g.layout) * 8 + g.pattern;
    if (frame.width != srcWidth_ || frame.height != srcHeight_ || dw != dstWidth_ || dh != dstHeight_ ||
        key != layoutKey_) {
        srcWidth_ = frame.width;
        srcHeight_ = frame.height;
        dstWidth_ = dw;
        dstHeight_ = dh;
        layoutKey_ = key;
        divider_ = dividerFor(kx * ky * (bayer ? 2 : 1));
        xOffsets_.resize(static_cast<size_t>(dw));
        for (int x = 0; x < dw; ++x)
            xOffsets_[static_cast<size_t>(x)] =
                static_cast<int>(static_cast<long long>(x) * uw / dw) * stride;
        yRows_.resize(static_cast<size_t>(dh));
        for (int y = 0; y < dh; ++y)
            yRows_[static_cast<size_t>(y)] = static_cast<int>(static_cast<long long>(y) * uh / dh);
        // Padding: a group of four values is read where a unit has fewer.
        const size_t rowBytes = static_cast<size_t>(frame.width) * static_cast<size_t>(g.bytesPerPixel);
        sums_.assign(rowBytes + 8, 0);
        sums2_.assign(bayer ? rowBytes + 8 : 0, 0);
        units_.assign(expanded ? static_cast<size_t>(uw) * 4 + 8 : 0, 0);
    }

    RowJob job{};
    job.bits = frame.bits;
    job.bytesPerLine = frame.bytesPerLine;
    job.layout = g.layout;
    job.pattern = g.pattern;
    job.rowBytes = frame.width * g.bytesPerPixel;
    job.unitsCount = uw;
    job.kx = kx;
    job.ky = ky;
    job.stride = stride;
    job.gray = g.layout == Layout::Gray;
    job.swapRb = g.layout == Layout::Rgb24;
    job.div = divider_;
    job.xOffsets = xOffsets_.data();
    job.yRows = yRows_.data();
    job.dw = dw;
    job.dh = dh;
    job.dstBits = dst.bits();
    job.dstBytesPerLine = dst.bytesPerLine();
    job.sums = sums_.data();
    job.sums2 = sums2_.data();
    job.units = units_.data();
    switch (kernel_) {
#ifdef TAVIX_SCALER_X86
        case Kernel::Avx2:
            avx2::run(job);
            break;
        case Kernel::Sse2:
            sse2::run(job);
            break;
#endif
        default:
            plain::run(job);
            break;
    }
    return true;
}

}  // namespace tavix
