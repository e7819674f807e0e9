#pragma once

#include <cstdint>

namespace tavix {

// The controls of a video device as its kernel driver offers them: what a
// control is (VIDIOC_QUERYCTRL), which entries a menu has (VIDIOC_QUERYMENU),
// and its value (VIDIOC_G_CTRL, VIDIOC_S_CTRL). Every call answers 0 or the
// errno the device gave (EINVAL for a control it lacks, EACCES for a write
// its automatic mode refuses, ENODEV once unplugged). The graph camera's
// parameters are written against this; a fake stands in for a device in tests.
class V4l2ControlAccess {
public:
    struct Control {
        std::uint32_t type = 0;  // V4L2_CTRL_TYPE_*
        std::int32_t minimum = 0;
        std::int32_t maximum = 0;
        std::int32_t step = 1;
        std::int32_t defaultValue = 0;
        std::uint32_t flags = 0;  // V4L2_CTRL_FLAG_*: disabled, inactive (an automatic mode governs it), ...
    };

    virtual ~V4l2ControlAccess() = default;

    virtual int query(std::uint32_t id, Control& control) = 0;
    // 0 when the menu control offers the entry `index`.
    virtual int queryMenu(std::uint32_t id, std::uint32_t index) = 0;
    virtual int get(std::uint32_t id, std::int32_t& value) = 0;
    virtual int set(std::uint32_t id, std::int32_t value) = 0;
};

}  // namespace tavix
