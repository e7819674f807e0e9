#include "calib/ScaleBar.h"

#include "calib/ProofEntry.h"
#include "common/NumberText.h"
#include "common/RunError.h"
#include "common/Settings.h"
#include "common/Twips.h"

#include <cmath>

namespace tavix {

namespace {

// The largest widget coordinate Qt accepts, in twips; a bar beyond it cannot be
// placed, like a box whose size overflows.
constexpr double kLimitTwips = 16777215.0 * kTwipsPerPixel;

void checkPlaceable(double twips)
{
    if (!std::isfinite(twips) || std::fabs(twips) > kLimitTwips)
        throw RunError(err::Overflow);
}

ScaleBar::Box box(const QRectF& twips, bool visible)
{
    checkPlaceable(twips.left());
    checkPlaceable(twips.top());
    checkPlaceable(twips.right());
    checkPlaceable(twips.bottom());
    return {twips, ScaleBar::toPixels(twips), visible};
}

// A bar length in twips for a length in units.
double barTwips(double length, double factor, double magnification)
{
    if (factor == 0)
        throw RunError(ScaleBar::kDivisionByZero);
    const double twips = length / factor * magnification * kTwipsPerPixel;
    checkPlaceable(twips);
    if (twips < 0)
        throw RunError(ScaleBar::kInvalidPropertyValue);
    return twips;
}

}  // namespace

ScaleBar::Input ScaleBar::inputFrom(const Settings& settings, const ProofEntry& entry)
{
    Input in;
    in.scaleX = settings.SCALEX;
    in.scaleY = settings.SCALEY;
    in.scaleType = settings.SCALETYPE;
    in.scalePosition = settings.SCALEPOSITION;
    in.xFactor = entry.XFactor;
    in.yFactor = entry.YFactor;
    in.unit = entry.Unit;
    return in;
}

QString ScaleBar::labelText(double scaleX, const QString& unit)
{
    return NumberText::general(scaleX) + unit;
}

QRect ScaleBar::toPixels(const QRectF& twips)
{
    const auto px = [](double t) { return static_cast<int>(std::lround(t / kTwipsPerPixel)); };
    return {px(twips.left()), px(twips.top()), px(twips.width()), px(twips.height())};
}

ScaleBar::Geometry ScaleBar::compute(const Input& in)
{
    Geometry g;
    const bool vertical = in.scaleType == HorizontalAndVertical;

    // 1. The lengths on the screen.
    g.lenXTwips = barTwips(in.scaleX, in.xFactor, in.magnification);
    g.lenYTwips = vertical ? barTwips(in.scaleY, in.yFactor, in.magnification) : 0.0;
    g.lenXPixels = g.lenXTwips / kTwipsPerPixel;
    g.lenYPixels = g.lenYTwips / kTwipsPerPixel;
    const double lenX = g.lenXTwips;
    const double lenY = g.lenYTwips;

    // 2. The visible frame: a picture smaller than the area is the frame; a
    // larger one is cut by the area.
    const QRectF& pic = in.pictureBox;
    const bool narrower = pic.width() < in.areaInner.width();
    const bool lower = pic.height() < in.areaInner.height();
    const double x0 = narrower ? pic.left() : 0.0;
    const double w = narrower ? pic.width() : in.areaInner.width();
    const double y0 = lower ? pic.top() : 0.0;
    const double h = lower ? pic.height() : in.areaInner.height();
    g.frame = QRectF(x0, y0, w, h);

    // 3. The anchor.
    double ax = in.previousAnchor.x();
    double ay = in.previousAnchor.y();
    switch (in.scalePosition) {
        case BottomRight:
            ax = x0 + w - kRightMarginTwips;
            ay = y0 + h - kMarginTwips;
            break;
        case BottomLeft:
            ax = x0 + kMarginTwips + lenX;
            ay = y0 + h - kMarginTwips;
            break;
        case TopRight:
            ax = x0 + w - kRightMarginTwips;
            ay = y0 + kMarginTwips + lenY;
            break;
        case TopLeft:
            ax = x0 + kMarginTwips + lenX;
            ay = y0 + kMarginTwips + lenY;
            break;
        case Centre:
            ax = x0 + w / 2;
            ay = y0 + h / 2;
            break;
        default:
            break;  // the anchor stays where it was
    }
    g.anchor = QPointF(ax, ay);

    // 4.-6. The line boxes.
    const double t = kLineThicknessTwips;
    const double tick = kTickLengthTwips;
    g.lines[0] = box(QRectF(ax - lenX, ay - tick / 2, t, tick), true);
    g.lines[1] = box(QRectF(ax - lenX, ay, lenX, t), true);
    if (vertical) {
        g.lines[2] = box(QRectF(ax, ay - lenY, t, lenY), true);
        g.lines[3] = box(QRectF(ax - tick / 2, ay - lenY, tick, t), true);
    } else {
        // A right tick like the left one; the top tick has no bar to stand on.
        const double leftTick = g.lines[0].twips.height();
        g.lines[2] = box(QRectF(ax, ay - leftTick / 2, t, leftTick), true);
        g.lines[3] = box(QRectF(ax - tick / 2, ay, tick, t), false);
    }

    // 7. The label, centred under the horizontal bar.
    g.text = labelText(in.scaleX, in.unit);
    const QSizeF& label = in.labelSize;
    g.label = box(
        QRectF(ax - lenX / 2 - label.width() / 2, ay + kLabelGapTwips, label.width(), label.height()), true);
    return g;
}

}  // namespace tavix
