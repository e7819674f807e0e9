#pragma once

#include "media/BmpFile.h"

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QPoint>
#include <QString>
#include <array>
#include <vector>

namespace tavix {

class CameraDriver;
class Clock;
class ErrorLog;
class MessageTable;
class Prompter;

// Saves one picture of a series or a quick save: the camera writes it. When
// cross lines are shown the camera hands over its frame, or, when it only
// writes files, writes the temporary bitmap, which is read back; the lines are
// drawn on the picture, which is encoded once under the final name.
class IntervalShot {
public:
    static constexpr int kReadAttempts = 3;

    // The cross lines to draw, in picture pixels.
    struct Crosses {
        bool draw = false;
        int count = 1;  // CROSSLINENUM: 1 or 2
        std::array<QPoint, 2> points{};
        QColor color;
    };

    struct Job {
        int camera = 0;
        QString finalFile;      // the file the user gets
        QString temporaryFile;  // what the camera writes when crosses are drawn
        Crosses crosses;
        quint8 jpegQuality = 75;
        int stillWaitMs = 500;
    };

    enum class Outcome {
        Saved,
        CameraFailed,  // logged and reported; the caller closes the camera
        WriteFailed,   // the final file could not be written; logged, the camera is fine
    };

    IntervalShot(CameraDriver& driver, const ErrorLog& log, const MessageTable& messages, Prompter& prompter,
                 Clock& clock);

    Outcome save(const Job& job);
    // A still the program holds (a captured still is shown) instead of a camera write.
    Outcome saveStill(const QImage& still, const Job& job);

    // Lines of the colour across the whole picture at each cross; the second
    // cross is drawn as the first, and a line outside the picture not at all.
    static void drawCrosses(QImage& picture, const Crosses& crosses);

private:
    Outcome cameraFailed(const QString& logLine);
    Outcome writeFinal(const QImage& picture, const Job& job);
    Outcome writeJpeg(int encodeStatus, const Job& job);
    Outcome finalWritten(int error);
    // Compresses a bitmap's or a frame's rows with the crosses drawn into bytes_.
    int encodeDrawn(const BmpFile::StoredRows& stored, const Job& job);

    CameraDriver& driver_;
    const ErrorLog& log_;
    const MessageTable& messages_;
    Prompter& prompter_;
    Clock& clock_;
    QImage picture_;                // the temporary bitmap, read into the same buffer every time
    QByteArray bytes_;              // the encoded final file
    std::vector<uchar> rowCopies_;  // rows of the bitmap or frame with the lines drawn
};

}  // namespace tavix
