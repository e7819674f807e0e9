#include "AviProbe.h"
#include "AviRiff.h"
#include "DriverWindow.h"
#include "camera/LiveView.h"
#include "camera/genicam/GenICamDriver.h"
#include "camera/graph/GraphDriver.h"
#include "files/VideoRecording.h"
#include "files/ui/IntervalSavePanel.h"
#include "files/ui/RecordingPanel.h"
#include "media/AviRecorder.h"

#include <gtest/gtest.h>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#undef signals
#include <arv.h>
#include <gst/gst.h>

using namespace tavix;

namespace {

// A live source whose picture moves from frame to frame, so that a picture
// saved again from the frame held before the loss would be seen.
constexpr char kMovingCamera[] =
    "videotestsrc is-live=true pattern=ball !\n"
    "video/x-raw,width=640,height=480,framerate=30/1 !\n"
    "identity name=Camera\n";

// The main window on a camera of another driver than the simulated one, on a
// clock the test moves for the series, and the camera lost when the test says.
template <typename Driver>
class LossWindow : public test::DriverWindow<Driver> {
protected:
    using Base = test::DriverWindow<Driver>;
    using Base::dir;
    using Base::log;
    using Base::prompter;
    using Base::w;

    virtual bool start(Clock* clock) = 0;
    // Cuts the camera off as an unplugged cable or a dead pipeline does.
    virtual void loseCamera() = 0;

    template <typename T>
    T* find(const char* name)
    {
        return w->template findChild<T*>(QLatin1String(name));
    }
    void click(const char* name) { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }
    QString message(int id) const { return w->data().messages.text(id); }
    QString file(const char* name) const { return dir.file(QLatin1String(name)); }
    bool shown(int id) const
    {
        for (const auto& m : prompter.messages)
            if (m.text == message(id))
                return true;
        return false;
    }
    bool waitFor(const std::function<bool()>& done, int ms)
    {
        QElapsedTimer timer;
        timer.start();
        while (!done() && timer.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return done();
    }

    // A five-picture series three seconds apart; the camera lost after picture 2.
    void seriesLostAfterTheSecondPicture()
    {
        ASSERT_TRUE(start(&clock));
        ASSERT_TRUE(this->waitForLiveFrames(2));
        QDir(dir.path()).mkpath(QStringLiteral("series"));
        prompter.fileNames.push_back(file("series/cell.bmp"));
        w->intervalSave().setDialogRunner([](QDialog& d) {
            d.findChild<QLineEdit*>(QStringLiteral("txtIntervalTime(0)"))->setText(QStringLiteral("0"));
            d.findChild<QLineEdit*>(QStringLiteral("txtIntervalTime(1)"))->setText(QStringLiteral("3"));
            d.findChild<QLineEdit*>(QStringLiteral("txtNumberOfImages"))->setText(QStringLiteral("5"));
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
            return d.result();
        });
        click("cmdIS_Save");
        ASSERT_TRUE(QFileInfo::exists(file("series/cell_001.bmp")));
        ASSERT_TRUE(this->waitForLiveFrames(3));  // the picture moves on
        clock.advance(3000);
        w->intervalSave().tmrIS_Timer();
        ASSERT_TRUE(QFileInfo::exists(file("series/cell_002.bmp")));

        // The camera's loss is reported once; the next picture due fails, which ends the series.
        prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};
        loseCamera();
        QTest::qWait(300);
        w->camera().tmriCube_Timer();
        ASSERT_TRUE(shown(26990));
        for (int n = 0; n < 3; ++n) {
            clock.advance(3000);
            w->intervalSave().tmrIS_Timer();
        }

        EXPECT_FALSE(QFileInfo::exists(file("series/cell_003.bmp"))) << "a held frame saved again";
        EXPECT_TRUE(log().contains(QStringLiteral(" Error: ICubeSDK_SaveToFile(-10)\r\n")))
            << log().toStdString();
        ASSERT_EQ(prompter.messages.size(), 2u);
        EXPECT_EQ(prompter.messages[1].text, message(30011));
        EXPECT_EQ(prompter.messages[1].icon, Prompter::Icon::Critical);
        EXPECT_FALSE(w->intervalSave().seriesRunning());
        EXPECT_FALSE(w->intervalSave().timer().isActive());
        EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
        EXPECT_TRUE(find<QPushButton>("cmdIS_Save")->isEnabled());
        const QImage first(file("series/cell_001.bmp"));
        const QImage second(file("series/cell_002.bmp"));
        EXPECT_EQ(first.size(), QSize(640, 480));
        EXPECT_NE(first, second);
    }

    // A twenty-second recording; the camera lost after some frames were written.
    void recordingLostMidway()
    {
        ASSERT_TRUE(start(nullptr));
        ASSERT_TRUE(this->waitForLiveFrames(2));
        w->recording().recording().setFreeSpace([](const QString&) { return qint64(100) << 30; });
        w->recording().setDialogRunner([](QDialog& d) {
            d.findChild<QLineEdit*>(QStringLiteral("txtRecTime"))->setText(QStringLiteral("20"));
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
            return d.result();
        });
        const QString path = file("lost.avi");
        prompter.fileNames.push_back(path);
        click("cmdPicSave");
        ASSERT_EQ(w->camera().runState(), CameraPanel::kRecordingArmed);
        click("cmdPlayStop");
        ASSERT_TRUE(waitFor([&] { return QFileInfo(AviRecorder::partName(path)).size() > 100'000; }, 20000));

        // Two boxes: the camera's loss and the end of the recording.
        prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};
        loseCamera();
        ASSERT_TRUE(waitFor([this] { return shown(VideoRecording::kMsgEnded); }, 20000));
        ASSERT_TRUE(waitFor([this] { return prompter.messages.size() >= 2u; }, 20000));
        EXPECT_TRUE(shown(26990));
        EXPECT_TRUE(find<QPushButton>("cmdPlayStop")->isEnabled());
        EXPECT_FALSE(w->recording().tmrRec().isActive());
        EXPECT_FALSE(QFile::exists(AviRecorder::partName(path)));
        const test::AviRiff riff = test::AviRiff::of(path);
        ASSERT_TRUE(riff.ok) << riff.error.toStdString();
        EXPECT_TRUE(riff.indexed());
        EXPECT_TRUE(riff.countsMatch());
        EXPECT_GT(riff.frames, 2);
        EXPECT_TRUE(test::AviProbe::of(path).ok);
        click("cmdPlayStop");
        EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
    }

    ManualClock clock;
};

class GraphLoss : public LossWindow<GraphDriver> {
protected:
    bool start(Clock* clock) override
    {
        dir.write(QStringLiteral("Camera.grf"), kMovingCamera);
        return startWindow(
            [](AppData& data) {
                return std::make_unique<GraphDriver>(
                    data.graphPath(), data.settings.CAMERAFILTERNAME,
                    [log = data.log](const QString& line) { log.write(line); });
            },
            clock);
    }
    void loseCamera() override
    {
        GstElement* camera = driver->graphFile().cameraFilter();
        GError* error =
            g_error_new_literal(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_READ, "Could not read from resource.");
        gst_element_post_message(camera, gst_message_new_error(GST_OBJECT(camera), error, nullptr));
        g_error_free(error);
    }
};

class GenICamLoss : public LossWindow<GenICamDriver> {
protected:
    static void SetUpTestSuite() { GenICamDriver::useFakeCameraOnly(); }
    static void TearDownTestSuite() { GenICamDriver::useRealCameras(); }

    bool start(Clock* clock) override
    {
        return startWindow(
            [](AppData& data) {
                data.settings.DEFAULTRESOLUTION = 1;  // 640 x 480: a light file for the recording
                return std::make_unique<GenICamDriver>(
                    [log = data.log](const QString& line) { log.write(line); });
            },
            clock);
    }
    void loseCamera() override
    {
        g_signal_emit_by_name(arv_camera_get_device(driver->arvCamera()), "control-lost");
    }
};

}  // namespace

TEST_F(GraphLoss, CameraLostMidSeries_EndsTheSeriesWith30011_AndNoPictureRepeatsTheOneBefore)
{
    seriesLostAfterTheSecondPicture();
}

TEST_F(GraphLoss, CameraLostMidRecording_EndsIt_GivesTheButtonBack_AndFinishesTheFile)
{
    recordingLostMidway();
}

TEST_F(GenICamLoss, CameraLostMidSeries_EndsTheSeriesWith30011_AndNoPictureRepeatsTheOneBefore)
{
    seriesLostAfterTheSecondPicture();
}

TEST_F(GenICamLoss, CameraLostMidRecording_EndsIt_GivesTheButtonBack_AndFinishesTheFile)
{
    recordingLostMidway();
}
