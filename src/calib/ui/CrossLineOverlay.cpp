#include "calib/ui/CrossLineOverlay.h"

#include "calib/CrossLines.h"
#include "common/ui/Icons.h"

#include <QEvent>
#include <QPainter>
#include <QPixmap>
#include <QWidget>

namespace tavix {

namespace {

QWidget* makeLine(QWidget* area, const char* name, int index)
{
    auto* line = new QWidget(area);
    line->setObjectName(QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(index));
    line->setAutoFillBackground(true);
    // The pointer that carries the line must still reach the picture under it.
    line->setAttribute(Qt::WA_TransparentForMouseEvents);
    line->setFocusPolicy(Qt::NoFocus);
    line->hide();
    return line;
}

void drawCross(QPainter& p, QPointF centre, double arm)
{
    p.drawLine(QPointF(centre.x() - arm, centre.y()), QPointF(centre.x() + arm, centre.y()));
    p.drawLine(QPointF(centre.x(), centre.y() - arm), QPointF(centre.x(), centre.y() + arm));
}

QPixmap drawCrossIcon(int index)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setPen(QPen(QColor(30, 160, 60), 2));
    if (index == 0) {
        drawCross(p, QPointF(16, 16), 12);
    } else {
        drawCross(p, QPointF(11, 11), 8);
        drawCross(p, QPointF(21, 21), 8);
    }
    return pixmap;
}

}  // namespace

CrossLineOverlay::CrossLineOverlay(QWidget* area, CrossLines& crosses, QObject* parent)
    : QObject(parent), area_(area), crosses_(crosses)
{
    for (int i = 0; i < CrossLines::kCrossCount; ++i) {
        vertical_[static_cast<size_t>(i)] = makeLine(area, "picCrossLineV", i);
        horizontal_[static_cast<size_t>(i)] = makeLine(area, "picCrossLineH", i);
    }
    setColor(crosses.color());
    connect(&crosses, &CrossLines::linesChanged, this, &CrossLineOverlay::relayout);
    connect(&crosses, &CrossLines::colorChanged, this, &CrossLineOverlay::setColor);
    area->installEventFilter(this);
    relayout();
}

void CrossLineOverlay::relayout()
{
    const QRect inner = area_->contentsRect();
    const int thickness = CrossLines::kLineThickness;
    for (int i = 0; i < CrossLines::kCrossCount; ++i) {
        QWidget* v = vertical_[static_cast<size_t>(i)];
        QWidget* h = horizontal_[static_cast<size_t>(i)];
        v->setGeometry(crosses_.verticalLineLeft(i), inner.top(), thickness, inner.height());
        h->setGeometry(inner.left(), crosses_.horizontalLineTop(i), inner.width(), thickness);
        const bool visible = crosses_.crossVisible(i);
        v->setVisible(visible);
        h->setVisible(visible);
        if (visible) {
            v->raise();
            h->raise();
        }
    }
}

void CrossLineOverlay::setColor(const QColor& color)
{
    for (QWidget* line : {vertical_[0], vertical_[1], horizontal_[0], horizontal_[1]}) {
        QPalette palette = line->palette();
        palette.setColor(QPalette::Window, color);
        line->setPalette(palette);
    }
}

QColor CrossLineOverlay::color() const
{
    return vertical_[0]->palette().color(QPalette::Window);
}

bool CrossLineOverlay::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == area_ && event->type() == QEvent::Resize)
        relayout();
    return QObject::eventFilter(watched, event);
}

QIcon CrossLineOverlay::imgCrossIcon(int index)
{
    return Icons::drawnOnce(drawCrossIcon, index == 0 ? 0 : 1);
}

}  // namespace tavix
