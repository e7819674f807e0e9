#include "FakeVideoDevices.h"
#include "camera/graph/LinuxVideoDevices.h"
#include "camera/graph/VideoDevices.h"

#include <gtest/gtest.h>

using namespace tavix;
using tavix::test::FakeVideoDevices;

namespace {

const QString kLaptopLink = QStringLiteral("usb-Chicony_Integrated_Camera_0001");
const QString kScopeLink = QStringLiteral("usb-Scope_USB_Microscope_SN42");

struct TwoCameras : ::testing::Test {
    TwoCameras()
    {
        system.plugUvc(0, QStringLiteral("Integrated Camera"), QStringLiteral("usb-0000:00:14.0-5"),
                       kLaptopLink);
        system.plugUvc(2, QStringLiteral("USB Microscope"), QStringLiteral("usb-0000:00:14.0-2.1"),
                       kScopeLink);
    }
    FakeVideoDevices system;
    VideoDevices devices{system};
};

}  // namespace

TEST_F(TwoCameras, Cameras_SkipTheMetadataNodes)
{
    const auto cameras = devices.cameras();
    ASSERT_EQ(cameras.size(), 2u);
    EXPECT_EQ(cameras[0].node, QStringLiteral("/dev/video0"));
    EXPECT_EQ(cameras[0].card, QStringLiteral("Integrated Camera"));
    EXPECT_EQ(cameras[1].node, QStringLiteral("/dev/video2"));
    EXPECT_EQ(cameras[1].card, QStringLiteral("USB Microscope"));
}

TEST_F(TwoCameras, Cameras_AreKnownByTheirCaptureNodesByIdLink)
{
    const auto cameras = devices.cameras();
    ASSERT_EQ(cameras.size(), 2u);
    EXPECT_EQ(cameras[1].byId,
              QStringLiteral("/dev/v4l/by-id/") + kScopeLink + QStringLiteral("-video-index0"));
    EXPECT_EQ(cameras[1].stablePath(), cameras[1].byId);
}

TEST_F(TwoCameras, Cameras_InNodeNumberOrderNotTextOrder)
{
    system.add(10,
               {QStringLiteral("Late"), QStringLiteral("usb-0000:00:14.0-7"), FakeVideoDevices::kCapture});
    const auto cameras = devices.cameras();
    ASSERT_EQ(cameras.size(), 3u);
    EXPECT_EQ(cameras[2].node, QStringLiteral("/dev/video10"));
}

TEST_F(TwoCameras, Cameras_ANodeThatCannotBeOpenedIsLeftOut)
{
    system.failOpen(0, EACCES);
    const auto cameras = devices.cameras();
    ASSERT_EQ(cameras.size(), 1u);
    EXPECT_EQ(cameras[0].card, QStringLiteral("USB Microscope"));
}

TEST_F(TwoCameras, Find_ByTheByIdLinkAfterAReplugUnderAnotherNode)
{
    const QString link = devices.cameras()[1].byId;
    system.unplug(QStringLiteral("USB Microscope"));
    EXPECT_FALSE(devices.find(link).has_value());
    system.plugUvc(4, QStringLiteral("USB Microscope"), QStringLiteral("usb-0000:00:14.0-2.1"), kScopeLink);
    const auto back = devices.find(link);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->node, QStringLiteral("/dev/video4"));
}

TEST_F(TwoCameras, Find_TheMetadataNodeIsNoCamera)
{
    EXPECT_FALSE(devices.find(QStringLiteral("/dev/video1")).has_value());
    EXPECT_FALSE(
        devices.find(QStringLiteral("/dev/v4l/by-id/") + kScopeLink + QStringLiteral("-video-index1")));
    EXPECT_TRUE(devices.find(QStringLiteral("/dev/video2")).has_value());
}

TEST_F(TwoCameras, ChoiceOf_NamesTheCardAndThePort)
{
    const CameraChoice choice = VideoDevices::choiceOf(devices.cameras()[1]);
    EXPECT_EQ(choice.driver, QStringLiteral("graph"));
    EXPECT_EQ(choice.id, QStringLiteral("/dev/v4l/by-id/") + kScopeLink + QStringLiteral("-video-index0"));
    EXPECT_EQ(choice.name, QStringLiteral("USB Microscope"));
    EXPECT_EQ(choice.place, QStringLiteral("USB port 2.1 (0000:00:14.0)"));
}

TEST(VideoDevices, ADeviceWithoutLinkIsKeptByItsNode)
{
    FakeVideoDevices system;
    system.add(
        3, {QStringLiteral("Capture card"), QStringLiteral("PCI:0000:03:00.0"), FakeVideoDevices::kCapture});
    const auto cameras = VideoDevices(system).cameras();
    ASSERT_EQ(cameras.size(), 1u);
    EXPECT_EQ(cameras[0].stablePath(), QStringLiteral("/dev/video3"));
    EXPECT_EQ(VideoDevices::choiceOf(cameras[0]).place, QStringLiteral("PCI:0000:03:00.0"));
}

TEST(VideoDevices, NoDevicesNoCameras)
{
    FakeVideoDevices system;
    EXPECT_TRUE(VideoDevices(system).cameras().empty());
}

TEST(LinuxVideoDevices, ANodeThatIsNoVideoDeviceAnswersItsErrno)
{
    LinuxVideoDevices system;
    VideoDeviceSystem::Capability cap;
    EXPECT_EQ(system.queryCapability(QStringLiteral("/dev/null"), cap), ENOTTY);
    EXPECT_EQ(system.queryCapability(QStringLiteral("/dev/no-such-video"), cap), ENOENT);
}

TEST(LinuxVideoDevices, NodesAreTheVideoFilesOfDev)
{
    for (const QString& node : LinuxVideoDevices().nodes())
        EXPECT_TRUE(node.startsWith(QLatin1String("/dev/video"))) << node.toStdString();
}
