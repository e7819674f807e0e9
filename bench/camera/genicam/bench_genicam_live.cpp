// Live view from Aravis's fake GenICam camera at the largest size the program
// offers on it (2048x1536), at 30 fps for a few seconds, through the real
// driver and the live view, with this thread painting as the window does:
// - process CPU per displayed frame, against one memcpy of a frame of the
//   same bytes timed in the same run;
// - the same with a sink that keeps nothing, which leaves the fake camera's
//   own cost of making the frame (a real camera's hardware does that) plus
//   the driver's;
// - the driver's own work on a Bayer frame, its demosaic, alone;
// - frames lost: made by the camera but never handed to the live view
//   (incomplete, or no free buffer), and frames replaced unseen by a newer one.
#include "camera/LiveView.h"
#include "camera/genicam/GenICamDriver.h"
#include "media/BayerDemosaic.h"

#include <benchmark/benchmark.h>
#include <QGuiApplication>
#include <QPainter>
#include <chrono>
#include <cstring>
#include <ctime>
#include <thread>

#undef signals
#include <arv.h>

using namespace tavix;

namespace {

constexpr int kLargestMode = 7;  // 2048x1536
constexpr int kFps = 30;
constexpr int kSeconds = 4;
const QSize kView(1000, 750);

double processCpuMs()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

class NullSink : public FrameSink {
public:
    void frameReady(const FrameView&) override {}
};

void MemcpyOfOneFrame(benchmark::State& state)
{
    const size_t bytes = size_t(2048) * 1536 * size_t(state.range(0));
    std::vector<uchar> src(bytes, 1), dst(bytes, 2);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MemcpyOfOneFrame)->Arg(1)->Arg(3)->ArgNames({"bytesPerPixel"})->Unit(benchmark::kMillisecond);

void DemosaicOneFrame(benchmark::State& state)
{
    const int w = 2048, h = 1536;
    std::vector<uchar> bayer(size_t(w) * h), rgb(size_t(w) * h * 3);
    for (size_t i = 0; i < bayer.size(); ++i)
        bayer[i] = static_cast<uchar>(i * 7);
    for (auto _ : state) {
        BayerDemosaic::toRgb(bayer.data(), w, w, h, BayerDemosaic::Pattern::RGGB, rgb.data(),
                             qsizetype(w) * 3);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(DemosaicOneFrame)->Unit(benchmark::kMillisecond);

// range(0): the pixel format (0 Mono8, 1 BayerRG8); range(1): 1 with the live view, 0 with a sink that keeps
// nothing.
void GenICamLive(benchmark::State& state)
{
    GenICamDriver::useFakeCameraOnly();
    GenICamDriver driver;
    if (driver.Init() < 1 || driver.Open(0) != 0 || driver.SetMode(0, kLargestMode) != 0) {
        state.SkipWithError("no fake camera");
        return;
    }
    arv_camera_set_pixel_format_from_string(driver.arvCamera(), state.range(0) ? "BayerRG8" : "Mono8",
                                            nullptr);
    driver.SetCamParameter(0, 147, kFps);
    const bool display = state.range(1) != 0;
    LiveView live;
    live.setDisplaySize(kView);
    NullSink none;
    QImage window(kView, QImage::Format_RGB32);

    for (auto _ : state) {
        driver.Start(0, 0, display ? static_cast<FrameSink*>(&live) : &none, -1, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));  // buffers made, rate settled
        std::int32_t goodBefore = 0;
        driver.GetGoodFrames(0, goodBefore);
        const LiveView::Counters before = live.counters();
        const double cpuBefore = processCpuMs();
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(kSeconds);
        while (std::chrono::steady_clock::now() < end) {
            if (display) {
                if (const QImage* frame = live.takeFrame()) {
                    QPainter painter(&window);
                    painter.drawImage(0, 0, *frame);
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));  // the window's event loop
        }
        const double cpu = processCpuMs() - cpuBefore;
        std::int32_t good = 0;
        std::int32_t broken = 0;
        driver.GetGoodFrames(0, good);
        driver.GetBrokenFrames(0, broken);
        const LiveView::Counters after = live.counters();
        driver.Stop(0);

        const double frames = good - goodBefore;
        const double shown = display ? double(after.shown - before.shown) : frames;
        state.counters["cpu_ms_per_frame"] = shown > 0 ? cpu / shown : 0;
        state.counters["fps"] = frames / kSeconds;
        state.counters["shown"] = shown;
        state.counters["replaced"] = double(after.replaced - before.replaced);
        state.counters["lost"] = broken;
    }
}
BENCHMARK(GenICamLive)
    ->ArgsProduct({{0, 1}, {1, 0}})
    ->ArgNames({"bayer", "display"})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
