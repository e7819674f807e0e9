#pragma once

#include "common/Guidance.h"
#include "common/MessageLine.h"
#include "program/AppData.h"

#include <QMainWindow>
#include <array>
#include <functional>
#include <memory>

class QComboBox;
class QLabel;
class QPushButton;
class QToolButton;
class QTranslator;

namespace tavix {

class CameraDriver;
class CameraPanel;
class Clock;
class CommentLineEdit;
class IntervalSavePanel;
class MeasurePanel;
class MeasureSession;
class OverlayPanel;
class CameraChoiceKeeper;
class VideoDeviceSystem;
class PicturePanel;
class RecordingPanel;
class Prompter;

// The program's main window: start-up, layout, close and exit. Controllers of
// the later subsystems hang their controls on the areas built here.
class frmMain : public QMainWindow {
    Q_OBJECT
public:
    // Makes the camera driver once the settings are read (--camera or [CAMERA] DRIVER).
    using DriverFactory = std::function<std::unique_ptr<CameraDriver>(AppData& data)>;

    frmMain(const QString& programFolder, Prompter& prompter, Clock& clock, DriverFactory driverFactory,
            QWidget* parent = nullptr);
    ~frmMain() override;

    // The start-up sequence. False when it failed: the failure is logged and
    // reported, and the program must end without showing the window.
    bool Form_Load();

    AppData& data() { return data_; }
    CameraPanel& camera() { return *camera_; }
    MeasurePanel& measure() { return *measure_; }
    MeasureSession& measuring();
    OverlayPanel& overlays() { return *overlays_; }
    PicturePanel& pictures() { return *pictures_; }
    IntervalSavePanel& intervalSave() { return *intervalSave_; }
    RecordingPanel& recording() { return *recording_; }
    Guidance& guidance() { return *guidance_; }
    MessageLine& messageLine() { return *messageLine_; }

    // While set, closing the window or pressing the exit button asks first.
    bool confirmOnClose() const { return confirmOnClose_; }
    void setConfirmOnClose(bool on) { confirmOnClose_ = on; }

    // Switches every control of a command area, except those tagged "NoDisable".
    void setCommandAreaEnabled(QWidget* area, bool enabled);
    // Both command areas off while a series or a recording runs, and back as
    // the picture shown allows.
    void setWorkAreasEnabled(bool on);

    // The video devices the camera list asks (this machine's when not set); before Form_Load.
    void setVideoDevices(const VideoDeviceSystem* devices) { videoDevices_ = devices; }

    // Opens a picture file as the still (a picture named on the command line).
    void openPicture(const QString& fileName);

    // How many times the layout was worked out; a minimized window does none.
    int layoutPasses() const { return layoutPasses_; }

    // Fixed design sizes of the areas, for tests and later controllers.
    static constexpr const char* kNoDisable = "NoDisable";

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildControls();
    void buildViewCommandArea();
    void buildStatusBar();
    void placeRunTimeControls();
    void applySettingsToControls();
    // The font, and Qt's own dialog texts, for the message file's language.
    void applyLanguage();
    // Tool tips, keyboard shortcuts and the picture's name in the title.
    void installDesktopHabits();
    void cancelMeasuringTool();
    void Form_Resize();
    void Form_Unload();
    void cmdExit_Click();
    // Form_Load's steps, under its guard.
    bool loadSteps();
    bool openCamera();
    // The camera list of the camera settings and the switch to another camera.
    void offerOtherCameras();
    void stillShownChanged(bool shown);
    void cboScale_Click();
    // After a fatal camera error: unloads every window, which ends the program.
    void endProgram();
    void connectOverlays();
    void connectPictures();
    void connectIntervalSave();
    void connectRecording();
    // The selected calibration follows the resolution measured at, with a note in the status bar.
    void connectProofResolution();
    void refreshPictureSize();

    AppData data_;
    Prompter& prompter_;
    Clock& clock_;
    DriverFactory driverFactory_;
    std::unique_ptr<CameraPanel> camera_;
    std::unique_ptr<CameraChoiceKeeper> cameraKeeper_;
    const VideoDeviceSystem* videoDevices_ = nullptr;
    std::unique_ptr<OverlayPanel> overlays_;
    std::unique_ptr<MeasurePanel> measure_;
    std::unique_ptr<PicturePanel> pictures_;
    std::unique_ptr<IntervalSavePanel> intervalSave_;
    std::unique_ptr<RecordingPanel> recording_;
    std::unique_ptr<Guidance> guidance_;
    std::unique_ptr<MessageLine> messageLine_;
    std::unique_ptr<QTranslator> qtTexts_;  // Qt's own texts in the message file's language
    bool confirmOnClose_ = true;
    bool unloadRequested_ = false;  // the program, not the close box, closes the window
    bool unloaded_ = false;
    bool loaded_ = false;      // the start-up ran to its end
    bool scaleShown_ = false;  // cboScale shows DEFAULTSCALE
    int layoutPasses_ = 0;

    QWidget* central_ = nullptr;
    QWidget* picViewArea_ = nullptr;
    QWidget* picViewCommandArea_ = nullptr;
    QWidget* picMeasureCommandArea_ = nullptr;
    QPushButton* cmdPlayStop_ = nullptr;
    QPushButton* cmdPinProp_ = nullptr;
    QPushButton* cmdPicLoad_ = nullptr;
    QPushButton* cmdPicSave_ = nullptr;
    QPushButton* cmdExit_ = nullptr;
    QLabel* lblJpegQtyCaption_ = nullptr;
    QLabel* lblJpegQty_ = nullptr;
    QLabel* lblScale_ = nullptr;
    QLabel* lblZoom_ = nullptr;  // the magnification of the picture shown
    QComboBox* cboScale_ = nullptr;
    QLabel* lblComment_ = nullptr;
    std::array<CommentLineEdit*, 2> txtComment_{};
    std::array<QLabel*, 6> sbriCube_{};
    QLabel* sbrProofNote_ = nullptr;       // says when the calibration is rescaled for the picture
    QToolButton* cmdHistogram_ = nullptr;  // opens and closes the histogram window
};

}  // namespace tavix
