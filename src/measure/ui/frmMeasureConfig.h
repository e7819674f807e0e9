#pragma once

#include "common/ui/GuardedDialog.h"

#include <QDialog>
#include <array>
#include <functional>

class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;

namespace tavix {

class ErrorLog;
class MessageTable;
class Prompter;
struct Settings;

// The measurement settings dialog: measurement, cross-line and scale-bar
// colours, number of cross lines, decimals, label font size and the command
// modes of the angle, two-point and circle tools. OK copies the values into
// the settings; Cancel leaves them as they were. What the window redraws from
// them afterwards is up to the opener.
//
// Created for each opening (its constructor is the load). Modal in the
// program (exec()); tests open it with show(). Esc and the close box cancel.
class frmMeasureConfig : public GuardedDialog {
    Q_OBJECT
public:
    static constexpr int kColorCount = 7;
    static constexpr int kLabelCount = 13;

    frmMeasureConfig(Settings& settings, const MessageTable& messages, Prompter& prompter,
                     const ErrorLog& log, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using OptionPair = std::array<QRadioButton*, 2>;

    void buildControls();
    QGroupBox* buildColourFrame();
    QGroupBox* buildCrossLineFrame();
    QGroupBox* buildDisplayFrame();
    QLabel* makeLabel(int index);
    QLabel* makeSwatch(int index);
    OptionPair makeOptions(const char* name, QWidget* parent);

    void Form_Load();
    void lblColor_Click(int index);
    void cmdOK_Click();

    QColor swatchColor(int index) const;
    void setSwatchColor(int index, const QColor& color);

    Settings& settings_;
    const MessageTable& messages_;
    Prompter& prompter_;

    std::array<QGroupBox*, 3> Frame_{};
    std::array<QLabel*, kLabelCount> Label1_{};
    std::array<QLabel*, kColorCount> lblColor_{};
    OptionPair optCrossLineNum_{};
    QComboBox* cboDec_ = nullptr;
    QComboBox* cboFontSize_ = nullptr;
    OptionPair optAngleCommand_{};
    OptionPair opt2PointCommand_{};
    OptionPair optCircleArcSelect_{};
    QPushButton* cmdOK_ = nullptr;
    QPushButton* cmdCancel_ = nullptr;
};

}  // namespace tavix
