#include "FakeVideoDevices.h"
#include "TempDir.h"
#include "camera/genicam/GenICamDriver.h"
#include "common/CameraDrivers.h"
#include "program/CameraFactory.h"

#include <gtest/gtest.h>
#include <QFile>

using namespace tavix;
using tavix::test::TempDir;

// Every name the settings accept makes a driver; a named driver is the one asked for.
TEST(CameraFactory, EveryKnownName_MakesADriver)
{
    TempDir folder;  // no vendor library here: auto falls back to the simulated camera
    for (const QString& name : kCameraDrivers) {
        const CameraFactory::Choice choice = CameraFactory::create(name, folder.path());
        ASSERT_NE(choice.driver, nullptr) << name.toStdString();
        if (name == QLatin1String("auto"))
            EXPECT_EQ(choice.driver->driverName(), QStringLiteral("sim"));
        else
            EXPECT_EQ(choice.driver->driverName(), name);
    }
}

// With no vendor library, auto goes on to a GenICam camera when one is found.
TEST(CameraFactory, Auto_TakesAGenICamCamera_WhenTheVendorLibraryIsMissing)
{
    TempDir folder;
    GenICamDriver::useFakeCameraOnly();
    const CameraFactory::Choice choice = CameraFactory::create(QStringLiteral("auto"), folder.path());
    GenICamDriver::useRealCameras();
    ASSERT_NE(choice.driver, nullptr);
    EXPECT_EQ(choice.driver->driverName(), QStringLiteral("genicam"));
    EXPECT_TRUE(choice.note.endsWith(QStringLiteral("; using a GenICam camera")))
        << choice.note.toStdString();
}

// Auto takes the graph camera when its graph file opens a video capture device.
TEST(CameraFactory, Auto_TakesTheGraphCamera_WhenItsDeviceCaptures_AndNotATestSource)
{
    TempDir folder;
    test::FakeVideoDevices devices;
    devices.plugUvc(0, QStringLiteral("USB Microscope"), QStringLiteral("usb-0000:00:14.0-2"),
                    QStringLiteral("usb-Scope_USB_Microscope_SN42"));
    const QString grf = folder.write(QStringLiteral("Camera.grf"), "v4l2src name=Camera device=/dev/video0");
    const CameraFactory::GraphSource source{grf, QStringLiteral("Camera"), &devices};
    CameraFactory::Choice choice = CameraFactory::create(QStringLiteral("auto"), folder.path(), {}, source);
    ASSERT_NE(choice.driver, nullptr);
    EXPECT_EQ(choice.driver->driverName(), QStringLiteral("graph"));
    EXPECT_TRUE(choice.note.endsWith(QStringLiteral("; using the graph camera on /dev/video0")))
        << choice.note.toStdString();

    // By its stable link as well.
    folder.write(QStringLiteral("Camera.grf"),
                 "v4l2src name=Camera device=/dev/v4l/by-id/usb-Scope_USB_Microscope_SN42-video-index0");
    choice = CameraFactory::create(QStringLiteral("auto"), folder.path(), {}, source);
    EXPECT_EQ(choice.driver->driverName(), QStringLiteral("graph"));

    devices.unplug(QStringLiteral("USB Microscope"));
    choice = CameraFactory::create(QStringLiteral("auto"), folder.path(), {}, source);
    EXPECT_EQ(choice.driver->driverName(), QStringLiteral("sim"));
    EXPECT_TRUE(choice.note.endsWith(
        QStringLiteral("; the graph file opens no camera device; using the simulated camera")))
        << choice.note.toStdString();

    folder.write(QStringLiteral("Camera.grf"), "videotestsrc is-live=true name=Camera");
    choice = CameraFactory::create(QStringLiteral("auto"), folder.path(), {}, source);
    EXPECT_EQ(choice.driver->driverName(), QStringLiteral("sim"));
}

// A UVC camera's metadata node, or any file that is no video device, is never
// taken: the start-up would end on a device that cannot stream.
TEST(CameraFactory, Auto_LeavesANodeThatCannotStream_AndNamesTheCamerasThereAre)
{
    TempDir folder;
    test::FakeVideoDevices devices;
    devices.plugUvc(0, QStringLiteral("Integrated Camera"), QStringLiteral("usb-0000:00:14.0-5"),
                    QStringLiteral("usb-Chicony_Integrated_Camera_0001"));
    const QString grf = folder.write(QStringLiteral("Camera.grf"), "v4l2src name=Camera device=/dev/video1");
    const CameraFactory::Choice choice = CameraFactory::create(QStringLiteral("auto"), folder.path(), {},
                                                               {grf, QStringLiteral("Camera"), &devices});
    EXPECT_EQ(choice.driver->driverName(), QStringLiteral("sim"));
    EXPECT_TRUE(choice.note.endsWith(QStringLiteral(
        "; the graph file opens no camera device (/dev/video1 is none; cameras: Integrated Camera "
        "(/dev/v4l/by-id/usb-Chicony_Integrated_Camera_0001-video-index0)); using the simulated camera")))
        << choice.note.toStdString();

    // A plain file where the device should be.
    const QString plain = folder.write(QStringLiteral("video0"), "");
    folder.write(QStringLiteral("Camera.grf"), ("v4l2src name=Camera device=" + plain).toUtf8());
    EXPECT_EQ(
        CameraFactory::create(QStringLiteral("auto"), folder.path(), {}, {grf, QStringLiteral("Camera")})
            .driver->driverName(),
        QStringLiteral("sim"));
}
