#include "DriverWindow.h"
#include "camera/graph/GraphDriver.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <QDialog>
#include <QElapsedTimer>
#include <QPushButton>
#include <QSlider>
#include <QTest>

#undef signals
#include <gst/gst.h>

using namespace tavix;

namespace {

// A live test source offering two of the program's sizes, as a USB camera would.
constexpr char kTestCamera[] =
    "# two sizes, like a small USB camera\n"
    "videotestsrc is-live=true pattern=smpte !\n"
    "video/x-raw,width={640,1024},height={480,768},framerate=30/1 !\n"
    "identity name=Camera\n";

// The main window on the graph camera, its graph file a test source.
class GraphLive : public test::DriverWindow<GraphDriver> {
protected:
    void SetUp() override
    {
        DriverWindow::SetUp();
        dir.write(QStringLiteral("Camera.grf"), kTestCamera);
    }

    bool start()
    {
        return startWindow([](AppData& data) {
            return std::make_unique<GraphDriver>(data.graphPath(), data.settings.CAMERAFILTERNAME,
                                                 [log = data.log](const QString& line) { log.write(line); });
        });
    }
};

}  // namespace

TEST_F(GraphLive, ShowsTheTestSourceLive_AndFreezesAStillEqualToTheSavedBitmap)
{
    ASSERT_TRUE(start());
    EXPECT_TRUE(log().contains(QStringLiteral("Camera Name:Identity (Camera)\r\n"))) << log().toStdString();
    EXPECT_EQ(status(0), w->data().messages.text(40029) + QStringLiteral(": graph"));
    EXPECT_EQ(status(5), QStringLiteral("Resolution:640x480"));
    ASSERT_TRUE(waitForLiveFrames(3));

    freeze();

    ASSERT_TRUE(w->camera().stillShown());
    QImage fromFile;
    ASSERT_EQ(BmpFile::read(w->data().tempBitmapPath(), fromFile), 0);
    EXPECT_EQ(w->camera().still().size(), QSize(640, 480));
    EXPECT_EQ(w->camera().still().convertToFormat(QImage::Format_RGB32),
              fromFile.convertToFormat(QImage::Format_RGB32));
}

TEST_F(GraphLive, ResolutionChange_RenegotiatesTheStream)
{
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitForLiveFrames(1));
    ASSERT_TRUE(w->camera().session().changeMode(4));
    EXPECT_EQ(status(5), QStringLiteral("Resolution:1024x768"));
    EXPECT_EQ(w->data().settings.DEFAULTRESOLUTION, 4);
    ASSERT_TRUE(waitForLiveFrames(2));
    EXPECT_EQ(driver->frameSize(), QSize(1024, 768));
    freeze();
    EXPECT_EQ(w->camera().still().size(), QSize(1024, 768));
}

TEST_F(GraphLive, SettingsDialog_DisablesTheParametersTheSourceLacks)
{
    ASSERT_TRUE(start());
    bool opened = false;
    QStringList enabled;
    QStringList resolutions;
    w->camera().setDialogRunner([&](QDialog& d) {
        opened = true;
        d.show();
        for (QSlider* s : d.findChildren<QSlider*>())
            if (s->isEnabled())
                enabled.append(s->objectName());
        d.close();
        return 0;
    });
    QTest::mouseClick(w->findChild<QPushButton*>(QStringLiteral("cmdPinProp")), Qt::LeftButton);
    ASSERT_TRUE(opened);
    // A test source has no brightness, gain, exposure, ...: not one slider can be moved.
    EXPECT_TRUE(enabled.isEmpty()) << enabled.join(QLatin1Char(' ')).toStdString();
    EXPECT_TRUE(log().contains(QStringLiteral("nType = 1\r\n")));
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(GraphLive, AnErrorOnTheBusMidStream_IsReportedOnce_AndFreezingSaysNoPictureCanBeTaken)
{
    prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};  // the loss, then the freeze
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitForLiveFrames(2));
    w->camera().tmriCube_Timer();
    const QString frames = status(1);

    GstElement* camera = driver->graphFile().cameraFilter();
    GError* error =
        g_error_new_literal(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_READ, "Could not read from resource.");
    gst_element_post_message(camera, gst_message_new_error(GST_OBJECT(camera), error, nullptr));
    g_error_free(error);
    QTest::qWait(300);
    w->camera().tmriCube_Timer();
    w->camera().tmriCube_Timer();

    EXPECT_TRUE(
        log().contains(QStringLiteral(" Error: graph camera lost (Could not read from resource.)\r\n")))
        << log().toStdString();
    EXPECT_EQ(status(1), frames);
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, w->data().messages.text(26990));
    // The frame held last is no new picture: a series or a grab gets none either.
    QImage grabbed;
    EXPECT_EQ(driver->GrabFrame(w->camera().session().camera(), grabbed), -10);
    EXPECT_EQ(driver->SaveToFile(w->camera().session().camera(), dir.file(QStringLiteral("next.bmp"))), -10);
    EXPECT_FALSE(dir.exists(QStringLiteral("next.bmp")));
    freeze();
    ASSERT_EQ(prompter.messages.size(), 2u);
    EXPECT_EQ(prompter.messages[1].text, w->data().messages.text(26999, -10));
    EXPECT_TRUE(log().contains(QStringLiteral(" Error: ICubeSDK_SaveToFile(-10)\r\n")))
        << log().toStdString();

    QElapsedTimer timer;
    timer.start();
    w.reset();
    EXPECT_LT(timer.elapsed(), 5000);
}

TEST_F(GraphLive, AGraphFileThatCannotBeParsed_EndsTheStartUp_AndIsDeleted)
{
    prompter.answers = {Prompter::Answer::Ok};
    dir.write(QStringLiteral("Camera.grf"), "videotestsrc name=Camera ! !");
    EXPECT_FALSE(start());
    EXPECT_TRUE(log().contains(QStringLiteral(" LoadGrfFile Error.(5)\r\n"))) << log().toStdString();
    EXPECT_TRUE(log().contains(QStringLiteral(" frmMain:Form_Load Error.(5)\r\n")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].title, w->data().messages.text(11051));
    EXPECT_FALSE(dir.exists(QStringLiteral("Camera.grf")));
}

TEST_F(GraphLive, ACameraNameThatMatchesNothing_EndsTheStartUp_WithTheFilerLine)
{
    prompter.answers = {Prompter::Answer::Ok};
    dir.write(QStringLiteral("Camera.grf"), "videotestsrc name=Webcam");
    EXPECT_FALSE(start());
    EXPECT_TRUE(log().contains(QStringLiteral(" LoadGrfFile:Camera Filer Not Found.\r\n")))
        << log().toStdString();
    EXPECT_FALSE(dir.exists(QStringLiteral("Camera.grf")));
}
