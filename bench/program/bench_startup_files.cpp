// Reading the four data files at start-up, against a plain read of the same
// bytes (the baseline in the same run).
#include "program/AppData.h"
#include "program/Lifecycle.h"

#include <benchmark/benchmark.h>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

QString programFolder()
{
    static QTemporaryDir dir;
    static bool filled = false;
    if (!filled) {
        const QDir source(QStringLiteral(TAVIX_SOURCE_DATA_DIR));
        for (const QString& name : source.entryList(QDir::Files))
            QFile::copy(source.filePath(name), dir.filePath(name));
        filled = true;
    }
    return dir.path();
}

void ReadDataFiles(benchmark::State& state)
{
    const QString folder = programFolder();
    for (auto _ : state) {
        tavix::AppData data(folder);
        auto failure = tavix::Lifecycle::readDataFiles(data);
        benchmark::DoNotOptimize(failure);
    }
}
BENCHMARK(ReadDataFiles)->Unit(benchmark::kMicrosecond);

void RawReadOfTheSameFiles(benchmark::State& state)
{
    const QDir dir(programFolder());
    const QStringList names = dir.entryList(QDir::Files);
    for (auto _ : state) {
        qsizetype total = 0;
        for (const QString& name : names) {
            QFile f(dir.filePath(name));
            if (f.open(QIODevice::ReadOnly))
                total += f.readAll().size();
        }
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(RawReadOfTheSameFiles)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
