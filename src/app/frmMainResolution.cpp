// The main window keeps the selected calibration in step with the resolution
// measured at: the camera's mode while live, the still's size once frozen or loaded.
#include "app/frmMain.h"

#include "calib/CalibrationController.h"
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
    data_.pictureSize = camera_->stillShown() ? camera_->still().size() : camera_->modeSize();
    if (!sbrProofNote_)
        return;  // still starting: the note comes with the rest of the window
    const int index = data_.settings.CURRENTPROOFNO;
    const QString note = CalibrationController::rescaleNote(data_.messages, data_.proofs.at(index).Name,
                                                            data_.proofSizes.at(index), data_.pictureSize);
    sbrProofNote_->setText(note);
    sbrProofNote_->setVisible(!note.isEmpty());
    // The scale bar shows the factors for this picture.
    overlays_->layoutChanged();
}

}  // namespace tavix
