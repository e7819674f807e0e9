#pragma once

#include "measure/CalcModule.h"
#include "measure/PointD.h"

namespace tavix {

// The picture scaled into calibrated units, x by the x factor and y by the y
// factor, around one of the clicked points. Distances, perpendiculars, circles
// and angles are taken there, so that they stay true when the two factors
// differ: a length dx, dy becomes sqrt((dx fx)^2 + (dy fy)^2).
//
// Points are picture pixels: the zoom of the view is already out of them, so
// the conversion runs at magnification 1 whatever the context holds (a zoomed
// view must not change a measured value).
class UnitSpace {
public:
    UnitSpace(PointD origin, const CalcModule::UnitContext& units);

    PointD toUnits(PointD picture) const;
    PointD toPicture(PointD units) const;

    // A pixel area in units squared: times fx times fy.
    double area(double pixelArea) const;

private:
    PointD origin_;
    CalcModule::UnitContext units_;
};

}  // namespace tavix
