#pragma once

#include "camera/graph/V4l2ControlAccess.h"

#include <linux/videodev2.h>
#include <QStringList>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace tavix::test {

// A USB webcam's controls as the UVC kernel driver offers them, for the graph
// camera's tests: integer ranges with steps (a write is rounded to the step
// and clamped), booleans, menus with the entries the camera has, controls
// flagged inactive while their automatic mode governs them (a write answers
// EACCES), EINVAL for a control the camera lacks or a menu entry it does not
// offer, ENODEV for everything once unplugged. Switching an automatic mode on
// moves the values it governs to what the camera finds by itself.
//
// controls() hands out what the driver owns; the test keeps this object to
// script the camera and read back what was written.
class FakeUvcCamera {
public:
    using Control = V4l2ControlAccess::Control;

    // A typical webcam: brightness, contrast, saturation, hue, gamma, gain,
    // power-line frequency, automatic white balance with its temperature,
    // exposure with its automatic mode (manual and aperture priority only) and
    // its dynamic frame rate, focus with autofocus.
    static FakeUvcCamera webcam();
    FakeUvcCamera();

    std::unique_ptr<V4l2ControlAccess> controls() const;

    // Adds (or replaces) a control; a menu lists the entries it offers.
    void add(std::uint32_t id, Control control, std::int32_t value, std::vector<std::uint32_t> menu = {});
    void remove(std::uint32_t id);
    // A control's range and default (its type, flags and value stay).
    void setRange(std::uint32_t id, std::int32_t minimum, std::int32_t maximum, std::int32_t defaultValue);
    // The value as the camera holds it, written past every check.
    void put(std::uint32_t id, std::int32_t value);
    std::int32_t value(std::uint32_t id) const;
    bool has(std::uint32_t id) const;
    bool inactive(std::uint32_t id) const;
    // Writes of the control (of only that value, when given) fail with `error`.
    void refuse(std::uint32_t id, int error, std::optional<std::int32_t> onlyValue = {});
    // What an automatic mode sets the value it governs to when switched on.
    void setFound(std::uint32_t governed, std::int32_t value);
    // The cable is pulled: every call answers ENODEV.
    void unplug();

    // Every accepted write, in order, as "id=value" with the control's name for id.
    QStringList writes() const;
    void clearWrites();
    // Writes that failed, as "id=value:errno".
    QStringList refusedWrites() const;

    static QString name(std::uint32_t id);

private:
    struct State;
    class Access;
    std::shared_ptr<State> s_;
};

}  // namespace tavix::test
