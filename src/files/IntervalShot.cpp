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

namespace tavix {

IntervalShot::IntervalShot(CameraDriver& driver, const ErrorLog& log, const MessageTable& messages,
                           Prompter& prompter, Clock& clock)
    : driver_(driver), log_(log), messages_(messages), prompter_(prompter), clock_(clock)
{
}

IntervalShot::Outcome IntervalShot::save(const Job& job)
{
    driver_.SetSaveQuality(job.jpegQuality);
    if (job.crosses.draw && driver_.canGrabFrame()) {
        // The frame is in memory already: no bitmap file to write and read back.
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

    // A camera that writes in the background gets its wait before every
    // read; one whose file is complete on return only before a second try.
    bool read = false;
    for (int attempt = 0; attempt < kReadAttempts && !read; ++attempt) {
        if (attempt > 0 || driver_.savesInBackground())
            clock_.sleepMs(job.stillWaitMs);
        read = BmpFile::readAsStored(written, picture_) == 0;
    }
    if (!read)
        return cameraFailed(QStringLiteral("Error:IS_DrawCrossLine FileCheck Error."));
    drawCrosses(picture_, job.crosses);
    const Outcome outcome = writeFinal(picture_, job);
    QFile::remove(written);
    return outcome;
}

IntervalShot::Outcome IntervalShot::saveStill(const QImage& still, const Job& job)
{
    if (!job.crosses.draw)
        return writeFinal(still, job);
    QImage drawn = still.convertToFormat(QImage::Format_RGB888);
    drawCrosses(drawn, job.crosses);
    return writeFinal(drawn, job);
}

void IntervalShot::drawCrosses(QImage& picture, const Crosses& crosses)
{
    const QImage::Format format = picture.format();
    if (format != QImage::Format_RGB888 && format != QImage::Format_BGR888 && format != QImage::Format_RGB32)
        picture = picture.convertToFormat(QImage::Format_RGB888);
    const int w = picture.width();
    const int h = picture.height();
    const QRgb rgb = crosses.color.rgb();
    const bool bgr = picture.format() == QImage::Format_BGR888;
    const uchar c[3] = {static_cast<uchar>(bgr ? qBlue(rgb) : qRed(rgb)), static_cast<uchar>(qGreen(rgb)),
                        static_cast<uchar>(bgr ? qRed(rgb) : qBlue(rgb))};
    const bool packed = picture.format() != QImage::Format_RGB32;
    auto set = [&](int x, int y) {
        uchar* p = picture.scanLine(y);
        if (packed)
            std::copy(c, c + 3, p + 3 * x);
        else
            reinterpret_cast<QRgb*>(p)[x] = rgb | 0xff000000u;
    };
    // One pixel wide, straight into the rows: a painter would cost more than the
    // lines on a 5-megapixel picture. A line outside the picture is not drawn.
    for (int i = 0; i < std::min(crosses.count, 2); ++i) {
        const QPoint pt = crosses.points[static_cast<size_t>(i)];
        if (pt.x() >= 0 && pt.x() < w)
            for (int y = 0; y < h; ++y)
                set(pt.x(), y);
        if (pt.y() >= 0 && pt.y() < h)
            for (int x = 0; x < w; ++x)
                set(x, pt.y());
    }
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
    int error = 0;
    if (PictureFiles::kindOf(job.finalFile) == PictureFiles::Kind::Jpeg) {
        const int status = JpegWriter::encode(picture, std::min<int>(job.jpegQuality, 100), bytes_);
        error = status != JpegWriter::kOk ? BmpFile::kInvalidPicture : SafeFile::write(job.finalFile, bytes_);
    } else {
        error = BmpFile::write(job.finalFile, picture, bytes_);
    }
    if (error == 0)
        return Outcome::Saved;
    // The drawing routine's own guard: logged, and the series goes on with the
    // next picture; the camera is fine.
    log_.write(QStringLiteral("frmMain:IS_DrawCrossLine Error.(%1)").arg(error));
    return Outcome::WriteFailed;
}

}  // namespace tavix
