#pragma once

#include <QString>
#include <QStringList>

namespace tavix::Magnification {

// The entries of the display-magnification list: "x " and three characters,
// "x 1.0" first, then enlargements, then reductions down to a size at which a
// 3840x2748 still fits the picture area of the smallest window, then "x 5.0".
// Sixteen of them, one for every DEFAULTSCALE the settings file may hold; new
// entries go at the end so that saved indexes keep their meaning.
QStringList entries();

// The magnification of an entry: the number in its last three characters.
double valueOf(const QString& entry);

// The zoom label's text for a magnification: "x " and the factor as "0.0".
QString label(double magnification);

}  // namespace tavix::Magnification
