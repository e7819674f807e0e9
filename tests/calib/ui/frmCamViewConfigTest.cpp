#include "calib/ui/frmCamViewConfig.h"

#include "calib/CrossLines.h"
#include "calib/ui/CrossLineOverlay.h"
#include "common/ClassicColor.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "../PrintQt.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <memory>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

class frmCamViewConfigTest : public ::testing::Test {
protected:
    frmCamViewConfigTest()
    {
        settings.CROSSLINENUM = 1;
        settings.CROSSLINECOLOR = 0x00FF00;  // green
        settings.JPEGQTY = 80;
    }

    frmCamViewConfig& open()
    {
        dialog =
            std::make_unique<frmCamViewConfig>(settings, messages, prompter, log, [this] { ++saveSettings; });
        dialog->show();
        return *dialog;
    }

    template <typename T>
    T* find(const QString& name)
    {
        T* widget = dialog->findChild<T*>(name);
        EXPECT_NE(widget, nullptr) << name.toStdString();
        return widget;
    }
    QRadioButton* optCrossLineNum(int i)
    {
        return find<QRadioButton>(QStringLiteral("optCrossLineNum(%1)").arg(i));
    }
    QLabel* lblColor() { return find<QLabel>(QStringLiteral("lblColor")); }
    QColor swatch() { return lblColor()->palette().color(QPalette::Window); }
    QSlider* sldJpegQty() { return find<QSlider>(QStringLiteral("sldJpegQty")); }
    QPushButton* button(const char* name) { return find<QPushButton>(QLatin1String(name)); }

    static void clickOption(QRadioButton* b)
    {
        QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(6, b->height() / 2));
    }
    void clickOk() { QTest::mouseClick(button("cmdOK"), Qt::LeftButton); }
    void clickCancel() { QTest::mouseClick(button("cmdCancel"), Qt::LeftButton); }

    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    Settings settings;
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    std::unique_ptr<frmCamViewConfig> dialog;
    int saveSettings = 0;
};

}  // namespace

// --- load ---

TEST_F(frmCamViewConfigTest, Load_SetsCaptionsFromMessageTable)
{
    open();

    EXPECT_EQ(dialog->objectName(), QStringLiteral("frmCamViewConfig"));
    EXPECT_EQ(dialog->windowTitle(), messages.text(10109));
    EXPECT_EQ(find<QGroupBox>(QStringLiteral("Frame2"))->title(), messages.text(10108));
    EXPECT_EQ(find<QGroupBox>(QStringLiteral("Frame1"))->title(), messages.text(12000));
    EXPECT_EQ(find<QLabel>(QStringLiteral("Label1(0)"))->text(), messages.text(13011));
    EXPECT_EQ(find<QLabel>(QStringLiteral("Label1(1)"))->text(), messages.text(13012));
    EXPECT_EQ(button("cmdSaveSetting")->text(), messages.text(30000));
    EXPECT_EQ(button("cmdOK")->text(), QStringLiteral("&OK"));
    EXPECT_EQ(button("cmdCancel")->text(), QStringLiteral("&Cancel"));
    EXPECT_FALSE(messages.text(10109).isEmpty());
}

TEST_F(frmCamViewConfigTest, Load_SelectsOneCross_WhenCountIs1)
{
    settings.CROSSLINENUM = 1;

    open();

    EXPECT_TRUE(optCrossLineNum(0)->isChecked());
    EXPECT_FALSE(optCrossLineNum(1)->isChecked());
}

TEST_F(frmCamViewConfigTest, Load_SelectsTwoCrosses_WhenCountIs2)
{
    settings.CROSSLINENUM = 2;

    open();

    EXPECT_TRUE(optCrossLineNum(1)->isChecked());
}

TEST_F(frmCamViewConfigTest, Load_ShowsCrossLineColourInSwatch)
{
    open();

    EXPECT_EQ(swatch(), QColor(0, 255, 0));
    EXPECT_TRUE(lblColor()->autoFillBackground());
}

TEST_F(frmCamViewConfigTest, Load_SetsSliderToJpegQualityWithinTenToHundred)
{
    open();

    EXPECT_EQ(sldJpegQty()->minimum(), 10);
    EXPECT_EQ(sldJpegQty()->maximum(), 100);
    EXPECT_EQ(sldJpegQty()->value(), 80);
    EXPECT_EQ(sldJpegQty()->toolTip(), QStringLiteral("80"));
}

TEST_F(frmCamViewConfigTest, Load_ShowsLowestQuality_WhenSettingIsBelowRange)
{
    settings.JPEGQTY = 5;

    open();

    EXPECT_EQ(sldJpegQty()->value(), 10);
}

// --- controls ---

TEST_F(frmCamViewConfigTest, ColorClick_OpensColourDialogWithSwatchColourAndTakesChoice)
{
    open();
    prompter.colors = {QColor(12, 34, 56)};

    QTest::mouseClick(lblColor(), Qt::LeftButton);

    ASSERT_EQ(prompter.colorStarts.size(), 1u);
    EXPECT_EQ(prompter.colorStarts[0], QColor(0, 255, 0));
    EXPECT_EQ(swatch(), QColor(12, 34, 56));
}

TEST_F(frmCamViewConfigTest, ColorClick_KeepsSwatch_WhenColourDialogIsCancelled)
{
    open();
    prompter.colors = {QColor(0, 255, 0)};  // cancelled: the dialog gives its start colour back

    QTest::mouseClick(lblColor(), Qt::LeftButton);

    EXPECT_EQ(prompter.colorStarts.size(), 1u);
    EXPECT_EQ(swatch(), QColor(0, 255, 0));
}

TEST_F(frmCamViewConfigTest, ColorClick_IgnoresRightButton)
{
    open();

    QTest::mouseClick(lblColor(), Qt::RightButton);

    EXPECT_TRUE(prompter.colorStarts.empty());
}

TEST_F(frmCamViewConfigTest, Slider_ShowsValueAsToolTip_WhenMoved)
{
    open();

    sldJpegQty()->setFocus();
    QTest::keyClick(sldJpegQty(), Qt::Key_PageUp);

    EXPECT_EQ(sldJpegQty()->value(), 90);
    EXPECT_EQ(sldJpegQty()->toolTip(), QStringLiteral("90"));
}

TEST_F(frmCamViewConfigTest, SaveSetting_CallsOpenerAndStaysOpen)
{
    open();

    QTest::mouseClick(button("cmdSaveSetting"), Qt::LeftButton);

    EXPECT_EQ(saveSettings, 1);
    EXPECT_TRUE(dialog->isVisible());
}

// --- OK and Cancel ---

TEST_F(frmCamViewConfigTest, Ok_StoresColourCountAndQuality)
{
    open();
    prompter.colors = {QColor(255, 0, 0)};
    QTest::mouseClick(lblColor(), Qt::LeftButton);
    clickOption(optCrossLineNum(1));
    sldJpegQty()->setValue(55);

    clickOk();

    EXPECT_EQ(settings.CROSSLINECOLOR, 0x0000FF);
    EXPECT_EQ(settings.CROSSLINENUM, 2);
    EXPECT_EQ(settings.JPEGQTY, 55);
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(frmCamViewConfigTest, Ok_StoresOneCross_WhenFirstOptionIsChosen)
{
    settings.CROSSLINENUM = 2;
    open();
    clickOption(optCrossLineNum(0));

    clickOk();

    EXPECT_EQ(settings.CROSSLINENUM, 1);
}

TEST_F(frmCamViewConfigTest, Ok_StoresLowestQuality_WhenSettingWasBelowRange)
{
    settings.JPEGQTY = 5;
    open();

    clickOk();

    EXPECT_EQ(settings.JPEGQTY, 10);
}

TEST_F(frmCamViewConfigTest, Cancel_KeepsSettings)
{
    open();
    prompter.colors = {QColor(255, 0, 0)};
    QTest::mouseClick(lblColor(), Qt::LeftButton);
    clickOption(optCrossLineNum(1));
    sldJpegQty()->setValue(55);

    clickCancel();

    EXPECT_EQ(settings.CROSSLINECOLOR, 0x00FF00);
    EXPECT_EQ(settings.CROSSLINENUM, 1);
    EXPECT_EQ(settings.JPEGQTY, 80);
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_FALSE(dialog->isVisible());
}

// --- the view settings as the window runs them ---

class ViewSettingsTest : public frmCamViewConfigTest {
protected:
    ViewSettingsTest()
    {
        area.resize(600, 400);
        area.show();
    }

    // cmdCamViewConfig: the dialog runs through the cross lines, which apply its outcome.
    void runViewSettings(const std::function<void(frmCamViewConfig&)>& inDialog)
    {
        crosses.cmdCamViewConfig_Click([&] {
            frmCamViewConfig& d = open();
            inDialog(d);
        });
    }

    QFrame area;
    CrossLines crosses{settings};
    CrossLineOverlay overlay{&area, crosses};
    QSignalSpy icons{&crosses, &CrossLines::iconChanged};
};

TEST_F(ViewSettingsTest, OkWithTwoCrosses_HidesShownCrossAndSwapsIcon)
{
    crosses.chkCross_Click(true);
    crosses.release(QPoint(100, 100));
    ASSERT_TRUE(overlay.picCrossLineV(0)->isVisible());

    runViewSettings([this](frmCamViewConfig&) {
        clickOption(optCrossLineNum(1));
        clickOk();
    });

    EXPECT_FALSE(crosses.isOn());
    EXPECT_FALSE(overlay.picCrossLineV(0)->isVisible());
    EXPECT_FALSE(overlay.picCrossLineH(0)->isVisible());
    ASSERT_EQ(icons.count(), 1);
    EXPECT_EQ(icons.at(0).at(0).toInt(), 1);
}

TEST_F(ViewSettingsTest, Cancel_ReappliesUnchangedColourAndKeepsCross)
{
    crosses.chkCross_Click(true);
    QPalette other = overlay.picCrossLineV(0)->palette();
    other.setColor(QPalette::Window, Qt::magenta);
    overlay.picCrossLineV(0)->setPalette(other);

    runViewSettings([this](frmCamViewConfig&) {
        prompter.colors = {QColor(255, 0, 0)};
        QTest::mouseClick(lblColor(), Qt::LeftButton);
        clickOption(optCrossLineNum(1));
        clickCancel();
    });

    EXPECT_EQ(overlay.picCrossLineV(0)->palette().color(QPalette::Window), QColor(0, 255, 0));
    EXPECT_EQ(overlay.picCrossLineH(1)->palette().color(QPalette::Window), QColor(0, 255, 0));
    EXPECT_TRUE(crosses.isOn());
    EXPECT_TRUE(overlay.picCrossLineV(0)->isVisible());
    EXPECT_EQ(icons.count(), 0);
}

TEST_F(ViewSettingsTest, OkWithNewColour_ColoursAllFourLines)
{
    runViewSettings([this](frmCamViewConfig&) {
        prompter.colors = {QColor(255, 0, 0)};
        QTest::mouseClick(lblColor(), Qt::LeftButton);
        clickOk();
    });

    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(overlay.picCrossLineV(i)->palette().color(QPalette::Window), QColor(255, 0, 0)) << i;
        EXPECT_EQ(overlay.picCrossLineH(i)->palette().color(QPalette::Window), QColor(255, 0, 0)) << i;
    }
}
