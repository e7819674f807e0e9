#pragma once

namespace tavix {

// What other parts of the program need to know of the result table and ask of
// it: whether it holds results, whether they are saved, and clearing.
class ResultTableState {
public:
    virtual ~ResultTableState() = default;

    // True when the table holds at least one result row.
    virtual bool hasResults() const = 0;
    // True while the table holds current results that were not saved.
    virtual bool unsaved() const = 0;
    // Drops results: 0 keeps every row as a greyed earlier result, 1 drops the
    // current picture's rows, 2 drops every row (without keeping results every
    // mode drops every row).
    virtual void clearResults(int mode) = 0;
    // Shows the table and its measurements on the picture again as they stand.
    virtual void refresh() = 0;
};

}  // namespace tavix
