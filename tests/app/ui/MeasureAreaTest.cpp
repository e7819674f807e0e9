#include "ScriptedPrompter.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "calib/ProofTable.h"
#include "camera/sim/SimCamera.h"
#include "common/Clock.h"
#include "measure/ui/MeasurePanel.h"

#include <gtest/gtest.h>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QToolButton>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

class MeasureArea : public ::testing::Test {
protected:
    void SetUp() override
    {
        test::copyShippedData(dir);
        auto factory = [](AppData& data) {
            data.settings.CURRENTPROOFNO = 0;
            return std::unique_ptr<CameraDriver>(std::make_unique<SimCamera>());
        };
        w = std::make_unique<frmMain>(dir.path(), prompter, clock, factory);
        ASSERT_TRUE(w->Form_Load());
        w->show();
    }

    template <typename T>
    T* find(QWidget& parent, const char* name)
    {
        T* widget = parent.findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    // Drives the next dialog the panel opens with `drive` instead of a modal loop.
    void onDialog(std::function<void(QDialog&)> drive)
    {
        w->measure().setDialogRunner([drive](QDialog& d) {
            d.show();
            drive(d);
            return d.result();
        });
    }

    TempDir dir;
    ScriptedPrompter prompter;
    SystemClock clock;
    std::unique_ptr<frmMain> w;
};

}  // namespace

TEST_F(MeasureArea, MeasureSettingsOk_ChangesToolCaptionsAndValueFormat)
{
    onDialog([this](QDialog& d) {
        auto* decimals = find<QComboBox>(d, "cboDec");
        decimals->setCurrentIndex(decimals->findText(QStringLiteral("3")));
        QTest::mouseClick(find<QRadioButton>(d, "opt2PointCommand(1)"), Qt::LeftButton);
        QTest::mouseClick(find<QRadioButton>(d, "optAngleCommand(1)"), Qt::LeftButton);
        QTest::mouseClick(find<QPushButton>(d, "cmdOK"), Qt::LeftButton);
    });
    w->measure().cmdMeasureConfig_Click();
    EXPECT_EQ(w->data().settings.NUMBEROFDECIMALS, 3);
    EXPECT_EQ(w->data().valueFormat, QStringLiteral("0.000"));
    EXPECT_EQ(find<QToolButton>(*w, "cmdMeasure(0)")->text(), w->data().messages.text(10112));
    EXPECT_EQ(find<QToolButton>(*w, "cmdMeasure(5)")->text(), w->data().messages.text(10110));
}

TEST_F(MeasureArea, MeasureSettingsCancel_ChangesNothing)
{
    onDialog([this](QDialog& d) {
        find<QComboBox>(d, "cboDec")->setCurrentIndex(5);
        QTest::mouseClick(find<QPushButton>(d, "cmdCancel"), Qt::LeftButton);
    });
    w->measure().cmdMeasureConfig_Click();
    EXPECT_EQ(w->data().settings.NUMBEROFDECIMALS, 2);
    EXPECT_EQ(w->data().valueFormat, QStringLiteral("0.00"));
}

TEST_F(MeasureArea, CalibrationOk_RenamesTheEntryInTheListAndTheFile)
{
    onDialog([this](QDialog& d) {
        auto* name = find<QLineEdit>(d, "txtName");
        name->selectAll();
        QTest::keyClicks(name, QStringLiteral("Objective 10x"));
        auto* unit = find<QComboBox>(d, "cboUnit");
        unit->setCurrentIndex(unit->findText(QStringLiteral("mm")));
        QTest::mouseClick(find<QPushButton>(d, "cmdOK"), Qt::LeftButton);
    });
    w->setCommandAreaEnabled(find<QWidget>(*w, "picMeasureCommandArea"), true);  // as on a still
    QTest::mouseClick(find<QPushButton>(*w, "cmdProofConfig"), Qt::LeftButton);
    EXPECT_EQ(find<QComboBox>(*w, "cboProof")->itemText(0), QStringLiteral("Objective 10x"));
    ProofTable reread;
    ASSERT_TRUE(reread.ReadProofData(dir.file(QStringLiteral("Proof.dat"))));
    EXPECT_EQ(reread.at(0).Name, QStringLiteral("Objective 10x"));
    EXPECT_EQ(reread.at(0).Unit, QStringLiteral("mm"));
    EXPECT_EQ(reread.at(0).XFactor, 0.5);
}

TEST_F(MeasureArea, SelectingAnotherEntry_WithUnsavedResults_AsksAndNoKeepsTheSelection)
{
    w->measure().results().addResult(QStringLiteral("Distance"), 12.5, QStringLiteral("MIC"));
    auto* proof = find<QComboBox>(*w, "cboProof");
    prompter.answers.push_back(Prompter::Answer::No);
    proof->setCurrentIndex(3);
    emit proof->activated(3);
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(20000));
    EXPECT_EQ(prompter.messages[0].title, w->data().messages.text(11000));
    EXPECT_EQ(proof->currentIndex(), 0);
    EXPECT_EQ(w->data().settings.CURRENTPROOFNO, 0);
    EXPECT_EQ(w->measure().results().count(), 1);

    prompter.answers.push_back(Prompter::Answer::Yes);
    proof->setCurrentIndex(3);
    emit proof->activated(3);
    EXPECT_EQ(w->data().settings.CURRENTPROOFNO, 3);
    EXPECT_EQ(w->measure().results().count(), 0);
}
