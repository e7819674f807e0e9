#include "camera/genicam/PixelConversion.h"

#include "media/BayerDemosaic.h"

#include <algorithm>

#undef signals
#include <arv.h>

namespace tavix {

namespace {

enum class Packing { Bytes8, Rgb8, Bgr8, Little16, Packed12, Lsb12 };

struct Format {
    ArvPixelFormat format;
    Packing packing;
    int bits;         // significant bits per sample
    RawLayout cells;  // the Bayer pattern; None for grey and RGB
};

using L = RawLayout;

// Mono12p, which Aravis's header does not name.
constexpr ArvPixelFormat kMono12p = 0x010c0047u;

// Every format the program shows. The *_PACKED ones (10 or 12 bits in a
// sample and a half) keep their high eight bits in whole bytes.
constexpr Format kFormats[] = {
    {ARV_PIXEL_FORMAT_MONO_8, Packing::Bytes8, 8, L::None},
    {ARV_PIXEL_FORMAT_RGB_8_PACKED, Packing::Rgb8, 8, L::None},
    {ARV_PIXEL_FORMAT_BGR_8_PACKED, Packing::Bgr8, 8, L::None},
    {ARV_PIXEL_FORMAT_MONO_10, Packing::Little16, 10, L::None},
    {ARV_PIXEL_FORMAT_MONO_12, Packing::Little16, 12, L::None},
    {ARV_PIXEL_FORMAT_MONO_14, Packing::Little16, 14, L::None},
    {ARV_PIXEL_FORMAT_MONO_16, Packing::Little16, 16, L::None},
    {ARV_PIXEL_FORMAT_MONO_10_PACKED, Packing::Packed12, 10, L::None},
    {ARV_PIXEL_FORMAT_MONO_12_PACKED, Packing::Packed12, 12, L::None},
    {kMono12p, Packing::Lsb12, 12, L::None},
    {ARV_PIXEL_FORMAT_BAYER_RG_8, Packing::Bytes8, 8, L::BayerRggb},
    {ARV_PIXEL_FORMAT_BAYER_GR_8, Packing::Bytes8, 8, L::BayerGrbg},
    {ARV_PIXEL_FORMAT_BAYER_GB_8, Packing::Bytes8, 8, L::BayerGbrg},
    {ARV_PIXEL_FORMAT_BAYER_BG_8, Packing::Bytes8, 8, L::BayerBggr},
    {ARV_PIXEL_FORMAT_BAYER_RG_10, Packing::Little16, 10, L::BayerRggb},
    {ARV_PIXEL_FORMAT_BAYER_GR_10, Packing::Little16, 10, L::BayerGrbg},
    {ARV_PIXEL_FORMAT_BAYER_GB_10, Packing::Little16, 10, L::BayerGbrg},
    {ARV_PIXEL_FORMAT_BAYER_BG_10, Packing::Little16, 10, L::BayerBggr},
    {ARV_PIXEL_FORMAT_BAYER_RG_12, Packing::Little16, 12, L::BayerRggb},
    {ARV_PIXEL_FORMAT_BAYER_GR_12, Packing::Little16, 12, L::BayerGrbg},
    {ARV_PIXEL_FORMAT_BAYER_GB_12, Packing::Little16, 12, L::BayerGbrg},
    {ARV_PIXEL_FORMAT_BAYER_BG_12, Packing::Little16, 12, L::BayerBggr},
    {ARV_PIXEL_FORMAT_BAYER_RG_16, Packing::Little16, 16, L::BayerRggb},
    {ARV_PIXEL_FORMAT_BAYER_GR_16, Packing::Little16, 16, L::BayerGrbg},
    {ARV_PIXEL_FORMAT_BAYER_GB_16, Packing::Little16, 16, L::BayerGbrg},
    {ARV_PIXEL_FORMAT_BAYER_BG_16, Packing::Little16, 16, L::BayerBggr},
    {ARV_PIXEL_FORMAT_BAYER_RG_12_PACKED, Packing::Packed12, 12, L::BayerRggb},
    {ARV_PIXEL_FORMAT_BAYER_GR_12_PACKED, Packing::Packed12, 12, L::BayerGrbg},
    {ARV_PIXEL_FORMAT_BAYER_GB_12_PACKED, Packing::Packed12, 12, L::BayerGbrg},
    {ARV_PIXEL_FORMAT_BAYER_BG_12_PACKED, Packing::Packed12, 12, L::BayerBggr},
    {ARV_PIXEL_FORMAT_BAYER_RG_12P, Packing::Lsb12, 12, L::BayerRggb},
    {ARV_PIXEL_FORMAT_BAYER_GR_12P, Packing::Lsb12, 12, L::BayerGrbg},
    {ARV_PIXEL_FORMAT_BAYER_GB_12P, Packing::Lsb12, 12, L::BayerGbrg},
    {ARV_PIXEL_FORMAT_BAYER_BG_12P, Packing::Lsb12, 12, L::BayerBggr},
};

const Format* find(std::uint32_t format)
{
    for (const Format& f : kFormats)
        if (f.format == format)
            return &f;
    return nullptr;
}

qsizetype lineBytes(Packing packing, int width)
{
    switch (packing) {
        case Packing::Bytes8:
            return width;
        case Packing::Rgb8:
        case Packing::Bgr8:
            return qsizetype(width) * 3;
        case Packing::Little16:
            return qsizetype(width) * 2;
        case Packing::Packed12:
        case Packing::Lsb12:
            return (qsizetype(width) * 3 + 1) / 2;
    }
    return 0;
}

// The eight high bits of each sample of one line.
void toEight(const Format& f, const uchar* src, int width, uchar* dst)
{
    if (f.packing == Packing::Little16) {
        const int shift = f.bits - 8;
        for (int x = 0; x < width; ++x) {
            const unsigned v = src[2 * x] | (unsigned(src[2 * x + 1]) << 8);
            dst[x] = static_cast<uchar>(std::min(255u, v >> shift));
        }
        return;
    }
    // Two samples in three bytes: the GigE packing keeps each sample's high
    // bits in bytes 0 and 2; the LSB-first one splits the first across bytes 0 and 1.
    const bool lsb = f.packing == Packing::Lsb12;
    int x = 0;
    for (; x + 1 < width; x += 2, src += 3) {
        dst[x] = lsb ? static_cast<uchar>((src[0] >> 4) | (src[1] << 4)) : src[0];
        dst[x + 1] = src[2];
    }
    if (x < width)
        dst[x] = lsb ? static_cast<uchar>((src[0] >> 4) | (src[1] << 4)) : src[0];
}

BayerDemosaic::Pattern patternOf(RawLayout cells)
{
    switch (cells) {
        case RawLayout::BayerGrbg:
            return BayerDemosaic::Pattern::GRBG;
        case RawLayout::BayerGbrg:
            return BayerDemosaic::Pattern::GBRG;
        case RawLayout::BayerBggr:
            return BayerDemosaic::Pattern::BGGR;
        default:
            return BayerDemosaic::Pattern::RGGB;
    }
}

}  // namespace

bool PixelConversion::known(std::uint32_t format)
{
    return find(format) != nullptr;
}

bool PixelConversion::colour(std::uint32_t format)
{
    const Format* f = find(format);
    return f && (f->cells != RawLayout::None || f->packing == Packing::Rgb8 || f->packing == Packing::Bgr8);
}

uchar* PixelConversion::nextBuffer(std::size_t bytes)
{
    std::vector<uchar>& b = out_[static_cast<size_t>(next_)];
    next_ ^= 1;
    if (b.size() < bytes)
        b.resize(bytes);
    return b.data();
}

bool PixelConversion::convert(std::uint32_t format, const uchar* data, std::size_t size, int width,
                              int height, int padX, FrameView& view)
{
    const Format* f = find(format);
    if (!f || !data || width < 2 || height < 2)
        return false;
    const qsizetype stride = lineBytes(f->packing, width) + padX;
    if (size < static_cast<std::size_t>(stride) * static_cast<std::size_t>(height))
        return false;
    view.width = width;
    view.height = height;
    view.raw = f->cells;
    view.format = f->packing == Packing::Rgb8   ? QImage::Format_RGB888
                  : f->packing == Packing::Bgr8 ? QImage::Format_BGR888
                                                : QImage::Format_Grayscale8;
    if (f->packing == Packing::Bytes8 || f->packing == Packing::Rgb8 || f->packing == Packing::Bgr8) {
        view.bits = data;
        view.bytesPerLine = stride;
        return true;
    }
    uchar* eight = nextBuffer(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y)
        toEight(*f, data + y * stride, width, eight + static_cast<std::size_t>(y) * width);
    view.bits = eight;
    view.bytesPerLine = width;
    return true;
}

FrameView PixelConversion::develop(const FrameView& frame, std::vector<uchar>& rgb)
{
    if (frame.raw == RawLayout::None)
        return frame;
    FrameView full = frame;
    full.raw = RawLayout::None;
    full.format = QImage::Format_RGB888;
    full.bytesPerLine = qsizetype(frame.width) * 3;
    const auto bytes = static_cast<std::size_t>(full.bytesPerLine) * static_cast<std::size_t>(frame.height);
    if (rgb.size() < bytes)
        rgb.resize(bytes);
    BayerDemosaic::toRgb(frame.bits, frame.bytesPerLine, frame.width, frame.height, patternOf(frame.raw),
                         rgb.data(), full.bytesPerLine);
    full.bits = rgb.data();
    return full;
}

}  // namespace tavix
