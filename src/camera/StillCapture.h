#pragma once

#include <QImage>
#include <QString>
#include <functional>

namespace tavix {

class CameraDriver;
class Clock;
class ErrorLog;
class MessageTable;
class Prompter;

// Freezes the camera's current frame: the camera writes it to the temporary
// bitmap, which is read back as the still picture.
class StillCapture {
public:
    // Reads a bitmap into the image; 0 or a run-time error number.
    using Reader = std::function<int(const QString& path, QImage& image)>;

    StillCapture(CameraDriver& driver, const ErrorLog& log, const MessageTable& messages, Prompter& prompter,
                 Clock& clock, Reader reader);

    // A new still into `still`; false leaves `still` as it was. waitMs is the
    // longest wait for the file of a camera that writes it in the background.
    bool capture(int camera, const QString& tempBitmap, int waitMs, QImage& still);

    // Reads the temporary bitmap again (the redraw of a still without a new picture).
    bool reload(const QString& tempBitmap, QImage& still);

    int displayErrors() const { return displayErrors_; }

private:
    bool load(const QString& path, int waitMs, QImage& still);

    CameraDriver& driver_;
    const ErrorLog& log_;
    const MessageTable& messages_;
    Prompter& prompter_;
    Clock& clock_;
    Reader reader_;
    QImage scratch_;  // read into, then swapped with the still: a failed read changes nothing
    int displayErrors_ = 0;
};

}  // namespace tavix
