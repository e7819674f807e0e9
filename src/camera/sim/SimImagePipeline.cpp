#include "camera/sim/SimImagePipeline.h"

#include "camera/sim/SimScene.h"
#include "common/PictureMemory.h"
#include "common/RowHalves.h"

#include <QtMath>
#include <algorithm>
#include <cmath>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tavix {

namespace {

constexpr int kNoiseRows = 128;
constexpr int kNoiseSlack = 128;  // pixels of horizontal play for the per-frame offset
constexpr int kMatrixShift = 12;
constexpr int kRowsWorthAThread = 256;  // a second thread costs less than this many rows
constexpr double kUnitNoise = 1024.0;   // one standard deviation in the stored unit noise

// A fast generator with good statistics for noise (not for secrets).
std::uint64_t splitMix64(std::uint64_t& state)
{
    std::uint64_t z = (state += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
}

using Matrix = std::array<std::array<double, 3>, 3>;

Matrix identity()
{
    return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
}

Matrix multiply(const Matrix& a, const Matrix& b)
{
    Matrix m{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                m[i][j] += a[i][k] * b[k][j];
    return m;
}

constexpr double kLuma[3] = {0.299, 0.587, 0.114};

// Saturation that keeps the grey level of every colour.
Matrix saturation(double s)
{
    Matrix m{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            m[i][j] = (1 - s) * kLuma[j] + (i == j ? s : 0);
    return m;
}

// Rotation about the grey axis: greys stay, +120 degrees turns red into green.
Matrix hueRotation(double degrees)
{
    const double t = qDegreesToRadians(degrees);
    const double c = std::cos(t);
    const double s = std::sin(t) / std::sqrt(3.0);
    const double k = (1 - c) / 3;
    return {{{c + k, k - s, k + s}, {k + s, c + k, k - s}, {k - s, k + s, c + k}}};
}

// The sensor's crosstalk correction; rows sum to 1 so that greys stay grey.
Matrix colourCorrection()
{
    return {{{1.50, -0.35, -0.15}, {-0.25, 1.45, -0.20}, {-0.10, -0.45, 1.55}}};
}

Matrix greyMatrix()
{
    Matrix m{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            m[i][j] = kLuma[j];
    return m;
}

uchar clampByte(int v)
{
    return static_cast<uchar>(std::clamp(v, 0, 255));
}

// Rows [from, to) of a picture made pixel by pixel from the scene, flipped.
// Plain parameters and a pixel step taken by value: the compiler keeps them
// in registers, which it would not do for a closure's captures that the byte
// stores might alias.
template <class Pixel>
void flippedRows(const uchar* scene, qsizetype sceneStride, uchar* out, int w, int h, bool flipH, bool flipV,
                 int from, int to, Pixel pixel)
{
    for (int y = from; y < to; ++y) {
        const uchar* src = scene + sceneStride * (flipV ? h - 1 - y : y);
        uchar* dst = out + static_cast<qsizetype>(y) * w * 3;
        const int step = flipH ? -3 : 3;
        if (flipH)
            src += 3 * (w - 1);
        for (int x = 0; x < w; ++x, src += step, dst += 3)
            pixel(src, dst);
    }
}

// Bytes [from, to) of RGB through the tables.
void tableBytes(const uchar* src, uchar* dst, const uchar* t0, const uchar* t1, const uchar* t2,
                qsizetype from, qsizetype to)
{
    for (qsizetype i = from; i < to; i += 3) {
        dst[i] = t0[src[i]];
        dst[i + 1] = t1[src[i + 1]];
        dst[i + 2] = t2[src[i + 2]];
    }
}

// dst = src + noise, saturated.
void addNoise(const uchar* src, const std::int8_t* noise, uchar* dst, qsizetype n)
{
    qsizetype i = 0;
#if defined(__SSE2__)
    const __m128i bias = _mm_set1_epi8(static_cast<char>(0x80));
    for (; i + 16 <= n; i += 16) {
        const __m128i s = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i)), bias);
        const __m128i v = _mm_adds_epi8(s, _mm_loadu_si128(reinterpret_cast<const __m128i*>(noise + i)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm_xor_si128(v, bias));
    }
#endif
    for (; i < n; ++i)
        dst[i] = clampByte(src[i] + noise[i]);
}

// dst = rounded mean of dst and previous.
void blend(uchar* dst, const uchar* previous, qsizetype n)
{
    qsizetype i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= n; i += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(dst + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(previous + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm_avg_epu8(a, b));
    }
#endif
    for (; i < n; ++i)
        dst[i] = static_cast<uchar>((dst[i] + previous[i] + 1) >> 1);
}

}  // namespace

void SimImagePipeline::setSize(QSize size)
{
    if (size == size_)
        return;
    size_ = size;
    sceneDirty_ = matrixDirty_ = finishedDirty_ = firstOfSize_ = true;
    noiseSigma_ = -1;
}

void SimImagePipeline::setLook(const SimLook& look)
{
    const SimLook& o = look_;
    if (look.rgbGain != o.rgbGain || look.flipH != o.flipH || look.flipV != o.flipV ||
        look.colour != o.colour || look.saturation != o.saturation || look.hue != o.hue ||
        look.colourCorrection != o.colourCorrection || look.colourProcessing != o.colourProcessing)
        matrixDirty_ = true;
    if (look.exposureMs != o.exposureMs || look.gain != o.gain || look.blackLevel != o.blackLevel ||
        look.brightness != o.brightness || look.contrast != o.contrast || look.gamma != o.gamma ||
        look.gammaOn != o.gammaOn || look.rgbOffset != o.rgbOffset || look.colour != o.colour)
        finishedDirty_ = tablesDirty_ = true;
    look_ = look;
}

void SimImagePipeline::ensureScene()
{
    if (!sceneDirty_)
        return;
    scene_ = SimScene::render(size_);
    const qsizetype bytes = static_cast<qsizetype>(size_.width()) * 3 * size_.height();
    // Both are written whole before they are read; the prepared picture is
    // needed only for colour mixing and is made when first used.
    PictureMemory::assignUnwritten(finished_, static_cast<size_t>(bytes));
    prepared_.clear();

    sceneDirty_ = false;
    preparedValid_ = false;
    finishedDirty_ = true;
}

void SimImagePipeline::ensureMask()
{
    if (maskSize_ == size_)
        return;
    particleMask_ = SimScene::particleMask(size_);
    maskSize_ = size_;
}

void SimImagePipeline::ensureLook()
{
    if (matrixDirty_) {
        buildMatrix();
        const auto& m = matrix_;
        diagonal_ = m[1] == 0 && m[2] == 0 && m[3] == 0 && m[5] == 0 && m[6] == 0 && m[7] == 0;
        preparedValid_ = false;
        matrixDirty_ = false;
        finishedDirty_ = true;
    }
    if (tablesDirty_) {
        buildTables();
        tablesDirty_ = false;
    }
}

// Gains without mixing fold into the tables.
std::array<std::array<uchar, 256>, 3> SimImagePipeline::foldedTables() const
{
    std::array<std::array<uchar, 256>, 3> folded;
    constexpr int half = 1 << (kMatrixShift - 1);
    for (int c = 0; c < 3; ++c)
        for (int v = 0; v < 256; ++v)
            folded[static_cast<size_t>(c)][static_cast<size_t>(v)] =
                tables_[static_cast<size_t>(c)]
                       [clampByte((matrix_[static_cast<size_t>(4 * c)] * v + half) >> kMatrixShift)];
    return folded;
}

bool SimImagePipeline::drawsFromScene(const uchar* previous)
{
    if (!firstOfSize_ || !sceneDirty_ || look_.flipH || look_.flipV || (look_.tnr && previous))
        return false;
    ensureLook();
    return diagonal_;
}

void SimImagePipeline::buildMatrix()
{
    Matrix m = identity();
    if (look_.colourProcessing) {
        if (look_.colourCorrection)
            m = colourCorrection();
        m = multiply(saturation(look_.saturation / 64.0), m);
        m = multiply(hueRotation(look_.hue), m);
    }
    if (!look_.colour)
        m = multiply(greyMatrix(), m);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            matrix_[static_cast<size_t>(3 * i + j)] = static_cast<int>(
                std::lround(m[i][j] * look_.rgbGain[static_cast<size_t>(j)] / 64.0 * (1 << kMatrixShift)));
}

void SimImagePipeline::preparePass()
{
    const int w = size_.width();
    const int h = size_.height();
    PictureMemory::assignUnwritten(prepared_, static_cast<size_t>(w) * 3 * static_cast<size_t>(h));
    const uchar* scene = scene_.constBits();
    const qsizetype sceneStride = scene_.bytesPerLine();
    uchar* prepared = prepared_.data();
    const bool flipH = look_.flipH, flipV = look_.flipV;
    const std::array<int, 9> m = matrix_;
    RowHalves::run(h, kRowsWorthAThread, [=](int from, int to) {
        const int a0 = m[0], a1 = m[1], a2 = m[2];
        const int a3 = m[3], a4 = m[4], a5 = m[5];
        const int a6 = m[6], a7 = m[7], a8 = m[8];
        constexpr int half = 1 << (kMatrixShift - 1);
        flippedRows(scene, sceneStride, prepared, w, h, flipH, flipV, from, to,
                    [=](const uchar* src, uchar* dst) {
                        const int r = src[0], g = src[1], b = src[2];
                        dst[0] = clampByte((a0 * r + a1 * g + a2 * b + half) >> kMatrixShift);
                        dst[1] = clampByte((a3 * r + a4 * g + a5 * b + half) >> kMatrixShift);
                        dst[2] = clampByte((a6 * r + a7 * g + a8 * b + half) >> kMatrixShift);
                    });
    });
    preparedValid_ = true;
}

void SimImagePipeline::buildTables()
{
    const double k = look_.exposureMs / 20.0 * look_.gain / 32.0;
    const double contrast = look_.contrast / 32.0;
    const double exponent = look_.gamma / 64.0;
    int sharedOffset = 0;
    for (int off : look_.rgbOffset)
        sharedOffset += off;
    sharedOffset /= 3;  // grey pictures keep R = G = B
    for (int c = 0; c < 3; ++c) {
        const int offset = look_.colour ? look_.rgbOffset[static_cast<size_t>(c)] : sharedOffset;
        auto& table = tables_[static_cast<size_t>(c)];
        for (int v = 0; v < 256; ++v) {
            double x = v * k + look_.blackLevel + offset;
            x = (x - 128.0) * contrast + 128.0 + look_.brightness;
            if (look_.gammaOn)
                x = 255.0 * std::pow(std::clamp(x, 0.0, 255.0) / 255.0, exponent);
            table[static_cast<size_t>(v)] =
                clampByte(static_cast<int>(std::lround(std::clamp(x, -1.0, 256.0))));
        }
    }
}

void SimImagePipeline::ensureFinished()
{
    ensureScene();
    ensureLook();
    if (!finishedDirty_)
        return;
    const int w = size_.width();
    const int h = size_.height();

    if (diagonal_) {
        // The usual colour settings: one pass from the scene, flips included.
        const auto folded = foldedTables();
        const uchar* t0 = folded[0].data();
        const uchar* t1 = folded[1].data();
        const uchar* t2 = folded[2].data();
        // Both cores: this pass comes before the first frame and after every
        // change of exposure or gain.
        const uchar* scene = scene_.constBits();
        const qsizetype sceneStride = scene_.bytesPerLine();
        uchar* finished = finished_.data();
        const bool flipH = look_.flipH, flipV = look_.flipV;
        RowHalves::run(h, kRowsWorthAThread, [=](int from, int to) {
            flippedRows(scene, sceneStride, finished, w, h, flipH, flipV, from, to,
                        [t0, t1, t2](const uchar* src, uchar* dst) {
                            dst[0] = t0[src[0]];
                            dst[1] = t1[src[1]];
                            dst[2] = t2[src[2]];
                        });
        });
    } else {
        if (!preparedValid_)
            preparePass();
        const uchar* t0 = tables_[0].data();
        const uchar* t1 = tables_[1].data();
        const uchar* t2 = tables_[2].data();
        const uchar* src = prepared_.data();
        uchar* dst = finished_.data();
        RowHalves::run(h, kRowsWorthAThread, [=](int from, int to) {
            tableBytes(src, dst, t0, t1, t2, static_cast<qsizetype>(from) * w * 3,
                       static_cast<qsizetype>(to) * w * 3);
        });
    }

    double sum = 0;
    double count = 0;
    for (int y = 3; y < h; y += 8) {
        const uchar* p = finished_.data() + static_cast<qsizetype>(y) * w * 3;
        for (int x = 3; x < w; x += 8) {
            sum += kLuma[0] * p[3 * x] + kLuma[1] * p[3 * x + 1] + kLuma[2] * p[3 * x + 2];
            ++count;
        }
    }
    meanLevel_ = count > 0 ? sum / count : 0;
    finishedDirty_ = false;
}

void SimImagePipeline::ensureNoise()
{
    const int rowPixels = size_.width() + kNoiseSlack;
    const size_t pixels = static_cast<size_t>(rowPixels) * kNoiseRows;
    if (unitNoise_.size() != pixels) {
        // The sum of four uniforms is near enough to a normal distribution.
        // One 64-bit draw gives the four as 16-bit numbers; their sum has a
        // standard deviation of 65536 / sqrt(3). Made once per size.
        PictureMemory::assignUnwritten(unitNoise_, pixels);
        std::uint64_t state = 12345;
        const float scale = static_cast<float>(kUnitNoise * std::sqrt(3.0) / 65536.0);
        for (auto& v : unitNoise_) {
            const std::uint64_t r = splitMix64(state);
            const int sum =
                static_cast<int>((r & 0xffff) + ((r >> 16) & 0xffff) + ((r >> 32) & 0xffff) + (r >> 48));
            v = static_cast<std::int16_t>(std::lrintf(static_cast<float>(sum - 2 * 65535) * scale));
        }
        noiseSigma_ = -1;
    }
    // Read noise grows with the analogue gain.
    const double sigma = 1.6 * std::sqrt(look_.gain / 32.0);
    if (sigma == noiseSigma_)
        return;
    noiseSigma_ = sigma;
    PictureMemory::assignUnwritten(noise_, pixels * 3);
    // Scaled in 16-bit fixed point: the unit noise is at most 4 standard
    // deviations and sigma a few levels, far from overflowing.
    const auto scale = static_cast<std::int32_t>(std::lround(sigma / kUnitNoise * 65536.0));
    for (size_t i = 0; i < pixels; ++i) {
        const std::int32_t v = std::clamp((unitNoise_[i] * scale + 32768) >> 16, -127, 127);
        // The same for R, G, B so that grey stays grey.
        noise_[3 * i] = noise_[3 * i + 1] = noise_[3 * i + 2] = static_cast<std::int8_t>(v);
    }
}

QColor SimImagePipeline::process(QColor lit)
{
    ensureLook();
    const int in[3] = {lit.red(), lit.green(), lit.blue()};
    int out[3];
    for (int c = 0; c < 3; ++c) {
        const auto* row = &matrix_[static_cast<size_t>(3 * c)];
        const int v =
            (row[0] * in[0] + row[1] * in[1] + row[2] * in[2] + (1 << (kMatrixShift - 1))) >> kMatrixShift;
        out[c] = tables_[static_cast<size_t>(c)][clampByte(v)];
    }
    return QColor(out[0], out[1], out[2]);
}

double SimImagePipeline::meanLevel()
{
    ensureFinished();
    return meanLevel_;
}

void SimImagePipeline::compose(uchar* dst, qsizetype bytesPerLine, const uchar* previous, QPointF particleUm,
                               std::uint32_t noiseSeed)
{
    if (size_.isEmpty())
        return;
    const int w = size_.width();
    const int h = size_.height();
    const qsizetype rowBytes = static_cast<qsizetype>(w) * 3;
    // A first frame drawn into `dst` is finished row by row on its way through a row of its own.
    const bool fromScene = drawsFromScene(previous);
    firstOfSize_ = false;
    std::array<std::array<uchar, 256>, 3> folded{};
    if (fromScene) {
        SimScene::render(size_, dst, bytesPerLine);
        folded = foldedTables();
    } else {
        ensureFinished();
    }
    ensureMask();
    if (look_.noise)
        ensureNoise();

    // The particle, placed in the flipped picture like everything else.
    QPointF at = SimScene::toPixel(size_, particleUm);
    if (look_.flipH)
        at.setX(w - at.x());
    if (look_.flipV)
        at.setY(h - at.y());
    const int side = particleMask_.width();
    const int left = static_cast<int>(std::lround(at.x())) - side / 2;
    const int top = static_cast<int>(std::lround(at.y())) - side / 2;
    const QColor pc = process(SimScene::particleColour());
    const int particle[3] = {pc.red(), pc.green(), pc.blue()};
    const int fromX = std::max(0, -left);
    const int toX = std::min(side, w - left);

    const int noiseX = static_cast<int>(noiseSeed % kNoiseSlack);
    const int noiseY = static_cast<int>((noiseSeed / kNoiseSlack) % kNoiseRows);
    const qsizetype noiseRowBytes = static_cast<qsizetype>(w + kNoiseSlack) * 3;
    const uchar* blendWith = look_.tnr ? previous : nullptr;

    const auto rows = [&](int from, int to) {
        std::vector<uchar> finishedRow(fromScene ? static_cast<size_t>(rowBytes) : 0);
        for (int y = from; y < to; ++y) {
            uchar* out = dst + y * bytesPerLine;
            if (fromScene)
                tableBytes(out, finishedRow.data(), folded[0].data(), folded[1].data(), folded[2].data(), 0,
                           rowBytes);
            const uchar* src = fromScene ? finishedRow.data() : finished_.data() + y * rowBytes;
            const std::int8_t* noise =
                look_.noise ? noise_.data() + ((y + noiseY) % kNoiseRows) * noiseRowBytes + noiseX * 3
                            : nullptr;
            if (noise)
                addNoise(src, noise, out, rowBytes);
            else
                std::memcpy(out, src, static_cast<size_t>(rowBytes));

            const int my = y - top;
            if (my >= 0 && my < side) {
                const uchar* mask = particleMask_.constScanLine(my);
                for (int mx = fromX; mx < toX; ++mx) {
                    const int a = mask[mx];
                    if (!a)
                        continue;
                    const int x = left + mx;
                    for (int c = 0; c < 3; ++c) {
                        const int i = 3 * x + c;
                        const int under = src[i];
                        const int v = under + ((particle[c] - under) * a + (a > 0 ? 127 : 0)) / 255;
                        out[i] = clampByte(v + (noise ? noise[i] : 0));
                    }
                }
            }
            if (blendWith)
                blend(out, blendWith + y * bytesPerLine, rowBytes);
        }
    };
    // The first frame is waited for: both cores finish it.
    if (fromScene)
        RowHalves::run(h, kRowsWorthAThread, rows);
    else
        rows(0, h);
}

}  // namespace tavix
