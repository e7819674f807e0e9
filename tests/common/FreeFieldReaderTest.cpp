#include "common/FreeFieldReader.h"
#include "common/RunError.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {
QStringList allFields(const QString& text)
{
    FreeFieldReader reader(text);
    QStringList out;
    while (!reader.atEnd())
        out << reader.next();
    return out;
}
}  // namespace

TEST(FreeFieldReader, ReadsQuotedAndBareFields)
{
    EXPECT_EQ(allFields(QStringLiteral("\"Proof1\",.5, 0.5 ,\"MIC\",100,100\r\n")),
              QStringList({"Proof1", ".5", "0.5", "MIC", "100", "100"}));
}

TEST(FreeFieldReader, KeepsCommasInsideQuotes)
{
    EXPECT_EQ(allFields(QStringLiteral("\"a, b\",c\n")), QStringList({"a, b", "c"}));
}

TEST(FreeFieldReader, LineEndsSeparateFieldsAndBlankLinesAreSkipped)
{
    EXPECT_EQ(allFields(QStringLiteral("1,a\n\n\r\n2,b")), QStringList({"1", "a", "2", "b"}));
}

TEST(FreeFieldReader, TrailingCommaGivesEmptyField)
{
    EXPECT_EQ(allFields(QStringLiteral("1,\n2")), QStringList({"1", "", "2"}));
}

TEST(FreeFieldReader, Next_ThrowsInputPastEnd_AtEnd)
{
    FreeFieldReader reader(QStringLiteral("1\n  \n"));
    EXPECT_EQ(reader.next(), QStringLiteral("1"));
    EXPECT_TRUE(reader.atEnd());
    try {
        reader.next();
        FAIL() << "no error";
    } catch (const RunError& e) {
        EXPECT_EQ(e.number(), err::InputPastEnd);
    }
}

TEST(FreeFieldReader, UnclosedQuoteRunsToEnd)
{
    EXPECT_EQ(allFields(QStringLiteral("\"abc")), QStringList({"abc"}));
}
