#include "ScriptedPrompter.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "calib/ui/CrossLineOverlay.h"
#include "calib/ui/OverlayPanel.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/Clock.h"
#include "measure/MeasureSession.h"
#include "measure/ui/MeasurePanel.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

class Overlays : public ::testing::Test {
protected:
    void SetUp() override
    {
        test::copyShippedData(dir);
        auto factory = [](AppData& data) {
            data.settings.CURRENTPROOFNO = 0;  // 0.5 MIC per pixel
            return std::unique_ptr<CameraDriver>(std::make_unique<SimCamera>());
        };
        w = std::make_unique<frmMain>(dir.path(), prompter, clock, factory);
        ASSERT_TRUE(w->Form_Load());
        w->resize(1200, 800);
        w->show();
        QElapsedTimer timer;
        timer.start();
        while (w->camera().liveView().counters().received == 0 && timer.elapsed() < 20000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);
        ASSERT_TRUE(w->camera().stillShown());
    }

    template <typename T>
    T* find(const char* name)
    {
        T* widget = w->findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    // Turns the scale bar on through its dialog: length, type and position.
    void scaleBarOn(const char* length, int type, int position)
    {
        w->overlays().setDialogRunner([=](QDialog& d) {
            d.show();
            auto* x = d.findChild<QLineEdit*>(QStringLiteral("txtScaleLen(0)"));
            x->setText(QLatin1String(length));
            d.findChild<QLineEdit*>(QStringLiteral("txtScaleLen(1)"))->setText(QLatin1String(length));
            QTest::mouseClick(d.findChild<QRadioButton*>(QStringLiteral("optAxis(%1)").arg(type)),
                              Qt::LeftButton);
            d.findChild<QComboBox*>(QStringLiteral("cboPosition"))->setCurrentIndex(position);
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
            return d.result();
        });
        auto* check = find<QCheckBox>("chkScale");
        if (check->isChecked())
            QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(8, check->height() / 2));
        QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(8, check->height() / 2));
    }

    QWidget* line(int i) { return w->findChild<QWidget*>(QStringLiteral("picScaleLine(%1)").arg(i)); }

    // The measurement settings dialog through cmdMeasureConfig: `change` works on it, then OK.
    void changeMeasureSettings(std::function<void(QDialog&)> change)
    {
        w->measure().setDialogRunner([change](QDialog& d) {
            d.show();
            change(d);
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
            return d.result();
        });
        QTest::mouseClick(find<QPushButton>("cmdMeasureConfig"), Qt::LeftButton);
    }

    static QColor background(QWidget* widget) { return widget->palette().color(QPalette::Window); }

    TempDir dir;
    ScriptedPrompter prompter;
    SystemClock clock;
    std::unique_ptr<frmMain> w;
};

}  // namespace

TEST_F(Overlays, ScaleBar_IsAsLongAsItsLengthInPixels_AtTheZoom)
{
    scaleBarOn("100", 0, 0);
    ASSERT_TRUE(find<QCheckBox>("chkScale")->isChecked());
    EXPECT_TRUE(line(1)->isVisible());
    EXPECT_EQ(line(1)->width(), 200);  // 100 MIC at 0.5 MIC per pixel, x 1.0
    EXPECT_FALSE(line(3)->isVisible()) << "type 0 shows no top tick";
    auto* scale = find<QComboBox>("cboScale");
    scale->setCurrentIndex(scale->findText(QStringLiteral("x 0.5")));
    emit scale->activated(scale->currentIndex());
    EXPECT_EQ(line(1)->width(), 100);
}

TEST_F(Overlays, ScaleBar_SwitchesOff_WhenAnEntryWithoutFactorsIsChosen)
{
    scaleBarOn("100", 1, 0);
    ASSERT_TRUE(line(3)->isVisible());
    auto* proof = find<QComboBox>("cboProof");
    proof->setCurrentIndex(5);  // "Proof6": no factors
    emit proof->activated(5);
    EXPECT_FALSE(find<QCheckBox>("chkScale")->isChecked());
    EXPECT_FALSE(line(1)->isVisible());
}

TEST_F(Overlays, CrossLines_FollowThePointer_AndStayWhereReleased)
{
    w->data().settings.CROSSLINENUM = 2;
    QTest::mouseClick(find<QCheckBox>("chkCross"), Qt::LeftButton, {}, QPoint(8, 10));
    EXPECT_EQ(w->overlays().crossLines().tool(), 10);
    EXPECT_EQ(w->measuring().toolNumber(), 0);
    StillViewWidget* still = w->camera().stillView();
    QWidget* area = find<QWidget>("picViewArea");
    QTest::mouseMove(still, QPoint(150, 120));
    const QPoint first = still->mapTo(area, QPoint(150, 120));
    auto* v0 = w->findChild<QWidget*>(QStringLiteral("picCrossLineV(0)"));
    auto* h0 = w->findChild<QWidget*>(QStringLiteral("picCrossLineH(0)"));
    EXPECT_TRUE(v0->isVisible());
    EXPECT_NEAR(v0->x() + v0->width() / 2.0, first.x(), 1.0);
    EXPECT_NEAR(h0->y() + h0->height() / 2.0, first.y(), 1.0);
    QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(150, 120));
    EXPECT_EQ(w->overlays().crossLines().tool(), 11);
    QTest::mouseMove(still, QPoint(400, 300));
    QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(400, 300));
    EXPECT_EQ(w->overlays().crossLines().tool(), 0);
    EXPECT_NEAR(v0->x() + v0->width() / 2.0, first.x(), 1.0) << "cross 0 stays";
    auto* v1 = w->findChild<QWidget*>(QStringLiteral("picCrossLineV(1)"));
    EXPECT_TRUE(v1->isVisible());
    EXPECT_NEAR(v1->x() + v1->width() / 2.0, still->mapTo(area, QPoint(400, 300)).x(), 1.0);
    EXPECT_EQ(w->measuring().store().size(), 0) << "placing crosses measures nothing";
}

// The L-shaped bar at each of the five positions with two crosses; with
// TAVIX_SCREENSHOT=name the window is saved as name-0.png ... name-4.png.
TEST_F(Overlays, ScaleBar_AtEveryPosition_WithTwoCrosses)
{
    w->data().settings.CROSSLINENUM = 2;
    QTest::mouseClick(find<QCheckBox>("chkCross"), Qt::LeftButton, {}, QPoint(8, 10));
    StillViewWidget* still = w->camera().stillView();
    QTest::mouseMove(still, QPoint(300, 250));
    QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(300, 250));
    QTest::mouseMove(still, QPoint(600, 450));
    QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(600, 450));
    QWidget* area = find<QWidget>("picViewArea");
    for (int position = 0; position < 5; ++position) {
        scaleBarOn("100", 1, position);
        ASSERT_TRUE(line(2)->isVisible());
        EXPECT_TRUE(area->rect().contains(line(1)->geometry())) << position;
        if (const QString file = qEnvironmentVariable("TAVIX_SCREENSHOT"); !file.isEmpty())
            w->grab().save(QStringLiteral("%1-%2.png").arg(file).arg(position));
    }
}

TEST_F(Overlays, MeasureSettings_GiveTheCrossLinesTheirNewColourAndChkCrossItsIcon)
{
    const QColor magenta(255, 0, 255);
    prompter.colors.push_back(magenta);
    changeMeasureSettings([](QDialog& d) {
        QTest::mouseClick(d.findChild<QLabel*>(QStringLiteral("lblColor(5)")), Qt::LeftButton);
        auto* two = d.findChild<QRadioButton*>(QStringLiteral("optCrossLineNum(1)"));
        QTest::mouseClick(two, Qt::LeftButton, {}, QPoint(6, two->height() / 2));
    });
    ASSERT_EQ(w->data().settings.CROSSLINENUM, 2);
    for (const char* name : {"picCrossLineV(0)", "picCrossLineH(0)", "picCrossLineV(1)", "picCrossLineH(1)"})
        EXPECT_EQ(background(find<QWidget>(name)), magenta) << name;
    auto picture = [](const QIcon& icon) {
        return icon.pixmap(32, 32).toImage().convertToFormat(QImage::Format_ARGB32);
    };
    EXPECT_EQ(picture(find<QCheckBox>("chkCross")->icon()), picture(CrossLineOverlay::imgCrossIcon(1)));
    EXPECT_NE(picture(find<QCheckBox>("chkCross")->icon()), picture(CrossLineOverlay::imgCrossIcon(0)));
}

TEST_F(Overlays, MeasureSettings_RedrawTheScaleBarInItsNewColour)
{
    scaleBarOn("100", 1, 0);
    ASSERT_TRUE(line(1)->isVisible());
    const QColor cyan(0, 255, 255);
    ASSERT_NE(background(line(1)), cyan);
    prompter.colors.push_back(cyan);
    changeMeasureSettings([](QDialog& d) {
        QTest::mouseClick(d.findChild<QLabel*>(QStringLiteral("lblColor(6)")), Qt::LeftButton);
    });
    EXPECT_TRUE(line(1)->isVisible());
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(background(line(i)), cyan) << i;
}
