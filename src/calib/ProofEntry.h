#pragma once

#include <QString>
#include <QtGlobal>

namespace tavix {

// One calibration set-up: the units per picture pixel on each axis and the
// true lengths the user typed to obtain them.
struct ProofEntry {
    QString Name;
    double XFactor = 0, YFactor = 0;  // units per pixel; 0 = not calibrated
    QString Unit;
    double XValue = 0, YValue = 0;  // last typed true lengths; 0 = none
    qint16 AxisOption = 0;          // 1 = y follows x; kept only while the program runs

    // Measurements need both factors; one missing would give results in pixels.
    bool usable() const { return XFactor != 0 && YFactor != 0; }

    friend bool operator==(const ProofEntry&, const ProofEntry&) = default;
};

}  // namespace tavix
