#include "TempDir.h"
#include "common/Settings.h"
#include "files/IntervalSave.h"

#include <gtest/gtest.h>

using namespace tavix;
using tavix::test::TempDir;
using Box = IntervalSave::ConfigCheck::Box;

namespace {

struct ConfigCase {
    const char* minutes;
    const char* seconds;
    const char* count;
    Box failed;
    qint32 text;
    qint32 interval;
};

void PrintTo(const ConfigCase& c, std::ostream* os)
{
    *os << '"' << c.minutes << "\" min \"" << c.seconds << "\" s, \"" << c.count << "\" pictures";
}

class IntervalSaveConfig : public ::testing::TestWithParam<ConfigCase> {};

}  // namespace

TEST(IntervalSave, NinetyNineMinutesOneSecond_IsRefused_OnTheMinutes)
{
    const auto c = IntervalSave::checkConfig(QStringLiteral("99"), QStringLiteral("1"), QStringLiteral("10"));
    EXPECT_EQ(c.failed, Box::Minutes);
    EXPECT_EQ(c.text, 30006);
    EXPECT_EQ(c.title, 30007);
}

TEST(IntervalSave, ZeroMinutesTwoSeconds_IsRefused)
{
    const auto c = IntervalSave::checkConfig(QStringLiteral("0"), QStringLiteral("2"), QStringLiteral("10"));
    EXPECT_EQ(c.failed, Box::Minutes);
    EXPECT_EQ(c.text, 30006);
    EXPECT_EQ(c.title, 30007);
}

TEST(IntervalSave, ThreeSecondsTwoPictures_IsTaken)
{
    const auto c = IntervalSave::checkConfig(QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("2"));
    EXPECT_EQ(c.failed, Box::None);
    EXPECT_EQ(c.interval, 3);
    EXPECT_EQ(c.count, 2);
}

TEST_P(IntervalSaveConfig, ChecksEachBox)
{
    const ConfigCase& k = GetParam();
    const auto c = IntervalSave::checkConfig(QString::fromUtf8(k.minutes), QString::fromUtf8(k.seconds),
                                             QString::fromUtf8(k.count));
    EXPECT_EQ(c.failed, k.failed);
    EXPECT_EQ(c.text, k.text);
    if (k.failed == Box::None)
        EXPECT_EQ(c.interval, k.interval);
    else
        EXPECT_EQ(c.title, k.text + 1);
}

INSTANTIATE_TEST_SUITE_P(Boxes, IntervalSaveConfig,
                         ::testing::Values(ConfigCase{"99", "0", "999", Box::None, 0, 5940},
                                           ConfigCase{"1", "5", "2", Box::None, 0, 65},
                                           ConfigCase{" 2 ", "00", "10", Box::None, 0, 120},
                                           ConfigCase{"", "5", "10", Box::Minutes, 30006, 0},
                                           ConfigCase{"1.", "5", "10", Box::Minutes, 30006, 0},
                                           ConfigCase{"-1", "5", "10", Box::Minutes, 30006, 0},
                                           ConfigCase{"100", "0", "10", Box::Minutes, 30006, 0},
                                           ConfigCase{"a", "5", "10", Box::Minutes, 30006, 0},
                                           ConfigCase{"1", "60", "10", Box::Seconds, 30006, 0},
                                           ConfigCase{"1", "", "10", Box::Seconds, 30006, 0},
                                           ConfigCase{"1", "0.5", "10", Box::Seconds, 30006, 0},
                                           ConfigCase{"1", "5", "1", Box::Count, 30008, 0},
                                           ConfigCase{"1", "5", "1000", Box::Count, 30008, 0},
                                           ConfigCase{"1", "5", "", Box::Count, 30008, 0},
                                           ConfigCase{"1", "5", "5.", Box::Count, 30008, 0},
                                           // The interval is checked before the count.
                                           ConfigCase{"0", "1", "1", Box::Minutes, 30006, 0}));

TEST(IntervalSave, StatusText_At65SecondsRemaining)
{
    EXPECT_EQ(IntervalSave::statusText(3, 10, 65),
              QStringLiteral("003/010 saved. The next picture is saved in 1min05sec."));
}

TEST(IntervalSave, StatusText_At5SecondsRemaining)
{
    EXPECT_EQ(IntervalSave::statusText(12, 999, 5),
              QStringLiteral("012/999 saved. The next picture is saved in 0min05sec."));
}

TEST(IntervalSave, StatusText_LongIntervalHasUnpaddedMinutes)
{
    EXPECT_EQ(IntervalSave::statusText(1, 2, 5940),
              QStringLiteral("001/002 saved. The next picture is saved in 99min00sec."));
}

TEST(IntervalSave, SeriesName_CellBmp_GivesCell001Bmp)
{
    const auto n = IntervalSave::splitSeriesName(QStringLiteral("/data/cell.bmp"));
    EXPECT_EQ(n.base, QStringLiteral("/data/cell"));
    EXPECT_EQ(n.extension, QStringLiteral(".bmp"));
    EXPECT_EQ(IntervalSave::seriesFile(n.base, 1, n.extension), QStringLiteral("/data/cell_001.bmp"));
    EXPECT_EQ(IntervalSave::seriesFile(n.base, 999, n.extension), QStringLiteral("/data/cell_999.bmp"));
}

TEST(IntervalSave, SeriesName_WithAShortExtension_LosesItsLastFourCharacters)
{
    const auto n = IntervalSave::splitSeriesName(QStringLiteral("/data/cell.tf"));
    EXPECT_EQ(n.base, QStringLiteral("/data/cel"));
    EXPECT_EQ(n.extension, QStringLiteral("l.tf"));
    EXPECT_EQ(IntervalSave::seriesFile(n.base, 7, n.extension), QStringLiteral("/data/cel_007l.tf"));
}

TEST(IntervalSave, QuickNumber_AfterOnly0005_Is6)
{
    TempDir dir;
    dir.write(QStringLiteral("0005.jpg"), "x");
    dir.write(QStringLiteral("0007.bmp"), "x");  // only JPEG files count
    EXPECT_EQ(IntervalSave::nextQuickNumber(IntervalSave::quickFolder(dir.path())), 6);
}

TEST(IntervalSave, QuickNumber_InAnEmptyFolder_Is1)
{
    TempDir dir;
    EXPECT_EQ(IntervalSave::nextQuickNumber(IntervalSave::quickFolder(dir.path())), 1);
}

TEST(IntervalSave, QuickNumber_With9999_IsBeyondTheRange)
{
    TempDir dir;
    dir.write(QStringLiteral("0002.jpg"), "x");
    dir.write(QStringLiteral("9999.jpg"), "x");
    EXPECT_EQ(IntervalSave::nextQuickNumber(IntervalSave::quickFolder(dir.path())),
              IntervalSave::kMaxQuickNumber + 1);
}

TEST(IntervalSave, QuickFolder_IsTrimmedAndEndsInASeparator)
{
    EXPECT_EQ(IntervalSave::quickFolder(QStringLiteral("  /data/pics ")), QStringLiteral("/data/pics/"));
    EXPECT_EQ(IntervalSave::quickFolder(QStringLiteral("/data/pics/")), QStringLiteral("/data/pics/"));
    EXPECT_EQ(IntervalSave::quickFolder(QStringLiteral("C:\\pics")), QStringLiteral("C:/pics/"));
    EXPECT_EQ(IntervalSave::quickNumberText(42), QStringLiteral("0042"));
}

TEST(IntervalSave, ForceRanges_KeepsIntervalAndCountInTheirRanges)
{
    Settings s;
    s.INTERVALTIME = 1;
    s.NUMBEROFIMAGES = 5000;
    IntervalSave::forceRanges(s);
    EXPECT_EQ(s.INTERVALTIME, 3);
    EXPECT_EQ(s.NUMBEROFIMAGES, 999);
    s.INTERVALTIME = 6000;
    s.NUMBEROFIMAGES = 0;
    IntervalSave::forceRanges(s);
    EXPECT_EQ(s.INTERVALTIME, 5940);
    EXPECT_EQ(s.NUMBEROFIMAGES, 2);
}
