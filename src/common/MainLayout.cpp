#include "common/MainLayout.h"

#include "common/Twips.h"

#include <algorithm>

namespace tavix {

std::span<const MainLayout::Place> MainLayout::commandPlaces()
{
    static const Place places[] = {
        // First row: the picture commands.
        {"cmdPlayStop", {6, 6, 100, 28}},
        {"cmdPicLoad", {110, 6, 100, 28}},
        {"cmdPicSave", {214, 6, 100, 28}},
        {"cmdIS_Save", {318, 6, 100, 28}},
        {"chkMeasureSave", {426, 6, 150, 28}},
        // Second row: what the picture shows, and the camera.
        {"lblScale", {6, 38, 38, 28}},
        {"cboScale", {46, 38, 64, 28}},
        {"chkScale", {116, 38, 84, 28}},
        {"chkCross", {204, 38, 112, 28}},
        {"cmdCamViewConfig", {320, 38, 100, 28}},
        {"lblJpegQtyCaption", {426, 38, 78, 28}},
        {"lblJpegQty", {504, 38, 22, 28}},
        {"cmdPinProp", {530, 38, 120, 28}},
    };
    return places;
}

QSize MainLayout::minimumSize()
{
    return {twipsToPixels(kMinWidthTwips), twipsToPixels(kMinHeightTwips)};
}

MainLayout MainLayout::compute(QSize inner)
{
    MainLayout l;
    const int w = inner.width();
    const int h = inner.height();
    const int measureWidth = twipsToPixels(kMeasureAreaWidthTwips);
    const int commandHeight = twipsToPixels(kViewCommandHeightTwips);

    // The picture area takes what the measurement area beside it leaves.
    const int viewWidth = std::max(0, w - measureWidth);
    l.viewArea = QRect(0, 0, viewWidth, std::max(0, h - commandHeight));
    l.viewCommandArea = QRect(0, l.viewArea.bottom() + 1, viewWidth, commandHeight);
    l.measureCommandArea = QRect(viewWidth, 0, measureWidth, h);

    const int margin = 6;
    const int row = 28;
    const int exitWidth = twipsToPixels(kExitFromRightTwips) - margin;
    l.exitButton = QRect(viewWidth - twipsToPixels(kExitFromRightTwips), margin, exitWidth, row);
    const int commentWidth = std::max(0, viewWidth - 2 * margin - 70);
    l.comment0 = QRect(margin + 70, margin + 2 * (row + 4), commentWidth, 24);
    l.comment1 = QRect(margin + 70, l.comment0.bottom() + 1 + 4, commentWidth, 24);

    const int gridHeight = h - twipsToPixels(kGridReserveTwips);
    const int gridTop = twipsToPixels(kGridTopTwips);
    if (gridHeight > 0)
        l.resultGrid = QRect(margin, gridTop, measureWidth - 2 * margin, gridHeight);
    else
        l.resultGrid = QRect(margin, gridTop, measureWidth - 2 * margin, 0);
    l.resultButtons = QRect(margin, gridTop + std::max(0, gridHeight) + 8, measureWidth - 2 * margin, row);
    l.keepResult = QRect(margin, l.resultButtons.bottom() + 1 + 6, measureWidth - 2 * margin, 24);
    return l;
}

}  // namespace tavix
