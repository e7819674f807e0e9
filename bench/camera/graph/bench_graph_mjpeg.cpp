// A 1920x1080 Motion-JPEG camera at 30 fps through the graph camera, the
// test webcam source sending the same JPEG frame again and again (a real
// camera's hardware makes them), for a few seconds per run:
// - live view: process CPU per displayed frame, decoding included, at the
//   size the view shows (960x540: decoded at half size) and, beside it, at
//   full size; as a ratio to one memcpy of a full RGB frame timed in the same
//   run; frames lost (made by the source, never handed over) and replaced
//   unseen by a newer one;
// - recording that source: process CPU while recording in cores, beside the
//   same stream without recording, and the frames in the file that are not
//   the camera's own bytes (re-encoded ones);
// - the source alone into a sink that does nothing, for the source's share.
#include "AviFrames.h"
#include "FakeWebcamSource.h"
#include "LiveStreamBench.h"
#include "camera/LiveView.h"
#include "camera/graph/GraphDriver.h"

#include <benchmark/benchmark.h>
#include <gst/gst.h>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <thread>

using namespace tavix;
using tavix::test::FakeWebcamSource;

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kSeconds = 4;
constexpr char kOffers[] = "image/jpeg,width=1920,height=1080,framerate=30/1";

// The median time of one memcpy of a full RGB frame, in milliseconds.
double memcpyMs()
{
    const size_t bytes = size_t(kWidth) * kHeight * 3;
    std::vector<uchar> src(bytes, 1), dst(bytes, 2);
    std::vector<double> times;
    for (int i = 0; i < 21; ++i) {
        const double before = bench::processCpuMs();
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::DoNotOptimize(dst.data());
        times.push_back(bench::processCpuMs() - before);
    }
    std::nth_element(times.begin(), times.begin() + 10, times.end());
    return times[10];
}

QString graphFile(const QTemporaryDir& dir)
{
    const QString path = dir.filePath(QStringLiteral("Camera.grf"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(QByteArray("tavixwebcamsrc offers=\"") + kOffers + "\" ! identity name=Camera");
    return path;
}

// range(0): 1 when the view tells its size (960x540), 0 when frames are decoded at full size.
void GraphMjpegLive(benchmark::State& state)
{
    FakeWebcamSource::registerElement();
    QTemporaryDir dir;
    GraphDriver driver(graphFile(dir), QStringLiteral("Camera"));
    if (driver.Init() < 1 || driver.Open(0) != 0) {
        state.SkipWithError("no source");
        return;
    }
    const QSize view(960, 540);
    LiveView live;
    live.setDisplaySize(view);
    bench::TimedLiveView sink(live, state.range(0) ? view : QSize());
    const double copyMs = memcpyMs();

    for (auto _ : state) {
        const bench::LiveFigures f = bench::watchLive(driver, sink, live, view, 500, kSeconds);
        state.counters["cpu_ms_per_shown_frame"] = f.cpuPerShownMs();
        state.counters["display_ms"] = f.displayPerShownMs();
        state.counters["memcpy_ms"] = copyMs;
        state.counters["ratio_to_memcpy"] = copyMs > 0 ? f.cpuPerShownMs() / copyMs : 0;
        state.counters["fps"] = f.frames / f.seconds;
        state.counters["lost"] = f.lost;
        state.counters["replaced"] = f.replaced;
    }
}
BENCHMARK(GraphMjpegLive)
    ->Arg(1)
    ->Arg(0)
    ->ArgName("view_size")
    ->Iterations(1)
    ->Repetitions(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// range(0): 1 recording, 0 streaming only (the baseline).
void GraphMjpegRecording(benchmark::State& state)
{
    FakeWebcamSource::registerElement();
    QTemporaryDir dir;
    GraphDriver driver(graphFile(dir), QStringLiteral("Camera"));
    if (driver.Init() < 1 || driver.Open(0) != 0) {
        state.SkipWithError("no source");
        return;
    }
    LiveView live;
    live.setDisplaySize(QSize(960, 540));
    bench::TimedLiveView sink(live, QSize(960, 540));
    const QByteArray sent = FakeWebcamSource::jpegFrame(QSize(kWidth, kHeight));
    const QString clip = dir.filePath(QStringLiteral("clip.avi"));

    for (auto _ : state) {
        driver.Start(0, 0, &sink, -1, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        const bool recording = state.range(0) != 0;
        if (recording && driver.SaveAvi(0, clip, 0, kSeconds) != 0) {
            state.SkipWithError("recording did not start");
            return;
        }
        const double cpuBefore = bench::processCpuMs();
        QElapsedTimer wall;
        wall.start();
        std::int32_t writing = 1;
        while (recording ? writing != 0 : wall.elapsed() < kSeconds * 1000) {
            live.takeFrame();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            if (recording)
                driver.GetCamParameter(0, 24, writing);
        }
        const double cpu = bench::processCpuMs() - cpuBefore;
        const double seconds = wall.elapsed() / 1000.0;
        driver.Stop(0);
        state.counters["cores"] = cpu / 1000.0 / seconds;
        if (recording) {
            const QList<QByteArray> frames = test::aviFrames(clip);
            state.counters["frames_in_file"] = frames.size();
            state.counters["frames_reencoded"] = double(
                std::count_if(frames.begin(), frames.end(), [&](const QByteArray& f) { return f != sent; }));
            RecordingStats stats;
            driver.recordingStats(0, stats);
            state.counters["dropped"] = double(stats.framesDropped);
        }
    }
}
BENCHMARK(GraphMjpegRecording)
    ->Arg(0)
    ->Arg(1)
    ->ArgName("recording")
    ->Iterations(1)
    ->Repetitions(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// A freeze of a 2592x1944 Motion-JPEG camera: the held frame decoded at full
// size and copied out, as the still is taken; wall time per freeze.
void GraphMjpegFreeze(benchmark::State& state)
{
    FakeWebcamSource::registerElement();
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Camera.grf"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(
        "tavixwebcamsrc offers=\"image/jpeg,width=2592,height=1944,framerate=15/1\" ! identity name=Camera");
    file.close();
    GraphDriver driver(path, QStringLiteral("Camera"));
    LiveView live;
    bench::TimedLiveView sink(live, QSize(960, 720));
    if (driver.Init() < 1 || driver.Open(0) != 0 || driver.Start(0, 0, &sink, -1, 0) != 0) {
        state.SkipWithError("no source");
        return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    QImage still;
    for (auto _ : state) {
        state.PauseTiming();
        std::this_thread::sleep_for(std::chrono::milliseconds(70));  // a new frame to develop
        state.ResumeTiming();
        driver.GrabFrame(0, still);
    }
    driver.Stop(0);
}
BENCHMARK(GraphMjpegFreeze)->Iterations(20)->Repetitions(3)->Unit(benchmark::kMillisecond)->UseRealTime();

// The source alone: its own cost per frame in this process.
void WebcamSourceAlone(benchmark::State& state)
{
    FakeWebcamSource::registerElement();
    const QByteArray description = QByteArray("tavixwebcamsrc offers=\"") + kOffers +
                                   "\" num-buffers=" + QByteArray::number(kSeconds * 30) + " ! fakesink";
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
BENCHMARK(WebcamSourceAlone)->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond)->UseRealTime();

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
