#include "MeasuringFixture.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QPushButton>

using namespace tavix;

namespace {

class ResultButtons : public test::Measuring {
protected:
    // Enabled states of Clear, Remove and Save, in that order.
    std::vector<bool> states()
    {
        return {find<QPushButton>("cmdResultClear")->isEnabled(),
                find<QPushButton>("cmdResultRemove")->isEnabled(),
                find<QPushButton>("cmdResultSave")->isEnabled()};
    }

    const std::vector<bool> allOn{true, true, true};
    const std::vector<bool> allOff{false, false, false};
};

}  // namespace

TEST_F(ResultButtons, EmptyTable_LeavesThemOff_AndAResultTurnsThemOn)
{
    start();
    EXPECT_EQ(states(), allOff);
    tool(0);
    distance(100);
    EXPECT_EQ(states(), allOn);
}

TEST_F(ResultButtons, ClearingTheTable_TurnsThemOff)
{
    start();
    tool(0);
    distance(100);
    prompter.answers.push_back(Prompter::Answer::Yes);
    QTest::mouseClick(find<QPushButton>("cmdResultClear"), Qt::LeftButton);
    ASSERT_EQ(results().count(), 0);
    EXPECT_EQ(states(), allOff);
}

TEST_F(ResultButtons, RemovingTheLastRow_TurnsThemOff_RemovingOneOfTwoKeepsThemOn)
{
    start();
    tool(0);
    distance(100);
    distance(200);
    clickRow(2);
    prompter.answers.push_back(Prompter::Answer::Yes);
    QTest::mouseClick(find<QPushButton>("cmdResultRemove"), Qt::LeftButton);
    ASSERT_EQ(results().count(), 1);
    EXPECT_EQ(states(), allOn);
    clickRow(1);
    prompter.answers.push_back(Prompter::Answer::Yes);
    QTest::mouseClick(find<QPushButton>("cmdResultRemove"), Qt::LeftButton);
    ASSERT_EQ(results().count(), 0);
    EXPECT_EQ(states(), allOff);
}

TEST_F(ResultButtons, KeptRowsOfAnEarlierStill_KeepThemOn_TheLivePictureTurnsThemOff)
{
    start();
    QTest::mouseClick(find<QCheckBox>("chkKeepResult"), Qt::LeftButton, {}, QPoint(8, 10));
    tool(0);
    distance(100);
    QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);  // live
    EXPECT_EQ(states(), allOff);
    freeze();
    ASSERT_EQ(results().count(), 1);
    EXPECT_EQ(states(), allOn);
}

TEST_F(ResultButtons, WithoutKeepResult_ANewStillTurnsThemOff)
{
    start();
    tool(0);
    distance(100);
    QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);
    freeze();
    ASSERT_EQ(results().count(), 0);
    EXPECT_EQ(states(), allOff);
}

TEST_F(ResultButtons, ClosingTheMeasureSettings_SetsThemByTheTableAgain)
{
    start();
    // Switching the area on as a whole turns on every control in it.
    w->setCommandAreaEnabled(find<QWidget>("picMeasureCommandArea"), true);
    ASSERT_EQ(states(), allOn);
    onDialog([](QDialog& d) {
        QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdCancel")), Qt::LeftButton);
    });
    QTest::mouseClick(find<QPushButton>("cmdMeasureConfig"), Qt::LeftButton);
    EXPECT_EQ(states(), allOff);
}
