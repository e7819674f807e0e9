#include "MeasuringFixture.h"
#include "SimStill.h"
#include "calib/ui/ScaleLineView.h"
#include "camera/SwitchableCamera.h"
#include "camera/sim/SimScene.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace tavix;
using tavix::test::Measuring;

namespace {

const SimScene::Geometry& g = SimScene::geometry();

// Calibrated at 1280x1024 in the real dialog, then measuring at other resolutions.
class ResolutionRescaleWindow : public Measuring {
protected:
    // "From scale" along the micrometer's divisions, one factor for both axes, OK.
    void calibrateFromScale()
    {
        w->measure().setDialogRunner([this](QDialog& d) {
            d.show();
            auto* name = d.findChild<QLineEdit*>(QStringLiteral("txtName"));
            name->setText(QStringLiteral("x10"));
            auto* axis = d.findChild<QCheckBox*>(QStringLiteral("chkAxisOption"));
            if (!axis->isChecked())
                QTest::mouseClick(axis, Qt::LeftButton, {}, QPoint(8, axis->height() / 2));
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdFromScale")), Qt::LeftButton);
            auto* view = d.findChild<ScaleLineView*>(QStringLiteral("picFromScale"));
            const QImage& picture = w->camera().still();
            const SimScene::Scale& s = g.horizontalScale;
            const double y = s.zero.y() - s.shortTick / 2;
            const QPoint a = view->toWidget(test::scenePixel(picture, {s.zero.x() - 5, y})).toPoint();
            const QPoint b =
                view->toWidget(test::scenePixel(picture, {s.zero.x() + s.length + 5, y})).toPoint();
            QTest::mousePress(view, Qt::LeftButton, {}, a);
            QTest::mouseMove(view, (a + b) / 2);
            QTest::mouseRelease(view, Qt::LeftButton, {}, b);
            dialogResolution = d.findChild<QLabel*>(QStringLiteral("lblResolution"))->text();
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
            return d.result();
        });
        QTest::mouseClick(find<QPushButton>("cmdProofConfig"), Qt::LeftButton);
    }

    // Live, the new resolution, frozen again.
    void switchTo(int mode)
    {
        QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);
        ASSERT_TRUE(w->camera().session().changeMode(mode));
        // On a busy machine the newest frame may still be one of the mode before.
        auto& camera =
            static_cast<SimCamera&>(static_cast<SwitchableCamera&>(w->camera().session().driver()).current());
        QElapsedTimer timer;
        timer.start();
        while (camera.latestFrame().size() != SimCamera::modeSize(mode) && timer.elapsed() < 10000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        freeze();
        ASSERT_EQ(w->camera().still().size(), SimCamera::modeSize(mode));
    }

    // The large disc's diameter, two points clicked 2.6 px outside its edges with the snap on.
    double measureLargeDisc()
    {
        const SimScene::Circle& c = g.largeCircle;
        const QImage& picture = w->camera().still();
        const PointD left = test::scenePixel(picture, c.centre - QPointF(c.diameter / 2, 0));
        const PointD right = test::scenePixel(picture, c.centre + QPointF(c.diameter / 2, 0));
        tool(0);
        click(left.x - 2.6, left.y);
        click(right.x + 2.6, right.y);
        return results().value(results().count());
    }

    QString note() { return find<QLabel>("sbrProofNote")->text(); }
    bool noteShown() { return find<QLabel>("sbrProofNote")->isVisibleTo(w.get()); }
    bool guessNoted() { return find<QLabel>("sbrProofNote")->property("guess").toBool(); }

    QString dialogResolution;
};

TEST_F(ResolutionRescaleWindow, CalibratedAt1280_MeasuresTheLargeDiscAtEveryResolution)
{
    start(test::kMode1280);
    QTest::mouseClick(find<QCheckBox>("chkEdgeSnap"), Qt::LeftButton, {},
                      QPoint(8, find<QCheckBox>("chkEdgeSnap")->height() / 2));
    calibrateFromScale();
    EXPECT_EQ(dialogResolution, message(24031).replace(QLatin1Char('@'), QStringLiteral("1280x1024")));
    const ProofEntry saved = w->data().proofs.at(0);
    ASSERT_EQ(saved.Name, QStringLiteral("x10"));
    EXPECT_TRUE(dir.read(QStringLiteral("Proof.dat.res"))
                    .startsWith("1280x1024 px=3 field=0,0,3840,3072 cam=sim/SimCam 1296\r\n"));
    const QByteArray proofFile = dir.read(QStringLiteral("Proof.dat"));
    EXPECT_FALSE(noteShown());

    const double truth = g.largeCircle.diameter;
    EXPECT_NEAR(measureLargeDisc() / truth - 1, 0.0, 0.005);

    switchTo(test::kMode2592);
    EXPECT_TRUE(noteShown());
    EXPECT_EQ(note(), QStringLiteral("Calibration 'x10' rescaled from 1280x1024 to 2592x1944"));
    EXPECT_NEAR(measureLargeDisc() / truth - 1, 0.0, 0.005);
    EXPECT_EQ(cell(results().count(), 3), QStringLiteral("MIC"));

    switchTo(test::kMode640);
    EXPECT_EQ(note(), QStringLiteral("Calibration 'x10' rescaled from 1280x1024 to 640x480"));
    EXPECT_NEAR(measureLargeDisc() / truth - 1, 0.0, 0.005);

    // Back where it was made: the stored factors exactly, and no note.
    switchTo(test::kMode1280);
    EXPECT_FALSE(noteShown()) << note().toStdString();
    EXPECT_EQ(w->data().measuringEntry(), saved);
    // What the user saved is never rewritten behind their back.
    EXPECT_EQ(dir.read(QStringLiteral("Proof.dat")), proofFile);
    EXPECT_EQ(w->data().proofs.at(0), saved);
}

// While live, the note follows the camera's mode: at start-up too.
TEST_F(ResolutionRescaleWindow, StartingAtAnotherResolution_ShowsTheNoteAtOnce)
{
    dir.write(QStringLiteral("Proof.dat.res"), "1280x1024 px=3 field=0,0,3840,3072 cam=sim/SimCam 1296\r\n");
    start(test::kMode640);
    EXPECT_EQ(note(), QStringLiteral("Calibration 'Sim 2592x1944' rescaled from 1280x1024 to 640x480"));
    EXPECT_FALSE(guessNoted());
    EXPECT_DOUBLE_EQ(w->data().measuringEntry().XFactor, 0.5 * 1280 / 640);
}

// An entry from before the geometry was kept: the same numbers, noted as a guess.
TEST_F(ResolutionRescaleWindow, OldSideFile_RescalesByTheWidths_AndWarns)
{
    dir.write(QStringLiteral("Proof.dat.res"), "1280x1024\r\n");
    start(test::kMode640);
    EXPECT_EQ(note(), message(24036).arg(QStringLiteral("Sim 2592x1944"), QStringLiteral("1280x1024"),
                                         QStringLiteral("640x480")));
    EXPECT_TRUE(guessNoted());
    EXPECT_DOUBLE_EQ(w->data().measuringEntry().XFactor, 0.5 * 1280 / 640);
}

TEST_F(ResolutionRescaleWindow, EntryWithoutResolution_IsUsedAsStored_WithoutANote)
{
    start(test::kMode640);
    EXPECT_FALSE(noteShown());
    EXPECT_EQ(w->data().measuringEntry(), w->data().proofs.at(0));
}

TEST_F(ResolutionRescaleWindow, BrokenSideFile_StartsAnyway_AndIsLogged)
{
    dir.write(QStringLiteral("Proof.dat.res"), "garbage\r\n");
    start(test::kMode640);
    EXPECT_FALSE(noteShown());
    EXPECT_TRUE(log().contains(QStringLiteral("Proof Resolution File Read Error.(1)")));
}

// Selecting another entry shows its own note, or none.
TEST_F(ResolutionRescaleWindow, SelectingAnEntry_UpdatesTheNote)
{
    dir.write(QStringLiteral("Proof.dat.res"), "\r\n640x480\r\n");
    start(test::kMode1280);
    EXPECT_FALSE(noteShown());
    auto* list = find<QComboBox>("cboProof");
    list->setCurrentIndex(1);
    emit list->activated(1);
    EXPECT_EQ(note(), message(24036).arg(QStringLiteral("Sim 1280x1024"), QStringLiteral("640x480"),
                                         QStringLiteral("1280x1024")));
}

// A picture file is measured at its own size; where its pixels lay on which
// sensor is not known, so the rescale is a guess.
TEST_F(ResolutionRescaleWindow, LoadedPicture_IsMeasuredAtItsOwnSize)
{
    dir.write(QStringLiteral("Proof.dat.res"),
              "2592x1944 px=1.4814814814814814 field=0,96,3840,2880 cam=sim/SimCam 1296\r\n");
    start(test::kMode2592);
    EXPECT_FALSE(noteShown());
    const QString file = dir.file(QStringLiteral("small.bmp"));
    ASSERT_TRUE(test::simStill(test::kMode640).save(file, "BMP"));
    w->openPicture(file);
    EXPECT_EQ(w->camera().still().size(), QSize(640, 480));
    EXPECT_EQ(note(), message(24035).arg(QStringLiteral("Sim 2592x1944"), QStringLiteral("2592x1944"),
                                         QStringLiteral("640x480")));
    EXPECT_TRUE(guessNoted());
    EXPECT_DOUBLE_EQ(w->data().measuringEntry().XFactor, 0.5 * 2592 / 640);
}

}  // namespace
