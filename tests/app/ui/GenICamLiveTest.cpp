#include "DriverWindow.h"
#include "camera/genicam/GenICamDriver.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <QDialog>
#include <QElapsedTimer>
#include <QPushButton>
#include <QSlider>
#include <QTest>

#undef signals
#include <arv.h>

using namespace tavix;

namespace {

// The main window on Aravis's fake camera through the real GenICam driver.
class GenICamLive : public test::DriverWindow<GenICamDriver> {
protected:
    static void SetUpTestSuite() { GenICamDriver::useFakeCameraOnly(); }
    static void TearDownTestSuite() { GenICamDriver::useRealCameras(); }

    void SetUp() override
    {
        DriverWindow::SetUp();
        ASSERT_TRUE(startWindow([](AppData& data) {
            return std::make_unique<GenICamDriver>(
                [log = data.log](const QString& line) { log.write(line); });
        }));
    }
};

}  // namespace

TEST_F(GenICamLive, OpensTheFakeCamera_ShowsItLive_AndFreezesItsFrame)
{
    EXPECT_TRUE(log().contains(QStringLiteral("Camera Name:Aravis Fake 1\r\n")));
    EXPECT_EQ(status(0), w->data().messages.text(40029) + QStringLiteral(": genicam"));
    EXPECT_EQ(status(5), QStringLiteral("Resolution:2048x2048"));
    ASSERT_TRUE(waitForLiveFrames(2));
    EXPECT_EQ(driver->frameSize(), QSize(2048, 2048));

    freeze();

    ASSERT_TRUE(w->camera().stillShown());
    QImage fromFile;
    ASSERT_EQ(BmpFile::read(w->data().tempBitmapPath(), fromFile), 0);
    EXPECT_EQ(w->camera().still().size(), QSize(2048, 2048));
    EXPECT_EQ(w->camera().still().convertToFormat(QImage::Format_RGB32),
              fromFile.convertToFormat(QImage::Format_RGB32));
}

TEST_F(GenICamLive, ExposureAndGainWritten_AreTheFeatureValuesReadBack)
{
    CameraDriver& camera = w->camera().session().driver();
    ASSERT_EQ(camera.SetCamParameter(0, 7, 25000), 0);
    ASSERT_EQ(camera.SetCamParameter(0, 13, 4), 0);
    EXPECT_DOUBLE_EQ(arv_camera_get_exposure_time(driver->arvCamera(), nullptr), 25000.0);
    EXPECT_EQ(
        arv_device_get_integer_feature_value(arv_camera_get_device(driver->arvCamera()), "GainRaw", nullptr),
        4);
    float ms = 0;
    ASSERT_EQ(camera.GetExposure(0, ms), 0);
    EXPECT_FLOAT_EQ(ms, 25.0f);
}

TEST_F(GenICamLive, ExposureAndGainMovedInTheSettingsDialog_ReachTheCamerasFeatures)
{
    CameraDriver& camera = w->camera().session().driver();
    ASSERT_EQ(camera.SetCamParameter(0, 7, 10000), 0);
    ASSERT_EQ(camera.SetCamParameter(0, 13, 1), 0);
    bool opened = false;
    w->camera().setDialogRunner([&](QDialog& d) {
        opened = true;
        d.show();
        // 25000 us: six whole steps of 4096 on the rough slider and the rest on the fine one.
        d.findChild<QSlider*>(QStringLiteral("sldExposureTime(0)"))->setValue(6);
        d.findChild<QSlider*>(QStringLiteral("sldExposureTime(1)"))->setValue(25000 - 6 * 4096);
        d.findChild<QSlider*>(QStringLiteral("sldGain"))->setValue(4);
        d.close();
        return 0;
    });
    QTest::mouseClick(w->findChild<QPushButton*>(QStringLiteral("cmdPinProp")), Qt::LeftButton);
    ASSERT_TRUE(opened);
    EXPECT_DOUBLE_EQ(arv_camera_get_exposure_time(driver->arvCamera(), nullptr), 25000.0);
    EXPECT_EQ(
        arv_device_get_integer_feature_value(arv_camera_get_device(driver->arvCamera()), "GainRaw", nullptr),
        4);
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(GenICamLive, FrameRateSliderOfTheSettingsDialog_SetsTheCamerasAcquisitionRate)
{
    // The dialog's clock slider drives the acquisition frame rate on this camera.
    const auto setRate = [this](int fps) {
        QString caption;
        w->camera().setDialogRunner([&](QDialog& d) {
            d.show();
            caption = d.findChild<QWidget*>(QStringLiteral("Frame3"))->property("title").toString();
            d.findChild<QSlider*>(QStringLiteral("sldClock"))->setValue(fps);
            d.close();
            return 0;
        });
        QTest::mouseClick(w->findChild<QPushButton*>(QStringLiteral("cmdPinProp")), Qt::LeftButton);
        return caption;
    };
    const auto rate = [this] {
        return arv_device_get_float_feature_value(arv_camera_get_device(driver->arvCamera()),
                                                  "AcquisitionFrameRate", nullptr);
    };
    EXPECT_EQ(setRate(4), QStringLiteral("Aquisition Framrate:"));
    EXPECT_DOUBLE_EQ(rate(), 4.0);
    setRate(25);
    EXPECT_DOUBLE_EQ(rate(), 25.0);
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(GenICamLive, ResolutionChange_StreamsAndFreezesTheNewSize)
{
    ASSERT_TRUE(waitForLiveFrames(1));
    ASSERT_TRUE(w->camera().session().changeMode(1));
    EXPECT_EQ(status(5), QStringLiteral("Resolution:640x480"));
    EXPECT_EQ(w->data().settings.DEFAULTRESOLUTION, 1);
    ASSERT_TRUE(waitForLiveFrames(2));
    EXPECT_EQ(driver->frameSize(), QSize(640, 480));
    freeze();
    EXPECT_EQ(w->camera().still().size(), QSize(640, 480));
}

TEST_F(GenICamLive, CameraLostMidStream_IsLogged_AndFreezingSaysNoPictureCanBeTaken)
{
    prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};  // the loss, then the freeze
    ASSERT_TRUE(waitForLiveFrames(2));
    w->camera().tmriCube_Timer();
    const QString frames = status(1);

    g_signal_emit_by_name(arv_camera_get_device(driver->arvCamera()), "control-lost");
    QTest::qWait(300);
    w->camera().tmriCube_Timer();

    EXPECT_TRUE(log().contains(QStringLiteral(" Error: GenICam camera lost (Aravis Fake 1)\r\n")))
        << log().toStdString();
    EXPECT_EQ(status(1), frames);  // the figures stand
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(26990));
    EXPECT_EQ(prompter.messages[0].title, w->data().messages.text(26998));
    // The frame held last is no new picture: a series or a grab gets none either.
    QImage grabbed;
    EXPECT_EQ(driver->GrabFrame(w->camera().session().camera(), grabbed), -10);
    EXPECT_EQ(driver->SaveToFile(w->camera().session().camera(), dir.file(QStringLiteral("next.bmp"))), -10);
    EXPECT_FALSE(dir.exists(QStringLiteral("next.bmp")));
    freeze();
    ASSERT_EQ(prompter.messages.size(), 2u);
    EXPECT_EQ(prompter.messages[1].text, w->data().messages.text(26999, -10));
    EXPECT_TRUE(log().contains(QStringLiteral(" Error: ICubeSDK_SaveToFile(-10)\r\n")))
        << log().toStdString();

    QElapsedTimer timer;
    timer.start();
    w.reset();  // exit closes the lost camera without waiting on it
    EXPECT_LT(timer.elapsed(), 5000);
}
