#include "measure/ui/frmMeasureConfig.h"

#include "common/ClassicColor.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"
#include "measure/ValueFormat.h"

#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <memory>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}
void PrintTo(const QColor& color, std::ostream* os)
{
    *os << color.name().toStdString();
}

namespace {

// Distinct colours for the seven swatches, as RGB longs.
constexpr std::array<qint32, 7> kColors = {0x0000FF, 0x00FF00, 0xFF0000, 0x00FFFF,
                                           0xFF00FF, 0xFFFF00, 0x808080};

qint32& colorSetting(Settings& s, int swatch)
{
    std::array<qint32*, 7> bound = {
        &s.MEASURELINECOLOR[1], &s.MEASUREVALUECOLOR[1], &s.MEASURELINECOLOR[2], &s.MEASUREVALUECOLOR[2],
        &s.MEASURELINECOLOR[3], &s.CROSSLINECOLOR,       &s.SCALECOLOR};
    return *bound[static_cast<size_t>(swatch)];
}

class frmMeasureConfigTest : public ::testing::Test {
protected:
    frmMeasureConfigTest()
    {
        for (int i = 0; i < 7; ++i)
            colorSetting(settings, i) = kColors[static_cast<size_t>(i)];
        settings.MEASURELINECOLOR[0] = 0x123456;
        settings.MEASUREVALUECOLOR[0] = 0x654321;
        settings.CROSSLINENUM = 1;
        settings.NUMBEROFDECIMALS = 2;
        settings.MEASUREFONTSIZE = 10;
    }

    frmMeasureConfig& open()
    {
        dialog = std::make_unique<frmMeasureConfig>(settings, messages, prompter, log);
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
    QLabel* lblColor(int i) { return find<QLabel>(QStringLiteral("lblColor(%1)").arg(i)); }
    QColor swatch(int i) { return lblColor(i)->palette().color(QPalette::Window); }
    QRadioButton* option(const char* name, int i)
    {
        return find<QRadioButton>(QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(i));
    }
    QComboBox* cboDec() { return find<QComboBox>(QStringLiteral("cboDec")); }
    QComboBox* cboFontSize() { return find<QComboBox>(QStringLiteral("cboFontSize")); }
    QPushButton* button(const char* name) { return find<QPushButton>(QLatin1String(name)); }

    static void clickOption(QRadioButton* b)
    {
        QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(6, b->height() / 2));
    }
    // Picks a list entry the way a user does without the mouse: typing its text.
    static void pick(QComboBox* combo, const QString& text)
    {
        combo->setFocus();
        QTest::keyClicks(combo, text);
    }
    void clickOk() { QTest::mouseClick(button("cmdOK"), Qt::LeftButton); }
    void clickCancel() { QTest::mouseClick(button("cmdCancel"), Qt::LeftButton); }

    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    Settings settings;
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    std::unique_ptr<frmMeasureConfig> dialog;
};

qint16& modeSetting(Settings& s, const std::string& group)
{
    if (group == "optAngleCommand")
        return s.ANGLECOMMANDMODE;
    if (group == "opt2PointCommand")
        return s._2POINTCOMMANDMODE;
    return s.CIRCLEARCSELECT;
}

}  // namespace

// --- load ---

TEST_F(frmMeasureConfigTest, Load_SetsCaptionsFromMessageTable)
{
    open();

    EXPECT_EQ(dialog->windowTitle(), messages.text(13000));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Measure settings"));
    EXPECT_EQ(find<QGroupBox>(QStringLiteral("Frame1"))->title(), messages.text(13001));
    EXPECT_EQ(find<QGroupBox>(QStringLiteral("Frame2"))->title(), messages.text(13010));
    EXPECT_EQ(find<QGroupBox>(QStringLiteral("Frame3"))->title(), messages.text(13020));
    const int labels[] = {13002, 13003, 13004, 13005, 13006, 13011, 13012,
                          13021, 13022, 13023, 13024, 13027, 13030};
    for (int i = 0; i < 13; ++i)
        EXPECT_EQ(find<QLabel>(QStringLiteral("Label1(%1)").arg(i))->text(), messages.text(labels[i])) << i;
    EXPECT_EQ(option("optAngleCommand", 0)->text(), messages.text(13025));
    EXPECT_EQ(option("optAngleCommand", 1)->text(), messages.text(13026));
    EXPECT_EQ(option("opt2PointCommand", 0)->text(), messages.text(13028));
    EXPECT_EQ(option("opt2PointCommand", 1)->text(), messages.text(13029));
    EXPECT_EQ(option("optCircleArcSelect", 0)->text(), messages.text(13031));
    EXPECT_EQ(option("optCircleArcSelect", 1)->text(), messages.text(13032));
    EXPECT_EQ(option("optCrossLineNum", 0)->text(), QStringLiteral("1"));
    EXPECT_EQ(option("optCrossLineNum", 1)->text(), QStringLiteral("2"));
    EXPECT_EQ(button("cmdOK")->text(), QStringLiteral("&OK"));
    EXPECT_EQ(button("cmdCancel")->text(), QStringLiteral("&Cancel"));
}

TEST_F(frmMeasureConfigTest, Load_ColoursEachSwatchFromItsSetting)
{
    open();

    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(swatch(i), ClassicColor::toQColor(kColors[static_cast<size_t>(i)])) << i;
}

TEST_F(frmMeasureConfigTest, Load_HasNoThirdValueColour)
{
    open();

    EXPECT_EQ(dialog->findChild<QLabel*>(QStringLiteral("lblColor(7)")), nullptr);
    int swatches = 0;
    for (QLabel* label : dialog->findChildren<QLabel*>())
        swatches += label->objectName().startsWith(QStringLiteral("lblColor(")) ? 1 : 0;
    EXPECT_EQ(swatches, 7);
    // The swatch after the third line colour is the cross-line colour.
    EXPECT_EQ(swatch(4), ClassicColor::toQColor(settings.MEASURELINECOLOR[3]));
    EXPECT_EQ(swatch(5), ClassicColor::toQColor(settings.CROSSLINECOLOR));
}

class frmMeasureConfigCrossLines : public frmMeasureConfigTest, public ::testing::WithParamInterface<int> {};

TEST_P(frmMeasureConfigCrossLines, Load_SelectsCrossLineNumberOption)
{
    settings.CROSSLINENUM = static_cast<qint16>(GetParam());

    open();

    EXPECT_TRUE(option("optCrossLineNum", GetParam() - 1)->isChecked());
    EXPECT_FALSE(option("optCrossLineNum", 2 - GetParam())->isChecked());
}

INSTANTIATE_TEST_SUITE_P(Counts, frmMeasureConfigCrossLines, ::testing::Values(1, 2));

class frmMeasureConfigDecimals : public frmMeasureConfigTest, public ::testing::WithParamInterface<int> {};

TEST_P(frmMeasureConfigDecimals, Load_ListsZeroToEightAndSelectsTheSetting)
{
    settings.NUMBEROFDECIMALS = static_cast<qint16>(GetParam());

    open();

    ASSERT_EQ(cboDec()->count(), 9);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(cboDec()->itemText(i), QString::number(i));
    EXPECT_EQ(cboDec()->currentIndex(), GetParam());
    EXPECT_FALSE(cboDec()->isEditable());
}

INSTANTIATE_TEST_SUITE_P(Decimals, frmMeasureConfigDecimals, ::testing::Values(0, 3, 8));

struct ModeCase {
    const char* group;
    qint16 value;
};
class frmMeasureConfigModes : public frmMeasureConfigTest, public ::testing::WithParamInterface<ModeCase> {};

TEST_P(frmMeasureConfigModes, Load_SelectsTheOptionOfTheMode)
{
    const ModeCase c = GetParam();
    modeSetting(settings, c.group) = c.value;

    open();

    EXPECT_TRUE(option(c.group, c.value)->isChecked());
    EXPECT_FALSE(option(c.group, 1 - c.value)->isChecked());
}

TEST_P(frmMeasureConfigModes, Ok_StoresTheClickedOption)
{
    const ModeCase c = GetParam();
    modeSetting(settings, c.group) = static_cast<qint16>(1 - c.value);
    open();

    clickOption(option(c.group, c.value));
    clickOk();

    EXPECT_EQ(modeSetting(settings, c.group), c.value);
}

INSTANTIATE_TEST_SUITE_P(Groups, frmMeasureConfigModes,
                         ::testing::Values(ModeCase{"optAngleCommand", 0}, ModeCase{"optAngleCommand", 1},
                                           ModeCase{"opt2PointCommand", 0}, ModeCase{"opt2PointCommand", 1},
                                           ModeCase{"optCircleArcSelect", 0},
                                           ModeCase{"optCircleArcSelect", 1}));

TEST_F(frmMeasureConfigTest, OptionGroups_AreIndependent)
{
    settings.ANGLECOMMANDMODE = 0;
    settings._2POINTCOMMANDMODE = 0;
    settings.CIRCLEARCSELECT = 0;
    open();

    clickOption(option("opt2PointCommand", 1));

    EXPECT_TRUE(option("optAngleCommand", 0)->isChecked());
    EXPECT_TRUE(option("optCircleArcSelect", 0)->isChecked());
    EXPECT_TRUE(option("optCrossLineNum", 0)->isChecked());
}

class frmMeasureConfigFontSize : public frmMeasureConfigTest, public ::testing::WithParamInterface<int> {};

TEST_P(frmMeasureConfigFontSize, Load_SelectsTheSizeOfTheSetting)
{
    settings.MEASUREFONTSIZE = static_cast<qint16>(GetParam());

    open();

    EXPECT_EQ(cboFontSize()->currentText(), QString::number(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Sizes, frmMeasureConfigFontSize, ::testing::Values(8, 12, 14, 20));

TEST_F(frmMeasureConfigTest, Load_ListsTheNineFontSizes)
{
    open();

    QStringList items;
    for (int i = 0; i < cboFontSize()->count(); ++i)
        items << cboFontSize()->itemText(i);
    EXPECT_EQ(items.join(QLatin1Char(',')), QStringLiteral("8,9,10,11,12,14,16,18,20"));
    EXPECT_FALSE(cboFontSize()->isEditable());
}

TEST_F(frmMeasureConfigTest, FontSize13_Shows8_AndOkStores8)
{
    settings.MEASUREFONTSIZE = 13;
    open();

    EXPECT_EQ(cboFontSize()->currentText(), QStringLiteral("8"));
    EXPECT_EQ(cboFontSize()->currentIndex(), 0);
    clickOk();

    EXPECT_EQ(settings.MEASUREFONTSIZE, 8);
}

// --- colour swatches ---

class frmMeasureConfigSwatch : public frmMeasureConfigTest, public ::testing::WithParamInterface<int> {};

TEST_P(frmMeasureConfigSwatch, Click_AsksColourStartingFromTheSwatch_AndShowsTheChoice)
{
    const int i = GetParam();
    open();
    const QColor chosen(12, 34, 56);
    prompter.colors = {chosen};

    QTest::mouseClick(lblColor(i), Qt::LeftButton);

    ASSERT_EQ(prompter.colorStarts.size(), 1u);
    EXPECT_EQ(prompter.colorStarts[0], ClassicColor::toQColor(kColors[static_cast<size_t>(i)]));
    EXPECT_EQ(swatch(i), chosen);
    // Nothing reaches the settings before OK.
    EXPECT_EQ(colorSetting(settings, i), kColors[static_cast<size_t>(i)]);
}

TEST_P(frmMeasureConfigSwatch, Ok_CopiesTheSwatchIntoItsSetting)
{
    const int i = GetParam();
    open();
    prompter.colors = {QColor(12, 34, 56)};
    QTest::mouseClick(lblColor(i), Qt::LeftButton);

    clickOk();

    EXPECT_EQ(colorSetting(settings, i), 12 + 256 * 34 + 65536 * 56);
    for (int other = 0; other < 7; ++other) {
        if (other != i) {
            EXPECT_EQ(colorSetting(settings, other), kColors[static_cast<size_t>(other)]) << other;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Swatches, frmMeasureConfigSwatch, ::testing::Range(0, 7));

TEST_F(frmMeasureConfigTest, SwatchClick_CancelledColourDialog_KeepsTheColour)
{
    open();
    prompter.colors = {ClassicColor::toQColor(kColors[3])};  // cancelled: the start colour comes back

    QTest::mouseClick(lblColor(3), Qt::LeftButton);

    EXPECT_EQ(prompter.colorStarts.size(), 1u);
    EXPECT_EQ(swatch(3), ClassicColor::toQColor(kColors[3]));
}

TEST_F(frmMeasureConfigTest, SwatchClick_OtherButton_AsksNothing)
{
    open();

    QTest::mouseClick(lblColor(0), Qt::RightButton);

    EXPECT_TRUE(prompter.colorStarts.empty());
}

TEST_F(frmMeasureConfigTest, Ok_LeavesTheUnusedColourSlotsAlone)
{
    open();
    prompter.colors = {QColor(1, 1, 1), QColor(2, 2, 2), QColor(3, 3, 3), QColor(4, 4, 4), QColor(5, 5, 5)};
    for (int i = 0; i < 5; ++i)
        QTest::mouseClick(lblColor(i), Qt::LeftButton);

    clickOk();

    EXPECT_EQ(settings.MEASURELINECOLOR[0], 0x123456);
    EXPECT_EQ(settings.MEASUREVALUECOLOR[0], 0x654321);
    EXPECT_EQ(settings.MEASURELINECOLOR[3], 5 * 65793);
    EXPECT_EQ(settings.MEASUREVALUECOLOR[2], 4 * 65793);
}

// --- OK ---

TEST_F(frmMeasureConfigTest, Ok_StoresCrossLineNumber)
{
    open();

    clickOption(option("optCrossLineNum", 1));
    clickOk();

    EXPECT_EQ(settings.CROSSLINENUM, 2);
}

TEST_F(frmMeasureConfigTest, Ok_StoresOneCrossLine)
{
    settings.CROSSLINENUM = 2;
    open();

    clickOption(option("optCrossLineNum", 0));
    clickOk();

    EXPECT_EQ(settings.CROSSLINENUM, 1);
}

TEST_F(frmMeasureConfigTest, Ok_StoresTheChosenDecimalsAndFontSize)
{
    open();

    pick(cboDec(), QStringLiteral("5"));
    pick(cboFontSize(), QStringLiteral("16"));
    ASSERT_EQ(cboDec()->currentText(), QStringLiteral("5"));
    ASSERT_EQ(cboFontSize()->currentText(), QStringLiteral("16"));
    clickOk();

    EXPECT_EQ(settings.NUMBEROFDECIMALS, 5);
    EXPECT_EQ(settings.MEASUREFONTSIZE, 16);
}

TEST_F(frmMeasureConfigTest, Ok_ZeroDecimals_GivesFormatWithoutPoint)
{
    open();

    pick(cboDec(), QStringLiteral("0"));
    clickOk();

    EXPECT_EQ(settings.NUMBEROFDECIMALS, 0);
    EXPECT_EQ(ValueFormat::pattern(settings.NUMBEROFDECIMALS), QStringLiteral("0"));
}

TEST_F(frmMeasureConfigTest, Ok_ThreeDecimals_GivesFormatWithThreeZeros)
{
    open();

    pick(cboDec(), QStringLiteral("3"));
    clickOk();

    EXPECT_EQ(settings.NUMBEROFDECIMALS, 3);
    EXPECT_EQ(ValueFormat::pattern(settings.NUMBEROFDECIMALS), QStringLiteral("0.000"));
}

TEST_F(frmMeasureConfigTest, Ok_ClosesTheDialogAccepted)
{
    open();

    clickOk();

    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(frmMeasureConfigTest, Ok_WithoutChanges_KeepsEverySetting)
{
    settings.ANGLECOMMANDMODE = 1;
    settings.CIRCLEARCSELECT = 1;
    settings.MEASUREFONTSIZE = 18;
    open();

    clickOk();

    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(colorSetting(settings, i), kColors[static_cast<size_t>(i)]) << i;
    EXPECT_EQ(settings.CROSSLINENUM, 1);
    EXPECT_EQ(settings.NUMBEROFDECIMALS, 2);
    EXPECT_EQ(settings.MEASUREFONTSIZE, 18);
    EXPECT_EQ(settings.ANGLECOMMANDMODE, 1);
    EXPECT_EQ(settings._2POINTCOMMANDMODE, 0);
    EXPECT_EQ(settings.CIRCLEARCSELECT, 1);
}

// --- Cancel ---

TEST_F(frmMeasureConfigTest, Cancel_AfterChangingASwatch_KeepsTheOldColours)
{
    open();
    prompter.colors = {QColor(9, 9, 9), QColor(8, 8, 8)};
    QTest::mouseClick(lblColor(0), Qt::LeftButton);
    QTest::mouseClick(lblColor(6), Qt::LeftButton);
    ASSERT_EQ(swatch(0), QColor(9, 9, 9));

    clickCancel();

    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(colorSetting(settings, i), kColors[static_cast<size_t>(i)]) << i;
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
}

TEST_F(frmMeasureConfigTest, Cancel_CopiesNothing)
{
    open();
    clickOption(option("optCrossLineNum", 1));
    clickOption(option("optAngleCommand", 1));
    clickOption(option("opt2PointCommand", 1));
    clickOption(option("optCircleArcSelect", 1));
    pick(cboDec(), QStringLiteral("7"));
    pick(cboFontSize(), QStringLiteral("20"));

    clickCancel();

    EXPECT_EQ(settings.CROSSLINENUM, 1);
    EXPECT_EQ(settings.ANGLECOMMANDMODE, 0);
    EXPECT_EQ(settings._2POINTCOMMANDMODE, 0);
    EXPECT_EQ(settings.CIRCLEARCSELECT, 0);
    EXPECT_EQ(settings.NUMBEROFDECIMALS, 2);
    EXPECT_EQ(settings.MEASUREFONTSIZE, 10);
}

TEST_F(frmMeasureConfigTest, Escape_CancelsToo)
{
    open();
    pick(cboDec(), QStringLiteral("7"));

    QTest::keyClick(dialog.get(), Qt::Key_Escape);

    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(settings.NUMBEROFDECIMALS, 2);
}
