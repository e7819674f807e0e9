#include "common/MessageTable.h"
#include "common/TextFont.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

MessageTable table(const char* text)
{
    MessageTable t;
    t.parse(QString::fromUtf8(text));
    return t;
}

}  // namespace

TEST(TextFont, EnglishTexts_KeepTheDesktopFont)
{
    const MessageTable english = table("1,Load picture\n2,Angle 90°\n");
    EXPECT_FALSE(TextFont::isJapanese(english));
    EXPECT_TRUE(TextFont::family(english, {QStringLiteral("Noto Sans CJK JP")}).isEmpty());
}

TEST(TextFont, Kana_OrKanji_MakeTheTableJapanese)
{
    EXPECT_TRUE(TextFont::isJapanese(table("1,Load\n2,ライブ\n")));
    EXPECT_TRUE(TextFont::isJapanese(table("1,校正\n")));
    EXPECT_TRUE(TextFont::isJapanese(table("1,ひらがな\n")));
}

TEST(TextFont, Japanese_TakesTheFirstInstalledCjkFamily)
{
    const MessageTable japanese = table("1,画像を開く\n");
    EXPECT_EQ(TextFont::family(japanese, {QStringLiteral("DejaVu Sans"), QStringLiteral("VL PGothic"),
                                          QStringLiteral("Noto Sans CJK JP")}),
              QStringLiteral("Noto Sans CJK JP"));
    EXPECT_EQ(TextFont::family(japanese, {QStringLiteral("vl pgothic")}), QStringLiteral("VL PGothic"));
}

TEST(TextFont, Japanese_WithoutCjkFont_KeepsTheDesktopFont)
{
    EXPECT_TRUE(TextFont::family(table("1,画像を開く\n"), {QStringLiteral("DejaVu Sans")}).isEmpty());
}
