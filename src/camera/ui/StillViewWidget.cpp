#include "camera/ui/StillViewWidget.h"

#include "measure/MeasurementStore.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

namespace tavix {

StillViewWidget::StillViewWidget(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("picStillView"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::ClickFocus);
    setCursor(Qt::CrossCursor);
}

void StillViewWidget::setPicture(const QImage& picture)
{
    picture_ = picture;
    resize(sizeHint());
    invalidateOverlay();
}

void StillViewWidget::setMagnification(double magnification)
{
    magnification_ = magnification > 0 ? magnification : 1.0;
    resize(sizeHint());
    invalidateOverlay();
}

void StillViewWidget::setOverlay(const MeasurementStore* store, const OverlayStyle& style)
{
    store_ = store;
    style_ = style;
    painter_ = MeasurementPainter(style_);
    // The picture's font is the labels' font: MEASUREFONTSIZE.
    if (style_.fontPointSize > 0) {
        QFont labels = font();
        labels.setPointSize(style_.fontPointSize);
        setFont(labels);
    }
    invalidateOverlay();
}

void StillViewWidget::invalidateOverlay()
{
    layerValid_ = false;
    update();
}

void StillViewWidget::setHighlight(std::vector<int> indexes)
{
    highlight_ = std::move(indexes);
    update();
}

void StillViewWidget::setPreview(const Shape& preview)
{
    preview_ = preview;
    update();
}

PointD StillViewWidget::toPicture(QPointF widgetPoint) const
{
    const QPointF p = MeasurementPainter::viewTransform(magnification_).inverted().map(widgetPoint);
    return {p.x(), p.y()};
}

QPointF StillViewWidget::toWidget(PointD picturePoint) const
{
    return MeasurementPainter::viewTransform(magnification_).map(QPointF(picturePoint.x, picturePoint.y));
}

QSize StillViewWidget::sizeHint() const
{
    return (QSizeF(picture_.size()) * magnification_).toSize();
}

void StillViewWidget::rebuildLayer(const QRect& visible)
{
    if (layer_.size() != visible.size())
        layer_ = QImage(visible.size(), QImage::Format_ARGB32_Premultiplied);
    layerRect_ = visible;
    if (store_)
        painter_.paintLayer(layer_, *store_,
                            MeasurementPainter::viewTransform(magnification_, visible.topLeft()));
    else
        layer_.fill(Qt::transparent);
    layerValid_ = true;
}

void StillViewWidget::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    const QRect exposed = event->rect();
    if (picture_.isNull()) {
        painter.fillRect(exposed, Qt::black);
        return;
    }
    // Only the exposed part is drawn: a magnified 5-megapixel still stays cheap to scroll.
    const QRectF source(exposed.x() / magnification_, exposed.y() / magnification_,
                        exposed.width() / magnification_, exposed.height() / magnification_);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, magnification_ < 1.0);
    painter.drawImage(QRectF(exposed), picture_, source);

    const QRect visible = visibleRegion().boundingRect();
    if (!visible.isEmpty() && (!layerValid_ || !layerRect_.contains(exposed.intersected(visible))))
        rebuildLayer(visible);
    painter.drawImage(exposed.topLeft(), layer_, exposed.translated(-layerRect_.topLeft()));

    const QTransform toWidget = MeasurementPainter::viewTransform(magnification_);
    if (store_) {
        for (const int index : highlight_)
            if (index >= 0 && index < store_->size())
                painter_.paint(painter, store_->at(index).measurement, toWidget, true);
    }
    if (!preview_.empty())
        painter_.paint(painter, preview_, toWidget);
}

void StillViewWidget::mousePressEvent(QMouseEvent* event)
{
    emit picturePressed(toPicture(event->position()), event->button());
    QWidget::mousePressEvent(event);
}

void StillViewWidget::mouseMoveEvent(QMouseEvent* event)
{
    emit pictureMoved(toPicture(event->position()));
}

void StillViewWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (ignoreNextRelease_) {
        ignoreNextRelease_ = false;
        return;
    }
    emit pictureReleased(toPicture(event->position()), event->button());
}

void StillViewWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    // The first release of the double click placed the point already.
    ignoreNextRelease_ = true;
    if (event->button() == Qt::LeftButton)
        emit pictureDoubleClicked(toPicture(event->position()));
}

void StillViewWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        emit cancelRequested();
        return;
    }
    QWidget::keyPressEvent(event);
}

}  // namespace tavix
