#pragma once

#include "measure/MeasureContext.h"
#include "measure/MeasureHistory.h"
#include "measure/MeasureTool.h"
#include "measure/MeasurementStore.h"
#include "measure/RunningAverage.h"

#include <QObject>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tavix {

class ErrorLog;
class Guidance;
class MessageTable;
class Prompter;
class ResultTable;
struct Settings;

// The measuring on the still picture: the selected tool, the clicks that feed
// it, the measurements of the picture and their rows in the result table.
class MeasureSession : public QObject {
    Q_OBJECT
public:
    // The selected calibration entry's factors, whether a calibration length
    // is being marked (lengths then stay in pixels), and the entry's unit.
    struct Units {
        CalcModule::UnitContext context;
        QString name;
    };
    using UnitSource = std::function<Units()>;

    MeasureSession(const Settings& settings, const ErrorLog& log, const MessageTable& messages,
                   ResultTable& results, Guidance& guidance, Prompter& prompter, UnitSource units,
                   QObject* parent = nullptr);
    ~MeasureSession() override;

    // cmdMeasure(index): the tool its setting selects, with its guidance.
    void selectButton(int index);
    // A tool by number (the calibration marking tools 21 to 24).
    void selectTool(int toolNumber);
    // No tool: the live picture runs.
    void clearTool();
    int toolNumber() const;
    // Points clicked so far with the tool in use; 0 without a tool.
    int clickCount() const;

    // Where a pointer position lands (edge snap), or nothing to take it as it is.
    void setPointSnap(std::function<PointD(PointD)> snap);
    // The still that the tools reading the picture measure on.
    void setPictureSource(std::function<QImage()> picture);

    // Mouse over the still, in picture pixels.
    void press(PointD p, Qt::MouseButton button);
    void move(PointD p);
    void release(PointD p, Qt::MouseButton button);
    void doubleClick(PointD p);
    // Right click or Esc: the measurement in progress is dropped.
    void cancel();

    const MeasurementStore& store() const { return store_; }
    MeasureContext context() const;

    // The value labels again with the decimals in force.
    void relabel();

    // The running average of the two-point button's distances (tools 101 and
    // 108) for the result file. A removed row stays in it; it starts again
    // when the table is emptied.
    double twoPointAverage() const { return twoPointAverage_.value(); }

    // The result rows first..last are selected: their measurements are highlighted.
    void highlightRows(int first, int last);

    // Adds a finished measurement made outside the tool's clicks (another
    // pair of edges on a caliper line): its rows, its drawing.
    void addMeasurement(const Measurement& measurement);
    // Every change of the table and the measurements since the picture was
    // taken or loaded, back and forth. Points placed for a measurement not
    // finished yet stay as they are.
    bool canUndo() const { return history_.canUndo(); }
    bool canRedo() const { return history_.canRedo(); }
    void undo();
    void redo();

signals:
    void previewChanged(const tavix::Shape& preview);
    void overlayChanged();
    void highlightChanged(const std::vector<int>& indexes);
    // A calibration marking is complete: the pixel length marked.
    void calibrationLengthMarked(double pixels);
    // A measurement got its rows and its drawing.
    void measured(const tavix::Measurement& measurement);
    // What undo and redo can do changed.
    void historyChanged();

private:
    void complete();
    // After a floating-point fault: no row, and the tool takes new clicks.
    void dropFaultedMeasurement();
    void showGuidance();
    MeasureHistory::State state() const;
    void restore(const MeasureHistory::State& state);
    // The table is about to change: the state before it is a step back, one
    // for all the changes of a measurement.
    void recordChange();

    const Settings& settings_;
    const ErrorLog& log_;
    const MessageTable& messages_;
    ResultTable& results_;
    Guidance& guidance_;
    Prompter& prompter_;
    UnitSource units_;
    std::unique_ptr<MeasureTool> tool_;
    MeasurementStore store_;
    RunningAverage twoPointAverage_;
    std::function<PointD(PointD)> snap_;
    std::function<QImage()> picture_;
    MeasureHistory history_;
    bool adding_ = false;          // a finished measurement enters the table
    bool addingRecorded_ = false;  // and the state before it is kept
};

}  // namespace tavix
