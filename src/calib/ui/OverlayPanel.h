#pragma once

#include "calib/CrossLines.h"
#include "calib/ScaleBarToggle.h"

#include <QObject>
#include <functional>
#include <initializer_list>
#include <memory>

class QCheckBox;
class QDialog;
class QPushButton;
class QWidget;

namespace tavix {

struct AppData;
class CrossLineOverlay;
class Prompter;
class ScaleBarOverlay;

// The overlays over the picture area and their controls in the view command
// strip: the scale bar (chkScale), the cross lines (chkCross) and the view
// settings (cmdCamViewConfig).
class OverlayPanel : public QObject {
    Q_OBJECT
public:
    using DialogRunner = std::function<int(QDialog&)>;

    struct Sources {
        std::function<double()> magnification;  // of the picture shown
        std::function<QRect()> pictureBox;      // the picture shown, in area coordinates
        std::function<void()> openSaveSetting;  // the save-folder dialog
    };

    OverlayPanel(AppData& data, Prompter& prompter, QWidget* viewArea, QWidget* commandArea, Sources sources,
                 QObject* parent = nullptr);
    ~OverlayPanel() override;

    void setDialogRunner(DialogRunner runner) { runDialog_ = std::move(runner); }
    void applySettings();
    // The picture area changed size, zoom or picture: the bar follows.
    void layoutChanged();

    ScaleBarSwitch& scaleBar() { return *toggle_; }
    CrossLines& crossLines() { return crossLines_; }
    ScaleBarOverlay& scaleBarOverlay() { return *scaleOverlay_; }

    // The pointer over the picture area (area pixels): the cross lines follow it
    // while a cross is being placed. True when the release was taken by a cross.
    void pointerMoved(QPoint areaPoint);
    bool pointerReleased(QPoint areaPoint);
    // Watches the pictures in the area for the pointer; a release that places
    // a cross goes no further (it is no measuring point).
    void followPointerOver(std::initializer_list<QWidget*> pictures);

signals:
    void jpegQualityChanged();
    // A cross is being placed (10, 11) or no longer (0).
    void crossToolChanged(qint16 toolNumber);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    AppData& data_;
    Prompter& prompter_;
    QWidget* viewArea_;
    Sources sources_;
    DialogRunner runDialog_;
    CrossLines crossLines_;
    std::unique_ptr<ScaleBarOverlay> scaleOverlay_;
    std::unique_ptr<ScaleBarToggle> toggle_;
    std::unique_ptr<CrossLineOverlay> crossOverlay_;
    QCheckBox* chkScale_ = nullptr;
    QCheckBox* chkCross_ = nullptr;
    QPushButton* cmdCamViewConfig_ = nullptr;
};

}  // namespace tavix
