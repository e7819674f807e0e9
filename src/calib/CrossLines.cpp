#include "calib/CrossLines.h"

#include "common/ClassicColor.h"
#include "common/Settings.h"

namespace tavix {

CrossLines::CrossLines(Settings& settings, QObject* parent) : QObject(parent), settings_(settings)
{
}

QColor CrossLines::color() const
{
    return ClassicColor::toQColor(settings_.CROSSLINECOLOR);
}

void CrossLines::chkCross_Click(bool checked)
{
    if (checked == on_)
        return;
    if (checked)
        switchOn();
    else
        switchOff();
}

void CrossLines::switchOn()
{
    if (on_)
        return;
    on_ = true;
    setVisible(0, true);
    emit linesChanged();
    emit stateChanged(true);
    tool_ = kPlaceCross0;
    emit toolChanged(tool_);
    emit guidanceRequested(settings_.CROSSLINENUM == 1 ? kGuidanceOneCross : kGuidanceFirstOfTwo);
}

void CrossLines::switchOff()
{
    const bool wasOn = on_;
    on_ = false;
    setVisible(0, false);
    setVisible(1, false);
    emit linesChanged();
    if (tool_ == kPlaceCross0 || tool_ == kPlaceCross1)
        endPlacing();
    if (wasOn)
        emit stateChanged(false);
}

void CrossLines::toolReplaced()
{
    tool_ = kNoTool;
}

void CrossLines::move(QPoint pointer)
{
    if (tool_ == kPlaceCross0)
        place(0, pointer);
    else if (tool_ == kPlaceCross1)
        place(1, pointer);
}

void CrossLines::release(QPoint pointer)
{
    if (tool_ == kPlaceCross0) {
        place(0, pointer);
        if (settings_.CROSSLINENUM == 2) {
            // The pointer now carries the second cross, from where the first stays.
            tool_ = kPlaceCross1;
            emit toolChanged(tool_);
            setVisible(1, true);
            place(1, pointer);
            emit guidanceRequested(kGuidanceSecondOfTwo);
        } else {
            endPlacing();
        }
    } else if (tool_ == kPlaceCross1) {
        place(1, pointer);
        endPlacing();
    }
}

void CrossLines::cmdCamViewConfig_Click(const std::function<void()>& runDialog)
{
    const qint16 previous = settings_.CROSSLINENUM;
    runDialog();
    viewSettingsClosed(previous);
}

void CrossLines::viewSettingsClosed(qint16 previousCount)
{
    emit colorChanged(color());
    if (settings_.CROSSLINENUM != previousCount) {
        // The placing steps differ for one and two crosses: start again.
        if (on_)
            switchOff();
        emit iconChanged(iconIndex(settings_.CROSSLINENUM));
    }
}

void CrossLines::applySettings()
{
    emit colorChanged(color());
    emit iconChanged(iconIndex(settings_.CROSSLINENUM));
}

void CrossLines::place(int index, QPoint pointer)
{
    point_[static_cast<size_t>(index)] = pointer;
    emit linesChanged();
}

void CrossLines::setVisible(int index, bool visible)
{
    visible_[static_cast<size_t>(index)] = visible;
}

void CrossLines::endPlacing()
{
    tool_ = kNoTool;
    emit toolChanged(kNoTool);
    emit guidanceEnded();
}

}  // namespace tavix
