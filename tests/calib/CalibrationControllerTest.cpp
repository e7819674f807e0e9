#include "calib/CalibrationController.h"
#include "calib/ProofTable.h"
#include "common/Settings.h"

#include "FakeResultTable.h"
#include "FakeScaleBar.h"
#include "PrintQt.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QDir>
#include <functional>

using namespace tavix;
using tavix::test::FakeResultTable;
using tavix::test::FakeScaleBar;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

using Selection = CalibrationController::Selection;
using SaveResult = CalibrationController::SaveResult;
using Marking = CalibrationController::Marking;

namespace {

class CalibrationControllerTest : public ::testing::Test {
protected:
    CalibrationControllerTest()
    {
        settings.CURRENTPROOFNO = 2;
        table.at(2) = ProofEntry{QStringLiteral("Lens 10x"), 0.25, 0.5, QStringLiteral("mm"), 50, 20, 0};
        table.at(5) = ProofEntry{QStringLiteral("Lens 20x"), 0.125, 0.125, QStringLiteral("MIC"), 25, 25, 0};
    }

    ProofTable readBack() const
    {
        ProofTable back;
        EXPECT_TRUE(back.ReadProofData(proofPath));
        return back;
    }

    void expectMessage(size_t index, int textId, int titleId, Prompter::Icon icon) const
    {
        ASSERT_GT(prompter.messages.size(), index);
        const Prompter::Message& m = prompter.messages[index];
        EXPECT_EQ(m.text, messages.text(textId));
        EXPECT_EQ(m.title, messages.text(titleId));
        EXPECT_EQ(m.icon, icon);
    }

    TempDir dir;
    QString proofPath = dir.file(QStringLiteral("Proof.dat"));
    ProofTable table;
    Settings settings;
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    FakeResultTable results;
    FakeScaleBar scaleBar;
    CalibrationController controller{table, settings, messages, prompter, results, scaleBar, proofPath};
};

// A prompter that does something while its question is open, as a modal
// dialog's event loop may.
class ReentrantPrompter : public ScriptedPrompter {
public:
    std::function<void()> whileAsking;
    Answer message(const Message& m) override
    {
        if (whileAsking)
            whileAsking();
        return ScriptedPrompter::message(m);
    }
};

}  // namespace

// --- the selection list ---

TEST_F(CalibrationControllerTest, SelectEntry_SetsCurrentProofNo_WithoutAsking_WhenTableIsEmpty)
{
    const Selection outcome = controller.selectEntry(5);

    EXPECT_EQ(outcome, Selection::Changed);
    EXPECT_EQ(settings.CURRENTPROOFNO, 5);
    EXPECT_EQ(controller.currentIndex(), 5);
    EXPECT_EQ(controller.currentEntry().Name, QStringLiteral("Lens 20x"));
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_TRUE(results.clears.empty());
}

TEST_F(CalibrationControllerTest, SelectEntry_AsksYesNoQuestion_WhenResultsAreUnsaved)
{
    results.results = results.notSaved = true;
    prompter.answers = {Prompter::Answer::Yes};

    controller.selectEntry(5);

    ASSERT_EQ(prompter.messages.size(), 1u);
    expectMessage(0, 20000, 11000, Prompter::Icon::Question);
    EXPECT_EQ(prompter.messages[0].buttons, Prompter::Buttons::YesNo);
    EXPECT_EQ(prompter.messages[0].defaultAnswer, Prompter::Answer::No);
}

TEST_F(CalibrationControllerTest, SelectEntry_No_KeepsSelectionAndResults)
{
    results.results = results.notSaved = true;
    prompter.answers = {Prompter::Answer::No};
    scaleBar.on = true;

    const Selection outcome = controller.selectEntry(7);

    EXPECT_EQ(outcome, Selection::Declined);
    EXPECT_EQ(settings.CURRENTPROOFNO, 2);
    EXPECT_TRUE(results.clears.empty());
    EXPECT_TRUE(scaleBar.on);
    EXPECT_EQ(scaleBar.switchOffs, 0);
}

TEST_F(CalibrationControllerTest, SelectEntry_Yes_ClearsCurrentResultsAndSelects)
{
    results.results = results.notSaved = true;
    prompter.answers = {Prompter::Answer::Yes};

    const Selection outcome = controller.selectEntry(5);

    EXPECT_EQ(outcome, Selection::Changed);
    EXPECT_EQ(results.clears, std::vector<int>{1});
    EXPECT_EQ(settings.CURRENTPROOFNO, 5);
}

TEST_F(CalibrationControllerTest, SelectEntry_ClearsSavedResults_WithoutAsking)
{
    results.results = true;
    results.notSaved = false;

    const Selection outcome = controller.selectEntry(5);

    EXPECT_EQ(outcome, Selection::Changed);
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(results.clears, std::vector<int>{1});
}

struct FactorCase {
    const char* name;
    double xFactor, yFactor;
};
class SelectUncalibratedEntry : public CalibrationControllerTest,
                                public ::testing::WithParamInterface<FactorCase> {};

TEST_P(SelectUncalibratedEntry, SelectEntry_SwitchesScaleBarOff_WhenAFactorIsZero)
{
    table.at(9).XFactor = GetParam().xFactor;
    table.at(9).YFactor = GetParam().yFactor;
    scaleBar.on = true;

    controller.selectEntry(9);

    EXPECT_FALSE(scaleBar.on);
    EXPECT_EQ(scaleBar.switchOffs, 1);
    EXPECT_EQ(scaleBar.redraws, 0);
}

INSTANTIATE_TEST_SUITE_P(Factors, SelectUncalibratedEntry,
                         ::testing::Values(FactorCase{"Both", 0, 0}, FactorCase{"X", 0, 0.5},
                                           FactorCase{"Y", 0.5, 0}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(CalibrationControllerTest, SelectEntry_RedrawsScaleBar_WhenOnAndEntryCalibrated)
{
    scaleBar.on = true;

    controller.selectEntry(5);

    EXPECT_EQ(scaleBar.redraws, 1);
    EXPECT_TRUE(scaleBar.on);
}

TEST_F(CalibrationControllerTest, SelectEntry_LeavesScaleBarOff_WhenOffAndEntryCalibrated)
{
    scaleBar.on = false;

    controller.selectEntry(5);

    EXPECT_EQ(scaleBar.redraws, 0);
    EXPECT_FALSE(scaleBar.on);
}

TEST_F(CalibrationControllerTest, SelectEntry_IgnoresACallWhileItRuns)
{
    ReentrantPrompter reentrant;
    CalibrationController c{table, settings, messages, reentrant, results, scaleBar, proofPath};
    results.results = results.notSaved = true;
    reentrant.answers = {Prompter::Answer::Yes};
    Selection inner = Selection::Changed;
    reentrant.whileAsking = [&] { inner = c.selectEntry(9); };

    const Selection outer = c.selectEntry(5);

    EXPECT_EQ(inner, Selection::Ignored);
    EXPECT_EQ(outer, Selection::Changed);
    EXPECT_EQ(settings.CURRENTPROOFNO, 5);
    EXPECT_EQ(reentrant.messages.size(), 1u);
}

TEST_F(CalibrationControllerTest, SelectEntry_AcceptsCallsAgain_AfterTheFirstHasEnded)
{
    controller.selectEntry(5);

    const Selection second = controller.selectEntry(9);

    EXPECT_EQ(second, Selection::Changed);
    EXPECT_EQ(settings.CURRENTPROOFNO, 9);
}

TEST_F(CalibrationControllerTest, SelectEntry_IgnoresIndexOutsideTable)
{
    EXPECT_EQ(controller.selectEntry(-1), Selection::Ignored);
    EXPECT_EQ(controller.selectEntry(20), Selection::Ignored);
    EXPECT_EQ(settings.CURRENTPROOFNO, 2);
}

// --- starting the procedure ---

TEST_F(CalibrationControllerTest, StartProcedure_CopiesSelectedEntryAndForgetsPointMode)
{
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::LineAndPoint, QStringLiteral("x"),
                                  QStringLiteral("cm"), true);

    const bool started = controller.startProcedure();

    EXPECT_TRUE(started);
    EXPECT_EQ(controller.buffer(), table.at(2));
    EXPECT_EQ(controller.pointMode(), -1);
    EXPECT_EQ(controller.calibrationRequest(), -1);
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(CalibrationControllerTest, StartProcedure_AsksWhenResultsUnsaved_AndStopsOnNo)
{
    results.results = results.notSaved = true;
    prompter.answers = {Prompter::Answer::No};
    const ProofEntry before = controller.buffer();

    const bool started = controller.startProcedure();

    EXPECT_FALSE(started);
    ASSERT_EQ(prompter.messages.size(), 1u);
    expectMessage(0, 20060, 11060, Prompter::Icon::Question);
    EXPECT_EQ(prompter.messages[0].buttons, Prompter::Buttons::YesNo);
    EXPECT_EQ(prompter.messages[0].defaultAnswer, Prompter::Answer::No);
    EXPECT_EQ(controller.buffer(), before);
    EXPECT_TRUE(results.clears.empty());
}

TEST_F(CalibrationControllerTest, StartProcedure_GoesOnAfterYes_WithoutClearingYet)
{
    results.results = results.notSaved = true;
    prompter.answers = {Prompter::Answer::Yes};

    const bool started = controller.startProcedure();

    EXPECT_TRUE(started);
    EXPECT_EQ(controller.buffer(), table.at(2));
    EXPECT_TRUE(results.clears.empty());
}

TEST_F(CalibrationControllerTest, StartProcedure_DoesNotAsk_WhenResultsAreSaved)
{
    results.results = true;

    EXPECT_TRUE(controller.startProcedure());
    EXPECT_TRUE(prompter.messages.empty());
}

// --- the dialog's own steps ---

TEST_F(CalibrationControllerTest, DialogPointMode_UsesTheConfiguredDefault_WhenNoneIsRemembered)
{
    settings._2POINTCOMMANDMODE = 1;
    controller.startProcedure();

    EXPECT_EQ(controller.dialogPointMode(), CalibrationPointMode::LineAndPoint);
}

TEST_F(CalibrationControllerTest, DialogPointMode_UsesTheModeOfTheLastMeasurement)
{
    settings._2POINTCOMMANDMODE = 1;
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), false);

    EXPECT_EQ(controller.pointMode(), 0);
    EXPECT_EQ(controller.dialogPointMode(), CalibrationPointMode::TwoPoint);
}

TEST_F(CalibrationControllerTest, RequestMeasurement_RemembersDialogValuesAndTheRequest)
{
    controller.startProcedure();

    controller.requestMeasurement(CalibrationAxis::Y, CalibrationPointMode::LineAndPoint,
                                  QStringLiteral("New name"), QStringLiteral("nm"), true);

    EXPECT_EQ(controller.calibrationRequest(), 12);
    EXPECT_EQ(controller.pointMode(), 1);
    EXPECT_TRUE(controller.takingValue());
    EXPECT_TRUE(controller.dialogAccepted());
    EXPECT_EQ(controller.buffer().Name, QStringLiteral("New name"));
    EXPECT_EQ(controller.buffer().Unit, QStringLiteral("nm"));
    EXPECT_EQ(controller.buffer().AxisOption, 1);
    EXPECT_EQ(table.at(2).Name, QStringLiteral("Lens 10x"));
}

TEST_F(CalibrationControllerTest, DialogOpened_ClearsThePendingRequest)
{
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), false);

    controller.dialogOpened();

    EXPECT_EQ(controller.calibrationRequest(), -1);
    EXPECT_FALSE(controller.takingValue());
}

// --- after the dialog ---

struct ToolCase {
    CalibrationAxis axis;
    CalibrationPointMode mode;
    qint16 tool;
    qint16 guidance;
};
class DialogClosedWithRequest : public CalibrationControllerTest,
                                public ::testing::WithParamInterface<ToolCase> {};

TEST_P(DialogClosedWithRequest, DialogClosed_NamesCalibrationToolAndGuidance)
{
    const ToolCase c = GetParam();
    results.results = true;
    controller.startProcedure();
    controller.requestMeasurement(c.axis, c.mode, QStringLiteral("a"), QStringLiteral("mm"), false);

    const CalibrationController::AfterDialog after = controller.dialogClosed();

    EXPECT_TRUE(after.measure);
    EXPECT_EQ(after.toolNumber, c.tool);
    EXPECT_EQ(after.guidanceNumber, c.guidance);
    // The results wait until the procedure ends.
    EXPECT_TRUE(results.clears.empty());
    EXPECT_EQ(results.refreshes, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Table, DialogClosedWithRequest,
    ::testing::Values(ToolCase{CalibrationAxis::X, CalibrationPointMode::TwoPoint, 21, 70},
                      ToolCase{CalibrationAxis::X, CalibrationPointMode::LineAndPoint, 22, 71},
                      ToolCase{CalibrationAxis::Y, CalibrationPointMode::TwoPoint, 23, 72},
                      ToolCase{CalibrationAxis::Y, CalibrationPointMode::LineAndPoint, 24, 73}));

TEST_F(CalibrationControllerTest, DialogClosed_ClearsCurrentResults_AfterOk)
{
    results.results = true;
    controller.startProcedure();
    ASSERT_EQ(controller.save(QStringLiteral("Lens 10x"), QStringLiteral("mm"), false), SaveResult::Saved);

    const CalibrationController::AfterDialog after = controller.dialogClosed();

    EXPECT_FALSE(after.measure);
    EXPECT_EQ(results.clears, std::vector<int>{1});
    EXPECT_EQ(results.refreshes, 0);
}

TEST_F(CalibrationControllerTest, DialogClosed_RefreshesResults_AfterCancel)
{
    results.results = results.notSaved = true;
    prompter.answers = {Prompter::Answer::Yes};
    controller.startProcedure();
    controller.cancel();

    const CalibrationController::AfterDialog after = controller.dialogClosed();

    EXPECT_FALSE(after.measure);
    EXPECT_TRUE(results.clears.empty());
    EXPECT_EQ(results.refreshes, 1);
}

TEST_F(CalibrationControllerTest, DialogClosed_LeavesAnEmptyTableAlone)
{
    controller.startProcedure();
    controller.save(QStringLiteral("Lens 10x"), QStringLiteral("mm"), false);

    controller.dialogClosed();

    EXPECT_TRUE(results.clears.empty());
    EXPECT_EQ(results.refreshes, 0);
}

TEST_F(CalibrationControllerTest, DialogClosed_SwitchesScaleBarOff_WhenSavedEntryLacksAFactor)
{
    scaleBar.on = true;
    controller.startProcedure();
    controller.buffer().YFactor = 0;
    controller.save(QStringLiteral("Lens 10x"), QStringLiteral("mm"), false);

    controller.dialogClosed();

    EXPECT_FALSE(scaleBar.on);
}

TEST_F(CalibrationControllerTest, DialogClosed_RedrawsScaleBar_ForTheNewFactors)
{
    scaleBar.on = true;
    controller.startProcedure();
    controller.buffer().XFactor = 2;
    controller.save(QStringLiteral("Lens 10x"), QStringLiteral("mm"), true);

    controller.dialogClosed();

    EXPECT_TRUE(scaleBar.on);
    EXPECT_EQ(scaleBar.redraws, 1);
}

// --- the true length ---

struct PromptCase {
    CalibrationAxis axis;
    bool axisOption;
    int promptId;
};
class FinishMarkingPrompt : public CalibrationControllerTest,
                            public ::testing::WithParamInterface<PromptCase> {};

TEST_P(FinishMarkingPrompt, FinishMarking_AsksWithThePromptOfTheAxis)
{
    const PromptCase c = GetParam();
    controller.startProcedure();
    controller.requestMeasurement(c.axis, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), c.axisOption);
    prompter.inputs = {QStringLiteral("10")};

    controller.finishMarking(100, 1.0);

    ASSERT_EQ(prompter.inputPrompts.size(), 1);
    EXPECT_EQ(prompter.inputPrompts[0], messages.text(c.promptId));
    EXPECT_EQ(prompter.inputTitles[0], messages.text(14000));
}

INSTANTIATE_TEST_SUITE_P(Table, FinishMarkingPrompt,
                         ::testing::Values(PromptCase{CalibrationAxis::X, false, 24005},
                                           PromptCase{CalibrationAxis::X, true, 24007},
                                           PromptCase{CalibrationAxis::Y, false, 24006},
                                           PromptCase{CalibrationAxis::Y, true, 24006}));

TEST_F(CalibrationControllerTest, FinishMarking_StoresXValueAndFactor)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("MIC"), false);
    prompter.inputs = {QStringLiteral("100")};

    const CalibrationController::MarkingResult result = controller.finishMarking(200, 1.0);

    EXPECT_EQ(result.marking, Marking::Stored);
    EXPECT_EQ(result.runError, 0);
    EXPECT_DOUBLE_EQ(controller.buffer().XValue, 100);
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 0.5);
    EXPECT_DOUBLE_EQ(controller.buffer().YValue, 20);
    EXPECT_DOUBLE_EQ(controller.buffer().YFactor, 0.5);
}

TEST_F(CalibrationControllerTest, FinishMarking_StoresYValueAndFactor)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::Y, CalibrationPointMode::LineAndPoint, QStringLiteral("a"),
                                  QStringLiteral("MIC"), false);
    prompter.inputs = {QStringLiteral("30")};

    controller.finishMarking(120, 1.0);

    EXPECT_DOUBLE_EQ(controller.buffer().YValue, 30);
    EXPECT_DOUBLE_EQ(controller.buffer().YFactor, 0.25);
    EXPECT_DOUBLE_EQ(controller.buffer().XValue, 50);
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 0.25);
}

TEST_F(CalibrationControllerTest, FinishMarking_FactorIsPerPicturePixel_AtAnyMagnification)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("MIC"), false);
    prompter.inputs = {QStringLiteral("100")};

    controller.finishMarking(400, 2.0);

    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 0.25);
}

TEST_F(CalibrationControllerTest, FinishMarking_TakesTheLeadingNumber_Of12abc)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("MIC"), false);
    prompter.inputs = {QStringLiteral("12abc")};

    controller.finishMarking(24, 1.0);

    EXPECT_DOUBLE_EQ(controller.buffer().XValue, 12);
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 0.5);
    EXPECT_EQ(prompter.inputPrompts.size(), 1);
    EXPECT_TRUE(prompter.messages.empty());
}

class FinishMarkingBadAnswer : public CalibrationControllerTest,
                               public ::testing::WithParamInterface<const char*> {};

TEST_P(FinishMarkingBadAnswer, FinishMarking_ShowsNotPositiveMessageAndAsksAgain)
{
    prompter.answers = {Prompter::Answer::Ok};
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("MIC"), false);
    prompter.inputs = {QString::fromLatin1(GetParam()), QStringLiteral("5")};

    const CalibrationController::MarkingResult result = controller.finishMarking(10, 1.0);

    EXPECT_EQ(prompter.inputPrompts.size(), 2);
    ASSERT_EQ(prompter.messages.size(), 1u);
    expectMessage(0, 24002, 14100, Prompter::Icon::Exclamation);
    EXPECT_EQ(result.marking, Marking::Stored);
    EXPECT_DOUBLE_EQ(controller.buffer().XValue, 5);
}

INSTANTIATE_TEST_SUITE_P(Answers, FinishMarkingBadAnswer, ::testing::Values("abc", "-3", "0", " "));

TEST_F(CalibrationControllerTest, FinishMarking_ZeroPixels_KeepsFactorButStoresValue)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), false);
    prompter.inputs = {QStringLiteral("75")};

    const CalibrationController::MarkingResult result = controller.finishMarking(0, 1.0);

    EXPECT_EQ(result.marking, Marking::Stored);
    EXPECT_DOUBLE_EQ(controller.buffer().XValue, 75);
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 0.25);
}

struct AbandonCase {
    const char* name;
    std::optional<QString> answer;
};
class FinishMarkingAbandoned : public CalibrationControllerTest,
                               public ::testing::WithParamInterface<AbandonCase> {};

TEST_P(FinishMarkingAbandoned, FinishMarking_ChangesNothing_WhenNoLengthIsTyped)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), false);
    const ProofEntry before = controller.buffer();
    prompter.inputs = {GetParam().answer};

    const CalibrationController::MarkingResult result = controller.finishMarking(100, 1.0);

    EXPECT_EQ(result.marking, Marking::Abandoned);
    EXPECT_EQ(controller.buffer(), before);
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_FALSE(controller.takingValue());
}

INSTANTIATE_TEST_SUITE_P(Answers, FinishMarkingAbandoned,
                         ::testing::Values(AbandonCase{"Empty", QString()},
                                           AbandonCase{"Cancel", std::nullopt}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(CalibrationControllerTest, FinishMarking_EndsTheValueTaking)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::Y, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), false);
    prompter.inputs = {QStringLiteral("1")};

    controller.finishMarking(10, 1.0);

    EXPECT_EQ(controller.calibrationRequest(), -1);
    EXPECT_FALSE(controller.takingValue());
}

TEST_F(CalibrationControllerTest, FinishMarking_ReportsOverflow_AndKeepsTheTypedLength)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), false);
    prompter.inputs = {QStringLiteral("1E300")};

    const CalibrationController::MarkingResult result = controller.finishMarking(1E-300, 1.0);

    EXPECT_EQ(result.marking, Marking::Stored);
    EXPECT_EQ(result.runError, 6);
    EXPECT_DOUBLE_EQ(controller.buffer().XValue, 1E300);
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 0.25);
}

TEST_F(CalibrationControllerTest, FinishMarking_AsksNothing_WhenNoMeasurementIsPending)
{
    controller.startProcedure();

    // An input box would fail the test: the prompter has no answer scripted.
    const CalibrationController::MarkingResult result = controller.finishMarking(100, 1.0);

    EXPECT_EQ(result.marking, Marking::Abandoned);
    EXPECT_TRUE(prompter.inputPrompts.isEmpty());
}

TEST_F(CalibrationControllerTest, AbandonMarking_EndsTheValueTakingWithoutAsking)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), false);
    const ProofEntry before = controller.buffer();

    controller.abandonMarking();

    EXPECT_FALSE(controller.takingValue());
    EXPECT_EQ(controller.buffer(), before);
    EXPECT_TRUE(prompter.inputPrompts.isEmpty());
}

// --- OK and Cancel ---

TEST_F(CalibrationControllerTest, Save_RefusesBlankName_WithMessage24000)
{
    prompter.answers = {Prompter::Answer::Ok};
    controller.startProcedure();

    const SaveResult result = controller.save(QStringLiteral("   "), QStringLiteral("mm"), false);

    EXPECT_EQ(result, SaveResult::NameMissing);
    ASSERT_EQ(prompter.messages.size(), 1u);
    expectMessage(0, 24000, 14100, Prompter::Icon::Exclamation);
    EXPECT_FALSE(dir.exists(QStringLiteral("Proof.dat")));
    EXPECT_EQ(table.at(2).Name, QStringLiteral("Lens 10x"));
    EXPECT_FALSE(controller.dialogAccepted());
}

TEST_F(CalibrationControllerTest, Save_RefusesEmptyUnit_WithMessage24003)
{
    prompter.answers = {Prompter::Answer::Ok};
    controller.startProcedure();

    const SaveResult result = controller.save(QStringLiteral("Lens"), QString(), false);

    EXPECT_EQ(result, SaveResult::UnitMissing);
    ASSERT_EQ(prompter.messages.size(), 1u);
    expectMessage(0, 24003, 14100, Prompter::Icon::Exclamation);
    EXPECT_FALSE(dir.exists(QStringLiteral("Proof.dat")));
}

TEST_F(CalibrationControllerTest, Save_StoresTheSelectedEntryAndRewritesTheWholeFile)
{
    controller.startProcedure();
    controller.buffer().XFactor = 0.5;
    controller.buffer().XValue = 100;
    controller.buffer().YFactor = 0.25;
    controller.buffer().YValue = 10;

    const SaveResult result = controller.save(QStringLiteral(" Stand A "), QStringLiteral("MIC"), false);

    EXPECT_EQ(result, SaveResult::Saved);
    EXPECT_TRUE(controller.dialogAccepted());
    const ProofEntry expected{QStringLiteral(" Stand A "), 0.5, 0.25, QStringLiteral("MIC"), 100, 10, 0};
    EXPECT_EQ(table.at(2), expected);
    const ProofTable back = readBack();
    EXPECT_EQ(back.at(2), expected);
    EXPECT_EQ(back.at(5), table.at(5));
    EXPECT_EQ(back.at(0).Name, QStringLiteral("Proof1"));
    const QList<QByteArray> lines = dir.read(QStringLiteral("Proof.dat")).split('\n');
    EXPECT_EQ(lines.size(), 21);  // 20 lines, each ended by CR LF
    EXPECT_EQ(lines[2], QByteArray("\" Stand A \",.5,.25,\"MIC\",100,10\r"));
}

TEST_F(CalibrationControllerTest, Save_WithAxisOption_WritesYFromX_EvenAfterAYMeasurement)
{
    controller.startProcedure();
    controller.requestMeasurement(CalibrationAxis::Y, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), false);
    prompter.inputs = {QStringLiteral("40"), QStringLiteral("100")};
    controller.finishMarking(80, 1.0);  // y: .5 per pixel
    controller.dialogOpened();
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("a"),
                                  QStringLiteral("mm"), true);
    controller.finishMarking(400, 1.0);  // x: .25 per pixel

    controller.save(QStringLiteral("Both"), QStringLiteral("mm"), true);

    const ProofEntry saved = readBack().at(2);
    EXPECT_DOUBLE_EQ(saved.XFactor, 0.25);
    EXPECT_DOUBLE_EQ(saved.YFactor, 0.25);
    EXPECT_DOUBLE_EQ(saved.XValue, 100);
    EXPECT_DOUBLE_EQ(saved.YValue, 100);
}

TEST_F(CalibrationControllerTest, Save_WriteFailure_ShowsMessageAndKeepsTableAndBuffer)
{
    prompter.answers = {Prompter::Answer::Ok};
    const QString folder = dir.file(QStringLiteral("later"));
    CalibrationController c{
        table, settings, messages, prompter, results, scaleBar, folder + QStringLiteral("/Proof.dat")};
    c.startProcedure();
    c.buffer().XFactor = 3;
    const ProofEntry before = table.at(2);
    const ProofEntry buffer = c.buffer();

    const SaveResult result = c.save(QStringLiteral("New"), QStringLiteral("cm"), false);

    EXPECT_EQ(result, SaveResult::WriteFailed);
    EXPECT_FALSE(c.dialogAccepted());
    EXPECT_EQ(table.at(2), before);
    EXPECT_EQ(c.buffer(), buffer);
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(24010, 76));
    EXPECT_TRUE(prompter.messages[0].text.contains(QStringLiteral("76")));
    EXPECT_EQ(prompter.messages[0].title, messages.text(14000));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    EXPECT_FALSE(messages.text(24010).isEmpty());

    // Once the folder is there the same values save.
    ASSERT_TRUE(QDir().mkpath(folder));
    EXPECT_EQ(c.save(QStringLiteral("New"), QStringLiteral("cm"), false), SaveResult::Saved);
    EXPECT_DOUBLE_EQ(table.at(2).XFactor, 3);
}

TEST_F(CalibrationControllerTest, Cancel_StoresNothingAndKeepsTheBuffer)
{
    controller.startProcedure();
    controller.buffer().XValue = 999;
    const ProofEntry before = table.at(2);

    controller.cancel();

    EXPECT_FALSE(controller.dialogAccepted());
    EXPECT_EQ(table.at(2), before);
    EXPECT_DOUBLE_EQ(controller.buffer().XValue, 999);
    EXPECT_FALSE(dir.exists(QStringLiteral("Proof.dat")));
}
