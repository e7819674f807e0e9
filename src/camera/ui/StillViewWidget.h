#pragma once

#include "measure/MeasurementPainter.h"
#include "measure/OverlayStyle.h"
#include "measure/PointD.h"
#include "measure/Shape.h"

#include <QImage>
#include <QWidget>
#include <vector>

namespace tavix {

class MeasurementStore;

// picStillView: the still picture at the display magnification, with the
// measurements over it. It sits in a scroll area, which scrolls when the
// magnified picture is larger than the area. The finished measurements are
// drawn once into a layer of the visible part and kept there, so that moving
// the pointer repaints only the picture, that layer and the rubber band.
class StillViewWidget : public QWidget {
    Q_OBJECT
public:
    explicit StillViewWidget(QWidget* parent = nullptr);

    void setPicture(const QImage& picture);  // picTempView: the full-size still
    const QImage& picture() const { return picture_; }
    void setMagnification(double magnification);
    double magnification() const { return magnification_; }

    // The measurements to draw (not owned) and their colours and label size.
    void setOverlay(const MeasurementStore* store, const OverlayStyle& style);
    // The store changed: draw the layer again.
    void invalidateOverlay();
    // Measurements (store indexes) drawn in the highlight colours.
    void setHighlight(std::vector<int> indexes);
    void setPreview(const Shape& preview);

    // Picture pixel under a point of this widget, and back.
    PointD toPicture(QPointF widgetPoint) const;
    QPointF toWidget(PointD picturePoint) const;

    QSize sizeHint() const override;

signals:
    void picturePressed(tavix::PointD point, Qt::MouseButton button);
    void pictureMoved(tavix::PointD point);
    void pictureReleased(tavix::PointD point, Qt::MouseButton button);
    void pictureDoubleClicked(tavix::PointD point);
    void cancelRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void rebuildLayer(const QRect& visible);

    QImage picture_;
    double magnification_ = 1.0;
    const MeasurementStore* store_ = nullptr;
    OverlayStyle style_;
    MeasurementPainter painter_{style_};
    QImage layer_;  // the finished measurements over layerRect_, premultiplied
    QRect layerRect_;
    bool layerValid_ = false;
    std::vector<int> highlight_;
    Shape preview_;
    bool ignoreNextRelease_ = false;  // the release that ends a double click
};

}  // namespace tavix
