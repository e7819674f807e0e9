#pragma once

#include "measure/PointD.h"

#include <QImage>
#include <QWidget>

namespace tavix {

// picFromScale: the still, shrunk to fit, on which the user drags a line
// along a micrometer's divisions. Reports the line in picture pixels.
class ScaleLineView : public QWidget {
    Q_OBJECT
public:
    explicit ScaleLineView(QWidget* parent = nullptr);

    void setPicture(const QImage& picture);
    // Widget point of a picture pixel, and back.
    QPointF toWidget(PointD p) const;
    PointD toPicture(QPointF w) const;
    QSize sizeHint() const override;

signals:
    void lineDrawn(tavix::PointD from, tavix::PointD to);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    double scale() const;

    QImage picture_;
    QPointF from_, to_;
    bool dragging_ = false;
};

}  // namespace tavix
