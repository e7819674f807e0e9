#include "files/ui/IntervalSavePanel.h"

#include "calib/CrossLines.h"
#include "camera/ui/CameraPanel.h"
#include "common/HandlerGuard.h"
#include "common/MessageLine.h"
#include "common/Prompter.h"
#include "common/ui/Icons.h"
#include "common/ui/WidgetNames.h"
#include "files/IntervalSave.h"
#include "files/ui/frmIS_Config.h"
#include "files/ui/frmSaveSetting.h"
#include "measure/ResultTable.h"
#include "program/AppData.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>

namespace tavix {

namespace {
enum Caption : qint32 { kIntervalSave = 40015, kSaveFilter = 11030 };

// The picture filter of the save dialog without its video entry.
QString pictureFilter(const QString& classic)
{
    const QStringList parts = classic.split(QLatin1Char('|'));
    QStringList kept;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
        if (!parts[i + 1].endsWith(QLatin1String(".avi"), Qt::CaseInsensitive))
            kept << parts[i] << parts[i + 1];
    return kept.join(QLatin1Char('|'));
}
}  // namespace

IntervalSavePanel::IntervalSavePanel(AppData& data, Prompter& prompter, Clock& clock, CameraPanel& camera,
                                     ResultTable& results, const Parts& parts, QObject* parent)
    : QObject(parent),
      data_(data),
      prompter_(prompter),
      camera_(camera),
      results_(results),
      parts_(parts),
      runDialog_([](QDialog& d) { return d.exec(); }),
      shot_(camera.session().driver(), data.log, data.messages, prompter, clock),
      series_(shot_, clock)
{
    // The window places it with the other controls of the strip.
    cmdIS_Save_ = named(new QPushButton(parts_.commandArea), QStringLiteral("cmdIS_Save"));
    cmdIS_Save_->show();
    connect(cmdIS_Save_, &QPushButton::clicked, this, &IntervalSavePanel::cmdIS_Save_Click);
    tmrIS_.setObjectName(QStringLiteral("tmrIS"));
    tmrIS_.setInterval(kTimerPeriodMs);
    connect(&tmrIS_, &QTimer::timeout, this, &IntervalSavePanel::tmrIS_Timer);
    connect(&camera_, &CameraPanel::playStopClicked, this, [this](qint16 state) {
        if (state == CameraPanel::kSeries)
            stopSeries();
    });
}

IntervalSavePanel::~IntervalSavePanel() = default;

void IntervalSavePanel::applySettings()
{
    cmdIS_Save_->setText(data_.messages.text(kIntervalSave));
}

void IntervalSavePanel::cmdIS_Save_Click()
{
    runGuarded(data_.log, QStringLiteral("frmMain:cmdIS_Save_Click"), [this] {
        // Both modes may drop the still's results: the series by going live, a quick save by
        // what follows it; the user says first.
        const MessageTable& m = data_.messages;
        if (results_.unsaved() && !results_.keepResult() &&
            !prompter_.askYesNo(m(IntervalSave::kMsgResultsQuestion), m(IntervalSave::kMsgResultsTitle)))
            return;
        if (data_.settings.IS_MODE == IntervalSave::kModeQuick)
            quickSave();
        else
            startSeries();
    });
}

IntervalShot::Crosses IntervalSavePanel::shownCrosses() const
{
    IntervalShot::Crosses crosses;
    const CrossLines& lines = *parts_.crosses;
    crosses.draw = lines.isOn();
    crosses.color = lines.color();
    crosses.count = 0;
    // A second cross not placed yet is not drawn.
    for (int i = 0; i < CrossLines::kCrossCount && i < data_.settings.CROSSLINENUM; ++i)
        if (lines.crossVisible(i))
            crosses.points[static_cast<size_t>(crosses.count++)] = parts_.toPicture(lines.crossPoint(i));
    crosses.draw = crosses.draw && crosses.count > 0;
    return crosses;
}

IntervalShot::Job IntervalSavePanel::baseJob() const
{
    IntervalShot::Job job;
    job.camera = camera_.session().camera();
    job.crosses = shownCrosses();
    job.jpegQuality = data_.settings.JPEGQTY;
    job.stillWaitMs = data_.settings.STILLWAITTIME;
    return job;
}

void IntervalSavePanel::startSeries()
{
    const MessageTable& m = data_.messages;
    Prompter::FileRequest request;
    request.title = m(IntervalSave::kMsgFileTitle);
    request.filter = pictureFilter(m(kSaveFilter));
    request.save = true;
    const QString name = prompter_.fileName(request);
    if (name.isEmpty())
        return;

    IntervalSeries::Plan plan;
    const auto split = IntervalSave::splitSeriesName(name);
    plan.base = split.base;
    plan.extension = split.extension;
    plan.temporaryBase = IntervalSave::splitSeriesName(data_.tempBitmapPath()).base;
    // Cross-line bitmaps left by an earlier series that was cut short.
    const QFileInfo temp(plan.temporaryBase);
    QDir folder = temp.absoluteDir();
    for (const QString& old : folder.entryList({temp.fileName() + QStringLiteral("*.bmp")}, QDir::Files))
        folder.remove(old);

    frmIS_Config dialog(data_.settings, prompter_, data_.messages, data_.log, parts_.commandArea->window());
    if (runDialog_(dialog) != QDialog::Accepted)
        return;
    plan.interval = data_.settings.INTERVALTIME;
    plan.count = data_.settings.NUMBEROFIMAGES;

    if (camera_.stillShown())
        camera_.toggleLiveStill();
    plan.job = baseJob();
    parts_.setCommandAreasEnabled(false);
    parts_.playStop->setText(m(IntervalSave::kMsgStop));
    parts_.playStop->setIcon(Icons::record());
    camera_.setRunState(CameraPanel::kSeries);
    parts_.messageLine->show(QString(), CommentBox::Tint::Series);
    if (series_.start(plan) == IntervalSeries::Step::Failed) {
        cameraFailed();
        return;
    }
    tmrIS_.start();
}

void IntervalSavePanel::tmrIS_Timer()
{
    // A report shown by a tick keeps the event loop turning while it is open;
    // Qt does not fire this timer again before the tick has returned.
    runGuarded(data_.log, QStringLiteral("frmMain:tmrIS_Timer"), [this] {
        const IntervalSeries::Step step = series_.tick();
        if (step == IntervalSeries::Step::Failed) {
            cameraFailed();
            return;
        }
        parts_.messageLine->show(series_.statusText(), CommentBox::Tint::Series);
        if (step == IntervalSeries::Step::Finished)
            endSeries(true);
    });
}

void IntervalSavePanel::stopSeries()
{
    runGuarded(data_.log, QStringLiteral("frmMain:cmdPlayStop_Click"), [this] { endSeries(true); });
}

void IntervalSavePanel::endSeries(bool tellDone)
{
    tmrIS_.stop();
    series_.stop();
    parts_.playStop->setText(data_.messages.text(IntervalSave::kMsgFreeze));
    parts_.playStop->setIcon(Icons::camera(true));
    camera_.setRunState(CameraPanel::kNormal);
    parts_.messageLine->clear();
    if (tellDone)
        prompter_.message({data_.messages.text(IntervalSave::kMsgDone),
                           data_.messages.text(IntervalSave::kMsgDoneTitle), Prompter::Icon::Information});
    parts_.setCommandAreasEnabled(true);
}

void IntervalSavePanel::cameraFailed()
{
    // Reported already; without a camera the series has nothing left to save.
    camera_.session().closeCamera();
    endSeries(false);
}

void IntervalSavePanel::quickSave()
{
    Settings& s = data_.settings;
    if (!QFileInfo(s.IS_SAVEPATH.trimmed()).isDir()) {
        prompter_.message({data_.messages.text(IntervalSave::kMsgNoFolder),
                           data_.messages.text(frmSaveSetting::kMsgCaption), Prompter::Icon::Exclamation});
        frmSaveSetting dialog(s, prompter_, data_.messages, data_.log, parts_.commandArea->window());
        if (runDialog_(dialog) != QDialog::Accepted || !QFileInfo(s.IS_SAVEPATH.trimmed()).isDir())
            return;
    }
    const QString folder = IntervalSave::quickFolder(s.IS_SAVEPATH);
    const int number = IntervalSave::nextQuickNumber(folder);
    if (number > IntervalSave::kMaxQuickNumber) {
        prompter_.message({data_.messages.text(IntervalSave::kMsgFolderFull),
                           data_.messages.text(frmSaveSetting::kMsgCaption), Prompter::Icon::Exclamation});
        return;
    }
    const QString numberText = IntervalSave::quickNumberText(number);
    IntervalShot::Job job = baseJob();
    job.finalFile = folder + numberText + QStringLiteral(".jpg");
    job.temporaryFile = IntervalSave::splitSeriesName(data_.tempBitmapPath()).base + QLatin1Char('_') +
                        numberText + QStringLiteral(".bmp");
    // The frozen still is what the user sees: it is saved, not a new camera picture.
    const auto outcome = camera_.stillShown() ? shot_.saveStill(camera_.still(), job) : shot_.save(job);
    if (outcome == IntervalShot::Outcome::CameraFailed)
        camera_.session().closeCamera();
}

}  // namespace tavix
