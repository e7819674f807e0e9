// How the GenICam driver's modes lie on the sensor, and a calibration carried
// between them, on Aravis's fake camera (a 2048x2048 sensor that bins).
#include "calib/ProofRescale.h"
#include "camera/genicam/GenICamDriver.h"

#include <gtest/gtest.h>

#undef signals
#include <arv.h>

using namespace tavix;

namespace {

class GenICamModeGeometry : public ::testing::Test {
protected:
    static void SetUpTestSuite() { GenICamDriver::useFakeCameraOnly(); }
    static void TearDownTestSuite() { GenICamDriver::useRealCameras(); }

    void SetUp() override
    {
        ASSERT_EQ(driver.Init(), 1);
        ASSERT_EQ(driver.Open(0), 0);
    }

    // What the camera itself reports for its current mode: binning and region (in binned pixels).
    struct Reported {
        int binning = 0;
        QRect region;
    };
    Reported reported()
    {
        gint x = 0, y = 0, w = 0, h = 0, bx = 0, by = 0;
        arv_camera_get_region(driver.arvCamera(), &x, &y, &w, &h, nullptr);
        arv_camera_get_binning(driver.arvCamera(), &bx, &by, nullptr);
        EXPECT_EQ(bx, by);
        return {bx, QRect(x, y, w, h)};
    }

    PictureGeometry picture(std::int32_t mode)
    {
        std::int32_t current = -1;
        driver.GetMode(0, current);
        EXPECT_EQ(current, mode);
        return {reported().region.size(), driver.modeGeometry(mode),
                driver.driverName() + QLatin1Char('/') + driver.cameraId()};
    }

    GenICamDriver driver;
};

constexpr std::int32_t kFullWidth = 7;  // 2048x1536: binning 1, the sensor's whole width
constexpr std::int32_t kCrop = 5;       // 1280x1024: binning 1, a centred crop
constexpr std::int32_t kBinned2 = 4;    // 1024x768: binning 2
constexpr std::int32_t kBinned3 = 1;    // 640x480: binning 3

}  // namespace

TEST_F(GenICamModeGeometry, EveryMode_TellsTheBinningAndRegionTheCameraThenReports)
{
    gint width = 0, height = 0;
    arv_camera_get_sensor_size(driver.arvCamera(), &width, &height, nullptr);
    ASSERT_EQ(QSize(width, height), QSize(2048, 2048));
    std::vector<std::int32_t> modes;
    ASSERT_EQ(driver.GetModeList(0, modes), 0);
    for (const std::int32_t mode : modes) {
        const std::optional<ModeGeometry> told = driver.modeGeometry(mode);  // before it is set
        ASSERT_EQ(driver.SetMode(0, mode), 0) << mode;
        const Reported r = reported();
        const ModeGeometry truth{double(r.binning),
                                 QRectF(r.region.x() * r.binning, r.region.y() * r.binning,
                                        r.region.width() * r.binning, r.region.height() * r.binning)};
        EXPECT_EQ(told, truth) << mode;
        EXPECT_EQ(driver.modeGeometry(mode), truth) << mode;
    }
    EXPECT_EQ(driver.modeGeometry(8), std::nullopt);  // 2592x1944 does not fit the sensor
}

TEST_F(GenICamModeGeometry, TheCameraId_IsAravisDeviceId)
{
    EXPECT_EQ(driver.cameraId(), QString::fromUtf8(arv_get_device_id(0)));
    EXPECT_FALSE(driver.cameraId().isEmpty());
    driver.Close(0);
    EXPECT_TRUE(driver.cameraId().isEmpty());
    EXPECT_EQ(driver.modeGeometry(kFullWidth), std::nullopt);
}

// Calibrated at the sensor's full width, then measuring a 100 um length on a
// crop, on two binnings and back: the truth is the stated micrometres per
// sensor pixel times the binning the camera reports.
TEST_F(GenICamModeGeometry, Calibration_CarriedToACropABinningAndBack_MeasuresTheTruth)
{
    constexpr double kUmPerSensorPixel = 0.37;
    constexpr double kLengthUm = 100;
    ASSERT_EQ(driver.SetMode(0, kFullWidth), 0);
    ASSERT_EQ(reported().binning, 1);
    const PictureGeometry made = picture(kFullWidth);
    const ProofEntry stored{QStringLiteral("x10"),
                            kUmPerSensorPixel,
                            kUmPerSensorPixel,
                            QStringLiteral("MIC"),
                            kLengthUm,
                            kLengthUm,
                            0};

    for (const std::int32_t mode : {kCrop, kBinned2, kBinned3, kFullWidth}) {
        ASSERT_EQ(driver.SetMode(0, mode), 0);
        const int binning = reported().binning;
        const double pixels = kLengthUm / (kUmPerSensorPixel * binning);  // the length on this picture
        const PictureGeometry now = picture(mode);
        const ProofEntry used = ProofRescale::toPicture(stored, made, now);
        EXPECT_NEAR(pixels * used.XFactor / kLengthUm - 1, 0, 1e-4) << mode;
        EXPECT_NEAR(pixels * used.YFactor / kLengthUm - 1, 0, 1e-4) << mode;
        EXPECT_TRUE(ProofRescale::rescale(made, now).trusted()) << mode;
        // The widths alone would be off on the crop and on 640x480.
        const double byWidth = pixels * kUmPerSensorPixel * made.size.width() / now.size.width();
        if (mode == kCrop)
            EXPECT_NEAR(byWidth / kLengthUm, 1.6, 1e-9);
        if (mode == kBinned3)
            EXPECT_NEAR(byWidth / kLengthUm, 3.2 / 3, 1e-9);
    }
    EXPECT_EQ(ProofRescale::toPicture(stored, made, picture(kFullWidth)), stored);  // back: exactly
}
