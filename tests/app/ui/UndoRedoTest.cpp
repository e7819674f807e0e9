#include "MarkedLengthDialogs.h"
#include "MeasuringFixture.h"

#include <gtest/gtest.h>
#include <QPushButton>
#include <QToolButton>

using namespace tavix;

namespace {

// Undo and redo of the measurements on the window, by button and by key.
class UndoRedo : public test::Measuring {
protected:
    void SetUp() override
    {
        Measuring::SetUp();
        start();
        w->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(w.get()));
        tool(0);
    }

    QToolButton* undoButton() { return find<QToolButton>("cmdUndo"); }
    QToolButton* redoButton() { return find<QToolButton>("cmdRedo"); }
    void undo() { QTest::mouseClick(undoButton(), Qt::LeftButton); }
    void redo() { QTest::mouseClick(redoButton(), Qt::LeftButton); }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers) { QTest::keyClick(w.get(), key, modifiers); }

    // Column 0 and 2 of every result row, "number:value".
    QStringList rows()
    {
        QStringList list;
        for (int row = 1; row <= results().count(); ++row)
            list << cell(row, 0) + QLatin1Char(':') + cell(row, 2);
        return list;
    }

    void answer(Prompter::Answer a) { prompter.answers.push_back(a); }
};

}  // namespace

TEST_F(UndoRedo, TheButtons_UndoAndRedoMeasurementsClickedOnThePicture)
{
    EXPECT_FALSE(undoButton()->isEnabled());
    EXPECT_FALSE(redoButton()->isEnabled());
    distance(20);
    distance(40);
    ASSERT_EQ(rows(), (QStringList{"1:10.00", "2:20.00"}));
    EXPECT_TRUE(undoButton()->isEnabled());

    undo();
    EXPECT_EQ(rows(), QStringList{"1:10.00"});
    EXPECT_EQ(w->measuring().store().size(), 1);
    EXPECT_TRUE(redoButton()->isEnabled());

    undo();
    EXPECT_EQ(results().count(), 0);
    EXPECT_FALSE(undoButton()->isEnabled());
    EXPECT_FALSE(find<QPushButton>("cmdResultClear")->isEnabled()) << "the result buttons follow";

    redo();
    redo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00"}));
    EXPECT_EQ(w->measuring().store().size(), 2);
    EXPECT_FALSE(redoButton()->isEnabled());
    EXPECT_TRUE(prompter.messages.empty()) << "undo and redo ask nothing";
}

TEST_F(UndoRedo, CtrlZ_Undoes_CtrlShiftZAndCtrlY_Redo)
{
    distance(20);
    distance(40);
    distance(60);
    key(Qt::Key_Z, Qt::ControlModifier);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(rows(), QStringList{"1:10.00"});
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00"}));
    key(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00", "3:30.00"}));
}

TEST_F(UndoRedo, ARemovedRange_ComesBack_AfterItsQuestion)
{
    for (int i = 1; i <= 5; ++i)
        distance(20 * i);
    clickRow(2);
    clickRow(4, Qt::ShiftModifier);
    answer(Prompter::Answer::Yes);
    QTest::mouseClick(find<QPushButton>("cmdResultRemove"), Qt::LeftButton);
    ASSERT_EQ(prompter.messages.size(), 1u) << "the question still comes first";
    ASSERT_EQ(rows(), (QStringList{"1:10.00", "2:50.00"}));

    undo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00", "3:30.00", "4:40.00", "5:50.00"}));
    EXPECT_EQ(w->measuring().store().size(), 5);
    // With TAVIX_SCREENSHOT=name the window is saved as name-undone.png.
    if (const QString file = qEnvironmentVariable("TAVIX_SCREENSHOT"); !file.isEmpty())
        w->grab().save(file + QStringLiteral("-undone.png"));
    EXPECT_TRUE(results().unsaved());

    // The restored rows are selectable again and highlight their measurements.
    clickRow(3);
    EXPECT_EQ(w->measuring().store().indexAtRow(3), 2);

    redo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:50.00"}));
}

TEST_F(UndoRedo, AClearedTable_ComesBack_AndAClearAnsweredNoIsNoStep)
{
    distance(20);
    distance(40);
    answer(Prompter::Answer::No);
    QTest::mouseClick(find<QPushButton>("cmdResultClear"), Qt::LeftButton);
    answer(Prompter::Answer::Yes);
    QTest::mouseClick(find<QPushButton>("cmdResultClear"), Qt::LeftButton);
    ASSERT_EQ(results().count(), 0);
    ASSERT_EQ(prompter.messages.size(), 2u);

    undo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00"}));
    undo();
    EXPECT_EQ(rows(), QStringList{"1:10.00"}) << "the declined clear left no step";
}

TEST_F(UndoRedo, ANewStill_StartsANewHistory)
{
    distance(20);
    undo();
    ASSERT_TRUE(redoButton()->isEnabled());
    QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);  // live
    EXPECT_FALSE(undoButton()->isEnabled());
    EXPECT_FALSE(redoButton()->isEnabled());
    freeze();
    EXPECT_FALSE(undoButton()->isEnabled());
    EXPECT_FALSE(redoButton()->isEnabled());
    key(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(results().count(), 0);
}

TEST_F(UndoRedo, TheRowsACalibrationDropped_ComeBack)
{
    distance(20);
    distance(40);
    int dialogs = 0;
    w->measure().setDialogRunner(test::markedLengthDialogs(QStringLiteral("Marked"), dialogs));
    answer(Prompter::Answer::Yes);  // calibrate with unsaved results?
    QTest::mouseClick(find<QPushButton>("cmdProofConfig"), Qt::LeftButton);
    ASSERT_EQ(w->measuring().toolNumber(), 21);
    prompter.inputs.push_back(QStringLiteral("50"));
    click(100, 300);
    click(200, 300);
    ASSERT_EQ(dialogs, 2);
    ASSERT_EQ(results().count(), 0) << "the new calibration dropped the picture's results";

    undo();
    EXPECT_EQ(rows(), (QStringList{"1:10.00", "2:20.00"}));
    EXPECT_EQ(w->measuring().store().size(), 2);
    EXPECT_TRUE(results().unsaved());
    redo();
    EXPECT_EQ(results().count(), 0);
}

TEST_F(UndoRedo, TheButtons_HaveTipsWithTheirShortcuts)
{
    EXPECT_EQ(undoButton()->toolTip(), message(27010) + QStringLiteral(" (Ctrl+Z)"));
    EXPECT_EQ(redoButton()->toolTip(), message(27011) + QStringLiteral(" (Ctrl+Shift+Z)"));
    EXPECT_EQ(undoButton()->text(), message(27012));
    EXPECT_EQ(redoButton()->text(), message(27013));
}
