#include "RicherFakeCamera.h"
#include "TempDir.h"
#include "camera/genicam/GenICamDriver.h"

#include <gtest/gtest.h>

using namespace tavix;
using tavix::test::TempDir;

namespace {

// The GenICam driver on Aravis's fake camera described with the features real cameras have.
class RicherGenICam : public ::testing::Test {
protected:
    static void SetUpTestSuite() { GenICamDriver::useFakeCameraOnly(); }
    static void TearDownTestSuite() { GenICamDriver::useRealCameras(); }

    void SetUp() override
    {
        ASSERT_EQ(driver.Init(), 1);
        ASSERT_EQ(driver.Open(0), 0);
    }

    ArvDevice* device() { return arv_camera_get_device(driver.arvCamera()); }
    QString feature(const char* name)
    {
        return QString::fromUtf8(arv_device_get_string_feature_value(device(), name, nullptr));
    }
    void setFeature(const char* name, const char* value)
    {
        GError* error = nullptr;
        arv_device_set_string_feature_value(device(), name, value, &error);
        ASSERT_EQ(error, nullptr) << error->message;
    }
    CamParamRange range(int type)
    {
        CamParamRange r;
        EXPECT_EQ(driver.GetCamParameterRange(0, type, r), 0) << type;
        return r;
    }
    std::int32_t get(int type)
    {
        std::int32_t value = -12345;
        EXPECT_EQ(driver.GetCamParameter(0, type, value), 0) << type;
        return value;
    }

    TempDir dir;
    test::RicherFakeCamera fake{dir.file(QStringLiteral("RicherFake.xml"))};
    QStringList logged;
    GenICamDriver driver{[this](const QString& line) { logged.append(line); }};
};

}  // namespace

TEST_F(RicherGenICam, TheDescription_AddsTheFeaturesToTheFakesOwn)
{
    for (const char* name : {"ExposureAuto", "GainAuto", "BalanceWhiteAuto", "BalanceRatio",
                             "BalanceRatioSelector", "Gamma", "GammaEnable", "ReverseX", "ReverseY",
                             "BlackLevel", "BlackLevelAuto", "Width", "PixelFormat", "AcquisitionStart"})
        EXPECT_TRUE(arv_device_is_feature_available(device(), name, nullptr)) << name;
}

TEST_F(RicherGenICam, Exposure_IsAutomaticWithItsBox_AndAWriteUnderItIsLeftToIt)
{
    const CamParamRange r = range(7);
    EXPECT_EQ(r.autoMode, 1);
    EXPECT_EQ(r.minimum, 10);
    EXPECT_EQ(r.maximum, 100000);
    EXPECT_EQ(get(7), 20000);
    float ms = 0;
    ASSERT_EQ(driver.GetExposure(0, ms), 0);
    EXPECT_FLOAT_EQ(ms, 20.0f);
    ASSERT_EQ(driver.SetParamAuto(0, 7, 1), 0);
    EXPECT_EQ(feature("ExposureAuto"), QStringLiteral("Continuous"));
    ASSERT_EQ(driver.SetCamParameter(0, 7, 5000), 0);
    EXPECT_EQ(get(7), 20000);
    ASSERT_EQ(driver.SetParamAutoDef(0, 7), 0);  // off, as opened
    EXPECT_EQ(feature("ExposureAuto"), QStringLiteral("Off"));
    ASSERT_EQ(driver.SetCamParameter(0, 7, 5000), 0);
    EXPECT_EQ(get(7), 5000);
}

TEST_F(RicherGenICam, GainAutoAndContinuousWhiteBalance_AreReportedOnlyWhileOn_AndDefaultSwitchesThemOff)
{
    EXPECT_EQ(range(13).autoMode, 0);
    EXPECT_EQ(range(9).autoMode, 0);
    setFeature("GainAuto", "Continuous");
    setFeature("BalanceWhiteAuto", "Continuous");
    EXPECT_EQ(range(13).autoMode, 1);
    for (const int type : {9, 10, 11})
        EXPECT_EQ(range(type).autoMode, 1) << type;
    ASSERT_EQ(driver.SetParamAutoDef(0, 13), 0);
    ASSERT_EQ(driver.SetParamAutoDef(0, 10), 0);
    EXPECT_EQ(feature("GainAuto"), QStringLiteral("Off"));
    EXPECT_EQ(feature("BalanceWhiteAuto"), QStringLiteral("Off"));
    EXPECT_EQ(range(13).autoMode, 0);
    EXPECT_EQ(range(11).autoMode, 0);
}

TEST_F(RicherGenICam, BalanceRatios_AreKeptPerSelectorEntry_Times64)
{
    EXPECT_EQ(range(9).maximum, 256);
    ASSERT_EQ(driver.SetCamParameter(0, 9, 64), 0);
    ASSERT_EQ(driver.SetCamParameter(0, 10, 80), 0);
    ASSERT_EQ(driver.SetCamParameter(0, 11, 128), 0);
    EXPECT_EQ(get(9), 64);
    EXPECT_EQ(get(10), 80);
    EXPECT_EQ(get(11), 128);
    setFeature("BalanceRatioSelector", "Blue");
    EXPECT_DOUBLE_EQ(arv_device_get_float_feature_value(device(), "BalanceRatio", nullptr), 2.0);
}

TEST_F(RicherGenICam, GammaFlipsAndBlackLevel_WriteTheirFeatures)
{
    ASSERT_EQ(driver.SetCamParameter(0, 3, 96), 0);
    EXPECT_DOUBLE_EQ(arv_device_get_float_feature_value(device(), "Gamma", nullptr), 1.5);
    EXPECT_EQ(get(3), 96);
    EXPECT_EQ(get(111), 1);
    ASSERT_EQ(driver.SetCamParameter(0, 5, 1), 0);
    EXPECT_TRUE(arv_device_get_boolean_feature_value(device(), "ReverseX", nullptr));
    EXPECT_FALSE(arv_device_get_boolean_feature_value(device(), "ReverseY", nullptr));
    EXPECT_EQ(range(12).autoMode, 1);
    ASSERT_EQ(driver.SetCamParameter(0, 12, 10), 0);
    EXPECT_EQ(arv_device_get_integer_feature_value(device(), "BlackLevel", nullptr), 10);
}

TEST_F(RicherGenICam, OnePushWhiteBalance_ReadsZeroUntilTheCameraIsBackOff)
{
    EXPECT_EQ(range(6).enabled, 1);
    ASSERT_EQ(driver.SetParamOnePush(0, 6), 0);
    EXPECT_EQ(feature("BalanceWhiteAuto"), QStringLiteral("Once"));
    EXPECT_EQ(get(6), 0);
    setFeature("BalanceWhiteAuto", "Off");  // the camera has balanced
    EXPECT_EQ(get(6), 1);
}

namespace {

// Opened with a factory loader that plays the camera: its factory settings
// are automatic exposure, exposure 5000 us, black level 0 and gamma 1.5.
class RicherGenICamDefaults : public RicherGenICam {
protected:
    void SetUp() override
    {
        driver.setFactoryLoader([this](ArvCamera* camera) {
            ++factoryLoads;
            ArvDevice* d = arv_camera_get_device(camera);
            arv_device_set_string_feature_value(d, "ExposureAuto", "Off", nullptr);
            arv_device_set_float_feature_value(d, "ExposureTime", 5000, nullptr);
            arv_device_set_string_feature_value(d, "ExposureAuto", "Continuous", nullptr);
            arv_device_set_integer_feature_value(d, "BlackLevel", 0, nullptr);
            arv_device_set_float_feature_value(d, "Gamma", 1.5, nullptr);
            return true;
        });
        RicherGenICam::SetUp();
        driver.Open(0);  // already open: the factory settings are read once
        // Values beyond a feature's range are refused, as a real camera refuses them.
        arv_device_set_range_check_policy(device(), ARV_RANGE_CHECK_POLICY_ENABLE);
    }

    // The settings dialog's Default button: each parameter's automatic mode
    // back to its default, then its default value. The statuses that were not 0.
    QStringList pressDefault()
    {
        QStringList refused;
        for (const int type : {7,  8,   12,  13, 4,   5,   14, 15, 147, 117, 1,   2,
                               19, 109, 111, 3,  110, 115, 9,  10, 11,  106, 107, 108}) {
            CamParamRange r;
            if (driver.GetCamParameterRange(0, type, r) != 0 || !r.enabled)
                continue;
            if (r.autoMode == 1 && driver.SetParamAutoDef(0, type) != 0) {
                refused << QStringLiteral("auto %1").arg(type);
                continue;
            }
            if (const int s = driver.SetCamParameter(0, type, r.defaultValue))
                refused << QStringLiteral("%1: %2").arg(type).arg(s);
        }
        return refused;
    }

    int factoryLoads = 0;
};

}  // namespace

TEST_F(RicherGenICamDefaults, TheDefaults_AreTheFactorySettings_AndTheUsersValuesStay)
{
    EXPECT_EQ(factoryLoads, 1);
    EXPECT_EQ(range(7).defaultValue, 5000);
    EXPECT_EQ(range(12).defaultValue, 0);
    EXPECT_EQ(range(3).defaultValue, 96);
    // What the user had when the camera was opened is still set.
    EXPECT_EQ(feature("ExposureAuto"), QStringLiteral("Off"));
    EXPECT_EQ(get(7), 20000);
    EXPECT_EQ(get(12), 4);
    EXPECT_EQ(get(3), 64);
}

TEST_F(RicherGenICamDefaults, Default_UnderAutomaticExposure_WritesNoExposureTheCameraRefuses)
{
    ASSERT_EQ(driver.SetParamAuto(0, 7, 1), 0);
    logged.clear();
    EXPECT_EQ(pressDefault(), QStringList{});
    EXPECT_EQ(logged, QStringList{});
    EXPECT_EQ(feature("ExposureAuto"), QStringLiteral("Continuous"));  // the factory's automatic exposure
    // Not written: a real camera refuses ExposureTime while ExposureAuto governs it.
    EXPECT_EQ(get(7), 20000);
    EXPECT_EQ(get(12), 0);
    EXPECT_EQ(get(3), 96);
}

TEST_F(RicherGenICamDefaults, Default_WithAutomaticExposureOff_WritesTheFactoryExposure_WithinTheRangeNow)
{
    ASSERT_EQ(driver.SetParamAuto(0, 7, 0), 0);
    // A camera whose exposure range has shrunk below the factory value since it was opened.
    arv_device_set_float_feature_value(device(), "TestExposureTimeMax", 4000, nullptr);
    logged.clear();
    ASSERT_EQ(driver.SetCamParameter(0, 7, range(7).defaultValue), 0);
    EXPECT_EQ(get(7), 4000);
    EXPECT_EQ(logged, QStringList{});
}
