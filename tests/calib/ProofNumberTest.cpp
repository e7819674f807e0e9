#include "calib/ProofNumber.h"

#include "PrintQt.h"

#include <gtest/gtest.h>
#include <QLocale>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <random>

using namespace tavix;

namespace {

struct FormatCase {
    double value;
    const char* text;
};

class ProofNumberFormat : public ::testing::TestWithParam<FormatCase> {};

std::uint64_t bitsOf(double v)
{
    std::uint64_t b = 0;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

double fromBits(std::uint64_t b)
{
    double v = 0;
    std::memcpy(&v, &b, sizeof v);
    return v;
}

int significantDigits(const QString& text)
{
    QString mantissa = text.section(QLatin1Char('E'), 0, 0);
    mantissa.remove(QLatin1Char('-')).remove(QLatin1Char('.'));
    while (mantissa.startsWith(QLatin1Char('0')))
        mantissa.remove(0, 1);
    while (mantissa.endsWith(QLatin1Char('0')))
        mantissa.chop(1);
    return static_cast<int>(mantissa.size());
}

}  // namespace

TEST_P(ProofNumberFormat, Format_WritesTheFileForm)
{
    const FormatCase c = GetParam();

    const QString text = ProofNumber::format(c.value);

    EXPECT_EQ(text, QString::fromLatin1(c.text));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ProofNumberFormat,
    ::testing::Values(FormatCase{0.5, ".5"}, FormatCase{-0.5, "-.5"}, FormatCase{-0.25, "-.25"},
                      FormatCase{100, "100"}, FormatCase{0, "0"}, FormatCase{-0.0, "0"},
                      FormatCase{0.000015, "1.5E-05"}, FormatCase{1e20, "1E+20"},
                      FormatCase{1.0 / 3, ".3333333333333333"}, FormatCase{2.0 / 3, ".6666666666666666"},
                      FormatCase{0.1, ".1"}, FormatCase{0.1 + 0.2, ".30000000000000004"},
                      FormatCase{0.0001, ".0001"}, FormatCase{0.00012, ".00012"},
                      FormatCase{123.456, "123.456"}, FormatCase{1234567.125, "1234567.125"},
                      FormatCase{999999999999999.0, "999999999999999"}, FormatCase{1e15, "1E+15"},
                      FormatCase{-1.5e-300, "-1.5E-300"}, FormatCase{1e100, "1E+100"},
                      FormatCase{4.9406564584124654e-324, "4.94065645841247E-324"},
                      FormatCase{DBL_MAX, "1.7976931348623157E+308"},
                      FormatCase{123456789012345678.0, "1.2345678901234568E+17"}, FormatCase{2.54, "2.54"},
                      FormatCase{-7, "-7"}));

TEST(ProofNumber, Format_IgnoresTheDefaultLocale)
{
    const QLocale saved;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));

    const QString text = ProofNumber::format(1234.5);

    QLocale::setDefault(saved);
    EXPECT_EQ(text, QStringLiteral("1234.5"));
}

TEST(ProofNumber, Format_KeepsFifteenDigitsWhenTheyAreEnough)
{
    // With 17 digits these would read .29999999999999999 and 1.1000000000000001.
    const QString short1 = ProofNumber::format(0.3);
    const QString short2 = ProofNumber::format(1.1);

    EXPECT_EQ(short1, QStringLiteral(".3"));
    EXPECT_EQ(short2, QStringLiteral("1.1"));
}

TEST(ProofNumber, FormatThenParse_IsBitIdentical_ForRandomDoubles)
{
    std::mt19937_64 random(20240517);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_int_distribution<int> decade(-320, 308);
    int checked = 0;
    for (int i = 0; i < 200000; ++i) {
        double value = 0;
        switch (i % 4) {
            case 0:  // any bit pattern: subnormals, huge, tiny
                value = fromBits(random());
                break;
            case 1:  // across every decade
                value = unit(random) * std::pow(10.0, decade(random));
                break;
            case 2:  // lengths and factors as a user has them
                value = unit(random) * 1000.0;
                break;
            default:  // the smallest subnormals
                value = fromBits(random() % 100000) * (random() % 2 ? 1 : -1);
                break;
        }
        if (!std::isfinite(value) || value == 0)
            continue;

        const QString text = ProofNumber::format(value);
        double back = 0;
        const bool ok = ProofNumber::parse(text, back);

        ASSERT_TRUE(ok) << text.toStdString();
        ASSERT_EQ(bitsOf(back), bitsOf(value)) << text.toStdString();
        ASSERT_FALSE(text.startsWith(QLatin1Char(' '))) << text.toStdString();
        ASSERT_FALSE(text.startsWith(QLatin1String("0.")) || text.startsWith(QLatin1String("-0.")))
            << text.toStdString();
        ASSERT_FALSE(text.contains(QLatin1Char(','))) << text.toStdString();
        ASSERT_LE(significantDigits(text), 17) << text.toStdString();
        ++checked;
    }
    EXPECT_GT(checked, 150000);
}

TEST(ProofNumber, Format_UsesNoMoreDigitsThanNeeded_ForRandomDoubles)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const double value = fromBits(random());
        if (!std::isfinite(value) || value == 0)
            continue;

        const QString text = ProofNumber::format(value);

        // When 15 digits already come back the same, the text uses at most 15.
        const bool fifteenSuffice = QString::number(value, 'e', 14).toDouble() == value;
        if (fifteenSuffice)
            ASSERT_LE(significantDigits(text), 15) << text.toStdString();
        else
            ASSERT_GE(significantDigits(text), 15) << text.toStdString();
    }
}

struct ParseCase {
    const char* text;
    double value;
};

class ProofNumberParse : public ::testing::TestWithParam<ParseCase> {};

TEST_P(ProofNumberParse, Parse_ReadsNumbers)
{
    const ParseCase c = GetParam();
    double value = -12345;

    const bool ok = ProofNumber::parse(QString::fromLatin1(c.text), value);

    EXPECT_TRUE(ok);
    EXPECT_EQ(value, c.value);
}

INSTANTIATE_TEST_SUITE_P(Table, ProofNumberParse,
                         ::testing::Values(ParseCase{".5", 0.5}, ParseCase{"-.5", -0.5},
                                           ParseCase{"100", 100}, ParseCase{" 12 ", 12}, ParseCase{"", 0},
                                           ParseCase{"0", 0}, ParseCase{"1.5E-05", 1.5e-5},
                                           ParseCase{"1e+20", 1e20}, ParseCase{"+.5e+1", 5},
                                           ParseCase{"5.", 5}, ParseCase{"1.5D3", 1500},
                                           ParseCase{"0.25", 0.25}, ParseCase{"000", 0}));

class ProofNumberMalformed : public ::testing::TestWithParam<const char*> {};

TEST_P(ProofNumberMalformed, Parse_RefusesTextThatIsNotANumber)
{
    double value = 42;

    const bool ok = ProofNumber::parse(QString::fromLatin1(GetParam()), value);

    EXPECT_FALSE(ok);
    EXPECT_EQ(value, 42);
}

INSTANTIATE_TEST_SUITE_P(Table, ProofNumberMalformed,
                         ::testing::Values("abc", "12abc", "1.2.3", "1E", "1E+", "--1", "+", ".", "-.",
                                           "1E999", "-1E999", "1E-400", "inf", "nan", "&H10", "1,5", "1 5",
                                           "0x10", "MIC"));
