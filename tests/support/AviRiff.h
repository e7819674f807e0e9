#pragma once

#include <QString>
#include <QtGlobal>

namespace tavix::test {

// What the RIFF structure of an AVI file says, read chunk by chunk without
// any player's repairs: the frames in its movie lists, its indexes and the
// frame counts of its headers.
struct AviRiff {
    bool ok = false;  // the file's chunks and lists fit together and in the file
    QString error;
    int parts = 0;           // RIFF parts: "AVI " and the OpenDML "AVIX" after it
    qint64 frames = 0;       // video chunks in all movie lists
    qint64 avihFrames = -1;  // avih dwTotalFrames (OpenDML: the first part's)
    qint64 strhLength = -1;  // the video stream's strh dwLength
    qint64 dmlhFrames = -1;  // OpenDML dmlh dwTotalFrames; -1 without one
    qint64 idx1Frames = -1;  // video entries of idx1; -1 without one
    qint64 indxFrames = -1;  // entries of the standard indexes the super index points to; -1 without
    qint64 indxBroken = 0;   // super index entries pointing at no standard index

    // An index that lists every frame in the file.
    bool indexed() const { return frames > 0 && (idx1Frames == frames || indxFrames == frames); }
    // The header counts equal the frames in the file.
    bool countsMatch() const
    {
        if (strhLength != frames)
            return false;
        return parts > 1 ? dmlhFrames == frames : avihFrames == frames;
    }

    static AviRiff of(const QString& path);
};

}  // namespace tavix::test
