#pragma once

#include "calib/ScaleBarSwitch.h"

namespace tavix::test {

// A scale bar switch that records what was done to it.
class FakeScaleBar : public ScaleBarSwitch {
public:
    bool on = false;
    int redraws = 0;
    int switchOffs = 0;

    bool isOn() const override { return on; }
    void switchOff() override
    {
        on = false;
        ++switchOffs;
    }
    void redraw() override { ++redraws; }
};

}  // namespace tavix::test
