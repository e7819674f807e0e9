#include "AviFrames.h"
#include "AviProbe.h"
#include "CountingSink.h"
#include "FakeWebcamSource.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "camera/CameraSession.h"
#include "camera/Resolution.h"
#include "camera/graph/GraphDriver.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/Settings.h"
#include "common/SettingsFile.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

using namespace tavix;
using tavix::test::CountingSink;
using tavix::test::FakeWebcamSource;
using tavix::test::ScriptedPrompter;
using tavix::test::shippedMessages;
using tavix::test::TempDir;
using Kind = GraphMode::Kind;

namespace {

struct Offered {
    QSize size;
    Kind kind;
};

// A camera as the graph file describes it, and what the driver should make of it.
struct Webcam {
    const char* name;
    const char* offers;          // the caps the camera lists
    std::vector<Offered> modes;  // every size, smallest first, in the format expected
    QSize startAt;               // the default resolution an earlier run saved
    QSize changeTo;              // a 16:9 size the user changes to, saved for the next start
};

void PrintTo(const Webcam& w, std::ostream* os)
{
    *os << w.name;
}

const Webcam kWebcams[] = {
    {"MjpegFastYuyvSlow",
     "image/jpeg,width=640,height=480,framerate=15/1; "
     "video/x-raw,format=YUY2,width=640,height=480,framerate=30/1; "
     "image/jpeg,width=1280,height=720,framerate=30/1; "
     "video/x-raw,format=YUY2,width=1280,height=720,framerate=10/1; "
     "image/jpeg,width=1920,height=1080,framerate=30/1; "
     "video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1; "
     "image/jpeg,width=2592,height=1944,framerate=15/1; "
     "video/x-raw,format=YUY2,width=2592,height=1944,framerate=2/1",
     {{{640, 480}, Kind::Raw},
      {{1280, 720}, Kind::Jpeg},
      {{1920, 1080}, Kind::Jpeg},
      {{2592, 1944}, Kind::Jpeg}},
     {1920, 1080},
     {1280, 720}},
    {"MjpegOnly",
     "image/jpeg,width=1920,height=1080,framerate=30/1; "
     "image/jpeg,width=1280,height=720,framerate={30/1,15/1}; "
     "image/jpeg,width=1000,height=750,framerate=30/1; image/jpeg,width=640,height=360,framerate=30/1",
     {{{640, 360}, Kind::Jpeg},
      {{1000, 750}, Kind::Jpeg},
      {{1280, 720}, Kind::Jpeg},
      {{1920, 1080}, Kind::Jpeg}},
     {1280, 720},
     {640, 360}},
    {"SixteenByNineOnly",
     "video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1; "
     "video/x-raw,format=NV12,width=1920,height=1080,framerate=30/1; "
     "video/x-raw,format=YUY2,width=640,height=360,framerate=30/1",
     {{{640, 360}, Kind::Raw}, {{1280, 720}, Kind::Raw}, {{1920, 1080}, Kind::Raw}},
     {1920, 1080},
     {640, 360}},
    {"Bayer",
     "video/x-bayer,format=rggb,width=2592,height=1944,framerate=15/1; "
     "video/x-raw,format=GRAY8,width=2592,height=1944,framerate=5/1; "
     "video/x-bayer,format=rggb,width=1280,height=720,framerate=30/1; "
     "video/x-raw,format=GRAY8,width=640,height=480,framerate=30/1",
     {{{640, 480}, Kind::Raw}, {{1280, 720}, Kind::Bayer}, {{2592, 1944}, Kind::Bayer}},
     {640, 480},
     {1280, 720}},
};

class GraphWebcam : public ::testing::TestWithParam<Webcam> {
protected:
    void SetUp() override
    {
        FakeWebcamSource::registerElement();
        graph = dir.write(QStringLiteral("Camera.grf"), QByteArray("tavixwebcamsrc offers=\"") +
                                                            GetParam().offers + "\" ! identity name=Camera");
    }

    std::unique_ptr<GraphDriver> openDriver()
    {
        auto driver = std::make_unique<GraphDriver>(graph, QStringLiteral("Camera"),
                                                    [this](const QString& line) { logged.append(line); });
        EXPECT_EQ(driver->Init(), 1);
        EXPECT_EQ(driver->Open(0), 0) << logged.join(QLatin1Char('\n')).toStdString();
        return driver;
    }

    TempDir dir;
    QString graph;
    QStringList logged;
};

}  // namespace

TEST_P(GraphWebcam, EverySizeIsAModeNamedByItsSize_InItsFastestFormat)
{
    const auto driver = openDriver();
    std::vector<std::int32_t> modes;
    ASSERT_EQ(driver->GetModeList(0, modes), 0);
    ASSERT_EQ(modes.size(), GetParam().modes.size());
    for (size_t i = 0; i < modes.size(); ++i) {
        const Offered& want = GetParam().modes[i];
        EXPECT_EQ(modes[i], Resolution::indexOf(want.size));
        EXPECT_EQ(Resolution::name(modes[i]),
                  QStringLiteral("%1x%2").arg(want.size.width()).arg(want.size.height()));
        EXPECT_EQ(driver->modes()[i].kind, want.kind) << Resolution::name(modes[i]).toStdString();
    }
}

TEST_P(GraphWebcam, EveryMode_Streams_AndFreezeGivesTheFullSizeStill)
{
    const auto driver = openDriver();
    for (const Offered& mode : GetParam().modes) {
        SCOPED_TRACE(mode.size.width());
        // Shown at about a sixth of the width, as a live view in a window would.
        CountingSink sink(mode.size / 6);
        ASSERT_EQ(driver->SetMode(0, Resolution::indexOf(mode.size)), 0);
        ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
        ASSERT_TRUE(sink.waitFrames(2)) << logged.join(QLatin1Char('\n')).toStdString();
        QImage still;
        ASSERT_EQ(driver->GrabFrame(0, still), 0);
        ASSERT_EQ(driver->Stop(0), 0);
        EXPECT_EQ(still.size(), mode.size);
        EXPECT_EQ(driver->frameSize(), mode.size);
        // The scene: red above, blue below, whatever way the frames came (a grey camera: its greys).
        const QRgb top = still.pixel(4, 4);
        const QRgb bottom = still.pixel(4, mode.size.height() - 5);
        const QRgb shown = sink.topLeft();
        if (driver->modes()[static_cast<size_t>(&mode - GetParam().modes.data())].format == "GRAY8") {
            EXPECT_EQ(qRed(top), qBlue(top));
            EXPECT_NEAR(qGray(top), 87, 8);
            EXPECT_NEAR(qGray(bottom), 67, 8);
            EXPECT_EQ(shown, top);
        } else {
            EXPECT_GT(qRed(top), 150);
            EXPECT_LT(qBlue(top), 90);
            EXPECT_GT(qBlue(bottom), 150);
            EXPECT_LT(qRed(bottom), 90);
            EXPECT_GT(qRed(shown), 150);
            EXPECT_LT(qBlue(shown), 90);
        }
        // The live picture is no larger than needed where it had to be decoded; the
        // others come as the camera sent them, YUY2 and Bayer frames in their own pixels.
        const QByteArray format =
            driver->modes()[static_cast<size_t>(&mode - GetParam().modes.data())].format;
        if (mode.kind == Kind::Jpeg) {
            if (mode.size.width() >= 1280)
                EXPECT_LT(sink.lastSize().width(), mode.size.width());
        } else {
            EXPECT_EQ(sink.lastSize(), mode.size);
        }
        if (mode.kind == Kind::Bayer)
            EXPECT_EQ(sink.lastRaw(), RawLayout::BayerRggb);
        else
            EXPECT_EQ(sink.lastRaw(), format == "YUY2" ? RawLayout::Yuyv : RawLayout::None);
        std::int32_t broken = -1;
        ASSERT_EQ(driver->GetBrokenFrames(0, broken), 0);
        EXPECT_EQ(broken, 0);

        ASSERT_EQ(driver->SaveToFile(0, dir.file(QStringLiteral("still.bmp"))), 0);
        QImage bmp;
        ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("still.bmp")), bmp), 0);
        EXPECT_EQ(bmp.size(), mode.size);
    }
}

TEST_P(GraphWebcam, ADefaultResolutionOf16By9_IsChosenAgainAtTheNextStart)
{
    const QString ini = dir.file(QStringLiteral("Tavix.Ini"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(TAVIX_SOURCE_DATA_DIR "/Tavix.Ini"), ini));
    QFile::setPermissions(ini, QFile::ReadOwner | QFile::WriteOwner);
    const ErrorLog errorLog(dir.file(QStringLiteral("Error.Log")));
    const MessageTable messages = shippedMessages();
    ScriptedPrompter prompter;
    const std::int32_t first = Resolution::indexOf(GetParam().startAt);
    const std::int32_t second = Resolution::indexOf(GetParam().changeTo);
    CountingSink sink;
    CameraSession::View view;
    view.sink = &sink;
    int ended = 0;
    view.endProgram = [&] { ++ended; };

    for (const std::int32_t chosen : {first, second}) {
        Settings settings;
        SettingsFile file(ini, errorLog);
        ASSERT_TRUE(file.GetIniFileData(settings));
        if (chosen == first)
            settings.DEFAULTRESOLUTION = static_cast<qint16>(first);  // saved by an earlier run
        const auto driver = std::make_unique<GraphDriver>(graph, QStringLiteral("Camera"));
        CameraSession session(*driver, settings, messages, errorLog, prompter);
        ASSERT_TRUE(session.open(view));
        EXPECT_EQ(session.currentMode(), chosen);
        EXPECT_EQ(session.modes().size(), GetParam().modes.size());
        ASSERT_TRUE(sink.waitFrames(1));
        EXPECT_EQ(sink.lastSize().isEmpty(), false);
        // The user picks the other 16:9 size; the program writes its settings at exit.
        ASSERT_TRUE(session.changeMode(second));
        session.exit();
        file.writeExitSettings(settings, 0);
    }
    EXPECT_EQ(ended, 0);
}

// A JPEG camera's frames go into the file as they came; others are encoded from their full-size pictures.
TEST_P(GraphWebcam, Recording_WritesFullSizeFrames_AJpegCamerasAsTheyCame)
{
    const auto driver = openDriver();
    const Offered mode = GetParam().modes[1];
    ASSERT_EQ(driver->SetMode(0, Resolution::indexOf(mode.size)), 0);
    CountingSink sink(QSize(320, 180));
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(sink.waitFrames(1));
    const QString path = dir.file(QStringLiteral("clip.avi"));
    ASSERT_EQ(driver->SaveAvi(0, path, 0, 1), 0);
    std::int32_t writing = 1;
    QElapsedTimer t;
    t.start();
    while (writing != 0 && t.elapsed() < 20000) {
        QThread::msleep(50);
        driver->GetCamParameter(0, 24, writing);
    }
    ASSERT_EQ(writing, 0);
    driver->Stop(0);
    const test::AviProbe probe = test::AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(QSize(probe.width, probe.height), mode.size);
    const QList<QByteArray> frames = test::aviFrames(path);
    ASSERT_GE(frames.size(), 10);
    EXPECT_EQ(probe.frames, frames.size());
    if (mode.kind != Kind::Jpeg)
        return;
    const QByteArray sent = FakeWebcamSource::jpegFrame(mode.size);
    for (const QByteArray& frame : frames)
        ASSERT_EQ(frame, sent);
}

INSTANTIATE_TEST_SUITE_P(Webcams, GraphWebcam, ::testing::ValuesIn(kWebcams),
                         [](const auto& info) { return std::string(info.param.name); });

// Only the vendor's library has a mode array of ten.
TEST(GraphWebcamSession, KeepsEveryModeTheCameraOffers_MoreThanTen)
{
    FakeWebcamSource::registerElement();
    TempDir dir;
    QByteArray offers;
    const int widths[] = {160, 320, 640, 800, 960, 1024, 1280, 1440, 1600, 1920, 2048, 2560};
    for (const int w : widths)
        offers += QByteArray("image/jpeg,width=") + QByteArray::number(w) +
                  ",height=" + QByteArray::number(w * 9 / 16) + ",framerate=30/1; ";
    GraphDriver driver(
        dir.write(QStringLiteral("Camera.grf"),
                  "tavixwebcamsrc offers=\"" + offers.chopped(2) + "\" ! identity name=Camera"),
        QStringLiteral("Camera"));
    const ErrorLog errorLog(dir.file(QStringLiteral("Error.Log")));
    const MessageTable messages = shippedMessages();
    ScriptedPrompter prompter;
    Settings settings;
    CameraSession session(driver, settings, messages, errorLog, prompter);
    CountingSink sink;
    CameraSession::View view;
    view.sink = &sink;
    ASSERT_TRUE(session.open(view));
    ASSERT_EQ(session.modes().size(), 12u);
    EXPECT_EQ(Resolution::name(session.modes().front()), QStringLiteral("160x90"));
    EXPECT_EQ(Resolution::name(session.modes().back()), QStringLiteral("2560x1440"));
    session.exit();
}
