// Live view and still capture at 2592x1944 on the simulated camera:
// - the display cost of one frame (scaled into the view's buffer and painted)
//   against one memcpy of a frame, the baseline in the same run;
// - frames produced, shown and replaced per second at 30 fps;
// - freeze: the camera's bitmap written and read back into the still;
// - start-up: from the main window's load to the first live frame painted.
#include "BaselineRatio.h"
#include "ProgramFolderBench.h"
#include "ScriptedPrompterBench.h"
#include "SimFrameBench.h"
#include "app/frmMain.h"
#include "camera/LiveView.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "common/Clock.h"
#include "media/BmpFile.h"
#include "media/FrameViewOf.h"

#include <benchmark/benchmark.h>
#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPainter>
#include <QPushButton>
#include <QTemporaryDir>
#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

using namespace tavix;

namespace {

constexpr int kMode = 8;  // 2592x1944
const QSize kView(1000, 750);

QImage fullFrame()
{
    return bench::simFrame(kMode);
}

using bench::programFolder;

// Our display path for one frame: handed over, scaled into the view's
// buffer, taken and painted into the window.
struct OurDisplay {
    explicit OurDisplay(const QImage& frame) : frame(frame), window(kView, QImage::Format_RGB32)
    {
        view.setDisplaySize(kView);
    }
    void operator()()
    {
        view.frameReady(frameViewOf(frame));
        QPainter painter(&window);
        painter.drawImage(0, 0, *view.takeFrame());
    }
    const QImage& frame;
    LiveView view;
    QImage window;
};

// Against one memcpy of the camera frame.
void DisplayOneFrame(benchmark::State& state)
{
    const QImage frame = fullFrame();
    std::vector<uchar> target(static_cast<size_t>(frame.sizeInBytes()));
    OurDisplay ours(frame);
    bench::timeAgainstBaseline(state, ours, [&] {
        std::memcpy(target.data(), frame.constBits(), target.size());
        benchmark::ClobberMemory();
    });
}
BENCHMARK(DisplayOneFrame)->Unit(benchmark::kMillisecond)->UseManualTime();

// The same without painting: what the driver's thread spends on a frame.
void ScaleOneFrame(benchmark::State& state)
{
    const QImage frame = fullFrame();
    std::vector<uchar> target(static_cast<size_t>(frame.sizeInBytes()));
    LiveView view;
    view.setDisplaySize(kView);
    bench::timeAgainstBaseline(
        state,
        [&] {
            view.frameReady(frameViewOf(frame));
            benchmark::DoNotOptimize(view.takeFrame());
        },
        [&] {
            std::memcpy(target.data(), frame.constBits(), target.size());
            benchmark::ClobberMemory();
        });
}
BENCHMARK(ScaleOneFrame)->Unit(benchmark::kMillisecond)->UseManualTime();

// GStreamer's own display path on the same frames: scaled to the view's size
// and converted to the window's pixel layout, then handed to a sink (an
// application sink here, so that each frame is waited for; a window sink
// would add the same blit as our painter does).
class GStreamerDisplay {
public:
    explicit GStreamerDisplay(const QImage& frame) : frame_(frame)
    {
        const QString description =
            QStringLiteral(
                "appsrc name=src format=time caps=video/x-raw,format=RGB,width=%1,height=%2,framerate=30/1 ! "
                "videoscale ! video/x-raw,width=%3,height=%4 ! videoconvert ! video/x-raw,format=BGRx ! "
                "appsink name=sink sync=false max-buffers=1")
                .arg(frame.width())
                .arg(frame.height())
                .arg(kView.width())
                .arg(kView.height());
        GError* error = nullptr;
        pipeline_ = gst_parse_launch(description.toUtf8().constData(), &error);
        if (error) {
            g_error_free(error);
            return;
        }
        src_ = gst_bin_get_by_name(GST_BIN(pipeline_), "src");
        sink_ = gst_bin_get_by_name(GST_BIN(pipeline_), "sink");
        gst_element_set_state(pipeline_, GST_STATE_PLAYING);
    }
    ~GStreamerDisplay()
    {
        if (!pipeline_)
            return;
        gst_element_set_state(pipeline_, GST_STATE_NULL);
        gst_object_unref(src_);
        gst_object_unref(sink_);
        gst_object_unref(pipeline_);
    }
    bool ok() const { return src_ && sink_; }
    void operator()()
    {
        // The frame's memory is lent, not copied, as a camera's would be.
        GstBuffer* buffer =
            gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, const_cast<uchar*>(frame_.constBits()),
                                        static_cast<gsize>(frame_.sizeInBytes()), 0,
                                        static_cast<gsize>(frame_.sizeInBytes()), nullptr, nullptr);
        GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(frames_++) * GST_SECOND / 30;
        gst_app_src_push_buffer(GST_APP_SRC(src_), buffer);
        if (GstSample* sample = gst_app_sink_pull_sample(GST_APP_SINK(sink_)))
            gst_sample_unref(sample);
    }

private:
    const QImage& frame_;
    GstElement* pipeline_ = nullptr;
    GstElement* src_ = nullptr;
    GstElement* sink_ = nullptr;
    std::uint64_t frames_ = 0;
};

// Ours against GStreamer's, frame for frame in the same run.
void DisplayOneFrameVsGStreamer(benchmark::State& state)
{
    const QImage frame = fullFrame();  // RGB888 with rows of 2592 * 3 bytes: no padding
    GStreamerDisplay peer(frame);
    if (!peer.ok()) {
        state.SkipWithError("the GStreamer pipeline could not be built");
        return;
    }
    OurDisplay ours(frame);
    bench::timeAgainstBaseline(state, ours, peer);
}
BENCHMARK(DisplayOneFrameVsGStreamer)->Unit(benchmark::kMillisecond)->UseManualTime();

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

// The first window of the process pays for what is made once (fonts, styles,
// image plug-ins) and for memory the system has not handed out before; it is
// reported by itself beside the median of the later ones.
void StartupToFirstLiveFrame(benchmark::State& state)
{
    const QString folder = programFolder();
    std::vector<double> ms;
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
        ms.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        state.SetIterationTime(ms.back() / 1000.0);
        w.setConfirmOnClose(false);
    }
    state.counters["first_ms"] = ms.front();
    std::vector<double> later(ms.begin() + 1, ms.end());
    std::nth_element(later.begin(), later.begin() + later.size() / 2, later.end());
    state.counters["later_median_ms"] = later.empty() ? 0 : later[later.size() / 2];
}
BENCHMARK(StartupToFirstLiveFrame)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    gst_init(nullptr, nullptr);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
