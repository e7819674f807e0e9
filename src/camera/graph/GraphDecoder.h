#pragma once

#include "media/FrameView.h"

#include <QByteArray>
#include <QSize>
#include <memory>
#include <vector>

namespace tavix {

// Turns the frames a graph camera sends compressed or as raw sensor cells
// into RGB pictures: Motion-JPEG through libjpeg-turbo (scaled down while
// decoding when the picture is shown smaller), 8-bit Bayer demosaiced at full
// size or, for the live picture, one pixel per 2x2 cell. One decoder per
// thread; its buffer is reused while the size stays the same.
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
    // Bayer cells with the given pattern name ("rggb", ...): the full-size
    // bilinear picture, or half its size, each 2x2 cell one pixel.
    bool bayer(const uchar* cells, qsizetype stride, QSize size, const QByteArray& pattern, bool half,
               FrameView& view);

private:
    uchar* reserve(QSize size, FrameView& view);

    struct Jpeg;
    std::unique_ptr<Jpeg> jpeg_;
    std::vector<uchar> pixels_;
};

}  // namespace tavix
