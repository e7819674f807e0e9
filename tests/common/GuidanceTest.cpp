#include "FakeCommentBox.h"
#include "TempDir.h"
#include "common/ErrorLog.h"
#include "common/Guidance.h"
#include "common/GuidanceTable.h"
#include "common/RunError.h"

#include <gtest/gtest.h>

using namespace tavix;
using tavix::test::FakeCommentBox;
using tavix::test::TempDir;

namespace {

bool readFile(GuidanceTable& table, const TempDir& dir, const QByteArray& content)
{
    const QString path = dir.write(QStringLiteral("g.txt"), content);
    return table.ReadGuidanceData(path, ErrorLog(dir.file(QStringLiteral("Error.Log"))));
}

QString logText(const TempDir& dir)
{
    return QString::fromUtf8(dir.read(QStringLiteral("Error.Log")));
}

}  // namespace

TEST(GuidanceTable, Read_KeepsCommasInsideQuotedFields)
{
    TempDir dir;
    GuidanceTable table;
    ASSERT_TRUE(
        readFile(table, dir, "32,\"Click the first point, then the second.\",\"Right click cancels.\"\r\n"));
    EXPECT_EQ(table.line(32, 0), QStringLiteral("Click the first point, then the second."));
    EXPECT_EQ(table.line(32, 1), QStringLiteral("Right click cancels."));
}

TEST(GuidanceTable, Read_SkipsByteOrderMark_BeforeFirstRecord)
{
    TempDir dir;
    GuidanceTable table;
    ASSERT_TRUE(readFile(table, dir,
                         "\xEF\xBB\xBF"
                         "7,first line,second line\r\n"));
    EXPECT_EQ(table.line(7, 0), QStringLiteral("first line"));
    EXPECT_EQ(table.line(7, 1), QStringLiteral("second line"));
    EXPECT_FALSE(dir.exists(QStringLiteral("Error.Log")));
}

TEST(GuidanceTable, Read_GivesEmptyLines_ForNumbersNotInFile)
{
    TempDir dir;
    GuidanceTable table;
    ASSERT_TRUE(readFile(table, dir, "1,a,b\n"));
    EXPECT_EQ(table.line(2, 0), QString());
    EXPECT_EQ(table.line(1000, 1), QString());
}

TEST(GuidanceTable, Read_LaterRecordReplacesEarlier)
{
    TempDir dir;
    GuidanceTable table;
    ASSERT_TRUE(readFile(table, dir, "5,old,old\n5,new 0,new 1\n"));
    EXPECT_EQ(table.line(5, 0), QStringLiteral("new 0"));
    EXPECT_EQ(table.line(5, 1), QStringLiteral("new 1"));
}

TEST(GuidanceTable, Read_AcceptsNumbersZeroAndThousand)
{
    TempDir dir;
    GuidanceTable table;
    ASSERT_TRUE(readFile(table, dir, "0,a,b\r\n1000,c,d\r\n"));
    EXPECT_EQ(table.line(1000, 1), QStringLiteral("d"));
}

TEST(GuidanceTable, Read_FailsWithLogLine_ForNumber1001)
{
    TempDir dir;
    GuidanceTable table;
    EXPECT_FALSE(readFile(table, dir, "1,a,b\n1001,c,d\n"));
    EXPECT_TRUE(logText(dir).endsWith(QStringLiteral(" ReadGuidanceData Error.(9)\r\n")));
}

TEST(GuidanceTable, Read_FailsWithLogLine_ForNegativeNumber)
{
    TempDir dir;
    GuidanceTable table;
    EXPECT_FALSE(readFile(table, dir, "-1,a,b\n"));
    EXPECT_TRUE(logText(dir).contains(QStringLiteral("ReadGuidanceData Error.(9)")));
}

TEST(GuidanceTable, Read_FailsWithLogLine_ForRecordMissingAField)
{
    TempDir dir;
    GuidanceTable table;
    EXPECT_FALSE(readFile(table, dir, "1,a,b\n2,only one\n"));
    EXPECT_TRUE(logText(dir).endsWith(QStringLiteral(" ReadGuidanceData Error.(62)\r\n")));
}

TEST(GuidanceTable, Read_FailsWithLogLine_ForNonNumericNumber)
{
    TempDir dir;
    GuidanceTable table;
    EXPECT_FALSE(readFile(table, dir, "x,a,b\n"));
    EXPECT_TRUE(logText(dir).endsWith(QStringLiteral(" ReadGuidanceData Error.(13)\r\n")));
}

TEST(GuidanceTable, Read_FailsWithLogLine_WhenFileMissing)
{
    TempDir dir;
    GuidanceTable table;
    EXPECT_FALSE(table.ReadGuidanceData(dir.file(QStringLiteral("none")),
                                        ErrorLog(dir.file(QStringLiteral("Error.Log")))));
    EXPECT_TRUE(logText(dir).endsWith(QStringLiteral(" ReadGuidanceData Error.(53)\r\n")));
}

class GuidanceDisplay : public ::testing::Test {
protected:
    void SetUp() override
    {
        table.parse(QStringLiteral("30,\"Point: click\",\"Right click cancels\"\n31,\"Next\",\"Second\"\n"));
        box0.setText(QStringLiteral("my comment"));
        box1.setText(QStringLiteral("my second comment"));
    }
    GuidanceTable table;
    FakeCommentBox box0, box1;
    Guidance guidance{table, box0, box1};
};

TEST_F(GuidanceDisplay, Disp_ShowsBothLinesAndLocksBoxes)
{
    guidance.DispGuidance(30);
    EXPECT_EQ(box0.text(), QStringLiteral("Point: click"));
    EXPECT_EQ(box1.text(), QStringLiteral("Right click cancels"));
    EXPECT_TRUE(box0.isLocked());
    EXPECT_TRUE(box1.isLocked());
}

TEST_F(GuidanceDisplay, Disp_SecondTextReplacesLineOne)
{
    guidance.DispGuidance(30, QStringLiteral("12.5 MIC"));
    EXPECT_EQ(box0.text(), QStringLiteral("Point: click"));
    EXPECT_EQ(box1.text(), QStringLiteral("12.5 MIC"));
}

TEST_F(GuidanceDisplay, Hide_RestoresUserTextAndUnlocks)
{
    guidance.DispGuidance(30);
    guidance.HideGuidance();
    EXPECT_EQ(box0.text(), QStringLiteral("my comment"));
    EXPECT_EQ(box1.text(), QStringLiteral("my second comment"));
    EXPECT_FALSE(box0.isLocked());
    EXPECT_FALSE(box1.isLocked());
}

TEST_F(GuidanceDisplay, DispTwice_KeepsUserTextSavedTheFirstTime)
{
    guidance.DispGuidance(30);
    guidance.DispGuidance(31);
    EXPECT_EQ(box0.text(), QStringLiteral("Next"));
    guidance.HideGuidance();
    EXPECT_EQ(box0.text(), QStringLiteral("my comment"));
    EXPECT_EQ(box1.text(), QStringLiteral("my second comment"));
}

TEST_F(GuidanceDisplay, Hide_DoesNothing_WhenNoGuidanceShowing)
{
    box0.setText(QStringLiteral("typed"));
    guidance.HideGuidance();
    EXPECT_EQ(box0.text(), QStringLiteral("typed"));
    EXPECT_FALSE(box0.isLocked());
}
