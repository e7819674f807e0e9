#pragma once

#include "media/FrameView.h"

#include <QtGlobal>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavix {

// Turns the pixels a GenICam camera sends into a picture the live view can
// show: Mono8 and RGB8 pass as they are, Bayer is demosaiced, and 10- to
// 16-bit samples (unpacked, or packed two in three bytes) keep their eight
// high bits. Converted pictures alternate between two buffers, so that the
// frame shown last stays whole while the next one is converted.
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

private:
    struct Layout;
    uchar* nextBuffer(std::size_t bytes);

    std::vector<uchar> grey_;  // 8-bit Bayer from deeper samples
    std::array<std::vector<uchar>, 2> out_;
    int next_ = 0;
};

}  // namespace tavix
