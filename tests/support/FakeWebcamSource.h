#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

namespace tavix::test {

// A GStreamer source element, "tavixwebcamsrc", for the graph camera's
// tests and bench: it offers exactly the caps of its "offers" property, as a
// USB camera lists its formats, sizes and rates (image/jpeg, video/x-raw,
// video/x-bayer), and sends live frames of whatever was negotiated at that
// rate, numbered and stamped: the JPEG of jpegFrame(size), or picture(size)
// as raw video or as 8-bit Bayer cells. Every frame is the same, made once.
class FakeWebcamSource {
public:
    // Makes the element known to GStreamer (once; initialises GStreamer).
    static void registerElement();
    // The scene: its top half red, its bottom half blue, a white square in the middle.
    static QImage picture(QSize size);
    // The JPEG bytes the element sends at that size.
    static QByteArray jpegFrame(QSize size);
};

}  // namespace tavix::test
