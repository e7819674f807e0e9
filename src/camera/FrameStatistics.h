#pragma once

#include <QString>
#include <cstdint>

namespace tavix {

// The status bar's frame figures, refreshed by each tmriCube tick while the
// camera streams.
class FrameStatistics {
public:
    // A start time above any clock reading: the next tick starts afresh
    // (written after every camera parameter change).
    static constexpr float kRestart = 99999.0f;

    struct Texts {
        QString frames, fps, average, badFrames;
    };

    // Starts the measurement at this time (seconds since midnight).
    void reset(float now);
    void restart() { startTime_ = kRestart; }
    float startTime() const { return startTime_; }

    // One tick: the counters and the time. The frame rate and average keep
    // their last texts on the tick that starts afresh.
    const Texts& tick(std::int32_t goodFrames, std::int32_t brokenFrames, float now);
    const Texts& texts() const { return texts_; }

private:
    std::int32_t previousCount_ = 0;
    float previousTime_ = 0;
    std::int32_t startCount_ = 0;
    float startTime_ = kRestart;
    Texts texts_{QStringLiteral("Frames:"), QStringLiteral("FPS:"), QStringLiteral("Average:"),
                 QStringLiteral("Bad frames:")};
};

}  // namespace tavix
