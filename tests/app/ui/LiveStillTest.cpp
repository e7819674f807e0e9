#include "EventLoopWatch.h"
#include "ScriptedPrompter.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/Clock.h"
#include "common/FaultPoint.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

class LiveStill : public ::testing::Test {
protected:
    void SetUp() override { test::copyShippedData(dir); }
    void TearDown() override { FaultPoint::disarmAll(); }

    // The window's time from `windowClock`, the system's when null.
    std::unique_ptr<frmMain> start(SimCamera::Faults faults = {}, Clock* windowClock = nullptr)
    {
        auto factory = [faults, this](AppData&) {
            auto sim = std::make_unique<SimCamera>();
            sim->setFaults(faults);
            this->sim = sim.get();
            return std::unique_ptr<CameraDriver>(std::move(sim));
        };
        auto w = std::make_unique<frmMain>(dir.path(), prompter, windowClock ? *windowClock : clock, factory);
        loaded = w->Form_Load();
        if (loaded) {
            w->resize(1200, 800);
            w->show();
        }
        return w;
    }

    // Waits, handling events, until the live view has shown a frame.
    static bool waitForLiveFrame(frmMain& w)
    {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 10000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
            if (w.camera().liveView().counters().shown > 0)
                return true;
        }
        return false;
    }

    template <typename T>
    static T* find(frmMain& w, const char* name)
    {
        return w.findChild<T*>(QLatin1String(name));
    }

    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }
    int logCount(const QString& line) const
    {
        return log().count(QLatin1Char(' ') + line + QStringLiteral("\r\n"));
    }
    QString statusText(frmMain& w, int panel) const
    {
        return w.findChild<QLabel*>(QStringLiteral("sbriCubePanel(%1)").arg(panel))->text();
    }

    TempDir dir;
    ScriptedPrompter prompter;
    SystemClock clock;
    SimCamera* sim = nullptr;
    bool loaded = false;
};

}  // namespace

TEST_F(LiveStill, PlayStop_FreezesTheTemporaryBitmapsPicture_AndReturnsToLive)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));
    auto* playStop = find<QPushButton>(*w, "cmdPlayStop");
    EXPECT_EQ(playStop->text(), w->data().messages.text(11051));
    EXPECT_FALSE(find<QToolButton>(*w, "cmdMeasure(0)")->isEnabled());

    QTest::mouseClick(playStop, Qt::LeftButton);
    EXPECT_TRUE(w->camera().stillShown());
    EXPECT_TRUE(find<QScrollArea>(*w, "scrStillView")->isVisible());
    EXPECT_FALSE(find<QWidget>(*w, "picCameraView")->isVisible());
    EXPECT_EQ(playStop->text(), w->data().messages.text(40023));
    EXPECT_TRUE(find<QToolButton>(*w, "cmdMeasure(0)")->isEnabled());

    QImage fromFile;
    ASSERT_EQ(BmpFile::read(w->data().tempBitmapPath(), fromFile), 0);
    const QImage& still = w->camera().still();
    ASSERT_EQ(still.size(), QSize(1280, 1024));
    EXPECT_EQ(still.convertToFormat(QImage::Format_RGB32), fromFile.convertToFormat(QImage::Format_RGB32));
    EXPECT_EQ(find<StillViewWidget>(*w, "picStillView")->picture().size(), still.size());

    QTest::mouseClick(playStop, Qt::LeftButton);
    EXPECT_FALSE(w->camera().stillShown());
    EXPECT_TRUE(find<QWidget>(*w, "picCameraView")->isVisible());
    EXPECT_EQ(playStop->text(), w->data().messages.text(11051));
    EXPECT_FALSE(find<QToolButton>(*w, "cmdMeasure(0)")->isEnabled());
}

TEST_F(LiveStill, StatusBar_ShowsDriverFramesRateAndResolution)
{
    // The window's time stands still but for the steps below: the rates shown
    // follow from the frame counts shown, whatever this machine's speed.
    ManualClock windowClock;
    auto w = start({}, &windowClock);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(statusText(*w, 0), w->data().messages.text(40029) + QStringLiteral(": sim"));
    EXPECT_EQ(statusText(*w, 5), QStringLiteral("Resolution:1280x1024"));
    ASSERT_TRUE(waitForLiveFrame(*w));
    w->camera().tmriCube_Timer();
    ASSERT_TRUE(statusText(*w, 1).startsWith(QStringLiteral("Frames:")));
    const int first = statusText(*w, 1).mid(7).toInt();
    EXPECT_EQ(statusText(*w, 2), QStringLiteral("FPS:")) << "no time has passed yet";
    std::int32_t good = 0;
    QElapsedTimer waited;
    waited.start();
    while (good <= first && waited.elapsed() < 10000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        sim->GetGoodFrames(0, good);
    }
    // The window's own 1 s timer may have ticked meanwhile, at the same time
    // on this clock: the rate counts from the last tick, this one.
    w->camera().tmriCube_Timer();
    const int before = statusText(*w, 1).mid(7).toInt();
    EXPECT_GT(before, first);
    windowClock.advance(2000);
    w->camera().tmriCube_Timer();
    const int second = statusText(*w, 1).mid(7).toInt();
    EXPECT_EQ(statusText(*w, 2), QStringLiteral("FPS:") + QString::number((second - before) / 2.0, 'f', 2));
    EXPECT_EQ(statusText(*w, 3), QStringLiteral("Average:") + QString::number(second / 2.0, 'f', 2));
    EXPECT_EQ(statusText(*w, 4), QStringLiteral("Bad frames:0"));
}

TEST_F(LiveStill, StatusBar_KeepsItsTexts_WhenTheCameraIsNotStarted)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));
    QTest::qWait(200);
    w->camera().tmriCube_Timer();
    const QString frames = statusText(*w, 1);
    sim->Stop(0);
    QTest::qWait(200);
    w->camera().tmriCube_Timer();
    EXPECT_EQ(statusText(*w, 1), frames);
}

TEST_F(LiveStill, NoCamera_EndsTheProgramBeforeTheWindowShows)
{
    prompter.answers = {Prompter::Answer::Ok};
    SimCamera::Faults faults;
    faults.cameraCount = 0;
    const QByteArray ini = dir.read(QStringLiteral("Tavix.Ini"));
    auto w = start(faults);
    EXPECT_FALSE(loaded);
    EXPECT_FALSE(w->isVisible());
    EXPECT_TRUE(log().contains(QStringLiteral(" Error: ICubeSDK_Init(NumOfCam=0)\r\n")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].title, w->data().messages.text(11103));
    // The main window unloaded: its settings went back as they were read, and the end is logged.
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Tavix End\r\n"))) << log().toStdString();
    w.reset();
    EXPECT_EQ(dir.read(QStringLiteral("Tavix.Ini")), ini);
}

TEST_F(LiveStill, CameraFailingAtStartUp_KeepsTheSettingsAsRead)
{
    prompter.answers = {Prompter::Answer::Ok};
    // DEFAULTSCALE is not on the list yet when the camera fails: the value read goes back.
    QByteArray ini = dir.read(QStringLiteral("Tavix.Ini"));
    ini.replace("DEFAULTSCALE=0", "DEFAULTSCALE=4");
    dir.write(QStringLiteral("Tavix.Ini"), ini);
    SimCamera::Faults faults;
    faults.failWith[QStringLiteral("Start")] = SimCamera::kBadCamera;
    auto w = start(faults);
    EXPECT_FALSE(loaded);
    EXPECT_FALSE(w->isVisible());
    EXPECT_EQ(logCount(QStringLiteral("Error: ICubeSDK_Start(-9)")), 1);
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(26999, SimCamera::kBadCamera));
    EXPECT_EQ(prompter.messages[0].title, w->data().messages.text(26998));
    EXPECT_EQ(sim->IsOpen(0), 1);  // closed
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Tavix End\r\n")));
    EXPECT_EQ(dir.read(QStringLiteral("Tavix.Ini")), ini);
}

TEST_F(LiveStill, CameraFailingWhileRunning_ClosesItsDialogs_AndUnloadsTheWindow)
{
    prompter.answers = {Prompter::Answer::Ok};
    auto w = start();
    ASSERT_TRUE(loaded);
    auto* scale = find<QComboBox>(*w, "cboScale");
    scale->setCurrentIndex(2);
    emit scale->activated(2);
    QDialog dialog(w.get());
    dialog.setModal(true);
    dialog.show();
    ASSERT_EQ(QApplication::activeModalWidget(), &dialog);

    sim->failCall(QStringLiteral("Start"), SimCamera::kDisconnected);
    w->camera().session().changeMode(3);

    EXPECT_EQ(logCount(QStringLiteral("Error: ICubeSDK_Start(-10)")), 1);
    // The program closes the window itself: nothing but the error is shown or asked.
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].title, w->data().messages.text(26998));
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_FALSE(w->isVisible());
    EXPECT_EQ(sim->IsOpen(0), 1);  // closed
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Tavix End\r\n")));
    const QString ini = QString::fromUtf8(dir.read(QStringLiteral("Tavix.Ini")));
    EXPECT_TRUE(ini.contains(QStringLiteral("DEFAULTSCALE=2\r\n")));
    EXPECT_TRUE(ini.contains(QStringLiteral("DEFAULTRESOLUTION=3\r\n"))) << ini.toStdString();
}

// Each handler keeps the guard: a run-time error is logged once and the next event works.
TEST_F(LiveStill, PlayStopGuard_LogsAndGoesOn)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));  // the freeze below needs a frame
    auto* playStop = find<QPushButton>(*w, "cmdPlayStop");
    FaultPoint::arm(QStringLiteral("cmdPlayStop_Click"), 91);
    QTest::mouseClick(playStop, Qt::LeftButton);
    EXPECT_EQ(logCount(QStringLiteral("frmMain:cmdPlayStop_Click Error.(91)")), 1);
    EXPECT_FALSE(w->camera().stillShown());
    QTest::mouseClick(playStop, Qt::LeftButton);
    EXPECT_TRUE(w->camera().stillShown());
    EXPECT_EQ(logCount(QStringLiteral("frmMain:cmdPlayStop_Click Error.(91)")), 1);
}

TEST_F(LiveStill, StatusTimerGuard_LogsAndGoesOn)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));
    const QString before = statusText(*w, 1);
    FaultPoint::arm(QStringLiteral("tmriCube_Timer"), 6);
    w->camera().tmriCube_Timer();
    EXPECT_EQ(logCount(QStringLiteral("frmMain:tmriCube_Timer Error.(6)")), 1);
    EXPECT_EQ(statusText(*w, 1), before);
    QTest::qWait(100);
    w->camera().tmriCube_Timer();
    EXPECT_GT(statusText(*w, 1).mid(7).toInt(), 0);
}

TEST_F(LiveStill, LiveIconTimerGuard_LogsAndGoesOn)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));  // the freezes below need a frame
    auto* playStop = find<QPushButton>(*w, "cmdPlayStop");
    w->camera().tmrLiveIcon_Timer();
    const QImage lit = playStop->icon().pixmap(20).toImage();
    FaultPoint::arm(QStringLiteral("tmrLiveIcon_Timer"), 7);
    w->camera().tmrLiveIcon_Timer();
    EXPECT_EQ(logCount(QStringLiteral("frmMain:tmrLiveIcon_Timer Error.(7)")), 1);
    EXPECT_EQ(playStop->icon().pixmap(20).toImage(), lit);
    w->camera().tmrLiveIcon_Timer();
    EXPECT_NE(playStop->icon().pixmap(20).toImage(), lit);
}

TEST_F(LiveStill, ScaleListGuard_LogsAndGoesOn)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    auto* scale = find<QComboBox>(*w, "cboScale");
    FaultPoint::arm(QStringLiteral("cboScale_Click"), 380);
    scale->setCurrentIndex(2);
    emit scale->activated(2);
    EXPECT_EQ(logCount(QStringLiteral("frmMain:cboScale_Click Error.(380)")), 1);
    EXPECT_EQ(find<QLabel>(*w, "lblZoom")->text(), QStringLiteral("x 1.0"));
    emit scale->activated(2);
    EXPECT_EQ(find<QLabel>(*w, "lblZoom")->text(), QStringLiteral("x 2.0"));
}

TEST_F(LiveStill, FailedStill_IsLoggedAndKeepsThePreviousStill)
{
    prompter.answers = {Prompter::Answer::Ok};
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));
    auto* playStop = find<QPushButton>(*w, "cmdPlayStop");
    QTest::mouseClick(playStop, Qt::LeftButton);
    const QImage first = w->camera().still();
    ASSERT_FALSE(first.isNull());
    QTest::mouseClick(playStop, Qt::LeftButton);
    sim->failCall(QStringLiteral("SaveToFile"), -8);
    test::EventLoopWatch watch;
    QTest::mouseClick(playStop, Qt::LeftButton);
    EXPECT_TRUE(watch.keepsTurning()) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_TRUE(log().contains(QStringLiteral(" Error: ICubeSDK_SaveToFile(-8)\r\n")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(26999, -8));
    EXPECT_EQ(w->camera().still(), first);
}

TEST_F(LiveStill, Redraw_ShowsTheHeldStillAgain_WithoutAskingTheCamera)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));
    QTest::mouseClick(find<QPushButton>(*w, "cmdPlayStop"), Qt::LeftButton);
    const QImage held = w->camera().still();
    sim->setRecordCalls(true);
    w->camera().redrawStill();
    EXPECT_FALSE(sim->calls().join(QLatin1Char(' ')).contains(QStringLiteral("SaveToFile")));
    EXPECT_EQ(w->camera().still(), held);
    EXPECT_EQ(find<StillViewWidget>(*w, "picStillView")->picture(), held);
}

TEST_F(LiveStill, Magnification_ScalesTheStillAndScrolls)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));
    QTest::mouseClick(find<QPushButton>(*w, "cmdPlayStop"), Qt::LeftButton);
    auto* scale = find<QComboBox>(*w, "cboScale");
    scale->setCurrentIndex(scale->findText(QStringLiteral("x 2.0")));
    emit scale->activated(scale->currentIndex());
    auto* still = find<StillViewWidget>(*w, "picStillView");
    EXPECT_EQ(still->size(), QSize(2560, 2048));
    QCoreApplication::processEvents();
    EXPECT_TRUE(find<QScrollArea>(*w, "scrStillView")->horizontalScrollBar()->isVisible());
    EXPECT_EQ(find<QLabel>(*w, "lblZoom")->text(), QStringLiteral("x 2.0"));
    scale->setCurrentIndex(scale->findText(QStringLiteral("x 0.5")));
    emit scale->activated(scale->currentIndex());
    EXPECT_EQ(still->size(), QSize(640, 512));
}

TEST_F(LiveStill, LiveIcon_BlinksWhileLive)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));  // the freezes below need a frame
    auto* playStop = find<QPushButton>(*w, "cmdPlayStop");
    w->camera().tmrLiveIcon_Timer();
    const QImage lit = playStop->icon().pixmap(20).toImage();
    w->camera().tmrLiveIcon_Timer();
    const QImage unlit = playStop->icon().pixmap(20).toImage();
    EXPECT_NE(lit, unlit);
    w->camera().tmrLiveIcon_Timer();
    EXPECT_EQ(playStop->icon().pixmap(20).toImage(), lit);
    QTest::mouseClick(playStop, Qt::LeftButton);  // a still: the light goes
    w->camera().tmrLiveIcon_Timer();
    const QImage still = playStop->icon().pixmap(20).toImage();
    EXPECT_NE(still, lit);
    EXPECT_NE(still, unlit);
}

TEST_F(LiveStill, LiveIcon_BlinkingReusesItsTwoIcons)
{
    // A new icon per blink would leave a new scaled copy in Qt's pixmap cache
    // every half second of live view.
    auto w = start();
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(waitForLiveFrame(*w));  // the freezes below need a frame
    auto* playStop = find<QPushButton>(*w, "cmdPlayStop");
    w->camera().tmrLiveIcon_Timer();
    const qint64 lit = playStop->icon().cacheKey();
    w->camera().tmrLiveIcon_Timer();
    const qint64 unlit = playStop->icon().cacheKey();
    EXPECT_NE(lit, unlit);
    for (int blink = 0; blink < 3; ++blink) {
        w->camera().tmrLiveIcon_Timer();
        EXPECT_EQ(playStop->icon().cacheKey(), lit);
        w->camera().tmrLiveIcon_Timer();
        EXPECT_EQ(playStop->icon().cacheKey(), unlit);
    }
    QTest::mouseClick(playStop, Qt::LeftButton);
    const qint64 still = playStop->icon().cacheKey();
    QTest::mouseClick(playStop, Qt::LeftButton);
    QTest::mouseClick(playStop, Qt::LeftButton);
    EXPECT_EQ(playStop->icon().cacheKey(), still);
}

TEST_F(LiveStill, Exit_StopsAndClosesTheCamera)
{
    auto w = start();
    ASSERT_TRUE(loaded);
    w->setConfirmOnClose(false);
    w->close();
    EXPECT_EQ(sim->IsStarted(0), 0);
    EXPECT_EQ(sim->IsOpen(0), 1);  // closed
    EXPECT_FALSE(log().contains(QStringLiteral("ICubeSDK_Stop(")));
}

TEST_F(LiveStill, PlayStop_InAnotherRunState_BelongsToItsOwner)
{
    prompter.answers = {Prompter::Answer::Ok};
    auto w = start();
    ASSERT_TRUE(loaded);
    QList<qint16> clicked;
    QObject::connect(&w->camera(), &CameraPanel::playStopClicked, [&](qint16 state) { clicked << state; });
    w->camera().setRunState(CameraPanel::kSeries);
    QTest::mouseClick(find<QPushButton>(*w, "cmdPlayStop"), Qt::LeftButton);
    EXPECT_FALSE(w->camera().stillShown());
    EXPECT_EQ(clicked, QList<qint16>{CameraPanel::kSeries});
}

TEST_F(LiveStill, CameraLostMidStream_IsReportedOnce_AndFreezingSaysNoPictureCanBeTaken)
{
    prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};  // the loss, then the freeze
    SimCamera::Faults faults;
    faults.disconnectAfter = 5;
    auto w = start(faults);
    ASSERT_TRUE(loaded);
    QElapsedTimer timer;
    timer.start();
    while (sim->IsStarted(0) == 1 && timer.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    ASSERT_TRUE(sim->connectionLost(0));
    // The status timer finds the loss; the window goes on turning meanwhile.
    test::EventLoopWatch watch;
    while (prompter.messages.empty() && timer.elapsed() < 20000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_TRUE(watch.keepsTurning(2500)) << "longest gap " << watch.longestGapMs() << " ms";
    ASSERT_EQ(prompter.messages.size(), 1u) << "reported once, though the timer ticked again";
    EXPECT_EQ(logCount(QStringLiteral("frmMain:tmriCube_Timer Camera lost (sim).")), 1)
        << log().toStdString();
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(26990));
    EXPECT_EQ(prompter.messages[0].title, w->data().messages.text(26998));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    // The frame the camera held last is no new picture: the camera is not asked for it in vain.
    QTest::mouseClick(find<QPushButton>(*w, "cmdPlayStop"), Qt::LeftButton);
    ASSERT_EQ(prompter.messages.size(), 2u);
    EXPECT_EQ(prompter.messages[1].text, w->data().messages.text(26999, SimCamera::kDisconnected));
    EXPECT_EQ(logCount(QStringLiteral("Error: ICubeSDK_SaveToFile(-10)")), 1) << log().toStdString();
}

TEST_F(LiveStill, ABurstOfBrokenFrames_IsCountedInTheStatusBar_AndLiveViewGoesOn)
{
    SimCamera::Faults faults;
    faults.breakEvery = 2;  // every other frame is broken
    auto w = start(faults);
    ASSERT_TRUE(loaded);
    test::EventLoopWatch watch;
    ASSERT_TRUE(waitForLiveFrame(*w));
    QElapsedTimer timer;
    timer.start();
    while (!statusText(*w, 4).contains(QRegularExpression(QStringLiteral("[1-9]"))) &&
           timer.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);

    std::int32_t broken = 0;
    sim->GetBrokenFrames(0, broken);
    EXPECT_GT(broken, 0);
    EXPECT_TRUE(statusText(*w, 4).contains(QRegularExpression(QStringLiteral("[1-9]"))))
        << statusText(*w, 4).toStdString();
    const auto shownBefore = w->camera().liveView().counters().shown;
    EXPECT_TRUE(watch.keepsTurning(1000)) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_GT(w->camera().liveView().counters().shown, shownBefore) << "the good frames are still shown";
    EXPECT_TRUE(prompter.messages.empty());
    QTest::mouseClick(find<QPushButton>(*w, "cmdPlayStop"), Qt::LeftButton);
    EXPECT_TRUE(w->camera().stillShown());
}
