#include "files/ui/frmSaveSetting.h"

#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <memory>
#include <utility>
#include <vector>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

// Also remembers what each folder browser was asked.
class FolderPrompter : public ScriptedPrompter {
public:
    std::vector<std::pair<QString, QString>> folderRequests;  // title, start folder

    QString folder(const QString& title, const QString& start) override
    {
        folderRequests.emplace_back(title, start);
        return ScriptedPrompter::folder(title, start);
    }
};

class frmSaveSettingTest : public ::testing::Test {
protected:
    frmSaveSettingTest()
    {
        QDir(dir.path()).mkpath(QStringLiteral("pictures"));
        QDir(dir.path()).mkpath(QStringLiteral("other"));
        settings.IS_MODE = 0;
        settings.IS_SAVEPATH = dir.file(QStringLiteral("pictures"));
    }

    frmSaveSetting& open()
    {
        dialog = std::make_unique<frmSaveSetting>(settings, prompter, messages, log);
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
    QRadioButton* optIS_Mode(int i) { return find<QRadioButton>(QStringLiteral("optIS_Mode(%1)").arg(i)); }
    QLineEdit* txtSavePath() { return find<QLineEdit>(QStringLiteral("txtSavePath")); }
    QPushButton* button(const char* name) { return find<QPushButton>(QLatin1String(name)); }
    void click(const char* name) { QTest::mouseClick(button(name), Qt::LeftButton); }
    // Near the left edge, where an option button's indicator is.
    static void clickOption(QRadioButton* b)
    {
        QTest::mouseClick(b, Qt::LeftButton, {}, QPoint(6, b->height() / 2));
    }

    static void typeInto(QLineEdit* edit, const QString& text)
    {
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
    }

    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    Settings settings;
    MessageTable messages = test::shippedMessages();
    FolderPrompter prompter;
    std::unique_ptr<frmSaveSetting> dialog;
};

}  // namespace

// --- load ---

TEST_F(frmSaveSettingTest, Load_SetsCaptionsFromTheMessageTable)
{
    open();

    EXPECT_EQ(dialog->windowTitle(), messages.text(30000));
    EXPECT_EQ(find<QGroupBox>(QStringLiteral("Frame1"))->title(), messages.text(30020));
    EXPECT_EQ(optIS_Mode(0)->text(), messages.text(30021));
    EXPECT_EQ(optIS_Mode(1)->text(), messages.text(30022));
    EXPECT_EQ(find<QLabel>(QStringLiteral("Label1"))->text(), messages.text(30023));
    EXPECT_EQ(button("cmdSavePath")->text(), messages.text(30024));
    EXPECT_EQ(button("cmdOK")->text(), QStringLiteral("&OK"));
    EXPECT_EQ(button("cmdCancel")->text(), QStringLiteral("&Cancel"));
    EXPECT_EQ(messages.text(30022), QStringLiteral("Quick save to a folder"));
}

TEST_F(frmSaveSettingTest, Load_SelectsSeriesMode_AndDisablesTheFolder)
{
    open();

    EXPECT_TRUE(optIS_Mode(0)->isChecked());
    EXPECT_FALSE(optIS_Mode(1)->isChecked());
    EXPECT_EQ(txtSavePath()->text(), settings.IS_SAVEPATH);
    EXPECT_FALSE(txtSavePath()->isEnabled());
    EXPECT_FALSE(button("cmdSavePath")->isEnabled());
}

TEST_F(frmSaveSettingTest, Load_SelectsFolderMode_AndEnablesTheFolder)
{
    settings.IS_MODE = 1;
    open();

    EXPECT_TRUE(optIS_Mode(1)->isChecked());
    EXPECT_TRUE(txtSavePath()->isEnabled());
    EXPECT_TRUE(button("cmdSavePath")->isEnabled());
}

TEST_F(frmSaveSettingTest, Load_SelectsSeriesMode_ForAModeOutsideTheTwo)
{
    settings.IS_MODE = 7;
    open();

    EXPECT_TRUE(optIS_Mode(0)->isChecked());
    EXPECT_FALSE(txtSavePath()->isEnabled());
}

TEST_F(frmSaveSettingTest, OptionClicks_EnableAndDisableTheFolder)
{
    open();

    clickOption(optIS_Mode(1));
    EXPECT_TRUE(optIS_Mode(1)->isChecked());
    EXPECT_TRUE(txtSavePath()->isEnabled());
    EXPECT_TRUE(button("cmdSavePath")->isEnabled());

    clickOption(optIS_Mode(0));
    EXPECT_TRUE(optIS_Mode(0)->isChecked());
    EXPECT_FALSE(txtSavePath()->isEnabled());
    EXPECT_FALSE(button("cmdSavePath")->isEnabled());
}

// --- folder browser ---

TEST_F(frmSaveSettingTest, SavePath_OpensTheBrowserAtTheCurrentFolder_AndTakesTheChoice)
{
    settings.IS_MODE = 1;
    open();
    typeInto(txtSavePath(), dir.file(QStringLiteral("typed")));
    prompter.folders.push_back(dir.file(QStringLiteral("other")));

    click("cmdSavePath");

    ASSERT_EQ(prompter.folderRequests.size(), 1u);
    EXPECT_EQ(prompter.folderRequests[0].first, messages.text(30022));
    EXPECT_EQ(prompter.folderRequests[0].second, dir.file(QStringLiteral("typed")));
    EXPECT_EQ(txtSavePath()->text(), dir.file(QStringLiteral("other")));
}

TEST_F(frmSaveSettingTest, SavePath_KeepsTheFolder_WhenTheBrowserIsCancelled)
{
    settings.IS_MODE = 1;
    open();
    prompter.folders = {settings.IS_SAVEPATH};  // cancelled: the browser gives its start folder back

    click("cmdSavePath");

    ASSERT_EQ(prompter.folderRequests.size(), 1u);
    EXPECT_EQ(txtSavePath()->text(), settings.IS_SAVEPATH);
}

// --- OK and Cancel ---

TEST_F(frmSaveSettingTest, Ok_RefusesAMissingFolderInFolderMode_AndStaysOpen)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    clickOption(optIS_Mode(1));
    typeInto(txtSavePath(), dir.file(QStringLiteral("no such folder")));
    const Settings before = settings;

    click("cmdOK");

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(30025));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    EXPECT_EQ(prompter.messages[0].buttons, Prompter::Buttons::Ok);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->focusWidget(), txtSavePath());
    EXPECT_EQ(settings.IS_MODE, before.IS_MODE);
    EXPECT_EQ(settings.IS_SAVEPATH, before.IS_SAVEPATH);
}

TEST_F(frmSaveSettingTest, Ok_RefusesAnEmptyFolderInFolderMode)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    clickOption(optIS_Mode(1));
    typeInto(txtSavePath(), QStringLiteral("   "));

    click("cmdOK");

    EXPECT_EQ(prompter.messages.size(), 1u);
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(frmSaveSettingTest, Ok_RefusesAFileInsteadOfAFolder)
{
    prompter.answers = {Prompter::Answer::Ok};
    const QString file = dir.write(QStringLiteral("a file"), "x");
    open();
    clickOption(optIS_Mode(1));
    typeInto(txtSavePath(), file);

    click("cmdOK");

    EXPECT_EQ(prompter.messages.size(), 1u);
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(frmSaveSettingTest, Ok_StoresFolderModeAndTheFolder_WhenItExists)
{
    open();
    clickOption(optIS_Mode(1));
    typeInto(txtSavePath(), dir.file(QStringLiteral("other")));

    click("cmdOK");

    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(settings.IS_MODE, 1);
    EXPECT_EQ(settings.IS_SAVEPATH, dir.file(QStringLiteral("other")));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(frmSaveSettingTest, Ok_StoresTheBrowsedFolder)
{
    settings.IS_MODE = 1;
    open();
    prompter.folders.push_back(dir.file(QStringLiteral("other")));
    click("cmdSavePath");

    click("cmdOK");

    EXPECT_EQ(settings.IS_SAVEPATH, dir.file(QStringLiteral("other")));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(frmSaveSettingTest, Ok_InSeriesMode_DoesNotCheckTheFolder)
{
    settings.IS_MODE = 1;
    settings.IS_SAVEPATH = dir.file(QStringLiteral("no such folder"));
    open();
    clickOption(optIS_Mode(0));

    click("cmdOK");

    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(settings.IS_MODE, 0);
    EXPECT_EQ(settings.IS_SAVEPATH, dir.file(QStringLiteral("no such folder")));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(frmSaveSettingTest, Ok_AcceptsTheFolderAfterARefusal)
{
    prompter.answers = {Prompter::Answer::Ok};
    open();
    clickOption(optIS_Mode(1));
    typeInto(txtSavePath(), dir.file(QStringLiteral("missing")));
    click("cmdOK");
    typeInto(txtSavePath(), dir.file(QStringLiteral("pictures")));

    click("cmdOK");

    EXPECT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(settings.IS_MODE, 1);
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(frmSaveSettingTest, Cancel_ChangesNothing)
{
    open();
    clickOption(optIS_Mode(1));
    typeInto(txtSavePath(), dir.file(QStringLiteral("other")));

    click("cmdCancel");

    EXPECT_EQ(settings.IS_MODE, 0);
    EXPECT_EQ(settings.IS_SAVEPATH, dir.file(QStringLiteral("pictures")));
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(frmSaveSettingTest, Escape_Cancels)
{
    open();
    clickOption(optIS_Mode(1));

    QTest::keyClick(dialog.get(), Qt::Key_Escape);

    EXPECT_EQ(settings.IS_MODE, 0);
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
}
