#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QSize>
#include <array>

namespace tavix {

// What the simulated camera looks at: a slide under a measuring microscope,
// with features of known size, so that calibration and every measuring tool
// can be checked against ground truth.
//
// Every resolution sees the same field, 1296 um wide, with square pixels:
// one pixel is 1296 / width micrometres (640 px: 2.025 um, 800 px: 1.62 um,
// 1280 px: 1.0125 um, 2592 px: 0.5 um). 4:3 modes see 972 um from top to
// bottom, the 5:4 mode 1280x1024 sees 1036.8 um.
//
// Scene coordinates are micrometres from the centre of the field, x to the
// right, y downwards. The continuous pixel position of a scene point is
// (width / 2 + x / s, height / 2 + y / s) with s the micrometres per pixel;
// pixel (i, j) covers [i, i+1) x [j, j+1), so its centre is (i + 0.5, j + 0.5).
class SimScene {
public:
    static constexpr double kFieldWidthUm = 1296.0;

    // A graduated scale: ticks every `division` from `zero` along the scale,
    // medium ticks every 5 and long ticks every 10 divisions.
    struct Scale {
        QPointF zero;
        double length = 0;
        double division = 0;
        bool vertical = false;  // vertical scales run downwards
        double lineWidth = 0;
        double shortTick = 0, mediumTick = 0, longTick = 0;
    };
    struct Circle {
        QPointF centre;
        double diameter = 0;
    };
    // Two rays from a vertex; directions in degrees counter-clockwise from
    // the +x axis as seen on the screen (90 points up).
    struct Angle {
        QPointF vertex;
        double firstDeg = 0;
        double secondDeg = 0;
        double length = 0;
        double lineWidth = 0;
    };
    struct Patch {
        QRectF rect;
        double reflectance = 0;
    };
    struct Geometry {
        Scale horizontalScale;  // numbered 0 ... 1000 under the long ticks
        Scale verticalScale;
        Circle largeCircle;  // filled discs
        Circle smallCircle;
        Angle angle;
        std::array<QPointF, 4> rectangle;  // filled, corners clockwise from top-left
        double rectangleArea = 0;          // um^2
        std::array<QPointF, 3> triangle;   // filled
        double triangleArea = 0;
        std::array<Patch, 5> greyPatches;  // neutral, reflectance 0.1 ... 0.9
        double particleDiameter = 0;       // the drifting particle
    };

    static const Geometry& geometry();

    static double micrometresPerPixel(QSize size);
    static QPointF toPixel(QSize size, QPointF micrometres);
    static QPointF toMicrometres(QSize size, QPointF pixel);

    // Where the drifting particle is, in scene coordinates, after that many
    // milliseconds of scene time: it sweeps left and right across the middle
    // band, once every 20 s, bobbing up and down.
    static QPointF particleCentre(qint64 ms);

    // The colour of the lamp at the field's centre, as the sensor sees it
    // before any white balance: a warm halogen light.
    static QColor lampColour();
    // The share of the lamp's light the field's corners lack, falling off
    // with the square of the distance from the centre.
    static constexpr double kVignetting = 0.10;
    static QColor particleColour();

    // The still part of the scene (everything but the particle) as the
    // sensor sees it before any processing: Format_RGB888 of that size.
    static QImage render(QSize size);
    // The same into rows of `stride` bytes that the caller owns.
    static void render(QSize size, uchar* bits, qsizetype stride);
    // The particle's coverage (0..255), Format_Grayscale8, centred on its
    // pixel; the particle's centre lies at (width / 2, height / 2) of it.
    static QImage particleMask(QSize size);
};

}  // namespace tavix
