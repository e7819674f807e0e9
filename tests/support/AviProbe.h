#pragma once

#include <QString>

namespace tavix::test {

// What ffprobe reads from a video file, decoding every frame.
struct AviProbe {
    bool ok = false;  // ffprobe ran and found a video stream
    QString error;    // ffprobe's complaint otherwise
    QString format;   // "avi"
    QString codec;    // "mjpeg"
    int width = 0;
    int height = 0;
    double fps = 0;  // the stream's frame rate
    int frames = 0;  // frames decoded

    static AviProbe of(const QString& path);
};

}  // namespace tavix::test
