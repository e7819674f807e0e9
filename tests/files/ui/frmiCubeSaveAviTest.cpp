#include "files/ui/frmiCubeSaveAvi.h"

#include "common/ErrorLog.h"
#include "files/VideoRecording.h"

#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <memory>

using namespace tavix;
using tavix::test::TempDir;

namespace {

class frmiCubeSaveAviTest : public ::testing::Test {
protected:
    frmiCubeSaveAvi& open(qint16 longest)
    {
        length = longest;
        dialog = std::make_unique<frmiCubeSaveAvi>(length, messages, prompter, log);
        dialog->show();
        return *dialog;
    }

    template <typename T>
    T* find(const char* name)
    {
        T* widget = dialog->findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    void type(const QString& text)
    {
        auto* box = find<QLineEdit>("txtRecTime");
        box->clear();
        QTest::keyClicks(box, text);
    }
    void click(const char* name) { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }

    // OK with `text` in the box of a dialog whose longest length is 900: refused.
    void expectRefused(const QString& text)
    {
        open(900);
        type(text);
        click("cmdOK");
        ASSERT_EQ(prompter.messages.size(), 1u);
        EXPECT_EQ(prompter.messages[0].text, messages.text(VideoRecording::kMsgBadLength, 900));
        EXPECT_EQ(prompter.messages[0].text,
                  QStringLiteral("Enter a whole number of seconds from 1 to 900."));
        EXPECT_EQ(prompter.messages[0].title, messages.text(VideoRecording::kMsgBadLengthTitle));
        EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_EQ(length, 900);
    }

    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    MessageTable messages = test::shippedMessages();
    test::ScriptedPrompter prompter;
    qint16 length = 0;
    std::unique_ptr<frmiCubeSaveAvi> dialog;
};

TEST_F(frmiCubeSaveAviTest, Load_ShowsItsCaptionsAndAnEmptyBox)
{
    open(60);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Save stream to AVI file"));
    EXPECT_EQ(find<QLabel>("Label1")->text(), QStringLiteral("Stream length (1-999) :"));
    EXPECT_EQ(find<QLabel>("Label2")->text(), QStringLiteral("[seconds]"));
    EXPECT_EQ(find<QPushButton>("cmdOK")->text(), QStringLiteral("&OK"));
    EXPECT_EQ(find<QPushButton>("cmdCancel")->text(), QStringLiteral("&Cancel"));
    EXPECT_TRUE(find<QLineEdit>("txtRecTime")->text().isEmpty());
}

TEST_F(frmiCubeSaveAviTest, TheLongestLength_IsAccepted)
{
    open(900);
    type(QStringLiteral("900"));
    click("cmdOK");
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(length, 900);
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(frmiCubeSaveAviTest, BlanksAroundTheNumber_AreTrimmed)
{
    open(60);
    type(QStringLiteral(" 7 "));
    click("cmdOK");
    EXPECT_EQ(length, 7);
}

TEST_F(frmiCubeSaveAviTest, OneMoreThanTheLongest_IsRefused)
{
    prompter.answers = {Prompter::Answer::Ok};
    expectRefused(QStringLiteral("901"));
}

TEST_F(frmiCubeSaveAviTest, Zero_IsRefused)
{
    prompter.answers = {Prompter::Answer::Ok};
    expectRefused(QStringLiteral("0"));
}

TEST_F(frmiCubeSaveAviTest, ANumberWithADecimalPoint_IsRefused)
{
    prompter.answers = {Prompter::Answer::Ok};
    expectRefused(QStringLiteral("1.5"));
}

TEST_F(frmiCubeSaveAviTest, ANonNumber_IsRefused)
{
    prompter.answers = {Prompter::Answer::Ok};
    expectRefused(QStringLiteral("abc"));
}

TEST_F(frmiCubeSaveAviTest, AnEmptyBox_IsRefused)
{
    prompter.answers = {Prompter::Answer::Ok};
    expectRefused(QString());
}

TEST_F(frmiCubeSaveAviTest, TheMessage_NamesTheLimitOfTheDisk_NotTheLabels999)
{
    prompter.answers = {Prompter::Answer::Ok};
    open(120);
    type(QStringLiteral("999"));
    click("cmdOK");
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, QStringLiteral("Enter a whole number of seconds from 1 to 120."));
    // Corrected, the same dialog accepts.
    type(QStringLiteral("120"));
    click("cmdOK");
    EXPECT_EQ(length, 120);
}

TEST_F(frmiCubeSaveAviTest, Cancel_SetsTheLengthTo0)
{
    open(60);
    type(QStringLiteral("30"));
    click("cmdCancel");
    EXPECT_EQ(length, 0);
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_TRUE(prompter.messages.empty());
}

}  // namespace
