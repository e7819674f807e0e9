#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace tavix {

class CameraDriver;
struct CamParamRange;
class CameraSession;
class Clock;
class ErrorLog;
class FrameStatistics;
class Prompter;

// The logic of the camera properties dialog (frmiCubeProp). Its controls are
// held here as plain values under their object names; the window shows them
// and hands every user change to the handlers below. Each control is bound to
// one camera parameter type, read when the dialog loads and written the
// moment the control changes. Nothing is kept but the resolution, which goes
// back to [ICUBE] DEFAULTRESOLUTION.
class CameraProperties {
public:
    struct Slider {
        int min = 0;
        int max = 10;
        int value = 0;
        bool enabled = true;
        QString text;  // the tool tip shown while dragging
    };
    struct Check {
        int value = 0;  // 0 unchecked, 1 checked
        bool enabled = true;
    };
    // A drop-down list of a menu parameter: item i is the value first + i.
    struct Choice {
        QStringList items;
        int index = -1;
        int first = 0;
        bool enabled = true;
    };
    struct Controls {
        std::map<QString, Slider> sliders;
        std::map<QString, Check> checks;
        std::map<QString, Choice> choices;
        std::map<QString, QString> captions;  // labels, and the Frame3 group
        QStringList resolutions;              // cboResolution
        int resolutionIndex = -1;
    };

    // A slider that writes its parameter as it stands, with the label showing the value.
    struct PlainSlider {
        int type;
        const char* slider;
        const char* label;
    };
    static const std::vector<PlainSlider>& plainSliders();
    // A check box that writes its parameter as 0 or 1.
    struct PlainCheck {
        int type;
        const char* box;
    };
    static const std::vector<PlainCheck>& plainChecks();
    // A slider whose automatic mode has a box beside it.
    struct AutoSlider {
        int type;
        const char* slider;
        const char* label;
        const char* box;
    };
    static const std::vector<AutoSlider>& autoSliders();

    static constexpr int kExposureSplit = 4096;  // Rough carries value \ 4096, Fine the rest
    static constexpr int kWhiteBalancePolls = 1000;
    static constexpr int kWhiteBalanceSettleMs = 100;

    struct Parts {
        CameraSession& session;
        FrameStatistics& statistics;  // restarted after every parameter write
        const ErrorLog& log;
        Prompter& prompter;
        Clock& clock;                       // the white balance waits on it
        std::function<void()> keepPainted;  // called during waits, so the window stays painted
    };

    explicit CameraProperties(const Parts& parts);

    const Controls& controls() const { return c_; }
    bool loading() const { return loading_; }
    bool clockIsPixelClock() const { return clockIsPixelClock_; }

    // Form_Load.
    void Form_Load();

    // The user's changes: the control takes the new value, then its handler runs.
    void sliderChanged(const QString& slider, int value);
    void checkClicked(const QString& box, int value);
    void choiceClicked(const QString& list, int index);
    void resolutionClicked(int index);
    void cmdAWB_Click();
    void cmdDefault_Click();

    // The routines, public so that tests drive each on its own.
    void LoadSliderParam(int type, const QString& slider, const QString& label, const QString& autoBox = {});
    void LoadExposureParam(int type, const QString& rough, const QString& fine, const QString& label,
                           const QString& autoBox);
    void SetParam(int type, std::int32_t value, const QString& label = {});
    void ShowExposure();
    void ShowGamma();
    void SetParamDefault(int type);
    void LoadAllParams();

private:
    void sldPlain_Change(const PlainSlider& s);
    void sldGamma_Change();
    void sldExposureTime_Change(int index);
    void sldClock_Change();
    void chkPlain_Click(const PlainCheck& c);
    void chkEnableGamma_Click();
    void chkExposureTime_Click();
    void chkAuto_Click(const AutoSlider& a);
    void cboPowerLineFrequency_Click();
    // The controls of webcams and GenICam cameras beyond the vendor's: greyed
    // (auto boxes too) where the camera lacks them.
    void loadExtraParams();
    void cboResolution_Click();
    // The steps every load shares; each logs its failure.
    bool readRange(int type, CamParamRange& range);  // false when failed or not offered
    bool readValue(int type, std::int32_t& value);
    enum class Auto { None, Off, On, Failed };
    Auto readAuto(int type, const CamParamRange& range, const QString& autoBox);
    void loadCheck(int type, const QString& box);
    void setParamAutoFailed(int status, int type, std::int32_t flag, const QString& label);
    void unavailable(int type, const QString& slider, const QString& label, const QString& autoBox);
    void wait(int ms);
    void guarded(const char* handler, const std::function<void()>& body);

    CameraDriver& driver() const;
    int cam() const;

    Parts p_;
    Controls c_;
    bool loading_ = false;
    bool clockIsPixelClock_ = false;
};

}  // namespace tavix
