#include "TempDir.h"
#include "camera/sim/SimCamera.h"
#include "media/BmpFile.h"
#include "media/JpegWriter.h"

#include <gtest/gtest.h>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QLineF>
#include <QPolygonF>
#include <QThread>
#include <atomic>
#include <functional>
#include <set>

using namespace tavix;
using tavix::test::TempDir;

namespace {

constexpr int kCam = 0;

struct Rgb {
    double r = 0, g = 0, b = 0;
    double grey() const { return 0.299 * r + 0.587 * g + 0.114 * b; }
};

// Mean colour of a small square of pixels around a scene point.
Rgb meanAt(const QImage& image, QPointF um, int half = 3)
{
    const QPointF c = SimScene::toPixel(image.size(), um);
    Rgb sum;
    int n = 0;
    for (int y = int(c.y()) - half; y <= int(c.y()) + half; ++y)
        for (int x = int(c.x()) - half; x <= int(c.x()) + half; ++x) {
            const QColor p = image.pixelColor(x, y);
            sum.r += p.red();
            sum.g += p.green();
            sum.b += p.blue();
            ++n;
        }
    return {sum.r / n, sum.g / n, sum.b / n};
}

double meanGrey(const QImage& image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); y += 4)
        for (int x = 0; x < image.width(); x += 4)
            sum += qGray(image.pixel(x, y));
    return sum / ((image.height() + 3) / 4 * ((image.width() + 3) / 4));
}

// Empty slide, away from every feature and the particle's path.
const QPointF kSlide(450, 60);
const QPointF kRectangleInside(300, -350);
QPointF patchCentre(int i)
{
    return SimScene::geometry().greyPatches[static_cast<size_t>(i)].rect.center();
}

class CollectingSink : public FrameSink {
public:
    void frameReady(const FrameView& frame) override
    {
        sequences.push_back(frame.sequence);
        buffers.insert(frame.bits);
        sizes.push_back(QSize(frame.width, frame.height));
        threads.insert(QThread::currentThread());
        ++count;
    }
    std::vector<std::uint64_t> sequences;
    std::set<const uchar*> buffers;
    std::vector<QSize> sizes;
    std::set<QThread*> threads;
    std::atomic<int> count{0};
};

SimCamera::Options quiet(std::int32_t mode = 5)
{
    SimCamera::Options o;
    o.defaultMode = mode;
    o.noise = false;
    o.threaded = false;
    return o;
}

// An opened camera without noise or thread, on a clock that stands still.
class SimCameraTest : public ::testing::Test {
protected:
    void SetUp() override { open(cam); }
    static void open(SimCamera& c)
    {
        ASSERT_EQ(c.Init(), 1);
        ASSERT_EQ(c.Open(kCam), 0);
    }
    void set(int type, std::int32_t value) { ASSERT_EQ(cam.SetCamParameter(kCam, type, value), 0) << type; }
    std::int32_t get(int type)
    {
        std::int32_t v = -99999;
        EXPECT_EQ(cam.GetCamParameter(kCam, type, v), 0) << type;
        return v;
    }

    ManualClock clock;
    SimCamera cam{quiet(), &clock};
};

}  // namespace

// ---------------------------------------------------------------- session

TEST(SimCameraSession, DriverName_IsSim)
{
    EXPECT_EQ(SimCamera().driverName(), QStringLiteral("sim"));
}

class SimCameraCount : public ::testing::TestWithParam<int> {};

TEST_P(SimCameraCount, Init_ReturnsTheInjectedCameraCount)
{
    SimCamera cam;
    SimCamera::Faults f;
    f.cameraCount = GetParam();
    cam.setFaults(f);

    EXPECT_EQ(cam.Init(), GetParam());
    EXPECT_EQ(cam.Open(kCam), GetParam() > 0 ? 0 : SimCamera::kFailed);
}

INSTANTIATE_TEST_SUITE_P(Counts, SimCameraCount, ::testing::Values(0, 1, 2));

TEST(SimCameraSession, VersionAndName_FitTheirTextBuffers)
{
    SimCamera cam;
    QString version, name;
    ASSERT_EQ(cam.GetVersion(1, version), 0);
    ASSERT_EQ(cam.Init(), 1);
    ASSERT_EQ(cam.GetName(kCam, name), 0);

    EXPECT_EQ(version, QStringLiteral("1.0.0.0"));
    EXPECT_LE(version.size(), 9);
    EXPECT_EQ(name, QStringLiteral("SimCam 1296"));
    EXPECT_LE(name.size(), 13);
}

TEST(SimCameraSession, NameAndVersion_AreInjectable)
{
    SimCamera cam;
    SimCamera::Faults f;
    f.name = QStringLiteral("Other");
    f.version = QStringLiteral("9.9");
    cam.setFaults(f);
    QString version, name;
    cam.Init();

    ASSERT_EQ(cam.GetVersion(1, version), 0);
    ASSERT_EQ(cam.GetName(kCam, name), 0);
    EXPECT_EQ(version, QStringLiteral("9.9"));
    EXPECT_EQ(name, QStringLiteral("Other"));
}

TEST(SimCameraSession, Open_FailsBeforeInit)
{
    SimCamera cam;
    EXPECT_NE(cam.Open(kCam), 0);
    EXPECT_EQ(cam.IsOpen(kCam), 1);
}

TEST(SimCameraSession, Open_ReturnsMinus24_WhenAlreadyOpen)
{
    SimCamera cam;
    cam.Init();
    ASSERT_EQ(cam.Open(kCam), 0);

    EXPECT_EQ(cam.Open(kCam), -24);
    EXPECT_EQ(cam.IsOpen(kCam), 0);
}

TEST(SimCameraSession, IsOpen_IsZeroWhileOpen_AndOneAfterClose)
{
    SimCamera cam;
    cam.Init();
    ASSERT_EQ(cam.Open(kCam), 0);
    EXPECT_EQ(cam.IsOpen(kCam), 0);

    ASSERT_EQ(cam.Close(kCam), 0);
    EXPECT_EQ(cam.IsOpen(kCam), 1);
}

TEST(SimCameraSession, SecondCameraIndex_IsRefused_WhenOnlyOneCamera)
{
    SimCamera cam;
    cam.Init();
    EXPECT_EQ(cam.Open(1), SimCamera::kBadCamera);
}

TEST(SimCameraSession, Calls_FailWithNotOpen_BeforeOpen)
{
    SimCamera cam;
    cam.Init();
    std::int32_t v = 0;
    std::vector<std::int32_t> modes;
    CamParamRange r;
    float ms = 0;

    EXPECT_EQ(cam.GetModeList(kCam, modes), SimCamera::kNotOpen);
    EXPECT_EQ(cam.GetMode(kCam, v), SimCamera::kNotOpen);
    EXPECT_EQ(cam.SetMode(kCam, 1), SimCamera::kNotOpen);
    EXPECT_EQ(cam.Start(kCam, 0, nullptr, -1, 0), SimCamera::kNotOpen);
    EXPECT_EQ(cam.SetCamParameter(kCam, 1, 0), SimCamera::kNotOpen);
    EXPECT_EQ(cam.GetCamParameter(kCam, 1, v), SimCamera::kNotOpen);
    EXPECT_EQ(cam.GetCamParameterRange(kCam, 1, r), SimCamera::kNotOpen);
    EXPECT_EQ(cam.GetExposure(kCam, ms), SimCamera::kNotOpen);
    EXPECT_EQ(cam.Close(kCam), SimCamera::kNotOpen);
}

TEST_F(SimCameraTest, GetModeList_ListsTheFourModes)
{
    std::vector<std::int32_t> modes;
    ASSERT_EQ(cam.GetModeList(kCam, modes), 0);
    EXPECT_EQ(modes, (std::vector<std::int32_t>{1, 3, 5, 8}));
}

TEST_F(SimCameraTest, GetMode_IsTheDefaultMode)
{
    std::int32_t mode = -1;
    ASSERT_EQ(cam.GetMode(kCam, mode), 0);
    EXPECT_EQ(mode, 5);
}

TEST_F(SimCameraTest, SetMode_ChangesTheFrameSize)
{
    ASSERT_EQ(cam.SetMode(kCam, 1), 0);
    std::int32_t mode = -1;
    cam.GetMode(kCam, mode);

    EXPECT_EQ(mode, 1);
    EXPECT_EQ(cam.renderFrame().size(), QSize(640, 480));
}

TEST_F(SimCameraTest, SetMode_RefusesAModeNotListed)
{
    EXPECT_EQ(cam.SetMode(kCam, 9), SimCamera::kNotSupported);
    EXPECT_EQ(cam.SetMode(kCam, 11), SimCamera::kNotSupported);
    std::int32_t mode = -1;
    cam.GetMode(kCam, mode);
    EXPECT_EQ(mode, 5);
}

TEST_F(SimCameraTest, SetMode_IsRefusedWhileStreaming)
{
    ASSERT_EQ(cam.Start(kCam, 0, nullptr, -1, 0), 0);
    EXPECT_EQ(cam.SetMode(kCam, 1), SimCamera::kBusy);
    cam.Stop(kCam);
    EXPECT_EQ(cam.SetMode(kCam, 1), 0);
}

TEST(SimCameraSession, Options_ChooseModesAndDefault)
{
    SimCamera::Options o = quiet(3);
    o.modes = {0, 3, 10, 42};
    SimCamera cam(o);
    cam.Init();
    cam.Open(kCam);
    std::vector<std::int32_t> modes;
    std::int32_t mode = -1;

    cam.GetModeList(kCam, modes);
    cam.GetMode(kCam, mode);

    EXPECT_EQ(modes, (std::vector<std::int32_t>{0, 3, 10}));  // 42 is no resolution index
    EXPECT_EQ(mode, 3);
}

struct ModeCase {
    std::int32_t mode;
    int width, height;
    double umPerPixel;
};

class SimCameraModes : public ::testing::TestWithParam<ModeCase> {};

TEST_P(SimCameraModes, ModeSizeAndScale_AreDocumented)
{
    const ModeCase c = GetParam();
    EXPECT_EQ(SimCamera::modeSize(c.mode), QSize(c.width, c.height));
    EXPECT_DOUBLE_EQ(SimCamera::micrometresPerPixel(c.mode), c.umPerPixel);
    if (c.width > 0) {
        EXPECT_DOUBLE_EQ(c.width * SimCamera::micrometresPerPixel(c.mode),
                         1296.0);  // one field at every size
    }
}

INSTANTIATE_TEST_SUITE_P(Table, SimCameraModes,
                         ::testing::Values(ModeCase{1, 640, 480, 2.025}, ModeCase{3, 800, 600, 1.62},
                                           ModeCase{5, 1280, 1024, 1.0125}, ModeCase{8, 2592, 1944, 0.5},
                                           ModeCase{11, 0, 0, 0.0}, ModeCase{-1, 0, 0, 0.0}));

// ---------------------------------------------------------------- parameter ranges

struct RangeCase {
    int type;
    int autoMode, def, min, max;
};

class SimCameraRanges : public SimCameraTest, public ::testing::WithParamInterface<RangeCase> {};

TEST_P(SimCameraRanges, Range_IsOfferedWithItsDefault_AndTheValueStartsThere)
{
    const RangeCase c = GetParam();
    CamParamRange r;

    ASSERT_EQ(cam.GetCamParameterRange(kCam, c.type, r), 0);

    EXPECT_EQ(r.enabled, 1);
    EXPECT_EQ(r.autoMode, c.autoMode);
    EXPECT_EQ(r.defaultValue, c.def);
    EXPECT_EQ(r.minimum, c.min);
    EXPECT_EQ(r.maximum, c.max);
    if (c.type != 6) {  // the white balance reads its state, not a value
        EXPECT_EQ(get(c.type), c.def);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, SimCameraRanges,
    ::testing::Values(RangeCase{1, 0, 0, -64, 64}, RangeCase{2, 0, 32, 0, 64}, RangeCase{3, 0, 64, 16, 255},
                      RangeCase{4, 0, 0, 0, 1}, RangeCase{5, 0, 0, 0, 1}, RangeCase{6, 0, 0, 0, 1},
                      RangeCase{7, 1, 960, 1, 50000}, RangeCase{8, 0, 128, 16, 240},
                      RangeCase{9, 0, 64, 0, 255}, RangeCase{10, 0, 64, 0, 255}, RangeCase{11, 0, 64, 0, 255},
                      RangeCase{12, 1, 4, 0, 64}, RangeCase{13, 0, 32, 32, 255}, RangeCase{14, 0, 1, 0, 1},
                      RangeCase{15, 0, 48, 12, 96}, RangeCase{19, 0, 64, 0, 128}, RangeCase{24, 0, 0, 0, 1},
                      RangeCase{43, 0, 0, 0, 1}, RangeCase{106, 0, 0, -64, 64}, RangeCase{107, 0, 0, -64, 64},
                      RangeCase{108, 0, 0, -64, 64}, RangeCase{109, 0, 0, -180, 180},
                      RangeCase{110, 0, 0, 0, 1}, RangeCase{111, 0, 1, 0, 1}, RangeCase{115, 0, 0, 0, 1},
                      RangeCase{117, 0, 1, 0, 1}),
    [](const auto& info) { return "Type" + std::to_string(info.param.type); });

TEST_F(SimCameraTest, Exposure_OffersMoreThan4096_ForTheRoughSlider)
{
    CamParamRange r;
    ASSERT_EQ(cam.GetCamParameterRange(kCam, 7, r), 0);
    EXPECT_GT(r.maximum, 4096);
}

class SimCameraUnknownType : public SimCameraTest, public ::testing::WithParamInterface<int> {};

TEST_P(SimCameraUnknownType, EveryParameterCall_Fails)
{
    const int type = GetParam();
    CamParamRange r;
    std::int32_t v = 0;

    EXPECT_NE(cam.GetCamParameterRange(kCam, type, r), 0);
    EXPECT_NE(cam.GetCamParameter(kCam, type, v), 0);
    EXPECT_NE(cam.SetCamParameter(kCam, type, 0), 0);
    EXPECT_NE(cam.GetParamAuto(kCam, type, v), 0);
    EXPECT_NE(cam.SetParamAuto(kCam, type, 1), 0);
    EXPECT_NE(cam.SetParamAutoDef(kCam, type), 0);
    EXPECT_NE(cam.SetParamOnePush(kCam, type), 0);
}

INSTANTIATE_TEST_SUITE_P(Types, SimCameraUnknownType, ::testing::Values(0, 16, 18, 100, 148, -1));

TEST_F(SimCameraTest, SetCamParameter_RefusesValuesOutsideTheRange_AndKeepsTheValue)
{
    EXPECT_EQ(cam.SetCamParameter(kCam, 13, 31), SimCamera::kOutOfRange);
    EXPECT_EQ(cam.SetCamParameter(kCam, 13, 256), SimCamera::kOutOfRange);
    EXPECT_EQ(cam.SetCamParameter(kCam, 1, -65), SimCamera::kOutOfRange);
    EXPECT_EQ(get(13), 32);
    EXPECT_EQ(get(1), 0);
}

TEST_F(SimCameraTest, SetCamParameter_KeepsTheValue)
{
    set(19, 100);
    set(109, -90);
    EXPECT_EQ(get(19), 100);
    EXPECT_EQ(get(109), -90);
}

TEST_F(SimCameraTest, Parameter43_AcceptsOne)
{
    EXPECT_EQ(cam.SetCamParameter(kCam, 43, 1), 0);
    EXPECT_EQ(get(43), 1);
}

TEST_F(SimCameraTest, Parameter24_ReadsZero_AndCannotBeSet)
{
    EXPECT_EQ(get(24), 0);
    EXPECT_EQ(cam.SetCamParameter(kCam, 24, 1), SimCamera::kReadOnly);
}

TEST_F(SimCameraTest, FrameRateParameter_IsNotOffered_WithTheClock)
{
    CamParamRange r;
    std::int32_t v = 0;
    ASSERT_EQ(cam.GetCamParameterRange(kCam, 147, r), 0);
    EXPECT_EQ(r.enabled, 0);
    EXPECT_NE(cam.GetCamParameter(kCam, 147, v), 0);
    EXPECT_NE(cam.SetCamParameter(kCam, 147, 10), 0);
}

TEST(SimCameraFrameRateOption, OffersFrameRateInsteadOfClock)
{
    SimCamera::Options o = quiet(8);
    o.frameRateInsteadOfClock = true;
    SimCamera cam(o);
    cam.Init();
    cam.Open(kCam);
    CamParamRange clock, rate;
    std::int32_t v = 0;

    ASSERT_EQ(cam.GetCamParameterRange(kCam, 15, clock), 0);
    ASSERT_EQ(cam.GetCamParameterRange(kCam, 147, rate), 0);

    EXPECT_EQ(clock.enabled, 0);
    EXPECT_NE(cam.SetCamParameter(kCam, 15, 60), 0);
    EXPECT_EQ(rate.enabled, 1);
    EXPECT_EQ(rate.minimum, 1);
    EXPECT_EQ(rate.maximum, 30);
    EXPECT_EQ(rate.defaultValue, 30);
    ASSERT_EQ(cam.GetCamParameter(kCam, 147, v), 0);
    EXPECT_EQ(v, 30);
}

TEST(SimCameraFrameRateOption, FrameRateRange_FollowsTheMode)
{
    SimCamera::Options o = quiet(8);
    o.frameRateInsteadOfClock = true;
    SimCamera cam(o);
    cam.Init();
    cam.Open(kCam);
    ASSERT_EQ(cam.SetMode(kCam, 1), 0);
    CamParamRange rate;

    ASSERT_EQ(cam.GetCamParameterRange(kCam, 147, rate), 0);

    EXPECT_EQ(rate.maximum, 90);
}

// ---------------------------------------------------------------- frame rate and exposure

TEST_F(SimCameraTest, GetExposure_IsRawOverClock)
{
    float ms = 0;
    ASSERT_EQ(cam.GetExposure(kCam, ms), 0);
    EXPECT_FLOAT_EQ(ms, 20.0f);  // 960 / 48

    set(15, 96);
    ASSERT_EQ(cam.GetExposure(kCam, ms), 0);
    EXPECT_FLOAT_EQ(ms, 10.0f);

    set(7, 4800);
    ASSERT_EQ(cam.GetExposure(kCam, ms), 0);
    EXPECT_FLOAT_EQ(ms, 50.0f);
}

TEST_F(SimCameraTest, FramePeriod_IsTheModesRate_WhileTheExposureIsShort)
{
    EXPECT_DOUBLE_EQ(cam.framePeriodMs(), 1000.0 / 45);
}

TEST_F(SimCameraTest, FramePeriod_FollowsALongExposure)
{
    set(7, 4800);  // 100 ms at 48 MHz
    EXPECT_DOUBLE_EQ(cam.framePeriodMs(), 100.0);
}

TEST_F(SimCameraTest, FramePeriod_ShrinksWithAFasterClock)
{
    set(15, 96);
    EXPECT_DOUBLE_EQ(cam.framePeriodMs(), 1000.0 / 90);
    set(7, 4800);  // 50 ms at 96 MHz
    EXPECT_DOUBLE_EQ(cam.framePeriodMs(), 50.0);
}

TEST_F(SimCameraTest, FramePeriod_IsLongerAtTheLargestMode)
{
    ASSERT_EQ(cam.SetMode(kCam, 8), 0);
    EXPECT_DOUBLE_EQ(cam.framePeriodMs(), 1000.0 / 30);
}

TEST(SimCameraFrameRateOption, FramePeriod_FollowsTheFrameRateParameter)
{
    SimCamera::Options o = quiet(5);
    o.frameRateInsteadOfClock = true;
    SimCamera cam(o);
    cam.Init();
    cam.Open(kCam);

    ASSERT_EQ(cam.SetCamParameter(kCam, 147, 10), 0);

    EXPECT_DOUBLE_EQ(cam.framePeriodMs(), 100.0);
}

TEST(SimCameraStream, Thread_KeepsToTheFramePeriod)
{
    SimCamera::Options o;
    o.defaultMode = 1;
    SimCamera cam(o);
    cam.Init();
    cam.Open(kCam);
    ASSERT_EQ(cam.SetCamParameter(kCam, 7, 9600), 0);  // 200 ms
    CollectingSink sink;

    ASSERT_EQ(cam.Start(kCam, 0, &sink, -1, 0), 0);
    QThread::msleep(500);
    cam.Stop(kCam);

    EXPECT_GE(sink.count, 1);
    EXPECT_LE(sink.count, 4);  // at 200 ms a frame, never a burst
}

// ---------------------------------------------------------------- what the parameters do

TEST_F(SimCameraTest, Frame_ShowsTheWarmLampOnTheEmptySlide)
{
    const Rgb slide = meanAt(cam.renderFrame(), kSlide);
    EXPECT_GT(slide.r, slide.g + 5);
    EXPECT_GT(slide.g, slide.b + 20);
    EXPECT_GT(slide.grey(), 170);
    EXPECT_LT(slide.grey(), 230);
}

TEST_F(SimCameraTest, Gain_RaisesTheMeanBrightness)
{
    const double before = meanGrey(cam.renderFrame());
    set(13, 48);
    const double after = meanGrey(cam.renderFrame());
    EXPECT_GT(after, before + 20);
}

TEST_F(SimCameraTest, Exposure_RaisesTheMeanBrightness)
{
    set(7, 480);
    const double shorter = meanGrey(cam.renderFrame());
    set(7, 960);
    const double longer = meanGrey(cam.renderFrame());
    EXPECT_GT(longer, shorter * 1.6);
}

TEST_F(SimCameraTest, Clock_ShortensTheExposure_AndDarkensThePicture)
{
    const double slow = meanGrey(cam.renderFrame());
    set(15, 96);
    const double fast = meanGrey(cam.renderFrame());
    EXPECT_LT(fast, slow * 0.7);
}

TEST_F(SimCameraTest, Brightness_ShiftsEveryLevel)
{
    const Rgb before = meanAt(cam.renderFrame(), patchCentre(2));
    set(1, 30);
    const Rgb up = meanAt(cam.renderFrame(), patchCentre(2));
    set(1, -30);
    const Rgb down = meanAt(cam.renderFrame(), patchCentre(2));

    EXPECT_NEAR(up.g - before.g, 30, 1);
    EXPECT_NEAR(before.g - down.g, 30, 1);
}

TEST_F(SimCameraTest, Contrast_SpreadsDarkAndBrightApart)
{
    QImage frame = cam.renderFrame();
    const double dark = meanAt(frame, patchCentre(0)).grey();
    const double bright = meanAt(frame, kSlide).grey();
    set(2, 48);
    frame = cam.renderFrame();

    EXPECT_LT(meanAt(frame, patchCentre(0)).grey(), dark - 10);
    EXPECT_GT(meanAt(frame, kSlide).grey(), bright + 10);
}

TEST_F(SimCameraTest, Gamma_AboveOne_DarkensMidGrey_AndBelowOneBrightensIt)
{
    const double one = meanAt(cam.renderFrame(), patchCentre(2)).grey();
    set(3, 128);
    const double two = meanAt(cam.renderFrame(), patchCentre(2)).grey();
    set(3, 32);
    const double half = meanAt(cam.renderFrame(), patchCentre(2)).grey();

    EXPECT_NEAR(two, 255 * std::pow(one / 255, 2.0), 2);
    EXPECT_NEAR(half, 255 * std::pow(one / 255, 0.5), 2);
}

TEST_F(SimCameraTest, Gamma_DoesNothing_WhileGammaIsDisabled)
{
    const QImage before = cam.renderFrame();
    set(111, 0);
    set(3, 128);
    EXPECT_EQ(cam.renderFrame(), before);
    set(111, 1);
    EXPECT_NE(cam.renderFrame(), before);
}

TEST_F(SimCameraTest, RgbGains_ScaleTheirOwnChannel)
{
    const Rgb before = meanAt(cam.renderFrame(), patchCentre(2));
    set(9, 96);
    const Rgb red = meanAt(cam.renderFrame(), patchCentre(2));
    set(9, 64);
    set(11, 32);
    const Rgb blue = meanAt(cam.renderFrame(), patchCentre(2));

    EXPECT_NEAR(red.r, before.r * 1.5, 3);
    EXPECT_NEAR(red.g, before.g, 1);
    EXPECT_NEAR(blue.b, before.b * 0.5, 3);
    EXPECT_NEAR(blue.r, before.r, 1);
}

TEST_F(SimCameraTest, RgbOffsets_AddToTheirOwnChannel)
{
    const Rgb before = meanAt(cam.renderFrame(), patchCentre(1));
    set(106, 20);
    set(107, -10);
    set(108, 40);
    const Rgb after = meanAt(cam.renderFrame(), patchCentre(1));

    EXPECT_NEAR(after.r - before.r, 20, 1);
    EXPECT_NEAR(after.g - before.g, -10, 1);
    EXPECT_NEAR(after.b - before.b, 40, 1);
}

TEST_F(SimCameraTest, BlackLevel_LiftsTheDarkest_OnceAutoIsOff)
{
    const double before = meanAt(cam.renderFrame(), patchCentre(0)).grey();
    set(12, 40);
    EXPECT_NEAR(meanAt(cam.renderFrame(), patchCentre(0)).grey(), before, 0.5) << "auto holds its own level";

    ASSERT_EQ(cam.SetParamAuto(kCam, 12, 0), 0);

    EXPECT_NEAR(meanAt(cam.renderFrame(), patchCentre(0)).grey(), before + 36, 1.5);
}

TEST_F(SimCameraTest, FlipH_MirrorsThePictureLeftToRight)
{
    const QImage plain = cam.renderFrame();
    set(5, 1);
    const QImage flipped = cam.renderFrame();
    // The top half holds the asymmetric features and never the particle.
    const QRect top(0, 0, plain.width(), plain.height() / 2 - 40);

    ASSERT_NE(plain.copy(top), plain.copy(top).mirrored(true, false));
    EXPECT_EQ(flipped.copy(top), plain.mirrored(true, false).copy(top));
}

TEST_F(SimCameraTest, FlipV_MirrorsThePictureTopToBottom)
{
    const QImage plain = cam.renderFrame();
    set(4, 1);
    const QImage flipped = cam.renderFrame();
    const QRect left(0, 0, plain.width() / 2 - 40, plain.height());

    ASSERT_NE(plain.copy(left), plain.copy(left).mirrored(false, true));
    EXPECT_EQ(flipped.copy(left), plain.mirrored(false, true).copy(left));
}

TEST_F(SimCameraTest, ColourOff_GivesGreyPixels_NoiseIncluded)
{
    cam.setNoise(true);
    set(14, 0);
    set(106, 30);  // unequal offsets must not tint a grey picture
    const QImage frame = cam.renderFrame();

    int coloured = 0;
    for (int y = 0; y < frame.height(); y += 3)
        for (int x = 0; x < frame.width(); x += 3) {
            const QRgb p = frame.pixel(x, y);
            coloured += qRed(p) != qGreen(p) || qGreen(p) != qBlue(p);
        }
    EXPECT_EQ(coloured, 0);
    const Rgb rect = meanAt(frame, kRectangleInside);
    EXPECT_GT(rect.r, 60);
}

TEST_F(SimCameraTest, Saturation_Zero_RemovesColour_AndHighRaisesIt)
{
    const Rgb normal = meanAt(cam.renderFrame(), kRectangleInside);
    set(19, 0);
    const Rgb none = meanAt(cam.renderFrame(), kRectangleInside);
    set(19, 128);
    const Rgb strong = meanAt(cam.renderFrame(), kRectangleInside);

    EXPECT_NEAR(none.r, none.g, 2);
    EXPECT_NEAR(none.g, none.b, 2);
    EXPECT_GT(strong.r - strong.g, (normal.r - normal.g) * 1.5);
}

TEST_F(SimCameraTest, Hue_TurnsRedIntoGreen_At120Degrees)
{
    ASSERT_GT(meanAt(cam.renderFrame(), kRectangleInside).r, 120);
    set(109, 120);
    const Rgb turned = meanAt(cam.renderFrame(), kRectangleInside);
    EXPECT_GT(turned.g, turned.r + 60);
    EXPECT_GT(turned.g, turned.b + 60);
}

TEST_F(SimCameraTest, Hue_LeavesGreyAlone)
{
    const Rgb before = meanAt(cam.renderFrame(), kSlide);
    set(109, 90);
    const Rgb after = meanAt(cam.renderFrame(), kSlide);
    EXPECT_LT(after.grey(), before.grey() + 3);
    EXPECT_GT(after.grey(), before.grey() - 3);
    EXPECT_NE(after.r, before.r);  // the warm slide is not grey, so it turns
}

TEST_F(SimCameraTest, ColourCorrection_Strengthens_Colours)
{
    const Rgb plain = meanAt(cam.renderFrame(), kRectangleInside);
    set(110, 1);
    const Rgb corrected = meanAt(cam.renderFrame(), kRectangleInside);
    EXPECT_GT(corrected.r - corrected.g, plain.r - plain.g + 20);
}

TEST_F(SimCameraTest, ColourProcessingOff_BypassesSaturationHueAndCorrection)
{
    const QImage plain = cam.renderFrame();
    set(117, 0);
    set(19, 0);
    set(109, 120);
    set(110, 1);
    EXPECT_EQ(cam.renderFrame(), plain);
    set(117, 1);
    EXPECT_NE(cam.renderFrame(), plain);
}

TEST_F(SimCameraTest, Tnr_BlendsTheLastFrameIn)
{
    clock.advance(5000);  // the particle at 5 s
    const QPointF oldPlace = SimScene::particleCentre(5000);
    const QImage before = cam.renderFrame();
    const double slide = meanAt(before, kSlide).grey();
    const double dark = meanAt(before, oldPlace, 1).grey();
    ASSERT_LT(dark, slide * 0.4);
    set(115, 1);
    clock.advance(2000);
    const QImage frame = cam.renderFrame();

    const double half = (slide + dark) / 2;
    EXPECT_NEAR(meanAt(frame, oldPlace, 1).grey(), half, 6) << "half of where the particle was";
    EXPECT_NEAR(meanAt(frame, SimScene::particleCentre(7000), 1).grey(), half, 6) << "half of where it is";
    EXPECT_NEAR(meanAt(frame, kSlide).grey(), slide, 1);
}

TEST_F(SimCameraTest, Tnr_Off_ShowsNoTrail)
{
    clock.advance(5000);
    const QPointF oldPlace = SimScene::particleCentre(5000);
    const Rgb slide = meanAt(cam.renderFrame(), oldPlace + QPointF(0, 60));
    clock.advance(2000);
    const Rgb there = meanAt(cam.renderFrame(), oldPlace, 1);
    EXPECT_NEAR(there.grey(), slide.grey(), 4);
}

// ---------------------------------------------------------------- white balance

TEST_F(SimCameraTest, WhiteBalance_ReadsZeroWhileRunning_ThenOne)
{
    EXPECT_EQ(get(6), 1);
    ASSERT_EQ(cam.SetParamOnePush(kCam, 6), 0);
    EXPECT_EQ(get(6), 0);
    clock.advance(SimCamera::kWhiteBalanceMs - 1);
    EXPECT_EQ(get(6), 0);
    clock.advance(1);
    EXPECT_EQ(get(6), 1);
}

TEST_F(SimCameraTest, WhiteBalance_SetsGainsThatMakeTheSlideGrey)
{
    ASSERT_EQ(cam.SetParamOnePush(kCam, 6), 0);
    clock.advance(SimCamera::kWhiteBalanceMs);
    ASSERT_EQ(get(6), 1);

    EXPECT_LT(get(9), 64);
    EXPECT_EQ(get(10), 64);
    EXPECT_GT(get(11), 64);
    const Rgb slide = meanAt(cam.renderFrame(), kSlide);
    EXPECT_NEAR(slide.r, slide.g, 2);
    EXPECT_NEAR(slide.b, slide.g, 2);
}

TEST_F(SimCameraTest, WhiteBalance_FadesTheCastOverTheFramesOfTheRun)
{
    const Rgb warm = meanAt(cam.renderFrame(), kSlide);
    ASSERT_GT(warm.r - warm.b, 10);
    ASSERT_EQ(cam.SetParamOnePush(kCam, 6), 0);
    double cast = warm.r - warm.b;
    for (int frame = 0; frame < 4; ++frame) {
        clock.advance(20);
        const Rgb now = meanAt(cam.renderFrame(), kSlide);
        EXPECT_LT(now.r - now.b, cast) << frame;  // every frame a little greyer
        cast = now.r - now.b;
    }
    EXPECT_LT(std::abs(cast), 4);
    EXPECT_EQ(get(6), 0);  // still running
    clock.advance(SimCamera::kWhiteBalanceMs);
    EXPECT_EQ(get(6), 1);
}

TEST_F(SimCameraTest, WhiteBalance_FinishesForTheRenderer_WithoutPolling)
{
    ASSERT_EQ(cam.SetParamOnePush(kCam, 6), 0);
    clock.advance(1000);
    const Rgb slide = meanAt(cam.renderFrame(), kSlide);
    EXPECT_NEAR(slide.b, slide.g, 2);
}

TEST_F(SimCameraTest, WhiteBalance_NeverEnds_WhenToldSo)
{
    SimCamera::Faults f;
    f.whiteBalanceNeverEnds = true;
    cam.setFaults(f);
    ASSERT_EQ(cam.SetParamOnePush(kCam, 6), 0);
    clock.advance(10000);
    EXPECT_EQ(get(6), 0);
    EXPECT_EQ(get(9), 64);
}

TEST_F(SimCameraTest, OnePush_IsOnlyForTheWhiteBalance)
{
    EXPECT_EQ(cam.SetParamOnePush(kCam, 7), SimCamera::kNotSupported);
    EXPECT_EQ(cam.SetCamParameter(kCam, 6, 1), SimCamera::kReadOnly);
}

// ---------------------------------------------------------------- automatic modes

TEST_F(SimCameraTest, AutoModes_AreOffForExposure_AndOnForBlackLevel)
{
    std::int32_t flag = -1;
    ASSERT_EQ(cam.GetParamAuto(kCam, 7, flag), 0);
    EXPECT_EQ(flag, 0);
    ASSERT_EQ(cam.GetParamAuto(kCam, 12, flag), 0);
    EXPECT_EQ(flag, 1);
}

TEST_F(SimCameraTest, AutoMode_IsRefused_ForAParameterWithoutOne)
{
    std::int32_t flag = 0;
    EXPECT_EQ(cam.SetParamAuto(kCam, 13, 1), SimCamera::kNotSupported);
    EXPECT_EQ(cam.GetParamAuto(kCam, 13, flag), SimCamera::kNotSupported);
    EXPECT_EQ(cam.SetParamAutoDef(kCam, 13), SimCamera::kNotSupported);
}

TEST(SimCameraGainAutoOption, GainReportsAnAutoMode_ThatLeavesThePictureAlone)
{
    ManualClock clock;
    SimCamera::Options options = quiet();
    options.gainReportsAuto = true;
    SimCamera cam(options, &clock);
    ASSERT_EQ(cam.Init(), 1);
    ASSERT_EQ(cam.Open(kCam), 0);
    CamParamRange range;
    ASSERT_EQ(cam.GetCamParameterRange(kCam, 13, range), 0);
    EXPECT_EQ(range.autoMode, 1);
    std::int32_t flag = -1;
    ASSERT_EQ(cam.GetParamAuto(kCam, 13, flag), 0);
    EXPECT_EQ(flag, 0);
    const SimLook before = cam.look();
    ASSERT_EQ(cam.SetParamAuto(kCam, 13, 1), 0);
    ASSERT_EQ(cam.GetParamAuto(kCam, 13, flag), 0);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(cam.look(), before);
    ASSERT_EQ(cam.SetParamAutoDef(kCam, 13), 0);
    ASSERT_EQ(cam.GetParamAuto(kCam, 13, flag), 0);
    EXPECT_EQ(flag, 0);
}

TEST_F(SimCameraTest, AutoExposure_SteersTheMeanToTheTarget)
{
    set(8, 80);
    ASSERT_EQ(cam.SetParamAuto(kCam, 7, 1), 0);
    for (int i = 0; i < 20; ++i)
        cam.renderFrame();

    EXPECT_NEAR(meanGrey(cam.renderFrame()), 80, 8);
    EXPECT_LT(get(7), 960);
}

TEST_F(SimCameraTest, AutoExposureOff_KeepsTheExposureItReached)
{
    set(8, 80);
    ASSERT_EQ(cam.SetParamAuto(kCam, 7, 1), 0);
    for (int i = 0; i < 20; ++i)
        cam.renderFrame();
    const std::int32_t reached = get(7);

    ASSERT_EQ(cam.SetParamAuto(kCam, 7, 0), 0);

    EXPECT_EQ(get(7), reached);
    cam.renderFrame();
    EXPECT_EQ(get(7), reached);
}

TEST_F(SimCameraTest, SetParamAutoDef_PutsTheAutoModesBack)
{
    ASSERT_EQ(cam.SetParamAuto(kCam, 7, 1), 0);
    ASSERT_EQ(cam.SetParamAuto(kCam, 12, 0), 0);

    ASSERT_EQ(cam.SetParamAutoDef(kCam, 7), 0);
    ASSERT_EQ(cam.SetParamAutoDef(kCam, 12), 0);

    std::int32_t flag = -1;
    cam.GetParamAuto(kCam, 7, flag);
    EXPECT_EQ(flag, 0);
    cam.GetParamAuto(kCam, 12, flag);
    EXPECT_EQ(flag, 1);
}

TEST_F(SimCameraTest, SetParamAuto_RefusesFlagsOtherThanZeroAndOne)
{
    EXPECT_EQ(cam.SetParamAuto(kCam, 7, 2), SimCamera::kOutOfRange);
}

// ---------------------------------------------------------------- scene geometry

namespace {

// Centres of the dark runs along one row, in continuous pixel coordinates.
std::vector<double> darkRunCentres(const QImage& image, int row, double threshold, double background)
{
    std::vector<double> centres;
    const int w = image.width();
    int x = 0;
    while (x < w) {
        if (qGray(image.pixel(x, row)) >= threshold) {
            ++x;
            continue;
        }
        int end = x;
        while (end < w && qGray(image.pixel(end, row)) < threshold)
            ++end;
        double sum = 0, weight = 0;  // darkness-weighted, one pixel either side for the soft edges
        for (int i = std::max(0, x - 1); i <= std::min(w - 1, end); ++i) {
            const double d = std::max(0.0, background - qGray(image.pixel(i, row)));
            sum += d * (i + 0.5);
            weight += d;
        }
        centres.push_back(sum / weight);
        x = end;
    }
    return centres;
}

// Where the grey level crosses `level` between pixel centres, searching from
// `from` in steps of `step` (+1 or -1).
double crossing(const QImage& image, int row, int from, int step, double level)
{
    for (int x = from; x + step >= 0 && x + step < image.width(); x += step) {
        const double a = qGray(image.pixel(x, row));
        const double b = qGray(image.pixel(x + step, row));
        if ((a - level) * (b - level) <= 0 && a != b)
            return x + 0.5 + step * (a - level) / (a - b);
    }
    return -1;
}

}  // namespace

class SimCameraGeometry : public ::testing::TestWithParam<std::int32_t> {
protected:
    QImage frame()
    {
        ManualClock clock;
        SimCamera cam(quiet(GetParam()), &clock);
        cam.Init();
        cam.Open(kCam);
        return cam.renderFrame();
    }
};

TEST_P(SimCameraGeometry, MicrometerTicks_LieWhereTheScaleSays)
{
    const QImage image = frame();
    const SimScene::Scale& scale = SimScene::geometry().horizontalScale;
    const double s = SimCamera::micrometresPerPixel(GetParam());
    const int row = static_cast<int>(SimScene::toPixel(image.size(), QPointF(0, scale.zero.y() - 10)).y());
    const double background = meanAt(image, QPointF(0, scale.zero.y() - 10 - 70)).grey();

    const std::vector<double> ticks = darkRunCentres(image, row, background * 0.75, background);

    ASSERT_EQ(ticks.size(), 101u);
    for (size_t k = 0; k < ticks.size(); ++k) {
        const double expected = image.width() / 2.0 + (scale.zero.x() + 10.0 * k) / s;
        EXPECT_NEAR(ticks[k], expected, 1.0) << "tick " << k;
    }
    EXPECT_NEAR((ticks.back() - ticks.front()) * s, 1000.0, s);
}

TEST_P(SimCameraGeometry, VerticalScaleTicks_LieWhereTheScaleSays)
{
    const QImage rotated =
        frame().transformed(QTransform().rotate(90));  // columns become rows, top to the right
    const SimScene::Scale& scale = SimScene::geometry().verticalScale;
    const double s = SimCamera::micrometresPerPixel(GetParam());
    const QSize original(rotated.height(), rotated.width());
    const int column = static_cast<int>(SimScene::toPixel(original, QPointF(scale.zero.x() - 10, 0)).x());
    const double background = meanAt(rotated, QPointF(0, -100)).grey();

    // After the turn, original row y lies at x = height - 1 - y.
    const std::vector<double> ticks = darkRunCentres(rotated, column, background * 0.75, background);

    ASSERT_EQ(ticks.size(), 51u);
    for (size_t k = 0; k < ticks.size(); ++k) {
        const double y = original.height() / 2.0 + (scale.zero.y() + 10.0 * k) / s;
        EXPECT_NEAR(rotated.width() - ticks[ticks.size() - 1 - k], y, 1.0) << "tick " << k;
    }
}

TEST_P(SimCameraGeometry, LargeCircle_HasItsDocumentedCentreAndDiameter)
{
    const QImage image = frame();
    const SimScene::Circle& circle = SimScene::geometry().largeCircle;
    const double s = SimCamera::micrometresPerPixel(GetParam());
    const QPointF centre = SimScene::toPixel(image.size(), circle.centre);
    const int row = static_cast<int>(centre.y());
    const double inside = meanAt(image, circle.centre).grey();
    const double outside = meanAt(image, circle.centre - QPointF(circle.diameter / 2 + 25, 0)).grey();
    const double level = (inside + outside) / 2;

    const double left = crossing(image, row, static_cast<int>(centre.x()), -1, level);
    const double right = crossing(image, row, static_cast<int>(centre.x()), +1, level);

    const double chord =
        2 * std::sqrt(std::pow(circle.diameter / 2 / s, 2) - std::pow(row + 0.5 - centre.y(), 2));
    EXPECT_NEAR(right - left, chord, 1.0);
    EXPECT_NEAR((left + right) / 2, centre.x(), 1.0);
    EXPECT_NEAR((right - left) * s, circle.diameter, 1.5 * s);
}

TEST_P(SimCameraGeometry, SmallCircle_HasItsDocumentedDiameter_Vertically)
{
    const QImage image = frame().transformed(QTransform().rotate(90));
    const SimScene::Circle& circle = SimScene::geometry().smallCircle;
    const double s = SimCamera::micrometresPerPixel(GetParam());
    const QSize original(image.height(), image.width());
    const QPointF centre = SimScene::toPixel(original, circle.centre);
    // Original column x is row x of the turned picture.
    const int row = static_cast<int>(centre.x());
    const int start = image.width() - 1 - static_cast<int>(centre.y());
    const double inside = qGray(image.pixel(start, row));
    const double outside = qGray(image.pixel(start + static_cast<int>(80 / s), row));
    const double level = (inside + outside) / 2;

    const double top = crossing(image, row, start, +1, level);
    const double bottom = crossing(image, row, start, -1, level);

    EXPECT_NEAR((top - bottom) * s, circle.diameter, 1.5 * s);
}

INSTANTIATE_TEST_SUITE_P(Modes, SimCameraGeometry, ::testing::Values(1, 5, 8));

TEST(SimCameraScene, DocumentedFeatures_AgreeWithThemselves)
{
    const SimScene::Geometry& g = SimScene::geometry();

    const QPolygonF rect(QList<QPointF>(g.rectangle.begin(), g.rectangle.end()));
    const QPolygonF tri(QList<QPointF>(g.triangle.begin(), g.triangle.end()));
    const auto area = [](const QPolygonF& p) {
        double a = 0;
        for (int i = 0; i < p.size(); ++i)
            a += p[i].x() * p[(i + 1) % p.size()].y() - p[(i + 1) % p.size()].x() * p[i].y();
        return std::abs(a) / 2;
    };
    EXPECT_DOUBLE_EQ(area(rect), g.rectangleArea);
    EXPECT_DOUBLE_EQ(g.rectangleArea, 20000.0);
    EXPECT_DOUBLE_EQ(area(tri), g.triangleArea);
    EXPECT_DOUBLE_EQ(g.angle.secondDeg - g.angle.firstDeg, 45.0);
    EXPECT_DOUBLE_EQ(g.largeCircle.diameter, 250.0);
    EXPECT_DOUBLE_EQ(g.smallCircle.diameter, 100.0);
    EXPECT_DOUBLE_EQ(g.horizontalScale.division, 10.0);
}

TEST(SimCameraScene, EveryFeature_IsInsideTheFieldOfEveryMode)
{
    const SimScene::Geometry& g = SimScene::geometry();
    const QRectF field(-648, -486, 1296, 972);  // the 4:3 modes; the 5:4 mode sees more
    EXPECT_TRUE(field.contains(QRectF(g.horizontalScale.zero - QPointF(0, 50), QSizeF(1000, 50 + 35))));
    EXPECT_TRUE(field.contains(QRectF(g.verticalScale.zero - QPointF(50, 0), QSizeF(50, 500))));
    EXPECT_TRUE(field.contains(QRectF(g.largeCircle.centre, QSizeF()).adjusted(-125, -125, 125, 125)));
    for (const QPointF& p : g.rectangle)
        EXPECT_TRUE(field.contains(p));
    EXPECT_TRUE(field.contains(g.angle.vertex + QPointF(std::cos(qDegreesToRadians(g.angle.secondDeg)),
                                                        -std::sin(qDegreesToRadians(g.angle.secondDeg))) *
                                                    g.angle.length));
}

TEST(SimCameraScene, PixelAndMicrometres_ConvertBothWays)
{
    const QSize size(2592, 1944);
    EXPECT_EQ(SimScene::toPixel(size, QPointF(0, 0)), QPointF(1296, 972));
    EXPECT_EQ(SimScene::toPixel(size, QPointF(-500, 400)), QPointF(296, 1772));
    EXPECT_EQ(SimScene::toMicrometres(size, QPointF(296, 1772)), QPointF(-500, 400));
}

TEST(SimCameraScene, AngleRays_AreWhereTheAngleSays)
{
    ManualClock clock;
    SimCamera cam(quiet(8), &clock);
    cam.Init();
    cam.Open(kCam);
    const QImage image = cam.renderFrame();
    const SimScene::Angle& a = SimScene::geometry().angle;
    const double slide = meanAt(image, kSlide).grey();

    for (double deg : {a.firstDeg, a.secondDeg}) {
        const QPointF dir(std::cos(qDegreesToRadians(deg)), -std::sin(qDegreesToRadians(deg)));
        const QPointF normal(-dir.y(), dir.x());
        const QPointF onRay = a.vertex + dir * (a.length * 0.6);
        EXPECT_LT(meanAt(image, onRay, 1).grey(), slide * 0.5) << deg;
        EXPECT_GT(meanAt(image, onRay + normal * 6, 1).grey(), slide * 0.9) << deg;
    }
}

TEST_F(SimCameraTest, Particle_DriftsWithTheClock)
{
    const QImage first = cam.renderFrame();
    clock.advance(1000);
    const QImage second = cam.renderFrame();

    const QPointF before = SimScene::particleCentre(0);
    const QPointF after = SimScene::particleCentre(1000);
    ASSERT_GT(QLineF(before, after).length(), 100);
    const double slide = meanAt(first, kSlide).grey();
    EXPECT_LT(meanAt(first, before, 2).grey(), slide * 0.5);
    EXPECT_GT(meanAt(second, before, 2).grey(), slide * 0.9);
    EXPECT_LT(meanAt(second, after, 2).grey(), slide * 0.5);
}

TEST_F(SimCameraTest, Noise_ChangesEveryFrame_ButNotTheMean)
{
    cam.setNoise(true);
    const QImage a = cam.renderFrame();
    const QImage b = cam.renderFrame();

    EXPECT_NE(a, b);
    EXPECT_NEAR(meanGrey(a), meanGrey(b), 0.3);
}

TEST_F(SimCameraTest, NoNoise_GivesIdenticalFrames)
{
    EXPECT_EQ(cam.renderFrame(), cam.renderFrame());
}

// ---------------------------------------------------------------- still to file

TEST_F(SimCameraTest, SaveToFile_WritesTheNewestFrame_PixelForPixel)
{
    TempDir dir;
    cam.setNoise(true);
    cam.renderFrame();
    const QImage newest = cam.renderFrame();
    const QString path = dir.file(QStringLiteral("still.bmp"));

    ASSERT_EQ(cam.SaveToFile(kCam, path), 0);

    QImage read;
    ASSERT_EQ(BmpFile::read(path, read), 0);
    EXPECT_EQ(read, newest);
    EXPECT_EQ(cam.latestFrame(), newest);
    EXPECT_EQ(QImageReader(path).read().convertToFormat(QImage::Format_RGB888), newest);
}

TEST_F(SimCameraTest, SaveToFile_WritesAJpegForAJpgName_AtTheQualitySet)
{
    TempDir dir;
    const QImage newest = cam.renderFrame();
    const QString low = dir.file(QStringLiteral("low.JPG"));
    const QString high = dir.file(QStringLiteral("high.jpg"));
    cam.SetSaveQuality(10);
    ASSERT_EQ(cam.SaveToFile(kCam, low), 0);
    cam.SetSaveQuality(95);
    ASSERT_EQ(cam.SaveToFile(kCam, high), 0);

    QImageReader reader(high);
    EXPECT_EQ(reader.format(), QByteArray("jpeg"));
    const QImage read = reader.read();
    ASSERT_EQ(read.size(), newest.size());
    EXPECT_LT(std::abs(qGray(read.pixel(40, 40)) - qGray(newest.pixel(40, 40))), 8);
    QByteArray expected;
    ASSERT_EQ(JpegWriter::encode(newest, 95, expected), JpegWriter::kOk);
    EXPECT_EQ(QFileInfo(high).size(), expected.size());
    EXPECT_LT(QFileInfo(low).size(), QFileInfo(high).size() / 2);
    // Any other ending is a bitmap.
    ASSERT_EQ(cam.SaveToFile(kCam, dir.file(QStringLiteral("still.jpeg"))), 0);
    EXPECT_EQ(QImageReader(dir.file(QStringLiteral("still.jpeg"))).format(), QByteArray("bmp"));
}

TEST_F(SimCameraTest, GrabFrame_CopiesTheNewestFrame_IntoTheSameBuffer)
{
    QImage grabbed;
    EXPECT_EQ(cam.GrabFrame(kCam, grabbed), SimCamera::kNoFrame);
    cam.setNoise(true);
    const QImage first = cam.renderFrame();
    ASSERT_EQ(cam.GrabFrame(kCam, grabbed), 0);
    EXPECT_EQ(grabbed, first);
    const uchar* buffer = grabbed.constBits();
    const QImage second = cam.renderFrame();
    ASSERT_EQ(cam.GrabFrame(kCam, grabbed), 0);
    EXPECT_EQ(grabbed, second);
    EXPECT_EQ(grabbed.constBits(), buffer);
}

TEST_F(SimCameraTest, ReadFrame_ShowsTheNewestFrame_WhereItLies)
{
    QImage seen;
    const uchar* where = nullptr;
    int reads = 0;
    const CameraDriver::FrameReader read = [&](const FrameView& f) {
        ++reads;
        where = f.bits;
        seen = QImage(f.bits, f.width, f.height, f.bytesPerLine, f.format).copy();
    };
    EXPECT_EQ(cam.readFrame(kCam, read), SimCamera::kNoFrame);
    EXPECT_EQ(reads, 0);
    cam.setNoise(true);
    const QImage first = cam.renderFrame();
    ASSERT_EQ(cam.readFrame(kCam, read), 0);
    EXPECT_EQ(seen, first);
    const uchar* firstWhere = where;
    const QImage second = cam.renderFrame();
    ASSERT_EQ(cam.readFrame(kCam, read), 0);
    EXPECT_EQ(seen, second);
    EXPECT_NE(where, firstWhere) << "a new frame goes to another slot of the ring";
    EXPECT_EQ(reads, 2);

    EXPECT_EQ(cam.readFrame(kCam + 1, read), cam.GrabFrame(kCam + 1, seen));
    EXPECT_NE(cam.readFrame(kCam + 1, read), 0);
    cam.failCall(QStringLiteral("readFrame"), SimCamera::kFailed);
    EXPECT_EQ(cam.readFrame(kCam, read), SimCamera::kFailed);
    EXPECT_EQ(reads, 2);
}

TEST_F(SimCameraTest, SaveToFile_FailsBeforeTheFirstFrame)
{
    TempDir dir;
    EXPECT_EQ(cam.SaveToFile(kCam, dir.file(QStringLiteral("x.bmp"))), SimCamera::kNoFrame);
    EXPECT_FALSE(dir.exists(QStringLiteral("x.bmp")));
}

TEST_F(SimCameraTest, SaveToFile_FailsWhenTheFolderIsMissing)
{
    TempDir dir;
    cam.renderFrame();
    EXPECT_EQ(cam.SaveToFile(kCam, dir.file(QStringLiteral("none/x.bmp"))), SimCamera::kWriteFailed);
}

TEST_F(SimCameraTest, SaveAvi_IsNotSimulated)
{
    TempDir dir;
    EXPECT_NE(cam.SaveAvi(kCam, dir.file(QStringLiteral("clip.avi")), 0, 5), 0);
    EXPECT_FALSE(dir.exists(QStringLiteral("clip.avi")));
}

// ---------------------------------------------------------------- streaming

TEST(SimCameraStream, StartAndStop_DeliverFramesFromAnotherThread)
{
    SimCamera::Options o;
    o.defaultMode = 1;
    SimCamera cam(o);
    cam.Init();
    cam.Open(kCam);
    CollectingSink sink;

    ASSERT_EQ(cam.Start(kCam, 0, &sink, -1, 0), 0);
    EXPECT_EQ(cam.IsStarted(kCam), 1);
    for (int i = 0; i < 200 && sink.count < 5; ++i)
        QThread::msleep(10);
    ASSERT_EQ(cam.Stop(kCam), 0);
    const int delivered = sink.count;
    std::int32_t good = 0, broken = -1;
    cam.GetGoodFrames(kCam, good);
    cam.GetBrokenFrames(kCam, broken);
    QThread::msleep(50);

    EXPECT_GE(delivered, 5);
    EXPECT_EQ(sink.count, delivered) << "no frame after Stop";
    EXPECT_EQ(cam.IsStarted(kCam), 0);
    EXPECT_EQ(good, delivered);
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(sink.threads.count(QThread::currentThread()), 0u);
    EXPECT_EQ(sink.sizes.front(), QSize(640, 480));
}

TEST(SimCameraStream, Start_IsRefusedWhileStreaming)
{
    SimCamera cam(quiet());
    cam.Init();
    cam.Open(kCam);
    ASSERT_EQ(cam.Start(kCam, 0, nullptr, -1, 0), 0);
    EXPECT_EQ(cam.Start(kCam, 0, nullptr, -1, 0), SimCamera::kBusy);
}

TEST(SimCameraStream, Start_ResetsTheCounters)
{
    SimCamera cam(quiet(1));
    cam.Init();
    cam.Open(kCam);
    cam.Start(kCam, 0, nullptr, -1, 0);
    cam.produceFrame();
    cam.produceFrame();
    cam.Stop(kCam);

    ASSERT_EQ(cam.Start(kCam, 0, nullptr, -1, 0), 0);

    std::int32_t good = -1;
    cam.GetGoodFrames(kCam, good);
    EXPECT_EQ(good, 0);
}

TEST(SimCameraStream, Frames_ReuseAFewBuffers)
{
    SimCamera cam(quiet(1));
    cam.Init();
    cam.Open(kCam);
    CollectingSink sink;
    cam.Start(kCam, 0, &sink, -1, 0);

    for (int i = 0; i < 12; ++i)
        cam.produceFrame();

    EXPECT_EQ(sink.count, 12);
    EXPECT_LE(sink.buffers.size(), 3u);
}

TEST(SimCameraStream, Stop_EndsTheStream_WhenCalledFromTheSink)
{
    struct StoppingSink : FrameSink {
        SimCamera* cam = nullptr;
        std::atomic<int> count{0};
        void frameReady(const FrameView&) override
        {
            if (++count == 2)
                cam->Stop(kCam);
        }
    };
    SimCamera::Options o;
    o.defaultMode = 1;
    SimCamera cam(o);
    cam.Init();
    cam.Open(kCam);
    StoppingSink sink;
    sink.cam = &cam;

    ASSERT_EQ(cam.Start(kCam, 0, &sink, -1, 0), 0);
    for (int i = 0; i < 200 && cam.IsStarted(kCam); ++i)
        QThread::msleep(10);
    QThread::msleep(50);

    EXPECT_EQ(cam.IsStarted(kCam), 0);
    EXPECT_EQ(sink.count, 2);
}

// ---------------------------------------------------------------- fault injection

TEST(SimCameraFaults, DropEvery_LosesThoseFrames_WithoutCountingThem)
{
    SimCamera cam(quiet(1));
    SimCamera::Faults f;
    f.dropEvery = 3;
    cam.setFaults(f);
    cam.Init();
    cam.Open(kCam);
    CollectingSink sink;
    cam.Start(kCam, 0, &sink, -1, 0);

    for (int i = 0; i < 9; ++i)
        cam.produceFrame();

    std::int32_t good = 0, broken = 0;
    cam.GetGoodFrames(kCam, good);
    cam.GetBrokenFrames(kCam, broken);
    EXPECT_EQ(good, 6);
    EXPECT_EQ(broken, 0);
    EXPECT_EQ(sink.sequences, (std::vector<std::uint64_t>{1, 2, 4, 5, 7, 8}));
}

TEST(SimCameraFaults, BreakEvery_CountsThoseFramesAsBroken_AndDoesNotDeliverThem)
{
    SimCamera cam(quiet(1));
    SimCamera::Faults f;
    f.breakEvery = 4;
    cam.setFaults(f);
    cam.Init();
    cam.Open(kCam);
    CollectingSink sink;
    cam.Start(kCam, 0, &sink, -1, 0);

    for (int i = 0; i < 8; ++i)
        cam.produceFrame();

    std::int32_t good = 0, broken = 0;
    cam.GetGoodFrames(kCam, good);
    cam.GetBrokenFrames(kCam, broken);
    EXPECT_EQ(good, 6);
    EXPECT_EQ(broken, 2);
    EXPECT_EQ(sink.count, 6);
}

TEST(SimCameraFaults, DisconnectAfter_EndsTheStream)
{
    SimCamera cam(quiet(1));
    SimCamera::Faults f;
    f.disconnectAfter = 5;
    cam.setFaults(f);
    cam.Init();
    cam.Open(kCam);
    CollectingSink sink;
    cam.Start(kCam, 0, &sink, -1, 0);

    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(cam.produceFrame(), SimCamera::FrameFate::Delivered);
    EXPECT_EQ(cam.produceFrame(), SimCamera::FrameFate::Disconnected);

    EXPECT_EQ(cam.produceFrame(), SimCamera::FrameFate::NotStarted);
    EXPECT_EQ(sink.count, 5);
    EXPECT_EQ(cam.IsStarted(kCam), 0);
    EXPECT_EQ(cam.Start(kCam, 0, &sink, -1, 0), SimCamera::kDisconnected);
}

TEST(SimCameraFaults, DisconnectAfter_StopsTheThread)
{
    SimCamera::Options o;
    o.defaultMode = 1;
    SimCamera cam(o);
    SimCamera::Faults f;
    f.disconnectAfter = 3;
    cam.setFaults(f);
    cam.Init();
    cam.Open(kCam);
    CollectingSink sink;

    ASSERT_EQ(cam.Start(kCam, 0, &sink, -1, 0), 0);
    for (int i = 0; i < 300 && cam.IsStarted(kCam); ++i)
        QThread::msleep(10);

    EXPECT_EQ(cam.IsStarted(kCam), 0);
    EXPECT_EQ(sink.count, 3);
    EXPECT_EQ(cam.Stop(kCam), 0);
}

TEST(SimCameraFaults, Reopening_ClearsTheDisconnection)
{
    SimCamera cam(quiet(1));
    SimCamera::Faults f;
    f.disconnectAfter = 1;
    cam.setFaults(f);
    cam.Init();
    cam.Open(kCam);
    cam.Start(kCam, 0, nullptr, -1, 0);
    cam.produceFrame();
    cam.produceFrame();
    ASSERT_EQ(cam.IsStarted(kCam), 0);

    cam.Close(kCam);
    cam.Open(kCam);

    EXPECT_EQ(cam.Start(kCam, 0, nullptr, -1, 0), 0);
}

TEST(SimCameraFaults, OmitDefaultMode_LeavesTheCurrentModeOutOfTheList)
{
    SimCamera cam(quiet());
    SimCamera::Faults f;
    f.omitDefaultMode = true;
    cam.setFaults(f);
    cam.Init();
    cam.Open(kCam);
    std::vector<std::int32_t> modes;
    std::int32_t mode = -1;

    ASSERT_EQ(cam.GetModeList(kCam, modes), 0);
    ASSERT_EQ(cam.GetMode(kCam, mode), 0);

    EXPECT_EQ(modes, (std::vector<std::int32_t>{1, 3, 8}));
    EXPECT_EQ(mode, 5);
}

TEST(SimCameraFaults, FailingOneParameterType_LeavesTheOthersAlone)
{
    SimCamera cam(quiet());
    cam.Init();
    cam.Open(kCam);
    cam.failCall(QStringLiteral("SetCamParameter:7"), -55);

    EXPECT_EQ(cam.SetCamParameter(kCam, 7, 100), -55);
    EXPECT_EQ(cam.SetCamParameter(kCam, 13, 40), 0);
    std::int32_t v = 0;
    cam.GetCamParameter(kCam, 7, v);
    EXPECT_EQ(v, 960) << "a failed call changes nothing";
}

struct FailCase {
    const char* name;
    std::function<int(SimCamera&)> call;
};

class SimCameraFailingCall : public ::testing::TestWithParam<FailCase> {};

TEST_P(SimCameraFailingCall, ReturnsTheInjectedStatus)
{
    SimCamera cam(quiet(1));
    cam.Init();
    cam.Open(kCam);
    cam.failCall(QString::fromLatin1(GetParam().name), 77);

    EXPECT_EQ(GetParam().call(cam), 77);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, SimCameraFailingCall,
    ::testing::Values(
        FailCase{"GetVersion",
                 [](SimCamera& c) {
                     QString v;
                     return c.GetVersion(1, v);
                 }},
        FailCase{"Init", [](SimCamera& c) { return c.Init(); }},
        FailCase{"GetName",
                 [](SimCamera& c) {
                     QString n;
                     return c.GetName(kCam, n);
                 }},
        FailCase{"Open",
                 [](SimCamera& c) {
                     c.Close(kCam);
                     return c.Open(kCam);
                 }},
        FailCase{"IsOpen", [](SimCamera& c) { return c.IsOpen(kCam); }},
        FailCase{"Close", [](SimCamera& c) { return c.Close(kCam); }},
        FailCase{"GetModeList",
                 [](SimCamera& c) {
                     std::vector<std::int32_t> m;
                     return c.GetModeList(kCam, m);
                 }},
        FailCase{"GetMode",
                 [](SimCamera& c) {
                     std::int32_t m;
                     return c.GetMode(kCam, m);
                 }},
        FailCase{"SetMode", [](SimCamera& c) { return c.SetMode(kCam, 1); }},
        FailCase{"SetDisplayMode", [](SimCamera& c) { return c.SetDisplayMode(kCam, 1, 0, 0, 0, 0); }},
        FailCase{"Start", [](SimCamera& c) { return c.Start(kCam, 0, nullptr, -1, 0); }},
        FailCase{"IsStarted", [](SimCamera& c) { return c.IsStarted(kCam); }},
        FailCase{"Stop", [](SimCamera& c) { return c.Stop(kCam); }},
        FailCase{"GetGoodFrames",
                 [](SimCamera& c) {
                     std::int32_t n;
                     return c.GetGoodFrames(kCam, n);
                 }},
        FailCase{"GetBrokenFrames",
                 [](SimCamera& c) {
                     std::int32_t n;
                     return c.GetBrokenFrames(kCam, n);
                 }},
        FailCase{"SaveToFile",
                 [](SimCamera& c) { return c.SaveToFile(kCam, QStringLiteral("/tmp/never.bmp")); }},
        FailCase{"SaveAvi",
                 [](SimCamera& c) { return c.SaveAvi(kCam, QStringLiteral("/tmp/never.avi"), 0, 1); }},
        FailCase{"SetCamParameter", [](SimCamera& c) { return c.SetCamParameter(kCam, 43, 1); }},
        FailCase{"GetCamParameter",
                 [](SimCamera& c) {
                     std::int32_t v;
                     return c.GetCamParameter(kCam, 1, v);
                 }},
        FailCase{"GetCamParameterRange",
                 [](SimCamera& c) {
                     CamParamRange r;
                     return c.GetCamParameterRange(kCam, 1, r);
                 }},
        FailCase{"GetExposure",
                 [](SimCamera& c) {
                     float ms;
                     return c.GetExposure(kCam, ms);
                 }},
        FailCase{"GetParamAuto",
                 [](SimCamera& c) {
                     std::int32_t f;
                     return c.GetParamAuto(kCam, 7, f);
                 }},
        FailCase{"SetParamAuto", [](SimCamera& c) { return c.SetParamAuto(kCam, 7, 1); }},
        FailCase{"SetParamAutoDef", [](SimCamera& c) { return c.SetParamAutoDef(kCam, 7); }},
        FailCase{"SetParamOnePush", [](SimCamera& c) { return c.SetParamOnePush(kCam, 6); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SimCameraFaults, FailedSaveToFile_WritesNoFile)
{
    TempDir dir;
    SimCamera cam(quiet());
    cam.Init();
    cam.Open(kCam);
    cam.renderFrame();
    cam.failCall(QStringLiteral("SaveToFile"), -3);

    EXPECT_EQ(cam.SaveToFile(kCam, dir.file(QStringLiteral("s.bmp"))), -3);
    EXPECT_FALSE(dir.exists(QStringLiteral("s.bmp")));
}

TEST(SimCameraFaults, Calls_AreRecorded_WhenAsked)
{
    SimCamera cam(quiet());
    cam.setRecordCalls(true);
    cam.Init();
    cam.Open(kCam);
    cam.SetCamParameter(kCam, 43, 1);
    cam.SetDisplayMode(kCam, 1, 0, 0, 0, 0);

    EXPECT_EQ(cam.calls(), (QStringList{QStringLiteral("Init()"), QStringLiteral("Open(0)"),
                                        QStringLiteral("SetCamParameter(0,43,1)"),
                                        QStringLiteral("SetDisplayMode(0,1,0,0,0,0)")}));
    cam.clearCalls();
    EXPECT_TRUE(cam.calls().isEmpty());
}
