#include "camera/CameraProperties.h"

#include "camera/CameraDriver.h"
#include "camera/CameraSession.h"
#include "camera/FrameStatistics.h"
#include "camera/Resolution.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/HandlerGuard.h"
#include "common/Prompter.h"
#include "common/RunError.h"

#include <algorithm>
#include <string>

namespace tavix {

namespace {

enum Type : int {
    kGamma = 3,
    kFlipV = 4,
    kFlipH = 5,
    kWhiteBalance = 6,
    kExposure = 7,
    kExpTarget = 8,
    kGainRed = 9,
    kGainGreen = 10,
    kGainBlue = 11,
    kBlackLevel = 12,
    kGain = 13,
    kColorEnable = 14,
    kClock = 15,
    kEnableGamma = 111,
    kFrameRate = 147,
};

const QString kRough = QStringLiteral("sldExposureTime(0)");
const QString kFine = QStringLiteral("sldExposureTime(1)");

QString n(const char* name)
{
    return QLatin1String(name);
}

// The names of the power-line frequency menu's values.
const char* const kPowerLineNames[] = {"Off", "50 Hz", "60 Hz", "Auto"};

// A track bar holds no value outside its range.
int clampToRange(int value, const CameraProperties::Slider& s)
{
    return std::clamp(value, s.min, std::max(s.min, s.max));
}

// "0.0##": one decimal at least, three at most.
QString oneToThreeDecimals(double value)
{
    QString text = QString::number(value, 'f', 3);
    while (text.endsWith(QLatin1Char('0')) && text.at(text.size() - 2) != QLatin1Char('.'))
        text.chop(1);
    return text;
}

}  // namespace

const std::vector<CameraProperties::PlainSlider>& CameraProperties::plainSliders()
{
    static const std::vector<PlainSlider> sliders{
        {1, "sldBrightness", "lblBrightness"},
        {2, "sldContrast", "lblContrast"},
        {8, "sldExpTarget", "lblExpTarget"},
        {9, "sldGainRed", "lblGainRed"},
        {10, "sldGainGreen", "lblGainGreen"},
        {11, "sldGainBlue", "lblGainBlue"},
        {12, "sldBlackLevel", "lblBlackLevel"},
        {13, "sldGain", "lblGain"},
        {19, "sldSaturation", "lblSaturation"},
        {106, "sldOffsetRed", "lblOffsetRed"},
        {107, "sldOffsetGreen", "lblOffsetGreen"},
        {108, "sldOffsetBlue", "lblOffsetBlue"},
        {109, "sldHue", "lblHue"},
    };
    return sliders;
}

const std::vector<CameraProperties::PlainCheck>& CameraProperties::plainChecks()
{
    static const std::vector<PlainCheck> checks{
        {4, "chkFlipV"},        {5, "chkFlipH"},
        {14, "chkColorEnable"}, {110, "chkEnableColorCorrection"},
        {115, "chkTNR"},        {117, "chkEnableColorProcessing"},
    };
    return checks;
}

const std::vector<CameraProperties::AutoSlider>& CameraProperties::autoSliders()
{
    static const std::vector<AutoSlider> sliders{
        {kBlackLevel, "sldBlackLevel", "lblBlackLevel", "chkBlackLevel"},
        {ExtraParam::kWhiteBalanceTemperature, "sldWhiteBalanceTemperature", "lblWhiteBalanceTemperature",
         "chkWhiteBalanceTemperature"},
        {ExtraParam::kFocus, "sldFocus", "lblFocus", "chkFocus"},
    };
    return sliders;
}

CameraProperties::CameraProperties(const Parts& parts) : p_(parts)
{
    for (const PlainSlider& s : plainSliders()) {
        c_.sliders[n(s.slider)] = {};
        c_.captions[n(s.label)] = {};
    }
    for (const AutoSlider& a : autoSliders()) {
        c_.sliders[n(a.slider)] = {};
        c_.captions[n(a.label)] = {};
        c_.checks[n(a.box)] = {};
    }
    c_.checks[n("chkDynamicFrameRate")] = {};
    c_.choices[n("cboPowerLineFrequency")] = {};
    for (const char* slider : {"sldExposureTime(0)", "sldExposureTime(1)", "sldClock", "sldGamma"})
        c_.sliders[n(slider)] = {};
    for (const PlainCheck& box : plainChecks())
        c_.checks[n(box.box)] = {};
    for (const char* box : {"chkExposureTime", "chkEnableGamma"})
        c_.checks[n(box)] = {};
    for (const char* label :
         {"lblExposureTime", "lblClock", "lblClockMin", "lblClockMax", "lblGamma", "lblCurrentResolution"})
        c_.captions[n(label)] = {};
    // Design-time texts, kept when the camera has neither clock nor frame rate.
    c_.captions[n("Frame3")] = QStringLiteral("Clock:");
    c_.captions[n("lblClockUnit")] = QStringLiteral("MHz");
}

CameraDriver& CameraProperties::driver() const
{
    return p_.session.driver();
}

int CameraProperties::cam() const
{
    return p_.session.camera();
}

void CameraProperties::guarded(const char* handler, const std::function<void()>& body)
{
    runGuarded(p_.log, QStringLiteral("frmiCubeProp:") + QLatin1String(handler), body);
}

void CameraProperties::wait(int ms)
{
    p_.clock.sleepMs(ms);
    if (p_.keepPainted)
        p_.keepPainted();
}

void CameraProperties::Form_Load()
{
    guarded("Form_Load", [this] { LoadAllParams(); });
}

// ---- loading ----

void CameraProperties::unavailable(int type, const QString& slider, const QString& label,
                                   const QString& autoBox)
{
    p_.log.write(QStringLiteral("nType = ") + QString::number(type));
    c_.sliders.at(slider).enabled = false;
    c_.captions.at(label).clear();
    // The auto box of a parameter the camera lacks is enabled, not disabled: kept as the camera
    // software has always done it.
    if (!autoBox.isEmpty())
        c_.checks.at(autoBox).enabled = true;
}

bool CameraProperties::readRange(int type, CamParamRange& range)
{
    if (const int r = driver().GetCamParameterRange(cam(), type, range); r != 0) {
        p_.log.write(QStringLiteral("Error: ICubeSDK_GetCamParameterRange(Ret = %1 / bEnabled = %2)")
                         .arg(r)
                         .arg(range.enabled));
        return false;
    }
    return range.enabled != 0;
}

bool CameraProperties::readValue(int type, std::int32_t& value)
{
    if (const int r = driver().GetCamParameter(cam(), type, value); r != 0) {
        p_.log.write(QStringLiteral("Error: ICubeSDK_GetCamParameter(%1)").arg(r));
        return false;
    }
    return true;
}

CameraProperties::Auto CameraProperties::readAuto(int type, const CamParamRange& range,
                                                  const QString& autoBox)
{
    if (range.autoMode != 1)
        return Auto::None;
    // A parameter with an automatic mode needs its auto box here; one without is shut off.
    if (autoBox.isEmpty()) {
        p_.log.write(QStringLiteral("Error: Auto=1 / Param Error"));
        return Auto::Failed;
    }
    std::int32_t flag = 0;
    if (const int r = driver().GetParamAuto(cam(), type, flag); r != 0) {
        p_.log.write(QStringLiteral("Error: ICubeSDK_GetParamAuto(%1)").arg(r));
        return Auto::Failed;
    }
    c_.checks.at(autoBox).value = flag;
    return flag == 1 ? Auto::On : Auto::Off;
}

void CameraProperties::LoadSliderParam(int type, const QString& slider, const QString& label,
                                       const QString& autoBox)
{
    Slider& s = c_.sliders.at(slider);
    CamParamRange range;
    if (!readRange(type, range))
        return unavailable(type, slider, label, autoBox);
    s.max = range.maximum;
    s.min = range.minimum;
    std::int32_t value = 0;
    if (!readValue(type, value))
        return unavailable(type, slider, label, autoBox);
    s.value = clampToRange(value, s);
    c_.captions.at(label) = QString::number(value);
    switch (readAuto(type, range, autoBox)) {
        case Auto::None:
            break;
        case Auto::Failed:
            return unavailable(type, slider, label, autoBox);
        case Auto::On:
            c_.captions.at(label) = QStringLiteral("auto");
            s.enabled = false;
            break;
        case Auto::Off:
            s.enabled = true;
            break;
    }
}

void CameraProperties::LoadExposureParam(int type, const QString& rough, const QString& fine,
                                         const QString& label, const QString& autoBox)
{
    Slider& r = c_.sliders.at(rough);
    Slider& f = c_.sliders.at(fine);
    const auto off = [&] {
        unavailable(type, fine, label, autoBox);
        r.enabled = false;
    };
    CamParamRange range;
    if (!readRange(type, range))
        return off();
    const bool split = range.maximum >= kExposureSplit;
    if (!split) {
        f.max = range.maximum;
        f.min = range.minimum;
        r.max = 1;
        r.min = 0;
        r.enabled = false;
    } else {
        f.max = kExposureSplit - 1;
        f.min = range.minimum;
        r.max = range.maximum / kExposureSplit;
        r.min = 0;
        r.enabled = true;
    }
    std::int32_t value = 0;
    if (!readValue(type, value))
        return off();
    if (!split) {
        f.value = clampToRange(value, f);
    } else {
        f.value = clampToRange(value % kExposureSplit, f);  // truncating, as the sign is kept
        r.value = clampToRange(value / kExposureSplit, r);
    }
    c_.captions.at(label) = QString::number(value);
    switch (readAuto(type, range, autoBox)) {
        case Auto::None:
            break;
        case Auto::Failed:
            return off();
        case Auto::On:
            c_.captions.at(label) = QStringLiteral("auto");
            f.enabled = false;
            r.enabled = false;
            break;
        case Auto::Off:
            f.enabled = true;
            r.enabled = split;
            break;
    }
}

void CameraProperties::loadCheck(int type, const QString& box)
{
    std::int32_t value = 0;
    if (driver().GetCamParameter(cam(), type, value) == 0)
        c_.checks.at(box).value = value;
    else
        c_.checks.at(box).enabled = false;
}

void CameraProperties::LoadAllParams()
{
    loading_ = true;
    LoadExposureParam(kExposure, kRough, kFine, n("lblExposureTime"), n("chkExposureTime"));
    ShowExposure();

    LoadSliderParam(kExpTarget, n("sldExpTarget"), n("lblExpTarget"));
    LoadSliderParam(kBlackLevel, n("sldBlackLevel"), n("lblBlackLevel"), n("chkBlackLevel"));
    LoadSliderParam(kGain, n("sldGain"), n("lblGain"));
    // Automatic exposure governs the gain as well.
    if (c_.checks.at(n("chkExposureTime")).value == 1)
        c_.sliders.at(n("sldGain")).enabled = false;

    loadCheck(kFlipV, n("chkFlipV"));
    loadCheck(kFlipH, n("chkFlipH"));
    loadCheck(kColorEnable, n("chkColorEnable"));

    Slider& clock = c_.sliders.at(n("sldClock"));
    const auto showClock = [&](const char* frame, const char* unit, bool pixelClock) {
        c_.captions.at(n("Frame3")) = QLatin1String(frame);
        c_.captions.at(n("lblClockUnit")) = QLatin1String(unit);
        c_.captions.at(n("lblClockMin")) = QString::number(clock.min);
        c_.captions.at(n("lblClockMax")) = QString::number(clock.max);
        clockIsPixelClock_ = pixelClock;
    };
    LoadSliderParam(kClock, n("sldClock"), n("lblClock"));
    if (clock.enabled) {
        showClock("Clock:", "MHz", true);
    } else {
        // Cameras without a pixel clock offer their acquisition frame rate instead.
        clock.enabled = true;
        LoadSliderParam(kFrameRate, n("sldClock"), n("lblClock"));
        if (clock.enabled)
            showClock("Aquisition Framrate:", "fps", false);
    }

    c_.resolutions.clear();
    c_.resolutionIndex = -1;
    for (const std::int32_t mode : p_.session.modes()) {
        c_.resolutions.append(Resolution::name(mode));
        if (mode == p_.session.currentMode())
            c_.resolutionIndex = static_cast<int>(c_.resolutions.size()) - 1;
    }
    c_.captions.at(n("lblCurrentResolution")) =
        c_.resolutionIndex >= 0 ? c_.resolutions.at(c_.resolutionIndex) : QString();

    loadCheck(117, n("chkEnableColorProcessing"));
    LoadSliderParam(1, n("sldBrightness"), n("lblBrightness"));
    LoadSliderParam(2, n("sldContrast"), n("lblContrast"));
    LoadSliderParam(19, n("sldSaturation"), n("lblSaturation"));
    LoadSliderParam(109, n("sldHue"), n("lblHue"));

    loadCheck(kEnableGamma, n("chkEnableGamma"));
    LoadSliderParam(kGamma, n("sldGamma"), n("lblGamma"));
    ShowGamma();
    if (c_.checks.at(n("chkEnableGamma")).value == 0)
        c_.sliders.at(n("sldGamma")).enabled = false;

    loadCheck(110, n("chkEnableColorCorrection"));
    loadCheck(115, n("chkTNR"));

    LoadSliderParam(kGainRed, n("sldGainRed"), n("lblGainRed"));
    LoadSliderParam(kGainGreen, n("sldGainGreen"), n("lblGainGreen"));
    LoadSliderParam(kGainBlue, n("sldGainBlue"), n("lblGainBlue"));
    LoadSliderParam(106, n("sldOffsetRed"), n("lblOffsetRed"));
    LoadSliderParam(107, n("sldOffsetGreen"), n("lblOffsetGreen"));
    LoadSliderParam(108, n("sldOffsetBlue"), n("lblOffsetBlue"));

    loadExtraParams();
    loading_ = false;
}

void CameraProperties::loadExtraParams()
{
    // Most cameras lack some of these: one they lack is greyed without a log line.
    const auto offered = [this](int type, CamParamRange& range) {
        return driver().GetCamParameterRange(cam(), type, range) == 0 && range.enabled;
    };
    CamParamRange range;
    for (const AutoSlider& a : autoSliders()) {
        if (a.type == kBlackLevel)
            continue;
        if (offered(a.type, range)) {
            c_.checks.at(n(a.box)).enabled = true;
            LoadSliderParam(a.type, n(a.slider), n(a.label), n(a.box));
        } else {
            c_.sliders.at(n(a.slider)).enabled = false;
            c_.captions.at(n(a.label)).clear();
            c_.checks.at(n(a.box)) = Check{0, false};
        }
    }

    Choice& powerLine = c_.choices.at(n("cboPowerLineFrequency"));
    powerLine = Choice{};
    std::int32_t value = 0;
    if (offered(ExtraParam::kPowerLineFrequency, range) &&
        readValue(ExtraParam::kPowerLineFrequency, value)) {
        powerLine.first = std::clamp(range.minimum, 0, 3);
        for (int v = powerLine.first; v <= std::clamp(range.maximum, 0, 3); ++v)
            powerLine.items.append(QLatin1String(kPowerLineNames[v]));
        powerLine.index = value - powerLine.first;
    } else {
        powerLine.enabled = false;
    }

    Check& dynamic = c_.checks.at(n("chkDynamicFrameRate"));
    dynamic.enabled = true;
    if (offered(ExtraParam::kDynamicFrameRate, range))
        loadCheck(ExtraParam::kDynamicFrameRate, n("chkDynamicFrameRate"));
    else
        dynamic = Check{0, false};
}

// ---- writing ----

void CameraProperties::SetParam(int type, std::int32_t value, const QString& label)
{
    const int r = driver().SetCamParameter(cam(), type, value);
    if (r == 0) {
        if (!label.isEmpty())
            c_.captions.at(label) = QString::number(value);
    } else {
        p_.log.write(QStringLiteral("Error: ICubeSDK_SetCamParameter(Ret=%1 / Type=%2 / Val=%3)")
                         .arg(r)
                         .arg(type)
                         .arg(value));
        p_.prompter.message({QStringLiteral("error"), QString(), Prompter::Icon::None});
        if (!label.isEmpty())
            c_.captions.at(label) = QStringLiteral("error");
    }
    // The frame rate shown must reflect the new setting: its measurement starts afresh.
    p_.statistics.restart();
}

void CameraProperties::ShowExposure()
{
    QString& label = c_.captions.at(n("lblExposureTime"));
    float ms = 0;
    if (const int r = driver().GetExposure(cam(), ms); r == 0) {
        label = oneToThreeDecimals(ms);
    } else {
        p_.log.write(QStringLiteral("Error: ICubeSDK_GetExposure(%1)").arg(r));
        label = QStringLiteral("error");
    }
    c_.sliders.at(kRough).text = label;
    c_.sliders.at(kFine).text = label;
}

void CameraProperties::ShowGamma()
{
    const float gamma = static_cast<float>(c_.sliders.at(n("sldGamma")).value) / 64.0f;
    c_.captions.at(n("lblGamma")) = oneToThreeDecimals(gamma);
}

void CameraProperties::SetParamDefault(int type)
{
    CamParamRange range;
    if (!readRange(type, range))
        return;
    if (range.autoMode == 1) {
        if (const int r = driver().SetParamAutoDef(cam(), type); r != 0) {
            p_.log.write(
                QStringLiteral("Error: ICubeSDK_SetParamAutoDef(Ret=%1 / Type=%2)").arg(r).arg(type));
            return;
        }
    }
    if (const int r = driver().SetCamParameter(cam(), type, range.defaultValue); r != 0)
        p_.log.write(QStringLiteral("Error: ICubeSDK_SetCamParameter(Ret=%1 / Type=%2 / Val=%3)")
                         .arg(r)
                         .arg(type)
                         .arg(range.defaultValue));
}

// ---- handlers ----

void CameraProperties::sliderChanged(const QString& slider, int value)
{
    Slider& moved = c_.sliders.at(slider);
    moved.value = clampToRange(value, moved);
    for (const PlainSlider& s : plainSliders())
        if (slider == QLatin1String(s.slider))
            return guarded((s.slider + std::string("_Change")).c_str(), [&] { sldPlain_Change(s); });
    for (const AutoSlider& a : autoSliders())
        if (slider == QLatin1String(a.slider))
            return guarded((a.slider + std::string("_Change")).c_str(), [&] {
                if (!loading_)
                    SetParam(a.type, moved.value, n(a.label));
            });
    if (slider == QLatin1String("sldGamma"))
        return guarded("sldGamma_Change", [this] { sldGamma_Change(); });
    if (slider == kRough || slider == kFine)
        return guarded("sldExposureTime_Change", [&] { sldExposureTime_Change(slider == kRough ? 0 : 1); });
    if (slider == QLatin1String("sldClock"))
        return guarded("sldClock_Change", [this] { sldClock_Change(); });
}

void CameraProperties::checkClicked(const QString& box, int value)
{
    c_.checks.at(box).value = value;
    for (const PlainCheck& c : plainChecks())
        if (box == QLatin1String(c.box))
            return guarded((c.box + std::string("_Click")).c_str(), [&] { chkPlain_Click(c); });
    if (box == QLatin1String("chkEnableGamma"))
        return guarded("chkEnableGamma_Click", [this] { chkEnableGamma_Click(); });
    if (box == QLatin1String("chkExposureTime"))
        return guarded("chkExposureTime_Click", [this] { chkExposureTime_Click(); });
    for (const AutoSlider& a : autoSliders())
        if (box == QLatin1String(a.box))
            return guarded((a.box + std::string("_Click")).c_str(), [&] { chkAuto_Click(a); });
    if (box == QLatin1String("chkDynamicFrameRate"))
        return guarded("chkDynamicFrameRate_Click", [this] {
            if (!loading_)
                SetParam(ExtraParam::kDynamicFrameRate, c_.checks.at(n("chkDynamicFrameRate")).value);
        });
}

void CameraProperties::choiceClicked(const QString& list, int index)
{
    c_.choices.at(list).index = index;
    if (list == QLatin1String("cboPowerLineFrequency"))
        guarded("cboPowerLineFrequency_Click", [this] { cboPowerLineFrequency_Click(); });
}

void CameraProperties::cboPowerLineFrequency_Click()
{
    if (loading_)
        return;
    const Choice& c = c_.choices.at(n("cboPowerLineFrequency"));
    SetParam(ExtraParam::kPowerLineFrequency, c.first + c.index);
}

void CameraProperties::resolutionClicked(int index)
{
    c_.resolutionIndex = index;
    guarded("cboResolution_Click", [this] { cboResolution_Click(); });
}

void CameraProperties::sldPlain_Change(const PlainSlider& s)
{
    if (loading_)
        return;
    SetParam(s.type, c_.sliders.at(n(s.slider)).value, n(s.label));
}

void CameraProperties::sldGamma_Change()
{
    if (loading_)
        return;
    Slider& gamma = c_.sliders.at(n("sldGamma"));
    SetParam(kGamma, gamma.value, n("lblGamma"));
    ShowGamma();
    gamma.text = c_.captions.at(n("lblGamma"));
}

void CameraProperties::sldExposureTime_Change(int index)
{
    if (loading_)
        return;
    const qint64 value = qint64(c_.sliders.at(kRough).value) * kExposureSplit + c_.sliders.at(kFine).value;
    if (value > INT32_MAX || value < INT32_MIN)
        throw RunError(err::Overflow);
    SetParam(kExposure, static_cast<std::int32_t>(value), n("lblExposureTime"));
    ShowExposure();
    c_.sliders.at(index == 0 ? kRough : kFine).text = c_.captions.at(n("lblExposureTime"));
}

void CameraProperties::sldClock_Change()
{
    if (loading_)
        return;
    SetParam(clockIsPixelClock_ ? kClock : kFrameRate, c_.sliders.at(n("sldClock")).value, n("lblClock"));
    // The exposure time in milliseconds follows the clock.
    ShowExposure();
}

void CameraProperties::chkPlain_Click(const PlainCheck& c)
{
    if (loading_)
        return;
    SetParam(c.type, c_.checks.at(n(c.box)).value);
}

void CameraProperties::chkEnableGamma_Click()
{
    if (loading_)
        return;
    const Check& box = c_.checks.at(n("chkEnableGamma"));
    SetParam(kEnableGamma, box.value);
    c_.sliders.at(n("sldGamma")).enabled = box.value == 1;
}

void CameraProperties::setParamAutoFailed(int status, int type, std::int32_t flag, const QString& label)
{
    p_.log.write(QStringLiteral("Error: ICubeSDK_SetParamAuto(Ret=%1 / Type=%2 / Val=%3)")
                     .arg(status)
                     .arg(type)
                     .arg(flag));
    p_.prompter.message({QStringLiteral("error"), QString(), Prompter::Icon::None});
    c_.captions.at(label) = QStringLiteral("error");
}

void CameraProperties::chkExposureTime_Click()
{
    if (loading_)
        return;
    const std::int32_t flag = c_.checks.at(n("chkExposureTime")).value;
    if (const int r = driver().SetParamAuto(cam(), kExposure, flag); r == 0) {
        LoadExposureParam(kExposure, kRough, kFine, n("lblExposureTime"), n("chkExposureTime"));
        if (c_.checks.at(n("chkExposureTime")).value == 0)
            ShowExposure();
    } else {
        setParamAutoFailed(r, kExposure, flag, n("lblExposureTime"));
    }
    c_.sliders.at(n("sldGain")).enabled = c_.checks.at(n("chkExposureTime")).value == 0;
}

void CameraProperties::chkAuto_Click(const AutoSlider& a)
{
    if (loading_)
        return;
    const std::int32_t flag = c_.checks.at(n(a.box)).value;
    if (const int r = driver().SetParamAuto(cam(), a.type, flag); r == 0) {
        LoadSliderParam(a.type, n(a.slider), n(a.label), n(a.box));
    } else {
        setParamAutoFailed(r, a.type, flag, n(a.label));
    }
}

void CameraProperties::cmdAWB_Click()
{
    guarded("cmdAWB_Click", [this] {
        if (loading_)
            return;
        if (const int r = driver().SetParamOnePush(cam(), kWhiteBalance); r != 0) {
            p_.log.write(QStringLiteral("Error: ICubeSDK_SetParamOnePush(%1)").arg(r));
            return;
        }
        wait(kWhiteBalanceSettleMs);
        // The camera reports 0 until its one-push run has finished.
        std::int32_t value = 0;
        int polls = 0;
        while (value == 0) {
            wait(1);
            if (++polls > kWhiteBalancePolls) {
                p_.log.write(QStringLiteral("Error: ICubeSDK_GetCamParameter TimeOut."));
                return;
            }
            if (const int r = driver().GetCamParameter(cam(), kWhiteBalance, value); r != 0) {
                p_.log.write(QStringLiteral("Error: ICubeSDK_GetCamParameter(%1)").arg(r));
                return;
            }
        }
        LoadSliderParam(kGainRed, n("sldGainRed"), n("lblGainRed"));
        LoadSliderParam(kGainGreen, n("sldGainGreen"), n("lblGainGreen"));
        LoadSliderParam(kGainBlue, n("sldGainBlue"), n("lblGainBlue"));
        // A webcam balances with its colour temperature rather than the gains.
        if (c_.checks.at(n("chkWhiteBalanceTemperature")).enabled)
            LoadSliderParam(ExtraParam::kWhiteBalanceTemperature, n("sldWhiteBalanceTemperature"),
                            n("lblWhiteBalanceTemperature"), n("chkWhiteBalanceTemperature"));
    });
}

void CameraProperties::cmdDefault_Click()
{
    guarded("cmdDefault_Click", [this] {
        if (loading_)
            return;
        for (const int type : {7,
                               8,
                               12,
                               13,
                               4,
                               5,
                               14,
                               15,
                               147,
                               117,
                               1,
                               2,
                               19,
                               109,
                               111,
                               3,
                               110,
                               115,
                               9,
                               10,
                               11,
                               106,
                               107,
                               108,
                               ExtraParam::kWhiteBalanceTemperature,
                               ExtraParam::kFocus,
                               ExtraParam::kPowerLineFrequency,
                               ExtraParam::kDynamicFrameRate})
            SetParamDefault(type);
        LoadAllParams();
    });
}

void CameraProperties::cboResolution_Click()
{
    if (loading_)
        return;
    const auto& modes = p_.session.modes();
    if (c_.resolutionIndex < 0 || c_.resolutionIndex >= static_cast<int>(modes.size())) {
        driver().Stop(cam());
        throw RunError(err::SubscriptOutOfRange);
    }
    // Stops, sets the mode (a failure is reported and closes the camera), keeps the choice in
    // DEFAULTRESOLUTION, starts again and rewrites the status bar's resolution.
    p_.session.changeMode(modes[static_cast<size_t>(c_.resolutionIndex)]);
    c_.captions.at(n("lblCurrentResolution")) = c_.resolutions.at(c_.resolutionIndex);
    // The exposure range and time depend on the mode.
    ShowExposure();
}

}  // namespace tavix
