#pragma once

#include "media/FrameView.h"

#include <QtGlobal>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavix {

// Turns the pixels a GenICam camera sends into a frame the live view reads:
// Mono8, RGB8, BGR8 and 8-bit Bayer pass as they are (Bayer as raw cells,
// which the view shows a cell a pixel), and 10- to 16-bit samples (unpacked,
// or packed two in three bytes) keep their eight high bits, Bayer ones as
// 8-bit cells. Converted frames alternate between two buffers, so that the
// frame held last stays whole while the next one is converted. develop()
// makes the full-size picture of a held frame, demosaicing Bayer cells, only
// when it is needed (a freeze, a file, a recording).
class PixelConversion {
public:
    // Whether frames of this pixel format (Aravis's number for it) can be shown.
    static bool known(std::uint32_t format);
    // Whether the format carries colour (Bayer or RGB).
    static bool colour(std::uint32_t format);

    // Describes or converts one frame of `width` x `height` with `padX` bytes
    // after each line; false when the format is unknown or `size` is short.
    // The view's pixels are `data` itself or one of this object's buffers.
    bool convert(std::uint32_t format, const uchar* data, std::size_t size, int width, int height, int padX,
                 FrameView& view);

    // The full-size picture of a frame convert() described: the frame itself,
    // or its Bayer cells demosaiced into `rgb` (RGB888, grown when needed).
    static FrameView develop(const FrameView& frame, std::vector<uchar>& rgb);

private:
    uchar* nextBuffer(std::size_t bytes);

    std::array<std::vector<uchar>, 2> out_;
    int next_ = 0;
};

}  // namespace tavix
