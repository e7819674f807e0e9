#include "measure/MeasureHistory.h"

#include "common/ErrorLog.h"
#include "common/Guidance.h"
#include "common/GuidanceTable.h"
#include "common/Settings.h"
#include "measure/CircleToCircleTool.h"
#include "measure/MeasureSession.h"
#include "measure/ResultTable.h"
#include "measure/TwoPointTool.h"

#include "FakeCommentBox.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QSignalSpy>

using namespace tavix;
using tavix::test::ScriptedPrompter;

inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace {

using Answer = Prompter::Answer;

// A measuring session over a real result table, clicked as the still view
// clicks it; lengths in pixels, two decimals.
class MeasureHistoryTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        settings.NUMBEROFDECIMALS = 2;
        table.reformat(2);
        session.selectTool(TwoPointTool::Number);
    }

    // A two-point distance from (10, 10) straight down.
    void distance(double pixels)
    {
        session.release({10, 10}, Qt::LeftButton);
        session.release({10, 10 + pixels}, Qt::LeftButton);
    }

    // Column 0 and 2 of every row, "number:value".
    QStringList rows() const
    {
        QStringList list;
        for (int row = 1; row <= table.count(); ++row)
            list << table.text(row, 0) + QLatin1Char(':') + table.text(row, 2);
        return list;
    }

    // The first value of every measurement in the store.
    std::vector<double> storeValues() const
    {
        std::vector<double> values;
        for (const MeasurementStore::Entry& entry : session.store().entries())
            values.push_back(entry.measurement.values.front().value);
        return values;
    }

    // Five distances of 10 to 50 pixels.
    void fiveDistances()
    {
        for (int i = 1; i <= 5; ++i)
            distance(10 * i);
        ASSERT_EQ(table.count(), 5);
    }

    test::TempDir dir;
    Settings settings;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    MessageTable messages = test::shippedMessages();
    ResultTable table;
    GuidanceTable guidanceTable;
    test::FakeCommentBox box0, box1;
    Guidance guidance{guidanceTable, box0, box1};
    ScriptedPrompter prompter;
    MeasureSession session{settings, log, messages, table, guidance, prompter, [] {
                               return MeasureSession::Units{{}, QStringLiteral("px")};
                           }};
};

}  // namespace

TEST_F(MeasureHistoryTest, NothingToUndoOrRedo_AtTheStart)
{
    EXPECT_FALSE(session.canUndo());
    EXPECT_FALSE(session.canRedo());
    session.undo();
    session.redo();
    EXPECT_EQ(table.count(), 0);
}

TEST_F(MeasureHistoryTest, AFinishedMeasurement_IsUndone_AndRedone)
{
    distance(10);
    distance(20);
    ASSERT_TRUE(session.canUndo());

    session.undo();
    EXPECT_EQ(rows(), QStringList{"1:10.00"});
    EXPECT_EQ(storeValues(), std::vector<double>{10});
    EXPECT_TRUE(table.unsaved());
    EXPECT_TRUE(session.canRedo());

    session.undo();
    EXPECT_EQ(table.count(), 0);
    EXPECT_TRUE(session.store().empty());
    EXPECT_FALSE(table.unsaved()) << "an empty table has nothing to save";
    EXPECT_FALSE(session.canUndo());

    session.redo();
    session.redo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00"}));
    EXPECT_EQ(storeValues(), (std::vector<double>{10, 20}));
    EXPECT_EQ(session.store().at(1).rows, std::vector<int>{2});
    EXPECT_TRUE(table.unsaved());
    EXPECT_FALSE(session.canRedo());
}

TEST_F(MeasureHistoryTest, AMeasurementOfTwoRows_IsOneStep)
{
    // Two circles, three points each: centre distance and edge distance, two rows.
    session.selectTool(CircleToCircleTool::Number);
    for (const PointD p :
         {PointD{0, 10}, PointD{10, 0}, PointD{20, 10}, PointD{100, 10}, PointD{110, 0}, PointD{120, 10}})
        session.release(p, Qt::LeftButton);
    ASSERT_EQ(table.count(), 2);

    session.undo();
    EXPECT_EQ(table.count(), 0);
    EXPECT_FALSE(session.canUndo());
    session.redo();
    EXPECT_EQ(table.count(), 2);
    EXPECT_EQ(session.store().at(0).rows, (std::vector<int>{1, 2}));
}

TEST_F(MeasureHistoryTest, RemovingARange_IsUndone_RowsNumbersValuesAndMeasurementsBack)
{
    fiveDistances();
    prompter.answers.push_back(Answer::Yes);
    ASSERT_EQ(table.removeResults(2, 3, prompter, messages).status, ResultTable::RemoveOutcome::Removed);
    ASSERT_EQ(rows(), (QStringList{"1:10.00", "2:40.00", "3:50.00"}));

    session.undo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00", "3:30.00", "4:40.00", "5:50.00"}));
    EXPECT_EQ(storeValues(), (std::vector<double>{10, 20, 30, 40, 50}));
    EXPECT_EQ(session.store().indexAtRow(4), 3);
    EXPECT_DOUBLE_EQ(table.value(3), 30.0);

    session.redo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:40.00", "3:50.00"}));
    EXPECT_EQ(storeValues(), (std::vector<double>{10, 40, 50}));
    EXPECT_EQ(table.text(4, 0), QString());
}

TEST_F(MeasureHistoryTest, Clear_IsUndone_WithTheTwoPointAverage)
{
    distance(10);
    distance(30);
    ASSERT_DOUBLE_EQ(session.twoPointAverage(), 20.0);
    prompter.answers.push_back(Answer::Yes);
    ASSERT_TRUE(table.clearAll(prompter, messages));
    ASSERT_DOUBLE_EQ(session.twoPointAverage(), 0.0) << "an emptied table starts the average again";

    session.undo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:30.00"}));
    EXPECT_EQ(session.store().size(), 2);
    EXPECT_DOUBLE_EQ(session.twoPointAverage(), 20.0);
    EXPECT_TRUE(table.unsaved());

    session.undo();
    EXPECT_DOUBLE_EQ(session.twoPointAverage(), 10.0);

    session.redo();
    session.redo();
    EXPECT_EQ(table.count(), 0);
    EXPECT_DOUBLE_EQ(session.twoPointAverage(), 0.0);
}

TEST_F(MeasureHistoryTest, AClearOrRemovalAnsweredNo_RecordsNothing)
{
    distance(10);
    distance(20);
    prompter.answers = {Answer::No, Answer::No};
    EXPECT_FALSE(table.clearAll(prompter, messages));
    EXPECT_EQ(table.removeResults(1, 2, prompter, messages).status, ResultTable::RemoveOutcome::Declined);

    session.undo();
    EXPECT_EQ(rows(), QStringList{"1:10.00"}) << "the step undone is the last measurement";
    session.undo();
    EXPECT_FALSE(session.canUndo());
}

TEST_F(MeasureHistoryTest, TheCurrentPicturesRowsDroppedForANewCalibration_AreUndone_KeptRowsStayGrey)
{
    table.setKeepResult(true);
    distance(10);
    table.ClearResults(ResultTable::KeepAll);  // a new still: row 1 is kept
    distance(20);
    distance(30);
    ASSERT_EQ(table.firstCurrentRow(), 2);

    // What a calibration saved with OK, or another entry chosen, does to the table.
    table.clearResults(1);
    ASSERT_EQ(rows(), QStringList{"1:10.00"});

    session.undo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00", "3:30.00"}));
    EXPECT_EQ(table.firstCurrentRow(), 2);
    EXPECT_EQ(table.rowColor(1), ResultTable::keptColor());
    EXPECT_EQ(table.rowColor(2), ResultTable::currentColor());
    EXPECT_EQ(storeValues(), (std::vector<double>{20, 30}));
    EXPECT_TRUE(table.unsaved());
}

TEST_F(MeasureHistoryTest, AClearThatDropsNoRow_IsNoStep)
{
    table.setKeepResult(true);
    distance(10);
    table.ClearResults(ResultTable::KeepAll);
    table.clearResults(1);  // only kept rows: nothing goes
    EXPECT_FALSE(session.canUndo());
    EXPECT_EQ(table.count(), 1);
}

TEST_F(MeasureHistoryTest, ANewPicture_StartsANewHistory)
{
    distance(10);
    distance(20);
    session.undo();
    ASSERT_TRUE(session.canUndo());
    ASSERT_TRUE(session.canRedo());
    QSignalSpy changed(&session, &MeasureSession::historyChanged);

    table.ClearResults(ResultTable::KeepAll);

    EXPECT_FALSE(session.canUndo());
    EXPECT_FALSE(session.canRedo());
    EXPECT_GE(changed.count(), 1) << "the buttons follow";
}

TEST_F(MeasureHistoryTest, ANewChange_DropsWhatCouldBeRedone)
{
    distance(10);
    distance(20);
    session.undo();
    distance(30);
    EXPECT_FALSE(session.canRedo());
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:30.00"}));
    session.undo();
    EXPECT_EQ(rows(), QStringList{"1:10.00"});
}

TEST_F(MeasureHistoryTest, UnsavedFlag_FollowsTheSavedFile)
{
    distance(10);
    distance(20);
    ASSERT_TRUE(table.saveCsv(dir.file(QStringLiteral("r.csv"))));
    ASSERT_FALSE(table.unsaved());

    session.undo();
    EXPECT_TRUE(table.unsaved()) << "one row here, two in the file";
    session.redo();
    EXPECT_FALSE(table.unsaved()) << "the table is again what was saved";

    distance(30);
    ASSERT_TRUE(table.saveCsv(dir.file(QStringLiteral("r.csv"))));
    session.undo();
    EXPECT_TRUE(table.unsaved()) << "the state saved before is not the file any more";
}

TEST_F(MeasureHistoryTest, RestoredValues_AreWrittenWithTheDecimalsInForce)
{
    distance(12.5);
    distance(20);
    settings.NUMBEROFDECIMALS = 0;
    table.reformat(0);
    session.relabel();

    session.undo();
    EXPECT_EQ(table.text(1, 2), QStringLiteral("13"));
    EXPECT_EQ(session.store().at(0).measurement.shape.labels.front().text, QStringLiteral("13"));
}

TEST_F(MeasureHistoryTest, OnlyTheLastStepsAreKept)
{
    for (int i = 1; i <= MeasureHistory::kDepth + 3; ++i)
        distance(i);
    int steps = 0;
    while (session.canUndo()) {
        session.undo();
        ++steps;
    }
    EXPECT_EQ(steps, MeasureHistory::kDepth);
    EXPECT_EQ(table.count(), 3);
}

TEST_F(MeasureHistoryTest, UndoAndRedo_TellTheOverlayAndDropTheHighlight)
{
    distance(10);
    QSignalSpy overlay(&session, &MeasureSession::overlayChanged);
    QSignalSpy highlight(&session, &MeasureSession::highlightChanged);
    session.undo();
    EXPECT_GE(overlay.count(), 1);
    ASSERT_EQ(highlight.count(), 1);
    EXPECT_TRUE(highlight.front().front().value<std::vector<int>>().empty());
}

TEST(MeasureHistory, SavedMarksEveryOtherStateWithCurrentRowsUnsaved)
{
    MeasureHistory history;
    MeasureHistory::State empty;
    MeasureHistory::State oneRow;
    oneRow.table.rows.resize(1);
    oneRow.table.unsaved = false;  // saved once
    history.record(empty);
    history.record(oneRow);
    history.saved();
    auto back = history.undo(MeasureHistory::State{});
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->table.unsaved);
    back = history.undo(MeasureHistory::State{});
    ASSERT_TRUE(back);
    EXPECT_FALSE(back->table.unsaved);
}

namespace {

struct ToolCase {
    const char* name;
    int tool;
    std::vector<PointD> clicks;
    bool doubleClickAtEnd = false;
};

class EveryTool : public MeasureHistoryTest, public ::testing::WithParamInterface<ToolCase> {};

}  // namespace

TEST_P(EveryTool, AFinishedMeasurement_IsOneStepBackAndForth)
{
    const ToolCase& c = GetParam();
    session.selectTool(c.tool);
    for (const PointD p : c.clicks)
        session.release(p, Qt::LeftButton);
    if (c.doubleClickAtEnd)
        session.doubleClick(c.clicks.back());
    ASSERT_EQ(session.store().size(), 1);
    const int rowsMade = table.count();
    ASSERT_GE(rowsMade, 1);
    const QString firstKind = table.text(1, 1);

    session.undo();
    EXPECT_EQ(table.count(), 0);
    EXPECT_TRUE(session.store().empty());
    EXPECT_FALSE(session.canUndo());

    session.redo();
    EXPECT_EQ(table.count(), rowsMade);
    EXPECT_EQ(table.text(1, 1), firstKind);
    ASSERT_EQ(session.store().size(), 1);
    EXPECT_EQ(session.store().at(0).measurement.tool, c.tool);
}

INSTANTIATE_TEST_SUITE_P(
    MeasureHistory, EveryTool,
    ::testing::Values(
        ToolCase{"PointCount", 100, {{10, 10}, {20, 30}, {40, 5}}, true},
        ToolCase{"TwoPoint", 101, {{0, 0}, {0, 10}}}, ToolCase{"Circle", 102, {{0, 10}, {10, 0}, {20, 10}}},
        ToolCase{"CircleToCircle", 103, {{0, 10}, {10, 0}, {20, 10}, {100, 10}, {110, 0}, {120, 10}}},
        ToolCase{"Perpendicular", 104, {{0, 0}, {100, 0}, {50, 30}}},
        ToolCase{"Area", 105, {{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true},
        ToolCase{"Angle", 106, {{-10, 0}, {10, 0}, {3, -10}, {3, 10}}},
        ToolCase{"FiveClickAngle", 107, {{-10, 0}, {10, 0}, {3, -10}, {3, 10}, {8, 5}}},
        ToolCase{"LineToPoint", 108, {{0, 0}, {10, 0}, {4, 6}}},
        ToolCase{"Arc", 109, {{110, 100}, {100, 110}, {90, 100}}}),
    [](const auto& info) { return std::string(info.param.name); });
