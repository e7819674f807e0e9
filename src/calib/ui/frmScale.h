#pragma once

#include "common/ui/GuardedDialog.h"

#include <QDialog>
#include <array>
#include <functional>

class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace tavix {

class ErrorLog;
class MessageTable;
class Prompter;
struct Settings;

// The scale bar dialog: the lengths of the horizontal and the vertical bar in
// the selected entry's unit, the bar type and its position. OK checks that
// both lengths are above 0 and stores them with the type and the position in
// the settings (the dialog's result is then Accepted); Cancel stores nothing.
//
// Created for each opening (its constructor is the load). Modal in the
// program (exec()); tests open it with show(). Esc and the close box cancel.
class frmScale : public GuardedDialog {
    Q_OBJECT
public:
    // The bar's length must be above 0; "@" is the axis's Label1 caption.
    static constexpr qint32 kLengthMessage = 25000;
    static constexpr qint32 kLengthTitle = 15100;

    frmScale(Settings& settings, const QString& unit, const MessageTable& messages, Prompter& prompter,
             const ErrorLog& log, QWidget* parent = nullptr);

private:
    void buildControls();
    void Form_Load();
    void optAxis_Click();
    void cmdOK_Click();

    Settings& settings_;
    QString unit_;
    const MessageTable& messages_;
    Prompter& prompter_;

    QGroupBox* Frame1_ = nullptr;
    std::array<QRadioButton*, 2> optAxis_{};
    std::array<QLabel*, 2> Label1_{};
    std::array<QLineEdit*, 2> txtScaleLen_{};
    std::array<QLabel*, 2> lblUnit_{};
    QLabel* Label2_ = nullptr;
    QComboBox* cboPosition_ = nullptr;
    QPushButton* cmdOK_ = nullptr;
    QPushButton* cmdCancel_ = nullptr;
};

}  // namespace tavix
