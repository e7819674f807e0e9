#include "camera/genicam/FrameRateMeter.h"

namespace tavix {

void FrameRateMeter::clear()
{
    const std::lock_guard guard(lock_);
    count_ = 0;
    next_ = 0;
}

void FrameRateMeter::arrived(std::int64_t ns)
{
    const std::lock_guard guard(lock_);
    times_[static_cast<size_t>(next_)] = ns;
    next_ = (next_ + 1) % kWindow;
    if (count_ < kWindow)
        ++count_;
}

double FrameRateMeter::fps() const
{
    const std::lock_guard guard(lock_);
    if (count_ < kFewest)
        return 0;
    const std::int64_t newest = times_[static_cast<size_t>((next_ + kWindow - 1) % kWindow)];
    const std::int64_t oldest = times_[static_cast<size_t>((next_ + kWindow - count_) % kWindow)];
    return newest > oldest ? (count_ - 1) * 1e9 / static_cast<double>(newest - oldest) : 0;
}

}  // namespace tavix
