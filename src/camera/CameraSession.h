#pragma once

#include "camera/CameraDriver.h"

#include <QSize>
#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

namespace tavix {

class ErrorLog;
class MessageTable;
class Prompter;
struct Settings;

// One camera, always index 0: found and opened at start-up, streaming into the
// live view, stopped and closed at exit or on a fatal camera error.
class CameraSession {
public:
    // What the session needs of the main window.
    struct View {
        quintptr window = 0;                         // native window of picCameraView, for drivers that draw
        FrameSink* sink = nullptr;                   // for drivers that hand frames over
        std::function<void(QSize)> placeCameraView;  // size picCameraView to the mode
        std::function<void(const QString&)> showResolution;  // the status bar's panel
        // Unloads every open window, the last opened first, which ends the
        // program; called after a fatal camera error has closed the camera.
        std::function<void()> endProgram;
    };

    CameraSession(CameraDriver& driver, Settings& settings, const MessageTable& messages, const ErrorLog& log,
                  Prompter& prompter);

    // The open sequence, ending with the camera started. False after a fatal
    // failure: the failure was logged and reported and the camera shut down;
    // the program must end.
    bool open(const View& view);

    // Restarts the stream in the current mode. False after a fatal failure.
    bool start();

    // Stops and closes the camera, ignoring errors; the program goes on
    // without it (a failed mode change, series or recording).
    void closeCamera();

    // Fatal camera errors: closes the camera, then ends the program.
    void shutdown();

    // At exit: stops and closes, logging failures and going on.
    void exit();

    // The resolution change of the properties dialog: stop, set the mode, start.
    // False when setting the mode failed (logged, reported, camera closed);
    // the start that follows in either case ends the program if it fails.
    // Refused with a message (false, nothing changed) while the camera is
    // unplugged and its driver waits for it to come back.
    bool changeMode(std::int32_t mode);

    CameraDriver& driver() { return driver_; }
    int camera() const { return camera_; }
    std::int32_t currentMode() const { return currentMode_; }
    const std::vector<std::int32_t>& modes() const { return modes_; }
    QString resolutionText() const;

private:
    bool fatal(const QString& logLine, int status);
    bool noCamera(const QString& logLine);

    CameraDriver& driver_;
    Settings& settings_;
    const MessageTable& messages_;
    const ErrorLog& log_;
    Prompter& prompter_;
    View view_;
    int camera_ = 0;
    std::int32_t currentMode_ = 0;
    std::vector<std::int32_t> modes_;
};

}  // namespace tavix
