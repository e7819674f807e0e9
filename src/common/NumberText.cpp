#include "common/NumberText.h"

#include "common/RunError.h"

#include <cmath>

namespace tavix::NumberText {

namespace {

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

// Length of the numeric prefix of s starting at pos (sign, digits, point,
// digits, exponent); 0 when there is no digit.
qsizetype numberPrefix(const QString& s, qsizetype pos)
{
    qsizetype i = pos;
    const qsizetype n = s.size();
    if (i < n && (s[i] == QLatin1Char('+') || s[i] == QLatin1Char('-')))
        ++i;
    qsizetype digits = 0;
    while (i < n && s[i].isDigit() && s[i].unicode() < 128) {
        ++i;
        ++digits;
    }
    if (i < n && s[i] == QLatin1Char('.')) {
        ++i;
        while (i < n && s[i].isDigit() && s[i].unicode() < 128) {
            ++i;
            ++digits;
        }
    }
    if (digits == 0)
        return 0;
    if (i < n && (s[i] == QLatin1Char('E') || s[i] == QLatin1Char('e') || s[i] == QLatin1Char('D') ||
                  s[i] == QLatin1Char('d'))) {
        qsizetype j = i + 1;
        if (j < n && (s[j] == QLatin1Char('+') || s[j] == QLatin1Char('-')))
            ++j;
        qsizetype expDigits = 0;
        while (j < n && s[j].isDigit() && s[j].unicode() < 128) {
            ++j;
            ++expDigits;
        }
        if (expDigits > 0)
            i = j;
    }
    return i - pos;
}

double parsePrefix(const QString& s, qsizetype pos, qsizetype len)
{
    QString text = s.mid(pos, len);
    text.replace(QLatin1Char('D'), QLatin1Char('E')).replace(QLatin1Char('d'), QLatin1Char('E'));
    // Qt's own parser: independent of the process locale, unlike strtod.
    bool ok = false;
    const double v = text.toDouble(&ok);
    if (!ok)  // out of the double range
        return text.startsWith(QLatin1Char('-')) ? -HUGE_VAL : HUGE_VAL;
    return v;
}

}  // namespace

std::int64_t toInteger(const QString& text, std::int64_t min, std::int64_t max)
{
    const QString t = text.trimmed();
    if (t.isEmpty())
        throw RunError(err::TypeMismatch);
    double value = 0;
    if (t.startsWith(QLatin1String("&H"), Qt::CaseInsensitive)) {
        bool ok = false;
        const qulonglong hex = t.mid(2).toULongLong(&ok, 16);
        if (!ok)
            throw RunError(err::TypeMismatch);
        value = static_cast<double>(hex);
    } else {
        const qsizetype len = numberPrefix(t, 0);
        if (len == 0 || len != t.size())
            throw RunError(err::TypeMismatch);
        value = parsePrefix(t, 0, len);
    }
    if (!std::isfinite(value))
        throw RunError(err::Overflow);
    const double rounded = std::nearbyint(value);  // default rounding: half to even
    if (rounded < static_cast<double>(min) || rounded > static_cast<double>(max))
        throw RunError(err::Overflow);
    return static_cast<std::int64_t>(rounded);
}

double val(const QString& text)
{
    qsizetype pos = 0;
    while (pos < text.size() && isBlank(text[pos]))
        ++pos;
    const qsizetype len = numberPrefix(text, pos);
    if (len == 0)
        return 0.0;
    const double v = parsePrefix(text, pos, len);
    return std::isfinite(v) ? v : 0.0;
}

bool startsWithNumber(const QString& text)
{
    qsizetype pos = 0;
    while (pos < text.size() && isBlank(text[pos]))
        ++pos;
    return numberPrefix(text, pos) > 0;
}

QString general(double value)
{
    if (value == 0.0)
        return QStringLiteral("0");
    // Locale-independent, unlike printf once Qt has set the process locale.
    return QString::number(value, 'G', 15);
}

}  // namespace tavix::NumberText
