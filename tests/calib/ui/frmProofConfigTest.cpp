#include "calib/ui/frmProofConfig.h"

#include "calib/CalibrationController.h"
#include "calib/ProofTable.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "../PrintQt.h"
#include "FakeResultTable.h"
#include "FakeScaleBar.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <memory>

using namespace tavix;
using tavix::test::FakeResultTable;
using tavix::test::FakeScaleBar;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

class frmProofConfigTest : public ::testing::Test {
protected:
    frmProofConfigTest()
    {
        settings.CURRENTPROOFNO = 2;
        table.at(2) = ProofEntry{QStringLiteral("Lens 10x"), 0.25, 0.5, QStringLiteral("mm"), 50, 20, 0};
    }

    // The dialog as the calibrate button opens it.
    frmProofConfig& open()
    {
        dialog = std::make_unique<frmProofConfig>(controller, messages, log);
        dialog->show();
        return *dialog;
    }

    template <typename T>
    T* find(const QString& name)
    {
        T* widget = dialog->findChild<T*>(name);
        EXPECT_NE(widget, nullptr) << name.toStdString();
        return widget;
    }
    QLineEdit* txtName() { return find<QLineEdit>(QStringLiteral("txtName")); }
    QComboBox* cboUnit() { return find<QComboBox>(QStringLiteral("cboUnit")); }
    QCheckBox* chkAxisOption() { return find<QCheckBox>(QStringLiteral("chkAxisOption")); }
    QRadioButton* optPointMode(int i)
    {
        return find<QRadioButton>(QStringLiteral("optPointMode(%1)").arg(i));
    }
    QLabel* lblValue(int i) { return find<QLabel>(QStringLiteral("lblValue(%1)").arg(i)); }
    QPushButton* cmdValue(int i) { return find<QPushButton>(QStringLiteral("cmdValue(%1)").arg(i)); }
    QPushButton* button(const char* name) { return find<QPushButton>(QLatin1String(name)); }

    // Clicks near the left edge, where the indicator and caption of a check
    // box or option button are, however wide the layout makes it.
    static void clickButton(QAbstractButton* b)
    {
        QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(6, b->height() / 2));
    }

    static void typeInto(QLineEdit* edit, const QString& text)
    {
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
    }
    void typeUnit(const QString& text) { typeInto(cboUnit()->lineEdit(), text); }

    ProofTable readBack() const
    {
        ProofTable back;
        EXPECT_TRUE(back.ReadProofData(proofPath));
        return back;
    }
    QByteArray fileLine(int index) const
    {
        return dir.read(QStringLiteral("Proof.dat")).split('\n').value(index);
    }

    // The measurement part of the procedure, as the main window runs it.
    void measureOnPicture(int k, const QString& typed, double pixels)
    {
        clickButton(cmdValue(k));
        const CalibrationController::AfterDialog after = controller.dialogClosed();
        ASSERT_TRUE(after.measure);
        prompter.inputs.push_back(typed);
        controller.finishMarking(pixels, 1.0);
    }

    TempDir dir;
    QString proofPath = dir.file(QStringLiteral("Proof.dat"));
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    ProofTable table;
    Settings settings;
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    FakeResultTable results;
    FakeScaleBar scaleBar;
    CalibrationController controller{table, settings, messages, prompter, results, scaleBar, proofPath};
    std::unique_ptr<frmProofConfig> dialog;
};

}  // namespace

// --- load ---

TEST_F(frmProofConfigTest, Load_SetsCaptionsFromMessageTable)
{
    controller.startProcedure();
    open();

    EXPECT_EQ(dialog->windowTitle(), messages.text(14000));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Calibration"));
    EXPECT_EQ(find<QLabel>(QStringLiteral("Label1(0)"))->text(), messages.text(14001));
    EXPECT_EQ(find<QLabel>(QStringLiteral("lblXAxis"))->text(), messages.text(14002));
    EXPECT_EQ(find<QLabel>(QStringLiteral("Label1(1)"))->text(), messages.text(14003));
    EXPECT_EQ(find<QLabel>(QStringLiteral("lblYAxis"))->text(), messages.text(14004));
    EXPECT_EQ(cmdValue(0)->text(), messages.text(14005));
    EXPECT_EQ(cmdValue(1)->text(), messages.text(14005));
    EXPECT_EQ(find<QGroupBox>(QStringLiteral("Frame1"))->title(), messages.text(14006));
    EXPECT_EQ(optPointMode(0)->text(), messages.text(14007));
    EXPECT_EQ(optPointMode(1)->text(), messages.text(14008));
    EXPECT_EQ(chkAxisOption()->text(), messages.text(14010));
    EXPECT_EQ(button("cmdOK")->text(), QStringLiteral("&OK"));
    EXPECT_EQ(button("cmdCancel")->text(), QStringLiteral("&Cancel"));
}

TEST_F(frmProofConfigTest, Load_FillsUnitListAndNameFromBuffer)
{
    controller.startProcedure();
    open();

    ASSERT_EQ(cboUnit()->count(), 3);
    EXPECT_EQ(cboUnit()->itemText(0), QStringLiteral("MIC"));
    EXPECT_EQ(cboUnit()->itemText(1), QStringLiteral("mm"));
    EXPECT_EQ(cboUnit()->itemText(2), QStringLiteral("cm"));
    EXPECT_TRUE(cboUnit()->isEditable());
    EXPECT_EQ(cboUnit()->currentText(), QStringLiteral("mm"));
    EXPECT_EQ(txtName()->text(), QStringLiteral("Lens 10x"));
}

TEST_F(frmProofConfigTest, Load_SelectsMic_WhenBufferHasNoUnit)
{
    table.at(2).Unit.clear();
    controller.startProcedure();
    open();

    EXPECT_EQ(cboUnit()->currentIndex(), 0);
    EXPECT_EQ(cboUnit()->currentText(), QStringLiteral("MIC"));
}

TEST_F(frmProofConfigTest, Load_MatchesUnitExactly)
{
    table.at(2).Unit = QStringLiteral("CM");
    controller.startProcedure();
    open();

    EXPECT_EQ(cboUnit()->currentText(), QStringLiteral("MIC"));
}

struct ValueCase {
    double xValue, yValue;
    const char* xText;
    const char* yText;
};
class frmProofConfigValues : public frmProofConfigTest, public ::testing::WithParamInterface<ValueCase> {};

TEST_P(frmProofConfigValues, Load_ShowsTypedLengths_AndNothingForNone)
{
    table.at(2).XValue = GetParam().xValue;
    table.at(2).YValue = GetParam().yValue;
    controller.startProcedure();
    open();

    EXPECT_EQ(lblValue(0)->text(), QLatin1String(GetParam().xText));
    EXPECT_EQ(lblValue(1)->text(), QLatin1String(GetParam().yText));
}

INSTANTIATE_TEST_SUITE_P(Table, frmProofConfigValues,
                         ::testing::Values(ValueCase{100, 0, "100", ""}, ValueCase{0, 2.5, "", "2.5"},
                                           ValueCase{-1, 0.125, "", "0.125"},
                                           ValueCase{1000, 12, "1000", "12"}));

struct PointModeCase {
    qint16 defaultMode;
    int remembered;  // -1: none, else the mode of a measure click before
    int checked;
};
class frmProofConfigPointMode : public frmProofConfigTest,
                                public ::testing::WithParamInterface<PointModeCase> {};

TEST_P(frmProofConfigPointMode, Load_SelectsRememberedPointMode_OrTheDefault)
{
    const PointModeCase c = GetParam();
    settings._2POINTCOMMANDMODE = c.defaultMode;
    controller.startProcedure();
    if (c.remembered >= 0) {
        open();
        clickButton(optPointMode(c.remembered));
        clickButton(cmdValue(0));
        controller.dialogClosed();
        controller.abandonMarking();
    }

    open();

    EXPECT_TRUE(optPointMode(c.checked)->isChecked());
    EXPECT_FALSE(optPointMode(1 - c.checked)->isChecked());
}

INSTANTIATE_TEST_SUITE_P(Table, frmProofConfigPointMode,
                         ::testing::Values(PointModeCase{0, -1, 0}, PointModeCase{1, -1, 1},
                                           PointModeCase{1, 0, 0}, PointModeCase{0, 1, 1}));

TEST_F(frmProofConfigTest, Load_EndsAPendingMeasurement)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), false);

    open();

    EXPECT_EQ(controller.calibrationRequest(), -1);
}

TEST_F(frmProofConfigTest, Load_ShowsYRow_WhenAxisOptionOff)
{
    controller.startProcedure();
    open();

    EXPECT_FALSE(chkAxisOption()->isChecked());
    EXPECT_TRUE(find<QLabel>(QStringLiteral("lblYAxis"))->isVisible());
    EXPECT_TRUE(lblValue(1)->isVisible());
    EXPECT_TRUE(cmdValue(1)->isVisible());
}

TEST_F(frmProofConfigTest, Load_TakesAxisOptionFromBuffer_AndHidesYRow)
{
    controller.startProcedure();
    controller.buffer().AxisOption = 1;

    open();

    EXPECT_TRUE(chkAxisOption()->isChecked());
    EXPECT_EQ(find<QLabel>(QStringLiteral("lblXAxis"))->text(), messages.text(14009));
    EXPECT_FALSE(find<QLabel>(QStringLiteral("lblYAxis"))->isVisible());
    EXPECT_FALSE(lblValue(1)->isVisible());
    EXPECT_FALSE(cmdValue(1)->isVisible());
}

// --- axis option ---

TEST_F(frmProofConfigTest, AxisOptionClick_HidesYRowAndNamesBothAxes)
{
    controller.startProcedure();
    open();

    clickButton(chkAxisOption());

    EXPECT_TRUE(chkAxisOption()->isChecked());
    EXPECT_EQ(find<QLabel>(QStringLiteral("lblXAxis"))->text(), QStringLiteral("X and Y axes:"));
    EXPECT_FALSE(find<QLabel>(QStringLiteral("lblYAxis"))->isVisible());
    EXPECT_FALSE(lblValue(1)->isVisible());
    EXPECT_FALSE(cmdValue(1)->isVisible());
}

TEST_F(frmProofConfigTest, AxisOptionClickAgain_ShowsYRowAndNamesXAxis)
{
    controller.startProcedure();
    open();
    clickButton(chkAxisOption());

    clickButton(chkAxisOption());

    EXPECT_FALSE(chkAxisOption()->isChecked());
    EXPECT_EQ(find<QLabel>(QStringLiteral("lblXAxis"))->text(), messages.text(14002));
    EXPECT_TRUE(find<QLabel>(QStringLiteral("lblYAxis"))->isVisible());
    EXPECT_TRUE(lblValue(1)->isVisible());
    EXPECT_TRUE(cmdValue(1)->isVisible());
}

// --- measure buttons ---

struct MeasureCase {
    int button;
    int mode;
    qint16 request;
    qint16 tool;
};
class frmProofConfigMeasure : public frmProofConfigTest, public ::testing::WithParamInterface<MeasureCase> {};

TEST_P(frmProofConfigMeasure, MeasureClick_SetsRequestRemembersDialogAndCloses)
{
    const MeasureCase c = GetParam();
    controller.startProcedure();
    open();
    typeInto(txtName(), QStringLiteral("Stand B"));
    cboUnit()->setCurrentIndex(2);
    clickButton(optPointMode(c.mode));

    clickButton(cmdValue(c.button));

    EXPECT_EQ(controller.calibrationRequest(), c.request);
    EXPECT_EQ(controller.pointMode(), c.mode);
    EXPECT_TRUE(controller.dialogAccepted());
    EXPECT_EQ(controller.buffer().Name, QStringLiteral("Stand B"));
    EXPECT_EQ(controller.buffer().Unit, QStringLiteral("cm"));
    EXPECT_EQ(controller.buffer().AxisOption, 0);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(controller.dialogClosed().toolNumber, c.tool);
    EXPECT_EQ(table.at(2).Name, QStringLiteral("Lens 10x"));
}

INSTANTIATE_TEST_SUITE_P(Table, frmProofConfigMeasure,
                         ::testing::Values(MeasureCase{0, 0, 1, 21}, MeasureCase{0, 1, 2, 22},
                                           MeasureCase{1, 0, 11, 23}, MeasureCase{1, 1, 12, 24}));

TEST_F(frmProofConfigTest, MeasureClick_RemembersAxisOption)
{
    controller.startProcedure();
    open();
    clickButton(chkAxisOption());

    clickButton(cmdValue(0));

    EXPECT_EQ(controller.buffer().AxisOption, 1);
    prompter.inputs = {QStringLiteral("10")};
    controller.dialogClosed();
    controller.finishMarking(10, 1.0);
    EXPECT_EQ(prompter.inputPrompts.value(0), messages.text(24007));
}

TEST_F(frmProofConfigTest, Reopened_ShowsMeasuredValue)
{
    controller.startProcedure();
    open();
    measureOnPicture(1, QStringLiteral("40"), 160);

    open();

    EXPECT_EQ(lblValue(1)->text(), QStringLiteral("40"));
    EXPECT_EQ(lblValue(0)->text(), QStringLiteral("50"));
}

// --- OK ---

TEST_F(frmProofConfigTest, Ok_StoresEntryAndRewritesFile)
{
    controller.startProcedure();
    open();
    typeInto(txtName(), QStringLiteral("Stand C"));
    cboUnit()->setCurrentIndex(0);

    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(controller.dialogAccepted());
    const ProofEntry expected{QStringLiteral("Stand C"), 0.25, 0.5, QStringLiteral("MIC"), 50, 20, 0};
    EXPECT_EQ(table.at(2), expected);
    EXPECT_EQ(readBack().at(2), expected);
    EXPECT_EQ(fileLine(2), QByteArray("\"Stand C\",.25,.5,\"MIC\",50,20\r"));
    EXPECT_EQ(readBack().at(0).Name, QStringLiteral("Proof1"));
}

TEST_F(frmProofConfigTest, Ok_AfterMeasuring_WritesFactorAndValue)
{
    table.at(2) = ProofTable::defaultEntry(2);
    controller.startProcedure();
    open();
    measureOnPicture(0, QStringLiteral("100"), 200);
    open();
    measureOnPicture(1, QStringLiteral("100"), 400);
    open();

    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    EXPECT_EQ(fileLine(2), QByteArray("\"Proof3\",.5,.25,\"MIC\",100,100\r"));
}

TEST_F(frmProofConfigTest, Ok_WithAxisOption_WritesYFactorAndValueFromX)
{
    controller.startProcedure();
    open();
    measureOnPicture(1, QStringLiteral("40"), 80);  // an earlier y measurement
    open();
    clickButton(chkAxisOption());
    measureOnPicture(0, QStringLiteral("30"), 120);
    open();
    ASSERT_TRUE(chkAxisOption()->isChecked());

    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    const ProofEntry saved = readBack().at(2);
    EXPECT_DOUBLE_EQ(saved.XFactor, 0.25);
    EXPECT_DOUBLE_EQ(saved.YFactor, 0.25);
    EXPECT_DOUBLE_EQ(saved.XValue, 30);
    EXPECT_DOUBLE_EQ(saved.YValue, 30);
}

TEST_F(frmProofConfigTest, Ok_TwoPointMeasurementOfZeroPixels_KeepsFactorStoresValue)
{
    controller.startProcedure();
    open();
    measureOnPicture(0, QStringLiteral("75"), 0);
    open();

    EXPECT_EQ(lblValue(0)->text(), QStringLiteral("75"));
    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    const ProofEntry saved = readBack().at(2);
    EXPECT_DOUBLE_EQ(saved.XValue, 75);
    EXPECT_DOUBLE_EQ(saved.XFactor, 0.25);
}

TEST_F(frmProofConfigTest, Ok_Typed12abc_Stores12)
{
    controller.startProcedure();
    open();
    measureOnPicture(0, QStringLiteral("12abc"), 24);
    open();

    EXPECT_EQ(lblValue(0)->text(), QStringLiteral("12"));
    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    EXPECT_DOUBLE_EQ(readBack().at(2).XValue, 12);
    EXPECT_DOUBLE_EQ(readBack().at(2).XFactor, 0.5);
}

class frmProofConfigBadLength : public frmProofConfigTest,
                                public ::testing::WithParamInterface<const char*> {};

TEST_P(frmProofConfigBadLength, TypedLengthNotAboveZero_ShowsMessage24002AndAsksAgain)
{
    prompter.answers = {Prompter::Answer::Ok};
    controller.startProcedure();
    open();
    prompter.inputs = {QString::fromLatin1(GetParam())};
    measureOnPicture(0, QStringLiteral("8"), 16);

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(24002));
    EXPECT_EQ(prompter.messages[0].title, messages.text(14100));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    EXPECT_EQ(prompter.inputPrompts.size(), 2);
    open();
    EXPECT_EQ(lblValue(0)->text(), QStringLiteral("8"));
}

INSTANTIATE_TEST_SUITE_P(Answers, frmProofConfigBadLength, ::testing::Values("abc", "-3"));

TEST_F(frmProofConfigTest, Ok_BlankName_ShowsMessage24000AndStaysOpen)
{
    prompter.answers = {Prompter::Answer::Ok};
    controller.startProcedure();
    open();
    typeInto(txtName(), QStringLiteral("  "));
    button("cmdCancel")->setFocus();

    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(24000));
    EXPECT_EQ(prompter.messages[0].title, messages.text(14100));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->focusWidget(), txtName());
    EXPECT_FALSE(dir.exists(QStringLiteral("Proof.dat")));
    EXPECT_EQ(table.at(2).Name, QStringLiteral("Lens 10x"));
}

TEST_F(frmProofConfigTest, Ok_EmptyUnit_ShowsMessage24003AndStaysOpen)
{
    prompter.answers = {Prompter::Answer::Ok};
    controller.startProcedure();
    open();
    typeUnit(QString());
    txtName()->setFocus();

    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(24003));
    EXPECT_EQ(prompter.messages[0].title, messages.text(14100));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    EXPECT_TRUE(dialog->isVisible());
    QWidget* focus = dialog->focusWidget();
    EXPECT_TRUE(focus == cboUnit() || focus == cboUnit()->lineEdit());
    EXPECT_FALSE(dir.exists(QStringLiteral("Proof.dat")));
}

TEST_F(frmProofConfigTest, Ok_WriteFailure_ShowsMessageAndKeepsEverythingTyped)
{
    prompter.answers = {Prompter::Answer::Ok};
    const QString folder = dir.file(QStringLiteral("missing"));
    CalibrationController c{
        table, settings, messages, prompter, results, scaleBar, folder + QStringLiteral("/Proof.dat")};
    c.startProcedure();
    dialog = std::make_unique<frmProofConfig>(c, messages, log);
    dialog->show();
    typeInto(txtName(), QStringLiteral("Stand D"));
    typeUnit(QStringLiteral("nm"));

    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(24010, 76));
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(txtName()->text(), QStringLiteral("Stand D"));
    EXPECT_EQ(cboUnit()->currentText(), QStringLiteral("nm"));
    EXPECT_EQ(table.at(2).Name, QStringLiteral("Lens 10x"));

    ASSERT_TRUE(QDir().mkpath(folder));
    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(table.at(2).Name, QStringLiteral("Stand D"));
    EXPECT_EQ(table.at(2).Unit, QStringLiteral("nm"));
}

// --- a unit typed by hand ---

TEST_F(frmProofConfigTest, TypedUnit_IsStoredAndShown)
{
    controller.startProcedure();
    open();

    typeUnit(QStringLiteral("nm"));
    EXPECT_EQ(cboUnit()->currentText(), QStringLiteral("nm"));
    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    EXPECT_EQ(table.at(2).Unit, QStringLiteral("nm"));
    EXPECT_EQ(readBack().at(2).Unit, QStringLiteral("nm"));
    EXPECT_EQ(fileLine(2), QByteArray("\"Lens 10x\",.25,.5,\"nm\",50,20\r"));
    EXPECT_EQ(controller.currentEntry().Unit, QStringLiteral("nm"));
}

TEST_F(frmProofConfigTest, TypedUnit_OnReopening_ListShowsMic_EntryKeepsNmUntilOk)
{
    table.at(2).Unit = QStringLiteral("nm");
    controller.startProcedure();

    open();

    EXPECT_EQ(cboUnit()->currentIndex(), 0);
    EXPECT_EQ(cboUnit()->currentText(), QStringLiteral("MIC"));
    EXPECT_EQ(cboUnit()->count(), 3);
    EXPECT_EQ(table.at(2).Unit, QStringLiteral("nm"));

    QTest::mouseClick(button("cmdCancel"), Qt::LeftButton);
    EXPECT_EQ(table.at(2).Unit, QStringLiteral("nm"));

    controller.dialogClosed();
    controller.startProcedure();
    open();
    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);
    EXPECT_EQ(table.at(2).Unit, QStringLiteral("MIC"));
    EXPECT_EQ(readBack().at(2).Unit, QStringLiteral("MIC"));
}

TEST_F(frmProofConfigTest, TypedUnit_AfterMeasuring_ReopenedListShowsMic_BufferKeepsNm)
{
    controller.startProcedure();
    open();
    typeUnit(QStringLiteral("nm"));
    measureOnPicture(0, QStringLiteral("10"), 20);

    open();

    EXPECT_EQ(controller.buffer().Unit, QStringLiteral("nm"));
    EXPECT_EQ(cboUnit()->currentText(), QStringLiteral("MIC"));
    EXPECT_EQ(table.at(2).Unit, QStringLiteral("mm"));
}

TEST_F(frmProofConfigTest, TypedUnit_IsNotAddedToTheList)
{
    controller.startProcedure();
    open();

    typeUnit(QStringLiteral("nm"));
    QTest::keyClick(cboUnit()->lineEdit(), Qt::Key_Return);

    EXPECT_EQ(cboUnit()->count(), 3);
}

// --- Cancel ---

TEST_F(frmProofConfigTest, Cancel_ClosesAndStoresNothing)
{
    controller.startProcedure();
    open();
    measureOnPicture(0, QStringLiteral("100"), 200);
    open();
    typeInto(txtName(), QStringLiteral("Changed"));

    QTest::mouseClick(button("cmdCancel"), Qt::LeftButton);

    EXPECT_FALSE(dialog->isVisible());
    EXPECT_FALSE(controller.dialogAccepted());
    EXPECT_EQ(table.at(2).Name, QStringLiteral("Lens 10x"));
    EXPECT_DOUBLE_EQ(table.at(2).XFactor, 0.25);
    EXPECT_FALSE(dir.exists(QStringLiteral("Proof.dat")));
    // The buffer keeps what was measured.
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 0.5);
}

TEST_F(frmProofConfigTest, Escape_CancelsLikeTheCancelButton)
{
    controller.startProcedure();
    open();
    clickButton(cmdValue(0));  // leaves the accepted flag set
    controller.dialogClosed();
    controller.abandonMarking();
    open();

    QTest::keyClick(dialog.get(), Qt::Key_Escape);

    EXPECT_FALSE(dialog->isVisible());
    EXPECT_FALSE(controller.dialogAccepted());
}

// --- the handlers' guard ---

TEST_F(frmProofConfigTest, Ok_Failure_IsLoggedAndTheDialogStaysOpen)
{
    controller.startProcedure();
    open();
    settings.CURRENTPROOFNO = 25;  // no such entry

    QTest::mouseClick(button("cmdOK"), Qt::LeftButton);

    EXPECT_TRUE(dialog->isVisible());
    const QString logText = QString::fromUtf8(dir.read(QStringLiteral("Error.Log")));
    EXPECT_TRUE(logText.endsWith(QStringLiteral(" frmProofConfig:cmdOK_Click Error.(9)\r\n")))
        << logText.toStdString();
    EXPECT_FALSE(dir.exists(QStringLiteral("Proof.dat")));
}
