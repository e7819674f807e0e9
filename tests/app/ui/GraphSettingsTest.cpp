#include "DriverWindow.h"
#include "FakeUvcCamera.h"
#include "camera/graph/GraphDriver.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

using namespace tavix;
using tavix::test::FakeUvcCamera;

namespace {

// The settings dialog on the graph camera, its controls a fake USB webcam's.
class GraphSettings : public test::DriverWindow<GraphDriver> {
protected:
    void SetUp() override
    {
        DriverWindow::SetUp();
        dir.write(QStringLiteral("Camera.grf"),
                  "videotestsrc is-live=true ! video/x-raw,width=640,height=480,framerate=30/1 ! "
                  "identity name=Camera\n");
    }

    bool start()
    {
        const FakeUvcCamera device = webcam;
        return startWindow([device](AppData& data) {
            return std::make_unique<GraphDriver>(data.graphPath(), data.settings.CAMERAFILTERNAME,
                                                 GraphDriver::Log{}, nullptr,
                                                 [device](const GraphFile&) { return device.controls(); });
        });
    }

    // Opens the dialog with cmdPinProp and lets `drive` work it while it shows.
    void openSettings(const std::function<void(QDialog&)>& drive)
    {
        bool opened = false;
        w->camera().setDialogRunner([&](QDialog& d) {
            opened = true;
            d.show();
            drive(d);
            d.close();
            return 0;
        });
        QTest::mouseClick(w->findChild<QPushButton*>(QStringLiteral("cmdPinProp")), Qt::LeftButton);
        EXPECT_TRUE(opened);
    }
    template <typename T>
    static T* find(QWidget& parent, const char* name)
    {
        auto* child = parent.findChild<T*>(QLatin1String(name));
        EXPECT_TRUE(child) << name;
        return child;
    }
    static void showTab(QDialog& d, int index)
    {
        QTabBar* bar = find<QTabWidget>(d, "SSTab1")->tabBar();
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(index).center());
        ASSERT_EQ(find<QTabWidget>(d, "SSTab1")->currentIndex(), index);
    }
    static void tick(QDialog& d, const char* box)
    {
        QTest::mouseClick(find<QCheckBox>(d, box), Qt::LeftButton, {}, QPoint(8, 8));
    }
    static QString text(QDialog& d, const char* label) { return find<QLabel>(d, label)->text(); }

    FakeUvcCamera webcam = FakeUvcCamera::webcam();
};

}  // namespace

TEST_F(GraphSettings, SlidersMovedByKey_WriteTheWebcamsControls_AndShowWhatTheyRead)
{
    ASSERT_TRUE(start());
    openSettings([&](QDialog& d) {
        // Video: automatic exposure as the camera comes, switched off, then a page up on Fine.
        EXPECT_TRUE(find<QCheckBox>(d, "chkExposureTime")->isChecked());
        EXPECT_FALSE(find<QSlider>(d, "sldExposureTime(1)")->isEnabled());
        tick(d, "chkExposureTime");
        EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_MANUAL);
        auto* fine = find<QSlider>(d, "sldExposureTime(1)");
        ASSERT_TRUE(fine->isEnabled());
        EXPECT_FALSE(find<QSlider>(d, "sldExposureTime(0)")->isEnabled());  // 2047 at most: Fine alone
        EXPECT_EQ(fine->maximum(), 2047);
        QTest::keyClick(fine, Qt::Key_PageUp);
        EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_ABSOLUTE), 260);
        EXPECT_EQ(text(d, "lblExposureTime"), QStringLiteral("26.0"));

        // Color: brightness one step, gamma to its end.
        showTab(d, 1);
        QTest::keyClick(find<QSlider>(d, "sldBrightness"), Qt::Key_Right);
        EXPECT_EQ(webcam.value(V4L2_CID_BRIGHTNESS), 1);
        EXPECT_EQ(text(d, "lblBrightness"), QStringLiteral("1"));
        auto* gamma = find<QSlider>(d, "sldGamma");
        EXPECT_EQ(gamma->value(), 64);
        EXPECT_EQ(text(d, "lblGamma"), QStringLiteral("1.0"));
        QTest::keyClick(gamma, Qt::Key_End);
        EXPECT_EQ(webcam.value(V4L2_CID_GAMMA), 500);
        EXPECT_EQ(text(d, "lblGamma"), QStringLiteral("5.0"));

        // Light & focus: the white balance by hand, the power line, the frame rate, the focus.
        showTab(d, 2);
        auto* temperature = find<QSlider>(d, "sldWhiteBalanceTemperature");
        EXPECT_FALSE(temperature->isEnabled());
        EXPECT_EQ(text(d, "lblWhiteBalanceTemperature"), QStringLiteral("auto"));
        tick(d, "chkWhiteBalanceTemperature");
        EXPECT_EQ(webcam.value(V4L2_CID_AUTO_WHITE_BALANCE), 0);
        ASSERT_TRUE(temperature->isEnabled());
        EXPECT_EQ(temperature->value(), 4600);
        QTest::keyClick(temperature, Qt::Key_PageUp);
        EXPECT_EQ(webcam.value(V4L2_CID_WHITE_BALANCE_TEMPERATURE), 4610);
        EXPECT_EQ(text(d, "lblWhiteBalanceTemperature"), QStringLiteral("4610"));

        auto* powerLine = find<QComboBox>(d, "cboPowerLineFrequency");
        EXPECT_EQ(powerLine->currentText(), QStringLiteral("50 Hz"));
        QTest::keyClick(powerLine, Qt::Key_Down);
        EXPECT_EQ(powerLine->currentText(), QStringLiteral("60 Hz"));
        EXPECT_EQ(webcam.value(V4L2_CID_POWER_LINE_FREQUENCY), 2);

        tick(d, "chkDynamicFrameRate");
        EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_AUTO_PRIORITY), 1);

        tick(d, "chkFocus");
        EXPECT_EQ(webcam.value(V4L2_CID_FOCUS_AUTO), 0);
        auto* focus = find<QSlider>(d, "sldFocus");
        ASSERT_TRUE(focus->isEnabled());
        QTest::keyClick(focus, Qt::Key_PageUp);
        EXPECT_EQ(webcam.value(V4L2_CID_FOCUS_ABSOLUTE), 10);
        EXPECT_EQ(text(d, "lblFocus"), QStringLiteral("10"));
    });
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_FALSE(log().contains(QStringLiteral("Error"))) << log().toStdString();
}

TEST_F(GraphSettings, ControlsTheWebcamLacks_AreGreyed_AutoBoxesToo)
{
    for (const std::uint32_t id : {V4L2_CID_FOCUS_AUTO, V4L2_CID_FOCUS_ABSOLUTE,
                                   V4L2_CID_POWER_LINE_FREQUENCY, V4L2_CID_EXPOSURE_AUTO_PRIORITY})
        webcam.remove(id);
    ASSERT_TRUE(start());
    openSettings([&](QDialog& d) {
        showTab(d, 2);
        EXPECT_FALSE(find<QSlider>(d, "sldFocus")->isEnabled());
        EXPECT_FALSE(find<QCheckBox>(d, "chkFocus")->isEnabled());
        EXPECT_EQ(text(d, "lblFocus"), QString());
        EXPECT_FALSE(find<QComboBox>(d, "cboPowerLineFrequency")->isEnabled());
        EXPECT_FALSE(find<QCheckBox>(d, "chkDynamicFrameRate")->isEnabled());
        EXPECT_TRUE(find<QCheckBox>(d, "chkWhiteBalanceTemperature")->isEnabled());
    });
    EXPECT_TRUE(prompter.messages.empty());
}

// A webcam that offers several rates at its size: the frame-rate slider picks among them.
TEST_F(GraphSettings, FrameRateSlider_OffersTheWebcamsRates_AndRestartsTheStreamAtTheChosenOne)
{
    dir.write(QStringLiteral("Camera.grf"),
              "videotestsrc is-live=true ! video/x-raw,width=640,height=480,framerate={30/1,15/1,5/1} ! "
              "identity name=Camera\n");
    ASSERT_TRUE(start());
    openSettings([&](QDialog& d) {
        auto* rate = find<QSlider>(d, "sldClock");
        ASSERT_TRUE(rate->isEnabled());
        EXPECT_EQ(rate->minimum(), 5);
        EXPECT_EQ(rate->maximum(), 30);
        EXPECT_EQ(rate->value(), 30);
        EXPECT_EQ(text(d, "lblClockUnit"), QStringLiteral("fps"));
        rate->setValue(15);
        EXPECT_EQ(text(d, "lblClock"), QStringLiteral("15"));
    });
    std::int32_t fps = 0;
    ASSERT_EQ(w->camera().session().driver().GetCamParameter(0, 147, fps), 0);
    EXPECT_EQ(fps, 15);
    ASSERT_TRUE(waitForLiveFrames(2));
    EXPECT_DOUBLE_EQ(driver->arrivingFps(), 15.0);
    EXPECT_TRUE(prompter.messages.empty());
}
