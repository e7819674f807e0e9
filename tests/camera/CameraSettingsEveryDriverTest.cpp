#include "../calib/PrintQt.h"
#include "DialogParts.h"
#include "FakeUvcCamera.h"
#include "ICubeStandIn.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "camera/CameraProperties.h"
#include "camera/CameraSession.h"
#include "camera/FrameStatistics.h"
#include "camera/genicam/GenICamDriver.h"
#include "camera/graph/GraphDriver.h"
#include "camera/icube/ICubeDriver.h"
#include "camera/sim/SimCamera.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"
#include "genicam/RicherFakeCamera.h"

#include <gtest/gtest.h>
#include <QFile>
#include <QRegularExpression>
#include <cerrno>
#include <optional>

using namespace tavix;
using tavix::test::FakeUvcCamera;
using tavix::test::ICubeStandIn;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

// What a test asks of the camera before the dialog loads; each driver's rig
// makes its camera so, the way that camera would be.
struct Arrangement {
    std::optional<std::pair<int, int>> exposure;  // the exposure's range in the camera's units
    bool gammaFromZero = false;                   // a gamma range that holds 0 and 64
    bool frameRateInsteadOfClock = false;         // where the driver can choose: no pixel clock
    bool gainAuto = false;  // the gain under an automatic mode the dialog has no box for
    bool whiteBalanceNeverEnds = false;
    int withheld = 0;            // a parameter the camera lacks (19: every rig can)
    int refusedAutoDefault = 0;  // the type whose automatic mode will not go back to its default
};

constexpr int kRefused = -77;

// A driver whose value writes are recorded and whose automatic-mode resets
// can be refused, as a camera refuses them.
template <typename Driver>
class Watched : public Driver {
public:
    using Driver::Driver;
    QStringList writes;  // "type=value"
    int refusedAutoDefault = 0;

    int SetCamParameter(int cam, int type, std::int32_t value) override
    {
        writes.append(QStringLiteral("%1=%2").arg(type).arg(value));
        return Driver::SetCamParameter(cam, type, value);
    }
    int SetParamAutoDef(int cam, int type) override
    {
        return type == refusedAutoDefault ? kRefused : Driver::SetParamAutoDef(cam, type);
    }
};

class Rig {
public:
    virtual ~Rig() = default;
    // Builds the camera as arranged; the session opens it next.
    virtual CameraDriver& make(const Arrangement& a, Clock& clock) = 0;
    // What can be arranged only once the camera is open.
    virtual void afterOpen(const Arrangement& a) {}
    virtual QStringList& writes() = 0;
    // False for a camera that has neither a pixel clock nor a frame rate to set.
    virtual bool offersFrameRate() const { return true; }
};

template <typename Driver>
class RigOf : public Rig {
public:
    QStringList& writes() override { return driver->writes; }

protected:
    CameraDriver& watch(std::unique_ptr<Watched<Driver>> made, const Arrangement& a)
    {
        driver = std::move(made);
        driver->refusedAutoDefault = a.refusedAutoDefault;
        return *driver;
    }
    std::unique_ptr<Watched<Driver>> driver;
};

class SimRig : public RigOf<SimCamera> {
public:
    CameraDriver& make(const Arrangement& a, Clock& clock) override
    {
        SimCamera::Options o;
        o.noise = false;
        o.threaded = false;
        o.frameRateInsteadOfClock = a.frameRateInsteadOfClock;
        o.gainReportsAuto = a.gainAuto;
        if (a.exposure)
            o.ranges[7] = CamParamRange{1, 1, 1, 960, a.exposure->first, a.exposure->second};
        if (a.gammaFromZero)
            o.ranges[3] = CamParamRange{1, 0, 1, 64, 0, 255};
        if (a.withheld)
            o.ranges[a.withheld] = CamParamRange{};
        auto sim = std::make_unique<Watched<SimCamera>>(o, &clock);
        SimCamera::Faults faults = sim->faults();
        faults.whiteBalanceNeverEnds = a.whiteBalanceNeverEnds;
        sim->setFaults(faults);
        return watch(std::move(sim), a);
    }
};

class ICubeRig : public RigOf<ICubeDriver> {
public:
    CameraDriver& make(const Arrangement& a, Clock&) override
    {
        standIn.reset();
        standIn.offerEveryDialogParameter();
        if (a.exposure)
            standIn.setParamRange(7, 1, 1, 1, 960, a.exposure->first, a.exposure->second);
        if (a.gammaFromZero)
            standIn.setParamRange(3, 1, 0, 1, 64, 0, 255);
        if (a.frameRateInsteadOfClock) {
            standIn.setParamRange(15, 0, 0, 0, 0, 0, 0);
            standIn.setParamRange(147, 1, 0, 1, 30, 1, 30);
            standIn.setParam(147, 25);
        }
        if (a.gainAuto)
            standIn.setParamRange(13, 1, 1, 1, 32, 32, 255);
        if (a.whiteBalanceNeverEnds)
            standIn.setOnePushPolls(-1);
        if (a.withheld)
            standIn.setParamRange(a.withheld, 0, 0, 0, 0, 0, 0);
        return watch(std::make_unique<Watched<ICubeDriver>>(QStringList{ICubeStandIn::path()}), a);
    }

private:
    ICubeStandIn standIn;
};

class GenICamRig : public RigOf<GenICamDriver> {
public:
    GenICamRig() { GenICamDriver::useFakeCameraOnly(); }
    ~GenICamRig() override
    {
        driver.reset();
        GenICamDriver::useRealCameras();
    }
    CameraDriver& make(const Arrangement& a, Clock&) override
    {
        // Saturation (19) and the pixel clock are what the camera lacks by itself.
        EXPECT_TRUE(!a.withheld || a.withheld == 19);
        return watch(std::make_unique<Watched<GenICamDriver>>(), a);
    }
    void afterOpen(const Arrangement& a) override
    {
        ArvDevice* device = arv_camera_get_device(driver->arvCamera());
        if (a.exposure) {
            arv_device_set_float_feature_value(device, "TestExposureTimeMin", a.exposure->first, nullptr);
            arv_device_set_float_feature_value(device, "TestExposureTimeMax", a.exposure->second, nullptr);
        }
        if (a.gainAuto)
            arv_device_set_string_feature_value(device, "GainAuto", "Continuous", nullptr);
        // Gamma runs from 0 already, and BalanceWhiteAuto stays at Once unless someone plays the camera.
    }

private:
    TempDir dir;
    test::RicherFakeCamera fake{dir.file(QStringLiteral("RicherFake.xml"))};
};

class GraphRig : public RigOf<GraphDriver> {
public:
    CameraDriver& make(const Arrangement& a, Clock& clock) override
    {
        // The other drivers' cameras come with manual exposure.
        if (!asItComes)
            camera.put(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_MANUAL);
        if (a.exposure)
            camera.setRange(V4L2_CID_EXPOSURE_ABSOLUTE, a.exposure->first, a.exposure->second,
                            std::clamp(250, a.exposure->first, a.exposure->second));
        if (a.gammaFromZero)
            camera.setRange(V4L2_CID_GAMMA, 0, 400, 100);
        if (a.gainAuto)
            camera.add(V4L2_CID_AUTOGAIN, {V4L2_CTRL_TYPE_BOOLEAN, 0, 1, 1, 1, 0}, 1);
        // A camera that will not leave its automatic white balance never holds a balance.
        if (a.whiteBalanceNeverEnds)
            camera.refuse(V4L2_CID_AUTO_WHITE_BALANCE, EIO, 0);
        if (a.withheld == 19)
            camera.remove(V4L2_CID_SATURATION);
        const QString path =
            dir.write(QStringLiteral("Camera.grf"),
                      "videotestsrc is-live=true ! "
                      "video/x-raw,width=640,height=480,framerate=30/1 ! identity name=Camera");
        FakeUvcCamera device = camera;
        return watch(
            std::make_unique<Watched<GraphDriver>>(path, QStringLiteral("Camera"), GraphDriver::Log{}, &clock,
                                                   [device](const GraphFile&) { return device.controls(); }),
            a);
    }
    // A webcam's frame rate is its mode's: there is no control for it.
    bool offersFrameRate() const override { return false; }

    FakeUvcCamera camera = FakeUvcCamera::webcam();
    bool asItComes = false;  // automatic exposure, as webcams come

private:
    TempDir dir;
};

std::unique_ptr<Rig> rigFor(const std::string& driver)
{
    if (driver == "sim")
        return std::make_unique<SimRig>();
    if (driver == "icube")
        return std::make_unique<ICubeRig>();
    if (driver == "genicam")
        return std::make_unique<GenICamRig>();
    return std::make_unique<GraphRig>();
}

// The settings dialog's logic over a driver's rig, on a clock that moves only when waited on.
class SettingsFixture : public ::testing::Test, protected test::DialogParts {
protected:
    void TearDown() override
    {
        props.reset();
        session.reset();
        rig.reset();
    }

    void openWith(std::unique_ptr<Rig> made, const Arrangement& a)
    {
        rig = std::move(made);
        CameraDriver& driver = rig->make(a, clock);
        session = std::make_unique<CameraSession>(driver, settings, messages, errorLog, prompter);
        ASSERT_TRUE(session->open(CameraSession::View{}));
        rig->afterOpen(a);
        QFile::remove(errorLog.path());  // the opening's lines
        props = std::make_unique<CameraProperties>(
            CameraProperties::Parts{*session, statistics, errorLog, prompter, clock, {}});
        props->Form_Load();
    }

    // Forgets the lines of the dialog's load (the parameters the camera lacks).
    void forgetLog() { QFile::remove(errorLog.path()); }
    QStringList errorLines() const { return logLines().filter(QRegularExpression(QStringLiteral("^Error"))); }
    const CameraProperties::Slider& slider(const char* name) const
    {
        return props->controls().sliders.at(QLatin1String(name));
    }
    QString caption(const char* name) const { return props->controls().captions.at(QLatin1String(name)); }
    CameraDriver& driver() { return session->driver(); }
    QStringList writesOf(int type) const
    {
        return rig->writes().filter(QRegularExpression(QStringLiteral("^%1=").arg(type)));
    }

    std::unique_ptr<Rig> rig;
    std::unique_ptr<CameraSession> session;
    std::unique_ptr<CameraProperties> props;
};

// The settings dialog's logic on every driver, each over its test camera: the
// sim, the vendor library's stand-in, Aravis's fake camera with the features
// real ones have, and the graph camera over a fake USB webcam.
class CameraSettingsEveryDriver : public SettingsFixture, public ::testing::WithParamInterface<std::string> {
protected:
    void open(const Arrangement& a = {}) { openWith(rigFor(GetParam()), a); }
};

// The dialog on the graph camera over a fake webcam, as it comes.
class CameraSettingsOnWebcam : public SettingsFixture {
protected:
    void SetUp() override
    {
        auto made = std::make_unique<GraphRig>();
        webcam = made->camera;
        made->asItComes = true;
        ASSERT_NO_FATAL_FAILURE(openWith(std::move(made), Arrangement{}));
    }
    FakeUvcCamera webcam;
};

}  // namespace

TEST_F(CameraSettingsOnWebcam, WhiteBalance_IsDoneWithinTheDialogsWait_AndShowsTheTemperatureFound)
{
    EXPECT_EQ(caption("lblWhiteBalanceTemperature"), QStringLiteral("auto"));
    webcam.put(V4L2_CID_AUTO_WHITE_BALANCE, 0);
    webcam.put(V4L2_CID_WHITE_BALANCE_TEMPERATURE, 3000);
    forgetLog();
    const qint64 start = clock.tickMs();
    props->cmdAWB_Click();
    // The automatic white balance runs 400 ms from the click, inside the 100 + 1000 ms the dialog waits.
    EXPECT_EQ(clock.tickMs() - start, 400);
    // The gains are read again as after every white balance; a webcam has none.
    EXPECT_EQ(logLines(), (QStringList{QStringLiteral("nType = 9"), QStringLiteral("nType = 10"),
                                       QStringLiteral("nType = 11")}));
    EXPECT_EQ(webcam.value(V4L2_CID_AUTO_WHITE_BALANCE), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_WHITE_BALANCE_TEMPERATURE), 5200);
    EXPECT_EQ(caption("lblWhiteBalanceTemperature"), QStringLiteral("5200"));
    EXPECT_EQ(slider("sldWhiteBalanceTemperature").value, 5200);
    EXPECT_TRUE(slider("sldWhiteBalanceTemperature").enabled);
    EXPECT_EQ(props->controls().checks.at(QStringLiteral("chkWhiteBalanceTemperature")).value, 0);
}

TEST_F(CameraSettingsOnWebcam, Default_UnderAutomaticExposure_LeavesNoRefusedWriteInTheLog)
{
    const auto autoExposure = [this] {
        return props->controls().checks.at(QStringLiteral("chkExposureTime")).value;
    };
    EXPECT_EQ(autoExposure(), 1);  // aperture priority, as the camera comes
    webcam.put(V4L2_CID_EXPOSURE_ABSOLUTE, 777);
    for (int click = 0; click < 2; ++click)
        props->cmdDefault_Click();
    EXPECT_EQ(errorLines(), QStringList{});
    EXPECT_EQ(webcam.refusedWrites(), QStringList{});
    EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_APERTURE_PRIORITY);
    EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_ABSOLUTE), 777);  // the automatic exposure's to choose
    EXPECT_EQ(webcam.value(V4L2_CID_POWER_LINE_FREQUENCY), 1);
    EXPECT_EQ(autoExposure(), 1);
}

TEST_F(CameraSettingsOnWebcam, NewControls_ShowTheCamerasValues_AndWriteIt)
{
    forgetLog();
    EXPECT_EQ(props->controls().choices.at(QStringLiteral("cboPowerLineFrequency")).items,
              (QStringList{QStringLiteral("Off"), QStringLiteral("50 Hz"), QStringLiteral("60 Hz")}));
    EXPECT_EQ(props->controls().choices.at(QStringLiteral("cboPowerLineFrequency")).index, 1);
    props->choiceClicked(QStringLiteral("cboPowerLineFrequency"), 2);
    EXPECT_EQ(webcam.value(V4L2_CID_POWER_LINE_FREQUENCY), 2);
    props->checkClicked(QStringLiteral("chkDynamicFrameRate"), 1);
    EXPECT_EQ(webcam.value(V4L2_CID_EXPOSURE_AUTO_PRIORITY), 1);
    EXPECT_EQ(caption("lblFocus"), QStringLiteral("auto"));
    props->checkClicked(QStringLiteral("chkFocus"), 0);
    EXPECT_EQ(webcam.value(V4L2_CID_FOCUS_AUTO), 0);
    EXPECT_TRUE(slider("sldFocus").enabled);
    props->sliderChanged(QStringLiteral("sldFocus"), 35);
    EXPECT_EQ(webcam.value(V4L2_CID_FOCUS_ABSOLUTE), 35);
    EXPECT_EQ(caption("lblFocus"), QStringLiteral("35"));
    EXPECT_TRUE(logLines().isEmpty()) << logLines().join(u'\n').toStdString();
}

TEST_F(CameraSettingsOnWebcam, SliderValues_StayInsideTheirRange_AsTheTrackBarsHoldThem)
{
    forgetLog();
    props->sliderChanged(QStringLiteral("sldBrightness"), 500);
    EXPECT_EQ(slider("sldBrightness").value, 64);
    EXPECT_EQ(webcam.value(V4L2_CID_BRIGHTNESS), 64);
    props->sliderChanged(QStringLiteral("sldGamma"), 10);
    EXPECT_EQ(slider("sldGamma").value, 46);
    EXPECT_EQ(caption("lblGamma"), QStringLiteral("0.719"));
    EXPECT_TRUE(logLines().isEmpty()) << logLines().join(u'\n').toStdString();
}

TEST_P(CameraSettingsEveryDriver, ExposureBelow4096_UsesFineAlone_WithRoughDisabledFrom0To1)
{
    ASSERT_NO_FATAL_FAILURE(open({std::make_pair(2, 4095)}));
    EXPECT_EQ(slider("sldExposureTime(1)").min, 2);
    EXPECT_EQ(slider("sldExposureTime(1)").max, 4095);
    EXPECT_TRUE(slider("sldExposureTime(1)").enabled);
    EXPECT_EQ(slider("sldExposureTime(0)").min, 0);
    EXPECT_EQ(slider("sldExposureTime(0)").max, 1);
    EXPECT_FALSE(slider("sldExposureTime(0)").enabled);
}

TEST_P(CameraSettingsEveryDriver, ExposureOfExactly4096_EnablesRoughUpToOne_AndFineFromTheMinimumTo4095)
{
    ASSERT_NO_FATAL_FAILURE(open({std::make_pair(3, 4096)}));
    EXPECT_TRUE(slider("sldExposureTime(0)").enabled);
    EXPECT_EQ(slider("sldExposureTime(0)").max, 1);
    EXPECT_EQ(slider("sldExposureTime(1)").min, 3);
    EXPECT_EQ(slider("sldExposureTime(1)").max, 4095);
}

TEST_P(CameraSettingsEveryDriver, Gamma64_ReadsOnePointZero_AndZeroReadsZero_AndTheCameraKeepsEach)
{
    Arrangement a;
    a.gammaFromZero = true;
    ASSERT_NO_FATAL_FAILURE(open(a));
    forgetLog();
    std::int32_t back = -1;
    props->sliderChanged(QStringLiteral("sldGamma"), 64);
    EXPECT_EQ(caption("lblGamma"), QStringLiteral("1.0"));
    ASSERT_EQ(driver().GetCamParameter(0, 3, back), 0);
    EXPECT_EQ(back, 64);
    props->sliderChanged(QStringLiteral("sldGamma"), 0);
    EXPECT_EQ(caption("lblGamma"), QStringLiteral("0.0"));
    ASSERT_EQ(driver().GetCamParameter(0, 3, back), 0);
    EXPECT_EQ(back, 0);
    EXPECT_TRUE(logLines().isEmpty()) << logLines().join(u'\n').toStdString();
}

TEST_P(CameraSettingsEveryDriver, WithoutAPixelClock_TheSliderSetsTheFrameRate_OrRestsWhenThereIsNone)
{
    Arrangement a;
    a.frameRateInsteadOfClock = true;
    ASSERT_NO_FATAL_FAILURE(open(a));
    if (!rig->offersFrameRate()) {
        EXPECT_EQ(caption("Frame3"), QStringLiteral("Clock:"));
        EXPECT_EQ(caption("lblClockUnit"), QStringLiteral("MHz"));
        EXPECT_FALSE(slider("sldClock").enabled);
        EXPECT_TRUE(logLines().contains(QStringLiteral("nType = 147")));
        return;
    }
    EXPECT_FALSE(props->clockIsPixelClock());
    EXPECT_EQ(caption("Frame3"), QStringLiteral("Aquisition Framrate:"));
    EXPECT_EQ(caption("lblClockUnit"), QStringLiteral("fps"));
    EXPECT_TRUE(slider("sldClock").enabled);
    const int fps = slider("sldClock").min + 1;
    props->sliderChanged(QStringLiteral("sldClock"), fps);
    EXPECT_EQ(writesOf(147), QStringList{QStringLiteral("147=%1").arg(fps)});
    EXPECT_EQ(writesOf(15), QStringList{});
    EXPECT_EQ(caption("lblClock"), QString::number(fps));
}

TEST_P(CameraSettingsEveryDriver, AutoExposure_ShowsAutoAndRestsExposureAndGain_AndOffShowsTheMilliseconds)
{
    ASSERT_NO_FATAL_FAILURE(open());
    forgetLog();
    props->checkClicked(QStringLiteral("chkExposureTime"), 1);
    std::int32_t flag = 0;
    ASSERT_EQ(driver().GetParamAuto(0, 7, flag), 0);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(caption("lblExposureTime"), QStringLiteral("auto"));
    EXPECT_FALSE(slider("sldExposureTime(0)").enabled);
    EXPECT_FALSE(slider("sldExposureTime(1)").enabled);
    EXPECT_FALSE(slider("sldGain").enabled);

    props->checkClicked(QStringLiteral("chkExposureTime"), 0);
    CamParamRange range;
    ASSERT_EQ(driver().GetCamParameterRange(0, 7, range), 0);
    EXPECT_EQ(slider("sldExposureTime(0)").enabled, range.maximum >= 4096);
    EXPECT_TRUE(slider("sldExposureTime(1)").enabled);
    EXPECT_TRUE(slider("sldGain").enabled);
    float ms = 0;
    ASSERT_EQ(driver().GetExposure(0, ms), 0);
    bool number = false;
    EXPECT_NEAR(caption("lblExposureTime").toDouble(&number), ms, 0.0005);
    EXPECT_TRUE(number) << caption("lblExposureTime").toStdString();
    EXPECT_TRUE(logLines().isEmpty()) << logLines().join(u'\n').toStdString();
}

TEST_P(CameraSettingsEveryDriver, WhiteBalanceThatNeverEnds_TimesOutAfter1000Polls_AndLeavesEveryControl)
{
    Arrangement a;
    a.whiteBalanceNeverEnds = true;
    ASSERT_NO_FATAL_FAILURE(open(a));
    forgetLog();
    const CameraProperties::Controls before = props->controls();
    const qint64 start = clock.tickMs();
    props->cmdAWB_Click();
    EXPECT_EQ(clock.tickMs() - start, 100 + 1001);
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("Error: ICubeSDK_GetCamParameter TimeOut.")});
    for (const auto& [name, s] : before.sliders)
        EXPECT_EQ(props->controls().sliders.at(name).value, s.value) << name.toStdString();
    EXPECT_EQ(props->controls().captions, before.captions);
}

TEST_P(CameraSettingsEveryDriver, GainUnderAnAutomaticModeWithoutABox_IsShutOff_WithItsLogLine)
{
    Arrangement a;
    a.gainAuto = true;
    ASSERT_NO_FATAL_FAILURE(open(a));
    const QStringList lines = logLines();
    const auto at = lines.indexOf(QStringLiteral("Error: Auto=1 / Param Error"));
    ASSERT_GE(at, 0) << lines.join(u'\n').toStdString();
    EXPECT_EQ(lines.value(at + 1), QStringLiteral("nType = 13"));
    EXPECT_FALSE(slider("sldGain").enabled);
    EXPECT_EQ(caption("lblGain"), QString());
}

TEST_P(CameraSettingsEveryDriver, Default_WritesNothingTheCameraLacks_NorAValueWhoseAutoResetFailed)
{
    Arrangement a;
    a.withheld = 19;
    a.refusedAutoDefault = 7;
    ASSERT_NO_FATAL_FAILURE(open(a));
    rig->writes().clear();
    props->cmdDefault_Click();
    EXPECT_EQ(errorLines(),
              QStringList{QStringLiteral("Error: ICubeSDK_SetParamAutoDef(Ret=%1 / Type=7)").arg(kRefused)});
    EXPECT_EQ(writesOf(7), QStringList{});
    EXPECT_EQ(writesOf(19), QStringList{});
    EXPECT_EQ(writesOf(13).size(), 1) << rig->writes().join(u' ').toStdString();
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_P(CameraSettingsEveryDriver, Default_OnACameraAsItComes_IsTakenWithoutARefusedWrite)
{
    ASSERT_NO_FATAL_FAILURE(open());
    props->cmdDefault_Click();
    EXPECT_EQ(errorLines(), QStringList{});
    EXPECT_FALSE(rig->writes().isEmpty());
    EXPECT_TRUE(prompter.messages.empty());
}

INSTANTIATE_TEST_SUITE_P(Drivers, CameraSettingsEveryDriver,
                         ::testing::Values("sim", "icube", "genicam", "graph"),
                         [](const ::testing::TestParamInfo<std::string>& info) { return info.param; });
