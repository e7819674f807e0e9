#pragma once

#include "common/ui/GuardedDialog.h"

#include <QDialog>
#include <functional>

class QLabel;
class QPushButton;
class QSlider;

namespace tavix {

class ErrorLog;
class MessageTable;
class SettingsFile;
struct Settings;

// The JPEG quality dialog: a slider from 10 to 100 and the value beside it.
// OK stores the quality in JPEGQTY and writes it to the settings file at
// once; Cancel changes nothing.
//
// Created for each opening (its constructor is the load). Modal in the
// program (exec()); tests open it with show(). Esc and the close box cancel.
class frmJpegQty : public GuardedDialog {
    Q_OBJECT
public:
    static constexpr qint32 kMsgCaption = 12000;
    static constexpr int kMinimum = 10;  // the range the settings loader accepts
    static constexpr int kMaximum = 100;

    frmJpegQty(Settings& settings, SettingsFile& settingsFile, const MessageTable& messages,
               const ErrorLog& log, QWidget* parent = nullptr);

public slots:
    void reject() override;

private:
    void buildControls();
    void Form_Load();
    void sldJpegQty_Change();
    void cmdOK_Click();
    void cmdCancel_Click();

    Settings& settings_;
    SettingsFile& settingsFile_;
    const MessageTable& messages_;

    QSlider* sldJpegQty_ = nullptr;
    QLabel* lblValue_ = nullptr;
    QPushButton* cmdOK_ = nullptr;
    QPushButton* cmdCancel_ = nullptr;
};

}  // namespace tavix
