// Live view and still capture at 2592x1944 on the simulated camera:
// - the display cost of one frame (scaled into the view's buffer and painted)
//   against one memcpy of a frame, the baseline in the same run;
// - frames produced, shown and replaced per second at 30 fps;
// - freeze: the camera's bitmap written and read back into the still;
// - start-up: from the main window's load to the first live frame painted.
#include "ScriptedPrompterBench.h"
#include "SimFrameBench.h"
#include "app/frmMain.h"
#include "camera/LiveView.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "common/Clock.h"
#include "media/BmpFile.h"

#include <benchmark/benchmark.h>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPainter>
#include <QPushButton>
#include <QTemporaryDir>
#include <cstring>
#include <thread>

using namespace tavix;

namespace {

constexpr int kMode = 8;  // 2592x1944
const QSize kView(1000, 750);

QImage fullFrame()
{
    return bench::simFrame(kMode);
}

using bench::viewOf;

void MemcpyOfOneFrame(benchmark::State& state)
{
    const QImage frame = fullFrame();
    std::vector<uchar> target(static_cast<size_t>(frame.sizeInBytes()));
    for (auto _ : state) {
        std::memcpy(target.data(), frame.constBits(), target.size());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MemcpyOfOneFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

void DisplayOneFrame(benchmark::State& state)
{
    const QImage frame = fullFrame();
    LiveView view;
    view.setDisplaySize(kView);
    QImage window(kView, QImage::Format_RGB32);
    for (auto _ : state) {
        view.frameReady(viewOf(frame));
        QPainter painter(&window);
        painter.drawImage(0, 0, *view.takeFrame());
    }
}
BENCHMARK(DisplayOneFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

// Three seconds of streaming; a consumer paints at up to 60 Hz like a screen.
void StreamAt30Fps(benchmark::State& state)
{
    for (auto _ : state) {
        SimCamera sim;
        sim.Init();
        sim.Open(0);
        sim.SetMode(0, kMode);
        LiveView view;
        view.setDisplaySize(kView);
        QImage window(kView, QImage::Format_RGB32);
        sim.Start(0, 0, &view, -1, 0);
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 3000) {
            if (const QImage* f = view.takeFrame()) {
                QPainter painter(&window);
                painter.drawImage(0, 0, *f);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(16));
        }
        sim.Stop(0);
        const double seconds = timer.elapsed() / 1000.0;
        view.takeFrame();  // the frame that was waiting when the stream stopped
        std::int32_t good = 0;
        sim.GetGoodFrames(0, good);
        const auto c = view.counters();
        state.counters["produced/s"] = good / seconds;
        state.counters["received/s"] = static_cast<double>(c.received) / seconds;
        state.counters["shown/s"] = static_cast<double>(c.shown) / seconds;
        state.counters["replaced/s"] = static_cast<double>(c.replaced) / seconds;
        state.counters["lost"] = static_cast<double>(c.received - c.shown - c.replaced);
    }
}
BENCHMARK(StreamAt30Fps)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

// The still path: the camera writes its frame, the program reads it back.
void FreezeWriteAndRead(benchmark::State& state)
{
    SimCamera::Options options;
    options.threaded = false;
    SimCamera sim(options);
    sim.Init();
    sim.Open(0);
    sim.SetMode(0, kMode);
    sim.renderFrame();
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("still.bmp"));
    QImage still;
    for (auto _ : state) {
        sim.SaveToFile(0, path);
        BmpFile::read(path, still);
    }
}
BENCHMARK(FreezeWriteAndRead)->Unit(benchmark::kMillisecond)->UseRealTime();

QString programFolder()
{
    static QTemporaryDir dir;
    const QDir source(QStringLiteral(TAVIX_SOURCE_DATA_DIR));
    for (const QString& name : source.entryList(QDir::Files))
        QFile::copy(source.filePath(name), dir.filePath(name));
    return dir.path();
}

frmMain::DriverFactory simAtFullSize()
{
    return [](AppData& data) {
        data.settings.DEFAULTRESOLUTION = kMode;
        return std::unique_ptr<CameraDriver>(std::make_unique<SimCamera>());
    };
}

// From the click on cmdPlayStop to the still shown (painted).
void FreezeClickToStillShown(benchmark::State& state)
{
    const QString folder = programFolder();
    bench::SilentPrompter prompter;
    SystemClock clock;
    frmMain w(folder, prompter, clock, simAtFullSize());
    w.Form_Load();
    w.resize(1400, 900);
    w.show();
    QElapsedTimer wait;
    wait.start();
    while (w.camera().liveView().counters().shown == 0 && wait.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    auto* button = w.findChild<QPushButton*>(QStringLiteral("cmdPlayStop"));
    for (auto _ : state) {
        button->click();  // to the still
        w.repaint();
        state.PauseTiming();
        button->click();  // back to live
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
    w.setConfirmOnClose(false);
}
BENCHMARK(FreezeClickToStillShown)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);

void StartupToFirstLiveFrame(benchmark::State& state)
{
    const QString folder = programFolder();
    for (auto _ : state) {
        bench::SilentPrompter prompter;
        SystemClock clock;
        QElapsedTimer timer;
        timer.start();
        frmMain w(folder, prompter, clock, simAtFullSize());
        w.Form_Load();
        w.resize(1400, 900);
        w.show();
        while (w.camera().liveView().counters().shown == 0 && timer.elapsed() < 10000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        state.SetIterationTime(timer.elapsed() / 1000.0);
        w.setConfirmOnClose(false);
    }
}
BENCHMARK(StartupToFirstLiveFrame)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
