#pragma once

#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QtGlobal>
#include <array>

namespace tavix {

struct ProofEntry;
struct Settings;

// Where the scale bar goes over the picture area: its four line boxes and its
// label, for the bar's settings, the selected calibration entry and the display
// magnification. Everything is in twips of the picture area, measured from its
// inner top-left corner, and also converted to whole pixels for the widgets.
//
// The boxes: 0 left tick, 1 horizontal bar, 2 vertical bar (type 1) or right
// tick (type 0), 3 top tick of the vertical bar (type 1 only). The anchor is
// the right end of the horizontal bar and the foot of the vertical one.
class ScaleBar {
public:
    // Design sizes of the line boxes. A tick is as long as kTickLengthTwips
    // (the height of a vertical tick, the width of the top tick); every line
    // is kLineThicknessTwips thick.
    static constexpr double kLineThicknessTwips = 30;  // 2 pixels
    static constexpr double kTickLengthTwips = 180;    // 12 pixels
    // Distance of the bar from the visible frame's edges. The right margin is
    // 15 twips wider than the others on purpose; keep it so.
    static constexpr double kMarginTwips = 450;
    static constexpr double kRightMarginTwips = 465;
    // The label's top stands this far below the horizontal bar.
    static constexpr double kLabelGapTwips = 80;

    enum Type : qint16 { HorizontalOnly = 0, HorizontalAndVertical = 1 };
    enum Position : qint16 { BottomRight = 0, BottomLeft = 1, TopRight = 2, TopLeft = 3, Centre = 4 };

    // The classic error numbers that compute() raises (as RunError).
    static constexpr int kDivisionByZero = 11;
    static constexpr int kInvalidPropertyValue = 380;  // a negative bar length

    static constexpr int kLineCount = 4;

    struct Input {
        // The bar's settings (SCALEX, SCALEY, SCALETYPE, SCALEPOSITION).
        double scaleX = 0, scaleY = 0;
        qint16 scaleType = HorizontalOnly;
        qint16 scalePosition = BottomRight;
        // The selected calibration entry: units per picture pixel, and its unit.
        double xFactor = 0, yFactor = 0;
        QString unit;
        double magnification = 1.0;
        // The picture area's inner size, and the picture box inside it (the
        // camera picture or the still), both in twips.
        QSizeF areaInner;
        QRectF pictureBox;
        // The label's size for its text at the label font size, in twips.
        QSizeF labelSize;
        // The anchor that a position outside 0..4 keeps. A fresh computation
        // has none and starts from the area's top-left corner (0, 0), as the
        // routine's own anchor did; the overlay passes the anchor it last drew.
        QPointF previousAnchor;
    };

    struct Box {
        QRectF twips;
        QRect pixels;  // each of left, top, width and height rounded to whole pixels
        bool visible = false;
    };

    struct Geometry {
        double lenXPixels = 0, lenYPixels = 0;  // on the screen, magnification applied
        double lenXTwips = 0, lenYTwips = 0;
        QRectF frame;    // the visible frame: X0, Y0, W, H
        QPointF anchor;  // AX, AY
        std::array<Box, kLineCount> lines;
        Box label;
        QString text;
    };

    // The settings' and the entry's part of the input; the caller adds the
    // magnification, the rectangles and the label size.
    static Input inputFrom(const Settings& settings, const ProofEntry& entry);

    // The label's text: SCALEX as a general number immediately followed by the
    // unit ("100MIC"). The vertical length is never shown.
    static QString labelText(double scaleX, const QString& unit);

    // The bar for the input. Throws RunError(kDivisionByZero) when a factor the
    // bar needs is 0, RunError(kInvalidPropertyValue) for a negative length and
    // RunError(err::Overflow) for a bar too long to place.
    static Geometry compute(const Input& input);

    static QRect toPixels(const QRectF& twips);
};

}  // namespace tavix
