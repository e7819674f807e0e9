#include "measure/CalibrationLinePointTool.h"
#include "measure/CalibrationTwoPointTool.h"

#include "ToolTestSupport.h"

using namespace tavix;
using namespace tavix::test;

namespace {

TEST(CalibrationTwoPointTool, PixelDistance_IsTheDistanceInPicturePixels)
{
    CalibrationTwoPointTool tool(false);
    clickAll(tool, {{10, 10}, {13, 14}});
    ASSERT_TRUE(tool.pixelDistance());
    EXPECT_EQ(*tool.pixelDistance(), 5);
}

TEST(CalibrationTwoPointTool, Result_StaysInPixels_WhateverTheCalibration)
{
    CalibrationTwoPointTool tool(true);
    clickAll(tool, {{0, 0}, {3, 4}});
    const std::optional<Measurement> m = tool.result(contextWith(0.5, 0.25, 2, 2));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->values[0].value, 5);
    EXPECT_EQ(m->values[0].unit, UnitKind::Pixels);
    EXPECT_FALSE(m->addsResultRows());
    EXPECT_EQ(m->shape.lineSlot, 3);
}

TEST(CalibrationTwoPointTool, PixelDistance_IsNothing_BeforeBothEnds)
{
    CalibrationTwoPointTool tool(false);
    tool.addPoint({1, 1});
    EXPECT_FALSE(tool.pixelDistance());
}

TEST(CalibrationTwoPointTool, NumberAndGuidance_FollowTheAxis)
{
    CalibrationTwoPointTool x(false), y(true);
    EXPECT_EQ(x.number(), 21);
    EXPECT_EQ(y.number(), 23);
    EXPECT_EQ(x.guidance(), 70);
    EXPECT_EQ(y.guidance(), 72);
    x.addPoint({0, 0});
    EXPECT_EQ(x.guidance(), 70);
}

TEST(CalibrationLinePointTool, PixelDistance_IsThePerpendicularInPicturePixels)
{
    CalibrationLinePointTool tool(false);
    clickAll(tool, {{0, 0}, {10, 0}, {5, 7}});
    ASSERT_TRUE(tool.pixelDistance());
    EXPECT_EQ(*tool.pixelDistance(), 7);
}

TEST(CalibrationLinePointTool, PixelDistance_OfASlopedLine)
{
    CalibrationLinePointTool tool(true);
    clickAll(tool, {{0, 0}, {3, 4}, {4, -3}});
    ASSERT_TRUE(tool.pixelDistance());
    EXPECT_NEAR(*tool.pixelDistance(), 5, 1e-12);
    const std::optional<Measurement> m = tool.result(contextWith(2, 2));
    ASSERT_TRUE(m);
    EXPECT_NEAR(m->values[0].value, 5, 1e-12);
    EXPECT_FALSE(m->addsResultRows());
}

TEST(CalibrationLinePointTool, NumberAndGuidance_FollowTheAxis)
{
    CalibrationLinePointTool x(false), y(true);
    EXPECT_EQ(x.number(), 22);
    EXPECT_EQ(y.number(), 24);
    EXPECT_EQ(x.guidance(), 71);
    EXPECT_EQ(y.guidance(), 73);
}

TEST(CalibrationLinePointTool, PixelDistance_IsNothing_BeforeThePoint)
{
    CalibrationLinePointTool tool(false);
    clickAll(tool, {{0, 0}, {10, 0}});
    EXPECT_FALSE(tool.pixelDistance());
}

}  // namespace
