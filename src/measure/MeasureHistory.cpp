#include "measure/MeasureHistory.h"

namespace tavix {

void MeasureHistory::record(State before)
{
    undo_.push_back(std::move(before));
    if (static_cast<int>(undo_.size()) > kDepth)
        undo_.pop_front();
    redo_.clear();
}

std::optional<MeasureHistory::State> MeasureHistory::undo(State now)
{
    if (undo_.empty())
        return std::nullopt;
    State back = std::move(undo_.back());
    undo_.pop_back();
    redo_.push_back(std::move(now));
    return back;
}

std::optional<MeasureHistory::State> MeasureHistory::redo(State now)
{
    if (redo_.empty())
        return std::nullopt;
    State forward = std::move(redo_.back());
    redo_.pop_back();
    undo_.push_back(std::move(now));
    return forward;
}

void MeasureHistory::restart()
{
    undo_.clear();
    redo_.clear();
}

void MeasureHistory::saved()
{
    for (auto* steps : {&undo_, &redo_})
        for (State& state : *steps)
            state.table.unsaved = state.table.hasCurrentRows();
}

}  // namespace tavix
