#include "common/ClassicColor.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

struct ColorCase {
    qint32 value;
    int red, green, blue;
};

class ClassicColorTable : public ::testing::TestWithParam<ColorCase> {};

}  // namespace

TEST_P(ClassicColorTable, ToQColor_PutsRedInTheLowByte)
{
    const ColorCase c = GetParam();

    const QColor color = ClassicColor::toQColor(c.value);

    EXPECT_EQ(color.red(), c.red);
    EXPECT_EQ(color.green(), c.green);
    EXPECT_EQ(color.blue(), c.blue);
    EXPECT_EQ(color.alpha(), 255);
}

TEST_P(ClassicColorTable, FromQColor_GivesTheRgbLongBack)
{
    const ColorCase c = GetParam();

    EXPECT_EQ(ClassicColor::fromQColor(QColor(c.red, c.green, c.blue)), c.value);
}

INSTANTIATE_TEST_SUITE_P(Table, ClassicColorTable,
                         ::testing::Values(ColorCase{0, 0, 0, 0}, ColorCase{255, 255, 0, 0},
                                           ColorCase{65280, 0, 255, 0}, ColorCase{16711680, 0, 0, 255},
                                           ColorCase{16777215, 255, 255, 255},
                                           ColorCase{0x00336699, 0x99, 0x66, 0x33},
                                           ColorCase{1 + 256 * 2 + 65536 * 3, 1, 2, 3}));

TEST(ClassicColor, ToQColor_IgnoresTheHighByte)
{
    const QColor color = ClassicColor::toQColor(static_cast<qint32>(0x8000000Fu));

    EXPECT_EQ(color, QColor(15, 0, 0));
}

TEST(ClassicColor, FromQColor_DropsAlpha)
{
    EXPECT_EQ(ClassicColor::fromQColor(QColor(10, 20, 30, 40)), 10 + 256 * 20 + 65536 * 30);
}

TEST(ClassicColor, FromQColor_ConvertsOtherColourModels)
{
    EXPECT_EQ(ClassicColor::fromQColor(QColor::fromHsv(0, 255, 255)), 255);
}
