#include "MeasuringFixture.h"
#include "SimStill.h"
#include "camera/sim/SimScene.h"
#include "common/CommandTips.h"
#include "measure/ui/frmCaliperProfile.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QFile>
#include <QLineEdit>
#include <QShortcut>
#include <QTest>

using namespace tavix;
using tavix::test::Measuring;

namespace {

const SimScene::Geometry& g = SimScene::geometry();

class CaliperWindow : public Measuring {
protected:
    // The still at x 0.5: the whole slide in view.
    void startHalf()
    {
        start();
        zoom("x 0.5");
    }
    PointD scene(QPointF um) { return test::scenePixel(w->camera().still(), um); }
    double umPerPixel() { return SimScene::micrometresPerPixel(w->camera().still().size()); }
    // The shipped entry 0 counts 0.5 MIC a pixel.
    double inUnits(double um) { return um / umPerPixel() * 0.5; }

    void drag(PointD from, PointD to)
    {
        QTest::mousePress(still(), Qt::LeftButton, {}, at(from.x, from.y));
        QTest::mouseMove(still(), at((from.x + to.x) / 2, (from.y + to.y) / 2));
        QTest::mouseMove(still(), at(to.x, to.y));
        QTest::mouseRelease(still(), Qt::LeftButton, {}, at(to.x, to.y));
    }

    // Across the rectangle at half its height, from outside to outside.
    void dragAcrossRectangle()
    {
        const double y = (g.rectangle[0].y() + g.rectangle[3].y()) / 2;
        drag(scene({g.rectangle[0].x() - 40, y}), scene({g.rectangle[1].x() + 40, y}));
    }

    CaliperPlot* plot() { return find<CaliperPlot>("picCaliperProfile"); }
    QString guidanceLine() { return find<QLineEdit>("txtComment(0)")->text(); }
};

TEST_F(CaliperWindow, Drag_AcrossTheRectangle_AddsItsWidthInCalibratedUnits)
{
    startHalf();
    tool(7);
    EXPECT_EQ(guidanceLine(), w->data().guidance.line(80, 0));
    dragAcrossRectangle();
    ASSERT_EQ(results().count(), 1);
    EXPECT_EQ(cell(1, 1), message(27102));
    EXPECT_EQ(cell(1, 1), QStringLiteral("Caliper width"));
    EXPECT_NEAR(results().value(1), inUnits(200), 0.05 * 0.5);
    EXPECT_EQ(w->measuring().store().at(0).measurement.tool, 110);
    EXPECT_EQ(guidanceLine(), w->data().guidance.line(80, 0));
}

TEST_F(CaliperWindow, TwoClicks_AcrossTheRectangle_MeasureItsHeight)
{
    startHalf();
    tool(7);
    const double x = (g.rectangle[0].x() + g.rectangle[1].x()) / 2;
    const PointD top = scene({x, g.rectangle[0].y() - 40});
    const PointD bottom = scene({x, g.rectangle[3].y() + 30});
    click(top.x, top.y);
    EXPECT_EQ(results().count(), 0);
    EXPECT_EQ(guidanceLine(), w->data().guidance.line(81, 0));
    click(bottom.x, bottom.y);
    ASSERT_EQ(results().count(), 1);
    EXPECT_NEAR(results().value(1), inUnits(100), 0.05 * 0.5);
}

TEST_F(CaliperWindow, LineWithoutEdges_AddsNoRow_AndTheGuidanceSaysSo)
{
    startHalf();
    tool(7);
    drag(scene({100, 250}), scene({300, 250}));  // the bare slide
    EXPECT_EQ(results().count(), 0);
    EXPECT_EQ(guidanceLine(), w->data().guidance.line(83, 0));
}

// The profile window shows both sides of each of the five grey patches; a
// click on the left side of the first patch and one on its right side adds
// the patch's width, 80 um.
TEST_F(CaliperWindow, ProfileWindow_ShowsTheEdges_AndAPickedPairAddsItsRow)
{
    startHalf();
    tool(7);
    const auto& patches = g.greyPatches;
    const double y = patches[0].rect.center().y();
    drag(scene({patches[0].rect.left() - 20, y}), scene({patches[4].rect.right() + 20, y}));
    ASSERT_EQ(results().count(), 1);
    // The last patch is only a tenth darker than the slide: its side has less slope against the noise.
    EXPECT_NEAR(results().value(1), inUnits(patches[4].rect.right() - patches[0].rect.left()), 0.1 * 0.5);
    ASSERT_TRUE(plot());
    ASSERT_TRUE(plot()->isVisible());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(plot()->window()));
    ASSERT_EQ(plot()->profile().edges.size(), 10u);
    EXPECT_EQ(plot()->pair(), std::make_pair(0, 9));

    QTest::mouseClick(plot(), Qt::LeftButton, {}, plot()->edgePoint(0).toPoint());
    EXPECT_EQ(results().count(), 1);
    QTest::mouseClick(plot(), Qt::LeftButton, {}, plot()->edgePoint(1).toPoint());
    ASSERT_EQ(results().count(), 2);
    EXPECT_EQ(cell(2, 1), message(27102));
    EXPECT_NEAR(results().value(2), inUnits(patches[0].rect.width()), 0.05 * 0.5);
    EXPECT_EQ(plot()->pair(), std::make_pair(0, 1));
    EXPECT_EQ(w->measuring().store().size(), 2);

    // A new still puts the window away: its line belongs to the old picture.
    QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);
    EXPECT_FALSE(plot()->isVisible());
}

TEST_F(CaliperWindow, OneClick_InsideEachDisc_AddsDiameterAndCentre)
{
    startHalf();
    tool(8);
    EXPECT_EQ(guidanceLine(), w->data().guidance.line(82, 0));
    int row = 1;
    for (const SimScene::Circle& disc : {g.largeCircle, g.smallCircle}) {
        const PointD inside = scene(disc.centre + QPointF(disc.diameter / 5, -disc.diameter / 8));
        click(inside.x, inside.y);
        ASSERT_EQ(results().count(), row + 2);
        EXPECT_EQ(cell(row, 1), message(11133));
        EXPECT_EQ(cell(row + 1, 1), QStringLiteral("Circle centre x"));
        EXPECT_EQ(cell(row + 2, 1), QStringLiteral("Circle centre y"));
        const PointD centre = scene(disc.centre);
        EXPECT_NEAR(results().value(row), inUnits(disc.diameter), 0.05 * 0.5);
        EXPECT_NEAR(results().value(row + 1), centre.x * 0.5, 0.05 * 0.5);
        EXPECT_NEAR(results().value(row + 2), centre.y * 0.5, 0.05 * 0.5);
        row += 3;
    }
    EXPECT_EQ(w->measuring().store().size(), 2);
}

// Edge snap would put a click near the rim onto the rim; the one-click circle
// takes the click as it is and still finds the disc.
TEST_F(CaliperWindow, OneClick_NearTheRim_WithEdgeSnapOn_StillFindsTheDisc)
{
    startHalf();
    auto* snap = find<QCheckBox>("chkEdgeSnap");
    QTest::mouseClick(snap, Qt::LeftButton, {}, QPoint(8, snap->height() / 2));
    ASSERT_TRUE(snap->isChecked());
    tool(8);
    const SimScene::Circle& disc = g.largeCircle;
    const PointD nearRim = scene(disc.centre + QPointF(disc.diameter / 2 - 6 * umPerPixel(), 0));
    click(nearRim.x, nearRim.y);
    ASSERT_EQ(results().count(), 3);
    EXPECT_NEAR(results().value(1), inUnits(disc.diameter), 0.05 * 0.5);
}

TEST_F(CaliperWindow, NoCircleAroundTheClick_AddsNoRow_AndTheGuidanceSaysSo)
{
    startHalf();
    tool(8);
    const PointD bare = scene({100, 250});
    click(bare.x, bare.y);
    EXPECT_EQ(results().count(), 0);
    EXPECT_EQ(guidanceLine(), w->data().guidance.line(84, 0));
}

TEST_F(CaliperWindow, ToolButtons_HaveCaptionsTipsAndShortcuts)
{
    start();
    auto* caliper = find<QToolButton>("cmdMeasure(7)");
    auto* circle = find<QToolButton>("cmdMeasure(8)");
    EXPECT_EQ(caliper->text(), message(27100));
    EXPECT_EQ(circle->text(), message(27101));
    EXPECT_EQ(caliper->toolTip(), message(27110) + QStringLiteral(" (Ctrl+L)"));
    EXPECT_EQ(circle->toolTip(), message(27111) + QStringLiteral(" (Ctrl+D)"));
    // Another tool's click leaves their tips alone.
    tool(0);
    EXPECT_EQ(caliper->toolTip(), message(27110) + QStringLiteral(" (Ctrl+L)"));

    auto* shortcut = w->findChild<QShortcut*>(QStringLiteral("shortcut:Ctrl+L"));
    ASSERT_NE(shortcut, nullptr);
    emit shortcut->activated();
    EXPECT_TRUE(caliper->isChecked());
    EXPECT_EQ(w->measuring().toolNumber(), 110);
    shortcut = w->findChild<QShortcut*>(QStringLiteral("shortcut:Ctrl+D"));
    ASSERT_NE(shortcut, nullptr);
    emit shortcut->activated();
    EXPECT_TRUE(circle->isChecked());
    EXPECT_EQ(w->measuring().toolNumber(), 111);
}

// Both are drawn into a picture saved with its measurements, and saved in the
// result file like every other row.
TEST_F(CaliperWindow, SavedPictureAndResultFile_HoldBothTools)
{
    startHalf();
    tool(7);
    dragAcrossRectangle();
    tool(8);
    const PointD inside = scene(g.smallCircle.centre);
    click(inside.x, inside.y);
    ASSERT_EQ(results().count(), 4);

    ASSERT_TRUE(find<QCheckBox>("chkMeasureSave")->isChecked());
    const QString picture = dir.file(QStringLiteral("measured.bmp"));
    prompter.fileNames.push_back(picture);
    QTest::mouseClick(find<QPushButton>("cmdPicSave"), Qt::LeftButton);
    const QImage saved(picture);
    ASSERT_FALSE(saved.isNull());
    const auto red = [&](PointD p) {
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (saved.pixel(static_cast<int>(p.x) + dx, static_cast<int>(p.y) + dy) == qRgb(255, 0, 0))
                    return true;
        return false;
    };
    const Measurement& caliper = w->measuring().store().at(0).measurement;
    ASSERT_FALSE(caliper.shape.lines.empty());
    EXPECT_TRUE(red(CalcModule::CalcMidPoint(caliper.shape.lines[0].a, caliper.shape.lines[0].b)));
    const double r = g.smallCircle.diameter / 2 / umPerPixel();
    EXPECT_TRUE(red({inside.x + r, inside.y}));
    EXPECT_FALSE(red({inside.x + r + 8, inside.y}));

    const QString csv = dir.file(QStringLiteral("results.csv"));
    prompter.fileNames.push_back(csv);
    prompter.answers.push_back(Prompter::Answer::Ok);  // "saved"
    QTest::mouseClick(find<QPushButton>("cmdResultSave"), Qt::LeftButton);
    QFile file(csv);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');
    ASSERT_GE(lines.size(), 4);
    const QString unit = cell(1, 3);
    EXPECT_EQ(QString::fromUtf8(lines[0]).trimmed(),
              QStringLiteral("1,Caliper width,%1,%2").arg(cell(1, 2), unit));
    EXPECT_EQ(QString::fromUtf8(lines[1]).trimmed(),
              QStringLiteral("2,%1,%2,%3").arg(message(11133), cell(2, 2), unit));
    EXPECT_TRUE(lines[2].startsWith("3,Circle centre x,"));
    EXPECT_TRUE(lines[3].startsWith("4,Circle centre y,"));
}

}  // namespace
