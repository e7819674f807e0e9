#pragma once

#include <QString>
#include <cstdint>

namespace tavix {

// The controls of a video device (brightness, exposure, ...) read and set
// through its device file, beside the stream that GStreamer runs on it.
class V4l2Controls {
public:
    struct Range {
        std::int32_t minimum = 0;
        std::int32_t maximum = 0;
        std::int32_t defaultValue = 0;
        bool isMenu = false;
        bool isButton = false;
    };

    // Opens the device file; isOpen() says whether that worked.
    explicit V4l2Controls(const QString& device);
    ~V4l2Controls();
    V4l2Controls(const V4l2Controls&) = delete;
    V4l2Controls& operator=(const V4l2Controls&) = delete;

    bool isOpen() const { return fd_ >= 0; }
    // False when the device lacks the control or has it disabled.
    bool query(std::uint32_t id, Range& range) const;
    // Whether a menu control offers the entry `index`.
    bool hasMenuEntry(std::uint32_t id, std::int32_t index) const;
    bool get(std::uint32_t id, std::int32_t& value) const;
    bool set(std::uint32_t id, std::int32_t value);

private:
    int fd_ = -1;
};

}  // namespace tavix
