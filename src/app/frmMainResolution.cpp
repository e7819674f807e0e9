// The main window keeps the selected calibration in step with the resolution
// measured at: the camera's mode while live, the still's size once frozen or loaded.
#include "app/frmMain.h"

#include "calib/CalibrationController.h"
#include "calib/ProofRescale.h"
#include "calib/ui/OverlayPanel.h"
#include "camera/ui/CameraPanel.h"
#include "files/ui/PicturePanel.h"
#include "measure/ui/MeasurePanel.h"

#include "common/ui/WidgetNames.h"

#include <QLabel>
#include <QStatusBar>

namespace tavix {

void frmMain::connectProofResolution()
{
    sbrProofNote_ = named(new QLabel(statusBar()), QStringLiteral("sbrProofNote"));
    statusBar()->addWidget(sbrProofNote_);
    connect(camera_.get(), &CameraPanel::modeSizeChanged, this, &frmMain::refreshPictureSize);
    connect(measure_.get(), &MeasurePanel::proofChanged, this, &frmMain::refreshPictureSize);
    connect(pictures_.get(), &PicturePanel::pictureFileChanged, this, &frmMain::refreshPictureSize);
    refreshPictureSize();
}

void frmMain::refreshPictureSize()
{
    data_.picture = camera_->pictureGeometry();
    if (!sbrProofNote_)
        return;  // still starting: the note comes with the rest of the window
    const int index = data_.settings.CURRENTPROOFNO;
    const PictureGeometry& made = data_.proofSizes.geometry(index);
    const QString note =
        CalibrationController::rescaleNote(data_.messages, data_.proofs.at(index).Name, made, data_.picture);
    sbrProofNote_->setText(note);
    sbrProofNote_->setVisible(!note.isEmpty());
    // A rescale by guess must not read like one the camera vouches for.
    const bool guess = !ProofRescale::rescale(made, data_.picture).trusted();
    sbrProofNote_->setProperty("guess", guess);
    sbrProofNote_->setStyleSheet(guess ? QStringLiteral("color: #b00000; font-weight: bold;") : QString());
    // The scale bar shows the factors for this picture.
    overlays_->layoutChanged();
}

}  // namespace tavix
