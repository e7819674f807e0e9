#include "files/ui/RecordingPanel.h"

#include "camera/ui/CameraPanel.h"
#include "common/HandlerGuard.h"
#include "common/ui/Icons.h"
#include "files/ui/frmiCubeSaveAvi.h"
#include "program/AppData.h"

#include <QPushButton>

namespace tavix {

RecordingPanel::RecordingPanel(AppData& data, Prompter& prompter, CameraPanel& camera, MessageLine& line,
                               const ResultTableState& results, const Parts& parts, QObject* parent)
    : QObject(parent), data_(data), prompter_(prompter), parts_(parts), runDialog_([](QDialog& d) {
          return d.exec();
      })
{
    tmrRec_.setObjectName(QStringLiteral("tmrRec"));
    tmrRec_.setInterval(1000);
    connect(&tmrRec_, &QTimer::timeout, this, &RecordingPanel::tmrRec_Timer);

    VideoRecording::Window window;
    window.askLength = [this](qint16& length) {
        frmiCubeSaveAvi dialog(length, data_.messages, prompter_, data_.log, parts_.playStop->window());
        runDialog_(dialog);
    };
    window.setRunState = [&camera](qint16 state) { camera.setRunState(state); };
    window.setCommandAreasEnabled = parts_.setCommandAreasEnabled;
    window.showButton = [this](VideoRecording::ButtonLook look) {
        QPushButton* button = parts_.playStop;
        if (look == VideoRecording::ButtonLook::Record) {
            button->setText(data_.messages.text(VideoRecording::kCaptionRecord));
            button->setIcon(Icons::record());
        } else {
            button->setText(data_.messages.text(VideoRecording::kCaptionRecording));
            button->setIcon(Icons::camera(true));
        }
    };
    window.setButtonEnabled = [this](bool on) {
        parts_.playStop->setEnabled(on);
        // Shown at once: the camera call that follows may take a moment.
        parts_.playStop->repaint();
    };
    window.setTimerRunning = [this](bool on) {
        if (on)
            tmrRec_.start();
        else
            tmrRec_.stop();
    };
    window.showLive = [&camera] {
        if (camera.stillShown())
            camera.toggleLiveStill();
    };
    recording_ = std::make_unique<VideoRecording>(data_.settings, data_.messages, data_.log, prompter_,
                                                  camera.session(), line, results, std::move(window));
    connect(&camera, &CameraPanel::playStopClicked, this, [this](qint16 state) {
        runGuarded(data_.log, QStringLiteral("frmMain:cmdPlayStop_Click"),
                   [this, state] { recording_->playStopClicked(state); });
    });
}

void RecordingPanel::record(const QString& fileName)
{
    recording_->begin(fileName);
}

void RecordingPanel::tmrRec_Timer()
{
    // Qt does not fire this timer again from the event loop of a report the tick shows.
    runGuarded(data_.log, QStringLiteral("frmMain:tmrRec_Timer"), [this] { recording_->tmrRec_Timer(); });
}

}  // namespace tavix
