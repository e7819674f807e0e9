#include "measure/UnitSpace.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

CalcModule::UnitContext units(double fx, double fy, double magnification = 1, bool taking = false)
{
    return {fx, fy, magnification, taking};
}

TEST(UnitSpace, ToUnits_ScalesTheExtentsFromTheOriginByEachAxisFactor)
{
    const UnitSpace space({100, 200}, units(0.5, 2));
    EXPECT_EQ(space.toUnits({100, 200}), (PointD{0, 0}));
    EXPECT_EQ(space.toUnits({110, 190}), (PointD{5, -20}));
}

TEST(UnitSpace, ToPicture_GoesBackToThePixel)
{
    const UnitSpace space({100, 200}, units(0.5, 2));
    EXPECT_EQ(space.toPicture({5, -20}), (PointD{110, 190}));
}

TEST(UnitSpace, ZeroFactor_LeavesThatAxisInPixels)
{
    const UnitSpace space({0, 0}, units(0, 3));
    EXPECT_EQ(space.toUnits({7, 2}), (PointD{7, 6}));
}

TEST(UnitSpace, TakingACalibrationValue_LeavesBothAxesInPixels)
{
    const UnitSpace space({0, 0}, units(0.5, 3, 1, true));
    EXPECT_EQ(space.toUnits({7, 2}), (PointD{7, 2}));
}

TEST(UnitSpace, ViewMagnification_DoesNotScalePicturePixels)
{
    const UnitSpace space({0, 0}, units(0.5, 0.5, 4));
    EXPECT_EQ(space.toUnits({10, 20}), (PointD{5, 10}));
}

TEST(UnitSpace, Area_IsTimesBothFactors)
{
    EXPECT_EQ(UnitSpace({3, 4}, units(0.5, 0.25)).area(20000), 2500);
    EXPECT_EQ(UnitSpace({3, 4}, units(0, 0.25)).area(20000), 5000);
}

}  // namespace
