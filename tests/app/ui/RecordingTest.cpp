#include "app/frmMain.h"
#include "camera/LiveView.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "common/Clock.h"
#include "files/VideoRecording.h"
#include "files/ui/RecordingPanel.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"
#include "media/AviRecorder.h"

#include "AviProbe.h"
#include "AviRiff.h"
#include "EventLoopWatch.h"
#include "ScriptedPrompter.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <functional>
#include <memory>

namespace tavix {
namespace {

using test::AviProbe;

constexpr qint64 kGigabyte = 1073741824;

// Reports frames dropped on top of what its recorder counts, and a failure
// when told to.
class ScriptedStatsCamera : public SimCamera {
public:
    using SimCamera::SimCamera;
    std::int64_t extraDropped = 0;
    QString failure;
    bool recordingStats(int cam, RecordingStats& stats) override
    {
        const bool known = SimCamera::recordingStats(cam, stats);
        stats.framesDropped += extraDropped;
        if (stats.finished && !failure.isEmpty())
            stats.failure = failure;
        return known;
    }
};

// The main window on the live picture of the simulated camera, with the save
// dialog, the length dialog and the free disk space scripted.
class Recording : public ::testing::Test {
protected:
    void SetUp() override { test::copyShippedData(dir); }

    void start(SimCamera::Options options = {}, Clock* simClock = nullptr)
    {
        options.modes = {1};
        options.defaultMode = 1;  // 640 x 480 at 90 fps
        options.noise = false;
        auto factory = [this, options, simClock](AppData& data) {
            data.settings.DEFAULTRESOLUTION = 1;
            auto camera = std::make_unique<ScriptedStatsCamera>(options, simClock);
            sim = camera.get();
            return std::unique_ptr<CameraDriver>(std::move(camera));
        };
        w = std::make_unique<frmMain>(dir.path(), prompter, clock, factory);
        ASSERT_TRUE(w->Form_Load());
        w->resize(1200, 800);
        w->show();
        // The save dialog freezes a still first, which needs a frame.
        if (options.threaded)
            ASSERT_TRUE(waitFor([this] { return w->camera().liveView().counters().shown > 0; }, 10000));
        else
            sim->produceFrame();
        w->recording().recording().setFreeSpace([this](const QString&) { return freeBytes; });
        w->recording().setDialogRunner([this](QDialog& d) {
            ++dialogs;
            d.show();
            if (auto* box = d.findChild<QLineEdit*>(QStringLiteral("txtRecTime")); box && !typed.isNull()) {
                box->setText(typed);
                QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
            } else {
                QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdCancel")), Qt::LeftButton);
            }
            return d.result();
        });
    }

    // cmdPicSave with `name` chosen in the save dialog.
    void saveAs(const QString& name)
    {
        prompter.fileNames.push_back(dir.file(name));
        QTest::mouseClick(find<QPushButton>("cmdPicSave"), Qt::LeftButton);
    }

    QPushButton* playStop() { return find<QPushButton>("cmdPlayStop"); }
    void clickPlayStop() { QTest::mouseClick(playStop(), Qt::LeftButton); }

    template <typename T>
    T* find(const char* name)
    {
        T* widget = w->findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    QString message(int id, const QVariant& value = {}) { return w->data().messages.text(id, value); }
    QString line() { return find<QLineEdit>("txtComment(0)")->text(); }
    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }
    bool picSaveEnabled() { return find<QPushButton>("cmdPicSave")->isEnabled(); }

    bool waitFor(const std::function<bool()>& done, int ms)
    {
        QElapsedTimer timer;
        timer.start();
        while (!done() && timer.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return done();
    }

    // An unthreaded camera makes frames, 12 ms apart, until its recording is
    // complete; the file is then closed on the recorder's thread.
    bool deliverUntilWritten(ManualClock& simClock, RecordingStats& stats)
    {
        for (int i = 0; i < 200 && !stats.finished; ++i) {
            sim->produceFrame();
            simClock.advance(12);
            sim->recordingStats(0, stats);
        }
        return waitFor(
            [&] {
                sim->recordingStats(0, stats);
                return stats.finished;
            },
            10000);
    }

    bool shown(int id)
    {
        for (const auto& m : prompter.messages)
            if (m.text == message(id))
                return true;
        return false;
    }

    test::TempDir dir;
    test::ScriptedPrompter prompter;
    SystemClock clock;
    std::unique_ptr<frmMain> w;
    ScriptedStatsCamera* sim = nullptr;
    qint64 freeBytes = 100 * kGigabyte;
    QString typed;  // null: the length dialog is cancelled
    int dialogs = 0;
};

TEST_F(Recording, TooLittleDiskSpace_SaysSo_AndRecordsNothing)
{
    prompter.answers = {Prompter::Answer::Ok};
    start();
    freeBytes = 2 * kGigabyte;  // 1.4 GB usable
    saveAs(QStringLiteral("clip.avi"));
    EXPECT_EQ(dialogs, 0);
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, message(VideoRecording::kMsgNoSpace));
    EXPECT_EQ(prompter.messages[0].title, message(VideoRecording::kMsgNoSpaceTitle));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
}

TEST_F(Recording, CancelInTheLengthDialog_LeavesPlayStopAsItWas)
{
    start();
    const QString caption = playStop()->text();
    const QString tip = playStop()->toolTip();
    saveAs(QStringLiteral("clip.AVI"));  // the name's ending in any case
    EXPECT_EQ(dialogs, 1);
    EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
    EXPECT_EQ(playStop()->text(), caption);
    EXPECT_EQ(playStop()->toolTip(), tip);
    EXPECT_TRUE(playStop()->isEnabled());
    EXPECT_TRUE(picSaveEnabled());
    EXPECT_TRUE(line().isEmpty());
    EXPECT_FALSE(w->camera().stillShown());  // back on the live picture
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_FALSE(QFile::exists(dir.file(QStringLiteral("clip.AVI"))));
}

TEST_F(Recording, ValidLength_ArmsPlayStopAsTheRecordButton)
{
    start();
    typed = QStringLiteral("5");
    saveAs(QStringLiteral("clip.avi"));
    EXPECT_EQ(w->camera().runState(), CameraPanel::kRecordingArmed);
    EXPECT_EQ(playStop()->text(), message(VideoRecording::kCaptionRecord));
    EXPECT_TRUE(playStop()->isEnabled());
    EXPECT_FALSE(picSaveEnabled());
    EXPECT_EQ(line(), message(VideoRecording::kMsgArmed, 5));
    EXPECT_EQ(w->recording().recording().fileName(), dir.file(QStringLiteral("clip.avi")));
    // The blinking live light leaves the record picture alone.
    const QImage armed = playStop()->icon().pixmap(20, 20).toImage();
    w->camera().tmrLiveIcon_Timer();
    EXPECT_EQ(playStop()->icon().pixmap(20, 20).toImage(), armed);
}

TEST_F(Recording, UnsavedResults_AnsweredNo_DoesNotArm)
{
    start();
    clickPlayStop();  // a still, measured on
    w->measure().results().addResult(QStringLiteral("Distance"), 1.0, QStringLiteral("MIC"));
    ASSERT_TRUE(w->measure().results().unsaved());
    typed = QStringLiteral("5");
    prompter.answers.push_back(Prompter::Answer::No);
    saveAs(QStringLiteral("clip.avi"));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, message(VideoRecording::kMsgLoseResults));
    EXPECT_EQ(prompter.messages[0].title, message(VideoRecording::kMsgLoseResultsTitle));
    EXPECT_EQ(prompter.messages[0].buttons, Prompter::Buttons::YesNo);
    EXPECT_EQ(prompter.messages[0].defaultAnswer, Prompter::Answer::No);
    EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
    EXPECT_TRUE(w->camera().stillShown());  // the measured still stays
}

TEST_F(Recording, ArmedWhileAStillIsShown_GoesBackToTheLivePicture)
{
    start();
    clickPlayStop();  // the user froze a still before he chose to record
    ASSERT_TRUE(w->camera().stillShown());
    typed = QStringLiteral("5");
    saveAs(QStringLiteral("clip.avi"));
    EXPECT_EQ(w->camera().runState(), CameraPanel::kRecordingArmed);
    EXPECT_FALSE(w->camera().stillShown());
}

TEST_F(Recording, StillShown_LengthCancelled_KeepsTheStill)
{
    start();
    clickPlayStop();
    ASSERT_TRUE(w->camera().stillShown());
    saveAs(QStringLiteral("clip.avi"));  // no length typed: Cancel
    EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
    EXPECT_TRUE(w->camera().stillShown());
}

TEST_F(Recording, TwoSeconds_RecordsAValidAvi_CountsDown_AndEndsWithTheClosingClick)
{
    prompter.answers = {Prompter::Answer::Ok};
    start();
    typed = QStringLiteral("2");
    saveAs(QStringLiteral("clip.avi"));
    clickPlayStop();
    EXPECT_EQ(w->camera().runState(), CameraPanel::kRecording);
    EXPECT_FALSE(playStop()->isEnabled());
    EXPECT_EQ(playStop()->text(), message(VideoRecording::kCaptionRecording));
    EXPECT_EQ(line(), message(VideoRecording::kMsgCountdown, 2));
    EXPECT_TRUE(w->recording().tmrRec().isActive());
    EXPECT_EQ(w->recording().tmrRec().interval(), 1000);

    ASSERT_TRUE(waitFor([this] { return shown(VideoRecording::kMsgEnded); }, 20000));
    const auto& end = prompter.messages.back();
    EXPECT_EQ(end.title, message(VideoRecording::kMsgEndedTitle));
    EXPECT_EQ(end.icon, Prompter::Icon::Information);
    EXPECT_TRUE(playStop()->isEnabled());
    EXPECT_FALSE(w->recording().tmrRec().isActive());
    EXPECT_EQ(w->camera().runState(), CameraPanel::kRecording);

    const QString path = dir.file(QStringLiteral("clip.avi"));
    const AviProbe probe = AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(probe.codec, QStringLiteral("mjpeg"));
    EXPECT_EQ(probe.width, 640);
    EXPECT_EQ(probe.height, 480);
    EXPECT_NEAR(probe.fps, 1000.0 / sim->framePeriodMs(), 0.01);  // the camera's true rate
    EXPECT_NEAR(probe.frames, 2 * probe.fps, 1);
    EXPECT_TRUE(log().contains(QStringLiteral("Recorded ") + path + QStringLiteral(": 2.0 s, ")))
        << log().toStdString();

    clickPlayStop();
    EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
    EXPECT_TRUE(line().isEmpty());
    EXPECT_TRUE(picSaveEnabled());
    EXPECT_TRUE(playStop()->isEnabled());
    EXPECT_FALSE(w->recording().tmrRec().isActive());
    // The button is the live/still button again.
    clickPlayStop();
    EXPECT_TRUE(w->camera().stillShown());
}

TEST_F(Recording, CameraStillWriting_AfterTheCountdown_LeavesTheLineBlankAndTheButtonDisabled)
{
    prompter.answers = {Prompter::Answer::Ok};
    // Frames come only when the test makes them, so the file stays open.
    ManualClock simClock;
    SimCamera::Options options;
    options.threaded = false;
    start(options, &simClock);
    find<QLineEdit>("txtComment(0)")->setText(QStringLiteral("my comment"));
    typed = QStringLiteral("1");
    saveAs(QStringLiteral("slow.avi"));
    clickPlayStop();
    w->recording().tmrRec().stop();  // stepped by hand
    for (int tick = 0; tick < 3; ++tick)
        w->recording().tmrRec_Timer();
    EXPECT_TRUE(line().isEmpty()) << "not the user's comment back";
    EXPECT_TRUE(find<QLineEdit>("txtComment(0)")->isReadOnly());
    EXPECT_FALSE(playStop()->isEnabled());
    EXPECT_FALSE(shown(VideoRecording::kMsgEnded));

    // The camera delivers the second and finishes the file.
    RecordingStats stats;
    ASSERT_TRUE(deliverUntilWritten(simClock, stats));
    w->recording().tmrRec_Timer();
    EXPECT_TRUE(shown(VideoRecording::kMsgEnded));
    EXPECT_TRUE(playStop()->isEnabled());
}

TEST_F(Recording, DroppedFrames_AreCountedOnTheMessageLine_AndInTheLog)
{
    prompter.answers = {Prompter::Answer::Ok};
    ManualClock simClock;
    SimCamera::Options options;
    options.threaded = false;
    start(options, &simClock);
    typed = QStringLiteral("1");
    saveAs(QStringLiteral("drops.avi"));
    clickPlayStop();
    EXPECT_EQ(line(), message(VideoRecording::kMsgCountdown, 1));  // none dropped yet
    w->recording().tmrRec().stop();
    sim->extraDropped = 7;
    w->recording().tmrRec_Timer();
    EXPECT_EQ(line(), message(VideoRecording::kMsgCountdown, 0) + QLatin1Char(' ') +
                          message(VideoRecording::kMsgDropped, 7));

    RecordingStats stats;
    ASSERT_TRUE(deliverUntilWritten(simClock, stats));
    w->recording().tmrRec_Timer();
    EXPECT_EQ(line(), message(VideoRecording::kMsgDropped, 7));
    const QString path = dir.file(QStringLiteral("drops.avi"));
    EXPECT_TRUE(log().contains(QStringLiteral("Recorded %1: 1.0 s, %2 frames written, 7 dropped")
                                   .arg(path)
                                   .arg(stats.framesWritten)))
        << log().toStdString();
}

TEST_F(Recording, AFileThatFailedMidway_SaysWhyOnTheMessageLineAndInTheLog)
{
    prompter.answers = {Prompter::Answer::Ok};
    ManualClock simClock;
    SimCamera::Options options;
    options.threaded = false;
    start(options, &simClock);
    typed = QStringLiteral("1");
    saveAs(QStringLiteral("full.avi"));
    clickPlayStop();
    w->recording().tmrRec().stop();
    sim->failure = QStringLiteral("No space left on device");
    RecordingStats stats;
    ASSERT_TRUE(deliverUntilWritten(simClock, stats));
    w->recording().tmrRec_Timer();
    EXPECT_EQ(line(), message(VideoRecording::kMsgStoppedEarly, sim->failure));
    EXPECT_TRUE(log().contains(QStringLiteral("Recording stopped early: %1: No space left on device (")
                                   .arg(dir.file(QStringLiteral("full.avi")))))
        << log().toStdString();
    EXPECT_TRUE(shown(VideoRecording::kMsgEnded));
    clickPlayStop();  // back to normal work
    EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
    EXPECT_TRUE(line().isEmpty());
}

TEST_F(Recording, ACameraThatNeverReportsTheEnd_KeepsTheButtonDisabled_AndTheWindowTurning)
{
    start();
    SimCamera::Faults faults;
    faults.recordingNeverEnds = true;
    sim->setFaults(faults);
    typed = QStringLiteral("1");
    saveAs(QStringLiteral("clip.avi"));
    clickPlayStop();
    test::EventLoopWatch watch;

    // The one-second countdown runs out, and the timer goes on asking.
    EXPECT_TRUE(watch.keepsTurning(3500)) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_TRUE(line().isEmpty()) << line().toStdString();
    EXPECT_FALSE(playStop()->isEnabled());
    EXPECT_FALSE(shown(VideoRecording::kMsgEnded));
    EXPECT_EQ(w->camera().runState(), CameraPanel::kRecording);
    EXPECT_TRUE(w->recording().tmrRec().isActive());
}

TEST_F(Recording, SaveAviFails_LogsReportsAndClosesTheCamera_ThenTheNextTickEnds)
{
    prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};
    start();
    test::EventLoopWatch watch;
    sim->failCall(QStringLiteral("SaveAvi"), -8);
    typed = QStringLiteral("3");
    saveAs(QStringLiteral("clip.avi"));
    clickPlayStop();
    EXPECT_TRUE(log().contains(QStringLiteral("Error: ICubeSDK_SaveAvi(-8)")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, message(VideoRecording::kMsgCameraError, -8));
    EXPECT_EQ(prompter.messages[0].title, message(VideoRecording::kMsgCameraErrorTitle));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    EXPECT_EQ(sim->IsOpen(0), 1);  // closed
    EXPECT_TRUE(watch.keepsTurning()) << "longest gap " << watch.longestGapMs() << " ms";

    w->recording().tmrRec().stop();
    w->recording().tmrRec_Timer();
    EXPECT_TRUE(shown(VideoRecording::kMsgEnded));
    EXPECT_TRUE(playStop()->isEnabled());
    EXPECT_EQ(line(), message(VideoRecording::kMsgCountdown, 2));
}

TEST_F(Recording, CameraLostMidRecording_EndsIt_GivesTheButtonBack_AndFinishesTheFile)
{
    start();
    typed = QStringLiteral("20");
    saveAs(QStringLiteral("lost.avi"));
    std::int32_t made = 0;
    sim->GetGoodFrames(0, made);
    SimCamera::Faults faults = sim->faults();
    faults.disconnectAfter = made + 60;  // frames count from the start of the stream
    sim->setFaults(faults);
    // Two boxes: the camera's loss and the end of the recording.
    prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};
    clickPlayStop();
    ASSERT_TRUE(waitFor([this] { return shown(VideoRecording::kMsgEnded); }, 20000));
    ASSERT_TRUE(waitFor([this] { return prompter.messages.size() >= 2u; }, 20000));
    EXPECT_TRUE(playStop()->isEnabled());
    EXPECT_FALSE(w->recording().tmrRec().isActive());
    std::int32_t writing = 1;
    sim->GetCamParameter(0, VideoRecording::kParamAviWriting, writing);
    EXPECT_EQ(writing, 0);
    const QString path = dir.file(QStringLiteral("lost.avi"));
    EXPECT_FALSE(QFile::exists(AviRecorder::partName(path)));
    RecordingStats stats;
    ASSERT_TRUE(sim->recordingStats(0, stats));
    const test::AviRiff riff = test::AviRiff::of(path);
    ASSERT_TRUE(riff.ok) << riff.error.toStdString();
    EXPECT_TRUE(riff.indexed());
    EXPECT_TRUE(riff.countsMatch());
    EXPECT_EQ(riff.frames, stats.framesWritten);
    EXPECT_GT(riff.frames, 10);
    EXPECT_LT(riff.frames, 20 * 90);
    EXPECT_TRUE(AviProbe::of(path).ok);
    clickPlayStop();
    EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
}

TEST_F(Recording, WindowClosedMidRecording_FinishesTheFile)
{
    start();
    typed = QStringLiteral("20");
    saveAs(QStringLiteral("closed.avi"));
    clickPlayStop();
    ASSERT_TRUE(waitFor(
        [this] {
            RecordingStats stats;
            return sim->recordingStats(0, stats) && stats.framesWritten > 20;
        },
        20000));
    prompter.answers.push_back(Prompter::Answer::Yes);  // leave the program
    EXPECT_TRUE(w->close());
    w.reset();
    const QString path = dir.file(QStringLiteral("closed.avi"));
    EXPECT_FALSE(QFile::exists(AviRecorder::partName(path)));
    const test::AviRiff riff = test::AviRiff::of(path);
    ASSERT_TRUE(riff.ok) << riff.error.toStdString();
    EXPECT_TRUE(riff.indexed());
    EXPECT_TRUE(riff.countsMatch());
    EXPECT_GT(riff.frames, 20);
    EXPECT_TRUE(AviProbe::of(path).ok);
}

}  // namespace
}  // namespace tavix
