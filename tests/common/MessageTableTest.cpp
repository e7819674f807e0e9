#include "TempDir.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"

#include <gtest/gtest.h>

using namespace tavix;
using tavix::test::TempDir;

namespace {

QString logText(const TempDir& dir)
{
    return QString::fromUtf8(dir.read(QStringLiteral("Error.Log")));
}

MessageTable parsed(const QString& text)
{
    MessageTable table;
    table.parse(text);
    return table;
}

QByteArray entries(int count)
{
    QByteArray out;
    for (int i = 0; i < count; ++i)
        out += QByteArray::number(i) + ",Text " + QByteArray::number(i) + "\r\n";
    return out;
}

}  // namespace

TEST(MessageTable, Lookup_KeepsSecondCommaInText_WhenSubstituting)
{
    const auto table = parsed(QStringLiteral("5,Value @ is out of range, retry\r\n"));
    EXPECT_EQ(table.text(5, 12), QStringLiteral("Value 12 is out of range, retry"));
}

TEST(MessageTable, Lookup_ReplacesEveryPlaceholder)
{
    const auto table = parsed(QStringLiteral("7,@ of @\n"));
    EXPECT_EQ(table.text(7, QStringLiteral("x")), QStringLiteral("x of x"));
}

TEST(MessageTable, Lookup_KeepsPlaceholder_WhenNoValueGiven)
{
    const auto table = parsed(QStringLiteral("7,Camera error (@)\n"));
    EXPECT_EQ(table.text(7), QStringLiteral("Camera error (@)"));
}

TEST(MessageTable, Lookup_GivesEmptyText_ForUnknownId)
{
    const auto table = parsed(QStringLiteral("1,One\n"));
    EXPECT_EQ(table.text(2), QString());
    EXPECT_EQ(table.text(2, 5), QString());
}

TEST(MessageTable, Parse_TakesTextAsItStands)
{
    const auto table = parsed(QStringLiteral("3,  \"quoted\" and padded  \r\n"));
    EXPECT_EQ(table.text(3), QStringLiteral("  \"quoted\" and padded  "));
}

TEST(MessageTable, Parse_SkipsBlankLinesAndLinesWithoutComma)
{
    const auto table = parsed(QStringLiteral("Messages of the program\r\n\r\n1,One\r\n   \r\n2,Two\r\n"));
    EXPECT_EQ(table.size(), 2);
    EXPECT_EQ(table.text(1), QStringLiteral("One"));
    EXPECT_EQ(table.text(2), QStringLiteral("Two"));
}

TEST(MessageTable, Parse_FirstEntryWins_WhenIdRepeats)
{
    const auto table = parsed(QStringLiteral("9,Upper\n9,Lower\n"));
    EXPECT_EQ(table.text(9), QStringLiteral("Upper"));
    EXPECT_EQ(table.size(), 2);
}

TEST(MessageTable, Parse_AcceptsLfAndCrLf)
{
    const auto table = parsed(QStringLiteral("1,One\n2,Two\r\n3,Three"));
    EXPECT_EQ(table.text(3), QStringLiteral("Three"));
    EXPECT_EQ(table.text(1), QStringLiteral("One"));
}

TEST(MessageTable, Read_LoadsExactlyTenThousandAndOneEntries)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("m.txt"), entries(10001));
    MessageTable table;
    EXPECT_TRUE(table.ReadStringTableData(path, ErrorLog(dir.file(QStringLiteral("Error.Log")))));
    EXPECT_EQ(table.size(), 10001);
    EXPECT_EQ(table.text(10000), QStringLiteral("Text 10000"));
    EXPECT_FALSE(dir.exists(QStringLiteral("Error.Log")));
}

TEST(MessageTable, Read_SkipsByteOrderMark_BeforeFirstEntry)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("m.txt"),
                                   "\xEF\xBB\xBF"
                                   "10001,First\r\n10002,Second\r\n");
    MessageTable table;
    ASSERT_TRUE(table.ReadStringTableData(path, ErrorLog(dir.file(QStringLiteral("Error.Log")))));
    EXPECT_EQ(table.size(), 2);
    EXPECT_EQ(table.text(10001), QStringLiteral("First"));
    EXPECT_FALSE(dir.exists(QStringLiteral("Error.Log")));
}

TEST(MessageTable, Read_FailsWithLogLine_WhenOneEntryTooMany)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("m.txt"), entries(10002));
    MessageTable table;
    EXPECT_FALSE(table.ReadStringTableData(path, ErrorLog(dir.file(QStringLiteral("Error.Log")))));
    EXPECT_TRUE(logText(dir).endsWith(QStringLiteral(" ReadStringTableData Error.(9)\r\n")));
}

TEST(MessageTable, Read_FailsWithLogLine_WhenFileMissing)
{
    TempDir dir;
    MessageTable table;
    EXPECT_FALSE(table.ReadStringTableData(dir.file(QStringLiteral("none.txt")),
                                           ErrorLog(dir.file(QStringLiteral("Error.Log")))));
    EXPECT_TRUE(logText(dir).endsWith(QStringLiteral(" ReadStringTableData Error.(53)\r\n")));
}

TEST(MessageTable, Read_FailsWithLogLine_WhenIdIsNotANumber)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("m.txt"), "1,One\r\nabc,Two\r\n");
    MessageTable table;
    EXPECT_FALSE(table.ReadStringTableData(path, ErrorLog(dir.file(QStringLiteral("Error.Log")))));
    EXPECT_TRUE(logText(dir).endsWith(QStringLiteral(" ReadStringTableData Error.(13)\r\n")));
}

TEST(MessageTable, Read_Fails_WhenFileHoldsNoEntry)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("m.txt"), "only a comment\r\n\r\n");
    MessageTable table;
    EXPECT_FALSE(table.ReadStringTableData(path, ErrorLog(dir.file(QStringLiteral("Error.Log")))));
    EXPECT_TRUE(logText(dir).contains(QStringLiteral("ReadStringTableData Error.(")));
}
