#include "media/FrameViewOf.h"
#include "media/ViewScaler.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace tavix;

namespace {

struct Layout {
    const char* name;
    QImage::Format format;
    RawLayout raw;
    int bytesPerPixel;
};

const Layout kLayouts[] = {
    {"Gray8", QImage::Format_Grayscale8, RawLayout::None, 1},
    {"RGB888", QImage::Format_RGB888, RawLayout::None, 3},
    {"BGR888", QImage::Format_BGR888, RawLayout::None, 3},
    {"RGB32", QImage::Format_RGB32, RawLayout::None, 4},
    {"ARGB32", QImage::Format_ARGB32, RawLayout::None, 4},
    {"YUYV", QImage::Format_Invalid, RawLayout::Yuyv, 2},
    {"BayerRGGB", QImage::Format_Invalid, RawLayout::BayerRggb, 1},
    {"BayerGRBG", QImage::Format_Invalid, RawLayout::BayerGrbg, 1},
    {"BayerGBRG", QImage::Format_Invalid, RawLayout::BayerGbrg, 1},
    {"BayerBGGR", QImage::Format_Invalid, RawLayout::BayerBggr, 1},
};

const ViewScaler::Kernel kKernels[] = {ViewScaler::Kernel::Plain, ViewScaler::Kernel::Sse2,
                                       ViewScaler::Kernel::Avx2};

struct Frame {
    Frame(const Layout& layout, int w, int h, unsigned seed)
        : width(w),
          height(h),
          bytesPerLine(w * layout.bytesPerPixel + 5),
          bytes(static_cast<size_t>(bytesPerLine) * h)
    {
        std::mt19937 random(seed);
        for (auto& b : bytes)
            b = static_cast<uchar>(random());
        view.bits = bytes.data();
        view.width = w;
        view.height = h;
        view.bytesPerLine = bytesPerLine;
        view.format = layout.format;
        view.raw = layout.raw;
    }
    int width, height, bytesPerLine;
    std::vector<uchar> bytes;
    FrameView view;
};

int clampByte(int v)
{
    return v < 0 ? 0 : (v > 255 ? 255 : v);
}

// The definition, written out plainly: the mean of each block, per channel.
QImage reference(const Layout& layout, const Frame& f, QSize size)
{
    const bool bayer = layout.bytesPerPixel == 1 && layout.raw != RawLayout::None;
    const int uw = bayer ? f.width / 2 : f.width;
    const int uh = bayer ? f.height / 2 : f.height;
    const int kx = std::clamp(uw / size.width(), 1, 8);
    const int ky = std::clamp(uh / size.height(), 1, 8);
    QImage out(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int ux0 = static_cast<int>(static_cast<long long>(x) * uw / size.width());
            const int uy0 = static_cast<int>(static_cast<long long>(y) * uh / size.height());
            long sum[3] = {0, 0, 0};  // red, green, blue (Y, U, V for YUYV)
            for (int uy = uy0; uy < uy0 + ky; ++uy) {
                for (int ux = ux0; ux < ux0 + kx; ++ux) {
                    if (bayer) {
                        const uchar* top =
                            f.bytes.data() + static_cast<size_t>(2 * uy) * f.bytesPerLine + 2 * ux;
                        const uchar* bottom = top + f.bytesPerLine;
                        const int cell[4] = {top[0], top[1], bottom[0], bottom[1]};
                        int r = 0, b = 0;
                        switch (layout.raw) {
                            case RawLayout::BayerRggb:
                                r = 0, b = 3;
                                break;
                            case RawLayout::BayerGrbg:
                                r = 1, b = 2;
                                break;
                            case RawLayout::BayerGbrg:
                                r = 2, b = 1;
                                break;
                            default:
                                r = 3, b = 0;
                                break;
                        }
                        sum[0] += 2 * cell[r];
                        sum[2] += 2 * cell[b];
                        for (int i = 0; i < 4; ++i)
                            if (i != r && i != b)
                                sum[1] += cell[i];
                        continue;
                    }
                    const uchar* row = f.bytes.data() + static_cast<size_t>(uy) * f.bytesPerLine;
                    if (layout.raw == RawLayout::Yuyv) {
                        const uchar* pair = row + 4 * (ux / 2);
                        sum[0] += pair[(ux % 2) * 2];
                        sum[1] += pair[1];
                        sum[2] += pair[3];
                        continue;
                    }
                    const uchar* p = row + ux * layout.bytesPerPixel;
                    switch (layout.format) {
                        case QImage::Format_Grayscale8:
                            for (auto& s : sum)
                                s += p[0];
                            break;
                        case QImage::Format_RGB888:
                            sum[0] += p[0], sum[1] += p[1], sum[2] += p[2];
                            break;
                        default:  // BGR888 and 32-bit: blue first
                            sum[0] += p[2], sum[1] += p[1], sum[2] += p[0];
                            break;
                    }
                }
            }
            const long n = static_cast<long>(kx) * ky * (bayer ? 2 : 1);
            int m[3];
            for (int c = 0; c < 3; ++c)
                m[c] = static_cast<int>((sum[c] + n / 2) / n);
            QRgb rgb = qRgb(m[0], m[1], m[2]);
            if (layout.raw == RawLayout::Yuyv) {
                const int c = 298 * (m[0] - 16) + 128, d = m[1] - 128, e = m[2] - 128;
                rgb = qRgb(clampByte((c + 409 * e) >> 8), clampByte((c - 100 * d - 208 * e) >> 8),
                           clampByte((c + 516 * d) >> 8));
            }
            out.setPixel(x, y, rgb);
        }
    }
    return out;
}

QImage scaled(ViewScaler& scaler, const FrameView& view, QSize size)
{
    QImage out(size, QImage::Format_RGB32);
    out.fill(Qt::magenta);
    EXPECT_TRUE(scaler.scale(view, out));
    return out;
}

}  // namespace

TEST(ViewScaler, EveryLayoutFactorAndKernel_MatchesThePlainDefinition)
{
    const QSize sources[] = {{64, 48}, {37, 23}, {200, 150}, {2, 2}};
    const QSize shown[] = {{32, 24}, {10, 7}, {1, 1}, {13, 5}, {64, 48}, {100, 90}, {3, 17}};
    unsigned seed = 1;
    for (const Layout& layout : kLayouts) {
        for (QSize source : sources) {
            // YUYV comes in pairs of pixels.
            const int width = layout.raw == RawLayout::Yuyv ? source.width() & ~1 : source.width();
            const Frame frame(layout, width, source.height(), seed++);
            for (QSize size : shown) {
                const QImage expected = reference(layout, frame, size);
                for (ViewScaler::Kernel kernel : kKernels) {
                    ViewScaler scaler(kernel);
                    // Twice through one scaler: its kept tables give the same picture.
                    for (int round = 0; round < 2; ++round)
                        ASSERT_EQ(scaled(scaler, frame.view, size), expected)
                            << layout.name << " " << width << "x" << source.height() << " to " << size.width()
                            << "x" << size.height() << " kernel " << static_cast<int>(scaler.kernel());
                }
            }
        }
    }
}

TEST(ViewScaler, SimdKernels_EqualThePlainOne_OnAFullSizeFrame)
{
    for (const Layout& layout : kLayouts) {
        const Frame frame(layout, 1300, 977, 7);
        ViewScaler plain(ViewScaler::Kernel::Plain);
        const QImage expected = scaled(plain, frame.view, QSize(500, 375));
        for (ViewScaler::Kernel kernel : {ViewScaler::Kernel::Sse2, ViewScaler::Kernel::Avx2}) {
            ViewScaler simd(kernel);
            EXPECT_EQ(scaled(simd, frame.view, QSize(500, 375)), expected) << layout.name;
        }
    }
}

TEST(ViewScaler, LargeReduction_AveragesAtMostTheLargestBlock)
{
    EXPECT_EQ(ViewScaler::factor(4000, 10), ViewScaler::kMaxFactor);
    EXPECT_EQ(ViewScaler::factor(2592, 1000), 2);
    EXPECT_EQ(ViewScaler::factor(640, 800), 1);
    const Layout& rgb = kLayouts[1];
    const Frame frame(rgb, 1000, 800, 3);
    ViewScaler scaler(ViewScaler::Kernel::Plain);
    EXPECT_EQ(scaled(scaler, frame.view, QSize(9, 7)), reference(rgb, frame, QSize(9, 7)));
}

TEST(ViewScaler, Divider_GivesTheRoundedMean_ForEveryBlockSize)
{
    for (int count = 1; count <= 2 * ViewScaler::kMaxFactor * ViewScaler::kMaxFactor; ++count) {
        const ViewScaler::Divider d = ViewScaler::dividerFor(count);
        for (unsigned sum = 0; sum <= 255u * static_cast<unsigned>(count); ++sum) {
            unsigned v = (sum + d.half) & 0xffff;
            if (d.mul)
                v = (v * d.mul) >> 16;
            v >>= d.shift;
            ASSERT_EQ(v, (sum + static_cast<unsigned>(count) / 2) / static_cast<unsigned>(count))
                << "count " << count << " sum " << sum;
        }
    }
}

TEST(ViewScaler, UniformBayerFrame_GivesItsColour_InEveryPattern)
{
    for (int i = 6; i < 10; ++i) {
        const Layout& layout = kLayouts[i];
        Frame frame(layout, 16, 8, 1);
        const int red = i == 6 ? 0 : i == 7 ? 1 : i == 8 ? 2 : 3;
        const int blue = 3 - red;
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 16; ++x) {
                const int site = (y % 2) * 2 + x % 2;
                frame.bytes[static_cast<size_t>(y * frame.bytesPerLine + x)] =
                    site == red ? 200 : (site == blue ? 50 : 100);
            }
        ViewScaler scaler;
        EXPECT_EQ(scaled(scaler, frame.view, QSize(8, 4)).pixel(3, 2), qRgb(200, 100, 50)) << layout.name;
        EXPECT_EQ(scaled(scaler, frame.view, QSize(3, 3)).pixel(2, 2), qRgb(200, 100, 50)) << layout.name;
    }
}

TEST(ViewScaler, YuyvWhiteAndBlack_ComeOutAsWhiteAndBlack)
{
    const uchar bytes[] = {235, 128, 235, 128, 16, 128, 16, 128};
    FrameView f;
    f.bits = bytes;
    f.width = 4;
    f.height = 1;
    f.bytesPerLine = 8;
    f.raw = RawLayout::Yuyv;
    ViewScaler scaler;
    const QImage out = scaled(scaler, f, QSize(4, 1));
    EXPECT_EQ(out.pixel(0, 0), qRgb(255, 255, 255));
    EXPECT_EQ(out.pixel(3, 0), qRgb(0, 0, 0));
}

TEST(ViewScaler, UnreadableFrames_AreRefused_AndLeaveThePictureAlone)
{
    const Layout& yuyv = kLayouts[5];
    const Frame odd(yuyv, 15, 4, 1);
    QImage out(4, 2, QImage::Format_RGB32);
    out.fill(Qt::magenta);
    ViewScaler scaler;
    EXPECT_FALSE(scaler.scale(odd.view, out));
    const QImage rgb16(8, 8, QImage::Format_RGB16);
    EXPECT_FALSE(scaler.scale(frameViewOf(rgb16), out));
    QImage wrongTarget(4, 2, QImage::Format_RGB888);
    EXPECT_FALSE(scaler.scale(Frame(kLayouts[1], 8, 4, 2).view, wrongTarget));
    EXPECT_EQ(out.pixel(1, 1), QColor(Qt::magenta).rgb());
}
