#pragma once

#include "measure/CalcModule.h"

#include <QImage>

namespace tavix {

// What turns a tool's pixels into a result: the selected calibration and the
// number of decimals of the value labels.
struct MeasureContext {
    CalcModule::UnitContext units;
    int decimals = 0;  // NUMBEROFDECIMALS
    // The still measured on, for the tools that read it (caliper, one-click circle).
    QImage picture;
};

}  // namespace tavix
