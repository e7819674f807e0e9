#pragma once

#include <array>
#include <cstdint>
#include <mutex>

namespace tavix {

// The rate at which frames arrive, over the newest few: what the camera
// delivers, which a slow link or a long exposure may hold below the rate it
// was set to. Arrivals come from one thread, the rate is read from another.
class FrameRateMeter {
public:
    static constexpr int kWindow = 32;
    // Fewer frames than this tell more about start-up bursts than about the rate.
    static constexpr int kFewest = 8;

    void clear();
    // A frame arrived at `ns` (nanoseconds of a clock that does not go back).
    void arrived(std::int64_t ns);
    // Frames per second over the window; 0 before kFewest frames.
    double fps() const;

private:
    mutable std::mutex lock_;
    std::array<std::int64_t, kWindow> times_{};
    int count_ = 0;  // arrivals kept, up to kWindow
    int next_ = 0;
};

}  // namespace tavix
