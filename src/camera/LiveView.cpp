#include "camera/LiveView.h"

#include "common/PictureMemory.h"

namespace tavix {

void LiveView::setNotifier(std::function<void()> notify)
{
    std::lock_guard lock(mutex_);
    notify_ = std::move(notify);
}

void LiveView::setTap(FrameSink* tap)
{
    std::lock_guard lock(mutex_);
    tap_ = tap;
}

void LiveView::setDisplaySize(QSize size)
{
    std::lock_guard lock(mutex_);
    size_ = size;
}

QSize LiveView::displaySize() const
{
    std::lock_guard lock(mutex_);
    return size_;
}

void LiveView::frameReady(const FrameView& frame)
{
    QSize wanted;
    FrameSink* tap = nullptr;
    {
        std::lock_guard lock(mutex_);
        ++counters_.received;
        wanted = size_;
        tap = tap_;
    }
    if (tap)
        tap->frameReady(frame);
    if (wanted.isEmpty() || frame.bits == nullptr)
        return;
    // The back buffer belongs to this thread; it is scaled without the lock so
    // that painting never waits for it. A new size costs one allocation per buffer.
    if (back_.size() != wanted)
        back_ = PictureMemory::image(wanted, QImage::Format_RGB32);
    if (!scaler_.scale(frame, back_)) {
        if (frame.raw != RawLayout::None)
            return;  // a YUYV frame of odd width: nothing to show
        // A rare format: converted first (this allocates), then scaled.
        const QImage wrapped(frame.bits, frame.width, frame.height, frame.bytesPerLine, frame.format);
        converted_ = wrapped.convertToFormat(QImage::Format_RGB32);
        FrameView rgb = frame;
        rgb.bits = converted_.constBits();
        rgb.bytesPerLine = converted_.bytesPerLine();
        rgb.format = converted_.format();
        scaler_.scale(rgb, back_);
    }

    std::function<void()> notify;
    {
        std::lock_guard lock(mutex_);
        std::swap(back_, ready_);
        if (readyFresh_)
            ++counters_.replaced;
        else
            notify = notify_;
        readyFresh_ = true;
    }
    if (notify)
        notify();
}

const QImage* LiveView::takeFrame()
{
    std::lock_guard lock(mutex_);
    if (!readyFresh_)
        return nullptr;
    std::swap(ready_, front_);
    readyFresh_ = false;
    ++counters_.shown;
    return &front_;
}

LiveView::Counters LiveView::counters() const
{
    std::lock_guard lock(mutex_);
    return counters_;
}

}  // namespace tavix
