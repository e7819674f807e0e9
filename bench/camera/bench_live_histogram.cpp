// The live histogram at 2592x1944 (the simulated camera's picture, RGB):
// - one memcpy of the frame, the baseline in the same run;
// - the live view's own display cost of one frame, which the histogram may
//   add at most 5 % to;
// - one count on the live sample, and its cost per camera frame at 30 fps
//   with a count every quarter second (on a manual clock, so that the frames
//   counted are exactly those the program counts);
// - one count of every pixel, as for a still.
#include "SimFrameBench.h"
#include "camera/LiveHistogram.h"
#include "camera/LiveView.h"
#include "common/Clock.h"
#include "media/FrameViewOf.h"
#include "media/Histogram.h"

#include <benchmark/benchmark.h>
#include <QGuiApplication>
#include <cstring>
#include <vector>

using namespace tavix;

namespace {

constexpr int kMode = 8;  // 2592x1944
const QSize kView(1000, 750);

const QImage& fullFrame()
{
    return bench::simFrame(kMode);
}

void MemcpyOfOneFrame(benchmark::State& state)
{
    const QImage& frame = fullFrame();
    std::vector<uchar> target(static_cast<size_t>(frame.sizeInBytes()));
    for (auto _ : state) {
        std::memcpy(target.data(), frame.constBits(), target.size());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MemcpyOfOneFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

void LiveViewScaleOneFrame(benchmark::State& state)
{
    const FrameView frame = frameViewOf(fullFrame());
    LiveView view;
    view.setDisplaySize(kView);
    for (auto _ : state) {
        view.frameReady(frame);
        benchmark::DoNotOptimize(view.takeFrame());
    }
}
BENCHMARK(LiveViewScaleOneFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

void HistogramOfTheLiveSample(benchmark::State& state)
{
    const FrameView frame = frameViewOf(fullFrame());
    const int step = Histogram::stepFor({frame.width, frame.height}, LiveHistogram::kSampleBudget);
    for (auto _ : state)
        benchmark::DoNotOptimize(Histogram::of(frame, step));
    state.counters["step"] = step;
}
BENCHMARK(HistogramOfTheLiveSample)->Unit(benchmark::kMillisecond)->UseRealTime();

// Per camera frame: most frames pass after a clock reading, one in 7 or 8 is counted.
void LiveHistogramPerFrameAt30Fps(benchmark::State& state)
{
    const FrameView frame = frameViewOf(fullFrame());
    ManualClock clock;
    LiveHistogram live(clock);
    live.setNotifier([] {});
    live.setEnabled(true);
    std::int64_t frames = 0;
    for (auto _ : state) {
        live.frameReady(frame);
        clock.advance(frames++ % 3 == 2 ? 34 : 33);  // 30 frames a second
        benchmark::DoNotOptimize(live.take());
    }
    state.counters["counted"] = benchmark::Counter(double(live.passes()) / double(frames));
}
BENCHMARK(LiveHistogramPerFrameAt30Fps)->Unit(benchmark::kMillisecond)->UseRealTime();

void HistogramOfEveryPixel(benchmark::State& state)
{
    const FrameView frame = frameViewOf(fullFrame());
    for (auto _ : state)
        benchmark::DoNotOptimize(Histogram::of(frame));
}
BENCHMARK(HistogramOfEveryPixel)->Unit(benchmark::kMillisecond)->UseRealTime();

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
