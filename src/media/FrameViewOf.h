#pragma once

#include "media/FrameView.h"

#include <QImage>

namespace tavix {

// A picture as the frame a driver hands over, in the picture's own format.
inline FrameView frameViewOf(const QImage& image)
{
    FrameView f;
    f.bits = image.constBits();
    f.width = image.width();
    f.height = image.height();
    f.bytesPerLine = image.bytesPerLine();
    f.format = image.format();
    return f;
}

}  // namespace tavix
