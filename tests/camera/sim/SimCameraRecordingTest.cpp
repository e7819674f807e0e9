#include "camera/sim/SimCamera.h"

#include "AviProbe.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

namespace tavix {
namespace {

constexpr int kAviWriting = 24;

// An unthreaded camera at 640 x 480 whose frames the test makes on its clock.
class SimCameraRecording : public ::testing::Test {
protected:
    void SetUp() override
    {
        SimCamera::Options o;
        o.modes = {1};
        o.defaultMode = 1;
        o.threaded = false;
        o.noise = false;
        cam = std::make_unique<SimCamera>(o, &clock);
        cam->Init();
        cam->Open(0);
    }

    std::int32_t writing()
    {
        std::int32_t value = -1;
        EXPECT_EQ(cam->GetCamParameter(0, kAviWriting, value), 0);
        return value;
    }

    // Frames one period apart on the camera's clock, with a little real
    // time for the encoder between them.
    void deliver(int count)
    {
        const int period = static_cast<int>(cam->framePeriodMs() + 0.5);
        for (int i = 0; i < count; ++i) {
            cam->produceFrame();
            clock.advance(period);
            QThread::msleep(5);
        }
    }

    bool waitWritten()
    {
        QElapsedTimer timer;
        timer.start();
        while (writing() != 0 && timer.elapsed() < 10000)
            QThread::msleep(10);
        return writing() == 0;
    }

    test::TempDir dir;
    ManualClock clock;
    std::unique_ptr<SimCamera> cam;
};

TEST_F(SimCameraRecording, SaveAvi_WhileNotStreaming_FailsWithNoFrame)
{
    EXPECT_EQ(cam->SaveAvi(0, dir.file(QStringLiteral("a.avi")), 0, 1), SimCamera::kNoFrame);
    EXPECT_EQ(writing(), 0);
}

TEST_F(SimCameraRecording, Parameter24_IsNonZeroUntilTheFileIsClosed)
{
    ASSERT_EQ(cam->Start(0, 0, nullptr, -1, 0), 0);
    EXPECT_EQ(writing(), 0);
    const QString path = dir.file(QStringLiteral("clip.avi"));
    ASSERT_EQ(cam->SaveAvi(0, path, 0, 1), 0);
    EXPECT_EQ(writing(), 1);
    deliver(10);
    EXPECT_EQ(writing(), 1);  // a tenth of the second
    deliver(100);
    ASSERT_TRUE(waitWritten());

    const double fps = 1000.0 / cam->framePeriodMs();
    const test::AviProbe probe = test::AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(probe.width, 640);
    EXPECT_EQ(probe.height, 480);
    EXPECT_NEAR(probe.fps, fps, 0.01);
    EXPECT_NEAR(probe.frames, fps, 1);
    RecordingStats stats;
    ASSERT_TRUE(cam->recordingStats(0, stats));
    EXPECT_TRUE(stats.finished);
    EXPECT_EQ(stats.path, path);
}

TEST_F(SimCameraRecording, Stop_CompletesTheFileWithTheFramesSoFar)
{
    ASSERT_EQ(cam->Start(0, 0, nullptr, -1, 0), 0);
    const QString path = dir.file(QStringLiteral("cut.avi"));
    ASSERT_EQ(cam->SaveAvi(0, path, 0, 30), 0);
    deliver(10);
    ASSERT_EQ(cam->Stop(0), 0);
    ASSERT_TRUE(waitWritten());
    const test::AviProbe probe = test::AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_NEAR(probe.frames, 10, 1);
}

TEST_F(SimCameraRecording, Parameter24_IsReadOnly)
{
    EXPECT_EQ(cam->SetCamParameter(0, kAviWriting, 1), SimCamera::kReadOnly);
}

}  // namespace
}  // namespace tavix
