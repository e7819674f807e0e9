#include "DriverWindow.h"
#include "FakeVideoDevices.h"
#include "camera/genicam/GenICamDriver.h"
#include "camera/graph/GraphDriver.h"
#include "camera/sim/SimCamera.h"

#include <gtest/gtest.h>
#include <QComboBox>
#include <QDialog>
#include <QTest>

using namespace tavix;
using tavix::test::FakeVideoDevices;

namespace {

const QString kScopeId = QStringLiteral("/dev/v4l/by-id/usb-Scope_USB_Microscope_SN42-video-index0");

// The main window on the simulated camera, a USB microscope plugged in. The
// graph camera it switches to streams a test picture (these machines have no
// video device) unless the test wants the graph file's own device tried.
class CameraChoiceWindow : public test::DriverWindow<CameraDriver> {
protected:
    void SetUp() override
    {
        DriverWindow::SetUp();
        devices.plugUvc(0, QStringLiteral("USB Microscope"), QStringLiteral("usb-0000:00:14.0-2"),
                        QStringLiteral("usb-Scope_USB_Microscope_SN42"));
        videoDevices = &devices;
        dir.write(QStringLiteral("Camera.grf"), kGraph);
        dir.write(QStringLiteral("Picture.grf"),
                  "videotestsrc is-live=true ! video/x-raw,width=640,height=480,framerate=30/1 ! "
                  "identity name=Camera\n");
        startNote =
            QStringLiteral("No ICubeSDK camera found; no GenICam camera found; using the simulated camera");
        ASSERT_TRUE(startWindow([this](AppData& data) -> std::unique_ptr<CameraDriver> {
            if (data.settings.DRIVER == QLatin1String("genicam"))
                return std::make_unique<GenICamDriver>(GenICamDriver::Log{}, data.settings.CAMERAID);
            if (data.settings.DRIVER != QLatin1String("graph")) {
                data.cameraNote = startNote;
                return std::make_unique<SimCamera>();
            }
            const QString graph =
                graphOpensItsDevice ? data.graphPath() : dir.path() + QStringLiteral("/Picture.grf");
            return std::make_unique<GraphDriver>(graph, data.settings.CAMERAFILTERNAME);
        }));
        ASSERT_TRUE(waitForLiveFrames(2));
    }

    // Opens the settings with cmdPinProp and picks `entry` from its camera list.
    QStringList chooseInSettings(int entry)
    {
        QStringList items;
        w->camera().setDialogRunner([&](QDialog& d) {
            d.show();
            auto* list = d.findChild<QComboBox*>(QStringLiteral("cboCamera"));
            EXPECT_NE(list, nullptr);
            if (!list)
                return 0;
            for (int i = 0; i < list->count(); ++i)
                items << list->itemText(i);
            shownIndex = list->currentIndex();
            list->setCurrentIndex(entry);
            emit list->activated(entry);
            d.close();
            return 0;
        });
        QTest::mouseClick(w->findChild<QPushButton*>(QStringLiteral("cmdPinProp")), Qt::LeftButton);
        return items;
    }
    QString ini() const { return QString::fromUtf8(dir.read(QStringLiteral("Tavix.Ini"))); }

    static constexpr const char* kGraph = "# the first camera\nv4l2src device=/dev/video0 name=Camera\n";
    FakeVideoDevices devices;
    bool graphOpensItsDevice = false;
    int shownIndex = -1;
    QString
        startNote;  // why auto fell back to the simulated camera  // the list's entry when the dialog opened
};

}  // namespace

TEST_F(CameraChoiceWindow, TheListOffersTheUsbCameraAndTheSimulatedOne_TheRunningOneSelected)
{
    const QStringList items = chooseInSettings(1);
    EXPECT_EQ(items, QStringList({QStringLiteral("USB Microscope (USB port 2 (0000:00:14.0))"),
                                  QStringLiteral("Simulated camera (built in)")}));
    EXPECT_EQ(shownIndex, 1);
}

TEST_F(CameraChoiceWindow, AutoFoundNoCamera_TheStatusBarSaysSo_UntilACameraIsChosen)
{
    auto* panel = w->findChild<QLabel*>(QStringLiteral("sbriCubePanel(0)"));
    EXPECT_EQ(panel->text(), QStringLiteral("Camera: sim (no camera found)"));
    EXPECT_EQ(panel->toolTip(), startNote);

    chooseInSettings(0);

    EXPECT_EQ(panel->text(), QStringLiteral("Camera: graph"));
    EXPECT_TRUE(panel->toolTip().isEmpty());
}

TEST_F(CameraChoiceWindow, ChoosingTheUsbCamera_SwitchesTheLivePicture_AndKeepsTheChoice)
{
    chooseInSettings(0);

    EXPECT_EQ(status(0), QStringLiteral("Camera: graph"));
    EXPECT_TRUE(waitForLiveFrames(3));
    EXPECT_EQ(status(5), QStringLiteral("Resolution:640x480"));
    // The graph file now names the camera by its stable path; the settings keep the driver.
    EXPECT_EQ(QString::fromUtf8(dir.read(QStringLiteral("Camera.grf"))),
              QStringLiteral("# the first camera\nv4l2src device=%1 name=Camera\n").arg(kScopeId));
    EXPECT_TRUE(ini().contains(QStringLiteral("DRIVER=graph"))) << ini().toStdString();
    EXPECT_EQ(w->camera().currentCamera().id, kScopeId);
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(CameraChoiceWindow, ACameraThatDoesNotOpen_IsReported_AndTheOneInUseGoesOn)
{
    graphOpensItsDevice = true;  // the fake's device is no real device: the pipeline cannot open it
    const QString iniBefore = ini();
    prompter.answers.push_back(Prompter::Answer::Ok);

    chooseInSettings(0);

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text,
              QStringLiteral("This camera could not be opened; the camera in use goes on: USB Microscope"));
    EXPECT_EQ(status(0), QStringLiteral("Camera: sim (no camera found)"));
    EXPECT_TRUE(waitForLiveFrames(3));
    EXPECT_EQ(QString::fromUtf8(dir.read(QStringLiteral("Camera.grf"))), QString::fromLatin1(kGraph));
    EXPECT_EQ(ini(), iniBefore);
    EXPECT_TRUE(log().contains(QStringLiteral("Camera switch: USB Microscope could not be opened")))
        << log().toStdString();
}

TEST_F(CameraChoiceWindow, ChoosingAGenICamCamera_KeepsItsSerialNumber)
{
    GenICamDriver::useFakeCameraOnly();
    const QStringList items = chooseInSettings(1);
    GenICamDriver::useRealCameras();

    ASSERT_EQ(items.size(), 3);
    EXPECT_TRUE(items[1].startsWith(QStringLiteral("Aravis Fake"))) << items[1].toStdString();
    EXPECT_EQ(status(0), QStringLiteral("Camera: genicam"));
    EXPECT_TRUE(waitForLiveFrames(2));
    const QString serial = w->camera().currentCamera().id;
    EXPECT_FALSE(serial.isEmpty());
    EXPECT_TRUE(ini().contains(QStringLiteral("DRIVER=genicam"))) << ini().toStdString();
    EXPECT_TRUE(ini().contains(QStringLiteral("CAMERAID=") + serial)) << ini().toStdString();
    EXPECT_EQ(w->data().settings.CAMERAID, serial);
}
