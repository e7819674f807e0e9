#include "common/NumberText.h"
#include "common/RunError.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {
int errorOf(const QString& text, std::int64_t min, std::int64_t max)
{
    try {
        NumberText::toInteger(text, min, max);
    } catch (const RunError& e) {
        return e.number();
    }
    return 0;
}
}  // namespace

TEST(NumberText, ToInteger_AcceptsBlanksSignAndRoundsHalfToEven)
{
    EXPECT_EQ(NumberText::toInt16(QStringLiteral("  42 ")), 42);
    EXPECT_EQ(NumberText::toInt16(QStringLiteral("-5")), -5);
    EXPECT_EQ(NumberText::toInt16(QStringLiteral("2.5")), 2);
    EXPECT_EQ(NumberText::toInt16(QStringLiteral("3.5")), 4);
    EXPECT_EQ(NumberText::toInt32(QStringLiteral("&HFF")), 255);
}

TEST(NumberText, ToInteger_NonNumberIsTypeMismatch)
{
    EXPECT_EQ(errorOf(QStringLiteral("abc"), 0, 10), err::TypeMismatch);
    EXPECT_EQ(errorOf(QStringLiteral("12abc"), 0, 100), err::TypeMismatch);
    EXPECT_EQ(errorOf(QStringLiteral(""), 0, 100), err::TypeMismatch);
}

TEST(NumberText, ToInteger_OutOfTypeRangeIsOverflow)
{
    EXPECT_EQ(errorOf(QStringLiteral("32768"), INT16_MIN, INT16_MAX), err::Overflow);
    EXPECT_EQ(errorOf(QStringLiteral("256"), 0, 255), err::Overflow);
    EXPECT_EQ(errorOf(QStringLiteral("-1"), 0, 255), err::Overflow);
    EXPECT_EQ(errorOf(QStringLiteral("1E999"), 0, 255), err::Overflow);
}

TEST(NumberText, Val_ReadsTheLeadingNumberOnly)
{
    EXPECT_EQ(NumberText::val(QStringLiteral("12abc")), 12.0);
    EXPECT_EQ(NumberText::val(QStringLiteral("abc")), 0.0);
    EXPECT_EQ(NumberText::val(QStringLiteral("  -1.25e2x")), -125.0);
    EXPECT_EQ(NumberText::val(QStringLiteral(".5")), 0.5);
    EXPECT_EQ(NumberText::val(QStringLiteral("1.0")), 1.0);
}

TEST(NumberText, General_IsShortestWithFifteenDigits)
{
    EXPECT_EQ(NumberText::general(0.5), QStringLiteral("0.5"));
    EXPECT_EQ(NumberText::general(100), QStringLiteral("100"));
    EXPECT_EQ(NumberText::general(0), QStringLiteral("0"));
    EXPECT_EQ(NumberText::general(0.000015), QStringLiteral("1.5E-05"));
    EXPECT_EQ(NumberText::general(1e20), QStringLiteral("1E+20"));
    EXPECT_EQ(NumberText::general(1.0 / 3.0), QStringLiteral("0.333333333333333"));
}
