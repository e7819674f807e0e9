#pragma once

#include "camera/CameraDriver.h"

#include <QString>
#include <chrono>
#include <cstdint>
#include <memory>

namespace tavix {

class V4l2Controls;

// The graph camera's parameters on the controls of the video device its
// camera element opens: the control and scale of each parameter type, the
// gamma enable (which devices lack: off sets the default gamma, on brings
// back the last), the exposure's automatic mode and the one-push white
// balance. Without a device every range reports not enabled. Answers the
// driver's status codes for the parameter itself; whether the camera is open
// is the driver's to check.
class GraphParameters {
public:
    GraphParameters();
    ~GraphParameters();
    GraphParameters(const GraphParameters&) = delete;
    GraphParameters& operator=(const GraphParameters&) = delete;

    // Opens the device file's controls (none when `device` is empty or does
    // not exist), gamma on and no white balance running.
    void open(const QString& device);
    void close();

    CamParamRange range(int type) const;
    // Reading the white balance ends a run whose time is up.
    int get(int type, std::int32_t& value);
    int set(int type, std::int32_t value);
    int getAuto(int type, std::int32_t& flag) const;
    int setAuto(int type, std::int32_t flag);
    int setAutoDefault(int type);
    // The white balance (6): the device's own one-push when it has one, else
    // its automatic white balance for a while, then held.
    int onePush(int type);

private:
    bool hasControls() const;

    std::unique_ptr<V4l2Controls> controls_;
    std::int32_t gammaBeforeOff_ = -1;  // the gamma that 111 = 1 brings back
    std::chrono::steady_clock::time_point whiteBalanceEnds_{};
    bool whiteBalancing_ = false;
};

}  // namespace tavix
