#include "camera/ui/StillViewWidget.h"

#include <QPaintEvent>
#include <QPainter>

namespace tavix {

StillViewWidget::StillViewWidget(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("picStillView"));
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void StillViewWidget::setPicture(const QImage& picture)
{
    picture_ = picture;
    resize(sizeHint());
    update();
}

void StillViewWidget::setMagnification(double magnification)
{
    magnification_ = magnification > 0 ? magnification : 1.0;
    resize(sizeHint());
    update();
}

QSize StillViewWidget::sizeHint() const
{
    return (QSizeF(picture_.size()) * magnification_).toSize();
}

void StillViewWidget::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    if (picture_.isNull()) {
        painter.fillRect(event->rect(), Qt::black);
        return;
    }
    // Only the exposed part is drawn: a magnified 5-megapixel still stays cheap to scroll.
    const QRectF target = event->rect();
    const QRectF source(target.x() / magnification_, target.y() / magnification_, target.width() / magnification_,
                        target.height() / magnification_);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, magnification_ < 1.0);
    painter.drawImage(target, picture_, source);
}

}  // namespace tavix
