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

// Auto takes the graph camera when its graph file opens a device that is there.
TEST(CameraFactory, Auto_TakesTheGraphCamera_WhenItsDeviceExists_AndNotATestSource)
{
    TempDir folder;
    const QString device = folder.write(QStringLiteral("video0"), "");
    const QString grf =
        folder.write(QStringLiteral("Camera.grf"), ("v4l2src name=Camera device=" + device).toUtf8());
    CameraFactory::Choice choice =
        CameraFactory::create(QStringLiteral("auto"), folder.path(), {}, {grf, QStringLiteral("Camera")});
    ASSERT_NE(choice.driver, nullptr);
    EXPECT_EQ(choice.driver->driverName(), QStringLiteral("graph"));
    EXPECT_TRUE(choice.note.endsWith(QStringLiteral("; using the graph camera on ") + device))
        << choice.note.toStdString();

    QFile::remove(device);
    choice =
        CameraFactory::create(QStringLiteral("auto"), folder.path(), {}, {grf, QStringLiteral("Camera")});
    EXPECT_EQ(choice.driver->driverName(), QStringLiteral("sim"));
    EXPECT_TRUE(choice.note.endsWith(
        QStringLiteral("; the graph file opens no camera device; using the simulated camera")))
        << choice.note.toStdString();

    folder.write(QStringLiteral("Camera.grf"), "videotestsrc is-live=true name=Camera");
    choice =
        CameraFactory::create(QStringLiteral("auto"), folder.path(), {}, {grf, QStringLiteral("Camera")});
    EXPECT_EQ(choice.driver->driverName(), QStringLiteral("sim"));
}
