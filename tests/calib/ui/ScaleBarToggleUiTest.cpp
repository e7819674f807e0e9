// chkScale wired as the window wires it: the check box, the scale dialog run
// through the toggle's dialog function, and the overlay's widgets.
#include "calib/ProofEntry.h"
#include "calib/ScaleBarToggle.h"
#include "calib/ui/ScaleBarOverlay.h"
#include "calib/ui/frmScale.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "../PrintQt.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <functional>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

class ScaleBarToggleUiTest : public ::testing::Test {
protected:
    ScaleBarToggleUiTest()
    {
        settings.SCALEX = 100;
        settings.SCALEY = 100;
        settings.SCALECOLOR = 0xFFFFFF;
        settings.MEASUREFONTSIZE = 10;
        entry.XFactor = 0.5;
        entry.YFactor = 0.5;
        entry.Unit = QStringLiteral("MIC");
        window.resize(700, 450);
        area.setGeometry(0, 40, 600, 400);
        chkScale.setGeometry(0, 0, 120, 30);
        // Wired by toggled: the toggle's own unchecking comes back as a click.
        QObject::connect(&chkScale, &QCheckBox::toggled, [this](bool on) { toggle.chkScale_Click(on); });
        window.show();
    }

    ScaleBarToggle::Hooks hooks()
    {
        ScaleBarToggle::Hooks h;
        h.runDialog = [this] {
            ++dialogs;
            frmScale dialog(settings, entry.Unit, messages, prompter, log, &window);
            dialog.show();
            inDialog(dialog);
            return dialog.result() == QDialog::Accepted;
        };
        h.draw = [this] { overlay.DrawScaleBar(); };
        h.hide = [this] { overlay.hide(); };
        h.setChecked = [this](bool on) { chkScale.setChecked(on); };
        return h;
    }

    static void click(QDialog& dialog, const char* name)
    {
        QTest::mouseClick(dialog.findChild<QPushButton*>(QLatin1String(name)), Qt::LeftButton);
    }

    int shownLines() const
    {
        int n = 0;
        for (int i = 0; i < 4; ++i)
            n += overlay.picScaleLine(i)->isVisible() ? 1 : 0;
        return n;
    }

    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    Settings settings;
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    ProofEntry entry;
    QWidget window;
    QFrame area{&window};
    QCheckBox chkScale{&window};
    ScaleBarOverlay overlay{
        &area, settings, {[this]() -> const ProofEntry& { return entry; }, [] { return 1.0; }, {}}, log};
    ScaleBarToggle toggle{messages, prompter, [this]() -> const ProofEntry& { return entry; }, hooks()};
    std::function<void(QDialog&)> inDialog = [](QDialog& d) { click(d, "cmdOK"); };
    int dialogs = 0;
};

}  // namespace

TEST_F(ScaleBarToggleUiTest, Check_ShowsBarWithDialogLength_WhenDialogClosesWithOk)
{
    inDialog = [](QDialog& d) {
        QLineEdit* x = d.findChild<QLineEdit*>(QStringLiteral("txtScaleLen(0)"));
        x->selectAll();
        QTest::keyClicks(x, QStringLiteral("50"));
        click(d, "cmdOK");
    };

    QTest::mouseClick(&chkScale, Qt::LeftButton, {}, QPoint(6, 15));

    EXPECT_EQ(dialogs, 1);
    EXPECT_TRUE(chkScale.isChecked());
    EXPECT_TRUE(toggle.isOn());
    EXPECT_EQ(shownLines(), 3);
    EXPECT_EQ(overlay.picScaleLine(1)->width(), 100);  // 50 units at 0.5 per pixel
    EXPECT_EQ(overlay.picScaleSize()->text(), QStringLiteral("50MIC"));
}

TEST_F(ScaleBarToggleUiTest, Check_LeavesBoxUncheckedAndBarHidden_WhenDialogIsCancelled)
{
    inDialog = [](QDialog& d) { click(d, "cmdCancel"); };

    QTest::mouseClick(&chkScale, Qt::LeftButton, {}, QPoint(6, 15));

    EXPECT_EQ(dialogs, 1);
    EXPECT_FALSE(chkScale.isChecked());
    EXPECT_FALSE(toggle.isOn());
    EXPECT_EQ(shownLines(), 0);
    EXPECT_FALSE(overlay.picScaleSize()->isVisible());
}

TEST_F(ScaleBarToggleUiTest, Check_ShowsNoFactorsMessageWithoutDialog_WhenEntryIsUncalibrated)
{
    prompter.answers = {Prompter::Answer::Ok};
    entry.YFactor = 0;

    QTest::mouseClick(&chkScale, Qt::LeftButton, {}, QPoint(6, 15));

    EXPECT_EQ(dialogs, 0);
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(20180));
    EXPECT_EQ(prompter.messages[0].title, messages.text(11134));
    EXPECT_FALSE(chkScale.isChecked());
    EXPECT_EQ(shownLines(), 0);
}

TEST_F(ScaleBarToggleUiTest, Uncheck_HidesBar)
{
    QTest::mouseClick(&chkScale, Qt::LeftButton, {}, QPoint(6, 15));
    ASSERT_EQ(shownLines(), 3);

    QTest::mouseClick(&chkScale, Qt::LeftButton, {}, QPoint(6, 15));

    EXPECT_FALSE(chkScale.isChecked());
    EXPECT_FALSE(toggle.isOn());
    EXPECT_EQ(shownLines(), 0);
    EXPECT_FALSE(overlay.picScaleSize()->isVisible());
    EXPECT_EQ(dialogs, 1);
}

TEST_F(ScaleBarToggleUiTest, SwitchOff_UnchecksBoxAndHidesBar_WhenCalibrationHasNoFactors)
{
    QTest::mouseClick(&chkScale, Qt::LeftButton, {}, QPoint(6, 15));
    ScaleBarSwitch& asSwitch = toggle;

    asSwitch.switchOff();

    EXPECT_FALSE(chkScale.isChecked());
    EXPECT_FALSE(asSwitch.isOn());
    EXPECT_EQ(shownLines(), 0);
}

TEST_F(ScaleBarToggleUiTest, Redraw_FollowsNewFactors_WhenCalibrationChanges)
{
    QTest::mouseClick(&chkScale, Qt::LeftButton, {}, QPoint(6, 15));
    entry.XFactor = 0.25;

    static_cast<ScaleBarSwitch&>(toggle).redraw();

    EXPECT_EQ(overlay.picScaleLine(1)->width(), 400);
}
