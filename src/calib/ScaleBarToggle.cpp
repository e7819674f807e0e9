#include "calib/ScaleBarToggle.h"

#include "calib/ProofEntry.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"

namespace tavix {

ScaleBarToggle::ScaleBarToggle(const MessageTable& messages, Prompter& prompter, EntrySource selectedEntry,
                               Hooks hooks)
    : messages_(messages),
      prompter_(prompter),
      selectedEntry_(std::move(selectedEntry)),
      hooks_(std::move(hooks))
{
}

void ScaleBarToggle::chkScale_Click(bool checked)
{
    // The dialog's own outcome sets the box; an echo of that, or of a state
    // the bar already has, changes nothing.
    if (busy_ || checked == on_)
        return;
    if (checked)
        switchOn();
    else
        hideBar();
}

void ScaleBarToggle::switchOn()
{
    if (!selectedEntry_().usable()) {
        prompter_.message({messages_(kNoFactorsMessage), messages_(kNoFactorsTitle)});
        uncheck();
        return;
    }
    bool accepted = false;
    {
        // Cleared however the dialog ends, so a failed opening does not lock the box.
        struct Busy {
            bool& flag;
            explicit Busy(bool& f) : flag(f) { flag = true; }
            ~Busy() { flag = false; }
        } busy(busy_);
        accepted = hooks_.runDialog();
    }
    if (!accepted) {
        uncheck();
        return;
    }
    on_ = true;
    hooks_.draw();
}

void ScaleBarToggle::hideBar()
{
    on_ = false;
    if (hooks_.repaintStill)
        hooks_.repaintStill();
    hooks_.hide();
}

void ScaleBarToggle::uncheck()
{
    if (hooks_.setChecked)
        hooks_.setChecked(false);
}

void ScaleBarToggle::switchOff()
{
    if (on_)
        hideBar();
    uncheck();
}

void ScaleBarToggle::redraw()
{
    if (!on_)
        return;
    if (hooks_.refreshLive)
        hooks_.refreshLive();
    hooks_.draw();
}

void ScaleBarToggle::layoutChanged()
{
    if (on_)
        hooks_.draw();
}

}  // namespace tavix
