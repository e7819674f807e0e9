// The main window as a desktop program: command line, shortcuts, tool tips,
// the picture's name in the title, and the Japanese message files.
#include "ScriptedPrompter.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/Clock.h"
#include "common/CommandLine.h"
#include "measure/MeasureSession.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"

#include <gtest/gtest.h>
#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QImage>
#include <QLabel>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

const QString kProgram = QStringLiteral(TAVIX_BINARY_DIR "/tavix");

struct ProgramRun {
    int exitCode = -1;
    QString out;
    QString err;
};

// The real executable, offscreen, with a program folder of its own.
ProgramRun runProgram(const QStringList& arguments)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    p.setProcessEnvironment(env);
    p.start(kProgram, arguments);
    EXPECT_TRUE(p.waitForFinished(60000)) << arguments.join(QLatin1Char(' ')).toStdString();
    return {p.exitCode(), QString::fromLocal8Bit(p.readAllStandardOutput()),
            QString::fromLocal8Bit(p.readAllStandardError())};
}

}  // namespace

TEST(DesktopCommandLine, Version_PrintsTheProjectVersion)
{
    const ProgramRun run = runProgram({QStringLiteral("--version")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^Tavix \\d+\\.\\d+\\.\\d+\\n$")).match(run.out).hasMatch())
        << run.out.toStdString();
}

TEST(DesktopCommandLine, Help_ListsTheOptions)
{
    const ProgramRun run = runProgram({QStringLiteral("--help")});
    EXPECT_EQ(run.exitCode, 0);
    for (const char* option : {"--home", "--camera", "--version", "--help"})
        EXPECT_TRUE(run.out.contains(QLatin1String(option))) << option << "\n" << run.out.toStdString();
}

TEST(DesktopCommandLine, ListCameras_PrintsOneLineACamera_TheSimulatedOneLast)
{
    const ProgramRun run = runProgram({QStringLiteral("--list-cameras")});
    EXPECT_EQ(run.exitCode, 0);
    // No camera is plugged into these machines: the simulated camera is all there is.
    EXPECT_TRUE(run.out.endsWith(QStringLiteral("sim\t\tSimulated camera\tbuilt in\n")))
        << run.out.toStdString();
    for (const QString& entry : run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        EXPECT_EQ(entry.count(QLatin1Char('\t')), 3) << entry.toStdString();
}

TEST(DesktopCommandLine, UnknownOption_ExitCode2_AndAMessageOnStandardError)
{
    const ProgramRun run = runProgram({QStringLiteral("--no-such-option")});
    EXPECT_EQ(run.exitCode, CommandLine::kUsageExitCode);
    EXPECT_TRUE(run.out.isEmpty());
    EXPECT_TRUE(run.err.contains(QStringLiteral("no-such-option"))) << run.err.toStdString();
}

TEST(DesktopCommandLine, UnknownCamera_ExitCode2)
{
    const ProgramRun run = runProgram({QStringLiteral("--camera"), QStringLiteral("webcam")});
    EXPECT_EQ(run.exitCode, CommandLine::kUsageExitCode);
    EXPECT_TRUE(run.err.contains(QStringLiteral("webcam"))) << run.err.toStdString();
}

// The picture named on the command line reaches the picture loader: a file
// that is not a picture is reported in the program folder's log.
TEST(DesktopCommandLine, PictureArgument_IsLoaded)
{
    TempDir dir;
    test::copyShippedData(dir);
    const QString broken = dir.write(QStringLiteral("broken.jpg"), "not a picture");
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    p.setProcessEnvironment(env);
    p.start(kProgram, {QStringLiteral("--home"), dir.path(), QStringLiteral("--camera=sim"), broken});
    ASSERT_TRUE(p.waitForStarted());
    QElapsedTimer timer;
    timer.start();
    const QString line = QStringLiteral("frmMain:cmdPicLoad Error.(");
    while (!QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))).contains(line) &&
           timer.elapsed() < 60000 && p.state() == QProcess::Running)
        QTest::qWait(100);
    p.kill();
    p.waitForFinished();
    EXPECT_TRUE(QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))).contains(line))
        << dir.read(QStringLiteral("Error.Log")).constData();
}

namespace {

class Desktop : public ::testing::Test {
protected:
    void SetUp() override { test::copyShippedData(dir); }

    void TearDown() override
    {
        if (w)
            w->setConfirmOnClose(false);
        w.reset();
        QApplication::setFont(appFont);  // a Japanese start sets the font of the whole program
    }

    void useJapanese()
    {
        QString ini = QString::fromUtf8(dir.read(QStringLiteral("Tavix.Ini")));
        ini.replace(QStringLiteral("\\Message_E.txt"), QStringLiteral("\\Message_J.txt"));
        ini.replace(QStringLiteral("\\Guidance_E.txt"), QStringLiteral("\\Guidance_J.txt"));
        dir.write(QStringLiteral("Tavix.Ini"), ini.toUtf8());
    }

    void start()
    {
        auto factory = [](AppData&) { return std::unique_ptr<CameraDriver>(std::make_unique<SimCamera>()); };
        w = std::make_unique<frmMain>(dir.path(), prompter, clock, factory);
        ASSERT_TRUE(w->Form_Load());
        w->resize(1200, 800);
        w->show();
        w->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(w.get()));
        QElapsedTimer timer;
        timer.start();
        while (w->camera().liveView().counters().received == 0 && timer.elapsed() < 20000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }

    template <typename T = QAbstractButton>
    T* find(const char* name)
    {
        T* widget = w->findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(w.get(), static_cast<Qt::Key>(key), modifiers);
    }

    QString picture(const char* name)
    {
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        const QString path = dir.file(QLatin1String(name));
        EXPECT_TRUE(image.save(path, "BMP"));
        return path;
    }

    const QFont appFont = QApplication::font();
    TempDir dir;
    ScriptedPrompter prompter;
    SystemClock clock;
    std::unique_ptr<frmMain> w;
};

}  // namespace

TEST_F(Desktop, SpaceFreezes_F5ReturnsToLive)
{
    start();
    ASSERT_FALSE(w->camera().stillShown());
    key(Qt::Key_Space);
    EXPECT_TRUE(w->camera().stillShown());
    key(Qt::Key_F5);
    EXPECT_FALSE(w->camera().stillShown());
}

TEST_F(Desktop, SpaceInTheCommentBox_TypesABlank_AndDoesNotFreeze)
{
    start();
    auto* comment = find<QLineEdit>("txtComment(0)");
    comment->setFocus();
    QTest::keyClicks(comment, QStringLiteral("a b"));
    EXPECT_EQ(comment->text(), QStringLiteral("a b"));
    EXPECT_FALSE(w->camera().stillShown());
}

TEST_F(Desktop, CtrlO_LoadsAPicture_AndTheTitleShowsItsName)
{
    start();
    EXPECT_EQ(w->windowTitle(), QStringLiteral("Tavix"));
    prompter.fileNames.push_back(picture("specimen.bmp"));
    key(Qt::Key_O, Qt::ControlModifier);
    ASSERT_EQ(prompter.fileRequests.size(), 1u);
    EXPECT_TRUE(w->camera().stillShown());
    EXPECT_EQ(w->camera().still().size(), QSize(64, 48));
    EXPECT_EQ(w->windowTitle(), QStringLiteral("Tavix - specimen.bmp"));
}

TEST_F(Desktop, CtrlS_SavesThePicture_AndTheTitleShowsTheSavedName)
{
    start();
    const QString path = dir.file(QStringLiteral("saved shot.jpg"));
    prompter.fileNames.push_back(path);
    key(Qt::Key_S, Qt::ControlModifier);
    ASSERT_EQ(prompter.fileRequests.size(), 1u);
    EXPECT_TRUE(QFileInfo::exists(path));
    EXPECT_EQ(w->windowTitle(), QStringLiteral("Tavix - saved shot.jpg"));
}

TEST_F(Desktop, Title_KeepsTheLastName_WhenASaveIsCancelled)
{
    start();
    w->openPicture(picture("first.bmp"));
    prompter.fileNames.push_back(QString());  // the save dialog cancelled
    key(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(w->windowTitle(), QStringLiteral("Tavix - first.bmp"));
}

TEST_F(Desktop, Title_BuiltOnAppName)
{
    QString ini = QString::fromUtf8(dir.read(QStringLiteral("Tavix.Ini")));
    ini.replace(QStringLiteral("APPNAME=Tavix"), QStringLiteral("APPNAME=Lab scope"));
    dir.write(QStringLiteral("Tavix.Ini"), ini.toUtf8());
    start();
    w->openPicture(picture("cell.bmp"));
    EXPECT_EQ(w->windowTitle(), QStringLiteral("Lab scope - cell.bmp"));
}

TEST_F(Desktop, OpenPicture_ThatCannotBeRead_KeepsTheTitleAndTellsTheUser)
{
    prompter.answers = {Prompter::Answer::Ok};
    start();
    w->openPicture(dir.write(QStringLiteral("broken.jpg"), "no picture"));
    EXPECT_EQ(w->windowTitle(), QStringLiteral("Tavix"));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_TRUE(prompter.messages[0].text.contains(QStringLiteral("broken.jpg")));
}

TEST_F(Desktop, CtrlShiftS_SavesTheResults)
{
    prompter.answers = {Prompter::Answer::Ok};
    start();
    key(Qt::Key_Space);
    find("cmdMeasure(0)")->click();
    auto* still = w->camera().stillView();
    QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(100, 100));
    QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(300, 100));
    ASSERT_EQ(w->measure().results().count(), 1);
    const QString path = dir.file(QStringLiteral("results.csv"));
    prompter.fileNames.push_back(path);
    key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(prompter.fileRequests.size(), 1u);
    EXPECT_TRUE(QFileInfo::exists(path));
}

TEST_F(Desktop, ShortcutsOfDisabledButtons_DoNothing)
{
    start();
    // On the live picture there are no results to save.
    ASSERT_FALSE(find("cmdResultSave")->isEnabled());
    key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(prompter.fileRequests.empty());
}

TEST_F(Desktop, Esc_DropsThePointsClicked_ThenPutsTheToolAway)
{
    start();
    key(Qt::Key_Space);
    find("cmdMeasure(0)")->click();
    ASSERT_NE(w->measuring().toolNumber(), 0);
    QTest::mouseClick(w->camera().stillView(), Qt::LeftButton, {}, QPoint(100, 100));
    ASSERT_EQ(w->measuring().clickCount(), 1);
    find<QLineEdit>("txtComment(1)")->setFocus();  // Esc works wherever the focus is
    key(Qt::Key_Escape);
    EXPECT_EQ(w->measuring().clickCount(), 0);
    EXPECT_NE(w->measuring().toolNumber(), 0);
    EXPECT_TRUE(find("cmdMeasure(0)")->isChecked());
    key(Qt::Key_Escape);
    EXPECT_EQ(w->measuring().toolNumber(), 0);
    EXPECT_FALSE(find("cmdMeasure(0)")->isChecked());
    EXPECT_EQ(w->measure().results().count(), 0);
}

TEST_F(Desktop, EveryButtonOfTheWindow_HasAToolTip)
{
    start();
    for (QAbstractButton* button : w->findChildren<QAbstractButton*>()) {
        if (button->isVisibleTo(w.get()) && !button->objectName().isEmpty()) {
            EXPECT_FALSE(button->toolTip().isEmpty()) << button->objectName().toStdString();
        }
    }
    EXPECT_EQ(find("cmdPicSave")->toolTip(), w->data().messages.text(40101) + QStringLiteral(" (Ctrl+S)"));
    EXPECT_TRUE(find("cmdPlayStop")->toolTip().endsWith(QStringLiteral(" (Space)")));
    key(Qt::Key_Space);
    EXPECT_EQ(find("cmdPlayStop")->toolTip(), w->data().messages.text(40028) + QStringLiteral(" (Space)"));
}

TEST_F(Desktop, Japanese_CaptionsTipsAndGuidance)
{
    useJapanese();
    start();
    EXPECT_EQ(find("cmdPicLoad")->text(), QStringLiteral("画像を開く"));
    EXPECT_EQ(find("cmdPicSave")->text(), QStringLiteral("画像を保存"));
    EXPECT_EQ(find("cmdExit")->text(), QStringLiteral("終了"));
    EXPECT_EQ(find("cmdMeasure(0)")->text(), QStringLiteral("2点間距離"));
    EXPECT_TRUE(find("cmdPicSave")->toolTip().startsWith(QStringLiteral("静止画を")));
    key(Qt::Key_Space);
    find("cmdMeasure(0)")->click();
    EXPECT_EQ(find<QLineEdit>("txtComment(0)")->text(),
              QStringLiteral("2点間距離: 1 点目をクリックしてください。"));
}

TEST_F(Desktop, Japanese_UndoRedoAndHistogram)
{
    useJapanese();
    start();
    EXPECT_EQ(find("cmdUndo")->text(), QStringLiteral("元に戻す"));
    EXPECT_EQ(find("cmdRedo")->text(), QStringLiteral("やり直し"));
    EXPECT_EQ(find("cmdHistogram")->text(), QStringLiteral("ヒストグラム"));
    EXPECT_TRUE(
        find("cmdUndo")->toolTip().startsWith(QStringLiteral("測定と測定結果への最後の変更を元に戻す")));
    find("cmdHistogram")->click();
    auto* window = w->findChild<QWidget*>(QStringLiteral("frmHistogram"));
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("ヒストグラム"));
    EXPECT_TRUE(window->findChild<QLabel*>(QStringLiteral("lblClippedBright"))
                    ->text()
                    .startsWith(QStringLiteral("255 で飽和 (白とび): ")));
}

// fonts-noto-cjk comes with scripts/deps.sh.
TEST_F(Desktop, Japanese_UsesACjkFont)
{
    ASSERT_TRUE(QFontDatabase::families().contains(QStringLiteral("Noto Sans CJK JP")))
        << "fonts-noto-cjk is not installed";
    useJapanese();
    start();
    EXPECT_EQ(find("cmdPicLoad")->font().families().value(0), QStringLiteral("Noto Sans CJK JP"));
    EXPECT_TRUE(QFontInfo(find("cmdPicLoad")->font()).family().contains(QStringLiteral("CJK")));
}

TEST_F(Desktop, English_KeepsTheDesktopFont_AndQtsOwnTexts)
{
    start();
    EXPECT_EQ(QApplication::font().families(), appFont.families());
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("Cancel"));
}

TEST_F(Desktop, Japanese_Dialog)
{
    useJapanese();
    start();
    key(Qt::Key_Space);
    QString title;
    QStringList texts;
    w->measure().setDialogRunner([&](QDialog& d) {
        title = d.windowTitle();
        for (QAbstractButton* b : d.findChildren<QAbstractButton*>())
            texts << b->text();
        return int(QDialog::Rejected);
    });
    find("cmdMeasureConfig")->click();
    EXPECT_EQ(title, QStringLiteral("測定設定"));
    EXPECT_TRUE(texts.contains(QStringLiteral("2直線 (4クリック)")))
        << texts.join(QLatin1Char('|')).toStdString();
}

// Message boxes, file and colour dialogs take their buttons from Qt's own texts
// (qt6-translations-l10n, from scripts/deps.sh).
TEST_F(Desktop, Japanese_QtsOwnTexts)
{
    ASSERT_TRUE(QFileInfo::exists(QLibraryInfo::path(QLibraryInfo::TranslationsPath) +
                                  QStringLiteral("/qtbase_ja.qm")))
        << "qt6-translations-l10n is not installed";
    useJapanese();
    start();
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("キャンセル"));
    w.reset();
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("Cancel"));
}
