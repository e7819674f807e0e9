#pragma once

#include "calib/ProofEntry.h"

#include <QSize>
#include <QString>

namespace tavix::ProofRescale {

// A calibration made at one resolution, used on a picture of another.
//
// Every resolution of a camera sees the same field through the same optics,
// and its pixels are square, so a factor scales with the width alone:
// factor x (width made at / picture width), on both axes. The 5:4 mode
// (1280x1024) sees the same width as the 4:3 modes, only taller, so taking
// the heights' ratio would be wrong for it.

// The ratio; 1 when either resolution is not known or the widths agree.
double ratio(QSize madeAt, QSize picture);

// True when the entry's factors change for this picture.
bool applies(QSize madeAt, QSize picture);

// The entry with its factors for the picture. Always worked out from the
// stored factors, so going back to the resolution made at gives them exactly.
ProofEntry toPicture(ProofEntry entry, QSize madeAt, QSize picture);

// "1280x1024".
QString sizeText(QSize size);

}  // namespace tavix::ProofRescale
