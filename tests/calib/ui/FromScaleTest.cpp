#include "calib/CalibrationController.h"
#include "calib/ProofTable.h"
#include "calib/ui/ScaleLineView.h"
#include "calib/ui/frmProofConfig.h"
#include "camera/sim/SimScene.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "FakeResultTable.h"
#include "FakeScaleBar.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "SimStill.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <memory>

using namespace tavix;
using namespace tavix::test;

namespace {

// "From scale" in the real calibration dialog, on a 1280x1024 still.
class FromScale : public ::testing::Test {
protected:
    frmProofConfig& open(const QImage& still)
    {
        controller.startProcedure();
        dialog = std::make_unique<frmProofConfig>(controller, messages, log);
        dialog->setStill(still);
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
    QLabel* report() { return find<QLabel>("lblFromScale"); }

    // Drags a line on the dialog's picture between two scene points (um).
    void drag(QPointF fromUm, QPointF toUm)
    {
        QTest::mouseClick(find<QPushButton>("cmdFromScale"), Qt::LeftButton);
        auto* view = find<ScaleLineView>("picFromScale");
        ASSERT_TRUE(view->isVisible());
        const QPoint a = view->toWidget(scenePixel(still, fromUm)).toPoint();
        const QPoint b = view->toWidget(scenePixel(still, toUm)).toPoint();
        QTest::mousePress(view, Qt::LeftButton, {}, a);
        QTest::mouseMove(view, (a + b) / 2);
        QTest::mouseRelease(view, Qt::LeftButton, {}, b);
    }

    QImage still = simStill(kMode1280);
    double truth = SimScene::micrometresPerPixel(still.size());
    const SimScene::Geometry& g = SimScene::geometry();
    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    ProofTable table;
    Settings settings;
    MessageTable messages = shippedMessages();
    ScriptedPrompter prompter;
    FakeResultTable results;
    FakeScaleBar scaleBar;
    CalibrationController controller{
        table, settings, messages, prompter, results, scaleBar, dir.file(QStringLiteral("Proof.dat"))};
    std::unique_ptr<frmProofConfig> dialog;
};

TEST_F(FromScale, WithoutAStill_TheButtonIsOff)
{
    open(QImage());
    EXPECT_FALSE(find<QPushButton>("cmdFromScale")->isEnabled());
    EXPECT_EQ(find<QLineEdit>("txtDivision")->text(), QStringLiteral("10"));
}

TEST_F(FromScale, LineAlongTheHorizontalScale_FillsTheXFactor_AndOkSavesIt)
{
    open(still);
    const SimScene::Scale& s = g.horizontalScale;
    const double y = s.zero.y() - s.shortTick / 2;
    drag({s.zero.x() - 5, y}, {s.zero.x() + s.length + 5, y});
    EXPECT_NEAR(controller.buffer().XFactor / truth - 1, 0.0, 0.0005);
    EXPECT_EQ(controller.buffer().YFactor, 0.0);
    EXPECT_EQ(find<QLabel>("lblValue(0)")->text(), QStringLiteral("1000"));
    EXPECT_TRUE(report()->text().contains(messages(24020, 100))) << report()->text().toStdString();
    QTest::mouseClick(find<QPushButton>("cmdOK"), Qt::LeftButton);
    EXPECT_NEAR(table.at(settings.CURRENTPROOFNO).XFactor / truth - 1, 0.0, 0.0005);
}

TEST_F(FromScale, LineAlongTheVerticalScale_FillsTheYFactor)
{
    open(still);
    const SimScene::Scale& s = g.verticalScale;
    const double x = s.zero.x() - s.shortTick / 2;
    drag({x, s.zero.y() - 5}, {x, s.zero.y() + s.length + 5});
    EXPECT_NEAR(controller.buffer().YFactor / truth - 1, 0.0, 0.0005);
    EXPECT_EQ(controller.buffer().XFactor, 0.0);
    EXPECT_EQ(find<QLabel>("lblValue(1)")->text(), QStringLiteral("500"));
}

TEST_F(FromScale, LineWithoutDivisions_IsRefusedWithAMessage)
{
    open(still);
    drag({-600, -270}, {-150, -270});
    EXPECT_EQ(report()->text(), messages(24022));
    EXPECT_EQ(controller.buffer().XFactor, 0.0);
}

TEST_F(FromScale, DivisionNotANumber_IsRefusedWithAMessage)
{
    open(still);
    auto* division = find<QLineEdit>("txtDivision");
    division->selectAll();
    QTest::keyClicks(division, QStringLiteral("abc"));
    const SimScene::Scale& s = g.horizontalScale;
    drag({s.zero.x(), s.zero.y() - 10}, {s.zero.x() + s.length, s.zero.y() - 10});
    EXPECT_EQ(report()->text(), messages(24023));
    EXPECT_EQ(controller.buffer().XFactor, 0.0);
}

// A division typed in another unit scales the factor with it.
TEST_F(FromScale, DivisionOfAHundredthMillimetre_GivesMillimetresPerPixel)
{
    open(still);
    auto* division = find<QLineEdit>("txtDivision");
    division->selectAll();
    QTest::keyClicks(division, QStringLiteral("0.01"));
    const SimScene::Scale& s = g.horizontalScale;
    const double y = s.zero.y() - s.shortTick / 2;
    drag({s.zero.x() - 5, y}, {s.zero.x() + s.length + 5, y});
    EXPECT_NEAR(controller.buffer().XFactor / (truth / 1000) - 1, 0.0, 0.0005);
}

}  // namespace
