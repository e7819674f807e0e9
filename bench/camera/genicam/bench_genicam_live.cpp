// Live view from Aravis's fake GenICam camera at the largest size the program
// offers on it (2048x1536), at 30 fps for a few seconds, through the real
// driver and the live view, with this thread painting as the window does:
// - process CPU per displayed frame, the fake camera's making of the frame
//   included (a real camera's hardware does that);
// - the display's CPU per displayed frame (the live view's scaling on the
//   driver's thread, timed on that thread, plus the painting) against one
//   memcpy of a frame of the camera's bytes in the cache, and against a
//   memcpy of each frame where the driver hands it over (Bayer frames go to
//   the view as their cells, demosaiced only for a freeze, a file or a
//   recording);
// - a demosaic of a Bayer frame alone, what a freeze costs;
// - frames lost: made by the camera but never handed to the live view
//   (incomplete, or no free buffer), and frames replaced unseen by a newer one.
// Then Aravis's fake GigE camera in a process of its own on loopback, its
// sensor set to 2592x1944 Bayer: process CPU per displayed frame against one
// memcpy of the frame, and beside it, on the same link in the same run,
// arv-camera-test-0.8's frame rate and CPU per frame. And the time Init takes
// without a camera against Aravis's own search of every bus.
#include "../../../tests/camera/genicam/FakeGigECamera.h"
#include "LiveStreamBench.h"
#include "MemcpyBench.h"
#include "camera/LiveView.h"
#include "camera/genicam/GenICamDriver.h"
#include "media/BayerDemosaic.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <QGuiApplication>
#include <QProcess>
#include <QRegularExpression>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#undef signals
#include <arv.h>

using namespace tavix;

namespace {

constexpr int kLargestMode = 7;  // 2048x1536
constexpr int kFps = 30;
constexpr int kSeconds = 4;
const QSize kView(1000, 750);

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

// range(0): the pixel format (0 Mono8, 1 BayerRG8).
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
    LiveView live;
    live.setDisplaySize(kView);
    bench::TimedLiveView view(live);
    const double copy = bench::memcpyMs(size_t(2048) * 1536);  // Mono8 and Bayer: a byte a pixel

    for (auto _ : state) {
        const bench::LiveFigures figures = bench::watchLive(driver, view, live, kView, 500, kSeconds);
        bench::setLiveCounters(state, figures, copy, bench::memcpyAsHandedMs(driver, 2));
    }
}
BENCHMARK(GenICamLive)
    ->DenseRange(0, 1)
    ->ArgName("bayer")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

double childrenCpuMs()
{
    rusage r{};
    getrusage(RUSAGE_CHILDREN, &r);
    return (r.ru_utime.tv_sec + r.ru_stime.tv_sec) * 1e3 + (r.ru_utime.tv_usec + r.ru_stime.tv_usec) / 1e3;
}

// range(0): 0 the driver's Init (USB3 Vision at once, GigE discovery beside it), 1 Aravis's search of every
// bus.
void InitWithoutCamera(benchmark::State& state)
{
    GenICamDriver::useRealCameras();
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        int found = 0;
        if (state.range(0) == 0) {
            GenICamDriver driver;
            found = driver.Init();
        } else {
            arv_update_device_list();
            found = static_cast<int>(arv_get_n_devices());
        }
        state.counters["ms"] =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        state.counters["cameras"] = found;
    }
}
BENCHMARK(InitWithoutCamera)
    ->Arg(0)
    ->Arg(1)
    ->ArgNames({"aravis"})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

constexpr int kLoopbackFps = 30;
const QSize kFiveMp(2592, 1944);

void GenICamLoopback5MpBayer(benchmark::State& state)
{
    if (test::FakeGigECamera::program().isEmpty()) {
        state.SkipWithError("arv-fake-gv-camera-0.8 (aravis-tools) is not installed");
        return;
    }
    const QString serial = QStringLiteral("TAVIXBENCH");
    const QByteArray id = "Aravis-Fake-" + serial.toLatin1();
    test::FakeGigECamera camera(serial, 0, 120);
    GenICamDriver::useRealCameras();
    {
        // The fake's sensor made 5 MP; it keeps its registers while it runs.
        GenICamDiscovery::find(GenICamDriver::kGigEDiscovery);  // no discovery of ours running beside
        ArvCamera* setup = nullptr;
        for (int attempt = 0; attempt < 10 && !setup; ++attempt) {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));  // the camera starting up
            setup = arv_camera_new(id.constData(), nullptr);
        }
        if (!setup) {
            state.SkipWithError("the fake GigE camera did not answer");
            return;
        }
        ArvDevice* device = arv_camera_get_device(setup);
        arv_device_write_register(device, 0x11c, guint32(kFiveMp.width()), nullptr);
        arv_device_write_register(device, 0x118, guint32(kFiveMp.height()), nullptr);
        g_object_unref(setup);
    }
    GenICamDriver driver({}, serial);
    driver.setGigEWait(GenICamDriver::kGigEDiscovery);
    if (driver.Init() < 1 || driver.Open(0) != 0 || driver.SetMode(0, 8) != 0) {
        state.SkipWithError("cannot open the fake GigE camera at 2592x1944");
        return;
    }
    driver.SetCamParameter(0, 147, kLoopbackFps);
    const QByteArray format = arv_camera_get_pixel_format_as_string(driver.arvCamera(), nullptr);
    LiveView live;
    live.setDisplaySize(kView);
    bench::TimedLiveView view(live);

    // One memcpy of the camera's frame (one byte a pixel), in this run.
    const double copyMs = bench::memcpyMs(size_t(kFiveMp.width()) * size_t(kFiveMp.height()));

    for (auto _ : state) {
        const bench::LiveFigures f = bench::watchLive(driver, view, live, kView, 1000, kSeconds);
        state.counters["fps"] = f.frames / f.seconds;
        state.counters["broken"] = f.lost;
        state.counters["cpu_ms_per_shown_frame"] = f.cpuPerShownMs();
        state.counters["display_ms"] = f.displayPerShownMs();
        state.counters["memcpy_ms"] = copyMs;
        state.counters["cpu_per_frame_over_memcpy"] = copyMs > 0 ? f.cpuPerShownMs() / copyMs : 0;
    }
    driver.Close(0);

    // Aravis's own test program on the same camera and link, same size, format and rate.
    QProcess tool;
    const double childBefore = childrenCpuMs();
    tool.start(QStringLiteral("arv-camera-test-0.8"),
               {QStringLiteral("-n"), QString::fromLatin1(id), QStringLiteral("-w"),
                QString::number(kFiveMp.width()), QStringLiteral("-h"), QString::number(kFiveMp.height()),
                QStringLiteral("-f"), QString::number(kLoopbackFps), QStringLiteral("--no-packet-socket"),
                QStringLiteral("-a"), QStringLiteral("--features"),
                QStringLiteral("PixelFormat=") + QString::fromLatin1(format),
                QStringLiteral("--duration=%1").arg(kSeconds + 1)});
    if (!tool.waitForFinished((kSeconds + 30) * 1000)) {
        tool.kill();
        tool.waitForFinished(5000);
    }
    const double toolCpu = childrenCpuMs() - childBefore;
    const QString out = QString::fromLocal8Bit(tool.readAllStandardOutput());
    const QRegularExpressionMatch completed =
        QRegularExpression(QStringLiteral("n_completed_buffers\\s*=\\s*(\\d+)")).match(out);
    const double toolFrames = completed.hasMatch() ? completed.captured(1).toDouble() : 0;
    // Over its whole run, the start of the stream included.
    state.counters["arv_camera_test_fps"] = toolFrames / (kSeconds + 1);
    state.counters["arv_camera_test_cpu_ms_per_frame"] = toolFrames > 0 ? toolCpu / toolFrames : 0;
}
BENCHMARK(GenICamLoopback5MpBayer)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

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
