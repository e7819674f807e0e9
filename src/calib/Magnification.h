#pragma once

#include <QString>
#include <QStringList>

namespace tavix::Magnification {

// The entries of the display-magnification list: "x " and three characters,
// "x 1.0" first, then enlargements, then reductions down to a size at which a
// 2592x1944 still fits the picture area of the smallest window.
QStringList entries();

// The magnification of an entry: the number in its last three characters.
double valueOf(const QString& entry);

// The zoom label's text for a magnification: "x " and the factor as "0.0".
QString label(double magnification);

}  // namespace tavix::Magnification
