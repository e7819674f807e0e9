#include "AviProbe.h"
#include "CountingSink.h"
#include "TempDir.h"
#include "camera/HeldFrame.h"
#include "camera/LiveView.h"
#include "camera/Resolution.h"
#include "camera/graph/GraphDriver.h"
#include "media/BayerDemosaic.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QThread>
#include <algorithm>
#include <vector>

#undef signals
#include <gst/gst.h>
#include <gst/video/video.h>

using namespace tavix;
using tavix::test::CountingSink;
using tavix::test::TempDir;

namespace {

// A live test source that offers 640x480 and 1024x768 only, as a USB camera
// offers its few sizes; the camera element passes on what is upstream of it,
// and what follows it is the file's own tail.
constexpr char kTwoSizes[] =
    "videotestsrc is-live=true ! "
    "video/x-raw,width={640,1024},height={480,768},framerate=30/1 ! "
    "identity name=Camera ! fakesink";

// Keeps a copy of the newest frame of the camera's own pixels (YUY2 or Bayer).
class KeepingSink : public FrameSink {
public:
    void frameReady(const FrameView& frame) override
    {
        QMutexLocker lock(&mutex);
        ++count;
        raw = frame.raw;
        size = QSize(frame.width, frame.height);
        const int row = frame.width * (frame.raw == RawLayout::Yuyv ? 2 : 1);
        pixels.resize(size_t(row) * size_t(frame.height));
        for (int y = 0; y < frame.height; ++y)
            std::copy_n(frame.bits + y * frame.bytesPerLine, row, pixels.begin() + y * row);
    }
    bool waitFrames(int frames)
    {
        QElapsedTimer t;
        t.start();
        for (;;) {
            {
                QMutexLocker lock(&mutex);
                if (count >= frames)
                    return true;
            }
            if (t.elapsed() > 20000)
                return false;
            QThread::msleep(5);
        }
    }

    QMutex mutex;
    int count = 0;
    RawLayout raw = RawLayout::None;
    QSize size;
    std::vector<uchar> pixels;  // rows without padding
};

// The RGB picture GStreamer's converter makes of a YUY2 frame (rows without padding).
QImage convertedYuy2(std::vector<uchar>& pixels, QSize size)
{
    GstCaps* caps = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "YUY2", "width", G_TYPE_INT,
                                        size.width(), "height", G_TYPE_INT, size.height(), "framerate",
                                        GST_TYPE_FRACTION, 30, 1, nullptr);
    GstVideoInfo in;
    const bool described = gst_video_info_from_caps(&in, caps);
    gst_caps_unref(caps);
    GstVideoInfo out;
    gst_video_info_set_format(&out, GST_VIDEO_FORMAT_RGB, size.width(), size.height());
    GST_VIDEO_INFO_FPS_N(&out) = GST_VIDEO_INFO_FPS_N(&in);
    GST_VIDEO_INFO_FPS_D(&out) = GST_VIDEO_INFO_FPS_D(&in);
    QImage rgb(size, QImage::Format_RGB888);
    GstVideoConverter* converter = described ? gst_video_converter_new(&in, &out, nullptr) : nullptr;
    GstBuffer* from = gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, pixels.data(), pixels.size(), 0,
                                                  pixels.size(), nullptr, nullptr);
    GstBuffer* to = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&out), nullptr);
    GstVideoFrame source, target;
    if (converter && gst_video_frame_map(&source, &in, from, GST_MAP_READ)) {
        if (gst_video_frame_map(&target, &out, to, GST_MAP_WRITE)) {
            gst_video_converter_frame(converter, &source, &target);
            const auto* bits = static_cast<const uchar*>(GST_VIDEO_FRAME_PLANE_DATA(&target, 0));
            for (int y = 0; y < size.height(); ++y)
                std::copy_n(bits + y * GST_VIDEO_FRAME_PLANE_STRIDE(&target, 0), size.width() * 3,
                            rgb.scanLine(y));
            gst_video_frame_unmap(&target);
        }
        gst_video_frame_unmap(&source);
    }
    if (converter)
        gst_video_converter_free(converter);
    gst_buffer_unref(from);
    gst_buffer_unref(to);
    return rgb;
}

class GraphDriverTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(openWith(kTwoSizes)); }

    bool openWith(const QByteArray& description)
    {
        driver = std::make_unique<GraphDriver>(dir.write(QStringLiteral("Camera.grf"), description),
                                               QStringLiteral("Camera"),
                                               [this](const QString& line) { logged.append(line); });
        return driver->Init() == 1 && driver->Open(0) == 0;
    }

    bool waitFrames(int frames) { return sink.waitFrames(frames); }

    TempDir dir;
    QStringList logged;
    std::unique_ptr<GraphDriver> driver;
    CountingSink sink;
};

}  // namespace

TEST_F(GraphDriverTest, NamesTheSourceAndItsVersion)
{
    QString name;
    ASSERT_EQ(driver->GetName(0, name), 0);
    EXPECT_EQ(name, QStringLiteral("Identity (Camera)"));
    QString version;
    ASSERT_EQ(driver->GetVersion(1, version), 0);
    EXPECT_TRUE(version.startsWith(QStringLiteral("GStreamer 1."))) << version.toStdString();
    EXPECT_EQ(driver->GetName(1, name), GraphDriver::kBadCamera);
    EXPECT_EQ(driver->Open(0), GraphDriver::kAlreadyOpen);
}

TEST_F(GraphDriverTest, ModeList_IsTheProgramsSizesThePinOffers_SmallestFirst)
{
    std::vector<std::int32_t> modes;
    ASSERT_EQ(driver->GetModeList(0, modes), 0);
    EXPECT_EQ(modes, (std::vector<std::int32_t>{1, 4}));
    std::int32_t mode = -1;
    ASSERT_EQ(driver->GetMode(0, mode), 0);
    EXPECT_EQ(mode, 1);  // what the source takes by itself
}

TEST_F(GraphDriverTest, ASourceOfAnySize_OffersEveryClassicSize_NotCappedAtTen)
{
    ASSERT_TRUE(openWith("videotestsrc is-live=true name=Camera"));
    std::vector<std::int32_t> modes;
    ASSERT_EQ(driver->GetModeList(0, modes), 0);
    ASSERT_EQ(modes.size(), 11u);
    EXPECT_EQ(modes.front(), 0);  // 320x240
    EXPECT_EQ(modes.back(), 9);   // 3840x2748
}

TEST_F(GraphDriverTest, ASizeOutsideTheClassicTable_IsAModeNamedBySize)
{
    ASSERT_TRUE(
        openWith("videotestsrc is-live=true ! video/x-raw,width=1280,height=720 ! identity name=Camera"));
    std::vector<std::int32_t> modes;
    ASSERT_EQ(driver->GetModeList(0, modes), 0);
    ASSERT_EQ(modes.size(), 1u);
    EXPECT_EQ(Resolution::name(modes[0]), QStringLiteral("1280x720"));
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(1));
    EXPECT_EQ(sink.lastSize(), QSize(1280, 720));
}

TEST_F(GraphDriverTest, ASourceOfNoFormatTheProgramReads_DoesNotOpen_AndSaysWhatItOffers)
{
    EXPECT_FALSE(openWith("videotestsrc ! video/x-raw,width=320,height=240 ! pngenc ! identity name=Camera"));
    ASSERT_FALSE(logged.isEmpty());
    EXPECT_TRUE(logged.last().startsWith(
        QStringLiteral("Error: graph camera offers no picture format the program reads (image/png")))
        << logged.last().toStdString();
}

TEST_F(GraphDriverTest, Start_HandsRgbFramesOfTheModesSizeToTheSink_AndCountsThem)
{
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    EXPECT_EQ(driver->IsStarted(0), 1);
    ASSERT_TRUE(waitFrames(3));
    EXPECT_EQ(sink.lastSize(), QSize(640, 480));
    EXPECT_EQ(sink.lastFormat(), QImage::Format_RGB888);
    std::int32_t good = 0, broken = -1;
    ASSERT_EQ(driver->GetGoodFrames(0, good), 0);
    ASSERT_EQ(driver->GetBrokenFrames(0, broken), 0);
    EXPECT_GE(good, 3);
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(driver->Start(0, 0, &sink, -1, 0), GraphDriver::kBusy);
    ASSERT_EQ(driver->Stop(0), 0);
    EXPECT_EQ(driver->IsStarted(0), 0);
    const int after = sink.frames();
    QThread::msleep(200);
    EXPECT_EQ(sink.frames(), after);
}

TEST_F(GraphDriverTest, SetMode_WhileStopped_RenegotiatesTheNextStart)
{
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(1));
    EXPECT_EQ(driver->SetMode(0, 4), GraphDriver::kBusy);
    ASSERT_EQ(driver->Stop(0), 0);
    EXPECT_EQ(driver->SetMode(0, 3), GraphDriver::kOutOfRange);  // 800x600 is not offered
    ASSERT_EQ(driver->SetMode(0, 4), 0);
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    EXPECT_EQ(sink.lastSize(), QSize(1024, 768));
    EXPECT_EQ(driver->frameSize(), QSize(1024, 768));
}

// A USB camera may crop or scale its field into a mode: the driver cannot tell which.
TEST_F(GraphDriverTest, ModeGeometry_IsNotKnown)
{
    std::vector<std::int32_t> modes;
    ASSERT_EQ(driver->GetModeList(0, modes), 0);
    ASSERT_FALSE(modes.empty());
    for (const std::int32_t mode : modes)
        EXPECT_EQ(driver->modeGeometry(mode), std::nullopt) << mode;
    EXPECT_TRUE(driver->cameraId().isEmpty());
}

TEST_F(GraphDriverTest, SaveToFile_WritesTheNewestFrame_AsBitmapOrJpeg_AndGrabFrameCopiesIt)
{
    EXPECT_EQ(driver->SaveToFile(0, dir.file(QStringLiteral("none.bmp"))), GraphDriver::kNoFrame);
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    ASSERT_EQ(driver->Stop(0), 0);

    ASSERT_EQ(driver->SaveToFile(0, dir.file(QStringLiteral("still.bmp"))), 0);
    QImage bmp;
    ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("still.bmp")), bmp), 0);
    QImage grabbed;
    ASSERT_EQ(driver->GrabFrame(0, grabbed), 0);
    EXPECT_EQ(grabbed.size(), QSize(640, 480));
    EXPECT_EQ(bmp.convertToFormat(QImage::Format_RGB32), grabbed.convertToFormat(QImage::Format_RGB32));
    // The test picture's first bar is white-ish, not black: real pixels arrived.
    EXPECT_GT(qRed(grabbed.pixel(10, 10)), 150);
    QImage seen;
    ASSERT_EQ(driver->readFrame(0,
                                [&](const FrameView& f) {
                                    seen = QImage(f.bits, f.width, f.height, f.bytesPerLine, f.format).copy();
                                }),
              0);
    EXPECT_EQ(seen, grabbed) << "read where it lies: the frame GrabFrame copies";

    ASSERT_EQ(driver->SaveToFile(0, dir.file(QStringLiteral("still.JPG"))), 0);
    EXPECT_TRUE(dir.read(QStringLiteral("still.JPG")).startsWith("\xFF\xD8"));
    EXPECT_EQ(driver->SaveToFile(0, dir.file(QStringLiteral("missing/still.bmp"))),
              GraphDriver::kWriteFailed);
}

TEST_F(GraphDriverTest, SaveAvi_RecordsTheStream_AndParameter24ReadsOneUntilTheFileIsClosed)
{
    const QString path = dir.file(QStringLiteral("clip.avi"));
    EXPECT_EQ(driver->SaveAvi(0, path, 0, 1), GraphDriver::kNoFrame);  // not streaming
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    ASSERT_EQ(driver->SaveAvi(0, path, 0, 1), 0);
    std::int32_t writing = 0;
    ASSERT_EQ(driver->GetCamParameter(0, 24, writing), 0);
    EXPECT_EQ(writing, 1);
    QElapsedTimer t;
    t.start();
    while (writing != 0 && t.elapsed() < 20000) {
        QThread::msleep(50);
        driver->GetCamParameter(0, 24, writing);
    }
    ASSERT_EQ(writing, 0);
    RecordingStats stats;
    ASSERT_TRUE(driver->recordingStats(0, stats));
    EXPECT_TRUE(stats.finished);
    const test::AviProbe probe = test::AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(QSize(probe.width, probe.height), QSize(640, 480));
    EXPECT_NEAR(probe.fps, 30, 0.5);
    EXPECT_NEAR(probe.frames, 30, 3);
}

TEST_F(GraphDriverTest, ASourceWithoutDeviceControls_ReportsEveryParameterNotEnabled)
{
    for (int type : {1, 2, 3, 4, 5, 6, 7, 9, 11, 12, 13, 19, 109, 111, 147}) {
        CamParamRange range;
        range.enabled = 7;
        ASSERT_EQ(driver->GetCamParameterRange(0, type, range), 0) << type;
        EXPECT_EQ(range.enabled, 0) << type;
        std::int32_t value = 0;
        EXPECT_EQ(driver->GetCamParameter(0, type, value), GraphDriver::kNotSupported) << type;
        EXPECT_EQ(driver->SetCamParameter(0, type, 0), GraphDriver::kNotSupported) << type;
    }
    std::int32_t flag = 0;
    EXPECT_EQ(driver->GetParamAuto(0, 7, flag), GraphDriver::kNotSupported);
    EXPECT_EQ(driver->SetParamOnePush(0, 6), GraphDriver::kNotSupported);
    float ms = 0;
    EXPECT_EQ(driver->GetExposure(0, ms), GraphDriver::kNotSupported);
    CamParamRange avi;
    ASSERT_EQ(driver->GetCamParameterRange(0, 24, avi), 0);
    EXPECT_EQ(avi.enabled, 1);
}

TEST_F(GraphDriverTest, AnErrorOnTheBusMidStream_IsLoggedWithGStreamersText_AndTheOldFrameIsNoNewPicture)
{
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    GstElement* camera = driver->graphFile().cameraFilter();  // as a source element would post it
    GError* error =
        g_error_new_literal(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_READ, "Could not read from resource.");
    gst_element_post_message(camera, gst_message_new_error(GST_OBJECT(camera), error, "unplugged"));
    g_error_free(error);

    EXPECT_EQ(logged,
              QStringList{QStringLiteral("Error: graph camera lost (Could not read from resource.)")});
    EXPECT_EQ(driver->IsStarted(0), 0);
    EXPECT_TRUE(driver->connectionLost(0));
    QThread::msleep(100);  // a frame on its way when the error came
    const int after = sink.frames();
    QThread::msleep(300);
    EXPECT_EQ(sink.frames(), after);
    // The frame still held is from before the loss: no save or grab passes it off as new.
    EXPECT_EQ(driver->SaveToFile(0, dir.file(QStringLiteral("last.bmp"))), HeldFrame::kCameraLost);
    EXPECT_FALSE(QFile::exists(dir.file(QStringLiteral("last.bmp"))));
    QImage grabbed;
    EXPECT_EQ(driver->GrabFrame(0, grabbed), HeldFrame::kCameraLost);
    EXPECT_EQ(driver->readFrame(0, [](const FrameView&) { ADD_FAILURE() << "an old frame was read"; }),
              HeldFrame::kCameraLost);
    EXPECT_EQ(driver->Start(0, 0, &sink, -1, 0), GraphDriver::kDisconnected);

    QElapsedTimer t;
    t.start();
    EXPECT_EQ(driver->Close(0), 0);
    EXPECT_LT(t.elapsed(), 5000);
    EXPECT_EQ(driver->IsOpen(0), 1);
    EXPECT_EQ(logged.size(), 1);
}

TEST_F(GraphDriverTest, TheFilesOwnTail_IsReplacedByTheDriversConversion)
{
    // The fakesink that followed the camera in the file is gone; frames reach the sink instead.
    EXPECT_EQ(gst_bin_get_by_name(GST_BIN(driver->pipeline()), "fakesink0"), nullptr);
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    EXPECT_TRUE(waitFrames(1));
}

TEST(GraphDriver, AGraphFileThatDoesNotLoad_FailsPrepare_WithItsErrorNumber)
{
    TempDir dir;
    GraphDriver missing(dir.file(QStringLiteral("None.grf")), QStringLiteral("Camera"));
    EXPECT_EQ(missing.prepare(), 53);
    EXPECT_EQ(missing.Init(), 0);
    EXPECT_EQ(missing.Open(0), GraphDriver::kBadCamera);
    GraphDriver wrongName(dir.write(QStringLiteral("Camera.grf"), "videotestsrc name=Webcam"),
                          QStringLiteral("Camera"));
    EXPECT_EQ(wrongName.prepare(), 5);
}

// The shipped test-source graph file offers three sizes and starts at the smallest.
TEST(GraphDriver, TheShippedTestSourceFile_OffersThreeSizes_StartingAt640x480)
{
    GraphDriver shipped(QStringLiteral(TAVIX_SOURCE_DATA_DIR "/TestSource.grf"), QStringLiteral("Camera"));
    ASSERT_EQ(shipped.Init(), 1);
    ASSERT_EQ(shipped.Open(0), 0);
    std::vector<std::int32_t> modes;
    ASSERT_EQ(shipped.GetModeList(0, modes), 0);
    EXPECT_EQ(modes, (std::vector<std::int32_t>{1, 4, 6}));
    std::int32_t mode = -1;
    ASSERT_EQ(shipped.GetMode(0, mode), 0);
    EXPECT_EQ(mode, 1);
}

// The shipped camera file names the first USB camera's device.
TEST(GraphDriver, TheShippedCameraFile_IsTheFirstUsbCamera)
{
    GraphFile shipped(QStringLiteral(TAVIX_SOURCE_DATA_DIR "/Camera.grf"), QStringLiteral("Camera"));
    ASSERT_TRUE(shipped.LoadGrfFile());
    EXPECT_EQ(shipped.devicePath(), QStringLiteral("/dev/video0"));
}

// A webcam offers a few rates at a size; the dialog's frame-rate slider picks among them.
TEST_F(GraphDriverTest, FrameRate_TheRatesOfTheMode_ANewOneRestartsTheStreamAtIt)
{
    ASSERT_TRUE(
        openWith("videotestsrc is-live=true ! "
                 "video/x-raw,width=640,height=480,framerate={30/1,15/1,5/1} ! identity name=Camera"));
    CamParamRange range;
    ASSERT_EQ(driver->GetCamParameterRange(0, 147, range), 0);
    EXPECT_EQ(range.enabled, 1);
    EXPECT_EQ(range.minimum, 5);
    EXPECT_EQ(range.maximum, 30);
    EXPECT_EQ(range.defaultValue, 30);
    std::int32_t fps = 0;
    ASSERT_EQ(driver->GetCamParameter(0, 147, fps), 0);
    EXPECT_EQ(fps, 30);

    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    EXPECT_DOUBLE_EQ(driver->arrivingFps(), 30.0);

    // 20 is not offered: the fastest rate below it.
    ASSERT_EQ(driver->SetCamParameter(0, 147, 20), 0);
    ASSERT_EQ(driver->GetCamParameter(0, 147, fps), 0);
    EXPECT_EQ(fps, 15);
    EXPECT_EQ(driver->IsStarted(0), 1);
    ASSERT_TRUE(waitFrames(2));
    EXPECT_DOUBLE_EQ(driver->arrivingFps(), 15.0);
    EXPECT_EQ(driver->SetCamParameter(0, 147, 31), GraphDriver::kOutOfRange);
    driver->Stop(0);
    EXPECT_TRUE(logged.isEmpty()) << logged.join(QLatin1Char('\n')).toStdString();
}

TEST_F(GraphDriverTest, FrameRate_OneRateOffered_IsGreyed)
{
    CamParamRange range;
    ASSERT_EQ(driver->GetCamParameterRange(0, 147, range), 0);
    EXPECT_EQ(range.enabled, 0);
    EXPECT_EQ(driver->SetCamParameter(0, 147, 30), GraphDriver::kNotSupported);
}

// A USB camera's YUY2 frames go to the live view as they came; a freeze converts the newest one.
TEST_F(GraphDriverTest, Yuy2Frames_ReachTheSinkInTheirOwnPixels_AndTheStillIsTheirConversion)
{
    ASSERT_TRUE(
        openWith("videotestsrc is-live=true ! video/x-raw,format=YUY2,width=640,height=480,framerate=30/1 ! "
                 "identity name=Camera"));
    KeepingSink kept;
    ASSERT_EQ(driver->Start(0, 0, &kept, -1, 0), 0);
    ASSERT_TRUE(kept.waitFrames(2));
    ASSERT_EQ(driver->Stop(0), 0);
    EXPECT_EQ(kept.raw, RawLayout::Yuyv);
    EXPECT_EQ(kept.size, QSize(640, 480));
    EXPECT_EQ(driver->frameSize(), QSize(640, 480));

    QImage still;
    ASSERT_EQ(driver->GrabFrame(0, still), 0);
    EXPECT_EQ(still.format(), QImage::Format_RGB888);
    EXPECT_EQ(still, convertedYuy2(kept.pixels, kept.size));
    EXPECT_GT(qRed(still.pixel(10, 10)), 150);  // the test picture's first bar, not black
    // Read where it lies, the frame is the same conversion.
    QImage seen;
    ASSERT_EQ(driver->readFrame(0,
                                [&](const FrameView& f) {
                                    EXPECT_EQ(f.raw, RawLayout::None);
                                    seen = QImage(f.bits, f.width, f.height, f.bytesPerLine, f.format).copy();
                                }),
              0);
    EXPECT_EQ(seen, still);
    ASSERT_EQ(driver->SaveToFile(0, dir.file(QStringLiteral("still.bmp"))), 0);
    QImage bmp;
    ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("still.bmp")), bmp), 0);
    EXPECT_EQ(bmp.convertToFormat(QImage::Format_RGB32), still.convertToFormat(QImage::Format_RGB32));
    std::int32_t broken = -1;
    ASSERT_EQ(driver->GetBrokenFrames(0, broken), 0);
    EXPECT_EQ(broken, 0);
}

// A Bayer camera's cells go to the live view as they came; a freeze demosaics the newest frame.
TEST_F(GraphDriverTest, BayerFrames_ReachTheSinkAsTheirCells_AndTheStillIsTheirDemosaic)
{
    ASSERT_TRUE(openWith(
        "videotestsrc is-live=true ! video/x-bayer,format=grbg,width=640,height=480,framerate=30/1 ! "
        "identity name=Camera"));
    KeepingSink kept;
    ASSERT_EQ(driver->Start(0, 0, &kept, -1, 0), 0);
    ASSERT_TRUE(kept.waitFrames(2));
    ASSERT_EQ(driver->Stop(0), 0);
    EXPECT_EQ(kept.raw, RawLayout::BayerGrbg);
    EXPECT_EQ(kept.size, QSize(640, 480));

    QImage still;
    ASSERT_EQ(driver->GrabFrame(0, still), 0);
    QImage expected(640, 480, QImage::Format_RGB888);
    BayerDemosaic::toRgb(kept.pixels.data(), 640, 640, 480, BayerDemosaic::Pattern::GRBG, expected.bits(),
                         expected.bytesPerLine());
    EXPECT_EQ(still, expected);
    EXPECT_GT(qRed(still.pixel(10, 10)), 150);
}

// The live view shows frames in the camera's own pixels: nothing is lost or converted on the way.
TEST_F(GraphDriverTest, Yuy2AndBayerFrames_AreShownByTheLiveView)
{
    for (const char* caps : {"video/x-raw,format=YUY2", "video/x-bayer,format=rggb"}) {
        SCOPED_TRACE(caps);
        ASSERT_TRUE(openWith(QByteArray("videotestsrc is-live=true ! ") + caps +
                             ",width=640,height=480,framerate=30/1 ! identity name=Camera"));
        LiveView live;
        live.setDisplaySize(QSize(320, 240));
        ASSERT_EQ(driver->Start(0, 0, &live, -1, 0), 0);
        QElapsedTimer t;
        t.start();
        while (live.counters().received < 2 && t.elapsed() < 20000)
            QThread::msleep(5);
        ASSERT_EQ(driver->Stop(0), 0);
        const QImage* shown = live.takeFrame();
        ASSERT_NE(shown, nullptr);
        EXPECT_EQ(shown->size(), QSize(320, 240));
        // The test picture's first bar is light grey.
        EXPECT_GT(qGray(shown->pixel(5, 5)), 150);
        EXPECT_GT(qRed(shown->pixel(5, 5)), 150);
    }
}

// Frames the live view reads as they are reach it so, and are the still as they came.
TEST_F(GraphDriverTest, RgbBgrAndGreyFrames_PassAsTheyAre_AndAreTheStill)
{
    const std::pair<const char*, QImage::Format> formats[] = {
        {"RGB", QImage::Format_RGB888}, {"BGR", QImage::Format_BGR888}, {"GRAY8", QImage::Format_Grayscale8}};
    for (const auto& [format, expected] : formats) {
        SCOPED_TRACE(format);
        ASSERT_TRUE(openWith(QByteArray("videotestsrc is-live=true ! video/x-raw,format=") + format +
                             ",width=640,height=480,framerate=30/1 ! identity name=Camera"));
        CountingSink shown;
        ASSERT_EQ(driver->Start(0, 0, &shown, -1, 0), 0);
        ASSERT_TRUE(shown.waitFrames(2));
        ASSERT_EQ(driver->Stop(0), 0);
        EXPECT_EQ(shown.lastFormat(), expected);
        EXPECT_EQ(shown.lastRaw(), RawLayout::None);
        QImage still;
        ASSERT_EQ(driver->GrabFrame(0, still), 0);
        EXPECT_EQ(still.format(), expected);
        EXPECT_EQ(still.pixel(0, 0), shown.topLeft());
        EXPECT_GT(qGray(still.pixel(10, 10)), 150);  // the test picture's first bar, light grey
    }
}

// The view reads YUY2 two pixels at a time: a frame of odd width is converted for it.
TEST_F(GraphDriverTest, Yuy2FramesOfOddWidth_AreConvertedToRgb)
{
    ASSERT_TRUE(
        openWith("videotestsrc is-live=true ! video/x-raw,format=YUY2,width=641,height=480,framerate=30/1 ! "
                 "identity name=Camera"));
    ASSERT_EQ(driver->Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    ASSERT_EQ(driver->Stop(0), 0);
    EXPECT_EQ(sink.lastRaw(), RawLayout::None);
    EXPECT_EQ(sink.lastFormat(), QImage::Format_RGB888);
    EXPECT_EQ(sink.lastSize(), QSize(641, 480));
    QImage still;
    ASSERT_EQ(driver->GrabFrame(0, still), 0);
    EXPECT_EQ(still.size(), QSize(641, 480));
    EXPECT_EQ(still.pixel(0, 0), sink.topLeft());
}
