// The one-click circle on the simulated camera's slide: from the click to the
// fitted circle, for both discs at three resolutions, and the caliper's
// profile and edges across the micrometer; against one memcpy of a
// 2592x1944 RGB frame (the baseline in the same run).
#include "camera/sim/SimScene.h"
#include "measure/CaliperTool.h"
#include "measure/OneClickCircle.h"

#include <benchmark/benchmark.h>
#include <QGuiApplication>
#include <QImage>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {

using namespace tavix;

constexpr QSize kSizes[] = {{640, 480}, {1280, 1024}, {2592, 1944}};

// The slide as the sensor sees it, with about the camera's noise (1.6 grey levels).
const QImage& still(int size)
{
    static QImage stills[3];
    QImage& s = stills[size];
    if (s.isNull()) {
        s = SimScene::render(kSizes[size]);
        std::mt19937 random(7);
        std::normal_distribution<double> noise(0, 1.6);
        for (int y = 0; y < s.height(); ++y) {
            uchar* line = s.scanLine(y);
            for (int x = 0; x < 3 * s.width(); ++x)
                line[x] = static_cast<uchar>(std::clamp(line[x] + noise(random), 0.0, 255.0));
        }
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
    const QImage& picture = still(static_cast<int>(state.range(0)));
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

// A caliper line over every tick of the micrometer: its band profile and edges.
void CaliperAcrossTheMicrometer(benchmark::State& state)
{
    const QImage& picture = still(static_cast<int>(state.range(0)));
    const SimScene::Scale& s = SimScene::geometry().horizontalScale;
    const double y = s.zero.y() - s.shortTick / 2;
    const PointD from = at(picture, {s.zero.x() - 15, y});
    const PointD to = at(picture, {s.zero.x() + s.length + 15, y});
    std::size_t edges = 0;
    for (auto _ : state) {
        const auto found = EdgeSnap::edgesOf(EdgeSnap(picture).profile(from, to, CaliperTool::kBand));
        edges = found.size();
        benchmark::DoNotOptimize(found.data());
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
    // The slide is painted, which needs a GUI application; no screen is used.
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
