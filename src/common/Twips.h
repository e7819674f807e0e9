#pragma once

#include <cmath>

namespace tavix {

// Layout numbers are kept in twips (1/1440 inch); at 96 logical dots per inch a
// logical pixel is 15 twips.
constexpr int kTwipsPerPixel = 15;

constexpr int twipsToPixels(int twips)
{
    return twips / kTwipsPerPixel;
}
constexpr int pixelsToTwips(int pixels)
{
    return pixels * kTwipsPerPixel;
}

}  // namespace tavix
