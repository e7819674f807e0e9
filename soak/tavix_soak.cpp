// Long run of the program on the simulated camera at 2592x1944 and 30 fps:
// every few seconds a freeze, a measurement, a picture save and a return to
// live, as a user at an inspection stand works. Samples the process every
// ten seconds (memory, threads, open files, frames) and prints them as CSV,
// then a summary. With --check it fails when frames were lost or threads or
// open files grew after the warm-up.
#include "app/frmMain.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/Clock.h"
#include "common/PictureMemory.h"
#include "common/Prompter.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"

#include <malloc.h>
#include <QAbstractButton>
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>
#include <vector>

using namespace tavix;

namespace {

// Memory is judged only on the C library's own allocator: the address
// sanitizer's holds freed memory back on purpose.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kJudgeMemory = false;
#else
constexpr bool kJudgeMemory = true;
#endif

// Answers as the user at the stand does: yes, and always the same file name.
class StandPrompter : public Prompter {
public:
    QString pictureName;
    int messages = 0;
    Answer message(const Message& m) override
    {
        ++messages;
        return m.buttons == Buttons::Ok ? Answer::Ok : Answer::Yes;
    }
    std::optional<QString> input(const QString&, const QString&, const QString& defaultText) override
    {
        return defaultText;
    }
    QString fileName(const FileRequest&) override { return pictureName; }
    QColor color(const QColor& start) override { return start; }
    QString folder(const QString&, const QString& start) override { return start; }
};

struct Sample {
    double seconds = 0;
    qint64 rssKb = 0;
    // The allocator's view: bytes handed out, bytes held free in its heaps, bytes in mapped blocks.
    qint64 heapUsedKb = 0, heapFreeKb = 0, mappedKb = 0;
    int threads = 0;
    int files = 0;
    std::int64_t received = 0, shown = 0, replaced = 0, good = 0, broken = 0;
    int cycles = 0;
};

qint64 statusField(const QByteArray& status, const char* name)
{
    for (const QByteArray& line : status.split('\n'))
        if (line.startsWith(name))
            return line.mid(qstrlen(name)).trimmed().split(' ').first().toLongLong();
    return -1;
}

bool copyData(const QString& from, const QString& to)
{
    for (const QString& name : QDir(from).entryList(QDir::Files)) {
        QFile::remove(QDir(to).filePath(name));
        if (!QFile::copy(QDir(from).filePath(name), QDir(to).filePath(name)))
            return false;
        QFile::setPermissions(QDir(to).filePath(name), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    return true;
}

void click(frmMain& w, const QString& name)
{
    if (auto* button = w.findChild<QAbstractButton*>(name))
        QTest::mouseClick(button, Qt::LeftButton);
}

}  // namespace

int main(int argc, char** argv)
{
    PictureMemory::keepLargeBlocksSeparate();  // as the program does
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser options;
    options.addOption({QStringLiteral("minutes"), QStringLiteral("Length of the run."), QStringLiteral("n"),
                       QStringLiteral("2")});
    options.addOption({QStringLiteral("period"), QStringLiteral("Seconds between freezes (0: live only)."),
                       QStringLiteral("s"), QStringLiteral("3")});
    options.addOption(
        {QStringLiteral("check"), QStringLiteral("Fail on lost frames or growing threads/files.")});
    options.process(app);
    const double minutes = options.value(QStringLiteral("minutes")).toDouble();
    const int periodMs = int(options.value(QStringLiteral("period")).toDouble() * 1000);

    QTemporaryDir folder;
    if (!folder.isValid() || !copyData(QStringLiteral(TAVIX_SOURCE_DATA_DIR), folder.path())) {
        std::fprintf(stderr, "cannot prepare the program folder\n");
        return 2;
    }
    StandPrompter prompter;
    prompter.pictureName = QDir(folder.path()).filePath(QStringLiteral("soak.jpg"));
    SystemClock clock;
    SimCamera* camera = nullptr;
    auto factory = [&camera](AppData& data) {
        data.settings.DEFAULTRESOLUTION = 8;  // 2592x1944, 30 fps
        auto driver = std::make_unique<SimCamera>();
        camera = driver.get();
        return std::unique_ptr<CameraDriver>(std::move(driver));
    };
    frmMain w(folder.path(), prompter, clock, factory);
    if (!w.Form_Load()) {
        std::fprintf(stderr, "the program did not start\n");
        return 2;
    }
    w.resize(1400, 900);
    w.show();

    std::vector<Sample> samples;
    QElapsedTimer run;
    run.start();
    int cycles = 0;
    auto sample = [&] {
        QFile status(QStringLiteral("/proc/self/status"));
        status.open(QIODevice::ReadOnly);
        const QByteArray text = status.readAll();
        Sample s;
        s.seconds = run.elapsed() / 1000.0;
        s.rssKb = statusField(text, "VmRSS:");
        s.threads = int(statusField(text, "Threads:"));
        const struct mallinfo2 heap = mallinfo2();
        s.heapUsedKb = qint64(heap.uordblks / 1024);
        s.heapFreeKb = qint64(heap.fordblks / 1024);
        s.mappedKb = qint64(heap.hblkhd / 1024);
        s.files = int(
            QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size());
        const auto counters = w.camera().liveView().counters();
        s.received = std::int64_t(counters.received);
        s.shown = std::int64_t(counters.shown);
        s.replaced = std::int64_t(counters.replaced);
        std::int32_t good = 0, broken = 0;
        camera->GetGoodFrames(0, good);
        camera->GetBrokenFrames(0, broken);
        s.good = good;
        s.broken = broken;
        s.cycles = cycles;
        samples.push_back(s);
        std::printf("%.0f,%lld,%lld,%lld,%lld,%d,%d,%lld,%lld,%lld,%lld,%lld,%d\n", s.seconds,
                    static_cast<long long>(s.rssKb), static_cast<long long>(s.heapUsedKb),
                    static_cast<long long>(s.heapFreeKb), static_cast<long long>(s.mappedKb), s.threads,
                    s.files, static_cast<long long>(s.received), static_cast<long long>(s.shown),
                    static_cast<long long>(s.replaced), static_cast<long long>(s.good),
                    static_cast<long long>(s.broken), s.cycles);
        std::fflush(stdout);
    };
    std::printf(
        "seconds,rss_kb,heap_used_kb,heap_free_kb,mapped_kb,threads,open_files,received,shown,replaced,"
        "camera_good,camera_broken,cycles\n");
    sample();
    qint64 nextSample = 10000;
    const qint64 endMs = qint64(minutes * 60000);
    // Samples are taken on time whether or not a cycle is due.
    auto waitMs = [&](qint64 ms) {
        const qint64 until = std::min(run.elapsed() + ms, endMs);
        while (run.elapsed() < until) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            if (run.elapsed() >= nextSample) {
                sample();
                nextSample += 10000;
            }
        }
    };
    while (run.elapsed() < endMs) {
        waitMs(periodMs > 0 ? periodMs : endMs);
        if (periodMs <= 0)
            break;
        // Freeze, measure one distance, save the picture, back to live.
        click(w, QStringLiteral("cmdPlayStop"));
        click(w, QStringLiteral("cmdMeasure(0)"));
        QWidget* still = w.camera().stillView();
        QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(200 + cycles % 50, 300));
        QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(900, 700 + cycles % 50));
        click(w, QStringLiteral("cmdPicSave"));
        if (w.measure().results().count() >= 100)
            click(w, QStringLiteral("cmdResultClear"));
        click(w, QStringLiteral("cmdPlayStop"));
        ++cycles;
    }
    sample();

    // The warm-up: the first minute, or the first third of a short run.
    const double warmUp = std::min(60.0, minutes * 20.0);
    const Sample* base = &samples.front();
    for (const Sample& s : samples)
        if (s.seconds <= warmUp)
            base = &s;
    const Sample& last = samples.back();
    qint64 peakRss = 0;
    for (const Sample& s : samples)
        peakRss = std::max(peakRss, s.rssKb);
    // Every frame the camera counted as good reached the live view.
    const std::int64_t lost = last.good - last.received;
    std::fprintf(
        stderr,
        "soak: %.1f min, %d cycles, rss %lld kB after warm-up -> %lld kB at the end (growth %lld kB, "
        "peak %lld kB), heap in use %lld kB -> %lld kB, threads %d -> %d, open files %d -> %d, frames %lld "
        "good, %lld received, %lld lost, "
        "%lld broken, %lld shown, %d messages\n",
        last.seconds / 60, cycles, static_cast<long long>(base->rssKb), static_cast<long long>(last.rssKb),
        static_cast<long long>(last.rssKb - base->rssKb), static_cast<long long>(peakRss),
        static_cast<long long>(base->heapUsedKb), static_cast<long long>(last.heapUsedKb), base->threads,
        last.threads, base->files, last.files, static_cast<long long>(last.good),
        static_cast<long long>(last.received), static_cast<long long>(lost),
        static_cast<long long>(last.broken), static_cast<long long>(last.shown), prompter.messages);
    if (!options.isSet(QStringLiteral("check")))
        return 0;
    const bool memoryKept =
        !kJudgeMemory || (last.rssKb - base->rssKb < 1024 && last.heapUsedKb - base->heapUsedKb < 1024);
    const bool ok = lost == 0 && last.broken == 0 && last.threads <= base->threads &&
                    last.files <= base->files && (cycles > 0 || periodMs <= 0) && memoryKept;
    if (!ok)
        std::fprintf(stderr, "soak: FAILED\n");
    return ok ? 0 : 1;
}
