#pragma once

#include <QByteArray>
#include <QSize>
#include <cstdint>
#include <vector>

struct _GstCaps;

namespace tavix {

// One size a graph camera offers, in the format it sends fastest at that size.
struct GraphMode {
    // How the camera's frames become pictures.
    enum class Kind {
        Raw,    // uncompressed video (YUYV, NV12, RGB, grey, ...): converted to RGB
        Jpeg,   // Motion-JPEG: decoded, and recorded as it comes
        Bayer,  // 8-bit raw sensor cells: demosaiced
    };

    std::int32_t index = -1;  // Resolution::indexOf(size)
    QSize size;
    Kind kind = Kind::Raw;
    QByteArray format;  // the raw or Bayer format's name ("YUY2", "rggb"); empty for JPEG
    int fpsN = 0;       // the highest frame rate the camera offers in it; 0/1 when it does not say
    int fpsD = 1;
    // Every rate the camera offers at this size in this format, slowest
    // first, as fractions; a range is given by its two ends and anyRateBetween.
    std::vector<std::pair<int, int>> rates;
    bool anyRateBetween = false;

    // This mode at the fastest rate not above `fps` frames a second (the
    // slowest offered when all are above it); as it is when fps <= 0 or the
    // camera names no rates.
    GraphMode atRate(int fps) const;

    // Every size the offered caps hold, smallest first, each in its fastest
    // format (at equal rates raw before JPEG before Bayer, and the camera's
    // own order among raw formats). A size given as a range or list stands
    // for the program's classic sizes that fit it. Formats the program
    // cannot turn into pictures are skipped.
    static std::vector<GraphMode> offered(const _GstCaps* caps);
    // The size the camera takes when left to itself (the offered caps
    // fixated); empty when it takes none of them.
    static QSize ownSize(const _GstCaps* caps);
    // The caps the camera is asked for in this mode (a new reference).
    _GstCaps* caps() const;
};

}  // namespace tavix
