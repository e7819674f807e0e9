#include "camera/LiveHistogram.h"

#include "common/Clock.h"

#include <QSize>

namespace tavix {

void LiveHistogram::setEnabled(bool on)
{
    if (on && !enabled_)
        restart_ = true;
    enabled_ = on;
}

void LiveHistogram::setNotifier(std::function<void()> notify)
{
    std::lock_guard lock(mutex_);
    notify_ = std::move(notify);
}

void LiveHistogram::frameReady(const FrameView& frame)
{
    if (!enabled_ || frame.bits == nullptr)
        return;
    const qint64 now = clock_.tickMs();
    if (!restart_.exchange(false) && now - lastMs_ < kIntervalMs)
        return;
    lastMs_ = now;
    // Counted without the lock: taking the last one never waits for this.
    Histogram counted =
        Histogram::of(frame, Histogram::stepFor(QSize(frame.width, frame.height), kSampleBudget));
    std::function<void()> notify;
    {
        std::lock_guard lock(mutex_);
        if (!ready_)
            notify = notify_;
        ready_ = counted;
        ++passes_;
    }
    if (notify)
        notify();
}

std::optional<Histogram> LiveHistogram::take()
{
    std::lock_guard lock(mutex_);
    std::optional<Histogram> taken;
    taken.swap(ready_);
    return taken;
}

int LiveHistogram::passes() const
{
    std::lock_guard lock(mutex_);
    return passes_;
}

}  // namespace tavix
