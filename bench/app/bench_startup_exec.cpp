// From the exec of the tavix program to its main window shown, with the
// camera driver chosen by DRIVER=auto on this machine (no camera attached)
// and with --camera sim. The program prints "shown" and ends when
// TAVIX_QUIT_WHEN_SHOWN is set.
#include "ProgramFolderBench.h"

#include <benchmark/benchmark.h>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>

namespace {

using tavix::bench::programFolder;

void ExecToWindow(benchmark::State& state)
{
    QStringList arguments{QStringLiteral("--home"), programFolder()};
    if (state.range(0) == 1)
        arguments << QStringLiteral("--camera") << QStringLiteral("sim");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TAVIX_QUIT_WHEN_SHOWN"), QStringLiteral("1"));
    if (!environment.contains(QStringLiteral("QT_QPA_PLATFORM")))
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    for (auto _ : state) {
        QProcess program;
        program.setProcessEnvironment(environment);
        QElapsedTimer timer;
        timer.start();
        program.start(QStringLiteral(TAVIX_BINARY), arguments);
        QByteArray output;
        while (!output.contains("shown") && timer.elapsed() < 20000 &&
               program.state() != QProcess::NotRunning) {
            program.waitForReadyRead(100);
            output += program.readAllStandardOutput();
        }
        const double seconds = timer.elapsed() / 1000.0;
        if (!output.contains("shown"))
            state.SkipWithError("the window did not come up");
        state.SetIterationTime(seconds);
        if (!program.waitForFinished(10000))
            program.kill();  // this process's own child
    }
}
BENCHMARK(ExecToWindow)
    ->ArgName("sim")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(5);

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
