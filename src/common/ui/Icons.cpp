#include "common/ui/Icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <cstdint>
#include <map>
#include <utility>

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

QPixmap drawCamera(int lit)
{
    QPixmap pixmap = canvas();
    QPainter p(&pixmap);
    drawCameraBody(p);
    p.setPen(Qt::NoPen);
    p.setBrush(lit ? QColor(230, 40, 40) : QColor(110, 60, 60));
    p.drawEllipse(QPointF(25, 13), 3, 3);
    return pixmap;
}

QPixmap drawStill()
{
    QPixmap pixmap = canvas();
    QPainter p(&pixmap);
    drawCameraBody(p);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(40, 120, 220));
    p.drawRect(QRectF(22, 2, 3, 8));
    p.drawRect(QRectF(27, 2, 3, 8));
    return pixmap;
}

QPixmap drawRecord()
{
    QPixmap pixmap = canvas();
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(120, 0, 0), 2));
    p.setBrush(QColor(220, 30, 30));
    p.drawEllipse(QPointF(16, 16), 11, 11);
    return pixmap;
}

// A half-turn arrow: index 0 points left (undo), 1 right (redo).
QPixmap drawTurnArrow(int right)
{
    QPixmap pixmap = canvas();
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    if (right) {
        p.translate(32, 0);
        p.scale(-1, 1);
    }
    const QColor ink(40, 90, 160);
    p.setPen(QPen(ink, 3.5, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(Qt::NoBrush);
    QPainterPath turn;
    turn.moveTo(9, 13);
    turn.lineTo(19, 13);
    turn.cubicTo(30, 13, 30, 27, 19, 27);
    turn.lineTo(12, 27);
    p.drawPath(turn);
    p.setPen(Qt::NoPen);
    p.setBrush(ink);
    p.drawPolygon(QPolygonF({QPointF(2, 13), QPointF(11, 5), QPointF(11, 21)}));
    return pixmap;
}

QPixmap drawHistogram()
{
    QPixmap pixmap = canvas();
    QPainter p(&pixmap);
    static const int heights[] = {3, 6, 11, 17, 22, 24, 20, 14, 9, 6, 4, 3, 2};
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(70, 70, 70));
    for (int i = 0; i < 13; ++i)
        p.drawRect(QRectF(3 + i * 2, 28 - heights[i], 2, heights[i]));
    p.setPen(QPen(QColor(50, 50, 50), 1.5));
    p.drawLine(QPointF(2, 28.5), QPointF(30, 28.5));
    return pixmap;
}

}  // namespace

QIcon drawnOnce(Drawing draw, int index)
{
    // Never destroyed: the icons may outlive the application object.
    static auto* const icons = new std::map<std::pair<std::uintptr_t, int>, QIcon>();
    const auto key = std::make_pair(reinterpret_cast<std::uintptr_t>(draw), index);
    auto found = icons->find(key);
    if (found == icons->end())
        found = icons->emplace(key, QIcon(draw(index))).first;
    return found->second;
}

QIcon camera(bool lit)
{
    return drawnOnce(drawCamera, lit ? 1 : 0);
}

QIcon still()
{
    return drawnOnce([](int) { return drawStill(); });
}

QIcon record()
{
    return drawnOnce([](int) { return drawRecord(); });
}

QIcon undo()
{
    return drawnOnce(drawTurnArrow, 0);
}

QIcon redo()
{
    return drawnOnce(drawTurnArrow, 1);
}

QIcon histogram()
{
    return drawnOnce([](int) { return drawHistogram(); });
}

}  // namespace tavix::Icons
