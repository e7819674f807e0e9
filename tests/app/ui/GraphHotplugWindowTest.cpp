#include "DriverWindow.h"
#include "ScriptedDeviceMonitor.h"
#include "camera/LiveView.h"
#include "camera/graph/GraphDriver.h"

#include <gtest/gtest.h>
#include <QPushButton>

using namespace tavix;

namespace {

// A live source whose picture moves, so that a new still differs from an old one.
constexpr char kMovingCamera[] =
    "videotestsrc is-live=true pattern=ball !\n"
    "video/x-raw,width=640,height=480,framerate=30/1 !\n"
    "identity name=Camera\n";

DeviceMonitor::Device webcam(const char* path)
{
    DeviceMonitor::Device d;
    d.path = QLatin1String(path);
    d.links = {QStringLiteral("/dev/v4l/by-id/usb-Vendor_Microscope-video-index0")};
    return d;
}

class GraphHotplugWindow : public test::DriverWindow<GraphDriver> {
protected:
    bool start()
    {
        devices.plug(webcam("/dev/video0"));
        dir.write(QStringLiteral("Camera.grf"), kMovingCamera);
        return startWindow([this](AppData& data) {
            auto made =
                std::make_unique<GraphDriver>(data.graphPath(), data.settings.CAMERAFILTERNAME,
                                              [log = data.log](const QString& line) { log.write(line); });
            made->watchDevices(devices.monitor(), QStringLiteral("/dev/video0"));
            return made;
        });
    }
    QString message(int id) const { return w->data().messages.text(id); }

    test::ScriptedDevices devices;
};

}  // namespace

TEST_F(GraphHotplugWindow, Unplugged_ANoteAndTheStillKept_PluggedInAgain_LiveWithoutARestart)
{
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitForLiveFrames(2));
    freeze();
    ASSERT_TRUE(w->camera().stillShown());
    const QImage still = w->camera().still();
    ASSERT_EQ(still.size(), QSize(640, 480));

    devices.unplug(QStringLiteral("/dev/video0"));
    w->camera().tmriCube_Timer();
    EXPECT_EQ(status(0), message(27300));
    EXPECT_TRUE(prompter.messages.empty());  // no box that asks for a restart
    EXPECT_TRUE(w->camera().stillShown());
    EXPECT_EQ(w->camera().still(), still);

    // Back to the live picture; a freeze now has nothing new to give and says so.
    freeze();
    ASSERT_FALSE(w->camera().stillShown());
    prompter.answers = {Prompter::Answer::Ok};
    freeze();
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, message(27302));
    EXPECT_FALSE(w->camera().stillShown());
    EXPECT_EQ(w->camera().still(), still);

    devices.plug(webcam("/dev/video1"));
    ASSERT_TRUE(waitForLiveFrames(3));
    w->camera().tmriCube_Timer();
    EXPECT_EQ(status(0), message(27301));
    freeze();
    ASSERT_TRUE(w->camera().stillShown());
    // A new picture, though not always another one: the source's ball starts over with the stream.
    EXPECT_EQ(w->camera().still().size(), QSize(640, 480));
    EXPECT_TRUE(w->isVisible());
    EXPECT_EQ(prompter.messages.size(), 1u);
}
