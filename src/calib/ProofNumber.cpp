#include "calib/ProofNumber.h"

#include "common/NumberText.h"

#include <cmath>
#include <cstdlib>

namespace tavix::ProofNumber {

namespace {

bool isAsciiDigit(QChar c)
{
    return c.unicode() >= '0' && c.unicode() <= '9';
}

// The fewest of 15, 16 and 17 significant digits that read back to the same
// double, in Qt's scientific form "d.ddde+XX". Qt's conversions ignore the
// process locale, which Qt itself sets, unlike printf and strtod.
QString shortestScientific(double value)
{
    QString text;
    for (int digits = 15; digits <= 17; ++digits) {
        text = QString::number(value, 'e', digits - 1);
        bool ok = false;
        if (text.toDouble(&ok) == value && ok)
            break;
    }
    return text;
}

}  // namespace

QString format(double value)
{
    if (value == 0)
        return QStringLiteral("0");
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (std::isinf(value))
        return value < 0 ? QStringLiteral("-inf") : QStringLiteral("inf");

    const QString scientific = shortestScientific(value);
    const bool negative = scientific.startsWith(QLatin1Char('-'));
    const qsizetype ePos = scientific.indexOf(QLatin1Char('e'));
    QString digits = scientific.mid(negative ? 1 : 0, ePos - (negative ? 1 : 0));
    digits.remove(QLatin1Char('.'));
    while (digits.size() > 1 && digits.endsWith(QLatin1Char('0')))
        digits.chop(1);
    const int exponent = scientific.mid(ePos + 1).toInt();

    QString out = negative ? QStringLiteral("-") : QString();
    if (exponent < -4 || exponent >= 15) {
        out += digits.front();
        if (digits.size() > 1)
            out += QLatin1Char('.') + digits.mid(1);
        out += QLatin1Char('E');
        out += exponent < 0 ? QLatin1Char('-') : QLatin1Char('+');
        out += QString::number(std::abs(exponent)).rightJustified(2, QLatin1Char('0'));
    } else if (exponent < 0) {
        out += QLatin1Char('.') + QString(-exponent - 1, QLatin1Char('0')) + digits;
    } else {
        const qsizetype whole = exponent + 1;
        if (digits.size() <= whole)
            out += digits + QString(whole - digits.size(), QLatin1Char('0'));
        else
            out += digits.left(whole) + QLatin1Char('.') + digits.mid(whole);
    }
    return out;
}

bool parse(const QString& text, double& value)
{
    const QString t = text.trimmed();
    if (t.isEmpty()) {
        value = 0;
        return true;
    }
    const qsizetype n = t.size();
    qsizetype i = 0;
    if (t[i] == QLatin1Char('+') || t[i] == QLatin1Char('-'))
        ++i;
    int mantissaDigits = 0;
    bool nonZero = false;
    auto readDigits = [&] {
        while (i < n && isAsciiDigit(t[i])) {
            nonZero = nonZero || t[i] != QLatin1Char('0');
            ++mantissaDigits;
            ++i;
        }
    };
    readDigits();
    if (i < n && t[i] == QLatin1Char('.')) {
        ++i;
        readDigits();
    }
    if (mantissaDigits == 0)
        return false;
    if (i < n && QStringLiteral("EeDd").contains(t[i])) {
        ++i;
        if (i < n && (t[i] == QLatin1Char('+') || t[i] == QLatin1Char('-')))
            ++i;
        int exponentDigits = 0;
        while (i < n && isAsciiDigit(t[i])) {
            ++exponentDigits;
            ++i;
        }
        if (exponentDigits == 0)
            return false;
    }
    if (i != n)
        return false;

    // The syntax above is exactly what val() reads, so it sees the whole field.
    const double v = NumberText::val(t);
    if (v == 0 && nonZero)
        return false;  // beyond the range of a double
    value = v;
    return true;
}

}  // namespace tavix::ProofNumber
