#include "measure/ResultTable.h"

#include "common/DataFile.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/RunError.h"

#include "ScriptedPrompter.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <QBrush>
#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>
#include <csignal>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

// Readable failure messages for Qt strings.
inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace {

using Answer = Prompter::Answer;

MessageTable shippedMessages()
{
    MessageTable messages;
    messages.parse(DataFile::readText(QStringLiteral(TAVIX_SOURCE_DATA_DIR "/Message_E.txt")));
    return messages;
}

class ResultTableTest : public ::testing::Test {
protected:
    ResultTable table;
    MessageTable messages = shippedMessages();
    ScriptedPrompter prompter;

    // Results valued 1.1, 2.2, ... so that a moved value shows where it came from.
    void addResults(int n, const QString& kind = QStringLiteral("Distance"))
    {
        for (int i = 1; i <= n; ++i)
            table.addResult(kind + QString::number(i), i * 1.1, QStringLiteral("mm"));
    }

    // Every cell of a row, joined, for compact comparisons.
    QString rowText(int row) const
    {
        QStringList cells;
        for (int c = 0; c < ResultTable::kColumns; ++c)
            cells << table.text(row, c);
        return cells.join(QLatin1Char('|'));
    }
};

// --- adding

TEST_F(ResultTableTest, AddResult_WritesNumberKindFormattedValueAndUnit)
{
    table.reformat(2);

    const int row = table.addResult(QStringLiteral("Distance"), 12.3456, QStringLiteral("mm"));

    EXPECT_EQ(row, 1);
    EXPECT_EQ(table.count(), 1);
    EXPECT_EQ(rowText(1), QStringLiteral("1|Distance|12.35|mm"));
    EXPECT_DOUBLE_EQ(table.value(1), 12.3456);
    EXPECT_TRUE(table.hasResults());
    EXPECT_TRUE(table.unsaved());
}

TEST_F(ResultTableTest, NewTable_IsEmptyWithFirstCurrentRowOneAndNothingUnsaved)
{
    EXPECT_EQ(table.count(), 0);
    EXPECT_EQ(table.firstCurrentRow(), 1);
    EXPECT_FALSE(table.hasResults());
    EXPECT_FALSE(table.unsaved());
    EXPECT_FALSE(table.keepResult());
}

TEST_F(ResultTableTest, AddResult_Accepts999thResult)
{
    addResults(998);

    const int row = table.addResult(QStringLiteral("Area"), 42.0, QStringLiteral("mm"));

    EXPECT_EQ(row, 999);
    EXPECT_EQ(table.count(), 999);
    EXPECT_EQ(table.text(999, 0), QStringLiteral("999"));
    EXPECT_DOUBLE_EQ(table.value(999), 42.0);
    EXPECT_TRUE(table.isFull());
}

TEST_F(ResultTableTest, AddResult_Refuses1000thResultAndChangesNothing)
{
    addResults(999);
    ASSERT_TRUE(table.saveCsv(TempDir().file(QStringLiteral("r.csv"))));  // clears the unsaved flag
    const QByteArray before = table.csvText();
    const double lastValue = table.value(999);
    QSignalSpy inserted(&table, &QAbstractItemModel::rowsInserted);
    QSignalSpy state(&table, &ResultTable::stateChanged);

    const int row = table.addResult(QStringLiteral("Area"), 7.0, QStringLiteral("mm"));

    EXPECT_EQ(row, 0);
    EXPECT_EQ(table.count(), 999);
    EXPECT_EQ(table.csvText(), before);
    EXPECT_DOUBLE_EQ(table.value(999), lastValue);
    EXPECT_FALSE(table.unsaved());
    EXPECT_EQ(inserted.count(), 0);
    EXPECT_EQ(state.count(), 0);
    EXPECT_EQ(table.rowCount(), 999);
}

TEST_F(ResultTableTest, TellTableFull_ShowsFullTableMessageWithExclamation)
{
    prompter.answers = {Prompter::Answer::Ok};
    ResultTable::tellTableFull(prompter, messages);

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text,
              QStringLiteral("The result table is full (999 results). Save and clear it to measure more."));
    EXPECT_EQ(prompter.messages[0].title, QStringLiteral("Result table"));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    EXPECT_EQ(prompter.messages[0].buttons, Prompter::Buttons::Ok);
}

// --- ClearResults

TEST_F(ResultTableTest, ClearAll_AsksNothingAndDoesNothing_WhenTableIsEmpty)
{
    QSignalSpy cleared(&table, &ResultTable::measurementsCleared);
    QSignalSpy state(&table, &ResultTable::stateChanged);

    const bool done = table.clearAll(prompter, messages);

    EXPECT_FALSE(done);
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(cleared.count(), 0);
    EXPECT_EQ(state.count(), 0);
    EXPECT_EQ(table.count(), 0);
    EXPECT_EQ(table.firstCurrentRow(), 1);
}

TEST_F(ResultTableTest, ClearResults_KeepsRowsGreyAndContinuesNumbering_WhenKeepResultOnAndNewStill)
{
    table.setKeepResult(true);
    addResults(3);

    table.ClearResults(ResultTable::KeepAll);
    const int next = table.addResult(QStringLiteral("Angle"), 90.0, QStringLiteral("deg"));

    EXPECT_EQ(table.count(), 4);
    EXPECT_EQ(next, 4);
    EXPECT_EQ(table.firstCurrentRow(), 4);
    EXPECT_EQ(rowText(1), QStringLiteral("1|Distance1|1|mm"));
    EXPECT_EQ(rowText(3), QStringLiteral("3|Distance3|3|mm"));
    EXPECT_EQ(rowText(4), QStringLiteral("4|Angle|90|deg"));
    for (int row = 1; row <= 3; ++row)
        EXPECT_EQ(table.rowColor(row), QColor(128, 128, 128)) << "row " << row;
    EXPECT_EQ(table.rowColor(4), QColor(0, 0, 0));
}

TEST_F(ResultTableTest, ClearResults_EmptiesTable_WhenKeepResultOffAndNewStill)
{
    table.setKeepResult(false);
    addResults(3);

    table.ClearResults(ResultTable::KeepAll);

    EXPECT_EQ(table.count(), 0);
    EXPECT_EQ(table.firstCurrentRow(), 1);
    EXPECT_FALSE(table.hasResults());
    for (int row = 1; row <= 3; ++row)
        EXPECT_EQ(rowText(row), QStringLiteral("|||")) << "row " << row;
    EXPECT_EQ(table.addResult(QStringLiteral("Area"), 1.0, QStringLiteral("mm")), 1);
}

TEST_F(ResultTableTest, ClearResults_RemovesOnlyCurrentRows_WhenKeepResultOnAndModeCurrentPicture)
{
    table.setKeepResult(true);
    addResults(2);
    table.ClearResults(ResultTable::KeepAll);
    addResults(3, QStringLiteral("Circle"));

    table.ClearResults(ResultTable::CurrentPicture);

    EXPECT_EQ(table.count(), 2);
    EXPECT_EQ(table.firstCurrentRow(), 3);
    EXPECT_EQ(rowText(1), QStringLiteral("1|Distance1|1|mm"));
    EXPECT_EQ(rowText(2), QStringLiteral("2|Distance2|2|mm"));
    for (int row = 3; row <= 5; ++row)
        EXPECT_EQ(rowText(row), QStringLiteral("|||")) << "row " << row;
    EXPECT_EQ(table.rowColor(2), ResultTable::keptColor());
    EXPECT_FALSE(table.unsaved());
    EXPECT_EQ(table.addResult(QStringLiteral("Area"), 1.0, QStringLiteral("mm")), 3);
}

TEST_F(ResultTableTest, ClearResults_RemovesAllRows_WhenKeepResultOnAndModeAll)
{
    table.setKeepResult(true);
    addResults(2);
    table.ClearResults(ResultTable::KeepAll);
    addResults(2);

    table.ClearResults(ResultTable::All);

    EXPECT_EQ(table.count(), 0);
    EXPECT_EQ(table.firstCurrentRow(), 1);
    EXPECT_EQ(rowText(1), QStringLiteral("|||"));
    EXPECT_EQ(rowText(4), QStringLiteral("|||"));
}

TEST_F(ResultTableTest, ClearResults_RemovesAllRows_WhenKeepResultOffAndModeCurrentPicture)
{
    table.setKeepResult(true);
    addResults(2);
    table.ClearResults(ResultTable::KeepAll);
    addResults(1);
    table.setKeepResult(false);

    table.ClearResults(ResultTable::CurrentPicture);

    EXPECT_EQ(table.count(), 0);
    EXPECT_EQ(table.firstCurrentRow(), 1);
}

TEST_F(ResultTableTest, ClearResults_KeepsNothingUnsaved_InEveryMode)
{
    for (int mode : {0, 1, 2}) {
        ResultTable t;
        t.setKeepResult(true);
        t.addResult(QStringLiteral("Distance"), 1.0, QStringLiteral("mm"));
        ASSERT_TRUE(t.unsaved());

        t.ClearResults(mode);

        EXPECT_FALSE(t.unsaved()) << "mode " << mode;
    }
}

TEST_F(ResultTableTest, ClearResults_EmitsStoreClearSelectionRedrawAndState_WhenModeAll)
{
    addResults(2);
    QSignalSpy cleared(&table, &ResultTable::measurementsCleared);
    QSignalSpy selection(&table, &ResultTable::selectionRequested);
    QSignalSpy redraw(&table, &ResultTable::redrawRequested);
    QSignalSpy state(&table, &ResultTable::stateChanged);
    QSignalSpy removed(&table, &QAbstractItemModel::rowsRemoved);

    table.ClearResults(ResultTable::All);

    EXPECT_EQ(cleared.count(), 1);
    ASSERT_EQ(selection.count(), 1);
    EXPECT_EQ(selection.at(0).at(0).toInt(), 1);
    EXPECT_EQ(redraw.count(), 1);
    EXPECT_EQ(state.count(), 1);
    ASSERT_EQ(removed.count(), 1);
    EXPECT_EQ(removed.at(0).at(1).toInt(), 0);
    EXPECT_EQ(removed.at(0).at(2).toInt(), 1);
}

TEST_F(ResultTableTest, ClearResults_EmptiesStoreButMovesNoSelection_WhenKeepAll)
{
    table.setKeepResult(true);
    addResults(2);
    QSignalSpy cleared(&table, &ResultTable::measurementsCleared);
    QSignalSpy selection(&table, &ResultTable::selectionRequested);
    QSignalSpy recoloured(&table, &QAbstractItemModel::dataChanged);

    table.ClearResults(ResultTable::KeepAll);

    EXPECT_EQ(cleared.count(), 1);
    EXPECT_EQ(selection.count(), 0);
    ASSERT_EQ(recoloured.count(), 1);
    const auto roles = recoloured.at(0).at(2).value<QList<int>>();
    EXPECT_TRUE(roles.contains(Qt::ForegroundRole));
}

// --- clear button

TEST_F(ResultTableTest, ClearAll_AsksQuestionWithYesNoAndNoDefault_ThenClears)
{
    addResults(3);
    prompter.answers.push_back(Answer::Yes);

    const bool done = table.clearAll(prompter, messages);

    ASSERT_EQ(prompter.messages.size(), 1u);
    const Prompter::Message& asked = prompter.messages[0];
    EXPECT_EQ(asked.text, QStringLiteral("Clear all results?"));
    EXPECT_EQ(asked.title, QStringLiteral("Clear results"));
    EXPECT_EQ(asked.icon, Prompter::Icon::Question);
    EXPECT_EQ(asked.buttons, Prompter::Buttons::YesNo);
    EXPECT_EQ(asked.defaultAnswer, Answer::No);
    EXPECT_TRUE(done);
    EXPECT_EQ(table.count(), 0);
}

TEST_F(ResultTableTest, ClearAll_ClearsKeptRowsToo_WhenKeepResultOn)
{
    table.setKeepResult(true);
    addResults(2);
    table.ClearResults(ResultTable::KeepAll);
    addResults(1);
    prompter.answers.push_back(Answer::Yes);

    table.clearAll(prompter, messages);

    EXPECT_EQ(table.count(), 0);
    EXPECT_EQ(table.firstCurrentRow(), 1);
}

TEST_F(ResultTableTest, ClearAll_ChangesNothing_WhenDeclined)
{
    table.setKeepResult(true);
    addResults(2);
    table.ClearResults(ResultTable::KeepAll);
    addResults(2);
    const QByteArray before = table.csvText();
    QSignalSpy cleared(&table, &ResultTable::measurementsCleared);
    prompter.answers.push_back(Answer::No);

    const bool done = table.clearAll(prompter, messages);

    EXPECT_FALSE(done);
    EXPECT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(table.csvText(), before);
    EXPECT_EQ(table.count(), 4);
    EXPECT_EQ(table.firstCurrentRow(), 3);
    EXPECT_TRUE(table.unsaved());
    EXPECT_EQ(cleared.count(), 0);
}

TEST_F(ResultTableTest, ClearAll_Clears_WhenAnswerIsNeitherYesNorNo)
{
    addResults(1);
    prompter.answers.push_back(Answer::Cancel);

    EXPECT_TRUE(table.clearAll(prompter, messages));
    EXPECT_EQ(table.count(), 0);
}

// --- removing rows

TEST_F(ResultTableTest, RemoveResults_RenumbersLaterRowsAndBlanksTheEnd_WhenRowsTwoToThreeOfFiveRemoved)
{
    addResults(5);
    prompter.answers.push_back(Answer::Yes);

    const auto outcome = table.removeResults(2, 3, prompter, messages);

    EXPECT_EQ(outcome.status, ResultTable::RemoveOutcome::Removed);
    EXPECT_EQ(table.count(), 3);
    EXPECT_EQ(rowText(1), QStringLiteral("1|Distance1|1|mm"));
    EXPECT_EQ(rowText(2), QStringLiteral("2|Distance4|4|mm"));
    EXPECT_EQ(rowText(3), QStringLiteral("3|Distance5|6|mm"));
    EXPECT_EQ(rowText(4), QStringLiteral("|||"));
    EXPECT_EQ(rowText(5), QStringLiteral("|||"));
    EXPECT_DOUBLE_EQ(table.value(1), 1.1);
    EXPECT_DOUBLE_EQ(table.value(2), 4 * 1.1);
    EXPECT_DOUBLE_EQ(table.value(3), 5 * 1.1);
    EXPECT_DOUBLE_EQ(table.value(4), 0.0);
    EXPECT_DOUBLE_EQ(table.value(5), 0.0);
}

TEST_F(ResultTableTest, RemoveResults_AsksQuestionWithYesNoAndNoDefault)
{
    addResults(2);
    prompter.answers.push_back(Answer::Yes);

    table.removeResults(1, 1, prompter, messages);

    ASSERT_EQ(prompter.messages.size(), 1u);
    const Prompter::Message& asked = prompter.messages[0];
    EXPECT_EQ(asked.text, QStringLiteral("Remove the selected results?"));
    EXPECT_EQ(asked.title, QStringLiteral("Remove results"));
    EXPECT_EQ(asked.icon, Prompter::Icon::Question);
    EXPECT_EQ(asked.buttons, Prompter::Buttons::YesNo);
    EXPECT_EQ(asked.defaultAnswer, Answer::No);
}

TEST_F(ResultTableTest, RemoveResults_TakesTheSmallerRowFirst_WhenSelectedUpwards)
{
    addResults(5);
    prompter.answers.push_back(Answer::Yes);

    const auto outcome = table.removeResults(4, 2, prompter, messages);

    EXPECT_EQ(outcome.first, 2);
    EXPECT_EQ(outcome.last, 4);
    EXPECT_EQ(table.count(), 2);
    EXPECT_EQ(rowText(2), QStringLiteral("2|Distance5|6|mm"));
}

TEST_F(ResultTableTest, RemoveResults_DoesNothing_WhenSelectionStartsBelowLastResult)
{
    addResults(3);
    QSignalSpy state(&table, &ResultTable::stateChanged);
    QSignalSpy store(&table, &ResultTable::rowsRemovedFromStore);
    const QByteArray before = table.csvText();

    const auto outcome = table.removeResults(4, 6, prompter, messages);

    EXPECT_EQ(outcome.status, ResultTable::RemoveOutcome::NothingSelected);
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(table.count(), 3);
    EXPECT_EQ(table.csvText(), before);
    EXPECT_EQ(state.count(), 0);
    EXPECT_EQ(store.count(), 0);
}

TEST_F(ResultTableTest, RemoveResults_DoesNothing_WhenTableIsEmpty)
{
    const auto outcome = table.removeResults(1, 1, prompter, messages);

    EXPECT_EQ(outcome.status, ResultTable::RemoveOutcome::NothingSelected);
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(ResultTableTest, RemoveResults_ChangesNothing_WhenDeclined)
{
    table.setKeepResult(true);
    addResults(2);
    table.ClearResults(ResultTable::KeepAll);
    addResults(3);
    const QByteArray before = table.csvText();
    QSignalSpy store(&table, &ResultTable::rowsRemovedFromStore);
    QSignalSpy removed(&table, &QAbstractItemModel::rowsRemoved);
    prompter.answers.push_back(Answer::No);

    const auto outcome = table.removeResults(2, 4, prompter, messages);

    EXPECT_EQ(outcome.status, ResultTable::RemoveOutcome::Declined);
    EXPECT_EQ(table.csvText(), before);
    EXPECT_EQ(table.count(), 5);
    EXPECT_EQ(table.firstCurrentRow(), 3);
    EXPECT_DOUBLE_EQ(table.value(4), 2 * 1.1);
    EXPECT_TRUE(table.unsaved());
    EXPECT_EQ(store.count(), 0);
    EXPECT_EQ(removed.count(), 0);
}

TEST_F(ResultTableTest, RemoveResults_ClipsRangeToLastResult)
{
    addResults(5);
    prompter.answers.push_back(Answer::Yes);

    const auto outcome = table.removeResults(4, 9, prompter, messages);

    EXPECT_EQ(outcome.first, 4);
    EXPECT_EQ(outcome.last, 5);
    EXPECT_EQ(table.count(), 3);
    EXPECT_EQ(rowText(3), QStringLiteral("3|Distance3|3|mm"));
}

TEST_F(ResultTableTest, RemoveResults_SelectsFirstRemovedRow_WhenItStillHoldsAResult)
{
    addResults(5);
    prompter.answers.push_back(Answer::Yes);
    QSignalSpy selection(&table, &ResultTable::selectionRequested);

    const auto outcome = table.removeResults(2, 3, prompter, messages);

    EXPECT_EQ(outcome.selectRow, 2);
    ASSERT_EQ(selection.count(), 1);
    EXPECT_EQ(selection.at(0).at(0).toInt(), 2);
}

TEST_F(ResultTableTest, RemoveResults_SelectsNothing_WhenLastRowsRemoved)
{
    addResults(5);
    prompter.answers.push_back(Answer::Yes);
    QSignalSpy selection(&table, &ResultTable::selectionRequested);

    const auto outcome = table.removeResults(4, 5, prompter, messages);

    EXPECT_EQ(outcome.selectRow, 0);
    EXPECT_EQ(selection.count(), 0);
}

TEST_F(ResultTableTest, RemoveResults_TellsStoreAndModelAndAsksForRedraw)
{
    addResults(5);
    prompter.answers.push_back(Answer::Yes);
    QSignalSpy store(&table, &ResultTable::rowsRemovedFromStore);
    QSignalSpy removed(&table, &QAbstractItemModel::rowsRemoved);
    QSignalSpy redraw(&table, &ResultTable::redrawRequested);
    QSignalSpy state(&table, &ResultTable::stateChanged);
    QSignalSpy cleared(&table, &ResultTable::measurementsCleared);

    table.removeResults(2, 3, prompter, messages);

    ASSERT_EQ(store.count(), 1);
    EXPECT_EQ(store.at(0).at(0).toInt(), 2);
    EXPECT_EQ(store.at(0).at(1).toInt(), 3);
    ASSERT_EQ(removed.count(), 1);
    EXPECT_EQ(removed.at(0).at(1).toInt(), 1);  // model rows are result rows - 1
    EXPECT_EQ(removed.at(0).at(2).toInt(), 2);
    EXPECT_EQ(redraw.count(), 1);
    EXPECT_EQ(state.count(), 1);
    EXPECT_EQ(cleared.count(), 0);
    EXPECT_EQ(table.rowCount(), 3);
}

TEST_F(ResultTableTest, RemoveResults_NumbersTheNextResultAfterTheLast)
{
    addResults(5);
    prompter.answers.push_back(Answer::Yes);
    table.removeResults(1, 2, prompter, messages);

    const int row = table.addResult(QStringLiteral("Area"), 9.0, QStringLiteral("mm"));

    EXPECT_EQ(row, 4);
    EXPECT_EQ(rowText(4), QStringLiteral("4|Area|9|mm"));
}

// Kept rows 1..keptRows, current rows after them up to `total`; remove a
// range and check where the first current row goes and what stays unsaved.
struct RemoveCase {
    const char* name;
    int keptRows, total, first, last;
    int expectedFirstCurrent, expectedCount;
    bool expectedUnsaved;
    friend void PrintTo(const RemoveCase& c, std::ostream* os) { *os << c.name; }
};

class RemoveFirstCurrentRow : public ::testing::TestWithParam<RemoveCase> {};

TEST_P(RemoveFirstCurrentRow, MovesFirstCurrentRowAndSetsUnsavedFlag)
{
    const RemoveCase& c = GetParam();
    MessageTable messages = shippedMessages();
    ScriptedPrompter prompter;
    prompter.answers.push_back(Answer::Yes);
    ResultTable table;
    table.setKeepResult(true);
    for (int i = 1; i <= c.keptRows; ++i)
        table.addResult(QStringLiteral("Kept"), i, QStringLiteral("mm"));
    table.ClearResults(ResultTable::KeepAll);
    for (int i = c.keptRows + 1; i <= c.total; ++i)
        table.addResult(QStringLiteral("Current"), i, QStringLiteral("mm"));
    ASSERT_EQ(table.firstCurrentRow(), c.keptRows + 1);

    table.removeResults(c.first, c.last, prompter, messages);

    EXPECT_EQ(table.firstCurrentRow(), c.expectedFirstCurrent);
    EXPECT_EQ(table.count(), c.expectedCount);
    EXPECT_EQ(table.unsaved(), c.expectedUnsaved);
    for (int row = 1; row <= table.count(); ++row) {
        const bool kept = row < c.expectedFirstCurrent;
        EXPECT_EQ(table.text(row, 1), kept ? QStringLiteral("Kept") : QStringLiteral("Current")) << row;
        EXPECT_EQ(table.rowColor(row), kept ? ResultTable::keptColor() : ResultTable::currentColor()) << row;
    }
}

INSTANTIATE_TEST_SUITE_P(ResultTable, RemoveFirstCurrentRow,
                         ::testing::Values(
                             // kept 1-3, current 4-6
                             RemoveCase{"RangeContainsIt", 3, 6, 3, 4, 3, 4, true},
                             RemoveCase{"RangeStartsAtIt", 3, 6, 4, 5, 4, 4, true},
                             RemoveCase{"RangePrecedesIt", 3, 6, 1, 2, 2, 4, true},
                             RemoveCase{"RangeFollowsIt", 3, 6, 5, 6, 4, 4, true},
                             RemoveCase{"RangeTakesAllCurrentRows", 3, 6, 4, 6, 4, 3, false},
                             RemoveCase{"RangeTakesEverything", 3, 6, 1, 6, 1, 0, false},
                             // kept 1-4, no current rows: the first current row sits after the range
                             RemoveCase{"NoCurrentRowsRangeBefore", 4, 4, 2, 3, 3, 2, false},
                             RemoveCase{"NoCurrentRowsRangeAtTheEnd", 4, 4, 3, 4, 3, 2, false}),
                         [](const ::testing::TestParamInfo<RemoveCase>& info) {
                             return std::string(info.param.name);
                         });

// --- reformatting

struct ReformatCase {
    int decimals;
    const char* expected;
    friend void PrintTo(const ReformatCase& c, std::ostream* os) { *os << c.decimals << " decimals"; }
};

class ResultTableReformat : public ::testing::TestWithParam<ReformatCase> {};

TEST_P(ResultTableReformat, RewritesValueColumnFromValueStore)
{
    ResultTable table;
    table.reformat(5);
    table.addResult(QStringLiteral("Distance"), 3.14159265, QStringLiteral("mm"));
    table.addResult(QStringLiteral("Distance"), 2.0, QStringLiteral("mm"));

    table.reformat(GetParam().decimals);

    EXPECT_EQ(table.text(1, 2), QString::fromLatin1(GetParam().expected));
    EXPECT_EQ(table.decimals(), GetParam().decimals);
    EXPECT_DOUBLE_EQ(table.value(1), 3.14159265);
}

INSTANTIATE_TEST_SUITE_P(ResultTable, ResultTableReformat,
                         ::testing::Values(ReformatCase{0, "3"}, ReformatCase{1, "3.1"},
                                           ReformatCase{3, "3.142"}, ReformatCase{8, "3.14159265"}));

TEST_F(ResultTableTest, Reformat_LeavesOtherColumnsAndBlankRowsAlone)
{
    table.setKeepResult(true);
    addResults(2);
    table.ClearResults(ResultTable::KeepAll);
    addResults(1);
    QSignalSpy changed(&table, &QAbstractItemModel::dataChanged);

    table.reformat(2);

    EXPECT_EQ(rowText(1), QStringLiteral("1|Distance1|1.10|mm"));
    EXPECT_EQ(rowText(3), QStringLiteral("3|Distance1|1.10|mm"));
    EXPECT_EQ(rowText(4), QStringLiteral("|||"));
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).toModelIndex().column(), 2);
    EXPECT_EQ(changed.at(0).at(1).toModelIndex().row(), 2);
}

TEST_F(ResultTableTest, AddResult_UsesDecimalsOfLastReformat)
{
    table.reformat(4);

    table.addResult(QStringLiteral("Area"), 0.5, QStringLiteral("mm"));

    EXPECT_EQ(table.text(1, 2), QStringLiteral("0.5000"));
}

// --- saving

TEST_F(ResultTableTest, SaveCsv_WritesThreeCrLfLinesOfFourFields_ForThreeResults)
{
    TempDir dir;
    table.reformat(3);
    table.addResult(QStringLiteral("Distance"), 12.3456, QStringLiteral("mm"));
    table.addResult(QStringLiteral("Circle (diameter)"), 0.5, QStringLiteral("mm"));
    table.addResult(QStringLiteral("Angle"), 45.0, QStringLiteral("deg"));

    const bool ok = table.saveCsv(dir.file(QStringLiteral("r.csv")));

    EXPECT_TRUE(ok);
    EXPECT_EQ(dir.read(QStringLiteral("r.csv")), QByteArray("1,Distance,12.346,mm\r\n"
                                                            "2,Circle (diameter),0.500,mm\r\n"
                                                            "3,Angle,45.000,deg\r\n"));
    EXPECT_FALSE(table.unsaved());
    EXPECT_EQ(table.lastError(), 0);
}

TEST_F(ResultTableTest, SaveCsv_AddsFourthLineNumberedFour_WhenTwoPointAverageOn)
{
    TempDir dir;
    table.reformat(3);
    table.addResult(QStringLiteral("Distance"), 10.0, QStringLiteral("mm"));
    table.addResult(QStringLiteral("Distance"), 11.0, QStringLiteral("mm"));
    table.addResult(QStringLiteral("Area"), 2.0, QStringLiteral("mm"));

    const bool ok = table.saveCsv(dir.file(QStringLiteral("r.csv")),
                                  ResultTable::averageLine(messages, 10.5, QStringLiteral("MIC")));

    EXPECT_TRUE(ok);
    EXPECT_EQ(dir.read(QStringLiteral("r.csv")), QByteArray("1,Distance,10.000,mm\r\n"
                                                            "2,Distance,11.000,mm\r\n"
                                                            "3,Area,2.000,mm\r\n"
                                                            "4,Two-point average,10.500,MIC\r\n"));
}

TEST_F(ResultTableTest, SaveCsv_WritesKeptRowsLikeCurrentOnes)
{
    table.setKeepResult(true);
    addResults(1);
    table.ClearResults(ResultTable::KeepAll);
    addResults(1, QStringLiteral("Area"));

    EXPECT_EQ(table.csvText(), QByteArray("1,Distance1,1,mm\r\n2,Area1,1,mm\r\n"));
}

TEST_F(ResultTableTest, SaveCsv_WritesTextsAsTheyStandInUtf8)
{
    table.addResult(QStringLiteral("Länge, gesamt"), 2.0, QStringLiteral("µm"));

    EXPECT_EQ(table.csvText(), QByteArray("1,L\xC3\xA4nge, gesamt,2,\xC2\xB5m\r\n"));
}

TEST_F(ResultTableTest, SaveCsv_ReturnsFalseAndKeepsUnsavedFlag_WhenFolderIsMissing)
{
    TempDir dir;
    addResults(3);
    const QString path = dir.file(QStringLiteral("missing/r.csv"));

    const bool ok = table.saveCsv(path);

    EXPECT_FALSE(ok);
    EXPECT_EQ(table.lastError(), err::PathNotFound);
    EXPECT_TRUE(table.unsaved());
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST_F(ResultTableTest, CmdResultSave_AsksForFileWithCsvFilterAndTellsTheUser_WhenSaved)
{
    prompter.answers = {Prompter::Answer::Ok};
    TempDir dir;
    addResults(2);
    const QString path = dir.file(QStringLiteral("r.csv"));
    prompter.fileNames.push_back(path);

    const auto outcome = table.cmdResultSave(prompter, messages);

    EXPECT_EQ(outcome, ResultTable::SaveOutcome::Saved);
    ASSERT_EQ(prompter.fileRequests.size(), 1u);
    EXPECT_EQ(prompter.fileRequests[0].filter, QStringLiteral("CSV (*.csv)|*.csv|Text (*.txt)|*.txt"));
    EXPECT_TRUE(prompter.fileRequests[0].save);
    EXPECT_TRUE(prompter.fileRequests[0].fileName.isEmpty());
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, QStringLiteral("The results have been saved."));
    EXPECT_EQ(prompter.messages[0].title, QStringLiteral("Save results"));
    EXPECT_EQ(dir.read(QStringLiteral("r.csv")), table.csvText());
    EXPECT_FALSE(table.unsaved());
}

TEST_F(ResultTableTest, CmdResultSave_WritesAverageLine_WhenGiven)
{
    prompter.answers = {Prompter::Answer::Ok};
    TempDir dir;
    table.addResult(QStringLiteral("Distance"), 4.0, QStringLiteral("mm"));
    prompter.fileNames.push_back(dir.file(QStringLiteral("r.csv")));

    table.cmdResultSave(prompter, messages, ResultTable::averageLine(messages, 4.0, QStringLiteral("mm")));

    EXPECT_EQ(dir.read(QStringLiteral("r.csv")),
              QByteArray("1,Distance,4,mm\r\n2,Two-point average,4,mm\r\n"));
}

TEST_F(ResultTableTest, CmdResultSave_WritesNothing_WhenUserCancelsFileDialog)
{
    TempDir dir;
    addResults(2);
    QSignalSpy state(&table, &ResultTable::stateChanged);

    prompter.fileNames = {QString()};  // cancelled
    const auto outcome = table.cmdResultSave(prompter, messages);

    EXPECT_EQ(outcome, ResultTable::SaveOutcome::Cancelled);
    EXPECT_EQ(prompter.fileRequests.size(), 1u);
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_TRUE(table.unsaved());
    EXPECT_EQ(state.count(), 0);
}

TEST_F(ResultTableTest, CmdResultSave_ShowsNoDialog_WhenTableIsEmpty)
{
    const auto outcome = table.cmdResultSave(prompter, messages);

    EXPECT_EQ(outcome, ResultTable::SaveOutcome::NothingToSave);
    EXPECT_TRUE(prompter.fileRequests.empty());
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(ResultTableTest, CmdResultSave_TellsUserAndLogsAndKeepsOldFileWhole_WhenWriteFails)
{
    prompter.answers = {Prompter::Answer::Ok};
    TempDir dir;
    const QByteArray old("old results\r\n");
    const QString path = dir.write(QStringLiteral("r.csv"), old);
    const ErrorLog log(dir.file(QStringLiteral("Error.Log")));
    addResults(40);
    prompter.fileNames.push_back(path);
    // A file-size limit stops the write even for root, who ignores permissions.
    rlimit saved{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    rlimit small = saved;
    small.rlim_cur = 200;  // room for the log line, not for the table
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);

    const auto outcome = table.cmdResultSave(prompter, messages, std::nullopt, &log);

    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);
    EXPECT_EQ(outcome, ResultTable::SaveOutcome::Failed);
    EXPECT_EQ(dir.read(QStringLiteral("r.csv")), old);
    EXPECT_TRUE(table.unsaved());
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text,
              QStringLiteral("The results could not be saved to %1. Nothing was changed.").arg(path));
    EXPECT_EQ(prompter.messages[0].title, QStringLiteral("Save results"));
    EXPECT_TRUE(dir.read(QStringLiteral("Error.Log")).contains("frmMain:cmdResultSave Error.(61)"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden),
              (QStringList{QStringLiteral("Error.Log"), QStringLiteral("r.csv")}));
}

TEST_F(ResultTableTest, CmdResultSave_FailsAndKeepsUnsavedFlag_WhenFolderIsMissing)
{
    prompter.answers = {Prompter::Answer::Ok};
    TempDir dir;
    addResults(3);
    prompter.fileNames.push_back(dir.file(QStringLiteral("missing/r.csv")));

    const auto outcome = table.cmdResultSave(prompter, messages);

    EXPECT_EQ(outcome, ResultTable::SaveOutcome::Failed);
    EXPECT_TRUE(table.unsaved());
    EXPECT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
}

// --- the model

TEST_F(ResultTableTest, Model_ShowsOneRowPerResultAndFourColumns)
{
    addResults(3);

    EXPECT_EQ(table.rowCount(), 3);
    EXPECT_EQ(table.columnCount(), 4);
    EXPECT_EQ(table.rowCount(table.index(0, 0)), 0);
    EXPECT_EQ(table.data(table.index(1, 0)).toString(), QStringLiteral("2"));
    EXPECT_EQ(table.data(table.index(1, 1)).toString(), QStringLiteral("Distance2"));
    EXPECT_EQ(table.data(table.index(1, 2)).toString(), QStringLiteral("2"));
    EXPECT_EQ(table.data(table.index(1, 3)).toString(), QStringLiteral("mm"));
    EXPECT_FALSE(table.data(table.index(3, 0)).isValid());
}

TEST_F(ResultTableTest, Model_HeaderShowsCallerCaptions)
{
    QSignalSpy header(&table, &QAbstractItemModel::headerDataChanged);

    table.setHeaderCaptions(
        {QStringLiteral("No."), QStringLiteral("Kind"), QStringLiteral("Value"), QStringLiteral("Unit")});

    EXPECT_EQ(header.count(), 1);
    EXPECT_EQ(table.headerData(0, Qt::Horizontal).toString(), QStringLiteral("No."));
    EXPECT_EQ(table.headerData(3, Qt::Horizontal).toString(), QStringLiteral("Unit"));
    EXPECT_EQ(table.text(0, 2), QStringLiteral("Value"));
}

TEST_F(ResultTableTest, Model_GivesGreyForKeptRowsAndBlackForCurrentRows)
{
    table.setKeepResult(true);
    addResults(1);
    table.ClearResults(ResultTable::KeepAll);
    addResults(1);

    const QVariant kept = table.data(table.index(0, 3), Qt::ForegroundRole);
    const QVariant current = table.data(table.index(1, 0), Qt::ForegroundRole);

    EXPECT_EQ(qvariant_cast<QBrush>(kept).color(), QColor(128, 128, 128));
    EXPECT_EQ(qvariant_cast<QBrush>(current).color(), QColor(0, 0, 0));
}

TEST_F(ResultTableTest, Model_RowsAreSelectableButNotEditable)
{
    addResults(1);

    const Qt::ItemFlags f = table.flags(table.index(0, 1));

    EXPECT_TRUE(f.testFlag(Qt::ItemIsSelectable));
    EXPECT_TRUE(f.testFlag(Qt::ItemIsEnabled));
    EXPECT_FALSE(f.testFlag(Qt::ItemIsEditable));
}

TEST_F(ResultTableTest, AddResult_InsertsModelRowAndSignalsState)
{
    addResults(1);
    QSignalSpy inserted(&table, &QAbstractItemModel::rowsInserted);
    QSignalSpy state(&table, &ResultTable::stateChanged);

    table.addResult(QStringLiteral("Area"), 1.0, QStringLiteral("mm"));

    ASSERT_EQ(inserted.count(), 1);
    EXPECT_EQ(inserted.at(0).at(1).toInt(), 1);
    EXPECT_EQ(inserted.at(0).at(2).toInt(), 1);
    EXPECT_EQ(state.count(), 1);
}

// --- queries

TEST_F(ResultTableTest, ValueAndText_ThrowOutsideTheStore)
{
    EXPECT_NO_THROW(table.value(999));
    EXPECT_NO_THROW(table.text(999, 3));
    EXPECT_THROW(table.value(1000), RunError);
    EXPECT_THROW(table.value(-1), RunError);
    EXPECT_THROW(table.text(1, 4), RunError);
    EXPECT_THROW(table.text(1000, 0), RunError);
}

TEST_F(ResultTableTest, SetKeepResult_IsReadBack)
{
    table.setKeepResult(true);
    EXPECT_TRUE(table.keepResult());
    table.setKeepResult(false);
    EXPECT_FALSE(table.keepResult());
}

}  // namespace

TEST(ResultTableButtons, ButtonStates_NeedAtLeastOneRow_KeptRowsIncluded)
{
    ResultTable table;
    table.setKeepResult(true);
    EXPECT_FALSE(table.buttonStates().clear);
    table.addResult(QStringLiteral("Distance"), 1, QStringLiteral("MIC"));
    EXPECT_TRUE(table.buttonStates().clear);
    EXPECT_TRUE(table.buttonStates().remove);
    EXPECT_TRUE(table.buttonStates().save);
    table.ClearResults(ResultTable::KeepAll);  // the row is kept, greyed
    EXPECT_TRUE(table.buttonStates().save);
    table.ClearResults(ResultTable::All);
    EXPECT_FALSE(table.buttonStates().clear);
    EXPECT_FALSE(table.buttonStates().remove);
    EXPECT_FALSE(table.buttonStates().save);
}
