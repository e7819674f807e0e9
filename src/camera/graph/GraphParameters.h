#pragma once

#include "camera/CameraDriver.h"
#include "camera/graph/V4l2ControlAccess.h"

#include <QtGlobal>
#include <cstdint>
#include <memory>

namespace tavix {

class Clock;

// The graph camera's parameters on the controls of its video device: the
// control and scale of each parameter type, the automatic mode behind it, the
// gamma enable (which devices lack: off sets the default gamma, on brings back
// the last) and the one-push white balance. Without controls every range
// reports not enabled. Answers the driver's status codes for the parameter
// itself; whether the camera is open is the driver's to check.
//
// Automatic modes: exposure (7), white-balance temperature (160) and focus
// (161) have a box in the settings dialog and report theirs whenever the
// device has it. The automatic gain (13) and the automatic white balance
// behind the red and blue balance (9, 11) have none: they are reported only
// while on, so that the dialog shuts their slider off, and their default is
// off. A value written while its automatic mode governs the control (the
// device flags it inactive) is left to that mode and not written, as the
// device would refuse it.
class GraphParameters {
public:
    // How long the one-push white balance lets an automatic white balance run
    // before it holds what it found: well inside the settings dialog's wait.
    static constexpr int kWhiteBalanceMs = 400;

    explicit GraphParameters(Clock& clock);
    ~GraphParameters();
    GraphParameters(const GraphParameters&) = delete;
    GraphParameters& operator=(const GraphParameters&) = delete;

    // The device's controls (none: a source without them), gamma on and no
    // white balance running.
    void open(std::unique_ptr<V4l2ControlAccess> controls);
    void close();

    int range(int type, CamParamRange& range);
    // Reading the white balance ends a run whose time is up.
    int get(int type, std::int32_t& value);
    int set(int type, std::int32_t value);
    int getAuto(int type, std::int32_t& flag);
    int setAuto(int type, std::int32_t flag);
    int setAutoDefault(int type);
    // The white balance (6): the device's own one-push when it has one, else
    // its automatic white balance for kWhiteBalanceMs, then held.
    int onePush(int type);

private:
    struct Mapping;
    struct AutoMode;

    static const Mapping* mappingOf(int type);
    static const AutoMode* autoModeOf(int type);
    bool offered(std::uint32_t id, V4l2ControlAccess::Control& control, int& status);
    bool autoOn(const AutoMode& a, int& status);
    int whiteBalanceRange(CamParamRange& range);
    int gammaEnable(std::int32_t value);

    Clock& clock_;
    std::unique_ptr<V4l2ControlAccess> controls_;
    std::int32_t gammaBeforeOff_ = -1;  // the gamma that 111 = 1 brings back
    qint64 whiteBalanceEnds_ = 0;
    bool whiteBalancing_ = false;
};

}  // namespace tavix
