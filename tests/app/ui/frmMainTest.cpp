#include "ScriptedPrompter.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "camera/sim/SimCamera.h"
#include "common/Clock.h"
#include "common/FaultPoint.h"
#include "common/MainLayout.h"
#include "common/RunError.h"
#include "common/Twips.h"
#include "program/Lifecycle.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableWidget>
#include <QTest>
#include <QToolButton>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

// A program folder holding the shipped data files.
class ProgramFolderFixture : public ::testing::Test {
protected:
    void SetUp() override { test::copyShippedData(dir); }

    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }
    QByteArray ini() const { return dir.read(QStringLiteral("Tavix.Ini")); }

    // Replaces "KEY=..." in the settings file (the whole line).
    void setIniValue(const QString& key, const QString& value)
    {
        QString text = QString::fromUtf8(ini());
        const QRegularExpression line(
            QStringLiteral("(?m)^%1=[^\\r\\n]*").arg(QRegularExpression::escape(key)));
        ASSERT_TRUE(line.match(text).hasMatch()) << key.toStdString();
        text.replace(line, key + QLatin1Char('=') + value);
        dir.write(QStringLiteral("Tavix.Ini"), text.toUtf8());
    }

    template <typename T>
    T* find(frmMain& w, const char* name)
    {
        T* widget = w.findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    // The simulated camera, streaming on its own thread like a real one.
    static frmMain::DriverFactory simCamera()
    {
        return [](AppData&) { return std::unique_ptr<CameraDriver>(std::make_unique<SimCamera>()); };
    }

    TempDir dir;
    ScriptedPrompter prompter;
    SystemClock clock;
};

using frmMainStart = ProgramFolderFixture;

}  // namespace

TEST_F(frmMainStart, Load_SetsTitleCaptionsAndSettingsControls)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    EXPECT_EQ(w.windowTitle(), QStringLiteral("Tavix"));
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(find<QComboBox>(w, "cboScale")->currentText(), QStringLiteral("x 1.0"));
    EXPECT_EQ(find<QComboBox>(w, "cboProof")->count(), 20);
    EXPECT_EQ(find<QToolButton>(w, "cmdMeasure(0)")->text(), w.data().messages.text(10101));
    EXPECT_EQ(find<QToolButton>(w, "cmdMeasure(1)")->text(), w.data().messages.text(10102));
    EXPECT_EQ(find<QToolButton>(w, "cmdMeasure(5)")->text(), w.data().messages.text(10106));
    EXPECT_EQ(find<QLabel>(w, "lblJpegQty")->text(), QStringLiteral("90"));
    EXPECT_EQ(find<QLabel>(w, "lblJpegQtyCaption")->text(), w.data().messages.text(40022) + QLatin1Char(':'));
    EXPECT_EQ(find<QLabel>(w, "lblZoom")->text(), QStringLiteral("x 1.0"));
    EXPECT_EQ(w.data().valueFormat, QStringLiteral("0.00"));
    EXPECT_TRUE(log().contains(QStringLiteral(" Digital Camera Image Display Program Start.\r\n")));
}

TEST_F(frmMainStart, Load_ChoosesToolCaptionsByCommandModes)
{
    setIniValue(QStringLiteral("2POINTCOMMANDMODE"), QStringLiteral("1"));
    setIniValue(QStringLiteral("CIRCLEARCSELECT"), QStringLiteral("1"));
    setIniValue(QStringLiteral("ANGLECOMMANDMODE"), QStringLiteral("1"));
    setIniValue(QStringLiteral("KEEPRESULT"), QStringLiteral("1"));
    setIniValue(QStringLiteral("NUMBEROFDECIMALS"), QStringLiteral("0"));
    setIniValue(QStringLiteral("DEFAULTSCALE"), QStringLiteral("2"));
    setIniValue(QStringLiteral("CURRENTPROOFNO"), QStringLiteral("3"));
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    EXPECT_EQ(find<QToolButton>(w, "cmdMeasure(0)")->text(), w.data().messages.text(10112));
    EXPECT_EQ(find<QToolButton>(w, "cmdMeasure(1)")->text(), w.data().messages.text(10113));
    EXPECT_EQ(find<QToolButton>(w, "cmdMeasure(5)")->text(), w.data().messages.text(10110));
    EXPECT_TRUE(find<QCheckBox>(w, "chkKeepResult")->isChecked());
    EXPECT_EQ(w.data().valueFormat, QStringLiteral("0"));
    EXPECT_EQ(find<QComboBox>(w, "cboScale")->currentIndex(), 2);
    EXPECT_EQ(find<QLabel>(w, "lblZoom")->text(), QStringLiteral("x 2.0"));
    EXPECT_EQ(find<QComboBox>(w, "cboProof")->currentIndex(), 3);
}

// The settings allow 0 to 15: the last two indexes have their own entries too.
class frmMainDefaultScale : public ProgramFolderFixture, public ::testing::WithParamInterface<int> {};

TEST_P(frmMainDefaultScale, Load_SelectsEntry_AndExitWritesItBack)
{
    const int index = GetParam();
    setIniValue(QStringLiteral("DEFAULTSCALE"), QString::number(index));
    {
        frmMain w(dir.path(), prompter, clock, simCamera());
        ASSERT_TRUE(w.Form_Load());
        auto* scale = find<QComboBox>(w, "cboScale");
        EXPECT_EQ(scale->count(), 16);
        ASSERT_EQ(scale->currentIndex(), index);
        EXPECT_EQ(find<QLabel>(w, "lblZoom")->text(), scale->currentText());
        EXPECT_TRUE(prompter.messages.empty());
        w.setConfirmOnClose(false);
        w.close();
    }
    EXPECT_TRUE(QString::fromUtf8(ini()).contains(QStringLiteral("DEFAULTSCALE=%1\r\n").arg(index)));
}

INSTANTIATE_TEST_SUITE_P(LastIndexes, frmMainDefaultScale, ::testing::Values(14, 15));

TEST_F(frmMainStart, Load_LeavesMeasureAreaDisabledButNoDisableControlsUsable)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    EXPECT_FALSE(find<QToolButton>(w, "cmdMeasure(0)")->isEnabled());
    EXPECT_TRUE(find<QComboBox>(w, "cboProof")->isEnabled());
    w.setCommandAreaEnabled(find<QWidget>(w, "picMeasureCommandArea"), true);
    EXPECT_TRUE(find<QToolButton>(w, "cmdMeasure(0)")->isEnabled());
    EXPECT_TRUE(find<QCheckBox>(w, "chkKeepResult")->isEnabled());
}

TEST_F(frmMainStart, DisabledViewArea_KeepsNoDisableControlsUsable)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    auto* area = find<QWidget>(w, "picViewCommandArea");
    find<QPushButton>(w, "cmdPicSave")->setProperty("tag", QStringLiteral("NoDisable"));
    w.setCommandAreaEnabled(area, false);
    EXPECT_FALSE(find<QPushButton>(w, "cmdPicLoad")->isEnabled());
    EXPECT_TRUE(find<QPushButton>(w, "cmdPicSave")->isEnabled());
    EXPECT_TRUE(find<QPushButton>(w, "cmdExit")->isEnabled());
    EXPECT_TRUE(find<QLineEdit>(w, "txtComment(0)")->isEnabled());
}

// ---- start-up failures ----

struct StartupFailureCase {
    const char* name;
    const char* file;        // the file to break
    const char* content;     // nullptr: remove the file
    const char* readerLine;  // the reader's own log line, "" when none
    const char* startupLine;
    bool titleIs11100;
};

class frmMainStartupFailure : public ProgramFolderFixture,
                              public ::testing::WithParamInterface<StartupFailureCase> {};

TEST_P(frmMainStartupFailure, EndsWithExactLogLinesAndMessage)
{
    const StartupFailureCase& c = GetParam();
    if (c.content)
        dir.write(QLatin1String(c.file), QByteArray(c.content));
    else
        QFile::remove(dir.file(QLatin1String(c.file)));
    const QByteArray iniBefore = ini();
    prompter.answers = {Prompter::Answer::Ok};
    {
        frmMain w(dir.path(), prompter, clock, simCamera());
        EXPECT_FALSE(w.Form_Load());
        EXPECT_FALSE(w.isVisible());
    }
    const QString text = log();
    if (*c.readerLine) {
        EXPECT_TRUE(text.contains(QStringLiteral(" %1\r\n").arg(QLatin1String(c.readerLine))))
            << text.toStdString();
    }
    EXPECT_TRUE(text.endsWith(QStringLiteral(" %1\r\n").arg(QLatin1String(c.startupLine))))
        << text.toStdString();
    ASSERT_EQ(prompter.messages.size(), 1u);
    const auto& m = prompter.messages.front();
    EXPECT_EQ(m.text, QStringLiteral("The error occurred. The program is ended. "));
    EXPECT_EQ(m.icon, Prompter::Icon::Critical);
    if (c.titleIs11100) {
        MessageTable messages;
        messages.parse(QString::fromUtf8(dir.read(QStringLiteral("Message_E.txt"))));
        EXPECT_EQ(m.title, messages.text(11100));
        EXPECT_FALSE(m.title.isEmpty());
    } else {
        EXPECT_EQ(m.title, QString());
    }
    EXPECT_EQ(ini(), iniBefore) << "nothing may be written back after a failed start";
    EXPECT_FALSE(text.contains(QStringLiteral(" End\r\n")));
}

INSTANTIATE_TEST_SUITE_P(
    EachDataFile, frmMainStartupFailure,
    ::testing::Values(
        StartupFailureCase{
            "IniMissing", "Tavix.Ini", nullptr,
            "GetIniFileData GetPrivateProfileString Error [Section]=CAMERA,[Key]=CAMERAFILTERNAME",
            "Ini File Read Error.", false},
        StartupFailureCase{"IniBroken", "Tavix.Ini",
                           "[COMMON]\r\nAPPNAME=Tavix\r\n[CAMERA]\r\nCAMERAFILTERNAME=Camera\r\n",
                           "GetIniFileData GetPrivateProfileString Error [Section]=CAMERA,[Key]=GRPFILENAME",
                           "Ini File Read Error.", false},
        StartupFailureCase{"MessagesMissing", "Message_E.txt", nullptr, "ReadStringTableData Error.(53)",
                           "StringTable File Read Error.", false},
        StartupFailureCase{"MessagesBroken", "Message_E.txt", "11100,Data file error\r\nabc,text\r\n",
                           "ReadStringTableData Error.(13)", "StringTable File Read Error.", false},
        StartupFailureCase{"ProofMissing", "Proof.dat", nullptr, "", "Proof File Read Error.", true},
        StartupFailureCase{"ProofBroken", "Proof.dat", "\"Proof1\",abc,.5,\"MIC\",100,100\r\n", "",
                           "Proof File Read Error.", true},
        StartupFailureCase{"GuidanceMissing", "Guidance_E.txt", nullptr, "ReadGuidanceData Error.(53)",
                           "Guidance File Read Error.", true},
        StartupFailureCase{"GuidanceBroken", "Guidance_E.txt", "1001,\"a\",\"b\"\r\n",
                           "ReadGuidanceData Error.(9)", "Guidance File Read Error.", true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(frmMainStart, RunTimeErrorInLoad_LogsReportsAndDeletesTheGraphFile)
{
    dir.write(QStringLiteral("Camera.grf"), "videotestsrc name=Camera ! fakesink\r\n");
    const QByteArray before = ini();
    prompter.answers = {Prompter::Answer::Ok};
    frmMain w(dir.path(), prompter, clock,
              [](AppData&) -> std::unique_ptr<CameraDriver> { throw RunError(err::TypeMismatch); });
    EXPECT_FALSE(w.Form_Load());
    EXPECT_TRUE(log().endsWith(QStringLiteral(" frmMain:Form_Load Error.(13)\r\n"))) << log().toStdString();
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, Lifecycle::kEndedText);
    EXPECT_EQ(prompter.messages[0].title, w.data().messages.text(11051));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    EXPECT_FALSE(dir.exists(QStringLiteral("Camera.grf")));
    EXPECT_FALSE(w.isVisible());
    EXPECT_EQ(ini(), before);  // the program ends at once: no unload
}

TEST_F(frmMainStart, StillWaitTime1001_StopsStartup)
{
    setIniValue(QStringLiteral("STILLWAITTIME"), QStringLiteral("1001"));
    prompter.answers = {Prompter::Answer::Ok};
    frmMain w(dir.path(), prompter, clock, simCamera());
    EXPECT_FALSE(w.Form_Load());
    EXPECT_TRUE(log().contains(QStringLiteral(
        " GetIniFileData GetPrivateProfileString Error [Section]=ICUBE,[Key]=STILLWAITTIME\r\n")));
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Ini File Read Error.\r\n")));
}

TEST_F(frmMainStart, StillWaitTime1000AndMinus5_Start)
{
    for (const char* value : {"1000", "-5"}) {
        setIniValue(QStringLiteral("STILLWAITTIME"), QLatin1String(value));
        frmMain w(dir.path(), prompter, clock, simCamera());
        EXPECT_TRUE(w.Form_Load()) << value;
        EXPECT_EQ(w.data().settings.STILLWAITTIME, QString::fromLatin1(value).toShort());
        w.setConfirmOnClose(false);
    }
}

TEST_F(frmMainStart, JpegQuality9And101_StopStartup)
{
    for (const char* value : {"9", "101"}) {
        setIniValue(QStringLiteral("JPEGQTY"), QLatin1String(value));
        ScriptedPrompter p;
        p.answers = {Prompter::Answer::Ok};
        frmMain w(dir.path(), p, clock, simCamera());
        EXPECT_FALSE(w.Form_Load()) << value;
        EXPECT_EQ(p.messages.size(), 1u);
    }
}

// ---- exit ----

namespace {
void clickExit(frmMain& w)
{
    QTest::mouseClick(w.findChild<QPushButton*>(QStringLiteral("cmdExit")), Qt::LeftButton);
}
}  // namespace

TEST_F(frmMainStart, Exit_WritesChangedSettingsBack_KeepingCommentsAndUnknownKeys)
{
    dir.write(QStringLiteral("Tavix.Ini"), ini() + "[EXTRA]\r\n; my own note\r\nUNKNOWN=keep me\r\n");
    {
        frmMain w(dir.path(), prompter, clock, simCamera());
        ASSERT_TRUE(w.Form_Load());
        w.show();
        Settings& s = w.data().settings;
        s.JPEGQTY = 55;
        s.SCALEX = 12.5;
        s.NUMBEROFDECIMALS = 4;
        s.DEFAULTRESOLUTION = 5;
        s.STILLWAITTIME = 250;
        s.NUMBEROFIMAGES = 7;
        s.IS_SAVEPATH = QStringLiteral("/tmp/series");
        w.setCommandAreaEnabled(find<QWidget>(w, "picMeasureCommandArea"), true);  // as on a still
        auto* keep = find<QCheckBox>(w, "chkKeepResult");
        QTest::mouseClick(keep, Qt::LeftButton, {}, QPoint(8, keep->height() / 2));
        find<QComboBox>(w, "cboScale")->setCurrentIndex(3);
        prompter.answers.push_back(Prompter::Answer::Yes);
        clickExit(w);
        EXPECT_FALSE(w.isVisible());
    }
    const QString text = QString::fromUtf8(ini());
    EXPECT_TRUE(text.contains(QStringLiteral("; my own note\r\nUNKNOWN=keep me")));
    EXPECT_TRUE(text.contains(QStringLiteral("JPEGQTY=55")));
    EXPECT_TRUE(text.contains(QStringLiteral("SCALEX=12.5")));
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Tavix End\r\n")));

    ScriptedPrompter again;
    frmMain w(dir.path(), again, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    const Settings& s = w.data().settings;
    EXPECT_EQ(s.JPEGQTY, 55);
    EXPECT_EQ(s.SCALEX, 12.5);
    EXPECT_EQ(s.NUMBEROFDECIMALS, 4);
    EXPECT_EQ(s.KEEPRESULT, 1);
    EXPECT_EQ(s.DEFAULTSCALE, 3);
    EXPECT_EQ(s.DEFAULTRESOLUTION, 5);
    EXPECT_EQ(s.STILLWAITTIME, 250);
    EXPECT_EQ(s.NUMBEROFIMAGES, 7);
    EXPECT_EQ(s.IS_SAVEPATH, QStringLiteral("/tmp/series"));
    w.setConfirmOnClose(false);
}

TEST_F(frmMainStart, ExitButton_AsksMessage20010_AndNoKeepsRunning)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    w.show();
    const QByteArray before = ini();
    prompter.answers.push_back(Prompter::Answer::No);
    clickExit(w);
    ASSERT_EQ(prompter.messages.size(), 1u);
    const auto& m = prompter.messages.front();
    EXPECT_EQ(m.text, w.data().messages.text(20010));
    EXPECT_EQ(m.title, w.data().messages.text(19000));
    EXPECT_EQ(m.icon, Prompter::Icon::Question);
    EXPECT_EQ(m.buttons, Prompter::Buttons::YesNo);
    EXPECT_EQ(m.defaultAnswer, Prompter::Answer::No);
    EXPECT_TRUE(w.isVisible());
    EXPECT_EQ(ini(), before);
    w.setConfirmOnClose(false);
}

TEST_F(frmMainStart, CloseBox_AsksMessage20110_AndNoCancelsClose)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    w.show();
    prompter.answers.push_back(Prompter::Answer::No);
    EXPECT_FALSE(w.close());
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages.front().text, w.data().messages.text(20110));
    EXPECT_NE(w.data().messages.text(20110), w.data().messages.text(20010));
    EXPECT_EQ(prompter.messages.front().defaultAnswer, Prompter::Answer::No);
    EXPECT_TRUE(w.isVisible());
    EXPECT_FALSE(log().contains(QStringLiteral("Tavix End")));

    prompter.answers.push_back(Prompter::Answer::Yes);
    EXPECT_TRUE(w.close());
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Tavix End\r\n")));
}

TEST_F(frmMainStart, ConfirmFlagClear_NeitherExitNorCloseBoxAsks)
{
    {
        frmMain w(dir.path(), prompter, clock, simCamera());
        ASSERT_TRUE(w.Form_Load());
        w.show();
        w.setConfirmOnClose(false);
        EXPECT_TRUE(w.close());
    }
    {
        frmMain w(dir.path(), prompter, clock, simCamera());
        ASSERT_TRUE(w.Form_Load());
        w.show();
        w.setConfirmOnClose(false);
        clickExit(w);
        EXPECT_FALSE(w.isVisible());
    }
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(frmMainStart, Exit_DeletesTemporaryBitmaps_AndKeepsOtherPictures)
{
    dir.write(QStringLiteral("TavixStill.bmp"), "x");
    dir.write(QStringLiteral("TavixStill_001.bmp"), "x");
    dir.write(QStringLiteral("Other.bmp"), "x");
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    w.setConfirmOnClose(false);
    w.close();
    EXPECT_FALSE(dir.exists(QStringLiteral("TavixStill.bmp")));
    EXPECT_FALSE(dir.exists(QStringLiteral("TavixStill_001.bmp")));
    EXPECT_TRUE(dir.exists(QStringLiteral("Other.bmp")));
}

// ---- layout ----

namespace {

// Visible sibling widgets whose rectangles overlap.
QStringList overlaps(QWidget* parent)
{
    QStringList out;
    QList<QWidget*> children;
    for (QObject* o : parent->children())
        if (auto* w = qobject_cast<QWidget*>(o); w && w->isVisibleTo(parent) && !w->isWindow())
            children << w;
    for (int i = 0; i < children.size(); ++i)
        for (int j = i + 1; j < children.size(); ++j)
            if (children[i]->geometry().intersects(children[j]->geometry()))
                out << children[i]->objectName() + QStringLiteral(" / ") + children[j]->objectName();
    return out;
}

// Every control of the view strip shows its whole text at the smallest window.
void expectViewStripFits(frmMain& w)
{
    ASSERT_TRUE(w.Form_Load());
    w.show();
    w.resize(w.minimumSize());
    QCoreApplication::processEvents();
    auto* strip = w.findChild<QWidget*>(QStringLiteral("picViewCommandArea"));
    ASSERT_NE(strip, nullptr);
    EXPECT_TRUE(overlaps(strip).isEmpty()) << overlaps(strip).join(QStringLiteral(", ")).toStdString();
    for (QWidget* control : strip->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (!control->isVisibleTo(strip) || qobject_cast<QLineEdit*>(control))
            continue;
        const std::string name = control->objectName().toStdString();
        EXPECT_TRUE(strip->rect().contains(control->geometry())) << name;
        // A push button's size hint has a style minimum; its text and icon are what must fit.
        int needed = control->sizeHint().width();
        if (auto* button = qobject_cast<QPushButton*>(control))
            needed = button->fontMetrics().horizontalAdvance(button->text()) + 16 +
                     (button->icon().isNull() ? 0 : button->iconSize().width() + 4);
        EXPECT_LE(needed, control->width()) << name;
    }
    w.setConfirmOnClose(false);
}

}  // namespace

TEST_F(frmMainStart, ViewStrip_ControlsFitTheirTexts_AtTheSmallestWindow)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    expectViewStripFits(w);
}

TEST_F(frmMainStart, ViewStrip_ControlsFitTheirTexts_AtTheSmallestWindow_InJapanese)
{
    const QFont appFont = QApplication::font();
    QString text = QString::fromUtf8(ini());
    text.replace(QStringLiteral("_E.txt"), QStringLiteral("_J.txt"));  // message and guidance file
    dir.write(QStringLiteral("Tavix.Ini"), text.toUtf8());
    {
        frmMain w(dir.path(), prompter, clock, simCamera());
        expectViewStripFits(w);
        EXPECT_EQ(w.findChild<QPushButton*>(QStringLiteral("cmdPicLoad"))->text(),
                  QStringLiteral("画像を開く"));
    }
    QApplication::setFont(appFont);  // the Japanese start set the program's font
}

TEST_F(frmMainStart, Resize_SmallerThanMinimum_SnapsBack)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    w.show();
    w.resize(300, 200);
    EXPECT_GE(w.width(), twipsToPixels(MainLayout::kMinWidthTwips));
    EXPECT_GE(w.height(), twipsToPixels(MainLayout::kMinHeightTwips));
    w.setConfirmOnClose(false);
}

TEST_F(frmMainStart, Resize_LayoutFollowsTheWindow)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    w.show();
    for (const QSize size : {QSize(971, 540), QSize(1400, 900), QSize(1920, 1080)}) {
        w.resize(size);
        QCoreApplication::processEvents();
        const QWidget* client = w.centralWidget();
        auto* view = find<QWidget>(w, "picViewArea");
        auto* measure = find<QWidget>(w, "picMeasureCommandArea");
        auto* strip = find<QWidget>(w, "picViewCommandArea");
        EXPECT_EQ(view->width(), client->width() - measure->width());
        EXPECT_EQ(measure->geometry().right(), client->width() - 1);
        EXPECT_EQ(find<QWidget>(w, "grdResult")->height(),
                  measure->height() - twipsToPixels(MainLayout::kGridReserveTwips));
        EXPECT_EQ(find<QWidget>(w, "cmdExit")->x(),
                  strip->width() - twipsToPixels(MainLayout::kExitFromRightTwips));
        EXPECT_EQ(strip->geometry().bottom(), client->height() - 1);
        const std::array<QWidget*, 4> areas = {w.centralWidget(), strip, measure,
                                               find<QGroupBox>(w, "fraTools")};
        for (QWidget* area : areas)
            EXPECT_TRUE(overlaps(area).isEmpty()) << overlaps(area).join(QStringLiteral(", ")).toStdString();
    }
    w.setConfirmOnClose(false);
}

TEST_F(frmMainStart, Resize_MinimizedWindowDoesNoLayoutWork)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    w.show();
    w.setWindowState(Qt::WindowMinimized);
    const int passes = w.layoutPasses();
    QResizeEvent event(QSize(1200, 800), w.centralWidget()->size());
    QCoreApplication::sendEvent(w.centralWidget(), &event);
    EXPECT_EQ(w.layoutPasses(), passes);
    w.setWindowState(Qt::WindowNoState);
    QCoreApplication::sendEvent(w.centralWidget(), &event);
    EXPECT_EQ(w.layoutPasses(), passes + 1);
    w.setConfirmOnClose(false);
}

TEST_F(frmMainStart, ResizeGuard_LogsAndTheNextResizeLaysOut)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    w.show();
    w.resize(1200, 800);
    QCoreApplication::processEvents();
    auto* view = find<QWidget>(w, "picViewArea");
    const int width = view->width();
    FaultPoint::arm(QStringLiteral("Form_Resize"), 6);
    w.resize(1400, 800);
    QCoreApplication::processEvents();
    EXPECT_EQ(view->width(), width);
    EXPECT_EQ(log().count(QStringLiteral(" frmMain:Form_Resize Error.(6)\r\n")), 1);
    w.resize(1500, 800);
    QCoreApplication::processEvents();
    EXPECT_EQ(view->width(), width + 300);
    w.setConfirmOnClose(false);
}

TEST_F(frmMainStart, Resize_MaximizedWindowKeepsItsSize)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    w.showMaximized();
    QCoreApplication::processEvents();
    const QSize maximized = w.size();
    QResizeEvent event(w.centralWidget()->size(), QSize(10, 10));
    QCoreApplication::sendEvent(w.centralWidget(), &event);
    EXPECT_EQ(w.size(), maximized);
    EXPECT_TRUE(w.isMaximized());
    w.setConfirmOnClose(false);
}

TEST_F(frmMainStart, Guidance_ShowsInCommentBoxesAndGivesUserTextBack)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    auto* box0 = find<QLineEdit>(w, "txtComment(0)");
    auto* box1 = find<QLineEdit>(w, "txtComment(1)");
    box0->setText(QStringLiteral("sample 4"));
    w.guidance().DispGuidance(32);
    EXPECT_EQ(box0->text(), w.data().guidance.line(32, 0));
    EXPECT_EQ(box1->text(), w.data().guidance.line(32, 1));
    EXPECT_FALSE(box0->text().isEmpty());
    EXPECT_TRUE(box0->isReadOnly());
    w.guidance().HideGuidance();
    EXPECT_EQ(box0->text(), QStringLiteral("sample 4"));
    EXPECT_FALSE(box0->isReadOnly());
    w.setConfirmOnClose(false);
}

// The pointer in the gaps between the areas is over the client area itself, which is no picture.
TEST_F(frmMainStart, PointerBetweenTheAreas_IsIgnored)
{
    frmMain w(dir.path(), prompter, clock, simCamera());
    ASSERT_TRUE(w.Form_Load());
    w.show();
    QWidget* client = w.centralWidget();
    QTest::mouseMove(client, QPoint(client->width() - 2, client->height() - 2));
    QMouseEvent move(QEvent::MouseMove, QPointF(3, 3), client->mapToGlobal(QPointF(3, 3)), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(client, &move);
    QTest::mouseClick(client, Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_TRUE(w.isVisible());
    w.setConfirmOnClose(false);
}
