#include "measure/ui/MeasurePanel.h"

#include "calib/ProofResolutions.h"
#include "calib/ui/OverlayPanel.h"
#include "calib/ui/frmProofConfig.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/HandlerGuard.h"
#include "common/MainLayout.h"
#include "common/Prompter.h"
#include "common/Twips.h"
#include "common/ui/Icons.h"
#include "measure/CaliperTool.h"
#include "measure/EdgeSnap.h"
#include "measure/MeasureSession.h"
#include "measure/ValueFormat.h"
#include "measure/ui/ToolIcons.h"
#include "measure/ui/frmCaliperProfile.h"
#include "measure/ui/frmMeasureConfig.h"
#include "program/AppData.h"

#include "common/ui/WidgetNames.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>

namespace tavix {

namespace {

enum Caption : qint32 {
    kClear = 40004,
    kRemove = 40005,
    kSaveResults = 40006,
    kKeepResults = 40007,
    kMeasureSettings = 40012,
    kCalibrate = 40013,
    kGridNo = 40016,
    kGridKind = 40017,
    kGridValue = 40018,
    kGridUnit = 40019,
    kCalibration = 40020,
    kMeasuringTools = 40025,
    kResults = 40026,
    kEdgeSnap = 40040,
    kCaliper = 27100,
    kOneClickCircle = 27101,
    kUndo = 27012,
    kRedo = 27013,
};

}  // namespace

MeasurePanel::MeasurePanel(AppData& data, Prompter& prompter, ScaleBarSwitch& scaleBar, QWidget* area,
                           QObject* parent)
    : QObject(parent), data_(data), prompter_(prompter), scaleBar_(scaleBar), runDialog_([](QDialog& d) {
          return d.exec();
      })
{
    build(area);
}

MeasurePanel::~MeasurePanel() = default;

MeasureSession& MeasurePanel::startMeasuring(Guidance& guidance, CameraPanel& camera, OverlayPanel& overlays)
{
    auto units = [this] {
        const ProofEntry& entry = data_.measuringEntry();
        // Tools work in picture pixels, so the zoom does not enter here.
        return MeasureSession::Units{{entry.XFactor, entry.YFactor, 1.0, calibration_->takingValue()},
                                     entry.Unit};
    };
    session_ = std::make_unique<MeasureSession>(data_.settings, data_.log, data_.messages, results_, guidance,
                                                prompter_, units);
    MeasureSession* session = session_.get();
    setTwoPointAverage([session] { return session->twoPointAverage(); });
    setStillSource([&camera] { return camera.stillShown() ? camera.still() : QImage(); });

    StillViewWidget* still = camera.stillView();
    still->setOverlay(&session->store(), OverlayStyle::fromSettings(data_.settings));
    session->setPictureSource([&camera] { return camera.still(); });
    connect(still, &StillViewWidget::picturePressed, session, &MeasureSession::press);
    connect(still, &StillViewWidget::pictureMoved, session, &MeasureSession::move);
    connect(still, &StillViewWidget::pictureReleased, session, &MeasureSession::release);
    connect(still, &StillViewWidget::pictureDoubleClicked, session, &MeasureSession::doubleClick);
    connect(still, &StillViewWidget::cancelRequested, session, &MeasureSession::cancel);
    connect(session, &MeasureSession::previewChanged, still, &StillViewWidget::setPreview);
    connect(session, &MeasureSession::overlayChanged, still, &StillViewWidget::invalidateOverlay);
    connect(session, &MeasureSession::highlightChanged, still, &StillViewWidget::setHighlight);
    connect(this, &MeasurePanel::toolButtonClicked, session, &MeasureSession::selectButton);
    connect(this, &MeasurePanel::rowsSelected, session, &MeasureSession::highlightRows);
    connect(this, &MeasurePanel::calibrationMarkingRequested, this, [this, session](qint16 tool, qint16) {
        releaseToolButtons();
        session->selectTool(tool);
    });
    connect(session, &MeasureSession::calibrationLengthMarked, this, [this, session, still](double pixels) {
        session->clearTool();
        calibrationLengthMarked(pixels, still->magnification());
    });
    const auto applyEdgeSnap = [session, &camera](bool on) {
        if (!on) {
            session->setPointSnap(nullptr);
            return;
        }
        // The still as the camera panel holds it now; the snap reads only around the pointer.
        session->setPointSnap([&camera](PointD p) { return EdgeSnap(camera.still()).snap(p); });
    };
    connect(session, &MeasureSession::measured, this, [this, &camera](const Measurement& m) {
        if (m.tool == CaliperTool::Number)
            showCaliperProfile(m, camera.still());
    });
    applyEdgeSnap(data_.settings.EDGESNAP != 0);
    connect(this, &MeasurePanel::edgeSnapChanged, this, applyEdgeSnap);
    connect(this, &MeasurePanel::measureSettingsChanged, this, [this, session, still, &overlays] {
        session->relabel();
        still->setOverlay(&session->store(), OverlayStyle::fromSettings(data_.settings));
        overlays.crossLines().applySettings();
        overlays.layoutChanged();
    });

    // Placing a cross takes the mouse from the measuring tools, and a tool takes it from the crosses.
    connect(&overlays, &OverlayPanel::crossToolChanged, this, [this, session](qint16 tool) {
        if (tool == CrossLines::kNoTool)
            return;
        session->clearTool();
        releaseToolButtons();
    });
    connect(this, &MeasurePanel::toolButtonClicked, &overlays.crossLines(), &CrossLines::toolReplaced);

    connect(cmdUndo_, &QToolButton::clicked, session, &MeasureSession::undo);
    connect(cmdRedo_, &QToolButton::clicked, session, &MeasureSession::redo);
    connect(session, &MeasureSession::historyChanged, this, &MeasurePanel::refreshButtons);
    refreshButtons();
    return *session;
}

void MeasurePanel::build(QWidget* area)
{
    const int width = twipsToPixels(MainLayout::kMeasureAreaWidthTwips) - 12;
    lblProof_ = named(new QLabel(area), QStringLiteral("lblProof"));
    lblProof_->setGeometry(6, 6, width, 20);
    cboProof_ = named(new QComboBox(area), QStringLiteral("cboProof"));
    // The calibration can be chosen while the live picture runs (scale bar).
    cboProof_->setProperty("tag", QStringLiteral("NoDisable"));
    cboProof_->setGeometry(6, 26, width - 104, 28);
    connect(cboProof_, &QComboBox::activated, this, &MeasurePanel::cboProof_Click);
    cmdProofConfig_ = named(new QPushButton(area), QStringLiteral("cmdProofConfig"));
    cmdProofConfig_->setGeometry(width - 92, 26, 98, 28);
    connect(cmdProofConfig_, &QPushButton::clicked, this, &MeasurePanel::cmdProofConfig_Click);

    fraTools_ = named(new QGroupBox(area), QStringLiteral("fraTools"));
    fraTools_->setGeometry(6, 62, width, 180);
    const int buttonWidth = (width - 18) / 2;
    // Five rows of two: the seven tools, caliper and one-click circle, the settings.
    constexpr int rowStep = 30;
    for (int i = 0; i < static_cast<int>(cmdMeasure_.size()); ++i) {
        auto* button = named(new QToolButton(fraTools_), indexedName("cmdMeasure", i));
        button->setCheckable(true);
        button->setAutoExclusive(true);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setGeometry(6 + (i % 2) * (buttonWidth + 6), 22 + (i / 2) * rowStep, buttonWidth,
                            rowStep - 2);
        cmdMeasure_[static_cast<size_t>(i)] = button;
        connect(button, &QToolButton::clicked, this, [this, i] {
            // The mode in force picks the tool, and with it the button's picture.
            applyToolCaptions();
            emit toolButtonClicked(i);
        });
    }
    cmdMeasureConfig_ = named(new QPushButton(fraTools_), QStringLiteral("cmdMeasureConfig"));
    cmdMeasureConfig_->setGeometry(6 + buttonWidth + 6, 22 + 4 * rowStep, buttonWidth, rowStep - 2);
    connect(cmdMeasureConfig_, &QPushButton::clicked, this, &MeasurePanel::cmdMeasureConfig_Click);

    // Under the tools, above the results' caption.
    chkEdgeSnap_ = named(new QCheckBox(area), QStringLiteral("chkEdgeSnap"));
    chkEdgeSnap_->setGeometry(12, 246, width - 6, 24);
    connect(chkEdgeSnap_, &QCheckBox::clicked, this, [this](bool checked) {
        data_.settings.EDGESNAP = checked ? 1 : 0;
        emit edgeSnapChanged(checked);
    });

    lblResults_ = named(new QLabel(area), QStringLiteral("lblResults"));
    // Undo and redo at the right of the results' caption, over the table they act on.
    cmdUndo_ = named(new QToolButton(area), QStringLiteral("cmdUndo"));
    cmdRedo_ = named(new QToolButton(area), QStringLiteral("cmdRedo"));
    for (QToolButton* button : {cmdUndo_, cmdRedo_}) {
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setAutoRaise(true);
        button->setIconSize(QSize(16, 16));
    }
    cmdUndo_->setIcon(Icons::undo());
    cmdRedo_->setIcon(Icons::redo());
    grdResult_ = named(new QTableView(area), QStringLiteral("grdResult"));
    grdResult_->setModel(&results_);
    grdResult_->verticalHeader()->setVisible(false);
    grdResult_->setSelectionBehavior(QAbstractItemView::SelectRows);
    // One block of rows, from the current row to the selection's end, as Remove takes it.
    grdResult_->setSelectionMode(QAbstractItemView::ContiguousSelection);
    grdResult_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grdResult_->horizontalHeader()->setStretchLastSection(true);
    grdResult_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grdResult_->setColumnWidth(0, 40);
    grdResult_->setColumnWidth(1, 118);
    grdResult_->setColumnWidth(2, 80);
    connect(grdResult_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        const QModelIndexList rows = grdResult_->selectionModel()->selectedRows();
        if (rows.isEmpty()) {
            emit rowsSelected(0, -1);
            return;
        }
        int first = rows.front().row() + 1;
        int last = first;
        for (const QModelIndex& index : rows) {
            first = std::min(first, index.row() + 1);
            last = std::max(last, index.row() + 1);
        }
        emit rowsSelected(first, last);
    });
    connect(&results_, &ResultTable::selectionRequested, this, [this](int row) {
        if (row >= 1 && row <= results_.count())
            grdResult_->selectRow(row - 1);
        else
            grdResult_->clearSelection();
    });

    cmdResultClear_ = named(new QPushButton(area), QStringLiteral("cmdResultClear"));
    cmdResultRemove_ = named(new QPushButton(area), QStringLiteral("cmdResultRemove"));
    cmdResultSave_ = named(new QPushButton(area), QStringLiteral("cmdResultSave"));
    connect(cmdResultClear_, &QPushButton::clicked, this,
            [this] { results_.clearAll(prompter_, data_.messages); });
    connect(cmdResultRemove_, &QPushButton::clicked, this, [this] {
        const auto rows = selectedRowRange();
        if (!rows)
            return;  // no row selected: nothing to remove, nothing asked
        const auto outcome = results_.removeResults(rows->first, rows->second, prompter_, data_.messages);
        if (outcome.selectRow > 0)
            grdResult_->selectRow(outcome.selectRow - 1);
    });
    connect(cmdResultSave_, &QPushButton::clicked, this, [this] {
        std::optional<ResultTable::AverageLine> average;
        if (data_.settings._2POINTAVERAGE == 1) {
            average = ResultTable::averageLine(data_.messages, twoPointAverage_ ? twoPointAverage_() : 0.0,
                                               calibration_ ? calibration_->currentEntry().Unit : QString());
        }
        results_.cmdResultSave(prompter_, data_.messages, average, &data_.log);
    });

    connect(&results_, &ResultTable::stateChanged, this, &MeasurePanel::refreshButtons);

    chkKeepResult_ = named(new QCheckBox(area), QStringLiteral("chkKeepResult"));
    connect(chkKeepResult_, &QCheckBox::clicked, this, [this](bool checked) {
        data_.settings.KEEPRESULT = checked ? 1 : 0;
        results_.setKeepResult(checked);
    });
}

std::optional<std::pair<int, int>> MeasurePanel::selectedRowRange() const
{
    const QModelIndex current = grdResult_->currentIndex();
    if (!current.isValid())
        return std::nullopt;
    // The selected block that holds the current row: the current row lies at
    // one end of it, the selection's end at the other.
    for (const QItemSelectionRange& range : grdResult_->selectionModel()->selection()) {
        if (range.top() <= current.row() && current.row() <= range.bottom()) {
            if (current.row() == range.bottom())
                return std::make_pair(current.row() + 1, range.top() + 1);
            return std::make_pair(current.row() + 1, range.bottom() + 1);
        }
    }
    return std::nullopt;
}

void MeasurePanel::place(const MainLayout& l)
{
    if (l.resultGrid.height() > 0)
        grdResult_->setGeometry(l.resultGrid);
    const QRect row = l.resultButtons;
    const int w = (row.width() - 12) / 3;
    cmdResultClear_->setGeometry(row.x(), row.y(), w, row.height());
    cmdResultRemove_->setGeometry(row.x() + w + 6, row.y(), w, row.height());
    cmdResultSave_->setGeometry(row.x() + 2 * (w + 6), row.y(), row.width() - 2 * (w + 6), row.height());
    chkKeepResult_->setGeometry(l.keepResult);
}

void MeasurePanel::applySettings()
{
    const MessageTable& m = data_.messages;
    const Settings& s = data_.settings;
    lblProof_->setText(m(kCalibration));
    cmdProofConfig_->setText(m(kCalibrate));
    fraTools_->setTitle(m(kMeasuringTools));
    cmdMeasureConfig_->setText(m(kMeasureSettings));
    lblResults_->setText(m(kResults));
    cmdResultClear_->setText(m(kClear));
    cmdResultRemove_->setText(m(kRemove));
    cmdResultSave_->setText(m(kSaveResults));
    cmdUndo_->setText(m(kUndo));
    cmdRedo_->setText(m(kRedo));
    // As wide as their captions, flush with the table's right edge; the caption takes the rest.
    const int right = twipsToPixels(MainLayout::kMeasureAreaWidthTwips) - 6;
    const int top = twipsToPixels(MainLayout::kGridTopTwips) - 26;
    const int redo = cmdRedo_->sizeHint().width();
    const int undo = cmdUndo_->sizeHint().width();
    cmdRedo_->setGeometry(right - redo, top, redo, 24);
    cmdUndo_->setGeometry(cmdRedo_->x() - 2 - undo, top, undo, 24);
    lblResults_->setGeometry(6, top + 4, cmdUndo_->x() - 10, 20);
    chkKeepResult_->setText(m(kKeepResults));
    results_.setHeaderCaptions({m(kGridNo), m(kGridKind), m(kGridValue), m(kGridUnit)});
    chkKeepResult_->setChecked(s.KEEPRESULT != 0);
    cmdMeasure_[7]->setText(m(kCaliper));
    cmdMeasure_[7]->setIcon(ToolIcons::imgCaliper());
    cmdMeasure_[8]->setText(m(kOneClickCircle));
    cmdMeasure_[8]->setIcon(ToolIcons::imgOneClickCircle());
    chkEdgeSnap_->setText(m(kEdgeSnap));
    chkEdgeSnap_->setChecked(s.EDGESNAP != 0);
    emit edgeSnapChanged(s.EDGESNAP != 0);
    results_.setKeepResult(s.KEEPRESULT != 0);
    results_.reformat(s.NUMBEROFDECIMALS);
    data_.valueFormat = ValueFormat::pattern(s.NUMBEROFDECIMALS);
    applyToolCaptions();

    calibration_ = std::make_unique<CalibrationController>(data_.proofs, data_.settings, data_.messages,
                                                           prompter_, results_, scaleBar_, data_.proofPath());
    calibration_->bindResolutions({&data_.proofSizes, ProofResolutions::pathBeside(data_.proofPath()),
                                   [this] { return data_.picture; }, &data_.log});
    fillProofList();
}

void MeasurePanel::applyToolCaptions()
{
    const Settings& s = data_.settings;
    // The two-point, circle and angle buttons name the tool their mode selects.
    const std::array<qint32, 7> captions = {s._2POINTCOMMANDMODE == 0 ? 10101 : 10112,
                                            s.CIRCLEARCSELECT == 0 ? 10102 : 10113,
                                            10103,
                                            10104,
                                            10105,
                                            s.ANGLECOMMANDMODE == 0 ? 10106 : 10110,
                                            10111};
    // The caliper and one-click circle keep their own tips (with their shortcuts).
    for (size_t i = 0; i < captions.size(); ++i) {
        cmdMeasure_[i]->setText(data_.messages.text(captions[i]));
        cmdMeasure_[i]->setToolTip(data_.messages.text(captions[i]));
    }
    cmdMeasure_[0]->setIcon(ToolIcons::img2PointIcon(s._2POINTCOMMANDMODE == 0 ? 0 : 1));
    cmdMeasure_[1]->setIcon(ToolIcons::imgCircleArcSelect(s.CIRCLEARCSELECT == 0 ? 0 : 1));
    cmdMeasure_[5]->setIcon(ToolIcons::imgAngleIcon(s.ANGLECOMMANDMODE == 0 ? 0 : 1));
}

void MeasurePanel::fillProofList()
{
    cboProof_->clear();
    cboProof_->addItems(data_.proofs.names());
    cboProof_->setCurrentIndex(data_.settings.CURRENTPROOFNO);
}

void MeasurePanel::cboProof_Click(int index)
{
    switch (calibration_->selectEntry(index)) {
        case CalibrationController::Selection::Declined:
            cboProof_->setCurrentIndex(calibration_->currentIndex());
            break;
        case CalibrationController::Selection::Changed:
            emit proofChanged();
            break;
        case CalibrationController::Selection::Ignored:
            break;
    }
}

void MeasurePanel::cmdProofConfig_Click()
{
    if (!calibration_->startProcedure())
        return;
    runProofDialog();
}

void MeasurePanel::calibrationLengthMarked(double pixels, double magnification)
{
    const auto marked = calibration_->finishMarking(pixels, magnification);
    if (marked.runError != 0)
        data_.log.write(QStringLiteral("frmMain:picStillView_MouseUp Error.(%1)").arg(marked.runError));
    releaseToolButtons();
    runProofDialog();
}

void MeasurePanel::releaseToolButtons()
{
    // Exclusive buttons cannot all be unchecked while exclusive.
    for (QToolButton* button : cmdMeasure_)
        button->setAutoExclusive(false);
    for (QToolButton* button : cmdMeasure_) {
        button->setChecked(false);
        button->setAutoExclusive(true);
    }
}

void MeasurePanel::setMeasuringEnabled(bool enabled)
{
    measuringEnabled_ = enabled;
    refreshButtons();
}

void MeasurePanel::stillShownChanged(bool shown)
{
    setMeasuringEnabled(shown);
    if (caliperProfile_)
        caliperProfile_->hide();  // its line belongs to the picture that went
    if (!session_)
        return;
    // The results of the last still are kept (greyed) or dropped as chkKeepResult says.
    results_.ClearResults(0);
    if (!shown) {
        session_->clearTool();
        releaseToolButtons();
    }
}

void MeasurePanel::showCaliperProfile(const Measurement& caliper, const QImage& still)
{
    if (caliper.points.size() < 2)
        return;
    const CaliperTool::Profile profile =
        CaliperTool::profileAlong(still, caliper.points[0], caliper.points[1]);
    if (!caliperProfile_) {
        QWidget* window = cboProof_->window();
        caliperProfile_ = new frmCaliperProfile(data_.messages, window);
        // Over the result table's lower rows rather than the middle of the picture.
        const QRect frame = window->geometry();
        caliperProfile_->move(frame.right() - caliperProfile_->width() - 12,
                              frame.bottom() - caliperProfile_->height() - 100);
        connect(caliperProfile_->plot(), &CaliperPlot::pairPicked, this, [this](int first, int last) {
            runGuarded(data_.log, QStringLiteral("frmMain:picCaliperProfile_MouseUp"), [&] {
                const auto m = CaliperTool::measurePair(caliperProfile_->plot()->profile(), first, last,
                                                        session_->context());
                if (m)
                    session_->addMeasurement(*m);
            });
        });
    }
    caliperProfile_->plot()->setProfile(profile, CaliperTool::pairOf(caliper.points, profile));
    caliperProfile_->show();
}

void MeasurePanel::refreshButtons()
{
    const ResultTable::ButtonStates states = results_.buttonStates();
    cmdResultClear_->setEnabled(measuringEnabled_ && states.clear);
    cmdResultRemove_->setEnabled(measuringEnabled_ && states.remove);
    cmdResultSave_->setEnabled(measuringEnabled_ && states.save);
    cmdUndo_->setEnabled(measuringEnabled_ && session_ && session_->canUndo());
    cmdRedo_->setEnabled(measuringEnabled_ && session_ && session_->canRedo());
}

void MeasurePanel::runProofDialog()
{
    frmProofConfig dialog(*calibration_, data_.messages, data_.log, cboProof_->window());
    if (still_)
        dialog.setStill(still_());
    runDialog_(dialog);
    const auto after = calibration_->dialogClosed();
    if (after.measure) {
        emit calibrationMarkingRequested(after.toolNumber, after.guidanceNumber);
        return;
    }
    fillProofList();
    emit proofChanged();
}

void MeasurePanel::cmdMeasureConfig_Click()
{
    frmMeasureConfig dialog(data_.settings, data_.messages, prompter_, data_.log, cboProof_->window());
    runDialog_(dialog);
    // Either way the settings in force are applied again.
    applyToolCaptions();
    data_.valueFormat = ValueFormat::pattern(data_.settings.NUMBEROFDECIMALS);
    results_.reformat(data_.settings.NUMBEROFDECIMALS);
    refreshButtons();
    emit measureSettingsChanged();
}

}  // namespace tavix
