// Drawing measurements: the full redraw of a picture's overlay layer and one
// rubber-band step of the view, against a copy of a frame's bytes (the
// baseline in the same run).
#include "measure/MeasurementPainter.h"
#include "measure/MeasurementStore.h"
#include "measure/ToolFactory.h"

#include <benchmark/benchmark.h>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace {

using namespace tavix;

constexpr int PictureWidth = 2592;
constexpr int PictureHeight = 1944;

MeasureContext context()
{
    MeasureContext c;
    c.units.xFactor = 0.5;
    c.units.yFactor = 0.5;
    c.decimals = 3;
    return c;
}

OverlayStyle style()
{
    OverlayStyle s;
    s.lineColors = {Qt::black, QColor(255, 0, 0), QColor(0, 0, 255), QColor(0, 255, 0)};
    s.valueColors = {Qt::black, QColor(255, 255, 0), QColor(0, 255, 255)};
    s.fontPointSize = 10;
    return s;
}

// 999 measurements of every kind of tool spread over the picture, the same
// each run (more than the table's 999 rows, since circle-to-circle takes two).
const MeasurementStore& fullStore()
{
    static const MeasurementStore store = [] {
        MeasurementStore s;
        std::mt19937 random(1234);
        std::uniform_real_distribution<double> x(100, PictureWidth - 100), y(100, PictureHeight - 100);
        std::uniform_real_distribution<double> d(-80, 80);
        const int tools[] = {101, 108, 102, 109, 104, 105, 106, 107, 100, 103};
        int row = 1, i = 0;
        while (s.size() < 999) {
            const int tool = tools[i++ % 10];
            const PointD c{x(random), y(random)};
            std::vector<PointD> points;
            const int count = tool == 103 ? 6 : tool == 107 ? 5 : (tool == 105 || tool == 106) ? 4 : 3;
            for (int k = 0; k < count; ++k)
                points.push_back({c.x + d(random) + (tool == 103 && k >= 3 ? 200 : 0), c.y + d(random)});
            if (tool == 101)
                points.resize(2);
            std::optional<Measurement> m = ToolFactory::measure(tool, points, context());
            if (!m)
                continue;
            const int rows = static_cast<int>(m->values.size());
            s.add(std::move(*m), row);
            row += rows;
        }
        return s;
    }();
    return store;
}

void FullRedraw999Measurements(benchmark::State& state)
{
    const MeasurementStore& store = fullStore();
    const MeasurementPainter painter(style());
    QImage layer(PictureWidth, PictureHeight, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        painter.paintLayer(layer, store, {});
        benchmark::DoNotOptimize(layer.constBits());
    }
    state.counters["measurements"] = store.size();
}
BENCHMARK(FullRedraw999Measurements)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(9)
    ->ReportAggregatesOnly(true);

// One mouse move over the view: the still picture and the cached overlay
// layer copied in at the view's magnification, then the rubber band of a
// circle in the making drawn over them.
void PreviewStep(benchmark::State& state, double magnification)
{
    const MeasurementPainter painter(style());
    QImage picture(PictureWidth, PictureHeight, QImage::Format_RGB32);
    picture.fill(QColor(90, 110, 90));
    QImage layer(PictureWidth, PictureHeight, QImage::Format_ARGB32_Premultiplied);
    painter.paintLayer(layer, fullStore(), {});
    QImage view(1000, 750, QImage::Format_ARGB32_Premultiplied);

    const QPointF offset(800 * magnification, 600 * magnification);
    const QTransform toView = MeasurementPainter::viewTransform(magnification, offset);
    const QRectF source = toView.inverted().mapRect(QRectF(view.rect()));
    std::unique_ptr<MeasureTool> tool = ToolFactory::create(102);
    tool->addPoint({1100, 900});
    tool->addPoint({1200, 800});
    double step = 0;
    for (auto _ : state) {
        step = step > 100 ? 0 : step + 1;
        QPainter p(&view);
        p.drawImage(QRectF(view.rect()), picture, source);
        p.drawImage(QRectF(view.rect()), layer, source);
        painter.paint(p, tool->preview({1300 + step, 950 - step}, context()), toView);
        p.end();
        benchmark::DoNotOptimize(view.constBits());
    }
}
BENCHMARK_CAPTURE(PreviewStep, AtOne, 1.0)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(9)
    ->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(PreviewStep, WholePictureInView, 1000.0 / PictureWidth)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(9)
    ->ReportAggregatesOnly(true);

// Only the rubber band: computing and drawing the preview shape.
void PreviewShapeOnly(benchmark::State& state)
{
    const MeasurementPainter painter(style());
    QImage view(1000, 750, QImage::Format_ARGB32_Premultiplied);
    view.fill(Qt::transparent);
    std::unique_ptr<MeasureTool> tool = ToolFactory::create(102);
    tool->addPoint({300, 300});
    tool->addPoint({400, 200});
    double step = 0;
    for (auto _ : state) {
        step = step > 100 ? 0 : step + 1;
        QPainter p(&view);
        painter.paint(p, tool->preview({500 + step, 350 - step}, context()), {});
        p.end();
        benchmark::DoNotOptimize(view.constBits());
    }
}
BENCHMARK(PreviewShapeOnly)->Unit(benchmark::kMicrosecond)->Repetitions(9)->ReportAggregatesOnly(true);

// Baseline: one copy of a 2592x1944 RGB frame.
void MemcpyOfAFrame(benchmark::State& state)
{
    const std::size_t size = static_cast<std::size_t>(PictureWidth) * PictureHeight * 3;
    std::vector<unsigned char> from(size, 1), to(size, 0);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MemcpyOfAFrame)->Unit(benchmark::kMillisecond)->Repetitions(9)->ReportAggregatesOnly(true);

}  // namespace

int main(int argc, char** argv)
{
    // Labels need fonts, which need a GUI application; no screen is used.
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
