#pragma once

#include <QString>

namespace tavix::ValueFormat {

// The number format of measured values: "0" for no decimals, else "0." and
// that many zeros.
QString pattern(int decimals);

// A value written with that many decimals, "." as the decimal point.
QString format(double value, int decimals);

}  // namespace tavix::ValueFormat
