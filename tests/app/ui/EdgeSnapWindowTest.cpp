#include "MeasuringFixture.h"
#include "SimStill.h"
#include "camera/sim/SimScene.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QPushButton>
#include <QTest>

using namespace tavix;
using tavix::test::Measuring;

namespace {

class EdgeSnapWindow : public Measuring {
protected:
    QCheckBox* snapBox() { return find<QCheckBox>("chkEdgeSnap"); }
    void toggleSnap()
    {
        QTest::mouseClick(snapBox(), Qt::LeftButton, {}, QPoint(8, snapBox()->height() / 2));
    }
    // The large disc's left and right edges on the still, in picture pixels.
    std::pair<PointD, PointD> discEnds()
    {
        const SimScene::Circle& c = SimScene::geometry().largeCircle;
        const QImage& still = w->camera().still();
        return {test::scenePixel(still, c.centre - QPointF(c.diameter / 2, 0)),
                test::scenePixel(still, c.centre + QPointF(c.diameter / 2, 0))};
    }
};

TEST_F(EdgeSnapWindow, CheckBox_IsOffByDefault_AndShowsItsCaption)
{
    start();
    EXPECT_FALSE(snapBox()->isChecked());
    EXPECT_EQ(snapBox()->text(), message(40040));
    EXPECT_EQ(w->data().settings.EDGESNAP, 0);
}

TEST_F(EdgeSnapWindow, CheckBox_IsKeptInTheSettingsFile)
{
    start();
    toggleSnap();
    EXPECT_EQ(w->data().settings.EDGESNAP, 1);
    prompter.answers.push_back(Prompter::Answer::Yes);
    QTest::mouseClick(find<QPushButton>("cmdExit"), Qt::LeftButton);
    w.reset();
    EXPECT_TRUE(
        QString::fromUtf8(dir.read(QStringLiteral("Tavix.Ini"))).contains(QStringLiteral("EDGESNAP=1")));
    start();
    EXPECT_TRUE(snapBox()->isChecked());
}

// Clicks 2.6 px outside the large disc, at the zoom x 2.0: with the snap the
// distance is the disc's diameter; without it, the diameter and the offsets.
TEST_F(EdgeSnapWindow, SnappedTwoPointDistance_ThroughTheMouse_IsTheDiscsDiameter)
{
    start();
    zoom("x 2.0");
    const auto [left, right] = discEnds();
    const double umPerPixel = SimScene::micrometresPerPixel(w->camera().still().size());
    // The shipped entry 0 counts 0.5 MIC a pixel: the value is in those units.
    const double truth = SimScene::geometry().largeCircle.diameter / umPerPixel * 0.5;
    tool(0);
    click(left.x - 2.6, left.y);
    click(right.x + 2.6, right.y);
    toggleSnap();
    tool(0);
    click(left.x - 2.6, left.y);
    click(right.x + 2.6, right.y);
    ASSERT_EQ(results().count(), 2);
    // The view rounds the pointer to whole screen pixels: half a picture pixel at x 2.0.
    EXPECT_NEAR(results().value(1), truth + 5.2 * 0.5, 0.5);
    EXPECT_NEAR(results().value(2), truth, 0.05 * 0.5);
}

// While the pointer moves, the preview marks where a release would land.
TEST_F(EdgeSnapWindow, Preview_MarksTheSnappedPoint)
{
    start();
    toggleSnap();
    tool(0);
    const auto [left, right] = discEnds();
    Shape seen;
    QObject::connect(&w->measuring(), &MeasureSession::previewChanged, [&](const Shape& s) { seen = s; });
    QTest::mouseMove(still(), at(left.x - 2.5, left.y));
    ASSERT_EQ(seen.marks.size(), 1u);
    EXPECT_NEAR(seen.marks[0].x, left.x, 0.05);
    click(left.x - 2.5, left.y);
    QTest::mouseMove(still(), at(right.x + 2.5, right.y));
    ASSERT_FALSE(seen.lines.empty());
    EXPECT_NEAR(seen.lines[0].a.x, left.x, 0.05);
    EXPECT_NEAR(seen.lines[0].b.x, right.x, 0.05);
}

}  // namespace
