#pragma once

#include "calib/ProofRescale.h"

#include <QByteArray>
#include <QSize>
#include <QString>
#include <array>
#include <optional>

namespace tavix {

class ErrorLog;

// The picture each calibration entry was made at: its resolution (width x
// height) and, when the camera told, how its pixels lay on the sensor. Kept in
// a file of its own beside the calibration file so that the calibration file
// keeps its six fields.
//
// File: one line per entry in index order, UTF-8, CR LF (LF read as well):
//   "1280x1024"  the resolution alone (all that older files hold)
//   "1280x1024 px=2 field=0,0,2560,2048 cam=genicam/Maker-Model-0042"
//                with the pixel size and field on the sensor, in the sensor's
//                full-resolution pixels, and the camera ("driver/camera id",
//                always last: it runs to the end of the line)
// or an empty line when the entry's resolution is not known. Lines past the
// last entry are ignored; entries past the end of the file are not known.
class ProofResolutions {
public:
    static constexpr int Size = 20;

    // The file beside a calibration file: its name with ".res" added.
    static QString pathBeside(const QString& proofFilePath);

    // An invalid size when the entry's resolution is not known (or outside 0..19).
    QSize at(int index) const;
    // The resolution with the sensor geometry and camera, where known.
    const PictureGeometry& geometry(int index) const;
    // An empty size stores "not known", geometry and all.
    void set(int index, const PictureGeometry& made);
    void set(int index, QSize size) { set(index, PictureGeometry(size)); }

    // Fills the table from the file. A missing file leaves every entry unknown
    // without a word (the calibrations predate it); a broken or unreadable one
    // does the same and logs "Proof Resolution File Read Error.(n)" with the
    // number of the first bad line (0 when it could not be read at all).
    void read(const QString& path, const ErrorLog& log);

    // The file's text into the table. False, with every entry unknown and
    // badLine() telling the first bad line (1-based), when a line is neither
    // empty nor a width and height above 0, or holds a pixel size or field
    // that is not a number above 0.
    bool parse(const QString& text);
    int badLine() const { return badLine_; }

    QByteArray toFileText() const;

    // Written through a temporary file, so a failed write leaves the old file
    // whole. 0 on success, else the run-time error number.
    int write(const QString& path) const;

private:
    std::array<PictureGeometry, Size> entries_{};
    int badLine_ = 0;
};

}  // namespace tavix
