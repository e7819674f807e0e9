#include "camera/sim/SimScene.h"

#include "common/PictureMemory.h"
#include "common/RowHalves.h"

#include <QPainter>
#include <QPainterPath>
#include <QtMath>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace tavix {

namespace {

// One row of painted reflectances lit by the lamp, its light falling off from
// the centre: red in the low byte. Built for AVX2 too, which does eight
// pixels a step where SSE2 does four.
#if defined(__x86_64__) && defined(__GNUC__)
__attribute__((target_clones("avx2", "default")))
#endif
void lightRow(const QRgb* src, const float* colSq, float rowSq, float fall, float l0, float l1, float l2,
              quint32* row, int width)
{
    for (int x = 0; x < width; ++x) {
        const float light = 1.0f - fall * (colSq[x] + rowSq);
        const QRgb c = src[x];
        const auto r =
            static_cast<quint32>(static_cast<int>(static_cast<float>(qRed(c)) * l0 * light + 0.5f));
        const auto gr =
            static_cast<quint32>(static_cast<int>(static_cast<float>(qGreen(c)) * l1 * light + 0.5f));
        const auto b =
            static_cast<quint32>(static_cast<int>(static_cast<float>(qBlue(c)) * l2 * light + 0.5f));
        row[x] = r | (gr << 8) | (b << 16);
    }
}

// Reflectances of the slide's features, 0..1 per channel (the slide itself is 1).
constexpr double kInk[3] = {0.12, 0.12, 0.13};
constexpr double kLargeDisc[3] = {0.36, 0.24, 0.60};
constexpr double kSmallDisc[3] = {0.18, 0.40, 0.72};
constexpr double kRectangle[3] = {0.78, 0.24, 0.20};
constexpr double kTriangle[3] = {0.24, 0.62, 0.30};
constexpr double kParticle[3] = {0.26, 0.17, 0.11};
constexpr int kLamp[3] = {222, 206, 170};

QColor reflectance(const double (&r)[3])
{
    return QColor::fromRgbF(static_cast<float>(r[0]), static_cast<float>(r[1]), static_cast<float>(r[2]));
}

SimScene::Geometry makeGeometry()
{
    SimScene::Geometry g;
    g.horizontalScale = {QPointF(-500, 400), 1000, 10, false, 2, 20, 35, 50};
    g.verticalScale = {QPointF(600, -400), 500, 10, true, 2, 20, 35, 50};
    g.largeCircle = {QPointF(-470, -270), 250};
    g.smallCircle = {QPointF(-240, -270), 100};
    g.angle = {QPointF(-100, -160), 30, 75, 260, 3};
    g.rectangle = {QPointF(200, -400), QPointF(400, -400), QPointF(400, -300), QPointF(200, -300)};
    g.rectangleArea = 200.0 * 100.0;
    g.triangle = {QPointF(200, -250), QPointF(400, -250), QPointF(200, -130)};
    g.triangleArea = 200.0 * 120.0 / 2;
    for (int i = 0; i < 5; ++i)
        g.greyPatches[static_cast<size_t>(i)] = {QRectF(-450 + 100 * i, 120, 80, 80), 0.1 + 0.2 * i};
    g.particleDiameter = 30;
    return g;
}

// Digits as strokes on a 4 x 6 grid, so that the scene looks the same on
// every machine whatever fonts it has (and needs no font database at all).
const QList<QList<QPointF>>& digitStrokes(int digit)
{
    using P = QPointF;
    static const QList<QList<QPointF>> strokes[10] = {
        {{P(0, 0), P(4, 0), P(4, 6), P(0, 6), P(0, 0)}},
        {{P(1, 1), P(2, 0), P(2, 6)}, {P(1, 6), P(3, 6)}},
        {{P(0, 0), P(4, 0), P(4, 3), P(0, 3), P(0, 6), P(4, 6)}},
        {{P(0, 0), P(4, 0), P(4, 6), P(0, 6)}, {P(0, 3), P(4, 3)}},
        {{P(0, 0), P(0, 3), P(4, 3)}, {P(4, 0), P(4, 6)}},
        {{P(4, 0), P(0, 0), P(0, 3), P(4, 3), P(4, 6), P(0, 6)}},
        {{P(4, 0), P(0, 0), P(0, 6), P(4, 6), P(4, 3), P(0, 3)}},
        {{P(0, 0), P(4, 0), P(4, 6)}},
        {{P(0, 0), P(4, 0), P(4, 6), P(0, 6), P(0, 0)}, {P(0, 3), P(4, 3)}},
        {{P(4, 3), P(0, 3), P(0, 0), P(4, 0), P(4, 6), P(0, 6)}},
    };
    return strokes[digit];
}

// Draws a number centred on x with its top at y; `height` in scene units.
void drawNumber(QPainter& p, int number, double x, double top, double height)
{
    const QString text = QString::number(number);
    const double unit = height / 6;
    const double advance = 5.5 * unit;
    const double width = advance * (text.size() - 1) + 4 * unit;
    double left = x - width / 2;
    for (QChar c : text) {
        for (const QList<QPointF>& stroke : digitStrokes(c.digitValue())) {
            QPainterPath path;
            for (int i = 0; i < stroke.size(); ++i) {
                const QPointF pt(left + stroke[i].x() * unit, top + stroke[i].y() * unit);
                if (i == 0)
                    path.moveTo(pt);
                else
                    path.lineTo(pt);
            }
            p.drawPath(path);
        }
        left += advance;
    }
}

// A disc as a polygon fine enough to stay within a thousandth of a pixel of
// the circle: a drawn ellipse is flattened more coarsely and comes out
// visibly smaller, which would make the scene's stated sizes wrong.
void drawDisc(QPainter& p, const SimScene::Circle& c, double umPerPixel)
{
    const double r = c.diameter / 2;
    const double rPixels = r / umPerPixel;
    const int n = std::max(64, static_cast<int>(std::ceil(M_PI / std::acos(1.0 - 0.001 / rPixels))));
    QPolygonF polygon;
    polygon.reserve(n);
    for (int i = 0; i < n; ++i) {
        const double a = 2 * M_PI * i / n;
        polygon << c.centre + QPointF(r * std::cos(a), r * std::sin(a));
    }
    p.drawPolygon(polygon);
}

void drawScale(QPainter& p, const SimScene::Scale& s, bool numbered)
{
    QPen pen(reflectance(kInk), s.lineWidth, Qt::SolidLine, Qt::FlatCap);
    p.setPen(pen);
    const int divisions = qRound(s.length / s.division);
    const double half = s.lineWidth / 2;
    // The base line runs under the ticks and half a line width past the ends.
    if (s.vertical)
        p.drawLine(QPointF(s.zero.x(), s.zero.y() - half), QPointF(s.zero.x(), s.zero.y() + s.length + half));
    else
        p.drawLine(QPointF(s.zero.x() - half, s.zero.y()), QPointF(s.zero.x() + s.length + half, s.zero.y()));
    for (int i = 0; i <= divisions; ++i) {
        const double tick = i % 10 == 0 ? s.longTick : (i % 5 == 0 ? s.mediumTick : s.shortTick);
        const double at = i * s.division;
        if (s.vertical)  // ticks to the left of the line
            p.drawLine(QPointF(s.zero.x() - tick, s.zero.y() + at), QPointF(s.zero.x(), s.zero.y() + at));
        else  // ticks above the line
            p.drawLine(QPointF(s.zero.x() + at, s.zero.y() - tick), QPointF(s.zero.x() + at, s.zero.y()));
    }
    if (!numbered)
        return;
    p.setPen(QPen(reflectance(kInk), 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (int i = 0; i <= divisions; i += 10)
        drawNumber(p, qRound(i * s.division), s.zero.x() + i * s.division, s.zero.y() + 12, 20);
}

// The slide's features as reflectances, in micrometres around the centre.
void paintFeatures(QPainter& p, const SimScene::Geometry& g, double umPerPixel)
{
    for (const auto& patch : g.greyPatches)
        p.fillRect(patch.rect, QColor::fromRgbF(static_cast<float>(patch.reflectance),
                                                static_cast<float>(patch.reflectance),
                                                static_cast<float>(patch.reflectance)));
    p.setPen(Qt::NoPen);
    p.setBrush(reflectance(kLargeDisc));
    drawDisc(p, g.largeCircle, umPerPixel);
    p.setBrush(reflectance(kSmallDisc));
    drawDisc(p, g.smallCircle, umPerPixel);
    p.setBrush(reflectance(kRectangle));
    p.drawPolygon(g.rectangle.data(), static_cast<int>(g.rectangle.size()));
    p.setBrush(reflectance(kTriangle));
    p.drawPolygon(g.triangle.data(), static_cast<int>(g.triangle.size()));

    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(reflectance(kInk), g.angle.lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    const QPointF v = g.angle.vertex;
    const auto rayEnd = [&](double deg) {
        return v +
               QPointF(std::cos(qDegreesToRadians(deg)), -std::sin(qDegreesToRadians(deg))) * g.angle.length;
    };
    const QPointF tip[3] = {rayEnd(g.angle.firstDeg), v, rayEnd(g.angle.secondDeg)};
    p.drawPolyline(tip, 3);

    drawScale(p, g.horizontalScale, true);
    drawScale(p, g.verticalScale, false);
}

}  // namespace

const SimScene::Geometry& SimScene::geometry()
{
    static const Geometry g = makeGeometry();
    return g;
}

double SimScene::micrometresPerPixel(QSize size)
{
    return size.width() > 0 ? kFieldWidthUm / size.width() : 0.0;
}

QPointF SimScene::toPixel(QSize size, QPointF um)
{
    const double s = micrometresPerPixel(size);
    return {size.width() / 2.0 + um.x() / s, size.height() / 2.0 + um.y() / s};
}

QPointF SimScene::toMicrometres(QSize size, QPointF px)
{
    const double s = micrometresPerPixel(size);
    return {(px.x() - size.width() / 2.0) * s, (px.y() - size.height() / 2.0) * s};
}

QPointF SimScene::particleCentre(qint64 ms)
{
    const double t = static_cast<double>(ms) / 1000.0;
    return {520.0 * std::sin(2 * M_PI * t / 20.0), 40.0 * std::sin(2 * M_PI * t / 7.0)};
}

QColor SimScene::lampColour()
{
    return QColor(kLamp[0], kLamp[1], kLamp[2]);
}

QColor SimScene::particleColour()
{
    return QColor(qRound(kLamp[0] * kParticle[0]), qRound(kLamp[1] * kParticle[1]),
                  qRound(kLamp[2] * kParticle[2]));
}

QImage SimScene::render(QSize size)
{
    if (size.isEmpty())
        return {};
    QImage lit = PictureMemory::image(size, QImage::Format_RGB888);
    if (!lit.isNull())
        render(size, lit.bits(), lit.bytesPerLine());
    return lit;
}

void SimScene::render(QSize size, uchar* litBits, qsizetype litStride)
{
    if (size.isEmpty())
        return;
    const Geometry& g = geometry();
    const double s = micrometresPerPixel(size);
    const int w = size.width();

    const float cx = size.width() / 2.0f;
    const float cy = size.height() / 2.0f;
    const float falloff = static_cast<float>(kVignetting) / (cx * cx + cy * cy);
    std::vector<float> columnSq(static_cast<size_t>(size.width()));
    for (int x = 0; x < size.width(); ++x)
        columnSq[static_cast<size_t>(x)] = (x + 0.5f - cx) * (x + 0.5f - cx);
    const float lamp[3] = {kLamp[0] / 255.0f, kLamp[1] / 255.0f, kLamp[2] / 255.0f};

    // Reflectances are painted a band of rows at a time and lit at once: the
    // band stays in the cache. Bands start at whole rows, so the painted
    // pixels are those of one painting of the whole slide. The scene is
    // rendered before the camera's first frame, so two threads share the bands.
    constexpr int kBandRows = 128;
    const int bands = (size.height() + kBandRows - 1) / kBandRows;
    RowHalves::run(bands, 2, [&](int firstBand, int endBand) {
        // Locals: stores through the row pointers could alias what the
        // closure refers to, and the loops would not vectorise.
        const int width = w;
        const int height = size.height();
        const float centreY = cy, fall = falloff;
        const float l0 = lamp[0], l1 = lamp[1], l2 = lamp[2];
        const float* colSq = columnSq.data();
        uchar* const bits = litBits;
        const qsizetype stride = litStride;
        QImage slide(width, std::min(kBandRows, height), QImage::Format_RGB32);
        std::vector<quint32> litRow(static_cast<size_t>(width));
        quint32* row = litRow.data();
        for (int band = firstBand; band < endBand; ++band) {
            const int top = band * kBandRows;
            slide.fill(Qt::white);
            {
                QPainter p(&slide);
                p.setRenderHint(QPainter::Antialiasing);
                p.translate(width / 2.0, height / 2.0 - top);
                p.scale(1.0 / s, 1.0 / s);
                paintFeatures(p, g, s);
            }
            const int bottom = std::min(top + kBandRows, height);
            for (int y = top; y < bottom; ++y) {
                const auto* src = reinterpret_cast<const QRgb*>(slide.constScanLine(y - top));
                const float rowSq = (y + 0.5f - centreY) * (y + 0.5f - centreY);
                // Lit into a row of 32-bit pixels first: that loop vectorises,
                // which one storing three bytes a pixel does not.
                lightRow(src, colSq, rowSq, fall, l0, l1, l2, row, width);
                // Four pixels in three words (little-endian, like the row above).
                uchar* dst = bits + stride * y;
                int x = 0;
                for (; x + 4 <= width; x += 4) {
                    const quint32 p0 = row[x], p1 = row[x + 1], p2 = row[x + 2], p3 = row[x + 3];
                    const quint32 words[3] = {p0 | p1 << 24, p1 >> 8 | p2 << 16, p2 >> 16 | p3 << 8};
                    std::memcpy(dst + 3 * x, words, sizeof words);
                }
                for (; x < width; ++x)
                    std::memcpy(dst + 3 * x, row + x, 3);
            }
        }
    });
}

QImage SimScene::particleMask(QSize size)
{
    const double radius = geometry().particleDiameter / 2 / micrometresPerPixel(size);
    const int side = 2 * static_cast<int>(std::ceil(radius + 1));
    QImage disc(side, side, QImage::Format_RGB32);
    disc.fill(Qt::black);
    {
        QPainter p(&disc);
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(Qt::NoPen);
        p.setBrush(Qt::white);
        p.drawEllipse(QPointF(side / 2.0, side / 2.0), radius, radius);
    }
    return disc.convertToFormat(QImage::Format_Grayscale8);
}

}  // namespace tavix
