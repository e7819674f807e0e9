#include "MeasuringFixture.h"

#include <gtest/gtest.h>
#include <QItemSelectionModel>
#include <QPushButton>
#include <QTableView>

using namespace tavix;

namespace {

// Five two-point results of 10, 20, 30, 40 and 50 MIC (20 to 100 pixels).
class ResultRemove : public test::Measuring {
protected:
    void SetUp() override
    {
        Measuring::SetUp();
        start();
        tool(0);
        for (int i = 1; i <= 5; ++i)
            distance(20 * i);
        ASSERT_EQ(results().count(), 5);
    }

    void remove(Prompter::Answer answer = Prompter::Answer::Yes)
    {
        prompter.answers.push_back(answer);
        QTest::mouseClick(find<QPushButton>("cmdResultRemove"), Qt::LeftButton);
    }

    // Column 0 and 2 of every result row, "number:value".
    QStringList rows()
    {
        QStringList list;
        for (int row = 1; row <= results().count(); ++row)
            list << cell(row, 0) + QLatin1Char(':') + cell(row, 2);
        return list;
    }

    QList<int> selectedRows()
    {
        QList<int> list;
        for (const QModelIndex& index : find<QTableView>("grdResult")->selectionModel()->selectedRows())
            list << index.row() + 1;
        std::sort(list.begin(), list.end());
        return list;
    }
};

}  // namespace

TEST_F(ResultRemove, OneClickedRow_IsRemoved_AndTheRowsBelowMoveUp)
{
    clickRow(2);
    remove();
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, message(20080));
    EXPECT_EQ(prompter.messages[0].title, message(11080));
    EXPECT_EQ(prompter.messages[0].defaultAnswer, Prompter::Answer::No);
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:30.00", "3:40.00", "4:50.00"}));
    EXPECT_EQ(cell(5, 2), QString());
    EXPECT_EQ(selectedRows(), QList<int>{2}) << "the selection goes to the first removed row";
    EXPECT_EQ(w->measuring().store().size(), 4);
}

TEST_F(ResultRemove, ARangeSelectedUpwards_IsRemovedFromItsCurrentRowToItsEnd)
{
    clickRow(3);
    clickRow(2, Qt::ShiftModifier);
    remove();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:40.00", "3:50.00"}));
    EXPECT_EQ(cell(4, 0), QString());
    EXPECT_EQ(cell(5, 0), QString());
}

TEST_F(ResultRemove, ARangeToTheLastRow_LeavesNoSelection)
{
    clickRow(4);
    clickRow(5, Qt::ShiftModifier);
    remove();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00", "3:30.00"}));
    EXPECT_TRUE(selectedRows().isEmpty());
}

TEST_F(ResultRemove, ACtrlClick_ExtendsTheSelectionAsOneBlock_ThatIsRemovedWhole)
{
    clickRow(1);
    clickRow(3, Qt::ControlModifier);
    EXPECT_EQ(selectedRows(), (QList<int>{1, 2, 3})) << "what Remove takes is what the grid shows";
    remove();
    EXPECT_EQ(rows(), (QStringList{"1:40.00", "2:50.00"}));
}

TEST_F(ResultRemove, NoSelection_AsksNothingAndRemovesNothing)
{
    // No answer scripted: a question would fail the test.
    QTest::mouseClick(find<QPushButton>("cmdResultRemove"), Qt::LeftButton);
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(results().count(), 5);
}

TEST_F(ResultRemove, AnsweringNo_RemovesNothing)
{
    clickRow(2);
    remove(Prompter::Answer::No);
    EXPECT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(results().count(), 5);
    EXPECT_EQ(w->measuring().store().size(), 5);
}
