#pragma once

#include <QString>
#include <cstdint>

namespace tavix {

// Conversions between numbers and text with the classic rules the program's
// files were written with.
namespace NumberText {

// Strict conversion of a whole text to an integer: blanks around the number are
// allowed, a fraction is rounded half to even, "&H" introduces hex. Throws
// RunError(TypeMismatch) for text that is not a number and RunError(Overflow)
// for a value outside [min, max].
std::int64_t toInteger(const QString& text, std::int64_t min, std::int64_t max);

inline std::int16_t toInt16(const QString& text)
{
    return static_cast<std::int16_t>(toInteger(text, INT16_MIN, INT16_MAX));
}
inline std::int32_t toInt32(const QString& text)
{
    return static_cast<std::int32_t>(toInteger(text, INT32_MIN, INT32_MAX));
}
inline std::uint8_t toByte(const QString& text)
{
    return static_cast<std::uint8_t>(toInteger(text, 0, 255));
}

// Lenient leading-number parse: skips leading blanks, reads as much of a number
// as there is ("12abc" gives 12) and gives 0 when there is none. "." is the
// decimal point whatever the locale.
double val(const QString& text);

// True when val() would find at least one digit at the start of the text.
bool startsWithNumber(const QString& text);

// The shortest general text of a double with at most 15 significant digits:
// 0.5 -> "0.5", 100 -> "100", 0.000015 -> "1.5E-05", 1e20 -> "1E+20".
QString general(double value);

}  // namespace NumberText
}  // namespace tavix
