#pragma once

#include <QByteArray>
#include <QSize>
#include <QString>
#include <array>

namespace tavix {

class ErrorLog;

// The resolution (picture width x height) each calibration entry was made at,
// kept in a file of its own beside the calibration file so that the
// calibration file keeps its six fields.
//
// File: one line per entry in index order, "1280x1024", or an empty line when
// the entry's resolution is not known; UTF-8, CR LF (LF read as well). Lines
// past the last entry are ignored; entries past the end of the file are not known.
class ProofResolutions {
public:
    static constexpr int Size = 20;

    // The file beside a calibration file: its name with ".res" added.
    static QString pathBeside(const QString& proofFilePath);

    // An invalid size when the entry's resolution is not known (or outside 0..19).
    QSize at(int index) const;
    void set(int index, QSize size);

    // Fills the table from the file. A missing file leaves every entry unknown
    // without a word (the calibrations predate it); a broken or unreadable one
    // does the same and logs "Proof Resolution File Read Error.(n)" with the
    // number of the first bad line (0 when it could not be read at all).
    void read(const QString& path, const ErrorLog& log);

    // The file's text into the table. False, with every entry unknown and
    // badLine() telling the first bad line (1-based), when a line is neither
    // empty nor a width and height above 0.
    bool parse(const QString& text);
    int badLine() const { return badLine_; }

    QByteArray toFileText() const;

    // Written through a temporary file, so a failed write leaves the old file
    // whole. 0 on success, else the run-time error number.
    int write(const QString& path) const;

private:
    std::array<QSize, Size> sizes_{};
    int badLine_ = 0;
};

}  // namespace tavix
