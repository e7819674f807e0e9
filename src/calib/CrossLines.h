#pragma once

#include <QColor>
#include <QObject>
#include <QPoint>
#include <QtGlobal>
#include <array>
#include <functional>

namespace tavix {

struct Settings;

// The one or two crosshairs laid over the picture area as alignment marks,
// without their widgets: switched on and off by chkCross, placed with the
// pointer while cross tool 10 (cross 0) or 11 (cross 1) is selected, and
// reset by the view settings. Positions are pixels of the picture area.
//
// The window forwards chkCross's clicks and the pointer over the picture,
// and follows the signals: it selects the tool numbers, shows the guidance,
// sets chkCross and its icon, and the overlay follows the lines.
class CrossLines : public QObject {
    Q_OBJECT
public:
    // Tool numbers of the placing, shared with the measuring tools.
    static constexpr qint16 kNoTool = 0;  // the normal tool: no cross follows the pointer
    static constexpr qint16 kPlaceCross0 = 10;
    static constexpr qint16 kPlaceCross1 = 11;
    // Guidance numbers.
    static constexpr qint16 kGuidanceOneCross = 10;
    static constexpr qint16 kGuidanceFirstOfTwo = 11;
    static constexpr qint16 kGuidanceSecondOfTwo = 12;

    // Design thickness of a line box (the width of a vertical line, the height
    // of a horizontal one). A line box starts half its thickness before the
    // pointer, so that the line is centred on it.
    static constexpr int kLineThickness = 3;
    static constexpr int kHalfThickness = kLineThickness / 2;

    static constexpr int kCrossCount = 2;

    explicit CrossLines(Settings& settings, QObject* parent = nullptr);

    // chkCross was clicked; `checked` is its new state. A click that repeats
    // the current state (an echo of setChecked) does nothing.
    void chkCross_Click(bool checked);
    void switchOn();
    void switchOff();
    bool isOn() const { return on_; }

    // The cross tool in use: kPlaceCross0, kPlaceCross1 or kNoTool.
    qint16 tool() const { return tool_; }
    // The window selected another tool: no cross follows the pointer any more;
    // the crosses stay where they are.
    void toolReplaced();

    // The pointer over the picture, in picture-area pixels.
    void move(QPoint pointer);
    // A mouse button was released there.
    void release(QPoint pointer);

    bool crossVisible(int index) const { return visible_.at(static_cast<size_t>(index)); }
    // The point cross `index` marks (the pointer where it was placed).
    QPoint crossPoint(int index) const { return point_.at(static_cast<size_t>(index)); }
    // Left of picCrossLineV(index) and top of picCrossLineH(index).
    int verticalLineLeft(int index) const { return crossPoint(index).x() - kHalfThickness; }
    int horizontalLineTop(int index) const { return crossPoint(index).y() - kHalfThickness; }
    // CROSSLINECOLOR.
    QColor color() const;

    // imgCrossIcon index for a number of crosses: 0 for one, 1 for two.
    static int iconIndex(qint16 crossCount) { return crossCount == 2 ? 1 : 0; }

    // cmdCamViewConfig: remembers the number of crosses, runs the view
    // settings dialog (modal) and applies its outcome.
    void cmdCamViewConfig_Click(const std::function<void()>& runDialog);
    // After the view settings dialog, OK or Cancel: the colour goes to all
    // four lines; a changed number of crosses switches them off and swaps the
    // check box icon.
    void viewSettingsClosed(qint16 previousCount);
    // After other settings changes (measurement settings): colour and icon.
    void applySettings();

signals:
    // A cross was moved, shown or hidden.
    void linesChanged();
    // The colour of all four line boxes.
    void colorChanged(const QColor& color);
    // chkCross shows this state; the window updates its command areas.
    void stateChanged(bool on);
    // The window selects this tool number (kNoTool: the normal tool).
    void toolChanged(qint16 toolNumber);
    void guidanceRequested(qint16 guidanceNumber);
    void guidanceEnded();
    // chkCross takes imgCrossIcon(index).
    void iconChanged(int index);

private:
    void place(int index, QPoint pointer);
    void setVisible(int index, bool visible);
    void endPlacing();

    Settings& settings_;
    bool on_ = false;
    qint16 tool_ = kNoTool;
    std::array<QPoint, kCrossCount> point_{};
    std::array<bool, kCrossCount> visible_{};
};

}  // namespace tavix
