#include "camera/genicam/SensorModes.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(SensorModes, Fitting_ListsTheSizesWithinTheSensor_SmallestFirst)
{
    // 2592x1944 and 3840x2748 are wider or taller than this sensor.
    EXPECT_EQ(SensorModes::fitting(QSize(2048, 2048), 10),
              (std::vector<std::int32_t>{0, 1, 2, 3, 4, 5, 6, 10, 7}));
    EXPECT_EQ(SensorModes::fitting(QSize(1280, 1024), 10), (std::vector<std::int32_t>{0, 1, 2, 3, 4, 5}));
    EXPECT_TRUE(SensorModes::fitting(QSize(300, 200), 10).empty());
}

TEST(SensorModes, Fitting_KeepsTheLargest_WhenMoreThanCapacityFit)
{
    EXPECT_EQ(SensorModes::fitting(QSize(4000, 3000), 10).size(), 10u);
    EXPECT_EQ(SensorModes::fitting(QSize(4000, 3000), 10).front(), 1);
    EXPECT_EQ(SensorModes::fitting(QSize(4000, 3000), 10).back(), 9);
}

TEST(SensorModes, Fit_BinsAsFarAsTheSizeAllows_AndCentresTheRegion)
{
    const SensorModes::Fit f = SensorModes::fit(QSize(2048, 2048), 1, 16);
    EXPECT_EQ(f.binning, 3);  // 682 x 682 binned pixels hold 640 x 480
    EXPECT_EQ(f.region, QRect(21, 101, 640, 480));
}

TEST(SensorModes, Fit_RoundsOffsetsDownToTheCamerasStep)
{
    const SensorModes::Fit f = SensorModes::fit(QSize(2048, 2048), 1, 16, 8);
    EXPECT_EQ(f.region, QRect(16, 96, 640, 480));
}

TEST(SensorModes, Fit_WithoutBinning_CutsACentredRegion)
{
    const SensorModes::Fit f = SensorModes::fit(QSize(2048, 2048), 7, 1);
    EXPECT_EQ(f.binning, 1);
    EXPECT_EQ(f.region, QRect(0, 256, 2048, 1536));
}

TEST(SensorModes, Fit_OfASizeThatDoesNotFit_IsEmpty)
{
    EXPECT_TRUE(SensorModes::fit(QSize(2048, 2048), 8, 4).region.isEmpty());
    EXPECT_TRUE(SensorModes::fit(QSize(2048, 2048), 11, 4).region.isEmpty());
}
