#include "FakeGigECamera.h"
#include "camera/genicam/GenICamDriver.h"

#include <gtest/gtest.h>
#include <QElapsedTimer>
#include <QMutex>
#include <QThread>

using namespace tavix;

namespace {

// Counts the frames shown and checks each is of the size expected, in the
// fake's Bayer cells as they came.
class CheckingSink : public FrameSink {
public:
    void frameReady(const FrameView& frame) override
    {
        QMutexLocker lock(&mutex);
        ++count;
        if (QSize(frame.width, frame.height) != expected || frame.raw == RawLayout::None ||
            frame.raw == RawLayout::Yuyv)
            ++wrong;
    }
    int frames()
    {
        QMutexLocker lock(&mutex);
        return count;
    }

    QMutex mutex;
    QSize expected;
    int count = 0;
    int wrong = 0;
};

// Aravis's fake GigE camera in a process of its own on 127.0.0.1, streaming
// over loopback into the driver, as a camera on the network does.
// Real time, and alone: both fake cameras answer on the GigE Vision port of
// 127.0.0.1, so two of these tests side by side would talk to each other's.
class GenICamLoopbackRealTime : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (test::FakeGigECamera::program().isEmpty())
            GTEST_SKIP() << "arv-fake-gv-camera-0.8 (package aravis-tools) is not installed";
    }

    // Opens the fake camera with the serial number `serial`; false when not found.
    bool open(GenICamDriver& driver, const QString& serial)
    {
        driver.setWantedSerial(serial);
        driver.setGigEWait(GenICamDriver::kGigEDiscovery);
        const int n = driver.Init();
        QString name;
        driver.GetName(0, name);
        logged << QStringLiteral("found %1 cameras, the first %2").arg(n).arg(name);
        return n > 0 && name.endsWith(serial) && driver.Open(0) == 0;
    }

    // Streams until `enough` says so or 20 s have passed.
    template <typename Enough>
    void streamUntil(GenICamDriver& driver, Enough enough)
    {
        QElapsedTimer t;
        t.start();
        while (!enough() && t.elapsed() < 20000)
            QThread::msleep(20);
    }

    QStringList logged;
    CheckingSink sink;
};

}  // namespace

TEST_F(GenICamLoopbackRealTime,
       At2048x1536And25Fps_EveryFrameArrivesWhole_WhileBothCoresAreBusy_BayerShownAsColour)
{
    test::FakeGigECamera camera(QStringLiteral("TAVIXLOOP1"), 0, 60);
    GenICamDriver driver([this](const QString& line) { logged.append(line); });
    ASSERT_TRUE(open(driver, QStringLiteral("TAVIXLOOP1"))) << logged.join(QLatin1Char('\n')).toStdString();
    ASSERT_EQ(driver.SetMode(0, 7), 0);
    ASSERT_EQ(driver.SetCamParameter(0, 147, 25), 0);
    sink.expected = QSize(2048, 1536);
    std::int32_t good = 0, broken = 0, brokenBefore = 0, goodBefore = 0;
    const auto counted = [&] {
        driver.GetGoodFrames(0, good);
        driver.GetBrokenFrames(0, broken);
    };
    {
        test::BusyCores busy(40);
        ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
        // The first frame may lose packets while Aravis sizes the socket buffer to the frame.
        streamUntil(driver, [&] { return counted(), good >= 1; });
        goodBefore = good;
        brokenBefore = broken;
        streamUntil(driver, [&] { return counted(), good >= goodBefore + 75; });  // three seconds of frames
    }
    EXPECT_EQ(driver.IsStarted(0), 1);
    driver.Stop(0);
    EXPECT_GE(good - goodBefore, 75);
    EXPECT_EQ(broken - brokenBefore, 0);
    EXPECT_GT(sink.frames(), 0);
    EXPECT_EQ(sink.wrong, 0);
    EXPECT_EQ(driver.frameFormat(), QImage::Format_RGB888);  // a freeze demosaics the fake's Bayer cells
}

TEST_F(GenICamLoopbackRealTime, ACameraThatLosesPacketsAndResendsNone_CountsBrokenFrames_AndShowsTheWholeOnes)
{
    test::FakeGigECamera camera(QStringLiteral("TAVIXLOOP2"), 10, 60);
    GenICamDriver driver([this](const QString& line) { logged.append(line); });
    ASSERT_TRUE(open(driver, QStringLiteral("TAVIXLOOP2"))) << logged.join(QLatin1Char('\n')).toStdString();
    // 640x480: some frames lose a packet, some do not. The camera loses its
    // answers to commands as well; a change that got none is asked again.
    int changed = -1;
    for (int attempt = 0; attempt < 3 && changed != 0; ++attempt)
        changed = driver.SetMode(0, 1);
    ASSERT_EQ(changed, 0) << logged.join(QLatin1Char('\n')).toStdString();
    ASSERT_EQ(driver.SetCamParameter(0, 147, 25), 0);
    sink.expected = QSize(640, 480);
    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    std::int32_t good = 0, broken = 0;
    streamUntil(driver, [&] {
        driver.GetGoodFrames(0, good);
        driver.GetBrokenFrames(0, broken);
        return good >= 5 && broken >= 5;
    });
    EXPECT_EQ(driver.IsStarted(0), 1);
    driver.Stop(0);
    EXPECT_GE(broken, 5);
    EXPECT_GE(good, 5);
    EXPECT_GE(sink.frames(), 1);
    EXPECT_EQ(sink.wrong, 0);
}
