#pragma once

#include "camera/CameraDriver.h"
#include "media/ViewScaler.h"

#include <QImage>
#include <QSize>
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>

namespace tavix {

// Keeps the newest camera frame, already scaled to the size it is shown at.
// The driver's thread scales each frame into a back buffer and swaps it with
// the ready buffer; the user-interface thread takes the ready buffer when it
// paints. A frame that arrives before the previous one was shown replaces it:
// nothing queues up, and no buffer is allocated while the size stays the same.
// A driver hands its frame as the camera delivered it, unconverted: YUYV and
// Bayer frames with FrameView::raw set (ViewScaler reads them, a Bayer cell
// giving one shown pixel), so that nothing the view does not show is converted.
class LiveView : public FrameSink {
public:
    struct Counters {
        std::uint64_t received = 0;  // frames handed over by the driver
        std::uint64_t shown = 0;     // frames taken for painting
        std::uint64_t replaced = 0;  // frames dropped unseen for a newer one
    };

    // Called on the driver's thread when a frame is ready and none was pending;
    // it must only schedule the repaint (e.g. a queued call).
    void setNotifier(std::function<void()> notify);

    // Another sink that sees each frame first, at its full size, on the
    // driver's thread (the live histogram); nullptr for none.
    void setTap(FrameSink* tap);

    // The size frames are shown at (user-interface thread).
    void setDisplaySize(QSize size);
    QSize displaySize() const;
    // Drivers that decode their frames (JPEG) decode them no larger than shown.
    QSize shownSize() const override { return displaySize(); }

    void frameReady(const FrameView& frame) override;

    // Takes the newest frame for painting when there is one that was not taken
    // yet; the returned image stays valid until the next call. Right after a
    // size change it may still have the old size.
    const QImage* takeFrame();
    // The frame taken last (for repaints without a new frame).
    const QImage& current() const { return front_; }

    Counters counters() const;

private:
    mutable std::mutex mutex_;
    QImage back_;        // driver thread only
    QImage ready_;       // under the mutex
    QImage front_;       // user-interface thread only
    ViewScaler scaler_;  // driver thread only
    QImage converted_;   // a frame in a layout the scaler does not read, as RGB32
    QSize size_;
    bool readyFresh_ = false;
    Counters counters_;
    std::function<void()> notify_;
    FrameSink* tap_ = nullptr;
};

}  // namespace tavix
