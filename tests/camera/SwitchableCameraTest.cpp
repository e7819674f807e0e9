#include "camera/SwitchableCamera.h"
#include "camera/sim/SimCamera.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(SwitchableCamera, PassesEveryCallToTheCurrentDriver_AndToTheNewOneAfterAReplace)
{
    auto first = std::make_unique<SimCamera>();
    SimCamera* firstCamera = first.get();
    SwitchableCamera camera(std::move(first));
    EXPECT_EQ(camera.driverName(), QStringLiteral("sim"));
    ASSERT_GE(camera.Init(), 1);
    ASSERT_EQ(camera.Open(0), 0);
    EXPECT_EQ(firstCamera->IsOpen(0), 0);
    std::vector<std::int32_t> modes;
    EXPECT_EQ(camera.GetModeList(0, modes), 0);
    EXPECT_FALSE(modes.empty());
    EXPECT_TRUE(camera.canGrabFrame());
    EXPECT_EQ(camera.readFrame(0, [](const FrameView&) {}), SimCamera::kNoFrame);
    firstCamera->renderFrame();
    int reads = 0;
    EXPECT_EQ(camera.readFrame(0, [&](const FrameView& f) { reads += f.width > 0; }), 0);
    EXPECT_EQ(reads, 1);
    EXPECT_EQ(camera.Close(0), 0);

    auto second = std::make_unique<SimCamera>();
    SimCamera* secondCamera = second.get();
    std::unique_ptr<CameraDriver> old = camera.replace(std::move(second));
    EXPECT_EQ(old.get(), firstCamera);
    EXPECT_EQ(&camera.current(), secondCamera);
    ASSERT_GE(camera.Init(), 1);
    ASSERT_EQ(camera.Open(0), 0);
    EXPECT_EQ(secondCamera->IsOpen(0), 0);
    EXPECT_NE(firstCamera->IsOpen(0), 0);
    camera.Close(0);
}
