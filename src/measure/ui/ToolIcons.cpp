#include "measure/ui/ToolIcons.h"

#include "common/ui/Icons.h"

#include <QPainter>
#include <QPixmap>

namespace tavix::ToolIcons {

namespace {

const QColor Ink(30, 30, 30);
const QColor Accent(210, 40, 40);

// A 32x32 transparent picture with a painter ready for thin dark lines.
class Canvas {
public:
    Canvas() : pixmap_(32, 32)
    {
        pixmap_.fill(Qt::transparent);
        painter_.begin(&pixmap_);
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setPen(QPen(Ink, 2));
    }
    QPainter& painter() { return painter_; }
    QPixmap pixmap()
    {
        painter_.end();
        return pixmap_;
    }
    void point(QPointF at)
    {
        painter_.save();
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(Accent);
        painter_.drawEllipse(at, 3, 3);
        painter_.restore();
    }

private:
    QPixmap pixmap_;
    QPainter painter_;
};

QPixmap draw2Point(int index)
{
    Canvas c;
    if (index == 0) {
        c.painter().drawLine(QPointF(6, 26), QPointF(26, 6));
        c.point({6, 26});
        c.point({26, 6});
    } else {
        c.painter().drawLine(QPointF(4, 26), QPointF(28, 26));
        c.painter().setPen(QPen(Ink, 1, Qt::DashLine));
        c.painter().drawLine(QPointF(16, 26), QPointF(16, 7));
        c.point({16, 7});
    }
    return c.pixmap();
}

QPixmap drawCircleArc(int index)
{
    Canvas c;
    const QRectF box(5, 5, 22, 22);
    if (index == 0) {
        c.painter().drawEllipse(box);
    } else {
        c.painter().drawArc(box, 0, 180 * 16);  // Qt's angles are sixteenths of a degree
        c.point({5, 16});
        c.point({27, 16});
    }
    return c.pixmap();
}

QPixmap drawAngle(int index)
{
    Canvas c;
    c.painter().drawLine(QPointF(4, 27), QPointF(28, 27));
    c.painter().drawLine(QPointF(8, 30), QPointF(26, 4));
    if (index == 1) {
        // The fifth click picks the side whose angle is measured.
        c.painter().setPen(QPen(Accent, 2));
        c.painter().drawArc(QRectF(4, 17, 20, 20), 0, 55 * 16);
        c.point({24, 20});
    }
    return c.pixmap();
}

QPixmap drawCaliper(int)
{
    Canvas c;
    c.painter().fillRect(QRectF(11, 4, 10, 24), QColor(150, 150, 150));
    c.painter().drawLine(QPointF(3, 16), QPointF(29, 16));
    c.painter().setPen(QPen(Accent, 2));
    c.painter().drawLine(QPointF(11, 10), QPointF(11, 22));
    c.painter().drawLine(QPointF(21, 10), QPointF(21, 22));
    return c.pixmap();
}

QPixmap drawOneClickCircle(int)
{
    Canvas c;
    c.painter().setBrush(QColor(150, 150, 150));
    c.painter().drawEllipse(QRectF(4, 4, 24, 24));
    c.point({16, 16});
    return c.pixmap();
}

}  // namespace

QIcon img2PointIcon(int index)
{
    return Icons::drawnOnce(draw2Point, index);
}

QIcon imgCircleArcSelect(int index)
{
    return Icons::drawnOnce(drawCircleArc, index);
}

QIcon imgAngleIcon(int index)
{
    return Icons::drawnOnce(drawAngle, index);
}

QIcon imgCaliper()
{
    return Icons::drawnOnce(drawCaliper, 0);
}

QIcon imgOneClickCircle()
{
    return Icons::drawnOnce(drawOneClickCircle, 0);
}

}  // namespace tavix::ToolIcons
