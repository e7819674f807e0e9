#include "../calib/PrintQt.h"
#include "DialogParts.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "camera/CameraProperties.h"
#include "camera/CameraSession.h"
#include "camera/FrameStatistics.h"
#include "camera/sim/SimCamera.h"
#include "camera/sim/SimScene.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include <gtest/gtest.h>
#include <QFile>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

SimCamera::Options quiet(bool frameRate = false, bool gainAuto = false)
{
    SimCamera::Options o;
    o.noise = false;
    o.threaded = false;
    o.frameRateInsteadOfClock = frameRate;
    o.gainReportsAuto = gainAuto;
    return o;
}

// A simulated camera that lets a test act in the middle of a range read.
class HookedSim : public SimCamera {
public:
    using SimCamera::SimCamera;
    std::function<void(int type)> onRange;
    int GetCamParameterRange(int cam, int type, CamParamRange& range) override
    {
        if (onRange)
            onRange(type);
        return SimCamera::GetCamParameterRange(cam, type, range);
    }
};

// The properties logic over the simulated camera, on a clock that moves only when waited on.
class CameraPropertiesOnSim : public ::testing::Test, protected test::DialogParts {
protected:
    void start(SimCamera::Options options = quiet())
    {
        sim = std::make_unique<HookedSim>(options, &clock);
        session = std::make_unique<CameraSession>(*sim, settings, messages, errorLog, prompter);
        CameraSession::View view;
        view.showResolution = [this](const QString& t) { panel = t; };
        ASSERT_TRUE(session->open(view));
        QFile::remove(errorLog.path());  // the opening's lines
        props = std::make_unique<CameraProperties>(
            CameraProperties::Parts{*session, statistics, errorLog, prompter, clock, {}});
        props->Form_Load();
    }

    const CameraProperties::Slider& slider(const char* name) const
    {
        return props->controls().sliders.at(QLatin1String(name));
    }
    QString caption(const char* name) const { return props->controls().captions.at(QLatin1String(name)); }
    // The mean colour of the empty slide, right of the features.
    QColor slide()
    {
        const QImage frame = sim->renderFrame();
        const QPointF at = SimScene::toPixel(frame.size(), QPointF(450, 60));
        return frame.pixelColor(at.toPoint());
    }
    double meanGrey()
    {
        const QImage frame = sim->renderFrame();
        double sum = 0;
        int n = 0;
        for (int y = 0; y < frame.height(); y += 8)
            for (int x = 0; x < frame.width(); x += 8, ++n)
                sum += qGray(frame.pixel(x, y));
        return sum / n;
    }

    std::unique_ptr<HookedSim> sim;
    std::unique_ptr<CameraSession> session;
    std::unique_ptr<CameraProperties> props;
    QString panel;
};

}  // namespace

TEST_F(CameraPropertiesOnSim, EveryControl_IsOffered_WithoutALogLine)
{
    start();
    EXPECT_TRUE(log().isEmpty()) << log().toStdString();
    for (const auto& [name, s] : props->controls().sliders) {
        EXPECT_EQ(s.enabled, name != QLatin1String("sldBlackLevel")) << name.toStdString();
        EXPECT_LT(s.min, s.max) << name.toStdString();
    }
    for (const auto& [name, c] : props->controls().checks)
        EXPECT_TRUE(c.enabled) << name.toStdString();
    for (const auto& s : CameraProperties::plainSliders()) {
        if (s.type != 12) {  // the black level reads "auto"
            EXPECT_EQ(caption(s.label), QString::number(slider(s.slider).value)) << s.slider;
        }
    }
    // 960 raw at 48 MHz: 20 ms, split into Rough 0 and Fine 960 of up to 50000.
    EXPECT_EQ(caption("lblExposureTime"), QStringLiteral("20.0"));
    EXPECT_EQ(slider("sldExposureTime(0)").max, 12);
    EXPECT_EQ(slider("sldExposureTime(1)").value, 960);
    EXPECT_EQ(caption("lblGamma"), QStringLiteral("1.0"));
    EXPECT_EQ(caption("Frame3"), QStringLiteral("Clock:"));
    EXPECT_EQ(caption("lblBlackLevel"), QStringLiteral("auto"));  // the camera keeps its own black level
    EXPECT_EQ(props->controls().resolutions.join(u' '),
              QStringLiteral("640x480 800x600 1280x1024 2592x1944"));
    EXPECT_EQ(caption("lblCurrentResolution"), QStringLiteral("1280x1024"));
}

TEST_F(CameraPropertiesOnSim, FrameRateCamera_ShowsTheAcquisitionFrameRate)
{
    start(quiet(true));
    EXPECT_EQ(caption("Frame3"), QStringLiteral("Aquisition Framrate:"));
    EXPECT_EQ(caption("lblClockUnit"), QStringLiteral("fps"));
    EXPECT_EQ(caption("lblClockMax"), QStringLiteral("45"));
    const double before = sim->framePeriodMs();
    props->sliderChanged(QStringLiteral("sldClock"), 10);
    EXPECT_DOUBLE_EQ(sim->framePeriodMs(), 100.0);
    EXPECT_LT(before, 100.0);
}

TEST_F(CameraPropertiesOnSim, GainReportingAuto_IsShutOff_AsTheDialogHasNoBoxForIt)
{
    start(quiet(false, true));
    EXPECT_TRUE(log().contains(QStringLiteral(" Error: Auto=1 / Param Error\r\n")));
    EXPECT_TRUE(log().contains(QStringLiteral(" nType = 13\r\n")));
    EXPECT_FALSE(slider("sldGain").enabled);
    EXPECT_EQ(caption("lblGain"), QString());
}

TEST_F(CameraPropertiesOnSim, Clock_ChangesTheFrameRate_AndTheExposureInMilliseconds)
{
    start();
    const double before = sim->framePeriodMs();
    props->sliderChanged(QStringLiteral("sldClock"), 96);
    EXPECT_LT(sim->framePeriodMs(), before);
    EXPECT_EQ(caption("lblExposureTime"), QStringLiteral("10.0"));
    EXPECT_EQ(statistics.startTime(), FrameStatistics::kRestart);
}

TEST_F(CameraPropertiesOnSim, Exposure_BrightensThePicture)
{
    start();
    const double before = meanGrey();
    props->sliderChanged(QStringLiteral("sldExposureTime(1)"), 1500);
    EXPECT_EQ(caption("lblExposureTime"), QStringLiteral("31.25"));
    EXPECT_GT(meanGrey(), before + 20);
}

TEST_F(CameraPropertiesOnSim, AutoExposure_Switches_AndTheGainFollowsTheBox)
{
    start();
    props->checkClicked(QStringLiteral("chkExposureTime"), 1);
    std::int32_t flag = 0;
    ASSERT_EQ(sim->GetParamAuto(0, 7, flag), 0);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(caption("lblExposureTime"), QStringLiteral("auto"));
    EXPECT_FALSE(slider("sldGain").enabled);
    props->checkClicked(QStringLiteral("chkExposureTime"), 0);
    EXPECT_TRUE(slider("sldGain").enabled);
    EXPECT_TRUE(slider("sldExposureTime(0)").enabled);
}

TEST_F(CameraPropertiesOnSim, WhiteBalance_NeutralisesTheLampsColourCast)
{
    start();
    const QColor warm = slide();
    ASSERT_GT(warm.red() - warm.blue(), 10);  // the lamp is warm
    props->cmdAWB_Click();
    EXPECT_TRUE(log().isEmpty()) << log().toStdString();
    EXPECT_LT(slider("sldGainRed").value, 64);
    EXPECT_EQ(slider("sldGainGreen").value, 64);
    EXPECT_GT(slider("sldGainBlue").value, 64);
    EXPECT_EQ(caption("lblGainBlue"), QString::number(slider("sldGainBlue").value));
    const QColor grey = slide();
    EXPECT_NEAR(grey.red(), grey.green(), 2);
    EXPECT_NEAR(grey.blue(), grey.green(), 2);
}

TEST_F(CameraPropertiesOnSim, FlipV_MirrorsThePicture)
{
    start();
    const QImage before = sim->renderFrame();
    props->checkClicked(QStringLiteral("chkFlipV"), 1);
    const QImage after = sim->renderFrame();
    // The still scene only: the drifting particle is not where it was.
    const QPointF at = SimScene::toPixel(before.size(), QPointF(-500, 400));  // the micrometer's zero
    const int y = static_cast<int>(at.y());
    const int x = static_cast<int>(at.x());
    EXPECT_EQ(after.pixelColor(x, before.height() - 1 - y), before.pixelColor(x, y));
}

TEST_F(CameraPropertiesOnSim, Default_PutsTheCameraBack)
{
    start();
    props->sliderChanged(QStringLiteral("sldBrightness"), 30);
    props->checkClicked(QStringLiteral("chkFlipH"), 1);
    props->checkClicked(QStringLiteral("chkBlackLevel"), 0);
    props->cmdDefault_Click();
    EXPECT_EQ(slider("sldBrightness").value, 0);
    EXPECT_EQ(props->controls().checks.at(QStringLiteral("chkFlipH")).value, 0);
    EXPECT_EQ(props->controls().checks.at(QStringLiteral("chkBlackLevel")).value, 1);
    EXPECT_EQ(sim->look(), SimCamera(quiet(), &clock).look());
    EXPECT_TRUE(log().isEmpty()) << log().toStdString();
}

TEST_F(CameraPropertiesOnSim, Handlers_WriteNothing_WhileTheDialogLoads)
{
    start();
    sim->setRecordCalls(true);
    sim->onRange = [this](int type) {
        if (type == 8)
            props->sliderChanged(QStringLiteral("sldBrightness"), 10);
    };
    props->LoadAllParams();
    for (const QString& call : sim->calls())
        EXPECT_FALSE(call.startsWith(QStringLiteral("SetCamParameter"))) << call.toStdString();
    sim->onRange = {};
    props->sliderChanged(QStringLiteral("sldBrightness"), 10);
    EXPECT_TRUE(sim->calls().contains(QStringLiteral("SetCamParameter(0,1,10)")));
}

TEST_F(CameraPropertiesOnSim, Resolution_ChangesTheFrameSize_AndIsKept)
{
    start();
    props->resolutionClicked(0);
    EXPECT_EQ(session->currentMode(), 1);
    EXPECT_EQ(sim->renderFrame().size(), QSize(640, 480));
    EXPECT_EQ(settings.DEFAULTRESOLUTION, 1);
    EXPECT_EQ(panel, QStringLiteral("Resolution:640x480"));
    EXPECT_EQ(caption("lblCurrentResolution"), QStringLiteral("640x480"));
    EXPECT_EQ(sim->IsStarted(0), 1);
}
