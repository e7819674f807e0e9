#include "CountingSink.h"
#include "FakeUvcCamera.h"
#include "ScriptedDeviceMonitor.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "camera/CameraSession.h"
#include "camera/HeldFrame.h"
#include "camera/graph/GraphDriver.h"
#include "camera/graph/GstCameraMonitor.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/Settings.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#undef signals
#include <gst/gst.h>

using namespace tavix;
using tavix::test::CountingSink;
using tavix::test::FakeUvcCamera;
using tavix::test::ScriptedDevices;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;
using Device = DeviceMonitor::Device;

namespace {

Device webcam(const char* path)
{
    Device d;
    d.path = QLatin1String(path);
    d.links = {QStringLiteral("/dev/v4l/by-id/usb-Vendor_Webcam_0001-video-index0")};
    d.card = QStringLiteral("USB Webcam");
    d.bus = QStringLiteral("usb-0000:00:14.0-2");
    return d;
}

class GraphHotplug : public ::testing::Test {
protected:
    void SetUp() override
    {
        devices.plug(webcam("/dev/video0"));
        driver = std::make_unique<GraphDriver>(
            dir.write(QStringLiteral("Camera.grf"),
                      "videotestsrc is-live=true ! video/x-raw,width=640,height=480,framerate=30/1 ! "
                      "identity name=Camera"),
            QStringLiteral("Camera"), [this](const QString& line) { logged.append(line); }, nullptr,
            [this](const GraphFile&) { return uvc.controls(); });
        driver->watchDevices(devices.monitor(), QStringLiteral("/dev/video0"));
        ASSERT_EQ(driver->Init(), 1);
        ASSERT_EQ(driver->Open(0), 0);
    }

    bool waitFrames(int frames) { return sink.waitFrames(frames); }

    GstState state() const
    {
        GstState now = GST_STATE_VOID_PENDING;
        gst_element_get_state(driver->pipeline(), &now, nullptr, 0);
        return now;
    }

    bool controlsOpen()
    {
        CamParamRange range;
        driver->GetCamParameterRange(0, 1, range);
        return range.enabled == 1;
    }

    TempDir dir;
    ScriptedDevices devices;
    FakeUvcCamera uvc = FakeUvcCamera::webcam();
    QStringList logged;
    std::unique_ptr<GraphDriver> driver;
    CountingSink sink;
};

}  // namespace

TEST_F(GraphHotplug, Unplugged_TheDeviceIsLetGoAtOnce_AndTheHeldFrameIsNoNewPicture)
{
    EXPECT_TRUE(driver->reconnects(0));
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    ASSERT_TRUE(controlsOpen());

    devices.unplug(QStringLiteral("/dev/video0"));

    EXPECT_EQ(state(), GST_STATE_NULL);
    EXPECT_FALSE(controlsOpen());
    EXPECT_EQ(driver->IsStarted(0), 0);
    EXPECT_TRUE(driver->connectionLost(0));
    EXPECT_EQ(logged.last(), QStringLiteral("graph camera unplugged (/dev/video0)"));
    const int after = sink.frames();
    QThread::msleep(200);
    EXPECT_EQ(sink.frames(), after);
    EXPECT_EQ(driver->SaveToFile(0, dir.file(QStringLiteral("gone.bmp"))), HeldFrame::kCameraLost);
    EXPECT_EQ(driver->Start(0, 0, &sink, -1, 0), GraphDriver::kDisconnected);
}

TEST_F(GraphHotplug, TheSameCameraBack_UnderAnotherDeviceFile_StreamsAgainByItself)
{
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    devices.unplug(QStringLiteral("/dev/video0"));
    ASSERT_TRUE(driver->connectionLost(0));

    devices.plug(webcam("/dev/video2"));

    EXPECT_EQ(driver->returns(), 1);
    EXPECT_FALSE(driver->connectionLost(0));
    EXPECT_EQ(driver->IsStarted(0), 1);
    EXPECT_TRUE(controlsOpen());
    EXPECT_TRUE(waitFrames(3));
    EXPECT_EQ(logged.last(), QStringLiteral("graph camera plugged in again (/dev/video2)"));
    QImage grabbed;
    EXPECT_EQ(driver->GrabFrame(0, grabbed), 0);
    // Gone again under its new file, and back once more.
    devices.unplug(QStringLiteral("/dev/video2"));
    EXPECT_TRUE(driver->connectionLost(0));
    devices.plug(webcam("/dev/video0"));
    EXPECT_EQ(driver->returns(), 2);
    EXPECT_EQ(driver->IsStarted(0), 1);
}

TEST_F(GraphHotplug, AnotherCamera_PluggedInMeanwhile_IsNotTakenForIt)
{
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    devices.unplug(QStringLiteral("/dev/video0"));
    Device other = webcam("/dev/video0");
    other.links = {QStringLiteral("/dev/v4l/by-id/usb-Other_Camera-video-index0")};
    other.card = QStringLiteral("Other Camera");
    devices.plug(other);
    EXPECT_EQ(driver->returns(), 0);
    EXPECT_TRUE(driver->connectionLost(0));
    EXPECT_EQ(state(), GST_STATE_NULL);
}

TEST_F(GraphHotplug, UnpluggedWhileStopped_ComesBackStopped_AndStartsOnRequest)
{
    devices.unplug(QStringLiteral("/dev/video0"));
    devices.plug(webcam("/dev/video1"));
    EXPECT_EQ(driver->returns(), 1);
    EXPECT_EQ(driver->IsStarted(0), 0);
    EXPECT_EQ(state(), GST_STATE_READY);
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    EXPECT_TRUE(waitFrames(1));
}

TEST_F(GraphHotplug, Close_StopsWatching)
{
    ASSERT_TRUE(devices.watched());
    ASSERT_EQ(driver->Close(0), 0);
    EXPECT_FALSE(devices.watched());
    EXPECT_FALSE(driver->reconnects(0));
}

TEST_F(GraphHotplug, AResolutionChangeWhileUnplugged_IsRefusedWithAMessage_AndTheProgramGoesOn)
{
    const MessageTable messages = test::shippedMessages();
    ErrorLog errorLog(dir.file(QStringLiteral("Error.Log")));
    Settings settings;
    ScriptedPrompter prompter;
    CameraSession session(*driver, settings, messages, errorLog, prompter);
    CameraSession::View view;
    view.sink = &sink;
    int ended = 0;
    view.endProgram = [&] { ++ended; };
    ASSERT_TRUE(session.open(view));
    const std::int32_t before = session.currentMode();
    devices.unplug(QStringLiteral("/dev/video0"));

    prompter.answers = {Prompter::Answer::Ok};
    EXPECT_FALSE(session.changeMode(before));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(27302));
    EXPECT_EQ(ended, 0);
    EXPECT_EQ(settings.DEFAULTRESOLUTION, -1);
    devices.plug(webcam("/dev/video0"));
    EXPECT_EQ(driver->IsStarted(0), 1);
}

TEST(DeviceMonitorDevice, SameCamera_ByIdNameOrCardOnTheSameBus)
{
    Device a = webcam("/dev/video0");
    Device moved = webcam("/dev/video3");
    EXPECT_TRUE(a.sameCamera(moved));
    Device noLinks = moved;
    noLinks.links.clear();
    EXPECT_TRUE(a.sameCamera(noLinks));  // same card, same bus
    noLinks.bus = QStringLiteral("usb-0000:00:14.0-3");
    EXPECT_FALSE(a.sameCamera(noLinks));  // a twin in another port
    Device bare;
    bare.path = QStringLiteral("/dev/video0");
    Device bareToo = bare;
    EXPECT_TRUE(bare.sameCamera(bareToo));
    bareToo.path = QStringLiteral("/dev/video1");
    EXPECT_FALSE(bare.sameCamera(bareToo));
}

TEST(GstCameraMonitor, LinksTo_FindsTheByIdNamesOfADeviceFile)
{
    TempDir dir;
    const QString device = dir.write(QStringLiteral("video4"), "");
    dir.write(QStringLiteral("other"), "");
    QDir(dir.path()).mkpath(QStringLiteral("by-id"));
    ASSERT_TRUE(QFile::link(device, dir.file(QStringLiteral("by-id/usb-Webcam-video-index0"))));
    ASSERT_TRUE(QFile::link(dir.file(QStringLiteral("other")), dir.file(QStringLiteral("by-id/usb-Other"))));
    EXPECT_EQ(GstCameraMonitor::linksTo(device, dir.file(QStringLiteral("by-id"))),
              QStringList{dir.file(QStringLiteral("by-id/usb-Webcam-video-index0"))});
    EXPECT_TRUE(GstCameraMonitor::linksTo(QString(), dir.file(QStringLiteral("by-id"))).isEmpty());
}

TEST(GstCameraMonitor, StartsAndStops_WithOrWithoutCameras)
{
    GstCameraMonitor monitor;
    for (const Device& d : monitor.devices())
        EXPECT_FALSE(d.path.isEmpty());
    monitor.start([](const Device&, bool) {});
    monitor.stop();
    monitor.stop();
}
