#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

namespace tavix {

// Windows bitmaps, written and read without Qt's BMP plug-in, which is about
// three times slower than writing the bytes themselves. Written files are
// 24-bit, uncompressed, bottom-up; the reader takes 24- and 32-bit files of
// that kind (Qt's own included) and leaves every other depth to Qt.
class BmpFile {
public:
    // The classic "Invalid picture" run-time error.
    static constexpr int kInvalidPicture = 481;
    static constexpr int kHeaderSize = 54;  // file header + BITMAPINFOHEADER

    // The size of the 24-bit file of a picture of that size.
    static qsizetype fileSize(int width, int height);

    // Encodes pixels of Format_RGB888, Format_BGR888, Format_RGB32 or
    // Format_ARGB32 (alpha dropped) into `out`, reusing its storage when it is
    // large enough, so that repeated saves of one size allocate nothing.
    // Returns false for an empty picture or another format.
    static bool encode(const uchar* bits, int width, int height, qsizetype bytesPerLine,
                       QImage::Format format, QByteArray& out);
    // Any picture; formats other than the above are converted first.
    static bool encode(const QImage& image, QByteArray& out);

    // Writes the picture through a temporary file that replaces `path` only
    // when complete. Returns 0 or a run-time error number (76 folder missing,
    // 75 no access, 61 disk full, 5 empty picture). `buffer` is the caller's
    // reusable encoding buffer.
    static int write(const QString& path, const QImage& image, QByteArray& buffer);
    static int write(const QString& path, const QImage& image);

    // Decodes a bitmap: Format_RGB888 from 24-bit files, Format_RGB32 or
    // Format_ARGB32 (when the file carries an alpha mask) from 32-bit files;
    // other bitmaps through QImageReader. A null image when the bytes are not a
    // readable bitmap.
    static QImage decode(const uchar* data, qsizetype size);
    static QImage decode(const QByteArray& bytes);

    // The pixels of a 24- or 32-bit bitmap where they lie in `data`, without
    // copying them: the top row and the step to the row below it (negative
    // for a bottom-up file), in the format readAsStored would give them.
    struct StoredRows {
        const uchar* top = nullptr;
        qsizetype step = 0;
        int width = 0;
        int height = 0;
        QImage::Format format = QImage::Format_BGR888;
        int dotsPerMeterX = 0;  // 0 when the file gives none
        int dotsPerMeterY = 0;
    };
    // False for bytes that are no bitmap or one that only Qt's reader decodes.
    static bool storedRows(const uchar* data, qsizetype size, StoredRows& rows);

    // Reads a bitmap file into `image`, reusing its pixel buffer when it has
    // the size and format already. Returns 0, 53 when the file is missing or
    // unreadable, or 481 when it is not a readable bitmap; `image` is left as
    // it was on failure.
    static int read(const QString& path, QImage& image);
    // The same, but a 24-bit file gives Format_BGR888 with its rows as stored,
    // which saves a pass over the pixels for a picture that goes on to the
    // JPEG writer or to another bitmap.
    static int readAsStored(const QString& path, QImage& image);
};

}  // namespace tavix
