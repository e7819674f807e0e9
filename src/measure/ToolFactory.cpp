#include "measure/ToolFactory.h"

#include "common/Settings.h"
#include "measure/AngleTool.h"
#include "measure/ArcTool.h"
#include "measure/AreaTool.h"
#include "measure/CalibrationLinePointTool.h"
#include "measure/CalibrationTwoPointTool.h"
#include "measure/CaliperTool.h"
#include "measure/CircleToCircleTool.h"
#include "measure/CircleTool.h"
#include "measure/FiveClickAngleTool.h"
#include "measure/LineToPointTool.h"
#include "measure/OneClickCircleTool.h"
#include "measure/PerpendicularTool.h"
#include "measure/PointCountTool.h"
#include "measure/TwoPointTool.h"

namespace tavix {

namespace {

std::unique_ptr<ClickTool> makeTool(int toolNumber)
{
    switch (toolNumber) {
        case PointCountTool::Number:
            return std::make_unique<PointCountTool>();
        case TwoPointTool::Number:
            return std::make_unique<TwoPointTool>();
        case CircleTool::Number:
            return std::make_unique<CircleTool>();
        case CircleToCircleTool::Number:
            return std::make_unique<CircleToCircleTool>();
        case PerpendicularTool::Number:
            return std::make_unique<PerpendicularTool>();
        case AreaTool::Number:
            return std::make_unique<AreaTool>();
        case AngleTool::Number:
            return std::make_unique<AngleTool>();
        case FiveClickAngleTool::Number:
            return std::make_unique<FiveClickAngleTool>();
        case LineToPointTool::Number:
            return std::make_unique<LineToPointTool>();
        case ArcTool::Number:
            return std::make_unique<ArcTool>();
        case CaliperTool::Number:
            return std::make_unique<CaliperTool>();
        case OneClickCircleTool::Number:
            return std::make_unique<OneClickCircleTool>();
        case CalibrationTwoPointTool::NumberX:
            return std::make_unique<CalibrationTwoPointTool>(false);
        case CalibrationTwoPointTool::NumberY:
            return std::make_unique<CalibrationTwoPointTool>(true);
        case CalibrationLinePointTool::NumberX:
            return std::make_unique<CalibrationLinePointTool>(false);
        case CalibrationLinePointTool::NumberY:
            return std::make_unique<CalibrationLinePointTool>(true);
        default:
            return nullptr;
    }
}

}  // namespace

std::optional<int> ToolFactory::toolForButton(int index, const Settings& settings)
{
    switch (index) {
        case 0:
            return settings._2POINTCOMMANDMODE == 0 ? TwoPointTool::Number : LineToPointTool::Number;
        case 1:
            return settings.CIRCLEARCSELECT == 0 ? CircleTool::Number : ArcTool::Number;
        case 2:
            return CircleToCircleTool::Number;
        case 3:
            return PerpendicularTool::Number;
        case 4:
            return AreaTool::Number;
        case 5:
            return settings.ANGLECOMMANDMODE == 0 ? AngleTool::Number : FiveClickAngleTool::Number;
        case 6:
            return PointCountTool::Number;
        case 7:
            return CaliperTool::Number;
        case 8:
            return OneClickCircleTool::Number;
        default:
            return std::nullopt;
    }
}

std::optional<int> ToolFactory::toolForCalibrationRequest(qint16 request)
{
    switch (request) {
        case 1:
            return CalibrationTwoPointTool::NumberX;
        case 2:
            return CalibrationLinePointTool::NumberX;
        case 11:
            return CalibrationTwoPointTool::NumberY;
        case 12:
            return CalibrationLinePointTool::NumberY;
        default:
            return std::nullopt;
    }
}

std::unique_ptr<MeasureTool> ToolFactory::create(int toolNumber)
{
    return makeTool(toolNumber);
}

int ToolFactory::firstGuidance(int toolNumber)
{
    const std::unique_ptr<ClickTool> tool = makeTool(toolNumber);
    return tool ? tool->guidance() : 0;
}

std::optional<Measurement> ToolFactory::measure(int toolNumber, const std::vector<PointD>& points,
                                                const MeasureContext& context)
{
    const std::unique_ptr<ClickTool> tool = makeTool(toolNumber);
    if (!tool)
        return std::nullopt;
    return tool->measure(points, context);
}

}  // namespace tavix
