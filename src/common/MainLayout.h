#pragma once

#include <QRect>
#include <QSize>
#include <span>

namespace tavix {

// Where the main window's areas and the controls that move with its size go,
// in logical pixels, for a given inner size. The design sizes are in twips.
struct MainLayout {
    // The smallest normal window; a smaller one is set back to this size.
    static constexpr int kMinWidthTwips = 14565;
    static constexpr int kMinHeightTwips = 8100;
    static constexpr int kMeasureAreaWidthTwips = 4800;
    static constexpr int kViewCommandHeightTwips = 1890;
    // The result grid is the measurement area's height less this.
    static constexpr int kGridReserveTwips = 5640;
    // The exit button stands this far left of the view command strip's right edge.
    static constexpr int kExitFromRightTwips = 900;
    static constexpr int kGridTopTwips = 4500;

    QRect viewArea;            // picViewArea
    QRect viewCommandArea;     // picViewCommandArea
    QRect measureCommandArea;  // picMeasureCommandArea
    // Inside their areas:
    QRect exitButton;  // cmdExit
    QRect comment0, comment1;
    QRect resultGrid;     // grdResult; empty when there is no room for it
    QRect resultButtons;  // the row under the grid
    QRect keepResult;

    // The view command strip's two rows of controls, by object name, in the
    // strip; cmdExit and the comment lines follow the window's width instead.
    struct Place {
        const char* name;
        QRect rect;
    };
    static std::span<const Place> commandPlaces();

    static QSize minimumSize();
    // Inner size of the window without menu and status bar.
    static MainLayout compute(QSize inner);
};

}  // namespace tavix
