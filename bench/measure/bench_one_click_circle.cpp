// The one-click circle on the simulated camera's stills: from the click to the
// fitted circle, for both discs at three resolutions, and the caliper's
// profile and edges across the micrometer; against one memcpy of a
// 2592x1944 RGB frame (the baseline in the same run).
#include "camera/sim/SimCamera.h"
#include "camera/sim/SimScene.h"
#include "measure/CaliperTool.h"
#include "measure/OneClickCircle.h"

#include <benchmark/benchmark.h>
#include <QGuiApplication>
#include <QImage>

#include <cstring>
#include <vector>

namespace {

using namespace tavix;

// The simulated camera's resolution indices: 640x480, 1280x1024, 2592x1944.
constexpr int kModes[] = {1, 5, 8};

const QImage& still(int mode)
{
    static QImage stills[9];
    QImage& s = stills[mode];
    if (s.isNull()) {
        SimCamera::Options o;
        o.defaultMode = mode;
        o.threaded = false;
        SimCamera camera(o);
        camera.Init();
        camera.Open(0);
        s = camera.renderFrame();
    }
    return s;
}

PointD at(const QImage& picture, QPointF um)
{
    const QPointF p = SimScene::toPixel(picture.size(), um);
    return {p.x(), p.y()};
}

void OneClickCircleFind(benchmark::State& state)
{
    const QImage& picture = still(kModes[state.range(0)]);
    const SimScene::Circle& disc =
        state.range(1) == 0 ? SimScene::geometry().largeCircle : SimScene::geometry().smallCircle;
    // Off the centre, as a user clicks.
    const PointD click = at(picture, disc.centre + QPointF(disc.diameter / 6, -disc.diameter / 8));
    int edges = 0;
    for (auto _ : state) {
        const EdgeSnap snap(picture);
        const auto circle = OneClickCircle::find(snap, click);
        if (!circle) {
            state.SkipWithError("no circle");
            break;
        }
        edges = static_cast<int>(circle->edges.size());
        benchmark::DoNotOptimize(circle->radius);
    }
    state.counters["width"] = picture.width();
    state.counters["edges"] = edges;
    state.SetLabel(state.range(1) == 0 ? "large disc" : "small disc");
}
BENCHMARK(OneClickCircleFind)
    ->ArgsProduct({{0, 1, 2}, {0, 1}})
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// A caliper line over every tick of the micrometer.
void CaliperAcrossTheMicrometer(benchmark::State& state)
{
    const QImage& picture = still(kModes[state.range(0)]);
    const SimScene::Scale& s = SimScene::geometry().horizontalScale;
    const double y = s.zero.y() - s.shortTick / 2;
    const PointD from = at(picture, {s.zero.x() - 15, y});
    const PointD to = at(picture, {s.zero.x() + s.length + 15, y});
    std::size_t edges = 0;
    for (auto _ : state) {
        const CaliperTool::Profile profile = CaliperTool::profileAlong(picture, from, to);
        edges = profile.edges.size();
        benchmark::DoNotOptimize(profile.edges.data());
    }
    state.counters["width"] = picture.width();
    state.counters["edges"] = static_cast<double>(edges);
}
BENCHMARK(CaliperAcrossTheMicrometer)
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// Baseline: one copy of a 2592x1944 RGB frame.
void MemcpyOfAFrame(benchmark::State& state)
{
    const std::size_t size = std::size_t(2592) * 1944 * 3;
    std::vector<unsigned char> from(size, 1), to(size, 0);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MemcpyOfAFrame)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

}  // namespace

int main(int argc, char** argv)
{
    // The simulated camera paints its slide, which needs a GUI application; no screen is used.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
