// The result table at its largest (999 results): filling it, reformatting its
// values, and saving it as a CSV file through the safe write, against a plain
// write of the same bytes (the baseline in the same run).
#include "measure/ResultTable.h"

#include <benchmark/benchmark.h>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>
#include <cstdio>

namespace {

using tavix::ResultTable;

void fill(ResultTable& table)
{
    const QString kind = QStringLiteral("Distance");
    const QString unit = QStringLiteral("mm");
    for (int i = 1; i <= ResultTable::kMaxResults; ++i)
        table.addResult(kind, i * 0.1234567, unit);
}

QString scratchFile()
{
    static QTemporaryDir dir;
    return dir.filePath(QStringLiteral("results.csv"));
}

void AddResults999(benchmark::State& state)
{
    for (auto _ : state) {
        ResultTable table;
        table.reformat(3);
        fill(table);
        benchmark::DoNotOptimize(table.count());
    }
}
BENCHMARK(AddResults999)->Unit(benchmark::kMicrosecond);

void Reformat999(benchmark::State& state)
{
    ResultTable table;
    fill(table);
    int decimals = 0;
    for (auto _ : state) {
        decimals = decimals % 8 + 1;  // a real change every time
        table.reformat(decimals);
    }
}
BENCHMARK(Reformat999)->Unit(benchmark::kMicrosecond);

void CsvText999(benchmark::State& state)
{
    ResultTable table;
    table.reformat(3);
    fill(table);
    for (auto _ : state) {
        QByteArray bytes = table.csvText();
        benchmark::DoNotOptimize(bytes.data());
    }
}
BENCHMARK(CsvText999)->Unit(benchmark::kMicrosecond);

void SaveCsv999(benchmark::State& state)
{
    ResultTable table;
    table.reformat(3);
    fill(table);
    const QString path = scratchFile();
    const qint64 size = table.csvText().size();
    for (auto _ : state) {
        const bool ok = table.saveCsv(path);
        if (!ok)
            state.SkipWithError("the file could not be written");
    }
    state.SetBytesProcessed(state.iterations() * size);
}
BENCHMARK(SaveCsv999)->Unit(benchmark::kMicrosecond);

void RawWriteOfTheSameBytes(benchmark::State& state)
{
    ResultTable table;
    table.reformat(3);
    fill(table);
    const QByteArray bytes = table.csvText();
    const QString path = scratchFile();
    for (auto _ : state) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            state.SkipWithError("the file could not be written");
        file.close();
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(RawWriteOfTheSameBytes)->Unit(benchmark::kMicrosecond);

// The same bytes written the safe way by hand: temporary file, flushed to the
// disk, renamed over the old one. Shows what the safety itself costs.
void RawWriteSyncAndRename(benchmark::State& state)
{
    ResultTable table;
    table.reformat(3);
    fill(table);
    const QByteArray bytes = table.csvText();
    const QByteArray path = QFile::encodeName(scratchFile());
    const QByteArray temporary = path + ".tmp";
    for (auto _ : state) {
        const int fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const bool ok =
            fd >= 0 && ::write(fd, bytes.constData(), bytes.size()) == bytes.size() && ::fsync(fd) == 0;
        if (fd >= 0)
            ::close(fd);
        if (!ok || std::rename(temporary.constData(), path.constData()) != 0)
            state.SkipWithError("the file could not be written");
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(RawWriteSyncAndRename)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
