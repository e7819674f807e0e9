#include "../../calib/PrintQt.h"
#include "DriverWindow.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraViewWidget.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTabWidget>
#include <QTest>
#include <QToolTip>

using namespace tavix;

namespace {

// The camera settings dialog opened from the running main window on the simulated camera.
class CameraSettings : public test::DriverWindow<SimCamera> {
protected:
    void SetUp() override
    {
        DriverWindow::SetUp();
        ASSERT_TRUE(startWindow([](AppData&) {
            auto camera = std::make_unique<SimCamera>();
            camera->setNoise(false);
            return camera;
        }));
        ASSERT_TRUE(waitForLiveFrames(1));
    }

    // Opens the dialog with cmdPinProp and lets `drive` work it while it shows.
    void openSettings(const std::function<void(QDialog&)>& drive)
    {
        w->camera().setDialogRunner([&](QDialog& d) {
            d.show();
            drive(d);
            d.close();
            return 0;
        });
        QTest::mouseClick(w->findChild<QPushButton*>(QStringLiteral("cmdPinProp")), Qt::LeftButton);
    }

    // The live picture as shown, after the camera has taken the change in.
    QImage liveAfterChange()
    {
        EXPECT_TRUE(waitForLiveFrames(3));
        return w->camera().liveView().current().copy();
    }
    static double meanGrey(const QImage& image)
    {
        double sum = 0;
        int n = 0;
        for (int y = 0; y < image.height(); y += 2)
            for (int x = 0; x < image.width(); x += 2, ++n)
                sum += qGray(image.pixel(x, y));
        return sum / n;
    }
    static double difference(const QImage& a, const QImage& b)
    {
        double sum = 0;
        int n = 0;
        for (int y = 0; y < a.height(); y += 2)
            for (int x = 0; x < a.width(); x += 2, ++n)
                sum += std::abs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y)));
        return sum / n;
    }
    template <typename T>
    static T* find(QWidget& parent, const char* name)
    {
        auto* child = parent.findChild<T*>(QLatin1String(name));
        EXPECT_TRUE(child) << name;
        return child;
    }
};

}  // namespace

TEST_F(CameraSettings, PinProp_OpensTheModalSettingsDialog_WithItsTabsAndButtons)
{
    auto* pinProp = find<QPushButton>(*w, "cmdPinProp");
    EXPECT_EQ(pinProp->text(), w->data().messages.text(40011));
    bool opened = false;
    openSettings([&](QDialog& d) {
        opened = true;
        EXPECT_EQ(d.objectName(), QStringLiteral("frmiCubeProp"));
        EXPECT_EQ(d.windowTitle(), QStringLiteral("Settings"));
        EXPECT_TRUE(d.isModal());
        EXPECT_EQ(find<QTabWidget>(d, "SSTab1")->count(), 3);
        EXPECT_EQ(find<QPushButton>(d, "cmdAWB")->text(), QStringLiteral("White balance"));
        EXPECT_EQ(find<QPushButton>(d, "cmdDefault")->text(), QStringLiteral("Default"));
        EXPECT_EQ(find<QPushButton>(d, "cmdClose")->text(), QStringLiteral("Close"));
        EXPECT_EQ(find<QCheckBox>(d, "chkTNR")->text(), QStringLiteral("TNR(temporal noise reduction)"));
        EXPECT_EQ(find<QGroupBox>(d, "Frame3")->title(), QStringLiteral("Clock:"));
        EXPECT_EQ(find<QLabel>(d, "lblClockUnit")->text(), QStringLiteral("MHz"));
        EXPECT_EQ(find<QLabel>(d, "lblCurrentResolution")->text(), QStringLiteral("1280x1024"));
        EXPECT_EQ(find<QComboBox>(d, "cboResolution")->currentText(), QStringLiteral("1280x1024"));
        EXPECT_EQ(find<QSlider>(d, "sldGamma")->value(), 64);
        EXPECT_EQ(find<QLabel>(d, "lblGamma")->text(), QStringLiteral("1.0"));
        // The live view runs on behind the dialog.
        EXPECT_TRUE(waitForLiveFrames(2));
    });
    EXPECT_TRUE(opened);
}

TEST_F(CameraSettings, ExposureSlider_BrightensTheLivePicture)
{
    openSettings([&](QDialog& d) {
        const double before = meanGrey(liveAfterChange());
        auto* fine = find<QSlider>(d, "sldExposureTime(1)");
        fine->setValue(2400);
        EXPECT_EQ(find<QLabel>(d, "lblExposureTime")->text(), QStringLiteral("50.0"));
        EXPECT_EQ(fine->toolTip(), QStringLiteral("50.0"));
        EXPECT_GT(meanGrey(liveAfterChange()), before + 20);
    });
}

TEST_F(CameraSettings, FlipVertical_MirrorsTheLivePicture)
{
    openSettings([&](QDialog& d) {
        const QImage before = liveAfterChange();
        QTest::mouseClick(find<QCheckBox>(d, "chkFlipV"), Qt::LeftButton, {}, QPoint(8, 8));
        const QImage after = liveAfterChange();
        ASSERT_EQ(after.size(), before.size());
        EXPECT_LT(difference(after, before.mirrored(false, true)), 0.5 * difference(after, before));
    });
}

TEST_F(CameraSettings, SliderTip_ShowsTheValueWhileDragging)
{
    openSettings([&](QDialog& d) {
        find<QTabWidget>(d, "SSTab1")->setCurrentIndex(1);
        auto* hue = find<QSlider>(d, "sldHue");
        hue->setSliderDown(true);
        hue->setValue(45);
        EXPECT_EQ(find<QLabel>(d, "lblHue")->text(), QStringLiteral("45"));
        EXPECT_EQ(QToolTip::text(), QStringLiteral("45"));
        hue->setSliderDown(false);
    });
}

TEST_F(CameraSettings, Resolution_ChangesTheLiveViewStatusBarAndSettingsFile)
{
    openSettings([&](QDialog& d) {
        auto* combo = find<QComboBox>(d, "cboResolution");
        const int index = combo->findText(QStringLiteral("640x480"));
        ASSERT_GE(index, 0);
        combo->setCurrentIndex(index);
        emit combo->activated(index);
        EXPECT_EQ(find<QLabel>(d, "lblCurrentResolution")->text(), QStringLiteral("640x480"));
        EXPECT_EQ(find<QLabel>(*w, "sbriCubePanel(5)")->text(), QStringLiteral("Resolution:640x480"));
        EXPECT_TRUE(waitForLiveFrames(2));
    });
    EXPECT_EQ(driver->latestFrame().size(), QSize(640, 480));
    const QSize shown = w->camera().cameraView()->size();
    EXPECT_NEAR(double(shown.width()) / shown.height(), 640.0 / 480.0, 0.01);
    w->setConfirmOnClose(false);
    w->close();
    EXPECT_TRUE(QString::fromUtf8(dir.read(QStringLiteral("Tavix.Ini")))
                    .contains(QStringLiteral("DEFAULTRESOLUTION=1\r\n")));
}

TEST_F(CameraSettings, PinProp_IsDisabledWhileAStillIsShown)
{
    auto* pinProp = find<QPushButton>(*w, "cmdPinProp");
    auto* playStop = find<QPushButton>(*w, "cmdPlayStop");
    EXPECT_TRUE(pinProp->isEnabled());
    QTest::mouseClick(playStop, Qt::LeftButton);
    EXPECT_FALSE(pinProp->isEnabled());
    QTest::mouseClick(playStop, Qt::LeftButton);
    EXPECT_TRUE(pinProp->isEnabled());
}

TEST_F(CameraSettings, PinProp_FitsTheStrip_AtTheSmallestWindow)
{
    w->resize(w->minimumSize());
    QCoreApplication::processEvents();
    auto* pinProp = find<QPushButton>(*w, "cmdPinProp");
    const QWidget* strip = find<QWidget>(*w, "picViewCommandArea");
    EXPECT_TRUE(strip->rect().contains(pinProp->geometry())) << pinProp->x() << " " << strip->width();
    EXPECT_LT(pinProp->fontMetrics().horizontalAdvance(pinProp->text()) + 16, pinProp->width());
    for (const auto* other : strip->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (other != pinProp && other->isVisible()) {
            EXPECT_FALSE(other->geometry().intersects(pinProp->geometry()))
                << other->objectName().toStdString();
        }
    }
}
