#pragma once

#include <QImage>
#include <QWidget>

namespace tavix {

// picStillView: the still picture at the display magnification. It sits in a
// scroll area, which scrolls when the magnified picture is larger than the area.
class StillViewWidget : public QWidget {
    Q_OBJECT
public:
    explicit StillViewWidget(QWidget* parent = nullptr);

    void setPicture(const QImage& picture);  // picTempView: the full-size still
    const QImage& picture() const { return picture_; }
    void setMagnification(double magnification);
    double magnification() const { return magnification_; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage picture_;
    double magnification_ = 1.0;
};

}  // namespace tavix
