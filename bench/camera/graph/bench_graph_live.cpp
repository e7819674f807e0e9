// Live view from a 30 fps test source through the graph camera at 1920x1200
// (the program's resolution nearest a 1080p USB camera's), for a few seconds,
// through the real driver and the live view, with this thread painting as the
// window does:
// - process CPU per displayed frame, the test source's making of the frame
//   included (a real camera's hardware does that);
// - the source sending RGB, YUY2 (what USB cameras send) or 8-bit Bayer
//   cells, each handed to the live view as it came;
// - the display's CPU per displayed frame (the live view's scaling on the
//   driver's thread, timed on that thread, plus the painting) against one
//   memcpy of a frame of the source's own bytes in the cache and against a
//   memcpy of each frame where the driver hands it over, and the live
//   view's scaling of one frame alone;
// - frames lost: made by the source but never handed over (the driver's
//   broken count), and frames replaced unseen by a newer one;
// - the test source alone into a sink that does nothing: what a real camera's
//   hardware does, to be taken off the figures above for the program's share.
#include "BaselineRatio.h"
#include "LiveStreamBench.h"
#include "MemcpyBench.h"
#include "camera/LiveView.h"
#include "camera/graph/GraphDriver.h"

#include <benchmark/benchmark.h>
#include <gst/gst.h>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

using namespace tavix;

namespace {

constexpr int kMode = 10;  // 1920x1200
constexpr int kWidth = 1920;
constexpr int kHeight = 1200;
constexpr int kSeconds = 4;
const QSize kView(1000, 625);

void MemcpyOfOneFrame(benchmark::State& state)
{
    const size_t bytes = size_t(kWidth) * kHeight * 3;
    std::vector<uchar> src(bytes, 1), dst(bytes, 2);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MemcpyOfOneFrame)->Unit(benchmark::kMillisecond);

// The source's caps in each format (range(0) of the benchmarks) and the bytes of one of its pixels.
struct Format {
    const char* caps;
    int bytesPerPixel;
};
constexpr Format kFormats[] = {
    {"video/x-raw,format=RGB", 3}, {"video/x-raw,format=YUY2", 2}, {"video/x-bayer,format=rggb", 1}};

QString sourceCaps(std::int64_t format)
{
    return QStringLiteral("%1,width=%2,height=%3,framerate=30/1")
        .arg(QLatin1String(kFormats[format].caps))
        .arg(kWidth)
        .arg(kHeight);
}

// range(0): the format. The live view's own work on one frame of it (scaled to the view's size, the
// driver's thread), without the source, the driver or the painting, against a memcpy of the frame.
void LiveViewScaleOneFrame(benchmark::State& state)
{
    const Format& format = kFormats[state.range(0)];
    std::vector<uchar> pixels(size_t(kWidth) * kHeight * size_t(format.bytesPerPixel));
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uchar>(i * 7 + i / 4096);
    std::vector<uchar> copy(pixels.size());
    FrameView frame;
    frame.bits = pixels.data();
    frame.width = kWidth;
    frame.height = kHeight;
    frame.bytesPerLine = qsizetype(kWidth) * format.bytesPerPixel;
    frame.raw = state.range(0) == 1   ? RawLayout::Yuyv
                : state.range(0) == 2 ? RawLayout::BayerRggb
                                      : RawLayout::None;
    LiveView live;
    live.setDisplaySize(kView);
    bench::timeAgainstBaseline(
        state,
        [&] {
            live.frameReady(frame);
            benchmark::DoNotOptimize(live.takeFrame());
        },
        [&] {
            std::memcpy(copy.data(), pixels.data(), copy.size());
            benchmark::ClobberMemory();
        });
}
BENCHMARK(LiveViewScaleOneFrame)
    ->DenseRange(0, 2)
    ->ArgName("format")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

// range(0): the format (0 RGB, 1 YUY2, 2 Bayer).
void GraphLive(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Camera.grf"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(QStringLiteral("videotestsrc is-live=true ! %1 ! identity name=Camera")
                   .arg(sourceCaps(state.range(0)))
                   .toUtf8());
    file.close();
    GraphDriver driver(path, QStringLiteral("Camera"));
    if (driver.Init() < 1 || driver.Open(0) != 0 || driver.SetMode(0, kMode) != 0) {
        state.SkipWithError("no test source");
        return;
    }
    LiveView live;
    live.setDisplaySize(kView);
    bench::TimedLiveView view(live);
    const double copy =
        bench::memcpyMs(size_t(kWidth) * kHeight * size_t(kFormats[state.range(0)].bytesPerPixel));

    for (auto _ : state) {
        const bench::LiveFigures figures = bench::watchLive(driver, view, live, kView, 500, kSeconds);
        bench::setLiveCounters(state, figures, copy, bench::memcpyAsHandedMs(driver, 2));
    }
}
// range(0): the format. The source's own cost per frame, in this process.
void TestSourceAlone(benchmark::State& state)
{
    gst_init(nullptr, nullptr);
    const QByteArray description = QStringLiteral("videotestsrc is-live=true num-buffers=%1 ! %2 ! fakesink")
                                       .arg(kSeconds * 30)
                                       .arg(sourceCaps(state.range(0)))
                                       .toUtf8();
    for (auto _ : state) {
        GstElement* pipeline = gst_parse_launch(description.constData(), nullptr);
        const double cpuBefore = bench::processCpuMs();
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
        GstBus* bus = gst_element_get_bus(pipeline);
        GstMessage* end = gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE,
                                                     GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
        const double cpu = bench::processCpuMs() - cpuBefore;
        gst_message_unref(end);
        gst_object_unref(bus);
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
        state.counters["cpu_ms_per_frame"] = cpu / (kSeconds * 30);
    }
}
BENCHMARK(TestSourceAlone)
    ->DenseRange(0, 2)
    ->ArgName("format")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

BENCHMARK(GraphLive)
    ->DenseRange(0, 2)
    ->ArgName("format")
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
