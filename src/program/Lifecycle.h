#pragma once

#include <QString>
#include <functional>
#include <optional>

namespace tavix {

struct AppData;
class SettingsFile;

// The start-up and exit steps of the program that need no window.
namespace Lifecycle {

// Built in: the message table may be the very thing that failed.
inline const QString kEndedText = QStringLiteral("The error occurred. The program is ended. ");
inline const QString kBuiltInTitle = QStringLiteral("Digital Camera Image Display Program");

struct StartupFailure {
    QString title;  // of the message box; empty or message 11100
};

// Logs the start and reads the settings, message, calibration and guidance
// files in that order. The first failure logs its read-error line and is
// returned; later files are not read.
std::optional<StartupFailure> readDataFiles(AppData& data);

// The unload steps: the temporary bitmap deleted, the settings written back
// (the shown magnification index in place of DEFAULTSCALE), the camera stopped
// and closed, the interval-save settings written, leftover temporary bitmaps
// deleted, and the end logged.
void unload(AppData& data, qint16 selectedScaleIndex, const std::function<void()>& stopAndCloseCamera);

// Files whose names start with the temporary bitmap's name less its last four
// characters and end in ".bmp", in the temporary bitmap's folder.
void deleteTemporaryBitmaps(const QString& tempBitmapPath);

}  // namespace Lifecycle
}  // namespace tavix
