#include "calib/CrossLines.h"

#include "common/ClassicColor.h"
#include "common/Settings.h"

#include <gtest/gtest.h>
#include <QSignalSpy>

using namespace tavix;

namespace {

class CrossLinesTest : public ::testing::Test {
protected:
    CrossLinesTest()
    {
        settings.CROSSLINENUM = 1;
        settings.CROSSLINECOLOR = 0x00FF00;  // green
    }

    Settings settings;
    CrossLines cross{settings};
    QSignalSpy lines{&cross, &CrossLines::linesChanged};
    QSignalSpy colors{&cross, &CrossLines::colorChanged};
    QSignalSpy states{&cross, &CrossLines::stateChanged};
    QSignalSpy tools{&cross, &CrossLines::toolChanged};
    QSignalSpy guidance{&cross, &CrossLines::guidanceRequested};
    QSignalSpy guidanceEnds{&cross, &CrossLines::guidanceEnded};
    QSignalSpy icons{&cross, &CrossLines::iconChanged};
};

QList<int> toolNumbers(const QSignalSpy& spy)
{
    QList<int> numbers;
    for (const QList<QVariant>& args : spy)
        numbers << args.at(0).toInt();
    return numbers;
}

}  // namespace

// --- switching on ---

TEST_F(CrossLinesTest, SwitchOn_ShowsFirstCrossOnly)
{
    settings.CROSSLINENUM = 2;

    cross.chkCross_Click(true);

    EXPECT_TRUE(cross.isOn());
    EXPECT_TRUE(cross.crossVisible(0));
    EXPECT_FALSE(cross.crossVisible(1));
    EXPECT_GE(lines.count(), 1);
    ASSERT_EQ(states.count(), 1);
    EXPECT_TRUE(states.at(0).at(0).toBool());
}

TEST_F(CrossLinesTest, SwitchOn_SelectsTool10)
{
    cross.chkCross_Click(true);

    EXPECT_EQ(cross.tool(), 10);
    EXPECT_EQ(toolNumbers(tools), QList<int>{10});
}

TEST_F(CrossLinesTest, SwitchOn_ShowsGuidance10_WhenOneCross)
{
    settings.CROSSLINENUM = 1;

    cross.chkCross_Click(true);

    EXPECT_EQ(toolNumbers(guidance), QList<int>{10});
}

TEST_F(CrossLinesTest, SwitchOn_ShowsGuidance11_WhenTwoCrosses)
{
    settings.CROSSLINENUM = 2;

    cross.chkCross_Click(true);

    EXPECT_EQ(toolNumbers(guidance), QList<int>{11});
}

TEST_F(CrossLinesTest, Click_DoesNothing_WhenItRepeatsTheState)
{
    cross.chkCross_Click(false);
    cross.chkCross_Click(true);
    tools.clear();
    states.clear();

    cross.chkCross_Click(true);

    EXPECT_EQ(tools.count(), 0);
    EXPECT_EQ(states.count(), 0);
}

// --- following the pointer ---

TEST_F(CrossLinesTest, Move_PlacesCross0LinesCentredOnPointer_InTool10)
{
    cross.chkCross_Click(true);
    lines.clear();

    cross.move(QPoint(120, 80));

    EXPECT_EQ(cross.crossPoint(0), QPoint(120, 80));
    EXPECT_EQ(cross.verticalLineLeft(0), 120 - CrossLines::kHalfThickness);
    EXPECT_EQ(cross.horizontalLineTop(0), 80 - CrossLines::kHalfThickness);
    EXPECT_EQ(lines.count(), 1);
}

TEST_F(CrossLinesTest, HalfThickness_IsHalfTheLineThickness)
{
    EXPECT_EQ(CrossLines::kHalfThickness, CrossLines::kLineThickness / 2);
    EXPECT_EQ(CrossLines::kHalfThickness, 1);
}

TEST_F(CrossLinesTest, Move_LeavesCross1_InTool10)
{
    settings.CROSSLINENUM = 2;
    cross.chkCross_Click(true);

    cross.move(QPoint(120, 80));

    EXPECT_EQ(cross.crossPoint(1), QPoint(0, 0));
}

TEST_F(CrossLinesTest, Move_DoesNothing_WhenNoCrossToolIsActive)
{
    cross.chkCross_Click(true);
    cross.release(QPoint(10, 20));  // fixes the only cross
    lines.clear();

    cross.move(QPoint(300, 200));

    EXPECT_EQ(cross.crossPoint(0), QPoint(10, 20));
    EXPECT_EQ(lines.count(), 0);
}

TEST_F(CrossLinesTest, Move_DoesNothing_WhenSwitchedOff)
{
    cross.move(QPoint(300, 200));

    EXPECT_EQ(cross.crossPoint(0), QPoint(0, 0));
    EXPECT_EQ(lines.count(), 0);
}

// --- releasing ---

TEST_F(CrossLinesTest, Release_FixesCross0AndEndsPlacing_WhenOneCross)
{
    settings.CROSSLINENUM = 1;
    cross.chkCross_Click(true);
    cross.move(QPoint(100, 100));
    tools.clear();

    cross.release(QPoint(110, 90));

    EXPECT_EQ(cross.crossPoint(0), QPoint(110, 90));
    EXPECT_EQ(cross.tool(), CrossLines::kNoTool);
    EXPECT_EQ(toolNumbers(tools), QList<int>{CrossLines::kNoTool});
    EXPECT_EQ(guidanceEnds.count(), 1);
    EXPECT_FALSE(cross.crossVisible(1));
    EXPECT_TRUE(cross.crossVisible(0));
}

TEST_F(CrossLinesTest, Release_SelectsTool11AndShowsGuidance12_WhenTwoCrosses)
{
    settings.CROSSLINENUM = 2;
    cross.chkCross_Click(true);
    tools.clear();
    guidance.clear();

    cross.release(QPoint(110, 90));

    EXPECT_EQ(cross.crossPoint(0), QPoint(110, 90));
    EXPECT_EQ(cross.tool(), 11);
    EXPECT_EQ(toolNumbers(tools), QList<int>{11});
    EXPECT_EQ(toolNumbers(guidance), QList<int>{12});
    EXPECT_EQ(guidanceEnds.count(), 0);
    EXPECT_TRUE(cross.crossVisible(1));
    EXPECT_EQ(cross.crossPoint(1), QPoint(110, 90));
}

TEST_F(CrossLinesTest, Move_CarriesCross1AndLeavesCross0Fixed_InTool11)
{
    settings.CROSSLINENUM = 2;
    cross.chkCross_Click(true);
    cross.release(QPoint(110, 90));

    cross.move(QPoint(200, 150));

    EXPECT_EQ(cross.crossPoint(0), QPoint(110, 90));
    EXPECT_EQ(cross.crossPoint(1), QPoint(200, 150));
    EXPECT_EQ(cross.verticalLineLeft(1), 199);
    EXPECT_EQ(cross.horizontalLineTop(1), 149);
}

TEST_F(CrossLinesTest, Release_FixesCross1AndEndsPlacing_InTool11)
{
    settings.CROSSLINENUM = 2;
    cross.chkCross_Click(true);
    cross.release(QPoint(110, 90));
    tools.clear();

    cross.release(QPoint(210, 160));

    EXPECT_EQ(cross.crossPoint(1), QPoint(210, 160));
    EXPECT_EQ(cross.tool(), CrossLines::kNoTool);
    EXPECT_EQ(toolNumbers(tools), QList<int>{CrossLines::kNoTool});
    EXPECT_EQ(guidanceEnds.count(), 1);
    EXPECT_TRUE(cross.crossVisible(0));
    EXPECT_TRUE(cross.crossVisible(1));
}

TEST_F(CrossLinesTest, Release_DoesNothing_AfterBothCrossesAreFixed)
{
    settings.CROSSLINENUM = 2;
    cross.chkCross_Click(true);
    cross.release(QPoint(110, 90));
    cross.release(QPoint(210, 160));
    tools.clear();

    cross.release(QPoint(5, 5));

    EXPECT_EQ(cross.crossPoint(0), QPoint(110, 90));
    EXPECT_EQ(cross.crossPoint(1), QPoint(210, 160));
    EXPECT_EQ(tools.count(), 0);
}

TEST_F(CrossLinesTest, ToolReplaced_StopsFollowingAndKeepsCrossesShown)
{
    cross.chkCross_Click(true);
    cross.move(QPoint(50, 60));

    cross.toolReplaced();
    cross.move(QPoint(300, 200));

    EXPECT_EQ(cross.tool(), CrossLines::kNoTool);
    EXPECT_EQ(cross.crossPoint(0), QPoint(50, 60));
    EXPECT_TRUE(cross.crossVisible(0));
    EXPECT_TRUE(cross.isOn());
}

// --- switching off ---

TEST_F(CrossLinesTest, SwitchOff_HidesBothCrosses)
{
    settings.CROSSLINENUM = 2;
    cross.chkCross_Click(true);
    cross.release(QPoint(110, 90));
    lines.clear();

    cross.chkCross_Click(false);

    EXPECT_FALSE(cross.isOn());
    EXPECT_FALSE(cross.crossVisible(0));
    EXPECT_FALSE(cross.crossVisible(1));
    EXPECT_GE(lines.count(), 1);
}

TEST_F(CrossLinesTest, SwitchOff_ReturnsToNormalTool_WhenCrossToolIsActive)
{
    cross.chkCross_Click(true);
    tools.clear();

    cross.chkCross_Click(false);

    EXPECT_EQ(cross.tool(), CrossLines::kNoTool);
    EXPECT_EQ(toolNumbers(tools), QList<int>{CrossLines::kNoTool});
    EXPECT_EQ(guidanceEnds.count(), 1);
}

TEST_F(CrossLinesTest, SwitchOff_LeavesToolAlone_WhenAnotherToolIsActive)
{
    cross.chkCross_Click(true);
    cross.toolReplaced();
    tools.clear();

    cross.chkCross_Click(false);

    EXPECT_EQ(tools.count(), 0);
    EXPECT_EQ(guidanceEnds.count(), 0);
}

TEST_F(CrossLinesTest, SwitchOff_KeepsPositions_ForTheNextSwitchOn)
{
    cross.chkCross_Click(true);
    cross.release(QPoint(70, 30));
    cross.chkCross_Click(false);

    cross.chkCross_Click(true);

    EXPECT_EQ(cross.crossPoint(0), QPoint(70, 30));
    EXPECT_TRUE(cross.crossVisible(0));
}

// --- after the view settings ---

TEST_F(CrossLinesTest, ViewSettingsClosed_HidesCrossesAndSwapsIcon_WhenOneBecomesTwoWhileShown)
{
    settings.CROSSLINENUM = 1;
    cross.chkCross_Click(true);
    cross.release(QPoint(70, 30));
    states.clear();

    cross.cmdCamViewConfig_Click([this] { settings.CROSSLINENUM = 2; });

    EXPECT_FALSE(cross.isOn());
    EXPECT_FALSE(cross.crossVisible(0));
    EXPECT_FALSE(cross.crossVisible(1));
    ASSERT_EQ(states.count(), 1);
    EXPECT_FALSE(states.at(0).at(0).toBool());
    ASSERT_EQ(icons.count(), 1);
    EXPECT_EQ(icons.at(0).at(0).toInt(), 1);
}

TEST_F(CrossLinesTest, ViewSettingsClosed_SwapsIconToOneCross_WhenTwoBecomeOne)
{
    settings.CROSSLINENUM = 2;

    cross.cmdCamViewConfig_Click([this] { settings.CROSSLINENUM = 1; });

    ASSERT_EQ(icons.count(), 1);
    EXPECT_EQ(icons.at(0).at(0).toInt(), 0);
    EXPECT_EQ(states.count(), 0);  // it was off: nothing to uncheck
}

TEST_F(CrossLinesTest, ViewSettingsClosed_EndsPlacing_WhenCountChangesDuringPlacing)
{
    settings.CROSSLINENUM = 1;
    cross.chkCross_Click(true);
    tools.clear();

    cross.cmdCamViewConfig_Click([this] { settings.CROSSLINENUM = 2; });

    EXPECT_EQ(cross.tool(), CrossLines::kNoTool);
    EXPECT_EQ(toolNumbers(tools), QList<int>{CrossLines::kNoTool});
}

TEST_F(CrossLinesTest, ViewSettingsClosed_KeepsCrossesAndIcon_WhenCountIsUnchanged)
{
    cross.chkCross_Click(true);
    states.clear();

    cross.cmdCamViewConfig_Click([this] { settings.CROSSLINECOLOR = 0x0000FF; });

    EXPECT_TRUE(cross.isOn());
    EXPECT_TRUE(cross.crossVisible(0));
    EXPECT_EQ(icons.count(), 0);
    EXPECT_EQ(states.count(), 0);
}

TEST_F(CrossLinesTest, ViewSettingsClosed_AppliesNewColour_AfterOk)
{
    cross.cmdCamViewConfig_Click([this] { settings.CROSSLINECOLOR = 0x0000FF; });

    ASSERT_EQ(colors.count(), 1);
    EXPECT_EQ(colors.at(0).at(0).value<QColor>(), QColor(255, 0, 0));
}

TEST_F(CrossLinesTest, ViewSettingsClosed_ReappliesUnchangedColour_AfterCancel)
{
    cross.cmdCamViewConfig_Click([] {});

    ASSERT_EQ(colors.count(), 1);
    EXPECT_EQ(colors.at(0).at(0).value<QColor>(), QColor(0, 255, 0));
    EXPECT_EQ(icons.count(), 0);
}

TEST_F(CrossLinesTest, ApplySettings_SendsColourAndIcon)
{
    settings.CROSSLINENUM = 2;
    settings.CROSSLINECOLOR = 0x102030;

    cross.applySettings();

    ASSERT_EQ(colors.count(), 1);
    EXPECT_EQ(colors.at(0).at(0).value<QColor>(), ClassicColor::toQColor(0x102030));
    ASSERT_EQ(icons.count(), 1);
    EXPECT_EQ(icons.at(0).at(0).toInt(), 1);
}

TEST_F(CrossLinesTest, IconIndex_IsZeroForOneCrossAndOneForTwo)
{
    EXPECT_EQ(CrossLines::iconIndex(1), 0);
    EXPECT_EQ(CrossLines::iconIndex(2), 1);
}
