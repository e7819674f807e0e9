#pragma once

#include "common/Prompter.h"

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QTransform>
#include <array>
#include <functional>

class QPainter;

class QIODevice;

namespace tavix {

class ErrorLog;
class MessageTable;
class ResultTableState;

// Saving the still picture to a BMP or JPEG file with its two-line comment
// file, and loading such a picture back: everything of the picture buttons
// that needs no window. The main window asks the questions through a
// Prompter, freezes and resumes the live view and redraws; this class decides
// and writes.
class PictureFiles {
public:
    // Message ids used here.
    static constexpr qint32 kMsgLoadFilter = 11021, kMsgSaveFilter = 11030;
    static constexpr qint32 kMsgLoadQuestion = 20020, kMsgLoadTitle = 11020;
    static constexpr qint32 kMsgSaveTitle = 40002;
    static constexpr qint32 kMsgPictureNotSaved = 20200;  // "@" = the picture's file name
    static constexpr qint32 kMsgCommentNotSaved = 20201;  // "@" = the comment file's name
    static constexpr qint32 kMsgPictureNotRead = 20202;   // "@" = the picture's file name

    using Comments = std::array<QString, 2>;  // txtComment(0), txtComment(1)

    // What a chosen file name saves, by its last four characters in any case.
    enum class Kind { None, Bitmap, Jpeg };
    static Kind kindOf(const QString& fileName);

    // True when the name's last three characters are "AVI" in any case: the
    // name is for a video recording, not a picture.
    static bool isRecording(const QString& fileName);

    // The comment file of a picture: its name less the last four characters,
    // plus ".txt". Empty for a name shorter than four characters.
    static QString commentFileName(const QString& pictureName);

    // --- The picture to save ---------------------------------------------

    // Draws the measurements over a picture; `pictureToImage` maps still
    // pixels to pixels of the image painted on.
    using OverlayPainter = std::function<void(QPainter& painter, const QTransform& pictureToImage)>;

    // How the still is shown: at a magnification, scrolled, in an area.
    struct View {
        double magnification = 1.0;
        // The pixel of the magnified picture at the area's top-left corner:
        // minus the still view's position in the area. Positive when
        // scrolled, negative when a small picture is centred in the area.
        QPoint scrollOffset;
        QSize areaSize;                         // the visible area's inner size
        QColor background = QColor(Qt::black);  // of the area around a small picture
    };

    // Exactly what the area shows: an image of the area's size with the part
    // of the magnified, scrolled still that is visible, drawn as the still
    // view draws it, and the overlay when one is given.
    static QImage visiblePart(const QImage& still, const View& view, const OverlayPainter& overlay = {});

    // The picture a save writes: with STILL1XSAVE 1 the full-size still, else
    // the visible part of the view. The overlay, when given, is drawn over
    // either; without it the full-size still is returned as it is.
    static QImage sourcePicture(qint16 still1xSave, const QImage& still, const View& view,
                                const OverlayPainter& overlay = {});

    // --- Saving ------------------------------------------------------------

    struct SaveRequest {
        QString fileName;         // as chosen in the save dialog
        QImage source;            // from sourcePicture()
        Comments comments;        // as typed
        quint8 jpegQuality = 75;  // JPEGQTY
        QString tempBitmapPath;   // the program folder's temporary bitmap
    };

    struct SaveResult {
        enum class Outcome {
            Written,    // the picture, and the comment file when there is a comment
            NoPicture,  // no picture for the extension; the comment file as above
            Failed,     // a file could not be written; it is left as it was
        };
        Outcome outcome = Outcome::Written;
        bool pictureWritten = false;
        bool commentWritten = false;
        int error = 0;         // the run-time error number of a failure
        int jpegStatus = 0;    // SaveJpeg's status of a failed JPEG
        QString failedFile;    // the file that could not be written
        qint32 messageId = 0;  // kMsgPictureNotSaved or kMsgCommentNotSaved on failure
    };

    // Writes the picture by the name's extension (".bmp" a bitmap, ".jpg" a
    // JPEG through the temporary bitmap at the quality, anything else
    // nothing), then the comment file when either comment, trimmed, is not
    // empty. Every file goes to a temporary name first, so a failed write
    // leaves an earlier file of that name whole. A bitmap that cannot be
    // written ends the save without a comment file; a JPEG that cannot be
    // written does not: the comment file is still written, and the result
    // names the lost picture (before a comment file that failed as well).
    // The temporary bitmap is only a step: when it cannot be written or read
    // back, the JPEG is made from the source itself.
    static SaveResult savePicture(const SaveRequest& request);

    // True when either comment, trimmed, is not empty.
    static bool hasComment(const Comments& comments);
    // The comment file's bytes: each comment as typed, in UTF-8, followed by CR LF.
    static QByteArray commentFileText(const Comments& comments);

    // Logs "frmMain:cmdPicSave Error.(n)" and tells the user which file could
    // not be written (exclamation icon). Nothing for a save that did not fail.
    static void reportSaveFailure(const SaveResult& result, Prompter& prompter, const MessageTable& messages,
                                  const ErrorLog& log);

    // --- Loading -----------------------------------------------------------

    // Whether loading must first ask before the results are dropped: only
    // when the table holds results, KEEPRESULT is off and they are unsaved.
    static bool loadNeedsQuestion(const ResultTableState& results, qint16 keepResult);
    // Asks when needed (message 20020, title 11020, Yes/No, question icon, No
    // as default); true when the load goes on.
    static bool confirmLoad(Prompter& prompter, const MessageTable& messages, const ResultTableState& results,
                            qint16 keepResult);

    struct LoadResult {
        int error = 0;  // 0, 53 missing or unreadable file, 481 not a readable picture
        QImage picture;
        Comments comments;  // empty when there is no comment file
    };

    // Reads a BMP or JPEG file (recognised by its content) and the two lines
    // of its comment file. On error the picture is null and the comments empty.
    static LoadResult loadPicture(const QString& path);
    // A picture other than a bitmap, read by Qt's readers from its content:
    // 0, or 481 when it is not a readable picture.
    static int readByContent(QIODevice& device, QImage& picture);

    // The first two lines of the picture's comment file (LF or CR LF); a
    // missing line is empty, and so are both without the file.
    static Comments readComments(const QString& pictureName);

    // Logs "frmMain:cmdPicLoad Error.(n)" and tells the user that the file
    // could not be read (exclamation icon).
    static void reportLoadFailure(const LoadResult& result, const QString& path, Prompter& prompter,
                                  const MessageTable& messages, const ErrorLog& log);

    // --- The file dialogs ---------------------------------------------------

    // The save dialog: no name, filter list 11030. The open dialog: no name,
    // filter list 11021.
    static Prompter::FileRequest saveDialog(const MessageTable& messages);
    static Prompter::FileRequest loadDialog(const MessageTable& messages);
};

}  // namespace tavix
