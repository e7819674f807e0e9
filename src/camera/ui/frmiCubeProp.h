#pragma once

#include "camera/CameraProperties.h"

#include <QDialog>
#include <map>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QSlider;
class QTabWidget;

namespace tavix {

class CameraChooser;

// The camera properties dialog "Settings": a thin window over
// CameraProperties. Each user change goes to the logic, which writes the
// camera; the window then shows the controls as the logic holds them.
//
// Created for each opening (its constructor is the load); modal in the
// program (exec()), with the live view running behind it.
class frmiCubeProp : public QDialog {
    Q_OBJECT
public:
    // With a chooser, a list at the top switches to another camera; every
    // control is then read again from it.
    explicit frmiCubeProp(const CameraProperties::Parts& parts, CameraChooser* chooser = nullptr,
                          QWidget* parent = nullptr);

    CameraProperties& logic() { return logic_; }

private:
    void buildControls();
    QWidget* buildCameraRow();
    QWidget* buildVideoTab();
    QWidget* buildRgbTab();
    QWidget* buildLightTab();
    QSlider* addSlider(QGridLayout* grid, int row, const char* caption, const char* slider,
                       const char* label);
    QCheckBox* addCheck(const char* name, const char* caption);
    QLabel* addLabel(const char* name);
    // Shows the controls as the logic holds them, raising no change events.
    void showControls();
    void sliderValueChanged(QSlider* slider);

    CameraProperties logic_;
    CameraChooser* chooser_ = nullptr;
    QTabWidget* SSTab1_ = nullptr;
    QGroupBox* Frame3_ = nullptr;
    QComboBox* cboResolution_ = nullptr;
    std::map<QString, QSlider*> sliders_;
    std::map<QString, QCheckBox*> checks_;
    std::map<QString, QComboBox*> choices_;
    std::map<QString, QLabel*> labels_;
    std::map<QSlider*, QLabel*> valueLabels_;  // the label a slider's drag tip falls back to
};

}  // namespace tavix
