#include "DriverWindow.h"
#include "EventLoopWatch.h"
#include "ICubeStandIn.h"
#include "camera/icube/ICubeDriver.h"
#include "files/IntervalSave.h"
#include "files/VideoRecording.h"
#include "files/ui/IntervalSavePanel.h"
#include "files/ui/RecordingPanel.h"

#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <functional>
#include <memory>

namespace tavix {
namespace {

using test::ICubeStandIn;

constexpr qint64 kGigabyte = 1073741824;

// The main window on the vendor driver, which loads the stand-in of the
// vendor's library; the test scripts the camera through the same handle.
class ICubeFailures : public test::DriverWindow<ICubeDriver> {
protected:
    void SetUp() override
    {
        DriverWindow::SetUp();
        standIn.reset();
    }
    // The library's background writer may still be busy with a late still.
    void TearDown() override
    {
        w.reset();
        standIn.reset();
    }

    void start(Clock& clock)
    {
        const bool loaded = startWindow(
            [](AppData&) { return std::make_unique<ICubeDriver>(QStringList{ICubeStandIn::path()}); },
            &clock);
        ASSERT_NE(driver, nullptr);
        ASSERT_TRUE(driver->loaded()) << driver->errorText().toStdString();
        ASSERT_TRUE(loaded) << log().toStdString();
        ASSERT_TRUE(standIn.isStarted());
    }

    template <typename T>
    T* find(const char* name)
    {
        T* widget = w->findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    void click(const char* name) { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }
    QString line() { return find<QLineEdit>("txtComment(0)")->text(); }
    QString message(int id, const QVariant& value = {}) const { return w->data().messages.text(id, value); }
    int logCount(const QString& entry) const
    {
        return log().count(QLatin1Char(' ') + entry + QStringLiteral("\r\n"));
    }
    bool shown(int id) const
    {
        for (const auto& m : prompter.messages)
            if (m.text == message(id))
                return true;
        return false;
    }

    static bool waitFor(const std::function<bool()>& done, int ms)
    {
        QElapsedTimer timer;
        timer.start();
        while (!done() && timer.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return done();
    }

    // Freezes a still and goes back to live, so that a still is held.
    QImage freezeOnce()
    {
        click("cmdPlayStop");
        EXPECT_TRUE(w->camera().stillShown());
        const QImage still = w->camera().still();
        click("cmdPlayStop");
        EXPECT_FALSE(w->camera().stillShown());
        return still;
    }

    // A recording of `seconds` chosen for `name` in the save dialog, plenty of disk.
    void armRecording(const QString& name, const QString& seconds)
    {
        w->recording().recording().setFreeSpace([](const QString&) { return 100 * kGigabyte; });
        w->recording().setDialogRunner([seconds](QDialog& d) {
            d.show();
            d.findChild<QLineEdit*>(QStringLiteral("txtRecTime"))->setText(seconds);
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
            return d.result();
        });
        prompter.fileNames.push_back(dir.file(name));
        click("cmdPicSave");
        ASSERT_EQ(w->camera().runState(), CameraPanel::kRecordingArmed);
    }

    ManualClock manualClock;
    ICubeStandIn standIn;
};

TEST_F(ICubeFailures, UnpluggedWhileLive_IsReportedOnce_AndAFreezeAfterwardsKeepsTheLastStill)
{
    prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};
    ASSERT_NO_FATAL_FAILURE(start(systemClock));
    const QImage last = freezeOnce();
    ASSERT_FALSE(last.isNull());

    standIn.unplug();
    test::EventLoopWatch watch;
    // The status timer finds the loss within its second; two more ticks must not report it again.
    ASSERT_TRUE(waitFor([this] { return !prompter.messages.empty(); }, 5000)) << log().toStdString();
    EXPECT_TRUE(watch.keepsTurning(2500)) << "longest gap " << watch.longestGapMs() << " ms";
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(logCount(QStringLiteral("frmMain:tmriCube_Timer Camera lost (icube).")), 1)
        << log().toStdString();
    EXPECT_EQ(prompter.messages[0].text, message(26990));
    EXPECT_EQ(prompter.messages[0].title, message(26998));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);

    // The library has no frame to save any more: the failure is told, the last still stays.
    click("cmdPlayStop");
    EXPECT_TRUE(watch.keepsTurning()) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_EQ(logCount(QStringLiteral("Error: ICubeSDK_SaveToFile(%1)").arg(ICubeStandIn::kUnplugged)), 1);
    ASSERT_EQ(prompter.messages.size(), 2u);
    EXPECT_EQ(prompter.messages[1].text, message(26999, ICubeStandIn::kUnplugged));
    EXPECT_TRUE(w->camera().stillShown());
    EXPECT_EQ(w->camera().still(), last);
}

TEST_F(ICubeFailures, ABurstOfBrokenFrames_IsCountedInTheStatusBar_WithoutAMessage)
{
    standIn.setFrames(120, 0);
    ASSERT_NO_FATAL_FAILURE(start(systemClock));
    ASSERT_TRUE(waitFor([this] { return status(1) == QStringLiteral("Frames:120"); }, 5000))
        << status(1).toStdString();
    EXPECT_EQ(status(4), QStringLiteral("Bad frames:0"));

    standIn.setFrames(180, 45);
    test::EventLoopWatch watch;
    EXPECT_TRUE(waitFor([this] { return status(4) == QStringLiteral("Bad frames:45"); }, 5000))
        << status(4).toStdString();
    EXPECT_EQ(status(1), QStringLiteral("Frames:180"));
    EXPECT_TRUE(watch.keepsTurning(1000)) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_FALSE(log().contains(QStringLiteral("Error"))) << log().toStdString();
    click("cmdPlayStop");
    EXPECT_TRUE(w->camera().stillShown());
    EXPECT_FALSE(w->camera().still().isNull());
}

TEST_F(ICubeFailures, SaveToFileFailingOnAFreeze_IsLoggedAndReported_AndThePreviousStillIsKept)
{
    prompter.answers = {Prompter::Answer::Ok};
    ASSERT_NO_FATAL_FAILURE(start(systemClock));
    const QImage first = freezeOnce();
    ASSERT_FALSE(first.isNull());
    standIn.setResult("ICubeSDK_SaveToFile", -8);
    test::EventLoopWatch watch;
    click("cmdPlayStop");
    EXPECT_TRUE(watch.keepsTurning()) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_EQ(logCount(QStringLiteral("Error: ICubeSDK_SaveToFile(-8)")), 1) << log().toStdString();
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, message(26999, -8));
    EXPECT_EQ(prompter.messages[0].title, message(26998));
    EXPECT_EQ(w->camera().still(), first);
}

TEST_F(ICubeFailures, AStillTheLibraryWritesTooLate_IsLoggedAsADisplayError_AndThePreviousStillIsKept)
{
    ASSERT_NO_FATAL_FAILURE(start(systemClock));
    const QImage first = freezeOnce();
    ASSERT_FALSE(first.isNull());
    // The background writer starts only after the program has stopped waiting.
    standIn.setSaveDelay(w->data().settings.STILLWAITTIME + 500, 0);
    test::EventLoopWatch watch;
    click("cmdPlayStop");
    EXPECT_TRUE(watch.keepsTurning()) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Error:DispImage Error(Err=53 / Num=1)\r\n")))
        << log().toStdString();
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_TRUE(w->camera().stillShown());
    EXPECT_EQ(w->camera().still(), first);
}

TEST_F(ICubeFailures, SaveToFileFailingInASeries_IsReported_ClosesTheCamera_AndEndsTheSeries)
{
    prompter.answers = {Prompter::Answer::Ok};
    ASSERT_NO_FATAL_FAILURE(start(manualClock));
    ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("series")));
    prompter.fileNames.push_back(dir.file(QStringLiteral("series/cell.bmp")));
    w->intervalSave().setDialogRunner([](QDialog& d) {
        d.show();
        d.findChild<QLineEdit*>(QStringLiteral("txtIntervalTime(0)"))->setText(QStringLiteral("0"));
        d.findChild<QLineEdit*>(QStringLiteral("txtIntervalTime(1)"))->setText(QStringLiteral("3"));
        d.findChild<QLineEdit*>(QStringLiteral("txtNumberOfImages"))->setText(QStringLiteral("5"));
        QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
        return d.result();
    });
    click("cmdIS_Save");
    ASSERT_TRUE(w->intervalSave().seriesRunning());
    EXPECT_TRUE(dir.exists(QStringLiteral("series/cell_001.bmp")));

    standIn.setResult("ICubeSDK_SaveToFile", -8);
    test::EventLoopWatch watch;
    manualClock.advance(3000);
    w->intervalSave().tmrIS_Timer();
    // Long enough for a status tick: the camera the program closed is not taken for a lost one.
    EXPECT_TRUE(watch.keepsTurning(1500)) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_EQ(logCount(QStringLiteral("Error: ICubeSDK_SaveToFile(-8)")), 1) << log().toStdString();
    EXPECT_FALSE(log().contains(QStringLiteral("Camera lost"))) << log().toStdString();
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, message(IntervalSave::kMsgCameraFailed));
    EXPECT_EQ(prompter.messages[0].title, message(IntervalSave::kMsgCameraFailedTitle));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    EXPECT_FALSE(standIn.isOpen()) << "the camera is closed";
    EXPECT_FALSE(dir.exists(QStringLiteral("series/cell_002.bmp")));

    EXPECT_FALSE(w->intervalSave().seriesRunning());
    EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
    EXPECT_FALSE(w->intervalSave().timer().isActive());
    EXPECT_EQ(find<QPushButton>("cmdPlayStop")->text(), message(IntervalSave::kMsgFreeze));
    EXPECT_TRUE(find<QPushButton>("cmdPicSave")->isEnabled());
    EXPECT_TRUE(find<QPushButton>("cmdIS_Save")->isEnabled());
    EXPECT_TRUE(line().isEmpty()) << line().toStdString();
}

TEST_F(ICubeFailures, SaveAviFailing_IsLoggedReported_AndClosesTheCamera_ThenTheNextTickEnds)
{
    prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};
    ASSERT_NO_FATAL_FAILURE(start(systemClock));
    ASSERT_NO_FATAL_FAILURE(armRecording(QStringLiteral("clip.avi"), QStringLiteral("3")));
    standIn.setResult("ICubeSDK_SaveAvi", -8);
    test::EventLoopWatch watch;
    click("cmdPlayStop");
    EXPECT_EQ(logCount(QStringLiteral("Error: ICubeSDK_SaveAvi(-8)")), 1) << log().toStdString();
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, message(VideoRecording::kMsgCameraError, -8));
    EXPECT_EQ(prompter.messages[0].title, message(VideoRecording::kMsgCameraErrorTitle));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    EXPECT_FALSE(standIn.isOpen()) << "the camera is closed";

    w->recording().tmrRec().stop();  // stepped by hand from here
    EXPECT_TRUE(watch.keepsTurning(1500)) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_FALSE(log().contains(QStringLiteral("Camera lost"))) << log().toStdString();
    w->recording().tmrRec_Timer();
    EXPECT_TRUE(shown(VideoRecording::kMsgEnded));
    EXPECT_TRUE(find<QPushButton>("cmdPlayStop")->isEnabled());
    EXPECT_EQ(line(), message(VideoRecording::kMsgCountdown, 2));
}

TEST_F(ICubeFailures, ACameraThatNeverReportsTheEndOfARecording_KeepsTheButtonDisabled_AndTheWindowTurning)
{
    ASSERT_NO_FATAL_FAILURE(start(systemClock));
    standIn.setAviPolls(ICubeStandIn::kAviForever);
    ASSERT_NO_FATAL_FAILURE(armRecording(QStringLiteral("clip.avi"), QStringLiteral("1")));
    click("cmdPlayStop");
    ASSERT_EQ(standIn.callCount("ICubeSDK_SaveAvi"), 1);
    standIn.clearCalls();
    // The timer stays running but is stepped by hand: each tick is one question to the camera.
    ASSERT_TRUE(w->recording().tmrRec().isActive());
    w->recording().tmrRec().setInterval(24 * 3600 * 1000);
    test::EventLoopWatch watch;

    // The one-second countdown runs out, and the timer goes on asking.
    for (int tick = 0; tick < 3; ++tick) {
        w->recording().tmrRec_Timer();
        EXPECT_TRUE(watch.keepsTurning()) << "longest gap " << watch.longestGapMs() << " ms";
    }
    EXPECT_EQ(standIn.callLog().count(QStringLiteral("ICubeSDK_GetCamParameter(0,24,ptr)")), 3);
    EXPECT_TRUE(line().isEmpty()) << line().toStdString();
    EXPECT_FALSE(find<QPushButton>("cmdPlayStop")->isEnabled());
    EXPECT_FALSE(shown(VideoRecording::kMsgEnded));
    EXPECT_EQ(w->camera().runState(), CameraPanel::kRecording);
    EXPECT_TRUE(w->recording().tmrRec().isActive());
    EXPECT_FALSE(log().contains(QStringLiteral("Error"))) << log().toStdString();
}

}  // namespace
}  // namespace tavix
