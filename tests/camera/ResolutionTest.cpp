#include "camera/Resolution.h"

#include <gtest/gtest.h>
#include <QSet>

using namespace tavix;

TEST(Resolution, NamesAndSizesOfTheTable)
{
    EXPECT_EQ(Resolution::name(0), QStringLiteral("320x240"));
    EXPECT_EQ(Resolution::name(8), QStringLiteral("2592x1944"));
    EXPECT_EQ(Resolution::size(9), QSize(3840, 2748));
    EXPECT_EQ(Resolution::name(10), QStringLiteral("1920x1200"));
}

TEST(Resolution, Index11_IsNotSupportedAndZeroByZero)
{
    EXPECT_EQ(Resolution::name(11), QStringLiteral("not supported"));
    EXPECT_EQ(Resolution::size(11), QSize(0, 0));
    EXPECT_EQ(Resolution::name(-1), QStringLiteral("not supported"));
}

TEST(Resolution, IndexOf_TableSizesKeepTheirIndices)
{
    for (int i = 0; i <= 10; ++i)
        EXPECT_EQ(Resolution::indexOf(Resolution::size(i)), i) << i;
}

TEST(Resolution, IndexOf_CommonSizesHaveFixedIndicesFromTwelve)
{
    EXPECT_EQ(Resolution::indexOf(QSize(1280, 720)), 12);
    EXPECT_EQ(Resolution::indexOf(QSize(1920, 1080)), 13);
    EXPECT_EQ(Resolution::name(13), QStringLiteral("1920x1080"));
    EXPECT_EQ(Resolution::size(12), QSize(1280, 720));
    // Index 11 stays "not supported" whatever sizes have been seen.
    EXPECT_EQ(Resolution::name(11), QStringLiteral("not supported"));
}

TEST(Resolution, IndexOf_EveryCommonSizeIsNamedAndUniqueAndNotInTheTable)
{
    QSet<int> seen;
    for (int i = 12; i < 1000; ++i) {
        const QSize s = Resolution::size(i);
        if (s.isEmpty())
            continue;
        EXPECT_EQ(Resolution::indexOf(s), i) << i;
        EXPECT_FALSE(seen.contains(s.width() * 100000 + s.height())) << i;
        seen.insert(s.width() * 100000 + s.height());
    }
    EXPECT_GE(seen.size(), 40);
}

TEST(Resolution, IndexOf_OtherSizesGetAStableComputedIndex)
{
    const int a = Resolution::indexOf(QSize(1234, 567));
    EXPECT_GE(a, 1000);
    EXPECT_LE(a, 31999);
    EXPECT_EQ(Resolution::indexOf(QSize(1234, 567)), a);
    EXPECT_EQ(Resolution::name(a), QStringLiteral("1234x567"));
    // The rule depends on the size alone: the index is the same in any run in
    // which no other size met it first.
    EXPECT_EQ(a, 1000 + static_cast<int>((1234ull * 4099ull + 567ull) % 31000ull));
}

TEST(Resolution, IndexOf_TwoSizesThatMeetGetDifferentIndices)
{
    // 1x10 and 1x31010 land on the same slot.
    const int a = Resolution::indexOf(QSize(1, 10));
    const int b = Resolution::indexOf(QSize(1, 31010));
    EXPECT_NE(a, b);
    EXPECT_EQ(Resolution::size(a), QSize(1, 10));
    EXPECT_EQ(Resolution::size(b), QSize(1, 31010));
}

TEST(Resolution, IndexOf_EmptySizeIsMinusOne)
{
    EXPECT_EQ(Resolution::indexOf(QSize(0, 480)), -1);
    EXPECT_EQ(Resolution::indexOf(QSize(-1, -1)), -1);
}

TEST(Resolution, UnseenComputedIndexIsNotSupported)
{
    EXPECT_EQ(Resolution::name(31998), QStringLiteral("not supported"));
}
