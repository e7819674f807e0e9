#include "calib/ScaleBarToggle.h"

#include "calib/ProofEntry.h"
#include "common/MessageTable.h"

#include "PrintQt.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"

#include <gtest/gtest.h>
#include <QStringList>
#include <optional>
#include <stdexcept>

using namespace tavix;
using tavix::test::ScriptedPrompter;

namespace {

class ScaleBarToggleTest : public ::testing::Test {
protected:
    ScaleBarToggleTest()
    {
        entry.XFactor = 0.5;
        entry.YFactor = 0.5;
        entry.Unit = QStringLiteral("MIC");
    }

    ScaleBarToggle::Hooks hooks()
    {
        ScaleBarToggle::Hooks h;
        h.runDialog = [this] {
            calls << QStringLiteral("dialog");
            return dialogAnswer;
        };
        h.draw = [this] { calls << QStringLiteral("draw"); };
        h.hide = [this] { calls << QStringLiteral("hide"); };
        h.setChecked = [this](bool on) {
            calls << (on ? QStringLiteral("check") : QStringLiteral("uncheck"));
            checkBox = on;
            // A check box wired by its toggled signal reports the change back.
            if (echo)
                toggle.chkScale_Click(on);
        };
        h.repaintStill = [this] { calls << QStringLiteral("repaintStill"); };
        h.refreshLive = [this] { calls << QStringLiteral("refreshLive"); };
        return h;
    }

    // The user clicks chkScale.
    void click(bool checked)
    {
        checkBox = checked;
        toggle.chkScale_Click(checked);
    }

    void switchOnWithOk()
    {
        dialogAnswer = true;
        click(true);
        calls.clear();
    }

    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    ProofEntry entry;
    QStringList calls;
    bool dialogAnswer = true;
    bool checkBox = false;
    bool echo = false;
    ScaleBarToggle toggle{messages, prompter, [this]() -> const ProofEntry& { return entry; }, hooks()};
};

}  // namespace

// --- switching on ---

struct MissingFactor {
    double xFactor, yFactor;
};

class ScaleBarToggleUncalibrated : public ScaleBarToggleTest,
                                   public ::testing::WithParamInterface<MissingFactor> {};

TEST_P(ScaleBarToggleUncalibrated, SwitchOn_ShowsNoFactorsMessageAndUnchecks_WhenEntryLacksAFactor)
{
    prompter.answers = {Prompter::Answer::Ok};
    entry.XFactor = GetParam().xFactor;
    entry.YFactor = GetParam().yFactor;

    click(true);

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(20180));
    EXPECT_EQ(prompter.messages[0].title, messages.text(11134));
    EXPECT_EQ(prompter.messages[0].buttons, Prompter::Buttons::Ok);
    EXPECT_EQ(calls, QStringList{QStringLiteral("uncheck")});
    EXPECT_FALSE(checkBox);
    EXPECT_FALSE(toggle.isOn());
}

INSTANTIATE_TEST_SUITE_P(Factors, ScaleBarToggleUncalibrated,
                         ::testing::Values(MissingFactor{0, 0.5}, MissingFactor{0.5, 0},
                                           MissingFactor{0, 0}));

TEST_F(ScaleBarToggleTest, SwitchOn_OpensDialogAndDraws_WhenDialogClosesWithOk)
{
    dialogAnswer = true;

    click(true);

    EXPECT_EQ(calls, (QStringList{QStringLiteral("dialog"), QStringLiteral("draw")}));
    EXPECT_TRUE(toggle.isOn());
    EXPECT_TRUE(checkBox);
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(ScaleBarToggleTest, SwitchOn_UnchecksWithoutDrawing_WhenDialogIsCancelled)
{
    dialogAnswer = false;

    click(true);

    EXPECT_EQ(calls, (QStringList{QStringLiteral("dialog"), QStringLiteral("uncheck")}));
    EXPECT_FALSE(toggle.isOn());
    EXPECT_FALSE(checkBox);
}

TEST_F(ScaleBarToggleTest, SwitchOn_IgnoresEchoOfUncheck_WhenCheckBoxReportsItsChange)
{
    echo = true;
    dialogAnswer = false;

    click(true);

    EXPECT_EQ(calls, (QStringList{QStringLiteral("dialog"), QStringLiteral("uncheck")}));
    EXPECT_FALSE(toggle.isOn());
}

TEST_F(ScaleBarToggleTest, Click_IgnoresClicks_WhileDialogIsOpen)
{
    ScaleBarToggle* self = nullptr;
    ScaleBarToggle::Hooks h = hooks();
    h.runDialog = [&] {
        self->chkScale_Click(false);  // would otherwise hide a bar that is not drawn yet
        self->chkScale_Click(true);   // would otherwise open a second dialog
        calls << QStringLiteral("dialog");
        return true;
    };
    ScaleBarToggle guarded{messages, prompter, [this]() -> const ProofEntry& { return entry; }, h};
    self = &guarded;

    guarded.chkScale_Click(true);

    EXPECT_EQ(calls, (QStringList{QStringLiteral("dialog"), QStringLiteral("draw")}));
    EXPECT_TRUE(guarded.isOn());
}

// --- switching off ---

TEST_F(ScaleBarToggleTest, SwitchOff_RepaintsStillAndHidesBar_WhenUnchecked)
{
    switchOnWithOk();

    click(false);

    EXPECT_EQ(calls, (QStringList{QStringLiteral("repaintStill"), QStringLiteral("hide")}));
    EXPECT_FALSE(toggle.isOn());
}

TEST_F(ScaleBarToggleTest, SwitchOff_WorksWithoutStillHook)
{
    ScaleBarToggle::Hooks h = hooks();
    h.repaintStill = nullptr;
    ScaleBarToggle plain{messages, prompter, [this]() -> const ProofEntry& { return entry; }, h};
    plain.chkScale_Click(true);
    calls.clear();

    plain.chkScale_Click(false);

    EXPECT_EQ(calls, QStringList{QStringLiteral("hide")});
    EXPECT_FALSE(plain.isOn());
}

TEST_F(ScaleBarToggleTest, SwitchOff_HidesAndUnchecks_WhenCalibrationSwitchesItOff)
{
    switchOnWithOk();

    toggle.switchOff();

    EXPECT_EQ(calls, (QStringList{QStringLiteral("repaintStill"), QStringLiteral("hide"),
                                  QStringLiteral("uncheck")}));
    EXPECT_FALSE(toggle.isOn());
    EXPECT_FALSE(checkBox);
}

TEST_F(ScaleBarToggleTest, SwitchOff_HidesOnlyOnce_WhenCheckBoxEchoesTheUncheck)
{
    switchOnWithOk();
    echo = true;

    toggle.switchOff();

    EXPECT_EQ(calls.count(QStringLiteral("hide")), 1);
    EXPECT_FALSE(toggle.isOn());
}

TEST_F(ScaleBarToggleTest, SwitchOff_OnlyUnchecks_WhenBarIsAlreadyOff)
{
    toggle.switchOff();

    EXPECT_EQ(calls, QStringList{QStringLiteral("uncheck")});
}

// --- redrawing ---

TEST_F(ScaleBarToggleTest, Redraw_RefreshesLiveThenDraws_WhenOn)
{
    switchOnWithOk();

    toggle.redraw();

    EXPECT_EQ(calls, (QStringList{QStringLiteral("refreshLive"), QStringLiteral("draw")}));
}

TEST_F(ScaleBarToggleTest, Redraw_DoesNothing_WhenOff)
{
    toggle.redraw();

    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(ScaleBarToggleTest, LayoutChanged_DrawsWithoutRefreshingLive_WhenOn)
{
    switchOnWithOk();

    toggle.layoutChanged();

    EXPECT_EQ(calls, QStringList{QStringLiteral("draw")});
}

TEST_F(ScaleBarToggleTest, LayoutChanged_DoesNothing_WhenOff)
{
    toggle.layoutChanged();

    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(ScaleBarToggleTest, Click_DoesNothing_WhenCheckedAgainWhileOn)
{
    switchOnWithOk();

    click(true);

    EXPECT_TRUE(calls.isEmpty());
    EXPECT_TRUE(toggle.isOn());
}

TEST_F(ScaleBarToggleTest, Click_WorksAgain_AfterDialogFailedToOpen)
{
    bool fail = true;
    ScaleBarToggle::Hooks h = hooks();
    h.runDialog = [&] {
        if (fail)
            throw std::runtime_error("no dialog");
        return true;
    };
    ScaleBarToggle failing{messages, prompter, [this]() -> const ProofEntry& { return entry; }, h};
    EXPECT_THROW(failing.chkScale_Click(true), std::runtime_error);
    fail = false;

    failing.chkScale_Click(true);

    EXPECT_TRUE(failing.isOn());
    EXPECT_EQ(calls, QStringList{QStringLiteral("draw")});
}
