#pragma once

#include <QImage>
#include <QString>
#include <cstdint>

namespace tavix {

// Camera pixel layouts that have no QImage format. A frame in one of them is
// for the live view only (ViewScaler reads it); None means `format` says how
// the pixels are laid out.
enum class RawLayout : std::uint8_t {
    None,
    Yuyv,       // Y0 U Y1 V: two pixels in four bytes
    BayerRggb,  // 8-bit Bayer, named by the 2x2 cell read row by row
    BayerGrbg,
    BayerGbrg,
    BayerBggr,
};

// One frame as a driver hands it over. The pixels belong to the driver and
// are valid only during the call; a sink copies what it keeps.
struct FrameView {
    const uchar* bits = nullptr;
    int width = 0;
    int height = 0;
    qsizetype bytesPerLine = 0;
    QImage::Format format = QImage::Format_RGB888;
    std::uint64_t sequence = 0;  // counts every frame the camera produced
    // When the frame was captured, in nanoseconds from any fixed start that
    // does not go back; negative when the driver does not know (a recorder
    // then takes the time the frame arrives).
    std::int64_t captureNs = -1;
    // Set for frames that are no QImage format (the format is then ignored).
    RawLayout raw = RawLayout::None;
};

// How a recording made by the program (not inside the camera) went: while it
// runs and after it ended.
struct RecordingStats {
    QString path;                    // the AVI file
    double seconds = 0;              // the length recorded so far
    std::int64_t framesWritten = 0;  // frames in the file
    std::int64_t framesDropped = 0;  // camera frames the encoder could not keep up with
    QString failure;                 // why it stopped early; empty when it did not
    bool finished = false;           // the file is complete and closed
};

}  // namespace tavix
