#include "files/ui/PicturePanel.h"

#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/Guidance.h"
#include "common/HandlerGuard.h"
#include "common/SettingsFile.h"
#include "common/ui/WidgetNames.h"
#include "files/PictureFiles.h"
#include "files/ui/frmJpegQty.h"
#include "files/ui/frmSaveSetting.h"
#include "measure/MeasureSession.h"
#include "measure/MeasurementPainter.h"
#include "measure/ResultTable.h"
#include "program/AppData.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollArea>

namespace tavix {

namespace {
enum Caption : qint32 { kWithMeasurements = 40008, kJpegQualityTip = 12000 };
}  // namespace

PicturePanel::PicturePanel(AppData& data, Prompter& prompter, CameraPanel& camera, MeasureSession& measuring,
                           ResultTable& results, Guidance& guidance, const Parts& parts, QObject* parent)
    : QObject(parent),
      data_(data),
      prompter_(prompter),
      camera_(camera),
      measuring_(measuring),
      results_(results),
      guidance_(guidance),
      parts_(parts),
      runDialog_([](QDialog& d) { return d.exec(); })
{
    // The window places it with the other controls of the strip.
    chkMeasureSave_ = named(new QCheckBox(parts_.commandArea), QStringLiteral("chkMeasureSave"));
    chkMeasureSave_->setChecked(true);
    chkMeasureSave_->show();
    parts_.jpegQuality->setCursor(Qt::PointingHandCursor);
    parts_.jpegQuality->installEventFilter(this);
    connect(parts_.picSave, &QPushButton::clicked, this, &PicturePanel::cmdPicSave_Click);
    connect(parts_.picLoad, &QPushButton::clicked, this, &PicturePanel::cmdPicLoad_Click);
}

void PicturePanel::applySettings()
{
    chkMeasureSave_->setText(data_.messages.text(kWithMeasurements));
    showJpegQuality();
}

void PicturePanel::showJpegQuality()
{
    // Only the number: the tool tip says what it is.
    parts_.jpegQuality->setText(QString::number(data_.settings.JPEGQTY));
    parts_.jpegQuality->setToolTip(data_.messages.text(kJpegQualityTip));
}

bool PicturePanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parts_.jpegQuality && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        lblJpegQty_Click();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void PicturePanel::lblJpegQty_Click()
{
    SettingsFile file(data_.iniPath(), data_.log);
    frmJpegQty dialog(data_.settings, file, data_.messages, data_.log, parts_.jpegQuality->window());
    runDialog_(dialog);
    showJpegQuality();
}

void PicturePanel::openSaveSetting()
{
    frmSaveSetting dialog(data_.settings, prompter_, data_.messages, data_.log, parts_.jpegQuality->window());
    runDialog_(dialog);
}

void PicturePanel::cmdPicSave_Click()
{
    runGuarded(data_.log, QStringLiteral("frmMain:cmdPicSave"), [this] {
        const bool wasLive = !camera_.stillShown();
        if (wasLive)
            camera_.toggleLiveStill();
        auto resume = [&] {
            if (wasLive && camera_.stillShown())
                camera_.toggleLiveStill();
        };
        const QString name = prompter_.fileName(PictureFiles::saveDialog(data_.messages));
        if (name.isEmpty()) {
            resume();
            return;
        }
        // A name for a video clip goes to the recording, which records the live picture.
        if (PictureFiles::isRecording(name)) {
            resume();
            if (parts_.record)
                parts_.record(name);
            return;
        }
        QApplication::setOverrideCursor(Qt::WaitCursor);
        StillViewWidget* still = camera_.stillView();
        auto* viewport = qobject_cast<QWidget*>(still->parent());
        PictureFiles::View view;
        view.magnification = still->magnification();
        view.scrollOffset = -still->mapTo(viewport, QPoint(0, 0));
        view.areaSize = viewport ? viewport->size() : parts_.viewArea->size();
        // Around a small, centred still the file shows the area's own background, as the screen does.
        if (viewport)
            view.background = viewport->palette().color(viewport->backgroundRole());
        PictureFiles::OverlayPainter overlay;
        if (chkMeasureSave_->isChecked()) {
            overlay = [this](QPainter& painter, const QTransform& toImage) {
                const MeasurementPainter measurementPainter(OverlayStyle::fromSettings(data_.settings));
                for (const auto& entry : measuring_.store().entries())
                    measurementPainter.paint(painter, entry.measurement, toImage);
            };
        }
        PictureFiles::SaveRequest request;
        request.fileName = name;
        request.source =
            PictureFiles::sourcePicture(data_.settings.STILL1XSAVE, camera_.still(), view, overlay);
        request.comments = {parts_.comments[0]->text(), parts_.comments[1]->text()};
        if (guidance_.showing())
            request.comments = {guidance_.savedComment(0), guidance_.savedComment(1)};
        request.jpegQuality = data_.settings.JPEGQTY;
        request.tempBitmapPath = data_.tempBitmapPath();
        const auto result = PictureFiles::savePicture(request);
        QApplication::restoreOverrideCursor();
        PictureFiles::reportSaveFailure(result, prompter_, data_.messages, data_.log);
        if (result.pictureWritten)
            emit pictureFileChanged(name);
        resume();
    });
}

void PicturePanel::cmdPicLoad_Click()
{
    runGuarded(data_.log, QStringLiteral("frmMain:cmdPicLoad"), [this] {
        if (!PictureFiles::confirmLoad(prompter_, data_.messages, results_, data_.settings.KEEPRESULT))
            return;
        const QString name = prompter_.fileName(PictureFiles::loadDialog(data_.messages));
        if (!name.isEmpty())
            loadPictureFile(name);
    });
}

void PicturePanel::loadPictureFile(const QString& name)
{
    runGuarded(data_.log, QStringLiteral("frmMain:cmdPicLoad"), [this, &name] {
        // Frozen and at "x 1.0" before the file is read, whatever the file turns out to be.
        if (!camera_.stillShown())
            camera_.toggleLiveStill();
        parts_.resetMagnification();
        const auto loaded = PictureFiles::loadPicture(name);
        if (loaded.error != 0) {
            // The still, its results and the comments stay as they were: they still belong together.
            PictureFiles::reportLoadFailure(loaded, name, prompter_, data_.messages, data_.log);
            return;
        }
        camera_.showPicture(loaded.picture);
        guidance_.HideGuidance();
        parts_.comments[0]->setText(loaded.comments[0]);
        parts_.comments[1]->setText(loaded.comments[1]);
        results_.ClearResults(0);
        emit pictureFileChanged(name);
    });
}

}  // namespace tavix
