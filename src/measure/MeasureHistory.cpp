#include "measure/MeasureHistory.h"

namespace tavix {

void MeasureHistory::record(State before)
{
    undo_.push_back(std::move(before));
    if (static_cast<int>(undo_.size()) > kDepth)
        undo_.pop_front();
    redo_.clear();
}

std::optional<MeasureHistory::State> MeasureHistory::step(std::deque<State>& from, std::deque<State>& to,
                                                          State now)
{
    if (from.empty())
        return std::nullopt;
    State next = std::move(from.back());
    from.pop_back();
    to.push_back(std::move(now));
    return next;
}

std::optional<MeasureHistory::State> MeasureHistory::undo(State now)
{
    return step(undo_, redo_, std::move(now));
}

std::optional<MeasureHistory::State> MeasureHistory::redo(State now)
{
    return step(redo_, undo_, std::move(now));
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
