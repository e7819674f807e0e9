#include "calib/ui/CrossLineOverlay.h"

#include "calib/CrossLines.h"
#include "common/ClassicColor.h"
#include "common/Settings.h"

#include <gtest/gtest.h>
#include <QFrame>
#include <QImage>
#include <QPixmap>

using namespace tavix;

namespace {

class CrossLineOverlayTest : public ::testing::Test {
protected:
    CrossLineOverlayTest()
    {
        area.setFrameShape(QFrame::NoFrame);
        area.setAutoFillBackground(true);
        QPalette dark = area.palette();
        dark.setColor(QPalette::Window, QColor(40, 40, 40));
        area.setPalette(dark);
        area.resize(600, 400);
        area.show();
    }

    static Settings makeSettings()
    {
        Settings s;
        s.CROSSLINENUM = 2;
        s.CROSSLINECOLOR = 0x00FF00;  // green
        return s;
    }

    QWidget* v(int i) { return overlay.picCrossLineV(i); }
    QWidget* h(int i) { return overlay.picCrossLineH(i); }
    QColor shownAt(QPoint p) { return area.grab().toImage().pixelColor(p); }

    Settings settings = makeSettings();
    CrossLines crosses{settings};
    QFrame area;
    CrossLineOverlay overlay{&area, crosses};
};

}  // namespace

TEST_F(CrossLineOverlayTest, Construct_CreatesFourHiddenNamedLinesInCrossLineColour)
{
    const char* names[] = {"picCrossLineV(0)", "picCrossLineV(1)", "picCrossLineH(0)", "picCrossLineH(1)"};
    for (const char* name : names) {
        QWidget* line = area.findChild<QWidget*>(QLatin1String(name));
        ASSERT_NE(line, nullptr) << name;
        EXPECT_FALSE(line->isVisible()) << name;
        EXPECT_TRUE(line->autoFillBackground()) << name;
        EXPECT_EQ(line->palette().color(QPalette::Window), QColor(0, 255, 0)) << name;
        EXPECT_TRUE(line->testAttribute(Qt::WA_TransparentForMouseEvents)) << name;
    }
    EXPECT_EQ(v(0)->objectName(), QStringLiteral("picCrossLineV(0)"));
    EXPECT_EQ(h(1)->objectName(), QStringLiteral("picCrossLineH(1)"));
}

TEST_F(CrossLineOverlayTest, SwitchOn_ShowsFirstCrossSpanningInnerArea)
{
    crosses.chkCross_Click(true);

    EXPECT_TRUE(v(0)->isVisible());
    EXPECT_TRUE(h(0)->isVisible());
    EXPECT_FALSE(v(1)->isVisible());
    EXPECT_FALSE(h(1)->isVisible());
    EXPECT_EQ(v(0)->height(), 400);
    EXPECT_EQ(h(0)->width(), 600);
}

TEST_F(CrossLineOverlayTest, Move_PlacesLinesCentredOnPointer)
{
    crosses.chkCross_Click(true);

    crosses.move(QPoint(120, 80));

    EXPECT_EQ(v(0)->geometry(), QRect(119, 0, 3, 400));
    EXPECT_EQ(h(0)->geometry(), QRect(0, 79, 600, 3));
    EXPECT_EQ(shownAt(QPoint(120, 300)), QColor(0, 255, 0));
    EXPECT_EQ(shownAt(QPoint(500, 80)), QColor(0, 255, 0));
    EXPECT_EQ(shownAt(QPoint(125, 300)), QColor(40, 40, 40));
}

TEST_F(CrossLineOverlayTest, Release_ShowsSecondCrossThatFollowsPointer_WhenTwoCrosses)
{
    crosses.chkCross_Click(true);
    crosses.release(QPoint(120, 80));

    crosses.move(QPoint(300, 200));

    EXPECT_TRUE(v(1)->isVisible());
    EXPECT_TRUE(h(1)->isVisible());
    EXPECT_EQ(v(1)->geometry(), QRect(299, 0, 3, 400));
    EXPECT_EQ(h(1)->geometry(), QRect(0, 199, 600, 3));
    EXPECT_EQ(v(0)->x(), 119);
}

TEST_F(CrossLineOverlayTest, SwitchOff_HidesAllFourLines)
{
    crosses.chkCross_Click(true);
    crosses.release(QPoint(120, 80));

    crosses.chkCross_Click(false);

    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(v(i)->isVisible()) << i;
        EXPECT_FALSE(h(i)->isVisible()) << i;
    }
}

TEST_F(CrossLineOverlayTest, Resize_KeepsLinesSpanningInnerArea)
{
    crosses.chkCross_Click(true);
    crosses.move(QPoint(120, 80));

    area.resize(800, 500);

    EXPECT_EQ(v(0)->geometry(), QRect(119, 0, 3, 500));
    EXPECT_EQ(h(0)->geometry(), QRect(0, 79, 800, 3));
}

TEST_F(CrossLineOverlayTest, Relayout_SpansContentsOnly_WhenAreaHasABorder)
{
    area.setFrameStyle(QFrame::Box | QFrame::Plain);
    area.setLineWidth(2);
    crosses.chkCross_Click(true);

    crosses.move(QPoint(120, 80));

    EXPECT_EQ(v(0)->geometry(), QRect(119, 2, 3, 396));
    EXPECT_EQ(h(0)->geometry(), QRect(2, 79, 596, 3));
}

TEST_F(CrossLineOverlayTest, ViewSettingsCancel_ReappliesSettingColourToAllFourLines)
{
    for (int i = 0; i < 2; ++i) {  // lines painted otherwise meanwhile
        QPalette p = v(i)->palette();
        p.setColor(QPalette::Window, Qt::blue);
        v(i)->setPalette(p);
        h(i)->setPalette(p);
    }

    crosses.cmdCamViewConfig_Click([] {});  // the dialog is cancelled

    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(v(i)->palette().color(QPalette::Window), QColor(0, 255, 0)) << i;
        EXPECT_EQ(h(i)->palette().color(QPalette::Window), QColor(0, 255, 0)) << i;
    }
}

TEST_F(CrossLineOverlayTest, ViewSettingsOk_AppliesNewColourToAllFourLines)
{
    crosses.cmdCamViewConfig_Click([this] { settings.CROSSLINECOLOR = 0x0000FF; });

    EXPECT_EQ(overlay.color(), QColor(255, 0, 0));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(v(i)->palette().color(QPalette::Window), QColor(255, 0, 0)) << i;
        EXPECT_EQ(h(i)->palette().color(QPalette::Window), QColor(255, 0, 0)) << i;
    }
}

TEST_F(CrossLineOverlayTest, ViewSettings_HidesShownCrosses_WhenCountChanges)
{
    settings.CROSSLINENUM = 1;
    crosses.chkCross_Click(true);

    crosses.cmdCamViewConfig_Click([this] { settings.CROSSLINENUM = 2; });

    EXPECT_FALSE(v(0)->isVisible());
    EXPECT_FALSE(h(0)->isVisible());
}

TEST_F(CrossLineOverlayTest, LinesLieOverPictureWidgetsCreatedLater)
{
    auto* picture = new QWidget(&area);
    picture->setAutoFillBackground(true);
    QPalette white = picture->palette();
    white.setColor(QPalette::Window, Qt::white);
    picture->setPalette(white);
    picture->setGeometry(area.rect());
    picture->show();

    crosses.chkCross_Click(true);
    crosses.move(QPoint(120, 80));

    EXPECT_EQ(shownAt(QPoint(120, 300)), QColor(0, 255, 0));
}

TEST_F(CrossLineOverlayTest, CrossIcons_DifferForOneAndTwoCrosses)
{
    const QImage one = CrossLineOverlay::imgCrossIcon(0).pixmap(32, 32).toImage();
    const QImage two = CrossLineOverlay::imgCrossIcon(1).pixmap(32, 32).toImage();

    EXPECT_FALSE(one.isNull());
    EXPECT_FALSE(two.isNull());
    EXPECT_NE(one, two);
}
