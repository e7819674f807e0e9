#include "camera/ui/HistogramView.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace tavix {

HistogramView::HistogramView(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("picHistogram"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(258, 100);
}

void HistogramView::setHistogram(const Histogram& histogram)
{
    histogram_ = histogram;
    update();
}

void HistogramView::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), QColor(30, 30, 30));
    if (histogram_.pixels() == 0)
        return;

    // The scale: the highest inner level of the channels drawn.
    std::uint32_t top = 1;
    const int last = histogram_.colour() ? Histogram::Blue : Histogram::Grey;
    for (int c = Histogram::Grey; c <= last; ++c) {
        const auto& counts = histogram_.counts(static_cast<Histogram::Channel>(c));
        top = std::max(top, *std::max_element(counts.begin() + 1, counts.end() - 1));
    }
    const QRectF plot = QRectF(rect()).adjusted(1, 6, -1, -1);
    const double columnWidth = plot.width() / Histogram::kLevels;
    const auto heightOf = [&](std::uint32_t n) { return plot.height() * std::min(1.0, double(n) / top); };

    const auto& grey = histogram_.counts(Histogram::Grey);
    for (int level = 0; level < Histogram::kLevels; ++level) {
        const double h = heightOf(grey[level]);
        p.fillRect(QRectF(plot.left() + level * columnWidth, plot.bottom() - h, columnWidth + 0.5, h),
                   QColor(200, 200, 200));
    }
    if (histogram_.colour()) {
        p.setRenderHint(QPainter::Antialiasing);
        const std::pair<Histogram::Channel, QColor> lines[] = {{Histogram::Red, QColor(255, 70, 70)},
                                                               {Histogram::Green, QColor(70, 220, 70)},
                                                               {Histogram::Blue, QColor(90, 140, 255)}};
        for (const auto& [channel, colour] : lines) {
            const auto& counts = histogram_.counts(channel);
            QPainterPath path;
            for (int level = 0; level < Histogram::kLevels; ++level) {
                const QPointF point(plot.left() + (level + 0.5) * columnWidth,
                                    plot.bottom() - heightOf(counts[level]));
                if (level == 0)
                    path.moveTo(point);
                else
                    path.lineTo(point);
            }
            p.setPen(QPen(colour, 1.5));
            p.drawPath(path);
        }
    }
    // Pixels at an end of the range lost detail: their columns in red and
    // wide enough to be seen, with a mark on top when the scale cuts them.
    p.setRenderHint(QPainter::Antialiasing, false);
    const QColor clipped(255, 60, 60);
    for (const int level : {0, Histogram::kLevels - 1}) {
        std::uint32_t most = 0;
        for (int c = Histogram::Grey; c <= last; ++c)
            most = std::max(most, histogram_.counts(static_cast<Histogram::Channel>(c))[level]);
        if (most == 0)
            continue;
        const double h = std::max(2.0, heightOf(most));
        const double x = level == 0 ? plot.left() : plot.right() - 3;
        p.fillRect(QRectF(x, plot.bottom() - h, 3, h), clipped);
        if (most > top)
            p.fillRect(QRectF(x - 1, 0, 5, 5), clipped);
    }
}

}  // namespace tavix
