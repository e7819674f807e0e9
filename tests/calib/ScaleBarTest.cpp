#include "calib/ScaleBar.h"

#include "calib/ProofEntry.h"
#include "common/RunError.h"
#include "common/Settings.h"

#include "PrintQt.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

// A picture area of 600 x 400 pixels with a picture that fills it, a bar of
// 100 units over 200 pixels, and a label of 60 x 15 pixels.
ScaleBar::Input baseInput()
{
    ScaleBar::Input in;
    in.scaleX = 100;
    in.scaleY = 50;
    in.scaleType = ScaleBar::HorizontalOnly;
    in.scalePosition = ScaleBar::BottomRight;
    in.xFactor = 0.5;
    in.yFactor = 0.5;
    in.unit = QStringLiteral("MIC");
    in.magnification = 1.0;
    in.areaInner = QSizeF(9000, 6000);
    in.pictureBox = QRectF(0, 0, 9000, 6000);
    in.labelSize = QSizeF(900, 225);
    return in;
}

int visibleLines(const ScaleBar::Geometry& g)
{
    int n = 0;
    for (const ScaleBar::Box& b : g.lines)
        n += b.visible ? 1 : 0;
    return n;
}

int runErrorOf(const ScaleBar::Input& in)
{
    try {
        ScaleBar::compute(in);
    } catch (const RunError& e) {
        return e.number();
    }
    return 0;
}

}  // namespace

// --- lengths ---

TEST(ScaleBarTest, Compute_BarIs200Pixels_ForScaleX100FactorHalfAtMagnification1)
{
    const ScaleBar::Geometry g = ScaleBar::compute(baseInput());

    EXPECT_DOUBLE_EQ(g.lenXPixels, 200.0);
    EXPECT_DOUBLE_EQ(g.lenXTwips, 3000.0);
    EXPECT_EQ(g.lines[1].pixels.width(), 200);
    EXPECT_DOUBLE_EQ(g.lines[1].twips.width(), 3000.0);
}

TEST(ScaleBarTest, Compute_BarIs100Pixels_AtMagnificationHalf)
{
    ScaleBar::Input in = baseInput();
    in.magnification = 0.5;

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_DOUBLE_EQ(g.lenXPixels, 100.0);
    EXPECT_EQ(g.lines[1].pixels.width(), 100);
}

TEST(ScaleBarTest, Compute_VerticalLengthIsZero_WhenTypeIsHorizontalOnly)
{
    ScaleBar::Input in = baseInput();
    in.scaleY = 80;

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_DOUBLE_EQ(g.lenYPixels, 0.0);
    EXPECT_DOUBLE_EQ(g.lenYTwips, 0.0);
}

TEST(ScaleBarTest, Compute_VerticalLengthFollowsYFactor_WhenTypeHasVerticalBar)
{
    ScaleBar::Input in = baseInput();
    in.scaleType = ScaleBar::HorizontalAndVertical;
    in.scaleY = 50;
    in.yFactor = 0.25;
    in.magnification = 2.0;

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_DOUBLE_EQ(g.lenYPixels, 400.0);
    EXPECT_EQ(g.lines[2].pixels.height(), 400);
}

// --- boxes shown ---

TEST(ScaleBarTest, Compute_ShowsThreeBoxes_WhenTypeIsHorizontalOnly)
{
    const ScaleBar::Geometry g = ScaleBar::compute(baseInput());

    EXPECT_EQ(visibleLines(g), 3);
    EXPECT_TRUE(g.lines[0].visible);
    EXPECT_TRUE(g.lines[1].visible);
    EXPECT_TRUE(g.lines[2].visible);
    EXPECT_FALSE(g.lines[3].visible);
    EXPECT_TRUE(g.label.visible);
}

TEST(ScaleBarTest, Compute_ShowsFourBoxes_WhenTypeHasVerticalBar)
{
    ScaleBar::Input in = baseInput();
    in.scaleType = ScaleBar::HorizontalAndVertical;

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_EQ(visibleLines(g), 4);
    EXPECT_TRUE(g.label.visible);
}

// --- label ---

TEST(ScaleBarTest, Compute_LabelShowsOnlyScaleX_WhenVerticalBarHasAnotherLength)
{
    ScaleBar::Input in = baseInput();
    in.scaleType = ScaleBar::HorizontalAndVertical;
    in.scaleY = 30;

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_EQ(g.text, QStringLiteral("100MIC"));
}

struct LabelCase {
    double scaleX;
    const char* unit;
    const char* text;
};

class ScaleBarLabelText : public ::testing::TestWithParam<LabelCase> {};

TEST_P(ScaleBarLabelText, LabelText_IsGeneralNumberFollowedByUnit)
{
    const LabelCase& c = GetParam();

    EXPECT_EQ(ScaleBar::labelText(c.scaleX, QLatin1String(c.unit)), QLatin1String(c.text));
}

INSTANTIATE_TEST_SUITE_P(Numbers, ScaleBarLabelText,
                         ::testing::Values(LabelCase{100, "MIC", "100MIC"}, LabelCase{2.5, "mm", "2.5mm"},
                                           LabelCase{0.5, "cm", "0.5cm"},
                                           LabelCase{1000000, "nm", "1000000nm"},
                                           LabelCase{0.000015, "mm", "1.5E-05mm"},
                                           LabelCase{100, "", "100"}));

TEST(ScaleBarTest, Compute_CentresLabelUnderBar_80TwipsBelowIt)
{
    const ScaleBar::Geometry g = ScaleBar::compute(baseInput());

    // Bar from 5535 to 8535 twips; its middle is 7035; the label is 900 wide.
    EXPECT_DOUBLE_EQ(g.label.twips.left(), 7035.0 - 450.0);
    EXPECT_DOUBLE_EQ(g.label.twips.top(), 5550.0 + 80.0);
    EXPECT_DOUBLE_EQ(g.label.twips.width(), 900.0);
    EXPECT_DOUBLE_EQ(g.label.twips.height(), 225.0);
    EXPECT_EQ(g.label.pixels, QRect(439, 375, 60, 15));
}

// --- visible frame ---

TEST(ScaleBarTest, Compute_BottomRightBarStands465TwipsInsidePicture_WhenPictureIsNarrowerThanArea)
{
    ScaleBar::Input in = baseInput();
    in.pictureBox = QRectF(1500, 0, 4500, 6000);  // 300 pixels wide, centred

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_DOUBLE_EQ(g.anchor.x(), 1500.0 + 4500.0 - 465.0);
    EXPECT_DOUBLE_EQ(g.lines[1].twips.right(), 5535.0);
    EXPECT_NE(g.anchor.x(), 9000.0 - 465.0);
}

TEST(ScaleBarTest, Compute_FrameIsArea_WhenPictureIsWiderThanArea)
{
    ScaleBar::Input in = baseInput();
    in.pictureBox = QRectF(-3000, -1500, 15000, 9000);  // scrolled, larger than the area

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_EQ(g.frame, QRectF(0, 0, 9000, 6000));
    EXPECT_DOUBLE_EQ(g.anchor.x(), 8535.0);
    EXPECT_DOUBLE_EQ(g.anchor.y(), 5550.0);
}

TEST(ScaleBarTest, Compute_FrameIsArea_WhenPictureIsExactlyAsWideAsArea)
{
    ScaleBar::Input in = baseInput();
    in.pictureBox = QRectF(15, 30, 9000, 6000);

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_EQ(g.frame, QRectF(0, 0, 9000, 6000));
}

TEST(ScaleBarTest, Compute_BottomBarStands450TwipsAbovePictureBottom_WhenPictureIsLowerThanArea)
{
    ScaleBar::Input in = baseInput();
    in.pictureBox = QRectF(0, 750, 9000, 3000);

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_EQ(g.frame, QRectF(0, 750, 9000, 3000));
    EXPECT_DOUBLE_EQ(g.anchor.y(), 750.0 + 3000.0 - 450.0);
    EXPECT_DOUBLE_EQ(g.anchor.x(), 8535.0);
}

// --- anchor per position ---

struct AnchorCase {
    qint16 position;
    double ax, ay;
};

void PrintTo(const AnchorCase& c, std::ostream* os)
{
    *os << "position " << c.position;
}

class ScaleBarAnchor : public ::testing::TestWithParam<AnchorCase> {};

TEST_P(ScaleBarAnchor, Compute_PlacesAnchorByPosition)
{
    // LenX 3000 twips (200 px), LenY 1500 twips (100 px).
    ScaleBar::Input in = baseInput();
    in.scaleType = ScaleBar::HorizontalAndVertical;
    in.scalePosition = GetParam().position;

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_DOUBLE_EQ(g.anchor.x(), GetParam().ax);
    EXPECT_DOUBLE_EQ(g.anchor.y(), GetParam().ay);
}

INSTANTIATE_TEST_SUITE_P(Positions, ScaleBarAnchor,
                         ::testing::Values(AnchorCase{0, 9000 - 465, 6000 - 450},  // bottom right
                                           AnchorCase{1, 450 + 3000, 6000 - 450},  // bottom left
                                           AnchorCase{2, 9000 - 465, 450 + 1500},  // top right
                                           AnchorCase{3, 450 + 3000, 450 + 1500},  // top left
                                           AnchorCase{4, 4500, 3000}));            // centre

TEST(ScaleBarTest, Compute_AnchorStaysAtAreaOrigin_WhenPositionIsOutOfRangeInAFreshComputation)
{
    ScaleBar::Input in = baseInput();
    in.scalePosition = 5;

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_EQ(g.anchor, QPointF(0, 0));
    EXPECT_DOUBLE_EQ(g.lines[1].twips.left(), -3000.0);
}

TEST(ScaleBarTest, Compute_KeepsPreviousAnchor_WhenPositionIsNegative)
{
    ScaleBar::Input in = baseInput();
    in.scalePosition = -1;
    in.previousAnchor = QPointF(4000, 2500);

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_EQ(g.anchor, QPointF(4000, 2500));
    EXPECT_DOUBLE_EQ(g.lines[1].twips.right(), 4000.0);
}

TEST(ScaleBarTest, Compute_IgnoresPreviousAnchor_WhenPositionIsInRange)
{
    ScaleBar::Input in = baseInput();
    in.previousAnchor = QPointF(4000, 2500);

    const ScaleBar::Geometry g = ScaleBar::compute(in);

    EXPECT_EQ(g.anchor, QPointF(8535, 5550));
}

// --- line boxes ---

TEST(ScaleBarTest, Compute_PlacesHorizontalBarAndTicks_WhenTypeIsHorizontalOnly)
{
    const ScaleBar::Geometry g = ScaleBar::compute(baseInput());
    const double t = ScaleBar::kLineThicknessTwips;
    const double tick = ScaleBar::kTickLengthTwips;

    EXPECT_EQ(g.lines[0].twips, QRectF(8535 - 3000, 5550 - tick / 2, t, tick));  // left tick
    EXPECT_EQ(g.lines[1].twips, QRectF(8535 - 3000, 5550, 3000, t));             // bar
    EXPECT_EQ(g.lines[2].twips, QRectF(8535, 5550 - tick / 2, t, tick));         // right tick
}

TEST(ScaleBarTest, Compute_PlacesVerticalBarAndTopTick_WhenTypeHasVerticalBar)
{
    ScaleBar::Input in = baseInput();
    in.scaleType = ScaleBar::HorizontalAndVertical;

    const ScaleBar::Geometry g = ScaleBar::compute(in);
    const double t = ScaleBar::kLineThicknessTwips;
    const double tick = ScaleBar::kTickLengthTwips;

    EXPECT_EQ(g.lines[0].twips, QRectF(8535 - 3000, 5550 - tick / 2, t, tick));
    EXPECT_EQ(g.lines[1].twips, QRectF(8535 - 3000, 5550, 3000, t));
    EXPECT_EQ(g.lines[2].twips, QRectF(8535, 5550 - 1500, t, 1500));             // vertical bar
    EXPECT_EQ(g.lines[3].twips, QRectF(8535 - tick / 2, 5550 - 1500, tick, t));  // top tick
}

TEST(ScaleBarTest, Compute_ConvertsBoxesToWholePixels)
{
    const ScaleBar::Geometry g = ScaleBar::compute(baseInput());

    // 8535 twips = 569 px; 5550 twips = 370 px; ticks of 12 px, lines of 2 px.
    EXPECT_EQ(g.lines[1].pixels, QRect(369, 370, 200, 2));
    EXPECT_EQ(g.lines[0].pixels, QRect(369, 364, 2, 12));
    EXPECT_EQ(g.lines[2].pixels, QRect(569, 364, 2, 12));
}

TEST(ScaleBarTest, ToPixels_RoundsEachValueToNearestPixel)
{
    EXPECT_EQ(ScaleBar::toPixels(QRectF(22, 8, 23, 7)), QRect(1, 1, 2, 0));
    EXPECT_EQ(ScaleBar::toPixels(QRectF(-22, -8, 150, 15)), QRect(-1, -1, 10, 1));
}

// --- failures ---

TEST(ScaleBarTest, Compute_RaisesDivisionByZero_WhenXFactorIsZero)
{
    ScaleBar::Input in = baseInput();
    in.xFactor = 0;

    EXPECT_EQ(runErrorOf(in), ScaleBar::kDivisionByZero);
}

TEST(ScaleBarTest, Compute_IgnoresZeroYFactor_WhenTypeIsHorizontalOnly)
{
    ScaleBar::Input in = baseInput();
    in.yFactor = 0;

    EXPECT_EQ(runErrorOf(in), 0);
}

TEST(ScaleBarTest, Compute_RaisesDivisionByZero_WhenYFactorIsZeroWithVerticalBar)
{
    ScaleBar::Input in = baseInput();
    in.scaleType = ScaleBar::HorizontalAndVertical;
    in.yFactor = 0;

    EXPECT_EQ(runErrorOf(in), ScaleBar::kDivisionByZero);
}

TEST(ScaleBarTest, Compute_RaisesInvalidPropertyValue_WhenFactorIsNegative)
{
    ScaleBar::Input in = baseInput();
    in.xFactor = -0.5;

    EXPECT_EQ(runErrorOf(in), ScaleBar::kInvalidPropertyValue);
}

TEST(ScaleBarTest, Compute_RaisesOverflow_WhenBarIsTooLongToPlace)
{
    ScaleBar::Input in = baseInput();
    in.xFactor = 1e-300;

    EXPECT_EQ(runErrorOf(in), err::Overflow);
}

// --- inputs ---

TEST(ScaleBarTest, InputFrom_TakesBarSettingsAndEntryFactors)
{
    Settings s;
    s.SCALEX = 25;
    s.SCALEY = 40;
    s.SCALETYPE = 1;
    s.SCALEPOSITION = 3;
    ProofEntry e;
    e.XFactor = 0.2;
    e.YFactor = 0.3;
    e.Unit = QStringLiteral("mm");

    const ScaleBar::Input in = ScaleBar::inputFrom(s, e);

    EXPECT_DOUBLE_EQ(in.scaleX, 25);
    EXPECT_DOUBLE_EQ(in.scaleY, 40);
    EXPECT_EQ(in.scaleType, 1);
    EXPECT_EQ(in.scalePosition, 3);
    EXPECT_DOUBLE_EQ(in.xFactor, 0.2);
    EXPECT_DOUBLE_EQ(in.yFactor, 0.3);
    EXPECT_EQ(in.unit, QStringLiteral("mm"));
}
