#include "files/ui/frmIS_Config.h"

#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <memory>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

class frmIS_ConfigTest : public ::testing::Test {
protected:
    frmIS_ConfigTest()
    {
        settings.INTERVALTIME = 65;
        settings.NUMBEROFIMAGES = 10;
    }

    frmIS_Config& open()
    {
        dialog = std::make_unique<frmIS_Config>(settings, prompter, messages, log);
        dialog->show();
        QApplication::setActiveWindow(dialog.get());
        return *dialog;
    }

    template <typename T>
    T* find(const QString& name)
    {
        T* widget = dialog->findChild<T*>(name);
        EXPECT_NE(widget, nullptr) << name.toStdString();
        return widget;
    }
    QLineEdit* minutes() { return find<QLineEdit>(QStringLiteral("txtIntervalTime(0)")); }
    QLineEdit* seconds() { return find<QLineEdit>(QStringLiteral("txtIntervalTime(1)")); }
    QLineEdit* count() { return find<QLineEdit>(QStringLiteral("txtNumberOfImages")); }
    void click(const char* name)
    {
        QTest::mouseClick(find<QPushButton>(QLatin1String(name)), Qt::LeftButton);
    }

    static void typeInto(QLineEdit* edit, const QString& text)
    {
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
    }
    void enter(const QString& m, const QString& s, const QString& n)
    {
        typeInto(minutes(), m);
        typeInto(seconds(), s);
        typeInto(count(), n);
        click("cmdOK");
    }
    // The dialog stayed with one exclamation message of the pair and the focus in the box.
    void expectRefused(qint32 text, QLineEdit* box)
    {
        ASSERT_EQ(prompter.messages.size(), 1u);
        EXPECT_EQ(prompter.messages[0].text, messages.text(text));
        EXPECT_EQ(prompter.messages[0].title, messages.text(text + 1));
        EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_EQ(dialog->result(), 0);
        EXPECT_TRUE(box->hasFocus());
        EXPECT_EQ(settings.INTERVALTIME, 65);
        EXPECT_EQ(settings.NUMBEROFIMAGES, 10);
    }

    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    Settings settings;
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    std::unique_ptr<frmIS_Config> dialog;
};

}  // namespace

TEST_F(frmIS_ConfigTest, Load_SetsCaptionsAndShowsTheSettings)
{
    open();
    EXPECT_EQ(dialog->windowTitle(), messages.text(30000));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(find<QLabel>(QStringLiteral("Label1(%1)").arg(i))->text(), messages.text(30001 + i));
    EXPECT_EQ(find<QLabel>(QStringLiteral("lblTime"))->text(), QStringLiteral("(3sec~99min00sec)"));
    EXPECT_EQ(find<QLabel>(QStringLiteral("lblNoi"))->text(), QStringLiteral("(2~999)"));
    EXPECT_EQ(find<QPushButton>(QStringLiteral("cmdOK"))->text(), QStringLiteral("&OK"));
    EXPECT_EQ(find<QPushButton>(QStringLiteral("cmdCancel"))->text(), QStringLiteral("&Cancel"));
    EXPECT_EQ(minutes()->text(), QStringLiteral("1"));
    EXPECT_EQ(seconds()->text(), QStringLiteral("5"));
    EXPECT_EQ(count()->text(), QStringLiteral("10"));
}

TEST_F(frmIS_ConfigTest, Load_ForcesTheSettingsIntoTheirRanges)
{
    settings.INTERVALTIME = 9999;
    settings.NUMBEROFIMAGES = 1;
    open();
    EXPECT_EQ(minutes()->text(), QStringLiteral("99"));
    EXPECT_EQ(seconds()->text(), QStringLiteral("0"));
    EXPECT_EQ(count()->text(), QStringLiteral("2"));
}

TEST_F(frmIS_ConfigTest, Ok_StoresIntervalAndCount)
{
    open();
    enter(QStringLiteral("0"), QStringLiteral("3"), QStringLiteral("2"));
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(settings.INTERVALTIME, 3);
    EXPECT_EQ(settings.NUMBEROFIMAGES, 2);
}

TEST_F(frmIS_ConfigTest, NinetyNineMinutesOneSecond_IsRefused)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    enter(QStringLiteral("99"), QStringLiteral("1"), QStringLiteral("5"));
    expectRefused(30006, minutes());
}

TEST_F(frmIS_ConfigTest, ZeroMinutesTwoSeconds_IsRefused)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    enter(QStringLiteral("0"), QStringLiteral("2"), QStringLiteral("5"));
    expectRefused(30006, minutes());
}

TEST_F(frmIS_ConfigTest, SecondsOutOfRange_PutTheFocusOnTheSeconds)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    enter(QStringLiteral("1"), QStringLiteral("60"), QStringLiteral("5"));
    expectRefused(30006, seconds());
}

TEST_F(frmIS_ConfigTest, EmptyMinutes_AreRefused)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    enter(QString(), QStringLiteral("5"), QStringLiteral("5"));
    expectRefused(30006, minutes());
}

TEST_F(frmIS_ConfigTest, CountWithAPoint_IsRefusedWithTheCountPair)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    enter(QStringLiteral("1"), QStringLiteral("5"), QStringLiteral("5."));
    expectRefused(30008, count());
}

TEST_F(frmIS_ConfigTest, CountOfOne_IsRefusedWithTheCountPair)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    enter(QStringLiteral("1"), QStringLiteral("5"), QStringLiteral("1"));
    expectRefused(30008, count());
}

TEST_F(frmIS_ConfigTest, Cancel_ChangesNothing)
{
    open();
    typeInto(minutes(), QStringLiteral("7"));
    click("cmdCancel");
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(settings.INTERVALTIME, 65);
}
