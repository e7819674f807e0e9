#include "common/MainLayout.h"
#include "common/Twips.h"

#include <gtest/gtest.h>

using namespace tavix;

class MainLayoutAtSize : public ::testing::TestWithParam<QSize> {};

TEST_P(MainLayoutAtSize, FollowsTheResizeRules)
{
    const QSize inner = GetParam();
    const MainLayout l = MainLayout::compute(inner);
    const int measureWidth = twipsToPixels(MainLayout::kMeasureAreaWidthTwips);
    EXPECT_EQ(l.viewArea.width(), inner.width() - measureWidth);
    EXPECT_EQ(l.measureCommandArea.left(), l.viewArea.right() + 1);
    EXPECT_EQ(l.measureCommandArea.height(), inner.height());
    EXPECT_EQ(l.viewCommandArea.top(), l.viewArea.bottom() + 1);
    EXPECT_EQ(l.viewCommandArea.bottom(), inner.height() - 1);
    EXPECT_EQ(l.exitButton.left(), l.viewCommandArea.width() - 60);  // 900 twips
    EXPECT_LE(l.exitButton.right(), l.viewCommandArea.width() - 1);
    EXPECT_EQ(l.resultGrid.height(), inner.height() - 376);  // 5640 twips
    EXPECT_LE(l.keepResult.bottom(), inner.height() - 1);
    EXPECT_FALSE(l.comment0.intersects(l.comment1));
    EXPECT_LE(l.comment1.bottom(), l.viewCommandArea.height() - 1);
}

INSTANTIATE_TEST_SUITE_P(Sizes, MainLayoutAtSize,
                         ::testing::Values(QSize(971, 518), QSize(1280, 1000), QSize(2560, 1400)));

TEST(MainLayout, MinimumSizeIs14565By8100Twips)
{
    EXPECT_EQ(MainLayout::minimumSize(), QSize(971, 540));
}

TEST(MainLayout, GridKeepsNoHeight_WhenAreaTooLow)
{
    const MainLayout l = MainLayout::compute(QSize(971, 376));
    EXPECT_EQ(l.resultGrid.height(), 0);
}
