#pragma once

#include "measure/MeasurementStore.h"
#include "measure/ResultTable.h"
#include "measure/RunningAverage.h"

#include <deque>
#include <optional>

namespace tavix {

// Undo and redo over the measurements of the picture: each step is the whole
// state before a change (the table's rows, the measurements drawn, the running
// two-point average, the unsaved flag), so that whatever changed them, any
// tool's measurement included, goes back without knowing what it was.
class MeasureHistory {
public:
    struct State {
        ResultTable::Snapshot table;
        MeasurementStore store;
        RunningAverage twoPointAverage;
    };

    // Steps kept; the oldest goes first. A full table of circles is about a
    // megabyte a step.
    static constexpr int kDepth = 50;

    // The state before a change; whatever could be redone goes.
    void record(State before);

    bool canUndo() const { return !undo_.empty(); }
    bool canRedo() const { return !redo_.empty(); }

    // The state to go back to, `now` becoming the step to redo; nothing when
    // there is no step.
    std::optional<State> undo(State now);
    std::optional<State> redo(State now);

    // A new picture: nothing to go back to.
    void restart();

    // The table was saved as it is now: every other state differs from the
    // file, so it is unsaved wherever it holds current rows.
    void saved();

private:
    // The last state of `from`, `now` going to `to`.
    static std::optional<State> step(std::deque<State>& from, std::deque<State>& to, State now);

    std::deque<State> undo_;
    std::deque<State> redo_;
};

}  // namespace tavix
