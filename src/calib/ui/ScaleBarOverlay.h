#pragma once

#include "calib/ScaleBar.h"

#include <QFont>
#include <QObject>
#include <QRect>
#include <array>
#include <functional>

class QLabel;
class QWidget;

namespace tavix {

class ErrorLog;
struct ProofEntry;
struct Settings;

// The scale bar's widgets over the picture area: four thin boxes
// picScaleLine(0..3) filled with SCALECOLOR and the label picScaleSize in
// MEASUREVALUECOLOR1 at MEASUREFONTSIZE. They lie over the picture and are
// never drawn into it, so a saved picture never holds the bar. They let the
// mouse through to the picture below.
class ScaleBarOverlay : public QObject {
    Q_OBJECT
public:
    struct Sources {
        // The selected calibration entry.
        std::function<const ProofEntry&()> entry;
        // The display magnification of the still view.
        std::function<double()> magnification;
        // The picture box shown in the area (the camera picture or the still),
        // in the area's own coordinates; an empty rectangle stands for a
        // picture that fills the area.
        std::function<QRect()> pictureBox;
    };

    ScaleBarOverlay(QWidget* area, const Settings& settings, Sources sources, const ErrorLog& log,
                    QObject* parent = nullptr);

    // DrawScaleBar: places and shows the bar for the current settings, entry,
    // magnification and picture. A failure (an entry without factors, a bar
    // too long to place) logs "frmMain:DrawScaleBar Error.(n)", returns false
    // and leaves the widgets as they were.
    bool DrawScaleBar();
    // Hides the four boxes and the label.
    void hide();
    bool shown() const { return shown_; }

    // What the last DrawScaleBar placed.
    const ScaleBar::Geometry& geometry() const { return geometry_; }

    QWidget* picScaleLine(int index) const { return picScaleLine_.at(static_cast<size_t>(index)); }
    QLabel* picScaleSize() const { return picScaleSize_; }

    // The label's font for a point size, as the measurement labels use it.
    static QFont labelFont(int pointSize);

private:
    void draw();
    void applyStyle();

    QWidget* area_;
    const Settings& settings_;
    Sources sources_;
    const ErrorLog& log_;
    std::array<QWidget*, ScaleBar::kLineCount> picScaleLine_{};
    QLabel* picScaleSize_ = nullptr;
    ScaleBar::Geometry geometry_;
    bool shown_ = false;
};

}  // namespace tavix
