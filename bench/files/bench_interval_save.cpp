// One picture of an interval series at 2592x1944, quality 75, against the JPEG
// encoder alone on the same frame, timed in turn with it (ours_ms, base_ms,
// ratio). crosses:1 runs the whole
// step with two cross lines: the camera hands over its frame, the program
// draws the crosses and writes the JPEG (temporary name, flushed, renamed).
// crosses:2 is the same for a camera that only writes files, as the vendor's
// library does: the temporary bitmap is written and read back first. The
// temporary bitmap is the program's scratch file, as the start-up names it:
// written without waiting for the disk, which only the final file waits for.
// crosses:0 has the simulated camera write the JPEG itself.
// SeriesPictureWritten holds the same steps to the encoder plus the safe
// write of its bytes, which every picture of a series needs (and, for the
// camera that only writes files, its own write of the bitmap): what is left
// is the program's own share.
#include "camera/sim/SimCamera.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/SafeFile.h"
#include "files/IntervalShot.h"
#include "media/FrameFile.h"
#include "media/JpegWriter.h"

#include "BaselineRatio.h"
#include "ScriptedPrompterBench.h"

#include <benchmark/benchmark.h>
#include <QTemporaryDir>

using namespace tavix;

namespace {

constexpr int kMode = 8;  // 2592x1944
constexpr int kQuality = 75;

class FileCamera : public SimCamera {
public:
    using SimCamera::SimCamera;
    bool canGrabFrame() const override { return false; }
};

// A camera with one frame ready, as in a running series.
struct Camera {
    explicit Camera(bool filesOnly)
    {
        SimCamera::Options options;
        options.threaded = false;
        sim = filesOnly ? std::make_unique<FileCamera>(options) : std::make_unique<SimCamera>(options);
        sim->Init();
        sim->Open(0);
        sim->SetMode(0, kMode);
        frame = sim->renderFrame();
    }
    std::unique_ptr<SimCamera> sim;
    QImage frame;
};

Camera& camera(bool filesOnly = false)
{
    static Camera framesOver(false);
    static Camera files(true);
    return filesOnly ? files : framesOver;
}

QString scratch(const char* name)
{
    static QTemporaryDir dir(QStringLiteral("bench_interval_save"));  // in the working folder, on disk
    return dir.filePath(QLatin1String(name));
}

// The start-up's TEMPBITMAPFILE; a series' temporary bitmaps are named after it.
const QString& tempBitmap()
{
    static const QString path = [] {
        const QString p = scratch("TavixStill.bmp");
        FrameFile::setScratchBitmap(p);
        return p;
    }();
    return path;
}

// The baseline the series picture is held to: the JPEG encoder alone, or
// (`written`) the encoder and the same safe write of its bytes under the
// final name, which waits for the disk, after the camera's own write of the
// temporary bitmap for a camera that only writes files.
void seriesPicture(benchmark::State& state, bool written)
{
    const bool crosses = state.range(0) != 0;
    const bool filesOnly = state.range(0) == 2;
    ManualClock clock;
    ErrorLog log(scratch("Error.Log"));
    MessageTable messages;
    bench::SilentPrompter prompter;
    IntervalShot shot(*camera(filesOnly).sim, log, messages, prompter, clock);
    IntervalShot::Job job;
    job.finalFile = scratch("cell_001.jpg");
    job.temporaryFile = tempBitmap().chopped(4) + QStringLiteral("_001.bmp");
    job.crosses.draw = crosses;
    job.crosses.count = 2;
    job.crosses.points = {QPoint(1296, 972), QPoint(400, 300)};
    job.crosses.color = Qt::red;
    job.jpegQuality = kQuality;
    QByteArray bytes;
    bool failed = false;
    const QString baselineFile = scratch("baseline.jpg");
    bench::timeAgainstBaseline(
        state, [&] { failed = failed || shot.save(job) != IntervalShot::Outcome::Saved; },
        [&] {
            failed = failed || JpegWriter::encode(camera().frame, kQuality, bytes) != JpegWriter::kOk ||
                     (written && filesOnly && camera(true).sim->SaveToFile(0, job.temporaryFile) != 0) ||
                     (written && SafeFile::write(baselineFile, bytes) != 0);
        });
    if (failed)
        state.SkipWithError("the picture could not be saved");
}

}  // namespace

int main(int argc, char** argv)
{
    for (const bool written : {false, true})
        benchmark::RegisterBenchmark(written ? "SeriesPictureWritten" : "SeriesPicture",
                                     [written](benchmark::State& state) { seriesPicture(state, written); })
            ->ArgName("crosses")
            ->Arg(1)
            ->Arg(2)
            ->Arg(0)
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
