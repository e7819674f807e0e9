// A calibration carried across resolution changes in the window, on cameras
// that tell their modes' geometry (GenICam's binning and crops) and on one
// that cannot (the graph camera): the value measured, and the note beside it.
#include "DriverWindow.h"
#include "MarkedLengthDialogs.h"
#include "camera/genicam/GenICamDriver.h"
#include "camera/graph/GraphDriver.h"
#include "camera/ui/StillViewWidget.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QRadioButton>
#include <QToolButton>

#undef signals
#include <arv.h>

using namespace tavix;

namespace {

// What the window tests below do on any driver: calibrate on the still by a
// marked length, change the resolution in the camera settings, measure.
template <typename Driver>
class GeometryWindow : public test::DriverWindow<Driver> {
protected:
    using Base = test::DriverWindow<Driver>;
    using Base::dir;
    using Base::freeze;
    using Base::prompter;
    using Base::w;

    template <typename T>
    T* find(const char* name)
    {
        T* widget = w->template findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    void freezeAtOnePixelPerPixel()
    {
        // Frames of the mode before may still be on their way.
        QElapsedTimer timer;
        timer.start();
        while (Base::driver->frameSize() != w->camera().modeSize() && timer.elapsed() < 10000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        ASSERT_TRUE(Base::waitForLiveFrames(2));
        freeze();
        ASSERT_TRUE(w->camera().stillShown());
        auto* scale = find<QComboBox>("cboScale");
        scale->setCurrentIndex(scale->findText(QStringLiteral("x 1.0")));
        emit scale->activated(scale->currentIndex());
    }

    void click(double x, double y)
    {
        auto* still = find<StillViewWidget>("picStillView");
        QTest::mouseClick(still, Qt::LeftButton, {}, still->toWidget({x, y}).toPoint());
    }

    // Entry "x10": `length` over `pixels` marked across the still, one factor for both axes, OK.
    void calibrate(int pixels, const char* length)
    {
        dialogs = 0;
        w->measure().setDialogRunner(test::markedLengthDialogs(QStringLiteral("x10"), dialogs));
        QTest::mouseClick(find<QPushButton>("cmdProofConfig"), Qt::LeftButton);
        prompter.inputs.push_back(QString::fromLatin1(length));
        click(100, 100);
        click(100 + pixels, 100);
        ASSERT_EQ(dialogs, 2);
        ASSERT_EQ(w->data().proofs.at(w->data().settings.CURRENTPROOFNO).Name, QStringLiteral("x10"));
    }

    // Live, the resolution chosen in the camera settings dialog, frozen again.
    void switchTo(const char* resolution)
    {
        QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);
        ASSERT_FALSE(w->camera().stillShown());
        bool chosen = false;
        QStringList offered;
        w->camera().setDialogRunner([&](QDialog& d) {
            d.show();
            auto* combo = d.findChild<QComboBox*>(QStringLiteral("cboResolution"));
            for (int i = 0; i < combo->count(); ++i)
                offered << combo->itemText(i);
            const int index = combo->findText(QLatin1String(resolution));
            if (index >= 0) {
                combo->setCurrentIndex(index);
                emit combo->activated(index);
                chosen = true;
            }
            d.close();
            return 0;
        });
        QTest::mouseClick(find<QPushButton>("cmdPinProp"), Qt::LeftButton);
        ASSERT_TRUE(chosen) << resolution << " is not among " << offered.join(QLatin1Char(' ')).toStdString();
        freezeAtOnePixelPerPixel();
        ASSERT_EQ(w->camera().still().size(), w->camera().modeSize());
    }

    // A two-point distance of `pixels` along x; the value in the result table.
    double measure(int pixels)
    {
        QTest::mouseClick(find<QToolButton>("cmdMeasure(0)"), Qt::LeftButton);
        click(50, 60);
        click(50 + pixels, 60);
        ResultTable& results = w->measure().results();
        return results.value(results.count());
    }

    int dialogs = 0;  // the calibration dialog's openings
    QString note() { return find<QLabel>("sbrProofNote")->text(); }
    bool noteShown() { return find<QLabel>("sbrProofNote")->isVisibleTo(w.get()); }
    bool noteWarns() { return find<QLabel>("sbrProofNote")->property("guess").toBool(); }
    QString message(int id) { return w->data().messages.text(id); }
    QString note(int id, const char* from, const char* to)
    {
        return message(id).arg(QStringLiteral("x10"), QLatin1String(from), QLatin1String(to));
    }
};

// The main window on Aravis's fake camera: a 2048x2048 sensor that bins.
class GenICamGeometryWindow : public GeometryWindow<GenICamDriver> {
protected:
    static void SetUpTestSuite() { GenICamDriver::useFakeCameraOnly(); }
    static void TearDownTestSuite() { GenICamDriver::useRealCameras(); }

    bool start(qint16 mode)
    {
        return startWindow([mode](AppData& data) {
            data.settings.DEFAULTRESOLUTION = mode;
            data.settings.CURRENTPROOFNO = 3;  // an entry not calibrated yet
            return std::make_unique<GenICamDriver>(
                [log = data.log](const QString& line) { log.write(line); });
        });
    }

    // The binning the camera itself reports for the mode it is in.
    int binning()
    {
        gint bx = 0, by = 0;
        arv_camera_get_binning(driver->arvCamera(), &bx, &by, nullptr);
        EXPECT_EQ(bx, by);
        return bx;
    }
};

// The graph camera on a test source of two 4:3 sizes, as a USB camera offers them.
class GraphGeometryWindow : public GeometryWindow<GraphDriver> {
protected:
    void SetUp() override
    {
        GeometryWindow::SetUp();
        dir.write(QStringLiteral("Camera.grf"),
                  "videotestsrc is-live=true pattern=smpte !\n"
                  "video/x-raw,width={640,1024},height={480,768},framerate=30/1 !\n"
                  "identity name=Camera\n");
        ASSERT_TRUE(startWindow([](AppData& data) {
            data.settings.CURRENTPROOFNO = 3;
            return std::make_unique<GraphDriver>(data.graphPath(), data.settings.CAMERAFILTERNAME,
                                                 [log = data.log](const QString& line) { log.write(line); });
        }));
    }
};

}  // namespace

TEST_F(GenICamGeometryWindow, CalibratedAtTheFullWidth_ACropABinningAndBack_MeasureTheTruth)
{
    ASSERT_TRUE(start(7));  // 2048x1536: the sensor's whole width, binning 1
    freezeAtOnePixelPerPixel();
    ASSERT_EQ(binning(), 1);
    calibrate(400, "100");  // 0.25 um per sensor pixel
    const ProofEntry saved = w->data().proofs.at(3);
    EXPECT_DOUBLE_EQ(saved.XFactor, 0.25);
    const QList<QByteArray> side = dir.read(QStringLiteral("Proof.dat.res")).split('\n');
    ASSERT_GT(side.size(), 3);
    EXPECT_TRUE(side[3].startsWith("2048x1536 px=1 field=0,256,2048,1536 cam=genicam/"))
        << side[3].toStdString();
    // The fake camera's own id, not the first of every bus: other tests in this process may have listed more.
    const QByteArray fakeId = arv_interface_get_device_id(arv_fake_interface_get_instance(), 0);
    ASSERT_FALSE(fakeId.isEmpty());
    EXPECT_TRUE(side[3].endsWith(fakeId + "\r")) << side[3].toStdString();
    EXPECT_FALSE(noteShown());

    // 1280x1024 is a crop at binning 1: the widths' ratio (1.6) would add 60 %.
    switchTo("1280x1024");
    ASSERT_EQ(binning(), 1);
    EXPECT_NEAR(measure(300) / (300 * 0.25) - 1, 0, 1e-4);
    EXPECT_EQ(note(), note(24034, "2048x1536", "1280x1024"));
    EXPECT_TRUE(noteShown());
    EXPECT_FALSE(noteWarns());

    switchTo("1024x768");
    ASSERT_EQ(binning(), 2);
    EXPECT_NEAR(measure(300) / (300 * 0.25 * 2) - 1, 0, 1e-4);
    EXPECT_EQ(note(), note(24030, "2048x1536", "1024x768"));

    // 640x480 at binning 3: the widths' ratio (3.2) would add 6.7 %.
    switchTo("640x480");
    ASSERT_EQ(binning(), 3);
    EXPECT_NEAR(measure(300) / (300 * 0.25 * 3) - 1, 0, 1e-4);
    EXPECT_EQ(note(), note(24030, "2048x1536", "640x480"));

    switchTo("2048x1536");
    EXPECT_NEAR(measure(300) / (300 * 0.25) - 1, 0, 1e-4);
    EXPECT_FALSE(noteShown());
    EXPECT_EQ(w->data().measuringEntry(), saved);
    EXPECT_EQ(w->data().proofs.at(3), saved);  // never rewritten behind the user's back
}

// A side file of an entry made with another camera: its geometry says nothing of this one.
TEST_F(GenICamGeometryWindow, EntryOfAnotherCamera_IsRescaledByTheWidths_WithTheWarning)
{
    dir.write(QStringLiteral("Proof.dat.res"),
              "\r\n\r\n\r\n2048x1536 px=1 field=0,256,2048,1536 cam=genicam/Other-Camera-7\r\n");
    ASSERT_TRUE(start(5));  // 1280x1024
    w->data().proofs.at(3) =
        ProofEntry{QStringLiteral("x10"), 0.25, 0.25, QStringLiteral("MIC"), 100, 100, 0};
    emit w->measure().proofChanged();
    EXPECT_EQ(note(), note(24036, "2048x1536", "1280x1024"));
    EXPECT_TRUE(noteWarns());
    EXPECT_DOUBLE_EQ(w->data().measuringEntry().XFactor, 0.25 * 2048 / 1280);
}

// An entry from before the geometry was kept: a guess, said to be one.
TEST_F(GenICamGeometryWindow, OldSideFile_IsRescaledByTheWidths_WithTheWarning)
{
    dir.write(QStringLiteral("Proof.dat.res"), "\r\n\r\n\r\n2048x1536\r\n");
    ASSERT_TRUE(start(4));  // 1024x768
    w->data().proofs.at(3).Name = QStringLiteral("x10");
    emit w->measure().proofChanged();
    EXPECT_EQ(note(), note(24035, "2048x1536", "1024x768"));
    EXPECT_TRUE(noteWarns());
}

// The graph camera cannot tell a crop from a scaled field: the widths, and the warning.
TEST_F(GraphGeometryWindow, CalibratedAt640_MeasuredAt1024_IsAGuess_AndSaysSo)
{
    freezeAtOnePixelPerPixel();
    ASSERT_EQ(w->camera().still().size(), QSize(640, 480));
    calibrate(400, "100");
    EXPECT_TRUE(dir.read(QStringLiteral("Proof.dat.res")).contains("\r\n640x480\r\n"));
    switchTo("1024x768");
    EXPECT_NEAR(measure(300) / (300 * 0.25 * 640 / 1024) - 1, 0, 1e-4);
    EXPECT_EQ(note(), note(24035, "640x480", "1024x768"));
    EXPECT_TRUE(noteShown());
    EXPECT_TRUE(noteWarns());

    // The calibration dialog says so too.
    QString said;
    w->measure().setDialogRunner([&](QDialog& d) {
        said = d.findChild<QLabel*>(QStringLiteral("lblResolution"))->text();
        d.reject();
        return d.result();
    });
    prompter.answers.push_back(Prompter::Answer::Yes);  // the unsaved result may go
    QTest::mouseClick(find<QPushButton>("cmdProofConfig"), Qt::LeftButton);
    EXPECT_TRUE(said.startsWith(note(24035, "640x480", "1024x768") + QLatin1Char('\n')))
        << said.toStdString();
}
