#pragma once

#include "media/Histogram.h"

#include <QWidget>

namespace tavix {

// picHistogram: the grey levels as filled columns and, for a colour picture,
// red, green and blue as lines over them, 0 at the left and 255 at the right.
// The height is scaled to the highest level between the ends, so that a large
// clipped count does not flatten the rest; an end column above it is cut and
// marked.
class HistogramView : public QWidget {
    Q_OBJECT
public:
    explicit HistogramView(QWidget* parent = nullptr);

    void setHistogram(const Histogram& histogram);
    const Histogram& histogram() const { return histogram_; }

    QSize sizeHint() const override { return {300, 140}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Histogram histogram_;
};

}  // namespace tavix
