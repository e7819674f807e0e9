#include "app/frmMain.h"

#include "app/CommentLineEdit.h"
#include "calib/Magnification.h"
#include "calib/ui/OverlayPanel.h"
#include "camera/CameraDriver.h"
#include "camera/Resolution.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/CameraViewWidget.h"
#include "camera/ui/StillViewWidget.h"
#include "common/CommandTips.h"
#include "common/FaultPoint.h"
#include "common/HandlerGuard.h"
#include "common/MainLayout.h"
#include "common/Prompter.h"
#include "common/RunError.h"
#include "common/Twips.h"
#include "files/ui/IntervalSavePanel.h"
#include "files/ui/PicturePanel.h"
#include "files/ui/RecordingPanel.h"
#include "measure/EdgeSnap.h"
#include "measure/MeasureSession.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"
#include "program/Lifecycle.h"

#include "common/ui/WidgetNames.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QStatusBar>
#include <QTranslator>
#include <QtMath>

namespace tavix {

namespace {

// Message ids of the captions that this window sets itself.
enum Caption : qint32 {
    kLoadPicture = 40001,
    kSavePicture = 40002,
    kExit = 40003,
    kCameraSettings = 40011,
    kZoom = 40021,
    kComment = 40027,
    kJpegQuality = 40022,
};

}  // namespace

frmMain::frmMain(const QString& programFolder, Prompter& prompter, Clock& clock, DriverFactory driverFactory,
                 QWidget* parent)
    : QMainWindow(parent),
      data_(programFolder),
      prompter_(prompter),
      clock_(clock),
      driverFactory_(std::move(driverFactory))
{
    setObjectName(QStringLiteral("frmMain"));
    buildControls();
    guidance_ = std::make_unique<Guidance>(data_.guidance, *txtComment_[0], *txtComment_[1]);
    messageLine_ = std::make_unique<MessageLine>(*txtComment_[0]);
}

frmMain::~frmMain() = default;  // the camera panel stops the driver's thread first

void frmMain::buildControls()
{
    central_ = named(new QWidget(this), QStringLiteral("frmMainClient"));
    central_->installEventFilter(this);
    setCentralWidget(central_);
    setMinimumSize(MainLayout::minimumSize());

    picViewArea_ = named(new QFrame(central_), QStringLiteral("picViewArea"));
    static_cast<QFrame*>(picViewArea_)->setFrameShape(QFrame::StyledPanel);
    picViewArea_->setAutoFillBackground(true);
    QPalette dark = picViewArea_->palette();
    dark.setColor(QPalette::Window, QColor(40, 40, 40));
    picViewArea_->setPalette(dark);

    buildViewCommandArea();
    buildMeasureCommandArea();
    buildStatusBar();
}

void frmMain::buildViewCommandArea()
{
    picViewCommandArea_ = named(new QWidget(central_), QStringLiteral("picViewCommandArea"));
    cmdPlayStop_ = named(new QPushButton(picViewCommandArea_), QStringLiteral("cmdPlayStop"));
    // The live/still button also stops a series or a recording while the areas are disabled.
    cmdPlayStop_->setProperty("tag", QLatin1String(kNoDisable));
    cmdPinProp_ = named(new QPushButton(picViewCommandArea_), QStringLiteral("cmdPinProp"));
    cmdPicLoad_ = named(new QPushButton(picViewCommandArea_), QStringLiteral("cmdPicLoad"));
    cmdPicSave_ = named(new QPushButton(picViewCommandArea_), QStringLiteral("cmdPicSave"));
    cmdExit_ = named(new QPushButton(picViewCommandArea_), QStringLiteral("cmdExit"));
    cmdExit_->setProperty("tag", QLatin1String(kNoDisable));
    connect(cmdExit_, &QPushButton::clicked, this, [this] { cmdExit_Click(); });
    // The quality label shows the number alone; its caption stands beside it.
    lblJpegQtyCaption_ = named(new QLabel(picViewCommandArea_), QStringLiteral("lblJpegQtyCaption"));
    lblJpegQty_ = named(new QLabel(picViewCommandArea_), QStringLiteral("lblJpegQty"));

    lblScale_ = named(new QLabel(picViewCommandArea_), QStringLiteral("lblScale"));
    cboScale_ = named(new QComboBox(picViewCommandArea_), QStringLiteral("cboScale"));
    cboScale_->addItems(Magnification::entries());
    cboScale_->setMaxVisibleItems(16);
    connect(cboScale_, &QComboBox::activated, this, [this] { cboScale_Click(); });

    OverlayPanel::Sources overlaySources;
    overlaySources.magnification = [this] { return shownMagnification(); };
    overlaySources.pictureBox = [this] { return shownPictureBox(); };
    overlaySources.openSaveSetting = [this] {
        if (pictures_)
            pictures_->openSaveSetting();
    };
    overlays_ =
        std::make_unique<OverlayPanel>(data_, prompter_, picViewArea_, picViewCommandArea_, overlaySources);

    lblComment_ = named(new QLabel(picViewCommandArea_), QStringLiteral("lblComment"));
    for (int i = 0; i < 2; ++i) {
        txtComment_[i] = named(new CommentLineEdit(picViewCommandArea_), indexedName("txtComment", i));
        txtComment_[i]->setProperty("tag", QLatin1String(kNoDisable));
    }

    lblComment_->setGeometry(6, 70, 64, 24);
}

void frmMain::buildMeasureCommandArea()
{
    picMeasureCommandArea_ = named(new QWidget(central_), QStringLiteral("picMeasureCommandArea"));
    measure_ =
        std::make_unique<MeasurePanel>(data_, prompter_, overlays_->scaleBar(), picMeasureCommandArea_);
}

void frmMain::buildStatusBar()
{
    QStatusBar* bar = statusBar();
    bar->setObjectName(QStringLiteral("sbriCube"));
    bar->setSizeGripEnabled(true);
    static const char* const captions[] = {"", "Frames:", "FPS:", "Average:", "Bad frames:", "Resolution:"};
    lblZoom_ = named(new QLabel(bar), QStringLiteral("lblZoom"));
    lblZoom_->setMinimumWidth(50);
    bar->addWidget(lblZoom_);
    for (int i = 0; i < 6; ++i) {
        sbriCube_[i] = named(new QLabel(QLatin1String(captions[i]), bar), indexedName("sbriCubePanel", i));
        sbriCube_[i]->setMinimumWidth(i == 0 ? 140 : 90);
        bar->addWidget(sbriCube_[i], i == 0 ? 1 : 0);
    }
}

bool frmMain::Form_Load()
{
    try {
        setWindowTitle(Lifecycle::kBuiltInTitle);
        data_.settings.APPNAME = Lifecycle::kBuiltInTitle;
        if (const auto failure = Lifecycle::readDataFiles(data_)) {
            endStartup(failure->title);
            return false;
        }
        applyLanguage();  // after the message file: its language chooses the font and Qt's texts
        setWindowTitle(data_.settings.APPNAME);
        lblJpegQty_->setText(QString::number(data_.settings.JPEGQTY));
        if (!openCamera())
            return false;
        applySettingsToControls();
        connectMeasuring();
        connectOverlays();
        connectPictures();
        connectIntervalSave();
        connectRecording();
        connectProofResolution();
        placeRunTimeControls();
        installDesktopHabits();
        // The window starts on the live picture: nothing to measure yet.
        stillShownChanged(false);
        loaded_ = true;
        return true;
    } catch (const std::exception& e) {
        const auto* runError = dynamic_cast<const RunError*>(&e);
        data_.log.write(QStringLiteral("frmMain:Form_Load Error.(%1)")
                            .arg(runError ? runError->number() : err::InvalidCall));
        prompter_.message({Lifecycle::kEndedText, data_.messages.text(11051), Prompter::Icon::Critical});
        if (QFile::exists(data_.graphPath()))
            QFile::remove(data_.graphPath());
        return false;
    }
}

bool frmMain::openCamera()
{
    CameraPanel::Widgets widgets;
    widgets.viewArea = picViewArea_;
    widgets.playStop = cmdPlayStop_;
    widgets.pinProp = cmdPinProp_;
    widgets.status = sbriCube_;
    std::unique_ptr<CameraDriver> driver = driverFactory_(data_);
    // A graph file the graph camera cannot use ends the start-up on the load's error path.
    if (const int number = driver->prepare())
        throw RunError(number);
    camera_ = std::make_unique<CameraPanel>(data_, prompter_, clock_, std::move(driver), widgets);
    connect(camera_.get(), &CameraPanel::stillShownChanged, this, &frmMain::stillShownChanged);
    connect(cmdPlayStop_, &QPushButton::clicked, camera_.get(), &CameraPanel::cmdPlayStop_Click);
    connect(camera_.get(), &CameraPanel::endProgramRequested, this, &frmMain::endProgram);
    camera_->setMagnification(Magnification::valueOf(cboScale_->currentText()));
    return camera_->open();
}

void frmMain::connectMeasuring()
{
    auto units = [this] {
        const ProofEntry& entry = data_.measuringEntry();
        // Tools work in picture pixels, so the zoom does not enter here.
        return MeasureSession::Units{
            {entry.XFactor, entry.YFactor, 1.0, measure_->calibration().takingValue()}, entry.Unit};
    };
    session_ = std::make_unique<MeasureSession>(data_.settings, data_.log, data_.messages,
                                                measure_->results(), *guidance_, prompter_, units);
    measure_->setTwoPointAverage([this] { return session_->twoPointAverage(); });
    measure_->setStillSource([this] { return camera_->stillShown() ? camera_->still() : QImage(); });
    StillViewWidget* still = camera_->stillView();
    still->setOverlay(&session_->store(), OverlayStyle::fromSettings(data_.settings));
    connect(still, &StillViewWidget::pictureMoved, session_.get(), &MeasureSession::move);
    connect(still, &StillViewWidget::pictureReleased, session_.get(), &MeasureSession::release);
    connect(still, &StillViewWidget::pictureDoubleClicked, session_.get(), &MeasureSession::doubleClick);
    connect(still, &StillViewWidget::cancelRequested, session_.get(), &MeasureSession::cancel);
    connect(session_.get(), &MeasureSession::previewChanged, still, &StillViewWidget::setPreview);
    connect(session_.get(), &MeasureSession::overlayChanged, still, &StillViewWidget::invalidateOverlay);
    connect(session_.get(), &MeasureSession::highlightChanged, still, &StillViewWidget::setHighlight);
    connect(measure_.get(), &MeasurePanel::toolButtonClicked, session_.get(), &MeasureSession::selectButton);
    connect(measure_.get(), &MeasurePanel::rowsSelected, session_.get(), &MeasureSession::highlightRows);
    connect(measure_.get(), &MeasurePanel::calibrationMarkingRequested, this, [this](qint16 tool, qint16) {
        measure_->releaseToolButtons();
        session_->selectTool(tool);
    });
    connect(session_.get(), &MeasureSession::calibrationLengthMarked, this, [this](double pixels) {
        session_->clearTool();
        measure_->calibrationLengthMarked(pixels, Magnification::valueOf(cboScale_->currentText()));
    });
    const auto applyEdgeSnap = [this](bool on) {
        if (!on) {
            session_->setPointSnap(nullptr);
            return;
        }
        // The still as the camera panel holds it now; the snap reads only around the pointer.
        session_->setPointSnap([this](PointD p) { return EdgeSnap(camera_->still()).snap(p); });
    };
    applyEdgeSnap(data_.settings.EDGESNAP != 0);
    connect(measure_.get(), &MeasurePanel::edgeSnapChanged, this, applyEdgeSnap);
    connect(measure_.get(), &MeasurePanel::measureSettingsChanged, this, [this, still] {
        session_->relabel();
        still->setOverlay(&session_->store(), OverlayStyle::fromSettings(data_.settings));
    });
}

void frmMain::connectOverlays()
{
    CrossLines& crosses = overlays_->crossLines();
    connect(&crosses, &CrossLines::guidanceRequested, this, [this](qint16 n) { guidance_->DispGuidance(n); });
    connect(&crosses, &CrossLines::guidanceEnded, this, [this] { guidance_->HideGuidance(); });
    connect(overlays_.get(), &OverlayPanel::crossToolChanged, this, [this](qint16 tool) {
        if (tool == CrossLines::kNoTool)
            return;
        // Placing a cross takes the mouse from the measuring tools.
        session_->clearTool();
        measure_->releaseToolButtons();
    });
    connect(measure_.get(), &MeasurePanel::toolButtonClicked, &crosses, &CrossLines::toolReplaced);
    connect(overlays_.get(), &OverlayPanel::jpegQualityChanged, this, [this] { pictures_->applySettings(); });
    connect(measure_.get(), &MeasurePanel::measureSettingsChanged, this, [this] {
        overlays_->crossLines().applySettings();
        overlays_->layoutChanged();
    });
    // The crosses follow the pointer over either picture.
    for (QWidget* picture :
         {static_cast<QWidget*>(camera_->cameraView()), static_cast<QWidget*>(camera_->stillView())}) {
        picture->setMouseTracking(true);
        picture->installEventFilter(this);
    }
}

void frmMain::connectPictures()
{
    PicturePanel::Parts parts;
    parts.picLoad = cmdPicLoad_;
    parts.picSave = cmdPicSave_;
    parts.jpegQuality = lblJpegQty_;
    parts.commandArea = picViewCommandArea_;
    parts.viewArea = picViewArea_;
    parts.scale = cboScale_;
    parts.comments = {txtComment_[0], txtComment_[1]};
    parts.resetMagnification = [this] {
        cboScale_->setCurrentIndex(cboScale_->findText(QStringLiteral("x 1.0")));
        cboScale_Click();
    };
    parts.record = [this](const QString& fileName) { recording_->record(fileName); };
    pictures_ = std::make_unique<PicturePanel>(data_, prompter_, *camera_, *session_, measure_->results(),
                                               *guidance_, parts);
    pictures_->applySettings();
    pictures_->measureSave()->setEnabled(camera_->stillShown());
}

void frmMain::connectIntervalSave()
{
    IntervalSavePanel::Parts parts;
    parts.commandArea = picViewCommandArea_;
    parts.playStop = cmdPlayStop_;
    parts.messageLine = messageLine_.get();
    parts.crosses = &overlays_->crossLines();
    parts.toPicture = [this](QPoint areaPoint) {
        // The picture's top-left corner in the area and its scale on the screen.
        QPoint origin = camera_->cameraView()->pos();
        if (camera_->stillShown())
            origin = camera_->stillView()->mapTo(picViewArea_, QPoint(0, 0));
        const double scale = shownMagnification();
        const QPointF p = QPointF(areaPoint - origin) / scale;
        return QPoint(qFloor(p.x()), qFloor(p.y()));
    };
    parts.setCommandAreasEnabled = [this](bool on) { setWorkAreasEnabled(on); };
    intervalSave_ =
        std::make_unique<IntervalSavePanel>(data_, prompter_, clock_, *camera_, measure_->results(), parts);
    intervalSave_->applySettings();
}

void frmMain::connectRecording()
{
    RecordingPanel::Parts parts;
    parts.playStop = cmdPlayStop_;
    parts.setCommandAreasEnabled = [this](bool on) { setWorkAreasEnabled(on); };
    recording_ = std::make_unique<RecordingPanel>(data_, prompter_, *camera_, *messageLine_,
                                                  measure_->results(), parts);
}

double frmMain::shownMagnification() const
{
    if (camera_ && camera_->stillShown())
        return Magnification::valueOf(cboScale_->currentText());
    // The live picture is scaled to fit the area.
    const QSize mode = camera_ ? Resolution::size(camera_->session().currentMode()) : QSize();
    return mode.isEmpty() || !camera_ ? 1.0 : double(camera_->cameraView()->width()) / mode.width();
}

QRect frmMain::shownPictureBox() const
{
    if (!camera_)
        return {};
    if (!camera_->stillShown())
        return camera_->cameraView()->geometry();
    // The part of the still that the scroll area shows, in area coordinates.
    QWidget* still = camera_->stillView();
    const QRect visible = still->visibleRegion().boundingRect();
    return QRect(still->mapTo(picViewArea_, visible.topLeft()), visible.size());
}

void frmMain::stillShownChanged(bool shown)
{
    refreshPictureSize();
    setCommandAreaEnabled(picMeasureCommandArea_, shown);
    measure_->setMeasuringEnabled(shown);
    // The camera panel has just set the button's tip for its new state.
    if (const CommandTips::Tip* tip = CommandTips::find(cmdPlayStop_->objectName()))
        cmdPlayStop_->setToolTip(CommandTips::withShortcut(cmdPlayStop_->toolTip(), *tip));
    if (pictures_)
        pictures_->measureSave()->setEnabled(shown);
    if (!session_)
        return;
    // A new still, or the live picture again: the results of the last still
    // are kept (greyed) or dropped as chkKeepResult says.
    measure_->results().ClearResults(0);
    overlays_->layoutChanged();
    if (!shown) {
        session_->clearTool();
        measure_->releaseToolButtons();
    }
}

void frmMain::cboScale_Click()
{
    runGuarded(data_.log, QStringLiteral("frmMain:cboScale_Click"), [this] {
        FaultPoint::pass("cboScale_Click");
        const double magnification = Magnification::valueOf(cboScale_->currentText());
        lblZoom_->setText(Magnification::label(magnification));
        if (camera_)
            camera_->setMagnification(magnification);
        if (overlays_)
            overlays_->layoutChanged();
    });
}

void frmMain::endProgram()
{
    if (!loaded_) {
        // During the start-up the window never shows; its unload still runs.
        Form_Unload();
        return;
    }
    // Every window unloads, the last opened first; the main window's unload
    // writes the settings back and logs the end.
    while (QWidget* modal = QApplication::activeModalWidget()) {
        if (modal == this)
            break;
        modal->close();
        modal->hide();  // a dialog that refuses to close goes all the same
    }
    unloadRequested_ = true;
    close();
    QCoreApplication::exit(1);
}

void frmMain::endStartup(const QString& title)
{
    prompter_.message({Lifecycle::kEndedText, title, Prompter::Icon::Critical});
}

void frmMain::placeRunTimeControls()
{
    // The view command strip's two rows; cmdExit and the comment lines follow the window's width.
    struct Place {
        const char* name;
        QRect rect;
    };
    static const Place places[] = {
        // First row: the picture commands.
        {"cmdPlayStop", {6, 6, 100, 28}},
        {"cmdPicLoad", {110, 6, 100, 28}},
        {"cmdPicSave", {214, 6, 100, 28}},
        {"cmdIS_Save", {318, 6, 100, 28}},
        {"chkMeasureSave", {426, 6, 150, 28}},
        // Second row: what the picture shows, and the camera.
        {"lblScale", {6, 38, 38, 28}},
        {"cboScale", {46, 38, 64, 28}},
        {"chkScale", {116, 38, 84, 28}},
        {"chkCross", {204, 38, 112, 28}},
        {"cmdCamViewConfig", {320, 38, 100, 28}},
        {"lblJpegQtyCaption", {426, 38, 78, 28}},
        {"lblJpegQty", {504, 38, 22, 28}},
        {"cmdPinProp", {530, 38, 120, 28}},
    };
    for (const Place& place : places)
        if (auto* w = picViewCommandArea_->findChild<QWidget*>(QLatin1String(place.name)))
            w->setGeometry(place.rect);
    Form_Resize();
}

void frmMain::applySettingsToControls()
{
    const Settings& s = data_.settings;
    const MessageTable& m = data_.messages;
    cmdPicLoad_->setText(m(kLoadPicture));
    cmdPicSave_->setText(m(kSavePicture));
    cmdPinProp_->setText(m(kCameraSettings));
    cmdExit_->setText(m(kExit));
    lblScale_->setText(m(kZoom));
    lblComment_->setText(m(kComment));
    lblJpegQtyCaption_->setText(m(kJpegQuality) + QLatin1Char(':'));
    measure_->applySettings();
    overlays_->applySettings();
    cboScale_->setCurrentIndex(s.DEFAULTSCALE);
    cboScale_Click();
    scaleShown_ = true;
}

void frmMain::setWorkAreasEnabled(bool on)
{
    setCommandAreaEnabled(picViewCommandArea_, on);
    // The measuring tools work on a still only, and the camera settings on the live picture.
    const bool still = camera_->stillShown();
    setCommandAreaEnabled(picMeasureCommandArea_, on && still);
    pictures_->measureSave()->setEnabled(on && still);
    cmdPinProp_->setEnabled(on && !still);
}

void frmMain::setCommandAreaEnabled(QWidget* area, bool enabled)
{
    for (QWidget* child : area->findChildren<QWidget*>()) {
        if (child->property("tag").toString() == QLatin1String(kNoDisable))
            continue;
        child->setEnabled(enabled);
    }
}

bool frmMain::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == central_ && event->type() == QEvent::Resize)
        Form_Resize();
    // The client area is watched for its size only; the pointer counts over the pictures.
    if (overlays_ && watched != central_ &&
        (event->type() == QEvent::MouseMove || event->type() == QEvent::MouseButtonRelease)) {
        auto* picture = qobject_cast<QWidget*>(watched);
        const QPoint areaPoint =
            picture->mapTo(picViewArea_, static_cast<QMouseEvent*>(event)->position().toPoint());
        if (event->type() == QEvent::MouseMove)
            overlays_->pointerMoved(areaPoint);
        else if (overlays_->pointerReleased(areaPoint))
            return true;  // the release placed a cross, not a measuring point
    }
    return QMainWindow::eventFilter(watched, event);
}

void frmMain::Form_Resize()
{
    if (isMinimized())
        return;
    try {
        ++layoutPasses_;
        FaultPoint::pass("Form_Resize");
        const MainLayout l = MainLayout::compute(central_->size());
        picViewArea_->setGeometry(l.viewArea);
        picViewCommandArea_->setGeometry(l.viewCommandArea);
        picMeasureCommandArea_->setGeometry(l.measureCommandArea);
        cmdExit_->setGeometry(l.exitButton);
        txtComment_[0]->setGeometry(l.comment0);
        txtComment_[1]->setGeometry(l.comment1);
        measure_->place(l);
        if (camera_)
            camera_->refit();
        if (overlays_)
            overlays_->layoutChanged();
    } catch (const std::exception& e) {
        const auto* runError = dynamic_cast<const RunError*>(&e);
        data_.log.write(QStringLiteral("frmMain:Form_Resize Error.(%1)")
                            .arg(runError ? runError->number() : err::InvalidCall));
    }
}

void frmMain::cmdExit_Click()
{
    if (confirmOnClose_ && !prompter_.askYesNo(data_.messages.text(20010), data_.messages.text(19000)))
        return;
    unloadRequested_ = true;
    close();
}

void frmMain::closeEvent(QCloseEvent* event)
{
    if (!unloadRequested_ && confirmOnClose_ &&
        !prompter_.askYesNo(data_.messages.text(20110), data_.messages.text(19000))) {
        event->ignore();
        return;
    }
    Form_Unload();
    event->accept();
}

void frmMain::Form_Unload()
{
    if (unloaded_)
        return;
    unloaded_ = true;
    // Before the list showed DEFAULTSCALE (a camera failing at start-up) the value read is kept.
    const auto scale =
        scaleShown_ ? static_cast<qint16>(cboScale_->currentIndex()) : data_.settings.DEFAULTSCALE;
    Lifecycle::unload(data_, scale, [this] {
        if (camera_)
            camera_->exit();
    });
}

}  // namespace tavix
