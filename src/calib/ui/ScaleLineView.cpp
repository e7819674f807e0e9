#include "calib/ui/ScaleLineView.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

namespace tavix {

namespace {
constexpr int kWidth = 560;
constexpr int kHeight = 420;
}  // namespace

ScaleLineView::ScaleLineView(QWidget* parent) : QWidget(parent)
{
    setFixedSize(kWidth, kHeight);
    setCursor(Qt::CrossCursor);
}

void ScaleLineView::setPicture(const QImage& picture)
{
    picture_ = picture;
    update();
}

QSize ScaleLineView::sizeHint() const
{
    return {kWidth, kHeight};
}

double ScaleLineView::scale() const
{
    if (picture_.isNull())
        return 1.0;
    return std::min(double(width()) / picture_.width(), double(height()) / picture_.height());
}

QPointF ScaleLineView::toWidget(PointD p) const
{
    return {p.x * scale(), p.y * scale()};
}

PointD ScaleLineView::toPicture(QPointF w) const
{
    return {w.x() / scale(), w.y() / scale()};
}

void ScaleLineView::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), Qt::black);
    if (!picture_.isNull()) {
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.drawImage(QRectF(0, 0, picture_.width() * scale(), picture_.height() * scale()), picture_);
    }
    if (from_ != to_) {
        p.setPen(QPen(Qt::red, 1));
        p.drawLine(from_, to_);
    }
}

void ScaleLineView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    from_ = to_ = event->position();
    dragging_ = true;
    update();
}

void ScaleLineView::mouseMoveEvent(QMouseEvent* event)
{
    if (!dragging_)
        return;
    to_ = event->position();
    update();
}

void ScaleLineView::mouseReleaseEvent(QMouseEvent* event)
{
    if (!dragging_ || event->button() != Qt::LeftButton)
        return;
    dragging_ = false;
    to_ = event->position();
    update();
    emit lineDrawn(toPicture(from_), toPicture(to_));
}

}  // namespace tavix
