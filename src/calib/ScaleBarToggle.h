#pragma once

#include "calib/ScaleBarSwitch.h"

#include <QtGlobal>
#include <functional>

namespace tavix {

class MessageTable;
class Prompter;
struct ProofEntry;

// The scale bar's check box (chkScale) without its widget: switching the bar
// on asks for its lengths, type and position in the scale dialog and draws it;
// switching it off hides it. It is also the switch that the calibration
// selection turns off or redraws.
//
// The window connects chkScale's user clicks to chkScale_Click(). Its own
// setChecked() may echo back into chkScale_Click() (a toggled connection):
// a click that only repeats the current state does nothing.
class ScaleBarToggle : public ScaleBarSwitch {
public:
    // An entry without factors cannot size the bar.
    static constexpr qint32 kNoFactorsMessage = 20180;
    static constexpr qint32 kNoFactorsTitle = 11134;

    struct Hooks {
        // Shows the scale dialog modally; true when it closed with OK.
        std::function<bool()> runDialog;
        // Positions and shows the bar (DrawScaleBar).
        std::function<void()> draw;
        // Hides the line boxes and the label.
        std::function<void()> hide;
        // Shows the state in chkScale.
        std::function<void(bool)> setChecked;
        // Optional: while a still picture is shown, draws it and its
        // measurements again when the bar goes.
        std::function<void()> repaintStill;
        // Optional: refreshes the live picture once while it runs.
        std::function<void()> refreshLive;
    };
    using EntrySource = std::function<const ProofEntry&()>;

    ScaleBarToggle(const MessageTable& messages, Prompter& prompter, EntrySource selectedEntry, Hooks hooks);

    // chkScale was clicked; `checked` is its new state.
    void chkScale_Click(bool checked);

    // The picture area changed size, or the magnification changed: the bar is
    // placed again while it is on.
    void layoutChanged();

    // ScaleBarSwitch
    bool isOn() const override { return on_; }
    void switchOff() override;
    // Draws the bar again for the selected entry while it is on (the live
    // picture refreshed once first); nothing while it is off.
    void redraw() override;

private:
    void switchOn();
    void hideBar();
    void uncheck();

    const MessageTable& messages_;
    Prompter& prompter_;
    EntrySource selectedEntry_;
    Hooks hooks_;
    bool on_ = false;
    bool busy_ = false;  // the dialog is open
};

}  // namespace tavix
