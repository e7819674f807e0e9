#pragma once

#include <QtGlobal>

namespace tavix::BayerDemosaic {

// Where the red sample of a 2x2 Bayer cell sits: RGGB has red top left, GRBG
// top right, GBRG bottom left, BGGR bottom right.
enum class Pattern { RGGB, GRBG, GBRG, BGGR };

// Bilinear demosaic of an 8-bit Bayer picture into 24-bit RGB (R, G, B bytes):
// every pixel keeps its own sample and takes the two missing colours as the
// mean of its nearest neighbours of that colour. Edges mirror their inner
// neighbours, so the cell pattern holds there too. Both pictures are at least
// 2 x 2.
void toRgb(const uchar* src, qsizetype srcStride, int width, int height, Pattern pattern, uchar* dst,
           qsizetype dstStride);

}  // namespace tavix::BayerDemosaic
