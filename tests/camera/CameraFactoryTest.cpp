#include "TempDir.h"
#include "camera/CameraFactory.h"
#include "camera/GenICamDriver.h"
#include "common/CameraDrivers.h"

#include <gtest/gtest.h>

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
