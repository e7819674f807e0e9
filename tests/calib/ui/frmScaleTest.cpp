#include "calib/ui/frmScale.h"

#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "../PrintQt.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <memory>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

class frmScaleTest : public ::testing::Test {
protected:
    frmScaleTest()
    {
        settings.SCALEX = 100;
        settings.SCALEY = 50;
        settings.SCALETYPE = 0;
        settings.SCALEPOSITION = 2;
    }

    frmScale& open(const QString& unit = QStringLiteral("MIC"))
    {
        dialog = std::make_unique<frmScale>(settings, unit, messages, prompter, log);
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
    QLineEdit* txtScaleLen(int i) { return find<QLineEdit>(QStringLiteral("txtScaleLen(%1)").arg(i)); }
    QLabel* lblUnit(int i) { return find<QLabel>(QStringLiteral("lblUnit(%1)").arg(i)); }
    QLabel* Label1(int i) { return find<QLabel>(QStringLiteral("Label1(%1)").arg(i)); }
    QRadioButton* optAxis(int i) { return find<QRadioButton>(QStringLiteral("optAxis(%1)").arg(i)); }
    QComboBox* cboPosition() { return find<QComboBox>(QStringLiteral("cboPosition")); }
    QPushButton* button(const char* name) { return find<QPushButton>(QLatin1String(name)); }

    static void clickOption(QRadioButton* b)
    {
        QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(6, b->height() / 2));
    }
    static void typeInto(QLineEdit* edit, const QString& text)
    {
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
    }
    void clickOk() { QTest::mouseClick(button("cmdOK"), Qt::LeftButton); }
    void clickCancel() { QTest::mouseClick(button("cmdCancel"), Qt::LeftButton); }

    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    Settings settings;
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    std::unique_ptr<frmScale> dialog;
};

}  // namespace

// --- load ---

TEST_F(frmScaleTest, Load_SetsCaptionsFromMessageTable)
{
    open();

    EXPECT_EQ(dialog->objectName(), QStringLiteral("frmScale"));
    EXPECT_EQ(dialog->windowTitle(), messages.text(15000));
    EXPECT_EQ(find<QGroupBox>(QStringLiteral("Frame1"))->title(), messages.text(15001));
    EXPECT_EQ(optAxis(0)->text(), messages.text(15002));
    EXPECT_EQ(optAxis(1)->text(), messages.text(15003));
    EXPECT_EQ(find<QLabel>(QStringLiteral("Label2"))->text(), messages.text(15004));
    EXPECT_EQ(button("cmdOK")->text(), QStringLiteral("&OK"));
    EXPECT_EQ(button("cmdCancel")->text(), QStringLiteral("&Cancel"));
    EXPECT_FALSE(messages.text(15000).isEmpty());
}

TEST_F(frmScaleTest, Load_NamesTheAxesBesideTheLengths)
{
    open();

    EXPECT_EQ(Label1(0)->text(), QStringLiteral("X axis"));
    EXPECT_EQ(Label1(1)->text(), QStringLiteral("Y axis"));
}

TEST_F(frmScaleTest, Load_ShowsLengthsAsText)
{
    settings.SCALEX = 2.5;
    settings.SCALEY = 1000;

    open();

    EXPECT_EQ(txtScaleLen(0)->text(), QStringLiteral("2.5"));
    EXPECT_EQ(txtScaleLen(1)->text(), QStringLiteral("1000"));
}

TEST_F(frmScaleTest, Load_ShowsEntryUnitBesideBothLengths)
{
    open(QStringLiteral("mm"));

    EXPECT_EQ(lblUnit(0)->text(), QStringLiteral("mm"));
    EXPECT_EQ(lblUnit(1)->text(), QStringLiteral("mm"));
}

TEST_F(frmScaleTest, Load_FillsPositionsInOrderAndSelectsSetting)
{
    settings.SCALEPOSITION = 3;

    open();

    ASSERT_EQ(cboPosition()->count(), 5);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(cboPosition()->itemText(i), messages.text(15005 + i)) << i;
    EXPECT_EQ(cboPosition()->currentIndex(), 3);
}

TEST_F(frmScaleTest, Load_SelectsFirstPosition_WhenSettingIsOutOfRange)
{
    settings.SCALEPOSITION = 9;

    open();

    EXPECT_EQ(cboPosition()->currentIndex(), 0);
}

TEST_F(frmScaleTest, Load_SelectsHorizontalOnlyAndDisablesYLength_WhenTypeIs0)
{
    settings.SCALETYPE = 0;

    open();

    EXPECT_TRUE(optAxis(0)->isChecked());
    EXPECT_FALSE(optAxis(1)->isChecked());
    EXPECT_FALSE(Label1(1)->isEnabled());
    EXPECT_FALSE(txtScaleLen(1)->isEnabled());
    EXPECT_FALSE(lblUnit(1)->isEnabled());
    EXPECT_TRUE(txtScaleLen(0)->isEnabled());
}

TEST_F(frmScaleTest, Load_SelectsBothBarsAndEnablesYLength_WhenTypeIs1)
{
    settings.SCALETYPE = 1;

    open();

    EXPECT_TRUE(optAxis(1)->isChecked());
    EXPECT_TRUE(Label1(1)->isEnabled());
    EXPECT_TRUE(txtScaleLen(1)->isEnabled());
    EXPECT_TRUE(lblUnit(1)->isEnabled());
}

// --- option buttons ---

TEST_F(frmScaleTest, OptAxisClick_EnablesYLength_WhenBothBarsChosen)
{
    open();

    clickOption(optAxis(1));

    EXPECT_TRUE(Label1(1)->isEnabled());
    EXPECT_TRUE(txtScaleLen(1)->isEnabled());
    EXPECT_TRUE(lblUnit(1)->isEnabled());
}

TEST_F(frmScaleTest, OptAxisClick_DisablesYLength_WhenHorizontalOnlyChosen)
{
    settings.SCALETYPE = 1;
    open();

    clickOption(optAxis(0));

    EXPECT_FALSE(Label1(1)->isEnabled());
    EXPECT_FALSE(txtScaleLen(1)->isEnabled());
    EXPECT_FALSE(lblUnit(1)->isEnabled());
}

// --- OK ---

TEST_F(frmScaleTest, Ok_StoresLengthsTypeAndPosition)
{
    open();
    clickOption(optAxis(1));
    typeInto(txtScaleLen(0), QStringLiteral("250"));
    typeInto(txtScaleLen(1), QStringLiteral("12.5"));
    cboPosition()->setCurrentIndex(4);

    clickOk();

    EXPECT_DOUBLE_EQ(settings.SCALEX, 250);
    EXPECT_DOUBLE_EQ(settings.SCALEY, 12.5);
    EXPECT_EQ(settings.SCALETYPE, 1);
    EXPECT_EQ(settings.SCALEPOSITION, 4);
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(frmScaleTest, Ok_StoresTypeZero_WhenHorizontalOnlyChosen)
{
    settings.SCALETYPE = 1;
    open();
    clickOption(optAxis(0));

    clickOk();

    EXPECT_EQ(settings.SCALETYPE, 0);
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(frmScaleTest, Ok_TakesLeadingNumber_WhenTextFollowsIt)
{
    open();
    typeInto(txtScaleLen(0), QStringLiteral("12abc"));

    clickOk();

    EXPECT_DOUBLE_EQ(settings.SCALEX, 12);
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

struct BadLength {
    int axis;
    const char* text;
};

void PrintTo(const BadLength& c, std::ostream* os)
{
    *os << "axis " << c.axis << " \"" << c.text << '"';
}

class frmScaleBadLength : public frmScaleTest, public ::testing::WithParamInterface<BadLength> {};

TEST_P(frmScaleBadLength, Ok_ShowsLengthMessageWithAxisNameAndStaysOpen_WhenLengthIsNotAboveZero)
{
    prompter.answers = {Prompter::Answer::Ok};
    settings.SCALETYPE = 1;
    open();
    const int axis = GetParam().axis;
    typeInto(txtScaleLen(axis), QLatin1String(GetParam().text));

    clickOk();

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(25000, Label1(axis)->text()));
    EXPECT_TRUE(prompter.messages[0].text.contains(Label1(axis)->text()));
    EXPECT_EQ(prompter.messages[0].title, messages.text(15100));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_DOUBLE_EQ(settings.SCALEX, 100);
    EXPECT_DOUBLE_EQ(settings.SCALEY, 50);
    EXPECT_EQ(settings.SCALEPOSITION, 2);
}

INSTANTIATE_TEST_SUITE_P(Lengths, frmScaleBadLength,
                         ::testing::Values(BadLength{0, "0"}, BadLength{0, "-5"}, BadLength{0, "abc"},
                                           BadLength{0, ""}, BadLength{1, "0"}, BadLength{1, "-0.1"},
                                           BadLength{1, "x"}));

TEST_F(frmScaleTest, Ok_ChecksYLength_EvenWhenHorizontalOnlyIsChosen)
{
    prompter.answers = {Prompter::Answer::Ok};
    settings.SCALEY = 0;
    settings.SCALETYPE = 0;
    open();

    clickOk();

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(25000, QStringLiteral("Y axis")));
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(frmScaleTest, Ok_NamesXAxisOnly_WhenBothLengthsAreBad)
{
    prompter.answers = {Prompter::Answer::Ok};
    settings.SCALETYPE = 1;
    open();
    typeInto(txtScaleLen(0), QStringLiteral("0"));
    typeInto(txtScaleLen(1), QStringLiteral("0"));

    clickOk();

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(25000, QStringLiteral("X axis")));
}

TEST_F(frmScaleTest, Ok_Succeeds_AfterBadLengthIsCorrected)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    typeInto(txtScaleLen(0), QStringLiteral("0"));
    clickOk();
    typeInto(txtScaleLen(0), QStringLiteral("40"));

    clickOk();

    EXPECT_DOUBLE_EQ(settings.SCALEX, 40);
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_EQ(prompter.messages.size(), 1u);
}

// --- Cancel ---

TEST_F(frmScaleTest, Cancel_ClosesWithoutStoring)
{
    open();
    clickOption(optAxis(1));
    typeInto(txtScaleLen(0), QStringLiteral("250"));
    cboPosition()->setCurrentIndex(4);

    clickCancel();

    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_DOUBLE_EQ(settings.SCALEX, 100);
    EXPECT_EQ(settings.SCALETYPE, 0);
    EXPECT_EQ(settings.SCALEPOSITION, 2);
}

TEST_F(frmScaleTest, Escape_CancelsWithoutStoring)
{
    open();
    typeInto(txtScaleLen(0), QStringLiteral("250"));

    QTest::keyClick(dialog.get(), Qt::Key_Escape);

    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_DOUBLE_EQ(settings.SCALEX, 100);
}
