#pragma once

#include "camera/graph/V4l2ControlAccess.h"

#include <memory>

struct _GstElement;

namespace tavix {

// The controls of a video device through ioctls on a file descriptor of it:
// a duplicate of the one v4l2src streams on, so that reading and setting a
// control never opens the device a second time.
class V4l2Controls : public V4l2ControlAccess {
public:
    // Takes a duplicate of `fd`; none when `fd` is negative or cannot be duplicated.
    explicit V4l2Controls(int fd);
    ~V4l2Controls() override;
    V4l2Controls(const V4l2Controls&) = delete;
    V4l2Controls& operator=(const V4l2Controls&) = delete;

    // The controls of the device that `source` (a v4l2src, in the ready state
    // or beyond) has open; null when it has none open.
    static std::unique_ptr<V4l2ControlAccess> ofSource(_GstElement* source);

    bool isOpen() const { return fd_ >= 0; }
    int query(std::uint32_t id, Control& control) override;
    int queryMenu(std::uint32_t id, std::uint32_t index) override;
    int get(std::uint32_t id, std::int32_t& value) override;
    int set(std::uint32_t id, std::int32_t value) override;

private:
    int fd_ = -1;
};

}  // namespace tavix
