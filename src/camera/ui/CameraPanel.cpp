#include "camera/ui/CameraPanel.h"

#include "camera/CameraChooser.h"
#include "camera/CameraDriver.h"
#include "camera/Resolution.h"
#include "camera/ui/CameraViewWidget.h"
#include "camera/ui/StillViewWidget.h"
#include "camera/ui/frmHistogram.h"
#include "camera/ui/frmiCubeProp.h"
#include "common/Clock.h"
#include "common/FaultPoint.h"
#include "common/HandlerGuard.h"
#include "common/Prompter.h"
#include "common/ui/Icons.h"
#include "common/ui/WidgetNames.h"
#include "media/BmpFile.h"
#include "program/AppData.h"

#include <QCoreApplication>
#include <QLabel>
#include <QMetaObject>
#include <QPushButton>
#include <QScrollArea>
#include <QStatusBar>
#include <QtMath>

namespace tavix {

namespace {
enum Caption : qint32 {
    kFreeze = 11051,
    kLive = 40023,
    kFreezeTip = 40024,
    kLiveTip = 40028,
    kCamera = 40029,
    kCameraLost = 26990,
    kCameraUnplugged = 27300,
    kCameraBack = 27301,
    kCameraAway = 27302,
    kCameraErrorTitle = 26998,
    kCameraNotOpened = 27400,
    kNoCameraFound = 27401
};
}  // namespace

std::array<QLabel*, 6> CameraPanel::addStatusPanels(QStatusBar* bar)
{
    static const char* const captions[] = {"", "Frames:", "FPS:", "Average:", "Bad frames:", "Resolution:"};
    std::array<QLabel*, 6> panels{};
    for (int i = 0; i < 6; ++i) {
        panels[i] = named(new QLabel(QLatin1String(captions[i]), bar), indexedName("sbriCubePanel", i));
        panels[i]->setMinimumWidth(i == 0 ? 140 : 90);
        bar->addWidget(panels[i], i == 0 ? 1 : 0);
    }
    return panels;
}

CameraPanel::CameraPanel(AppData& data, Prompter& prompter, Clock& clock,
                         std::unique_ptr<CameraDriver> driver, const Widgets& widgets, QObject* parent)
    : QObject(parent),
      data_(data),
      prompter_(prompter),
      clock_(clock),
      driver_(std::make_unique<SwitchableCamera>(std::move(driver))),
      w_(widgets),
      capture_(*driver_, data.log, data.messages, prompter, clock, &BmpFile::read),
      runDialog_([](QDialog& d) { return d.exec(); })
{
    session_ =
        std::make_unique<CameraSession>(*driver_, data_.settings, data_.messages, data_.log, prompter_);
    cameraView_ = new CameraViewWidget(liveView_, w_.viewArea);
    stillScroll_ = new QScrollArea(w_.viewArea);
    stillScroll_->setObjectName(QStringLiteral("scrStillView"));
    stillScroll_->setAlignment(Qt::AlignCenter);
    stillScroll_->setFrameShape(QFrame::NoFrame);
    stillScroll_->setBackgroundRole(QPalette::Dark);
    stillView_ = new StillViewWidget;
    stillScroll_->setWidget(stillView_);
    stillScroll_->hide();

    w_.playStop->setIcon(Icons::camera(true));
    w_.playStop->setIconSize(QSize(20, 20));
    if (w_.pinProp)
        connect(w_.pinProp, &QPushButton::clicked, this, &CameraPanel::cmdPinProp_Click);
    connect(&tmriCube_, &QTimer::timeout, this, &CameraPanel::tmriCube_Timer);
    connect(&tmrLiveIcon_, &QTimer::timeout, this, &CameraPanel::tmrLiveIcon_Timer);
    tmriCube_.setObjectName(QStringLiteral("tmriCube"));
    tmrLiveIcon_.setObjectName(QStringLiteral("tmrLiveIcon"));

    liveView_.setTap(&liveHistogram_);
    liveHistogram_.setNotifier([this] {
        QMetaObject::invokeMethod(
            this,
            [this] {
                const std::optional<Histogram> counted = liveHistogram_.take();
                if (counted && histogram_ && !stillShown_)
                    histogram_->showHistogram(*counted, true);
            },
            Qt::QueuedConnection);
    });
}

CameraPanel::~CameraPanel()
{
    // The driver's thread must stop handing frames to the live view first.
    if (driver_ && driver_->IsStarted(session_->camera()) == 1)
        driver_->Stop(session_->camera());
}

bool CameraPanel::open()
{
    QString camera = data_.messages.text(kCamera) + QStringLiteral(": ") + driver_->driverName();
    // Auto found no camera that streams: said beside the simulated camera's name, the reasons in the tip.
    const bool noCamera = !data_.cameraNote.isEmpty() && driver_->driverName() == QLatin1String("sim");
    if (noCamera)
        camera += QStringLiteral(" (%1)").arg(data_.messages.text(kNoCameraFound));
    w_.status[0]->setText(camera);
    w_.status[0]->setToolTip(noCamera ? data_.cameraNote : QString());
    CameraSession::View view;
    // Only a camera that draws itself needs a native window (which costs a little on every paint).
    view.window = driver_->drawsIntoWindow() ? cameraView_->winId() : 0;
    view.sink = &liveView_;
    view.placeCameraView = [this](QSize size) { placeCameraView(size); };
    view.showResolution = [this](const QString& text) { w_.status[5]->setText(text); };
    view.endProgram = [this] {
        tmriCube_.stop();
        tmrLiveIcon_.stop();
        emit endProgramRequested();
    };
    if (!session_->open(view))
        return false;
    statistics_.reset(static_cast<float>(clock_.secondsSinceMidnight()));
    showLive();
    tmriCube_.start(1000);
    tmrLiveIcon_.start(500);
    return true;
}

void CameraPanel::exit()
{
    tmriCube_.stop();
    tmrLiveIcon_.stop();
    session_->exit();
}

void CameraPanel::placeCameraView(QSize modeSize)
{
    modeSize_ = modeSize;
    refit();
    emit modeSizeChanged(modeSize);
}

PictureGeometry CameraPanel::liveGeometry() const
{
    const QString id = driver_->cameraId();
    return {modeSize_, driver_->modeGeometry(session_->currentMode()),
            id.isEmpty() ? QString() : driver_->driverName() + QLatin1Char('/') + id};
}

PictureGeometry CameraPanel::pictureGeometry() const
{
    return stillShown_ ? stillGeometry_ : liveGeometry();
}

void CameraPanel::refit()
{
    const QRect area = w_.viewArea->contentsRect();
    stillScroll_->setGeometry(area);
    if (modeSize_.isEmpty()) {
        cameraView_->setGeometry(area);
        return;
    }
    // The live picture is scaled to fit the area, its shape kept.
    const QSize fitted = modeSize_.scaled(area.size(), Qt::KeepAspectRatio);
    cameraView_->setGeometry(QRect(
        area.topLeft() + QPoint((area.width() - fitted.width()) / 2, (area.height() - fitted.height()) / 2),
        fitted));
}

void CameraPanel::setMagnification(double magnification)
{
    stillView_->setMagnification(magnification);
}

double CameraPanel::shownMagnification() const
{
    if (stillShown_)
        return stillView_->magnification();
    // The live picture is scaled to fit the area.
    const QSize mode = Resolution::size(session_->currentMode());
    return mode.isEmpty() ? 1.0 : double(cameraView_->width()) / mode.width();
}

QRect CameraPanel::shownPictureBox() const
{
    if (!stillShown_)
        return cameraView_->geometry();
    // The part of the still that the scroll area shows, in area coordinates.
    const QRect visible = stillView_->visibleRegion().boundingRect();
    return QRect(stillView_->mapTo(w_.viewArea, visible.topLeft()), visible.size());
}

QPoint CameraPanel::areaToPicture(QPoint areaPoint) const
{
    // The picture's top-left corner in the area and its scale on the screen.
    const QPoint origin = stillShown_ ? stillView_->mapTo(w_.viewArea, QPoint(0, 0)) : cameraView_->pos();
    const QPointF p = QPointF(areaPoint - origin) / shownMagnification();
    return QPoint(qFloor(p.x()), qFloor(p.y()));
}

void CameraPanel::cmdPlayStop_Click()
{
    runGuarded(data_.log, QStringLiteral("frmMain:cmdPlayStop_Click"), [this] {
        FaultPoint::pass("cmdPlayStop_Click");
        if (runState_ == kNormal)
            toggleLiveStill();
        else
            emit playStopClicked(runState_);
    });
}

void CameraPanel::toggleLiveStill()
{
    if (stillShown_) {
        showLive();
        return;
    }
    // An unplugged camera has no new picture to give; the still on screen stays.
    if (driver_->connectionLost(session_->camera()) && driver_->reconnects(session_->camera())) {
        prompter_.message({data_.messages.text(kCameraAway), data_.messages.text(kCameraErrorTitle),
                           Prompter::Icon::Exclamation});
        return;
    }
    // A still that cannot be taken leaves the previous one in place.
    if (capture_.capture(session_->camera(), data_.tempBitmapPath(), data_.settings.STILLWAITTIME, still_)) {
        stillView_->setPicture(still_);
        stillGeometry_ = liveGeometry();
        // A picture of another size than the mode's is not the mode's picture.
        if (still_.size() != stillGeometry_.size)
            stillGeometry_ = PictureGeometry(still_.size());
    }
    showStill();
}

void CameraPanel::cmdPinProp_Click()
{
    runGuarded(data_.log, QStringLiteral("frmMain:cmdPinProp_Click"), [this] {
        FaultPoint::pass("cmdPinProp_Click");
        // The white balance waits on the user-interface thread; the window keeps painting meanwhile.
        const auto keepPainted = [] { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); };
        // No owner window: modal to the whole program.
        std::unique_ptr<CameraChooser> chooser;
        if (switching_.cameras)
            chooser =
                std::make_unique<CameraChooser>(switching_.cameras(), currentCamera_,
                                                [this](const CameraChoice& c) { return switchCamera(c); });
        frmiCubeProp dialog({*session_, statistics_, data_.log, prompter_, clock_, keepPainted},
                            chooser.get());
        dialog.setWindowModality(Qt::ApplicationModal);
        runDialog_(dialog);
    });
}

bool CameraPanel::switchCamera(const CameraChoice& choice)
{
    std::unique_ptr<CameraDriver> next = switching_.make ? switching_.make(choice) : nullptr;
    bool opens = next && next->prepare() == 0 && next->Init() >= 1;
    if (opens) {
        const int r = next->Open(0);
        opens = r == 0 || r == -24;
        next->Close(0);
    }
    if (switching_.done)
        switching_.done(choice, opens);
    if (!opens) {
        data_.log.write(QStringLiteral("Camera switch: %1 could not be opened").arg(choice.name));
        prompter_.message({data_.messages.text(kCameraNotOpened) + QLatin1Char(' ') + choice.name,
                           data_.messages.text(kCamera), Prompter::Icon::Exclamation});
        return false;
    }
    tmriCube_.stop();
    tmrLiveIcon_.stop();
    session_->exit();
    driver_->replace(std::move(next));
    currentCamera_ = choice;
    data_.cameraNote.clear();  // chosen, not fallen back to
    return open();
}

void CameraPanel::redrawStill()
{
    if (capture_.reload(data_.tempBitmapPath(), still_))
        stillView_->setPicture(still_);
}

void CameraPanel::showPicture(const QImage& picture)
{
    still_ = picture;
    // Where a file's pixels lay on which sensor is not known.
    stillGeometry_ = PictureGeometry(still_.size());
    stillView_->setPicture(still_);
    refreshHistogram();
}

void CameraPanel::setHistogramShown(bool shown)
{
    if (shown && !histogram_) {
        histogram_ = new frmHistogram(data_.messages, w_.viewArea->window());
        // Its close box: still visible while it closes.
        connect(histogram_, &frmHistogram::closed, this, [this] {
            liveHistogram_.setEnabled(false);
            emit histogramShownChanged(false);
        });
    }
    if (!histogram_ || shown == histogram_->isVisible())
        return;
    histogram_->setVisible(shown);
    refreshHistogram();
    emit histogramShownChanged(shown);
}

bool CameraPanel::histogramShown() const
{
    return histogram_ && histogram_->isVisible();
}

void CameraPanel::refreshHistogram()
{
    const bool shown = histogramShown();
    liveHistogram_.setEnabled(shown && !stillShown_);
    if (shown && stillShown_)
        histogram_->showHistogram(Histogram::of(still_), false);
}

void CameraPanel::showStill()
{
    stillShown_ = true;
    w_.playStop->setText(data_.messages.text(kLive));
    w_.playStop->setToolTip(data_.messages.text(kLiveTip));
    w_.playStop->setIcon(Icons::still());
    if (w_.pinProp)
        w_.pinProp->setEnabled(false);
    stillScroll_->show();
    cameraView_->hide();
    refreshHistogram();
    emit stillShownChanged(true);
}

void CameraPanel::showLive()
{
    stillShown_ = false;
    w_.playStop->setText(data_.messages.text(kFreeze));
    w_.playStop->setToolTip(data_.messages.text(kFreezeTip));
    w_.playStop->setIcon(Icons::camera(true));
    cameraView_->show();
    stillScroll_->hide();
    if (w_.pinProp)
        w_.pinProp->setEnabled(true);
    refreshHistogram();
    emit stillShownChanged(false);
}

void CameraPanel::tmriCube_Timer()
{
    runGuarded(data_.log, QStringLiteral("frmMain:tmriCube_Timer"), [this] {
        FaultPoint::pass("tmriCube_Timer");
        const int cam = session_->camera();
        // A camera that stopped leaves the last figures standing; one that was
        // lost is reported once.
        if (driver_->IsStarted(cam) != 1) {
            if (!lossReported_ && driver_->connectionLost(cam)) {
                lossReported_ = true;
                data_.log.write(
                    QStringLiteral("frmMain:tmriCube_Timer Camera lost (%1).").arg(driver_->driverName()));
                // A camera that comes back by itself is waited for: a note, no restart asked.
                if (driver_->reconnects(cam))
                    w_.status[0]->setText(data_.messages.text(kCameraUnplugged));
                else
                    prompter_.message({data_.messages.text(kCameraLost),
                                       data_.messages.text(kCameraErrorTitle), Prompter::Icon::Critical});
            }
            return;
        }
        if (lossReported_ && driver_->reconnects(cam)) {
            lossReported_ = false;
            w_.status[0]->setText(data_.messages.text(kCameraBack));
        }
        std::int32_t good = 0;
        std::int32_t broken = 0;
        driver_->GetGoodFrames(cam, good);
        driver_->GetBrokenFrames(cam, broken);
        const auto& t = statistics_.tick(good, broken, static_cast<float>(clock_.secondsSinceMidnight()));
        w_.status[1]->setText(t.frames);
        w_.status[2]->setText(t.fps);
        w_.status[3]->setText(t.average);
        w_.status[4]->setText(t.badFrames);
        w_.status[5]->setText(session_->resolutionText());
    });
}

void CameraPanel::tmrLiveIcon_Timer()
{
    runGuarded(data_.log, QStringLiteral("frmMain:tmrLiveIcon_Timer"), [this] {
        FaultPoint::pass("tmrLiveIcon_Timer");
        // A series shows that it records; armed, the button keeps the record picture until it is clicked.
        if (runState_ == kSeries) {
            w_.playStop->setIcon(Icons::record());
            return;
        }
        if (runState_ == kRecordingArmed)
            return;
        // The live light blinks while the picture is live.
        if (stillShown_) {
            w_.playStop->setIcon(Icons::still());
            return;
        }
        iconLit_ = !iconLit_;
        w_.playStop->setIcon(Icons::camera(iconLit_));
    });
}

}  // namespace tavix
