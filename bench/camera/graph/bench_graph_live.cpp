// Live view from a 30 fps test source through the graph camera at 1920x1200
// (the program's resolution nearest a 1080p USB camera's), for a few seconds,
// through the real driver and the live view, with this thread painting as the
// window does:
// - process CPU per displayed frame, against one memcpy of a frame of the
//   same bytes timed in the same run;
// - the same with a sink that keeps nothing, which leaves the test source's
//   own cost of making the frame (a real camera's hardware does that) plus
//   the driver's;
// - the source sending RGB as it is, or YUY2 (what USB cameras send) that the
//   driver converts;
// - frames lost: made by the source but never handed over (the driver's
//   broken count), and frames replaced unseen by a newer one;
// - the test source alone into a sink that does nothing: what a real camera's
//   hardware does, to be taken off the figures above for the program's share.
#include "camera/LiveView.h"
#include "camera/graph/GraphDriver.h"

#include <benchmark/benchmark.h>
#include <gst/gst.h>
#include <QGuiApplication>
#include <QPainter>
#include <QTemporaryDir>
#include <chrono>
#include <cstring>
#include <ctime>
#include <thread>

using namespace tavix;

namespace {

constexpr int kMode = 10;  // 1920x1200
constexpr int kWidth = 1920;
constexpr int kHeight = 1200;
constexpr int kSeconds = 4;
const QSize kView(1000, 625);

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
    const size_t bytes = size_t(kWidth) * kHeight * 3;
    std::vector<uchar> src(bytes, 1), dst(bytes, 2);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MemcpyOfOneFrame)->Unit(benchmark::kMillisecond);

// range(0): 1 when the source sends YUY2 for the driver to convert; range(1): 1 with the live view, 0 with a
// sink that keeps nothing.
void GraphLive(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Camera.grf"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(
        QStringLiteral("videotestsrc is-live=true ! video/x-raw,format=%1,width=%2,height=%3,framerate=30/1 "
                       "! identity name=Camera")
            .arg(state.range(0) ? QStringLiteral("YUY2") : QStringLiteral("RGB"))
            .arg(kWidth)
            .arg(kHeight)
            .toUtf8());
    file.close();
    GraphDriver driver(path, QStringLiteral("Camera"));
    if (driver.Init() < 1 || driver.Open(0) != 0 || driver.SetMode(0, kMode) != 0) {
        state.SkipWithError("no test source");
        return;
    }
    const bool display = state.range(1) != 0;
    LiveView live;
    live.setDisplaySize(kView);
    NullSink none;
    QImage window(kView, QImage::Format_RGB32);

    for (auto _ : state) {
        driver.Start(0, 0, display ? static_cast<FrameSink*>(&live) : &none, -1, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));  // negotiated, rate settled
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
// range(0): 1 for YUY2. The source's own cost per frame, in this process.
void TestSourceAlone(benchmark::State& state)
{
    gst_init(nullptr, nullptr);
    const QByteArray description =
        QStringLiteral(
            "videotestsrc is-live=true num-buffers=%1 ! video/x-raw,format=%2,width=%3,height=%4,"
            "framerate=30/1 ! fakesink")
            .arg(kSeconds * 30)
            .arg(state.range(0) ? QStringLiteral("YUY2") : QStringLiteral("RGB"))
            .arg(kWidth)
            .arg(kHeight)
            .toUtf8();
    for (auto _ : state) {
        GstElement* pipeline = gst_parse_launch(description.constData(), nullptr);
        const double cpuBefore = processCpuMs();
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
        GstBus* bus = gst_element_get_bus(pipeline);
        GstMessage* end = gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE,
                                                     GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
        const double cpu = processCpuMs() - cpuBefore;
        gst_message_unref(end);
        gst_object_unref(bus);
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
        state.counters["cpu_ms_per_frame"] = cpu / (kSeconds * 30);
    }
}
BENCHMARK(TestSourceAlone)
    ->Arg(0)
    ->Arg(1)
    ->ArgName("yuy2")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

BENCHMARK(GraphLive)
    ->ArgsProduct({{0, 1}, {1, 0}})
    ->ArgNames({"yuy2", "display"})
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
