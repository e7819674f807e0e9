#pragma once

#include "calib/CalibrationController.h"
#include "calib/ScaleBarSwitch.h"
#include "measure/ResultTable.h"

#include <QImage>
#include <QObject>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

class QCheckBox;
class QComboBox;
class QDialog;
class QGroupBox;
class QLabel;
class QPushButton;
class QTableView;
class QToolButton;
class QWidget;

namespace tavix {

struct AppData;
class CameraPanel;
class Guidance;
struct MainLayout;
class MeasureSession;
class OverlayPanel;
class frmCaliperProfile;
struct Measurement;
class Prompter;

// The measurement command area: calibration choice and procedure, the tool
// buttons, the measurement settings, and the result table with its buttons.
class MeasurePanel : public QObject {
    Q_OBJECT
public:
    // Runs a modal dialog; tests replace it to drive the dialog themselves.
    using DialogRunner = std::function<int(QDialog&)>;

    MeasurePanel(AppData& data, Prompter& prompter, ScaleBarSwitch& scaleBar, QWidget* area,
                 QObject* parent = nullptr);
    ~MeasurePanel() override;

    void setDialogRunner(DialogRunner runner) { runDialog_ = std::move(runner); }
    // The two-point average that the measuring keeps, for the result file.
    void setTwoPointAverage(std::function<double()> average) { twoPointAverage_ = std::move(average); }
    // The still shown now (none while the live picture runs), for "From scale".
    void setStillSource(std::function<QImage()> still) { still_ = std::move(still); }

    // Captions, the calibration list and the check boxes from the settings.
    void applySettings();
    // The parts that follow the window's size.
    void place(const MainLayout& layout);

    // Starts the measuring on the camera panel's still: the session of tools
    // and clicks with its overlay, edge snap, calibration marking, and the
    // hand-over of the mouse between measuring tools and cross lines.
    MeasureSession& startMeasuring(Guidance& guidance, CameraPanel& camera, OverlayPanel& overlays);
    MeasureSession& session() { return *session_; }
    bool sessionStarted() const { return session_ != nullptr; }

    ResultTable& results() { return results_; }
    CalibrationController& calibration() { return *calibration_; }

    // Handlers, public for the window's wiring and for tests.
    void cboProof_Click(int index);
    void cmdProofConfig_Click();
    void cmdMeasureConfig_Click();
    // A calibration length was marked on the picture: its true length is asked
    // and the calibration dialog comes back.
    void calibrationLengthMarked(double pixels, double magnification);
    // No tool button pressed (the live picture runs, or a marking ended).
    void releaseToolButtons();
    // The area is switched on for a still or off for the live picture.
    void setMeasuringEnabled(bool enabled);
    // A new still, or the live picture again: the area follows, the table
    // starts again, and on the live picture the tool is put away.
    void stillShownChanged(bool shown);
    // The result buttons and undo and redo follow the table (only while the area is on).
    void refreshButtons();

signals:
    void toolButtonClicked(int index);
    // Result rows first..last (1-based) are selected in the grid.
    void rowsSelected(int first, int last);
    // The measurement settings changed: colours, decimals, font size, tool modes.
    void measureSettingsChanged();
    // chkEdgeSnap was switched (EDGESNAP holds the new state).
    void edgeSnapChanged(bool on);
    // A calibration length is to be marked on the picture with this tool.
    void calibrationMarkingRequested(qint16 toolNumber, qint16 guidanceNumber);
    // Another entry is selected, or the calibration dialog saved the selected one.
    void proofChanged();

private:
    void build(QWidget* area);
    void applyToolCaptions();
    void fillProofList();
    void runProofDialog();
    // The profile of a caliper measurement, in its small window.
    void showCaliperProfile(const Measurement& caliper, const QImage& still);
    // The grid's current row and the selection's end row (1-based), or
    // nothing when no row is selected.
    std::optional<std::pair<int, int>> selectedRowRange() const;

    AppData& data_;
    Prompter& prompter_;
    ScaleBarSwitch& scaleBar_;
    ResultTable results_;
    std::unique_ptr<CalibrationController> calibration_;
    std::unique_ptr<MeasureSession> session_;  // refers to results_: declared after it
    DialogRunner runDialog_;
    std::function<double()> twoPointAverage_;
    std::function<QImage()> still_;
    bool measuringEnabled_ = false;

    QComboBox* cboProof_ = nullptr;
    QPushButton* cmdProofConfig_ = nullptr;
    QGroupBox* fraTools_ = nullptr;
    std::array<QToolButton*, 9> cmdMeasure_{};  // 7: caliper, 8: one-click circle
    QPushButton* cmdMeasureConfig_ = nullptr;
    QLabel* lblProof_ = nullptr;
    QLabel* lblResults_ = nullptr;
    QTableView* grdResult_ = nullptr;
    QPushButton* cmdResultClear_ = nullptr;
    QPushButton* cmdResultRemove_ = nullptr;
    QPushButton* cmdResultSave_ = nullptr;
    QToolButton* cmdUndo_ = nullptr;
    QToolButton* cmdRedo_ = nullptr;
    QCheckBox* chkKeepResult_ = nullptr;
    QCheckBox* chkEdgeSnap_ = nullptr;
    frmCaliperProfile* caliperProfile_ = nullptr;  // made with the first caliper measurement
};

}  // namespace tavix
