#pragma once

#include "common/ui/GuardedDialog.h"

#include <QDialog>
#include <array>

class QLabel;
class QLineEdit;
class QPushButton;

namespace tavix {

class ErrorLog;
class MessageTable;
class Prompter;
struct Settings;

// The interval series dialog: the interval in minutes and seconds and the
// number of pictures. OK checks the three boxes (a message and the focus on
// the first wrong one) and stores INTERVALTIME and NUMBEROFIMAGES; Cancel
// changes nothing. The opener reads result() (Accepted or Rejected).
//
// Created for each opening (its constructor is the load). Modal in the
// program (exec()); tests open it with show(). Esc and the close box cancel.
class frmIS_Config : public GuardedDialog {
    Q_OBJECT
public:
    static constexpr qint32 kMsgCaption = 30000, kMsgFirstLabel = 30001;
    static constexpr int kLabelCount = 5;  // messages 30001..30005

    frmIS_Config(Settings& settings, Prompter& prompter, const MessageTable& messages, const ErrorLog& log,
                 QWidget* parent = nullptr);

public slots:
    void reject() override;

private:
    void buildControls();
    void Form_Load();
    void cmdOK_Click();

    Settings& settings_;
    Prompter& prompter_;
    const MessageTable& messages_;

    std::array<QLabel*, kLabelCount> Label1_{};
    std::array<QLineEdit*, 2> txtIntervalTime_{};  // minutes, seconds
    QLineEdit* txtNumberOfImages_ = nullptr;
    QLabel* lblTime_ = nullptr;
    QLabel* lblNoi_ = nullptr;
    QPushButton* cmdOK_ = nullptr;
    QPushButton* cmdCancel_ = nullptr;
};

}  // namespace tavix
