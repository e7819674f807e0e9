#include "measure/MeasurementPainter.h"

#include "measure/MeasurementStore.h"

#include <QImage>
#include <QPainter>
#include <QPen>
#include <QPolygonF>

namespace tavix {

namespace {

// Labels are drawn into picture-sized layers and saved with them, so their
// size is fixed in pixels: points at 96 pixels per inch.
QFont labelFont(int pointSize)
{
    QFont font;
    font.setPixelSize(std::max(1, qRound(pointSize * 96.0 / 72.0)));
    return font;
}

const QColor LabelBackground(0, 0, 0, 160);
constexpr double LabelGap = 3;  // between the anchor and the box
constexpr double LabelPad = 2;

QPointF mapped(const QTransform& t, PointD p)
{
    return t.map(QPointF(p.x, p.y));
}

}  // namespace

MeasurementPainter::MeasurementPainter(const OverlayStyle& style)
    : style_(style), font_(labelFont(style.fontPointSize)), metrics_(font_)
{
}

QTransform MeasurementPainter::viewTransform(double magnification, QPointF offset)
{
    return QTransform(magnification, 0, 0, magnification, -offset.x(), -offset.y());
}

QRectF MeasurementPainter::labelRect(const Label& label, const QTransform& toTarget) const
{
    const QPointF a = mapped(toTarget, label.anchor);
    const double w = metrics_.horizontalAdvance(label.text) + 2 * LabelPad;
    const double h = metrics_.height() + LabelPad;
    const double top = label.below ? a.y() + LabelGap : a.y() - LabelGap - h;
    return {a.x() - w / 2, top, w, h};
}

QRectF MeasurementPainter::labelRectOnPicture(const Label& label, const QTransform& toTarget) const
{
    return toTarget.inverted().mapRect(labelRect(label, toTarget));
}

void MeasurementPainter::paint(QPainter& painter, const Shape& shape, const QTransform& toTarget,
                               bool highlight) const
{
    const QColor& lineColour = style_.line(highlight ? 2 : shape.lineSlot);
    const QColor& valueColour = style_.value(highlight ? 2 : shape.valueSlot);
    QPen pen(lineColour, 1);
    pen.setCosmetic(true);

    if (!shape.guides.empty()) {
        QPen guide(style_.line(shape.guideSlot), 1, Qt::DashLine);
        guide.setCosmetic(true);
        painter.setPen(guide);
        for (const Segment& s : shape.guides)
            painter.drawLine(mapped(toTarget, s.a), mapped(toTarget, s.b));
    }

    painter.setPen(pen);
    for (const Segment& s : shape.lines)
        painter.drawLine(mapped(toTarget, s.a), mapped(toTarget, s.b));
    for (const std::vector<PointD>& line : shape.polylines) {
        QPolygonF polygon;
        polygon.reserve(static_cast<qsizetype>(line.size()));
        for (const PointD& p : line)
            polygon.append(mapped(toTarget, p));
        painter.drawPolyline(polygon);
    }
    for (const PointD& p : shape.marks) {
        const QPointF c = mapped(toTarget, p);
        painter.drawLine(c + QPointF(-MarkSize, 0), c + QPointF(MarkSize, 0));
        painter.drawLine(c + QPointF(0, -MarkSize), c + QPointF(0, MarkSize));
    }

    if (shape.labels.empty())
        return;
    painter.setFont(font_);
    for (const Label& label : shape.labels) {
        if (label.text.isEmpty())
            continue;
        const QRectF box = labelRect(label, toTarget);
        painter.fillRect(box, LabelBackground);
        painter.setPen(valueColour);
        painter.drawText(QPointF(box.left() + LabelPad, box.top() + LabelPad / 2 + metrics_.ascent()),
                         label.text);
    }
    painter.setPen(pen);
}

void MeasurementPainter::paint(QPainter& painter, const Measurement& m, const QTransform& toTarget,
                               bool highlight) const
{
    paint(painter, m.shape, toTarget, highlight);
}

void MeasurementPainter::paintLayer(QImage& layer, const MeasurementStore& store,
                                    const QTransform& toTarget) const
{
    layer.fill(Qt::transparent);
    QPainter painter(&layer);
    for (const MeasurementStore::Entry& entry : store.entries())
        paint(painter, entry.measurement, toTarget);
}

}  // namespace tavix
