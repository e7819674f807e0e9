#include "app/frmMain.h"

#include "app/CommentLineEdit.h"
#include "calib/Magnification.h"
#include "calib/ui/OverlayPanel.h"
#include "camera/CameraDriver.h"
#include "camera/genicam/GenICamDriver.h"
#include "camera/graph/LinuxVideoDevices.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/CameraViewWidget.h"
#include "camera/ui/StillViewWidget.h"
#include "common/CommandTips.h"
#include "common/FaultPoint.h"
#include "common/HandlerGuard.h"
#include "common/MainLayout.h"
#include "common/Prompter.h"
#include "common/RunError.h"
#include "common/ui/Icons.h"
#include "files/ui/IntervalSavePanel.h"
#include "files/ui/PicturePanel.h"
#include "files/ui/RecordingPanel.h"
#include "measure/ui/MeasurePanel.h"
#include "program/CameraChoiceKeeper.h"
#include "program/CameraList.h"
#include "program/Lifecycle.h"

#include "common/ui/WidgetNames.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QToolButton>
#include <QTranslator>

namespace tavix {

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

MeasureSession& frmMain::measuring()
{
    return measure_->session();
}

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
    picMeasureCommandArea_ = named(new QWidget(central_), QStringLiteral("picMeasureCommandArea"));
    measure_ =
        std::make_unique<MeasurePanel>(data_, prompter_, overlays_->scaleBar(), picMeasureCommandArea_);
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
    // Overlays are laid out before the camera opens: nothing is shown then.
    overlaySources.magnification = [this] { return camera_ ? camera_->shownMagnification() : 1.0; };
    overlaySources.pictureBox = [this] { return camera_ ? camera_->shownPictureBox() : QRect(); };
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

void frmMain::buildStatusBar()
{
    QStatusBar* bar = statusBar();
    bar->setObjectName(QStringLiteral("sbriCube"));
    bar->setSizeGripEnabled(true);
    // The view commands fill their strip at the smallest window: the histogram's switch lives here.
    cmdHistogram_ = named(new QToolButton(bar), QStringLiteral("cmdHistogram"));
    cmdHistogram_->setCheckable(true);
    cmdHistogram_->setAutoRaise(true);
    cmdHistogram_->setIcon(Icons::histogram());
    cmdHistogram_->setIconSize(QSize(16, 16));
    cmdHistogram_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addWidget(cmdHistogram_);
    lblZoom_ = named(new QLabel(bar), QStringLiteral("lblZoom"));
    lblZoom_->setMinimumWidth(50);
    bar->addWidget(lblZoom_);
    sbriCube_ = CameraPanel::addStatusPanels(bar);
}

bool frmMain::Form_Load()
{
    bool loaded = false;
    if (runGuarded(data_.log, QStringLiteral("frmMain:Form_Load"), [&] { loaded = loadSteps(); }))
        return loaded;
    prompter_.message({Lifecycle::kEndedText, data_.messages.text(11051), Prompter::Icon::Critical});
    if (QFile::exists(data_.graphPath()))
        QFile::remove(data_.graphPath());
    return false;
}

bool frmMain::loadSteps()
{
    setWindowTitle(Lifecycle::kBuiltInTitle);
    data_.settings.APPNAME = Lifecycle::kBuiltInTitle;
    if (const auto failure = Lifecycle::readDataFiles(data_)) {
        prompter_.message({Lifecycle::kEndedText, failure->title, Prompter::Icon::Critical});
        return false;
    }
    applyLanguage();  // after the message file: its language chooses the font and Qt's texts
    setWindowTitle(data_.settings.APPNAME);
    lblJpegQty_->setText(QString::number(data_.settings.JPEGQTY));
    if (!openCamera())
        return false;
    applySettingsToControls();
    measure_->startMeasuring(*guidance_, *camera_, *overlays_);
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
    connect(cmdHistogram_, &QToolButton::toggled, camera_.get(), &CameraPanel::setHistogramShown);
    connect(camera_.get(), &CameraPanel::histogramShownChanged, cmdHistogram_, &QToolButton::setChecked);
    camera_->setMagnification(Magnification::valueOf(cboScale_->currentText()));
    offerOtherCameras();
    return camera_->open();
}

void frmMain::offerOtherCameras()
{
    cameraKeeper_ = std::make_unique<CameraChoiceKeeper>(data_);
    const auto devices = [this](const auto& use) {
        const LinuxVideoDevices thisMachine;
        return use(videoDevices_ ? *videoDevices_ : static_cast<const VideoDeviceSystem&>(thisMachine));
    };
    CameraPanel::CameraSwitching s;
    s.cameras = [devices] {
        // The dialog does not wait for the network: the discovery begun at start has ended by now.
        return devices([](const VideoDeviceSystem& system) {
            return CameraList::all(system,
                                   [] { return GenICamDriver::listCameras(std::chrono::milliseconds(0)); });
        });
    };
    s.make = [this](const CameraChoice& choice) -> std::unique_ptr<CameraDriver> {
        return cameraKeeper_->prepare(choice) ? driverFactory_(data_) : nullptr;
    };
    s.done = [this](const CameraChoice& choice, bool opened) { cameraKeeper_->done(choice, opened); };
    s.current = devices([this](const VideoDeviceSystem& system) {
        return CameraChoiceKeeper::current(camera_->driverName(), data_, system);
    });
    camera_->setCameraSwitching(std::move(s));
}

void frmMain::connectOverlays()
{
    CrossLines& crosses = overlays_->crossLines();
    connect(&crosses, &CrossLines::guidanceRequested, this, [this](qint16 n) { guidance_->DispGuidance(n); });
    connect(&crosses, &CrossLines::guidanceEnded, this, [this] { guidance_->HideGuidance(); });
    connect(overlays_.get(), &OverlayPanel::jpegQualityChanged, this, [this] { pictures_->applySettings(); });
    overlays_->followPointerOver({camera_->cameraView(), camera_->stillView()});
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
    pictures_ = std::make_unique<PicturePanel>(data_, prompter_, *camera_, measure_->session(),
                                               measure_->results(), *guidance_, parts);
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
    parts.toPicture = [this](QPoint areaPoint) { return camera_->areaToPicture(areaPoint); };
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

void frmMain::stillShownChanged(bool shown)
{
    refreshPictureSize();
    setCommandAreaEnabled(picMeasureCommandArea_, shown);
    measure_->stillShownChanged(shown);
    // The camera panel has just set the button's tip for its new state.
    if (const CommandTips::Tip* tip = CommandTips::find(cmdPlayStop_->objectName()))
        cmdPlayStop_->setToolTip(CommandTips::withShortcut(cmdPlayStop_->toolTip(), *tip));
    if (pictures_)
        pictures_->measureSave()->setEnabled(shown);
    if (measure_->sessionStarted())
        overlays_->layoutChanged();
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

void frmMain::placeRunTimeControls()
{
    for (const MainLayout::Place& place : MainLayout::commandPlaces())
        if (auto* w = picViewCommandArea_->findChild<QWidget*>(QLatin1String(place.name)))
            w->setGeometry(place.rect);
    Form_Resize();
}

void frmMain::applySettingsToControls()
{
    const Settings& s = data_.settings;
    const MessageTable& m = data_.messages;
    // The captions this window sets itself, by message id.
    const std::pair<QWidget*, qint32> captions[] = {{cmdPicLoad_, 40001}, {cmdPicSave_, 40002},
                                                    {cmdExit_, 40003},    {cmdPinProp_, 40011},
                                                    {lblScale_, 40021},   {lblComment_, 40027}};
    for (const auto& [widget, id] : captions)
        widget->setProperty("text", m(id));
    lblJpegQtyCaption_->setText(m(40022) + QLatin1Char(':'));
    cmdHistogram_->setText(m(27000));
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
    return QMainWindow::eventFilter(watched, event);
}

void frmMain::Form_Resize()
{
    if (isMinimized())
        return;
    runGuarded(data_.log, QStringLiteral("frmMain:Form_Resize"), [this] {
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
    });
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
