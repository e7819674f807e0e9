#include "../calib/PrintQt.h"
#include "DialogParts.h"
#include "ICubeStandIn.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "camera/CameraProperties.h"
#include "camera/CameraSession.h"
#include "camera/FrameStatistics.h"
#include "camera/icube/ICubeDriver.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include <gtest/gtest.h>
#include <QFile>
#include <QRegularExpression>

using namespace tavix;
using tavix::test::ICubeStandIn;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

// The properties logic over the vendor driver and the scriptable stand-in library.
class CameraPropertiesOnStandIn : public ::testing::Test, protected test::DialogParts {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(driver.loaded()) << driver.errorText().toStdString();
        standIn.reset();
        standIn.offerEveryDialogParameter();
        view.showResolution = [this](const QString& t) { panel = t; };
        ASSERT_TRUE(session.open(view));
        QFile::remove(errorLog.path());  // the opening's lines
        statistics.reset(100.0f);
    }

    std::unique_ptr<CameraProperties> load()
    {
        standIn.clearCalls();  // forget the calls of the start-up
        return loaded();
    }
    std::unique_ptr<CameraProperties> loaded()
    {
        auto p = std::make_unique<CameraProperties>(
            CameraProperties::Parts{session, statistics, errorLog, prompter, clock, [this] { ++paints; }});
        p->Form_Load();
        return p;
    }

    bool logHas(const QString& line) const { return logLines().contains(line); }
    // The types of one function's calls, in order.
    QList<int> typesOf(const char* function)
    {
        QList<int> types;
        const QString head = QLatin1String(function) + QStringLiteral("(0,");
        for (const QString& call : standIn.callLog())
            if (call.startsWith(head))
                types.append(
                    call.mid(head.size()).section(QLatin1Char(','), 0, 0).section(u')', 0, 0).toInt());
        return types;
    }
    static const CameraProperties::Slider& slider(const CameraProperties& p, const char* name)
    {
        return p.controls().sliders.at(QLatin1String(name));
    }
    static const CameraProperties::Check& check(const CameraProperties& p, const char* name)
    {
        return p.controls().checks.at(QLatin1String(name));
    }
    static QString caption(const CameraProperties& p, const char* name)
    {
        return p.controls().captions.at(QLatin1String(name));
    }

    int paints = 0;
    ICubeDriver driver{QStringList{ICubeStandIn::path()}};
    ICubeStandIn standIn;
    CameraSession session{driver, settings, messages, errorLog, prompter};
    CameraSession::View view;
    QString panel;  // the status bar's resolution
};

const QString kRough = QStringLiteral("sldExposureTime(0)");
const QString kFine = QStringLiteral("sldExposureTime(1)");

}  // namespace

// ---- Loading -------------------------------------------------------------------

TEST_F(CameraPropertiesOnStandIn, LoadAllParams_ReadsInTheDialogsOrder)
{
    auto p = load();
    EXPECT_EQ(typesOf("ICubeSDK_GetCamParameterRange"),
              (QList<int>{7, 8, 12, 13, 15, 1, 2, 19, 109, 3, 9, 10, 11, 106, 107, 108}));
    EXPECT_EQ(typesOf("ICubeSDK_GetCamParameter"),
              (QList<int>{7,   8,   12, 13,  4,   5, 14, 15, 117, 1,   2,  19,
                          109, 111, 3,  110, 115, 9, 10, 11, 106, 107, 108}));
    EXPECT_EQ(typesOf("ICubeSDK_GetParamAuto"), (QList<int>{7, 12}));
    EXPECT_FALSE(p->loading());
    EXPECT_TRUE(log().isEmpty()) << log().toStdString();
}

TEST_F(CameraPropertiesOnStandIn, LoadAllParams_ShowsRangesValuesAndBoxes)
{
    auto p = load();
    EXPECT_EQ(slider(*p, "sldBrightness").min, -64);
    EXPECT_EQ(slider(*p, "sldBrightness").max, 64);
    EXPECT_EQ(slider(*p, "sldBrightness").value, 5);
    EXPECT_EQ(caption(*p, "lblBrightness"), QStringLiteral("5"));
    EXPECT_EQ(slider(*p, "sldOffsetRed").value, -3);
    EXPECT_EQ(caption(*p, "lblOffsetRed"), QStringLiteral("-3"));
    EXPECT_EQ(caption(*p, "lblHue"), QStringLiteral("20"));
    EXPECT_EQ(check(*p, "chkFlipV").value, 1);
    EXPECT_EQ(check(*p, "chkFlipH").value, 0);
    EXPECT_EQ(check(*p, "chkTNR").value, 1);
    EXPECT_EQ(caption(*p, "lblExposureTime"), QStringLiteral("20.0"));
    EXPECT_EQ(p->controls().resolutions, (QStringList{QStringLiteral("640x480"), QStringLiteral("1280x1024"),
                                                      QStringLiteral("2592x1944")}));
    EXPECT_EQ(p->controls().resolutionIndex, 1);
    EXPECT_EQ(caption(*p, "lblCurrentResolution"), QStringLiteral("1280x1024"));
}

TEST_F(CameraPropertiesOnStandIn, Exposure_MaximumBelow4096_UsesFineAlone_RoughDisabled)
{
    standIn.setParamRange(7, 1, 0, 1, 100, 2, 4095);
    standIn.setParam(7, 3000);
    auto p = load();
    EXPECT_EQ(slider(*p, "sldExposureTime(1)").min, 2);
    EXPECT_EQ(slider(*p, "sldExposureTime(1)").max, 4095);
    EXPECT_EQ(slider(*p, "sldExposureTime(1)").value, 3000);
    EXPECT_EQ(slider(*p, "sldExposureTime(0)").min, 0);
    EXPECT_EQ(slider(*p, "sldExposureTime(0)").max, 1);
    EXPECT_FALSE(slider(*p, "sldExposureTime(0)").enabled);
    EXPECT_TRUE(slider(*p, "sldExposureTime(1)").enabled);
}

TEST_F(CameraPropertiesOnStandIn, Exposure_MaximumExactly4096_EnablesRoughUpToOne)
{
    standIn.setParamRange(7, 1, 0, 1, 100, 3, 4096);
    standIn.setParam(7, 4096);
    auto p = load();
    EXPECT_TRUE(slider(*p, "sldExposureTime(0)").enabled);
    EXPECT_EQ(slider(*p, "sldExposureTime(0)").max, 1);
    EXPECT_EQ(slider(*p, "sldExposureTime(0)").value, 1);
    EXPECT_EQ(slider(*p, "sldExposureTime(1)").min, 3);
    EXPECT_EQ(slider(*p, "sldExposureTime(1)").max, 4095);
    // 4096 leaves 0 for Fine, which its track bar holds at its minimum.
    EXPECT_EQ(slider(*p, "sldExposureTime(1)").value, 3);
}

TEST_F(CameraPropertiesOnStandIn, Exposure_SplitsAt4096_AndWritesRoughTimes4096PlusFine)
{
    auto p = load();  // 5000 of 1..50000
    EXPECT_EQ(slider(*p, "sldExposureTime(0)").max, 12);
    EXPECT_EQ(slider(*p, "sldExposureTime(0)").value, 1);
    EXPECT_EQ(slider(*p, "sldExposureTime(1)").value, 904);
    standIn.setExposure(41.5f);
    p->sliderChanged(kRough, 2);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,7,9096"));
    EXPECT_EQ(caption(*p, "lblExposureTime"), QStringLiteral("41.5"));
    EXPECT_EQ(slider(*p, "sldExposureTime(0)").text, QStringLiteral("41.5"));
    standIn.setExposure(0.0625f);
    p->sliderChanged(kFine, 100);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,7,8292"));
    EXPECT_EQ(caption(*p, "lblExposureTime"), QStringLiteral("0.063"));
    EXPECT_EQ(slider(*p, "sldExposureTime(1)").text, QStringLiteral("0.063"));
}

TEST_F(CameraPropertiesOnStandIn, Exposure_RoughBeyondItsMaximum_IsHeldThere_AsTheTrackBarHoldsIt)
{
    auto p = load();  // 5000 of 1..50000: Rough 1 of 12, Fine 904
    p->sliderChanged(kRough, 600000);
    EXPECT_EQ(slider(*p, "sldExposureTime(0)").value, 12);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,7,%1").arg(12 * 4096 + 904));
    EXPECT_TRUE(log().isEmpty()) << log().toStdString();
}

TEST_F(CameraPropertiesOnStandIn, Gamma_ShowsValueOver64)
{
    standIn.setParamRange(3, 1, 0, 1, 64, 0, 255);
    auto p = load();  // 96
    EXPECT_EQ(caption(*p, "lblGamma"), QStringLiteral("1.5"));
    p->sliderChanged(QStringLiteral("sldGamma"), 64);
    EXPECT_EQ(caption(*p, "lblGamma"), QStringLiteral("1.0"));
    EXPECT_EQ(slider(*p, "sldGamma").text, QStringLiteral("1.0"));
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,3,64"));
    p->sliderChanged(QStringLiteral("sldGamma"), 0);
    EXPECT_EQ(caption(*p, "lblGamma"), QStringLiteral("0.0"));
    p->sliderChanged(QStringLiteral("sldGamma"), 65);
    EXPECT_EQ(caption(*p, "lblGamma"), QStringLiteral("1.016"));
}

TEST_F(CameraPropertiesOnStandIn, GammaSlider_IsDisabled_WhileGammaIsOff)
{
    standIn.setParam(111, 0);
    auto p = load();
    EXPECT_FALSE(slider(*p, "sldGamma").enabled);
    p->checkClicked(QStringLiteral("chkEnableGamma"), 1);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,111,1"));
    EXPECT_TRUE(slider(*p, "sldGamma").enabled);
    p->checkClicked(QStringLiteral("chkEnableGamma"), 0);
    EXPECT_FALSE(slider(*p, "sldGamma").enabled);
}

TEST_F(CameraPropertiesOnStandIn, Clock_WithParameter15_IsThePixelClockInMHz)
{
    auto p = load();
    EXPECT_TRUE(p->clockIsPixelClock());
    EXPECT_EQ(caption(*p, "Frame3"), QStringLiteral("Clock:"));
    EXPECT_EQ(caption(*p, "lblClockUnit"), QStringLiteral("MHz"));
    EXPECT_EQ(caption(*p, "lblClockMin"), QStringLiteral("12"));
    EXPECT_EQ(caption(*p, "lblClockMax"), QStringLiteral("96"));
    standIn.setExposure(10.0f);
    p->sliderChanged(QStringLiteral("sldClock"), 96);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,15,96"));
    EXPECT_EQ(caption(*p, "lblClock"), QStringLiteral("96"));
    EXPECT_EQ(caption(*p, "lblExposureTime"), QStringLiteral("10.0"));  // follows the clock
}

TEST_F(CameraPropertiesOnStandIn, Clock_WithoutParameter15_DrivesTheFrameRate)
{
    standIn.setParamRange(15, 0, 0, 0, 0, 0, 0);
    standIn.setParamRange(147, 1, 0, 1, 30, 1, 30);
    standIn.setParam(147, 25);
    auto p = load();
    EXPECT_FALSE(p->clockIsPixelClock());
    EXPECT_EQ(caption(*p, "Frame3"), QStringLiteral("Aquisition Framrate:"));
    EXPECT_EQ(caption(*p, "lblClockUnit"), QStringLiteral("fps"));
    EXPECT_EQ(caption(*p, "lblClockMin"), QStringLiteral("1"));
    EXPECT_EQ(caption(*p, "lblClockMax"), QStringLiteral("30"));
    EXPECT_TRUE(slider(*p, "sldClock").enabled);
    EXPECT_EQ(slider(*p, "sldClock").value, 25);
    EXPECT_TRUE(logHas(QStringLiteral("nType = 15")));
    p->sliderChanged(QStringLiteral("sldClock"), 12);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,147,12"));
}

TEST_F(CameraPropertiesOnStandIn, Clock_WithNeither_StaysDisabled_WithItsDesignCaptions)
{
    standIn.setParamRange(15, 0, 0, 0, 0, 0, 0);
    auto p = load();
    EXPECT_FALSE(slider(*p, "sldClock").enabled);
    EXPECT_EQ(caption(*p, "Frame3"), QStringLiteral("Clock:"));
    EXPECT_EQ(caption(*p, "lblClockUnit"), QStringLiteral("MHz"));
    EXPECT_EQ(caption(*p, "lblClock"), QString());
    EXPECT_TRUE(logHas(QStringLiteral("nType = 147")));
}

// ---- Automatic modes ---------------------------------------------------------------

TEST_F(CameraPropertiesOnStandIn, AutoExposure_ShowsAuto_AndDisablesRoughFineAndGain)
{
    auto p = load();
    p->checkClicked(QStringLiteral("chkExposureTime"), 1);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetParamAuto"), QStringLiteral("0,7,1"));
    EXPECT_EQ(caption(*p, "lblExposureTime"), QStringLiteral("auto"));
    EXPECT_FALSE(slider(*p, "sldExposureTime(0)").enabled);
    EXPECT_FALSE(slider(*p, "sldExposureTime(1)").enabled);
    EXPECT_FALSE(slider(*p, "sldGain").enabled);

    standIn.setExposure(12.25f);
    p->checkClicked(QStringLiteral("chkExposureTime"), 0);
    EXPECT_EQ(caption(*p, "lblExposureTime"), QStringLiteral("12.25"));
    EXPECT_TRUE(slider(*p, "sldExposureTime(0)").enabled);
    EXPECT_TRUE(slider(*p, "sldExposureTime(1)").enabled);
    EXPECT_TRUE(slider(*p, "sldGain").enabled);
}

TEST_F(CameraPropertiesOnStandIn, AutoExposureOff_KeepsRoughDisabled_WhenTheMaximumIsBelow4096)
{
    standIn.setParamRange(7, 1, 1, 1, 100, 1, 4000);
    standIn.setParam(7, 100);
    standIn.setParamAuto(7, 1);
    auto p = load();
    EXPECT_FALSE(slider(*p, "sldGain").enabled);  // automatic exposure governs the gain too
    p->checkClicked(QStringLiteral("chkExposureTime"), 0);
    EXPECT_TRUE(slider(*p, "sldExposureTime(1)").enabled);
    EXPECT_FALSE(slider(*p, "sldExposureTime(0)").enabled);
    EXPECT_TRUE(slider(*p, "sldGain").enabled);
}

TEST_F(CameraPropertiesOnStandIn, AutoExposure_FailingSwitch_LogsAndShowsError)
{
    prompter.answers = {Prompter::Answer::Ok};
    auto p = load();
    standIn.setResult("ICubeSDK_SetParamAuto", -12);
    p->checkClicked(QStringLiteral("chkExposureTime"), 1);
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_SetParamAuto(Ret=-12 / Type=7 / Val=1)")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, QStringLiteral("error"));
    EXPECT_EQ(prompter.messages[0].title, QString());
    EXPECT_EQ(caption(*p, "lblExposureTime"), QStringLiteral("error"));
    EXPECT_FALSE(slider(*p, "sldGain").enabled);  // follows the box in every case
}

TEST_F(CameraPropertiesOnStandIn, AutoBlackLevel_SwitchesAndReloads_OrReportsTheFailure)
{
    prompter.answers = {Prompter::Answer::Ok};
    auto p = load();
    p->checkClicked(QStringLiteral("chkBlackLevel"), 1);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetParamAuto"), QStringLiteral("0,12,1"));
    EXPECT_EQ(caption(*p, "lblBlackLevel"), QStringLiteral("auto"));
    EXPECT_FALSE(slider(*p, "sldBlackLevel").enabled);
    p->checkClicked(QStringLiteral("chkBlackLevel"), 0);
    EXPECT_EQ(caption(*p, "lblBlackLevel"), QStringLiteral("6"));
    EXPECT_TRUE(slider(*p, "sldBlackLevel").enabled);

    standIn.setResult("ICubeSDK_SetParamAuto:12", -3);
    p->checkClicked(QStringLiteral("chkBlackLevel"), 1);
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_SetParamAuto(Ret=-3 / Type=12 / Val=1)")));
    EXPECT_EQ(caption(*p, "lblBlackLevel"), QStringLiteral("error"));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, QStringLiteral("error"));
}

TEST_F(CameraPropertiesOnStandIn, AutoGainWithoutAutoBox_IsShutOff_WithItsLogLine)
{
    standIn.setParamRange(13, 1, 1, 1, 32, 32, 255);
    auto p = load();
    const QStringList lines = logLines();
    const auto at = lines.indexOf(QStringLiteral("Error: Auto=1 / Param Error"));
    ASSERT_GE(at, 0) << log().toStdString();
    EXPECT_EQ(lines.value(at + 1), QStringLiteral("nType = 13"));
    EXPECT_FALSE(slider(*p, "sldGain").enabled);
    EXPECT_EQ(caption(*p, "lblGain"), QString());
    EXPECT_EQ(typesOf("ICubeSDK_GetParamAuto"), (QList<int>{7, 12}));
}

// ---- Failures while loading -------------------------------------------------------

TEST_F(CameraPropertiesOnStandIn, RangeFailure_LogsStatusAndEnabledField_AndShutsTheSliderOff)
{
    standIn.setResult("ICubeSDK_GetCamParameterRange:8", -5);
    auto p = load();
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_GetCamParameterRange(Ret = -5 / bEnabled = 1)")));
    EXPECT_TRUE(logHas(QStringLiteral("nType = 8")));
    EXPECT_FALSE(slider(*p, "sldExpTarget").enabled);
    EXPECT_EQ(caption(*p, "lblExpTarget"), QString());
}

TEST_F(CameraPropertiesOnStandIn, NotOfferedParameter_LogsOnlyItsType)
{
    standIn.setParamRange(19, 0, 0, 0, 0, 0, 0);
    auto p = load();
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("nType = 19")});
    EXPECT_FALSE(slider(*p, "sldSaturation").enabled);
}

TEST_F(CameraPropertiesOnStandIn, ValueReadFailure_LogsAndShutsTheSliderOff)
{
    standIn.setResult("ICubeSDK_GetCamParameter:9", -7);
    auto p = load();
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_GetCamParameter(-7)")));
    EXPECT_TRUE(logHas(QStringLiteral("nType = 9")));
    EXPECT_FALSE(slider(*p, "sldGainRed").enabled);
}

TEST_F(CameraPropertiesOnStandIn, AutoReadFailure_ShutsTheSliderOff_ButEnablesItsAutoBox)
{
    standIn.setResult("ICubeSDK_GetParamAuto:12", -8);
    auto p = load();
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_GetParamAuto(-8)")));
    EXPECT_TRUE(logHas(QStringLiteral("nType = 12")));
    EXPECT_FALSE(slider(*p, "sldBlackLevel").enabled);
    EXPECT_EQ(caption(*p, "lblBlackLevel"), QString());
    EXPECT_TRUE(check(*p, "chkBlackLevel").enabled);
}

TEST_F(CameraPropertiesOnStandIn, UnavailableExposure_DisablesBothSliders)
{
    standIn.setParamRange(7, 0, 0, 0, 0, 0, 0);
    auto p = load();
    EXPECT_FALSE(slider(*p, "sldExposureTime(0)").enabled);
    EXPECT_FALSE(slider(*p, "sldExposureTime(1)").enabled);
    EXPECT_TRUE(check(*p, "chkExposureTime").enabled);
    EXPECT_TRUE(logHas(QStringLiteral("nType = 7")));
}

TEST_F(CameraPropertiesOnStandIn, CheckBoxReadFailure_DisablesTheBox_WithoutALogLine)
{
    standIn.setResult("ICubeSDK_GetCamParameter:115", -2);
    auto p = load();
    EXPECT_FALSE(check(*p, "chkTNR").enabled);
    EXPECT_TRUE(check(*p, "chkFlipV").enabled);
    EXPECT_TRUE(log().isEmpty()) << log().toStdString();
}

TEST_F(CameraPropertiesOnStandIn, ExposureReadFailure_ShowsError_InLabelAndTips)
{
    standIn.setResult("ICubeSDK_GetExposure", -4);
    auto p = load();
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_GetExposure(-4)")));
    EXPECT_EQ(caption(*p, "lblExposureTime"), QStringLiteral("error"));
    EXPECT_EQ(slider(*p, "sldExposureTime(0)").text, QStringLiteral("error"));
    EXPECT_EQ(slider(*p, "sldExposureTime(1)").text, QStringLiteral("error"));
}

// ---- Writing -----------------------------------------------------------------------

TEST_F(CameraPropertiesOnStandIn, EveryPlainSlider_WritesItsType_AndShowsTheValue)
{
    auto p = load();
    for (const auto& s : CameraProperties::plainSliders()) {
        statistics.reset(100.0f);
        const int value = slider(*p, s.slider).min + 1;
        p->sliderChanged(QLatin1String(s.slider), value);
        EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"),
                  QStringLiteral("0,%1,%2").arg(s.type).arg(value))
            << s.slider;
        EXPECT_EQ(caption(*p, s.label), QString::number(value)) << s.slider;
        EXPECT_EQ(statistics.startTime(), FrameStatistics::kRestart) << s.slider;
    }
}

TEST_F(CameraPropertiesOnStandIn, EveryPlainCheckBox_WritesItsTypeAsZeroOrOne)
{
    auto p = load();
    for (const auto& c : CameraProperties::plainChecks()) {
        p->checkClicked(QLatin1String(c.box), 1);
        EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,%1,1").arg(c.type))
            << c.box;
        p->checkClicked(QLatin1String(c.box), 0);
        EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,%1,0").arg(c.type))
            << c.box;
    }
}

TEST_F(CameraPropertiesOnStandIn, FailingWrite_LogsShowsErrorAndStillRestartsTheFrameRate)
{
    prompter.answers = {Prompter::Answer::Ok};
    auto p = load();
    standIn.setResult("ICubeSDK_SetCamParameter", -11);
    p->sliderChanged(QStringLiteral("sldContrast"), 50);
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_SetCamParameter(Ret=-11 / Type=2 / Val=50)")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, QStringLiteral("error"));
    EXPECT_EQ(prompter.messages[0].title, QString());
    EXPECT_EQ(caption(*p, "lblContrast"), QStringLiteral("error"));
    EXPECT_EQ(statistics.startTime(), FrameStatistics::kRestart);
}

// ---- Default -----------------------------------------------------------------------

TEST_F(CameraPropertiesOnStandIn, Default_ResetsInOrder_SkippingWhatIsNotOffered)
{
    standIn.setParamRange(19, 0, 0, 0, 0, 0, 0);
    auto p = load();
    standIn.clearCalls();
    p->cmdDefault_Click();
    QStringList writes;
    for (const QString& call : standIn.callLog())
        if (call.startsWith(QStringLiteral("ICubeSDK_SetCamParameter(")) ||
            call.startsWith(QStringLiteral("ICubeSDK_SetParamAutoDef(")))
            writes.append(call);
    EXPECT_EQ(writes, (QStringList{
                          QStringLiteral("ICubeSDK_SetParamAutoDef(0,7)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,7,960)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,8,128)"),
                          QStringLiteral("ICubeSDK_SetParamAutoDef(0,12)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,12,4)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,13,32)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,4,0)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,5,0)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,14,1)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,15,48)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,117,1)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,1,0)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,2,32)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,109,0)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,111,1)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,3,64)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,110,0)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,115,0)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,9,64)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,10,64)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,11,64)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,106,0)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,107,0)"),
                          QStringLiteral("ICubeSDK_SetCamParameter(0,108,0)"),
                      }));
    // Then the whole dialog is read again.
    EXPECT_EQ(typesOf("ICubeSDK_GetParamAuto"), (QList<int>{7, 12}));
    EXPECT_EQ(caption(*p, "lblBrightness"), QStringLiteral("0"));
}

TEST_F(CameraPropertiesOnStandIn, Default_SkipsTheValue_WhenTheAutoResetFails)
{
    auto p = load();
    standIn.clearCalls();
    standIn.setResult("ICubeSDK_SetParamAutoDef:12", -6);
    standIn.setResult("ICubeSDK_SetCamParameter:8", -2);
    standIn.setResult("ICubeSDK_GetCamParameterRange:13", -5);
    p->cmdDefault_Click();
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_SetParamAutoDef(Ret=-6 / Type=12)")));
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_SetCamParameter(Ret=-2 / Type=8 / Val=128)")));
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_GetCamParameterRange(Ret = -5 / bEnabled = 1)")));
    const QStringList calls = standIn.callLog();
    EXPECT_FALSE(calls.contains(QStringLiteral("ICubeSDK_SetCamParameter(0,12,4)")));
    EXPECT_FALSE(calls.contains(QStringLiteral("ICubeSDK_SetCamParameter(0,13,32)")));
    EXPECT_TRUE(calls.contains(QStringLiteral("ICubeSDK_SetCamParameter(0,14,1)")));
    EXPECT_TRUE(prompter.messages.empty());  // no message box while resetting
}

// ---- White balance -------------------------------------------------------------------

TEST_F(CameraPropertiesOnStandIn, WhiteBalance_WaitsForTheCamera_ThenReloadsTheGains)
{
    auto p = load();
    standIn.setOnePushPolls(5);
    standIn.setParam(9, 101);
    standIn.setParam(10, 102);
    standIn.setParam(11, 103);
    standIn.clearCalls();
    const qint64 before = clock.tickMs();
    p->cmdAWB_Click();
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetParamOnePush"), QStringLiteral("0,6"));
    EXPECT_EQ(typesOf("ICubeSDK_GetCamParameter"), (QList<int>{6, 6, 6, 6, 6, 6, 9, 10, 11}));
    EXPECT_EQ(clock.tickMs() - before, 100 + 6);
    EXPECT_EQ(paints, 7);  // the window is painted after every wait
    EXPECT_EQ(slider(*p, "sldGainRed").value, 101);
    EXPECT_EQ(caption(*p, "lblGainGreen"), QStringLiteral("102"));
    EXPECT_EQ(caption(*p, "lblGainBlue"), QStringLiteral("103"));
    EXPECT_TRUE(log().isEmpty()) << log().toStdString();
}

TEST_F(CameraPropertiesOnStandIn, WhiteBalance_TimesOutAfter1000Polls_AndLeavesTheGains)
{
    auto p = load();
    standIn.setOnePushPolls(-1);
    standIn.setParam(9, 101);
    standIn.clearCalls();
    const qint64 before = clock.tickMs();
    p->cmdAWB_Click();
    EXPECT_EQ(typesOf("ICubeSDK_GetCamParameter").size(), 1000);
    EXPECT_EQ(clock.tickMs() - before, 100 + 1001);
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("Error: ICubeSDK_GetCamParameter TimeOut.")});
    EXPECT_EQ(slider(*p, "sldGainRed").value, 70);
    EXPECT_EQ(caption(*p, "lblGainRed"), QStringLiteral("70"));
}

TEST_F(CameraPropertiesOnStandIn, WhiteBalance_FailingStart_LogsAndPollsNothing)
{
    auto p = load();
    standIn.setResult("ICubeSDK_SetParamOnePush", -6);
    standIn.clearCalls();
    p->cmdAWB_Click();
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("Error: ICubeSDK_SetParamOnePush(-6)")});
    EXPECT_EQ(standIn.callCount("ICubeSDK_GetCamParameter"), 0);
    EXPECT_EQ(clock.tickMs(), 0);
}

TEST_F(CameraPropertiesOnStandIn, WhiteBalance_FailingPoll_LogsAndLeavesTheGains)
{
    auto p = load();
    standIn.setResult("ICubeSDK_GetCamParameter:6", -9);
    standIn.setParam(9, 101);
    standIn.clearCalls();
    p->cmdAWB_Click();
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("Error: ICubeSDK_GetCamParameter(-9)")});
    EXPECT_EQ(typesOf("ICubeSDK_GetCamParameter"), QList<int>{6});
    EXPECT_EQ(slider(*p, "sldGainRed").value, 70);
}

// ---- Resolution ------------------------------------------------------------------------

TEST_F(CameraPropertiesOnStandIn, Resolution_StopsSetsTheModeKeepsItAndStartsAgain)
{
    auto p = load();
    standIn.setExposure(33.0f);
    standIn.clearCalls();
    p->resolutionClicked(2);
    QStringList order;
    for (const QString& call : standIn.callLog())
        if (!call.startsWith(QStringLiteral("ICubeSDK_IsStarted")))
            order.append(call.section(u'(', 0, 0));
    EXPECT_EQ(order, (QStringList{QStringLiteral("ICubeSDK_Stop"), QStringLiteral("ICubeSDK_SetMode"),
                                  QStringLiteral("ICubeSDK_SetDisplayMode"), QStringLiteral("ICubeSDK_Start"),
                                  QStringLiteral("ICubeSDK_GetExposure")}));
    EXPECT_EQ(standIn.mode(), 8);
    EXPECT_EQ(settings.DEFAULTRESOLUTION, 8);
    EXPECT_TRUE(standIn.isStarted());
    EXPECT_EQ(caption(*p, "lblCurrentResolution"), QStringLiteral("2592x1944"));
    EXPECT_EQ(panel, QStringLiteral("Resolution:2592x1944"));
    EXPECT_EQ(caption(*p, "lblExposureTime"), QStringLiteral("33.0"));
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(CameraPropertiesOnStandIn, Resolution_FailingSetMode_ReportsClosesTheCamera_AndGoesOn)
{
    prompter.answers = {Prompter::Answer::Ok};
    auto p = load();
    standIn.setResult("ICubeSDK_SetMode", -3);
    p->resolutionClicked(0);
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_SetMode(-3)")));
    ASSERT_FALSE(prompter.messages.empty());
    EXPECT_EQ(prompter.messages[0].text, messages.text(26999, -3));
    EXPECT_EQ(prompter.messages[0].title, messages.text(26998));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    EXPECT_EQ(standIn.callCount("ICubeSDK_Close"), 1);
    EXPECT_EQ(settings.DEFAULTRESOLUTION, 1);
    EXPECT_EQ(caption(*p, "lblCurrentResolution"), QStringLiteral("640x480"));
}

TEST_F(CameraPropertiesOnStandIn, Resolution_IndexOutsideTheList_IsAnErrorOfTheHandler)
{
    auto p = load();
    p->resolutionClicked(3);
    EXPECT_TRUE(logHas(QStringLiteral("frmiCubeProp:cboResolution_Click Error.(9)")));
    EXPECT_EQ(standIn.callCount("ICubeSDK_Stop"), 1);
    EXPECT_EQ(standIn.callCount("ICubeSDK_SetMode"), 0);
    EXPECT_EQ(settings.DEFAULTRESOLUTION, -1);
}
