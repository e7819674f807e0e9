#pragma once

#include "measure/Measurement.h"
#include "measure/OverlayStyle.h"
#include "measure/Shape.h"

#include <QFont>
#include <QFontMetricsF>
#include <QRectF>
#include <QTransform>

class QImage;
class QPainter;

namespace tavix {

class MeasurementStore;

// Draws measurements and rubber bands onto a target (the overlay layer of the
// whole picture, or the view). Positions go through a picture-to-target
// transform; line widths, marks and labels keep their size on the target.
// Labels sit on a dark box so that they stay readable on any picture.
class MeasurementPainter {
public:
    explicit MeasurementPainter(const OverlayStyle& style);

    // Picture pixel to target point at a magnification and scroll offset:
    // target = picture * magnification - offset.
    static QTransform viewTransform(double magnification, QPointF offset = {});

    // Highlighted drawings take line colour 2 and value colour 2.
    void paint(QPainter& painter, const Shape& shape, const QTransform& toTarget,
               bool highlight = false) const;
    void paint(QPainter& painter, const Measurement& m, const QTransform& toTarget,
               bool highlight = false) const;

    // Clears the layer (premultiplied ARGB for speed) and draws every stored
    // measurement on it.
    void paintLayer(QImage& layer, const MeasurementStore& store, const QTransform& toTarget) const;

    // The box a label covers on the target, and the same box in picture pixels
    // (for hit tests).
    QRectF labelRect(const Label& label, const QTransform& toTarget) const;
    QRectF labelRectOnPicture(const Label& label, const QTransform& toTarget) const;

    // Half the size of a point's cross, target pixels.
    static constexpr double MarkSize = 3;

private:
    OverlayStyle style_;
    QFont font_;
    QFontMetricsF metrics_;
};

}  // namespace tavix
