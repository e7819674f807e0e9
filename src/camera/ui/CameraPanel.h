#pragma once

#include "calib/ProofRescale.h"
#include "camera/CameraChoice.h"
#include "camera/CameraSession.h"
#include "camera/FrameStatistics.h"
#include "camera/LiveHistogram.h"
#include "camera/LiveView.h"
#include "camera/StillCapture.h"
#include "camera/SwitchableCamera.h"

#include <QImage>
#include <QObject>
#include <QTimer>
#include <array>
#include <functional>
#include <memory>

class QDialog;
class QLabel;
class QPushButton;
class QScrollArea;
class QStatusBar;

namespace tavix {

struct AppData;
class CameraDriver;
class CameraViewWidget;
class Clock;
class Prompter;
class StillViewWidget;
class frmHistogram;

// The camera side of the main window: the session, the live picture, the
// still picture and the live/still button with its timers and status panels.
class CameraPanel : public QObject {
    Q_OBJECT
public:
    struct Widgets {
        QWidget* viewArea = nullptr;      // picViewArea: both pictures go in it
        QPushButton* playStop = nullptr;  // cmdPlayStop
        QPushButton* pinProp = nullptr;   // cmdPinProp: the camera properties dialog
        std::array<QLabel*, 6> status{};  // driver, frames, FPS, average, bad frames, resolution
    };

    // The status bar's camera panels, in Widgets::status order.
    static std::array<QLabel*, 6> addStatusPanels(QStatusBar* bar);

    CameraPanel(AppData& data, Prompter& prompter, Clock& clock, std::unique_ptr<CameraDriver> driver,
                const Widgets& widgets, QObject* parent = nullptr);
    ~CameraPanel() override;

    // Opens and starts the camera. False after a fatal failure.
    bool open();
    // Stops and closes the camera at exit.
    void exit();

    // The states of cmdPlayStop.
    enum RunState : qint16 { kNormal = 0, kRecordingArmed = 1, kRecording = 2, kSeries = 3 };
    qint16 runState() const { return runState_; }
    void setRunState(qint16 state) { runState_ = state; }

    // cmdPlayStop's click, guarded: in run state 0 live to still or back; in
    // the other states it belongs to the recording or the series.
    void cmdPlayStop_Click();
    // Live to still or back.
    void toggleLiveStill();
    // cmdPinProp's click: the camera properties dialog, modal, over the running live view.
    void cmdPinProp_Click();
    // How the properties dialog offers other cameras: the cameras there are,
    // the driver for one of them (null when it cannot be had), and what is
    // done once the switch is over (opened or not: the choice is kept for
    // the next start, or what making the driver changed is undone). Without
    // these the dialog has no camera list.
    struct CameraSwitching {
        std::function<std::vector<CameraChoice>()> cameras;
        std::function<std::unique_ptr<CameraDriver>(const CameraChoice&)> make;
        std::function<void(const CameraChoice&, bool opened)> done;
        CameraChoice current;  // the camera opened at start
    };
    void setCameraSwitching(CameraSwitching switching)
    {
        currentCamera_ = switching.current;
        switching_ = std::move(switching);
    }
    // Puts the chosen camera in place of the one in use and starts its live
    // picture. The new camera is opened once before the one in use is let go:
    // when it does not open, the user is told and the camera in use goes on.
    bool switchCamera(const CameraChoice& choice);
    // The camera in use, as the camera list names it (the id only once chosen).
    const CameraChoice& currentCamera() const { return currentCamera_; }
    QString driverName() const { return driver_->driverName(); }
    // How dialogs are run: exec() in the program; tests drive them and return.
    using DialogRunner = std::function<int(QDialog&)>;
    void setDialogRunner(DialogRunner runner) { runDialog_ = std::move(runner); }
    bool stillShown() const { return stillShown_; }
    // Shows the held still again, without its measurements, from the
    // temporary bitmap; the camera is not asked for a new picture.
    void redrawStill();
    // A picture loaded from a file becomes the still.
    void showPicture(const QImage& picture);

    // The held still, full size (picTempView).
    const QImage& still() const { return still_; }
    StillViewWidget* stillView() const { return stillView_; }
    // The size of the camera's current mode (the live picture).
    QSize modeSize() const { return modeSize_; }
    // The picture measured at, as calibrations see it: the still's (a file's
    // at its size alone) or the live mode's, with its geometry on the camera's
    // sensor where the driver knows it.
    PictureGeometry pictureGeometry() const;
    CameraViewWidget* cameraView() const { return cameraView_; }
    LiveView& liveView() { return liveView_; }
    CameraSession& session() { return *session_; }
    FrameStatistics& statistics() { return statistics_; }

    void setMagnification(double magnification);
    // The scale of the picture shown: the zoom on a still, the fit into the
    // picture area on the live picture.
    double shownMagnification() const;
    // The part of the picture area that shows the picture, in area coordinates.
    QRect shownPictureBox() const;
    // A point of the picture area as the pixel of the picture shown under it.
    QPoint areaToPicture(QPoint areaPoint) const;
    // Fits both pictures into the picture area again (after a resize).
    void refit();

    // The histogram window: the live picture's levels a few times a second,
    // or the still's. Counting costs nothing while it is closed.
    void setHistogramShown(bool shown);
    bool histogramShown() const;
    // Made when first shown; nullptr before.
    frmHistogram* histogramWindow() const { return histogram_; }
    LiveHistogram& liveHistogram() { return liveHistogram_; }

    // Timer ticks, public so that tests can step them.
    void tmriCube_Timer();
    void tmrLiveIcon_Timer();

signals:
    void stillShownChanged(bool shown);
    // The camera streams in a mode of another size (start-up, resolution change).
    void modeSizeChanged(QSize size);
    // A fatal camera error closed the camera: every window must unload.
    void endProgramRequested();
    // cmdPlayStop was clicked in a run state other than kNormal.
    void playStopClicked(qint16 runState);
    // The histogram window was opened or closed (also by its own close box).
    void histogramShownChanged(bool shown);

private:
    void showLive();
    void showStill();
    void placeCameraView(QSize modeSize);
    PictureGeometry liveGeometry() const;
    // The histogram window follows the picture shown: live counting or the still's levels.
    void refreshHistogram();

    AppData& data_;
    Prompter& prompter_;
    Clock& clock_;
    std::unique_ptr<SwitchableCamera> driver_;
    CameraSwitching switching_;
    CameraChoice currentCamera_;
    Widgets w_;
    LiveView liveView_;
    LiveHistogram liveHistogram_{clock_};
    std::unique_ptr<CameraSession> session_;
    StillCapture capture_;
    FrameStatistics statistics_;
    CameraViewWidget* cameraView_ = nullptr;
    QScrollArea* stillScroll_ = nullptr;
    StillViewWidget* stillView_ = nullptr;
    QTimer tmriCube_;
    QTimer tmrLiveIcon_;
    QImage still_;
    PictureGeometry stillGeometry_;
    QSize modeSize_;
    bool stillShown_ = false;
    bool lossReported_ = false;
    qint16 runState_ = kNormal;
    bool iconLit_ = false;
    DialogRunner runDialog_;
    frmHistogram* histogram_ = nullptr;  // owned by the main window
};

}  // namespace tavix
