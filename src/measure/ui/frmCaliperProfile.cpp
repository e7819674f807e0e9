#include "measure/ui/frmCaliperProfile.h"

#include "common/MessageTable.h"
#include "common/ui/WidgetNames.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace tavix {

namespace {

constexpr qint32 kTitle = 27105;
constexpr qint32 kHint = 27106;
constexpr double kMargin = 14;
constexpr double kPickReach = 8;  // px of the plot around an edge that pick it

}  // namespace

CaliperPlot::CaliperPlot(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("picCaliperProfile"));
    setMinimumSize(240, 120);
    setCursor(Qt::PointingHandCursor);
}

void CaliperPlot::setProfile(const CaliperTool::Profile& profile, std::pair<int, int> pair)
{
    profile_ = profile;
    pair_ = pair;
    picked_ = -1;
    update();
}

QRectF CaliperPlot::plotArea() const
{
    return QRectF(rect()).adjusted(kMargin, kMargin + 4, -kMargin, -kMargin);
}

double CaliperPlot::xOf(double at) const
{
    const QRectF area = plotArea();
    const double length = (profile_.samples.size() - 1) * EdgeSnap::kProfileStep;
    return length > 0 ? area.left() + at / length * area.width() : area.left();
}

QPointF CaliperPlot::edgePoint(int index) const
{
    if (index < 0 || index >= static_cast<int>(profile_.edges.size()))
        return {};
    return {xOf(profile_.edges[static_cast<std::size_t>(index)].at), plotArea().center().y()};
}

void CaliperPlot::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), Qt::white);
    const QRectF area = plotArea();
    p.setPen(QColor(200, 200, 200));
    p.drawRect(area);
    if (profile_.samples.size() < 2)
        return;
    const auto [low, high] = std::minmax_element(profile_.samples.begin(), profile_.samples.end());
    const double span = std::max(1.0, *high - *low);
    QPainterPath curve;
    for (std::size_t k = 0; k < profile_.samples.size(); ++k) {
        const QPointF pt(xOf(k * EdgeSnap::kProfileStep),
                         area.bottom() - (profile_.samples[k] - *low) / span * area.height());
        if (k == 0)
            curve.moveTo(pt);
        else
            curve.lineTo(pt);
    }
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(30, 30, 30), 1));
    p.drawPath(curve);

    // Every edge, numbered; the measured pair in red, a first pick in blue.
    QFont small = font();
    small.setPixelSize(10);
    p.setFont(small);
    const int count = static_cast<int>(profile_.edges.size());
    const int step = std::max(1, count / 20);  // numbers that would overlap are left out
    for (int i = 0; i < count; ++i) {
        const double x = edgePoint(i).x();
        const bool measured = i == pair_.first || i == pair_.second;
        QColor colour = measured ? QColor(210, 30, 30) : QColor(120, 120, 220);
        if (i == picked_)
            colour = QColor(0, 120, 255);
        p.setPen(QPen(colour, measured || i == picked_ ? 2 : 1, measured ? Qt::SolidLine : Qt::DashLine));
        p.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        if (measured || i == picked_ || i % step == 0 || i == count - 1)
            p.drawText(QRectF(x - 15, 0, 30, kMargin + 4), Qt::AlignCenter, QString::number(i + 1));
    }
}

void CaliperPlot::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || profile_.edges.empty())
        return;
    int nearest = -1;
    double best = kPickReach;
    for (int i = 0; i < static_cast<int>(profile_.edges.size()); ++i) {
        const double d = std::abs(edgePoint(i).x() - event->position().x());
        if (d <= best) {
            best = d;
            nearest = i;
        }
    }
    if (nearest < 0)
        return;
    if (picked_ < 0 || picked_ == nearest) {
        picked_ = nearest;
        update();
        return;
    }
    const int first = picked_;
    picked_ = -1;
    pair_ = {std::min(first, nearest), std::max(first, nearest)};
    update();
    emit pairPicked(pair_.first, pair_.second);
}

frmCaliperProfile::frmCaliperProfile(const MessageTable& messages, QWidget* parent)
    : QDialog(parent, Qt::Tool)
{
    setObjectName(QStringLiteral("frmCaliperProfile"));
    setWindowTitle(messages.text(kTitle));
    setModal(false);
    auto* layout = new QVBoxLayout(this);
    plot_ = new CaliperPlot(this);
    hint_ = named(new QLabel(messages.text(kHint), this), QStringLiteral("lblCaliperHint"));
    hint_->setWordWrap(true);
    layout->addWidget(plot_, 1);
    layout->addWidget(hint_);
    resize(460, 220);
}

}  // namespace tavix
