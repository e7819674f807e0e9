#include "common/ui/Icons.h"

#include <QPainter>
#include <QPixmap>

namespace tavix::Icons {

namespace {

QPixmap canvas()
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

void drawCameraBody(QPainter& p)
{
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(50, 50, 50), 2));
    p.setBrush(QColor(90, 90, 90));
    p.drawRoundedRect(QRectF(3, 9, 26, 18), 3, 3);
    p.drawRect(QRectF(10, 5, 10, 5));
    p.setBrush(QColor(170, 200, 230));
    p.drawEllipse(QPointF(16, 18), 6, 6);
}

}  // namespace

QIcon camera(bool lit)
{
    QPixmap pixmap = canvas();
    QPainter p(&pixmap);
    drawCameraBody(p);
    p.setPen(Qt::NoPen);
    p.setBrush(lit ? QColor(230, 40, 40) : QColor(110, 60, 60));
    p.drawEllipse(QPointF(25, 13), 3, 3);
    return QIcon(pixmap);
}

QIcon still()
{
    QPixmap pixmap = canvas();
    QPainter p(&pixmap);
    drawCameraBody(p);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(40, 120, 220));
    p.drawRect(QRectF(22, 2, 3, 8));
    p.drawRect(QRectF(27, 2, 3, 8));
    return QIcon(pixmap);
}

QIcon record()
{
    QPixmap pixmap = canvas();
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(120, 0, 0), 2));
    p.setBrush(QColor(220, 30, 30));
    p.drawEllipse(QPointF(16, 16), 11, 11);
    return QIcon(pixmap);
}

}  // namespace tavix::Icons
