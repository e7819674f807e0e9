#pragma once

#include <QObject>
#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QDialog;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;

namespace tavix {

struct AppData;
class CameraPanel;
class Guidance;
class MeasureSession;
class Prompter;
class ResultTable;

// Saving and loading still pictures: cmdPicSave, cmdPicLoad, chkMeasureSave,
// and the JPEG quality (lblJpegQty) and save-folder dialogs.
class PicturePanel : public QObject {
    Q_OBJECT
public:
    using DialogRunner = std::function<int(QDialog&)>;

    struct Parts {
        QPushButton* picLoad = nullptr;
        QPushButton* picSave = nullptr;
        QLabel* jpegQuality = nullptr;   // clicked: the quality dialog
        QWidget* commandArea = nullptr;  // where chkMeasureSave goes
        QWidget* viewArea = nullptr;
        QComboBox* scale = nullptr;
        std::array<QLineEdit*, 2> comments{};
        std::function<void()> resetMagnification;    // cboScale back to "x 1.0"
        std::function<void(const QString&)> record;  // a name ending in "AVI": a video recording
    };

    PicturePanel(AppData& data, Prompter& prompter, CameraPanel& camera, MeasureSession& measuring,
                 ResultTable& results, Guidance& guidance, const Parts& parts, QObject* parent = nullptr);

    void setDialogRunner(DialogRunner runner) { runDialog_ = std::move(runner); }
    void applySettings();

    void cmdPicSave_Click();
    void cmdPicLoad_Click();
    // Opens a picture file as the still, as the load button does once the name is chosen.
    void loadPictureFile(const QString& fileName);
    void lblJpegQty_Click();
    void openSaveSetting();

    QCheckBox* measureSave() const { return chkMeasureSave_; }

signals:
    // A picture file was loaded or saved: the window shows its name.
    void pictureFileChanged(const QString& fileName);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showJpegQuality();

    AppData& data_;
    Prompter& prompter_;
    CameraPanel& camera_;
    MeasureSession& measuring_;
    ResultTable& results_;
    Guidance& guidance_;
    Parts parts_;
    DialogRunner runDialog_;
    QCheckBox* chkMeasureSave_ = nullptr;
};

}  // namespace tavix
