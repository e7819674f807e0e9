#include "calib/ProofTable.h"
#include "common/RunError.h"

#include "PrintQt.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <QDir>
#include <QLocale>
#include <cmath>
#include <csignal>
#include <cstring>
#include <limits>
#include <random>

using namespace tavix;
using tavix::test::TempDir;

namespace {

std::uint64_t bitsOf(double v)
{
    std::uint64_t b = 0;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

// A table whose every field differs from what a missing line gives.
ProofTable filledTable()
{
    ProofTable table;
    for (int i = 0; i < ProofTable::Size; ++i) {
        ProofEntry& e = table.at(i);
        e.Name = QStringLiteral("Set %1").arg(i);
        e.XFactor = 0.5 + i;
        e.YFactor = 0.25 + i;
        e.Unit = QStringLiteral("mm");
        e.XValue = 10 + i;
        e.YValue = 7;
    }
    return table;
}

QByteArray lines(int count)
{
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text +=
            "\"Line" + QByteArray::number(i + 1) + "\",.5,.25,\"MIC\",100," + QByteArray::number(i) + "\r\n";
    return text;
}

}  // namespace

// --- ProofEntry ---

struct UsableCase {
    double x, y;
    bool usable;
};
class ProofEntryUsable : public ::testing::TestWithParam<UsableCase> {};

TEST_P(ProofEntryUsable, Usable_NeedsBothFactors)
{
    ProofEntry e;
    e.XFactor = GetParam().x;
    e.YFactor = GetParam().y;

    EXPECT_EQ(e.usable(), GetParam().usable);
}

INSTANTIATE_TEST_SUITE_P(Table, ProofEntryUsable,
                         ::testing::Values(UsableCase{0, 0, false}, UsableCase{0.5, 0, false},
                                           UsableCase{0, 0.5, false}, UsableCase{0.5, 0.5, true},
                                           UsableCase{-1, 2, true}));

// --- the table ---

TEST(ProofTable, NewTable_HoldsTheTwentyDefaultEntries)
{
    const ProofTable table;

    const QStringList names = table.names();

    ASSERT_EQ(names.size(), 20);
    EXPECT_EQ(names.front(), QStringLiteral("Proof1"));
    EXPECT_EQ(names.back(), QStringLiteral("Proof20"));
    EXPECT_FALSE(table.at(0).usable());
}

TEST(ProofTable, At_ThrowsSubscriptOutOfRange_OutsideZeroToNineteen)
{
    ProofTable table;

    auto errorAt = [&](int index) {
        try {
            table.at(index);
        } catch (const RunError& e) {
            return e.number();
        }
        return 0;
    };

    EXPECT_EQ(errorAt(-1), err::SubscriptOutOfRange);
    EXPECT_EQ(errorAt(20), err::SubscriptOutOfRange);
    EXPECT_EQ(errorAt(19), 0);
}

// --- reading ---

TEST(ProofTable, ReadProofData_FillsDefaults_WhenFileHasThreeLines)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("Proof.dat"), lines(3));
    ProofTable table = filledTable();

    const bool ok = table.ReadProofData(path);

    ASSERT_TRUE(ok);
    EXPECT_EQ(table.at(2).Name, QStringLiteral("Line3"));
    for (int i = 3; i < ProofTable::Size; ++i) {
        const ProofEntry& e = table.at(i);
        EXPECT_EQ(e.Name, QStringLiteral("Proof%1").arg(i + 1));
        EXPECT_EQ(e.Unit, QString());
        EXPECT_EQ(e.XFactor, 0);
        EXPECT_EQ(e.YFactor, 0);
        EXPECT_EQ(e.XValue, 0);
    }
}

TEST(ProofTable, ReadProofData_LeavesYValueOfMissingEntries)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("Proof.dat"), lines(3));
    ProofTable table = filledTable();

    ASSERT_TRUE(table.ReadProofData(path));

    EXPECT_EQ(table.at(2).YValue, 2);
    EXPECT_EQ(table.at(3).YValue, 7);
    EXPECT_EQ(table.at(19).YValue, 7);
}

TEST(ProofTable, ReadProofData_GivesAllDefaults_WhenFileIsEmpty)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("Proof.dat"), QByteArray());
    ProofTable table = filledTable();

    ASSERT_TRUE(table.ReadProofData(path));

    EXPECT_EQ(table.at(0).Name, QStringLiteral("Proof1"));
    EXPECT_EQ(table.at(0).XFactor, 0);
    EXPECT_EQ(table.at(19).Name, QStringLiteral("Proof20"));
}

TEST(ProofTable, ReadProofData_ReadsHandWrittenFile_WithQuotedAndBareFieldsAndLfEnds)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("Proof.dat"),
                                   "\"Stage 10x\",.5,.5,\"MIC\",100,100\n"
                                   "Stage 20x , 0.25 ,.125, mm ,50,25\n"
                                   "\"Lens, 40x\",1.5E-05,2e-5,\"cm, fine\",3,-4\n"
                                   "\"\",0,0,\"\",0,0\n");
    ProofTable table = filledTable();

    ASSERT_TRUE(table.ReadProofData(path));

    const ProofEntry& a = table.at(0);
    EXPECT_EQ(a.Name, QStringLiteral("Stage 10x"));
    EXPECT_EQ(a.XFactor, 0.5);
    EXPECT_EQ(a.YFactor, 0.5);
    EXPECT_EQ(a.Unit, QStringLiteral("MIC"));
    EXPECT_EQ(a.XValue, 100);
    EXPECT_EQ(a.YValue, 100);
    const ProofEntry& b = table.at(1);
    EXPECT_EQ(b.Name, QStringLiteral("Stage 20x"));
    EXPECT_EQ(b.XFactor, 0.25);
    EXPECT_EQ(b.YFactor, 0.125);
    EXPECT_EQ(b.Unit, QStringLiteral("mm"));
    EXPECT_EQ(b.XValue, 50);
    EXPECT_EQ(b.YValue, 25);
    const ProofEntry& c = table.at(2);
    EXPECT_EQ(c.Name, QStringLiteral("Lens, 40x"));
    EXPECT_EQ(c.XFactor, 1.5e-5);
    EXPECT_EQ(c.YFactor, 2e-5);
    EXPECT_EQ(c.Unit, QStringLiteral("cm, fine"));
    EXPECT_EQ(c.XValue, 3);
    EXPECT_EQ(c.YValue, -4);
    EXPECT_EQ(table.at(3).Name, QString());
    EXPECT_EQ(table.at(4).Name, QStringLiteral("Proof5"));
}

TEST(ProofTable, ReadProofData_AcceptsCrLfEnds)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("Proof.dat"), lines(20));
    ProofTable table;

    ASSERT_TRUE(table.ReadProofData(path));

    EXPECT_EQ(table.at(0).Name, QStringLiteral("Line1"));
    EXPECT_EQ(table.at(19).Name, QStringLiteral("Line20"));
    EXPECT_EQ(table.at(19).YValue, 19);
    EXPECT_EQ(table.at(19).Unit, QStringLiteral("MIC"));
}

TEST(ProofTable, ReadProofData_IgnoresLinesAfterTheTwentieth)
{
    TempDir dir;
    const QString path =
        dir.write(QStringLiteral("Proof.dat"), lines(20) + "\"Extra\",1,1,\"mm\",1,1\r\nnot a record\r\n");
    ProofTable table;

    const bool ok = table.ReadProofData(path);

    EXPECT_TRUE(ok);
    EXPECT_EQ(table.at(19).Name, QStringLiteral("Line20"));
    EXPECT_FALSE(table.names().contains(QStringLiteral("Extra")));
}

TEST(ProofTable, ReadProofData_AcceptsEmptyNumberFieldsAsZero)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("Proof.dat"), "\"A\",,,\"mm\",,\n");
    ProofTable table = filledTable();

    ASSERT_TRUE(table.ReadProofData(path));

    EXPECT_EQ(table.at(0).Name, QStringLiteral("A"));
    EXPECT_EQ(table.at(0).XFactor, 0);
    EXPECT_EQ(table.at(0).YValue, 0);
    EXPECT_EQ(table.at(0).Unit, QStringLiteral("mm"));
}

TEST(ProofTable, ReadProofData_ReadsUtf8Text_AndSkipsAByteOrderMark)
{
    TempDir dir;
    const QString path =
        dir.write(QStringLiteral("Proof.dat"), "\xEF\xBB\xBF\"Objektiv \xC2\xB5\",1,1,\"\xC2\xB5m\",1,1\r\n");
    ProofTable table;

    ASSERT_TRUE(table.ReadProofData(path));

    EXPECT_EQ(table.at(0).Name, QStringLiteral("Objektiv \u00B5"));
    EXPECT_EQ(table.at(0).Unit, QStringLiteral("\u00B5m"));
}

TEST(ProofTable, ReadProofData_ReturnsFalse_WhenFileIsMissing)
{
    TempDir dir;
    ProofTable table;

    const bool ok = table.ReadProofData(dir.file(QStringLiteral("Missing.dat")));

    EXPECT_FALSE(ok);
    EXPECT_EQ(table.lastError(), err::FileNotFound);
}

TEST(ProofTable, ReadProofData_ReturnsFalse_WhenPathIsAFolder)
{
    TempDir dir;
    ProofTable table;

    const bool ok = table.ReadProofData(dir.path());

    EXPECT_FALSE(ok);
    EXPECT_EQ(table.lastError(), err::PathFileAccess);
}

struct MalformedCase {
    const char* name;
    const char* text;
    int error;
};
class ProofTableMalformed : public ::testing::TestWithParam<MalformedCase> {};

TEST_P(ProofTableMalformed, ReadProofData_ReturnsFalseAndKeepsTable_WhenFileIsMalformed)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("Proof.dat"), GetParam().text);
    ProofTable table = filledTable();
    const ProofTable before = table;

    const bool ok = table.ReadProofData(path);

    EXPECT_FALSE(ok);
    EXPECT_EQ(table.lastError(), GetParam().error);
    EXPECT_EQ(table.entries(), before.entries());
}

INSTANTIATE_TEST_SUITE_P(
    Table, ProofTableMalformed,
    ::testing::Values(
        MalformedCase{"FiveFields", "\"A\",1,1,\"MIC\",1\r\n", err::InputPastEnd},
        MalformedCase{"CutSecondRecord", "\"A\",1,1,\"MIC\",1,1\r\n\"B\",1\r\n", err::InputPastEnd},
        MalformedCase{"FactorNotANumber", "\"A\",x,1,\"MIC\",1,1\r\n", err::TypeMismatch},
        MalformedCase{"YFactorWithText", "\"A\",1,2mm,\"MIC\",1,1\r\n", err::TypeMismatch},
        MalformedCase{"ValueNotANumber", "\"A\",1,1,\"MIC\",1,abc\r\n", err::TypeMismatch},
        MalformedCase{"FactorOutOfRange", "\"A\",1E999,1,\"MIC\",1,1\r\n", err::TypeMismatch},
        MalformedCase{"SevenFieldsShiftTheNext", "\"A\",1,1,\"MIC\",1,1,9\r\n\"B\",1,1,\"MIC\",1,1\r\n",
                      err::TypeMismatch}),
    [](const auto& info) { return std::string(info.param.name); });

// --- writing ---

TEST(ProofTable, Write_WritesTheExampleLineExactly)
{
    TempDir dir;
    ProofTable table;
    table.at(0) = ProofEntry{QStringLiteral("Proof1"), 0.5, 0.5, QStringLiteral("MIC"), 100, 100};

    ASSERT_TRUE(table.write(dir.file(QStringLiteral("Proof.dat"))));

    const QByteArray text = dir.read(QStringLiteral("Proof.dat"));
    EXPECT_TRUE(text.startsWith("\"Proof1\",.5,.5,\"MIC\",100,100\r\n\"Proof2\",0,0,\"\",0,0\r\n"))
        << text.left(80).toStdString();
}

TEST(ProofTable, Write_WritesTwentyCrLfLines)
{
    TempDir dir;
    const ProofTable table = filledTable();

    ASSERT_TRUE(table.write(dir.file(QStringLiteral("Proof.dat"))));

    const QByteArray text = dir.read(QStringLiteral("Proof.dat"));
    EXPECT_EQ(text.count('\n'), 20);
    EXPECT_EQ(text.count("\r\n"), 20);
    EXPECT_TRUE(text.endsWith("\r\n"));
    EXPECT_EQ(text.split('\n')[19], QByteArray("\"Set 19\",19.5,19.25,\"mm\",29,7\r"));
}

TEST(ProofTable, Write_ReplacesTheWholeOldFile)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("Proof.dat"), lines(20) + lines(20));
    ProofTable table;

    ASSERT_TRUE(table.write(path));

    EXPECT_EQ(dir.read(QStringLiteral("Proof.dat")), table.toFileText());
    EXPECT_EQ(dir.read(QStringLiteral("Proof.dat")).count('\n'), 20);
}

TEST(ProofTable, Write_WritesUtf8)
{
    TempDir dir;
    ProofTable table;
    table.at(0).Unit = QStringLiteral("\u00B5m");

    ASSERT_TRUE(table.write(dir.file(QStringLiteral("Proof.dat"))));

    EXPECT_TRUE(dir.read(QStringLiteral("Proof.dat")).startsWith("\"Proof1\",0,0,\"\xC2\xB5m\",0,0\r\n"));
}

TEST(ProofTable, Write_UsesAPointWhateverTheLocale)
{
    TempDir dir;
    ProofTable table;
    table.at(0).XFactor = 1.25;
    const QLocale saved;
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));

    const bool ok = table.write(dir.file(QStringLiteral("Proof.dat")));

    QLocale::setDefault(saved);
    ASSERT_TRUE(ok);
    EXPECT_TRUE(dir.read(QStringLiteral("Proof.dat")).startsWith("\"Proof1\",1.25,0,\"\",0,0\r\n"));
}

TEST(ProofTable, Write_KeepsEachEntryOnItsLine_WhenTextHoldsQuotesOrLineBreaks)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("Proof.dat"));
    ProofTable table;
    table.at(0).Name = QStringLiteral("Say \"10x\", then\r\nmore");
    table.at(0).Unit = QStringLiteral("m\"m");
    table.at(1).Name = QStringLiteral("Next");

    ASSERT_TRUE(table.write(path));
    ProofTable back;
    ASSERT_TRUE(back.ReadProofData(path));

    EXPECT_EQ(back.at(0).Name, QStringLiteral("Say '10x', then  more"));
    EXPECT_EQ(back.at(0).Unit, QStringLiteral("m'm"));
    EXPECT_EQ(back.at(1).Name, QStringLiteral("Next"));
    EXPECT_EQ(dir.read(QStringLiteral("Proof.dat")).count('\n'), 20);
}

TEST(ProofTable, WriteThenRead_GivesTheSameTable)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("Proof.dat"));
    ProofTable table = filledTable();
    table.at(4).Name = QStringLiteral("Lens, 40x \u00B5");
    table.at(4).Unit = QStringLiteral(" cm ");
    table.at(5).Name = QString();

    ASSERT_TRUE(table.write(path));
    ProofTable back;
    ASSERT_TRUE(back.ReadProofData(path));

    EXPECT_EQ(back.entries(), table.entries());
}

TEST(ProofTable, WriteThenRead_IsBitIdenticalInEveryNumber_ForRandomDoubles)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("Proof.dat"));
    std::mt19937_64 random(4711);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_int_distribution<int> decade(-330, 308);
    auto nextValue = [&](int k) {
        for (;;) {
            double v = 0;
            switch (k % 4) {
                case 0: {
                    const std::uint64_t bits = random();
                    std::memcpy(&v, &bits, sizeof v);
                    break;
                }
                case 1:
                    v = unit(random) * std::pow(10.0, decade(random));
                    break;
                case 2:
                    v = unit(random) * 500.0;
                    break;
                default:
                    v = std::numeric_limits<double>::denorm_min() * static_cast<double>(random() % 5000 + 1);
                    break;
            }
            if (std::isfinite(v) && v != 0)
                return v;
        }
    };

    for (int round = 0; round < 150; ++round) {
        ProofTable table;
        int k = round;
        for (ProofEntry& e : table.entries()) {
            e.XFactor = nextValue(k++);
            e.YFactor = nextValue(k++);
            e.XValue = nextValue(k++);
            e.YValue = nextValue(k++);
        }

        ASSERT_TRUE(table.write(path));
        ProofTable back;
        ASSERT_TRUE(back.ReadProofData(path));

        for (int i = 0; i < ProofTable::Size; ++i) {
            const ProofEntry& a = table.at(i);
            const ProofEntry& b = back.at(i);
            ASSERT_EQ(bitsOf(b.XFactor), bitsOf(a.XFactor)) << a.XFactor;
            ASSERT_EQ(bitsOf(b.YFactor), bitsOf(a.YFactor)) << a.YFactor;
            ASSERT_EQ(bitsOf(b.XValue), bitsOf(a.XValue)) << a.XValue;
            ASSERT_EQ(bitsOf(b.YValue), bitsOf(a.YValue)) << a.YValue;
        }
    }
}

TEST(ProofTable, Write_ReturnsFalse_WhenTheFolderDoesNotExist)
{
    TempDir dir;
    const ProofTable table;

    const bool ok = table.write(dir.file(QStringLiteral("missing/Proof.dat")));

    EXPECT_FALSE(ok);
    EXPECT_EQ(table.lastError(), err::PathNotFound);
    EXPECT_FALSE(dir.exists(QStringLiteral("missing")));
}

TEST(ProofTable, Write_ReturnsFalseAndKeepsTheOldFile_WhenTheBytesCannotBeWritten)
{
    TempDir dir;
    const QByteArray old = lines(20);
    const QString path = dir.write(QStringLiteral("Proof.dat"), old);
    const ProofTable table = filledTable();
    // A file-size limit stops the write even for root, who ignores permissions.
    rlimit saved{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    rlimit small = saved;
    small.rlim_cur = 64;
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);

    const bool ok = table.write(path);

    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);
    EXPECT_FALSE(ok);
    EXPECT_EQ(table.lastError(), err::DiskFull);
    EXPECT_EQ(dir.read(QStringLiteral("Proof.dat")), old);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("Proof.dat")});
}

TEST(ProofTable, Write_ReturnsFalseAndKeepsTheOldFile_WhenANumberIsNotFinite)
{
    TempDir dir;
    const QByteArray old = lines(20);
    const QString path = dir.write(QStringLiteral("Proof.dat"), old);
    ProofTable table;
    table.at(7).YFactor = std::numeric_limits<double>::infinity();

    const bool ok = table.write(path);

    EXPECT_FALSE(ok);
    EXPECT_EQ(table.lastError(), err::Overflow);
    EXPECT_EQ(dir.read(QStringLiteral("Proof.dat")), old);
}
