#pragma once

namespace tavix {

// The scale bar as the calibration selection sees it: on or off, and drawn
// for the selected entry's factors.
class ScaleBarSwitch {
public:
    virtual ~ScaleBarSwitch() = default;

    // True while the scale bar is switched on.
    virtual bool isOn() const = 0;
    // Switches the scale bar off (an entry without factors cannot size it).
    virtual void switchOff() = 0;
    // Draws the bar again for the selected entry; while the live picture runs
    // it is refreshed once first, so that the old bar does not stay on it.
    virtual void redraw() = 0;
};

}  // namespace tavix
