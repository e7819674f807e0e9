#include "common/IniFile.h"

#include "TempDir.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <QDir>
#include <QFileInfo>

using namespace tavix;

namespace {

QString valueIn(const QByteArray& text, const char* section, const char* key)
{
    return IniFile::fromText(text).value(QString::fromUtf8(section), QString::fromUtf8(key));
}

QByteArray afterSetting(const QByteArray& text, const char* section, const char* key, const char* value)
{
    IniFile ini = IniFile::fromText(text);
    EXPECT_TRUE(ini.setValue(QString::fromUtf8(section), QString::fromUtf8(key), QString::fromUtf8(value)));
    return ini.toText();
}

}  // namespace

// --- reading ---

TEST(IniFile, Value_MatchesSectionAndKeyWithoutCase)
{
    const QByteArray text = "[Measure]\nScaleX=12\n";

    EXPECT_EQ(valueIn(text, "MEASURE", "SCALEX"), "12");
    EXPECT_EQ(valueIn(text, "measure", "scalex"), "12");
}

TEST(IniFile, Value_IgnoresBlanksAroundSectionAndKeyNames)
{
    const QByteArray text = "  [  ICUBE\t]  \n   STILLWAITTIME   =300\n";

    EXPECT_EQ(valueIn(text, "ICUBE", "STILLWAITTIME"), "300");
    EXPECT_EQ(valueIn(text, " ICUBE ", "STILLWAITTIME "), "300");
}

TEST(IniFile, Value_IsTrimmed)
{
    EXPECT_EQ(valueIn("[A]\nK=   a b c \t \n", "A", "K"), "a b c");
}

TEST(IniFile, Value_LosesOnePairOfEnclosingDoubleQuotes)
{
    EXPECT_EQ(valueIn("[A]\nK=\" padded \"\n", "A", "K"), " padded ");
    EXPECT_EQ(valueIn("[A]\nK=\"\"twice\"\"\n", "A", "K"), "\"twice\"");
}

TEST(IniFile, Value_KeepsAQuoteThatDoesNotEncloseIt)
{
    EXPECT_EQ(valueIn("[A]\nK=\"open\n", "A", "K"), "\"open");
    EXPECT_EQ(valueIn("[A]\nK=say \"hi\" now\n", "A", "K"), "say \"hi\" now");
    EXPECT_EQ(valueIn("[A]\nK=\"\n", "A", "K"), "\"");
}

TEST(IniFile, Value_LongerThan254Characters_IsCut)
{
    const QByteArray longValue(300, 'x');

    const QString value = valueIn("[A]\nK=" + longValue + "\n", "A", "K");

    EXPECT_EQ(value, QString(254, QLatin1Char('x')));
}

TEST(IniFile, Value_Of254Characters_IsKeptWhole)
{
    const QByteArray value = QByteArray(253, 'y') + 'z';

    EXPECT_EQ(valueIn("[A]\nK=" + value + "\n", "A", "K"), QString::fromLatin1(value));
}

TEST(IniFile, Value_IsCutAfterQuotesAreRemoved)
{
    const QByteArray quoted = '"' + QByteArray(254, 'q') + '"';

    EXPECT_EQ(valueIn("[A]\nK=" + quoted + "\n", "A", "K"), QString(254, QLatin1Char('q')));
}

TEST(IniFile, Value_CommentLinesAreNotEntries)
{
    const QByteArray text = "[A]\n;K=commented\n  ; K=indented comment\nK=real\n";

    EXPECT_EQ(valueIn(text, "A", "K"), "real");
    EXPECT_EQ(valueIn("[A]\n;ONLY=1\n", "A", "ONLY"), "");
}

TEST(IniFile, Value_FirstMatchingKeyWins)
{
    EXPECT_EQ(valueIn("[A]\nK=first\nk = second\n", "A", "K"), "first");
}

TEST(IniFile, Value_FirstMatchingSectionWins)
{
    const QByteArray text = "[A]\nK=first\n[B]\nK=other\n[a]\nK=second\nL=only in the second\n";

    EXPECT_EQ(valueIn(text, "A", "K"), "first");
    EXPECT_EQ(valueIn(text, "A", "L"), "");
}

TEST(IniFile, Value_KeyOfAnotherSectionIsNotFound)
{
    const QByteArray text = "K=before any section\n[A]\nX=1\n[B]\nK=in B\n";

    EXPECT_EQ(valueIn(text, "A", "K"), "");
    EXPECT_EQ(valueIn(text, "B", "K"), "in B");
}

TEST(IniFile, Value_MissingOrEmpty_ReadsAsNothing)
{
    const QByteArray text = "[A]\nEMPTY=\nBLANKS=    \nNOEQUALS\n";

    EXPECT_EQ(valueIn(text, "A", "EMPTY"), "");
    EXPECT_EQ(valueIn(text, "A", "BLANKS"), "");
    EXPECT_EQ(valueIn(text, "A", "NOEQUALS"), "");
    EXPECT_EQ(valueIn(text, "A", "MISSING"), "");
    EXPECT_EQ(valueIn(text, "NOSECTION", "EMPTY"), "");
    EXPECT_EQ(valueIn("", "A", "K"), "");
}

TEST(IniFile, Value_OnlyTheFirstEqualsSignSeparates)
{
    EXPECT_EQ(valueIn("[A]\nK=a=b\n", "A", "K"), "a=b");
}

TEST(IniFile, Value_AcceptsLfAndCrLf)
{
    EXPECT_EQ(valueIn("[A]\r\nK=crlf\r\nL=2\r\n", "A", "K"), "crlf");
    EXPECT_EQ(valueIn("[A]\nK=lf\nL=2", "A", "K"), "lf");
    EXPECT_EQ(valueIn("[A]\r\nK=mixed\nL=2\r\n", "A", "L"), "2");
}

TEST(IniFile, Value_ReadsUtf8)
{
    const QByteArray text = "\xEF\xBB\xBF[Übersicht]\nPFAD=/home/jürgen/画像\n";

    EXPECT_EQ(valueIn(text, "ÜBERSICHT", "PFAD"), QStringLiteral("/home/jürgen/画像"));
}

TEST(IniFile, Read_MissingFile_ReadsAsNothing)
{
    test::TempDir dir;

    EXPECT_EQ(IniFile::read(dir.file("none.ini"), QStringLiteral("A"), QStringLiteral("K")), "");
}

// --- writing ---

TEST(IniFile, SetValue_ReplacesTheValueInPlaceAndKeepsEveryOtherLine)
{
    const QByteArray before =
        "; settings\n[A]\nX = 1\n\n  K =  old value  \n;K=comment\nUNKNOWN=kept\n[B]\nK=b\n";

    const QByteArray after = afterSetting(before, "a", "k ", "new");

    EXPECT_EQ(after,
              "; settings\r\n[A]\r\nX = 1\r\n\r\n  K =  new\r\n;K=comment\r\nUNKNOWN=kept\r\n[B]\r\nK=b\r\n");
}

TEST(IniFile, SetValue_ReplacesAnEmptyValue)
{
    EXPECT_EQ(afterSetting("[A]\nK=\n", "A", "K", "5"), "[A]\r\nK=5\r\n");
    EXPECT_EQ(afterSetting("[A]\nK =   \n", "A", "K", "5"), "[A]\r\nK =5\r\n");
}

TEST(IniFile, SetValue_ChangesOnlyTheFirstMatchingKeyOfTheFirstSection)
{
    const QByteArray before = "[A]\nK=1\nK=2\n[A]\nK=3\n";

    EXPECT_EQ(afterSetting(before, "A", "K", "9"), "[A]\r\nK=9\r\nK=2\r\n[A]\r\nK=3\r\n");
}

TEST(IniFile, SetValue_NewKey_GoesAfterTheSectionsLastEntry)
{
    const QByteArray before = "[A]\nX=1\nY=2\n; trailing comment\n\n[B]\nZ=3\n";

    const QByteArray after = afterSetting(before, "A", "NEWKEY ", "v");

    EXPECT_EQ(after, "[A]\r\nX=1\r\nY=2\r\nNEWKEY=v\r\n; trailing comment\r\n\r\n[B]\r\nZ=3\r\n");
}

TEST(IniFile, SetValue_NewKeyInEmptySection_GoesRightAfterTheHead)
{
    EXPECT_EQ(afterSetting("[A]\n\n[B]\nZ=3\n", "A", "K", "v"), "[A]\r\nK=v\r\n\r\n[B]\r\nZ=3\r\n");
}

TEST(IniFile, SetValue_MissingSection_IsAppendedAtTheEnd)
{
    const QByteArray after = afterSetting("[A]\nX=1", " NEW ", "K", "v");

    EXPECT_EQ(after, "[A]\r\nX=1\r\n\r\n[NEW]\r\nK=v\r\n");
}

TEST(IniFile, SetValue_RefusesWhatTheFileCannotHold)
{
    IniFile ini = IniFile::fromText("[A]\nK=1\n");
    const QByteArray before = ini.toText();

    EXPECT_FALSE(ini.setValue(QStringLiteral("A"), QStringLiteral("K"), QStringLiteral("two\nlines")));
    EXPECT_FALSE(ini.setValue(QStringLiteral("A"), QStringLiteral("K"), QStringLiteral("cr\r")));
    EXPECT_FALSE(ini.setValue(QStringLiteral("A"), QStringLiteral("K=X"), QStringLiteral("1")));
    EXPECT_FALSE(ini.setValue(QStringLiteral("A"), QStringLiteral("  "), QStringLiteral("1")));
    EXPECT_FALSE(ini.setValue(QStringLiteral("A"), QStringLiteral(";K"), QStringLiteral("1")));
    EXPECT_FALSE(ini.setValue(QStringLiteral("A]B"), QStringLiteral("K"), QStringLiteral("1")));
    EXPECT_FALSE(ini.setValue(QString(), QStringLiteral("K"), QStringLiteral("1")));
    EXPECT_EQ(ini.toText(), before);
}

TEST(IniFile, SetValue_WrittenValueIsReadBack)
{
    IniFile ini = IniFile::fromText("[A]\nK=1\n");

    ASSERT_TRUE(ini.setValue(QStringLiteral("A"), QStringLiteral("K"), QStringLiteral("/päth/with = sign")));

    EXPECT_EQ(IniFile::fromText(ini.toText()).value(QStringLiteral("A"), QStringLiteral("K")),
              QStringLiteral("/päth/with = sign"));
}

TEST(IniFile, ToText_KeepsBytesThatAreNotUtf8)
{
    const QByteArray text = "[A]\r\nNAME=\xff\xfe latin\r\nK=1\r\n";

    EXPECT_EQ(afterSetting(text, "A", "K", "2"), "[A]\r\nNAME=\xff\xfe latin\r\nK=2\r\n");
}

TEST(IniFile, Write_MissingFile_IsCreated)
{
    test::TempDir dir;
    const QString path = dir.file("Tavix.Ini");

    ASSERT_TRUE(
        IniFile::write(path, QStringLiteral("FILE"), QStringLiteral("JPEGQTY"), QStringLiteral("80")));

    EXPECT_EQ(dir.read("Tavix.Ini"), "[FILE]\r\nJPEGQTY=80\r\n");
}

TEST(IniFile, Write_ExistingFile_IsRewrittenWithCrLf)
{
    test::TempDir dir;
    const QString path = dir.write("Tavix.Ini", "; c\n[FILE]\nJPEGQTY=75\nOTHER=x\n");

    ASSERT_TRUE(
        IniFile::write(path, QStringLiteral("FILE"), QStringLiteral("JPEGQTY"), QStringLiteral("80")));

    EXPECT_EQ(dir.read("Tavix.Ini"), "; c\r\n[FILE]\r\nJPEGQTY=80\r\nOTHER=x\r\n");
    EXPECT_EQ(IniFile::read(path, QStringLiteral("file"), QStringLiteral("jpegqty")), "80");
}

TEST(IniFile, Write_FolderMissing_Fails)
{
    test::TempDir dir;

    EXPECT_FALSE(IniFile::write(dir.file("no/such/folder/Tavix.Ini"), QStringLiteral("A"),
                                QStringLiteral("K"), QStringLiteral("1")));
}

TEST(IniFile, Write_PathIsAFolder_FailsAndLeavesItAlone)
{
    test::TempDir dir;
    const QString path = dir.file("Tavix.Ini");
    ASSERT_TRUE(QDir().mkpath(path));

    EXPECT_FALSE(IniFile::write(path, QStringLiteral("A"), QStringLiteral("K"), QStringLiteral("1")));
    EXPECT_TRUE(QFileInfo(path).isDir());
}

TEST(IniFile, Save_PartWrittenHook_RunsWhileTheOldFileIsStillInPlace)
{
    test::TempDir dir;
    const QByteArray old = "[FILE]\r\nJPEGQTY=75\r\n";
    const QString path = dir.write("Tavix.Ini", old);
    QByteArray seenDuringWrite;

    const bool ok = IniFile::write(path, QStringLiteral("FILE"), QStringLiteral("JPEGQTY"),
                                   QStringLiteral("90"), [&] { seenDuringWrite = dir.read("Tavix.Ini"); });

    EXPECT_TRUE(ok);
    EXPECT_EQ(seenDuringWrite, old);
    EXPECT_EQ(dir.read("Tavix.Ini"), "[FILE]\r\nJPEGQTY=90\r\n");
}

TEST(IniFileDeathTest, Write_ProcessDiesHalfWay_OldFileStaysWholeAndReadable)
{
    test::TempDir dir;
    QByteArray old = "; shipped settings\r\n[FILE]\r\nJPEGQTY=75\r\n";
    for (int i = 0; i < 200; ++i)
        old += "KEY" + QByteArray::number(i) + "=" + QByteArray(40, 'v') + "\r\n";
    old += "[MEASURE]\r\nSCALEX=100\r\n";
    const QString path = dir.write("Tavix.Ini", old);

    EXPECT_EXIT(IniFile::write(path, QStringLiteral("FILE"), QStringLiteral("JPEGQTY"), QStringLiteral("90"),
                               [] { _exit(7); }),
                ::testing::ExitedWithCode(7), "");

    EXPECT_EQ(dir.read("Tavix.Ini"), old);
    EXPECT_EQ(IniFile::read(path, QStringLiteral("FILE"), QStringLiteral("JPEGQTY")), "75");
    EXPECT_EQ(IniFile::read(path, QStringLiteral("MEASURE"), QStringLiteral("SCALEX")), "100");
}
