#include "measure/UnitSpace.h"

namespace tavix {

UnitSpace::UnitSpace(PointD origin, const CalcModule::UnitContext& units) : origin_(origin), units_(units)
{
    units_.magnification = 1;
}

PointD UnitSpace::toUnits(PointD picture) const
{
    // The extents from the origin, converted as a pair of lengths.
    return CalcModule::ConvertUnit({picture.x - origin_.x, picture.y - origin_.y}, false, units_);
}

PointD UnitSpace::toPicture(PointD units) const
{
    const PointD extent = CalcModule::ConvertUnit(units, true, units_);
    return {origin_.x + extent.x, origin_.y + extent.y};
}

double UnitSpace::area(double pixelArea) const
{
    const PointD factors = CalcModule::ConvertUnit({1, 1}, false, units_);
    return pixelArea * factors.x * factors.y;
}

}  // namespace tavix
