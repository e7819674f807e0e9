#pragma once

#include "media/FrameView.h"

#include <QByteArray>
#include <QSize>
#include <memory>
#include <vector>

namespace tavix {

// Turns the frames a graph camera sends compressed or as raw sensor cells
// into RGB pictures: Motion-JPEG through libjpeg-turbo (scaled down while
// decoding when the picture is shown smaller), 8-bit Bayer demosaiced (the
// live view reads the cells themselves). One decoder per thread; its buffer
// is reused while the size stays the same.
class GraphDecoder {
public:
    GraphDecoder();
    ~GraphDecoder();
    GraphDecoder(const GraphDecoder&) = delete;
    GraphDecoder& operator=(const GraphDecoder&) = delete;

    // The largest libjpeg scale-down (1, 2, 4 or 8) that keeps a frame of
    // `frame` size at least as large as `shown`; 1 when `shown` is empty.
    static int jpegScale(QSize frame, QSize shown);

    // Decodes a JPEG at 1/scale of its size (faster and coarser when `fast`).
    // False when it is no JPEG or broken; `view` then stays as it was.
    bool jpeg(const uchar* data, size_t bytes, int scale, bool fast, FrameView& view);
    // The layout of the Bayer cells a pattern name ("rggb", ...) stands for;
    // RawLayout::None for a name that is no pattern.
    static RawLayout bayerLayout(const QByteArray& pattern);
    // Bayer cells in `layout`: the full-size bilinear picture. False for a
    // picture smaller than 2x2 or a layout that is no Bayer pattern.
    bool bayer(const uchar* cells, qsizetype stride, QSize size, RawLayout layout, FrameView& view);

private:
    uchar* reserve(QSize size, FrameView& view);

    struct Jpeg;
    std::unique_ptr<Jpeg> jpeg_;
    std::vector<uchar> pixels_;
};

}  // namespace tavix
