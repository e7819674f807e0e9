#include "FakeCommentBox.h"
#include "common/MessageLine.h"

#include <gtest/gtest.h>

using namespace tavix;
using tavix::test::FakeCommentBox;

TEST(MessageLine, Show_LocksTheBoxInItsTint_AndClearGivesTheCommentBack)
{
    FakeCommentBox box;
    box.setText(QStringLiteral("my comment"));
    MessageLine line(box);
    line.show(QStringLiteral("Picture 1 of 3"), CommentBox::Tint::Series);
    EXPECT_EQ(box.text(), QStringLiteral("Picture 1 of 3"));
    EXPECT_TRUE(box.isLocked());
    EXPECT_EQ(box.tint(), CommentBox::Tint::Series);
    EXPECT_TRUE(line.showing());

    line.show(QStringLiteral("Picture 2 of 3"), CommentBox::Tint::Series);
    line.clear();
    EXPECT_EQ(box.text(), QStringLiteral("my comment"));
    EXPECT_FALSE(box.isLocked());
    EXPECT_FALSE(line.showing());
}

TEST(MessageLine, Clear_LeavesTheBoxAlone_WhenNothingIsShown)
{
    FakeCommentBox box;
    box.setText(QStringLiteral("guidance"));
    box.setLocked(true);
    MessageLine line(box);
    line.clear();
    EXPECT_EQ(box.text(), QStringLiteral("guidance"));
    EXPECT_TRUE(box.isLocked());
}
