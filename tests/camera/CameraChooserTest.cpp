#include "camera/CameraChooser.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {
const CameraChoice kLaptop{QStringLiteral("graph"), QStringLiteral("/dev/v4l/by-id/usb-Laptop-video-index0"),
                           QStringLiteral("Integrated Camera"), QStringLiteral("USB port 5 (0000:00:14.0)")};
const CameraChoice kScope{QStringLiteral("graph"), QStringLiteral("/dev/v4l/by-id/usb-Scope-video-index0"),
                          QStringLiteral("USB Microscope"), QStringLiteral("USB port 2 (0000:00:14.0)")};
const CameraChoice kGigE{QStringLiteral("genicam"), QStringLiteral("GV-0042"), QStringLiteral("Acme Area 5M"),
                         QStringLiteral("192.168.7.20")};
const CameraChoice kSim{QStringLiteral("sim"), QString(), QStringLiteral("Simulated camera"), QString()};
}  // namespace

TEST(CameraChooser, Items_NameAndPlace)
{
    const CameraChooser chooser({kScope, kSim}, kSim, {});
    EXPECT_EQ(chooser.items(), QStringList({QStringLiteral("USB Microscope (USB port 2 (0000:00:14.0))"),
                                            QStringLiteral("Simulated camera")}));
}

TEST(CameraChooser, Current_ByDriverAndId_ElseTheFirstOfItsDriver)
{
    EXPECT_EQ(CameraChooser({kLaptop, kScope, kGigE, kSim}, kScope, {}).currentIndex(), 1);
    EXPECT_EQ(CameraChooser({kLaptop, kScope, kGigE, kSim}, {QStringLiteral("genicam"), {}, {}, {}}, {})
                  .currentIndex(),
              2);
    EXPECT_EQ(CameraChooser({kLaptop, kSim}, kGigE, {}).currentIndex(), -1);
}

TEST(CameraChooser, Choose_SwitchesAndFollows)
{
    std::vector<CameraChoice> asked;
    CameraChooser chooser({kLaptop, kScope, kSim}, kSim, [&](const CameraChoice& c) {
        asked.push_back(c);
        return true;
    });
    EXPECT_TRUE(chooser.choose(1));
    EXPECT_EQ(chooser.currentIndex(), 1);
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0], kScope);
}

TEST(CameraChooser, Choose_TheRunningOneDoesNothing)
{
    int asked = 0;
    CameraChooser chooser({kLaptop, kSim}, kSim, [&](const CameraChoice&) { return ++asked > 0; });
    EXPECT_FALSE(chooser.choose(1));
    EXPECT_EQ(asked, 0);
}

TEST(CameraChooser, Choose_ACameraThatCannotBeOpenedKeepsTheOneInUse)
{
    CameraChooser chooser({kLaptop, kSim}, kSim, [](const CameraChoice&) { return false; });
    EXPECT_FALSE(chooser.choose(0));
    EXPECT_EQ(chooser.currentIndex(), 1);
}

TEST(CameraChooser, Choose_OutOfRangeIsIgnored)
{
    int asked = 0;
    CameraChooser chooser({kSim}, kSim, [&](const CameraChoice&) { return ++asked > 0; });
    EXPECT_FALSE(chooser.choose(5));
    EXPECT_FALSE(chooser.choose(-1));
    EXPECT_EQ(asked, 0);
}
