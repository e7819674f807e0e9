#pragma once

#include "common/ui/GuardedDialog.h"

#include <QDialog>
#include <array>
#include <functional>

class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QSlider;

namespace tavix {

class ErrorLog;
class MessageTable;
class Prompter;
struct Settings;

// The view settings dialog: the number of cross lines and their colour, the
// JPEG quality of saved pictures, and a button to the save-folder dialog. OK
// copies the values into the settings (the dialog's result is then
// Accepted); Cancel leaves them as they were. The opener applies them.
//
// Created for each opening (its constructor is the load). Modal in the
// program (exec()); tests open it with show(). Esc and the close box cancel.
class frmCamViewConfig : public GuardedDialog {
    Q_OBJECT
public:
    static constexpr int kMinJpegQuality = 10;
    static constexpr int kMaxJpegQuality = 100;

    // Opens the save-folder dialog (cmdSaveSetting); the opener provides it.
    using SaveSettingOpener = std::function<void()>;

    frmCamViewConfig(Settings& settings, const MessageTable& messages, Prompter& prompter,
                     const ErrorLog& log, SaveSettingOpener openSaveSetting, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildControls();
    void Form_Load();
    void lblColor_Click();
    void cmdSaveSetting_Click();
    void cmdOK_Click();

    QColor swatchColor() const;
    void setSwatchColor(const QColor& color);

    Settings& settings_;
    const MessageTable& messages_;
    Prompter& prompter_;
    SaveSettingOpener openSaveSetting_;

    QGroupBox* Frame1_ = nullptr;
    QGroupBox* Frame2_ = nullptr;
    std::array<QLabel*, 2> Label1_{};
    std::array<QRadioButton*, 2> optCrossLineNum_{};
    QLabel* lblColor_ = nullptr;
    QSlider* sldJpegQty_ = nullptr;
    QPushButton* cmdSaveSetting_ = nullptr;
    QPushButton* cmdOK_ = nullptr;
    QPushButton* cmdCancel_ = nullptr;
};

}  // namespace tavix
