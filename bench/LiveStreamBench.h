#pragma once

#include "CpuClock.h"
#include "camera/CameraDriver.h"
#include "camera/LiveView.h"

#include <benchmark/benchmark.h>
#include <QImage>
#include <QPainter>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace tavix::bench {

// The live view as a camera's sink, keeping the CPU the driver's thread
// spends in it (scaling frames into the view's picture); `shown` is the size
// it tells the driver, when the driver asks.
class TimedLiveView : public FrameSink {
public:
    explicit TimedLiveView(LiveView& live, QSize shown = {}) : live_(live), shown_(shown) {}
    void frameReady(const FrameView& frame) override
    {
        const double before = threadCpuMs();
        live_.frameReady(frame);
        spentNs_ += static_cast<std::int64_t>((threadCpuMs() - before) * 1e6);
    }
    QSize shownSize() const override { return shown_; }
    double spentMs() const { return static_cast<double>(spentNs_.load()) / 1e6; }

private:
    LiveView& live_;
    QSize shown_;
    std::atomic<std::int64_t> spentNs_{0};
};

// Copies each frame where the driver hands it over, into one reused buffer,
// timing the copy on the driver's thread: one memcpy of a frame fresh from the
// camera, not of one already in the cache. The first frame (which sizes the
// buffer) is not counted.
class CopyingSink : public FrameSink {
public:
    void frameReady(const FrameView& frame) override
    {
        const size_t bytes = size_t(frame.bytesPerLine) * size_t(frame.height);
        if (copy_.size() != bytes) {
            copy_.assign(bytes, 0);
            return;
        }
        const double before = threadCpuMs();
        std::memcpy(copy_.data(), frame.bits, bytes);
        spentMs_ += threadCpuMs() - before;
        ++frames_;
    }
    double msPerFrame() const { return frames_ > 0 ? spentMs_ / frames_ : 0; }

private:
    std::vector<uchar> copy_;
    double spentMs_ = 0;  // driver thread only; read after the stream stopped
    int frames_ = 0;
};

// The mean time of that copy over `seconds` of the stream, in milliseconds.
inline double memcpyAsHandedMs(CameraDriver& driver, int seconds)
{
    CopyingSink sink;
    driver.Start(0, 0, &sink, -1, 0);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    driver.Stop(0);
    return sink.msPerFrame();
}

// What a stream did while it was watched.
struct LiveFigures {
    double seconds = 0;
    double frames = 0;     // made by the camera and handed over
    double lost = 0;       // made but never handed over (the driver's broken count)
    double shown = 0;      // painted
    double replaced = 0;   // replaced unseen by a newer frame
    double cpuMs = 0;      // the whole process
    double displayMs = 0;  // the live view on the driver's thread plus the painting
    double paintMs = 0;    // the painting alone
    double cpuPerShownMs() const { return shown > 0 ? cpuMs / shown : 0; }
    double displayPerShownMs() const { return shown > 0 ? displayMs / shown : 0; }
    double paintPerShownMs() const { return shown > 0 ? paintMs / shown : 0; }
};

// Starts `driver` into `view`, lets it settle, then for `seconds` paints the
// newest frame into a window's picture every 5 ms as the window's event loop
// does, and stops it.
inline LiveFigures watchLive(CameraDriver& driver, TimedLiveView& view, LiveView& live, QSize window,
                             int settleMs, int seconds)
{
    QImage painted(window, QImage::Format_RGB32);
    LiveFigures f;
    driver.Start(0, 0, &view, -1, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(settleMs));
    std::int32_t goodBefore = 0, brokenBefore = 0;
    driver.GetGoodFrames(0, goodBefore);
    driver.GetBrokenFrames(0, brokenBefore);
    const LiveView::Counters before = live.counters();
    const double viewBefore = view.spentMs();
    const double cpuBefore = processCpuMs();
    const auto start = std::chrono::steady_clock::now();
    const auto end = start + std::chrono::seconds(seconds);
    while (std::chrono::steady_clock::now() < end) {
        const double paintBefore = threadCpuMs();
        if (const QImage* frame = live.takeFrame()) {
            QPainter painter(&painted);
            painter.drawImage(0, 0, *frame);
        }
        f.paintMs += threadCpuMs() - paintBefore;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    f.cpuMs = processCpuMs() - cpuBefore;
    f.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::int32_t good = 0, broken = 0;
    driver.GetGoodFrames(0, good);
    driver.GetBrokenFrames(0, broken);
    const LiveView::Counters after = live.counters();
    f.displayMs = view.spentMs() - viewBefore + f.paintMs;
    driver.Stop(0);
    f.frames = good - goodBefore;
    f.lost = broken - brokenBefore;
    f.shown = static_cast<double>(after.shown - before.shown);
    f.replaced = static_cast<double>(after.replaced - before.replaced);
    return f;
}

// The figures of a watched stream as a benchmark's counters, the display's
// share against `memcpyMs`, a copy of one frame in the cache, and against
// `handedMs`, a copy of each frame as the driver hands it over.
inline void setLiveCounters(benchmark::State& state, const LiveFigures& f, double memcpyMs, double handedMs)
{
    state.counters["cpu_ms_per_frame"] = f.cpuPerShownMs();
    state.counters["fps"] = f.frames / f.seconds;
    state.counters["shown"] = f.shown;
    state.counters["replaced"] = f.replaced;
    state.counters["lost"] = f.lost;
    state.counters["display_ms"] = f.displayPerShownMs();
    state.counters["paint_ms"] = f.paintPerShownMs();
    state.counters["memcpy_ms"] = memcpyMs;
    state.counters["display_over_memcpy"] = memcpyMs > 0 ? f.displayPerShownMs() / memcpyMs : 0;
    state.counters["handed_memcpy_ms"] = handedMs;
    state.counters["display_over_handed_memcpy"] = handedMs > 0 ? f.displayPerShownMs() / handedMs : 0;
}

}  // namespace tavix::bench
