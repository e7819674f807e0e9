// Recording the simulated camera at 2592x1944 and 30 fps to a Motion-JPEG AVI
// for a minute (TAVIX_BENCH_SECONDS to change it): the CPU of the encoder's
// thread and of the whole program, against the same camera streaming without
// recording in the same run, the frames written and dropped, the file's size,
// and what ffprobe reads from it.
#include "CpuClock.h"
#include "camera/sim/SimCamera.h"
#include "media/AviRecorder.h"

#include <benchmark/benchmark.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <chrono>
#include <thread>

namespace {

constexpr int kMode = 8;  // 2592 x 1944, 30 fps

int benchSeconds()
{
    const int s = qEnvironmentVariableIntValue("TAVIX_BENCH_SECONDS");
    return s > 0 ? s : 60;
}

double processCpuSeconds()
{
    return tavix::bench::processCpuMs() / 1e3;
}

// CPU seconds of this process's threads whose name starts with `prefix`.
double threadCpuSeconds(const QString& prefix)
{
    double total = 0;
    const long tick = sysconf(_SC_CLK_TCK);
    for (const QString& tid :
         QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile comm(QStringLiteral("/proc/self/task/%1/comm").arg(tid));
        QFile stat(QStringLiteral("/proc/self/task/%1/stat").arg(tid));
        if (!comm.open(QIODevice::ReadOnly) || !stat.open(QIODevice::ReadOnly))
            continue;
        if (!QString::fromUtf8(comm.readAll()).trimmed().startsWith(prefix))
            continue;
        const QString text = QString::fromUtf8(stat.readAll());
        const QStringList fields = text.mid(text.lastIndexOf(QLatin1Char(')')) + 2).split(QLatin1Char(' '));
        total += (fields.value(11).toDouble() + fields.value(12).toDouble()) / double(tick);  // utime, stime
    }
    return total;
}

struct Camera {
    Camera()
    {
        tavix::SimCamera::Options o;
        o.modes = {kMode};
        o.defaultMode = kMode;
        sim = std::make_unique<tavix::SimCamera>(o);
        sim->Init();
        sim->Open(0);
        sim->Start(0, 0, nullptr, -1, 0);
    }
    ~Camera() { sim->Close(0); }
    std::unique_ptr<tavix::SimCamera> sim;
};

double ffprobeDuration(const QString& path)
{
    QProcess p;
    p.start(QStringLiteral("ffprobe"),
            {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
             QStringLiteral("format=duration"), QStringLiteral("-of"),
             QStringLiteral("default=noprint_wrappers=1:nokey=1"), path});
    p.waitForFinished(120000);
    return QString::fromUtf8(p.readAllStandardOutput()).trimmed().toDouble();
}

void StreamingWithoutRecording(benchmark::State& state)
{
    const int seconds = benchSeconds();
    for (auto _ : state) {
        Camera camera;
        const double cpu0 = processCpuSeconds();
        std::this_thread::sleep_for(std::chrono::seconds(seconds));
        state.counters["process_cores"] = (processCpuSeconds() - cpu0) / seconds;
    }
}
BENCHMARK(StreamingWithoutRecording)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

void RecordingMotionJpeg(benchmark::State& state)
{
    const int seconds = benchSeconds();
    QTemporaryDir dir(QDir::currentPath() + QStringLiteral("/bench-avi-XXXXXX"));
    const QString path = dir.filePath(QStringLiteral("clip.avi"));
    for (auto _ : state) {
        Camera camera;
        const double cpu0 = processCpuSeconds();
        const auto wall0 = std::chrono::steady_clock::now();
        if (camera.sim->SaveAvi(0, path, 0, seconds) != 0) {
            state.SkipWithError("SaveAvi failed");
            return;
        }
        std::int32_t writing = 1;
        while (writing != 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            camera.sim->GetCamParameter(0, 24, writing);
            if (writing != 0) {  // the threads end with the file
                const double elapsed =
                    std::chrono::duration<double>(std::chrono::steady_clock::now() - wall0).count();
                state.counters["encoder_cores"] = threadCpuSeconds(QStringLiteral("avi-encoder")) / elapsed;
                // GStreamer's streaming thread, named after appsrc's pad: frame repeats, muxing, writing.
                state.counters["muxer_cores"] = threadCpuSeconds(QStringLiteral("src:src")) / elapsed;
            }
        }
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - wall0).count();
        state.counters["process_cores"] = (processCpuSeconds() - cpu0) / wall;
        tavix::RecordingStats stats;
        camera.sim->recordingStats(0, stats);
        state.counters["frames_written"] = double(stats.framesWritten);
        state.counters["frames_dropped"] = double(stats.framesDropped);
        state.counters["file_MB"] = double(QFileInfo(path).size()) / 1e6;
        state.counters["ffprobe_duration_s"] = ffprobeDuration(path);
        if (!stats.failure.isEmpty())
            state.SkipWithError(qPrintable(stats.failure));
    }
}
BENCHMARK(RecordingMotionJpeg)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
