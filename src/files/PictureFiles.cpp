#include "files/PictureFiles.h"

#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/RunError.h"
#include "common/SafeFile.h"
#include "measure/ResultTableState.h"
#include "media/BmpFile.h"
#include "media/JpegWriter.h"

#include <QByteArray>
#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <future>

namespace tavix {

namespace {

constexpr int kOutOfMemory = 7;  // the classic "Out of memory" run-time error

QString tail(const QString& text, int count)
{
    return text.size() >= count ? text.right(count) : QString();
}

QTransform viewTransform(double magnification, QPoint scrollOffset)
{
    return QTransform(magnification, 0, 0, magnification, -scrollOffset.x(), -scrollOffset.y());
}

// A copy of the still that can be drawn on in colour.
QImage paintable(const QImage& still)
{
    switch (still.format()) {
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
        case QImage::Format_RGB888:
            return still.copy();
        default:
            return still.convertToFormat(QImage::Format_RGB32);
    }
}

// The run-time error number of a JPEG status that is not about the file.
int errorOfJpegStatus(int status)
{
    if (const int fileError = JpegWriter::writeErrorOfStatus(status))
        return fileError;
    if (status == JpegWriter::kOutOfMemory)
        return kOutOfMemory;
    return BmpFile::kInvalidPicture;
}

// The picture the JPEG is made from: the source written to the temporary
// bitmap and read back, as the picture conversion has always been done.
void writeTemporaryBitmap(const QImage& source, const QString& tempPath)
{
    if (tempPath.isEmpty())
        return;
    QByteArray bytes;
    if (BmpFile::encode(source, bytes))
        SafeFile::writeScratch(tempPath, bytes);  // only a step: a failure leaves the JPEG alone
}

}  // namespace

PictureFiles::Kind PictureFiles::kindOf(const QString& fileName)
{
    const QString extension = tail(fileName, 4);
    if (extension.compare(QLatin1String(".bmp"), Qt::CaseInsensitive) == 0)
        return Kind::Bitmap;
    if (extension.compare(QLatin1String(".jpg"), Qt::CaseInsensitive) == 0)
        return Kind::Jpeg;
    return Kind::None;
}

bool PictureFiles::isRecording(const QString& fileName)
{
    return tail(fileName, 3).compare(QLatin1String("AVI"), Qt::CaseInsensitive) == 0;
}

QString PictureFiles::commentFileName(const QString& pictureName)
{
    if (pictureName.size() < 4)
        return {};
    return pictureName.chopped(4) + QStringLiteral(".txt");
}

QImage PictureFiles::visiblePart(const QImage& still, const View& view, const OverlayPainter& overlay)
{
    if (view.areaSize.isEmpty())
        return {};
    QImage out(view.areaSize, QImage::Format_RGB32);
    out.fill(view.background);
    if (still.isNull())
        return out;

    const double m = view.magnification > 0 ? view.magnification : 1.0;
    // The still view's own size and drawing, so the file shows what the screen shows.
    const QRect shown(QPoint(0, 0), (QSizeF(still.size()) * m).toSize());
    const QRect visible = QRect(view.scrollOffset, view.areaSize).intersected(shown);
    if (visible.isEmpty())
        return out;

    QPainter painter(&out);
    painter.translate(-view.scrollOffset);
    const QRectF source(visible.x() / m, visible.y() / m, visible.width() / m, visible.height() / m);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, m < 1.0);
    painter.drawImage(QRectF(visible), still, source);
    painter.resetTransform();
    if (overlay) {
        painter.setClipRect(visible.translated(-view.scrollOffset));
        overlay(painter, viewTransform(m, view.scrollOffset));
    }
    return out;
}

QImage PictureFiles::sourcePicture(qint16 still1xSave, const QImage& still, const View& view,
                                   const OverlayPainter& overlay)
{
    if (still1xSave != 1)
        return visiblePart(still, view, overlay);
    if (!overlay || still.isNull())
        return still;
    QImage full = paintable(still);
    QPainter painter(&full);
    overlay(painter, QTransform());
    return full;
}

bool PictureFiles::hasComment(const Comments& comments)
{
    return !comments[0].trimmed().isEmpty() || !comments[1].trimmed().isEmpty();
}

QByteArray PictureFiles::commentFileText(const Comments& comments)
{
    QByteArray text = comments[0].toUtf8();
    text += "\r\n";
    text += comments[1].toUtf8();
    text += "\r\n";
    return text;
}

PictureFiles::SaveResult PictureFiles::savePicture(const SaveRequest& request)
{
    SaveResult result;
    const auto fail = [&](int error, const QString& file, qint32 messageId) {
        result.outcome = SaveResult::Outcome::Failed;
        result.error = error;
        result.failedFile = file;
        result.messageId = messageId;
        return result;
    };

    switch (kindOf(request.fileName)) {
        case Kind::Bitmap: {
            const int error =
                request.source.isNull() ? err::InvalidCall : BmpFile::write(request.fileName, request.source);
            if (error != 0)
                return fail(error, request.fileName, kMsgPictureNotSaved);
            result.pictureWritten = true;
            break;
        }
        case Kind::Jpeg: {
            // The picture still passes through the temporary bitmap, but on a second
            // thread while the JPEG is made from the same pixels: reading the bitmap
            // back would give the encoder exactly these pixels, at twice the cost.
            auto temporary = std::async(std::launch::async, writeTemporaryBitmap, std::cref(request.source),
                                        std::cref(request.tempBitmapPath));
            const int status = SaveJpeg(&request.source, request.fileName, request.jpegQuality);
            temporary.wait();
            // The JPEG's status has never held up the comment file, which is written
            // below as for any name; the lost picture is still reported.
            if (status != JpegWriter::kOk) {
                result.jpegStatus = status;
                fail(errorOfJpegStatus(status), request.fileName, kMsgPictureNotSaved);
            } else {
                result.pictureWritten = true;
            }
            break;
        }
        case Kind::None:
            result.outcome = SaveResult::Outcome::NoPicture;
            break;
    }

    if (hasComment(request.comments)) {
        const QString commentFile = commentFileName(request.fileName);
        if (!commentFile.isEmpty()) {
            const int error = SafeFile::write(commentFile, commentFileText(request.comments));
            if (error == 0)
                result.commentWritten = true;
            else if (result.outcome != SaveResult::Outcome::Failed)  // a lost picture is told first
                fail(error, commentFile, kMsgCommentNotSaved);
        }
    }
    return result;
}

void PictureFiles::reportSaveFailure(const SaveResult& result, Prompter& prompter,
                                     const MessageTable& messages, const ErrorLog& log)
{
    if (result.outcome != SaveResult::Outcome::Failed)
        return;
    log.write(QStringLiteral("frmMain:cmdPicSave Error.(%1)").arg(result.error));
    prompter.message({messages.text(result.messageId, result.failedFile), messages.text(kMsgSaveTitle),
                      Prompter::Icon::Exclamation, Prompter::Buttons::Ok, Prompter::Answer::Ok});
}

bool PictureFiles::loadNeedsQuestion(const ResultTableState& results, qint16 keepResult)
{
    return results.hasResults() && keepResult == 0 && results.unsaved();
}

bool PictureFiles::confirmLoad(Prompter& prompter, const MessageTable& messages,
                               const ResultTableState& results, qint16 keepResult)
{
    if (!loadNeedsQuestion(results, keepResult))
        return true;
    return prompter.askYesNo(messages.text(kMsgLoadQuestion), messages.text(kMsgLoadTitle));
}

int PictureFiles::readByContent(QIODevice& device, QImage& picture)
{
    QImageReader reader(&device);  // the content decides, whatever the extension says
    reader.setAutoTransform(false);
    picture = reader.read();
    return picture.isNull() ? BmpFile::kInvalidPicture : 0;
}

PictureFiles::LoadResult PictureFiles::loadPicture(const QString& path)
{
    LoadResult result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = err::FileNotFound;
        return result;
    }
    char magic[2] = {};
    const bool bitmap = file.peek(magic, 2) == 2 && magic[0] == 'B' && magic[1] == 'M';
    file.close();

    if (bitmap) {
        result.error = BmpFile::read(path, result.picture);
    } else {
        QFile picture(path);
        result.error =
            picture.open(QIODevice::ReadOnly) ? readByContent(picture, result.picture) : err::FileNotFound;
    }
    if (result.error != 0) {
        result.picture = QImage();
        return result;
    }
    result.comments = readComments(path);
    return result;
}

PictureFiles::Comments PictureFiles::readComments(const QString& pictureName)
{
    Comments comments;
    const QString name = commentFileName(pictureName);
    if (name.isEmpty())
        return comments;
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return comments;
    for (QString& line : comments) {
        if (file.atEnd())
            break;
        QByteArray bytes = file.readLine();
        if (bytes.endsWith('\n'))
            bytes.chop(1);
        if (bytes.endsWith('\r'))
            bytes.chop(1);
        line = QString::fromUtf8(bytes);
    }
    return comments;
}

void PictureFiles::reportLoadFailure(const LoadResult& result, const QString& path, Prompter& prompter,
                                     const MessageTable& messages, const ErrorLog& log)
{
    if (result.error == 0)
        return;
    log.write(QStringLiteral("frmMain:cmdPicLoad Error.(%1)").arg(result.error));
    prompter.message({messages.text(kMsgPictureNotRead, path), messages.text(kMsgLoadTitle),
                      Prompter::Icon::Exclamation, Prompter::Buttons::Ok, Prompter::Answer::Ok});
}

Prompter::FileRequest PictureFiles::saveDialog(const MessageTable& messages)
{
    return {messages.text(kMsgSaveTitle), messages.text(kMsgSaveFilter), QString(), true};
}

Prompter::FileRequest PictureFiles::loadDialog(const MessageTable& messages)
{
    return {messages.text(kMsgLoadTitle), messages.text(kMsgLoadFilter), QString(), false};
}

}  // namespace tavix
