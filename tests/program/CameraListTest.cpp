#include "FakeVideoDevices.h"
#include "program/CameraList.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(CameraList, UsbCamerasThenGenICamThenTheSimulatedCamera)
{
    test::FakeVideoDevices devices;
    devices.plugUvc(0, QStringLiteral("Integrated Camera"), QStringLiteral("usb-0000:00:14.0-5"),
                    QStringLiteral("usb-Chicony_Integrated_Camera_0001"));
    devices.plugUvc(2, QStringLiteral("USB Microscope"), QStringLiteral("usb-0000:00:14.0-2"),
                    QStringLiteral("usb-Scope_USB_Microscope_SN42"));
    const auto genicam = [] {
        return std::vector<CameraChoice>{{QStringLiteral("genicam"), QStringLiteral("GV-0042"),
                                          QStringLiteral("Acme Area 5M"), QStringLiteral("192.168.7.20")}};
    };

    const std::vector<CameraChoice> cameras = CameraList::all(devices, genicam);

    ASSERT_EQ(cameras.size(), 4u);
    EXPECT_EQ(cameras[0].name, QStringLiteral("Integrated Camera"));
    EXPECT_EQ(cameras[1].id, QStringLiteral("/dev/v4l/by-id/usb-Scope_USB_Microscope_SN42-video-index0"));
    EXPECT_EQ(cameras[1].place, QStringLiteral("USB port 2 (0000:00:14.0)"));
    EXPECT_EQ(cameras[2].driver, QStringLiteral("genicam"));
    EXPECT_EQ(cameras[3], CameraList::simulated());
}

TEST(CameraList, NoCameras_OnlyTheSimulatedOne)
{
    test::FakeVideoDevices devices;
    const auto cameras = CameraList::all(devices, {});
    ASSERT_EQ(cameras.size(), 1u);
    EXPECT_EQ(cameras[0].driver, QStringLiteral("sim"));
}

TEST(CameraList, Text_OneTabSeparatedLineACamera)
{
    const QString text =
        CameraList::text({{QStringLiteral("graph"), QStringLiteral("/dev/video2"),
                           QStringLiteral("USB Microscope"), QStringLiteral("USB port 2 (0000:00:14.0)")},
                          CameraList::simulated()});
    EXPECT_EQ(text, QStringLiteral("graph\t/dev/video2\tUSB Microscope\tUSB port 2 (0000:00:14.0)\n"
                                   "sim\t\tSimulated camera\tbuilt in\n"));
}
