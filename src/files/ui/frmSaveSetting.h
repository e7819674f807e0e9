#pragma once

#include "common/ui/GuardedDialog.h"

#include <QDialog>
#include <array>
#include <functional>

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

// The save-mode dialog of the interval save: a timed series, or quick saves
// into a folder. OK stores IS_MODE and IS_SAVEPATH (refusing a folder that
// does not exist in the folder mode); Cancel changes nothing. The opener
// reads the outcome from result() (Accepted or Rejected).
//
// Created for each opening (its constructor is the load). Modal in the
// program (exec()); tests open it with show(). Esc and the close box cancel.
class frmSaveSetting : public GuardedDialog {
    Q_OBJECT
public:
    // Message ids of the captions and the message.
    static constexpr qint32 kMsgCaption = 30000, kMsgFrame = 30020, kMsgSeries = 30021, kMsgQuickSave = 30022;
    static constexpr qint32 kMsgFolder = 30023, kMsgBrowse = 30024, kMsgNoFolder = 30025;
    // The folder browser's title.
    static constexpr qint32 kMsgBrowserTitle = kMsgQuickSave;

    frmSaveSetting(Settings& settings, Prompter& prompter, const MessageTable& messages, const ErrorLog& log,
                   QWidget* parent = nullptr);

public slots:
    void reject() override;

private:
    void buildControls();
    void Form_Load();
    void optIS_Mode_Click();
    void cmdSavePath_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

    Settings& settings_;
    Prompter& prompter_;
    const MessageTable& messages_;

    QGroupBox* Frame1_ = nullptr;
    std::array<QRadioButton*, 2> optIS_Mode_{};
    QLabel* Label1_ = nullptr;
    QLineEdit* txtSavePath_ = nullptr;
    QPushButton* cmdSavePath_ = nullptr;
    QPushButton* cmdOK_ = nullptr;
    QPushButton* cmdCancel_ = nullptr;
};

}  // namespace tavix
