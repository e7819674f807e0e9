#include "measure/MeasureSession.h"

#include "common/ErrorLog.h"
#include "common/Guidance.h"
#include "common/HandlerGuard.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/Settings.h"
#include "measure/LineToPointTool.h"
#include "measure/ResultTable.h"
#include "measure/ToolFactory.h"
#include "measure/TwoPointTool.h"

#include <QScopeGuard>

namespace tavix {

MeasureSession::MeasureSession(const Settings& settings, const ErrorLog& log, const MessageTable& messages,
                               ResultTable& results, Guidance& guidance, Prompter& prompter, UnitSource units,
                               QObject* parent)
    : QObject(parent),
      settings_(settings),
      log_(log),
      messages_(messages),
      results_(results),
      guidance_(guidance),
      prompter_(prompter),
      units_(std::move(units))
{
    connect(&results_, &ResultTable::measurementsCleared, this, [this] {
        store_.clear();
        if (results_.count() == 0)
            twoPointAverage_.reset();
        emit overlayChanged();
    });
    connect(&results_, &ResultTable::rowsRemovedFromStore, this, [this](int first, int last) {
        store_.removeRows(first, last);
        emit overlayChanged();
    });
    connect(&results_, &ResultTable::redrawRequested, this, [this] { emit overlayChanged(); });
    connect(&results_, &ResultTable::aboutToChange, this, &MeasureSession::recordChange);
    connect(&results_, &ResultTable::newPicture, this, [this] {
        history_.restart();
        emit historyChanged();
    });
    connect(&results_, &ResultTable::saved, this, [this] { history_.saved(); });
}

MeasureSession::~MeasureSession() = default;

MeasureContext MeasureSession::context() const
{
    return {units_().context, settings_.NUMBEROFDECIMALS, picture_ ? picture_() : QImage()};
}

int MeasureSession::toolNumber() const
{
    return tool_ ? tool_->number() : 0;
}

int MeasureSession::clickCount() const
{
    return tool_ ? tool_->clickCount() : 0;
}

void MeasureSession::selectButton(int index)
{
    if (const auto number = ToolFactory::toolForButton(index, settings_))
        selectTool(*number);
}

void MeasureSession::selectTool(int toolNumber)
{
    tool_ = ToolFactory::create(toolNumber);
    emit previewChanged({});
    showGuidance();
}

void MeasureSession::clearTool()
{
    tool_.reset();
    emit previewChanged({});
    guidance_.HideGuidance();
}

void MeasureSession::showGuidance()
{
    if (tool_)
        guidance_.DispGuidance(static_cast<qint16>(tool_->guidance()));
}

void MeasureSession::setPointSnap(std::function<PointD(PointD)> snap)
{
    snap_ = std::move(snap);
}

void MeasureSession::setPictureSource(std::function<QImage()> picture)
{
    picture_ = std::move(picture);
}

void MeasureSession::press(PointD p, Qt::MouseButton button)
{
    if (!tool_ || button != Qt::LeftButton)
        return;
    const int before = tool_->clickCount();
    tool_->press(p);
    if (tool_->clickCount() != before)
        showGuidance();
}

void MeasureSession::move(PointD p)
{
    if (!tool_)
        return;
    if (!snap_ || !tool_->takesSnappedPoints()) {
        if (tool_->clickCount() > 0)
            emit previewChanged(tool_->preview(p, context()));
        return;
    }
    // The mark shows where a release here would place the point.
    const PointD at = snap_(p);
    Shape preview = tool_->clickCount() > 0 ? tool_->preview(at, context()) : Shape{};
    preview.marks.push_back(at);
    emit previewChanged(preview);
}

void MeasureSession::release(PointD p, Qt::MouseButton button)
{
    if (!tool_)
        return;
    if (button == Qt::RightButton) {
        cancel();
        return;
    }
    if (button != Qt::LeftButton)
        return;
    const bool done = runGuarded(log_, "frmMain:picStillView_MouseUp", [&] {
        tool_->addPoint(snap_ && tool_->takesSnappedPoints() ? snap_(p) : p);
        if (tool_->complete())
            complete();
        else
            showGuidance();
    });
    if (!done)
        dropFaultedMeasurement();
}

void MeasureSession::doubleClick(PointD)
{
    if (!tool_)
        return;
    const bool done = runGuarded(log_, "frmMain:picStillView_DblClick", [&] {
        if (tool_->finishOnDoubleClick() && tool_->complete())
            complete();
    });
    if (!done)
        dropFaultedMeasurement();
}

void MeasureSession::dropFaultedMeasurement()
{
    // A fault leaves the tool holding a full set of points: without this it
    // would compute the same failing measurement on every later click.
    if (tool_)
        tool_->reset();
    emit previewChanged({});
    showGuidance();
}

void MeasureSession::cancel()
{
    if (!tool_)
        return;
    tool_->reset();
    emit previewChanged({});
    showGuidance();
}

void MeasureSession::complete()
{
    const std::optional<Measurement> result = tool_->result(context());
    tool_->startNext();
    emit previewChanged({});
    showGuidance();
    if (!result)
        return;  // e.g. three points on one line: no circle, no row
    if (!result->addsResultRows()) {
        emit calibrationLengthMarked(result->values.empty() ? 0.0 : result->values.front().value);
        return;
    }
    addMeasurement(*result);
}

void MeasureSession::addMeasurement(const Measurement& measurement)
{
    const int rows = static_cast<int>(measurement.values.size());
    if (results_.count() + rows > ResultTable::kMaxResults) {
        ResultTable::tellTableFull(prompter_, messages_);
        return;
    }
    const QString unit = units_().name;
    // Its rows, the store and the average change together: one step back.
    adding_ = true;
    const auto added = qScopeGuard([this] { adding_ = addingRecorded_ = false; });
    int firstRow = 0;
    for (const ResultValue& value : measurement.values) {
        const int row = results_.addResult(messages_.text(value.kindCaption), value.value,
                                           unitText(value, unit, messages_));
        if (firstRow == 0)
            firstRow = row;
    }
    if (measurement.tool == TwoPointTool::Number || measurement.tool == LineToPointTool::Number)
        twoPointAverage_.add(measurement.values.front().value);
    store_.add(measurement, firstRow);
    emit overlayChanged();
    emit measured(measurement);
}

void MeasureSession::relabel()
{
    store_.relabel(settings_.NUMBEROFDECIMALS);
    emit overlayChanged();
}

void MeasureSession::highlightRows(int first, int last)
{
    emit highlightChanged(store_.indexesInRows(first, last));
}

MeasureHistory::State MeasureSession::state() const
{
    return {results_.snapshot(), store_, twoPointAverage_};
}

void MeasureSession::recordChange()
{
    if (addingRecorded_)
        return;
    history_.record(state());
    addingRecorded_ = adding_;
    emit historyChanged();
}

void MeasureSession::restore(const MeasureHistory::State& state)
{
    store_ = state.store;
    // Labels with the decimals in force, as the table's values.
    store_.relabel(settings_.NUMBEROFDECIMALS);
    twoPointAverage_ = state.twoPointAverage;
    results_.restore(state.table);
    // The grid's selection went with the rows it was on.
    emit highlightChanged({});
    emit overlayChanged();
    emit historyChanged();
}

void MeasureSession::undo()
{
    if (auto back = history_.undo(state()))
        restore(*back);
}

void MeasureSession::redo()
{
    if (auto forward = history_.redo(state()))
        restore(*forward);
}

}  // namespace tavix
