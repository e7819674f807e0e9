#pragma once

#include "camera/CameraDriver.h"
#include "camera/sim/SimImagePipeline.h"

#include <QtGlobal>
#include <array>
#include <cstdint>
#include <map>

namespace tavix {

// The simulated camera's parameters: the table of types with their ranges and
// defaults, their automatic modes, the one-push white balance, and the
// exposure, frame period and picture look they add up to. Calls answer the
// camera's status codes for the parameter itself (not supported, read-only,
// out of range); opening and faults are the camera's business. Not locked:
// the camera guards it with its own mutex.
class SimParameters {
public:
    static constexpr int kWhiteBalance = 6;
    static constexpr int kExposure = 7;
    static constexpr int kExposureTarget = 8;
    static constexpr int kClock = 15;
    static constexpr int kAviWriting = 24;  // its value is the camera's recorder's
    static constexpr int kFrameRate = 147;

    static constexpr int kWhiteBalanceMs = 300;
    static constexpr int kDefaultClockMHz = 48;

    // `modeFrameRate`: the frame rate of the camera's mode at the default clock.
    SimParameters(bool frameRateInsteadOfClock, bool gainReportsAuto, double modeFrameRate);

    static bool known(int type);
    // The camera reports `range` for a known type instead of its own (enabled
    // 0: it lacks the parameter).
    void overrideRange(int type, const CamParamRange& range);
    CamParamRange range(int type) const;
    // The stored value; for the exposure the one in use, for the white balance
    // 0 while it runs and 1 otherwise.
    std::int32_t value(int type) const;
    int set(int type, std::int32_t value);
    int getAuto(int type, std::int32_t& flag) const;
    int setAuto(int type, std::int32_t flag);
    int setAutoDefault(int type);
    // A new mode: the frame rate parameter stays within the mode's rate.
    void setModeFrameRate(double fps);

    // The one-push white balance (only type 6), timed on the camera's clock in ms.
    int startOnePush(int type, qint64 nowMs);
    // Ends a run whose time is up with the red and blue gains that make the lamp grey.
    void settleWhiteBalance(qint64 nowMs);
    // One frame of a run: the red and blue gains go half way to grey.
    void stepWhiteBalance();

    std::int32_t exposureRaw() const;
    int clockMHz() const;
    double exposureMs() const;
    // The longer of the exposure and one over the frame rate.
    double framePeriodMs() const;
    // What the picture looks like with these settings; the noise is the camera's to set.
    SimLook look() const;

    bool autoExposure() const { return params_.at(kExposure).autoOn; }
    std::int32_t exposureTarget() const { return params_.at(kExposureTarget).value; }
    // Automatic exposure: moves the exposure so that `meanLevel` approaches `target`.
    void steerExposure(double meanLevel, std::int32_t target);

private:
    struct Param {
        std::int32_t value = 0;
        bool autoOn = false;
    };

    std::array<std::int32_t, 2> whiteBalanceTarget() const;

    bool frameRateInsteadOfClock_;
    bool gainReportsAuto_;
    double modeFrameRate_;
    std::map<int, Param> params_;
    std::map<int, CamParamRange> ranges_;
    std::int32_t autoExposureRaw_ = 0;
    bool whiteBalanceRunning_ = false;
    qint64 whiteBalanceStart_ = 0;
};

}  // namespace tavix
