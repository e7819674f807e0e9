#pragma once

#include "measure/MeasureContext.h"
#include "measure/MeasureTool.h"
#include "measure/Measurement.h"

#include <QtGlobal>
#include <memory>
#include <optional>
#include <vector>

namespace tavix {

struct Settings;

// Which tool a button or a calibration request selects, and the tools
// themselves.
class ToolFactory {
public:
    // The tool of `cmdMeasure`(index), index 0 to 8 (7 the caliper, 8 the
    // one-click circle); the two-point, circle and angle buttons follow
    // 2POINTCOMMANDMODE, CIRCLEARCSELECT and ANGLECOMMANDMODE. Nothing for
    // other indexes.
    static std::optional<int> toolForButton(int index, const Settings& settings);

    // The calibration marking tool of a pending calibration request: 1 and 2
    // (x axis, two points / line and point) give 21 and 22, 11 and 12 give 23
    // and 24. Nothing for other values.
    static std::optional<int> toolForCalibrationRequest(qint16 request);

    // A fresh tool: 100 to 111 and 21 to 24; nothing for other numbers (the
    // cross placement 10 and 11 follows the pointer without a tool).
    static std::unique_ptr<MeasureTool> create(int toolNumber);

    // The guidance number shown when the tool is selected; 0 for no tool.
    static int firstGuidance(int toolNumber);

    // Computes a stored measurement again from its tool number and points, as
    // a redraw does; nothing when the points give none.
    static std::optional<Measurement> measure(int toolNumber, const std::vector<PointD>& points,
                                              const MeasureContext& context);
};

}  // namespace tavix
