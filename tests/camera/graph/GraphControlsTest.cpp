#include "FakeUvcCamera.h"
#include "TempDir.h"
#include "camera/graph/GraphDriver.h"
#include "camera/graph/V4l2Controls.h"
#include "common/Clock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <cerrno>

using namespace tavix;
using tavix::test::FakeUvcCamera;
using tavix::test::TempDir;

namespace {

// The graph camera's parameters on a fake USB webcam's controls.
class GraphControls : public ::testing::Test {
protected:
    void SetUp() override
    {
        webcam.put(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_MANUAL);
        FakeUvcCamera device = webcam;
        driver = std::make_unique<GraphDriver>(
            dir.write(QStringLiteral("Camera.grf"), "videotestsrc ! identity name=Camera"),
            QStringLiteral("Camera"), GraphDriver::Log{}, &clock,
            [device](const GraphFile&) { return device.controls(); });
        ASSERT_EQ(driver->Init(), 1);
        ASSERT_EQ(driver->Open(0), 0);
    }

    CamParamRange range(int type)
    {
        CamParamRange r;
        EXPECT_EQ(driver->GetCamParameterRange(0, type, r), 0) << type;
        return r;
    }
    std::int32_t get(int type)
    {
        std::int32_t value = -12345;
        EXPECT_EQ(driver->GetCamParameter(0, type, value), 0) << type;
        return value;
    }
    int set(int type, std::int32_t value) { return driver->SetCamParameter(0, type, value); }

    TempDir dir;
    ManualClock clock;
    FakeUvcCamera webcam = FakeUvcCamera::webcam();
    std::unique_ptr<GraphDriver> driver;
};

}  // namespace

TEST_F(GraphControls, Exposure_IsIn100MicrosecondUnits)
{
    const CamParamRange r = range(7);
    EXPECT_EQ(r.enabled, 1);
    EXPECT_EQ(r.autoMode, 1);
    EXPECT_EQ(r.minimum, 3);
    EXPECT_EQ(r.maximum, 2047);
    EXPECT_EQ(r.defaultValue, 250);
    ASSERT_EQ(set(7, 333), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_ABSOLUTE), 333);
    float ms = 0;
    ASSERT_EQ(driver->GetExposure(0, ms), 0);
    EXPECT_FLOAT_EQ(ms, 33.3f);
}

TEST_F(GraphControls, Gamma_Is64ForTheDevices100_AndEveryValueComesBackAsWritten)
{
    const CamParamRange r = range(3);
    EXPECT_EQ(r.minimum, 46);   // 72 of the device
    EXPECT_EQ(r.maximum, 320);  // 500
    EXPECT_EQ(r.defaultValue, 64);
    ASSERT_EQ(set(3, 64), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_GAMMA), 100);
    ASSERT_EQ(set(3, 65), 0);
    EXPECT_EQ(get(3), 65);
    for (std::int32_t v = r.minimum; v <= r.maximum; ++v) {
        ASSERT_EQ(set(3, v), 0) << v;
        ASSERT_EQ(get(3), v);
    }
}

TEST_F(GraphControls, Steps_AreTheRangesThirdField_AndTheCameraRoundsToThem)
{
    ASSERT_EQ(driver->SetParamAuto(0, ExtraParam::kFocus, 0), 0);
    const CamParamRange r = range(ExtraParam::kFocus);
    EXPECT_EQ(r.third, 5);
    EXPECT_EQ(r.maximum, 250);
    ASSERT_EQ(set(ExtraParam::kFocus, 17), 0);
    EXPECT_EQ(get(ExtraParam::kFocus), 15);
}

TEST_F(GraphControls, PowerLineFrequency_TakesOnlyTheEntriesTheCameraOffers)
{
    const CamParamRange r = range(ExtraParam::kPowerLineFrequency);
    EXPECT_EQ(r.minimum, 0);
    EXPECT_EQ(r.maximum, 2);
    EXPECT_EQ(r.defaultValue, 1);
    ASSERT_EQ(set(ExtraParam::kPowerLineFrequency, 2), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_POWER_LINE_FREQUENCY), 2);
    EXPECT_EQ(set(ExtraParam::kPowerLineFrequency, 3), GraphDriver::kOutOfRange);

    // A camera whose menu lacks 60 Hz but has the automatic entry.
    webcam.add(V4L2_CID_POWER_LINE_FREQUENCY, {V4L2_CTRL_TYPE_MENU, 0, 3, 1, 1, 0}, 1, {0, 1, 3});
    EXPECT_EQ(set(ExtraParam::kPowerLineFrequency, 2), GraphDriver::kOutOfRange);
    EXPECT_EQ(webcam.value(V4L2_CID_POWER_LINE_FREQUENCY), 1);
    ASSERT_EQ(set(ExtraParam::kPowerLineFrequency, 3), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_POWER_LINE_FREQUENCY), 3);
}

TEST_F(GraphControls, AutomaticExposure_IsTheMenusAperturePriority_OrItsAutoWhereThatIsAll)
{
    ASSERT_EQ(driver->SetParamAuto(0, 7, 1), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_APERTURE_PRIORITY);
    ASSERT_EQ(driver->SetParamAuto(0, 7, 0), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_MANUAL);
    webcam.add(V4L2_CID_EXPOSURE_AUTO, {V4L2_CTRL_TYPE_MENU, 0, 1, 1, 0, 0}, V4L2_EXPOSURE_MANUAL,
               {V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_MANUAL});
    ASSERT_EQ(driver->SetParamAuto(0, 7, 1), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_AUTO);
    std::int32_t flag = 0;
    ASSERT_EQ(driver->GetParamAuto(0, 7, flag), 0);
    EXPECT_EQ(flag, 1);
}

TEST_F(GraphControls, InactiveControl_ReportsItsAutomaticMode_AndAWriteIsLeftToThatMode)
{
    // Automatic white balance is on, as the camera comes: the temperature is inactive.
    EXPECT_TRUE(webcam.inactive(V4L2_CID_WHITE_BALANCE_TEMPERATURE));
    EXPECT_EQ(range(ExtraParam::kWhiteBalanceTemperature).autoMode, 1);
    ASSERT_EQ(set(ExtraParam::kWhiteBalanceTemperature, 5000), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_WHITE_BALANCE_TEMPERATURE), 4600);
    EXPECT_EQ(webcam.refusedWrites(), QStringList{});

    ASSERT_EQ(driver->SetParamAuto(0, ExtraParam::kWhiteBalanceTemperature, 0), 0);
    ASSERT_EQ(set(ExtraParam::kWhiteBalanceTemperature, 5000), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_WHITE_BALANCE_TEMPERATURE), 5000);
    // The box-less automatic modes: the balance's and the gain's, reported only while on.
    webcam.add(V4L2_CID_RED_BALANCE, {V4L2_CTRL_TYPE_INTEGER, 0, 255, 1, 128, 0}, 128);
    webcam.add(V4L2_CID_AUTOGAIN, {V4L2_CTRL_TYPE_BOOLEAN, 0, 1, 1, 1, 0}, 1);
    EXPECT_EQ(range(9).autoMode, 0);
    EXPECT_EQ(range(13).autoMode, 1);
    ASSERT_EQ(driver->SetParamAuto(0, ExtraParam::kWhiteBalanceTemperature, 1), 0);
    EXPECT_EQ(range(9).autoMode, 1);
    ASSERT_EQ(driver->SetParamAutoDef(0, 13), 0);  // no box: its default is off
    EXPECT_EQ(webcam.value(V4L2_CID_AUTOGAIN), 0);
    EXPECT_EQ(range(13).autoMode, 0);
}

TEST_F(GraphControls, TheFake_RefusesAnExposureWriteUnderAutomaticExposure_AsTheKernelDriverDoes)
{
    auto device = webcam.controls();
    ASSERT_EQ(device->set(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY), 0);
    EXPECT_EQ(device->set(V4L2_CID_EXPOSURE_ABSOLUTE, 100), EACCES);
    V4l2ControlAccess::Control control;
    ASSERT_EQ(device->query(V4L2_CID_EXPOSURE_ABSOLUTE, control), 0);
    EXPECT_TRUE(control.flags & V4L2_CTRL_FLAG_INACTIVE);
    EXPECT_EQ(device->query(V4L2_CID_ZOOM_ABSOLUTE, control), EINVAL);
    EXPECT_EQ(device->queryMenu(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_SHUTTER_PRIORITY), EINVAL);
}

TEST_F(GraphControls, ARefusedWrite_IsTheRefusedStatus)
{
    webcam.refuse(V4L2_CID_GAIN, EACCES);
    EXPECT_EQ(set(13, 5), GraphDriver::kRefused);
    webcam.refuse(V4L2_CID_CONTRAST, EIO);
    EXPECT_EQ(set(2, 5), GraphDriver::kFailed);
}

TEST_F(GraphControls, AfterAnUnplug_EveryCallSaysDisconnected)
{
    webcam.unplug();
    CamParamRange r;
    EXPECT_EQ(driver->GetCamParameterRange(0, 1, r), GraphDriver::kDisconnected);
    EXPECT_EQ(r.enabled, 0);
    std::int32_t value = 0;
    EXPECT_EQ(driver->GetCamParameter(0, 1, value), GraphDriver::kDisconnected);
    EXPECT_EQ(set(1, 3), GraphDriver::kDisconnected);
    EXPECT_EQ(driver->SetParamAuto(0, 7, 1), GraphDriver::kDisconnected);
    float ms = 0;
    EXPECT_EQ(driver->GetExposure(0, ms), GraphDriver::kDisconnected);
}

TEST_F(GraphControls, OnePushWhiteBalance_RunsTheAutomaticBalanceFor400MsOnTheClock_ThenHoldsIt)
{
    webcam.put(V4L2_CID_AUTO_WHITE_BALANCE, 0);
    ASSERT_EQ(driver->SetParamOnePush(0, 6), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_AUTO_WHITE_BALANCE), 1);
    EXPECT_EQ(get(6), 0);
    clock.advance(399);
    EXPECT_EQ(get(6), 0);
    clock.advance(1);
    EXPECT_EQ(get(6), 1);
    EXPECT_EQ(webcam.value(V4L2_CID_AUTO_WHITE_BALANCE), 0);
    EXPECT_EQ(get(ExtraParam::kWhiteBalanceTemperature), 5200);
}

TEST_F(GraphControls, OnePushWhiteBalance_UsesTheCamerasOwnButton_WhenItHasOne)
{
    webcam.add(V4L2_CID_DO_WHITE_BALANCE, {V4L2_CTRL_TYPE_BUTTON, 0, 0, 0, 0, V4L2_CTRL_FLAG_WRITE_ONLY}, 0);
    webcam.clearWrites();
    ASSERT_EQ(driver->SetParamOnePush(0, 6), 0);
    EXPECT_EQ(webcam.writes(), QStringList{QStringLiteral("do_white_balance=1")});
    EXPECT_EQ(get(6), 1);
}

TEST_F(GraphControls, NewControls_MapOntoTheWebcamsOwn)
{
    ASSERT_EQ(set(ExtraParam::kDynamicFrameRate, 1), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_AUTO_PRIORITY), 1);
    EXPECT_EQ(range(ExtraParam::kFocus).autoMode, 1);
    std::int32_t flag = 0;
    ASSERT_EQ(driver->GetParamAuto(0, ExtraParam::kFocus, flag), 0);
    EXPECT_EQ(flag, 1);
    webcam.remove(V4L2_CID_FOCUS_ABSOLUTE);
    EXPECT_EQ(range(ExtraParam::kFocus).enabled, 0);
    EXPECT_EQ(set(ExtraParam::kFocus, 3), GraphDriver::kNotSupported);
}

TEST(V4l2Controls, OnAFileThatIsNoVideoDevice_EveryCallAnswersItsErrno)
{
    const int fd = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    V4l2Controls controls(fd);
    ::close(fd);  // the controls keep a duplicate
    ASSERT_TRUE(controls.isOpen());
    V4l2ControlAccess::Control control;
    EXPECT_EQ(controls.query(V4L2_CID_BRIGHTNESS, control), ENOTTY);
    std::int32_t value = 0;
    EXPECT_EQ(controls.get(V4L2_CID_BRIGHTNESS, value), ENOTTY);
    EXPECT_EQ(controls.set(V4L2_CID_BRIGHTNESS, 1), ENOTTY);
    EXPECT_FALSE(V4l2Controls(-1).isOpen());
    EXPECT_EQ(V4l2Controls(-1).query(V4L2_CID_BRIGHTNESS, control), EBADF);
}
