#pragma once

#include "measure/Measurement.h"

#include <QRectF>
#include <functional>
#include <optional>
#include <vector>

namespace tavix {

// The measurements of the current picture in the order they were taken, each
// with the result-table rows of its values, so that the overlay can be drawn
// again, a table selection highlighted and a click on the picture traced back
// to its measurement.
class MeasurementStore {
public:
    struct Entry {
        Measurement measurement;
        std::vector<int> rows;  // result row of each value
    };

    // Adds a measurement whose values fill the rows from firstRow on.
    void add(Measurement measurement, int firstRow);

    void clear() { entries_.clear(); }
    bool empty() const { return entries_.empty(); }
    int size() const { return static_cast<int>(entries_.size()); }
    const Entry& at(int index) const { return entries_.at(static_cast<std::size_t>(index)); }
    const std::vector<Entry>& entries() const { return entries_; }

    // Follows the removal of the result rows first..last: their values go
    // (with their labels), a measurement left without values goes, and the
    // rows after the range move up by its length.
    void removeRows(int first, int last);

    // The measurement that owns a result row.
    std::optional<int> indexAtRow(int row) const;

    // The measurements with a value in the rows first..last (either order), in
    // store order.
    std::vector<int> indexesInRows(int first, int last) const;

    // Writes every value label again with that many decimals.
    void relabel(int decimals);

    // The measurement under a picture point: within `tolerance` pixels of one
    // of its lines, arcs or marks, or on one of its labels, the latest first.
    // Without a label box the label counts as its anchor point.
    using LabelBox = std::function<QRectF(const Label&)>;
    std::optional<int> hitTest(PointD p, double tolerance, const LabelBox& labelBox = {}) const;

private:
    std::vector<Entry> entries_;
};

}  // namespace tavix
