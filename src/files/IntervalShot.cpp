#include "files/IntervalShot.h"

#include "camera/CameraDriver.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/SafeFile.h"
#include "files/IntervalSave.h"
#include "files/PictureFiles.h"
#include "media/BmpFile.h"
#include "media/JpegWriter.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstring>

namespace tavix {

namespace {

// The cross lines as they meet the rows of a picture of RGB888, BGR888 or
// RGB32: the columns of the vertical lines, the rows of the horizontal ones
// and the colour as the format stores it. Drawn row by row, the lines can go
// into rows on their way to the encoder as well as into a whole picture.
// One pixel wide, straight into the rows: a painter would cost more than the
// lines on a 5-megapixel picture.
struct CrossLines {
    std::array<int, 2> columns{};
    int columnCount = 0;
    std::array<int, 2> rows{};
    int rowCount = 0;
    std::array<uchar, 4> pixel{};
    int pixelBytes = 3;
    int width = 0;

    bool alongRow(int y) const
    {
        return std::find(rows.cbegin(), rows.cbegin() + rowCount, y) != rows.cbegin() + rowCount;
    }
};

CrossLines crossLines(const IntervalShot::Crosses& crosses, int width, int height, QImage::Format format)
{
    CrossLines lines;
    lines.width = width;
    const QRgb rgb = crosses.color.rgb();
    if (format == QImage::Format_RGB32) {
        const quint32 word = rgb | 0xff000000u;
        std::memcpy(lines.pixel.data(), &word, sizeof word);
        lines.pixelBytes = 4;
    } else {
        const bool bgr = format == QImage::Format_BGR888;
        lines.pixel = {static_cast<uchar>(bgr ? qBlue(rgb) : qRed(rgb)), static_cast<uchar>(qGreen(rgb)),
                       static_cast<uchar>(bgr ? qRed(rgb) : qBlue(rgb)), 0};
    }
    // A line outside the picture is not drawn.
    for (int i = 0; i < std::min(crosses.count, 2); ++i) {
        const QPoint pt = crosses.points[static_cast<size_t>(i)];
        if (pt.x() >= 0 && pt.x() < width)
            lines.columns[static_cast<size_t>(lines.columnCount++)] = pt.x();
        if (pt.y() >= 0 && pt.y() < height)
            lines.rows[static_cast<size_t>(lines.rowCount++)] = pt.y();
    }
    return lines;
}

void drawRow(const CrossLines& lines, uchar* row, int y)
{
    const auto n = static_cast<size_t>(lines.pixelBytes);
    if (lines.alongRow(y)) {
        for (int x = 0; x < lines.width; ++x)
            std::memcpy(row + static_cast<size_t>(x) * n, lines.pixel.data(), n);
        return;
    }
    for (int i = 0; i < lines.columnCount; ++i)
        std::memcpy(row + static_cast<size_t>(lines.columns[static_cast<size_t>(i)]) * n, lines.pixel.data(),
                    n);
}

// Rows the encoder takes as they are and the lines are drawn into exactly as
// into the picture a bitmap is read into (an alpha channel would first be
// converted away), with the resolution a picture would carry.
bool compressibleAsStored(const BmpFile::StoredRows& rows)
{
    return (rows.format == QImage::Format_BGR888 || rows.format == QImage::Format_RGB32) &&
           rows.dotsPerMeterX > 0 && rows.dotsPerMeterY > 0;
}

// A camera's frame as rows the encoder takes where they lie; false for a
// layout that must be developed or converted first. The resolution is the one
// a grabbed frame's picture would carry.
bool frameRows(const FrameView& frame, BmpFile::StoredRows& rows)
{
    if (frame.raw != RawLayout::None ||
        (frame.format != QImage::Format_RGB888 && frame.format != QImage::Format_BGR888 &&
         frame.format != QImage::Format_RGB32))
        return false;
    const QImage picture(1, 1, frame.format);
    rows = {frame.bits,
            frame.bytesPerLine,
            frame.width,
            frame.height,
            frame.format,
            picture.dotsPerMeterX(),
            picture.dotsPerMeterY()};
    return true;
}

}  // namespace

IntervalShot::IntervalShot(CameraDriver& driver, const ErrorLog& log, const MessageTable& messages,
                           Prompter& prompter, Clock& clock)
    : driver_(driver), log_(log), messages_(messages), prompter_(prompter), clock_(clock)
{
}

IntervalShot::Outcome IntervalShot::save(const Job& job)
{
    driver_.SetSaveQuality(job.jpegQuality);
    const bool jpeg = PictureFiles::kindOf(job.finalFile) == PictureFiles::Kind::Jpeg;
    if (job.crosses.draw && driver_.canGrabFrame()) {
        // The frame is in memory already: no bitmap file to write and read
        // back. A JPEG is compressed from the frame where it lies, the lines
        // drawn into its rows on their way to the encoder.
        if (jpeg) {
            bool encoded = false;
            int status = 0;
            const int r = driver_.readFrame(job.camera, [&](const FrameView& frame) {
                BmpFile::StoredRows rows;
                if (frameRows(frame, rows)) {
                    status = encodeDrawn(rows, job);
                    encoded = true;
                }
            });
            if (r != 0)
                return cameraFailed(QStringLiteral("Error: ICubeSDK_SaveToFile(%1)").arg(r));
            if (encoded)
                return writeJpeg(status, job);
        }
        if (const int r = driver_.GrabFrame(job.camera, picture_); r != 0)
            return cameraFailed(QStringLiteral("Error: ICubeSDK_SaveToFile(%1)").arg(r));
        drawCrosses(picture_, job.crosses);
        return writeFinal(picture_, job);
    }
    const QString& written = job.crosses.draw ? job.temporaryFile : job.finalFile;
    if (job.crosses.draw && QFileInfo::exists(written))
        QFile::remove(written);  // an old file must not pass for the new picture
    if (const int r = driver_.SaveToFile(job.camera, written); r != 0)
        return cameraFailed(QStringLiteral("Error: ICubeSDK_SaveToFile(%1)").arg(r));
    if (!job.crosses.draw)
        return Outcome::Saved;

    // For a JPEG the bitmap is read where it lies, mapped, and compressed from
    // its rows with the lines drawn on the way: no copy of the picture first.
    // For a bitmap, or a temporary bitmap of another depth, it is read into a
    // picture that is drawn on.
    QFile file(written);
    uchar* mapped = nullptr;
    BmpFile::StoredRows rows;
    auto read = [&]() {
        if (jpeg && file.open(QIODevice::ReadOnly)) {
            const qint64 size = file.size();
            mapped = size > 0 ? file.map(0, size) : nullptr;
            if (mapped && BmpFile::storedRows(mapped, size, rows) && compressibleAsStored(rows))
                return true;
            if (mapped)
                file.unmap(mapped);
            mapped = nullptr;
            file.close();
        }
        return BmpFile::readAsStored(written, picture_) == 0;
    };
    // A camera that writes in the background gets its wait before every
    // read; one whose file is complete on return only before a second try.
    bool isRead = false;
    for (int attempt = 0; attempt < kReadAttempts && !isRead; ++attempt) {
        if (attempt > 0 || driver_.savesInBackground())
            clock_.sleepMs(job.stillWaitMs);
        isRead = read();
    }
    if (!isRead)
        return cameraFailed(QStringLiteral("Error:IS_DrawCrossLine FileCheck Error."));
    Outcome outcome;
    if (mapped) {
        outcome = writeJpeg(encodeDrawn(rows, job), job);
        file.unmap(mapped);
        file.close();
    } else {
        drawCrosses(picture_, job.crosses);
        outcome = writeFinal(picture_, job);
    }
    QFile::remove(written);
    return outcome;
}

IntervalShot::Outcome IntervalShot::saveStill(const QImage& still, const Job& job)
{
    if (!job.crosses.draw)
        return writeFinal(still, job);
    QImage drawn = still;  // the lines go into a copy: the first row drawn detaches it
    drawCrosses(drawn, job.crosses);
    return writeFinal(drawn, job);
}

void IntervalShot::drawCrosses(QImage& picture, const Crosses& crosses)
{
    const QImage::Format format = picture.format();
    if (format != QImage::Format_RGB888 && format != QImage::Format_BGR888 && format != QImage::Format_RGB32)
        picture = picture.convertToFormat(QImage::Format_RGB888);
    const CrossLines lines = crossLines(crosses, picture.width(), picture.height(), picture.format());
    if (lines.columnCount == 0 && lines.rowCount == 0)
        return;
    uchar* bits = picture.bits();
    const qsizetype stride = picture.bytesPerLine();
    for (int y = 0; y < picture.height(); ++y)
        drawRow(lines, bits + y * stride, y);
}

int IntervalShot::encodeDrawn(const BmpFile::StoredRows& stored, const Job& job)
{
    const CrossLines lines = crossLines(job.crosses, stored.width, stored.height, stored.format);
    const qsizetype rowBytes = static_cast<qsizetype>(stored.width) * lines.pixelBytes;
    // Each row is copied into a few rows that stay in the cache, drawn on
    // there and compressed from there; a row no line touches is not copied.
    if (rowCopies_.size() < static_cast<size_t>(JpegWriter::kRowBatch * rowBytes))
        rowCopies_.resize(static_cast<size_t>(JpegWriter::kRowBatch * rowBytes));
    uchar* copies = rowCopies_.data();
    JpegWriter::Rows rows{stored.width,
                          stored.height,
                          stored.format,
                          stored.dotsPerMeterX,
                          stored.dotsPerMeterY,
                          [&](int y) -> const uchar* {
                              const uchar* row = stored.top + y * stored.step;
                              if (lines.columnCount == 0 && !lines.alongRow(y))
                                  return row;
                              uchar* copy = copies + (y % JpegWriter::kRowBatch) * rowBytes;
                              std::memcpy(copy, row, static_cast<size_t>(rowBytes));
                              drawRow(lines, copy, y);
                              return copy;
                          }};
    return JpegWriter::encode(rows, std::min<int>(job.jpegQuality, JpegWriter::kMaxQuality), bytes_);
}

IntervalShot::Outcome IntervalShot::cameraFailed(const QString& logLine)
{
    log_.write(logLine);
    prompter_.message({messages_.text(IntervalSave::kMsgCameraFailed),
                       messages_.text(IntervalSave::kMsgCameraFailedTitle), Prompter::Icon::Critical});
    return Outcome::CameraFailed;
}

IntervalShot::Outcome IntervalShot::writeFinal(const QImage& picture, const Job& job)
{
    if (PictureFiles::kindOf(job.finalFile) == PictureFiles::Kind::Jpeg)
        return writeJpeg(
            JpegWriter::encode(picture, std::min<int>(job.jpegQuality, JpegWriter::kMaxQuality), bytes_),
            job);
    return finalWritten(BmpFile::write(job.finalFile, picture, bytes_));
}

IntervalShot::Outcome IntervalShot::writeJpeg(int encodeStatus, const Job& job)
{
    return finalWritten(encodeStatus != JpegWriter::kOk ? BmpFile::kInvalidPicture
                                                        : SafeFile::write(job.finalFile, bytes_));
}

IntervalShot::Outcome IntervalShot::finalWritten(int error)
{
    if (error == 0)
        return Outcome::Saved;
    // The drawing routine's own guard: logged, and the series goes on with the
    // next picture; the camera is fine.
    log_.write(QStringLiteral("frmMain:IS_DrawCrossLine Error.(%1)").arg(error));
    return Outcome::WriteFailed;
}

}  // namespace tavix
