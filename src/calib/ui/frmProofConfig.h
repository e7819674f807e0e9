#pragma once

#include "common/ui/GuardedDialog.h"

#include "measure/PointD.h"

#include <QDialog>
#include <QImage>
#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace tavix {

class CalibrationController;
class ErrorLog;
class MessageTable;
class ScaleLineView;

// The calibration dialog: name and unit of the selected entry, the marking
// mode, and a measure button per axis that closes the dialog so the length
// can be marked on the still picture. It works on the controller's edit
// buffer; OK stores the entry and rewrites the calibration file.
//
// Created for each opening (its constructor is the load). Modal in the
// program (exec()); tests open it with show(). Esc and the close box cancel.
class frmProofConfig : public GuardedDialog {
    Q_OBJECT
public:
    frmProofConfig(CalibrationController& controller, const MessageTable& messages, const ErrorLog& log,
                   QWidget* parent = nullptr);

    // The still the divisions of a micrometer are measured on; "From scale"
    // stays off without one.
    void setStill(const QImage& still);

public slots:
    void reject() override;

private:
    void buildControls();
    void Form_Load();
    void chkAxisOption_Click();
    void cmdValue_Click(int index);
    void cmdOK_Click();
    void cmdCancel_Click();
    void cmdFromScale_Click();
    void scaleLineDrawn(PointD from, PointD to);
    void showResolution();

    CalibrationController& controller_;
    const MessageTable& messages_;

    std::array<QLabel*, 2> Label1_{};
    QLineEdit* txtName_ = nullptr;
    QComboBox* cboUnit_ = nullptr;
    QGroupBox* Frame1_ = nullptr;
    std::array<QRadioButton*, 2> optPointMode_{};
    QCheckBox* chkAxisOption_ = nullptr;
    QLabel* lblXAxis_ = nullptr;
    QLabel* lblYAxis_ = nullptr;
    std::array<QLabel*, 2> lblValue_{};
    std::array<QPushButton*, 2> cmdValue_{};
    QPushButton* cmdOK_ = nullptr;
    QPushButton* cmdCancel_ = nullptr;
    QLabel* lblDivision_ = nullptr;
    QLineEdit* txtDivision_ = nullptr;
    QPushButton* cmdFromScale_ = nullptr;
    ScaleLineView* picFromScale_ = nullptr;
    QLabel* lblFromScale_ = nullptr;
    QLabel* lblResolution_ = nullptr;  // the resolution the factors belong to
    QImage still_;
};

}  // namespace tavix
