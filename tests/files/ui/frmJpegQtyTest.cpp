#include "files/ui/frmJpegQty.h"

#include "common/ErrorLog.h"
#include "common/IniFile.h"
#include "common/Settings.h"
#include "common/SettingsFile.h"

#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <memory>

using namespace tavix;
using tavix::test::TempDir;

namespace {

class frmJpegQtyTest : public ::testing::Test {
protected:
    frmJpegQtyTest() { settings.JPEGQTY = 42; }

    frmJpegQty& open()
    {
        dialog = std::make_unique<frmJpegQty>(settings, settingsFile, messages, log);
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
    QSlider* slider() { return find<QSlider>("sldJpegQty"); }
    QLabel* valueLabel() { return find<QLabel>("lblValue"); }
    void click(const char* name) { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }

    QString fileValue() const
    {
        return IniFile::load(iniPath)->value(QStringLiteral("FILE"), QStringLiteral("JPEGQTY"));
    }

    TempDir dir;
    QString folder = test::copyShippedData(dir);
    QString iniPath = dir.file(QStringLiteral("Tavix.Ini"));
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    SettingsFile settingsFile{iniPath, log};
    Settings settings;
    MessageTable messages = test::shippedMessages();
    std::unique_ptr<frmJpegQty> dialog;
};

}  // namespace

TEST_F(frmJpegQtyTest, Load_ShowsCaptionButtonsAndTheQualityOnSliderAndLabel)
{
    open();

    EXPECT_EQ(dialog->windowTitle(), messages.text(12000));
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("JPEG quality"));
    EXPECT_EQ(find<QPushButton>("cmdOK")->text(), QStringLiteral("&OK"));
    EXPECT_EQ(find<QPushButton>("cmdCancel")->text(), QStringLiteral("&Cancel"));
    EXPECT_EQ(slider()->value(), 42);
    EXPECT_EQ(valueLabel()->text(), QStringLiteral("42"));
}

TEST_F(frmJpegQtyTest, Slider_RunsFrom10To100InStepsOf1)
{
    open();

    EXPECT_EQ(slider()->minimum(), 10);
    EXPECT_EQ(slider()->maximum(), 100);
    EXPECT_EQ(slider()->singleStep(), 1);
    slider()->setFocus();
    QTest::keyClick(slider(), Qt::Key_Right);
    EXPECT_EQ(slider()->value(), 43);
}

TEST_F(frmJpegQtyTest, Label_FollowsTheSlider)
{
    open();

    slider()->setFocus();
    QTest::keyClick(slider(), Qt::Key_End);
    EXPECT_EQ(valueLabel()->text(), QStringLiteral("100"));
    QTest::keyClick(slider(), Qt::Key_Home);
    EXPECT_EQ(valueLabel()->text(), QStringLiteral("10"));
    EXPECT_EQ(slider()->toolTip(), QStringLiteral("10"));
}

TEST_F(frmJpegQtyTest, Load_ShowsTheDefaultQuality_WhenItIsTheSlidersOwnValue)
{
    settings.JPEGQTY = 10;  // the slider's minimum: setting it changes nothing
    open();

    EXPECT_EQ(valueLabel()->text(), QStringLiteral("10"));
}

TEST_F(frmJpegQtyTest, Ok_StoresTheQualityInSettingsAndAtOnceInTheSettingsFile)
{
    open();
    slider()->setValue(87);

    click("cmdOK");

    EXPECT_EQ(settings.JPEGQTY, 87);
    EXPECT_EQ(fileValue(), QStringLiteral("87"));
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(frmJpegQtyTest, Ok_KeepsEveryOtherLineOfTheSettingsFile)
{
    const QByteArray before = dir.read(QStringLiteral("Tavix.Ini"));
    open();
    slider()->setValue(11);

    click("cmdOK");

    const QByteArray after = dir.read(QStringLiteral("Tavix.Ini"));
    QList<QByteArray> beforeLines = before.split('\n');
    QList<QByteArray> afterLines = after.split('\n');
    ASSERT_EQ(beforeLines.size(), afterLines.size());
    int changed = 0;
    for (int i = 0; i < beforeLines.size(); ++i) {
        if (beforeLines[i] != afterLines[i]) {
            ++changed;
            EXPECT_EQ(afterLines[i], QByteArray("JPEGQTY=11\r"));
        }
    }
    EXPECT_EQ(changed, 1);
}

TEST_F(frmJpegQtyTest, Ok_StoresTheSmallestAndLargestQuality)
{
    for (const int value : {10, 100}) {
        open();
        slider()->setValue(value);

        click("cmdOK");

        EXPECT_EQ(settings.JPEGQTY, value);
        EXPECT_EQ(fileValue(), QString::number(value));
    }
}

TEST_F(frmJpegQtyTest, Cancel_ChangesNeitherSettingsNorTheFile)
{
    const QByteArray before = dir.read(QStringLiteral("Tavix.Ini"));
    open();
    slider()->setValue(99);

    click("cmdCancel");

    EXPECT_EQ(settings.JPEGQTY, 42);
    EXPECT_EQ(dir.read(QStringLiteral("Tavix.Ini")), before);
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(frmJpegQtyTest, Escape_Cancels)
{
    open();
    slider()->setValue(99);

    QTest::keyClick(dialog.get(), Qt::Key_Escape);

    EXPECT_EQ(settings.JPEGQTY, 42);
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
}

TEST_F(frmJpegQtyTest, Ok_LogsTheProgramsLine_WhenTheSettingsFileCannotBeWritten)
{
    SettingsFile missing{dir.file(QStringLiteral("gone/Tavix.Ini")), log};
    dialog = std::make_unique<frmJpegQty>(settings, missing, messages, log);
    dialog->show();
    slider()->setValue(55);

    click("cmdOK");

    EXPECT_EQ(settings.JPEGQTY, 55);  // kept for the write at exit
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_TRUE(dir.read(QStringLiteral("Error.Log")).contains("[Key]=JPEGQTY,[Value]=55"));
}
