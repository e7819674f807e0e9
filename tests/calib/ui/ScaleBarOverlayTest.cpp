#include "calib/ui/ScaleBarOverlay.h"

#include "calib/ProofEntry.h"
#include "common/ClassicColor.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "../PrintQt.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QFontMetrics>
#include <QFrame>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <memory>

using namespace tavix;
using tavix::test::TempDir;

namespace {

constexpr qint32 kScaleColor = 0x0000FF;  // red
constexpr qint32 kValueColor = 0x00FFFF;  // yellow

class ScaleBarOverlayTest : public ::testing::Test {
protected:
    ScaleBarOverlayTest()
    {
        settings.SCALEX = 100;
        settings.SCALEY = 50;
        settings.SCALETYPE = 0;
        settings.SCALEPOSITION = 0;
        settings.SCALECOLOR = kScaleColor;
        settings.MEASUREVALUECOLOR[1] = kValueColor;
        settings.MEASUREFONTSIZE = 10;
        entry.XFactor = 0.5;
        entry.YFactor = 0.5;
        entry.Unit = QStringLiteral("MIC");

        area.setObjectName(QStringLiteral("picViewArea"));
        area.setFrameShape(QFrame::NoFrame);
        area.setAutoFillBackground(true);
        QPalette dark = area.palette();
        dark.setColor(QPalette::Window, QColor(40, 40, 40));
        area.setPalette(dark);
        area.resize(600, 400);
        area.show();
    }

    ScaleBarOverlay::Sources sources()
    {
        return {[this]() -> const ProofEntry& { return entry; }, [this] { return magnification; },
                [this] { return pictureBox; }};
    }

    QWidget* line(int i) { return overlay.picScaleLine(i); }
    QLabel* label() { return overlay.picScaleSize(); }

    int shownLines()
    {
        int n = 0;
        for (int i = 0; i < 4; ++i)
            n += line(i)->isVisible() ? 1 : 0;
        return n;
    }

    QColor shownAt(QPoint p) { return area.grab().toImage().pixelColor(p); }

    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    Settings settings;
    ProofEntry entry;
    double magnification = 1.0;
    QRect pictureBox;  // empty: the picture fills the area
    QFrame area;
    ScaleBarOverlay overlay{&area, settings, sources(), log};
};

}  // namespace

// --- widgets ---

TEST_F(ScaleBarOverlayTest, Construct_CreatesHiddenNamedWidgetsInArea)
{
    for (int i = 0; i < 4; ++i) {
        QWidget* w = area.findChild<QWidget*>(QStringLiteral("picScaleLine(%1)").arg(i));
        ASSERT_NE(w, nullptr) << i;
        EXPECT_EQ(w, line(i));
        EXPECT_FALSE(w->isVisible());
    }
    EXPECT_EQ(area.findChild<QLabel*>(QStringLiteral("picScaleSize")), label());
    EXPECT_FALSE(label()->isVisible());
    EXPECT_FALSE(overlay.shown());
}

TEST_F(ScaleBarOverlayTest, Construct_LetsPointerThroughToPicture)
{
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(line(i)->testAttribute(Qt::WA_TransparentForMouseEvents)) << i;
    EXPECT_TRUE(label()->testAttribute(Qt::WA_TransparentForMouseEvents));
}

// --- drawing ---

TEST_F(ScaleBarOverlayTest, Draw_PlacesLineWidgetsBottomRight)
{
    ASSERT_TRUE(overlay.DrawScaleBar());

    // Anchor at (600 - 31, 400 - 30) pixels; a 200-pixel bar left of it.
    EXPECT_EQ(line(0)->geometry(), QRect(369, 364, 2, 12));
    EXPECT_EQ(line(1)->geometry(), QRect(369, 370, 200, 2));
    EXPECT_EQ(line(2)->geometry(), QRect(569, 364, 2, 12));
    EXPECT_TRUE(overlay.shown());
}

TEST_F(ScaleBarOverlayTest, Draw_MakesBar100Pixels_AtMagnificationHalf)
{
    magnification = 0.5;

    overlay.DrawScaleBar();

    EXPECT_EQ(line(1)->width(), 100);
}

TEST_F(ScaleBarOverlayTest, Draw_ShowsThreeLines_WhenTypeIsHorizontalOnly)
{
    overlay.DrawScaleBar();

    EXPECT_EQ(shownLines(), 3);
    EXPECT_FALSE(line(3)->isVisible());
    EXPECT_TRUE(label()->isVisible());
}

TEST_F(ScaleBarOverlayTest, Draw_ShowsFourLines_WhenTypeHasVerticalBar)
{
    settings.SCALETYPE = 1;

    overlay.DrawScaleBar();

    EXPECT_EQ(shownLines(), 4);
    EXPECT_EQ(line(2)->geometry(), QRect(569, 270, 2, 100));  // 50 units over 100 pixels
    EXPECT_EQ(line(3)->geometry(), QRect(563, 270, 12, 2));
}

TEST_F(ScaleBarOverlayTest, Draw_HidesTopTick_WhenTypeChangesBackToHorizontalOnly)
{
    settings.SCALETYPE = 1;
    overlay.DrawScaleBar();
    settings.SCALETYPE = 0;

    overlay.DrawScaleBar();

    EXPECT_FALSE(line(3)->isVisible());
    EXPECT_EQ(line(2)->geometry(), QRect(569, 364, 2, 12));
}

TEST_F(ScaleBarOverlayTest, Draw_FillsLinesWithScaleColour)
{
    overlay.DrawScaleBar();

    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(line(i)->autoFillBackground()) << i;
        EXPECT_EQ(line(i)->palette().color(QPalette::Window), ClassicColor::toQColor(kScaleColor)) << i;
    }
    EXPECT_EQ(shownAt(QPoint(450, 371)), QColor(255, 0, 0));   // on the bar
    EXPECT_EQ(shownAt(QPoint(450, 360)), QColor(40, 40, 40));  // above it
}

TEST_F(ScaleBarOverlayTest, Draw_TakesNewScaleColour_OnNextDraw)
{
    overlay.DrawScaleBar();
    settings.SCALECOLOR = 0x00FF00;

    overlay.DrawScaleBar();

    EXPECT_EQ(line(1)->palette().color(QPalette::Window), QColor(0, 255, 0));
}

TEST_F(ScaleBarOverlayTest, Draw_LaysBarOverPictureWidgetsCreatedLater)
{
    auto* picture = new QWidget(&area);  // like the still view, placed after the overlay
    picture->setAutoFillBackground(true);
    QPalette white = picture->palette();
    white.setColor(QPalette::Window, Qt::white);
    picture->setPalette(white);
    picture->setGeometry(area.rect());
    picture->show();

    overlay.DrawScaleBar();

    EXPECT_EQ(shownAt(QPoint(450, 371)), QColor(255, 0, 0));
}

TEST_F(ScaleBarOverlayTest, Draw_LabelShowsScaleXAndUnitInValueColourAtFontSize)
{
    settings.SCALETYPE = 1;
    settings.SCALEY = 30;

    overlay.DrawScaleBar();

    EXPECT_EQ(label()->text(), QStringLiteral("100MIC"));
    EXPECT_EQ(label()->palette().color(QPalette::WindowText), ClassicColor::toQColor(kValueColor));
    EXPECT_EQ(label()->font().pixelSize(), 13);  // 10 points at 96 dots per inch
}

TEST_F(ScaleBarOverlayTest, Draw_SizesLabelToTextAndCentresItUnderBar)
{
    overlay.DrawScaleBar();

    const QFontMetrics metrics(ScaleBarOverlay::labelFont(10));
    const int w = metrics.horizontalAdvance(QStringLiteral("100MIC"));
    EXPECT_EQ(label()->size(), QSize(w, metrics.height()));
    // The bar runs from 369 to 569; its middle is 469.
    EXPECT_NEAR(label()->geometry().center().x() + 0.5, 469.0, 1.0);
    EXPECT_EQ(label()->y(), 375);  // 80 twips under the bar's top at 370
}

TEST_F(ScaleBarOverlayTest, Draw_UsesPictureRightEdge_WhenPictureIsNarrowerThanArea)
{
    pictureBox = QRect(100, 0, 300, 400);

    overlay.DrawScaleBar();

    EXPECT_EQ(line(1)->geometry().x() + line(1)->width(), 100 + 300 - 31);
    EXPECT_EQ(line(2)->x(), 369);
}

TEST_F(ScaleBarOverlayTest, Draw_PlacesInsideFrame_WhenAreaHasABorder)
{
    area.setFrameStyle(QFrame::Box | QFrame::Plain);
    area.setLineWidth(3);
    ASSERT_EQ(area.contentsRect(), QRect(3, 3, 594, 394));

    overlay.DrawScaleBar();

    // Inner 594 x 394: anchor at (563, 364) inside, (566, 367) in the area.
    EXPECT_EQ(line(1)->geometry(), QRect(366, 367, 200, 2));
}

TEST_F(ScaleBarOverlayTest, Draw_KeepsLastPlace_WhenPositionIsOutOfRange)
{
    overlay.DrawScaleBar();
    const QRect before = line(1)->geometry();
    settings.SCALEPOSITION = 7;

    overlay.DrawScaleBar();

    EXPECT_EQ(line(1)->geometry(), before);
}

TEST_F(ScaleBarOverlayTest, Draw_FollowsAreaSize_WhenDrawnAgainAfterResize)
{
    overlay.DrawScaleBar();
    area.resize(800, 500);

    overlay.DrawScaleBar();

    EXPECT_EQ(line(1)->geometry(), QRect(569, 470, 200, 2));
}

TEST_F(ScaleBarOverlayTest, Draw_LogsErrorAndShowsNothing_WhenEntryLacksFactor)
{
    entry.XFactor = 0;

    EXPECT_FALSE(overlay.DrawScaleBar());

    EXPECT_EQ(shownLines(), 0);
    EXPECT_FALSE(label()->isVisible());
    EXPECT_FALSE(overlay.shown());
    const QString logText = QString::fromUtf8(dir.read(QStringLiteral("Error.Log")));
    EXPECT_TRUE(logText.endsWith(QStringLiteral(" frmMain:DrawScaleBar Error.(11)\r\n")))
        << logText.toStdString();
}

// --- hiding ---

TEST_F(ScaleBarOverlayTest, Hide_HidesLinesAndLabel)
{
    settings.SCALETYPE = 1;
    overlay.DrawScaleBar();

    overlay.hide();

    EXPECT_EQ(shownLines(), 0);
    EXPECT_FALSE(label()->isVisible());
    EXPECT_FALSE(overlay.shown());
    EXPECT_EQ(shownAt(QPoint(450, 371)), QColor(40, 40, 40));
}
