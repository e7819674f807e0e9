#pragma once

#include <QString>
#include <cstdint>

namespace tavix {

// Closes an AVI file whose writer stopped without its end (a full disk, a
// pipeline error): the frames already on disk are kept, a half-written last
// chunk is cut off, and the file gets what the writer would have written at
// its end: an idx1 index, and sizes and frame counts in its headers. A super
// index the writer left empty is blanked, so that readers take the idx1.
// When the disk has no room for the index, frames are taken off the end until
// it fits. A file of several RIFF parts (over 1 GB) cut in a later part gets
// that part's standard index, its sizes, and the super index over every part.
class AviClosing {
public:
    struct Result {
        bool ok = false;
        std::int64_t frames = 0;  // video frames in the closed file
        QString error;
    };

    // A file that has its index already is left as it is.
    static Result close(const QString& path);
};

}  // namespace tavix
