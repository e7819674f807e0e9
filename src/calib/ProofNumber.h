#pragma once

#include <QString>

namespace tavix {

// The text form of the numbers in the calibration file.
namespace ProofNumber {

// "." as decimal point whatever the locale, no leading blank, no zero before
// the point (".5", "-.5"), 0 as "0", exponent form below 1E-04 and from 1E+15
// on ("1.5E-05", "1E+20"). The digits are the fewest of 15, 16 or 17 that read
// back to the same double, so common values keep their familiar 15-digit look
// and no value loses a bit. Negative zero is written "0". Infinity and NaN have
// no form the file can hold; they give "inf", "-inf" and "nan".
QString format(double value);

// Strict reading of one numeric field: optional blanks, sign, digits with an
// optional point, an optional E (or D) exponent, nothing else. An empty field
// is 0, as free-field input has it. A number outside the range of a double
// (digits that are not all zero reading as 0 or as infinity) is refused.
// Returns false and leaves value untouched when the text is not such a number.
bool parse(const QString& text, double& value);

}  // namespace ProofNumber
}  // namespace tavix
