#pragma once

#include "measure/PointD.h"
#include "measure/Shape.h"

#include <QString>
#include <vector>

namespace tavix {

class MessageTable;

// Message ids of the kinds of measurement and of the fixed unit.
namespace Caption {
inline constexpr int PointCount = 11130;
inline constexpr int Points = 11131;  // unit beside a point count
inline constexpr int Distance = 11132;
inline constexpr int CircleDiameter = 11133;
inline constexpr int Angle = 11134;
inline constexpr int CircleCentres = 11135;
inline constexpr int CircleEdges = 11136;
inline constexpr int Perpendicular = 11137;
inline constexpr int Area = 11138;
inline constexpr int SupplementaryAngle = 11139;
inline constexpr int ReflexAngle = 11140;
inline constexpr int Arc = 11141;
inline constexpr int Degrees = 11142;  // unit beside an angle
inline constexpr int CaliperWidth = 27102;
inline constexpr int CircleCentreX = 27103;  // one-click circle's centre, from the picture's top left
inline constexpr int CircleCentreY = 27104;
}  // namespace Caption

enum class UnitKind {
    Length,  // calibration unit (pixels while a factor is 0)
    Area,    // calibration unit squared
    Angle,   // degrees, caption 11142
    Count,   // caption 11131
    Pixels,  // picture pixels: the length marked for a calibration
};

// One value of a measurement; each becomes one row of the result table.
struct ResultValue {
    double value = 0;
    int kindCaption = 0;  // 0 for a calibration length, which makes no row
    UnitKind unit = UnitKind::Length;
};

// A finished measurement: what was clicked, what it gives, how it looks.
// Points are picture pixels, so a redraw at another zoom needs no recomputing.
struct Measurement {
    int tool = 0;  // 100..109, or 21..24 for a calibration marking
    std::vector<PointD> points;
    std::vector<ResultValue> values;
    Shape shape;

    // Calibration markings give a pixel length to the calibration dialog instead.
    bool addsResultRows() const { return tool >= 100; }

    // Writes the value labels again, e.g. after the number of decimals changed.
    void relabel(int decimals);
};

// The text of a value label: the value with that many decimals, a degree sign
// after an angle.
QString valueLabel(const ResultValue& value, int decimals);

// The text of the unit column: the calibration unit for lengths and, squared,
// for areas; for the kinds with a fixed unit a caption of the message table
// (11142 for angles, 11131 for counts); "px" for calibration lengths, which
// make no row.
QString unitText(const ResultValue& value, const QString& calibrationUnit, const MessageTable& messages);

}  // namespace tavix
