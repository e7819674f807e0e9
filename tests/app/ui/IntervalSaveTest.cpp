#include "EventLoopWatch.h"
#include "NestedLoopPrompter.h"
#include "ScriptedPrompter.h"
#include "SmallDisk.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "calib/CrossLines.h"
#include "calib/ui/OverlayPanel.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/CameraViewWidget.h"
#include "common/Clock.h"
#include "files/ui/IntervalSavePanel.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QImageReader>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QThread>
#include <QTimer>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

// The main window on the simulated camera with the series on a clock the test moves.
class IntervalSaveWindow : public ::testing::Test {
protected:
    void SetUp() override
    {
        test::copyShippedData(dir);
        QDir(dir.path()).mkpath(QStringLiteral("series"));
        QDir(dir.path()).mkpath(QStringLiteral("quick"));
        auto factory = [this](AppData&) {
            auto camera = std::make_unique<SimCamera>();
            sim = camera.get();
            return std::unique_ptr<CameraDriver>(std::move(camera));
        };
        w = std::make_unique<frmMain>(dir.path(), prompter, clock, factory);
        ASSERT_TRUE(w->Form_Load());
        w->resize(1200, 800);
        w->show();
        ASSERT_TRUE(waitForLiveFrame());
    }

    bool waitForLiveFrame()
    {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 10000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
            if (w->camera().liveView().counters().shown > 0)
                return true;
        }
        return false;
    }

    template <typename T>
    T* find(const char* name)
    {
        return w->findChild<T*>(QLatin1String(name));
    }
    void click(const char* name) { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }
    QString comment() { return find<QLineEdit>("txtComment(0)")->text(); }
    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }

    // The series dialog gets these values typed in and OK clicked; with
    // TAVIX_SCREENSHOT=name it is saved as name-dialog.png first.
    void answerSeriesDialog(const QString& minutes, const QString& seconds, const QString& count)
    {
        w->intervalSave().setDialogRunner([=](QDialog& d) {
            d.show();
            auto type = [&d](const char* name, const QString& text) {
                auto* box = d.findChild<QLineEdit*>(QLatin1String(name));
                box->selectAll();
                QTest::keyClicks(box, text);
            };
            type("txtIntervalTime(0)", minutes);
            type("txtIntervalTime(1)", seconds);
            type("txtNumberOfImages", count);
            if (const QString file = qEnvironmentVariable("TAVIX_SCREENSHOT"); !file.isEmpty())
                d.grab().save(file + QStringLiteral("-dialog.png"));
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
            return d.result();
        });
    }
    // One tick of tmrIS after the clock moved on.
    void tickAfter(qint64 ms)
    {
        clock.advance(ms);
        w->intervalSave().tmrIS_Timer();
    }
    void expectSeriesRunning()
    {
        EXPECT_TRUE(w->intervalSave().seriesRunning());
        EXPECT_EQ(w->camera().runState(), CameraPanel::kSeries);
        EXPECT_TRUE(w->intervalSave().timer().isActive());
        EXPECT_EQ(find<QPushButton>("cmdPlayStop")->text(), w->data().messages.text(11040));
        EXPECT_TRUE(find<QPushButton>("cmdPlayStop")->isEnabled());
        EXPECT_FALSE(find<QPushButton>("cmdPicSave")->isEnabled());
        EXPECT_FALSE(find<QPushButton>("cmdIS_Save")->isEnabled());
        EXPECT_FALSE(find<QCheckBox>("chkCross")->isEnabled());
    }
    void expectSeriesEnded()
    {
        EXPECT_FALSE(w->intervalSave().seriesRunning());
        EXPECT_EQ(w->camera().runState(), CameraPanel::kNormal);
        EXPECT_FALSE(w->intervalSave().timer().isActive());
        EXPECT_EQ(find<QPushButton>("cmdPlayStop")->text(), w->data().messages.text(11051));
        EXPECT_TRUE(find<QPushButton>("cmdPicSave")->isEnabled());
        EXPECT_TRUE(find<QPushButton>("cmdIS_Save")->isEnabled());
        EXPECT_TRUE(find<QCheckBox>("chkCross")->isEnabled());
        EXPECT_TRUE(find<QPushButton>("cmdExit")->isEnabled());
    }
    void expectDoneMessage()
    {
        ASSERT_FALSE(prompter.messages.empty());
        EXPECT_EQ(prompter.messages.back().text, w->data().messages.text(30013));
        EXPECT_EQ(prompter.messages.back().title, w->data().messages.text(30014));
        EXPECT_EQ(prompter.messages.back().icon, Prompter::Icon::Information);
    }
    QString seriesFile(const char* name) const
    {
        return dir.file(QStringLiteral("series/") + QLatin1String(name));
    }

    // A day-long series into `folder`: 960 pictures 90 s apart, the clock moved
    // on in uneven steps of 1 to 40 s, new frames waited for before each
    // picture is due. `fail` runs once picture `failAfter` is written; the day
    // is then lived to its end all the same. Returns the pictures written and
    // checks that picture k came at the first tick at or after (k-1) x 90 s.
    int runADay(const QString& folder, int failAfter, const std::function<void()>& fail)
    {
        constexpr qint64 kInterval = 90'000, kDay = 24LL * 3600 * 1000;
        prompter.fileNames.push_back(folder + QStringLiteral("/cell.jpg"));
        answerSeriesDialog(QStringLiteral("1"), QStringLiteral("30"), QStringLiteral("960"));
        click("cmdIS_Save");
        auto name = [&](int k) {
            return folder + QStringLiteral("/cell_%1.jpg").arg(k, 3, 10, QLatin1Char('0'));
        };
        int written = QFileInfo::exists(name(1)) ? 1 : 0;
        EXPECT_EQ(written, 1);
        std::uint32_t step = 1;
        bool failed = false;
        for (qint64 now = 0; now < kDay;) {
            if (written == failAfter && !failed) {
                fail();
                failed = true;
            }
            const qint64 due = written * kInterval;
            step = step * 1103515245u + 12345u;
            const qint64 next = now + 1000 + (step >> 16) % 40 * 1000;
            if (next >= due && !failed) {
                // Two frames: the first may have been on its way when the last picture was taken.
                const auto shown = w->camera().liveView().counters().shown;
                QElapsedTimer timer;
                timer.start();
                while (w->camera().liveView().counters().shown < shown + 2 && timer.elapsed() < 10000)
                    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            }
            tickAfter(next - now);
            if (QFileInfo::exists(name(written + 1))) {
                ++written;
                const qint64 picDue = (written - 1) * kInterval;
                EXPECT_TRUE(now < picDue && picDue <= next) << "picture " << written << " at " << next;
            }
            now = next;
        }
        return written;
    }

    TempDir dir;
    ScriptedPrompter prompter;
    ManualClock clock;
    SimCamera* sim = nullptr;
    std::unique_ptr<frmMain> w;
};

}  // namespace

TEST_F(IntervalSaveWindow, ThreePictureSeries_SavesEveryIntervalShowsProgressAndEnds)
{
    prompter.answers = {Prompter::Answer::Ok};
    w->data().settings.IS_MODE = 0;
    find<QLineEdit>("txtComment(0)")->setText(QStringLiteral("my comment"));
    prompter.fileNames.push_back(seriesFile("cell.jpg"));
    answerSeriesDialog(QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("3"));
    click("cmdIS_Save");

    ASSERT_EQ(prompter.fileRequests.size(), 1u);
    EXPECT_EQ(prompter.fileRequests[0].title, w->data().messages.text(11031));
    EXPECT_TRUE(prompter.fileRequests[0].save);
    EXPECT_TRUE(prompter.fileRequests[0].fileName.isEmpty());
    EXPECT_EQ(w->data().settings.INTERVALTIME, 3);
    EXPECT_EQ(w->data().settings.NUMBEROFIMAGES, 3);
    // The first picture at once.
    EXPECT_TRUE(QFileInfo::exists(seriesFile("cell_001.jpg")));
    EXPECT_FALSE(QFileInfo::exists(seriesFile("cell_002.jpg")));
    expectSeriesRunning();
    EXPECT_EQ(comment(), QString());

    tickAfter(1000);
    EXPECT_EQ(comment(), QStringLiteral("001/003 saved. The next picture is saved in 0min02sec."));
    // With TAVIX_SCREENSHOT=name the running series is saved as name-running.png.
    if (const QString file = qEnvironmentVariable("TAVIX_SCREENSHOT"); !file.isEmpty())
        w->grab().save(file + QStringLiteral("-running.png"));
    EXPECT_TRUE(find<QLineEdit>("txtComment(0)")->isReadOnly());
    tickAfter(1999);
    EXPECT_EQ(comment(), QStringLiteral("001/003 saved. The next picture is saved in 0min01sec."));
    EXPECT_FALSE(QFileInfo::exists(seriesFile("cell_002.jpg")));
    tickAfter(1);
    EXPECT_TRUE(QFileInfo::exists(seriesFile("cell_002.jpg")));
    EXPECT_EQ(comment(), QStringLiteral("002/003 saved. The next picture is saved in 0min03sec."));
    EXPECT_TRUE(prompter.messages.empty());

    tickAfter(3500);
    EXPECT_TRUE(QFileInfo::exists(seriesFile("cell_003.jpg")));
    EXPECT_FALSE(QFileInfo::exists(seriesFile("cell_004.jpg")));
    expectDoneMessage();
    expectSeriesEnded();
    EXPECT_EQ(comment(), QStringLiteral("my comment"));
    EXPECT_FALSE(find<QLineEdit>("txtComment(0)")->isReadOnly());
    for (const char* name : {"cell_001.jpg", "cell_002.jpg", "cell_003.jpg"}) {
        QImageReader reader(seriesFile(name));
        EXPECT_EQ(reader.format(), QByteArray("jpeg")) << name;
        EXPECT_EQ(reader.read().size(), QSize(1280, 1024)) << name;
    }
}

TEST_F(IntervalSaveWindow, PlayStop_StopsTheSeries)
{
    prompter.answers = {Prompter::Answer::Ok};
    prompter.fileNames.push_back(seriesFile("cell.bmp"));
    answerSeriesDialog(QStringLiteral("1"), QStringLiteral("0"), QStringLiteral("10"));
    click("cmdIS_Save");
    expectSeriesRunning();

    click("cmdPlayStop");
    expectDoneMessage();
    expectSeriesEnded();
    EXPECT_FALSE(w->camera().stillShown()) << "the click stopped the series and froze nothing";
    tickAfter(60'000);
    EXPECT_FALSE(QFileInfo::exists(seriesFile("cell_002.bmp")));
}

TEST_F(IntervalSaveWindow, CancelInTheSeriesDialog_StartsNothing)
{
    prompter.fileNames.push_back(seriesFile("cell.bmp"));
    w->intervalSave().setDialogRunner([](QDialog& d) {
        d.show();
        QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdCancel")), Qt::LeftButton);
        return d.result();
    });
    click("cmdIS_Save");
    EXPECT_FALSE(w->intervalSave().seriesRunning());
    EXPECT_FALSE(QFileInfo::exists(seriesFile("cell_001.bmp")));
    EXPECT_TRUE(find<QPushButton>("cmdPicSave")->isEnabled());
}

TEST_F(IntervalSaveWindow, Start_DeletesOldTemporaryBitmapsOfASeries)
{
    const QString temp = w->data().tempBitmapPath();
    const QString leftOver = temp.left(temp.size() - 4) + QStringLiteral("_007.bmp");
    ASSERT_EQ(BmpFile::write(leftOver, QImage(4, 4, QImage::Format_RGB888)), 0);
    prompter.fileNames.push_back(seriesFile("cell.bmp"));
    answerSeriesDialog(QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("2"));
    click("cmdIS_Save");
    EXPECT_FALSE(QFileInfo::exists(leftOver));
}

TEST_F(IntervalSaveWindow, UnsavedResults_AreAskedFor_AndNoKeepsThem)
{
    ASSERT_TRUE(w->measure().results().addResult(QStringLiteral("Distance"), 1.5, QStringLiteral("mm")) > 0);
    ASSERT_TRUE(w->measure().results().unsaved());
    prompter.answers.push_back(Prompter::Answer::No);
    click("cmdIS_Save");
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(20030));
    EXPECT_EQ(prompter.messages[0].title, w->data().messages.text(11032));
    EXPECT_EQ(prompter.messages[0].buttons, Prompter::Buttons::YesNo);
    EXPECT_EQ(prompter.messages[0].defaultAnswer, Prompter::Answer::No);
    EXPECT_TRUE(prompter.fileRequests.empty());
    EXPECT_TRUE(w->measure().results().hasResults());
}

TEST_F(IntervalSaveWindow, SeriesWithTwoCrosses_DrawsTheLinesAtTheirPicturePositions)
{
    prompter.answers = {Prompter::Answer::Ok};
    w->data().settings.CROSSLINENUM = 2;
    w->data().settings.CROSSLINECOLOR = 0x0000ff;  // red, red in the low byte
    w->overlays().crossLines().applySettings();
    QTest::mouseClick(find<QCheckBox>("chkCross"), Qt::LeftButton, {}, QPoint(8, 10));
    CameraViewWidget* live = w->camera().cameraView();
    for (const QPoint p : {QPoint(100, 80), QPoint(300, 250)}) {
        QTest::mouseMove(live, p);
        QTest::mouseClick(live, Qt::LeftButton, {}, p);
    }
    ASSERT_TRUE(w->overlays().crossLines().crossVisible(1));
    const double scale = double(live->width()) / 1280;

    prompter.fileNames.push_back(seriesFile("cell.bmp"));
    answerSeriesDialog(QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("2"));
    click("cmdIS_Save");
    tickAfter(3000);
    expectSeriesEnded();
    for (const char* name : {"cell_001.bmp", "cell_002.bmp"}) {
        QImage saved;
        ASSERT_EQ(BmpFile::read(seriesFile(name), saved), 0) << name;
        for (const QPoint p : {QPoint(100, 80), QPoint(300, 250)}) {
            const int x = int(p.x() / scale);
            const int y = int(p.y() / scale);
            EXPECT_EQ(saved.pixel(x, 3), qRgb(255, 0, 0)) << name << " vertical line at " << x;
            EXPECT_EQ(saved.pixel(5, y), qRgb(255, 0, 0)) << name << " horizontal line at " << y;
        }
    }
    const QString temp = w->data().tempBitmapPath();
    EXPECT_FALSE(QFileInfo::exists(temp.left(temp.size() - 4) + QStringLiteral("_001.bmp")));
}

TEST_F(IntervalSaveWindow, CameraFailure_IsReported_ClosesTheCamera_AndEndsTheSeries)
{
    prompter.answers = {Prompter::Answer::Ok};
    prompter.fileNames.push_back(seriesFile("cell.bmp"));
    answerSeriesDialog(QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("5"));
    click("cmdIS_Save");
    sim->failCall(QStringLiteral("SaveToFile"), -8);
    test::EventLoopWatch watch;
    tickAfter(3000);
    EXPECT_TRUE(watch.keepsTurning()) << "longest gap " << watch.longestGapMs() << " ms";
    EXPECT_TRUE(log().contains(QStringLiteral(" Error: ICubeSDK_SaveToFile(-8)\r\n")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(30011));
    EXPECT_EQ(prompter.messages[0].title, w->data().messages.text(30012));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    EXPECT_EQ(sim->IsOpen(0), 1) << "the camera is closed";
    expectSeriesEnded();
}

TEST_F(IntervalSaveWindow, CameraLostMidSeries_EndsTheSeriesWith30011_AndNoPictureRepeatsTheOneBefore)
{
    prompter.fileNames.push_back(seriesFile("cell.bmp"));
    answerSeriesDialog(QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("5"));
    click("cmdIS_Save");
    // The scene moves on with the clock: picture 2 waits for frames rendered after the step
    // (one may have been on its way before it).
    const auto shownBefore = w->camera().liveView().counters().shown;
    clock.advance(1000);
    QElapsedTimer frames;
    frames.start();
    while (w->camera().liveView().counters().shown < shownBefore + 2 && frames.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    ASSERT_GE(w->camera().liveView().counters().shown, shownBefore + 2);
    tickAfter(2000);
    ASSERT_TRUE(QFileInfo::exists(seriesFile("cell_002.bmp")));

    SimCamera::Faults faults = sim->faults();
    faults.disconnectAfter = 1;
    sim->setFaults(faults);
    // Without turning the event loop: the status timer's report of the loss comes later.
    QElapsedTimer timer;
    timer.start();
    while (!sim->connectionLost(0) && timer.elapsed() < 10000)
        QThread::msleep(5);
    ASSERT_TRUE(sim->connectionLost(0));
    prompter.answers.push_back(Prompter::Answer::Ok);  // message 30011
    tickAfter(3000);

    EXPECT_FALSE(QFileInfo::exists(seriesFile("cell_003.bmp"))) << "the last frame again under a new number";
    EXPECT_TRUE(log().contains(QStringLiteral(" Error: ICubeSDK_SaveToFile(-10)\r\n")))
        << log().toStdString();
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(30011));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    expectSeriesEnded();
    EXPECT_EQ(sim->IsOpen(0), 1) << "the camera is closed";
    EXPECT_NE(QImage(seriesFile("cell_001.bmp")), QImage(seriesFile("cell_002.bmp")));
}

TEST_F(IntervalSaveWindow, CrossLinePictureThatCannotBeWritten_IsLogged_AndTheSeriesGoesOn)
{
    QTest::mouseClick(find<QCheckBox>("chkCross"), Qt::LeftButton, {}, QPoint(8, 10));
    QTest::mouseClick(w->camera().cameraView(), Qt::LeftButton, {}, QPoint(100, 80));
    prompter.fileNames.push_back(seriesFile("cell.bmp"));
    answerSeriesDialog(QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("3"));
    click("cmdIS_Save");
    ASSERT_TRUE(QFileInfo::exists(seriesFile("cell_001.bmp")));
    // The second picture's name is taken by a folder: it cannot be written.
    ASSERT_TRUE(QDir().mkpath(seriesFile("cell_002.bmp")));
    tickAfter(3000);
    EXPECT_TRUE(log().contains(QStringLiteral(" frmMain:IS_DrawCrossLine Error.("))) << log().toStdString();
    EXPECT_TRUE(prompter.messages.empty());
    expectSeriesRunning();
    EXPECT_EQ(sim->IsOpen(0), 0) << "the camera stays open";
    prompter.answers.push_back(Prompter::Answer::Ok);  // the series is complete
    tickAfter(3000);
    EXPECT_TRUE(QFileInfo::exists(seriesFile("cell_003.bmp")));
    expectDoneMessage();
    expectSeriesEnded();
}

TEST_F(IntervalSaveWindow, WindowClosedMidSeries_StopsSavingAndLeavesThePicturesSaved)
{
    prompter.fileNames.push_back(seriesFile("cell.jpg"));
    answerSeriesDialog(QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("5"));
    click("cmdIS_Save");
    tickAfter(3000);
    expectSeriesRunning();
    prompter.answers.push_back(Prompter::Answer::Yes);  // leave the program
    EXPECT_TRUE(w->close());
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(20110));
    w.reset();
    EXPECT_EQ(QImage(seriesFile("cell_001.jpg")).size(), QSize(1280, 1024));
    EXPECT_EQ(QImage(seriesFile("cell_002.jpg")).size(), QSize(1280, 1024));
    EXPECT_FALSE(QFileInfo::exists(seriesFile("cell_003.jpg")));
}

namespace {

// The series window whose message boxes stay open, as real ones do, for a
// quarter of a minute on the series' clock.
class SeriesBehindABox : public ::testing::Test {
protected:
    void SetUp() override
    {
        test::copyShippedData(dir);
        QDir(dir.path()).mkpath(QStringLiteral("series"));
        auto factory = [this](AppData&) {
            auto camera = std::make_unique<SimCamera>();
            sim = camera.get();
            return std::unique_ptr<CameraDriver>(std::move(camera));
        };
        w = std::make_unique<frmMain>(dir.path(), prompter, clock, factory);
        ASSERT_TRUE(w->Form_Load());
        w->show();
        // The series' first picture is saved at once: the camera must have a frame by then.
        QElapsedTimer timer;
        timer.start();
        while (w->camera().liveView().counters().shown == 0 && timer.elapsed() < 10000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        ASSERT_GT(w->camera().liveView().counters().shown, 0u);
    }

    TempDir dir;
    ManualClock clock;
    test::NestedLoopPrompter prompter{clock, 15000, 100};
    SimCamera* sim = nullptr;
    std::unique_ptr<frmMain> w;
};

}  // namespace

TEST_F(SeriesBehindABox, FailureBoxOpenAcrossFiveIntervals_AsksTheCameraOnce_AndShowsOneBox)
{
    prompter.fileNames.push_back(dir.file(QStringLiteral("series/cell.bmp")));
    w->intervalSave().setDialogRunner([](QDialog& d) {
        d.findChild<QLineEdit*>(QStringLiteral("txtIntervalTime(0)"))->setText(QStringLiteral("0"));
        d.findChild<QLineEdit*>(QStringLiteral("txtIntervalTime(1)"))->setText(QStringLiteral("3"));
        d.findChild<QLineEdit*>(QStringLiteral("txtNumberOfImages"))->setText(QStringLiteral("20"));
        QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
        return d.result();
    });
    QTest::mouseClick(w->findChild<QPushButton*>(QStringLiteral("cmdIS_Save")), Qt::LeftButton);
    ASSERT_TRUE(w->intervalSave().seriesRunning());
    sim->failCall(QStringLiteral("SaveToFile"), -8);
    sim->setRecordCalls(true);
    prompter.answers.push_back(Prompter::Answer::Ok);

    // The timer itself finds the next picture due; the box then stays open for
    // five intervals while the event loop turns under it (Qt does not fire
    // tmrIS again before its tick returns: this holds it).
    clock.advance(3000);
    QElapsedTimer timer;
    timer.start();
    while (prompter.messages.empty() && timer.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    QTest::qWait(2 * IntervalSavePanel::kTimerPeriodMs);

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(30011));
    EXPECT_EQ(prompter.deepest, 1);
    EXPECT_EQ(sim->calls().filter(QStringLiteral("SaveToFile(")).size(), 1)
        << sim->calls().join(' ').toStdString();
    EXPECT_FALSE(w->intervalSave().seriesRunning());
    EXPECT_FALSE(w->intervalSave().timer().isActive());
}

// --- a day unattended (long: run by scripts/long_checks.sh) ---

namespace {

// Pictures 1..n of a series: each one whole, none the same as the one before.
void expectWholeAndMoving(const QString& folder, int n)
{
    QByteArray before;
    for (int k = 1; k <= n; ++k) {
        const QString name = folder + QStringLiteral("/cell_%1.jpg").arg(k, 3, 10, QLatin1Char('0'));
        QImageReader reader(name);
        EXPECT_EQ(reader.read().size(), QSize(1280, 1024)) << name.toStdString();
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        EXPECT_NE(bytes, before) << name.toStdString() << " repeats the picture before";
        before = bytes;
    }
}

}  // namespace

TEST_F(IntervalSaveWindow, DISABLED_ADay_DiskFullAtNoon_EndsWith30011_AndKeepsEveryPictureBefore)
{
    test::SmallDisk disk(256 << 20);
    ASSERT_TRUE(disk.mounted()) << "no right to mount a small filesystem here";
    prompter.answers.push_back(Prompter::Answer::Ok);  // message 30011
    const int written = runADay(disk.path(), 480, [&] { disk.fill(); });
    EXPECT_EQ(written, 480);
    EXPECT_TRUE(log().contains(QStringLiteral(" Error: ICubeSDK_SaveToFile("))) << log().toStdString();
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(30011));
    expectSeriesEnded();
    disk.makeRoom();
    expectWholeAndMoving(disk.path(), 480);
    // Nothing half-written beside the pictures.
    EXPECT_EQ(QDir(disk.path()).entryList({QStringLiteral("cell_*")}, QDir::Files).size(), 480);
}

TEST_F(IntervalSaveWindow, DISABLED_ADay_CameraLostAtNoon_EndsWith30011_AndNoPictureRepeats)
{
    const QString folder = dir.file(QStringLiteral("series"));
    prompter.answers.push_back(Prompter::Answer::Ok);  // message 30011
    const int written = runADay(folder, 480, [this] {
        SimCamera::Faults faults = sim->faults();
        faults.disconnectAfter = 1;
        sim->setFaults(faults);
        QElapsedTimer timer;
        timer.start();
        while (!sim->connectionLost(0) && timer.elapsed() < 10000)
            QThread::msleep(5);
        ASSERT_TRUE(sim->connectionLost(0));
    });
    EXPECT_EQ(written, 480);
    EXPECT_TRUE(log().contains(QStringLiteral(" Error: ICubeSDK_SaveToFile(-10)\r\n")))
        << log().toStdString();
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(30011));
    expectSeriesEnded();
    expectWholeAndMoving(folder, 480);
}

// --- quick save ---

TEST_F(IntervalSaveWindow, QuickSave_After0005_Writes0006)
{
    w->data().settings.IS_MODE = 1;
    w->data().settings.IS_SAVEPATH = dir.file(QStringLiteral("quick"));
    dir.write(QStringLiteral("quick/0005.jpg"), "old");
    click("cmdIS_Save");
    QImageReader reader(dir.file(QStringLiteral("quick/0006.jpg")));
    EXPECT_EQ(reader.format(), QByteArray("jpeg"));
    EXPECT_EQ(reader.read().size(), QSize(1280, 1024));
    EXPECT_EQ(dir.read(QStringLiteral("quick/0005.jpg")), QByteArray("old"));
    EXPECT_FALSE(dir.exists(QStringLiteral("quick/0001.jpg")));
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_TRUE(prompter.fileRequests.empty());
    click("cmdIS_Save");
    EXPECT_TRUE(dir.exists(QStringLiteral("quick/0007.jpg")));
}

TEST_F(IntervalSaveWindow, QuickSave_WithUnsavedResults_AsksFirst_AndNoSavesNothing)
{
    w->data().settings.IS_MODE = 1;
    w->data().settings.IS_SAVEPATH = dir.file(QStringLiteral("quick"));
    ASSERT_TRUE(w->measure().results().addResult(QStringLiteral("Distance"), 1.5, QStringLiteral("mm")) > 0);
    prompter.answers.push_back(Prompter::Answer::No);
    click("cmdIS_Save");
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(20030));
    EXPECT_EQ(prompter.messages[0].defaultAnswer, Prompter::Answer::No);
    EXPECT_FALSE(dir.exists(QStringLiteral("quick/0001.jpg")));

    prompter.answers.push_back(Prompter::Answer::Yes);
    click("cmdIS_Save");
    EXPECT_EQ(prompter.messages.size(), 2u);
    EXPECT_TRUE(dir.exists(QStringLiteral("quick/0001.jpg")));
}

TEST_F(IntervalSaveWindow, QuickSave_IntoAnEmptyFolder_Writes0001)
{
    w->data().settings.IS_MODE = 1;
    w->data().settings.IS_SAVEPATH =
        QStringLiteral("  ") + dir.file(QStringLiteral("quick")) + QStringLiteral(" ");
    click("cmdIS_Save");
    EXPECT_TRUE(dir.exists(QStringLiteral("quick/0001.jpg")));
}

TEST_F(IntervalSaveWindow, QuickSave_With9999_IsRefused)
{
    prompter.answers = {Prompter::Answer::Ok};
    w->data().settings.IS_MODE = 1;
    w->data().settings.IS_SAVEPATH = dir.file(QStringLiteral("quick"));
    dir.write(QStringLiteral("quick/9999.jpg"), "old");
    click("cmdIS_Save");
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(30026));
    EXPECT_EQ(QDir(dir.file(QStringLiteral("quick"))).entryList(QDir::Files), QStringList{"9999.jpg"});
}

TEST_F(IntervalSaveWindow, QuickSave_WithoutItsFolder_AsksForOne)
{
    prompter.answers = {Prompter::Answer::Ok};
    w->data().settings.IS_MODE = 1;
    w->data().settings.IS_SAVEPATH = dir.file(QStringLiteral("missing"));
    const QString chosen = dir.file(QStringLiteral("quick"));
    QString dialogName;
    w->intervalSave().setDialogRunner([&](QDialog& d) {
        dialogName = d.objectName();
        d.show();
        auto* path = d.findChild<QLineEdit*>(QStringLiteral("txtSavePath"));
        path->selectAll();
        QTest::keyClicks(path, chosen);
        QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
        return d.result();
    });
    click("cmdIS_Save");
    ASSERT_FALSE(prompter.messages.empty());
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(30025));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    EXPECT_EQ(dialogName, QStringLiteral("frmSaveSetting"));
    EXPECT_EQ(w->data().settings.IS_SAVEPATH, chosen);
    EXPECT_TRUE(dir.exists(QStringLiteral("quick/0001.jpg")));
}

TEST_F(IntervalSaveWindow, QuickSave_WithoutItsFolder_CancelSavesNothing)
{
    prompter.answers = {Prompter::Answer::Ok};
    w->data().settings.IS_MODE = 1;
    w->data().settings.IS_SAVEPATH = dir.file(QStringLiteral("missing"));
    w->intervalSave().setDialogRunner([](QDialog& d) {
        d.show();
        QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdCancel")), Qt::LeftButton);
        return d.result();
    });
    click("cmdIS_Save");
    EXPECT_EQ(prompter.messages.size(), 1u);
    EXPECT_FALSE(dir.exists(QStringLiteral("missing")));
    EXPECT_TRUE(QDir(dir.file(QStringLiteral("quick"))).entryList(QDir::Files).isEmpty());
}

TEST_F(IntervalSaveWindow, QuickSave_WhileAStillIsShown_SavesThatStill)
{
    w->data().settings.IS_MODE = 1;
    w->data().settings.IS_SAVEPATH = dir.file(QStringLiteral("quick"));
    click("cmdPlayStop");
    ASSERT_TRUE(w->camera().stillShown());
    const QImage still = w->camera().still();
    sim->setRecordCalls(true);
    click("cmdIS_Save");
    EXPECT_FALSE(sim->calls().join(QLatin1Char(' ')).contains(QStringLiteral("SaveToFile")))
        << "no camera write";
    const QImage saved = QImageReader(dir.file(QStringLiteral("quick/0001.jpg"))).read();
    ASSERT_EQ(saved.size(), still.size());
    // The frozen picture, not a later one: the simulated scene moves.
    long long difference = 0;
    for (int y = 0; y < still.height(); y += 16)
        for (int x = 0; x < still.width(); x += 16)
            difference += std::abs(qGray(saved.pixel(x, y)) - qGray(still.pixel(x, y)));
    EXPECT_LT(difference / ((still.width() / 16) * (still.height() / 16)), 4);
    EXPECT_TRUE(w->camera().stillShown());
}
