#include "AviProbe.h"
#include "TempDir.h"
#include "calib/ProofRescale.h"
#include "camera/HeldFrame.h"
#include "camera/Resolution.h"
#include "camera/genicam/GenICamDriver.h"
#include "media/BayerDemosaic.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QMutex>
#include <QThread>
#include <algorithm>
#include <tuple>
#include <vector>

#undef signals
#include <arv.h>

using namespace tavix;
using tavix::test::TempDir;

namespace {

// Counts the frames and keeps the newest one's description.
class CountingSink : public FrameSink {
public:
    void frameReady(const FrameView& frame) override
    {
        QMutexLocker lock(&mutex);
        ++count;
        size = QSize(frame.width, frame.height);
        format = frame.format;
        raw = frame.raw;
        first = frame.bits[0];
        if (keepCells && raw != RawLayout::None) {
            cells.resize(size_t(frame.width) * size_t(frame.height));
            for (int y = 0; y < frame.height; ++y)
                std::copy_n(frame.bits + y * frame.bytesPerLine, frame.width,
                            cells.begin() + y * frame.width);
        }
    }
    int frames()
    {
        QMutexLocker lock(&mutex);
        return count;
    }

    QMutex mutex;
    int count = 0;
    QSize size;
    QImage::Format format = QImage::Format_Invalid;
    RawLayout raw = RawLayout::None;
    uchar first = 0;
    bool keepCells = false;
    std::vector<uchar> cells;  // the newest Bayer frame's cells, when kept
};

constexpr std::int32_t kFullWidth = 7;  // 2048x1536: binning 1, the sensor's whole width
constexpr std::int32_t kCrop = 5;       // 1280x1024: binning 1, a centred crop
constexpr std::int32_t kBinned2 = 4;    // 1024x768: binning 2
constexpr std::int32_t kBinned3 = 1;    // 640x480: binning 3

class GenICamDriverTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { GenICamDriver::useFakeCameraOnly(); }
    static void TearDownTestSuite() { GenICamDriver::useRealCameras(); }

    // Opened as it comes, then at 2048x1536 Mono8, which most tests take.
    void SetUp() override
    {
        ASSERT_EQ(driver.Init(), 1);
        ASSERT_EQ(driver.Open(0), 0);
        ASSERT_EQ(driver.GetMode(0, openedMode), 0);
        openedFormat = QString::fromUtf8(arv_camera_get_pixel_format_as_string(driver.arvCamera(), nullptr));
        ASSERT_EQ(driver.SetMode(0, kFullWidth), 0);
        setFormat("Mono8");
    }

    void setFormat(const char* format)
    {
        GError* error = nullptr;
        arv_camera_set_pixel_format_from_string(driver.arvCamera(), format, &error);
        ASSERT_EQ(error, nullptr) << format;
    }

    // Waits until the sink has seen `frames` more frames; false after 10 s.
    bool waitFrames(int frames)
    {
        const int target = sink.frames() + frames;
        QElapsedTimer t;
        t.start();
        while (sink.frames() < target && t.elapsed() < 10000)
            QThread::msleep(5);
        return sink.frames() >= target;
    }

    // Waits until the recording says it is written (parameter 24 back to 0); false after 20 s.
    bool waitRecordingWritten()
    {
        std::int32_t writing = 1;
        QElapsedTimer t;
        t.start();
        while (writing != 0 && t.elapsed() < 20000) {
            QThread::msleep(50);
            driver.GetCamParameter(0, 24, writing);
        }
        return writing == 0;
    }

    ArvDevice* device() { return arv_camera_get_device(driver.arvCamera()); }

    // What the camera itself reports for its current mode: binning and region (in binned pixels).
    struct Reported {
        int binning = 0;
        QRect region;
    };
    Reported reported()
    {
        gint x = 0, y = 0, w = 0, h = 0, bx = 0, by = 0;
        arv_camera_get_region(driver.arvCamera(), &x, &y, &w, &h, nullptr);
        arv_camera_get_binning(driver.arvCamera(), &bx, &by, nullptr);
        EXPECT_EQ(bx, by);
        return {bx, QRect(x, y, w, h)};
    }

    // The picture of the current mode as calibrations see it.
    PictureGeometry picture(std::int32_t mode)
    {
        std::int32_t current = -1;
        driver.GetMode(0, current);
        EXPECT_EQ(current, mode);
        return {reported().region.size(), driver.modeGeometry(mode),
                driver.driverName() + QLatin1Char('/') + driver.cameraId()};
    }

    std::int32_t openedMode = -1;
    QString openedFormat;
    QStringList logged;
    CountingSink sink;  // outlives the driver, which may hand it a frame until it closes
    GenICamDriver driver{[this](const QString& line) { logged.append(line); }};
};

}  // namespace

TEST_F(GenICamDriverTest, FindsAndNamesTheCamera)
{
    QString name;
    EXPECT_EQ(driver.GetName(0, name), 0);
    EXPECT_EQ(name, QStringLiteral("Aravis Fake 1"));
    EXPECT_EQ(driver.GetName(1, name), GenICamDriver::kBadCamera);
    QString version;
    EXPECT_EQ(driver.GetVersion(1, version), 0);
    EXPECT_TRUE(version.startsWith(QStringLiteral("0.8."))) << version.toStdString();
    EXPECT_EQ(driver.IsOpen(0), 0);
    EXPECT_EQ(driver.Open(0), GenICamDriver::kAlreadyOpen);
}

TEST_F(GenICamDriverTest, OffersTheWholeSensorAtEachBinning_ThenTheSizesThatFit_AndStartsAtTheWholeSensor)
{
    std::vector<std::int32_t> modes;
    ASSERT_EQ(driver.GetModeList(0, modes), 0);
    std::vector<std::int32_t> whole;
    for (const int side : {2048, 1024, 682, 512, 409, 341})  // binning 1 to 6; 7 leaves less than 320x240
        whole.push_back(Resolution::indexOf(QSize(side, side)));
    std::vector<std::int32_t> expected = whole;
    for (const std::int32_t m : {7, 10, 6, 5, 4, 3, 2, 1, 0})
        expected.push_back(m);
    EXPECT_EQ(modes, expected);
    EXPECT_GT(modes.size(), size_t(CameraDriver::kModeListCapacity));  // no cap on this driver
    EXPECT_EQ(openedMode, whole.front());
}

TEST_F(GenICamDriverTest, Start_HandsFramesOfTheModesSizeToTheSink)
{
    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    EXPECT_EQ(driver.IsStarted(0), 1);
    ASSERT_TRUE(waitFrames(3));
    EXPECT_EQ(sink.size, QSize(2048, 1536));
    EXPECT_EQ(sink.format, QImage::Format_Grayscale8);
    std::int32_t good = 0;
    std::int32_t broken = -1;
    EXPECT_EQ(driver.GetGoodFrames(0, good), 0);
    EXPECT_GE(good, 3);
    EXPECT_EQ(driver.GetBrokenFrames(0, broken), 0);
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(driver.Stop(0), 0);
    EXPECT_EQ(driver.IsStarted(0), 0);
}

TEST_F(GenICamDriverTest, SetMode_BetweenStopAndStart_BinsAndCentresTheRegion)
{
    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    EXPECT_EQ(driver.SetMode(0, 1), GenICamDriver::kBusy);
    ASSERT_EQ(driver.Stop(0), 0);
    EXPECT_EQ(driver.SetMode(0, 8), GenICamDriver::kOutOfRange);  // 2592x1944 is larger than the sensor
    ASSERT_EQ(driver.SetMode(0, 1), 0);

    gint x = 0, y = 0, w = 0, h = 0, bx = 0, by = 0;
    arv_camera_get_region(driver.arvCamera(), &x, &y, &w, &h, nullptr);
    arv_camera_get_binning(driver.arvCamera(), &bx, &by, nullptr);
    EXPECT_EQ(QRect(x, y, w, h), QRect(21, 101, 640, 480));
    EXPECT_EQ(bx, 3);
    EXPECT_EQ(by, 3);
    std::int32_t mode = -1;
    driver.GetMode(0, mode);
    EXPECT_EQ(mode, 1);

    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    EXPECT_EQ(sink.size, QSize(640, 480));
}

TEST_F(GenICamDriverTest, BayerFrames_ReachTheSinkAsTheirCells_AndAFreezeIsTheirDemosaic)
{
    const std::vector<std::tuple<const char*, RawLayout, BayerDemosaic::Pattern>> formats = {
        {"BayerRG8", RawLayout::BayerRggb, BayerDemosaic::Pattern::RGGB},
        {"BayerGR8", RawLayout::BayerGrbg, BayerDemosaic::Pattern::GRBG},
        {"BayerGB8", RawLayout::BayerGbrg, BayerDemosaic::Pattern::GBRG},
        {"BayerBG8", RawLayout::BayerBggr, BayerDemosaic::Pattern::BGGR}};
    ASSERT_EQ(driver.SetMode(0, kBinned3), 0);  // 640x480
    sink.keepCells = true;
    for (const auto& [format, raw, pattern] : formats) {
        SCOPED_TRACE(format);
        setFormat(format);
        ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
        ASSERT_TRUE(waitFrames(2));
        ASSERT_EQ(driver.Stop(0), 0);
        EXPECT_EQ(sink.size, QSize(640, 480));
        EXPECT_EQ(sink.raw, raw);
        EXPECT_EQ(driver.frameSize(), QSize(640, 480));
        EXPECT_EQ(driver.frameFormat(), QImage::Format_RGB888);

        // The still is the demosaic of the frame the sink saw last.
        QImage still;
        ASSERT_EQ(driver.GrabFrame(0, still), 0);
        QImage expected(640, 480, QImage::Format_RGB888);
        BayerDemosaic::toRgb(sink.cells.data(), 640, 640, 480, pattern, expected.bits(),
                             expected.bytesPerLine());
        EXPECT_EQ(still, expected);
    }
}

// Recorded frames are the full-size pictures, developed from each frame's cells while the recording runs.
TEST_F(GenICamDriverTest, SaveAvi_OfBayerFrames_RecordsTheirFullSizePictures)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("clip.avi"));
    ASSERT_EQ(driver.SetMode(0, kBinned3), 0);
    setFormat("BayerRG8");
    ASSERT_EQ(driver.SetCamParameter(0, 147, 10), 0);
    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    ASSERT_EQ(driver.SaveAvi(0, path, 0, 1), 0);
    ASSERT_TRUE(waitRecordingWritten());
    EXPECT_EQ(sink.raw, RawLayout::BayerRggb) << "the live view still gets the cells";
    const test::AviProbe probe = test::AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(QSize(probe.width, probe.height), QSize(640, 480));
    EXPECT_NEAR(probe.frames, 10, 1);
}

TEST_F(GenICamDriverTest, AnIncompleteBuffer_CountsAsBroken_AndIsNotShown)
{
    // Two frames a second: on a loaded machine the camera's own frames (one of them lost now
    // and then) must not blur what the injected buffer does.
    ASSERT_EQ(driver.SetCamParameter(0, 147, 2), 0);
    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(1));
    // A buffer the stream never filled reads as cleared, not as a complete frame.
    ArvBuffer* empty = arv_buffer_new(arv_camera_get_payload(driver.arvCamera(), nullptr), nullptr);
    ASSERT_NE(arv_buffer_get_status(empty), ARV_BUFFER_STATUS_SUCCESS);
    std::int32_t brokenBefore = 0, brokenAfter = 0;
    driver.GetBrokenFrames(0, brokenBefore);
    const int before = sink.frames();
    driver.receive(nullptr, empty);
    const int shown = sink.frames() - before;
    driver.GetBrokenFrames(0, brokenAfter);
    EXPECT_EQ(brokenAfter - brokenBefore, 1);
    EXPECT_LE(shown, 1);  // at most the one the camera sent meanwhile
}

TEST_F(GenICamDriverTest, SaveToFile_WritesTheNewestFrame_AsBitmapOrJpegByExtension)
{
    TempDir dir;
    EXPECT_EQ(driver.SaveToFile(0, dir.file(QStringLiteral("none.bmp"))), GenICamDriver::kNoFrame);
    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    ASSERT_EQ(driver.Stop(0), 0);

    ASSERT_EQ(driver.SaveToFile(0, dir.file(QStringLiteral("still.bmp"))), 0);
    QImage bmp;
    ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("still.bmp")), bmp), 0);
    EXPECT_EQ(bmp.size(), QSize(2048, 1536));
    EXPECT_EQ(qRed(bmp.pixel(0, 0)), sink.first);  // grey: the frame's first byte in every channel

    ASSERT_EQ(driver.SaveToFile(0, dir.file(QStringLiteral("still.JPG"))), 0);
    EXPECT_TRUE(dir.read(QStringLiteral("still.JPG")).startsWith("\xFF\xD8"));
    EXPECT_EQ(QImage(dir.file(QStringLiteral("still.JPG"))).size(), QSize(2048, 1536));

    EXPECT_EQ(driver.SaveToFile(0, dir.file(QStringLiteral("missing/still.bmp"))),
              GenICamDriver::kWriteFailed);
}

// A series picture with cross lines takes the frame from memory, grey or colour.
TEST_F(GenICamDriverTest, GrabFrame_CopiesTheNewestFrame_GreyOrDemosaiced)
{
    QImage grabbed;
    EXPECT_TRUE(driver.canGrabFrame());
    EXPECT_EQ(driver.GrabFrame(0, grabbed), GenICamDriver::kNoFrame);
    TempDir dir;
    for (const char* format : {"Mono8", "BayerRG8"}) {
        GError* error = nullptr;
        arv_camera_set_pixel_format_from_string(driver.arvCamera(), format, &error);
        ASSERT_EQ(error, nullptr) << format;
        ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0) << format;
        ASSERT_TRUE(waitFrames(2)) << format;
        ASSERT_EQ(driver.Stop(0), 0);

        ASSERT_EQ(driver.GrabFrame(0, grabbed), 0) << format;
        EXPECT_EQ(grabbed.size(), QSize(2048, 1536));
        EXPECT_EQ(grabbed.format(), driver.frameFormat()) << format;
        ASSERT_EQ(driver.SaveToFile(0, dir.file(QStringLiteral("still.bmp"))), 0);
        QImage bmp;
        ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("still.bmp")), bmp), 0);
        EXPECT_EQ(bmp.convertToFormat(QImage::Format_RGB32), grabbed.convertToFormat(QImage::Format_RGB32))
            << format;
        // Read where it lies: the same picture, developed, without a copy.
        QImage seen;
        ASSERT_EQ(driver.readFrame(0,
                                   [&](const FrameView& f) {
                                       EXPECT_EQ(f.raw, RawLayout::None) << format;
                                       seen =
                                           QImage(f.bits, f.width, f.height, f.bytesPerLine, f.format).copy();
                                   }),
                  0)
            << format;
        EXPECT_EQ(seen, grabbed) << format;
    }
    EXPECT_EQ(driver.GrabFrame(1, grabbed), GenICamDriver::kBadCamera);
    EXPECT_EQ(driver.readFrame(1, [](const FrameView&) { ADD_FAILURE() << "read from a wrong camera"; }),
              GenICamDriver::kBadCamera);
}

TEST_F(GenICamDriverTest, SaveAvi_RecordsTheStream_AndParameter24ReadsOneUntilTheFileIsClosed)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("clip.avi"));
    EXPECT_EQ(driver.SaveAvi(0, path, 0, 1), GenICamDriver::kNoFrame);  // not streaming
    ASSERT_EQ(driver.SetCamParameter(0, 147, 10), 0);                   // 10 fps: a one-second clip is short
    EXPECT_EQ(driver.deliveredFps(), 0);
    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(FrameRateMeter::kFewest + 2));
    EXPECT_GT(driver.deliveredFps(), 0);  // the clip is stamped with this, not with the rate set
    ASSERT_EQ(driver.SaveAvi(0, path, 0, 1), 0);
    std::int32_t writing = 0;
    ASSERT_EQ(driver.GetCamParameter(0, 24, writing), 0);
    EXPECT_EQ(writing, 1);
    ASSERT_TRUE(waitRecordingWritten());
    RecordingStats stats;
    ASSERT_TRUE(driver.recordingStats(0, stats));
    EXPECT_TRUE(stats.finished);
    const test::AviProbe probe = test::AviProbe::of(path);
    ASSERT_TRUE(probe.ok) << probe.error.toStdString();
    EXPECT_EQ(probe.codec, QStringLiteral("mjpeg"));
    EXPECT_EQ(QSize(probe.width, probe.height), QSize(2048, 1536));
    EXPECT_NEAR(probe.fps, 10, 0.5);
    EXPECT_NEAR(probe.frames, 10, 1);
}

TEST_F(GenICamDriverTest, ExposureGainAndFrameRate_WriteTheFeatures)
{
    CamParamRange range;
    ASSERT_EQ(driver.GetCamParameterRange(0, 7, range), 0);
    EXPECT_EQ(range.enabled, 1);
    EXPECT_EQ(range.autoMode, 0);  // the fake camera has no ExposureAuto
    EXPECT_EQ(range.minimum, 10);
    EXPECT_EQ(range.maximum, 10000000);
    EXPECT_EQ(range.defaultValue, 10000);  // as opened

    ASSERT_EQ(driver.SetCamParameter(0, 7, 20000), 0);
    EXPECT_DOUBLE_EQ(arv_camera_get_exposure_time(driver.arvCamera(), nullptr), 20000.0);
    float ms = 0;
    ASSERT_EQ(driver.GetExposure(0, ms), 0);
    EXPECT_FLOAT_EQ(ms, 20.0f);
    std::int32_t value = 0;
    ASSERT_EQ(driver.GetCamParameter(0, 7, value), 0);
    EXPECT_EQ(value, 20000);
    EXPECT_EQ(driver.SetCamParameter(0, 7, 5), GenICamDriver::kOutOfRange);

    ASSERT_EQ(driver.GetCamParameterRange(0, 13, range), 0);
    EXPECT_EQ(range.enabled, 1);
    EXPECT_EQ(range.maximum, 10);  // GainRaw, as it stands
    ASSERT_EQ(driver.SetCamParameter(0, 13, 7), 0);
    EXPECT_EQ(arv_device_get_integer_feature_value(device(), "GainRaw", nullptr), 7);

    ASSERT_EQ(driver.GetCamParameterRange(0, 147, range), 0);
    EXPECT_EQ(range.enabled, 1);
    ASSERT_EQ(driver.SetCamParameter(0, 147, 12), 0);
    // The fake camera keeps the rate as a period in microseconds.
    EXPECT_NEAR(arv_device_get_float_feature_value(device(), "AcquisitionFrameRate", nullptr), 12.0, 0.01);
}

TEST_F(GenICamDriverTest, FeaturesTheCameraLacks_ReportNotEnabled)
{
    for (int type : {1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12, 14, 15, 19, 106, 109, 110, 111, 115, 117}) {
        CamParamRange range;
        range.enabled = 7;
        ASSERT_EQ(driver.GetCamParameterRange(0, type, range), 0) << type;
        EXPECT_EQ(range.enabled, 0) << type;
        EXPECT_EQ(driver.SetCamParameter(0, type, 0), GenICamDriver::kNotSupported) << type;
    }
    std::int32_t flag = 0;
    EXPECT_EQ(driver.GetParamAuto(0, 7, flag), GenICamDriver::kNotSupported);
    EXPECT_EQ(driver.SetParamOnePush(0, 6), GenICamDriver::kNotSupported);
    // The start-up's parameter 43 gets the answer the program accepts.
    EXPECT_EQ(driver.SetCamParameter(0, 43, 1), -2);
    std::int32_t writing = 1;
    EXPECT_EQ(driver.GetCamParameter(0, 24, writing), 0);
    EXPECT_EQ(writing, 0);
}

TEST_F(GenICamDriverTest, FrameRateParameter_SetsTheCamerasAcquisitionRate)
{
    for (int fps : {5, 40, 1, 25}) {
        ASSERT_EQ(driver.SetCamParameter(0, 147, fps), 0);
        EXPECT_DOUBLE_EQ(arv_device_get_float_feature_value(device(), "AcquisitionFrameRate", nullptr), fps);
        std::int32_t value = 0;
        ASSERT_EQ(driver.GetCamParameter(0, 147, value), 0);
        EXPECT_EQ(value, fps);
    }
}

// Frames arriving at the rate set: real time, run alone. A busy machine only
// ever delays frames, so the upper bound is the rate itself over the time
// measured (plus the frame on the edge of the window); the lower bound is half
// the rate, what this 2-core machine keeps under the sanitizers even with a
// build running beside the test run.
class GenICamRealTime : public GenICamDriverTest {};

TEST_F(GenICamRealTime, FrameRateParameter_PacesTheFrames)
{
    ASSERT_EQ(driver.SetMode(0, 0), 0);
    for (int fps : {5, 40}) {
        ASSERT_EQ(driver.SetCamParameter(0, 147, fps), 0);
        ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
        ASSERT_TRUE(waitFrames(1));
        const int before = sink.frames();
        QElapsedTimer t;
        t.start();
        QThread::msleep(2000);
        const int frames = sink.frames() - before;
        const double seconds = t.elapsed() / 1000.0;
        driver.Stop(0);
        EXPECT_LE(frames, fps * seconds + 1) << fps << " fps over " << seconds << " s";
        EXPECT_GE(frames, fps * seconds / 2) << fps << " fps over " << seconds << " s";
    }
}

TEST_F(GenICamDriverTest, ControlLost_IsLogged_EndsTheStream_AndTheOldFrameIsNoNewPicture)
{
    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));

    g_signal_emit_by_name(device(), "control-lost");

    EXPECT_EQ(logged, QStringList{QStringLiteral("Error: GenICam camera lost (Aravis Fake 1)")});
    EXPECT_EQ(driver.IsStarted(0), 0);
    QThread::msleep(100);  // a frame on its way when the camera went
    const int after = sink.frames();
    QThread::msleep(300);
    EXPECT_EQ(sink.frames(), after);
    TempDir dir;
    // The frame still held is from before the loss: no save or grab passes it off as new.
    EXPECT_EQ(driver.SaveToFile(0, dir.file(QStringLiteral("last.bmp"))), HeldFrame::kCameraLost);
    EXPECT_FALSE(QFile::exists(dir.file(QStringLiteral("last.bmp"))));
    QImage grabbed;
    EXPECT_EQ(driver.GrabFrame(0, grabbed), HeldFrame::kCameraLost);
    EXPECT_EQ(driver.Start(0, 0, &sink, -1, 0), GenICamDriver::kDisconnected);
    g_signal_emit_by_name(device(), "control-lost");
    EXPECT_EQ(logged.size(), 1);  // once

    QElapsedTimer t;
    t.start();
    EXPECT_EQ(driver.Close(0), 0);
    EXPECT_LT(t.elapsed(), 5000);
    EXPECT_EQ(driver.IsOpen(0), 1);
}

// ---- how the modes lie on the sensor (a 2048x2048 one that bins) ----

TEST_F(GenICamDriverTest, EveryMode_TellsTheBinningAndRegionTheCameraThenReports)
{
    gint width = 0, height = 0;
    arv_camera_get_sensor_size(driver.arvCamera(), &width, &height, nullptr);
    ASSERT_EQ(QSize(width, height), QSize(2048, 2048));
    std::vector<std::int32_t> modes;
    ASSERT_EQ(driver.GetModeList(0, modes), 0);
    for (const std::int32_t mode : modes) {
        const std::optional<ModeGeometry> told = driver.modeGeometry(mode);  // before it is set
        ASSERT_EQ(driver.SetMode(0, mode), 0) << mode;
        const Reported r = reported();
        const ModeGeometry truth{double(r.binning),
                                 QRectF(r.region.x() * r.binning, r.region.y() * r.binning,
                                        r.region.width() * r.binning, r.region.height() * r.binning)};
        EXPECT_EQ(told, truth) << mode;
        EXPECT_EQ(driver.modeGeometry(mode), truth) << mode;
    }
    EXPECT_EQ(driver.modeGeometry(8), std::nullopt);  // 2592x1944 does not fit the sensor
}

TEST_F(GenICamDriverTest, TheCameraId_IsAravisDeviceId)
{
    EXPECT_EQ(driver.cameraId(),
              QString::fromUtf8(arv_interface_get_device_id(arv_fake_interface_get_instance(), 0)));
    EXPECT_FALSE(driver.cameraId().isEmpty());
    driver.Close(0);
    EXPECT_TRUE(driver.cameraId().isEmpty());
    EXPECT_EQ(driver.modeGeometry(kFullWidth), std::nullopt);
}

// Calibrated at the sensor's full width, then measuring a 100 um length on a
// crop, on two binnings and back: the truth is the stated micrometres per
// sensor pixel times the binning the camera reports.
TEST_F(GenICamDriverTest, Calibration_CarriedToACropABinningAndBack_MeasuresTheTruth)
{
    constexpr double kUmPerSensorPixel = 0.37;
    constexpr double kLengthUm = 100;
    ASSERT_EQ(driver.SetMode(0, kFullWidth), 0);
    ASSERT_EQ(reported().binning, 1);
    const PictureGeometry made = picture(kFullWidth);
    const ProofEntry stored{QStringLiteral("x10"),
                            kUmPerSensorPixel,
                            kUmPerSensorPixel,
                            QStringLiteral("MIC"),
                            kLengthUm,
                            kLengthUm,
                            0};

    for (const std::int32_t mode : {kCrop, kBinned2, kBinned3, kFullWidth}) {
        ASSERT_EQ(driver.SetMode(0, mode), 0);
        const int binning = reported().binning;
        const double pixels = kLengthUm / (kUmPerSensorPixel * binning);  // the length on this picture
        const PictureGeometry now = picture(mode);
        const ProofEntry used = ProofRescale::toPicture(stored, made, now);
        EXPECT_NEAR(pixels * used.XFactor / kLengthUm - 1, 0, 1e-4) << mode;
        EXPECT_NEAR(pixels * used.YFactor / kLengthUm - 1, 0, 1e-4) << mode;
        EXPECT_TRUE(ProofRescale::rescale(made, now).trusted()) << mode;
        // The widths alone would be off on the crop and on 640x480.
        const double byWidth = pixels * kUmPerSensorPixel * made.size.width() / now.size.width();
        if (mode == kCrop) {
            EXPECT_NEAR(byWidth / kLengthUm, 1.6, 1e-9);
        }
        if (mode == kBinned3) {
            EXPECT_NEAR(byWidth / kLengthUm, 3.2 / 3, 1e-9);
        }
    }
    EXPECT_EQ(ProofRescale::toPicture(stored, made, picture(kFullWidth)), stored);  // back: exactly
}

TEST_F(GenICamDriverTest, AModeTheCameraRefuses_IsLogged_AndThePreviousModeStaysAndStreams)
{
    ASSERT_EQ(driver.SetMode(0, kCrop), 0);
    // The camera now takes no width above 1500 (as if it had changed its mind since it was opened), and
    // checks what it is given as a real one does.
    arv_device_set_register_cache_policy(device(), ARV_REGISTER_CACHE_POLICY_DISABLE);
    arv_device_set_range_check_policy(device(), ARV_RANGE_CHECK_POLICY_ENABLE);
    GError* error = nullptr;
    arv_device_write_register(device(), 0x11c, 1500, &error);
    ASSERT_EQ(error, nullptr);
    logged.clear();

    EXPECT_EQ(driver.SetMode(0, kFullWidth), GenICamDriver::kFailed);

    ASSERT_FALSE(logged.isEmpty());
    EXPECT_EQ(logged.last(),
              QStringLiteral("GenICam: the camera refuses 2048x1536 (binning 1); 1280x1024 stays"));
    std::int32_t mode = -1;
    ASSERT_EQ(driver.GetMode(0, mode), 0);
    EXPECT_EQ(mode, kCrop);
    EXPECT_EQ(driver.IsOpen(0), 0);
    ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
    ASSERT_TRUE(waitFrames(2));
    EXPECT_EQ(sink.size, QSize(1280, 1024));
}

TEST_F(GenICamDriverTest, AColourCamera_IsSwitchedFromMono8ToItsBayerFormat_AtOpen)
{
    // The fake camera starts in Mono8 and offers BayerBG8 first among its colour formats.
    EXPECT_EQ(openedFormat, QStringLiteral("BayerBG8"));
}

TEST_F(GenICamDriverTest, SixteenBitMono_IsShownAsItsHighByte_AndRgb8AsItIs)
{
    const std::pair<const char*, QImage::Format> formats[] = {{"Mono16", QImage::Format_Grayscale8},
                                                              {"RGB8", QImage::Format_RGB888}};
    for (const auto& [format, shown] : formats) {
        SCOPED_TRACE(format);
        setFormat(format);
        ASSERT_EQ(driver.Start(0, 0, &sink, -1, 0), 0);
        ASSERT_TRUE(waitFrames(2));
        ASSERT_EQ(driver.Stop(0), 0);
        EXPECT_EQ(sink.size, QSize(2048, 1536));
        EXPECT_EQ(sink.format, shown);
        EXPECT_EQ(sink.raw, RawLayout::None);
        EXPECT_EQ(driver.frameFormat(), shown);
        std::int32_t broken = -1;
        driver.GetBrokenFrames(0, broken);
        EXPECT_EQ(broken, 0);
    }
}

// ---- which camera ----

TEST(GenICamCameraChoice, ListCameras_NamesEachByVendorAndModel_WithItsSerialNumberAsId)
{
    GenICamDriver::useFakeCameraOnly();
    const std::vector<CameraChoice> cameras = GenICamDriver::listCameras();
    GenICamDriver::useRealCameras();
    ASSERT_EQ(cameras.size(), 1u);
    EXPECT_EQ(cameras[0].driver, QStringLiteral("genicam"));
    EXPECT_EQ(cameras[0].id, QStringLiteral("1"));
    EXPECT_EQ(cameras[0].name, QStringLiteral("Aravis Fake"));
    EXPECT_FALSE(cameras[0].place.isEmpty());
}

TEST(GenICamCameraChoice, TheWantedSerialNumber_IsOpened_AndAMissingOneFallsBackToTheFirstWithALogLine)
{
    GenICamDriver::useFakeCameraOnly();
    QStringList logged;
    const auto log = [&logged](const QString& line) { logged.append(line); };
    {
        GenICamDriver wanted(log, QStringLiteral("1"));
        EXPECT_EQ(wanted.wantedSerial(), QStringLiteral("1"));
        ASSERT_EQ(wanted.Init(), 1);
        EXPECT_EQ(wanted.Open(0), 0);
        QString name;
        wanted.GetName(0, name);
        EXPECT_EQ(name, QStringLiteral("Aravis Fake 1"));
        EXPECT_TRUE(logged.isEmpty()) << logged.join(QLatin1Char('\n')).toStdString();
    }
    GenICamDriver missing(log);
    missing.setWantedSerial(QStringLiteral("4711"));
    ASSERT_EQ(missing.Init(), 1);
    EXPECT_EQ(missing.Open(0), 0);
    EXPECT_EQ(logged, QStringList{QStringLiteral(
                          "GenICam: no camera with serial number 4711; the first one found is used")});
    GenICamDriver::useRealCameras();
}
