#include "camera/FrameStatistics.h"

namespace tavix {

void FrameStatistics::reset(float now)
{
    startTime_ = now;
    previousTime_ = now;
    startCount_ = previousCount_;
}

const FrameStatistics::Texts& FrameStatistics::tick(std::int32_t goodFrames, std::int32_t brokenFrames,
                                                    float now)
{
    texts_.frames = QStringLiteral("Frames:%1").arg(goodFrames);
    texts_.badFrames = QStringLiteral("Bad frames:%1").arg(brokenFrames);
    if (startTime_ > now) {
        // Start afresh: figures from before a parameter change would mislead.
        startTime_ = now;
        startCount_ = goodFrames;
    } else {
        const float span = now - previousTime_;
        if (span > 0)
            texts_.fps =
                QStringLiteral("FPS:") + QString::number((goodFrames - previousCount_) / span, 'f', 2);
        const float total = now - startTime_;
        if (total > 0)
            texts_.average =
                QStringLiteral("Average:") + QString::number((goodFrames - startCount_) / total, 'f', 2);
    }
    previousCount_ = goodFrames;
    previousTime_ = now;
    return texts_;
}

}  // namespace tavix
