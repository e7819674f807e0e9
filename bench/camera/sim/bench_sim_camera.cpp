// The simulated camera's per-frame cost at 2592x1944 and the bitmap writer,
// each against its baseline timed in the same run: one memcpy of a frame, and
// a raw write of the same bytes.
#include "camera/sim/SimCamera.h"
#include "camera/sim/SimScene.h"
#include "common/SafeFile.h"
#include "media/BmpFile.h"

#include <benchmark/benchmark.h>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QTemporaryDir>
#include <cstring>
#include <vector>

namespace {

constexpr int kWidth = 2592;
constexpr int kHeight = 1944;
constexpr std::size_t kFrameBytes = std::size_t(kWidth) * 3 * kHeight;

void MemcpyOfOneFrame(benchmark::State& state)
{
    std::vector<uchar> src(kFrameBytes, 1), dst(kFrameBytes, 2);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), kFrameBytes);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t(kFrameBytes));
}
BENCHMARK(MemcpyOfOneFrame)->Unit(benchmark::kMillisecond);

// The camera at 2592x1944 without its thread, opened.
std::unique_ptr<tavix::SimCamera> openedCamera(tavix::ManualClock& clock)
{
    tavix::SimCamera::Options o;
    o.defaultMode = 8;
    o.threaded = false;
    auto cam = std::make_unique<tavix::SimCamera>(o, &clock);
    cam->Init();
    cam->Open(0);
    return cam;
}

// A streaming camera without its thread: each step is exactly the producer's
// per-frame work (noise, particle, optional TNR, counters).
struct Streaming {
    explicit Streaming(bool tnr)
    {
        cam = openedCamera(clock);
        cam->SetCamParameter(0, 115, tnr ? 1 : 0);
        cam->Start(0, 0, nullptr, -1, 0);
        cam->produceFrame();  // scene, tables and buffers made once
        cam->produceFrame();
        cam->produceFrame();
    }
    tavix::ManualClock clock;
    std::unique_ptr<tavix::SimCamera> cam;
};

void SimFrame(benchmark::State& state)
{
    Streaming s(false);
    for (auto _ : state) {
        s.clock.advance(33);
        benchmark::DoNotOptimize(s.cam->produceFrame());
    }
}
BENCHMARK(SimFrame)->Unit(benchmark::kMillisecond);

void SimFrameWithTnr(benchmark::State& state)
{
    Streaming s(true);
    for (auto _ : state) {
        s.clock.advance(33);
        benchmark::DoNotOptimize(s.cam->produceFrame());
    }
}
BENCHMARK(SimFrameWithTnr)->Unit(benchmark::kMillisecond);

// The first frame after a gain change: the per-channel tables and the
// processed still scene are rebuilt.
void SimFrameAfterGainChange(benchmark::State& state)
{
    Streaming s(false);
    int gain = 32;
    for (auto _ : state) {
        gain = gain == 32 ? 33 : 32;
        s.cam->SetCamParameter(0, 13, gain);
        benchmark::DoNotOptimize(s.cam->produceFrame());
    }
}
BENCHMARK(SimFrameAfterGainChange)->Unit(benchmark::kMillisecond);

// The first frame after a change of a colour-mixing setting: the colour
// matrix pass as well.
void SimFrameAfterSaturationChange(benchmark::State& state)
{
    Streaming s(false);
    int saturation = 80;
    for (auto _ : state) {
        saturation = saturation == 80 ? 81 : 80;
        s.cam->SetCamParameter(0, 19, saturation);
        benchmark::DoNotOptimize(s.cam->produceFrame());
    }
}
BENCHMARK(SimFrameAfterSaturationChange)->Unit(benchmark::kMillisecond);

// A fresh camera's first frame: the scene, its processing, the noise and
// the frame buffers all made for the first time (what start-up waits for).
void SimFirstFrame(benchmark::State& state)
{
    for (auto _ : state) {
        tavix::ManualClock clock;
        const auto cam = openedCamera(clock);
        cam->Start(0, 0, nullptr, -1, 0);
        benchmark::DoNotOptimize(cam->produceFrame());
    }
}
BENCHMARK(SimFirstFrame)->Unit(benchmark::kMillisecond)->Iterations(5);

// Rendering the still scene for a new mode (once per resolution change).
void SimSceneRender(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(tavix::SimScene::render(QSize(kWidth, kHeight)));
}
BENCHMARK(SimSceneRender)->Unit(benchmark::kMillisecond)->Iterations(5);

// ---- bitmap files ----

QImage frame()
{
    static const QImage image = [] {
        tavix::ManualClock clock;
        return openedCamera(clock)->renderFrame();
    }();
    return image;
}

QString folder()
{
    static QTemporaryDir dir;
    return dir.path();
}

QByteArray bmpBytes()
{
    QByteArray bytes;
    tavix::BmpFile::encode(frame(), bytes);
    return bytes;
}

void RawWriteOfTheSameBytes(benchmark::State& state)
{
    const QByteArray bytes = bmpBytes();
    const QString path = folder() + QStringLiteral("/raw.bmp");
    for (auto _ : state) {
        QFile f(path);
        f.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered);
        benchmark::DoNotOptimize(f.write(bytes));
        f.close();
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(RawWriteOfTheSameBytes)->Unit(benchmark::kMillisecond);

// The same bytes through the temporary-file-and-rename writer every file goes through.
void SafeWriteOfTheSameBytes(benchmark::State& state)
{
    const QByteArray bytes = bmpBytes();
    const QString path = folder() + QStringLiteral("/safe.bmp");
    for (auto _ : state)
        benchmark::DoNotOptimize(tavix::SafeFile::write(path, bytes));
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(SafeWriteOfTheSameBytes)->Unit(benchmark::kMillisecond);

void BmpEncode(benchmark::State& state)
{
    const QImage image = frame();
    QByteArray buffer;
    for (auto _ : state)
        benchmark::DoNotOptimize(tavix::BmpFile::encode(image, buffer));
}
BENCHMARK(BmpEncode)->Unit(benchmark::kMillisecond);

void BmpWrite(benchmark::State& state)
{
    const QImage image = frame();
    const QString path = folder() + QStringLiteral("/ours.bmp");
    QByteArray buffer;
    for (auto _ : state)
        benchmark::DoNotOptimize(tavix::BmpFile::write(path, image, buffer));
}
BENCHMARK(BmpWrite)->Unit(benchmark::kMillisecond);

void SimSaveToFile(benchmark::State& state)
{
    tavix::ManualClock clock;
    tavix::SimCamera::Options o;
    o.defaultMode = 8;
    o.threaded = false;
    tavix::SimCamera cam(o, &clock);
    cam.Init();
    cam.Open(0);
    cam.renderFrame();
    const QString path = folder() + QStringLiteral("/still.bmp");
    for (auto _ : state)
        benchmark::DoNotOptimize(cam.SaveToFile(0, path));
}
BENCHMARK(SimSaveToFile)->Unit(benchmark::kMillisecond);

void QtBmpWrite(benchmark::State& state)
{
    const QImage image = frame();
    const QString path = folder() + QStringLiteral("/qt.bmp");
    for (auto _ : state) {
        QImageWriter writer(path, "bmp");
        benchmark::DoNotOptimize(writer.write(image));
    }
}
BENCHMARK(QtBmpWrite)->Unit(benchmark::kMillisecond);

void RawReadOfTheSameBytes(benchmark::State& state)
{
    const QString path = folder() + QStringLiteral("/rawread.bmp");
    tavix::BmpFile::write(path, frame());
    for (auto _ : state) {
        QFile f(path);
        f.open(QIODevice::ReadOnly);
        benchmark::DoNotOptimize(f.readAll());
    }
}
BENCHMARK(RawReadOfTheSameBytes)->Unit(benchmark::kMillisecond);

void BmpReadIntoTheSamePicture(benchmark::State& state)
{
    const QString path = folder() + QStringLiteral("/read.bmp");
    tavix::BmpFile::write(path, frame());
    QImage image;
    for (auto _ : state)
        benchmark::DoNotOptimize(tavix::BmpFile::read(path, image));
}
BENCHMARK(BmpReadIntoTheSamePicture)->Unit(benchmark::kMillisecond);

void BmpReadFresh(benchmark::State& state)
{
    const QString path = folder() + QStringLiteral("/fresh.bmp");
    tavix::BmpFile::write(path, frame());
    for (auto _ : state) {
        QImage image;
        benchmark::DoNotOptimize(tavix::BmpFile::read(path, image));
    }
}
BENCHMARK(BmpReadFresh)->Unit(benchmark::kMillisecond);

void QtBmpRead(benchmark::State& state)
{
    const QString path = folder() + QStringLiteral("/qtread.bmp");
    tavix::BmpFile::write(path, frame());
    for (auto _ : state)
        benchmark::DoNotOptimize(QImageReader(path, "bmp").read());
}
BENCHMARK(QtBmpRead)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
