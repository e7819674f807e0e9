#include "measure/MeasurementStore.h"

#include "measure/CalcModule.h"
#include "measure/ToolGeometry.h"

#include <algorithm>

namespace tavix {

namespace {

// Drops value `index` of a measurement and the labels that show it.
void dropValue(Measurement& m, int index)
{
    m.values.erase(m.values.begin() + index);
    auto& labels = m.shape.labels;
    labels.erase(
        std::remove_if(labels.begin(), labels.end(), [&](const Label& l) { return l.value == index; }),
        labels.end());
    for (Label& l : labels) {
        if (l.value > index)
            --l.value;
    }
}

bool near(const Shape& shape, PointD p, double tolerance, const MeasurementStore::LabelBox& labelBox)
{
    using ToolGeometry::distanceToSegment;
    for (const Segment& s : shape.lines) {
        if (distanceToSegment(p, s) <= tolerance)
            return true;
    }
    for (const Segment& s : shape.guides) {
        if (distanceToSegment(p, s) <= tolerance)
            return true;
    }
    for (const std::vector<PointD>& line : shape.polylines) {
        for (std::size_t i = 1; i < line.size(); ++i) {
            if (distanceToSegment(p, {line[i - 1], line[i]}) <= tolerance)
                return true;
        }
    }
    for (const PointD& mark : shape.marks) {
        if (CalcModule::CalcDistance(p, mark) <= tolerance)
            return true;
    }
    for (const Label& label : shape.labels) {
        if (labelBox) {
            if (labelBox(label).adjusted(-tolerance, -tolerance, tolerance, tolerance).contains(p.x, p.y))
                return true;
        } else if (CalcModule::CalcDistance(p, label.anchor) <= tolerance) {
            return true;
        }
    }
    return false;
}

}  // namespace

void MeasurementStore::add(Measurement measurement, int firstRow)
{
    Entry entry;
    entry.rows.reserve(measurement.values.size());
    for (std::size_t i = 0; i < measurement.values.size(); ++i)
        entry.rows.push_back(firstRow + static_cast<int>(i));
    entry.measurement = std::move(measurement);
    entries_.push_back(std::move(entry));
}

void MeasurementStore::removeRows(int first, int last)
{
    if (first > last)
        std::swap(first, last);
    const int removed = last - first + 1;
    for (Entry& entry : entries_) {
        for (int i = static_cast<int>(entry.rows.size()) - 1; i >= 0; --i) {
            const int row = entry.rows[static_cast<std::size_t>(i)];
            if (row >= first && row <= last) {
                entry.rows.erase(entry.rows.begin() + i);
                dropValue(entry.measurement, i);
            } else if (row > last) {
                entry.rows[static_cast<std::size_t>(i)] = row - removed;
            }
        }
    }
    entries_.erase(
        std::remove_if(entries_.begin(), entries_.end(), [](const Entry& e) { return e.rows.empty(); }),
        entries_.end());
}

std::optional<int> MeasurementStore::indexAtRow(int row) const
{
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const std::vector<int>& rows = entries_[i].rows;
        if (std::find(rows.begin(), rows.end(), row) != rows.end())
            return static_cast<int>(i);
    }
    return std::nullopt;
}

std::vector<int> MeasurementStore::indexesInRows(int first, int last) const
{
    if (first > last)
        std::swap(first, last);
    std::vector<int> found;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const std::vector<int>& rows = entries_[i].rows;
        if (std::any_of(rows.begin(), rows.end(), [&](int r) { return r >= first && r <= last; }))
            found.push_back(static_cast<int>(i));
    }
    return found;
}

void MeasurementStore::relabel(int decimals)
{
    for (Entry& entry : entries_)
        entry.measurement.relabel(decimals);
}

std::optional<int> MeasurementStore::hitTest(PointD p, double tolerance, const LabelBox& labelBox) const
{
    for (int i = size() - 1; i >= 0; --i) {
        if (near(entries_[static_cast<std::size_t>(i)].measurement.shape, p, tolerance, labelBox))
            return i;
    }
    return std::nullopt;
}

}  // namespace tavix
