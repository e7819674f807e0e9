#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <functional>

namespace tavix {

// Writes JPEG files with libjpeg-turbo's compressor, called directly: Qt's
// JPEG plug-in drives the same library but copies every row (pixel by pixel
// for 32-bit pictures) and grows its output in small steps; at 2592x1944 and
// quality 75 it took 1.14 times the library's own time for a 24-bit picture
// and 1.34 times for a 32-bit one, this writer 1.0 (bench_picture_save). The
// files are byte for byte those Qt writes: baseline JFIF, 4:2:0, the
// library's quality tables, the picture's resolution.
class JpegWriter {
public:
    // The status numbers of the classic JPEG routine; 0 means written.
    enum Status : int {
        kOk = 0,
        kEncoderFailed = 1,   // the compressor stopped with an error
        kInvalidPicture = 2,  // larger than a JPEG file can describe
        kOutOfMemory = 3,     // no room for the compressed picture
        kWriteFailed = 7,     // the file could not be written (disk full, I/O error)
        kFolderMissing = 10,  // the folder of the file does not exist
        kAccessDenied = 12,   // the folder or file may not be written
        kNoPicture = 13,      // no picture given, or one without pixels
    };

    static constexpr int kMaxQuality = 100;
    static constexpr int kMaxSide = 65500;  // the largest side a JPEG file holds

    // Compresses the picture into `out` (replacing its content) at the quality,
    // which the caller keeps within 0..100. Formats that libjpeg-turbo reads as
    // they are (RGB888, BGR888, the 32-bit RGB formats, Grayscale8) are
    // compressed from their own rows; others are converted to RGB888 first, or
    // to Grayscale8 when they hold only greys. Alpha is ignored (colour
    // channels as stored), as Qt's writer does; grey pictures give one-channel
    // files.
    // Returns kOk, kNoPicture, kInvalidPicture, kOutOfMemory or kEncoderFailed.
    static int encode(const QImage& picture, int quality, QByteArray& out);

    // Pixels that are no QImage, such as the rows of a mapped bitmap file, in
    // one of the formats the compressor reads as they are (RGB888, BGR888,
    // the 32-bit RGB formats, Grayscale8). `row(y)` gives row y counted from
    // the top; the encoder asks for up to kRowBatch rows in turn before it
    // reads them, so a row handed out must stay valid until kRowBatch more
    // were asked for.
    static constexpr int kRowBatch = 16;
    struct Rows {
        int width = 0;
        int height = 0;
        QImage::Format format = QImage::Format_RGB888;
        int dotsPerMeterX = 0;  // the resolution as QImage keeps it
        int dotsPerMeterY = 0;
        std::function<const uchar*(int y)> row;
    };
    // The same file as a picture of these pixels would give. kNoPicture for
    // no rows or a format that would need converting.
    static int encode(const Rows& rows, int quality, QByteArray& out);

    // The run-time error number (61 disk full, 75 access, 76 folder missing)
    // of a failed file write, as a status number; and back (0 for a status
    // that is not about the file).
    static int statusOfWriteError(int runError);
    static int writeErrorOfStatus(int status);
};

// Writes the picture as a JPEG file at the given quality: no picture -> 13;
// a quality above 100 is taken as 100; 0 when written, another status of
// JpegWriter otherwise. The file goes to a temporary name first and replaces
// an existing file only when complete, so a failed write leaves it whole.
int SaveJpeg(const QImage* picture, const QString& fileName, quint8 quality);

}  // namespace tavix
