#pragma once

#include "files/VideoRecording.h"

#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>

class QDialog;
class QPushButton;

namespace tavix {

struct AppData;
class CameraPanel;
class MessageLine;
class Prompter;
class ResultTableState;

// Video recording in the main window: the length dialog, cmdPlayStop as the
// record button and the countdown timer tmrRec, around VideoRecording.
class RecordingPanel : public QObject {
    Q_OBJECT
public:
    using DialogRunner = std::function<int(QDialog&)>;

    struct Parts {
        QPushButton* playStop = nullptr;
        // Switches the window's command areas for the length of a recording.
        std::function<void(bool)> setCommandAreasEnabled;
    };

    RecordingPanel(AppData& data, Prompter& prompter, CameraPanel& camera, MessageLine& line,
                   const ResultTableState& results, const Parts& parts, QObject* parent = nullptr);

    void setDialogRunner(DialogRunner runner) { runDialog_ = std::move(runner); }

    // The picture-save dialog chose a name ending in "AVI".
    void record(const QString& fileName);

    VideoRecording& recording() { return *recording_; }
    QTimer& tmrRec() { return tmrRec_; }
    // One tick, public so that tests can step it.
    void tmrRec_Timer();

private:
    AppData& data_;
    Prompter& prompter_;
    Parts parts_;
    DialogRunner runDialog_;
    QTimer tmrRec_;
    std::unique_ptr<VideoRecording> recording_;
};

}  // namespace tavix
