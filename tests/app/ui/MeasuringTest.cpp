#include "MarkedLengthDialogs.h"
#include "MeasuringFixture.h"
#include "app/frmMain.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/Clock.h"
#include "measure/MeasureSession.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTest>
#include <QToolButton>
#include <cmath>

using namespace tavix;
using tavix::test::Measuring;

// The first entry of the shipped calibration file: 0.5 MIC per pixel on both axes.
struct ToolCase {
    const char* name;
    int button;
    std::vector<std::pair<double, double>> clicks;
    bool endWithDoubleClick;
    int kindCaption;
    const char* value;
    int unitCaption;  // 0: the calibration unit MIC; else the fixed unit's caption, -1: "MIC²"
};

class MeasuringEachTool : public Measuring, public ::testing::WithParamInterface<ToolCase> {};

TEST_P(MeasuringEachTool, ClicksOnTheStillGiveTheRow)
{
    start();
    const ToolCase& c = GetParam();
    tool(c.button);
    for (size_t i = 0; i < c.clicks.size(); ++i) {
        const auto [x, y] = c.clicks[i];
        if (c.endWithDoubleClick && i + 1 == c.clicks.size())
            doubleClick(x, y);
        else
            click(x, y);
    }
    ASSERT_GE(results().count(), 1);
    EXPECT_EQ(cell(1, 0), QStringLiteral("1"));
    EXPECT_EQ(cell(1, 1), message(c.kindCaption));
    EXPECT_EQ(cell(1, 2), QLatin1String(c.value));
    if (c.unitCaption >= 0) {
        EXPECT_EQ(cell(1, 3), c.unitCaption ? message(c.unitCaption) : QStringLiteral("MIC"));
    } else {
        EXPECT_EQ(cell(1, 3), QStringLiteral("MIC") + QChar(0x00B2));
    }
    EXPECT_EQ(w->measuring().store().size(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Tools, MeasuringEachTool,
    ::testing::Values(
        ToolCase{"TwoPoint", 0, {{100, 100}, {400, 500}}, false, 11132, "250.00", 0},
        ToolCase{"Circle", 1, {{200, 100}, {400, 300}, {200, 500}}, false, 11133, "200.00", 0},
        ToolCase{"CircleToCircle",
                 2,
                 {{200, 300}, {300, 200}, {400, 300}, {650, 300}, {700, 250}, {750, 300}},
                 false,
                 11135,
                 "200.00",
                 0},
        ToolCase{"Perpendicular", 3, {{100, 100}, {500, 100}, {300, 250}}, false, 11137, "75.00", 0},
        ToolCase{"Area", 4, {{100, 100}, {300, 100}, {300, 200}, {100, 200}}, true, 11138, "5000.00", -1},
        ToolCase{"Angle", 5, {{100, 300}, {500, 300}, {300, 100}, {300, 500}}, false, 11134, "90.00", 11142},
        ToolCase{"PointCount", 6, {{100, 100}, {200, 200}, {300, 300}}, true, 11130, "3.00", 11131}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(Measuring, PointCount_ShowsItsUnitCaption)
{
    start();
    tool(6);
    click(100, 100);
    doubleClick(300, 300);
    ASSERT_EQ(results().count(), 1);
    EXPECT_EQ(cell(1, 2), QStringLiteral("2.00"));  // every value takes the value format
    EXPECT_EQ(cell(1, 3), message(11131));
}

TEST_F(Measuring, CircleToCircle_GivesCentreDistanceAndEdgeGap)
{
    start();
    tool(2);
    for (auto [x, y] : std::vector<std::pair<double, double>>{
             {200, 300}, {300, 200}, {400, 300}, {650, 300}, {700, 250}, {750, 300}})
        click(x, y);
    ASSERT_EQ(results().count(), 2);
    EXPECT_EQ(cell(2, 1), message(11136));
    EXPECT_EQ(cell(2, 2), QStringLiteral("125.00"));
}

TEST_F(Measuring, WholeCircles_AreDrawnAs32Segments)
{
    start();
    tool(1);
    click(200, 100);
    click(400, 300);
    click(200, 500);
    tool(2);
    for (auto [x, y] : std::vector<std::pair<double, double>>{
             {200, 300}, {300, 200}, {400, 300}, {650, 300}, {700, 250}, {750, 300}})
        click(x, y);
    const MeasurementStore& store = w->measuring().store();
    ASSERT_EQ(store.size(), 2);
    std::vector<std::size_t> pointCounts;
    for (const MeasurementStore::Entry& entry : store.entries())
        for (const std::vector<PointD>& line : entry.measurement.shape.polylines) {
            pointCounts.push_back(line.size());
            EXPECT_EQ(line.front(), line.back());
        }
    EXPECT_EQ(pointCounts, (std::vector<std::size_t>{33, 33, 33}));
}

TEST_F(Measuring, LineToPointAndArcAndFiveClickAngle_FollowTheirModes)
{
    start();
    Settings& s = w->data().settings;
    s._2POINTCOMMANDMODE = 1;
    s.CIRCLEARCSELECT = 1;
    s.ANGLECOMMANDMODE = 1;
    tool(0);
    EXPECT_EQ(w->measuring().toolNumber(), 108);
    click(100, 100);
    click(500, 100);
    click(300, 400);
    tool(1);
    EXPECT_EQ(w->measuring().toolNumber(), 109);
    click(500, 300);
    click(300, 100);
    click(100, 300);
    tool(5);
    EXPECT_EQ(w->measuring().toolNumber(), 107);
    click(100, 300);
    click(500, 300);
    click(300, 100);
    click(300, 500);
    click(400, 200);  // inside the angle between the first line's right arm and the second's upper arm
    ASSERT_EQ(results().count(), 3);
    EXPECT_EQ(cell(1, 2), QStringLiteral("150.00"));
    EXPECT_EQ(cell(2, 1), message(11141));
    EXPECT_EQ(cell(2, 2), QStringLiteral("180.00"));
    EXPECT_EQ(cell(3, 2), QStringLiteral("90.00"));
}

TEST_F(Measuring, CollinearPoints_GiveNoCircleAndNoRow)
{
    start();
    tool(1);
    click(100, 100);
    click(200, 200);
    click(300, 300);
    EXPECT_EQ(results().count(), 0);
    EXPECT_EQ(w->measuring().store().size(), 0);
}

TEST_F(Measuring, RightClick_CancelsTheMeasurementInProgress)
{
    start();
    tool(0);
    click(100, 100);
    QTest::mouseClick(still(), Qt::RightButton, {}, at(200, 200));
    click(100, 100);
    click(100, 300);
    ASSERT_EQ(results().count(), 1);
    EXPECT_EQ(cell(1, 2), QStringLiteral("100.00"));
}

TEST_F(Measuring, Guidance_FollowsTheClicks)
{
    start();
    tool(0);
    EXPECT_EQ(find<QLineEdit>("txtComment(0)")->text(), w->data().guidance.line(32, 0));
    click(100, 100);
    EXPECT_EQ(find<QLineEdit>("txtComment(0)")->text(), w->data().guidance.line(33, 0));
}

TEST_F(Measuring, Zoom_ConvertsTheViewToPicturePixels)
{
    start();
    zoom("x 2.0");
    tool(0);
    click(100, 100);
    click(100, 300);  // 200 picture pixels, 400 on the screen
    ASSERT_EQ(results().count(), 1);
    EXPECT_EQ(cell(1, 2), QStringLiteral("100.00"));
}

TEST_F(Measuring, SavedFile_HoldsOneLinePerResult)
{
    prompter.answers = {Prompter::Answer::Ok};
    start();
    tool(0);
    for (int i = 1; i <= 3; ++i) {
        click(100, 100);
        click(100, 100 + 100 * i);
    }
    const QString path = dir.file(QStringLiteral("results.csv"));
    prompter.fileNames.push_back(path);
    QTest::mouseClick(find<QPushButton>("cmdResultSave"), Qt::LeftButton);
    const QString kind = message(11132);
    EXPECT_EQ(QString::fromUtf8(dir.read(QStringLiteral("results.csv"))),
              QStringLiteral("1,%1,50.00,MIC\r\n2,%1,100.00,MIC\r\n3,%1,150.00,MIC\r\n").arg(kind));
    EXPECT_FALSE(results().unsaved());
}

TEST_F(Measuring, KeepResult_GreysKeptRowsAndContinuesNumbering)
{
    start();
    QTest::mouseClick(find<QCheckBox>("chkKeepResult"), Qt::LeftButton, {}, QPoint(8, 10));
    ASSERT_EQ(w->data().settings.KEEPRESULT, 1);
    tool(0);
    click(100, 100);
    click(100, 200);
    QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);  // live
    freeze();
    EXPECT_EQ(results().count(), 1);
    EXPECT_EQ(results().rowColor(1), ResultTable::keptColor());
    tool(0);
    click(100, 100);
    click(100, 300);
    ASSERT_EQ(results().count(), 2);
    EXPECT_EQ(cell(2, 0), QStringLiteral("2"));
    EXPECT_EQ(results().rowColor(2), ResultTable::currentColor());
}

TEST_F(Measuring, WithoutKeepResult_ANewStillEmptiesTheTable)
{
    start();
    tool(0);
    click(100, 100);
    click(100, 200);
    QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);
    freeze();
    EXPECT_EQ(results().count(), 0);
    EXPECT_EQ(w->measuring().store().size(), 0);
}

TEST_F(Measuring, SelectingARow_HighlightsItsMeasurement)
{
    start();
    tool(0);
    click(100, 100);
    click(100, 200);
    click(300, 100);
    click(300, 200);
    std::vector<int> highlighted;
    QObject::connect(&w->measuring(), &MeasureSession::highlightChanged,
                     [&](const std::vector<int>& indexes) { highlighted = indexes; });
    find<QTableView>("grdResult")->selectRow(1);
    EXPECT_EQ(highlighted, std::vector<int>{1});
}

namespace {

// Grey level of a picture pixel.
double grey(const QImage& image, int x, int y)
{
    return qGray(image.pixel(x, y));
}

// The centre of the dark tick near x along row y (darkness-weighted).
double tickCentre(const QImage& image, double nearX, int y)
{
    double weight = 0;
    double sum = 0;
    const double background = grey(image, static_cast<int>(nearX) + 12, y);
    for (int x = static_cast<int>(nearX) - 8; x <= static_cast<int>(nearX) + 8; ++x) {
        const double dark = std::max(0.0, background - grey(image, x, y));
        weight += dark;
        sum += dark * (x + 0.5);
    }
    return sum / weight;
}

// Where the grey level crosses the middle between inside and outside, walking
// from `inside` outwards along a direction, with linear interpolation.
double edge(const QImage& image, QPointF inside, QPointF direction, double maxSteps)
{
    const double in = grey(image, static_cast<int>(inside.x()), static_cast<int>(inside.y()));
    const QPointF farOut = inside + direction * maxSteps;
    const double out = grey(image, static_cast<int>(farOut.x()), static_cast<int>(farOut.y()));
    const double middle = (in + out) / 2;
    double previous = in;
    for (int step = 1; step < maxSteps; ++step) {
        const QPointF p = inside + direction * step;
        const double g = grey(image, static_cast<int>(p.x()), static_cast<int>(p.y()));
        if ((g - middle) * (previous - middle) <= 0)
            return step - 1 + (middle - previous) / (g - previous);  // pixel centres are at +0.5 on both
        previous = g;
    }
    return maxSteps;
}

}  // namespace

TEST_F(Measuring, CalibratedOnTheMicrometer_MeasuresTheLargeDiscWithinHalfAPixel)
{
    start(8);  // 2592x1944: 0.5 um per pixel
    const QImage picture = w->camera().still();
    const SimScene::Geometry& g = SimCamera::scene();
    const QSize size = picture.size();
    auto toPixel = [&](QPointF um) { return SimScene::toPixel(size, um); };

    // Mark 100 um on the micrometer: the centres of the ticks at 0 and 100,
    // along a row crossing only the long ticks.
    const double rowY = toPixel(g.horizontalScale.zero - QPointF(0, 40)).y();
    const double x0 = tickCentre(picture, toPixel(g.horizontalScale.zero).x(), static_cast<int>(rowY));
    const double x1 =
        tickCentre(picture, toPixel(g.horizontalScale.zero + QPointF(100, 0)).x(), static_cast<int>(rowY));

    zoom("x 4.0");  // aim at a quarter pixel
    int dialogs = 0;
    w->measure().setDialogRunner(test::markedLengthDialogs(QStringLiteral("Micrometer"), dialogs));
    QTest::mouseClick(find<QPushButton>("cmdProofConfig"), Qt::LeftButton);
    ASSERT_EQ(w->measuring().toolNumber(), 21);
    prompter.inputs.push_back(QStringLiteral("100"));
    click(x0, rowY);
    click(x1, rowY);
    ASSERT_EQ(dialogs, 2);
    ASSERT_EQ(prompter.inputPrompts.size(), 1);
    const ProofEntry& entry = w->data().proofs.at(0);
    EXPECT_EQ(entry.Name, QStringLiteral("Micrometer"));
    EXPECT_NEAR(entry.XFactor, 0.5, 0.002);
    EXPECT_EQ(entry.YFactor, entry.XFactor);

    // Three points on the large disc's edge, found in the picture.
    const QPointF centre = toPixel(g.largeCircle.centre);
    const double right = edge(picture, centre, {1, 0}, 300);
    const double up = edge(picture, centre, {0, -1}, 300);
    const double left = edge(picture, centre, {-1, 0}, 300);
    tool(1);
    click(centre.x() + right, centre.y());
    click(centre.x(), centre.y() - up);
    click(centre.x() - left, centre.y());
    ASSERT_EQ(results().count(), 1);
    const double diameter = results().value(1);
    const double halfPixel = 0.5 * SimCamera::micrometresPerPixel(8);
    EXPECT_NEAR(diameter, g.largeCircle.diameter, halfPixel) << "measured " << diameter;
}

// One measurement of every tool on one still, a row selected: the overlay and
// the table as a user sees them. With TAVIX_SCREENSHOT=file.png the window is
// also saved as a picture to look at.
TEST_F(Measuring, EveryTool_OnOneStill_WithARowHighlighted)
{
    start();
    Settings& s = w->data().settings;
    tool(0);
    click(150, 880);
    click(450, 880);
    tool(1);
    click(90, 245);
    click(176, 160);
    click(262, 245);
    tool(2);
    click(320, 245);
    click(371, 196);
    click(420, 245);
    click(560, 600);
    click(620, 540);
    click(680, 600);
    tool(3);
    click(700, 80);
    click(1100, 80);
    click(900, 200);
    QTest::keyClick(still(), Qt::Key_Escape);
    tool(4);
    click(838, 118);
    click(1037, 118);
    doubleClick(1037, 217);
    tool(5);
    click(540, 350);
    click(760, 350);
    click(540, 350);
    click(700, 220);
    tool(6);
    click(300, 700);
    click(420, 700);
    doubleClick(360, 760);
    s.CIRCLEARCSELECT = 1;
    tool(1);
    click(900, 600);
    click(1000, 500);
    click(1100, 600);
    EXPECT_GE(results().count(), 9);
    find<QTableView>("grdResult")->selectRow(1);
    QCoreApplication::processEvents();
    const QImage shot = w->grab().toImage();
    EXPECT_FALSE(shot.isNull());
    if (const QString file = qEnvironmentVariable("TAVIX_SCREENSHOT"); !file.isEmpty())
        shot.save(file);
}
