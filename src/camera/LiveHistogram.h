#pragma once

#include "camera/CameraDriver.h"
#include "media/Histogram.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace tavix {

class Clock;

// The histogram of the live picture, a few times a second: the driver's
// thread counts a frame when the last count is kIntervalMs old (on the
// injected clock), reading at most kSampleBudget of its pixels, and hands the
// result over; the user-interface thread takes the newest. Frames pass
// uncounted while it is off. A frame in the camera's own layout (YUYV, Bayer,
// BGR) has only its sampled pixels converted, a Bayer cell counting as one
// colour pixel.
class LiveHistogram : public FrameSink {
public:
    static constexpr int kIntervalMs = 250;
    static constexpr qint64 kSampleBudget = 1 << 17;

    explicit LiveHistogram(const Clock& clock) : clock_(clock) {}

    // On: the next frame is counted at once.
    void setEnabled(bool on);
    bool enabled() const { return enabled_; }

    // Called on the driver's thread when a histogram is ready and the last one
    // was taken; it must only schedule (e.g. a queued call).
    void setNotifier(std::function<void()> notify);

    void frameReady(const FrameView& frame) override;

    // The newest histogram that was not taken yet.
    std::optional<Histogram> take();

    // Frames counted so far.
    int passes() const;

private:
    Histogram count(const FrameView& frame);

    const Clock& clock_;
    std::atomic<bool> enabled_{false};
    std::atomic<bool> restart_{false};
    qint64 lastMs_ = 0;          // driver thread only
    std::vector<uchar> sample_;  // driver thread only: sampled pixels as RGB888
    mutable std::mutex mutex_;
    std::optional<Histogram> ready_;
    int passes_ = 0;
    std::function<void()> notify_;
};

}  // namespace tavix
