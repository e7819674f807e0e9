#include "common/ui/Icons.h"

#include <QPainter>
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

}  // namespace tavix::Icons
