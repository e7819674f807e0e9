#include "camera/sim/SimCallLog.h"
#include "camera/sim/SimCamera.h"
#include "camera/sim/SimModes.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(SimModes, UnknownModesAreLeftOut_AndTheDefaultIsOffered)
{
    const SimModes modes({-1, 3, 11, 8}, 5);
    EXPECT_EQ(modes.list(10, false), (std::vector<std::int32_t>{3, 8}));
    EXPECT_EQ(modes.defaultMode(), 3);
    EXPECT_TRUE(modes.offers(8));
    EXPECT_FALSE(modes.offers(5));
    EXPECT_EQ(SimModes({42}, 42).list(10, false), std::vector<std::int32_t>{5});
}

TEST(SimModes, List_KeepsToTheCapacity_AndCanOmitTheDefault)
{
    const SimModes modes({1, 3, 5, 8}, 5);
    EXPECT_EQ(modes.list(2, false), (std::vector<std::int32_t>{1, 3}));
    EXPECT_EQ(modes.list(10, true), (std::vector<std::int32_t>{1, 3, 8}));
}

// Every mode sees the same field, so a calibration scales with the widths.
TEST(SimModes, Geometry_TheSameFieldAtEveryMode_PixelsScaledByTheWidths)
{
    const std::optional<ModeGeometry> widest = SimModes::geometry(9);  // 3840x2748
    ASSERT_TRUE(widest);
    EXPECT_EQ(widest->pixelSize, 1.0);
    for (std::int32_t mode = 0; mode <= 10; ++mode) {
        const QSize size = SimModes::size(mode);
        const std::optional<ModeGeometry> g = SimModes::geometry(mode);
        ASSERT_TRUE(g) << mode;
        EXPECT_DOUBLE_EQ(g->pixelSize, 3840.0 / size.width()) << mode;
        EXPECT_DOUBLE_EQ(g->field.width(), 3840) << mode;
        EXPECT_DOUBLE_EQ(g->field.height(), size.height() * g->pixelSize) << mode;
        EXPECT_DOUBLE_EQ(g->field.center().y(), 1536) << mode;  // centred on the 5:4 field's middle
        EXPECT_GE(g->field.top(), 0) << mode;
    }
    EXPECT_EQ(SimModes::geometry(11), std::nullopt);
    EXPECT_EQ(SimModes::geometry(-1), std::nullopt);
}

TEST(SimModes, TheCamerasModeGeometry_IsTheSimulatedSensors_AndItsIdItsName)
{
    SimCamera cam;
    EXPECT_EQ(cam.modeGeometry(5), SimModes::geometry(5));
    EXPECT_EQ(cam.cameraId(), QStringLiteral("SimCam 1296"));
    EXPECT_TRUE(cam.calls().isEmpty());  // asked of no camera call
}

TEST(SimCallLog, RecordsCallsWhileAsked_AndAnswersScriptedStatuses_TypeFirst)
{
    SimCallLog log;
    const std::map<QString, int> failWith{{QStringLiteral("SetCamParameter"), -1},
                                          {QStringLiteral("SetCamParameter:7"), -4}};
    EXPECT_EQ(log.enter(failWith, "SetCamParameter", 7, 0, 7, 100), -4);
    EXPECT_EQ(log.enter(failWith, "SetCamParameter", 8, 0, 8, 100), -1);
    EXPECT_EQ(log.enter(failWith, "Open", -1, 0), std::nullopt);
    EXPECT_TRUE(log.calls().isEmpty());
    log.setRecording(true);
    log.enter(failWith, "SaveToFile", -1, 0, QStringLiteral("a.bmp"));
    EXPECT_EQ(log.calls(), QStringList{QStringLiteral("SaveToFile(0,a.bmp)")});
    log.clear();
    EXPECT_TRUE(log.calls().isEmpty());
}
