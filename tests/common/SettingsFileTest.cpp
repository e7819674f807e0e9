#include "common/SettingsFile.h"

#include "common/CameraDrivers.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "TempDir.h"

#include <gtest/gtest.h>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <cstdlib>

using namespace tavix;

namespace {

// A complete settings file, every key set to a value that differs from the
// built-in value of its variable, with comments, an unknown key and an
// unknown section that must survive every write.
const QByteArray validIni =
    "; Tavix settings\r\n"
    "[COMMON]\r\n"
    "APPNAME=Tavix Measuring Station\r\n"
    "\r\n"
    "[CAMERA]\r\n"
    "CAMERAFILTERNAME=usbcam\r\n"
    "CROSSBARFILTERNAME=crossbar\r\n"
    "GRPFILENAME=Camera.grf\r\n"
    "TEMPBITMAPFILE=Temp.bmp\r\n"
    "DEFAULTSCALE=3\r\n"
    "DRIVER=sim\r\n"
    "CAMERAID=SN-4711\r\n"
    "\r\n"
    "[FILE]\r\n"
    "JPEGQTY=80\r\n"
    "STILL1XSAVE=1\r\n"
    "GUIDANCEFILE=\\Guidance.csv\r\n"
    "STRINGTABLEFILE=\\StringTable.txt\r\n"
    "\r\n"
    "[MEASURE]\r\n"
    "; colours are red + 256 * green + 65536 * blue\r\n"
    "MEASURELINECOLOR1=255\r\n"
    "MEASURELINECOLOR2=65280\r\n"
    "MEASURELINECOLOR3=16711680\r\n"
    "MEASUREVALUECOLOR1=65535\r\n"
    "MEASUREVALUECOLOR2=16777215\r\n"
    "PROOFFILENAME=Proof.csv\r\n"
    "CURRENTPROOFNO=2\r\n"
    "CROSSLINENUM=2\r\n"
    "CROSSLINECOLOR=8421504\r\n"
    "SCALECOLOR=16776960\r\n"
    "SCALEX=100\r\n"
    "SCALEY=0.5\r\n"
    "SCALETYPE=1\r\n"
    "SCALEPOSITION=3\r\n"
    "NUMBEROFDECIMALS=3\r\n"
    "MEASUREFONTSIZE=12\r\n"
    "ANGLECOMMANDMODE=1\r\n"
    "2POINTCOMMANDMODE=1\r\n"
    "CIRCLEARCSELECT=1\r\n"
    "KEEPRESULT=1\r\n"
    "2POINTAVERAGE=1\r\n"
    "EDGESNAP=1\r\n"
    "UNKNOWNKEY=kept as it is\r\n"
    "\r\n"
    "[ICUBE]\r\n"
    "DEFAULTRESOLUTION=2\r\n"
    "STILLWAITTIME=300\r\n"
    "\r\n"
    "[INTERVALSAVE]\r\n"
    "INTERVALTIME=10\r\n"
    "NUMBEROFIMAGES=5\r\n"
    "IS_MODE=1\r\n"
    "IS_SAVEPATH=/home/user/series\r\n"
    "\r\n"
    "[EXTRA]\r\n"
    "; another program's section\r\n"
    "OWNER=someone else\r\n";

QRegularExpression entryLine(const QString& key)
{
    return QRegularExpression(
        QStringLiteral("^") + QRegularExpression::escape(key) + QStringLiteral("=[^\r\n]*"),
        QRegularExpression::MultilineOption);
}

// The fixture (or another text) with the value of one entry replaced.
QByteArray withValue(const QString& key, const QString& value, const QByteArray& base = validIni)
{
    QString text = QString::fromUtf8(base);
    if (!entryLine(key).match(text).hasMatch())
        ADD_FAILURE() << "no entry " << key.toStdString() << " in the fixture";
    text.replace(entryLine(key), key + QLatin1Char('=') + value);
    return text.toUtf8();
}

// The fixture without the entries of the given keys.
QByteArray without(const QStringList& keys)
{
    QString text = QString::fromUtf8(validIni);
    for (const QString& key : keys) {
        const QString before = text;
        text.remove(QRegularExpression(entryLine(key).pattern() + QStringLiteral("\r\n"),
                                       QRegularExpression::MultilineOption));
        if (text == before)
            ADD_FAILURE() << "no entry " << key.toStdString() << " in the fixture";
    }
    return text.toUtf8();
}

QString readError(const char* section, const char* key)
{
    return QStringLiteral("GetIniFileData GetPrivateProfileString Error [Section]=%1,[Key]=%2")
        .arg(QLatin1String(section), QLatin1String(key));
}

class SettingsFileTest : public ::testing::Test {
protected:
    test::TempDir dir;
    const QDateTime now{QDate(2024, 5, 6), QTime(7, 8, 9)};
    ErrorLog log{dir.file(QStringLiteral("Error.Log")), [this] { return now; }};

    QString iniPath() const { return dir.file(QStringLiteral("Tavix.Ini")); }
    void writeIni(const QByteArray& text) const { dir.write(QStringLiteral("Tavix.Ini"), text); }
    QString iniText() const { return QString::fromUtf8(dir.read(QStringLiteral("Tavix.Ini"))); }

    bool load(Settings& s) const
    {
        SettingsFile file(iniPath(), log);
        return file.GetIniFileData(s);
    }
    Settings loadValid()
    {
        writeIni(validIni);
        Settings s;
        EXPECT_TRUE(load(s));
        return s;
    }

    // The messages of the log, without their date and time.
    QStringList logged() const
    {
        const QString prefix = ErrorLog::timestamp(now) + QLatin1Char(' ');
        QStringList messages;
        const QString text = QString::fromUtf8(dir.read(QStringLiteral("Error.Log")));
        for (const QString& line : text.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts)) {
            EXPECT_TRUE(line.startsWith(prefix)) << line.toStdString();
            messages << line.mid(prefix.size());
        }
        return messages;
    }
};

// --- loading ---

TEST_F(SettingsFileTest, Load_ValidFile_FillsEveryVariable)
{
    writeIni(validIni);
    Settings s;

    ASSERT_TRUE(load(s));

    EXPECT_EQ(s.APPNAME, "Tavix Measuring Station");
    EXPECT_EQ(s.CAMERAFILTERNAME, "usbcam");
    EXPECT_EQ(s.CROSSBARFILTERNAME, "crossbar");
    EXPECT_EQ(s.GRPFILENAME, "Camera.grf");
    EXPECT_EQ(s.TEMPBITMAPFILE, "Temp.bmp");
    EXPECT_EQ(s.DEFAULTSCALE, 3);
    EXPECT_EQ(s.JPEGQTY, 80);
    EXPECT_EQ(s.STILL1XSAVE, 1);
    EXPECT_EQ(s.GUIDANCEFILE, "\\Guidance.csv");
    EXPECT_EQ(s.STRINGTABLEFILE, "\\StringTable.txt");
    EXPECT_EQ(s.MEASURELINECOLOR[1], 255);
    EXPECT_EQ(s.MEASURELINECOLOR[2], 65280);
    EXPECT_EQ(s.MEASURELINECOLOR[3], 16711680);
    EXPECT_EQ(s.MEASUREVALUECOLOR[1], 65535);
    EXPECT_EQ(s.MEASUREVALUECOLOR[2], 16777215);
    EXPECT_EQ(s.PROOFFILENAME, "Proof.csv");
    EXPECT_EQ(s.CURRENTPROOFNO, 2);
    EXPECT_EQ(s.CROSSLINENUM, 2);
    EXPECT_EQ(s.CROSSLINECOLOR, 8421504);
    EXPECT_EQ(s.SCALECOLOR, 16776960);
    EXPECT_EQ(s.SCALEX, 100.0);
    EXPECT_EQ(s.SCALEY, 0.5);
    EXPECT_EQ(s.SCALETYPE, 1);
    EXPECT_EQ(s.SCALEPOSITION, 3);
    EXPECT_EQ(s.NUMBEROFDECIMALS, 3);
    EXPECT_EQ(s.MEASUREFONTSIZE, 12);
    EXPECT_EQ(s.ANGLECOMMANDMODE, 1);
    EXPECT_EQ(s._2POINTCOMMANDMODE, 1);
    EXPECT_EQ(s.CIRCLEARCSELECT, 1);
    EXPECT_EQ(s.KEEPRESULT, 1);
    EXPECT_EQ(s._2POINTAVERAGE, 1);
    EXPECT_EQ(s.DEFAULTRESOLUTION, 2);
    EXPECT_EQ(s.STILLWAITTIME, 300);
    EXPECT_EQ(s.INTERVALTIME, 10);
    EXPECT_EQ(s.NUMBEROFIMAGES, 5);
    EXPECT_EQ(s.IS_MODE, 1);
    EXPECT_EQ(s.IS_SAVEPATH, "/home/user/series");
    EXPECT_EQ(s.DRIVER, "sim");
    EXPECT_EQ(s.CAMERAID, "SN-4711");
    EXPECT_TRUE(logged().isEmpty());
}

TEST_F(SettingsFileTest, Load_AcceptsLfLineEnds)
{
    writeIni(QByteArray(validIni).replace("\r\n", "\n"));
    Settings s;

    ASSERT_TRUE(load(s));

    EXPECT_EQ(s.IS_SAVEPATH, "/home/user/series");
    EXPECT_EQ(s.STILLWAITTIME, 300);
}

TEST_F(SettingsFileTest, Load_StillWaitTime1001_Fails)
{
    writeIni(withValue(QStringLiteral("STILLWAITTIME"), QStringLiteral("1001")));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(), QStringList{readError("ICUBE", "STILLWAITTIME")});
}

TEST_F(SettingsFileTest, Load_StillWaitTime1000_IsAccepted)
{
    writeIni(withValue(QStringLiteral("STILLWAITTIME"), QStringLiteral("1000")));
    Settings s;

    EXPECT_TRUE(load(s));
    EXPECT_EQ(s.STILLWAITTIME, 1000);
}

TEST_F(SettingsFileTest, Load_StillWaitTimeMinus5_IsAccepted)
{
    writeIni(withValue(QStringLiteral("STILLWAITTIME"), QStringLiteral("-5")));
    Settings s;

    EXPECT_TRUE(load(s));
    EXPECT_EQ(s.STILLWAITTIME, -5);
}

TEST_F(SettingsFileTest, Load_JpegQty9_Fails)
{
    writeIni(withValue(QStringLiteral("JPEGQTY"), QStringLiteral("9")));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(), QStringList{readError("FILE", "JPEGQTY")});
}

TEST_F(SettingsFileTest, Load_JpegQty101_Fails)
{
    writeIni(withValue(QStringLiteral("JPEGQTY"), QStringLiteral("101")));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(), QStringList{readError("FILE", "JPEGQTY")});
}

TEST_F(SettingsFileTest, Load_MissingKeepResult_GivesZero)
{
    writeIni(without({QStringLiteral("KEEPRESULT")}));
    Settings s;
    s.KEEPRESULT = 1;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.KEEPRESULT, 0);
}

// Settings files from before the edge snap keep working: it is off.
TEST_F(SettingsFileTest, Load_MissingEdgeSnap_GivesZero)
{
    writeIni(without({QStringLiteral("EDGESNAP")}));
    Settings s;
    s.EDGESNAP = 1;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.EDGESNAP, 0);
}

TEST_F(SettingsFileTest, Load_EdgeSnapOfTwo_StopsTheLoad)
{
    writeIni(withValue(QStringLiteral("EDGESNAP"), QStringLiteral("2")));
    Settings s;
    EXPECT_FALSE(load(s));
}

TEST_F(SettingsFileTest, Load_MissingDefaultResolution_GivesMinusOne)
{
    writeIni(without({QStringLiteral("DEFAULTRESOLUTION")}));
    Settings s;
    s.DEFAULTRESOLUTION = 4;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.DEFAULTRESOLUTION, -1);
}

TEST_F(SettingsFileTest, Load_EmptyOptionalValues_GetTheirDefaults)
{
    QByteArray text = validIni;
    for (const char* key : {"CROSSBARFILTERNAME", "CIRCLEARCSELECT", "2POINTAVERAGE", "STILLWAITTIME",
                            "INTERVALTIME", "NUMBEROFIMAGES", "IS_MODE", "IS_SAVEPATH", "DRIVER", "CAMERAID"})
        text = withValue(QLatin1String(key), QString(), text);
    writeIni(text);
    Settings s;
    s.CROSSBARFILTERNAME = QStringLiteral("old");
    s.CIRCLEARCSELECT = s._2POINTAVERAGE = 1;
    s.STILLWAITTIME = 1;
    s.INTERVALTIME = s.NUMBEROFIMAGES = s.IS_MODE = 9;
    s.IS_SAVEPATH = QStringLiteral("old");
    s.DRIVER = QStringLiteral("icube");
    s.CAMERAID = QStringLiteral("old");

    ASSERT_TRUE(load(s));

    EXPECT_EQ(s.CROSSBARFILTERNAME, "");
    EXPECT_EQ(s.CIRCLEARCSELECT, 0);
    EXPECT_EQ(s._2POINTAVERAGE, 0);
    EXPECT_EQ(s.STILLWAITTIME, 500);
    EXPECT_EQ(s.INTERVALTIME, 3);
    EXPECT_EQ(s.NUMBEROFIMAGES, 2);
    EXPECT_EQ(s.IS_MODE, 0);
    EXPECT_EQ(s.IS_SAVEPATH, "");
    EXPECT_EQ(s.DRIVER, "auto");
    EXPECT_EQ(s.CAMERAID, "");
}

TEST_F(SettingsFileTest, Load_MissingAppName_KeepsTheBuiltInTitle)
{
    writeIni(without({QStringLiteral("APPNAME")}));
    Settings s;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.APPNAME, "Digital Camera Image Display Program");
}

TEST_F(SettingsFileTest, Load_ValueLongerThan254Characters_IsCut)
{
    const QString longPath = QStringLiteral("/") + QString(299, QLatin1Char('p'));
    writeIni(withValue(QStringLiteral("IS_SAVEPATH"), longPath));
    Settings s;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.IS_SAVEPATH, longPath.left(254));
}

TEST_F(SettingsFileTest, Load_MissingMandatoryKey_LogsItsSectionAndKey)
{
    writeIni(without({QStringLiteral("SCALEX")}));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(),
              QStringList{"GetIniFileData GetPrivateProfileString Error [Section]=MEASURE,[Key]=SCALEX"});
}

TEST_F(SettingsFileTest, Load_EmptyMandatoryValue_Fails)
{
    writeIni(withValue(QStringLiteral("GRPFILENAME"), QStringLiteral("   ")));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(), QStringList{readError("CAMERA", "GRPFILENAME")});
}

TEST_F(SettingsFileTest, Load_MissingKeyPassedWithTrailingBlank_LogsTheBlank)
{
    writeIni(without({QStringLiteral("TEMPBITMAPFILE")}));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(
        logged(),
        QStringList{"GetIniFileData GetPrivateProfileString Error [Section]=CAMERA,[Key]=TEMPBITMAPFILE "});
}

TEST_F(SettingsFileTest, Load_MissingFile_FailsAtTheFirstMandatoryKey)
{
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(), QStringList{readError("CAMERA", "CAMERAFILTERNAME")});
}

TEST_F(SettingsFileTest, Load_NonNumericInteger_LogsTypeMismatch)
{
    writeIni(withValue(QStringLiteral("KEEPRESULT"), QStringLiteral("yes")));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(), QStringList{"GetIniFileData  Error.(13)[Section]=MEASURE,[Key]=KEEPRESULT"});
}

TEST_F(SettingsFileTest, Load_IntegerBeyondItsType_LogsOverflow)
{
    writeIni(withValue(QStringLiteral("DEFAULTSCALE"), QStringLiteral("40000")));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(), QStringList{"GetIniFileData  Error.(6)[Section]=CAMERA,[Key]=DEFAULTSCALE"});
}

TEST_F(SettingsFileTest, Load_ByteBeyond255_LogsOverflow)
{
    writeIni(withValue(QStringLiteral("JPEGQTY"), QStringLiteral("256")));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(), QStringList{"GetIniFileData  Error.(6)[Section]=FILE,[Key]=JPEGQTY"});
}

TEST_F(SettingsFileTest, Load_BadNumberInOptionalKey_LogsTypeMismatch)
{
    writeIni(withValue(QStringLiteral("NUMBEROFIMAGES"), QStringLiteral("many")));
    Settings s;

    EXPECT_FALSE(load(s));
    EXPECT_EQ(logged(), QStringList{"GetIniFileData  Error.(13)[Section]=INTERVALSAVE,[Key]=NUMBEROFIMAGES"});
}

TEST_F(SettingsFileTest, Load_DoubleIsReadLeniently)
{
    writeIni(withValue(QStringLiteral("SCALEX"), QStringLiteral("2.5mm")));
    Settings s;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.SCALEX, 2.5);
}

TEST_F(SettingsFileTest, Load_DoubleWithoutDigits_IsZero)
{
    writeIni(withValue(QStringLiteral("SCALEY"), QStringLiteral("abc")));
    Settings s;
    s.SCALEY = 7;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.SCALEY, 0.0);
}

TEST_F(SettingsFileTest, Load_FirstFailureStops_LaterKeysKeepTheirValues)
{
    writeIni(withValue(QStringLiteral("CURRENTPROOFNO"), QStringLiteral("20")));
    Settings s;
    s.SCALEX = 42;
    s.KEEPRESULT = 1;
    s.DEFAULTRESOLUTION = 7;
    s.IS_SAVEPATH = QStringLiteral("untouched");

    EXPECT_FALSE(load(s));

    EXPECT_EQ(s.PROOFFILENAME, "Proof.csv");  // read before the failure
    EXPECT_EQ(s.SCALEX, 42.0);
    EXPECT_EQ(s.KEEPRESULT, 1);
    EXPECT_EQ(s.DEFAULTRESOLUTION, 7);
    EXPECT_EQ(s.IS_SAVEPATH, "untouched");
    EXPECT_EQ(logged(), QStringList{readError("MEASURE", "CURRENTPROOFNO")});
}

TEST_F(SettingsFileTest, Load_NamesMatchWithoutCaseAndBlanks)
{
    QByteArray text = withValue(QStringLiteral("SCALEX"), QStringLiteral("1"));
    text.replace("[MEASURE]", "  [ measure ]  ").replace("SCALEX=1", "\t scaleX   =   2.5  ");
    writeIni(text);
    Settings s;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.SCALEX, 2.5);
    EXPECT_EQ(s.KEEPRESULT, 1);
}

TEST_F(SettingsFileTest, Load_FileKeyWithTrailingBlank_IsFound)
{
    QByteArray text = validIni;
    text.replace("PROOFFILENAME=Proof.csv", "PROOFFILENAME  = Proof2.csv");
    writeIni(text);
    Settings s;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.PROOFFILENAME, "Proof2.csv");
}

TEST_F(SettingsFileTest, Load_EnclosingQuotesAreRemoved)
{
    writeIni(withValue(QStringLiteral("IS_SAVEPATH"), QStringLiteral("\" /data/my series \"")));
    Settings s;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.IS_SAVEPATH, " /data/my series ");
}

TEST_F(SettingsFileTest, Load_MissingDriver_IsAuto)
{
    writeIni(without({QStringLiteral("DRIVER")}));
    Settings s;
    s.DRIVER = QStringLiteral("sim");

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.DRIVER, "auto");
}

TEST_F(SettingsFileTest, Load_DriverIsMatchedWithoutCase)
{
    writeIni(withValue(QStringLiteral("DRIVER"), QStringLiteral("ICube")));
    Settings s;

    ASSERT_TRUE(load(s));
    EXPECT_EQ(s.DRIVER, "icube");
}

// The shipped file names the drivers a user may choose; each must start.
TEST_F(SettingsFileTest, ShippedFile_OffersExactlyTheDriversTheLoaderAccepts)
{
    QFile shipped(QStringLiteral(TAVIX_SOURCE_DATA_DIR "/Tavix.Ini"));
    ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(shipped.readAll());
    const QRegularExpressionMatch offer =
        QRegularExpression(QStringLiteral("; Camera driver: ([a-z, ]+)\\.")).match(text);
    ASSERT_TRUE(offer.hasMatch());
    QStringList offered = offer.captured(1).split(QRegularExpression(QStringLiteral(",\\s*|\\s+or\\s+")));
    offered.sort();
    QStringList known = kCameraDrivers;
    known.sort();
    EXPECT_EQ(offered, known);

    for (const QString& name : offered) {
        writeIni(withValue(QStringLiteral("DRIVER"), name));
        Settings s;
        ASSERT_TRUE(load(s)) << name.toStdString();
        EXPECT_EQ(s.DRIVER, name);
    }
}

TEST_F(SettingsFileTest, Load_UnknownDriver_FailsAfterEveryOtherKeyWasRead)
{
    writeIni(withValue(QStringLiteral("DRIVER"), QStringLiteral("usb")));
    Settings s;

    EXPECT_FALSE(load(s));

    EXPECT_EQ(s.IS_SAVEPATH, "/home/user/series");
    EXPECT_EQ(s.DRIVER, "auto");
    EXPECT_EQ(logged(), QStringList{readError("CAMERA", "DRIVER")});
}

// Every checked key, just inside and just outside its range.
struct RangeCase {
    const char* section;
    const char* key;
    int value;
    bool accepted;
};

void PrintTo(const RangeCase& c, std::ostream* os)
{
    *os << "[" << c.section << "] " << c.key << "=" << c.value;
}

class SettingsFileRangeTest : public SettingsFileTest, public ::testing::WithParamInterface<RangeCase> {};

TEST_P(SettingsFileRangeTest, Load_ChecksTheRange)
{
    const RangeCase c = GetParam();
    writeIni(withValue(QLatin1String(c.key), QString::number(c.value)));
    Settings s;

    const bool ok = load(s);

    EXPECT_EQ(ok, c.accepted);
    if (c.accepted)
        EXPECT_TRUE(logged().isEmpty());
    else
        EXPECT_EQ(logged(), QStringList{readError(c.section, c.key)});
}

std::vector<RangeCase> rangeCases()
{
    struct Range {
        const char* section;
        const char* key;
        int min, max;
    };
    const Range ranges[] = {
        {"CAMERA", "DEFAULTSCALE", 0, 15},      {"FILE", "JPEGQTY", 10, 100},
        {"FILE", "STILL1XSAVE", 0, 1},          {"MEASURE", "CURRENTPROOFNO", 0, 19},
        {"MEASURE", "CROSSLINENUM", 1, 2},      {"MEASURE", "SCALETYPE", 0, 1},
        {"MEASURE", "SCALEPOSITION", 0, 4},     {"MEASURE", "NUMBEROFDECIMALS", 0, 8},
        {"MEASURE", "MEASUREFONTSIZE", 8, 20},  {"MEASURE", "ANGLECOMMANDMODE", 0, 1},
        {"MEASURE", "2POINTCOMMANDMODE", 0, 1}, {"MEASURE", "CIRCLEARCSELECT", 0, 1},
        {"MEASURE", "KEEPRESULT", 0, 1},        {"MEASURE", "2POINTAVERAGE", 0, 1},
    };
    std::vector<RangeCase> cases;
    for (const Range& r : ranges) {
        cases.push_back({r.section, r.key, r.min - 1, false});
        cases.push_back({r.section, r.key, r.min, true});
        cases.push_back({r.section, r.key, r.max, true});
        cases.push_back({r.section, r.key, r.max + 1, false});
    }
    // Only an upper bound: any short wait is taken as it is.
    cases.push_back({"ICUBE", "STILLWAITTIME", -32768, true});
    cases.push_back({"ICUBE", "STILLWAITTIME", 1000, true});
    cases.push_back({"ICUBE", "STILLWAITTIME", 1001, false});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(AllCheckedKeys, SettingsFileRangeTest, ::testing::ValuesIn(rangeCases()),
                         [](const ::testing::TestParamInfo<RangeCase>& info) {
                             const RangeCase& c = info.param;
                             return std::string(c.key) + "_" + (c.value < 0 ? "minus" : "") +
                                    std::to_string(std::abs(c.value));
                         });

// --- writing ---

TEST_F(SettingsFileTest, WriteIniFileData_ReplacesTheValueAndKeepsTheRest)
{
    writeIni(validIni);
    SettingsFile file(iniPath(), log);

    ASSERT_TRUE(
        file.WriteIniFileData(QStringLiteral("FILE"), QStringLiteral("JPEGQTY"), QStringLiteral("95")));

    EXPECT_EQ(iniText(), QString::fromUtf8(withValue(QStringLiteral("JPEGQTY"), QStringLiteral("95"))));
    EXPECT_TRUE(logged().isEmpty());
}

TEST_F(SettingsFileTest, WriteIniFileData_Failure_LogsAndReturnsFalse)
{
    SettingsFile file(dir.file(QStringLiteral("missing/Tavix.Ini")), log);

    EXPECT_FALSE(
        file.WriteIniFileData(QStringLiteral("FILE"), QStringLiteral("JPEGQTY"), QStringLiteral("95")));

    EXPECT_EQ(logged(), QStringList{"WriteIniFileData WritePrivateProfileString Error "
                                    "[Section]=FILE,[Key]=JPEGQTY,[Value]=95"});
}

TEST_F(SettingsFileTest, ExitWrites_KeysWithTrailingBlank_AreFoundAgainAtTheNextLoad)
{
    Settings s = loadValid();
    s.DEFAULTRESOLUTION = 4;
    s.STILLWAITTIME = 900;
    s.NUMBEROFIMAGES = 12;
    SettingsFile file(iniPath(), log);

    file.writeExitSettings(s, s.DEFAULTSCALE);
    file.writeIntervalSaveSettings(s);
    Settings again;
    ASSERT_TRUE(load(again));

    EXPECT_EQ(again.DEFAULTRESOLUTION, 4);
    EXPECT_EQ(again.STILLWAITTIME, 900);
    EXPECT_EQ(again.NUMBEROFIMAGES, 12);
    // The existing entries were replaced, not joined by second ones.
    EXPECT_EQ(iniText().count(QStringLiteral("DEFAULTRESOLUTION")), 1);
    EXPECT_EQ(iniText().count(QStringLiteral("STILLWAITTIME")), 1);
    EXPECT_EQ(iniText().count(QStringLiteral("NUMBEROFIMAGES")), 1);
}

TEST_F(SettingsFileTest, ExitWrites_KeepCommentsUnknownKeysAndOtherSections)
{
    Settings s = loadValid();
    s.JPEGQTY = 60;
    s.SCALEX = 12.5;
    s.IS_SAVEPATH = QStringLiteral("/elsewhere");
    SettingsFile file(iniPath(), log);

    file.writeExitSettings(s, 5);
    file.writeIntervalSaveSettings(s);

    QString expected = QString::fromUtf8(validIni);
    expected.replace(QStringLiteral("JPEGQTY=80"), QStringLiteral("JPEGQTY=60"))
        .replace(QStringLiteral("DEFAULTSCALE=3"), QStringLiteral("DEFAULTSCALE=5"))
        .replace(QStringLiteral("SCALEX=100"), QStringLiteral("SCALEX=12.5"))
        .replace(QStringLiteral("IS_SAVEPATH=/home/user/series"), QStringLiteral("IS_SAVEPATH=/elsewhere"));
    EXPECT_EQ(iniText(), expected);
}

TEST_F(SettingsFileTest, ExitWrites_DefaultScaleIsTheSelectedIndex)
{
    Settings s = loadValid();
    s.DEFAULTSCALE = 3;
    SettingsFile file(iniPath(), log);

    file.writeExitSettings(s, 11);

    Settings again;
    ASSERT_TRUE(load(again));
    EXPECT_EQ(again.DEFAULTSCALE, 11);
}

TEST_F(SettingsFileTest, ExitWrites_NumbersInTheirTextForms)
{
    Settings s = loadValid();
    s.JPEGQTY = 200;
    s.SCALEX = 0.000015;
    s.SCALEY = 1e20;
    s.CROSSLINECOLOR = -1;
    SettingsFile file(iniPath(), log);

    file.writeExitSettings(s, 0);

    const QString text = iniText();
    EXPECT_TRUE(text.contains(QStringLiteral("\r\nJPEGQTY=200\r\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("\r\nSCALEX=1.5E-05\r\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("\r\nSCALEY=1E+20\r\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("\r\nCROSSLINECOLOR=-1\r\n")));
}

TEST_F(SettingsFileTest, ExitWrites_LeaveTheKeysThatAreNeverWrittenBack)
{
    const Settings loaded = loadValid();
    Settings s = loaded;
    s.APPNAME = s.CAMERAFILTERNAME = s.CROSSBARFILTERNAME = s.GRPFILENAME = s.TEMPBITMAPFILE =
        QStringLiteral("x");
    s.GUIDANCEFILE = s.STRINGTABLEFILE = s.PROOFFILENAME = QStringLiteral("x");
    s.STILL1XSAVE = 0;
    s._2POINTAVERAGE = 0;
    s.DRIVER = QStringLiteral("icube");
    SettingsFile file(iniPath(), log);

    file.writeExitSettings(s, s.DEFAULTSCALE);
    file.writeIntervalSaveSettings(s);

    EXPECT_EQ(iniText(), QString::fromUtf8(validIni));
}

TEST_F(SettingsFileTest, ExitWrites_GoOnAfterAFailedKey_InTheirOrder)
{
    const Settings s = loadValid();
    SettingsFile file(dir.file(QStringLiteral("missing/Tavix.Ini")), log);

    file.writeExitSettings(s, 3);
    file.writeIntervalSaveSettings(s);

    const QStringList expectedKeys = {
        "[Section]=FILE,[Key]=JPEGQTY,[Value]=80",
        "[Section]=CAMERA,[Key]=DEFAULTSCALE,[Value]=3",
        "[Section]=MEASURE,[Key]=MEASURELINECOLOR1,[Value]=255",
        "[Section]=MEASURE,[Key]=MEASURELINECOLOR2,[Value]=65280",
        "[Section]=MEASURE,[Key]=MEASURELINECOLOR3,[Value]=16711680",
        "[Section]=MEASURE,[Key]=MEASUREVALUECOLOR1,[Value]=65535",
        "[Section]=MEASURE,[Key]=MEASUREVALUECOLOR2,[Value]=16777215",
        "[Section]=MEASURE,[Key]=CROSSLINENUM,[Value]=2",
        "[Section]=MEASURE,[Key]=CROSSLINECOLOR,[Value]=8421504",
        "[Section]=MEASURE,[Key]=SCALECOLOR,[Value]=16776960",
        "[Section]=MEASURE,[Key]=SCALEX,[Value]=100",
        "[Section]=MEASURE,[Key]=SCALEY,[Value]=0.5",
        "[Section]=MEASURE,[Key]=SCALETYPE,[Value]=1",
        "[Section]=MEASURE,[Key]=SCALEPOSITION,[Value]=3",
        "[Section]=MEASURE,[Key]=CURRENTPROOFNO,[Value]=2",
        "[Section]=MEASURE,[Key]=NUMBEROFDECIMALS,[Value]=3",
        "[Section]=MEASURE,[Key]=MEASUREFONTSIZE,[Value]=12",
        "[Section]=MEASURE,[Key]=ANGLECOMMANDMODE,[Value]=1",
        "[Section]=MEASURE,[Key]=2POINTCOMMANDMODE,[Value]=1",
        "[Section]=MEASURE,[Key]=CIRCLEARCSELECT,[Value]=1",
        "[Section]=MEASURE,[Key]=KEEPRESULT,[Value]=1",
        "[Section]=MEASURE,[Key]=EDGESNAP,[Value]=1",
        "[Section]=ICUBE,[Key]=DEFAULTRESOLUTION ,[Value]=2",
        "[Section]=ICUBE,[Key]=STILLWAITTIME ,[Value]=300",
        "[Section]=INTERVALSAVE,[Key]=INTERVALTIME,[Value]=10",
        "[Section]=INTERVALSAVE,[Key]=NUMBEROFIMAGES ,[Value]=5",
        "[Section]=INTERVALSAVE,[Key]=IS_MODE,[Value]=1",
        "[Section]=INTERVALSAVE,[Key]=IS_SAVEPATH,[Value]=/home/user/series",
    };
    QStringList expected;
    for (const QString& keys : expectedKeys)
        expected << QStringLiteral("WriteIniFileData WritePrivateProfileString Error ") + keys;
    EXPECT_EQ(logged(), expected);
}

TEST_F(SettingsFileTest, RoundTrip_EveryWrittenVariableIsLoadedAgain)
{
    Settings s = loadValid();
    s.JPEGQTY = 95;
    s.MEASURELINECOLOR = {0, 1, 2, 3};
    s.MEASUREVALUECOLOR = {0, 4, 5};
    s.CROSSLINENUM = 1;
    s.CROSSLINECOLOR = 6;
    s.SCALECOLOR = 7;
    s.SCALEX = 0.125;
    s.SCALEY = 2.75;
    s.SCALETYPE = 0;
    s.SCALEPOSITION = 4;
    s.CURRENTPROOFNO = 19;
    s.NUMBEROFDECIMALS = 8;
    s.MEASUREFONTSIZE = 20;
    s.ANGLECOMMANDMODE = 0;
    s._2POINTCOMMANDMODE = 0;
    s.CIRCLEARCSELECT = 0;
    s.KEEPRESULT = 0;
    s.DEFAULTRESOLUTION = -1;
    s.STILLWAITTIME = 1000;
    s.INTERVALTIME = 86400;
    s.NUMBEROFIMAGES = 999;
    s.IS_MODE = 2;
    s.IS_SAVEPATH = QStringLiteral("/media/Bilder für später");
    SettingsFile file(iniPath(), log);

    file.writeExitSettings(s, 15);
    file.writeIntervalSaveSettings(s);
    Settings again;
    ASSERT_TRUE(load(again));

    EXPECT_EQ(again.JPEGQTY, s.JPEGQTY);
    EXPECT_EQ(again.DEFAULTSCALE, 15);
    EXPECT_EQ(again.MEASURELINECOLOR, s.MEASURELINECOLOR);
    EXPECT_EQ(again.MEASUREVALUECOLOR, s.MEASUREVALUECOLOR);
    EXPECT_EQ(again.CROSSLINENUM, s.CROSSLINENUM);
    EXPECT_EQ(again.CROSSLINECOLOR, s.CROSSLINECOLOR);
    EXPECT_EQ(again.SCALECOLOR, s.SCALECOLOR);
    EXPECT_EQ(again.SCALEX, s.SCALEX);
    EXPECT_EQ(again.SCALEY, s.SCALEY);
    EXPECT_EQ(again.SCALETYPE, s.SCALETYPE);
    EXPECT_EQ(again.SCALEPOSITION, s.SCALEPOSITION);
    EXPECT_EQ(again.CURRENTPROOFNO, s.CURRENTPROOFNO);
    EXPECT_EQ(again.NUMBEROFDECIMALS, s.NUMBEROFDECIMALS);
    EXPECT_EQ(again.MEASUREFONTSIZE, s.MEASUREFONTSIZE);
    EXPECT_EQ(again.ANGLECOMMANDMODE, s.ANGLECOMMANDMODE);
    EXPECT_EQ(again._2POINTCOMMANDMODE, s._2POINTCOMMANDMODE);
    EXPECT_EQ(again.CIRCLEARCSELECT, s.CIRCLEARCSELECT);
    EXPECT_EQ(again.KEEPRESULT, s.KEEPRESULT);
    EXPECT_EQ(again.DEFAULTRESOLUTION, s.DEFAULTRESOLUTION);
    EXPECT_EQ(again.STILLWAITTIME, s.STILLWAITTIME);
    EXPECT_EQ(again.INTERVALTIME, s.INTERVALTIME);
    EXPECT_EQ(again.NUMBEROFIMAGES, s.NUMBEROFIMAGES);
    EXPECT_EQ(again.IS_MODE, s.IS_MODE);
    EXPECT_EQ(again.IS_SAVEPATH, s.IS_SAVEPATH);
    EXPECT_TRUE(logged().isEmpty());
}

}  // namespace
